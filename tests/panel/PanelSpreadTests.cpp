// SPDX-License-Identifier: MIT
// The spread: its columns, its rows, and what editing a cell does.
#include "ToolStage.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PanelSpread : public ToolStage
{
protected:
    void SetUp() override
    {
        OpenTool();
        const std::vector<ZModel*> bones{AddBone("A"), AddBone("B"), AddBone("C")};
        body = AddSkinned("Body", 3, bones, [](int vertex, int link) {
            const double weights[3][3] = {{0.5, 0.3, 0.2}, {0.25, 0.75, 0}, {0, 0, 1}};
            return weights[vertex][link];
        });
        DropModels(body);
    }
    void ReopenOnScreen(int width)
    {
        session->CloseTool(tool);
        tool = nullptr;
        ZToolKit_SetScreenWidth(width);
        OpenTool();
    }
    std::vector<int> Widths()
    {
        std::vector<int> widths{Panel().spreadWeights.GetRowLabelWidth()};
        for (const ZtSpreadColumn& column : Panel().spreadWeights.GetColumns())
            widths.push_back(column.width);
        return widths;
    }
    std::vector<double> Column(int column)
    {
        std::vector<double> values;
        for (int row = 0; row < Panel().spreadWeights.GetRowCount(); ++row)
            values.push_back(Cell(row, column));
        return values;
    }
    void ExpectWeights(const std::vector<double>& percent)
    {
        ASSERT_EQ(Panel().spreadWeights.GetRowCount(), static_cast<int>(percent.size()));
        for (size_t row = 0; row < percent.size(); ++row) {
            EXPECT_NEAR(Cell(static_cast<int>(row), kSpreadWeight), percent[row], 1e-4) << row;
            EXPECT_NEAR(Cell(static_cast<int>(row), kSpreadSlider), percent[row], 1e-4) << row;
        }
    }
    ZModelPolymesh* body = nullptr;
};

TEST_F(PanelSpread, ColumnsHaveTheirNamesKindsAndWidths)
{
    const auto& columns = Panel().spreadWeights.GetColumns();
    ASSERT_EQ(columns.size(), 4U);
    EXPECT_EQ(columns[0].name, "Col");
    EXPECT_EQ(columns[1].name, "Weight Slider");
    EXPECT_EQ(columns[2].name, "Lock");
    EXPECT_EQ(columns[3].name, "Weight");
    EXPECT_EQ(columns[0].kind, 9);
    EXPECT_EQ(columns[1].kind, 9);
    EXPECT_EQ(columns[2].kind, 5);
    EXPECT_EQ(columns[3].kind, 2);
    EXPECT_THAT(Widths(), ElementsAre(162, 30, 120, 50, 58));
}

TEST_F(PanelSpread, NarrowWidthsApplyBelow1280Pixels)
{
    ReopenOnScreen(1279);
    EXPECT_THAT(Widths(), ElementsAre(132, 24, 102, 31, 43));
    ReopenOnScreen(1280);
    EXPECT_THAT(Widths(), ElementsAre(162, 30, 120, 50, 58));
}

TEST_F(PanelSpread, WithoutASelectedVertexColoursAndLocksAreShownOverZeros)
{
    SelectBones({0, 2});
    Panel().spreadWeights.UserType(1, kSpreadLock, 1);
    tool->RefreshPanelLists();
    EXPECT_THAT(Column(kSpreadWeight), ElementsAre(0, 0));
    EXPECT_THAT(Column(kSpreadSlider), ElementsAre(0, 0));
    EXPECT_THAT(Column(kSpreadLock), ElementsAre(0, 1));
    const ZtSpreadCell* const blue = Panel().spreadWeights.GetCell(1, kSpreadColour);
    EXPECT_EQ(blue->view, ZtSpreadCell::View::Colour);
    EXPECT_FLOAT_EQ(blue->colour[2], 0.9F);
    EXPECT_EQ(Panel().spreadWeights.GetRowLabel(1), "C");
    const ZtSpreadCell* const slider = Panel().spreadWeights.GetCell(0, kSpreadSlider);
    EXPECT_EQ(slider->view, ZtSpreadCell::View::Slider);
    EXPECT_EQ(slider->minimum, 0);
    EXPECT_EQ(slider->maximum, 100);
}

TEST_F(PanelSpread, ColourIsShownATenthDarker)
{
    SelectBones({0});
    Panel().boneColorEdit.UserSetColour(1.0, 0.5, 0.0);
    const float* const colour = Panel().spreadWeights.GetCell(0, kSpreadColour)->colour;
    EXPECT_EQ(colour[0], static_cast<float>(0.9));
    EXPECT_EQ(colour[1], static_cast<float>(0.45));
    EXPECT_EQ(colour[2], 0.0F);
}

