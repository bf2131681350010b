// SPDX-License-Identifier: MIT
// Hidden, in use, active: the rules of the manipulator set.
#include "TinyScene.h"

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

class Manipulators : public ManipulatorTest
{
protected:
    ZManipulatorSet& set = *ZManipulator_GetManipulatorSet();
};

TEST_F(Manipulators, TheInUseFlagIsSetWhileNotHidden)
{
    auto* const manipulator = new RecordingManipulator(story);
    EXPECT_TRUE(manipulator->ManipulatorGetHidden());
    EXPECT_FALSE(manipulator->ManipulatorGetInUse());
    manipulator->ManipulatorSetHidden(false);
    EXPECT_TRUE(manipulator->ManipulatorGetInUse());
    manipulator->ManipulatorSetHidden(true);
    EXPECT_FALSE(manipulator->ManipulatorGetInUse());
}

TEST_F(Manipulators, ShownWhileNoneIsActiveBecomesActive)
{
    auto* const manipulator = new RecordingManipulator(story);
    EXPECT_EQ(set.ManipulatorGetActive(), nullptr);
    manipulator->ManipulatorSetHidden(false);
    EXPECT_EQ(set.ManipulatorGetActive(), manipulator);
    EXPECT_TRUE(manipulator->ManipulatorGetActive());
    EXPECT_THAT(story, ElementsAre("active"));
}

TEST_F(Manipulators, ShownWhileAnotherIsActiveDoesNot)
{
    auto* const first = new RecordingManipulator(story);
    auto* const second = new RecordingManipulator(story);
    first->ManipulatorSetHidden(false);
    second->ManipulatorSetHidden(false);
    EXPECT_EQ(set.ManipulatorGetActive(), first);
    EXPECT_FALSE(second->ManipulatorGetActive());
    EXPECT_TRUE(second->ManipulatorGetInUse());
}

TEST_F(Manipulators, MakingOneActiveMakesAllOthersNot)
{
    auto* const first = new RecordingManipulator(story);
    auto* const second = new RecordingManipulator(story);
    first->ManipulatorSetHidden(false);
    second->ManipulatorSetHidden(false);
    set.ManipulatorSetActive(second);
    EXPECT_FALSE(first->ManipulatorGetActive());
    EXPECT_TRUE(second->ManipulatorGetActive());
    set.ManipulatorSetActive(nullptr);
    EXPECT_EQ(set.ManipulatorGetActive(), nullptr);
    EXPECT_FALSE(second->ManipulatorGetActive());
}

TEST_F(Manipulators, SettingOneActiveWithoutTheSetKeepsTheSetTrue)
{
    auto* const first = new RecordingManipulator(story);
    auto* const second = new RecordingManipulator(story);
    first->ManipulatorSetHidden(false);
    second->ManipulatorSetHidden(false);
    EXPECT_TRUE(second->ManipulatorSetActive(true));
    EXPECT_EQ(set.ManipulatorGetActive(), second);
    EXPECT_FALSE(first->ManipulatorGetActive());
    EXPECT_FALSE(second->ManipulatorSetActive(false));
    EXPECT_EQ(set.ManipulatorGetActive(), nullptr);
}

TEST_F(Manipulators, HidingTheActiveOneLeavesNoneActive)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    manipulator->ManipulatorSetHidden(true);
    EXPECT_EQ(set.ManipulatorGetActive(), nullptr);
    EXPECT_THAT(story, ElementsAre("active", "inactive"));
    manipulator->ManipulatorSetHidden(false);
    EXPECT_EQ(set.ManipulatorGetActive(), manipulator);
}

TEST_F(Manipulators, RemovingDestroysAndLeavesNoneActive)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    set.ManipulatorRemove(manipulator);
    EXPECT_THAT(story, ElementsAre("active", "inactive", "destroyed"));
    EXPECT_THAT(set.GetManipulators(), IsEmpty());
    EXPECT_EQ(set.ManipulatorGetActive(), nullptr);
    set.ManipulatorRemove(manipulator); // known by its address alone
    set.ManipulatorRemove(nullptr);
}

TEST_F(Manipulators, OneThatIsDestroyedDirectlyLeavesTheSet)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    delete manipulator;
    EXPECT_THAT(set.GetManipulators(), IsEmpty());
    EXPECT_EQ(set.ManipulatorGetActive(), nullptr);
}

TEST_F(Manipulators, DestroyObjectTakesItOutOfTheSet)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->SetStatusBits(ZObject::kStatusDestroyFrees);
    manipulator->DestroyObject();
    EXPECT_THAT(set.GetManipulators(), IsEmpty());
    EXPECT_THAT(story, ElementsAre("destroyed"));
}

TEST_F(Manipulators, MisuseOfTheSetIsSaid)
{
    auto* const manipulator = new RecordingManipulator(story);
    EXPECT_THROW(set.ManipulatorAdd(nullptr), ZHostMisuse);
    EXPECT_THROW(set.ManipulatorAdd(manipulator), ZHostMisuse);
    ZManipulator outsider("outsider");
    EXPECT_THROW(set.ManipulatorSetActive(&outsider), ZHostMisuse);
    ZManipulatorInput nowhere;
    EXPECT_THROW(ZManipulator::ManipulatorPickRectStart(nowhere), ZHostMisuse);
}

TEST_F(Manipulators, TheBaseConsumesNothing)
{
    ZManipulator manipulator("plain", 7);
    ZManipulatorInput input;
    EXPECT_FALSE(manipulator.ManipulatorInputNotify(input));
    EXPECT_EQ(manipulator.ManipulatorGetOwner(), 7);
    EXPECT_TRUE(manipulator.Is(ZManipulator::ClassId));
    EXPECT_TRUE(manipulator.Is(ZObjectStorable::ClassId));
    EXPECT_FALSE(manipulator.Is(ZViewer::ClassId));
}

TEST_F(Manipulators, UnselectIsOnUntilItIsTurnedOff)
{
    EXPECT_EQ(ZManipulator_GetManipulationUnselect() & 4, 4);
    ZManipulator_SetManipulationUnselect(0);
    EXPECT_EQ(ZManipulator_GetManipulationUnselect(), 0);
}
} // namespace
