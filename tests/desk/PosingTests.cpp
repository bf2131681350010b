// SPDX-License-Identifier: MIT
// The menu's Pose switch: the selected bone's handles in the viewer, with real mouse events.
#include "Stage.h"

#include "object/ZUndoStack.h"
#include "zmanipulator/ZTransformManager.h"

namespace {

class DeskPosing : public DeskStage
{
protected:
    ZModel* Model(const std::string& name)
    {
        for (ZModel* const model : desk->Session().GetScene().GetModels())
            if (model->GetObjectName() == name)
                return model;
        throw std::runtime_error("no model " + name);
    }
    /// A pixel of the viewer at which a handle would be taken; (-1, -1) for none.
    QPoint FindHandle()
    {
        ZViewer& viewer = desk->Session().GetViewer();
        for (int y = 0; y < viewer.GetHeight(); y += 5)
            for (int x = 0; x < viewer.GetWidth(); x += 5)
                if (viewer.Move(x, y))
                    return {x, y};
        return {-1, -1};
    }
};

TEST_F(DeskPosing, TheSwitchShowsHandlesThatPoseTheSelectedBone)
{
    OpenFigure();
    ZModel* const forearm = Model("Forearm.L");
    forearm->SetSelected(true);
    const ZgeMatrix file = forearm->GetTransformMatrix(true);
    Action("EditPose")->setChecked(true);
    const QPoint handle = FindHandle();
    ASSERT_GE(handle.x(), 0);
    DragInViewer(handle, handle + QPoint(40, 30));
    EXPECT_NE(forearm->GetTransformMatrix(true), file);
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoNames().front(), "Pose Forearm.L");
    Action("EditPose")->setChecked(false);
    EXPECT_FALSE(ZTransformManager::TheOne()->IsPosing());
    const ZgeMatrix posed = forearm->GetTransformMatrix(true);
    DragInViewer(handle, handle + QPoint(40, 30));
    EXPECT_EQ(forearm->GetTransformMatrix(true), posed);
}

TEST_F(DeskPosing, TheSwitchFollowsAToolThatTakesTheViewerBack)
{
    OpenFigure();
    Action("EditPose")->setChecked(true);
    EXPECT_TRUE(ZTransformManager::TheOne()->IsPosing());
    desk->Session().PressKey('W', 0);
    desk->AfterEvent();
    EXPECT_FALSE(Action("EditPose")->isChecked());
    EXPECT_FALSE(ZTransformManager::TheOne()->IsPosing());
}

} // namespace
