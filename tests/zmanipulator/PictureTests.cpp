// SPDX-License-Identifier: MIT
// What the viewer draws, looked at through off-screen pictures.
#include "TinyScene.h"

#include "zmanipulator/ZOffscreen.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {
using testing::Each;
using testing::ElementsAre;

using Pixel = std::array<int, 3>;

Pixel At(const ZImage& image, int x, int y)
{
    const std::uint8_t* const p = &image.rgb[3 * static_cast<size_t>(y * image.width + x)];
    return {p[0], p[1], p[2]};
}

int Difference(const Pixel& a, const Pixel& b)
{
    return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]);
}

/// Pixels that differ by more than rounding.
int DifferentPixels(const ZImage& a, const ZImage& b, int tolerance = 12)
{
    int different = 0;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < a.width; ++x)
            different += Difference(At(a, x, y), At(b, x, y)) > tolerance ? 1 : 0;
    return different;
}

class Picture : public ManipulatorTest
{
protected:
    void SetUp() override
    {
        viewer.SetSize(200, 150);
        viewer.SetShowGrid(false);
        viewer.GetCamera().LookAt({0, 0, 8}, {0, 0, 0}, {0, 1, 0});
    }
    ZImage Grab()
    {
        ZImage image;
        std::string why;
        EXPECT_TRUE(ZOffscreen_Grab(viewer, image, &why)) << why;
        return image;
    }
    /// The picture with `model` hidden.
    ZImage GrabWithout(ZModel* model)
    {
        model->SetHidden(true);
        ZImage image = Grab();
        model->SetHidden(false);
        return image;
    }

    ZScene scene;
    ZViewer viewer{&scene};
};

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

/// A framebuffer of the test's own, to look at what Draw leaves behind.
class DrawState : public Picture
{
protected:
    void SetUp() override
    {
        Picture::SetUp();
        std::string why;
        ASSERT_TRUE(ZOffscreen_MakeCurrent(&why)) << why;
        glGenFramebuffers(1, &m_framebuffer);
        glGenRenderbuffers(2, m_buffers);
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        const GLenum formats[2] = {GL_RGBA8, GL_DEPTH_COMPONENT24},
                     places[2] = {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
        for (int i = 0; i < 2; ++i) {
            glBindRenderbuffer(GL_RENDERBUFFER, m_buffers[i]);
            glRenderbufferStorage(GL_RENDERBUFFER, formats[i], 200, 150);
            glFramebufferRenderbuffer(GL_FRAMEBUFFER, places[i], GL_RENDERBUFFER, m_buffers[i]);
        }
        glViewport(0, 0, 200, 150);
        AddCube(scene, "cube");
        AddBone(scene, "bone", {0, 0, 0});
        viewer.SetShowGrid(true);
        viewer.SetShading(ZShading::ShadedWire);
        viewer.PickRectStart(10, 10);
        viewer.PickRectMotion(60, 60);
    }
    void TearDown() override
    {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &m_framebuffer);
        glDeleteRenderbuffers(2, m_buffers);
        ZOffscreen_Release();
        Picture::TearDown();
    }

    /// Everything that one of the two sides could disturb.
    static std::vector<double> State()
    {
        std::vector<double> state;
        for (const GLenum feature :
             {GL_ALPHA_TEST, GL_BLEND, GL_COLOR_ARRAY, GL_COLOR_MATERIAL, GL_CULL_FACE, GL_DEPTH_TEST, GL_LIGHT0,
              GL_LIGHTING, GL_LINE_STIPPLE, GL_NORMALIZE, GL_NORMAL_ARRAY, GL_POLYGON_OFFSET_FILL, GL_SCISSOR_TEST,
              GL_TEXTURE_2D, GL_VERTEX_ARRAY})
            state.push_back(glIsEnabled(feature));
        for (const GLenum number :
             {GL_MATRIX_MODE, GL_MODELVIEW_STACK_DEPTH, GL_PROJECTION_STACK_DEPTH, GL_ATTRIB_STACK_DEPTH,
              GL_CLIENT_ATTRIB_STACK_DEPTH, GL_FRONT_FACE, GL_CULL_FACE_MODE, GL_DEPTH_FUNC, GL_SHADE_MODEL,
              GL_BLEND_SRC, GL_BLEND_DST, GL_CURRENT_PROGRAM, GL_ARRAY_BUFFER_BINDING, GL_ELEMENT_ARRAY_BUFFER_BINDING,
              GL_VERTEX_ARRAY_BINDING, GL_FRAMEBUFFER_BINDING, GL_ACTIVE_TEXTURE, GL_DEPTH_WRITEMASK,
              GL_PACK_ALIGNMENT}) {
            GLint value = -1;
            glGetIntegerv(number, &value);
            state.push_back(value);
        }
        const std::pair<GLenum, int> groups[] = {
            {GL_PROJECTION_MATRIX, 16}, {GL_MODELVIEW_MATRIX, 16},    {GL_CURRENT_COLOR, 4}, {GL_CURRENT_NORMAL, 3},
            {GL_COLOR_CLEAR_VALUE, 4},  {GL_COLOR_WRITEMASK, 4},      {GL_VIEWPORT, 4},      {GL_SCISSOR_BOX, 4},
            {GL_DEPTH_RANGE, 2},        {GL_LIGHT_MODEL_AMBIENT, 4},  {GL_POLYGON_MODE, 2},  {GL_POINT_SIZE, 1},
            {GL_LINE_WIDTH, 1},         {GL_POLYGON_OFFSET_FACTOR, 1}};
        for (const auto& [group, count] : groups) {
            GLdouble values[16] = {};
            glGetDoublev(group, values);
            state.insert(state.end(), values, values + count);
        }
        return state;
    }
    static void MakeUnusualState()
    {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glScalef(0.5F, 0.25F, 2);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glTranslated(1, 2, 3);
        glMatrixMode(GL_TEXTURE);
        glEnable(GL_CULL_FACE);
        glCullFace(GL_FRONT);
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE);
        glEnable(GL_LIGHTING);
        glEnable(GL_SCISSOR_TEST);
        glScissor(1, 2, 3, 4);
        glDepthFunc(GL_GREATER);
        glDepthMask(GL_FALSE);
        glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
        glColor4f(0.1F, 0.2F, 0.3F, 0.4F);
        glClearColor(0.5F, 0.6F, 0.7F, 0.8F);
        glFrontFace(GL_CW);
        glShadeModel(GL_FLAT);
        glPointSize(7);
        glLineWidth(3);
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        glEnableClientState(GL_NORMAL_ARRAY);
    }

