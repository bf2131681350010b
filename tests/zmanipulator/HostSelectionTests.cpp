// SPDX-License-Identifier: MIT
// The host's own selection in the viewer, what lies under a pixel, and framing of models.
#include "TinyScene.h"

#include "object/ZAction.h"

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

/// The host's own selection, with a cube in the middle of the picture and another to the left.
class HostSelection : public ManipulatorTest
{
protected:
    void SetUp() override
    {
        viewer.SetSize(200, 150);
        middle = AddCube(scene, "middle");
        left = AddCube(scene, "left", ZgeTranslation({-4, 0, 0}));
        viewer.GetCamera().LookAt({0, 0, 20}, {0, 0, 0}, {0, 1, 0});
    }
    RecordingManipulator* AddShown()
    {
        auto* const manipulator = new RecordingManipulator(story);
        manipulator->ManipulatorSetHidden(false);
        return manipulator;
    }
    void Click(int x, int y, int modifiers = 0)
    {
        viewer.Press(x, y, kButtonLeft, modifiers);
        viewer.Release(x, y);
    }
    std::vector<std::string> Selected()
    {
        std::vector<std::string> names;
        for (const ZModel* model : scene.GetModels())
            if (model->IsSelected())
                names.push_back(model->GetObjectName());
        return names;
    }
    int LeftX() const { return 100 - 41; } // 4 of 20 away, half of 40 degrees above and below, 150 pixels high

    ZScene scene;
    ZViewer viewer{&scene};
    ZModelPolymesh* middle = nullptr;
    ZModelPolymesh* left = nullptr;
};

TEST_F(HostSelection, AClickReplacesAndWithShiftAdds)
{
    Click(100, 75);
    EXPECT_THAT(Selected(), ElementsAre("middle"));
    Click(LeftX(), 75);
    EXPECT_THAT(Selected(), ElementsAre("left"));
    Click(100, 75, kModifierShift);
    EXPECT_THAT(Selected(), ElementsAre("middle", "left"));
    Click(LeftX(), 10, kModifierShift); // on nothing
    EXPECT_THAT(Selected(), ElementsAre("middle", "left"));
    Click(LeftX(), 10);
    EXPECT_THAT(Selected(), IsEmpty());
}

TEST_F(HostSelection, OnlyWhileNoManipulatorIsActive)
{
    RecordingManipulator* const manipulator = AddShown();
    manipulator->consumes = false;
    Click(100, 75);
    EXPECT_THAT(Selected(), IsEmpty());
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(nullptr);
    Click(100, 75);
    EXPECT_THAT(Selected(), ElementsAre("middle"));
}

TEST_F(HostSelection, AnotherInUseMayTakeTheClick)
{
    AddShown();
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(nullptr);
    Click(100, 75);
    EXPECT_THAT(Selected(), IsEmpty());
}

TEST_F(HostSelection, ADragIsNoClick)
{
    viewer.Press(100, 75, kButtonLeft, 0);
    viewer.Move(103, 75);
    viewer.Release(103, 75);
    EXPECT_THAT(Selected(), IsEmpty());
    viewer.Press(100, 75, kButtonLeft, 0);
    viewer.Release(101, 74);
    EXPECT_THAT(Selected(), ElementsAre("middle"));
}

TEST_F(HostSelection, ForgottenInputMakesNoClick)
{
    viewer.Press(100, 75, kButtonLeft, 0);
    ASSERT_NE(ZManipulator::GetPreviousInput(), nullptr);
    EXPECT_EQ(ZManipulator::GetPreviousInput()->x, 100);
    ZManipulator::ClearPreviousInput();
    viewer.Release(100, 75);
    EXPECT_THAT(Selected(), IsEmpty());
}

TEST_F(HostSelection, AMiddleClickPicksAlsoWhileAManipulatorIsActive)
{
    RecordingManipulator* const manipulator = AddShown();
    manipulator->consumes = false;
    viewer.Press(100, 75, kButtonMiddle, 0);
    viewer.Release(100, 75);
    EXPECT_THAT(Selected(), ElementsAre("middle"));
    viewer.Press(LeftX(), 75, kButtonMiddle, kModifierShift);
    viewer.Release(LeftX(), 75);
    EXPECT_THAT(Selected(), ElementsAre("middle", "left"));
    manipulator->consumes = true; // swallowed
    viewer.Press(100, 10, kButtonMiddle, 0);
    viewer.Release(100, 10);
    EXPECT_THAT(Selected(), ElementsAre("middle", "left"));
}

