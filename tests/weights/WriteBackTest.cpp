// SPDX-License-Identifier: MIT
// Weights by bone, and their way back into the skin.
#include "support/RecordingSkin.h"
#include "support/WeightStage.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numeric>

using testing::ElementsAre;
using testing::FloatEq;

namespace {

VertexInfluences Record(std::initializer_list<std::pair<int, float>> pairs)
{
    VertexInfluences record;
    for (const auto& [link, weight] : pairs)
        record.Add(link, weight);
    return record;
}

class WriteBack : public testing::Test
{
protected:
    WriteBack()
    {
        character.AddBones(3);
        mesh = character.AddMesh("Body", 3);
        TinyCharacter::Weight(mesh, 0, 1, 0.5);
        TinyCharacter::Weight(mesh, 1, 1, 0.5);
        TinyCharacter::Weight(mesh, 2, 2, 1.0);
        data = stage.Load(mesh);
    }
    WeightStage stage;
    TinyCharacter& character = stage.character;
    ZModelPolymesh* mesh = nullptr;
    std::unique_ptr<ZWeightUIModelData> data;
};

TEST_F(WriteBack, OldLinksThatTheNewRecordDoesNotNameEndAtZero)
{
    data->ApplyVertexInfluences(1, Record({{1, 1.0F}}));
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 1), 0.0);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 1, 1), 1.0);
    EXPECT_EQ(*data->vertexInfluences[1], Record({{1, 1.0F}}));
}

TEST_F(WriteBack, WhatWasAppendedEndsAtZeroUnlessItIsNamed)
{
    // A record may name a link twice; what the new record says of the link is what counts.
    *data->vertexInfluences[1] = Record({{0, 0.25F}, {1, 0.5F}, {0, 0.25F}});
    data->ApplyVertexInfluences(1, Record({{0, 0.75F}}));
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 1), 0.75);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 1, 1), 0.0);
    EXPECT_EQ(*data->vertexInfluences[1], Record({{0, 0.75F}}));
    data->ApplyVertexInfluences(1, Record({}));
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 1), 0.0);
    EXPECT_EQ(data->vertexInfluences[1]->GetCount(), 0);
}

TEST_F(WriteBack, NeverAddsAnEntry)
{
    data->ApplyVertexInfluences(1, Record({{2, 0.75F}, {0, 0.25F}}));
    EXPECT_EQ(TinyCharacter::EntriesOf(mesh, 1), 2);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 2, 1), -1.0);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 1), 0.25);
    EXPECT_EQ(*data->vertexInfluences[1], Record({{2, 0.75F}, {0, 0.25F}}));
}

TEST_F(WriteBack, TakesTheVertexsOwnRecord)
{
    data->ApplyVertexInfluences(1, *data->vertexInfluences[1]);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 1), 0.5);
    EXPECT_EQ(*data->vertexInfluences[1], Record({{0, 0.5F}, {1, 0.5F}}));
}

TEST_F(WriteBack, PassesOverVerticesAndLinksThatAreNotThere)
{
    const auto before = TinyCharacter::Weights(mesh);
    data->ApplyVertexInfluences(-1, Record({{0, 1.0F}}));
    data->ApplyVertexInfluences(3, Record({{0, 1.0F}}));
    data->ApplyVertexInfluences(0, Record({{99, 1.0F}, {-1, 1.0F}}));
    EXPECT_EQ(TinyCharacter::Weights(mesh), before);
}

TEST_F(WriteBack, ModelThatIsNotLoadedGetsOnlyItsSkinWritten)
{
    data->SetModelSelected(false, nullptr);
    data->Refresh();
    data->ApplyVertexInfluences(1, Record({{1, 0.75F}}));
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 1), 0.0);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 1, 1), 0.75);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 2, 2), 1.0);
    data->ApplyVertexInfluences(7, Record({{1, 0.75F}}));
    data->ApplyVertexInfluences(-1, Record({{1, 0.75F}}));
}

