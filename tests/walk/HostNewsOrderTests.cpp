// SPDX-License-Identifier: MIT
// What the host tells the tool, in every order, at rest and in the middle of the user's gestures: a model deleted, a
// bone deleted, a bone selected in the scene, the scene cleared. After each of them the tables must agree.
#include "ToolStage.h"
#include "ToolTables.h"

#include <algorithm>

namespace {

enum class Gesture
{
    None,
    Rectangle,   ///< drawn in the viewer, the button still down
    Slider,      ///< of the spread, held
    RestPosition ///< the skeletons are held
};

enum class News
{
    ModelDeleted,
    BoneDeleted,
    BoneSelected,
    SceneCleared
};

class HostNewsOrder : public ToolStage, public testing::WithParamInterface<Gesture>
{
protected:
    /// Two checked characters, all vertices active, bones selected, and the gesture under way.
    void Prepare()
    {
        OpenTool();
        first = AddCharacter("First", 5);
        ZModelPolymesh* const second = AddCharacter("Second", 3);
        DropModels(first, second);
        tool->ModelListBox().UserSetCheck(1, true);
        PickAll();
        SelectBones({0, 1, 3});
        bone = tool->BoneList()[1];
        other = tool->BoneList()[2];
        ASSERT_EQ(ToolTables_Check(*tool, leniency), "");
        switch (GetParam()) {
        case Gesture::None:
            break;
        case Gesture::Rectangle:
            session->GetViewer().Press(1, 1, kButtonLeft, 0);
            session->GetViewer().Move(400, 300);
            ASSERT_TRUE(session->GetViewer().IsPickRectShown());
            break;
        case Gesture::Slider:
            Panel().spreadWeights.UserSlide(0, kSpreadSlider, kViewPress, 60);
            ASSERT_TRUE(Panel().IsDragging());
            break;
        case Gesture::RestPosition:
            ASSERT_TRUE(Panel().toRestPositionButton.UserClick());
            session->AfterEvent();
            ASSERT_TRUE(Panel().restPositionMode);
            break;
        }
    }
    void Tell(News news)
    {
        switch (news) {
        case News::ModelDeleted:
            if (Scene().Contains(first))
                Scene().DeleteModel(first);
            break;
        case News::BoneDeleted:
            leniency.weightsLost = true;
            if (Scene().Contains(bone))
                Scene().DeleteModel(bone);
            break;
        case News::BoneSelected:
            if (Scene().Contains(other))
                other->SetSelected(!other->IsSelected());
            break;
        case News::SceneCleared:
            session->ClearScene();
            break;
        }
    }
    /// The user lets go of whatever was held.
    void LetGo()
    {
        session->GetViewer().Move(700, 500);
        session->GetViewer().Release(700, 500);
        if (Panel().spreadWeights.GetRowCount() > 0)
            Panel().spreadWeights.UserSlide(0, kSpreadSlider, kViewRelease, 40);
        session->AfterEvent();
    }
    void StartAfresh()
    {
        session->CloseTool(tool);
        tool = nullptr;
        session->ClearScene();
        leniency = {};
    }

    ZModel* first = nullptr;
    ZModel* bone = nullptr;
    ZModel* other = nullptr;
    ToolTableLeniency leniency;
};

TEST_P(HostNewsOrder, InEveryOrderLeaveTheTablesTrue)
{
    std::vector<News> order{News::ModelDeleted, News::BoneDeleted, News::BoneSelected, News::SceneCleared};
    int orders = 0;
    do {
        ASSERT_NO_FATAL_FAILURE(Prepare());
        std::string told;
        for (const News news : order) {
            told += ' ' + std::to_string(static_cast<int>(news));
            Tell(news);
            session->AfterEvent();
            ASSERT_EQ(ToolTables_Check(*tool, leniency), "") << "after" << told;
        }
        LetGo();
        EXPECT_EQ(ToolTables_Check(*tool, leniency), "") << "at the end of" << told;
        EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen()) << told;
        EXPECT_FALSE(session->GetViewer().IsPickRectShown()) << told;
        EXPECT_FALSE(Panel().restPositionMode) << told;
        EXPECT_EQ(Items().GetCount(), 0) << told;
        StartAfresh();
        ++orders;
    } while (std::next_permutation(order.begin(), order.end()));
    EXPECT_EQ(orders, 24);
}

TEST_P(HostNewsOrder, EachAloneLetsTheGestureOrItsEndBeWhole)
{
    for (const News news : {News::ModelDeleted, News::BoneDeleted, News::BoneSelected}) {
        ASSERT_NO_FATAL_FAILURE(Prepare());
        Tell(news);
        session->AfterEvent();
        LetGo();
        EXPECT_EQ(ToolTables_Check(*tool, leniency), "") << static_cast<int>(news);
        EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen()) << static_cast<int>(news);
        PickAll(); // what the user does next works as ever
        EXPECT_EQ(Panel().selection.vertexRows.GetCount(), news == News::ModelDeleted ? 3 : 8);
        while (Undo()) {
            EXPECT_EQ(ToolTables_Check(*tool, leniency), "") << static_cast<int>(news);
        }
        StartAfresh();
    }
}

std::string NameOf(const testing::TestParamInfo<Gesture>& gesture)
{
    switch (gesture.param) {
    case Gesture::Rectangle:
        return "InARectangle";
    case Gesture::Slider:
        return "InASliderDrag";
    case Gesture::RestPosition:
        return "InRestPosition";
    default:
        return "AtRest";
    }
}

INSTANTIATE_TEST_SUITE_P(Gestures, HostNewsOrder,
                         testing::Values(Gesture::None, Gesture::Rectangle, Gesture::Slider, Gesture::RestPosition),
                         NameOf);

} // namespace
