// SPDX-License-Identifier: MIT
// The manipulator's overlay on a recorder of OpenGL calls: what is drawn, in which state, and that it is left as found.
#include "../viewport/FakeTool.h"

#include "support/GlRecorder.h"
#include "viewport/ZCharacterWeightingManipulator.h"
#include "zmanipulator/ZViewer.h"

#include <GL/gl.h>
#include <gmock/gmock.h>

#include <cmath>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// A bone that says how it was drawn, with or without a drawing of its own.
class DrawnBone : public ZModel, public ISurface
{
public:
    explicit DrawnBone(const char* name) : ZModel(name, ZModelKind::Bone) { SetBone(true); }
    void* IQuery(int interfaceId, int flags) override
    {
        if (interfaceId == kInterfaceSurface)
            return static_cast<ISurface*>(this);
        if (interfaceId == own)
            return this;
        return ZModel::IQuery(interfaceId, flags);
    }
    void Draw(const ZgeVector3* viewer) override
    {
        ++drawn;
        withViewer = viewer != nullptr;
        matrix = GlRecorder::Matrix(GL_MODELVIEW);
        depth = GlRecorder::StackDepth(GL_MODELVIEW);
        if (!messy)
            return;
        glLineWidth(5);
        glPointSize(9);
        glDepthMask(GL_FALSE);
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        glEnable(GL_CULL_FACE);
    }

    int own = -1;
    bool messy = false;
    int drawn = 0;
    bool withViewer = false;
    ZgeMatrix matrix;
    int depth = 0;
};

class OverlayTest : public testing::Test
{
protected:
    OverlayTest() : viewer(&scene)
    {
        auto made = std::make_unique<DrawnBone>("Bone");
        bone = made.get();
        scene.AddModel(std::move(made));
        bone->SetFileTransform(ZgeTranslation({0, 1, 0}));
        tool.AddBone(bone);
        mesh = AddPointMesh(scene, "M", {0, 0, 0, 1, 0, 0, 1, 1, 0}, bone);
        data = &tool.Admit(mesh);
        for (int vertex = 0; vertex < 3; ++vertex)
            for (int channel = 0; channel < 3; ++channel)
                data->vertexColours[4 * vertex + channel] = vertex == channel ? 1.0F : 0.25F;
        manipulator = new ZCharacterWeightingManipulator("Skin", 1);
        manipulator->SetTool(&tool);
        manipulator->ManipulatorSetHidden(false);
        viewer.SetSize(400, 300);
    }
    ~OverlayTest() override
    {
        manipulator->SetTool(nullptr);
        ZManipulator_GetManipulatorSet()->ManipulatorRemove(manipulator);
    }
    void Draw()
    {
        GlRecorder::Clear();
        DrawOnTop();
    }
    /// Draws in the state that is there.
    void DrawOnTop()
    {
        ZManipulatorDraw draw;
        draw.viewer = &viewer;
        draw.camera = &viewer.GetCamera();
        draw.viewerVector = {0, 0, 1};
        manipulator->ManipulatorDraw(draw);
        EXPECT_THAT(GlRecorder::Mistakes(), IsEmpty());
    }
    std::vector<GlBatch> Batches(unsigned mode) const
    {
        std::vector<GlBatch> found;
        for (const GlBatch& batch : GlRecorder::Batches())
            if (batch.mode == mode)
                found.push_back(batch);
        return found;
    }

    ZScene scene;
    ZViewer viewer;
    FakeTool tool;
    DrawnBone* bone = nullptr;
    ZModelPolymesh* mesh = nullptr;
    ZWeightUIModelData* data = nullptr;
    ZCharacterWeightingManipulator* manipulator = nullptr;
};

TEST_F(OverlayTest, StacksAreBalancedAndStateIsLeftAsFound)
{
    tool.selectedBones.Add(0);
    Draw();
    EXPECT_EQ(GlRecorder::StackDepth(GL_MODELVIEW), 0);
    EXPECT_EQ(GlRecorder::StackDepth(GL_PROJECTION), 0);
    EXPECT_EQ(GlRecorder::MatrixMode(), static_cast<unsigned>(GL_MODELVIEW));
    EXPECT_FALSE(GlRecorder::IsEnabled(GL_BLEND));
    EXPECT_FALSE(GlRecorder::IsEnabled(GL_DEPTH_TEST));
    EXPECT_EQ(GlRecorder::PointSize(), 1);
}