/// What never entered a record is no weight to take back.
TEST_F(WriteBack, BrokenWeightsOfTheSkinStayAsTheyAreLoadedOrNot)
{
    const double broken[3] = {std::nan(""), -0.5, std::numeric_limits<double>::infinity()};
    for (int link = 0; link < 3; ++link)
        TinyCharacter::Weight(mesh, link, 0, broken[link]);
    for (const bool loaded : {true, false}) {
        data->SetModelSelected(loaded, nullptr);
        data->Refresh();
        ASSERT_EQ(data->IsLoaded(), loaded);
        data->ApplyVertexInfluences(0, VertexInfluences());
        EXPECT_TRUE(std::isnan(TinyCharacter::WeightOf(mesh, 0, 0))) << loaded;
        EXPECT_EQ(TinyCharacter::WeightOf(mesh, 1, 0), broken[1]) << loaded;
        EXPECT_EQ(TinyCharacter::WeightOf(mesh, 2, 0), broken[2]) << loaded;
    }
}

TEST_F(WriteBack, ManyVerticesEndAsOneByOne)
{
    const std::vector<int> vertices{1, 2, 1};
    const VertexInfluences records[3] = {Record({{0, 1.0F}}), Record({{2, 0.5F}, {0, 0.5F}}), Record({{1, 0.25F}})};
    std::vector<int> ends, links;
    std::vector<float> weights;
    for (const VertexInfluences& record : records) {
        links.insert(links.end(), record.links.begin(), record.links.end());
        weights.insert(weights.end(), record.weights.begin(), record.weights.end());
        ends.push_back(static_cast<int>(links.size()));
    }
    data->ApplyManyVertexInfluences(vertices,
                                    {ends.data(), {links.data(), weights.data(), static_cast<int>(links.size())}});
    EXPECT_EQ(*data->vertexInfluences[1], records[2]);
    EXPECT_EQ(*data->vertexInfluences[2], records[1]);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 1), 0.0);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 1, 1), 0.25);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 2, 2), 0.5);
}

// By bone.

TEST_F(WriteBack, WeightOfABoneIsLookedUpByItsLink)
{
    EXPECT_EQ(data->VertexBoneWeight(0, 1), 0.5F);
    EXPECT_EQ(data->VertexBoneWeight(2, 2), 1.0F);
    EXPECT_EQ(data->VertexBoneWeight(2, 1), 0.0F);
}

TEST_F(WriteBack, BonesAndVerticesThatAreNotThereWeighNothing)
{
    EXPECT_EQ(data->VertexBoneWeight(-1, 1), 0.0F);
    EXPECT_EQ(data->VertexBoneWeight(3, 1), 0.0F);
    EXPECT_EQ(data->VertexBoneWeight(0, -1), 0.0F);
    EXPECT_EQ(data->VertexBoneWeight(0, 3), 0.0F);
    data->SetVertexBoneWeight(-1, 1, 1.0);
    data->SetVertexBoneWeight(3, 1, 1.0);
    data->SetVertexBoneWeight(0, 3, 1.0);
    EXPECT_EQ(mesh->GetSkin()->LinkCount(), 3);
    EXPECT_EQ(data->VertexBoneWeight(0, 1), 0.5F);
}

TEST_F(WriteBack, ZeroForABoneThatDoesNotPullDoesNothing)
{
    data->SetVertexBoneWeight(2, 1, 0.0);
    EXPECT_EQ(data->vertexInfluences[1]->GetCount(), 2);
    EXPECT_EQ(TinyCharacter::EntriesOf(mesh, 1), 2);
}

TEST_F(WriteBack, WeightSetToZeroKeepsItsInfluence)
{
    data->SetVertexBoneWeight(0, 1, 0.0);
    EXPECT_EQ(*data->vertexInfluences[1], Record({{0, 0.0F}, {1, 0.5F}}));
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 1), 0.0);
}

TEST_F(WriteBack, NewInfluenceIsAppendedToRecordAndSkin)
{
    data->SetVertexBoneWeight(2, 1, 0.1);
    EXPECT_EQ(*data->vertexInfluences[1], Record({{0, 0.5F}, {1, 0.5F}, {2, 0.1F}}));
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 2, 1), 0.1);
}

TEST_F(WriteBack, BoneThatIsNoLinkBecomesOne)
{
    ZModel* const fourth = character.AddBone({9, 0, 0});
    stage.boneList.Add(fourth);
    data->SetVertexBoneWeight(3, 0, 0.0);
    EXPECT_EQ(mesh->GetSkin()->LinkCount(), 3);
    data->SetVertexBoneWeight(3, 0, 0.25);
    ASSERT_EQ(mesh->GetSkin()->LinkCount(), 4);
    EXPECT_EQ(mesh->GetSkin()->LinkModel(3), fourth);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 3, 0), 0.25);
    EXPECT_EQ(data->VertexBoneWeight(3, 0), 0.25F);
    EXPECT_THAT(data->boneLinkPositions, ElementsAre(0, 1, 2, 3));
}

