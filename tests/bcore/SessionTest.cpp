// SPDX-License-Identifier: MIT
// The session: tools, scene, keys, history, and what follows an event.
#include "SessionFixture.h"
#include "zbaselib/ZConfigFile.h"
#include "zconstraints/ZEvaluateManager.h"
#include "zmodel/ZGeometryModels.h"
#include "zxtrobject/ZXtrObject.h"

#include <fstream>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {
/// Hears scene events.
struct SceneEars
{
    std::vector<int> kinds;
    SceneEars() { ZXtrObject_Register(ZMakeHandler<&SceneEars::OnScene>(this)); }
    ~SceneEars() { ZXtrObject_Unregister(ZMakeHandler<&SceneEars::OnScene>(this)); }
    SceneEars(const SceneEars&) = delete;
    SceneEars& operator=(const SceneEars&) = delete;
    void OnScene(ZObject*, ZEvent& event) { kinds.push_back(event.kind); }
};

class Lift : public ZConstraint
{
public:
    explicit Lift(ZModel* model) : ZConstraint("lift"), m_model(model) {}
    ~Lift() override
    {
        SystemDetach();
        PrepareDestruct();
        ZConstraint::Destruct();
    }
    void SetupAllConnectors(bool) override
    {
        m_target = ConstraintGetDestinationConnector(m_model, ZDataTypeTranslation);
    }
    void ReleaseAllConnectors() override
    {
        m_target = nullptr;
        ConstraintReleaseAllConnectors();
    }
    bool ConstraintEvaluate(const ZEvaluateInfo& info) override
    {
        const double place[] = {0, 10, 0, 1};
        return m_target != nullptr && m_target->WriteDataEx(place, kBufferTypeGlobal, info, kConnectorWriteDirect);
    }

private:
    ZModel* m_model;
    IConnector* m_target = nullptr;
};

class Session : public SessionTest
{
protected:
    ZModel* AddBone(const char* name)
    {
        return m_session->GetScene().AddModel(std::make_unique<ZModel>(name, ZModelKind::Bone));
    }
    static std::string Label(const ZTool* tool) { return tool->GetObjectLabelName(); }
};
} // namespace

TEST_F(Session, IsOneAProcess)
{
    EXPECT_EQ(ZSession::TheOne(), m_session.get());
    EXPECT_THROW(ZSession({}), ZHostMisuse);
    EXPECT_EQ(ZSession::TheOne(), m_session.get());
    m_session.reset();
    EXPECT_EQ(ZSession::TheOne(), nullptr);
    Open();
    EXPECT_EQ(ZSession::TheOne(), m_session.get());
}

TEST_F(Session, TheSettingsFolderIsWhereConfigurationLies)
{
    std::ofstream(m_folder / "@Application.txt") << "[Weighting]\nDeadWeight=5\n";
    ZSession::Options options;
    options.settingsFolder = m_folder.string();
    Open(options);
    EXPECT_EQ(ZConfigFile("@Application.txt", false, false).Get("Weighting", "DeadWeight", 0.1f), 5.0f);
    m_session.reset();
    EXPECT_EQ(ZConfigFile("@Application.txt", false, false).Get("Weighting", "DeadWeight", 0.1f), 0.1f);
}

TEST_F(Session, AToolIsLaidOutAtItsSizeAndActive)
{
    ZTool* tool = OpenTiny();
    ASSERT_NE(tool, nullptr);
    EXPECT_TRUE(tool->IsToolActive());
    EXPECT_EQ(Check(*tool, "RecordCheck").GetRect().width, 300);
    EXPECT_THAT(m_session->GetOpenTools(), ElementsAre(tool));
    EXPECT_NE(ZManipulator_GetManipulatorSet()->ManipulatorGetActive(), nullptr);
    m_session->CloseTool(tool);
    EXPECT_THAT(m_session->GetOpenTools(), IsEmpty());
    EXPECT_THAT(ZTool::GetTools(), IsEmpty());
    EXPECT_THAT(ZManipulator_GetManipulatorSet()->GetManipulators(), IsEmpty())
        << "the tool's manipulator went with it";
    EXPECT_EQ(ZManipulator_GetManipulatorSet()->ManipulatorGetActive(), nullptr);
}

TEST_F(Session, TwoToolsOfOneKindAreIndependent)
{
    ZTool* first = OpenTiny();
    ZTool* second = m_session->OpenTool("Tiny");
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    m_session->CloseTool(first);
    EXPECT_THAT(m_session->GetOpenTools(), ElementsAre(second));
    EXPECT_EQ(ZManipulator_GetManipulatorSet()->GetManipulators().size(), 1u);
}