TEST_F(OverlayTest, TheHostsStateIsGivenBackWhateverItWas)
{
    tool.selectedBones.Add(0);
    data->SetVertexState(1, 2);
    GlRecorder::Clear();
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glEnable(GL_CULL_FACE);
    glBlendFunc(GL_ONE, GL_ONE);
    glDepthMask(GL_FALSE);
    glPointSize(7);
    glLineWidth(3);
    glColor4f(0.5F, 0.25F, 0.75F, 0.5F);
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    glViewport(1, 2, 3, 4);
    glMatrixMode(GL_PROJECTION);
    const GlState before = GlRecorder::State();
    DrawOnTop();
    EXPECT_EQ(GlRecorder::State(), before);
    EXPECT_EQ(GlRecorder::StackDepth(GL_MODELVIEW), 0);
    EXPECT_EQ(GlRecorder::StackDepth(GL_PROJECTION), 0);
    EXPECT_EQ(GlRecorder::AttributeDepth(), 0);
}

TEST_F(OverlayTest, WhatABonesOwnDrawingLeavesIsGivenBack)
{
    tool.selectedBones.Add(0);
    bone->messy = true;
    GlRecorder::Clear();
    const GlState before = GlRecorder::State();
    DrawOnTop();
    EXPECT_EQ(GlRecorder::State(), before);
}

TEST_F(OverlayTest, EveryVertexIsAPointInItsOwnColour)
{
    Draw();
    const std::vector<GlBatch> points = Batches(GL_POINTS);
    ASSERT_THAT(points, SizeIs(1));
    EXPECT_EQ(points[0].pointSize, 4) << "nothing is selected";
    EXPECT_TRUE(points[0].depthTest);
    ASSERT_THAT(points[0].vertices, SizeIs(3));
    EXPECT_EQ(points[0].vertices[1].place[0], 1);
    EXPECT_EQ(points[0].vertices[1].colour[1], 1);
    EXPECT_EQ(points[0].vertices[1].colour[0], 0.25);
}

TEST_F(OverlayTest, PointsShrinkWhileSomethingIsSelected)
{
    tool.selection.noSelection = false;
    Draw();
    EXPECT_EQ(Batches(GL_POINTS)[0].pointSize, 2);
}

TEST_F(OverlayTest, ActiveVerticesAreTenPixelsAndSelectedOnesSix)
{
    data->SelectVertex(2, nullptr);
    data->SelectVertex(0, nullptr);
    data->ActivateVertex(0, nullptr);
    Draw();
    const std::vector<GlBatch> points = Batches(GL_POINTS);
    ASSERT_THAT(points, SizeIs(3));
    EXPECT_EQ(points[1].pointSize, 10);
    ASSERT_THAT(points[1].vertices, SizeIs(1));
    for (int channel = 0; channel < 3; ++channel)
        EXPECT_FLOAT_EQ(static_cast<float>(points[1].vertices[0].colour[channel]),
                        ZModelGlobal::SelectionColor()[channel]);
    EXPECT_EQ(points[2].pointSize, 6);
    ASSERT_THAT(points[2].vertices, SizeIs(2));
    EXPECT_EQ(points[2].vertices[0].place[1], 2) << "in selection order; the bone moved it up by one";
}

TEST_F(OverlayTest, AfterTheLastActiveVertexNoHighlightIsDrawn)
{
    data->SelectVertex(0, nullptr);
    data->ActivateVertex(0, nullptr);
    data->DeactivateVertex(0, nullptr);
    Draw();
    EXPECT_THAT(Batches(GL_POINTS), SizeIs(2));
    data->DeselectVertex(0, nullptr);
    Draw();
    EXPECT_THAT(Batches(GL_POINTS), SizeIs(1));
}

TEST_F(OverlayTest, EdgeBrightnessDriftsTowardsSevenTenths)
{
    double before = 0;
    for (int redraw = 0; redraw < 3; ++redraw) {
        Draw();
        const std::vector<GlBatch> edges = Batches(GL_LINE_LOOP);
        ASSERT_THAT(edges, SizeIs(1));
        ASSERT_THAT(edges[0].vertices, SizeIs(3)) << "the complemented last index names its vertex";
        const double brightness = edges[0].vertices[0].colour[0];
        if (redraw > 0) {
            EXPECT_NEAR(brightness, 0.01 * 0.7 + 0.99 * before, 1e-6);
        }
        before = brightness;
    }
    for (int redraw = 0; redraw < 2000; ++redraw)
        Draw();
    EXPECT_NEAR(Batches(GL_LINE_LOOP)[0].vertices[0].colour[0], 0.7, 1e-3);
}

TEST_F(OverlayTest, UncheckedModelIsNotDrawn)
{
    data->SetModelSelected(false, nullptr);
    Draw();
    EXPECT_THAT(GlRecorder::Batches(), IsEmpty());
}

