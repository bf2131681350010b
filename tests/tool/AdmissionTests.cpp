// SPDX-License-Identifier: MIT
// Models that are dropped on the model list, checked, unchecked, and dragged out of it.
#include "ToolStage.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kAdditive =
    "The ADDITIVE type of deformation used by the model is not supported by this skinning tool.";

class Admission : public ToolStage
{
protected:
    void SetUp() override { OpenTool(); }
    ZModelPolymesh* AddAdditive(const char* name)
    {
        return AddSkinned(
            name, 3, {AddBone("Root")}, [](int, int) { return 1.0; }, kDeformAdditive);
    }
    std::vector<int> Flags()
    {
        std::vector<int> flags;
        for (int i = 0; i < Items().GetCount(); ++i)
            flags.push_back(Items()[i]->modelSelected);
        return flags;
    }
    std::vector<ZModel*> DragOut(ZtView& view)
    {
        GlobalDragAndDrop_StartFrom(&view);
        std::vector<ZModel*> dragged;
        for (int i = 0; i < GlobalDragAndDrop_GetCount(); ++i)
            dragged.push_back(Object_Cast<ZModel>(GlobalDragAndDrop_Get(i)));
        GlobalDragAndDrop_End();
        return dragged;
    }
};

TEST_F(Admission, ThreeModelsEnterAndOnlyTheFirstIsChecked)
{
    EXPECT_TRUE(DropModels(AddCharacter("One"), AddCharacter("Two"), AddCharacter("Three")));
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("One", "Two", "Three"));
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true, false, false));
    EXPECT_THAT(Flags(), ElementsAre(1, 0, 0));
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("OneHip", "OneKnee"));
    EXPECT_THAT(UndoNames(), ElementsAre("Tool Weighting Drop"));
}

TEST_F(Admission, ModelInTheListStaysAsItIsAndTheNextNewOneIsChecked)
{
    ZModel* const one = AddCharacter("One");
    DropModels(one);
    DropModels(one, AddCharacter("Two"), AddCharacter("Three"));
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("One", "Two", "Three"));
    EXPECT_THAT(Flags(), ElementsAre(1, 1, 0));
    EXPECT_THAT(ZToolKit_GetMessages(), IsEmpty());
}

TEST_F(Admission, ASkinnedModelWithoutAVertexIsPassedOverAndTheNextIsChecked)
{
    auto* const empty = static_cast<ZModelPolymesh*>(Scene().AddModel(std::make_unique<ZModelPolymesh>("Empty")));
    empty->MakeSkin(kDeformNormalise)->AppendLink(AddBone("Root"), ZgeMatrix());
    // An additive model behind it in the same drop: nothing is said of that one any more.
    DropModels(static_cast<ZModel*>(empty), AddAdditive("Additive"), AddCharacter("Good"));
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Good"));
    EXPECT_THAT(Flags(), ElementsAre(1));
    EXPECT_THAT(ZToolKit_GetMessages(), IsEmpty());
    EXPECT_EQ(empty->ModelIneligible(), 0);
}

TEST_F(Admission, ModelWithoutWeightableGeometryIsPassedOver)
{
    ZModel* const node = Scene().AddModel(std::make_unique<ZModel>("Node", ZModelKind::Node));
    ZModel* const bare = AddMesh("Bare", 3);
    ZModel* const good = AddCharacter("Good");
    DropOn(tool->ModelListBox(), {node, bare, nullptr, good});
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Good"));
    EXPECT_THAT(Flags(), ElementsAre(1));
    EXPECT_THAT(ZToolKit_GetMessages(), IsEmpty());
    EXPECT_EQ(bare->ModelIneligible(), 0);
}

TEST_F(Admission, OneModelDraggedTwiceEntersOnce)
{
    ZModel* const one = AddCharacter("One");
    DropModels(one, one, AddCharacter("Two"));
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("One", "Two"));
    EXPECT_THAT(Flags(), ElementsAre(1, 0));
}

TEST_F(Admission, ObjectsThatAreNoModelsArePassedOver)
{
    ZObject stranger("Stranger");
    DropOn(tool->ModelListBox(), {&stranger, AddCharacter("Good")});
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Good"));
    EXPECT_THAT(Flags(), ElementsAre(1));
    DropOn(Panel().listBonesList, {&stranger});
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("GoodHip", "GoodKnee"));
}

TEST_F(Admission, HiddenAndLockedModelsArePassedOver)
{
    ZModel* const hidden = AddCharacter("Hidden");
    ZModel* const locked = AddCharacter("Locked");
    hidden->SetHidden(true);
    locked->SetLocked(true);
    DropModels(hidden, locked);
    EXPECT_EQ(Items().GetCount(), 0);
    EXPECT_THAT(ZToolKit_GetMessages(), IsEmpty());
    EXPECT_THAT(UndoNames(), IsEmpty());
}

