// SPDX-License-Identifier: MIT
// Reading a skin into records, and the one rewriting that makes its weights sum to one.
#include "support/RecordingSkin.h"
#include "support/WeightStage.h"

#include <gmock/gmock.h>

#include <limits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Refresh : public testing::Test
{
protected:
    Refresh() { character.AddBones(3); }
    static std::vector<std::pair<int, float>> RecordOf(const ZWeightUIModelData& data, int vertex)
    {
        std::vector<std::pair<int, float>> pairs;
        const VertexInfluences& record = *data.vertexInfluences[vertex];
        for (int k = 0; k < record.GetCount(); ++k)
            pairs.emplace_back(record.links[k], record.weights[k]);
        return pairs;
    }
    /// Reads again what the skin holds now.
    static void Again(ZWeightUIModelData& data) { data.Refresh(); }
    WeightStage stage;
    TinyCharacter& character = stage.character;
};

TEST_F(Refresh, FirstOneMakesWeightsSumToOne)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2);
    TinyCharacter::Weight(mesh, 0, 0, 0.2);
    TinyCharacter::Weight(mesh, 1, 0, 0.2);
    const auto data = stage.Load(mesh);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 0), 0.5);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 1, 0), 0.5);
    EXPECT_THAT(RecordOf(*data, 0), ElementsAre(std::pair(0, 0.5F), std::pair(1, 0.5F)));
    EXPECT_EQ(data->normaliseOnRefresh, 0);
}

TEST_F(Refresh, VertexWithoutWeightLosesItsEntries)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2);
    TinyCharacter::Weight(mesh, 0, 1, 0.0);
    TinyCharacter::Weight(mesh, 1, 1, 0.0);
    const auto data = stage.Load(mesh);
    EXPECT_EQ(TinyCharacter::EntriesOf(mesh, 1), 0);
    EXPECT_THAT(RecordOf(*data, 1), IsEmpty());
}

TEST_F(Refresh, ZeroWeightIsDroppedByNormalising)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 1);
    TinyCharacter::Weight(mesh, 0, 0, 0.4);
    TinyCharacter::Weight(mesh, 1, 0, 0.0);
    TinyCharacter::Weight(mesh, 2, 0, 0.4);
    const auto data = stage.Load(mesh);
    EXPECT_THAT(RecordOf(*data, 0), ElementsAre(std::pair(0, 0.5F), std::pair(2, 0.5F)));
    EXPECT_EQ(TinyCharacter::EntriesOf(mesh, 0), 2);
}

TEST_F(Refresh, SecondOneTakesZeroWeights)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 1);
    TinyCharacter::Weight(mesh, 0, 0, 1.0);
    TinyCharacter::Weight(mesh, 1, 0, 1.0);
    const auto data = stage.Load(mesh);
    data->SetVertexBoneWeight(0, 0, 0.0);
    Again(*data);
    EXPECT_THAT(RecordOf(*data, 0), ElementsAre(std::pair(0, 0.0F), std::pair(1, 0.5F)));
    data->SetVertexBoneWeight(0, 0, 0.5);
    EXPECT_EQ(TinyCharacter::EntriesOf(mesh, 0), 2);
}

TEST_F(Refresh, SecondOneLeavesTheSkinAlone)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 1);
    TinyCharacter::Weight(mesh, 0, 0, 1.0);
    const auto data = stage.Load(mesh);
    data->SetVertexBoneWeight(0, 0, 0.3);
    const std::uint64_t version = mesh->GetSkin()->GetVersion();
    Again(*data);
    EXPECT_EQ(mesh->GetSkin()->GetVersion(), version);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 0), 0.3);
}

TEST_F(Refresh, HostCountsTheVerticesThatNormalisingChanged)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 3);
    TinyCharacter::Weight(mesh, 0, 0, 0.2);
    TinyCharacter::Weight(mesh, 0, 1, 1.0);
    TinyCharacter::Weight(mesh, 1, 2, 3.0);
    stage.Load(mesh);
    EXPECT_EQ(mesh->GetSkin()->TakeNormalisedCount(), 2);
}

TEST_F(Refresh, ModelThatEntersUncheckedIsNotNormalisedLater)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 1);
    TinyCharacter::Weight(mesh, 0, 0, 0.25);
    stage.ListAllBones();
    const auto data = stage.Admit(mesh);
    data->Refresh();
    data->SetModelSelected(true, nullptr);
    data->Refresh();
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 0), 0.25);
    EXPECT_THAT(RecordOf(*data, 0), ElementsAre(std::pair(0, 0.25F)));
}

TEST_F(Refresh, UncheckingEmptiesEverythingButTheStates)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 4);
    TinyCharacter::Weight(mesh, 0, 0, 1.0);
    const auto data = stage.Load(mesh);
    data->SelectVertex(1, nullptr);
    data->SelectVertex(2, nullptr);
    data->ActivateVertex(2, nullptr);
    data->SetModelSelected(false, nullptr);
    data->Refresh();
    EXPECT_FALSE(data->IsLoaded());
    EXPECT_EQ(data->vertexColours.GetCount(), 0);
    EXPECT_THAT(data->selectedVertices, IsEmpty());
    EXPECT_THAT(data->activeVertices, IsEmpty());
    EXPECT_THAT(data->vertexStates, ElementsAre(0, 0, 0, 0));
    // Nothing is drawn of the model, so these two need not follow.
    EXPECT_EQ(data->noActiveVertices, 0);
    EXPECT_EQ(data->noSelectedVertices, 0);
}

TEST_F(Refresh, ColoursAreBlackAfterwards)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2);
    const auto data = stage.Load(mesh);
    ASSERT_EQ(data->vertexColours.GetCount(), 8);
    EXPECT_THAT(data->vertexColours, testing::Each(0.0F));
    data->vertexColours.Fill(1.0F);
    Again(*data);
    EXPECT_THAT(data->vertexColours, testing::Each(0.0F));
}

