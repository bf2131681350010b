// SPDX-License-Identifier: MIT
// The edges of a gesture: how near counts, what decides between click and drag, what cuts it off.
#include "GestureStage.h"

#include "object/ZAction.h"
#include "zxtrobject/ZXtrObject.h"

#include <gmock/gmock.h>

#include <cmath>

namespace {

using testing::Each;
using testing::ElementsAre;

class GestureEdge : public GestureStage
{
protected:
    ZManipulatorInput Input(int kind, int button = 0, int modifier = 0)
    {
        ZManipulatorInput input;
        input.viewer = &viewer;
        input.kind = kind;
        input.button = button;
        input.modifier = modifier;
        return input;
    }
    void Gesture(int x0, int y0, int x1, int y1, int modifiers = 0)
    {
        viewer.Press(x0, y0, kButtonLeft, modifiers);
        viewer.Move(x1, y1);
        viewer.Release(x1, y1);
    }
    bool IsPickedByClickAt(int x, int y)
    {
        tool.selection.ClearAllVertexLists();
        Gesture(x, y, x, y);
        return data->GetVertexState(2) == 2;
    }
    /// A rectangle from (x0, y0) to (x1, y1) takes vertex 2.
    bool IsPickedByDrag(int x0, int y0, int x1, int y1)
    {
        tool.selection.ClearAllVertexLists();
        Gesture(x0, y0, x1, y1);
        return data->GetVertexState(2) == 2;
    }
    void BeginDrag()
    {
        const auto [x, y] = PixelOf(1);
        viewer.Press(x - 20, y - 20, kButtonLeft, 0);
        viewer.Move(x + 50, y + 50);
        ASSERT_TRUE(viewer.IsPickRectShown());
        ASSERT_EQ(manipulator->GetPressed(), 1);
    }
    void ExpectNothingUnderWay()
    {
        EXPECT_FALSE(viewer.IsPickRectShown());
        EXPECT_EQ(manipulator->GetGestureState(), 0);
        EXPECT_EQ(manipulator->GetPressed(), 0);
        EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
        for (const int id : {100018, 100019, 100020, 100021, 100022, 100023, 100026, 100027})
            EXPECT_FALSE(Object_GetActionManager()->QueryInteraction(id)->IsInProgress()) << id;
    }
};

TEST_F(GestureEdge, AClickTakesWhatIsWithinSixPixelsOfThePointer)
{
    const auto [right, down] = PlaceOf(2);
    const int x = static_cast<int>(std::lround(right)), y = static_cast<int>(std::lround(down));
    for (const int sign : {-1, 1}) {
        EXPECT_TRUE(IsPickedByClickAt(x + sign * 5, y));
        EXPECT_FALSE(IsPickedByClickAt(x + sign * 7, y));
        EXPECT_TRUE(IsPickedByClickAt(x, y + sign * 5));
        EXPECT_FALSE(IsPickedByClickAt(x, y + sign * 7));
    }
    EXPECT_TRUE(IsPickedByClickAt(x + 5, y - 5)) << "the neighbourhood is a square";
}

TEST_F(GestureEdge, ADragAddsTwoAndAHalfPixelsOnEachSide)
{
    const auto [right, down] = PlaceOf(2);
    // Pixels at a distance between one and two, and between three and four, on each side of the point.
    const int x = static_cast<int>(std::floor(right)), y = static_cast<int>(std::floor(down));
    EXPECT_TRUE(IsPickedByDrag(x - 60, y - 40, x - 1, y + 40));
    EXPECT_FALSE(IsPickedByDrag(x - 60, y - 40, x - 3, y + 40));
    EXPECT_TRUE(IsPickedByDrag(x + 2, y - 40, x + 60, y + 40));
    EXPECT_FALSE(IsPickedByDrag(x + 4, y - 40, x + 60, y + 40));
    EXPECT_TRUE(IsPickedByDrag(x - 60, y - 40, x + 50, y - 1));
    EXPECT_FALSE(IsPickedByDrag(x - 60, y - 40, x + 50, y - 3));
    EXPECT_TRUE(IsPickedByDrag(x - 60, y + 2, x + 50, y + 40));
    EXPECT_FALSE(IsPickedByDrag(x - 60, y + 4, x + 50, y + 40));
}

TEST_F(GestureEdge, ARectangleMayBeDrawnFromAnyCorner)
{
    const auto [x, y] = PixelOf(2);
    EXPECT_TRUE(IsPickedByDrag(x - 60, y - 40, x + 50, y + 40));
    EXPECT_TRUE(IsPickedByDrag(x + 60, y - 40, x - 50, y + 40));
    EXPECT_TRUE(IsPickedByDrag(x - 60, y + 40, x + 50, y - 40));
    EXPECT_TRUE(IsPickedByDrag(x + 60, y + 40, x - 50, y - 40));
}

TEST_F(GestureEdge, OnlyTheSignedSumOfADragTellsItFromAClick)
{
    viewer.SetSize(800, 800); // equal pixels are equal normalised units
    const float click = 12.0F / 800, drag = 5.0F / 800;
    Gesture(300, 300, 400, 400); // x grows, y (upwards) falls as much
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[0], click);
    Gesture(400, 400, 300, 300);
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[0], click);
    Gesture(300, 300, 400, 200); // both grow
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[0], drag);
    Gesture(300, 300, 400, 401);
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[0], drag);
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[1], drag);
}

