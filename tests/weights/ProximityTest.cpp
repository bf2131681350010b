// SPDX-License-Identifier: MIT
// Weights by how near a vertex lies to the bones.
#include "support/WeightStage.h"
#include "weights/ProximityWeight.h"

#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

double Weight(const std::vector<ZgeVector3>& children, const ZgeVector3& point)
{
    return ProximityWeight({0, 0, 0}, children, point);
}

TEST(Proximity, BoneWithoutChildrenWeighsOneEverywhere)
{
    EXPECT_EQ(Weight({}, {0, 0, 0}), 1.0);
    EXPECT_EQ(Weight({}, {5, -3, 2}), 1.0);
}

TEST(Proximity, VertexBesideTheMiddleOfABoneGetsAHundred) { EXPECT_EQ(Weight({{10, 0, 0}}, {5, 2, 0}), 100.0); }

TEST(Proximity, FartherThanTheSegmentIsLongCountsNothing)
{
    EXPECT_EQ(Weight({{10, 0, 0}}, {5, 10, 0}), 1.0);
    EXPECT_EQ(Weight({{10, 0, 0}}, {5, 9.99, 0}), 100.0);
}

TEST(Proximity, FallsOffOverFifteenPerCentPastEachEnd)
{
    EXPECT_NEAR(Weight({{10, 0, 0}}, {-0.75, 0, 0}), 50.0, 1e-9);
    EXPECT_NEAR(Weight({{10, 0, 0}}, {10.75, 0, 0}), 50.0, 1e-9);
    EXPECT_EQ(Weight({{10, 0, 0}}, {-1.5, 0, 0}), 1.0);
    EXPECT_EQ(Weight({{10, 0, 0}}, {11.5, 0, 0}), 1.0);
    EXPECT_EQ(Weight({{10, 0, 0}}, {0, 0, 0}), 100.0);
    EXPECT_EQ(Weight({{10, 0, 0}}, {10, 0, 0}), 100.0);
}

TEST(Proximity, TakesTheNearestOfSeveralChildren)
{
    EXPECT_NEAR(Weight({{10, 0, 0}, {0, 20, 0}}, {-0.75, -1.5, 0}), 50.0, 1e-9);
}

TEST(Proximity, ChildInTheSamePlaceAddsNothing)
{
    EXPECT_EQ(Weight({{0, 0, 0}}, {0, 0, 0}), 1.0);
    EXPECT_EQ(Weight({{0, 0, 0}, {10, 0, 0}}, {5, 0, 0}), 100.0);
}

TEST(Proximity, PointThatIsNoPointWeighsOne)
{
    EXPECT_EQ(Weight({{10, 0, 0}}, {std::nan(""), 0, 0}), 1.0);
    EXPECT_EQ(Weight({{std::numeric_limits<double>::infinity(), 0, 0}}, {1, 0, 0}), 1.0);
}

/// The rule as one would say it, child after child.
double PlainWeight(const ZgeVector3& bone, const std::vector<ZgeVector3>& children, const ZgeVector3& point)
{
    double result = 1.0;
    for (const ZgeVector3& child : children) {
        const ZgeVector3 s = bone - child, w = bone - point;
        const double length = ZgeLength(s);
        const ZgeVector3 u{s.x / length, s.y / length, s.z / length};
        const double t = ZgeDot(u, w);
        const double distance = ZgeLength(w - u * t);
        if (!(length > distance))
            continue;
        if (t >= 0 && ZgeDot(u, child - point) <= 0)
            return 100.0;
        const double q =
            t <= 0 ? (0.15 * length + t) / (0.15 * length) * 100 : (1.15 * length - t) / (0.15 * length) * 100;
        result = std::max({1.0, q, result});
    }
    return result;
}

TEST(ProximityProperty, EqualsThePlainRuleAndStaysBetweenOneAndAHundred)
{
    const bool held = rc::check("proximity weights are those of the plain rule", [] {
        // Off the lattice by parts that no length of it has, so that nothing lies exactly on a border.
        const auto place = [](double off) {
            return ZgeVector3{*rc::gen::inRange(-5, 6) + off, *rc::gen::inRange(-5, 6) - off / 2, off / 3};
        };
        const ZgeVector3 bone = place(0.013);
        std::vector<ZgeVector3> children;
        for (int i = *rc::gen::inRange(0, 4); i > 0; --i)
            children.push_back(*rc::gen::inRange(0, 6) == 0 ? bone : place(0.037));
        const ZgeVector3 point = place(0.0071);
        const double weight = ProximityWeight(bone, children, point);
        RC_ASSERT(weight >= 1.0 && weight <= 100.0);
        RC_ASSERT(std::abs(weight - PlainWeight(bone, children, point)) < 1e-9);
    });
    EXPECT_TRUE(held);
}

class ProximityOfModel : public testing::Test
{
protected:
    WeightStage stage;
    TinyCharacter& character = stage.character;
};

TEST_F(ProximityOfModel, ActiveVerticesGetNormalisedWeights)
{
    ZModel* const root = character.AddBone({0, 0, 0});
    character.AddBone({10, 0, 0}, root);
    ZModelPolymesh* const mesh = character.AddMesh("Body", 6);
    for (int vertex = 0; vertex < 6; ++vertex)
        for (int link = 0; link < 2; ++link)
            TinyCharacter::Weight(mesh, link, vertex, 0.5);
    const auto data = stage.Load(mesh);
    data->SelectVertex(5, nullptr);
    data->ActivateVertex(5, nullptr);
    data->SelectVertex(4, nullptr);
    data->ComputeProximityWeights();
    EXPECT_FLOAT_EQ(data->VertexBoneWeight(0, 5), 100.0F / 101.0F);
    EXPECT_FLOAT_EQ(data->VertexBoneWeight(1, 5), 1.0F / 101.0F);
    EXPECT_FLOAT_EQ(static_cast<float>(TinyCharacter::WeightOf(mesh, 0, 5)), 100.0F / 101.0F);
    // Selected is not active.
    EXPECT_EQ(data->VertexBoneWeight(0, 4), 0.5F);
}

