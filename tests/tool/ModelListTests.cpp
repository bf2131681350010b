// SPDX-License-Identifier: MIT
// The tool's window and its model list.
#include "ToolStage.h"

namespace {

using testing::ElementsAre;

class ModelList : public ToolStage
{
protected:
    void SetUp() override { OpenTool(); }
    ZtRect RectOf(ZtLayout& layout, const char* region) { return layout.FindRegion(region)->rect; }
};

TEST_F(ModelList, EmptyToolInvitesAndShowsADisabledCheckedBox)
{
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Drop models here"));
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true));
    EXPECT_TRUE(Panel().enableModelSelectionCheckBox.GetState());
    EXPECT_FALSE(Panel().enableModelSelectionCheckBox.IsEnabled());
}

TEST_F(ModelList, InvitesAgainAfterTheLastModelLeft)
{
    ZModel* const body = AddCharacter("Body");
    DropModels(body);
    EXPECT_TRUE(Panel().enableModelSelectionCheckBox.IsEnabled());
    EXPECT_TRUE(Panel().enableModelSelectionCheckBox.UserClick());
    EXPECT_FALSE(tool->IsModelSelectionEnabled());
    Scene().DeleteModel(body);
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Drop models here"));
    EXPECT_TRUE(Panel().enableModelSelectionCheckBox.GetState());
    EXPECT_FALSE(Panel().enableModelSelectionCheckBox.IsEnabled());
    DropModels(AddCharacter("Next"));
    EXPECT_FALSE(Panel().enableModelSelectionCheckBox.GetState()); // what the user set is shown again
}

TEST_F(ModelList, OnlyFlagsKeepsTheRowsAndChangesTheChecks)
{
    DropModels(AddCharacter("One"), AddCharacter("Two"));
    tool->ModelListBox().SetRowSelected(1, true);
    tool->SetModelSelected(Items()[1], true, nullptr);
    tool->RefreshModelList(false, true);
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("One", "Two"));
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true, true));
    EXPECT_THAT(tool->ModelListBox().GetSelectedRows(), ElementsAre(1)); // the same rows as before
    EXPECT_EQ(Panel().listBonesList.GetRowCount(), 4);
}

TEST_F(ModelList, RefreshWithNothingPendingOnlyRebuildsTheBoneList)
{
    ZModelPolymesh* const body = AddCharacter("Body");
    DropModels(body);
    tool->ModelListBox().SetRowSelected(0, true);
    tool->ModelListBox().SetRowCheck(0, false);
    body->GetSkin()->AddLink(AddBone("Late"));
    tool->RefreshModelList(false, false);
    EXPECT_THAT(tool->ModelListBox().GetSelectedRows(), ElementsAre(0));
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(false));
    EXPECT_EQ(Panel().listBonesList.GetRowCount(), 3);
    tool->RefreshModelList(true, false);
    EXPECT_THAT(Checks(tool->ModelListBox()), ElementsAre(true));
}

TEST_F(ModelList, WindowHasTheListAtTheLeftAndThePanelInTheRest)
{
    tool->Arrange(1016, 370);
    EXPECT_EQ(RectOf(*tool, "ListLayout"), (ZtRect{0, 0, 200, 370}));
    EXPECT_EQ(RectOf(*tool, "NormalLayoutPanel"), (ZtRect{203, 1, 812, 368}));
    EXPECT_EQ(tool->ModelListBox().GetRect(), (ZtRect{3, 28, 195, 331}));
    EXPECT_EQ(tool->FindRegion("NormalLayoutPanel")->view, &Panel());
    tool->Arrange(700, 300);
    EXPECT_EQ(RectOf(*tool, "NormalLayoutPanel"), (ZtRect{203, 1, 496, 298}));
    EXPECT_EQ(tool->ModelListBox().GetRect(), (ZtRect{3, 28, 195, 261}));
}

TEST_F(ModelList, LabelAndPanelsStandAsTheyWereDrawn)
{
    tool->Arrange(1016, 370);
    auto* const panel = static_cast<ZtPanel*>(tool->FindRegion("ListLayout")->view);
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(RectOf(*panel, "ModelListLabel"), (ZtRect{5, 7, 92, 14}));
    EXPECT_EQ(RectOf(*panel, "ModelListUI"), (ZtRect{3, 28, 195, 331}));
    EXPECT_EQ(panel->FindRegion("ModelListLabel")->view->GetCaption(), "Model List");
    EXPECT_EQ(panel->GetBorderStyle(), 0);
    EXPECT_EQ(panel->GetBorderWidth(), 0);
    EXPECT_TRUE(panel->IsFlat());
}

