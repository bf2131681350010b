// SPDX-License-Identifier: MIT
// The geometry adapter of a polygon mesh.
#pragma once

#include "weights/IWeightGeom.h"

class IModelGeometry;
class ZModel;

/// Vertices and normals are those of the mesh as it is deformed now. Does not own the model.
class ZWeightGeomPoly : public IWeightGeom
{
public:
    explicit ZWeightGeomPoly(ZModel* model);
    /// Edges in the vertices' own colours, dimmed; every vertex; active vertices; selected vertices.
    void Draw(const ZWeightUIModelData& data, float pointSize) override;
    int VertexCount() override;
    const float* VertexPositions() override;
    const float* SurfacePositions() override;

    /// The edges' brightness after one more redraw: 1 % of the way to 0.5 (point size 3) or 0.7 (any other).
    static float NextEdgeBrightness(float brightness, float pointSize);
    /// One brightness for all meshes of the process; it drifts from redraw to redraw.
    static float GetEdgeBrightness();

private:
    IModelGeometry* Geometry() const;
    ZModel* m_model;
};
