// SPDX-License-Identifier: MIT
// The tool from its making to its end: sizes, settings, activation, host events.
#include "ToolStage.h"

#include "zconstraints/ZEvaluateManager.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ToolLife : public ToolStage
{
protected:
    /// A settings folder with these lines in "@Application.txt".
    std::string SettingsWith(const std::string& lines)
    {
        const auto folder =
            std::filesystem::temp_directory_path() / ("skindesk-tool-" + std::to_string(::getpid()) + "-" +
                                                      testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder);
        for (const char* const name : {"@Application.txt", "Application.txt"})
            std::ofstream(folder / name) << lines;
        m_folders.push_back(folder);
        return folder.string();
    }
    void TearDown() override
    {
        for (const auto& folder : m_folders)
            std::filesystem::remove_all(folder);
    }
    void HoldRestPosition()
    {
        ASSERT_TRUE(Panel().toRestPositionButton.UserClick());
        ASSERT_TRUE(Panel().restPositionMode);
    }

private:
    std::vector<std::filesystem::path> m_folders;
};

TEST_F(ToolLife, HasItsSizesAndItsFormsName)
{
    OpenTool();
    EXPECT_EQ(tool->GetObjectName(), "fmtoolcharacterweighting");
    EXPECT_EQ(tool->GetDesignWidth(), 1016);
    EXPECT_EQ(tool->GetDesignHeight(), 370);
    EXPECT_EQ(tool->GetToolWidth(), 1146);
    EXPECT_EQ(tool->GetToolHeight(), 311);
    EXPECT_EQ(tool->GetToolMinimumWidth(), 200);
    EXPECT_EQ(tool->GetToolMinimumHeight(), 200);
    EXPECT_EQ(Panel().GetObjectName(), "fmcharacterweightingnormallayout");
    EXPECT_EQ(Panel().GetDesignWidth(), 958);
    EXPECT_EQ(Panel().GetDesignHeight(), 368);
}

TEST_F(ToolLife, DeadWeightOfFivePercentIsAFraction)
{
    StartSession(SettingsWith("[Weighting]\nDeadWeight=5\n"));
    EXPECT_FLOAT_EQ(static_cast<float>(OpenTool().DeadWeight()), 0.05F);
}

TEST_F(ToolLife, DeadWeightIsATenthOfAPercentWithoutSettings)
{
    EXPECT_FLOAT_EQ(static_cast<float>(OpenTool().DeadWeight()), 0.001F);
}

TEST_F(ToolLife, DeadWeightIsReadAtTheMakingAndNeverWritten)
{
    const std::string lines = "[Weighting]\nDeadWeight=2\n";
    const std::string folder = SettingsWith(lines);
    StartSession(folder);
    OpenTool();
    std::ofstream(folder + "/@Application.txt") << "[Weighting]\nDeadWeight=7\n";
    EXPECT_FLOAT_EQ(static_cast<float>(tool->DeadWeight()), 0.02F);
    session->CloseTool(tool);
    std::ifstream file(folder + "/@Application.txt");
    const std::string after((std::istreambuf_iterator<char>(file)), {});
    EXPECT_EQ(after, "[Weighting]\nDeadWeight=7\n");
}

TEST_F(ToolLife, ManipulatorIsShownWhileActiveAndHiddenAfterwards)
{
    OpenTool();
    ZCharacterWeightingManipulator* const manipulator = tool->Manipulator();
    ASSERT_NE(manipulator, nullptr);
    EXPECT_EQ(manipulator->GetObjectName(), "Skin");
    EXPECT_FALSE(manipulator->ManipulatorGetHidden());
    EXPECT_EQ(ZManipulator_GetManipulatorSet()->ManipulatorGetActive(), manipulator);
    tool->ToolDeactivate(); // rest position was never entered
    EXPECT_TRUE(manipulator->ManipulatorGetHidden());
    EXPECT_EQ(ZManipulator_GetManipulatorSet()->ManipulatorGetActive(), nullptr);
}

TEST_F(ToolLife, DeactivatingLetsTheSkeletonGoAndResetsTheButton)
{
    OpenTool();
    DropModels(AddCharacter("Body"));
    HoldRestPosition();
    EXPECT_TRUE(tool->Constraint()->ConstraintGetEnabled());
    tool->SetCurrentManipulation(tool);
    tool->ToolDeactivate();
    EXPECT_FALSE(tool->Constraint()->ConstraintGetEnabled());
    EXPECT_TRUE(tool->Constraint()->IsTeardownPending());
    EXPECT_FALSE(Panel().restPositionMode);
    EXPECT_FALSE(Panel().toRestPositionButton.GetState());
    EXPECT_TRUE(tool->Manipulator()->ManipulatorGetHidden());
    EXPECT_EQ(tool->GetCurrentManipulation(), nullptr);
}

