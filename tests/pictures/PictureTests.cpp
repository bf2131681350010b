// SPDX-License-Identifier: MIT
// What the user sees, compared with stored pictures: the tool's overlay in its colour modes, what is picked, bone
// discs, surfaces, mirrored models, and the host's own bones.
#include "PictureStage.h"

#include "documents/ZDocuments.h"

#include <gtest/gtest-spi.h>

#include <cstdlib>
#include <filesystem>

namespace {

class StoredPictures : public PictureStage
{
protected:
    ZtComboBox& ColourModes() { return desk.Control<ZtComboBox>("ColorModeList"); }
    void ShowColours(int mode)
    {
        ColourModes().UserChoose(mode);
        desk.session.AfterEvent();
    }
    void OpenTube(int deformMode = kDeformNormalise)
    {
        AddBones();
        tube = AddTube("Tube", deformMode);
        OpenTool({tube});
        Look();
    }
    /// Halves all weights beside the tool's back, as another program's file may have them; the tool, which normalises
    /// what enters once, reads them again.
    void HalveWeights()
    {
        desk.Models().UserSetCheck(0, false);
        ZSkin& skin = *tube->GetSkin();
        for (int link = 0; link < skin.LinkCount(); ++link) {
            skin.BeginLink(link);
            for (int vertex = 0; vertex < tube->VertexCount(); ++vertex)
                if (const int entry = skin.FindEntry(vertex); entry >= 0)
                    skin.SetEntryWeight(0.5 * skin.EntryWeight(entry), entry);
            skin.EndLink();
        }
        desk.Models().UserSetCheck(0, true);
        desk.session.AfterEvent();
    }

    ZModelPolymesh* tube = nullptr;
};

TEST_F(StoredPictures, SmoothColours)
{
    OpenTube();
    Picture_ExpectStored(Grab(), "smooth-colours");
}

TEST_F(StoredPictures, MostInfluentialBone)
{
    OpenTube();
    ShowColours(1);
    Picture_ExpectStored(Grab(), "most-influential");
}

TEST_F(StoredPictures, LeastInfluentialBone)
{
    OpenTube();
    ShowColours(2);
    Picture_ExpectStored(Grab(), "least-influential");
}

/// Weights that sum to a half are dim where they count as they stand.
TEST_F(StoredPictures, SmoothColoursOfATotalOf100)
{
    OpenTube(kDeformTotal100);
    HalveWeights();
    Picture_ExpectStored(Grab(), "smooth-colours-total-100");
}

/// ... and full where they are divided by their sum.
TEST_F(StoredPictures, SmoothColoursOfHalvedWeights)
{
    OpenTube();
    HalveWeights();
    Picture_ExpectStored(Grab(), "smooth-colours");
}

TEST_F(StoredPictures, MostInfluentialBoneOfATotalOf100)
{
    OpenTube(kDeformTotal100);
    HalveWeights();
    ShowColours(1);
    Picture_ExpectStored(Grab(), "most-influential-total-100");
}

TEST_F(StoredPictures, LeastInfluentialBoneOfATotalOf100)
{
    OpenTube(kDeformTotal100);
    HalveWeights();
    ShowColours(2);
    Picture_ExpectStored(Grab(), "least-influential-total-100");
}

TEST_F(StoredPictures, TheRectangleDuringADrag)
{
    OpenTube();
    Drag(90, 60, 210, 150, 0, false);
    Picture_ExpectStored(Grab(), "rectangle");
    desk.Viewer().CancelGesture();
}

TEST_F(StoredPictures, ActiveVertices)
{
    OpenTube();
    Drag(90, 60, 210, 150);
    ASSERT_GT(desk.Vertices().GetRowCount(), 10);
    Picture_ExpectStored(Grab(), "active-vertices");
}

/// Rows of the list that are not chosen stay selected and are drawn smaller, in their own colours.
TEST_F(StoredPictures, SelectedAndActiveVertices)
{
    OpenTube();
    Drag(90, 60, 210, 150);
    std::vector<int> rows;
    for (int row = 0; row < desk.Vertices().GetRowCount(); row += 4)
        rows.push_back(row);
    desk.Vertices().UserSelect(rows);
    desk.session.AfterEvent();
    Picture_ExpectStored(Grab(), "selected-vertices");
}

TEST_F(StoredPictures, BoneDiscs)
{
    AddBones();
    OpenTool({AddTube("Thin", kDeformNormalise, 0.1)});
    Look();
    desk.Bones().UserSelect({0, 2});
    desk.session.AfterEvent();
    desk.Control<ZtSlider>("SphereSizeSlider").UserSetValue(10);
    Picture_ExpectStored(Grab(), "bone-discs");
}

TEST_F(StoredPictures, NurbsSurface)
{
    AddBones();
    OpenTool({AddPatch("Patch")});
    Look();
    Drag(60, 40, 160, 120);
    ASSERT_NE(OpenedTool::Rows(desk.Vertices()).front(), "Empty");
    Picture_ExpectStored(Grab(), "nurbs-surface");
}

TEST_F(StoredPictures, MirroredModel)
{
    AddBones();
    tube = AddTube("Mirrored");
    Mirror(tube);
    OpenTool({tube});
    EXPECT_TRUE(desk.Viewer().GetCamera().LookAt({2.2, 2.2, 5.5}, {0.4, 1.3, 0}, {0, 1, 0}));
    desk.Control<ZtCheckBox>("CullFaceButton").UserClick();
    Drag(5, 5, 315, 235); // only what faces the viewer
    ASSERT_NE(OpenedTool::Rows(desk.Vertices()).front(), "Empty");
    Picture_ExpectStored(Grab(), "mirrored-model");
}

TEST_F(StoredPictures, HostBones)
{
    AddBones();
    AddTube("Tube");
    Look();
    desk.Viewer().SetShowBones(true);
    desk.Viewer().SetShowGrid(true);
    bones[1]->SetSelected(true);
    Picture_ExpectStored(Grab(), "host-bones");
}

TEST_F(StoredPictures, WireOverShading)
{
    AddBones();
    AddTube("Tube");
    Look();
    desk.Viewer().SetShading(ZShading::ShadedWire);
    Picture_ExpectStored(Grab(), "wire-over-shading");
}

TEST_F(StoredPictures, WeightChangeRecolours)
{
    OpenTube();
    Drag(5, 5, 315, 235);
    desk.Bones().UserSelect({0});
    desk.Control<ZtComboBox>("ListWeightingMode").UserChoose(1);
    EXPECT_TRUE(desk.Spread().UserType(0, 3, 100));
    desk.session.AfterEvent();
    Picture_ExpectStored(Grab(), "weight-change");
}

/// From the file to the picture, as a user comes to it.
TEST_F(StoredPictures, OpenedCharacter)
{
    ZDocuments documents(desk.session);
    const std::vector<ZModel*> models =
        documents.Open(std::string(SKINDESK_SOURCE_DIR) + "/tests/gestures/recordings/strip.gltf");
    OpenTool(models);
    desk.Control<ZtCheckBox>("AutomaticBoneSelectionButton").UserClick();
    desk.Viewer().Frame({});
    Drag(100, 90, 220, 150);
    ASSERT_NE(OpenedTool::Rows(desk.Vertices()).front(), "Empty");
    Picture_ExpectStored(Grab(), "opened-character");
    desk.session.CloseTool(desk.tool);
    documents.Clear();
}

/// A stored picture is worth nothing when another state would pass for it.
TEST(StoredPicture, NoTwoPassForOneAnother)
{
    std::vector<std::pair<std::string, ZImage>> pictures;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(Picture_StoredFile("any")).parent_path())) {
        ZImage image;
        std::string why;
        ASSERT_TRUE(Picture_Read(entry.path().string(), image, &why)) << why;
        pictures.emplace_back(entry.path().stem().string(), std::move(image));
    }
    ASSERT_GE(pictures.size(), 10U);
    for (size_t a = 0; a < pictures.size(); ++a)
        for (size_t b = a + 1; b < pictures.size(); ++b)
            EXPECT_FALSE(Picture_IsTheSame(Picture_Compare(pictures[a].second, pictures[b].second)))
                << pictures[a].first << " and " << pictures[b].first;
}

