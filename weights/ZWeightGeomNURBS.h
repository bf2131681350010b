// SPDX-License-Identifier: MIT
// The geometry adapter of a NURBS surface, whose vertices are its control points.
#pragma once

#include "weights/IWeightGeom.h"
#include "zbaselib/ZArray.h"

class IModelGeometry;
class ISurface;
class ZModel;

/// Control points run U fastest: vertex = v * nU + u. A row is every u of one v, a column every v of one u. Counts are
/// read anew each time; a surface without control points has neither rows nor columns. Does not own the model.
class ZWeightGeomNURBS : public IWeightGeom
{
public:
    explicit ZWeightGeomNURBS(ZModel* model);
    /// Every control point; active ones; selected ones. Without edges.
    void Draw(const ZWeightUIModelData& data, float pointSize) override;
    int VertexCount() override;
    const float* VertexPositions() override;
    /// Each control point at the grid point that stands for it; null without a grid.
    const float* SurfacePositions() override;
    void ActivateRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo) override;
    void ActivateColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo) override;
    void DeactivateRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo) override;
    void DeactivateColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo) override;
    void SelectRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo) override;
    void SelectColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo) override;
    void DeselectRow(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo) override;
    void DeselectColumn(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo) override;

private:
    using Transition = void (ZWeightUIModelData::*)(int vertex, IVertexTransitionRecorder* undo);
    void ForRow(Transition transition, ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo) const;
    void ForColumn(Transition transition, ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo) const;
    ISurface* Surface() const;
    IModelGeometry* Geometry() const;

    ZModel* m_model;
    ZArrayTemplate<float, 16> m_surfacePoints; ///< four floats a control point
};