/// A record may name what the tables do not hold; every lookup passes over it.
TEST_F(WriteBack, LinksOutsideTheTablesAreSkippedNeverRead)
{
    *data->vertexInfluences[1] =
        Record({{99, 0.125F}, {-5, 0.25F}, {std::numeric_limits<int>::max(), 0.5F}, {0, 1.0F}});
    EXPECT_EQ(data->BoneOfLink(99), -1);
    EXPECT_EQ(data->BoneOfLink(-5), -1);
    EXPECT_EQ(data->LinkOfBone(-1), -1);
    EXPECT_EQ(data->LinkOfBone(99), -1);
    EXPECT_EQ(data->VertexBoneWeight(0, 1), 1.0F);
    EXPECT_EQ(data->VertexBoneWeight(1, 1), 0.0F);
    std::vector<float> spread(3, 7.0F);
    data->GetVertexSpread(1, spread);
    EXPECT_THAT(spread, ElementsAre(1.0F, 0.0F, 0.0F));
    std::vector<int> marks(3, 0);
    data->SetVertexState(1, 2);
    data->MarkInfluencingBones(marks.data(), 3);
    EXPECT_THAT(marks, ElementsAre(1, 0, 0));
    data->SetManyVertexSpreads(std::vector<int>{1, -1, 3}, std::vector<int>{0, 99, -1},
                               std::vector<double>{0.5, 0.25, 0.25});
    EXPECT_EQ(data->vertexInfluences[1]->weights[0], 0.125F);
    EXPECT_EQ(data->VertexBoneWeight(0, 1), 0.5F);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 1), 0.5);
    EXPECT_EQ(mesh->GetSkin()->LinkCount(), 3);
}

/// Bones outside the tool's bone list leave the table shorter than the skin: such links have no bone to look up.
TEST_F(WriteBack, LinkWithoutABoneInTheListWeighsNothing)
{
    stage.boneList.RemoveAt(2);
    data->Refresh();
    EXPECT_EQ(data->BoneOfLink(2), -1);
    EXPECT_EQ(data->VertexBoneWeight(2, 2), 0.0F);
    std::vector<int> marks(2, 0);
    data->SetVertexState(2, 2);
    data->MarkInfluencingBones(marks.data(), 2);
    EXPECT_THAT(marks, ElementsAre(0, 0));
    data->SetVertexBoneWeight(2, 2, 0.25);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 2, 2), 1.0);
}

TEST_F(WriteBack, LinkThatLeftTheSkinIsNotWritten)
{
    mesh->GetSkin()->RemoveLink(2);
    const auto before = TinyCharacter::Weights(mesh);
    data->SetVertexBoneWeight(2, 1, 0.5);
    data->SetManyVertexSpreads(std::vector<int>{2}, std::vector<int>{2}, std::vector<double>{0.5});
    data->ApplyVertexInfluences(2, Record({{2, 1.0F}}));
    EXPECT_EQ(TinyCharacter::Weights(mesh), before);
}

TEST_F(WriteBack, AddLinkAnswersTheLinkThatIsThere)
{
    EXPECT_EQ(data->AddLink(character.bones[1]), 1);
    EXPECT_EQ(data->AddLink(character.AddBone({9, 0, 0})), 3);
    EXPECT_EQ(data->AddLink(nullptr), -1);
}

TEST_F(WriteBack, SpreadOfAVertexIsEveryBonesWeight)
{
    std::vector<float> spread(4, 7.0F);
    data->GetVertexSpread(1, spread);
    EXPECT_THAT(spread, ElementsAre(0.5F, 0.5F, 0.0F, 0.0F));
    data->GetVertexSpread(99, spread);
    EXPECT_THAT(spread, testing::Each(0.0F));
}

