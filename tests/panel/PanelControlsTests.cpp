// SPDX-License-Identifier: MIT
// The panel's controls: names, captions, first values, geometry, and what each handler does.
#include "ToolStage.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PanelControls : public ToolStage
{
protected:
    void SetUp() override { OpenTool(); }
    const ZtRect& Rect(const char* region) { return Panel().FindRegion(region)->rect; }
    void ArrangePanel(int width, int height) { Panel().Arrange(width, height); }
};

TEST_F(PanelControls, EveryControlIsNamedAfterItsRegion)
{
    std::vector<ZtView*> views;
    Panel().CollectViews(views);
    std::vector<std::string> names;
    for (const ZtView* const view : views)
        names.push_back(view->GetObjectName());
    EXPECT_THAT(names, ElementsAre("LabelBonesList", "LabelVertexList", "LabelWeights", "SphereSizeLabel",
                                   "ListBonesList", "ListVertexList", "ListWeightingMode", "ColorModeList",
                                   "AutomaticBoneSelectionButton", "CullFaceButton", "BoneColorEdit",
                                   "ToRestPositionButton", "SelectUButton", "SelectVButton", "SphereSizeSlider",
                                   "EnableModelSelectionCheckBox", "SpreadWeightsBorder", "SpreadWeights"));
}

TEST_F(PanelControls, CaptionsItemsAndFirstValues)
{
    EXPECT_EQ(Panel().labelBonesList.GetCaption(), "Bones List  ");
    EXPECT_EQ(Panel().labelVertexList.GetCaption(), "Vertex List ");
    EXPECT_EQ(Panel().labelWeights.GetCaption(), " Weights");
    EXPECT_EQ(Panel().sphereSizeLabel.GetCaption(), "Sphere Size :");
    EXPECT_EQ(Panel().listWeightingMode.GetItems().GetText('~'),
              "Affect first selected vertex~Affect all selected vertices");
    EXPECT_EQ(Panel().listWeightingMode.GetIndex(), 0);
    EXPECT_EQ(Panel().colorModeList.GetItems().GetText('~'),
              "Smooth Colors~Most Influential Bone~Least Influential Bone");
    EXPECT_EQ(Panel().colorModeList.GetIndex(), 0);
    EXPECT_EQ(Panel().automaticBoneSelectionButton.GetCaption(), "Automatic Bone Selection");
    EXPECT_EQ(Panel().cullFaceButton.GetCaption(), "Foreground Vertices Selection");
    EXPECT_EQ(Panel().toRestPositionButton.GetCaption(), "To Rest Position");
    EXPECT_EQ(Panel().selectUButton.GetCaption(), "Select U");
    EXPECT_EQ(Panel().selectVButton.GetCaption(), "Select V");
    EXPECT_EQ(Panel().enableModelSelectionCheckBox.GetCaption(), "Model Selection");
    for (const ZtCheckBox* const button :
         {&Panel().automaticBoneSelectionButton, &Panel().cullFaceButton, &Panel().toRestPositionButton,
          &Panel().selectUButton, &Panel().selectVButton}) {
        EXPECT_FALSE(button->GetState());
        EXPECT_TRUE(button->HasPushButtonLook());
    }
    EXPECT_TRUE(Panel().enableModelSelectionCheckBox.GetState());
    EXPECT_EQ(Panel().boneColorEdit.GetComponentCount(), 3);
    for (const ZtListBox* const list : {&Panel().listBonesList, &Panel().listVertexList}) {
        EXPECT_EQ(list->GetListStyle(), 0);
        EXPECT_TRUE(list->HasMultipleSelection());
        EXPECT_FALSE(list->HasExtendedSelection());
    }
    EXPECT_EQ(Panel().CurrentBone(), -1);
    EXPECT_TRUE(tool->IsModelSelectionEnabled());
    EXPECT_FALSE(tool->IsForegroundOnly());
}

