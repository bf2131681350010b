// SPDX-License-Identifier: MIT
// Passes, pauses, and the thread beside the user-interface thread.
#include "ScriptedConstraint.h"
#include "zbaselib/ZReport.h"

#include <atomic>
#include <gmock/gmock.h>
#include <memory>
#include <thread>

namespace {
class EvaluateManager : public testing::Test
{
protected:
    ZEvaluateManager& m_manager = *ZEvaluateManager::TheOne();
    ZScene m_scene;
};

/// Copies where the source is, moved by the pass number, to the target.
void Follow(ScriptedConstraint& constraint)
{
    constraint.evaluate = [&constraint](const ZEvaluateInfo& info) {
        ZgeTRS trs;
        for (size_t i = 0; i < constraint.sources.size(); ++i)
            if (ScriptedConstraint::Read(constraint.sources[i], trs, info)) {
                trs.translation.x += info.passId;
                ScriptedConstraint::Write(constraint.targets[i], trs, info);
            }
        return true;
    };
}
} // namespace

TEST_F(EvaluateManager, PassesAreNumberedUpwards)
{
    ScriptedConstraint constraint;
    std::vector<int> ids;
    std::vector<double> times;
    constraint.evaluate = [&](const ZEvaluateInfo& info) {
        ids.push_back(info.passId);
        times.push_back(info.time);
        return true;
    };
    constraint.ConstraintSetEnabled(true);
    const int before = m_manager.GetLastPassId();
    m_manager.Evaluate(0.25);
    m_manager.Evaluate(0.5);
    EXPECT_THAT(ids, testing::ElementsAre(before + 1, before + 2));
    EXPECT_THAT(times, testing::ElementsAre(0.25, 0.5));
    EXPECT_EQ(m_manager.GetLastPassId(), before + 2);
}

TEST_F(EvaluateManager, NothingRunsWhilePausedAndPausesNest)
{
    ScriptedConstraint constraint;
    constraint.ConstraintSetEnabled(true);
    m_manager.DevicePause();
    m_manager.DevicePause();
    EXPECT_TRUE(m_manager.IsPaused());
    EXPECT_FALSE(m_manager.Evaluate(0));
    EXPECT_FALSE(m_manager.Start(0));
    m_manager.DeviceRelease();
    EXPECT_FALSE(m_manager.Evaluate(0));
    m_manager.DeviceRelease();
    EXPECT_FALSE(m_manager.IsPaused());
    EXPECT_TRUE(m_manager.Evaluate(0));
    EXPECT_EQ(constraint.evaluations, 1);
}

TEST_F(EvaluateManager, ReleasingWithoutAPauseIsMisuse)
{
    EXPECT_THROW(m_manager.DeviceRelease(), ZHostMisuse);
    EXPECT_FALSE(m_manager.IsPaused());
}

TEST_F(EvaluateManager, OnePassAtATime)
{
    ScriptedConstraint constraint;
    constraint.ConstraintSetEnabled(true);
    EXPECT_FALSE(m_manager.Finish());
    EXPECT_TRUE(m_manager.Start(0));
    EXPECT_FALSE(m_manager.Start(0));
    EXPECT_TRUE(m_manager.Finish());
    EXPECT_FALSE(m_manager.Finish());
    EXPECT_TRUE(m_manager.Start(0));
    EXPECT_TRUE(m_manager.Evaluate(0)); // finishes the one before
    EXPECT_EQ(constraint.evaluations, 3);
}

TEST_F(EvaluateManager, EvaluatesOnAThreadOfItsOwnWhileTheOtherGoesOn)
{
    ScriptedConstraint constraint;
    std::atomic<bool> begun = false, mayEnd = false;
    std::thread::id thread;
    bool known = false;
    constraint.evaluate = [&](const ZEvaluateInfo&) {
        thread = std::this_thread::get_id();
        known = m_manager.IsEvaluationThread();
        begun = true;
        while (!mayEnd)
            std::this_thread::yield();
        return true;
    };
    constraint.ConstraintSetEnabled(true);
    ASSERT_TRUE(m_manager.Start(0));
    while (!begun)
        std::this_thread::yield();
    mayEnd = true; // this thread was free to say so
    m_manager.Finish();
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_TRUE(known);
    EXPECT_FALSE(m_manager.IsEvaluationThread());
}

TEST_F(EvaluateManager, APauseWaitsForThePassUnderWay)
{
    ScriptedConstraint constraint;
    std::atomic<bool> mayEnd = false;
    int value = 0; // written by the pass, read after the pause: no lock, so a thread checker sees whether it waits
    constraint.evaluate = [&](const ZEvaluateInfo&) {
        while (!mayEnd)
            std::this_thread::yield();
        value = 7;
        return true;
    };
    constraint.ConstraintSetEnabled(true);
    m_manager.Start(0);
    std::thread releaser([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        mayEnd = true;
    });
    m_manager.DevicePause();
    EXPECT_EQ(value, 7);
    m_manager.DeviceRelease();
    releaser.join();
    EXPECT_TRUE(m_manager.Finish());
}

TEST_F(EvaluateManager, PausingInAnEvaluationDoesNotWaitForItself)
{
    ScriptedConstraint constraint;
    constraint.evaluate = [&](const ZEvaluateInfo&) {
        m_manager.DevicePause();
        m_manager.DeviceRelease();
        return true;
    };
    constraint.ConstraintSetEnabled(true);
    EXPECT_TRUE(m_manager.Evaluate(0));
    EXPECT_FALSE(m_manager.IsPaused());
}

