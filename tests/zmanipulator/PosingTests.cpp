// SPDX-License-Identifier: MIT
// Posing by hand: rings and arrows, told as gestures in the viewer.
#include "PictureTest.h"

#include "object/ZAction.h"
#include "object/ZUndoStack.h"
#include "zmodel/ZPose.h"

#include <rapidcheck/gtest.h>

#include <cmath>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kKeyEscape = 27;
constexpr int kMiddleX = 200, kMiddleY = 150;
constexpr double kRing = ZTransformManager::kRingPixels;
constexpr double kRadiansPerDegree = 0.017453292519943295;

int Round(double pixel) { return static_cast<int>(std::lround(pixel)); }

/// A bone at the origin with a child to its right; the camera looks along -Z at it.
class Posing : public ManipulatorTest
{
protected:
    void SetUp() override
    {
        viewer.SetSize(2 * kMiddleX, 2 * kMiddleY);
        viewer.GetCamera().LookAt({0, 0, 10}, {0, 0, 0}, {0, 1, 0});
        bone->SetSelected(true);
        Manager().SetPosing(true);
    }
    void TearDown() override
    {
        Manager().SetPosing(false);
        ManipulatorTest::TearDown();
        ZUndoStack::TheOne()->Clear();
    }
    static ZTransformManager& Manager() { return *ZTransformManager::TheOne(); }
    /// A drag of the ring about Z, from `from` degrees to `to`, counter-clockwise, in small steps.
    void DragRing(double from, double to)
    {
        Press(from);
        for (double angle = from; std::abs(angle - to) > 1e-9; angle += to > from ? 15 : -15)
            Move(angle);
        Move(to);
        viewer.Release(RingX(to), RingY(to));
    }
    static int RingX(double degrees) { return Round(kMiddleX + kRing * std::cos(degrees * kRadiansPerDegree)); }
    static int RingY(double degrees) { return Round(kMiddleY - kRing * std::sin(degrees * kRadiansPerDegree)); }
    bool Press(double degrees) { return viewer.Press(RingX(degrees), RingY(degrees), kButtonLeft, 0); }
    void Move(double degrees) { viewer.Move(RingX(degrees), RingY(degrees)); }
    double UnitsPerPixel() const { return 10 * 2 * std::tan(20 * kRadiansPerDegree) / (2 * kMiddleY); }
    static std::vector<std::string> Steps() { return ZUndoStack::TheOne()->GetUndoNames(); }
    /// How far the bone is turned about Z, in degrees.
    double Turned() const
    {
        const ZgeMatrix& m = bone->GetTransformMatrix(true);
        return std::atan2(m(0, 1), m(0, 0)) / kRadiansPerDegree;
    }

    ZScene scene;
    ZModel* bone = AddBone(scene, "Upper", {0, 0, 0});
    ZModel* child = AddBone(scene, "Lower", {2, 0, 0}, bone);
    ZViewer viewer{&scene};
};

// A pixel is about 0.8 degrees of the ring.
constexpr double kPixelDegrees = 1.5;

TEST_F(Posing, ARingTurnsTheBoneAboutItsOwnOrigin)
{
    DragRing(45, 135);
    EXPECT_NEAR(Turned(), 90, kPixelDegrees);
    const ZgeVector3 end = ZgeTransformPoint({0, 0, 0}, child->GetTransformMatrix(true));
    EXPECT_NEAR(end.y, 2, 0.05) << "the child goes along";
    EXPECT_NEAR(end.x, 0, 0.05);
    EXPECT_FALSE(child->GetPosedTransform().has_value());
}

TEST_F(Posing, ARingFollowsThePointerBeyondHalfATurn)
{
    DragRing(45, 315);
    EXPECT_NEAR(Turned(), -90, kPixelDegrees);
    DragRing(315, 45);
    EXPECT_NEAR(Turned(), 0, 2 * kPixelDegrees);
}

TEST_F(Posing, ARingSeenFromTheEdgeRollsAlongWithThePointer)
{
    // The ring about X is the upright line through the middle; its near side goes down when it turns forward.
    viewer.Press(kMiddleX, kMiddleY - 40, kButtonLeft, 0);
    viewer.Move(kMiddleX, kMiddleY - 40 + Round(kRing));
    viewer.Release(kMiddleX, kMiddleY - 40 + Round(kRing));
    const ZgeMatrix& m = bone->GetTransformMatrix(true);
    EXPECT_NEAR(std::atan2(m(1, 2), m(1, 1)), 1, 1e-9);
    EXPECT_NEAR(m(0, 0), 1, 1e-12);
}