TEST_F(ToolLife, ActivatingInRestPositionHandsTheBonesOnce)
{
    OpenTool();
    DropModels(AddCharacter("Body"));
    tool->ToolDeactivate();
    HoldRestPosition(); // by a script, while the window is hidden
    tool->ToolActivate();
    ASSERT_EQ(tool->Constraint()->GetEntries().size(), 1U);
    EXPECT_EQ(tool->Constraint()->GetEntries()[0]->bones.GetCount(), 2);
    EXPECT_TRUE(tool->Constraint()->ConstraintGetEnabled());
}

TEST_F(ToolLife, ActivatingInRestPositionWithoutModelsJustEnables)
{
    OpenTool();
    tool->ToolDeactivate();
    Panel().SetRestPosition(true);
    tool->ToolActivate();
    EXPECT_TRUE(tool->Constraint()->ConstraintGetEnabled());
    EXPECT_TRUE(tool->Constraint()->GetEntries().empty());
}

TEST_F(ToolLife, RestPositionSpringsBackWithoutABone)
{
    OpenTool();
    EXPECT_TRUE(Panel().toRestPositionButton.UserClick());
    EXPECT_FALSE(Panel().toRestPositionButton.GetState());
    EXPECT_FALSE(Panel().restPositionMode);
}

TEST_F(ToolLife, RestPositionPutsABentKneeBackAndLeavingBendsItAgain)
{
    OpenTool();
    DropModels(AddCharacter("Body"));
    ZModel* const knee = tool->BoneList()[1];
    const ZgeMatrix bound = knee->GetTransformMatrix(true);
    knee->SetPosedTransform(ZgeRotationFromEuler({0, 0, 40}) * ZgeTranslation({0.5, 1, 0}));
    const ZgeMatrix bent = knee->GetTransformMatrix(true);
    HoldRestPosition();
    session->AfterEvent();
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(knee->GetTransformMatrix(true).Data()[i], bound.Data()[i], 1e-9) << i;
    Panel().toRestPositionButton.UserClick();
    session->AfterEvent();
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(knee->GetTransformMatrix(true).Data()[i], bent.Data()[i], 1e-9) << i;
}

TEST_F(ToolLife, ModelThatLeavesInRestPositionLetsItsBonesGoAndKeepsTheOthers)
{
    OpenTool();
    ZModel* const one = AddCharacter("One");
    ZModel* const two = AddCharacter("Two");
    DropModels(one, two);
    tool->ModelListBox().UserSetCheck(1, true);
    HoldRestPosition();
    Scene().DeleteModel(one);
    session->AfterEvent();
    EXPECT_TRUE(Panel().restPositionMode);
    ASSERT_EQ(tool->Constraint()->GetEntries().size(), 1U);
    EXPECT_EQ(tool->Constraint()->GetEntries()[0]->owner, two);
    Scene().DeleteModel(two);
    session->AfterEvent();
    EXPECT_FALSE(Panel().restPositionMode);
    EXPECT_FALSE(Panel().toRestPositionButton.GetState());
    EXPECT_FALSE(tool->Constraint()->ConstraintGetEnabled());
}

TEST_F(ToolLife, RestPositionIsLeftByTheSecondClick)
{
    OpenTool();
    DropModels(AddCharacter("Body"));
    HoldRestPosition();
    EXPECT_TRUE(Panel().toRestPositionButton.UserClick());
    EXPECT_FALSE(Panel().restPositionMode);
    EXPECT_FALSE(tool->Constraint()->ConstraintGetEnabled());
    session->AfterEvent();
    EXPECT_TRUE(tool->Constraint()->GetEntries().empty());
}

TEST_F(ToolLife, DeletedModelLeavesTheListWithItsRow)
{
    OpenTool();
    ZModel* const one = AddCharacter("One");
    ZModel* const two = AddCharacter("Two");
    DropModels(one, two);
    PickAll();
    Scene().DeleteModel(one);
    EXPECT_EQ(Items().GetCount(), 1);
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Two"));
    EXPECT_TRUE(Panel().selection.vertexRows.IsEmpty());
    EXPECT_THAT(Texts(Panel().listVertexList), ElementsAre("Empty"));
    EXPECT_EQ(tool->BoneList().GetCount(), 0);
}

TEST_F(ToolLife, DeletedBoneLeavesTheSelectionAndRestPosition)
{
    OpenTool();
    ZModel* const a = AddBone("A");
    ZModel* const b = AddBone("B", a);
    ZModel* const c = AddBone("C", b);
    DropModels(AddSkinned("Body", 3, {a, b, c}, [](int, int) { return 1.0 / 3; }));
    SelectBones({1, 2});
    HoldRestPosition();
    session->AfterEvent();
    Scene().DeleteModel(b);
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(1)); // C has moved down
    EXPECT_EQ(tool->BoneList()[1], c);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("A", "C"));
    EXPECT_FALSE(Panel().restPositionMode);
    EXPECT_FALSE(Panel().toRestPositionButton.GetState());
    EXPECT_FALSE(tool->Constraint()->ConstraintGetEnabled());
    EXPECT_TRUE(tool->Constraint()->GetEntries().empty());
    session->AfterEvent();
}