TEST_F(WriteBack, ManySpreadsEndAsOneByOne)
{
    const std::vector<int> vertices{0, 1, 2}, bones{1, 0};
    const std::vector<double> weights{0.75, 0.25};
    data->SetManyVertexSpreads(vertices, bones, weights);
    EXPECT_EQ(*data->vertexInfluences[0], Record({{1, 0.75F}, {0, 0.25F}}));
    EXPECT_EQ(*data->vertexInfluences[1], Record({{0, 0.25F}, {1, 0.75F}}));
    EXPECT_EQ(*data->vertexInfluences[2], Record({{2, 0.0F}, {1, 0.75F}, {0, 0.25F}}));
    EXPECT_EQ(TinyCharacter::Weights(mesh),
              (std::vector<std::vector<double>>{{0.25, 0.75, 0}, {0.25, 0.75, 0}, {0.25, 0.75, 0}}));
}

TEST_F(WriteBack, LinkThatGetsManyEntriesMakesRoomForThemOnce)
{
    constexpr int kVertices = 10000; // more than a batch hands over at once; growing by half would end above it
    ZModelPolymesh* const large = character.AddMesh("Large", kVertices);
    for (int vertex = 0; vertex < kVertices; ++vertex)
        TinyCharacter::Weight(large, 0, vertex, 1.0);
    const auto loaded = stage.Load(large);
    std::vector<int> vertices(kVertices);
    std::iota(vertices.begin(), vertices.end(), 0);
    loaded->SetManyVertexSpreads(vertices, std::vector<int>{1}, std::vector<double>{1.0});
    const ZSkin& skin = *large->GetSkin();
    EXPECT_EQ(skin.GetEntryVertices(1).GetCount(), kVertices);
    EXPECT_EQ(skin.GetEntryVertices(1).GetCapacity(), kVertices);
    EXPECT_EQ(skin.GetEntryWeights(1).GetCapacity(), kVertices);
}

/// The vertex list may name a vertex twice; its link has one entry all the same.
TEST_F(WriteBack, VertexThatIsNamedTwiceGetsOneEntry)
{
    const std::vector<int> twice{0, 1, 0, 1}, bone{2};
    const std::vector<double> whole{1.0};
    data->ApplyVertexInfluences(0, Record({{2, 0.5F}})); // the skin has no entry for this
    data->SetManyVertexSpreads(twice, bone, whole);
    EXPECT_EQ(TinyCharacter::EntriesOf(mesh, 0), 1);
    EXPECT_EQ(TinyCharacter::EntriesOf(mesh, 1), 3);
    EXPECT_EQ(TinyCharacter::Weights(mesh), (std::vector<std::vector<double>>{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}}));
}

TEST_F(WriteBack, SpreadReachesOnlyTheFirstOfTwoLinksOnOneBone)
{
    ZModelPolymesh* const other = character.AddMesh("Other", 1);
    other->GetSkin()->AppendLink(character.bones[0], {});
    TinyCharacter::Weight(other, 0, 0, 0.5);
    TinyCharacter::Weight(other, 3, 0, 0.5);
    ZToolKit_SetMessageAnswerer([](const ZtMessage&) { return 2; });
    const auto twice = stage.Load(other);
    EXPECT_EQ(twice->VertexBoneWeight(0, 0), 0.5F);
    twice->SetManyVertexSpreads(std::vector<int>{0}, std::vector<int>{0}, std::vector<double>{0.1});
    EXPECT_EQ(*twice->vertexInfluences[0], Record({{0, 0.1F}, {3, 0.5F}}));
    EXPECT_EQ(TinyCharacter::WeightOf(other, 3, 0), 0.5);
}

TEST_F(WriteBack, SetsEntriesThroughTheLinkOfEachInfluence)
{
    RecordedMesh recorded("Recorded", 2, kDeformNormalise);
    for (ZModel* const bone : character.bones)
        recorded.GetSkin()->AppendLink(bone, {});
    TinyCharacter::Weight(&recorded, 0, 1, 0.5);
    TinyCharacter::Weight(&recorded, 1, 1, 0.5);
    const auto other = stage.Load(&recorded);
    recorded.Recorder().calls.clear();
    other->ApplyVertexInfluences(1, Record({{1, 0.25F}, {2, 0.75F}}));
    EXPECT_THAT(recorded.Recorder().calls,
                ElementsAre("BeginLink(0)", "FindEntry(1)", "SetEntryWeight(0, 0)", "EndLink",    //
                            "BeginLink(1)", "FindEntry(1)", "SetEntryWeight(0.25, 0)", "EndLink", //
                            "BeginLink(2)", "FindEntry(1)", "SetEntryWeight(0.75, -1)", "EndLink"));
}

} // namespace
