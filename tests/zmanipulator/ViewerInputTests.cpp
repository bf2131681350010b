// SPDX-License-Identifier: MIT
// Who gets the user's input, told as gestures.
#include "TinyScene.h"

#include "object/ZAction.h"
#include "zxtrobject/ZXtrObject.h"

#include <rapidcheck/gtest.h>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kKeyEscape = 27;

class ViewerInput : public ManipulatorTest
{
protected:
    void SetUp() override { viewer.SetSize(200, 150); }
    RecordingManipulator* AddShown(const char* name = "recorder")
    {
        auto* const manipulator = new RecordingManipulator(story, name);
        manipulator->ManipulatorSetHidden(false);
        story.clear();
        return manipulator;
    }

    ZScene scene;
    ZViewer viewer{&scene};
};

TEST_F(ViewerInput, AGestureIsPressDragRelease)
{
    AddShown();
    EXPECT_TRUE(viewer.Press(10, 20, kButtonLeft, kModifierShift));
    EXPECT_EQ(viewer.GetPressedButton(), kButtonLeft);
    EXPECT_TRUE(viewer.Move(30, 40));
    EXPECT_TRUE(viewer.Release(31, 41));
    EXPECT_EQ(viewer.GetPressedButton(), 0);
    EXPECT_THAT(story, ElementsAre("press 1 1 at 10,20", "drag 1 1 at 30,40", "release 1 1 at 31,41"));
}

TEST_F(ViewerInput, AMoveWithoutAButtonHasAKindThatIsNotListed)
{
    RecordingManipulator* const manipulator = AddShown();
    viewer.Move(5, 6);
    EXPECT_THAT(story, ElementsAre("hover 0 0 at 5,6"));
    EXPECT_THAT(manipulator->last.kind, testing::Not(testing::AnyOf(2, 3, 4, 5, 6, 12, 50, 51)));
    EXPECT_EQ(manipulator->last.viewer, &viewer);
    EXPECT_EQ(ZManipulator_ViewerGet(manipulator->last), &viewer);
}

TEST_F(ViewerInput, AReleaseWithoutAPressIsNobodys)
{
    AddShown();
    EXPECT_FALSE(viewer.Release(1, 1));
    EXPECT_THAT(story, IsEmpty());
}

TEST_F(ViewerInput, KeysArriveAsTheirKinds)
{
    RecordingManipulator* const manipulator = AddShown();
    viewer.Move(7, 8);
    story.clear();
    viewer.KeyPress(kKeyEscape, 0);
    viewer.KeyPress(kKeyEscape, kModifierShift);
    viewer.KeyPress('X', 0);
    EXPECT_EQ(manipulator->last.key, 'X');
    viewer.KeyRelease('X', 0);
    viewer.Enter();
    viewer.Leave();
    EXPECT_THAT(story, ElementsAre("escape 0 0 at 7,8", "key 0 1 at 7,8", "key 0 0 at 7,8", "key up 0 0 at 7,8",
                                   "enter 0 0 at 7,8", "leave 0 0 at 7,8"));
}

TEST_F(ViewerInput, TheActiveOneGetsInputFirstAndOthersWhatItLeaves)
{
    RecordingManipulator* const first = AddShown("first");
    RecordingManipulator* const second = AddShown("second");
    std::vector<std::string> order;
    first->whenTold = [&order](ZManipulatorInput&) { order.push_back("first"); };
    second->whenTold = [&order](ZManipulatorInput&) { order.push_back("second"); };
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(second);
    second->consumes = false;
    viewer.KeyPress('A', 0);
    EXPECT_THAT(order, ElementsAre("second", "first"));
    order.clear();
    second->consumes = true;
    viewer.KeyPress('A', 0);
    EXPECT_THAT(order, ElementsAre("second"));
}

TEST_F(ViewerInput, AHiddenOneGetsNothing)
{
    RecordingManipulator* const manipulator = AddShown();
    manipulator->ManipulatorSetHidden(true);
    story.clear();
    EXPECT_FALSE(viewer.KeyPress('A', 0));
    EXPECT_THAT(story, IsEmpty());
}

TEST_F(ViewerInput, TheCameraGoesBeforeTheActiveManipulator)
{
    AddShown();
    const ZgeVector3 eye = viewer.GetCamera().GetEye();
    EXPECT_TRUE(viewer.Press(100, 75, kButtonLeft, kModifierAlt));
    EXPECT_TRUE(viewer.Move(120, 75));
    EXPECT_TRUE(viewer.Release(120, 75));
    EXPECT_THAT(story, IsEmpty());
    EXPECT_LT(viewer.GetCamera().GetEye().x, eye.x); // the scene follows the pointer to the right
    EXPECT_EQ(viewer.GetCamera().GetTarget(), (ZgeVector3{0, 0, 0}));
}

