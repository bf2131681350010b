// SPDX-License-Identifier: MIT
// Meshes and NURBS surfaces as the weighting data sees them, and what their overlay draws.
#include "support/GlRecorder.h"
#include "support/WeightStage.h"
#include "weights/ZWeightGeomNURBS.h"
#include "weights/ZWeightGeomPoly.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

class GeometryAdapter : public testing::Test
{
protected:
    GeometryAdapter() { character.AddBones(1); }
    WeightStage stage;
    TinyCharacter& character = stage.character;
};

TEST_F(GeometryAdapter, MeshVerticesAreThoseOfTheModel)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 4);
    ZWeightGeomPoly adapter(mesh);
    EXPECT_EQ(adapter.VertexCount(), 4);
    EXPECT_EQ(adapter.VertexPositions(), mesh->Geometry().VertexPositions(1));
    EXPECT_EQ(adapter.SurfacePositions(), mesh->Geometry().DisplayPositions(1));
}

TEST_F(GeometryAdapter, AdmissionChoosesByTheGrid)
{
    const auto mesh = stage.Admit(character.AddMesh("Body", 4));
    EXPECT_NE(dynamic_cast<ZWeightGeomPoly*>(mesh->geometry), nullptr);
    const auto surface = stage.Admit(character.AddSurface("Sheet", 4, 3));
    EXPECT_NE(dynamic_cast<ZWeightGeomNURBS*>(surface->geometry), nullptr);
    EXPECT_EQ(surface->geometry->VertexCount(), 12);
    EXPECT_EQ(surface->vertexStates.GetCount(), 12);
}

TEST_F(GeometryAdapter, RowAndColumnOfASurface)
{
    const auto data = stage.Load(character.AddSurface("Sheet", 4, 3));
    data->geometry->SelectRow(*data, 6, nullptr);
    EXPECT_THAT(data->selectedVertices, ElementsAre(4, 5, 6, 7));
    data->geometry->ActivateRow(*data, 6, nullptr);
    EXPECT_THAT(data->activeVertices, ElementsAre(4, 5, 6, 7));
    data->geometry->DeselectRow(*data, 6, nullptr);
    EXPECT_THAT(data->selectedVertices, testing::IsEmpty());
    data->geometry->SelectColumn(*data, 6, nullptr);
    EXPECT_THAT(data->selectedVertices, ElementsAre(2, 6, 10));
    data->geometry->ActivateColumn(*data, 6, nullptr);
    data->geometry->DeactivateColumn(*data, 6, nullptr);
    EXPECT_THAT(data->activeVertices, testing::IsEmpty());
    data->geometry->DeselectColumn(*data, 6, nullptr);
    EXPECT_THAT(data->vertexStates, testing::Each(0));
}

TEST_F(GeometryAdapter, RowOperationsRecord)
{
    const auto data = stage.Load(character.AddSurface("Sheet", 2, 2));
    TransitionLog log;
    data->geometry->SelectRow(*data, 3, &log);
    data->geometry->DeactivateRow(*data, 3, &log);
    EXPECT_THAT(log.transitions, ElementsAre(TransitionLog::Transition{2, 0, 1}, TransitionLog::Transition{3, 0, 1}));
}

TEST_F(GeometryAdapter, MeshesIgnoreRowsAndColumns)
{
    const auto data = stage.Load(character.AddMesh("Body", 4));
    data->SelectVertex(0, nullptr);
    data->geometry->SelectRow(*data, 1, nullptr);
    data->geometry->SelectColumn(*data, 1, nullptr);
    data->geometry->ActivateRow(*data, 0, nullptr);
    data->geometry->ActivateColumn(*data, 0, nullptr);
    data->geometry->DeselectRow(*data, 0, nullptr);
    data->geometry->DeselectColumn(*data, 0, nullptr);
    data->geometry->DeactivateRow(*data, 0, nullptr);
    data->geometry->DeactivateColumn(*data, 0, nullptr);
    EXPECT_THAT(data->vertexStates, ElementsAre(1, 0, 0, 0));
}

TEST_F(GeometryAdapter, ControlPointsLieOnTheGridPointThatStandsForThem)
{
    ZModelNurbs* const surface = character.AddSurface("Sheet", 4, 3, 9, 7);
    ZWeightGeomNURBS adapter(surface);
    const float* const grid = surface->Geometry().TessellatedPoints(1);
    const float* const points = adapter.SurfacePositions();
    ASSERT_NE(points, nullptr);
    for (int v = 0; v < 3; ++v) {
        for (int u = 0; u < 4; ++u) {
            const float* const source = grid + 4 * ((u * 9) / 4 + ((v * 7) / 3) * 9);
            const float* const point = points + 4 * (v * 4 + u);
            EXPECT_THAT(std::vector<float>(point, point + 4), ElementsAre(source[0], source[1], source[2], 1.0F));
        }
    }
}