private:
    GLuint m_framebuffer = 0;
    GLuint m_buffers[2] = {0, 0};
};

TEST_F(DrawState, IsLeftAsFound)
{
    const std::vector<double> before = State();
    viewer.Draw();
    EXPECT_EQ(State(), before);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(DrawState, IsLeftAsFoundWhateverItWas)
{
    MakeUnusualState();
    const std::vector<double> before = State();
    viewer.Draw();
    EXPECT_EQ(State(), before);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(DrawState, DoesNotChangeThePicture)
{
    viewer.Draw();
    std::vector<std::uint8_t> plain(200 * 150 * 4), unusual(plain.size());
    glReadPixels(0, 0, 200, 150, GL_RGBA, GL_UNSIGNED_BYTE, plain.data());
    MakeUnusualState();
    viewer.Draw();
    glReadPixels(0, 0, 200, 150, GL_RGBA, GL_UNSIGNED_BYTE, unusual.data());
    EXPECT_EQ(plain, unusual);
}

TEST_F(DrawState, AMessyGuestLeavesNoTrace)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    manipulator->whenDrawn = [](ZManipulatorDraw&) {
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glPushMatrix();
        glScalef(3, 3, 3);
        MakeUnusualState();
    };
    const std::vector<double> before = State();
    viewer.Draw();
    EXPECT_EQ(State(), before);
}

TEST_F(DrawState, AGuestThatThrowsLeavesNoTrace)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    manipulator->whenDrawn = [](ZManipulatorDraw&) {
        glPushMatrix();
        throw std::runtime_error("guest");
    };
    const std::vector<double> before = State();
    EXPECT_THROW(viewer.Draw(), std::runtime_error);
    EXPECT_EQ(State(), before);
    EXPECT_EQ(ZManipulator_GetManipulatorSet()->GetManipulators().size(), 1U);
}

TEST_F(DrawState, AlphaIsOneEverywhere)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    manipulator->whenDrawn = [](ZManipulatorDraw&) {
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glColor4f(1, 1, 1, 0.25F);
        glBegin(GL_TRIANGLE_FAN);
        glVertex3f(-20, -20, 0);
        glVertex3f(20, -20, 0);
        glVertex3f(0, 20, 0);
        glEnd();
        glDisable(GL_BLEND);
    };
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    viewer.Draw();
    std::vector<std::uint8_t> alpha(200 * 150);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, 200, 150, GL_ALPHA, GL_UNSIGNED_BYTE, alpha.data());
    EXPECT_THAT(alpha, Each(255));
}

TEST_F(DrawState, AProgramAndAnArrayThatAreBoundComeBack)
{
    const GLuint program = glCreateProgram(), shader = glCreateShader(GL_VERTEX_SHADER);
    const char* const source = "void main() { gl_Position = gl_Vertex; }";
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    glAttachShader(program, shader);
    glLinkProgram(program);
    GLuint array = 0;
    glGenVertexArrays(1, &array);
    glUseProgram(program);
    glBindVertexArray(array);
    const std::vector<double> before = State();
    viewer.Draw();
    EXPECT_EQ(State(), before);
    glUseProgram(0);
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &array);
    glDeleteProgram(program);
    glDeleteShader(shader);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(DrawState, GrabbingLeavesTheContextThatWasCurrentCurrent)
{
    const std::vector<double> before = State();
    Grab();
    EXPECT_EQ(State(), before);
}
} // namespace
