// SPDX-License-Identifier: MIT
// Weights by how near a vertex lies to the bones.
#include "support/WeightStage.h"
#include "weights/ProximityWeight.h"

#include <gmock/gmock.h>

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

} // namespace