TEST_F(Session, WhatCannotBeOpenedIsSaid)
{
    m_session->LoadPlugin(Plugin("good"));
    EXPECT_EQ(m_session->OpenTool("Unknown"), nullptr);
    EXPECT_EQ(m_session->OpenTool("Nothing"), nullptr);
    EXPECT_EQ(m_session->OpenTool("NoTool"), nullptr);
    EXPECT_EQ(m_session->OpenTool("Trouble"), nullptr);
    EXPECT_THAT(ZReport_Warnings(),
                ElementsAre("There is no tool \"Unknown\".", "The tool \"Nothing\" could not be made.",
                            "The tool \"NoTool\" could not be made.",
                            "The tool \"Trouble\" could not be made: out of paint."));
    EXPECT_THAT(m_session->GetOpenTools(), IsEmpty());
}

TEST_F(Session, ClosingWhatIsNotOpenIsMisuse) { EXPECT_THROW(m_session->CloseTool(nullptr), ZHostMisuse); }

TEST_F(Session, ClosingAToolLeavesNoTransactionOpen)
{
    ZTool* tool = OpenTiny();
    Check(*tool, "DangleCheck").UserClick();
    EXPECT_EQ(ZUndoStack::TheOne()->TransactionDepth(), 2);
    m_session->CloseTool(tool);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_THAT(ZUndoStack::TheOne()->GetUndoNames(), ElementsAre("Dangling"));
}

TEST_F(Session, ClosingAToolInAGestureEndsTheGesture)
{
    ZTool* tool = OpenTiny();
    m_session->GetViewer().Press(10, 10, kButtonLeft, 0);
    EXPECT_TRUE(ZUndoStack::TheOne()->IsTransactionOpen());
    m_session->CloseTool(tool);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_EQ(m_session->GetViewer().GetPressedButton(), 0);
    m_session->GetViewer().Release(10, 10);
    EXPECT_THAT(ZUndoStack::TheOne()->GetUndoNames(), ElementsAre("Gesture"));
}

TEST_F(Session, UndoAndRedoWalkTheHistoryAndSaySo)
{
    ZTool* tool = OpenTiny();
    EXPECT_FALSE(m_session->Undo());
    EXPECT_EQ(ZReport_GetStatus(), "There is nothing to undo.");
    EXPECT_FALSE(m_session->Redo());
    EXPECT_EQ(ZReport_GetStatus(), "There is nothing to redo.");
    Check(*tool, "RecordCheck").UserClick();
    EXPECT_TRUE(m_session->Undo());
    EXPECT_EQ(ZReport_GetStatus(), "Undone: Flip");
    EXPECT_TRUE(m_session->Redo());
    EXPECT_EQ(ZReport_GetStatus(), "Redone: Flip");
}

TEST_F(Session, UndoAndRedoWaitForTheEndOfAGestureAndOfATransaction)
{
    ZTool* tool = OpenTiny();
    Check(*tool, "RecordCheck").UserClick();
    m_session->GetViewer().Press(10, 10, kButtonLeft, 0);
    EXPECT_FALSE(m_session->Undo());
    EXPECT_THAT(ZReport_GetStatus(), HasSubstr("Undo waits"));
    EXPECT_FALSE(m_session->Redo());
    EXPECT_THAT(ZReport_GetStatus(), HasSubstr("Redo waits"));
    m_session->GetViewer().Release(10, 10);
    Check(*tool, "DangleCheck").UserClick();
    EXPECT_FALSE(m_session->Undo());
    ZUndoStack::TheOne()->TransactionEnd(false, false);
    ZUndoStack::TheOne()->TransactionEnd(false, false);
    EXPECT_TRUE(m_session->Undo());
}

TEST_F(Session, ClearingTellsEverybodyWhileTheModelsLive)
{
    AddBone("hip");
    ZTool* tool = OpenTiny();
    Check(*tool, "RecordCheck").UserClick();
    struct Counter
    {
        ZScene& scene;
        size_t models = 0;
        void OnScene(ZObject*, ZEvent& event)
        {
            if (event.kind == kSceneClearing)
                models = scene.GetModels().size();
        }
    } counter{m_session->GetScene()};
    ZXtrObject_Register(ZMakeHandler<&Counter::OnScene>(&counter));
    m_session->ClearScene();
    ZXtrObject_Unregister(ZMakeHandler<&Counter::OnScene>(&counter));
    EXPECT_EQ(counter.models, 1u);
    EXPECT_THAT(Label(tool), HasSubstr("scene10"));
    EXPECT_THAT(m_session->GetScene().GetModels(), IsEmpty());
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), 0);
    EXPECT_THAT(m_session->GetOpenTools(), ElementsAre(tool));
}

TEST_F(Session, ClearingInAGestureEndsTheGesture)
{
    OpenTiny();
    AddBone("hip");
    m_session->GetViewer().Press(10, 10, kButtonLeft, 0);
    m_session->ClearScene();
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), 0);
    EXPECT_FALSE(ZEvaluateManager::TheOne()->IsPaused());
    EXPECT_FALSE(ZConstraint::IgnoreSetupAllConnectors());
}

TEST_F(Session, ClearingWhileAConstraintDrivesIsSafe)
{
    ZModel* bone = AddBone("hip");
    Lift lift(bone);
    lift.ConstraintSetEnabled(true);
    m_session->AfterEvent();
    EXPECT_EQ(ZgeTransformPoint({}, bone->GetTransformMatrix(true)).y, 10);
    m_session->GetScene(); // the constraint still names the bone after this:
    lift.ConstraintSetEnabled(false);
    m_session->ClearScene();
    m_session->AfterEvent();
    EXPECT_FALSE(lift.ConstraintGetEnabled());
}

