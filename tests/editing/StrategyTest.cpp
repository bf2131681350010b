// SPDX-License-Identifier: MIT
// Weights into colours: three modes, two strategies, and the update after a bone's colour changed.
#include "support/EditingTool.h"
#include "support/StrangeSkin.h"

#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <cmath>
#include <limits>

using testing::ElementsAre;
using testing::FloatEq;

namespace {

using Colour = std::vector<float>;
const Colour kBlack{0, 0, 0}, kRed{1, 0, 0}, kGreen{0, 1, 0}, kBlue{0, 0, 1};

/// One model of a mode; bones are red, blue and green; vertices have the given weights, as they stand.
class Colouring : public testing::Test
{
protected:
    ZWeightUIModelData& Load(int deformMode, const std::vector<std::vector<double>>& weights)
    {
        tool.character.AddBones(3);
        mesh = tool.character.AddMesh("Body", static_cast<int>(weights.size()), deformMode);
        for (size_t vertex = 0; vertex < weights.size(); ++vertex)
            for (size_t link = 0; link < weights[vertex].size(); ++link)
                TinyCharacter::Weight(mesh, static_cast<int>(link), static_cast<int>(vertex), weights[vertex][link]);
        ZWeightUIModelData& data = tool.Admit(mesh);
        data.normaliseOnRefresh = 0; // the weights as they stand
        tool.RebuildBoneList();
        table = {1, 0, 0, 0, 0, 1, 0, 1, 0};
        return data;
    }
    static Colour ColourOf(const ZWeightUIModelData& data, int vertex)
    {
        const float* const first = data.vertexColours.GetData() + 4 * vertex;
        return {first[0], first[1], first[2]};
    }
    EditingTool tool;
    ZModelPolymesh* mesh = nullptr;
    ZBoneColourTable table;
};

TEST_F(Colouring, SmoothDividesByTheSum)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{1, 1}, {0.5, 0.5}, {0.2, 0.2}});
    data.ComputeColors(table, kColourSmooth);
    for (int vertex = 0; vertex < 3; ++vertex)
        EXPECT_THAT(ColourOf(data, vertex), ElementsAre(FloatEq(0.5F), 0.0F, FloatEq(0.5F)));
}

TEST_F(Colouring, SmoothWithoutWeightIsBlack)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{0, 0}, {}});
    data.vertexColours.Fill(0.5F);
    data.ComputeColors(table, kColourSmooth);
    EXPECT_EQ(ColourOf(data, 0), kBlack);
    EXPECT_EQ(ColourOf(data, 1), kBlack);
    // The fourth number is never written.
    EXPECT_EQ(data.vertexColours[3], 0.5F);
}

TEST_F(Colouring, Total100TakesWeightsAsTheyStand)
{
    ZWeightUIModelData& data = Load(kDeformTotal100, {{0.5, 0.5}, {1, 1}, {0.2, 0.2}, {0, 0}, {}});
    data.ComputeColors(table, kColourSmooth);
    EXPECT_THAT(ColourOf(data, 0), ElementsAre(0.5F, 0.0F, 0.5F));
    EXPECT_THAT(ColourOf(data, 1), ElementsAre(1.0F, 0.0F, 1.0F));
    EXPECT_THAT(ColourOf(data, 2), ElementsAre(FloatEq(0.2F), 0.0F, FloatEq(0.2F)));
    EXPECT_EQ(ColourOf(data, 3), kBlack);
    EXPECT_EQ(ColourOf(data, 4), kBlack);
}

TEST_F(Colouring, OfEqualWeightsTheFirstIsMostAndLeast)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{0.5, 0.5}, {0.3, 0.3}, {0, 0.2, 0.2}});
    data.ComputeColors(table, kColourMostInfluential);
    EXPECT_EQ(ColourOf(data, 0), kRed);
    EXPECT_EQ(ColourOf(data, 1), kRed);
    EXPECT_EQ(ColourOf(data, 2), kBlue);
    data.ComputeColors(table, kColourLeastInfluential);
    EXPECT_EQ(ColourOf(data, 0), kRed);
    EXPECT_EQ(ColourOf(data, 1), kRed);
    EXPECT_EQ(ColourOf(data, 2), kBlue);
}

