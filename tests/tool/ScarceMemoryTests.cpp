// SPDX-License-Identifier: MIT
// A tool that got no manipulator or no constraint: a piece of it is missing, and the rest works.
#include "ScarceMemory.h"
#include "ToolStage.h"

#include "editing/ZWeightStrategies.h"
#include "weights/ZWeightGeomPoly.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ScarceTool : public ToolStage
{
protected:
    void OpenWithout(std::size_t bytes)
    {
        const ScarceMemory scarce(bytes);
        OpenTool();
        ASSERT_EQ(scarce.Refused(), 1);
        EXPECT_THAT(ZToolKit_GetMessages(), IsEmpty());
        EXPECT_THAT(ZReport_Warnings(), IsEmpty());
    }
    /// What a user does in passing, with a look at what must have come of it.
    void UseEverything()
    {
        ZModel* const body = AddCharacter("Body");
        DropModels(body, AddCharacter("Other"));
        EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true, false));
        tool->ModelListBox().UserSetCheck(1, true);
        EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyHip", "BodyKnee", "OtherHip", "OtherKnee"));
        SelectBones({0, 1});
        EXPECT_EQ(Panel().spreadWeights.GetRowCount(), 2);
        Panel().boneColorEdit.UserSetColour(0, 0, 1);
        Panel().sphereSizeSlider.UserSetValue(3);
        session->PressKey('F', 0);
        session->PressKey('W', 0);
        tool->ToolDeactivate();
        tool->ToolActivate();
        Scene().DeleteModel(tool->BoneList()[1]);
        EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyHip", "OtherHip", "OtherKnee"));
        Scene().DeleteModel(body);
        EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Other"));
        session->AfterEvent();
        session->ClearScene();
        EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Drop models here"));
        session->CloseTool(tool);
        EXPECT_THAT(ZToolKit_GetMessages(), IsEmpty());
    }
};

TEST_F(ScarceTool, WithoutAManipulatorTheListsAndThePanelWork)
{
    OpenWithout(sizeof(ZCharacterWeightingManipulator));
    EXPECT_EQ(tool->Manipulator(), nullptr);
    EXPECT_NE(tool->Constraint(), nullptr);
    EXPECT_THAT(ZManipulator_GetManipulatorSet()->GetManipulators(), IsEmpty());
    UseEverything();
}

TEST_F(ScarceTool, WithoutAConstraintRestPositionIsRefusedAndTheRestWorks)
{
    OpenWithout(sizeof(ZCharacterWeightingConstraint));
    EXPECT_EQ(tool->Constraint(), nullptr);
    EXPECT_NE(tool->Manipulator(), nullptr);
    ZModel* const first = AddCharacter("First");
    DropModels(first);
    EXPECT_TRUE(Panel().toRestPositionButton.UserClick());
    EXPECT_FALSE(Panel().toRestPositionButton.GetState());
    EXPECT_FALSE(Panel().restPositionMode);
    Panel().SetRestPosition(true); // a mode that nobody can hold
    tool->ToolDeactivate();
    EXPECT_FALSE(Panel().restPositionMode);
    Panel().SetRestPosition(true);
    tool->ToolActivate();
    Scene().DeleteModel(first);
    EXPECT_FALSE(Panel().restPositionMode);
    UseEverything();
}

TEST_F(ScarceTool, AModelForWhichThereIsNoMemoryIsPassedOver)
{
    OpenTool();
    ZModel* const one = AddCharacter("One");
    ZModel* const two = AddCharacter("Two");
    {
        const ScarceMemory scarce(sizeof(ZWeightUIModelData));
        DropModels(one, two);
        EXPECT_EQ(scarce.Refused(), 2);
    }
    EXPECT_EQ(Items().GetCount(), 0);
    EXPECT_EQ(one->ModelIneligible(), 0); // no edit was begun
    EXPECT_THAT(UndoNames(), IsEmpty());
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Drop models here"));
    DropModels(one, two);
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true, false));
}

TEST_F(ScarceTool, AModelForWhoseAdapterOrStrategyThereIsNoMemoryIsRefused)
{
    OpenTool();
    ZModel* const bone = AddBone("Twin");
    ZModelPolymesh* const body = AddSkinned("Body", 2, {bone, bone}, [](int, int) { return 0.5; });
    for (const std::size_t bytes : {sizeof(ZWeightGeomPoly), sizeof(ZWeightDeformNormalize)}) {
        {
            const ScarceMemory scarce(bytes);
            DropModels(body);
            EXPECT_GE(scarce.Refused(), 1) << bytes;
        }
        EXPECT_EQ(Items().GetCount(), 0) << bytes;
        EXPECT_EQ(body->ModelIneligible(), 0) << bytes;
        EXPECT_EQ(body->GetSkin()->LinkCount(), 2) << bytes;
        EXPECT_THAT(ZToolKit_GetMessages(), IsEmpty());
        EXPECT_THAT(UndoNames(), IsEmpty());
        EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    }
    DropModels(body);
    EXPECT_EQ(Items().GetCount(), 1);
}

TEST_F(ScarceTool, APickForWhoseRecordThereIsNoMemoryIsMadeAndNotRecorded)
{
    OpenTool();
    DropModels(AddCharacter("Body"));
    const auto names = UndoNames();
    const ScarceMemory scarce(sizeof(ZWeightingSelectionUndo));
    PickAll();
    EXPECT_GE(scarce.Refused(), 1);
    const ZWeightUIModelData& data = *Items()[0];
    EXPECT_EQ(data.activeVertices.GetCount(), data.vertexStates.GetCount());
    Panel().listVertexList.UserSelect({0});
    EXPECT_THAT(Ints(data.activeVertices), ElementsAre(0));
    Panel().selection.DeactivateAll();
    EXPECT_THAT(Ints(data.activeVertices), IsEmpty());
    Panel().selection.ClearAllVertexLists();
    EXPECT_THAT(Ints(data.selectedVertices), IsEmpty());
    EXPECT_GE(scarce.Refused(), 4);
    EXPECT_EQ(UndoNames(), names);
}

} // namespace