TEST_F(GestureEdge, ToleranceIsHalfSizeOverTheViewersSizeInEachDirection)
{
    viewer.SetSize(640, 200);
    Gesture(100, 100, 100, 100);
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[0], 12.0F / 640);
    EXPECT_FLOAT_EQ(manipulator->GetPickTolerance()[1], 12.0F / 200);
}

/// Ctrl began a rectangle that removes, which over nothing clears everything; the click that it became does not.
TEST_F(GestureEdge, BelowThreePixelsTheButtonDecidesAnewAfterARectangleBegan)
{
    Click(1);
    Gesture(20, 20, 21, 21, kModifierControl);
    EXPECT_EQ(States()[1], 2) << "two pixels: a click that removes nothing";
    Gesture(20, 20, 23, 20, kModifierControl);
    EXPECT_EQ(States()[1], 0) << "three pixels: a rectangle, and over nothing it clears";
}

TEST_F(GestureEdge, ARectangleThatComesBackIsAClick)
{
    const auto [x, y] = PixelOf(3);
    viewer.Press(x, y, kButtonLeft, 0);
    viewer.Move(x + 200, y + 100);
    viewer.Move(x, y);
    viewer.Release(x, y);
    EXPECT_THAT(States(), ElementsAre(0, 0, 0, 2, 0));
}

TEST_F(GestureEdge, AReplacingClickOverNothingKeepsTheSelection)
{
    Click(1);
    EXPECT_FALSE(viewer.Press(20, 20, kButtonLeft, 0));
    EXPECT_FALSE(viewer.Release(20, 20));
    EXPECT_EQ(States()[1], 2);
}

TEST_F(GestureEdge, ARemovingDragOverNothingClears)
{
    Click(1);
    Gesture(20, 20, 60, 60, kModifierControl);
    EXPECT_THAT(States(), Each(0));
}

TEST_F(GestureEdge, ATogglingDragOverNothingKeepsTheSelection)
{
    Click(1);
    Gesture(20, 20, 60, 60, kModifierShift);
    EXPECT_EQ(States()[1], 2);
}

TEST_F(GestureEdge, ADragOverNothingWithNothingSelectedLeavesNoStep)
{
    const int before = ZUndoStack::TheOne()->GetUndoCount();
    Gesture(20, 20, 60, 60);
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), before);
}