TEST_F(Posing, AnArrowMovesTheBoneAlongItsAxis)
{
    viewer.Press(kMiddleX + 100, kMiddleY, kButtonLeft, 0);
    viewer.Move(kMiddleX + 120, kMiddleY + 30);
    viewer.Move(kMiddleX + 140, kMiddleY + 50);
    viewer.Release(kMiddleX + 140, kMiddleY + 50);
    const ZgeMatrix& m = bone->GetTransformMatrix(true);
    EXPECT_NEAR(m(3, 0), 40 * UnitsPerPixel(), 1e-9);
    EXPECT_NEAR(m(3, 1), 0, 1e-12);
    EXPECT_NEAR(m(3, 2), 0, 1e-12);
    EXPECT_THAT(Steps(), ElementsAre("Pose Upper"));
}

TEST_F(Posing, AnArrowThatPointsAtTheEyeIsNotTaken)
{
    EXPECT_TRUE(viewer.Press(kMiddleX + 3, kMiddleY + 30, kButtonLeft, 0));
    viewer.Move(kMiddleX + 3, kMiddleY + 60); // the ring about X
    viewer.Release(kMiddleX + 3, kMiddleY + 60);
    EXPECT_EQ(ZgeTransformPoint({0, 0, 0}, bone->GetTransformMatrix(true)), ZgeVector3());
}

TEST_F(Posing, UnderAMirroredAndScaledParentTheBoneStillFollowsThePointer)
{
    ZModel* const parent = AddBone(scene, "Mirror", {0, 0, 0});
    parent->SetFileTransform(ZgeScaling({-3, 3, 3}));
    bone->SetParent(parent);
    DragRing(45, 135);
    const ZgeMatrix& m = bone->GetTransformMatrix(true);
    EXPECT_NEAR(m(0, 1), -3, 0.05) << "X pointed left; a quarter turn on, it points down";
    EXPECT_NEAR(m(0, 0), 0, 0.1);
    viewer.Press(kMiddleX, kMiddleY + 100, kButtonLeft, 0); // the arrow X now points down
    viewer.Move(kMiddleX, kMiddleY + 130);
    viewer.Release(kMiddleX, kMiddleY + 130);
    EXPECT_NEAR(bone->GetTransformMatrix(true)(3, 1), -30 * UnitsPerPixel(), 0.02);
}

RC_GTEST_FIXTURE_PROP(Posing, ScalingAndShearStayAndEitherPlaceOrDirection, ())
{
    const auto number = [](int range) { return *rc::gen::inRange(-100 * range, 100 * range + 1) / 100.0; };
    ZgeMatrix local = ZgeCompose({{number(1), number(1), number(1), 1},
                                  {number(180), number(80), number(180)},
                                  {1 + number(1) / 2, 1 + number(1) / 2, 1 + number(1) / 2}});
    local(1, 0) += number(1) / 4; // a shear
    bone->SetFileTransform(local);
    const ZgeMatrix before = bone->GetTransformMatrix(true);
    viewer.GetCamera().LookAt({0, 0, 10}, {local(3, 0), local(3, 1), local(3, 2)}, {0, 1, 0});
    DragRing(45, 105); // may take hold of a ring, of an arrow, or of nothing
    const ZgeMatrix& after = bone->GetTransformMatrix(true);
    double moved = 0, turned = 0;
    for (int row = 0; row < 3; ++row) {
        moved += std::abs(after(3, row) - before(3, row));
        for (int other = 0; other < 3; ++other) {
            const auto dot = [row, other](const ZgeMatrix& m) {
                return ZgeDot({m(row, 0), m(row, 1), m(row, 2)}, {m(other, 0), m(other, 1), m(other, 2)});
            };
            RC_ASSERT(std::abs(dot(before) - dot(after)) < 1e-9);
            turned += std::abs(after(row, other) - before(row, other));
        }
    }
    RC_ASSERT(moved < 1e-9 || turned < 1e-9);
    RC_CLASSIFY(turned > 1e-3);
    RC_CLASSIFY(moved > 1e-3);
    ZPose_Clear(scene);
}

TEST_F(Posing, OneDragIsOneStepThatCanBeUndoneAndRedone)
{
    DragRing(45, 135);
    DragRing(45, 90);
    EXPECT_THAT(Steps(), ElementsAre("Pose Upper", "Pose Upper"));
    ZUndoStack::TheOne()->Undo();
    EXPECT_NEAR(Turned(), 90, kPixelDegrees);
    ZUndoStack::TheOne()->Undo();
    EXPECT_EQ(bone->GetTransformMatrix(true), ZgeMatrix());
    EXPECT_FALSE(bone->GetPosedTransform().has_value());
    ZUndoStack::TheOne()->Redo();
    EXPECT_NEAR(Turned(), 90, kPixelDegrees);
}