TEST(StoredPicture, AFewPixelsByALittleAreRounding)
{
    ZImage stored;
    std::string why;
    ASSERT_TRUE(Picture_Read(Picture_StoredFile("smooth-colours"), stored, &why)) << why;
    ZImage image = stored;
    for (size_t i = 0; i < image.rgb.size(); i += 100)
        image.rgb[i] = static_cast<std::uint8_t>(image.rgb[i] ^ 1U);
    Picture_ExpectStored(image, "smooth-colours");
}

TEST(StoredPicture, WhatDiffersIsAFailureAndIsShown)
{
    if (const char* const storing = std::getenv("SKINDESK_STORE_PICTURES"); storing != nullptr)
        return; // then nothing is compared
    ZImage other;
    std::string why;
    ASSERT_TRUE(Picture_Read(Picture_StoredFile("wire-over-shading"), other, &why)) << why;
    static ZImage shown; // the failure is looked for in a function without this scope
    shown = other;
    EXPECT_NONFATAL_FAILURE(Picture_ExpectStored(shown, "smooth-colours"), "is not the stored one");
    const std::string folder = SKINDESK_PICTURE_OUTPUT;
    for (const char* const name : {"/smooth-colours.png", "/smooth-colours-difference.png"}) {
        ZImage written;
        EXPECT_TRUE(Picture_Read(folder + name, written, &why)) << why;
        std::filesystem::remove(folder + name);
    }
}

TEST(StoredPicture, NoPictureIsAFailure)
{
    EXPECT_NONFATAL_FAILURE(Picture_ExpectStored(ZImage(), "smooth-colours"), "there is no picture");
}

} // namespace