TEST_F(ProximityOfModel, BonesInOnePlaceShareEqually)
{
    ZModel* const root = character.AddBone({0, 0, 0});
    character.AddBone({0, 0, 0}, root);
    ZModelPolymesh* const mesh = character.AddMesh("Body", 1);
    TinyCharacter::Weight(mesh, 0, 0, 1.0);
    TinyCharacter::Weight(mesh, 1, 0, 1.0);
    const auto data = stage.Load(mesh);
    data->SelectVertex(0, nullptr);
    data->ActivateVertex(0, nullptr);
    data->ComputeProximityWeights();
    EXPECT_EQ(data->VertexBoneWeight(0, 0), 0.5F);
    EXPECT_EQ(data->VertexBoneWeight(1, 0), 0.5F);
}

TEST_F(ProximityOfModel, SkinWithoutLinksLeavesVerticesAsTheyAre)
{
    const auto data = stage.Load(character.AddMesh("Body", 1));
    data->SelectVertex(0, nullptr);
    data->ActivateVertex(0, nullptr);
    data->ComputeProximityWeights();
    EXPECT_EQ(data->vertexInfluences[0]->GetCount(), 0);
}

TEST_F(ProximityOfModel, VertexWithNothingButZerosStaysAsItWas)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 1);
    const auto data = stage.Load(mesh);
    mesh->GetSkin()->AppendLink(nullptr, {}); // no bone, so no place to be near to
    data->vertexInfluences[0]->Add(0, 0.75F);
    data->SetVertexState(0, 2);
    data->ComputeProximityWeights();
    ASSERT_EQ(data->vertexInfluences[0]->GetCount(), 1);
    EXPECT_EQ(data->vertexInfluences[0]->weights[0], 0.75F);
}

TEST_F(ProximityOfModel, LinkWithoutABoneGetsNothingAndTheOthersEverything)
{
    character.AddBones(1);
    ZModelPolymesh* const mesh = character.AddMesh("Body", 1);
    const auto data = stage.Load(mesh);
    mesh->GetSkin()->AppendLink(nullptr, {});
    data->SetVertexState(0, 2);
    data->ComputeProximityWeights();
    EXPECT_THAT(data->vertexInfluences[0]->links, testing::ElementsAre(0, 1));
    EXPECT_THAT(data->vertexInfluences[0]->weights, testing::ElementsAre(1.0F, 0.0F));
}

TEST_F(ProximityOfModel, WeightsOfPlacesThatAreNoneAreNumbersThatSumToOne)
{
    const double nowhere = std::numeric_limits<double>::infinity();
    ZModel* const root = character.AddBone({0, 0, 0});
    character.AddBone({nowhere, 0, 0}, root);
    character.AddBone({std::nan(""), 0, 0}, root);
    ZModelPolymesh mesh("Broken");
    const float positions[6] = {std::numeric_limits<float>::quiet_NaN(), 0, 0, 1, 0, 0};
    mesh.SetGeometry(positions, 2, {}, {});
    ZSkin* const skin = mesh.MakeSkin(kDeformNormalise);
    for (ZModel* const bone : character.bones) {
        skin->AppendLink(bone, {});
        for (const int vertex : {0, 1})
            TinyCharacter::Weight(&mesh, skin->LinkCount() - 1, vertex, 1.0);
    }
    const auto data = stage.Load(&mesh);
    for (const int vertex : {0, 1})
        data->SetVertexState(vertex, 2);
    data->ComputeProximityWeights();
    for (const int vertex : {0, 1}) {
        double sum = 0.0;
        for (int link = 0; link < 3; ++link) {
            EXPECT_GT(data->VertexBoneWeight(link, vertex), 0.0F);
            EXPECT_EQ(TinyCharacter::WeightOf(&mesh, link, vertex),
                      static_cast<double>(data->VertexBoneWeight(link, vertex)));
            sum += static_cast<double>(data->VertexBoneWeight(link, vertex));
        }
        EXPECT_NEAR(sum, 1.0, 1e-6);
    }
}

TEST_F(ProximityOfModel, AddsNoEntryToTheSkin)
{
    character.AddBones(2);
    ZModelPolymesh* const mesh = character.AddMesh("Body", 1);
    TinyCharacter::Weight(mesh, 1, 0, 1.0);
    const auto data = stage.Load(mesh);
    data->SetVertexState(0, 2);
    data->ComputeProximityWeights();
    EXPECT_EQ(TinyCharacter::EntriesOf(mesh, 0), 1);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 1, 0), 0.5);
    EXPECT_EQ(data->vertexInfluences[0]->GetCount(), 2);
}

TEST_F(ProximityOfModel, ControlPointsAreWeightedLikeVertices)
{
    ZModel* const root = character.AddBone({0, 0, 0});
    character.AddBone({3, 0, 0}, root);
    const auto data = stage.Load(character.AddSurface("Sheet", 4, 3));
    for (const int vertex : {1, 9})
        data->SetVertexState(vertex, 2);
    data->ComputeProximityWeights();
    // (1, 0) lies on the bone, (1, 2) beside it, nearer than the bone is long.
    EXPECT_FLOAT_EQ(data->VertexBoneWeight(0, 1), 100.0F / 101.0F);
    EXPECT_FLOAT_EQ(data->VertexBoneWeight(0, 9), 100.0F / 101.0F);
    EXPECT_EQ(data->VertexBoneWeight(0, 2), 0.0F);
}

} // namespace
