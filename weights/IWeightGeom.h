// SPDX-License-Identifier: MIT
// The geometry of a model as the weighting data sees it: vertices numbered from 0, whatever the geometry is.
#pragma once

class IVertexTransitionRecorder;
class ZWeightUIModelData;

/// Position arrays hold four floats a vertex (x, y, z, w) in the model's space, belong to the host's geometry (or to
/// the adapter) and stay valid until the geometry changes. Row (U) and column (V) operations act on NURBS surfaces
/// only.
class IWeightGeom
{
public:
    virtual ~IWeightGeom() = default;
    /// Draws the overlay of `data` with immediate-mode OpenGL; vertices that are neither selected nor active have this
    /// point size in pixels.
    virtual void Draw(const ZWeightUIModelData& data, float pointSize) = 0;
    virtual int VertexCount() = 0;
    virtual const float* VertexPositions() = 0;
    /// Unit normals of a mesh; of a NURBS surface, its control points placed on the tessellated surface. May be null.
    virtual const float* SurfacePositions() = 0;
    virtual void ActivateRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo);
    virtual void ActivateColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo);
    virtual void DeactivateRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo);
    virtual void DeactivateColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo);
    virtual void SelectRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo);
    virtual void SelectColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo);
    virtual void DeselectRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo);
    virtual void DeselectColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo);
};