TEST_F(HostSelection, ABoneIsTakenBeforeTheMeshAboutIt)
{
    AddBone(scene, "root", {0, -0.5, 0});
    ZModel* const tip = AddBone(scene, "tip", {0, 1, 0}, scene.GetModels().back());
    Click(100, 75);
    EXPECT_THAT(Selected(), ElementsAre("root"));
    viewer.SetShowBones(false);
    Click(100, 75);
    EXPECT_THAT(Selected(), ElementsAre("middle"));
    viewer.SetShowBones(true);
    scene.GetModels()[2]->SetHidden(true);
    tip->SetHidden(true);
    Click(100, 75);
    EXPECT_THAT(Selected(), ElementsAre("middle"));
}

TEST_F(HostSelection, ABoneIsTakenWithinEightPixels)
{
    scene.DeleteModel(middle);
    ZModel* const root = AddBone(scene, "root", {0, -2, 0});
    AddBone(scene, "tip", {0, 4, 0}, root);
    EXPECT_EQ(viewer.ModelAt(100, 75), root);
    EXPECT_EQ(viewer.ModelAt(108, 75), root);
    EXPECT_EQ(viewer.ModelAt(109, 75), nullptr);
}

TEST_F(HostSelection, TheMeshInFrontIsTaken)
{
    ZModelPolymesh* const front = AddCube(scene, "front", ZgeTranslation({0, 0, 5}), 0.5F);
    EXPECT_EQ(viewer.ModelAt(100, 75), front);
    front->SetHidden(true);
    EXPECT_EQ(viewer.ModelAt(100, 75), middle);
    EXPECT_EQ(viewer.ModelAt(-1, 75), nullptr);
    EXPECT_EQ(viewer.ModelAt(100, 151), nullptr);
}

TEST_F(HostSelection, TheOriginOfTheViewerCounts)
{
    viewer.SetOrigin(1000, 500);
    EXPECT_EQ(viewer.ModelAt(1100, 575), middle);
    EXPECT_EQ(viewer.ModelAt(100, 75), nullptr);
}

TEST_F(HostSelection, AMirroredModelIsHitToo)
{
    left->SetHidden(true);
    middle->SetFileTransform(ZgeScaling({-1, 1, 1}) * ZgeTranslation({4, 0, 0}));
    EXPECT_EQ(viewer.ModelAt(100 + 41, 75), middle);
    middle->SetFileTransform(ZgeScaling({0, 0, 0}));
    EXPECT_EQ(viewer.ModelAt(100, 75), nullptr);
}

TEST_F(HostSelection, WhatIsBehindTheEyeIsNotHit)
{
    viewer.GetCamera().LookAt({0, 0, 20}, {0, 0, 30}, {0, 1, 0});
    AddBone(scene, "root", {0, -2, 0});
    AddBone(scene, "tip", {0, 4, 0}, scene.GetModels().back());
    EXPECT_EQ(viewer.ModelAt(100, 75), nullptr);
}

TEST_F(HostSelection, FrameLooksAtTheModels)
{
    viewer.Frame({left});
    EXPECT_NEAR(viewer.GetCamera().GetTarget().x, -4, 1e-9);
    viewer.Frame({});
    EXPECT_NEAR(viewer.GetCamera().GetTarget().x, -2, 1e-9);
    left->SetHidden(true);
    viewer.Frame({});
    EXPECT_NEAR(viewer.GetCamera().GetTarget().x, 0, 1e-9);
}

TEST_F(HostSelection, FramingABoneShowsItsWay)
{
    ZModel* const root = AddBone(scene, "root", {0, 10, 0});
    AddBone(scene, "tip", {0, 6, 0}, root);
    viewer.Frame({root});
    EXPECT_NEAR(viewer.GetCamera().GetTarget().y, 13, 1e-9);
}
} // namespace
