// SPDX-License-Identifier: MIT
// Morph targets and linear blend skinning, compared with the same written plainly.
#include "PlainDeformation.h"
#include "TinyModels.h"

#include <rapidcheck/gtest.h>

#include <cmath>
#include <random>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// Of the model's size.
constexpr double kAccuracy = 1e-5;

ZgeMatrix At(double x, double y = 0, double z = 0) { return ZgeTranslation({x, y, z}); }

class Deformation : public ReportTest
{
protected:
    std::unique_ptr<ZModelPolymesh> mesh = MakePoints("mesh", 4);
    std::unique_ptr<ZModel> hip = MakeBone("hip");
    std::unique_ptr<ZModel> knee = MakeBone("knee");
    ZSkin* skin = nullptr;

    void MakeSkin(int mode)
    {
        skin = mesh->MakeSkin(mode);
        skin->AppendLink(hip.get(), ZgeMatrix());
        skin->AppendLink(knee.get(), ZgeMatrix());
        hip->SetPosedTransform(At(0, 10));
        knee->SetPosedTransform(At(0, 0, 20));
    }
    const float* Place(int vertex) { return mesh->Geometry().VertexPositions(1) + 4 * static_cast<size_t>(vertex); }
};

TEST_F(Deformation, NormaliseDividesByTheSum)
{
    MakeSkin(kDeformNormalise);
    AddWeight(*skin, 0, 0, 0.5);
    AddWeight(*skin, 1, 0, 1.5);
    AddWeight(*skin, 0, 1, 0.25);
    AddWeight(*skin, 0, 2, 0);
    ExpectPoint(Place(0), {0, 2.5, 15}, 1e-5);
    ExpectPoint(Place(1), {1, 10, 0}, 1e-5);
    ExpectPoint(Place(2), {2, 0, 0}, 0);
    ExpectPoint(Place(3), {3, 0, 0}, 0);
    EXPECT_EQ(Place(0)[3], 1.0F);
}

TEST_F(Deformation, AdditiveAddsEachBonesOffset)
{
    MakeSkin(kDeformAdditive);
    AddWeight(*skin, 0, 0, 0.5);
    AddWeight(*skin, 1, 0, 1.5);
    ExpectPoint(Place(0), {0, 5, 30}, 1e-5);
    EXPECT_EQ(Place(0)[3], 1.0F);
}

TEST_F(Deformation, Total100LeavesTheMissingPartAtTheUndeformedPoint)
{
    MakeSkin(kDeformTotal100);
    AddWeight(*skin, 0, 1, 0.25);
    AddWeight(*skin, 1, 1, 0.25);
    ExpectPoint(Place(1), {1, 2.5, 5}, 1e-5);
    EXPECT_EQ(Place(1)[3], 1.0F);
}

TEST_F(Deformation, AnUnknownModeNormalises)
{
    MakeSkin(7);
    AddWeight(*skin, 0, 0, 0.5);
    ExpectPoint(Place(0), {0, 10, 0}, 1e-5);
}

TEST_F(Deformation, AtRestEveryVertexIsExactlyWhereItWas)
{
    MakeSkin(kDeformNormalise);
    hip->SetPosedTransform(std::nullopt);
    knee->SetPosedTransform(std::nullopt);
    AddWeight(*skin, 0, 3, 0.3);
    AddWeight(*skin, 1, 3, 0.7);
    ExpectPoint(Place(3), {3, 0, 0}, 0);
}

TEST_F(Deformation, PositionsAreTheModelsOwn)
{
    MakeSkin(kDeformNormalise);
    mesh->SetFileTransform(ZgeScaling({2, 2, 2}) * At(100));
    AddWeight(*skin, 0, 1, 1);
    // In the scene the vertex is at (1, 10, 0), wherever the model stands.
    ExpectPoint(Place(1), {-49.5, 5, 0}, 1e-4);
}