TEST_F(Session, AKeyReachesTheShortcutsWithItsCodes)
{
    ZTool* tool = OpenTiny();
    m_session->PressKey('W', 0);
    EXPECT_THAT(Label(tool), HasSubstr("key87"));
    EXPECT_FALSE(Object_GetCurrentKeyState('W', true));
    Object_SetKeyState('X', true);
    m_session->PressKey('X', 0);
    EXPECT_TRUE(Object_GetCurrentKeyState('X', true)) << "a key that was held stays held";
}

TEST_F(Session, KeyFFramesTheSelectedModelsWhenNobodyElseActs)
{
    ZModel* bone = AddBone("hip");
    bone->SetFileTransform(ZgeTranslation({50, 0, 0}));
    auto mesh = std::make_unique<ZModelPolymesh>("mesh");
    const float positions[] = {100, 0, 0, 101, 0, 0, 100, 1, 0};
    ASSERT_TRUE(mesh->SetGeometry(positions, 3, {0, 1, 2}, {3}));
    m_session->GetScene().AddModel(std::move(mesh))->SetSelected(true);
    m_session->PressKey('F', kModifierShift);
    EXPECT_LT(m_session->GetViewer().GetCamera().GetTarget().x, 50);
    m_session->PressKey('F', 0);
    EXPECT_NEAR(m_session->GetViewer().GetCamera().GetTarget().x, 100.5, 1e-3);
}

TEST_F(Session, AfterAnEventConstraintsAreEvaluatedUnlessPaused)
{
    ZModel* bone = AddBone("hip");
    Lift lift(bone);
    lift.ConstraintSetEnabled(true);
    ZEvaluateManager::TheOne()->DevicePause();
    m_session->AfterEvent();
    EXPECT_EQ(ZgeTransformPoint({}, bone->GetTransformMatrix(true)).y, 0);
    ZEvaluateManager::TheOne()->DeviceRelease();
    m_session->AfterEvent();
    EXPECT_EQ(ZgeTransformPoint({}, bone->GetTransformMatrix(true)).y, 10);
}

TEST_F(Session, AfterAnEventAChangeOfTheSceneIsToldOnce)
{
    ZModel* bone = AddBone("hip");
    m_session->AfterEvent();
    SceneEars ears;
    const long before = m_session->GetViewer().GetInvalidateCount();
    m_session->AfterEvent();
    EXPECT_THAT(ears.kinds, IsEmpty());
    EXPECT_EQ(m_session->GetViewer().GetInvalidateCount(), before) << "nothing changed, nothing is drawn again";
    bone->SetPosedTransform(ZgeTranslation({1, 0, 0}));
    m_session->AfterEvent();
    m_session->AfterEvent();
    EXPECT_THAT(ears.kinds, ElementsAre(kSceneChanged));
    EXPECT_GT(m_session->GetViewer().GetInvalidateCount(), before);
}

TEST_F(Session, AfterAnEventAChangeOfAControlDrawsAgain)
{
    ZTool* tool = OpenTiny();
    m_session->AfterEvent();
    SceneEars ears;
    const long before = m_session->GetViewer().GetInvalidateCount();
    Check(*tool, "RecordCheck").UserClick();
    m_session->AfterEvent();
    EXPECT_GT(m_session->GetViewer().GetInvalidateCount(), before);
    EXPECT_THAT(ears.kinds, Not(Contains(kSceneChanged)));
}

TEST_F(Session, AfterAnEventTheStatusLineSaysHowManyVerticesWereNormalised)
{
    auto mesh = std::make_unique<ZModelPolymesh>("mesh");
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    ASSERT_TRUE(mesh->SetGeometry(positions, 3, {0, 1, 2}, {3}));
    ZSkin* skin = mesh->MakeSkin(kDeformNormalise);
    skin->AppendLink(AddBone("hip"), ZgeMatrix());
    ZArrayTemplate<int> vertices{0, 1, 2};
    ZArrayTemplate<double> weights{0.5, 0.5, 1.0};
    skin->SetEntries(0, std::move(vertices), std::move(weights));
    m_session->GetScene().AddModel(std::move(mesh));
    skin->TakeNormalisedCount();
    m_session->AfterEvent();
    EXPECT_EQ(ZReport_GetStatus(), "");
    // A guest that normalises rewrites the links outside the undo stack.
    skin->BeginLink(0);
    skin->ClearEntries();
    for (int vertex = 0; vertex < 3; ++vertex)
        skin->AddEntry(vertex, 1.0);
    skin->EndLink();
    m_session->AfterEvent();
    EXPECT_EQ(ZReport_GetStatus(), "normalised 2 vertices");
    ZReport_Status("");
    m_session->AfterEvent();
    EXPECT_EQ(ZReport_GetStatus(), "");
}