TEST_F(GestureEdge, WithModelSelectionOnMiddleClicksAreTheHosts)
{
    tool.modelSelectionEnabled = true;
    for (const int modifier : {0, kModifierShift}) {
        ZManipulatorInput press = Input(kInputPress, kButtonMiddle, modifier);
        EXPECT_FALSE(manipulator->ManipulatorInputNotify(press));
        EXPECT_EQ(manipulator->GetPressed(), 0);
    }
}

TEST_F(GestureEdge, WithoutModelsMiddleClicksAreTheHosts)
{
    tool.models.RemoveAll();
    for (const int modifier : {0, kModifierShift}) {
        ZManipulatorInput press = Input(kInputPress, kButtonMiddle, modifier);
        EXPECT_FALSE(manipulator->ManipulatorInputNotify(press));
    }
}

TEST_F(GestureEdge, WithModelsMiddleClicksAreSwallowed)
{
    for (const int modifier : {0, kModifierShift}) {
        ZManipulatorInput press = Input(kInputPress, kButtonMiddle, modifier);
        EXPECT_TRUE(manipulator->ManipulatorInputNotify(press));
        EXPECT_EQ(manipulator->GetPressed(), 0) << "it begins nothing of the tool's";
    }
}

TEST_F(GestureEdge, HoldingXLiftsTheRestrictionForThatPickAndRestrictsTheNext)
{
    Object_SetKeyState(kKeyX, true);
    DragOver(0.5, 1.5);
    ASSERT_TRUE(manipulator->IsPickRestricted());
    DragOver(2.5, 3.5, kModifierControl | kModifierShift);
    EXPECT_THAT(States(), ElementsAre(0, 1, 0, 1, 0)) << "vertex 3 was not selected before: the pick was free";
    Object_SetKeyState(kKeyX, false);
    EXPECT_TRUE(manipulator->IsPickRestricted());
    DragOver(-0.5, 4.5, kModifierControl | kModifierShift);
    EXPECT_THAT(States(), ElementsAre(0, 2, 0, 2, 0)) << "the next one is among the gathered";
}

TEST_F(GestureEdge, HoldingXOverNothingRestrictsNothing)
{
    Object_SetKeyState(kKeyX, true);
    Gesture(20, 20, 60, 60);
    EXPECT_FALSE(manipulator->IsPickRestricted());
}

TEST_F(GestureEdge, RemovingAmongTheGatheredDeactivatesThem)
{
    Object_SetKeyState(kKeyX, true);
    DragOver(0.5, 3.5);
    Object_SetKeyState(kKeyX, false);
    DragOver(0.5, 3.5, kModifierControl | kModifierShift);
    ASSERT_THAT(States(), ElementsAre(0, 2, 2, 2, 0));
    Click(2, kModifierControl);
    EXPECT_THAT(States(), ElementsAre(0, 2, 1, 2, 0)) << "it stays selected";
}

TEST_F(GestureEdge, EscapeInTheMiddleOfADragChangesNothing)
{
    Click(4);
    const auto [x0, y0] = PixelOf(0.5, 0.3);
    const auto [x1, y1] = PixelOf(2.5, -0.3);
    viewer.Press(x0, y0, kButtonLeft, 0);
    viewer.Move(x1, y1);
    viewer.KeyPress(27, 0);
    EXPECT_EQ(States()[4], 2);
    EXPECT_TRUE(viewer.IsPickRectShown());
    viewer.Release(x1, y1);
    EXPECT_THAT(States(), ElementsAre(0, 2, 2, 0, 0));
}

TEST_F(GestureEdge, OtherEventsDuringAGestureAreNotConsumed)
{
    BeginDrag();
    for (const int kind : {kInputEnter, kInputLeave, kInputEscape, kInputKeyPress, kInputKeyRelease, kInputHover}) {
        ZManipulatorInput input = Input(kind);
        EXPECT_FALSE(manipulator->ManipulatorInputNotify(input)) << kind;
    }
    EXPECT_EQ(manipulator->GetPressed(), 1);
}