TEST_F(Colouring, LeastPassesOverZeroWeights)
{
    ZWeightUIModelData& data = Load(kDeformTotal100, {{0, 0.3, 0.7}, {0, 0}});
    data.ComputeColors(table, kColourLeastInfluential);
    EXPECT_EQ(ColourOf(data, 0), kBlue);
    EXPECT_EQ(ColourOf(data, 1), kBlack);
}

TEST_F(Colouring, MostTakesTheFirstLinkWhenAllAreZero)
{
    ZWeightUIModelData& data = Load(kDeformTotal100, {{0, 0}, {}});
    data.ComputeColors(table, kColourMostInfluential);
    EXPECT_EQ(ColourOf(data, 0), kRed);
    EXPECT_EQ(ColourOf(data, 1), kBlack);
}

TEST_F(Colouring, UnknownModeWritesNothing)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{1}});
    data.SetVertexState(0, 2);
    data.vertexColours.Fill(0.25F);
    for (const int mode : {-1, 3}) {
        data.ComputeColors(table, mode);
        data.ComputeActiveColors(table, mode, kAffectAllSelected);
        data.BoneColorChanged(table, 0, mode, 0, 0, 0);
    }
    EXPECT_THAT(data.vertexColours, testing::Each(0.25F));
}

TEST_F(Colouring, ActiveColoursFollowTheWeightingMode)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{1}, {1}, {1}, {1}});
    data.vertexColours.Fill(0.0F);
    data.ComputeActiveColors(table, kColourSmooth, kAffectFirstSelected);
    EXPECT_EQ(ColourOf(data, 2), kBlack);
    for (const int vertex : {2, 0, 3})
        data.SetVertexState(vertex, 2);
    data.ComputeActiveColors(table, kColourSmooth, kAffectFirstSelected);
    EXPECT_EQ(ColourOf(data, 2), kRed);
    EXPECT_EQ(ColourOf(data, 0), kBlack);
    data.ComputeActiveColors(table, kColourSmooth, kAffectAllSelected);
    EXPECT_EQ(ColourOf(data, 0), kRed);
    EXPECT_EQ(ColourOf(data, 1), kBlack);
    EXPECT_EQ(ColourOf(data, 3), kRed);
}

// After a bone's colour changed.

TEST_F(Colouring, ChangedBoneMovesAColourByItsShare)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{0.25, 0.75}});
    data.ComputeColors(table, kColourSmooth);
    const Colour before = ColourOf(data, 0);
    table[0] = 0.0F;
    table[1] = 1.0F;
    data.BoneColorChanged(table, 0, kColourSmooth, 1, 0, 0);
    EXPECT_THAT(ColourOf(data, 0), ElementsAre(FloatEq(before[0] - 0.25F), FloatEq(before[1] + 0.25F), before[2]));
}

TEST_F(Colouring, ChangedBoneUnderTotal100MovesByTheWeight)
{
    ZWeightUIModelData& data = Load(kDeformTotal100, {{0.5, 0.5, 1.0}, {0, 0}});
    data.ComputeColors(table, kColourSmooth);
    table[0] = 0.0F;
    table[1] = 1.0F;
    data.BoneColorChanged(table, 0, kColourSmooth, 1, 0, 0);
    EXPECT_THAT(ColourOf(data, 0), ElementsAre(0.0F, 1.5F, 0.5F));
    // No weight, no sum to divide by: the colour stays, and is a number.
    EXPECT_EQ(ColourOf(data, 1), kBlack);
}

TEST_F(Colouring, ChangedBoneOnAVertexWithoutWeightGivesNoColourUntilRecoloured)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{0, 0}});
    data.ComputeColors(table, kColourSmooth);
    data.BoneColorChanged(table, 0, kColourSmooth, 1, 0, 0);
    EXPECT_FALSE(std::isfinite(ColourOf(data, 0)[0]));
    data.ComputeColors(table, kColourSmooth);
    EXPECT_EQ(ColourOf(data, 0), kBlack);
}