TEST_F(ModelList, TheSmallestWindowHasNoNegativeSizes)
{
    tool->Arrange(tool->GetToolMinimumWidth(), tool->GetToolMinimumHeight());
    std::vector<ZtView*> views;
    tool->CollectViews(views);
    EXPECT_GE(views.size(), 20U);
    for (const ZtView* const view : views) {
        EXPECT_GE(view->GetRect().width, 0) << view->GetObjectName();
        EXPECT_GE(view->GetRect().height, 0) << view->GetObjectName();
    }
    EXPECT_THAT(ZReport_Warnings(), testing::IsEmpty());
}

TEST_F(ModelList, ListHasItsPropertiesAndCheckMarks)
{
    EXPECT_EQ(tool->ModelListBox().GetListStyle(), 0);
    EXPECT_TRUE(tool->ModelListBox().HasMultipleSelection());
    EXPECT_FALSE(tool->ModelListBox().HasExtendedSelection());
    EXPECT_TRUE(tool->ModelListBox().HasCheckMarks());
}

TEST_F(ModelList, RowsShowLabelNames)
{
    ZModel* const body = AddCharacter("body_01");
    body->SetObjectLabelName("Body");
    DropModels(body);
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Body"));
    EXPECT_EQ(tool->ModelListBox().GetRowText(1), "");
}

// The bone list follows the models.

TEST_F(ModelList, BonesOfCheckedModelsStandWithoutRepeatsInOrderOfModelsAndLinks)
{
    ZModel* const a = AddBone("A");
    ZModel* const b = AddBone("B");
    ZModel* const c = AddBone("C");
    const auto thirds = [](int, int) { return 0.5; };
    DropModels(AddSkinned("One", 2, {b, a}, thirds), AddSkinned("Two", 2, {c, b}, thirds));
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("B", "A"));
    tool->ModelListBox().UserSetCheck(1, true);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("B", "A", "C"));
    EXPECT_EQ(tool->BonePosition(c), 2);
    EXPECT_EQ(tool->BonePosition(Items()[0]->GetModel()), -1);
    tool->ModelListBox().UserSetCheck(0, false);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("C", "B"));
    EXPECT_EQ(tool->BonePosition(a), -1);
}

TEST_F(ModelList, LocksAndSelectedBonesFollowTheirBonesAndColoursStartAfresh)
{
    ZModel* const a = AddBone("A");
    ZModel* const b = AddBone("B");
    ZModel* const c = AddBone("C");
    const auto half = [](int, int) { return 0.5; };
    DropModels(AddSkinned("One", 2, {a, b}, half), AddSkinned("Two", 2, {c, b}, half));
    SelectBones({0, 1});
    Panel().spreadWeights.UserType(1, kSpreadLock, 1); // B
    Panel().boneColorEdit.UserSetColour(0.25, 0.5, 0.75);
    tool->ModelListBox().UserSetCheck(1, true);
    tool->ModelListBox().UserSetCheck(0, false); // C, B: A has gone, C is new
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("C", "B"));
    EXPECT_THAT(Ints(Panel().lockFlags), ElementsAre(0, 1));
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(1));
    EXPECT_THAT(Panel().listBonesList.GetSelectedRows(), ElementsAre(1));
    EXPECT_THAT(Panel().boneColours.Span(), ElementsAre(1.0F, 0.0F, 0.0F, 0.0F, 0.8F, 0.0F));
}

TEST_F(ModelList, CheckedSecondModelKeepsTheVertexSelectionOfTheFirst)
{
    DropModels(AddCharacter("One", 3), AddCharacter("Two", 3));
    PickAll();
    SelectVertices({1});
    tool->ModelListBox().UserSetCheck(1, true);
    EXPECT_EQ(Panel().selection.vertexRows.GetCount(), 3);
    EXPECT_THAT(Panel().listVertexList.GetSelectedRows(), ElementsAre(1));
    EXPECT_THAT(Ints(Panel().selection.targetRows), ElementsAre(1));
}

} // namespace
