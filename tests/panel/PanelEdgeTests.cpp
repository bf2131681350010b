// SPDX-License-Identifier: MIT
// The panel at its edges: built anew, on narrow screens, refreshed in order, and disturbed in the middle of a drag.
#include "ToolStage.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PanelEdge : public ToolStage
{
protected:
    void SetUp() override { OpenTool(); }
    const ZtRect& Rect(const char* region) { return Panel().FindRegion(region)->rect; }
    void ReopenOnScreen(int width)
    {
        session->CloseTool(tool);
        tool = nullptr;
        ZToolKit_SetScreenWidth(width);
        OpenTool();
    }
    /// Three bones; three vertices, each on two of them.
    ZModelPolymesh* AddThreeBones()
    {
        return AddSkinned("Body", 3, {AddBone("A"), AddBone("B"), AddBone("C")}, [](int vertex, int link) {
            const double weights[3][3] = {{0.5, 0.5, 0}, {0, 0.75, 0.25}, {0.1, 0, 0.9}};
            return weights[vertex][link];
        });
    }
    void PickVertex(int row)
    {
        PickAll();
        SelectVertices({row});
    }
};

TEST_F(PanelEdge, BuildingAgainResetsEveryFlagTableAndControl)
{
    DropModels(AddThreeBones());
    SelectBones({1});
    for (ZtCheckBox* const button :
         {&Panel().automaticBoneSelectionButton, &Panel().cullFaceButton, &Panel().selectUButton,
          &Panel().selectVButton, &Panel().enableModelSelectionCheckBox})
        ASSERT_TRUE(button->UserClick());
    Panel().listWeightingMode.UserChoose(1);
    Panel().colorModeList.UserChoose(2);
    Panel().sphereSizeSlider.UserSetValue(3);
    Panel().SetRestPosition(true);

    Panel().Build();
    EXPECT_FALSE(Panel().automaticBoneSelection);
    EXPECT_FALSE(Panel().foregroundOnly);
    EXPECT_FALSE(Panel().restPositionMode);
    EXPECT_FALSE(Panel().selection.selectU);
    EXPECT_FALSE(Panel().selection.selectV);
    EXPECT_TRUE(Panel().modelSelectionEnabled);
    EXPECT_EQ(Panel().colourMode, 0);
    EXPECT_EQ(Panel().weightingMode, 0);
    EXPECT_EQ(Panel().CurrentBone(), -1);
    EXPECT_TRUE(Panel().boneColours.IsEmpty());
    EXPECT_TRUE(Panel().selectedBones.IsEmpty());
    for (const ZtCheckBox* const button :
         {&Panel().automaticBoneSelectionButton, &Panel().cullFaceButton, &Panel().toRestPositionButton,
          &Panel().selectUButton, &Panel().selectVButton})
        EXPECT_FALSE(button->GetState()) << button->GetObjectName();
    EXPECT_TRUE(Panel().enableModelSelectionCheckBox.GetState());
    EXPECT_EQ(Panel().listWeightingMode.GetIndex(), 0);
    EXPECT_EQ(Panel().colorModeList.GetIndex(), 0);
    EXPECT_EQ(Panel().sphereSizeSlider.GetValue(), 1.0);
    EXPECT_EQ(Panel().spreadWeights.GetColumns().size(), 4U); // not eight
}

TEST_F(PanelEdge, NarrowScreenFollowsTheSizeOfItsWindow)
{
    ReopenOnScreen(1279);
    Panel().Arrange(758, 268);
    EXPECT_EQ(Rect("ListBonesList"), (ZtRect{0, 27, 164, 231})); // the anchor
    EXPECT_EQ(Rect("ListBonesList2"), (ZtRect{0, 27, 164, 100}));
    EXPECT_EQ(Rect("LabelVertexList2"), (ZtRect{4, 133, 160, 14}));
    EXPECT_EQ(Rect("ListVertexList2"), (ZtRect{0, 153, 164, 105}));
    EXPECT_EQ(Rect("SpreadWeightsBorder2"), (ZtRect{168, 27, 401, 231}));
    EXPECT_EQ(Rect("LabelWeights2"), (ZtRect{168, 6, 42, 14}));
    EXPECT_EQ(Panel().listVertexList.GetRect(), Rect("ListVertexList2"));
    EXPECT_EQ(Panel().labelVertexList.GetRect(), Rect("LabelVertexList2"));
    EXPECT_EQ(Panel().labelWeights.GetRect(), Rect("LabelWeights2"));
    EXPECT_EQ(Panel().spreadWeightsBorder.GetRect(), Rect("SpreadWeightsBorder2"));
    EXPECT_EQ(Panel().spreadWeights.GetRect(), (ZtRect{169, 28, 399, 229}));
    EXPECT_EQ(Rect("ColorModeList"), (ZtRect{578, 53, 171, 18})); // the options stay at the right
    for (const char* const anchor :
         {"ListBonesList", "LabelVertexList", "ListVertexList", "SpreadWeightsBorder", "LabelWeights"})
        EXPECT_EQ(Panel().FindRegion(anchor)->view, nullptr) << anchor;
    EXPECT_THAT(ZReport_Warnings(), IsEmpty());
}