TEST_F(Colouring, ChangedBoneRecoloursItsVerticesUnderMostAndLeast)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{0.75, 0.25}, {0, 1}});
    data.ComputeColors(table, kColourMostInfluential);
    table[0] = 0.5F;
    data.vertexColours[4] = 0.125F; // of a vertex that has no entry of the bone with weight, but has one
    data.BoneColorChanged(table, 0, kColourMostInfluential, 1, 0, 0);
    EXPECT_THAT(ColourOf(data, 0), ElementsAre(0.5F, 0.0F, 0.0F));
    EXPECT_EQ(ColourOf(data, 1), kBlue);
    data.BoneColorChanged(table, 0, kColourLeastInfluential, 1, 0, 0);
    EXPECT_EQ(ColourOf(data, 0), kBlue);
}

TEST_F(Colouring, BoneThatTheModelDoesNotUseChangesNothing)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{1}});
    data.vertexColours.Fill(0.25F);
    for (const int mode : {0, 1, 2}) {
        data.BoneColorChanged(table, 7, mode, 1, 0, 0);
        data.BoneColorChanged(table, -1, mode, 1, 0, 0);
    }
    EXPECT_THAT(data.vertexColours, testing::Each(0.25F));
}

TEST_F(Colouring, ChangedBoneUnderSmoothVisitsOneLinkOnly)
{
    tool.character.AddBones(3);
    RecordedMesh recorded("Body", 2, kDeformNormalise);
    for (ZModel* const bone : tool.character.bones)
        recorded.GetSkin()->AppendLink(bone, {});
    TinyCharacter::Weight(&recorded, 1, 0, 1.0);
    ZWeightUIModelData& data = tool.Admit(&recorded);
    tool.RebuildBoneList();
    recorded.Recorder().calls.clear();
    data.BoneColorChanged(tool.colours, 1, kColourSmooth, 0, 0, 0);
    EXPECT_THAT(recorded.Recorder().calls, ElementsAre("BeginLink(1)", "EntryCount", "EndLink"));
    recorded.Recorder().calls.clear();
    data.BoneColorChanged(tool.colours, 1, kColourMostInfluential, 0, 0, 0);
    EXPECT_TRUE(recorded.Recorder().calls.empty());
    tool.owned.clear();
    tool.models.RemoveAll();
}

TEST_F(Colouring, BrokenSkinWeightNeverEntersAColour)
{
    ZWeightUIModelData& data = Load(kDeformTotal100, {{0.5}, {}});
    data.ComputeColors(table, kColourSmooth);
    TinyCharacter::Weight(mesh, 0, 1, std::nan(""));
    data.BoneColorChanged(table, 0, kColourSmooth, 1, 0, 0);
    EXPECT_EQ(ColourOf(data, 1), kBlack);
}

TEST_F(Colouring, InfiniteSkinWeightNeverEntersAColour)
{
    for (const int mode : {kDeformNormalise, kDeformTotal100}) {
        ZWeightUIModelData& data = Load(mode, {{0.5}, {0.5, 0.5}});
        data.ComputeColors(table, kColourSmooth);
        const std::vector<float> before(data.vertexColours.begin(), data.vertexColours.end());
        TinyCharacter::Weight(mesh, 2, 0, std::numeric_limits<double>::infinity());
        TinyCharacter::Weight(mesh, 2, 1, 1e300); // more than a float holds
        data.BoneColorChanged(table, 2, kColourSmooth, 0.5F, 0.5F, 0);
        EXPECT_EQ(std::vector<float>(data.vertexColours.begin(), data.vertexColours.end()), before) << mode;
        data.Refresh();
        data.ComputeColors(table, kColourSmooth);
        EXPECT_EQ(std::vector<float>(data.vertexColours.begin(), data.vertexColours.end()), before) << mode;
    }
}

TEST_F(Colouring, EntriesOfVerticesThatAreNotThereColourNothing)
{
    tool.character.AddBones(2);
    for (const bool answersArrays : {false, true}) {
        StrangeMesh strange(tool.character.bones, answersArrays);
        ZWeightUIModelData& data = tool.Admit(&strange);
        tool.RebuildBoneList();
        table = {1, 0, 0, 0, 0, 1};
        data.ComputeColors(table, kColourSmooth);
        table[0] = 0.0F;
        data.BoneColorChanged(table, 0, kColourSmooth, 1, 0, 0);
        EXPECT_THAT(data.vertexColours, ElementsAre(0.0F, 0.0F, 0.5F, 0.0F, 0.0F, 0.0F, 0.5F, 0.0F));
        tool.Remove(data);
    }
}

