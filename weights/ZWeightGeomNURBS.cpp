// SPDX-License-Identifier: MIT
// The NURBS surface as the weighting data sees it: control points, rows and columns, and the drawing of its overlay.
#include "weights/ZWeightGeomNURBS.h"

#include "weights/WeightOverlayDrawing.h"
#include "weights/ZWeightUIModelData.h"

#include <GL/gl.h>

#include <cstdint>

ZWeightGeomNURBS::ZWeightGeomNURBS(ZModel* model) : m_model(model) {}

ISurface* ZWeightGeomNURBS::Surface() const
{
    return m_model != nullptr ? static_cast<ISurface*>(m_model->IQuery(kInterfaceSurface, 0)) : nullptr;
}

IModelGeometry* ZWeightGeomNURBS::Geometry() const
{
    return m_model != nullptr ? static_cast<IModelGeometry*>(m_model->IQuery(kInterfaceModelGeometry, 0)) : nullptr;
}

int ZWeightGeomNURBS::VertexCount()
{
    ISurface* const surface = Surface();
    return surface != nullptr ? surface->ControlPointCount() : 0;
}

const float* ZWeightGeomNURBS::VertexPositions()
{
    ISurface* const surface = Surface();
    return surface != nullptr ? surface->ControlPoints() : nullptr;
}

const float* ZWeightGeomNURBS::SurfacePositions()
{
    ISurface* const surface = Surface();
    IModelGeometry* const geometry = Geometry();
    if (surface == nullptr || geometry == nullptr)
        return nullptr;
    const int countU = surface->CountU();
    const int countV = surface->CountV();
    if (m_surfacePoints.GetCount() / 4 != countU * countV) {
        m_surfacePoints.RemoveAll();
        for (int i = 0; i < countU * countV; ++i)
            for (const float value : {1.0F, 0.0F, 0.0F, 1.0F})
                m_surfacePoints.Add(value);
    }
    const std::int64_t width = geometry->TessellationWidth();
    const std::int64_t height = geometry->TessellationHeight();
    const float* const grid = width * height != 0 ? geometry->TessellatedPoints(1) : nullptr;
    if (grid == nullptr)
        return nullptr;
    float* target = m_surfacePoints.GetData();
    for (int v = 0; v < countV; ++v) {
        const std::int64_t row = v * height / countV;
        for (int u = 0; u < countU; ++u, target += 4) {
            const float* const source = grid + 4 * (u * width / countU + row * width);
            target[0] = source[0];
            target[1] = source[1];
            target[2] = source[2];
        }
    }
    return m_surfacePoints.GetData();
}

void ZWeightGeomNURBS::ForRow(Transition transition, ZWeightUIModelData& data, int vertex,
                              IVertexTransitionRecorder* undo) const
{
    ISurface* const surface = Surface();
    const int countU = surface != nullptr ? surface->CountU() : 0;
    if (countU <= 0 || vertex < 0)
        return;
    const int first = vertex - vertex % countU;
    for (int u = 0; u < countU; ++u)
        (data.*transition)(first + u, undo);
}

void ZWeightGeomNURBS::ForColumn(Transition transition, ZWeightUIModelData& data, int vertex,
                                 IVertexTransitionRecorder* undo) const
{
    ISurface* const surface = Surface();
    const int countU = surface != nullptr ? surface->CountU() : 0;
    if (countU <= 0 || vertex < 0)
        return;
    const int countV = surface->CountV();
    for (int v = 0; v < countV; ++v)
        (data.*transition)(vertex % countU + v * countU, undo);
}

void ZWeightGeomNURBS::ActivateRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo)
{
    ForRow(&ZWeightUIModelData::ActivateVertex, data, vertex, undo);
}
void ZWeightGeomNURBS::ActivateColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo)
{
    ForColumn(&ZWeightUIModelData::ActivateVertex, data, vertex, undo);
}
void ZWeightGeomNURBS::DeactivateRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo)
{
    ForRow(&ZWeightUIModelData::DeactivateVertex, data, vertex, undo);
}
void ZWeightGeomNURBS::DeactivateColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo)
{
    ForColumn(&ZWeightUIModelData::DeactivateVertex, data, vertex, undo);
}
void ZWeightGeomNURBS::SelectRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo)
{
    ForRow(&ZWeightUIModelData::SelectVertex, data, vertex, undo);
}
void ZWeightGeomNURBS::SelectColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo)
{
    ForColumn(&ZWeightUIModelData::SelectVertex, data, vertex, undo);
}
void ZWeightGeomNURBS::DeselectRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo)
{
    ForRow(&ZWeightUIModelData::DeselectVertex, data, vertex, undo);
}
void ZWeightGeomNURBS::DeselectColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo)
{
    ForColumn(&ZWeightUIModelData::DeselectVertex, data, vertex, undo);
}

void ZWeightGeomNURBS::Draw(const ZWeightUIModelData& data, float pointSize)
{
    IModelGeometry* const geometry = data.model != nullptr ? Geometry() : nullptr;
    const float* const positions = VertexPositions();
    const int count = VertexCount();
    if (geometry == nullptr || positions == nullptr || data.vertexColours.GetCount() < 4 * count)
        return;
    const float* const colours = data.vertexColours.GetData();

    WeightOverlay_Begin(geometry->GlobalTransform());
    glPointSize(pointSize);
    for (int vertex = 0; vertex < count; ++vertex) {
        glBegin(GL_POINTS);
        glColor3fv(colours + 4 * vertex);
        glVertex3fv(positions + 4 * vertex);
        glEnd();
    }
    if (data.noSelectedVertices == 0) {
        if (data.noActiveVertices == 0)
            WeightOverlay_DrawActive(data, positions);
        WeightOverlay_DrawSelected(data, positions);
    }
    WeightOverlay_End();
}