TEST_F(PanelSpread, WeightOfAQuarterIsShownAs25)
{
    PickAll();
    SelectBones({0, 1});
    SelectVertices({1});
    EXPECT_EQ(Cell(0, kSpreadSlider), 25.0);
    EXPECT_EQ(Cell(0, kSpreadWeight), 25.0);
    ExpectWeights({25, 75});
}

TEST_F(PanelSpread, CurrentVertexIsTheFirstSelectedRow)
{
    PickAll();
    SelectBones({0, 1, 2});
    SelectVertices({2, 1});
    ExpectWeights({25, 75, 0});
    SelectVertices({2});
    ExpectWeights({0, 0, 100});
}

TEST_F(PanelSpread, ValuesOnlyRefreshKeepsTheViews)
{
    PickAll();
    SelectBones({0, 1});
    SelectVertices({0});
    Panel().spreadWeights.SetColourCell(0, kSpreadColour, 0.125F, 0, 0); // as a mark
    Panel().spreadWeights.SetCellValue(0, kSpreadWeight, 1);
    tool->RefreshSpread(true);
    ExpectWeights({50, 30});
    EXPECT_EQ(Panel().spreadWeights.GetCell(0, kSpreadColour)->colour[0], 0.125F);
    tool->RefreshSpread(false);
    EXPECT_FLOAT_EQ(Panel().spreadWeights.GetCell(0, kSpreadColour)->colour[0], 0.9F);
}

TEST_F(PanelSpread, TypedWeightIsOneUndoStep)
{
    PickAll();
    SelectBones({0, 1, 2});
    SelectVertices({0});
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    EXPECT_TRUE(Panel().spreadWeights.UserType(0, kSpreadWeight, 70));
    ExpectWeights({70, 18, 12});
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps + 1);
    EXPECT_EQ(UndoNames().front(), "Apply Weight Change");
    EXPECT_NEAR(SkinWeight(body, 1, 0), 0.18, 1e-6);
    EXPECT_NEAR(SkinWeight(body, 1, 1), 0.75, 1e-6); // another vertex is not touched
    EXPECT_TRUE(Undo());
    ExpectWeights({50, 30, 20});
    EXPECT_TRUE(Redo());
    ExpectWeights({70, 18, 12});
}

TEST_F(PanelSpread, SliderDragIsOneUndoStepFromPressToRelease)
{
    PickAll();
    SelectBones({0, 1, 2});
    SelectVertices({0});
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    ZtSpread& spread = Panel().spreadWeights;
    EXPECT_TRUE(spread.UserSlide(0, kSpreadSlider, kViewPress, 55));
    EXPECT_TRUE(Panel().IsDragging());
    EXPECT_FALSE(Undo()); // a gesture is under way
    spread.UserSlide(0, kSpreadSlider, kViewValueChanged, 100);
    ExpectWeights({100, 0, 0});
    spread.UserSlide(0, kSpreadSlider, kViewRelease, 60);
    EXPECT_FALSE(Panel().IsDragging());
    ExpectWeights({60, 24, 16}); // flows back to the bones that held it
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps + 1);
    EXPECT_TRUE(Undo());
    ExpectWeights({50, 30, 20});
}

TEST_F(PanelSpread, AnySliderEventBeginsWhenNoDragIsInProgress)
{
    PickAll();
    SelectBones({0, 1});
    SelectVertices({0});
    ZtSpread& spread = Panel().spreadWeights;
    spread.UserSlide(0, kSpreadSlider, kViewValueChanged, 60);
    EXPECT_TRUE(ZUndoStack::TheOne()->IsTransactionOpen());
    spread.UserSlide(0, kSpreadSlider, kViewRelease, 70);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    spread.UserSlide(0, kSpreadSlider, kViewRelease, 80); // a release alone is a step of its own
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps + 1);
}

TEST_F(PanelSpread, LostReleaseEndsItsStepWhenTheNextGestureBegins)
{
    PickAll();
    SelectBones({0, 1, 2});
    SelectVertices({0});
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    ZtSpread& spread = Panel().spreadWeights;
    spread.UserSlide(0, kSpreadSlider, kViewPress, 60);
    spread.UserType(1, kSpreadWeight, 10);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps + 2);
    spread.UserSlide(0, kSpreadSlider, kViewPress, 60);
    SelectVertices({1});
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_FALSE(Panel().IsDragging());
    while (Undo()) {
    }
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.5, 1e-6);
}