TEST_F(PanelControls, SphereSliderGoesFromZeroToTenAndStartsAtOne)
{
    EXPECT_EQ(Panel().sphereSizeSlider.GetMinimum(), 0.0);
    EXPECT_EQ(Panel().sphereSizeSlider.GetMaximum(), 10.0);
    EXPECT_EQ(Panel().sphereSizeSlider.GetValue(), 1.0);
    EXPECT_TRUE(Panel().sphereSizeSlider.IsHorizontal());
    EXPECT_EQ(tool->Manipulator()->GetDiscSize(), 1.0F);
}

TEST_F(PanelControls, SphereSliderSetsTheDiscSizeAtEveryMoment)
{
    Panel().sphereSizeSlider.UserSetValue(4);
    EXPECT_EQ(tool->Manipulator()->GetDiscSize(), 4.0F);
    Panel().sphereSizeSlider.UserPress(5);
    EXPECT_EQ(tool->Manipulator()->GetDiscSize(), 5.0F);
    Panel().sphereSizeSlider.UserDrag(6);
    EXPECT_EQ(tool->Manipulator()->GetDiscSize(), 6.0F);
    Panel().sphereSizeSlider.UserRelease(70); // clamped
    EXPECT_EQ(tool->Manipulator()->GetDiscSize(), 10.0F);
}

TEST_F(PanelControls, WideScreenGeometry)
{
    ArrangePanel(958, 368);
    EXPECT_EQ(Rect("LabelBonesList"), (ZtRect{4, 6, 57, 14}));
    EXPECT_EQ(Rect("LabelVertexList"), (ZtRect{168, 6, 55, 14}));
    EXPECT_EQ(Rect("LabelWeights"), (ZtRect{337, 6, 42, 14}));
    EXPECT_EQ(Rect("SphereSizeLabel"), (ZtRect{778, 232, 65, 14}));
    EXPECT_EQ(Rect("ListBonesList"), (ZtRect{0, 27, 164, 331}));
    EXPECT_EQ(Rect("ListVertexList"), (ZtRect{168, 27, 164, 331}));
    EXPECT_EQ(Rect("ListWeightingMode"), (ZtRect{778, 27, 171, 18}));
    EXPECT_EQ(Rect("ColorModeList"), (ZtRect{778, 53, 171, 18}));
    EXPECT_EQ(Rect("AutomaticBoneSelectionButton"), (ZtRect{776, 79, 171, 20}));
    EXPECT_EQ(Rect("CullFaceButton"), (ZtRect{776, 104, 175, 20}));
    EXPECT_EQ(Rect("BoneColorEdit"), (ZtRect{778, 129, 171, 20}));
    EXPECT_EQ(Rect("ToRestPositionButton"), (ZtRect{776, 154, 171, 20}));
    EXPECT_EQ(Rect("SelectUButton"), (ZtRect{776, 179, 171, 20}));
    EXPECT_EQ(Rect("SelectVButton"), (ZtRect{776, 204, 171, 20}));
    EXPECT_EQ(Rect("SphereSizeSlider"), (ZtRect{853, 229, 96, 20}));
    EXPECT_EQ(Rect("EnableModelSelectionCheckBox"), (ZtRect{778, 254, 171, 20}));
    EXPECT_EQ(Rect("SpreadWeightsBorder"), (ZtRect{336, 27, 433, 331}));
    EXPECT_EQ(Panel().spreadWeights.GetRect(), (ZtRect{337, 28, 431, 329}));
}

TEST_F(PanelControls, ResizingMovesWhatHangsAtTheRightAndTheBottom)
{
    ArrangePanel(1058, 468);
    EXPECT_EQ(Rect("ListBonesList"), (ZtRect{0, 27, 164, 431}));
    EXPECT_EQ(Rect("ColorModeList"), (ZtRect{878, 53, 171, 18}));
    EXPECT_EQ(Rect("SpreadWeightsBorder"), (ZtRect{336, 27, 533, 431}));
}

