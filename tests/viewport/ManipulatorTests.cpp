// SPDX-License-Identifier: MIT
// Gestures of the manipulator through the host's viewer: press, move, release, keys.
#include "GestureStage.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using ManipulatorTest = GestureStage;

TEST_F(ManipulatorTest, PlainClickReplaces)
{
    EXPECT_TRUE(Click(1));
    EXPECT_THAT(States(), ElementsAre(0, 2, 0, 0, 0));
    EXPECT_TRUE(Click(3));
    EXPECT_THAT(States(), ElementsAre(0, 0, 0, 2, 0));
}

TEST_F(ManipulatorTest, ShiftClickToggles)
{
    Click(1);
    Click(2, kModifierShift);
    EXPECT_THAT(States(), ElementsAre(0, 2, 2, 0, 0));
    Click(1, kModifierShift);
    EXPECT_EQ(States()[1], 0);
}

TEST_F(ManipulatorTest, ControlClickRemoves)
{
    DragOver(-0.5, 4.5);
    Click(2, kModifierControl);
    EXPECT_THAT(States(), ElementsAre(2, 2, 0, 2, 2));
}

TEST_F(ManipulatorTest, ControlShiftClickAdds)
{
    Click(1);
    Click(2, kModifierControl | kModifierShift);
    EXPECT_THAT(States(), ElementsAre(0, 2, 2, 0, 0));
}

TEST_F(ManipulatorTest, DragSelectsWhatIsInTheRectangle)
{
    EXPECT_TRUE(DragOver(0.5, 3.5));
    EXPECT_THAT(States(), ElementsAre(0, 2, 2, 2, 0));
    EXPECT_EQ(manipulator->GetGestureState(), 0);
    EXPECT_EQ(manipulator->GetPressed(), 0);
    EXPECT_FALSE(viewer.IsPickRectShown());
    EXPECT_EQ(tool.refreshes, 1);
    EXPECT_EQ(tool.snapshots, 1);
}

TEST_F(ManipulatorTest, OneGestureIsOneUndoStep)
{
    Click(0);
    const int before = ZUndoStack::TheOne()->GetUndoCount();
    DragOver(0.5, 3.5); // clears, then adds: two records, one step
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), before + 1);
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoNames().front(), "");
    ZUndoStack::TheOne()->Undo();
    EXPECT_THAT(States(), ElementsAre(2, 0, 0, 0, 0));
    ZUndoStack::TheOne()->Redo();
    EXPECT_THAT(States(), ElementsAre(0, 2, 2, 2, 0));
}

TEST_F(ManipulatorTest, StillClickHasHalfSizeTwelve)
{
    Click(1);
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[0], 12.0F / 800);
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[1], 12.0F / 600);
}

TEST_F(ManipulatorTest, DragHasHalfSizeFive)
{
    DragOver(0.5, 3.5);
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[0], 5.0F / 800);
}

TEST_F(ManipulatorTest, DragWhoseDifferencesCancelCountsAsClick)
{
    viewer.SetSize(800, 800); // equal pixels are equal normalised units
    viewer.Press(300, 300, kButtonLeft, 0);
    viewer.Move(400, 400);
    viewer.Release(400, 400);
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[0], 12.0F / 800);
}

TEST_F(ManipulatorTest, SmallMoveBecomesAClick)
{
    DragOver(0.5, 3.5);
    // A drag with Ctrl+Shift adds; with two pixels of movement the click decides, and with plain modifiers it replaces.
    const auto [x, y] = PixelOf(4);
    viewer.Press(x, y, kButtonLeft, 0);
    viewer.Move(x + 1, y + 1);
    viewer.Release(x + 1, y + 1);
    EXPECT_THAT(States(), ElementsAre(0, 0, 0, 0, 2));
}

/// Over nothing, a drag that replaces clears the selection and a click does not: that tells which state was decided.
TEST_F(ManipulatorTest, AtThreePixelsTheDragStays)
{
    Click(1);
    viewer.Press(20, 20, kButtonLeft, 0);
    viewer.Move(22, 20);
    viewer.Release(22, 20);
    EXPECT_EQ(States()[1], 2) << "two pixels are a click";
    viewer.Press(20, 20, kButtonLeft, 0);
    viewer.Move(22, 21);
    viewer.Release(22, 21);
    EXPECT_EQ(States()[1], 0) << "three pixels are a drag";
}

