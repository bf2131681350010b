// SPDX-License-Identifier: MIT
// After a change only the vertices that it touches are placed anew, and they get the same bits as a whole pass gives.
#include "TinyModels.h"

#include <rapidcheck/gtest.h>

#include <cmath>
#include <cstring>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

ZgeMatrix At(double x, double y = 0, double z = 0) { return ZgeTranslation({x, y, z}); }

/// A square of quads, `side` vertices wide, on bones that each pull a few of its rows.
struct Cloth
{
    explicit Cloth(int side = 20, int mode = kDeformNormalise) : width(side)
    {
        std::vector<float> positions;
        std::vector<int> polygons, sizes;
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                positions.insert(positions.end(), {static_cast<float>(x), static_cast<float>(y), 0.0F});
                if (x + 1 == side || y + 1 == side)
                    continue;
                const int corner = y * side + x;
                polygons.insert(polygons.end(), {corner, corner + 1, corner + side + 1, corner + side});
                sizes.push_back(4);
            }
        }
        mesh->SetGeometry(positions.data(), side * side, polygons, sizes);
        skin = mesh->MakeSkin(mode);
        for (int i = 0; i < kBones; ++i) {
            bones.push_back(MakeBone("bone"));
            skin->AddLink(bones.back().get());
        }
        for (int vertex = 0; vertex < side * side; ++vertex) {
            AddWeight(*skin, vertex / side % kBones, vertex, 0.75);
            AddWeight(*skin, (vertex / side + 1) % kBones, vertex, 0.25);
        }
        for (size_t i = 0; i < bones.size(); ++i)
            bones[i]->SetPosedTransform(ZgeRotationFromEuler({0, 0, 7.0 * static_cast<double>(i)}));
    }
    void SetWeight(int link, int vertex, double weight)
    {
        skin->BeginLink(link);
        skin->SetEntryWeight(weight, skin->FindEntry(vertex));
        skin->EndLink();
    }
    /// The vertices that were placed anew by what `change` does; all of them are named as -1.
    template <class Change> std::vector<int> PlacedBy(const Change& change)
    {
        mesh->Geometry().VertexPositions(1);
        const std::uint64_t mark = mesh->GetDeformMark();
        change();
        mesh->Geometry().VertexPositions(1);
        std::vector<int> placed;
        if (!mesh->GetDeformedSince(mark, placed))
            placed = {-1};
        return placed;
    }

    static constexpr int kBones = 20;
    int width;
    std::unique_ptr<ZModelPolymesh> mesh = std::make_unique<ZModelPolymesh>("cloth");
    std::vector<std::unique_ptr<ZModel>> bones;
    ZSkin* skin = nullptr;
};

TEST(TouchedVertices, OneWeightPlacesItsVertexAlone)
{
    Cloth cloth;
    EXPECT_THAT(cloth.PlacedBy([&] { cloth.SetWeight(2, 47, 0.5); }), ElementsAre(47));
    EXPECT_THAT(cloth.PlacedBy([&] { cloth.SetWeight(2, 47, 0.5); }), IsEmpty()) << "it has that weight already";
}

TEST(TouchedVertices, ANewEntryPlacesItsVertexAlone)
{
    Cloth cloth;
    EXPECT_THAT(cloth.PlacedBy([&] { AddWeight(*cloth.skin, 9, 47, 0.5); }), ElementsAre(47));
    EXPECT_THAT(cloth.PlacedBy([&] { AddWeight(*cloth.skin, 9, 46, 0.5); }), ElementsAre(46)) << "out of order";
    EXPECT_THAT(cloth.PlacedBy([&] { cloth.SetWeight(9, 47, 0.1); }), ElementsAre(47));
}