TEST_F(Admission, AdditiveWarningIsShownOncePerDrop)
{
    ZModel* const first = AddAdditive("First");
    ZModel* const second = AddAdditive("Second");
    DropModels(first, second);
    ASSERT_EQ(ZToolKit_GetMessages().size(), 1U);
    const ZtMessage& message = ZToolKit_GetMessages().front();
    EXPECT_EQ(message.title, "Skinning Tool");
    EXPECT_EQ(message.text, kAdditive);
    EXPECT_THAT(message.buttons, ElementsAre("OK"));
    EXPECT_EQ(Items().GetCount(), 0);
    DropModels(first);
    EXPECT_EQ(ZToolKit_GetMessages().size(), 2U); // another drop warns again
}

TEST_F(Admission, AModelWithoutASkinLeavesTheWarningToTheNext)
{
    DropModels(AddMesh("Bare", 3), AddAdditive("Additive"));
    ASSERT_EQ(ZToolKit_GetMessages().size(), 1U);
    EXPECT_EQ(ZToolKit_GetMessages().front().text, kAdditive);
}

TEST_F(Admission, AnAdditiveModelDoesNotTakeTheCheckOfTheNext)
{
    DropModels(AddAdditive("Additive"), AddCharacter("Good"));
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Good"));
    EXPECT_THAT(Flags(), ElementsAre(1));
}

TEST_F(Admission, DuplicateBonesAreAskedAboutOnce)
{
    ZModel* const bone = AddBone("Twin");
    ZModel* const body = AddSkinned("Body", 2, {bone, bone, bone}, [](int, int) { return 1.0 / 3; });
    ZToolKit_SetMessageAnswerer([](const ZtMessage&) { return 1; });
    DropModels(body);
    ASSERT_EQ(ZToolKit_GetMessages().size(), 1U);
    EXPECT_EQ(ZToolKit_GetMessages()[0].text, "Some bones are duplicate, do you wish to try to merge them ?");
    EXPECT_THAT(ZToolKit_GetMessages()[0].buttons, ElementsAre("Yes", "No"));
    EXPECT_EQ(body->GetSkin()->LinkCount(), 1);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("Twin"));
}

TEST_F(Admission, DropAcceptsWhileTheCursorIsOverTheList)
{
    GlobalDragAndDrop_Begin();
    EXPECT_TRUE(GlobalDragAndDrop_DropOn(&tool->ModelListBox())); // nothing in the drag
    EXPECT_THAT(UndoNames(), IsEmpty());
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Drop models here"));
}

TEST_F(Admission, UndoOfADropTakesTheChecksBackAndKeepsTheModels)
{
    DropModels(AddCharacter("One"), AddCharacter("Two"));
    EXPECT_TRUE(Undo());
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("One", "Two"));
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(false, false));
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("Empty"));
    EXPECT_TRUE(Redo());
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true, false));
}

TEST_F(Admission, CheckMarksChangeWithUndo)
{
    DropModels(AddCharacter("One"), AddCharacter("Two"));
    EXPECT_TRUE(tool->ModelListBox().UserSetCheck(1, true));
    EXPECT_THAT(Flags(), ElementsAre(1, 1));
    EXPECT_EQ(UndoNames().front(), "Tool Weighting Value Changed");
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("OneHip", "OneKnee", "TwoHip", "TwoKnee"));
    EXPECT_TRUE(Undo());
    EXPECT_THAT(Flags(), ElementsAre(1, 0));
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true, false));
    EXPECT_TRUE(Redo());
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true, true));
}

TEST_F(Admission, UncheckedModelLosesItsVertexRowsAlone)
{
    DropModels(AddCharacter("One", 3), AddCharacter("Two", 2));
    tool->ModelListBox().UserSetCheck(1, true);
    PickAll();
    ASSERT_EQ(Panel().selection.vertexRows.GetCount(), 5);
    tool->ModelListBox().UserSetCheck(0, false);
    EXPECT_THAT(Texts(Panel().listVertexList), ElementsAre("Vertex 0 Two", "Vertex 1 Two"));
    EXPECT_THAT(Ints(Panel().selection.targetRows), ElementsAre(0, 1));
}

TEST_F(Admission, DraggingOutWithTheKeyUpDoesNothing)
{
    ZModel* const one = AddCharacter("One");
    DropModels(one);
    EXPECT_THAT(DragOut(tool->ModelListBox()), IsEmpty());
    EXPECT_EQ(Items().GetCount(), 1);
    EXPECT_NE(one->ModelIneligible(), 0); // still under edit
}

