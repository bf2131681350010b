// SPDX-License-Identifier: MIT
// Passes run on the evaluation manager's thread while the user goes on: rest position is switched, bones are added,
// models deleted, weights changed. To be run under the thread sanitizer as well.
#include "ToolStage.h"

#include "zconstraints/ZEvaluateManager.h"

#include <cmath>
#include <random>

namespace {

/// Keeps a pass under way through everything that a hand does.
class EvaluationThread : public ToolStage
{
protected:
    EvaluationThread()
    {
        OpenTool();
        for (int i = 0; i < 3; ++i)
            AddAnother();
    }
    /// A chain of six bones that an animation would move; here the pass reads it posed anew each frame.
    ZModel* AddAnother()
    {
        const std::string name = "Model" + std::to_string(++m_made);
        std::vector<ZModel*> bones;
        for (int i = 0; i < 6; ++i)
            bones.push_back(AddBone((name + "Bone" + std::to_string(i)).c_str(), i > 0 ? bones.back() : nullptr));
        return AddSkinned(name.c_str(), 12, bones, [](int, int) { return 1.0 / 6; });
    }
    int Dice(int sides) { return static_cast<int>(m_random() % static_cast<unsigned>(sides)); }
    std::vector<ZModel*> All(bool bones)
    {
        std::vector<ZModel*> found;
        for (ZModel* const model : Scene().GetModels())
            if (model->IsBone() == bones)
                found.push_back(model);
        return found;
    }
    ZModel* AnyOf(const std::vector<ZModel*>& models)
    {
        return models.empty() ? nullptr : models[static_cast<size_t>(Dice(static_cast<int>(models.size())))];
    }
    void Bend(int frame)
    {
        for (ZModel* const bone : All(true))
            bone->SetPosedTransform(ZgeRotationFromEuler({0, 0, 1.0 * (frame % 40)}) * ZgeTranslation({0, 1, 0}));
    }
    void DoSomething()
    {
        switch (Dice(8)) {
        case 0:
        case 1:
            Panel().toRestPositionButton.UserClick();
            break;
        case 2:
            DropUnseen(tool->ModelListBox(), AnyOf(All(false)));
            break;
        case 3:
            DropUnseen(Panel().listBonesList, AnyOf(All(true)));
            break;
        case 4:
            if (const int rows = Items().GetCount(); rows > 0)
                tool->ModelListBox().UserSetCheck(Dice(rows), Dice(2) == 0);
            break;
        case 5:
            if (Dice(3) == 0 && All(false).size() > 1)
                Scene().DeleteModel(AnyOf(All(false)));
            break;
        case 6:
            if (Dice(4) == 0 && All(true).size() > 6)
                Scene().DeleteModel(AnyOf(All(true)));
            break;
        default:
            AddAnother();
        }
    }
    /// A drop that lets no pass end first.
    void DropUnseen(ZtView& view, ZModel* model)
    {
        if (model == nullptr)
            return;
        GlobalDragAndDrop_Begin();
        GlobalDragAndDrop_Add(model, 0);
        GlobalDragAndDrop_DropOn(&view);
    }
    /// While the mode is off nothing holds a bone; while it is on every bone that the first entry drives is held.
    void ExpectTheModeIsKept()
    {
        if (!Panel().restPositionMode) {
            for (const ZModel* const bone : All(true))
                EXPECT_FALSE(bone->GetConstrainedGlobal().has_value()) << bone->GetObjectName();
            return;
        }
        for (const auto& entry : tool->Constraint()->GetEntries())
            for (const int driven : entry->driven)
                EXPECT_EQ(entry->bones[driven]->GetConstrainedGlobal().has_value(), driven != entry->root)
                    << entry->bones[driven]->GetObjectName();
    }

private:
    std::mt19937 m_random{20};
    int m_made = 0;
};

TEST_F(EvaluationThread, UserActionsWhileAPassRunsLeaveTheSceneWhole)
{
    ZEvaluateManager& evaluation = *ZEvaluateManager::TheOne();
    ZToolKit_SetMessageAnswerer([](const ZtMessage&) { return 1; });
    int held = 0;
    for (int frame = 0; frame < 600; ++frame) {
        Bend(frame);
        ASSERT_TRUE(evaluation.Start(frame / 24.0));
        for (int actions = Dice(4); actions > 0; --actions)
            DoSomething();
        evaluation.Finish();
        session->AfterEvent();
        ExpectTheModeIsKept();
        held += Panel().restPositionMode ? 1 : 0;
        for (ZModel* const model : All(false))
            for (int i = 0; i < 48; ++i)
                ASSERT_TRUE(std::isfinite(model->Geometry().VertexPositions(1)[i])) << model->GetObjectName();
        ASSERT_FALSE(HasFailure()) << "frame " << frame;
    }
    EXPECT_GT(held, 50) << "the mode was on often enough to say something";
    EXPECT_LT(held, 550);
    session->ClearScene();
    EXPECT_FALSE(Panel().restPositionMode);
}

TEST_F(EvaluationThread, TheToolMayBeClosedWhileAPassRuns)
{
    ZEvaluateManager& evaluation = *ZEvaluateManager::TheOne();
    for (int round = 0; round < 30; ++round) {
        ZModel* const model = All(false).front();
        DropModels(model);
        ASSERT_TRUE(Panel().toRestPositionButton.UserClick());
        session->AfterEvent();
        Bend(round);
        ASSERT_TRUE(evaluation.Start(round));
        session->CloseTool(tool);
        tool = nullptr;
        evaluation.Finish();
        for (const ZModel* const bone : All(true))
            EXPECT_FALSE(bone->GetConstrainedGlobal().has_value());
        OpenTool();
    }
}

} // namespace