TEST_F(OverlayTest, WithoutModelsNothingIsCalled)
{
    tool.models.RemoveAll();
    Draw();
    EXPECT_THAT(GlRecorder::Calls(), IsEmpty());
}

TEST_F(OverlayTest, HiddenManipulatorDrawsNothing)
{
    manipulator->ManipulatorSetHidden(true);
    Draw();
    EXPECT_THAT(GlRecorder::Calls(), IsEmpty());
}

TEST_F(OverlayTest, DiscFadesFromTheBoneToItsRimAndFacesTheViewer)
{
    tool.selectedBones.Add(0);
    manipulator->SetDiscSize(2.5);
    Draw();
    const std::vector<GlBatch> discs = Batches(GL_TRIANGLE_FAN);
    ASSERT_THAT(discs, SizeIs(1));
    const GlBatch& disc = discs[0];
    EXPECT_TRUE(disc.blend);
    ASSERT_THAT(disc.vertices, SizeIs(22)) << "centre, twenty points, the first again";
    EXPECT_EQ(disc.vertices[0].colour[3], 0);
    EXPECT_NEAR(disc.vertices[1].colour[3], 0.45, 1e-6);
    EXPECT_NEAR(disc.vertices[1].colour[0], 0.5, 1e-6);
    EXPECT_NEAR(disc.vertices[1].place[0], 1, 1e-6);
    EXPECT_NEAR(disc.vertices[2].place[0], std::cos(3.14159265358979 / 10), 1e-6);
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_EQ(disc.vertices[21].place[axis], disc.vertices[1].place[axis]);
    const ZgeVector3 inView = ZgeTransformPoint({0, 1, 0}, viewer.GetCamera().ViewMatrix());
    EXPECT_NEAR(disc.modelview(3, 0), inView.x, 1e-9);
    EXPECT_NEAR(disc.modelview(3, 1), inView.y, 1e-9);
    EXPECT_NEAR(disc.modelview(3, 2), inView.z, 1e-9);
    EXPECT_EQ(disc.modelview(0, 0), 2.5);
    EXPECT_EQ(disc.modelview(0, 1), 0);
}

TEST_F(OverlayTest, BoneIsDrawnInItsPlaceWithTheViewersVector)
{
    tool.selectedBones.Add(0);
    Draw();
    EXPECT_EQ(bone->drawn, 1);
    EXPECT_TRUE(bone->withViewer);
    const ZgeVector3 expected = ZgeTransformPoint({0, 1, 0}, viewer.GetCamera().ViewMatrix());
    EXPECT_NEAR(bone->matrix(3, 0), expected.x, 1e-9);
    EXPECT_NEAR(bone->matrix(3, 1), expected.y, 1e-9);
}

TEST_F(OverlayTest, BoneWithADrawingOfItsOwnGetsAMatrixOfItsOwn)
{
    tool.selectedBones.Add(0);
    Draw();
    const int plain = bone->depth;
    for (const int id : {kInterfaceBoneOwnDrawingA, kInterfaceBoneOwnDrawingB, kInterfaceBoneOwnDrawingC}) {
        bone->own = id;
        Draw();
        EXPECT_FALSE(bone->withViewer) << id;
        EXPECT_EQ(bone->depth, plain + 1) << id;
    }
}

TEST_F(OverlayTest, SelectedBoneBeyondTheTablesIsPassedOver)
{
    tool.selectedBones.Add(7);
    tool.selectedBones.Add(-1);
    Draw();
    EXPECT_THAT(Batches(GL_TRIANGLE_FAN), IsEmpty());
}

TEST_F(OverlayTest, NurbsPointsAreBatchesOfTheirOwnWithoutEdges)
{
    auto made = std::make_unique<ZModelNurbs>("Patch");
    ZNurbsSurface surface;
    surface.degreeU = surface.degreeV = 1;
    surface.countU = surface.countV = 2;
    surface.knotsU = surface.knotsV = {0, 0, 1, 1};
    surface.points = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0};
    ASSERT_TRUE(made->SetSurface(surface, 4, 4));
    made->MakeSkin(kDeformNormalise)->AppendLink(bone, ZgeMatrix());
    tool.Admit(scene.AddModel(std::move(made)));
    data->SetModelSelected(false, nullptr);
    Draw();
    EXPECT_THAT(Batches(GL_LINE_LOOP), IsEmpty());
    const std::vector<GlBatch> points = Batches(GL_POINTS);
    ASSERT_THAT(points, SizeIs(4));
    EXPECT_THAT(points[0].vertices, SizeIs(1));
}

} // namespace