TEST_F(Admission, DraggingOutTakesTheCheckedModels)
{
    ZModel* const one = AddCharacter("One");
    ZModel* const two = AddCharacter("Two");
    ZModel* const three = AddCharacter("Three");
    DropModels(one, two, three);
    tool->ModelListBox().UserSetCheck(2, true);
    PickAll();
    SelectBones({0});
    Object_SetKeyState(4, true);
    EXPECT_THAT(DragOut(tool->ModelListBox()), ElementsAre(one, three));
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Two"));
    EXPECT_TRUE(Panel().selection.vertexRows.IsEmpty());
    EXPECT_TRUE(Panel().selectedBones.IsEmpty());
    EXPECT_EQ(one->ModelIneligible(), 0);
    EXPECT_NE(two->ModelIneligible(), 0);
    while (Undo()) // records of models that left do nothing
        EXPECT_EQ(Items().GetCount(), 1);
}

TEST_F(Admission, SelectingRowsOfTheModelListChangesNothing)
{
    DropModels(AddCharacter("One"), AddCharacter("Two"));
    const long before = Panel().listBonesList.GetChangeCount();
    EXPECT_TRUE(tool->ModelListBox().UserSelect({1, 0}));
    EXPECT_THAT(Flags(), ElementsAre(1, 0));
    EXPECT_THAT(UndoNames(), ElementsAre("Tool Weighting Drop"));
    EXPECT_EQ(Panel().listBonesList.GetChangeCount(), before);
}

TEST_F(Admission, ADropInTheMiddleOfASliderDragIsAStepOfItsOwn)
{
    ZModel* const one = AddCharacter("One");
    DropModels(one);
    PickAll();
    SelectBones({0, 1});
    Panel().spreadWeights.UserSlide(0, kSpreadSlider, kViewPress, 70);
    DropModels(AddCharacter("Two"));
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_THAT(UndoNames(), ElementsAre("Tool Weighting Drop", "Apply Weight Change", "", "Tool Weighting Drop"));
    EXPECT_TRUE(Undo());
    EXPECT_NEAR(SkinWeight(one, 0, 0), 0.7, 1e-6);
    EXPECT_TRUE(Undo());
    EXPECT_NEAR(SkinWeight(one, 0, 0), 0.5, 1e-6);
}

TEST_F(Admission, RowInvitingToDropStaysChecked)
{
    EXPECT_TRUE(tool->ModelListBox().UserSetCheck(0, false));
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true));
    EXPECT_THAT(UndoNames(), IsEmpty());
}

// Bones.

class BoneDrop : public Admission
{
protected:
    void SetUp() override
    {
        Admission::SetUp();
        body = AddCharacter("Body");
        DropModels(body);
    }
    ZModel* AddMirrored(const char* name) { return AddBone(name, nullptr, {0, 1, 0}, {1, -1, 1}); }
    ZModelPolymesh* body = nullptr;
};

TEST_F(BoneDrop, BoneBecomesALinkOfEveryCheckedModel)
{
    ZModelPolymesh* const other = AddCharacter("Other");
    ZModelPolymesh* const unchecked = AddCharacter("Unchecked");
    DropModels(other, unchecked);
    ZModel* const tail = AddBone("Tail");
    DropBones(tail);
    EXPECT_EQ(body->GetSkin()->LinkModel(2), tail);
    EXPECT_EQ(other->GetSkin()->LinkModel(2), tail);
    EXPECT_EQ(unchecked->GetSkin()->LinkCount(), 2);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyHip", "BodyKnee", "Tail", "OtherHip", "OtherKnee"));
    DropBones(tail);
    EXPECT_EQ(body->GetSkin()->LinkCount(), 3);
}

TEST_F(BoneDrop, OkToAllStopsTheQuestionForTheRestOfTheDrop)
{
    ZToolKit_SetMessageAnswerer([](const ZtMessage&) { return 2; });
    DropBones(AddMirrored("Left"), AddMirrored("Right"));
    ASSERT_EQ(ZToolKit_GetMessages().size(), 1U);
    const ZtMessage& message = ZToolKit_GetMessages().front();
    EXPECT_EQ(message.title, "Skinning Tool");
    EXPECT_EQ(message.text, "Negative scaling detected in Bone : Left. This is not recommended.");
    EXPECT_THAT(message.buttons, ElementsAre("Ok", "Ok to All", "Cancel"));
    EXPECT_EQ(body->GetSkin()->LinkCount(), 4);
    DropBones(AddMirrored("Third"));
    EXPECT_EQ(ZToolKit_GetMessages().size(), 2U); // the choice lasted one drop
}