TEST_F(ToolLife, SelectingASelectedBoneInTheSceneOnlyRefreshes)
{
    OpenTool();
    DropModels(AddCharacter("Body"));
    SelectBones({1});
    ZModel* const knee = tool->BoneList()[1];
    const long before = Panel().listBonesList.GetChangeCount();
    knee->SetSelected(true);
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(1));
    EXPECT_GT(Panel().listBonesList.GetChangeCount(), before);
}

TEST_F(ToolLife, SelectingABoneInTheSceneSelectsItsRow)
{
    OpenTool();
    DropModels(AddCharacter("Body"));
    tool->BoneList()[1]->SetSelected(true);
    EXPECT_THAT(Panel().listBonesList.GetSelectedRows(), ElementsAre(1));
    EXPECT_EQ(Panel().spreadWeights.GetRowCount(), 1);
    Scene().GetModels().back()->SetSelected(true); // a mesh is no bone
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(1));
}

TEST_F(ToolLife, ClearingTheSceneEmptiesTheModelList)
{
    OpenTool();
    DropModels(AddCharacter("One"), AddCharacter("Two"));
    PickAll();
    SelectBones({0});
    HoldRestPosition();
    session->ClearScene();
    EXPECT_EQ(Items().GetCount(), 0);
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Drop models here"));
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true));
    EXPECT_THAT(Texts(Panel().listBonesList), IsEmpty());
    EXPECT_EQ(Panel().spreadWeights.GetRowCount(), 0);
    EXPECT_FALSE(Panel().restPositionMode);
    EXPECT_TRUE(tool->Constraint()->GetEntries().empty());
    session->AfterEvent();
}

TEST_F(ToolLife, ClosingInTheMiddleOfASliderDragEndsItsStep)
{
    OpenTool();
    ZModel* const body = AddCharacter("Body");
    DropModels(body);
    PickAll();
    SelectBones({0, 1});
    Panel().spreadWeights.UserSlide(0, kSpreadSlider, kViewPress, 70);
    EXPECT_TRUE(ZUndoStack::TheOne()->IsTransactionOpen());
    session->CloseTool(tool);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.7, 1e-6);
    Undo(); // the records outlive their tool and do nothing
    Redo();
}

TEST_F(ToolLife, DestroyedInTheMiddleOfASliderDragLeavesNoOpenStep)
{
    OpenTool();
    DropModels(AddCharacter("Body"));
    PickAll();
    SelectBones({0, 1});
    auto* const second = new ZToolCharacterWeighting; // a tool that no session knows
    Panel().spreadWeights.UserSlide(0, kSpreadSlider, kViewPress, 70);
    delete second;
    EXPECT_TRUE(ZUndoStack::TheOne()->IsTransactionOpen()); // the other tool's drag is not its business
    Panel().spreadWeights.UserSlide(0, kSpreadSlider, kViewRelease, 60);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
}

TEST_F(ToolLife, ClosingInTheMiddleOfAPickLeavesTheViewerUsable)
{
    OpenTool();
    DropModels(AddCharacter("Body"));
    ZViewer& viewer = session->GetViewer();
    viewer.Press(10, 10, kButtonLeft, 0);
    viewer.Move(200, 200);
    EXPECT_TRUE(viewer.IsPickRectShown());
    session->CloseTool(tool);
    EXPECT_FALSE(viewer.IsPickRectShown());
    viewer.Move(300, 300);
    viewer.Release(300, 300);
    EXPECT_EQ(ZManipulator_GetManipulatorSet()->ManipulatorGetActive(), nullptr);
}

TEST_F(ToolLife, AClosedToolLeavesNothingThatListens)
{
    const size_t manipulators = ZManipulator_GetManipulatorSet()->GetManipulators().size();
    const size_t constraints = ZEvaluateManager::TheOne()->GetConstraints().size();
    ZModel* const body = AddCharacter("Body");
    for (int round = 0; round < 3; ++round) {
        ZToolCharacterWeighting& opened = OpenTool();
        DropOn(opened.ModelListBox(), {body});
        session->CloseTool(&opened);
    }
    EXPECT_EQ(ZManipulator_GetManipulatorSet()->GetManipulators().size(), manipulators);
    EXPECT_EQ(ZEvaluateManager::TheOne()->GetConstraints().size(), constraints);
    EXPECT_EQ(body->ModelIneligible(), 0); // every begun edit was ended
    body->SetSelected(true);
    session->PressKey('W', 0);
    session->PressKey('F', 0);
    Scene().DeleteModel(body);
    session->ClearScene();
}

