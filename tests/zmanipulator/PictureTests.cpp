// SPDX-License-Identifier: MIT
// What the viewer draws, looked at through off-screen pictures.
#include "PictureTest.h"

#include <GL/gl.h>

#include <cmath>

namespace {
using testing::ElementsAre;

TEST_F(Picture, HasTheViewersSize)
{
    const ZImage image = Grab();
    EXPECT_EQ(image.width, 200);
    EXPECT_EQ(image.height, 150);
    EXPECT_EQ(image.rgb.size(), 200U * 150U * 3U);
}

TEST_F(Picture, AMeshStandsOutFromTheBackground)
{
    ZModelPolymesh* const cube = AddCube(scene, "cube");
    const ZImage with = Grab(), without = GrabWithout(cube);
    EXPECT_GT(Difference(At(with, 100, 75), At(without, 100, 75)), 100);
    EXPECT_EQ(At(with, 3, 3), At(without, 3, 3));
    // The front side is 2 of the 8 - 1 away, 40 degrees are 150 pixels: about 58 pixels in square.
    const int seen = DifferentPixels(with, without);
    EXPECT_GT(seen, 50 * 50);
    EXPECT_LT(seen, 66 * 66);
}

TEST_F(Picture, TheTopRowComesFirst)
{
    AddCube(scene, "cube", ZgeTranslation({0, 1.5, 0}), 0.5F);
    const ZImage image = Grab();
    EXPECT_GT(Difference(At(image, 100, 40), At(image, 10, 40)), 60);
    EXPECT_LT(Difference(At(image, 100, 110), At(image, 10, 110)), 12);
}

TEST_F(Picture, ADeformedMeshIsDrawnWhereItIs)
{
    ZModelPolymesh* const cube = AddCube(scene, "cube", {}, 0.5F);
    ZModel* const bone = AddBone(scene, "bone", {0, 0, 0});
    viewer.SetShowBones(false);
    ZSkin* const skin = cube->MakeSkin(kDeformNormalise);
    skin->AppendLink(bone, ZgeMatrix());
    skin->BeginLink(0);
    for (int i = 0; i < 8; ++i)
        skin->AddEntry(i, 1);
    skin->EndLink();
    const ZImage before = Grab();
    bone->SetPosedTransform(ZgeTranslation({2, 0, 0}));
    const ZImage after = Grab();
    EXPECT_GT(Difference(At(before, 100, 75), At(after, 100, 75)), 100);
    EXPECT_GT(Difference(At(before, 151, 75), At(after, 151, 75)), 100);
}

TEST_F(Picture, BonesShowThroughTheMeshAbout)
{
    AddCube(scene, "cube");
    ZModel* const root = AddBone(scene, "root", {0, -0.8, 0});
    AddBone(scene, "tip", {0, 1.6, 0}, root);
    const ZImage with = Grab();
    viewer.SetShowBones(false);
    const ZImage without = Grab();
    EXPECT_GT(DifferentPixels(with, without), 60);
    viewer.SetShowBones(true);
    root->SetSelected(true);
    const ZImage selected = Grab();
    EXPECT_GT(DifferentPixels(with, selected), 60);
    // Selected ones are nearer to the selection colour.
    const float* const colour = ZModelGlobal::SelectionColor();
    const Pixel wanted{int(255 * colour[0]), int(255 * colour[1]), int(255 * colour[2])};
    EXPECT_LT(Difference(At(selected, 98, 90), wanted), Difference(At(with, 98, 90), wanted));
}

TEST_F(Picture, HiddenModelsAreNotDrawn)
{
    const ZImage empty = Grab();
    AddCube(scene, "cube")->SetHidden(true);
    AddBone(scene, "bone", {0, 0, 0})->SetHidden(true);
    EXPECT_EQ(DifferentPixels(empty, Grab(), 0), 0);
}

TEST_F(Picture, AMirroredModelIsLitTheSame)
{
    // Its own mirror image in X, triangle for triangle; slanted, so that its sides differ in brightness.
    const float corners[18] = {1, 0, 0, -1, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 1, 0, 0, -1};
    auto mesh = std::make_unique<ZModelPolymesh>("octahedron");
    ASSERT_TRUE(mesh->SetGeometry(corners, 6, {0, 2, 4, 2, 1, 4, 1, 3, 4, 3, 0, 4, 2, 0, 5, 1, 2, 5, 3, 1, 5, 0, 3, 5},
                                  std::vector<int>(8, 3)));
    ZModel* const octahedron = scene.AddModel(std::move(mesh));
    const ZgeMatrix slanted = ZgeRotationFromEuler({25, 35, 10});
    octahedron->SetFileTransform(slanted);
    const ZImage plain = Grab();
    octahedron->SetFileTransform(ZgeScaling({-1, 1, 1}) * slanted);
    EXPECT_EQ(DifferentPixels(plain, Grab()), 0);
    octahedron->SetFileTransform(slanted * ZgeScaling({-1, 1, 1}));
    EXPECT_GT(DifferentPixels(plain, Grab()), 200); // elsewhere, under the same light
}

TEST_F(Picture, BothSidesOfASurfaceAreLit)
{
    const float square[12] = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
    auto sheet = std::make_unique<ZModelPolymesh>("sheet");
    ASSERT_TRUE(sheet->SetGeometry(square, 4, {0, 1, 2, 3}, {4}));
    scene.AddModel(std::move(sheet));
    const Pixel front = At(Grab(), 100, 75);
    viewer.GetCamera().LookAt({0, 0, -8}, {0, 0, 0}, {0, 1, 0});
    EXPECT_LT(Difference(front, At(Grab(), 100, 75)), 6);
}

TEST_F(Picture, WireShowsWhatIsBehind)
{
    AddCube(scene, "cube");
    const ZImage shaded = Grab();
    viewer.SetShading(ZShading::Wire);
    const ZImage wire = Grab();
    viewer.SetShading(ZShading::ShadedWire);
    const ZImage both = Grab();
    viewer.SetShading(ZShading::Shaded);
    scene.GetModels()[0]->SetHidden(true);
    const ZImage empty = Grab();
    EXPECT_LT(Difference(At(wire, 100, 75), At(empty, 100, 75)), 12);
    EXPECT_GT(DifferentPixels(wire, empty), 100);
    EXPECT_LT(Difference(At(both, 100, 75), At(shaded, 100, 75)), 12);
    EXPECT_GT(DifferentPixels(both, shaded), 100);
}

TEST_F(Picture, TheDisplayValueShowsALinksWeights)
{
    ZModelPolymesh* const cube = AddCube(scene, "cube");
    ZModel* const bone = AddBone(scene, "bone", {0, 0, 0});
    viewer.SetShowBones(false);
    ZSkin* const skin = cube->MakeSkin(kDeformTotal100);
    skin->AppendLink(bone, ZgeMatrix());
    skin->BeginLink(0);
    for (int i = 0; i < 8; ++i)
        skin->AddEntry(i, (i & 1) != 0 ? 1.0 : 0.0); // 1 to the right, 0 to the left
    skin->EndLink();
    const ZImage plain = Grab();
    skin->SetSkinDisplayValue(0);
    const ZImage heat = Grab();
    const Pixel left = At(heat, 75, 75), right = At(heat, 125, 75);
    EXPECT_GT(left[2], left[0] + 60); // blue
    EXPECT_GT(right[0], right[2] + 60);
    skin->BeginLink(0);
    skin->SetEntryWeight(1, 0);
    skin->SetEntryWeight(1, 2);
    skin->SetEntryWeight(1, 4);
    skin->SetEntryWeight(1, 6);
    skin->EndLink();
    EXPECT_GT(At(Grab(), 75, 75)[0], At(Grab(), 75, 75)[2] + 60);
    skin->SetSkinDisplayValue(-1);
    EXPECT_EQ(DifferentPixels(plain, Grab()), 0);
    skin->SetSkinDisplayValue(7); // no such link
    EXPECT_EQ(DifferentPixels(plain, Grab()), 0);
}

std::unique_ptr<ZModelNurbs> MakeSheet()
{
    ZNurbsSurface surface;
    surface.degreeU = surface.degreeV = 2;
    surface.countU = surface.countV = 3;
    surface.knotsU = surface.knotsV = {0, 0, 0, 1, 1, 1};
    for (int v = 0; v < 3; ++v)
        for (int u = 0; u < 3; ++u)
            surface.points.insert(surface.points.end(), {u - 1.0, v - 1.0, u == 1 && v == 1 ? 1.5 : 0.0});
    auto sheet = std::make_unique<ZModelNurbs>("sheet");
    std::string why;
    EXPECT_TRUE(sheet->SetSurface(surface, 9, 9, &why)) << why;
    return sheet;
}

TEST_F(Picture, ANurbsSurfaceIsItsGrid)
{
    ZModel* const sheet = scene.AddModel(MakeSheet());
    const ZImage with = Grab(), without = GrabWithout(sheet);
    EXPECT_GT(Difference(At(with, 100, 75), At(without, 100, 75)), 100);
    EXPECT_GT(DifferentPixels(with, without), 30 * 30);
    EXPECT_EQ(viewer.ModelAt(100, 75), sheet);
    EXPECT_EQ(viewer.ModelAt(5, 5), nullptr);
    static_cast<ZModelNurbs*>(sheet)->SetGrid(0, 0);
    EXPECT_EQ(DifferentPixels(Grab(), without), 0);
}

TEST_F(Picture, ANurbsSurfaceShowsALinksWeights)
{
    auto* const sheet = static_cast<ZModelNurbs*>(scene.AddModel(MakeSheet()));
    ZSkin* const skin = sheet->MakeSkin(kDeformTotal100);
    skin->AppendLink(nullptr, ZgeMatrix());
    skin->BeginLink(0);
    for (const int point : {2, 5, 8})
        skin->AddEntry(point, 1); // to the right
    skin->EndLink();
    skin->SetSkinDisplayValue(0);
    const ZImage heat = Grab();
    EXPECT_GT(At(heat, 85, 75)[2], At(heat, 85, 75)[0]);
    EXPECT_GT(At(heat, 122, 75)[0], At(heat, 122, 75)[2]);
}

TEST_F(Picture, TheFloorLiesOnTheGround)
{
    const ZImage without = Grab();
    viewer.SetShowGrid(true);
    viewer.GetCamera().LookAt({0, 3, 8}, {0, 0, 0}, {0, 1, 0});
    const ZImage with = Grab();
    EXPECT_GT(DifferentPixels(with, without), 300);
    viewer.GetCamera().LookAt({0, 3, 8}, {0, 6, 0}, {0, 1, 0});
    const ZImage above = Grab();
    for (int x = 0; x < 200; ++x)
        EXPECT_LT(Difference(At(above, x, 5), At(without, x, 5)), 12);
}

TEST_F(Picture, TheRubberBandIsDrawnOverEverything)
{
    AddCube(scene, "cube");
    const ZImage without = Grab();
    viewer.SetOrigin(1000, 2000);
    viewer.PickRectStart(1120, 2090);
    viewer.PickRectMotion(1080, 2060);
    const ZImage with = Grab();
    for (const auto& [x, y] : {std::pair(80, 75), std::pair(120, 75), std::pair(100, 60), std::pair(100, 90)})
        EXPECT_GT(Difference(At(with, x, y), At(without, x, y)), 40) << x << " " << y;
    EXPECT_GT(Difference(At(with, 100, 75), At(without, 100, 75)), 3);
    EXPECT_EQ(At(with, 70, 75), At(without, 70, 75));
    viewer.PickRectStop();
    EXPECT_EQ(DifferentPixels(Grab(), without, 0), 0);
}

TEST_F(Picture, ManipulatorsInUseDraw)
{
    auto* const shown = new RecordingManipulator(story, "shown");
    auto* const hidden = new RecordingManipulator(story, "hidden");
    shown->ManipulatorSetHidden(false);
    story.clear();
    ZManipulatorDraw seen;
    shown->whenDrawn = [&seen](ZManipulatorDraw& draw) {
        seen = draw;
        const float* const colour = ZModelGlobal::SelectionColor();
        glEnable(GL_DEPTH_TEST);
        glPointSize(10);
        glBegin(GL_POINTS);
        glColor3fv(colour);
        glVertex3f(0, 0, 0);
        glEnd();
        glPointSize(1);
        glDisable(GL_DEPTH_TEST);
    };
    const ZImage image = Grab();
    EXPECT_THAT(story, ElementsAre("draw"));
    EXPECT_EQ(seen.viewer, &viewer);
    EXPECT_EQ(seen.camera, static_cast<IViewerCamera*>(&viewer.GetCamera()));
    EXPECT_EQ(seen.viewerVector, (ZgeVector3{0, 0, 1}));
    EXPECT_GT(At(image, 100, 75)[0], 240);
    hidden->whenDrawn = [](ZManipulatorDraw&) { FAIL() << "a hidden one draws"; };
    Grab();
}

TEST_F(Picture, AnOverlayOnTheSurfaceShows)
{
    AddCube(scene, "cube");
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    manipulator->whenDrawn = [](ZManipulatorDraw&) {
        glEnable(GL_DEPTH_TEST);
        glPointSize(4);
        glBegin(GL_POINTS);
        glColor3f(1, 0, 0);
        glVertex3f(0.3F, 0.3F, 1);
        glVertex3f(-0.3F, -0.3F, -1); // behind
        glEnd();
        glPointSize(1);
        glDisable(GL_DEPTH_TEST);
    };
    const ZImage image = Grab();
    int red = 0;
    for (int y = 0; y < 150; ++y)
        for (int x = 0; x < 200; ++x)
            red += At(image, x, y)[0] > 250 && At(image, x, y)[1] < 5 ? 1 : 0;
    EXPECT_EQ(red, 16);
}

TEST_F(Picture, AManipulatorMayDestroyItselfWhileItDraws)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    story.clear();
    manipulator->whenDrawn = [manipulator](ZManipulatorDraw&) {
        ZManipulator_GetManipulatorSet()->ManipulatorRemove(manipulator);
    };
    Grab();
    EXPECT_THAT(story, ElementsAre("draw", "inactive", "destroyed"));
}