TEST_F(ManipulatorTest, DragOverNothingClearsWhenThePreferenceSaysSo)
{
    Click(1);
    const int bits = ZManipulator_GetManipulationUnselect();
    ZManipulator_SetManipulationUnselect(bits & ~4);
    viewer.Press(10, 10, kButtonLeft, 0);
    viewer.Move(40, 40);
    EXPECT_FALSE(viewer.Release(40, 40));
    EXPECT_EQ(States()[1], 2);
    ZManipulator_SetManipulationUnselect(bits | 4);
    viewer.Press(10, 10, kButtonLeft, 0);
    viewer.Move(40, 40);
    EXPECT_TRUE(viewer.Release(40, 40));
    EXPECT_EQ(States()[1], 0);
}

TEST_F(ManipulatorTest, AddingDragOverNothingKeepsTheSelection)
{
    Click(1);
    viewer.Press(10, 10, kButtonLeft, kModifierControl | kModifierShift);
    viewer.Move(40, 40);
    EXPECT_FALSE(viewer.Release(40, 40));
    EXPECT_EQ(States()[1], 2);
}

TEST_F(ManipulatorTest, KeyXGathersWithoutActivatingAndRestrictsLaterPicks)
{
    Object_SetKeyState(kKeyX, true);
    DragOver(0.5, 2.5);
    EXPECT_THAT(States(), ElementsAre(0, 1, 1, 0, 0));
    EXPECT_TRUE(manipulator->IsPickRestricted());
    Object_SetKeyState(kKeyX, false);
    DragOver(-0.5, 4.5, kModifierControl | kModifierShift);
    EXPECT_THAT(States(), ElementsAre(0, 2, 2, 0, 0)) << "only what was gathered is activated";
}

TEST_F(ManipulatorTest, PlainPickWhileRestrictedClearsEverything)
{
    Object_SetKeyState(kKeyX, true);
    DragOver(0.5, 2.5);
    Object_SetKeyState(kKeyX, false);
    DragOver(0.5, 2.5);
    EXPECT_THAT(States(), ElementsAre(0, 0, 0, 0, 0));
}

TEST_F(ManipulatorTest, RestrictionEndsWhenNothingIsSelected)
{
    Object_SetKeyState(kKeyX, true);
    DragOver(0.5, 2.5);
    Object_SetKeyState(kKeyX, false);
    tool.selection.ClearAllVertexLists();
    Click(3);
    EXPECT_FALSE(manipulator->IsPickRestricted());
    EXPECT_EQ(States()[3], 2);
}

TEST_F(ManipulatorTest, EscapeClearsOnlyWithoutAButton)
{
    Click(1);
    viewer.Press(10, 10, kButtonLeft, 0);
    viewer.KeyPress(27, 0);
    EXPECT_EQ(States()[1], 2);
    viewer.Release(10, 10);
    viewer.KeyPress(27, 0);
    EXPECT_EQ(States()[1], 0);
    ZUndoStack::TheOne()->Undo();
    EXPECT_EQ(States()[1], 2);
}

TEST_F(ManipulatorTest, EscapeWithAModifierDoesNothing)
{
    Click(1);
    viewer.KeyPress(27, kModifierShift);
    EXPECT_EQ(States()[1], 2);
}

TEST_F(ManipulatorTest, EscapeWhileRestrictedOnlyDeactivates)
{
    Object_SetKeyState(kKeyX, true);
    DragOver(0.5, 2.5);
    Object_SetKeyState(kKeyX, false);
    DragOver(0.5, 2.5, kModifierControl | kModifierShift);
    viewer.KeyPress(27, 0);
    EXPECT_THAT(States(), ElementsAre(0, 1, 1, 0, 0));
    Object_SetKeyState(kKeyX, true);
    viewer.KeyPress(27, 0);
    EXPECT_THAT(States(), ElementsAre(0, 0, 0, 0, 0));
}

TEST_F(ManipulatorTest, MiddleClicksAreSwallowedWhileTheToolHasModels)
{
    ZManipulatorInput press;
    press.viewer = &viewer;
    press.kind = kInputPress;
    press.button = kButtonMiddle;
    EXPECT_TRUE(manipulator->ManipulatorInputNotify(press));
    tool.modelSelectionEnabled = true;
    EXPECT_FALSE(manipulator->ManipulatorInputNotify(press));
    EXPECT_EQ(manipulator->GetPressed(), 0);
}