TEST_F(ViewerInput, AltAndMiddlePansAltAndRightZooms)
{
    viewer.Press(100, 75, kButtonMiddle, kModifierAlt);
    viewer.Release(110, 75);
    EXPECT_LT(viewer.GetCamera().GetTarget().x, 0);
    const double distance = viewer.GetCamera().GetDistance();
    viewer.Press(100, 75, kButtonRight, kModifierAlt);
    viewer.Move(140, 75);
    EXPECT_LT(viewer.GetCamera().GetDistance(), distance);
    viewer.Move(100, 75);
    viewer.Release(100, 75);
    EXPECT_NEAR(viewer.GetCamera().GetDistance(), distance, 1e-9);
}

TEST_F(ViewerInput, TheWheelZooms)
{
    AddShown();
    const double distance = viewer.GetCamera().GetDistance();
    EXPECT_TRUE(viewer.Wheel(10, 10, 1));
    EXPECT_LT(viewer.GetCamera().GetDistance(), distance);
    viewer.Wheel(10, 10, -1);
    EXPECT_NEAR(viewer.GetCamera().GetDistance(), distance, 1e-9);
    EXPECT_THAT(story, IsEmpty());
}

TEST_F(ViewerInput, ASecondButtonCutsTheGestureOff)
{
    RecordingManipulator* const manipulator = AddShown();
    manipulator->whenTold = [](ZManipulatorInput& input) {
        if (input.kind == kInputPress)
            ZManipulator::ManipulatorPickRectStart(input);
    };
    viewer.Press(10, 10, kButtonLeft, 0);
    EXPECT_TRUE(viewer.IsPickRectShown());
    EXPECT_TRUE(viewer.Press(20, 20, kButtonRight, 0));
    EXPECT_FALSE(viewer.IsPickRectShown());
    EXPECT_EQ(viewer.GetPressedButton(), 0);
    EXPECT_FALSE(viewer.Release(20, 20));
    EXPECT_THAT(story, ElementsAre("press 1 0 at 10,10", "cancel"));
}

TEST_F(ViewerInput, TheSameButtonAgainBeginsAnew)
{
    AddShown();
    viewer.Press(10, 10, kButtonLeft, 0); // its release is lost
    viewer.Press(20, 20, kButtonLeft, 0);
    viewer.Release(20, 20);
    EXPECT_THAT(story, ElementsAre("press 1 0 at 10,10", "cancel", "press 1 0 at 20,20", "release 1 0 at 20,20"));
}

TEST_F(ViewerInput, LosingTheFocusCutsTheGestureOff)
{
    AddShown();
    viewer.Press(10, 10, kButtonLeft, 0);
    viewer.PickRectStart(10, 10);
    viewer.CancelGesture();
    EXPECT_FALSE(viewer.IsPickRectShown());
    EXPECT_EQ(story.back(), "cancel");
    story.clear();
    viewer.CancelGesture();
    EXPECT_THAT(story, IsEmpty()); // nothing is under way
}

TEST_F(ViewerInput, CuttingOffACameraGestureTellsNobody)
{
    AddShown();
    viewer.Press(10, 10, kButtonLeft, kModifierAlt);
    viewer.CancelGesture();
    viewer.Move(50, 50);
    EXPECT_THAT(story, ElementsAre("hover 0 0 at 50,50"));
}

TEST_F(ViewerInput, HidingTheManipulatorCutsItsGestureOff)
{
    RecordingManipulator* const manipulator = AddShown();
    viewer.Press(10, 10, kButtonLeft, 0);
    viewer.PickRectStart(10, 10);
    manipulator->ManipulatorSetHidden(true);
    EXPECT_FALSE(viewer.IsPickRectShown());
    EXPECT_THAT(story, ElementsAre("press 1 0 at 10,10", "cancel", "inactive"));
    EXPECT_FALSE(viewer.Release(10, 10));
}

TEST_F(ViewerInput, AnotherActiveManipulatorCutsTheGestureOff)
{
    AddShown("first");
    RecordingManipulator* const second = AddShown("second");
    viewer.Press(10, 10, kButtonLeft, 0);
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(second);
    EXPECT_THAT(story, ElementsAre("press 1 0 at 10,10", "cancel", "inactive", "active"));
    EXPECT_EQ(viewer.GetPressedButton(), 0);
}

