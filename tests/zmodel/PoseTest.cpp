// SPDX-License-Identifier: MIT
// Poses made by hand as steps of the undo stack.
#include "TinyModels.h"

#include "object/ZUndoStack.h"
#include "zmodel/ZPose.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Pose : public ReportTest
{
protected:
    void TearDown() override
    {
        ZUndoStack::TheOne()->Clear();
        ReportTest::TearDown();
    }
    static std::vector<std::string> Steps() { return ZUndoStack::TheOne()->GetUndoNames(); }

    ZScene scene;
    ZModel* arm = scene.AddModel(MakeBone("Arm", {0, 1, 0}));
    ZModel* hand = scene.AddModel(MakeBone("Hand", {2, 0, 0}));
    const ZgeTRS bent{{0, 1, 0, 1}, {0, 0, 30}, {1, 1, 1}};
};

TEST_F(Pose, SettingOneIsAStepWithTheModelsName)
{
    ZPose_Set(*arm, bent);
    EXPECT_NEAR(ZPose_Get(*arm).rotation.z, 30, 1e-9);
    EXPECT_THAT(Steps(), ElementsAre("Pose Arm"));
    EXPECT_TRUE(ZPose_IsStepName("Pose Arm"));
    EXPECT_FALSE(ZPose_IsStepName("Apply Weight Change"));
    ZUndoStack::TheOne()->Undo();
    EXPECT_FALSE(arm->GetPosedTransform().has_value());
    ZUndoStack::TheOne()->Redo();
    EXPECT_NEAR(ZPose_Get(*arm).rotation.z, 30, 1e-9);
}

TEST_F(Pose, TheOneThatIsThereAlreadyMakesNoStep)
{
    ZPose_Set(*arm, ZPose_Get(*arm));
    EXPECT_THAT(Steps(), IsEmpty());
    EXPECT_FALSE(ZPose_IsPosed(scene));
}

TEST_F(Pose, AGesturesManyChangesBecomeOneStep)
{
    const auto before = arm->GetPosedTransform();
    for (int degrees = 1; degrees <= 30; ++degrees)
        arm->SetPosedTransform(ZgeCompose({{0, 1, 0, 1}, {0, 0, 1.0 * degrees}, {1, 1, 1}}));
    ZPose_AddStep(*arm, before);
    EXPECT_THAT(Steps(), ElementsAre("Pose Arm"));
    ZPose_AddStep(*arm, arm->GetPosedTransform());
    EXPECT_THAT(Steps(), ElementsAre("Pose Arm")) << "nothing changed since";
    ZUndoStack::TheOne()->Undo();
    EXPECT_FALSE(arm->GetPosedTransform().has_value());
    ZUndoStack::TheOne()->Redo();
    EXPECT_NEAR(ZPose_Get(*arm).rotation.z, 30, 1e-9);
}

TEST_F(Pose, ClearingPutsAllAwayInOneStepAndOnlyThen)
{
    EXPECT_FALSE(ZPose_Clear(scene));
    EXPECT_THAT(Steps(), IsEmpty());
    ZPose_Set(*arm, bent);
    ZPose_Set(*hand, bent);
    EXPECT_TRUE(ZPose_Clear(scene));
    EXPECT_FALSE(ZPose_IsPosed(scene));
    EXPECT_TRUE(ZPose_IsStepName(Steps().front().c_str()));
    ZUndoStack::TheOne()->Undo();
    EXPECT_TRUE(arm->GetPosedTransform().has_value());
    EXPECT_TRUE(hand->GetPosedTransform().has_value());
}

TEST_F(Pose, UndoPassesOverAModelThatIsGone)
{
    ZPose_Set(*arm, bent);
    ZPose_Set(*hand, bent);
    ZPose_Clear(scene);
    scene.DeleteModel(arm);
    ZUndoStack::TheOne()->Undo();
    EXPECT_TRUE(hand->GetPosedTransform().has_value());
}

} // namespace