TEST_F(BoneDrop, OkAddsTheBoneAndAsksForTheNext)
{
    ZToolKit_SetMessageAnswerer([](const ZtMessage&) { return 1; });
    DropBones(AddMirrored("Left"), AddMirrored("Right"));
    EXPECT_EQ(ZToolKit_GetMessages().size(), 2U);
    EXPECT_EQ(body->GetSkin()->LinkCount(), 4);
}

TEST_F(BoneDrop, CancelEndsTheDropAndKeepsWhatWasAdded)
{
    ZToolKit_SetMessageAnswerer([](const ZtMessage&) { return 3; });
    DropBones(AddBone("Plain"), AddMirrored("Left"), AddBone("Late"));
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyHip", "BodyKnee", "Plain"));
}

TEST_F(BoneDrop, TheScalingThatCountsIsTheGlobalOne)
{
    ZModel* const mirrored = AddMirrored("Mirrored");
    ZModel* const below = AddBone("Below", mirrored);
    ZModel* const twice = AddBone("Twice", mirrored, {0, 1, 0}, {1, -1, 1});
    ZToolKit_SetMessageAnswerer([](const ZtMessage&) { return 1; });
    DropBones(below, twice);
    ASSERT_EQ(ZToolKit_GetMessages().size(), 1U);
    EXPECT_EQ(ZToolKit_GetMessages()[0].text, "Negative scaling detected in Bone : Below. This is not recommended.");
    EXPECT_EQ(body->GetSkin()->LinkCount(), 4);
}

TEST_F(BoneDrop, WithoutACheckedModelNoSkinIsTouched)
{
    tool->ModelListBox().UserSetCheck(0, false);
    DropBones(AddBone("Tail"));
    EXPECT_EQ(body->GetSkin()->LinkCount(), 2);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("Empty"));
}

TEST_F(BoneDrop, OnAnEmptyToolChangesNothing)
{
    Scene().DeleteModel(body);
    EXPECT_TRUE(DropBones(AddBone("Tail")));
    EXPECT_EQ(Panel().listBonesList.GetRowCount(), 0);
    EXPECT_THAT(ZToolKit_GetMessages(), IsEmpty());
}

TEST_F(BoneDrop, AnAddedBonePullsNothingUntilItIsGivenWeight)
{
    PickAll();
    DropBones(AddBone("Tail"));
    SelectBones({0, 1, 2});
    EXPECT_EQ(Cell(2, kSpreadWeight), 0.0);
    Panel().spreadWeights.UserType(2, kSpreadWeight, 20);
    EXPECT_NEAR(SkinWeight(body, 2, 0), 0.2, 1e-6);
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.4, 1e-6);
    EXPECT_TRUE(Undo());
    EXPECT_NEAR(SkinWeight(body, 2, 0), 0.0, 1e-6);
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.5, 1e-6);
}

TEST_F(BoneDrop, AMeshDroppedOnItsOwnBonesIsALinkLikeAnyOther)
{
    DropBones(body);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyHip", "BodyKnee", "Body"));
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.5, 1e-6);
    Scene().DeleteModel(body); // a model and a bone at once
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Drop models here"));
    EXPECT_EQ(tool->BoneList().GetCount(), 0);
}

TEST_F(BoneDrop, DragOutRemovesSelectedBonesThatPullNothing)
{
    DropBones(AddBone("Idle"), AddBone("Kept"));
    SelectBones({0, 2});
    DragOut(Panel().listBonesList);
    EXPECT_EQ(body->GetSkin()->LinkCount(), 4); // the key is up
    Object_SetKeyState(4, true);
    DragOut(Panel().listBonesList);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyHip", "BodyKnee", "Kept"));
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(0)); // it pulls vertices and stays
}

TEST_F(BoneDrop, SelectedBoneWhoseWeightsAreAllZeroMayLeave)
{
    PickAll();
    SelectBones({0, 1});
    Panel().listWeightingMode.UserChoose(kAffectAllSelected);
    Panel().spreadWeights.UserType(0, kSpreadWeight, 0);
    ASSERT_EQ(SkinWeight(body, 0, 0), 0.0);
    SelectBones({0});
    Object_SetKeyState(4, true);
    DragOut(Panel().listBonesList);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyKnee"));
    PickAll();
    SelectBones({0});
    EXPECT_EQ(Cell(0, kSpreadWeight), 100.0); // links moved down, and the weights with them
}

TEST_F(BoneDrop, EmptyDropOnlyRebuildsTheBoneList)
{
    GlobalDragAndDrop_Begin();
    EXPECT_TRUE(GlobalDragAndDrop_DropOn(&Panel().listBonesList));
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyHip", "BodyKnee"));
}

} // namespace