TEST_F(PanelControls, ScreenOf1280HasNoNarrowRegions)
{
    session->CloseTool(tool);
    tool = nullptr;
    ZToolKit_SetScreenWidth(1280);
    OpenTool();
    for (const char* const region :
         {"ListBonesList2", "LabelVertexList2", "ListVertexList2", "SpreadWeightsBorder2", "LabelWeights2"})
        EXPECT_EQ(Panel().FindRegion(region), nullptr) << region;
    EXPECT_EQ(Panel().spreadWeights.GetRowLabelWidth(), 162);
}

TEST_F(PanelControls, NarrowScreenPutsBonesAboveVertices)
{
    session->CloseTool(tool);
    tool = nullptr;
    ZToolKit_SetScreenWidth(1279);
    OpenTool();
    ArrangePanel(958, 368);
    // Half of 331 less 15, as the layout rounds it.
    const ZtRect bones = Rect("ListBonesList2");
    EXPECT_EQ(bones.x, 0);
    EXPECT_EQ(bones.y, 27);
    EXPECT_EQ(bones.width, 164);
    EXPECT_NEAR(bones.height, 150.5, 0.51);
    const int below = bones.y + bones.height + 6;
    EXPECT_EQ(Rect("LabelVertexList2"), (ZtRect{4, below, 160, 14}));
    EXPECT_EQ(Rect("ListVertexList2"), (ZtRect{0, below + 20, 164, 358 - below - 20}));
    EXPECT_EQ(Rect("SpreadWeightsBorder2"), (ZtRect{168, 27, 601, 331}));
    EXPECT_EQ(Rect("LabelWeights2"), (ZtRect{168, 6, 42, 14}));
    EXPECT_EQ(Panel().listBonesList.GetRect(), bones);
    EXPECT_EQ(Panel().FindRegion("ListBonesList")->view, nullptr); // stays as an anchor
    EXPECT_EQ(Rect("ListBonesList"), (ZtRect{0, 27, 164, 331}));
    EXPECT_THAT(ZReport_Warnings(), IsEmpty());
}

TEST_F(PanelControls, TogglesKeepTheirState)
{
    Panel().cullFaceButton.UserClick();
    EXPECT_TRUE(tool->IsForegroundOnly());
    Panel().selectUButton.UserClick();
    EXPECT_TRUE(tool->Selection().selectU);
    Panel().selectVButton.UserClick();
    Panel().selectVButton.UserClick();
    EXPECT_FALSE(tool->Selection().selectV);
    Panel().listWeightingMode.UserChoose(1);
    EXPECT_EQ(tool->WeightingMode(), kAffectAllSelected);
    DropModels(AddCharacter("Body"));
    Panel().enableModelSelectionCheckBox.UserClick();
    EXPECT_FALSE(tool->IsModelSelectionEnabled());
}

// Colours.

TEST_F(PanelControls, SeventhBoneIsRedAgainAndTheSecondADarkerGreen)
{
    std::vector<ZModel*> bones;
    for (int i = 0; i < 8; ++i)
        bones.push_back(AddBone("B"));
    DropModels(AddSkinned("Body", 2, bones, [](int, int) { return 0.125; }));
    const float* const colours = Panel().boneColours.GetData();
    EXPECT_EQ(std::vector<float>(colours + 18, colours + 21), (std::vector<float>{1.0F, 0.0F, 0.0F}));
    EXPECT_EQ(std::vector<float>(colours + 3, colours + 6), (std::vector<float>{0.0F, 0.8F, 0.0F}));
    EXPECT_EQ(std::vector<float>(colours + 15, colours + 18), (std::vector<float>{1.0F, 1.0F, 0.0F}));
}