TEST_F(Deformation, IsEvaluatedOnlyWhenSomethingChanged)
{
    MakeSkin(kDeformNormalise);
    AddWeight(*skin, 0, 0, 1);
    Place(0);
    std::uint64_t version = mesh->GetDeformVersion();
    const auto evaluated = [&] {
        Place(0);
        return std::exchange(version, mesh->GetDeformVersion()) != version;
    };
    EXPECT_FALSE(evaluated());
    hip->SetPosedTransform(At(0, 10)); // where it was
    EXPECT_FALSE(evaluated());
    hip->SetPosedTransform(At(0, 11));
    EXPECT_TRUE(evaluated());
    knee->SetPosedTransform(At(1));
    EXPECT_FALSE(evaluated()) << "it pulls no vertex";
    AddWeight(*skin, 1, 1, 1);
    EXPECT_TRUE(evaluated());
    knee->SetPosedTransform(At(2));
    EXPECT_TRUE(evaluated());
    skin->BeginLink(0);
    skin->SetEntryWeight(1, 0);
    EXPECT_FALSE(evaluated());
    skin->SetEntryWeight(0.5, 0);
    skin->EndLink();
    EXPECT_TRUE(evaluated());
    mesh->SetFileTransform(At(3));
    EXPECT_TRUE(evaluated());
    skin->RemoveLink(1);
    EXPECT_TRUE(evaluated());
}

TEST_F(Deformation, AModelScaledToNothingStaysUndeformedWithOneWarning)
{
    MakeSkin(kDeformNormalise);
    AddWeight(*skin, 0, 1, 1);
    mesh->SetFileTransform(ZgeScaling({1, 0, 1}));
    ExpectPoint(Place(1), {1, 0, 0}, 0);
    hip->SetPosedTransform(At(0, 12));
    ExpectPoint(Place(1), {1, 0, 0}, 0);
    EXPECT_THAT(ZReport_Warnings(), testing::ElementsAre(testing::HasSubstr("'mesh'")));
    mesh->SetFileTransform(ZgeMatrix());
    ExpectPoint(Place(1), {1, 12, 0}, 1e-5);
}

TEST_F(Deformation, ALinkWithoutABoneOrWithABrokenMatrixTakesNoPart)
{
    MakeSkin(kDeformNormalise);
    ZgeMatrix broken;
    broken(2, 1) = NAN;
    skin->AppendLink(nullptr, ZgeMatrix());
    skin->AppendLink(knee.get(), broken);
    AddWeight(*skin, 0, 1, 0.25);
    AddWeight(*skin, 2, 1, 0.5);
    AddWeight(*skin, 3, 1, 0.25);
    ExpectPoint(Place(1), {1, 10, 0}, 1e-5);
}

TEST_F(Deformation, WeightsThatAreNoNumbersTakeNoPart)
{
    MakeSkin(kDeformNormalise);
    AddWeight(*skin, 0, 1, 0.5);
    AddWeight(*skin, 1, 1, NAN);
    AddWeight(*skin, 0, 2, INFINITY);
    ExpectPoint(Place(1), {1, 10, 0}, 1e-5);
    ExpectPoint(Place(2), {2, 0, 0}, 0);
}

TEST_F(Deformation, TinyAndHugeWeightsKeepTheirProportion)
{
    MakeSkin(kDeformNormalise);
    AddWeight(*skin, 0, 1, 1e-42);
    AddWeight(*skin, 1, 1, 3e-42);
    AddWeight(*skin, 0, 2, 3e38);
    AddWeight(*skin, 1, 2, 1e38);
    ExpectPoint(Place(1), {1, 2.5, 15}, 1e-4);
    ExpectPoint(Place(2), {2, 7.5, 5}, 1e-4);
}

TEST_F(Deformation, NegativeWeightsPush)
{
    MakeSkin(kDeformNormalise);
    AddWeight(*skin, 0, 1, 1.5);
    AddWeight(*skin, 1, 1, -0.5);
    ExpectPoint(Place(1), {1, 15, -10}, 1e-4);
}

TEST_F(Deformation, EntriesInAnyOrderAndRepeatsCount)
{
    MakeSkin(kDeformNormalise);
    for (const int vertex : {3, 1, 2, 1})
        AddWeight(*skin, 0, vertex, 0.25);
    AddWeight(*skin, 1, 1, 0.5);
    ExpectPoint(Place(1), {1, 5, 10}, 1e-5);
    ExpectPoint(Place(3), {3, 10, 0}, 1e-5);
    skin->BeginLink(0);
    skin->SetEntryWeight(0, 3);
    skin->EndLink();
    ExpectPoint(Place(1), {1, 10.0 / 3, 40.0 / 3}, 1e-5);
}