TEST_F(ViewerInput, HidingItselfOnReleaseIsNoCutOff)
{
    RecordingManipulator* const manipulator = AddShown();
    manipulator->whenTold = [manipulator](ZManipulatorInput& input) {
        if (input.kind == kInputRelease)
            manipulator->ManipulatorSetHidden(true);
    };
    viewer.Press(10, 10, kButtonLeft, 0);
    EXPECT_TRUE(viewer.Release(10, 10));
    EXPECT_THAT(story, ElementsAre("press 1 0 at 10,10", "release 1 0 at 10,10", "inactive"));
}

TEST_F(ViewerInput, AHandlerMayHideTheOthers)
{
    RecordingManipulator* const first = AddShown("first");
    RecordingManipulator* const second = AddShown("second");
    first->consumes = false;
    first->whenTold = [second](ZManipulatorInput&) { second->ManipulatorSetHidden(true); };
    viewer.KeyPress('A', 0);
    EXPECT_THAT(story, ElementsAre("key 0 0 at 0,0"));
}

TEST_F(ViewerInput, AHandlerMayRemoveItself)
{
    RecordingManipulator* const manipulator = AddShown();
    manipulator->whenTold = [manipulator, this](ZManipulatorInput&) {
        ZManipulator_GetManipulatorSet()->ManipulatorRemove(manipulator);
        story.push_back("still here");
    };
    EXPECT_TRUE(viewer.KeyPress('A', 0));
    EXPECT_THAT(story, ElementsAre("key 0 0 at 0,0", "inactive", "still here", "destroyed"));
    EXPECT_FALSE(viewer.KeyPress('A', 0));
}

TEST_F(ViewerInput, AHandlerMayDestroyTheOthers)
{
    RecordingManipulator* const first = AddShown("first");
    RecordingManipulator* const second = AddShown("second");
    RecordingManipulator* const third = AddShown("third");
    first->consumes = false;
    first->whenTold = [second, third](ZManipulatorInput&) {
        delete second;
        ZManipulator_GetManipulatorSet()->ManipulatorRemove(third);
    };
    EXPECT_FALSE(viewer.KeyPress('A', 0));
    EXPECT_THAT(story, ElementsAre("key 0 0 at 0,0", "destroyed", "destroyed"));
}

TEST_F(ViewerInput, AHandlerMayDestroyAnotherThatGotThePress)
{
    RecordingManipulator* const first = AddShown("first");
    RecordingManipulator* const second = AddShown("second");
    first->consumes = second->consumes = false;
    viewer.Press(10, 10, kButtonLeft, 0);
    delete second;
    viewer.CancelGesture();
    EXPECT_THAT(story, ElementsAre("press 1 0 at 10,10", "press 1 0 at 10,10", "destroyed", "cancel"));
}

TEST_F(ViewerInput, TheRubberBandGoesWithTheRelease)
{
    RecordingManipulator* const manipulator = AddShown();
    manipulator->whenTold = [](ZManipulatorInput& input) {
        if (input.kind == kInputPress)
            ZManipulator::ManipulatorPickRectStart(input);
        if (input.kind == kInputDrag)
            ZManipulator::ManipulatorPickRectMotion(input);
    };
    viewer.Press(10, 10, kButtonLeft, 0);
    viewer.Move(50, 50);
    EXPECT_TRUE(viewer.IsPickRectShown());
    viewer.Release(50, 50); // the handler forgot
    EXPECT_FALSE(viewer.IsPickRectShown());
}

TEST_F(ViewerInput, ClearingTheSceneCutsTheGestureOff)
{
    AddShown();
    viewer.Press(10, 10, kButtonLeft, 0);
    ZXtrObject_Send(kSceneClearing);
    EXPECT_EQ(story.back(), "cancel");
}

TEST_F(ViewerInput, TheRedrawListenerHearsOfWhatChangesThePicture)
{
    int redraws = 0;
    viewer.SetRedrawListener([&redraws] { ++redraws; });
    viewer.Wheel(0, 0, 1);
    EXPECT_EQ(redraws, 1);
    ZXtrObject_Send(kSceneChanged);
    EXPECT_EQ(redraws, 2);
    viewer.PickRectStart(1, 1);
    viewer.PickRectMotion(2, 2);
    viewer.PickRectStop();
    viewer.PickRectStop();
    EXPECT_EQ(redraws, 5);
    viewer.SetRedrawListener(nullptr);
    const long before = viewer.GetInvalidateCount();
    viewer.SetShading(ZShading::Wire);
    EXPECT_EQ(viewer.GetInvalidateCount(), before + 1);
}