TEST_F(GeometryAdapter, SurfaceThatLostItsGridHasNoSurfacePositions)
{
    ZModelNurbs* const surface = character.AddSurface("Sheet", 4, 3);
    ZWeightGeomNURBS adapter(surface);
    surface->SetGrid(0, 0);
    EXPECT_EQ(adapter.SurfacePositions(), nullptr);
    EXPECT_EQ(adapter.VertexCount(), 12);
}

TEST_F(GeometryAdapter, SurfaceWithoutAGridIsWeightedByItsControlPoints)
{
    const auto data = stage.Load(character.AddSurface("Sheet", 4, 3, 0, 0));
    EXPECT_FALSE(data->IsRefused());
    EXPECT_EQ(data->geometry->VertexCount(), 12);
    EXPECT_NE(data->geometry->VertexPositions(), nullptr);
}

TEST_F(GeometryAdapter, SurfacePositionsFollowTheNumberOfControlPoints)
{
    ZModelNurbs* const surface = character.AddSurface("Sheet", 2, 2, 4, 4);
    ZWeightGeomNURBS adapter(surface);
    ASSERT_NE(adapter.SurfacePositions(), nullptr);
    const ZNurbsSurface larger = character.AddSurface("Larger", 5, 4)->GetSurface();
    ASSERT_TRUE(surface->SetSurface(larger, 7, 6));
    EXPECT_EQ(adapter.VertexCount(), 20);
    const float* const grid = surface->Geometry().TessellatedPoints(1);
    const float* const points = adapter.SurfacePositions();
    for (int v = 0; v < 4; ++v) {
        for (int u = 0; u < 5; ++u) {
            const float* const source = grid + 4 * ((u * 7) / 5 + ((v * 6) / 4) * 7);
            const float* const point = points + 4 * (v * 5 + u);
            EXPECT_THAT(std::vector<float>(point, point + 4), ElementsAre(source[0], source[1], source[2], 1.0F));
        }
    }
}

TEST_F(GeometryAdapter, SurfaceWithoutControlPointsHasNoRowsAndColumns)
{
    ZModelNurbs empty("Empty");
    const auto data = stage.Load(character.AddSurface("Sheet", 4, 3));
    for (ZModel* const model : {static_cast<ZModel*>(&empty), static_cast<ZModel*>(nullptr)}) {
        ZWeightGeomNURBS adapter(model);
        EXPECT_EQ(adapter.VertexCount(), 0);
        EXPECT_EQ(adapter.SurfacePositions(), nullptr);
        adapter.SelectRow(*data, 3, nullptr);
        adapter.SelectColumn(*data, 3, nullptr);
    }
    data->geometry->SelectRow(*data, -1, nullptr);
    data->geometry->SelectColumn(*data, -1, nullptr);
    data->geometry->SelectRow(*data, 12, nullptr);
    EXPECT_THAT(data->selectedVertices, testing::IsEmpty());
}

// Drawing.

TEST(EdgeBrightness, DriftsToItsTargetByOnePerCentARedraw)
{
    EXPECT_FLOAT_EQ(ZWeightGeomPoly::NextEdgeBrightness(0.0F, 4.0F), 0.007F);
    EXPECT_FLOAT_EQ(ZWeightGeomPoly::NextEdgeBrightness(0.0F, 3.0F), 0.005F);
    float three = 0.0F;
    float four = 0.0F;
    for (int redraw = 0; redraw < 2000; ++redraw) {
        three = ZWeightGeomPoly::NextEdgeBrightness(three, 3.0F);
        four = ZWeightGeomPoly::NextEdgeBrightness(four, 4.0F);
    }
    EXPECT_NEAR(three, 0.5F, 1e-5);
    EXPECT_NEAR(four, 0.7F, 1e-5);
}

class Overlay : public GeometryAdapter
{
protected:
    void Draw(ZWeightUIModelData& data, float pointSize)
    {
        GlRecorder::Clear();
        data.geometry->Draw(data, pointSize);
        EXPECT_THAT(GlRecorder::Mistakes(), testing::IsEmpty());
        EXPECT_EQ(GlRecorder::PointSize(), 1.0);
    }
    static std::vector<double> PointSizes()
    {
        std::vector<double> sizes;
        for (const GlBatch& batch : GlRecorder::Batches())
            if (batch.mode == 0)
                sizes.push_back(batch.pointSize);
        return sizes;
    }
    static constexpr unsigned kLineLoop = 2;
};