TEST_F(Posing, APressThatDoesNotMoveMakesNoStep)
{
    Press(45);
    viewer.Release(RingX(45), RingY(45));
    EXPECT_THAT(Steps(), IsEmpty());
    EXPECT_TRUE(bone->IsSelected());
}

TEST_F(Posing, EscapePutsTheBoneBack)
{
    DragRing(45, 75);
    const ZgeMatrix posed = bone->GetTransformMatrix(true);
    Press(45);
    Move(135);
    EXPECT_TRUE(viewer.KeyPress(kKeyEscape, 0));
    EXPECT_EQ(bone->GetTransformMatrix(true), posed);
    Move(200);
    viewer.Release(RingX(200), RingY(200));
    EXPECT_EQ(bone->GetTransformMatrix(true), posed);
    EXPECT_THAT(Steps(), ElementsAre("Pose Upper"));
    EXPECT_FALSE(viewer.KeyPress(kKeyEscape, 0)) << "nothing is under way";
    EXPECT_TRUE(Manager().IsPosing());
}

TEST_F(Posing, AGestureThatIsCutOffPutsTheBoneBack)
{
    const auto begin = [this] {
        Press(45);
        Move(135);
        ASSERT_TRUE(bone->GetPosedTransform().has_value());
    };
    const auto expectBack = [this](const char* by) {
        EXPECT_FALSE(bone->GetPosedTransform().has_value()) << by;
        EXPECT_THAT(Steps(), IsEmpty()) << by;
        EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen()) << by;
    };
    begin();
    viewer.CancelGesture();
    expectBack("the focus went");
    begin();
    viewer.Press(10, 10, kButtonRight, 0);
    expectBack("a second button");
    begin();
    Manager().SetPosing(false);
    expectBack("posing was switched off");
    Manager().SetPosing(true);
    begin();
    (new RecordingManipulator(story))->ManipulatorSetHidden(false);
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(ZManipulator_GetManipulatorSet()->GetManipulators().back());
    expectBack("another manipulator became active");
    EXPECT_FALSE(Manager().IsPosing());
}

TEST_F(Posing, ABoneThatGoesInTheMiddleEndsTheDrag)
{
    Press(45);
    Move(90);
    scene.DeleteModel(bone);
    Move(135);
    viewer.Release(RingX(135), RingY(135));
    EXPECT_THAT(Steps(), IsEmpty());
    child->SetSelected(true);
    EXPECT_EQ(ZTransformManager::GetPosedBone(scene), child);
}

TEST_F(Posing, TheCameraComesFirst)
{
    viewer.Press(RingX(45), RingY(45), kButtonLeft, kModifierAlt);
    viewer.Move(RingX(135), RingY(135));
    viewer.Release(RingX(135), RingY(135));
    EXPECT_FALSE(bone->GetPosedTransform().has_value());
    EXPECT_NE(viewer.GetCamera().GetEye(), (ZgeVector3{0, 0, 10}));
}

TEST_F(Posing, AClickBesideTheHandlesSelectsAndADragDoesNot)
{
    child->SetFileTransform(ZgeTranslation({-2.5, -2.5, 0}));
    const int away = Round(2.5 / UnitsPerPixel());
    const int x = kMiddleX - away, y = kMiddleY + away;
    viewer.Press(x, y, kButtonLeft, 0);
    viewer.Move(x, y + 20);
    viewer.Release(x, y + 20);
    EXPECT_FALSE(child->IsSelected());
    viewer.Press(x - 3, y + 3, kButtonLeft, kModifierShift); // on beyond its head, where it is shown
    viewer.Release(x - 3, y + 3);
    EXPECT_TRUE(child->IsSelected());
    EXPECT_TRUE(bone->IsSelected());
    EXPECT_EQ(ZTransformManager::GetPosedBone(scene), bone) << "the first one";
    viewer.Press(x - 3, y + 3, kButtonLeft, 0);
    viewer.Release(x - 3, y + 3);
    EXPECT_FALSE(bone->IsSelected());
    EXPECT_EQ(ZTransformManager::GetPosedBone(scene), child);
}

TEST_F(Posing, TheToolsManipulatorRestsMeanwhileAndIsActiveAgainAfterwards)
{
    Manager().SetPosing(false);
    auto* const tool = new RecordingManipulator(story, "tool");
    tool->ManipulatorSetHidden(false);
    ASSERT_TRUE(tool->ManipulatorGetActive());
    Manager().SetPosing(true);
    EXPECT_FALSE(tool->ManipulatorGetActive());
    EXPECT_FALSE(tool->ManipulatorGetHidden()) << "its points are drawn while the bone is posed";
    story.clear();
    DragRing(45, 90);
    viewer.Press(5, 5, kButtonLeft, 0);
    viewer.Release(5, 5);
    EXPECT_THAT(story, IsEmpty());
    Manager().SetPosing(false);
    EXPECT_TRUE(tool->ManipulatorGetActive());
}