TEST_F(ViewerInput, AnswersTheCameraToAQuery)
{
    auto* const camera = static_cast<IViewerCamera*>(viewer.IQuery(kInterfaceViewerCamera, 0));
    EXPECT_EQ(camera, static_cast<IViewerCamera*>(&viewer.GetCamera()));
    EXPECT_EQ(camera->ViewportWidth(), 200);
    EXPECT_EQ(viewer.IQuery(kInterfaceObject, 0), static_cast<IObject*>(&viewer));
    EXPECT_EQ(viewer.IQuery(12345, 0), nullptr);
}

TEST_F(ViewerInput, TheCamerasUnitFollowsTheScene)
{
    AddCube(scene, "cube", ZgeTranslation({5, 0, 0}), 3);
    auto* const camera = static_cast<IViewerCamera*>(viewer.IQuery(kInterfaceViewerCamera, 0));
    const double length = ZgeLength(ZgeTransformDirection({1, 0, 0}, camera->ViewMatrix()));
    EXPECT_NEAR(1 / length, 6 * std::sqrt(3.0) / 100, 1e-6);
}

TEST_F(ViewerInput, ViewersAreListedWhileTheyLive)
{
    EXPECT_THAT(ZViewer::GetViewers(), ElementsAre(&viewer));
    {
        ZViewer second(&scene);
        EXPECT_THAT(ZViewer::GetViewers(), ElementsAre(&viewer, &second));
    }
    EXPECT_THAT(ZViewer::GetViewers(), ElementsAre(&viewer));
}

TEST_F(ViewerInput, AViewerThatGoesCutsItsGestureOff)
{
    AddShown();
    {
        ZViewer second(&scene);
        second.Press(1, 1, kButtonLeft, 0);
    }
    EXPECT_EQ(story.back(), "cancel");
}

TEST(Viewer, AnEmptySceneIsNoTrouble)
{
    ZScene scene;
    ZViewer viewer(&scene);
    const ZgeVector3 eye = viewer.GetCamera().GetEye();
    viewer.Frame({});
    EXPECT_EQ(viewer.GetCamera().GetEye(), eye);
    EXPECT_EQ(viewer.ModelAt(10, 10), nullptr);
    viewer.SetSize(0, -5);
    EXPECT_EQ(viewer.GetWidth(), 1);
    EXPECT_EQ(viewer.GetHeight(), 1);
}

/// Any hand on the mouse: a manipulator sees each press ended by exactly one release or one cancel, and drags only
/// between.
RC_GTEST_PROP(ViewerInputProperty, EveryPressEndsOnce, ())
{
    Story story;
    ZScene scene;
    ZViewer viewer(&scene);
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    const int steps = *rc::gen::inRange(0, 40);
    for (int i = 0; i < steps; ++i) {
        const int x = *rc::gen::inRange(0, 800), y = *rc::gen::inRange(0, 600);
        switch (*rc::gen::inRange(0, 8)) {
        case 0:
        case 1:
            viewer.Press(x, y, *rc::gen::inRange(0, 5), *rc::gen::inRange(0, 8));
            break;
        case 2:
        case 3:
            viewer.Release(x, y);
            break;
        case 4:
            viewer.CancelGesture();
            break;
        case 5:
            manipulator->ManipulatorSetHidden(*rc::gen::arbitrary<bool>());
            break;
        case 6:
            viewer.KeyPress(kKeyEscape, 0);
            break;
        default:
            viewer.Move(x, y);
        }
    }
    viewer.CancelGesture();
    bool pressed = false;
    for (const std::string& line : story) {
        const std::string word = line.substr(0, line.find(' '));
        if (word == "press") {
            RC_ASSERT(!pressed);
            pressed = true;
        } else if (word == "release" || word == "cancel") {
            RC_ASSERT(pressed);
            pressed = false;
        } else if (word == "drag") {
            RC_ASSERT(pressed);
        } else if (word == "hover") {
            RC_ASSERT(!pressed);
        }
    }
    RC_ASSERT(!pressed);
    ZManipulator_GetManipulatorSet()->ManipulatorRemove(manipulator);
}
} // namespace
