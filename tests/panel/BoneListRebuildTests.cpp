// SPDX-License-Identifier: MIT
// Rebuilding the bone list is one operation of many parts, and their order shows.
#include "ToolStage.h"
#include "support/RecordingSkin.h"

#include <algorithm>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BoneListRebuild : public ToolStage
{
protected:
    void SetUp() override { OpenTool(); }
    void DropTwoCheckedModels()
    {
        DropModels(AddCharacter("One"), AddCharacter("Two"));
        Check(1, true);
    }
    void Check(int row, bool on) { tool->ModelListBox().UserSetCheck(row, on); }
    std::vector<float> ColourOf(int model, int vertex)
    {
        const float* const colour = &Items()[model]->vertexColours[4 * vertex];
        return {colour[0], colour[1], colour[2]};
    }
};

/// Reading comes after the selection was dropped: the flags of the unchecked model follow its lists.
TEST_F(BoneListRebuild, UncheckedModelsLetGoOfTheirVerticesBeforeSkinsAreRead)
{
    DropTwoCheckedModels();
    PickAll();
    ASSERT_EQ(Items()[0]->noSelectedVertices, 0);
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    Check(0, false);
    EXPECT_EQ(Items()[0]->noSelectedVertices, 1);
    EXPECT_EQ(Items()[0]->noActiveVertices, 1);
    EXPECT_FALSE(Items()[0]->IsLoaded());
    EXPECT_EQ(Items()[1]->activeVertices.GetCount(), 4);
    EXPECT_EQ(Panel().selection.vertexRows.GetCount(), 4);
    EXPECT_THAT(Panel().listVertexList.GetSelectedRows(), ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps + 1) << "the check mark alone";
}

/// A skin is read with the links' places in the new list, and only then is its display value reset, once.
TEST_F(BoneListRebuild, SkinsAreReadAfterTheBonesAreCollectedAndTheirHintIsResetAfterwards)
{
    auto made = std::make_unique<RecordedMesh>("Body", 2, kDeformNormalise);
    RecordedMesh* const mesh = made.get();
    mesh->GetSkin()->AppendLink(AddBone("A"), {});
    mesh->GetSkin()->BeginLink(0);
    mesh->GetSkin()->AddEntry(1, 0.25);
    mesh->GetSkin()->EndLink();
    Scene().AddModel(std::move(made));
    DropModels(mesh);
    ASSERT_EQ(Items().GetCount(), 1);
    EXPECT_EQ(Items()[0]->VertexBoneWeight(0, 1), 1.0F);
    const std::vector<std::string>& calls = mesh->Recorder().calls;
    const auto placeOf = [&](const char* call) { return std::find(calls.begin(), calls.end(), call) - calls.begin(); };
    EXPECT_LT(placeOf("ClearEntries"), placeOf("AddEntry(1, 1)"));
    EXPECT_LT(placeOf("AddEntry(1, 1)"), placeOf("SetSkinDisplayValue(-1)"));
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "SetSkinDisplayValue(-1)"), 1);
    mesh->Recorder().calls.clear();
    tool->RefreshModelList(true, false);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "SetSkinDisplayValue(-1)"), 0);
    session->ClearScene();
}

/// The models are coloured with the colours that the bones start afresh with.
TEST_F(BoneListRebuild, ColoursStartAfreshBeforeTheModelsAreColoured)
{
    DropTwoCheckedModels();
    SelectBones({0});
    Panel().boneColorEdit.UserSetColour(0.0, 0.0, 1.0);
    ASSERT_THAT(ColourOf(0, 0), ElementsAre(0.0F, 0.4F, 0.5F));
    Check(1, false);
    EXPECT_THAT(ColourOf(0, 0), ElementsAre(0.5F, 0.4F, 0.0F));
    EXPECT_THAT(Panel().selectedBones, ElementsAre(0));
    EXPECT_EQ(Panel().boneColorEdit.GetColour()[0], 1.0) << "the field shows the current bone's new colour";
}

/// Lists are filled from what follows the bones, and the snapshot names the bones by their new places.
TEST_F(BoneListRebuild, ListsAndSnapshotFollowTheBonesToTheirNewPlaces)
{
    DropTwoCheckedModels();
    PickAll();
    SelectBones({1, 3});
    Panel().spreadWeights.UserType(1, kSpreadLock, 1); // the last bone
    Check(0, false);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("TwoHip", "TwoKnee"));
    EXPECT_THAT(Panel().listBonesList.GetSelectedRows(), ElementsAre(1));
    EXPECT_THAT(Ints(Panel().lockFlags), ElementsAre(0, 1));
    ASSERT_EQ(Panel().spreadWeights.GetRowCount(), 1);
    EXPECT_EQ(Panel().spreadWeights.GetRowLabel(0), "TwoKnee");
    EXPECT_EQ(Cell(0, kSpreadLock), 1);
    EXPECT_EQ(Cell(0, kSpreadWeight), 50);
    EXPECT_THAT(Ints(Panel().weightChange.snapshotBones), ElementsAre(0, 1));
    EXPECT_THAT(Panel().weightChange.snapshotWeights, ElementsAre(50.0F, 50.0F));
    EXPECT_THAT(Ints(Items()[1]->boneLinkPositions), ElementsAre(0, 1));
    Check(1, false);
    EXPECT_THAT(Ints(Panel().weightChange.snapshotBones), IsEmpty());
    EXPECT_THAT(Texts(Panel().listVertexList), ElementsAre("Empty"));
}

TEST_F(BoneListRebuild, EditedColourLeavesModelsThatDoNotUseTheBone)
{
    DropTwoCheckedModels();
    for (const int mode : {kColourSmooth, kColourMostInfluential, kColourLeastInfluential}) {
        Panel().colorModeList.UserChoose(mode);
        const std::vector<float> other = ColourOf(0, 1), before = ColourOf(1, 1);
        SelectBones({2}); // the second model's first
        Panel().boneColorEdit.UserSetColour(0.25, 0.25, 0.125 * (mode + 1));
        EXPECT_EQ(ColourOf(0, 1), other) << mode;
        EXPECT_NE(ColourOf(1, 1), before) << mode;
    }
}

} // namespace