TEST_F(ManipulatorTest, WithoutModelsEveryEventIsPassedOn)
{
    FakeTool empty;
    manipulator->SetTool(&empty);
    ZManipulatorInput hover;
    hover.viewer = &viewer;
    hover.kind = kInputHover;
    EXPECT_FALSE(manipulator->ManipulatorInputNotify(hover));
    manipulator->SetTool(&tool);
    EXPECT_TRUE(manipulator->ManipulatorInputNotify(hover)) << "a pointer over weighted models belongs to the tool";
}

TEST_F(ManipulatorTest, HiddenManipulatorTakesNoPart)
{
    manipulator->ManipulatorSetHidden(true);
    Click(1);
    EXPECT_EQ(States()[1], 0);
}

TEST_F(ManipulatorTest, InactiveManipulatorAnswersFalse)
{
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(nullptr);
    ZManipulatorInput press;
    press.viewer = &viewer;
    press.kind = kInputPress;
    press.button = kButtonLeft;
    EXPECT_FALSE(manipulator->ManipulatorInputNotify(press));
}

TEST_F(ManipulatorTest, ActivatingSwitchesTheTransformManager)
{
    EXPECT_TRUE(ZTransformManager::TheOne()->TransformManagerGetActive());
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(nullptr);
    EXPECT_FALSE(ZTransformManager::TheOne()->TransformManagerGetActive());
}

TEST_F(ManipulatorTest, ReleaseOfAButtonThatMatchedNothingEndsThePress)
{
    viewer.Press(10, 10, kButtonRight, 0);
    EXPECT_EQ(manipulator->GetPressed(), 1);
    viewer.Release(10, 10);
    EXPECT_EQ(manipulator->GetPressed(), 0);
}

TEST_F(ManipulatorTest, GestureThatMatchesNothingChangesNothingAndIsLeftToTheHost)
{
    Click(1);
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    const int refreshes = tool.refreshes;
    EXPECT_FALSE(viewer.Press(10, 10, kButtonRight, 0));
    EXPECT_FALSE(viewer.Move(300, 300));
    EXPECT_FALSE(viewer.IsPickRectShown());
    EXPECT_FALSE(viewer.Release(300, 300));
    EXPECT_THAT(States(), ElementsAre(0, 2, 0, 0, 0));
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_EQ(tool.refreshes, refreshes);
}

TEST_F(ManipulatorTest, GestureCutOffLeavesNothingOpen)
{
    const auto [x, y] = PixelOf(1);
    viewer.Press(x, y, kButtonLeft, 0);
    viewer.Move(x + 50, y + 50);
    EXPECT_TRUE(viewer.IsPickRectShown());
    viewer.CancelGesture();
    EXPECT_FALSE(viewer.IsPickRectShown());
    EXPECT_EQ(manipulator->GetGestureState(), 0);
    EXPECT_EQ(manipulator->GetPressed(), 0);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_TRUE(Click(1));
    EXPECT_EQ(States()[1], 2);
}

TEST_F(ManipulatorTest, FrameActionFramesTheSelection)
{
    Click(3);
    const ZActionDefinition* const frame = Object_GetActionManager()->QueryAction(kActionFrameSelection);
    viewer.GetCamera().LookAt({2, 0, 30}, {2, 0, 0}, {0, 1, 0});
    manipulator->HandleShortCut(kKeyEventPressed, 'F', 0, frame);
    EXPECT_NEAR(viewer.GetCamera().GetTarget().x, 3, 1e-6);
}

TEST_F(ManipulatorTest, FrameActionWithoutSelectionChangesNothing)
{
    const ZgeVector3 eye = viewer.GetCamera().GetEye();
    const ZActionDefinition* const frame = Object_GetActionManager()->QueryAction(kActionFrameSelection);
    manipulator->HandleShortCut(kKeyEventPressed, 'F', 0, frame);
    EXPECT_EQ(viewer.GetCamera().GetEye(), eye);
}

TEST_F(ManipulatorTest, KeyWShowsAndActivates)
{
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(nullptr);
    manipulator->ManipulatorSetHidden(true);
    manipulator->HandleShortCut(kKeyEventPressed, 'W', 0, nullptr);
    EXPECT_FALSE(manipulator->ManipulatorGetHidden());
    EXPECT_TRUE(manipulator->ManipulatorGetActive());
}

TEST_F(ManipulatorTest, ModelDeletedFromTheListIsPickedNoMore)
{
    tool.models.Remove(data);
    EXPECT_FALSE(Click(1));
    EXPECT_EQ(States()[1], 0);
}

} // namespace