TEST(TouchedVertices, AMovedBonePlacesTheVerticesItPulls)
{
    Cloth cloth(20);
    std::vector<int> rows;
    for (int vertex = 4 * 20; vertex < 6 * 20; ++vertex)
        rows.push_back(vertex);
    EXPECT_THAT(cloth.PlacedBy([&] { cloth.bones[5]->SetPosedTransform(At(1)); }), testing::Eq(rows));
    EXPECT_THAT(cloth.PlacedBy([&] { cloth.bones[5]->SetPosedTransform(At(1)); }), IsEmpty()) << "where it was";
}

TEST(TouchedVertices, ATimeAtWhichOneBoneMovesPlacesTheVerticesItPulls)
{
    ZScene scene;
    Cloth cloth(20);
    ZModel* const bone = scene.AddModel(std::move(cloth.bones[5]));
    bone->SetPosedTransform(std::nullopt);
    ZAnimationChannel rise;
    rise.target = bone;
    rise.times = {0, 1};
    rise.values = {0, 0, 0, 0, 0, 8};
    auto animation = std::make_unique<ZAnimation>();
    animation->channels.push_back(rise);
    scene.SetLooping(false);
    scene.SetAnimation(scene.AddAnimation(std::move(animation)));
    EXPECT_THAT(cloth.PlacedBy([&] { scene.SetTime(0.5); }), testing::SizeIs(40));
    EXPECT_THAT(cloth.PlacedBy([&] { scene.SetTime(0.5); }), IsEmpty());
    EXPECT_THAT(cloth.PlacedBy([&] { scene.SetTime(3); }), testing::SizeIs(40));
    EXPECT_THAT(cloth.PlacedBy([&] { scene.SetTime(4); }), IsEmpty()) << "the end holds";
}

TEST(TouchedVertices, ManyChangesAndAMovedModelPlaceAll)
{
    Cloth cloth;
    EXPECT_THAT(cloth.PlacedBy([&] { cloth.mesh->SetFileTransform(At(0, 0, 5)); }), ElementsAre(-1));
    EXPECT_THAT(cloth.PlacedBy([&] {
        for (const auto& bone : cloth.bones)
            bone->SetPosedTransform(At(2));
    }),
                ElementsAre(-1));
    EXPECT_THAT(cloth.PlacedBy([&] {
        for (int vertex = 0; vertex < 20; ++vertex)
            for (int row = 0; row < 20; ++row)
                cloth.SetWeight(row, row * 20 + vertex, 0.5);
    }),
                ElementsAre(-1));
    EXPECT_THAT(cloth.PlacedBy([&] { cloth.skin->RemoveLink(3); }), ElementsAre(-1));
}

TEST(TouchedVertices, NormalsFollowAboutATouchedVertex)
{
    Cloth cloth;
    cloth.bones[9]->SetPosedTransform(At(0, 0, 40));
    const auto normal = [&cloth](int vertex) { return cloth.mesh->Geometry().DisplayPositions(1) + 4 * vertex; };
    AddWeight(*cloth.skin, 9, 105, 0.0);
    ASSERT_NEAR(static_cast<double>(normal(104)[2]), 1, 1e-6);
    cloth.SetWeight(9, 105, 4.0);
    EXPECT_LT(normal(104)[2], 0.9F) << "its neighbour, which did not move";
    EXPECT_NEAR(static_cast<double>(normal(100)[2]), 1, 1e-6);
}

/// Random work on a skin, told by numbers so that it can be done twice.
struct Change
{
    int kind, link, vertex;
    double weight;

    static Change Random()
    {
        static const double kWeights[] = {0, 0.25, 0.5, 1, -0.5, 3e-42, 2e38, NAN, INFINITY};
        return {*rc::gen::inRange(0, 7), *rc::gen::inRange(0, Cloth::kBones), *rc::gen::inRange(0, 400),
                kWeights[*rc::gen::inRange(0, 9)]};
    }
    void Do(Cloth& cloth) const
    {
        switch (kind) {
        case 0:
            cloth.bones[static_cast<size_t>(link)]->SetPosedTransform(ZgeRotationFromEuler({0, 0, 1.0 * vertex}) *
                                                                      At(1.0 * link, 2));
            break;
        case 1:
            AddWeight(*cloth.skin, link, vertex, weight);
            break;
        case 2:
            cloth.skin->BeginLink(link);
            cloth.skin->ResetLinkOption(vertex % 2);
            cloth.skin->EndLink();
            break;
        default:
            cloth.SetWeight(link, vertex, weight);
        }
    }
};

