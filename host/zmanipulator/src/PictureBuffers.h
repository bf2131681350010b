// SPDX-License-Identifier: MIT
// The buffers and textures of one mesh that shows pictures, in one OpenGL context.
#pragma once

#include "Gl.h"
#include "zmodel/ZGeometryModels.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

/// A vertex at which two points of a picture meet is drawn twice, once with each; else as MeshBuffers, of which it is a
/// part: follows the model, written again only when what it shows has changed. Bring up to date, draw and Free with the
/// context current.
class PictureBuffers
{
public:
    /// False when the model shows no picture, or one that does not fit its triangles.
    bool BringUpToDate(ZModelGeometryBase& model);
    /// Draws the triangles run by run; `setColour` gets each run's own colour first.
    void Draw(const std::function<void(const float (&colour)[3])>& setColour) const;
    void Free();

private:
    struct Run
    {
        GLuint texture = 0; ///< 0: none
        float colour[3] = {1, 1, 1};
        std::size_t first = 0; ///< of the indices
        GLsizei count = 0;
    };

    bool Fits(ZModelGeometryBase& model) const;
    void WriteShape(ZModelGeometryBase& model);
    void WriteTextures();
    void WritePoints(ZModelGeometryBase& model);

    std::shared_ptr<const ZAppearance> m_appearance;
    std::vector<int> m_vertices; ///< by drawn vertex: the model's
    std::vector<Run> m_runs;
    std::vector<GLuint> m_textures;
    GLuint m_buffers[3] = {0, 0, 0}; ///< points with normals, texture coordinates, indices
    std::uint64_t m_deformVersion = 0;
    bool m_fits = false, m_pointsKnown = false;
};