/// Another model's bone stands in the colour table and in no skin of this one.
TEST_F(Colouring, ModelThatDoesNotUseTheBoneKeepsItsColours)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{0.5, 0.5}});
    tool.character.AddBones(1);
    ZModelPolymesh* const other = tool.character.AddMesh("Other", 1);
    TinyCharacter::Weight(other, 3, 0, 1.0);
    ZWeightUIModelData& owner = tool.Admit(other);
    tool.RebuildBoneList();
    ASSERT_EQ(tool.boneList.GetCount(), 4);
    table = {1, 0, 0, 0, 0, 1, 0, 1, 0, 1, 1, 0};
    for (const int mode : {kColourSmooth, kColourMostInfluential, kColourLeastInfluential}) {
        table[11] = 0.0F;
        for (ZWeightUIModelData* const each : {&data, &owner})
            each->ComputeColors(table, mode);
        const Colour before = ColourOf(data, 0);
        table[11] = 1.0F;
        for (ZWeightUIModelData* const each : {&data, &owner})
            each->BoneColorChanged(table, 3, mode, 1, 1, 0);
        EXPECT_EQ(ColourOf(data, 0), before) << mode;
        EXPECT_EQ(ColourOf(owner, 0), (Colour{1, 1, 1})) << mode;
    }
}

TEST_F(Colouring, LinksWithoutAColourArePassedOver)
{
    ZWeightUIModelData& data = Load(kDeformTotal100, {{0.25, 0.5, 0.25}});
    const ZBoneColourTable shortTable{1, 0, 0};
    data.ComputeColors(shortTable, kColourSmooth);
    EXPECT_THAT(ColourOf(data, 0), ElementsAre(0.25F, 0.0F, 0.0F));
    data.ComputeColors(shortTable, kColourMostInfluential);
    EXPECT_EQ(ColourOf(data, 0), kRed);
    data.vertexInfluences[0]->links[0] = 99;
    data.vertexInfluences[0]->links[1] = -5;
    data.ComputeColors(table, kColourLeastInfluential);
    EXPECT_EQ(ColourOf(data, 0), kGreen);
}

TEST_F(Colouring, ModelThatIsNotLoadedIsPassedOver)
{
    ZWeightUIModelData& data = Load(kDeformNormalise, {{1}, {1}});
    data.SetModelSelected(false, nullptr);
    data.Refresh();
    data.SetVertexState(1, 2);
    data.ComputeColors(table, kColourSmooth);
    data.ComputeActiveColors(table, kColourSmooth, kAffectAllSelected);
    data.BoneColorChanged(table, 0, kColourSmooth, 1, 0, 0);
    data.BoneColorChanged(table, 0, kColourMostInfluential, 1, 0, 0);
    EXPECT_EQ(data.vertexColours.GetCount(), 0);
}

TEST(Strategy, IsChosenByTheDeformationMode)
{
    for (const int mode : {0, 1, 2, 3, -1}) {
        const std::unique_ptr<IWeightDeform> strategy(ZWeightStrategy_Make(mode));
        EXPECT_EQ(dynamic_cast<ZWeightDeformTotal100*>(strategy.get()) != nullptr, mode == 2);
        EXPECT_EQ(dynamic_cast<ZWeightDeformNormalize*>(strategy.get()) != nullptr, mode != 2);
    }
}

// Against a plain version.

/// The rules as one would say them, one vertex, one channel at a time.
float PlainColour(const VertexInfluences& record, const ZBoneColourTable& table, int mode, bool divide, int channel)
{
    const auto colour = [&](int k) { return table[3 * record.links[k] + channel]; };
    if (mode == kColourSmooth) {
        float sum = 0;
        for (int k = 0; k < record.GetCount(); ++k)
            sum += record.weights[k];
        if (divide && sum == 0.0F)
            return 0;
        const float scale = divide ? 1.0F / sum : 1.0F;
        float result = 0;
        for (int k = 0; k < record.GetCount(); ++k)
            result += (record.weights[k] * scale) * colour(k);
        return result;
    }
    float best = mode == kColourMostInfluential ? -1.0F : 2.0F;
    float result = 0;
    for (int k = 0; k < record.GetCount(); ++k) {
        const float weight = record.weights[k];
        if (mode == kColourMostInfluential ? weight > best : best > weight && weight > 0.0F) {
            best = weight;
            result = colour(k);
        }
    }
    return result;
}

