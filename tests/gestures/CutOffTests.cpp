// SPDX-License-Identifier: MIT
// A gesture that never sees its release, on the real library and host: no step, no rectangle, no open transaction is
// left, whatever ended it.
#include "object/ZAction.h"
#include "object/ZUndoStack.h"
#include "support/OpenedTool.h"
#include "zmodel/ZGeometryModels.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

class CutOff : public testing::Test
{
protected:
    CutOff() : desk(SKINDESK_PLUGIN_FOLDER)
    {
        bone = desk.session.GetScene().AddModel(std::make_unique<ZModel>("Bone", ZModelKind::Bone));
        bone->SetBone(true);
        auto made = std::make_unique<ZModelPolymesh>("Row");
        const float positions[] = {-1, 0, 0, 0, 0, 0, 1, 0, 0};
        made->SetGeometry(positions, 3, {0, 1, 2}, {3});
        ZSkin* const skin = made->MakeSkin(kDeformNormalise);
        skin->AppendLink(bone, ZgeMatrix());
        skin->BeginLink(0);
        for (int vertex = 0; vertex < 3; ++vertex)
            skin->AddEntry(vertex, 1);
        skin->EndLink();
        model = desk.session.GetScene().AddModel(std::move(made));
        desk.OpenTool();
        desk.Drop({model});
        desk.Viewer().SetSize(400, 300);
        desk.Viewer().GetCamera().LookAt({0, 0, 8}, {0, 0, 0}, {0, 1, 0});
        steps = ZUndoStack::TheOne()->GetUndoNames();
    }
    ~CutOff() override { Object_ClearKeyStates(); }

    /// A rectangle over all three vertices, not released.
    void BeginDrag()
    {
        desk.Viewer().Press(20, 20, kButtonLeft, 0);
        desk.Viewer().Move(200, 150);
        desk.Viewer().Move(380, 280);
        ASSERT_TRUE(desk.Viewer().IsPickRectShown());
    }
    void ExpectNothingUnderWay()
    {
        desk.session.AfterEvent();
        EXPECT_FALSE(desk.Viewer().IsPickRectShown());
        EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
        EXPECT_EQ(desk.Viewer().GetPressedButton(), 0);
        for (const int id : {100018, 100019, 100020, 100021, 100022, 100023, 100026, 100027})
            EXPECT_FALSE(Object_GetActionManager()->QueryInteraction(id)->IsInProgress()) << id;
    }
    void ExpectNothingDone()
    {
        ExpectNothingUnderWay();
        EXPECT_EQ(ZUndoStack::TheOne()->GetUndoNames(), steps);
        EXPECT_THAT(OpenedTool::Rows(desk.Vertices()), ElementsAre("Empty"));
    }
    /// What the user does next works as ever.
    void ExpectNextGestureWhole()
    {
        BeginDrag();
        desk.Viewer().Release(380, 280);
        ExpectNothingUnderWay();
        EXPECT_THAT(OpenedTool::Rows(desk.Vertices()), ElementsAre("Vertex 0 Row", "Vertex 1 Row", "Vertex 2 Row"));
    }

    OpenedTool desk;
    ZModel* bone = nullptr;
    ZModel* model = nullptr;
    std::vector<std::string> steps;
};

TEST_F(CutOff, BySecondButton)
{
    BeginDrag();
    desk.Viewer().Press(200, 150, kButtonRight, 0);
    ExpectNothingDone();
    desk.Viewer().Release(200, 150);
    ExpectNothingDone();
    ExpectNextGestureWhole();
}

TEST_F(CutOff, ByLostFocus)
{
    BeginDrag();
    desk.Viewer().CancelGesture();
    ExpectNothingDone();
    ExpectNextGestureWhole();
}

TEST_F(CutOff, ByDeactivatedTool)
{
    BeginDrag();
    desk.tool->ToolDeactivate();
    ExpectNothingDone();
    desk.tool->ToolActivate();
    ExpectNextGestureWhole();
}

TEST_F(CutOff, ByClosedTool)
{
    BeginDrag();
    desk.session.CloseTool(desk.tool);
    ExpectNothingUnderWay();
    EXPECT_FALSE(desk.Viewer().Release(380, 280));
    ExpectNothingUnderWay();
}

TEST_F(CutOff, ByDeletedModel)
{
    BeginDrag();
    desk.session.GetScene().DeleteModel(model);
    desk.Viewer().Move(370, 270);
    desk.Viewer().Release(370, 270);
    ExpectNothingUnderWay();
    EXPECT_THAT(OpenedTool::Rows(desk.Models()), ElementsAre("Drop models here"));
}

TEST_F(CutOff, ByDeletedBone)
{
    BeginDrag();
    desk.session.GetScene().DeleteModel(bone);
    desk.Viewer().Release(380, 280);
    ExpectNothingUnderWay();
}

TEST_F(CutOff, ByClearedScene)
{
    BeginDrag();
    desk.session.ClearScene();
    ExpectNothingUnderWay();
    desk.Viewer().Release(380, 280);
    ExpectNothingUnderWay();
}

TEST_F(CutOff, NotByABoneThatIsSelectedInTheScene)
{
    BeginDrag();
    bone->SetSelected(true);
    EXPECT_TRUE(desk.Viewer().IsPickRectShown());
    EXPECT_THAT(desk.Bones().GetSelectedRows(), ElementsAre(0));
    desk.Viewer().Release(380, 280);
    ExpectNothingUnderWay();
    EXPECT_EQ(desk.Vertices().GetSelectedCount(), 3);
    EXPECT_EQ(desk.Spread().GetRowCount(), 1);
    EXPECT_EQ(desk.Spread().GetCell(0, 3)->value, 100.0);
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoNames().size(), steps.size() + 1);
    EXPECT_TRUE(desk.session.Undo());
    EXPECT_THAT(OpenedTool::Rows(desk.Vertices()), ElementsAre("Empty"));
    EXPECT_THAT(desk.Bones().GetSelectedRows(), ElementsAre(0)) << "the scene's selection is no step of the tool";
}

TEST_F(CutOff, ByUnloadedPlugin)
{
    BeginDrag();
    const std::vector<std::string> plugins = desk.session.GetLoadedPlugins();
    ASSERT_FALSE(plugins.empty());
    EXPECT_TRUE(desk.session.UnloadPlugin(plugins.front()));
    ExpectNothingUnderWay();
    desk.Viewer().Release(380, 280);
    ExpectNothingUnderWay();
}

TEST_F(CutOff, UndoWaitsForTheEndOfAGesture)
{
    BeginDrag();
    EXPECT_FALSE(desk.session.Undo());
    EXPECT_TRUE(desk.Viewer().IsPickRectShown()) << "the gesture goes on";
    desk.Viewer().Release(380, 280);
    ExpectNothingUnderWay();
    EXPECT_EQ(desk.Vertices().GetRowCount(), 3);
    EXPECT_TRUE(desk.session.Undo());
    EXPECT_THAT(OpenedTool::Rows(desk.Vertices()), ElementsAre("Empty"));
}

TEST_F(CutOff, ASliderHeldInThePanelEndsWhenTheViewerIsPressed)
{
    ExpectNextGestureWhole();
    desk.Bones().UserSelect({0});
    desk.Spread().UserSlide(0, 1, kViewPress, 100);
    desk.Spread().UserSlide(0, 1, kViewValueChanged, 60);
    desk.Viewer().Press(20, 20, kButtonLeft, 0);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen()) << "its step is not mixed with the pick's";
    desk.Viewer().CancelGesture();
    ExpectNothingUnderWay();
}

} // namespace
