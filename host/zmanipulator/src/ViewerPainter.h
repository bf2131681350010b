// SPDX-License-Identifier: MIT
// Draws one frame of a viewer.
#pragma once

#include "FloorGrid.h"
#include "MeshBuffers.h"
#include "zmanipulator/ZViewer.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

/// What a viewer keeps in one OpenGL context. A buffer with a stamp of its own tells whether the context that is
/// current is still the one that holds the others.
class PainterContext
{
public:
    PainterContext();
    bool IsCurrent() const;
    /// The buffers of a model, up to date.
    MeshBuffers& BuffersOf(ZModelGeometryBase& model, bool withEdges);
    /// Drops the buffers of models that are gone.
    void FreeForGoneModels();
    void DrawFloor(const ZFloorGrid& floor);
    /// A buffer whose contents do not outlive the frame.
    GLuint GetScratch() const { return m_scratch; }
    void Free();

private:
    std::uint64_t m_stamp = 0;
    GLuint m_stampBuffer = 0, m_floorBuffer = 0, m_scratch = 0;
    ZFloorGrid m_floor;
    GLsizei m_floorPoints = 0;
    std::unordered_map<const ZModel*, std::unique_ptr<MeshBuffers>> m_meshes;
};

struct ZViewer::Painter
{
    Painter() = default;
    ~Painter();
    Painter(const Painter&) = delete;
    Painter& operator=(const Painter&) = delete;

    void SetFloor(const ZFloorGrid& floor) { m_floor = floor; }
    void Paint(ZViewer& viewer);

private:
    PainterContext& CurrentContext();
    void PaintBackground() const;
    void LoadCamera(ZCamera& camera) const;
    void PaintModels(ZViewer& viewer, PainterContext& context) const;
    void PaintModel(const ZViewer& viewer, ZModelGeometryBase& model, MeshBuffers& buffers) const;
    void PaintFaces(const ZViewer& viewer, bool selected, MeshBuffers& buffers) const;
    void PaintBones(ZViewer& viewer, PainterContext& context) const;
    void PaintPickRect(const ZViewer& viewer) const;
    void MakeOpaque() const;

    ZFloorGrid m_floor;
    std::vector<std::unique_ptr<PainterContext>> m_contexts;
};