TEST(StrategyProperty, ColoursAreThoseOfThePlainRules)
{
    const bool held = rc::check("colours are those of the plain rules", [] {
        EditingTool tool;
        tool.character.AddBones(5);
        const int deformMode = *rc::gen::element(0, 2);
        ZModelPolymesh* const mesh = tool.character.AddMesh("Body", 4, deformMode);
        for (int vertex = 0; vertex < 4; ++vertex)
            for (int link = 0; link < 5; ++link)
                if (*rc::gen::arbitrary<bool>())
                    TinyCharacter::Weight(mesh, link, vertex, *rc::gen::inRange(0, 5) * 0.25);
        ZWeightUIModelData& data = tool.Admit(mesh);
        data.normaliseOnRefresh = *rc::gen::inRange<std::uint8_t>(0, 2);
        tool.RebuildBoneList();
        const int mode = *rc::gen::inRange(0, 3);
        data.ComputeColors(tool.colours, mode);
        const auto check = [&] {
            for (int vertex = 0; vertex < 4; ++vertex)
                for (int channel = 0; channel < 3; ++channel)
                    RC_ASSERT(data.vertexColours[4 * vertex + channel] == PlainColour(*data.vertexInfluences[vertex],
                                                                                      tool.colours, mode,
                                                                                      deformMode == 0, channel));
        };
        check();
        data.vertexColours.Fill(9.0F);
        for (const int vertex : {3, 1, 0, 2})
            data.SetVertexState(vertex, 2);
        data.ComputeActiveColors(tool.colours, mode, kAffectAllSelected);
        check();
    });
    EXPECT_TRUE(held);
}

/// Every vertex has some weight here; without any, the normalising smooth update gives no number until recoloured.
TEST(StrategyProperty, ChangedBoneEndsAsAFullRecolouring)
{
    const bool held = rc::check("a changed bone ends as a full recolouring", [] {
        EditingTool tool;
        tool.character.AddBones(4);
        ZModelPolymesh* const mesh = tool.character.AddMesh("Body", 5, *rc::gen::element(0, 2));
        for (int vertex = 0; vertex < 5; ++vertex) {
            TinyCharacter::Weight(mesh, vertex % 4, vertex, 0.25);
            for (int link = 0; link < 4; ++link)
                if (link != vertex % 4 && *rc::gen::arbitrary<bool>())
                    TinyCharacter::Weight(mesh, link, vertex, *rc::gen::inRange(0, 5) * 0.25);
        }
        ZWeightUIModelData& data = tool.Admit(mesh);
        data.normaliseOnRefresh = *rc::gen::inRange<std::uint8_t>(0, 2);
        tool.RebuildBoneList();
        const int mode = *rc::gen::inRange(0, 3);
        data.ComputeColors(tool.colours, mode);
        for (int change = *rc::gen::inRange(1, 6); change > 0; --change) {
            const int bone = *rc::gen::inRange(0, 4);
            float* const colour = &tool.colours[3 * bone];
            const float old[3] = {colour[0], colour[1], colour[2]};
            for (int channel = 0; channel < 3; ++channel)
                colour[channel] = static_cast<float>(*rc::gen::inRange(0, 9)) / 8.0F;
            data.BoneColorChanged(tool.colours, bone, mode, old[0], old[1], old[2]);
        }
        const std::vector<float> updated(data.vertexColours.begin(), data.vertexColours.end());
        data.ComputeColors(tool.colours, mode);
        for (size_t i = 0; i < updated.size(); ++i)
            RC_ASSERT(std::abs(updated[i] - data.vertexColours[static_cast<int>(i)]) < 1e-5F);
    });
    EXPECT_TRUE(held);
}

} // namespace