TEST_F(Deformation, MorphTargetsComeBeforeTheSkin)
{
    MakeSkin(kDeformNormalise);
    AddWeight(*skin, 0, 1, 1);
    hip->SetPosedTransform(ZgeRotationFromEuler({0, 0, 90}));
    ZMorphTarget target;
    target.positions.assign(12, 0.0F);
    target.positions[3] = 4;
    mesh->SetMorphTargets({target});
    ExpectPoint(Place(1), {0, 1, 0}, 1e-6);
    mesh->SetMorphWeights({0.5F});
    ExpectPoint(Place(1), {0, 3, 0}, 1e-6);
    mesh->SetAnimatedMorphWeights({1});
    ExpectPoint(Place(1), {0, 5, 0}, 1e-6);
    mesh->SetAnimatedMorphWeights({});
    ExpectPoint(Place(1), {0, 3, 0}, 1e-6);
    EXPECT_EQ(mesh->Geometry().VertexPositions(0)[4], 1.0F);
}

TEST_F(Deformation, MorphTargetsWorkWithoutASkin)
{
    ZMorphTarget target;
    target.positions.assign(12, 1.0F);
    mesh->SetMorphTargets({target});
    mesh->SetMorphWeights({2, 99});
    EXPECT_EQ(mesh->GetMorphWeights().size(), 1U);
    ExpectPoint(Place(3), {5, 2, 2}, 0);
    target.positions.pop_back();
    EXPECT_THROW(mesh->SetMorphTargets({target}), ZHostMisuse);
}

TEST_F(Deformation, ANewSkinReplacesWhatTheOldOneDid)
{
    MakeSkin(kDeformNormalise);
    AddWeight(*skin, 0, 1, 1);
    ExpectPoint(Place(1), {1, 10, 0}, 1e-5);
    MakeSkin(kDeformNormalise);
    AddWeight(*skin, 1, 1, 1);
    ExpectPoint(Place(1), {1, 0, 20}, 1e-5);
}

TEST_F(Deformation, AnotherVertexCountDropsTheSkinAndSaysSo)
{
    MakeSkin(kDeformNormalise);
    const float positions[] = {1, 2, 3};
    mesh->SetGeometry(positions, 1, {}, {});
    EXPECT_EQ(mesh->GetSkin(), nullptr);
    EXPECT_EQ(ZReport_Warnings().size(), 1U);
    ExpectPoint(Place(0), {1, 2, 3}, 0);
}

/// A random character: a chain of bones about the place where its vertices are.
struct Character
{
    std::unique_ptr<ZModelPolymesh> mesh;
    std::vector<std::unique_ptr<ZModel>> bones;
    double size = 1;