TEST_F(PanelControls, EditingTheColourWithoutACurrentBoneChangesNothing)
{
    DropModels(AddCharacter("Body"));
    const std::vector<float> colours(Panel().boneColours.begin(), Panel().boneColours.end());
    const std::vector<float> shown(Items()[0]->vertexColours.begin(), Items()[0]->vertexColours.end());
    ASSERT_EQ(Panel().CurrentBone(), -1);
    EXPECT_TRUE(Panel().boneColorEdit.UserSetColour(0.1, 0.2, 0.3));
    EXPECT_EQ(std::vector<float>(Panel().boneColours.begin(), Panel().boneColours.end()), colours);
    EXPECT_EQ(std::vector<float>(Items()[0]->vertexColours.begin(), Items()[0]->vertexColours.end()), shown);
}

TEST_F(PanelControls, EditedColourReachesTableVerticesAndSpread)
{
    DropModels(AddCharacter("Body"));
    SelectBones({0});
    EXPECT_EQ(Panel().CurrentBone(), 0);
    EXPECT_TRUE(Panel().boneColorEdit.UserSetColour(0.0, 1.0, 0.0)); // was red
    EXPECT_THAT(std::vector<float>(&Panel().boneColours[0], &Panel().boneColours[0] + 3), ElementsAre(0, 1, 0));
    const float* const colour = &Items()[0]->vertexColours[0];
    EXPECT_NEAR(colour[0], 0.0, 1e-6);
    EXPECT_NEAR(colour[1], 0.5 + 0.4, 1e-6); // half of the new green and half of the knee's
    EXPECT_FLOAT_EQ(Panel().spreadWeights.GetCell(0, kSpreadColour)->colour[1], 0.9F);
}

TEST_F(PanelControls, ColourModeRecoloursEveryModel)
{
    DropModels(AddCharacter("One"), AddCharacter("Two"));
    tool->ModelListBox().UserSetCheck(1, true);
    Panel().colorModeList.UserChoose(1); // most influential: the first of two equal bones
    for (int model = 0; model < 2; ++model) {
        const float* const bone = &Panel().boneColours[6 * model];
        const float* const colour = &Items()[model]->vertexColours[0];
        EXPECT_THAT(std::vector<float>(colour, colour + 3), ElementsAre(bone[0], bone[1], bone[2])) << model;
    }
    Panel().colorModeList.UserChoose(0);
    EXPECT_NEAR(Items()[0]->vertexColours[0], 0.5, 1e-6);
}

TEST_F(PanelControls, CurrentBoneIsTheTouchedRowWhileItIsSelected)
{
    DropModels(AddCharacter("One"), AddCharacter("Two"));
    tool->ModelListBox().UserSetCheck(1, true);
    SelectBones({0, 3, 2});
    EXPECT_EQ(Panel().CurrentBone(), 2);
    EXPECT_EQ(Panel().boneColorEdit.GetColour()[2], 1.0); // blue
    SelectBones({3, 1});
    EXPECT_EQ(Panel().CurrentBone(), 1);
    EXPECT_NEAR(Panel().boneColorEdit.GetColour()[1], 0.8, 1e-6);
    PickAll(); // the lists are refilled; the touched bone is still selected
    EXPECT_EQ(Panel().CurrentBone(), 1);
    SelectBones({});
    EXPECT_EQ(Panel().CurrentBone(), -1);
    EXPECT_NEAR(Panel().boneColorEdit.GetColour()[1], 0.8, 1e-6); // keeps its last colour
}

TEST_F(PanelControls, BuildingAgainStartsFromTheFirstValues)
{
    Panel().cullFaceButton.UserClick();
    Panel().colorModeList.UserChoose(2);
    Panel().sphereSizeSlider.UserSetValue(3);
    Panel().Build();
    EXPECT_FALSE(Panel().foregroundOnly);
    EXPECT_FALSE(Panel().cullFaceButton.GetState());
    EXPECT_EQ(Panel().colourMode, 0);
    EXPECT_EQ(Panel().colorModeList.GetIndex(), 0);
    EXPECT_EQ(Panel().sphereSizeSlider.GetValue(), 1.0);
    Panel().cullFaceButton.UserClick(); // handlers are not doubled
    EXPECT_TRUE(Panel().foregroundOnly);
}

} // namespace