RC_GTEST_PROP(TouchedVertices, GetTheBitsOfAWholePass, ())
{
    const int mode = *rc::gen::element(kDeformNormalise, kDeformAdditive, kDeformTotal100);
    Cloth piecemeal(20, mode), whole(20, mode);
    const int steps = *rc::gen::inRange(1, 30);
    piecemeal.mesh->Geometry().DisplayPositions(1);
    for (int step = 0; step < steps; ++step) {
        const Change change = Change::Random();
        change.Do(piecemeal);
        change.Do(whole);
        if (step % 3 == 0)
            piecemeal.mesh->Geometry().VertexPositions(1);
        if (step % 5 == 0)
            piecemeal.mesh->Geometry().DisplayPositions(step % 2);
    }
    const size_t bytes = 4 * sizeof(float) * 400;
    RC_ASSERT(std::memcmp(piecemeal.mesh->Geometry().VertexPositions(1), whole.mesh->Geometry().VertexPositions(1),
                          bytes) == 0);
    RC_ASSERT(std::memcmp(piecemeal.mesh->Geometry().DisplayPositions(1), whole.mesh->Geometry().DisplayPositions(1),
                          bytes) == 0);
}

class LinkOption : public ReportTest, public testing::WithParamInterface<int>
{
protected:
    /// One vertex pulled by two bones that moved by 10 along Y and by 20 along Z.
    LinkOption()
    {
        for (const auto& bone : bones)
            skin->AppendLink(bone.get(), ZgeMatrix());
        AddWeight(*skin, 0, 0, 0.5);
        AddWeight(*skin, 1, 0, 0.25);
        bones[0]->SetPosedTransform(At(0, 10));
        bones[1]->SetPosedTransform(At(0, 0, 20));
    }
    void Set(int link, int option)
    {
        skin->BeginLink(link);
        skin->ResetLinkOption(option);
        skin->EndLink();
    }
    const float* Place() { return mesh->Geometry().VertexPositions(1); }

    std::unique_ptr<ZModelPolymesh> mesh = MakePoints("mesh", 1);
    std::unique_ptr<ZModel> bones[2] = {MakeBone("hip"), MakeBone("knee")};
    ZSkin* skin = mesh->MakeSkin(GetParam());
};

TEST_P(LinkOption, OtherThanZeroTakesTheLinkOutAsIfItHadNoEntries)
{
    const bool normalise = GetParam() == kDeformNormalise;
    ExpectPoint(Place(), normalise ? ZgeVector3{0, 20.0 / 3, 20.0 / 3} : ZgeVector3{0, 5, 5}, 1e-5);
    for (const int option : {1, -1, 7}) {
        Set(1, option);
        ExpectPoint(Place(), {0, normalise ? 10.0 : 5.0, 0}, 1e-5);
    }
    Set(0, 1);
    ExpectPoint(Place(), {0, 0, 0}, 0);
    Set(1, 0);
    ExpectPoint(Place(), {0, 0, normalise ? 20.0 : 5.0}, 1e-5);
}

TEST_P(LinkOption, ALinkThatComesBackHasTheWeightsOfItsAbsence)
{
    Set(1, 3);
    Place();
    skin->BeginLink(1);
    skin->SetEntryWeight(1, 0);
    skin->EndLink();
    Place();
    Set(1, 0);
    ExpectPoint(Place(), GetParam() == kDeformNormalise ? ZgeVector3{0, 10.0 / 3, 40.0 / 3} : ZgeVector3{0, 5, 20},
                1e-5);
}

INSTANTIATE_TEST_SUITE_P(Modes, LinkOption, testing::Values(kDeformNormalise, kDeformAdditive, kDeformTotal100));

} // namespace
