// SPDX-License-Identifier: MIT
// The polygon mesh as the weighting data sees it, and the drawing of its overlay.
#include "weights/ZWeightGeomPoly.h"

#include "weights/WeightOverlayDrawing.h"
#include "weights/ZWeightUIModelData.h"

#include <GL/gl.h>

namespace {

float s_edgeBrightness = 0.0F;

void DrawVertexDimmed(const float* positions, const float* colours, int vertex, float brightness)
{
    const float* const colour = colours + 4 * vertex;
    glColor3f(colour[0] * brightness, colour[1] * brightness, colour[2] * brightness);
    glVertex3fv(positions + 4 * vertex);
}

/// One closed line a polygon. The last index of a polygon is complemented, so a negative entry ends it and still names
/// its vertex.
void DrawEdges(IModelGeometry& geometry, const float* positions, const float* colours, float brightness)
{
    const int* index = geometry.PolygonIndices(1);
    const int polygonCount = index != nullptr ? geometry.PolygonCount() : 0;
    for (int polygon = 0; polygon < polygonCount; ++polygon) {
        glBegin(GL_LINE_LOOP);
        for (; *index >= 0; ++index)
            DrawVertexDimmed(positions, colours, *index, brightness);
        DrawVertexDimmed(positions, colours, ~*index, brightness);
        ++index;
        glEnd();
    }
}

} // namespace

ZWeightGeomPoly::ZWeightGeomPoly(ZModel* model) : m_model(model) {}

IModelGeometry* ZWeightGeomPoly::Geometry() const
{
    return m_model != nullptr ? static_cast<IModelGeometry*>(m_model->IQuery(kInterfaceModelGeometry, 0)) : nullptr;
}

int ZWeightGeomPoly::VertexCount()
{
    IModelGeometry* const geometry = Geometry();
    return geometry != nullptr ? geometry->VertexCount() : 0;
}

const float* ZWeightGeomPoly::VertexPositions()
{
    IModelGeometry* const geometry = Geometry();
    return geometry != nullptr ? geometry->VertexPositions(1) : nullptr;
}

const float* ZWeightGeomPoly::SurfacePositions()
{
    IModelGeometry* const geometry = Geometry();
    return geometry != nullptr ? geometry->DisplayPositions(1) : nullptr;
}

float ZWeightGeomPoly::NextEdgeBrightness(float brightness, float pointSize)
{
    const double target = pointSize == 3.0F ? 0.5 : 0.7;
    return static_cast<float>(0.01 * target + 0.99 * static_cast<double>(brightness));
}

float ZWeightGeomPoly::GetEdgeBrightness() { return s_edgeBrightness; }

void ZWeightGeomPoly::Draw(const ZWeightUIModelData& data, float pointSize)
{
    IModelGeometry* const geometry = data.model != nullptr ? Geometry() : nullptr;
    const float* const positions = geometry != nullptr ? geometry->VertexPositions(1) : nullptr;
    const int count = geometry != nullptr ? geometry->VertexCount() : 0;
    if (positions == nullptr || data.vertexColours.GetCount() < 4 * count)
        return;
    const float* const colours = data.vertexColours.GetData();

    WeightOverlay_Begin(geometry->GlobalTransform());
    s_edgeBrightness = NextEdgeBrightness(s_edgeBrightness, pointSize);
    DrawEdges(*geometry, positions, colours, s_edgeBrightness);

    glPointSize(pointSize);
    glBegin(GL_POINTS);
    for (int vertex = 0; vertex < count; ++vertex) {
        glColor3fv(colours + 4 * vertex);
        glVertex3fv(positions + 4 * vertex);
    }
    glEnd();

    if (data.noActiveVertices == 0 && data.noSelectedVertices == 0)
        WeightOverlay_DrawActive(data, positions);
    if (data.noSelectedVertices == 0)
        WeightOverlay_DrawSelected(data, positions);
    WeightOverlay_End();
}