TEST_F(GestureEdge, TheOriginOfTheViewerCounts)
{
    viewer.SetOrigin(100, 50);
    const auto [x, y] = PixelOf(3);
    Gesture(x + 100, y + 50, x + 100, y + 50);
    EXPECT_THAT(States(), ElementsAre(0, 0, 0, 2, 0));
}

TEST_F(GestureEdge, PositionsAreNormalisedWithYUpwards)
{
    viewer.SetSize(801, 601); // halves are whole pixels: the middle is at 400, 300
    Gesture(400, 300, 801, 0);
    EXPECT_FLOAT_EQ(manipulator->GetPressPosition()[0], 0);
    EXPECT_FLOAT_EQ(manipulator->GetPressPosition()[1], 0);
    EXPECT_FLOAT_EQ(manipulator->GetEndPosition()[0], 2.0F * 401 / 801);
    EXPECT_FLOAT_EQ(manipulator->GetEndPosition()[1], 2.0F * 300 / 601);
}

TEST_F(GestureEdge, FrameNeedsTheManipulatorToBeActive)
{
    Click(3);
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(nullptr);
    const ZgeVector3 eye = viewer.GetCamera().GetEye();
    manipulator->HandleShortCut(kKeyEventPressed, 'F', 0,
                                Object_GetActionManager()->QueryAction(kActionFrameSelection));
    EXPECT_EQ(viewer.GetCamera().GetEye(), eye);
}

TEST_F(GestureEdge, KeyWWithAModifierOrOnItsReleaseShowsNothing)
{
    manipulator->ManipulatorSetHidden(true);
    manipulator->HandleShortCut(kKeyEventPressed, 'W', kModifierShift, nullptr);
    manipulator->HandleShortCut(kKeyEventPressed + 1, 'W', 0, nullptr);
    EXPECT_TRUE(manipulator->ManipulatorGetHidden());
}

TEST_F(GestureEdge, ASecondButtonCutsTheGestureOff)
{
    BeginDrag();
    viewer.Press(300, 300, kButtonRight, 0);
    ExpectNothingUnderWay();
    EXPECT_THAT(States(), Each(0));
    viewer.Release(300, 300);
    ExpectNothingUnderWay();
}

TEST_F(GestureEdge, LosingTheFocusCutsTheGestureOff)
{
    BeginDrag();
    viewer.CancelGesture();
    ExpectNothingUnderWay();
    EXPECT_THAT(States(), Each(0));
}

TEST_F(GestureEdge, HidingTheManipulatorCutsTheGestureOff)
{
    BeginDrag();
    manipulator->ManipulatorSetHidden(true);
    ExpectNothingUnderWay();
}

TEST_F(GestureEdge, AnotherActiveManipulatorCutsTheGestureOff)
{
    BeginDrag();
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(nullptr);
    ExpectNothingUnderWay();
}

TEST_F(GestureEdge, ClearingTheSceneCutsTheGestureOff)
{
    BeginDrag();
    ZXtrObject_Send(kSceneClearing);
    ExpectNothingUnderWay();
}

TEST_F(GestureEdge, AModelThatGoesInTheMiddleLeavesNothingOpen)
{
    BeginDrag();
    tool.models.Remove(data);
    viewer.Move(400, 400);
    viewer.Release(400, 400);
    ExpectNothingUnderWay();
}

TEST_F(GestureEdge, AToolThatGoesInTheMiddleLeavesNothingOpen)
{
    BeginDrag();
    manipulator->ManipulatorCancel();
    manipulator->SetTool(nullptr);
    ExpectNothingUnderWay();
    viewer.Release(400, 400);
    ExpectNothingUnderWay();
}

TEST_F(GestureEdge, AGestureAfterACutOffOneIsWhole)
{
    BeginDrag();
    viewer.CancelGesture();
    DragOver(2.5, 4.5);
    EXPECT_THAT(States(), ElementsAre(0, 0, 0, 2, 2));
    ExpectNothingUnderWay();
}

} // namespace