TEST_F(Overlay, MeshDrawsEdgesThenPointsThenActiveThenSelected)
{
    const auto data = stage.Load(character.AddMesh("Body", 3));
    data->vertexColours.Fill(0.5F);
    data->SetVertexState(1, 2);
    data->SetVertexState(2, 1);
    Draw(*data, 2.0F);
    const std::vector<GlBatch>& batches = GlRecorder::Batches();
    ASSERT_EQ(batches.size(), 4U);
    EXPECT_EQ(batches[0].mode, kLineLoop);
    EXPECT_EQ(batches[0].vertices.size(), 3U);
    EXPECT_NEAR(batches[0].vertices[0].colour[0], 0.5 * static_cast<double>(ZWeightGeomPoly::GetEdgeBrightness()),
                1e-6);
    EXPECT_THAT(PointSizes(), ElementsAre(2.0, 10.0, 6.0));
    EXPECT_EQ(batches[1].vertices.size(), 3U);
    EXPECT_EQ(batches[2].vertices.size(), 1U);
    EXPECT_FLOAT_EQ(static_cast<float>(batches[2].vertices[0].colour[0]), ZModelGlobal::SelectionColor()[0]);
    EXPECT_EQ(batches[2].vertices[0].place[0], 1.0);
    EXPECT_EQ(batches[3].vertices.size(), 2U);
}

TEST_F(Overlay, PolygonsEndAtTheComplementedIndex)
{
    ZModelPolymesh mesh("Two");
    const float corners[12] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    mesh.SetGeometry(corners, 4, {0, 1, 2, 2, 3, 0}, {3, 3});
    mesh.MakeSkin(kDeformNormalise);
    const auto data = stage.Load(&mesh);
    Draw(*data, 4.0F);
    const std::vector<GlBatch>& batches = GlRecorder::Batches();
    ASSERT_GE(batches.size(), 2U);
    EXPECT_EQ(batches[0].vertices.size(), 3U);
    EXPECT_EQ(batches[0].vertices[2].place[1], 1.0);
    EXPECT_EQ(batches[1].vertices.size(), 3U);
    EXPECT_EQ(batches[1].vertices[2].place[0], 0.0);
}

TEST_F(Overlay, NothingActiveMeansNoHighlight)
{
    const auto data = stage.Load(character.AddMesh("Body", 3));
    data->SetVertexState(1, 2);
    data->DeactivateVertex(1, nullptr);
    Draw(*data, 2.0F);
    EXPECT_THAT(PointSizes(), ElementsAre(2.0, 6.0));
    data->DeselectVertex(1, nullptr);
    Draw(*data, 4.0F);
    EXPECT_THAT(PointSizes(), ElementsAre(4.0));
}

TEST_F(Overlay, SurfaceDrawsEachControlPointByItself)
{
    const auto data = stage.Load(character.AddSurface("Sheet", 2, 2));
    data->SetVertexState(3, 2);
    Draw(*data, 2.0F);
    EXPECT_THAT(PointSizes(), ElementsAre(2.0, 2.0, 2.0, 2.0, 10.0, 6.0));
    data->noSelectedVertices = 1;
    Draw(*data, 2.0F);
    EXPECT_THAT(PointSizes(), ElementsAre(2.0, 2.0, 2.0, 2.0));
}

TEST_F(Overlay, StandsInTheModelsOwnMatrix)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 3);
    mesh->SetFileTransform(ZgeTranslation({0, 5, 0}));
    const auto data = stage.Load(mesh);
    Draw(*data, 2.0F);
    EXPECT_EQ(GlRecorder::Batches()[0].modelview(3, 1), 5.0);
}

TEST_F(Overlay, ModelThatIsNotLoadedDrawsNothing)
{
    const auto data = stage.Admit(character.AddMesh("Body", 3));
    Draw(*data, 2.0F);
    EXPECT_TRUE(GlRecorder::Batches().empty());
}

TEST_F(Overlay, DataWithoutAModelDrawsNothing)
{
    const auto mesh = stage.Load(character.AddMesh("Body", 3));
    const auto surface = stage.Load(character.AddSurface("Sheet", 2, 2));
    for (ZWeightUIModelData* const data : {mesh.get(), surface.get()}) {
        ZModel* const model = data->model;
        data->model = nullptr;
        Draw(*data, 2.0F);
        EXPECT_TRUE(GlRecorder::Batches().empty());
        data->model = model;
    }
}

TEST_F(Overlay, AMeshThatLostItsVerticesDrawsNothing)
{
    ZModelPolymesh* const mesh = character.AddMesh("Body", 3);
    const auto data = stage.Load(mesh);
    ASSERT_TRUE(mesh->SetGeometry(nullptr, 0, {}, {}));
    Draw(*data, 2.0F);
    EXPECT_TRUE(GlRecorder::Batches().empty());
}

} // namespace