TEST_F(ToolLife, AManipulatorThatOutlivesItsToolIsHarmless)
{
    auto* const alone = new ZToolCharacterWeighting;
    alone->ToolActivate();
    ZCharacterWeightingManipulator* const left = alone->Manipulator();
    delete alone;
    EXPECT_TRUE(left->ManipulatorGetHidden());
    EXPECT_FALSE(left->ManipulatorGetActive());
    EXPECT_EQ(left->GetTool(), nullptr);
    session->GetViewer().Press(10, 10, kButtonLeft, 0);
    session->GetViewer().Release(10, 10);
    ZManipulator_GetManipulatorSet()->ManipulatorRemove(left);
}

TEST_F(ToolLife, KeyFFramesTheSelectionOnlyWhileTheToolIsActive)
{
    OpenTool();
    DropModels(AddCharacter("Body", 9));
    PickAll();
    ZViewer& viewer = session->GetViewer();
    viewer.GetCamera().LookAt({400, 300, 900}, {400, 300, 0}, {0, 1, 0});
    const ZgeMatrix away = viewer.GetCamera().ViewMatrix();
    EXPECT_TRUE(Object_SendShortCut(513, 70, 'F', 0));
    EXPECT_NE(viewer.GetCamera().ViewMatrix(), away);
    tool->ToolDeactivate();
    EXPECT_FALSE(Object_SendShortCut(513, 70, 'F', 0));
    EXPECT_FALSE(Object_SendShortCut(513, 70, 'W', 0));
    EXPECT_TRUE(tool->Manipulator()->ManipulatorGetHidden());
}

TEST_F(ToolLife, KeyWShowsAndActivatesTheManipulator)
{
    OpenTool();
    tool->Manipulator()->ManipulatorSetHidden(true);
    EXPECT_TRUE(Object_SendShortCut(513, 70, 'W', 0));
    EXPECT_FALSE(tool->Manipulator()->ManipulatorGetHidden());
    EXPECT_EQ(ZManipulator_GetManipulatorSet()->ManipulatorGetActive(), tool->Manipulator());
    EXPECT_FALSE(Object_SendShortCut(513, 70, 'W', kModifierShift));
}

TEST_F(ToolLife, SecondToolRefusesAMeshThatAnotherEdits)
{
    OpenTool();
    ZModel* const body = AddCharacter("Body");
    DropModels(body);
    ZToolCharacterWeighting& second = OpenTool();
    ASSERT_NE(&second, tool);
    DropOn(second.ModelListBox(), {body});
    EXPECT_EQ(second.ModelDataList().GetCount(), 0);
    Object_SetKeyState(4, true);
    GlobalDragAndDrop_StartFrom(&tool->ModelListBox());
    GlobalDragAndDrop_End();
    DropOn(second.ModelListBox(), {body});
    EXPECT_EQ(second.ModelDataList().GetCount(), 1);
}

TEST_F(ToolLife, TwoToolsKeepTheirOwnModelsAndSelections)
{
    OpenTool();
    ZToolCharacterWeighting& second = OpenTool();
    ZModel* const one = AddCharacter("One");
    ZModel* const two = AddCharacter("Two");
    DropModels(one);
    DropOn(second.ModelListBox(), {two});
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("One"));
    EXPECT_THAT(Texts(second.ModelListBox()), ElementsAre("Two"));
    Panel().listBonesList.UserSelect({0});
    EXPECT_TRUE(second.SelectedBones().IsEmpty());
    session->CloseTool(tool);
    tool = &second;
    EXPECT_THAT(Texts(second.Panel().listBonesList), ElementsAre("TwoHip", "TwoKnee"));
    Scene().DeleteModel(one);
    Scene().DeleteModel(two);
    EXPECT_EQ(second.ModelDataList().GetCount(), 0);
}

TEST_F(ToolLife, MenuCommandClearsAllVertexLists)
{
    OpenTool();
    DropModels(AddCharacter("Body"));
    PickAll();
    ASSERT_FALSE(Panel().selection.vertexRows.IsEmpty());
    EXPECT_FALSE(tool->ExecuteMenuCommand("Paint"));
    EXPECT_FALSE(tool->ExecuteMenuCommand(nullptr));
    EXPECT_TRUE(tool->ExecuteMenuCommand("Clear All Vertex Lists"));
    EXPECT_TRUE(Panel().selection.vertexRows.IsEmpty());
    EXPECT_EQ(UndoNames().front(), "Tool Weighting Clear All Vertex Lists");
    EXPECT_TRUE(Undo());
    EXPECT_EQ(Panel().selection.vertexRows.GetCount(), 4);
}

} // namespace