TEST_F(PanelSpread, LockedRowSpringsBackToItsWeight)
{
    PickAll();
    SelectBones({0, 1, 2});
    SelectVertices({0});
    ZtSpread& spread = Panel().spreadWeights;
    EXPECT_TRUE(spread.UserType(1, kSpreadLock, 1));
    EXPECT_THAT(Ints(tool->LockFlags()), ElementsAre(0, 1, 0));
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    spread.UserType(1, kSpreadWeight, 90);
    ExpectWeights({50, 30, 20});
    SlideTo(1, {40, 50, 60});
    ExpectWeights({50, 30, 20});
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps);
    EXPECT_FALSE(Panel().IsDragging());
    spread.UserType(0, kSpreadWeight, 70); // the locked one keeps its share
    ExpectWeights({70, 30, 0});
    spread.UserType(1, kSpreadLock, 0);
    EXPECT_THAT(Ints(tool->LockFlags()), ElementsAre(0, 0, 0));
}

TEST_F(PanelSpread, EditWithoutAnActiveVertexGoesBackToZero)
{
    SelectBones({0, 1});
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    Panel().spreadWeights.UserType(0, kSpreadWeight, 40);
    SlideTo(1, {10, 20, 30});
    EXPECT_THAT(Column(kSpreadWeight), ElementsAre(0, 0));
    EXPECT_THAT(Column(kSpreadSlider), ElementsAre(0, 0));
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps);
    PickAll();
    SelectVertices({}); // selected ones, none active
    Panel().spreadWeights.UserType(0, kSpreadWeight, 40);
    EXPECT_THAT(Column(kSpreadWeight), ElementsAre(0, 0));
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.5, 1e-6);
}

TEST_F(PanelSpread, AffectAllWritesTheSpreadToEveryTargetVertex)
{
    PickAll();
    SelectBones({0, 1, 2});
    Panel().listWeightingMode.UserChoose(kAffectAllSelected);
    Panel().spreadWeights.UserType(0, kSpreadWeight, 70);
    for (int vertex = 0; vertex < 3; ++vertex) {
        EXPECT_NEAR(SkinWeight(body, 0, vertex), 0.70, 1e-6) << vertex;
        EXPECT_NEAR(SkinWeight(body, 1, vertex), 0.18, 1e-6) << vertex;
        EXPECT_NEAR(SkinWeight(body, 2, vertex), 0.12, 1e-6) << vertex;
    }
    EXPECT_TRUE(Undo());
    EXPECT_NEAR(SkinWeight(body, 2, 2), 1.0, 1e-6);
}

TEST_F(PanelSpread, NumbersThatAreNoneChangeNothing)
{
    PickAll();
    SelectBones({0, 1, 2});
    SelectVertices({0});
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    EXPECT_FALSE(Panel().spreadWeights.UserType(0, kSpreadWeight, std::numeric_limits<double>::quiet_NaN()));
    EXPECT_FALSE(Panel().spreadWeights.UserType(9, kSpreadWeight, 10));
    EXPECT_FALSE(Panel().spreadWeights.UserType(0, kSpreadColour, 10));
    ExpectWeights({50, 30, 20});
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps);
}

TEST_F(PanelSpread, DeletingTheModelInTheMiddleOfADragEndsTheDrag)
{
    PickAll();
    SelectBones({0, 1, 2});
    ZtSpread& spread = Panel().spreadWeights;
    spread.UserSlide(0, kSpreadSlider, kViewPress, 60);
    Scene().DeleteModel(body);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_FALSE(Panel().IsDragging());
    EXPECT_EQ(spread.GetRowCount(), 0);
    spread.UserSlide(0, kSpreadSlider, kViewRelease, 70);
    while (Undo()) {
    }
}

TEST_F(PanelSpread, DeletingABoneInTheMiddleOfADragWaitsForItsEnd)
{
    PickAll();
    SelectBones({0, 1, 2});
    ZModel* const b = tool->BoneList()[1];
    ZtSpread& spread = Panel().spreadWeights;
    spread.UserSlide(0, kSpreadSlider, kViewPress, 60);
    Scene().DeleteModel(b);
    EXPECT_EQ(tool->BoneList().GetCount(), 3);
    spread.UserSlide(0, kSpreadSlider, kViewRelease, 70);
    EXPECT_EQ(tool->BoneList().GetCount(), 2);
    EXPECT_THAT(Ints(tool->SpreadRows()), ElementsAre(0, 1));
    EXPECT_EQ(spread.GetRowLabel(1), "C");
    EXPECT_THAT(UndoNames(), IsEmpty()); // records name links by index, and the indices moved
}

} // namespace