TEST_F(Refresh, BrokenWeightsNeverEnterARecord)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2);
    TinyCharacter::Weight(mesh, 0, 0, std::numeric_limits<double>::quiet_NaN());
    TinyCharacter::Weight(mesh, 1, 0, -0.5);
    TinyCharacter::Weight(mesh, 2, 0, 0.5);
    TinyCharacter::Weight(mesh, 0, 1, std::numeric_limits<double>::infinity());
    const auto data = stage.Load(mesh);
    EXPECT_THAT(RecordOf(*data, 0), ElementsAre(std::pair(2, 1.0F)));
    EXPECT_THAT(RecordOf(*data, 1), IsEmpty());

    TinyCharacter::Weight(mesh, 0, 1, std::numeric_limits<double>::quiet_NaN());
    TinyCharacter::Weight(mesh, 1, 1, -0.5);
    Again(*data);
    EXPECT_THAT(RecordOf(*data, 1), IsEmpty());
}

TEST_F(Refresh, InfluencesComeInTheOrderOfTheLinks)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2);
    TinyCharacter::Weight(mesh, 2, 1, 0.25);
    TinyCharacter::Weight(mesh, 2, 0, 0.25); // not in the order of the vertices
    TinyCharacter::Weight(mesh, 0, 0, 0.25);
    TinyCharacter::Weight(mesh, 1, 0, 0.5);
    TinyCharacter::Weight(mesh, 1, 1, 0.75);
    const auto data = stage.Load(mesh);
    EXPECT_THAT(RecordOf(*data, 0), ElementsAre(std::pair(0, 0.25F), std::pair(1, 0.5F), std::pair(2, 0.25F)));
    EXPECT_THAT(RecordOf(*data, 1), ElementsAre(std::pair(1, 0.75F), std::pair(2, 0.25F)));
    // Rewritten, the entries follow the vertices.
    EXPECT_TRUE(mesh->GetSkin()->AreEntriesAscending(2));
}

TEST_F(Refresh, ManyInfluencesAreAllTaken)
{
    character.AddBones(13);
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2);
    for (int link = 0; link < 16; ++link)
        TinyCharacter::Weight(mesh, link, 1, 1.0 / 16.0);
    const auto data = stage.Load(mesh);
    EXPECT_EQ(data->vertexInfluences[1]->GetCount(), 16);
    EXPECT_FLOAT_EQ(data->VertexBoneWeight(15, 1), 1.0F / 16.0F);
}

TEST_F(Refresh, SumsAreTakenInDoubleAndStoredAsFloat)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 1);
    const float parts[3] = {0.1F, 0.2F, 0.4F};
    double sum = 0.0;
    for (int link = 0; link < 3; ++link) {
        TinyCharacter::Weight(mesh, link, 0, static_cast<double>(parts[link]));
        sum += static_cast<double>(parts[link]);
    }
    const auto data = stage.Load(mesh);
    for (int link = 0; link < 3; ++link) {
        const auto expected = static_cast<float>(static_cast<double>(parts[link]) * (1.0 / sum));
        EXPECT_EQ(data->vertexInfluences[0]->weights[link], expected);
        EXPECT_EQ(TinyCharacter::WeightOf(mesh, link, 0), static_cast<double>(expected));
    }
}

TEST_F(Refresh, LinksOutsideTheBoneListHaveNoPosition)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 1);
    const auto data = stage.Admit(mesh);
    stage.boneList.Add(character.bones[2]);
    stage.boneList.Add(character.bones[0]);
    data->SetModelSelected(true, nullptr);
    data->Refresh();
    EXPECT_THAT(data->boneLinkPositions, ElementsAre(1, 0));
}

TEST_F(Refresh, SkinThatAnswersNoArraysIsReadEntryByEntry)
{
    RecordedMesh mesh("Body", 2, kDeformNormalise);
    for (ZModel* const bone : character.bones)
        mesh.GetSkin()->AppendLink(bone, {});
    TinyCharacter::Weight(&mesh, 1, 1, 0.2);
    TinyCharacter::Weight(&mesh, 0, 1, 0.6);
    const auto data = stage.Load(&mesh);
    EXPECT_THAT(RecordOf(*data, 1), ElementsAre(std::pair(0, 0.75F), std::pair(1, 0.25F)));
    EXPECT_FLOAT_EQ(static_cast<float>(TinyCharacter::WeightOf(&mesh, 0, 1)), 0.75F);
}

TEST_F(Refresh, RecordsAreSideBySide)
{
    const auto data = stage.Load(character.AddMesh("Body", 5));
    for (int vertex = 1; vertex < 5; ++vertex)
        EXPECT_EQ(data->vertexInfluences[vertex], data->vertexInfluences[0] + vertex);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data->vertexInfluences[0]) % 64, 0U);
}

TEST_F(Refresh, LoadedDataStaysWithinThreeAndAHalfTimesTheSkin)
{
    constexpr int kVertices = 20000;
    character.AddBones(7);
    ZModelPolymesh* const mesh = character.AddMesh("Body", kVertices);
    for (int vertex = 0; vertex < kVertices; ++vertex)
        for (int k = 0; k < 4; ++k)
            TinyCharacter::Weight(mesh, (vertex + k) % 10, vertex, 0.25);
    const auto data = stage.Load(mesh);
    for (int vertex = 0; vertex < kVertices; ++vertex) {
        data->SelectVertex(vertex, nullptr);
        data->ActivateVertex(vertex, nullptr);
    }
    EXPECT_LE(static_cast<double>(data->GetByteCount()), 3.5 * 12 * 4 * kVertices);
}

} // namespace