TEST_F(EvaluateManager, ResultsReachTheSceneAtFinishOnly)
{
    ZModel* source = AddBone(m_scene, "source", {1, 0, 0});
    ZModel* target = AddBone(m_scene, "target", {0, 0, 0});
    ScriptedConstraint constraint;
    constraint.Read(source);
    constraint.Drive(target);
    Follow(constraint);
    constraint.ConstraintSetEnabled(true);
    m_manager.Start(0);
    m_manager.DevicePause();
    m_manager.DeviceRelease();
    EXPECT_EQ(PlaceOf(target).x, 0);
    source->SetPosedTransform(ZgeTranslation({100, 0, 0})); // too late for this pass
    m_manager.Finish();
    EXPECT_EQ(PlaceOf(target).x, 1 + m_manager.GetLastPassId());
}

TEST_F(EvaluateManager, ReleasedBetweenStartAndFinishNothingIsDriven)
{
    ZModel* source = AddBone(m_scene, "source", {1, 0, 0});
    ZModel* target = AddBone(m_scene, "target", {0, 0, 0});
    ScriptedConstraint constraint;
    constraint.Read(source);
    constraint.Drive(target);
    Follow(constraint);
    constraint.ConstraintSetEnabled(true);
    m_manager.Evaluate(0);
    m_manager.Start(0);
    constraint.ConstraintSetEnabled(false);
    EXPECT_TRUE(m_manager.Finish());
    EXPECT_EQ(PlaceOf(target).x, 0);
}

TEST_F(EvaluateManager, AConstraintMayGoBetweenStartAndFinish)
{
    ZModel* source = AddBone(m_scene, "source", {1, 0, 0});
    ZModel* target = AddBone(m_scene, "target", {0, 0, 0});
    auto constraint = std::make_unique<ScriptedConstraint>();
    constraint->Read(source);
    constraint->Drive(target);
    Follow(*constraint);
    constraint->ConstraintSetEnabled(true);
    m_manager.Start(0);
    constraint.reset();
    EXPECT_TRUE(m_manager.Finish());
    EXPECT_EQ(PlaceOf(target).x, 0);
}

TEST_F(EvaluateManager, CountsOnlyPassesThatChangeTheScene)
{
    ZModel* target = AddBone(m_scene, "target", {0, 0, 0});
    ScriptedConstraint constraint;
    constraint.Drive(target);
    constraint.evaluate = [&](const ZEvaluateInfo& info) {
        return ScriptedConstraint::Write(constraint.targets[0], {{3, 0, 0, 1}, {}, {1, 1, 1}}, info);
    };
    constraint.ConstraintSetEnabled(true);
    const long before = m_manager.GetChangeCount();
    m_manager.Evaluate(0);
    EXPECT_EQ(m_manager.GetChangeCount(), before + 1);
    const auto version = target->GetTransformVersion();
    m_manager.Evaluate(0);
    EXPECT_EQ(m_manager.GetChangeCount(), before + 1);
    EXPECT_EQ(target->GetTransformVersion(), version) << "what depends on the object is not evaluated again";
    constraint.ConstraintSetEnabled(false);
    EXPECT_EQ(m_manager.GetChangeCount(), before + 2);
}

// Run under the thread sanitizer by the full check: playback with passes under way while rest position is toggled,
// bones come and models go.
TEST_F(EvaluateManager, PlaybackWhileConstraintsAndModelsComeAndGo)
{
    ZModel* root = AddBone(m_scene, "root", {0, 0, 0});
    std::vector<ZModel*> bones;
    const auto addBone = [&] {
        bones.push_back(AddBone(m_scene, "bone", {1, 0, 0}, bones.empty() ? root : bones.back()));
    };
    for (int i = 0; i < 8; ++i)
        addBone();
    auto constraint = std::make_unique<ScriptedConstraint>();
    const auto restart = [&] {
        m_manager.DevicePause();
        constraint->ConstraintSetEnabled(false);
        constraint->sources.clear();
        constraint->targets.clear();
        for (ZModel* bone : bones) {
            constraint->Read(bone);
            constraint->Drive(bone);
        }
        Follow(*constraint);
        constraint->ConstraintSetEnabled(true);
        m_manager.DeviceRelease();
    };
    restart();
    for (int frame = 0; frame < 300; ++frame) {
        m_manager.Start(frame / 30.0);
        root->SetAnimatedTransform(ZgeTranslation({0, static_cast<double>(frame), 0}));
        for (ZModel* bone : bones)
            EXPECT_TRUE(std::isfinite(PlaceOf(bone).x)); // drawing
        if (frame % 7 == 3)
            constraint->ConstraintSetEnabled(!constraint->ConstraintGetEnabled());
        if (frame % 11 == 5) {
            addBone();
            restart();
        }
        const bool deletes = frame % 13 == 6;
        if (deletes) {
            m_scene.DeleteModel(bones[bones.size() / 2]); // the pass still writes to its connectors
            bones.erase(bones.begin() + static_cast<std::ptrdiff_t>(bones.size() / 2));
        }
        if (frame % 50 == 49) {
            constraint = std::make_unique<ScriptedConstraint>();
            restart();
        }
        m_manager.Finish();
        if (deletes)
            restart();
    }
    constraint.reset();
    for (ZModel* bone : bones)
        EXPECT_FALSE(bone->GetConstrainedGlobal().has_value());
}