TEST_F(PanelEdge, NarrowScreenInTheSmallestWindowHasNoNegativeSizes)
{
    ReopenOnScreen(1024);
    tool->Arrange(tool->GetToolMinimumWidth(), tool->GetToolMinimumHeight());
    std::vector<ZtView*> views;
    tool->CollectViews(views);
    for (const ZtView* const view : views) {
        EXPECT_GE(view->GetRect().width, 0) << view->GetObjectName();
        EXPECT_GE(view->GetRect().height, 0) << view->GetObjectName();
    }
    EXPECT_THAT(ZReport_Warnings(), IsEmpty());
}

/// Notes which views change.
struct Changes
{
    std::vector<std::string> names;
    void Note(ZObject* view, ZEvent&)
    {
        if (names.empty() || names.back() != view->GetObjectName())
            names.push_back(view->GetObjectName());
    }
};

TEST_F(PanelEdge, RefreshGoesFromBonesOverVerticesToTheSpread)
{
    DropModels(AddThreeBones());
    PickAll();
    SelectBones({0});
    Panel().boneColours[0] = 0.5F; // so that every control has something new to show
    Changes changes;
    ZtView* const watched[] = {&Panel().listBonesList, &Panel().listVertexList, &Panel().spreadWeights};
    for (ZtView* const view : watched)
        view->SetObserver(ZMakeHandler<&Changes::Note>(&changes));
    tool->RefreshPanelLists();
    for (ZtView* const view : watched)
        view->SetObserver(ZHandler());
    EXPECT_THAT(changes.names, ElementsAre("ListBonesList", "ListVertexList", "SpreadWeights"));
}

TEST_F(PanelEdge, WithoutACurrentRowTheSpreadStaysAsItIs)
{
    DropModels(AddThreeBones());
    PickVertex(0);
    SelectBones({0, 1});
    Panel().listVertexList.DeselectAll(); // by a program: the vertex itself is still active
    ASSERT_FALSE(Panel().selection.noActive);
    for (const bool valuesOnly : {true, false}) {
        tool->RefreshSpread(valuesOnly);
        EXPECT_EQ(Panel().spreadWeights.GetRowCount(), 2);
        EXPECT_EQ(Cell(0, kSpreadWeight), 50.0);
    }
    Panel().spreadWeights.UserType(0, kSpreadWeight, 90); // there is no vertex to change
    EXPECT_NEAR(SkinWeight(Items()[0]->GetModel(), 0, 0), 0.5, 1e-6);
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
}

TEST_F(PanelEdge, PerCentIsAProductOfSinglePrecision)
{
    DropModels(AddThreeBones());
    PickVertex(2);
    SelectBones({0, 2});
    EXPECT_EQ(Cell(0, kSpreadWeight), 10.0); // in double it would be 10.000000149
    EXPECT_EQ(Cell(1, kSpreadWeight), static_cast<double>(100.0F * 0.9F));
}

TEST_F(PanelEdge, PressAndReleaseCarryTheValueOfTheirMoment)
{
    ZModelPolymesh* const body = AddThreeBones();
    DropModels(body);
    PickVertex(0);
    SelectBones({0, 1});
    ZtSpread& spread = Panel().spreadWeights;
    spread.UserSlide(0, kSpreadSlider, kViewPress, 60);
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.6, 1e-6);
    EXPECT_NEAR(Cell(1, kSpreadWeight), 40.0, 1e-4);
    spread.UserSlide(0, kSpreadSlider, kViewRelease, 80);
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.8, 1e-6);
    EXPECT_NEAR(Cell(1, kSpreadSlider), 20.0, 1e-4);
    EXPECT_EQ(UndoNames().front(), "Apply Weight Change");
    EXPECT_TRUE(Undo());
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.5, 1e-6);
}

TEST_F(PanelEdge, LockedInTheMiddleOfADragTheRowGoesBackAndTheStepEnds)
{
    ZModelPolymesh* const body = AddThreeBones();
    DropModels(body);
    PickVertex(0);
    SelectBones({0, 1});
    ZtSpread& spread = Panel().spreadWeights;
    spread.UserSlide(0, kSpreadSlider, kViewPress, 60);
    spread.UserType(0, kSpreadLock, 1);
    spread.UserSlide(0, kSpreadSlider, kViewValueChanged, 90);
    EXPECT_NEAR(Cell(0, kSpreadSlider), 60.0, 1e-4);
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.6, 1e-6);
    EXPECT_FALSE(Panel().IsDragging());
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    spread.UserSlide(0, kSpreadSlider, kViewRelease, 95);
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.6, 1e-6);
    EXPECT_TRUE(Undo());
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.5, 1e-6);
}