TEST_F(Posing, EndsWithAToolThatWasShownMeanwhile)
{
    auto* const late = new RecordingManipulator(story, "late");
    late->ManipulatorSetHidden(false);
    EXPECT_TRUE(Manager().IsPosing()) << "being shown takes nothing away";
    Manager().SetPosing(false);
    EXPECT_TRUE(late->ManipulatorGetActive());
    Manager().SetPosing(true);
    ZManipulator_GetManipulatorSet()->ManipulatorRemove(late);
    Manager().SetPosing(false);
    EXPECT_EQ(ZManipulator_GetManipulatorSet()->ManipulatorGetActive(), nullptr);
}

TEST_F(Posing, HiddenAndHeldBonesShowNoHandles)
{
    EXPECT_EQ(ZTransformManager::GetPosedBone(scene), bone);
    bone->SetHidden(true);
    EXPECT_EQ(ZTransformManager::GetPosedBone(scene), nullptr);
    bone->SetHidden(false);
    bone->SetConstrainedGlobal(ZgeMatrix());
    EXPECT_EQ(ZTransformManager::GetPosedBone(scene), nullptr) << "what is posed would not be seen";
    DragRing(45, 135);
    EXPECT_THAT(Steps(), IsEmpty());
    bone->SetConstrainedGlobal(std::nullopt);
    bone->SetFileTransform(ZgeScaling({1, 0, 1}));
    DragRing(45, 135);
    EXPECT_THAT(Steps(), IsEmpty()) << "scaled to nothing, it has no rings";
}

TEST_F(Posing, OneCommandGoesBackToTheFilesPose)
{
    DragRing(45, 135);
    EXPECT_TRUE(ZPose_IsPosed(scene));
    EXPECT_TRUE(ZPose_Clear(scene));
    EXPECT_EQ(bone->GetTransformMatrix(true), ZgeMatrix());
    EXPECT_THAT(Steps(), ElementsAre("Back to the file's pose", "Pose Upper"));
    ZUndoStack::TheOne()->Undo();
    EXPECT_NEAR(Turned(), 90, kPixelDegrees);
}

TEST_F(Posing, HoveringLightsAHandle)
{
    viewer.Move(5, 5);
    const long before = viewer.GetInvalidateCount();
    EXPECT_TRUE(viewer.Move(RingX(45), RingY(45)));
    EXPECT_GT(viewer.GetInvalidateCount(), before);
    const long lit = viewer.GetInvalidateCount();
    viewer.Move(RingX(47), RingY(47));
    EXPECT_EQ(viewer.GetInvalidateCount(), lit) << "the same handle";
    EXPECT_FALSE(viewer.Move(5, 5));
    EXPECT_GT(viewer.GetInvalidateCount(), lit);
}

TEST(PosingAndViewers, TheLastViewerThatGoesEndsPosing)
{
    ZScene scene;
    {
        ZViewer viewer(&scene);
        ZTransformManager::TheOne()->SetPosing(true);
        EXPECT_TRUE(ZTransformManager::TheOne()->IsPosing());
    }
    EXPECT_FALSE(ZTransformManager::TheOne()->IsPosing());
    ZManipulatorSet& set = *ZManipulator_GetManipulatorSet();
    while (!set.GetManipulators().empty())
        set.ManipulatorRemove(set.GetManipulators().back());
    EXPECT_FALSE(ZTransformManager::TheOne()->IsPosing()) << "the handles went with the set";
}

TEST_F(Picture, HandlesAreDrawnOnlyWhilePosing)
{
    AddBone(scene, "Bone", {0, 0, 0})->SetSelected(true);
    viewer.SetSize(400, 300);
    viewer.SetShowBones(false);
    const ZImage plain = Grab();
    ZTransformManager::TheOne()->SetPosing(true);
    const ZImage posing = Grab();
    EXPECT_GT(DifferentPixels(plain, posing), 300);
    const Pixel ring = At(posing, 200 + Round(kRing * 0.6), 150 - Round(kRing * 0.8));
    EXPECT_GT(ring[2], ring[0]) << "the ring about Z is blue";
    viewer.Move(200 + Round(kRing * 0.6), 150 - Round(kRing * 0.8));
    const Pixel lit = At(Grab(), 200 + Round(kRing * 0.6), 150 - Round(kRing * 0.8));
    EXPECT_GT(lit[0], lit[2]) << "and yellow under the pointer";
    ZTransformManager::TheOne()->SetPosing(false);
    EXPECT_EQ(DifferentPixels(plain, Grab(), 0), 0);
}

} // namespace
