// SPDX-License-Identifier: MIT
// The buffers of one mesh or surface in one OpenGL context.
#pragma once

#include "Gl.h"
#include "PictureBuffers.h"
#include "zmodel/ZGeometryModels.h"

#include <cstdint>
#include <vector>

/// Buffers that follow a model: written again only when what they show has changed. Bring up to date and draw with the
/// context current; Free with it, too. Destroying without Free leaves the names to the context.
class MeshBuffers
{
public:
    explicit MeshBuffers(ZModelGeometryBase& model);
    MeshBuffers(const MeshBuffers&) = delete;
    MeshBuffers& operator=(const MeshBuffers&) = delete;

    bool IsOf(const ZModelGeometryBase* model) const;
    /// The model is still there.
    bool IsAlive() const { return m_handle.IsValid(); }
    void BringUpToDate(bool withEdges);
    void Free();

    /// Filled triangles with their normals, coloured by the weights of the skin's display value while one is set.
    void DrawFaces() const;
    /// The same with the pictures of the model's appearance; null when it shows none.
    const PictureBuffers* Pictures() { return m_pictures.BringUpToDate(*m_model) ? &m_pictures : nullptr; }
    /// All edges of the polygons, or the lines of the grid.
    void DrawEdges() const;
    /// Polygons of one or two vertices, which have no face.
    void DrawLoose() const;
    bool HasNormals() const { return m_normals.name != 0; }
    bool HasColours() const { return m_colours.name != 0; }

private:
    struct Buffer
    {
        GLuint name = 0;
        GLsizei count = 0; ///< of indices
        void Write(GLenum target, const void* data, size_t bytes, GLenum usage);
        void Free();
    };
    struct Shape
    {
        int points = 0, polygons = 0, width = 0, height = 0;
        const int* indices = nullptr;
        friend bool operator==(const Shape&, const Shape&) = default;
    };

    Shape CurrentShape() const;
    void WritePoints();
    void WriteColours();
    void WriteFaces();
    void WriteEdges();
    void BindPoints() const;
    void DrawIndices(const Buffer& indices, GLenum mode) const;

    ZModelGeometryBase* m_model;
    HdlZPlug m_handle;
    Shape m_shape;
    std::uint64_t m_deformVersion = 0, m_skinVersion = 0;
    int m_shownLink = -1;
    bool m_known = false, m_edgesKnown = false;
    PictureBuffers m_pictures;
    Buffer m_points, m_normals, m_colours, m_faces, m_edges, m_looseLines, m_loosePoints;
};