TEST_F(PanelEdge, ABoneSelectedInTheSceneInTheMiddleOfADragIsARowBelow)
{
    ZModelPolymesh* const body = AddThreeBones();
    DropModels(body);
    PickVertex(0);
    SelectBones({1});
    const size_t steps = UndoNames().size();
    ZtSpread& spread = Panel().spreadWeights;
    spread.UserSlide(0, kSpreadSlider, kViewPress, 60);
    tool->BoneList()[0]->SetSelected(true);
    EXPECT_THAT(Ints(tool->SpreadRows()), ElementsAre(1, 0));
    spread.UserSlide(0, kSpreadSlider, kViewValueChanged, 70);
    spread.UserSlide(0, kSpreadSlider, kViewRelease, 80);
    EXPECT_NEAR(SkinWeight(body, 1, 0), 0.8, 1e-6); // still the bone whose slider is held
    EXPECT_NEAR(Cell(1, kSpreadWeight), 20.0, 1e-4);
    EXPECT_EQ(UndoNames().size(), steps + 1);
}

TEST_F(PanelEdge, ASliderThatIsHeldMovesNoOtherBoneWhenTheRowsAreChosenAnew)
{
    const std::vector<ZModel*> bones{AddBone("A"), AddBone("B"), AddBone("C"), AddBone("D")};
    ZModelPolymesh* const body = AddSkinned("Body", 3, bones, [](int, int link) { return 0.4 - 0.1 * (link > 0); });
    body->GetSkin()->BeginLink(3);
    body->GetSkin()->ClearEntries(); // D pulls nothing
    body->GetSkin()->EndLink();
    DropModels(body);
    PickVertex(0);
    Panel().automaticBoneSelectionButton.UserClick();
    ASSERT_THAT(Ints(tool->SpreadRows()), ElementsAre(0, 1, 2));
    const size_t steps = UndoNames().size();
    ZtSpread& spread = Panel().spreadWeights;
    spread.UserSlide(0, kSpreadSlider, kViewPress, 0); // A gives everything to B and C
    bones[3]->SetSelected(true);                       // the automatic choice is made again
    ASSERT_THAT(Ints(tool->SpreadRows()), ElementsAre(1, 2));
    spread.UserSlide(0, kSpreadSlider, kViewValueChanged, 30); // A's slider for the hand, B's by its place
    EXPECT_NEAR(SkinWeight(body, 1, 0), 0.5, 1e-6);
    EXPECT_NEAR(Cell(0, kSpreadSlider), 50.0, 1e-4);
    spread.UserSlide(0, kSpreadSlider, kViewRelease, 20);
    EXPECT_NEAR(SkinWeight(body, 1, 0), 0.5, 1e-6);
    EXPECT_NEAR(Cell(0, kSpreadSlider), 50.0, 1e-4);
    EXPECT_FALSE(Panel().IsDragging());
    EXPECT_FALSE(ZUndoStack::TheOne()->IsTransactionOpen());
    EXPECT_EQ(UndoNames().size(), steps + 1);
    EXPECT_TRUE(Undo());
    EXPECT_NEAR(SkinWeight(body, 0, 0), 0.4, 1e-6);
    spread.UserSlide(0, kSpreadSlider, kViewPress, 50); // the next drag is one like any other
    spread.UserSlide(0, kSpreadSlider, kViewRelease, 60);
    EXPECT_NEAR(SkinWeight(body, 1, 0), 0.6, 1e-6);
}

TEST_F(PanelEdge, AutomaticSelectionTakesTheBonesOfAllModels)
{
    DropModels(AddCharacter("One", 3), AddCharacter("Two", 3));
    tool->ModelListBox().UserSetCheck(1, true);
    Panel().automaticBoneSelectionButton.UserClick();
    PickAll();
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(0, 1, 2, 3));
    SelectVertices({4}); // of the second model
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(2, 3));
    EXPECT_EQ(Panel().spreadWeights.GetRowLabel(0), "TwoHip");
}

TEST_F(PanelEdge, ColoursOfAnUncheckedModelWaitForItsCheck)
{
    DropModels(AddCharacter("One"), AddCharacter("Two"));
    SelectBones({0});
    EXPECT_TRUE(Panel().boneColorEdit.UserSetColour(0, 0, 1));
    EXPECT_TRUE(Items()[1]->vertexColours.IsEmpty());
    tool->ModelListBox().UserSetCheck(1, true);
    EXPECT_FALSE(Items()[1]->vertexColours.IsEmpty());
}

} // namespace