    Character(std::mt19937& random, int vertexCount, int boneCount, int mode, bool shuffled)
    {
        std::uniform_real_distribution<double> number(-1, 1);
        size = std::pow(10.0, 3 * number(random));
        const ZgeVector3 middle = ZgeVector3{number(random), number(random), number(random)} * (3 * size);
        std::vector<float> positions;
        for (int i = 0; i < vertexCount; ++i)
            for (const double m : {middle.x, middle.y, middle.z})
                positions.push_back(static_cast<float>(m + number(random) * size / 2));
        mesh = std::make_unique<ZModelPolymesh>("mesh");
        mesh->SetGeometry(positions.data(), vertexCount, {}, {});
        mesh->SetFileTransform(ZgeScaling({2, 2, -2}) * ZgeRotationFromEuler({0, 50, 0}) * At(number(random) * size));
        ZSkin& skin = *mesh->MakeSkin(mode);
        for (int i = 0; i < boneCount; ++i) {
            bones.push_back(MakeBone("bone", ZgeVector3{number(random), number(random), number(random)} * (size / 4)));
            bones.back()->SetParent(i > 0 ? bones[static_cast<size_t>(i) - 1].get() : nullptr);
            if (i == 0)
                bones.back()->SetFileTransform(ZgeScaling({0.01, 0.01, 0.01}) * At(middle.x, middle.y, middle.z));
            else if (i == 1)
                bones.back()->SetFileTransform(ZgeScaling({100, 100, 100}));
            skin.AddLink(bones.back().get());
        }
        FillWeights(skin, random, vertexCount, shuffled);
        for (const auto& bone : bones)
            bone->SetPosedTransform(
                ZgeRotationFromEuler({40 * number(random), 40 * number(random), 40 * number(random)}) *
                bone->GetFileTransform());
    }
    static void FillWeights(ZSkin& skin, std::mt19937& random, int vertexCount, bool shuffled)
    {
        std::uniform_real_distribution<double> number(0, 1);
        for (int link = 0; link < skin.LinkCount(); ++link) {
            skin.BeginLink(link);
            for (int i = 0; i < vertexCount; ++i)
                if (number(random) < 0.5)
                    skin.AddEntry(shuffled ? (i * 7919) % vertexCount : i, 0.01 + number(random));
            skin.EndLink();
        }
    }
    /// How far the farthest vertex is from where the plain version has it, in sizes of the model.
    double WorstError(const std::vector<ZMorphTarget>& targets = {}) const
    {
        const std::vector<ZgeVector3> expected = DeformPlainly(*mesh, targets);
        const float* const actual = mesh->Geometry().VertexPositions(1);
        double worst = 0;
        for (size_t i = 0; i < expected.size(); ++i) {
            const float* const p = actual + 4 * i;
            const double distance = ZgeLength(expected[i] - ZgeVector3{p[0], p[1], p[2]});
            worst = distance <= worst && p[3] == 1.0F ? worst : distance;
        }
        return worst / size;
    }
};

RC_GTEST_PROP(DeformationProperty, EqualsThePlainVersion, (unsigned seed))
{
    std::mt19937 random(seed);
    const int mode = *rc::gen::inRange(0, 3);
    const int vertices = *rc::gen::inRange(1, 400);
    const int bones = *rc::gen::inRange(1, 12);
    const Character character(random, vertices, bones, mode, *rc::gen::arbitrary<bool>());
    RC_ASSERT(character.WorstError() <= kAccuracy);
}

TEST(LargeDeformation, OnAllCoresEqualsThePlainVersion)
{
    std::mt19937 random(7);
    for (const bool shuffled : {false, true}) {
        const Character character(random, 60000, 5, kDeformNormalise, shuffled);
        EXPECT_LE(character.WorstError(), kAccuracy);
        character.bones.front()->SetPosedTransform(*character.bones.front()->GetPosedTransform() * At(character.size));
        EXPECT_LE(character.WorstError(), kAccuracy);
    }
}

TEST(LargeDeformation, MorphedOnAllCoresEqualsThePlainVersion)
{
    std::mt19937 random(8);
    const Character character(random, 30000, 3, kDeformTotal100, false);
    std::vector<ZMorphTarget> targets(2);
    for (ZMorphTarget& target : targets)
        for (int i = 0; i < 90000; ++i)
            target.positions.push_back(static_cast<float>(character.size * (i % 17) / 170));
    character.mesh->SetMorphTargets(targets);
    character.mesh->SetMorphWeights({0.5F, -0.25F});
    EXPECT_LE(character.WorstError(targets), kAccuracy);
}

TEST(LargeDeformation, AForkedProcessDeformsAlone)
{
    std::mt19937 random(10);
    const Character character(random, 40000, 4, kDeformNormalise, false);
    character.mesh->Geometry().VertexPositions(1);
    const pid_t child = fork();
    if (child == 0) {
        character.bones.back()->SetPosedTransform(At(character.size));
        _exit(character.WorstError() <= kAccuracy ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(LargeDeformation, TwoThreadsMayDeformTwoModels)
{
    std::mt19937 random(9);
    const Character one(random, 40000, 4, kDeformNormalise, false);
    const Character two(random, 40000, 4, kDeformNormalise, false);
    const auto play = [](const Character& character) {
        for (int frame = 0; frame < 5; ++frame) {
            character.bones.back()->SetPosedTransform(At(frame));
            character.mesh->Geometry().VertexPositions(1);
        }
    };
    std::thread other([&] { play(two); });
    play(one);
    other.join();
    EXPECT_LE(one.WorstError(), kAccuracy);
    EXPECT_LE(two.WorstError(), kAccuracy);
}

} // namespace