TEST_F(Picture, BuffersOfDeletedModelsAreNotDrawnForOthers)
{
    ZModelPolymesh* const cube = AddCube(scene, "cube");
    Grab();
    scene.DeleteModel(cube);
    const ZImage empty = Grab();
    AddCube(scene, "small", {}, 0.25F); // may well lie at the same address
    const ZImage small = Grab();
    const int seen = DifferentPixels(empty, small);
    EXPECT_GT(seen, 9 * 9);
    EXPECT_LT(seen, 20 * 20);
}

TEST_F(Picture, ANewContextGetsBuffersOfItsOwn)
{
    AddCube(scene, "cube");
    const ZImage before = Grab();
    ZOffscreen_Release();
    EXPECT_EQ(DifferentPixels(before, Grab(), 0), 0);
    ZOffscreen_Release();
    ZOffscreen_Release(); // nothing left
}

TEST_F(Picture, TwoViewersShareTheContext)
{
    AddCube(scene, "cube");
    ZViewer second(&scene);
    second.SetSize(60, 40);
    const ZImage before = Grab();
    ZImage other;
    ASSERT_TRUE(ZOffscreen_Grab(second, other));
    EXPECT_EQ(other.width, 60);
    EXPECT_EQ(DifferentPixels(before, Grab(), 0), 0);
}

TEST_F(Picture, LargerThanTheRendererIsRefused)
{
    viewer.SetSize(1000000, 2);
    ZImage image;
    std::string why;
    EXPECT_FALSE(ZOffscreen_Grab(viewer, image, &why));
    EXPECT_THAT(why, testing::HasSubstr("1000000 x 2"));
    EXPECT_EQ(image.width, 0);
    viewer.SetSize(200, 150);
    EXPECT_TRUE(ZOffscreen_Grab(viewer, image, &why));
}

TEST_F(Picture, VerticesThatAreNotNumbersBringNothingDown)
{
    const float positions[12] = {0, 0, 0, std::nanf(""), 1, 0, INFINITY, 1, 0, -1, -1, 0};
    auto mesh = std::make_unique<ZModelPolymesh>("broken");
    mesh->SetGeometry(positions, 4, {0, 1, 2, 0, 2, 3}, {3, 3});
    scene.AddModel(std::move(mesh));
    AddCube(scene, "cube");
    Grab();
    viewer.Frame({});
    EXPECT_TRUE(std::isfinite(viewer.GetCamera().GetDistance()));
    viewer.ModelAt(100, 75);
}
} // namespace
