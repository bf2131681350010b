// SPDX-License-Identifier: MIT
#include "MeshBuffers.h"

#include "HeatColour.h"

#include <algorithm>

namespace {
constexpr GLsizei kPointStride = 4 * sizeof(float);

/// Calls `polygon(vertices, count)` for each polygon of the list, whose last vertex is complemented.
template <class Polygon> void ForEachPolygon(const int* index, int polygons, Polygon polygon)
{
    std::vector<GLuint> vertices;
    for (; polygons > 0; --polygons) {
        vertices.clear();
        for (; *index >= 0; ++index)
            vertices.push_back(static_cast<GLuint>(*index));
        vertices.push_back(static_cast<GLuint>(~*index++));
        polygon(vertices);
    }
}

std::vector<GLuint> GridFaces(int width, int height)
{
    std::vector<GLuint> faces;
    for (int row = 0; row + 1 < height; ++row) {
        for (int column = 0; column + 1 < width; ++column) {
            const auto corner = static_cast<GLuint>(row * width + column), above = corner + static_cast<GLuint>(width);
            faces.insert(faces.end(), {corner, corner + 1, above + 1, corner, above + 1, above});
        }
    }
    return faces;
}

std::vector<GLuint> GridEdges(int width, int height)
{
    std::vector<GLuint> edges;
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const auto corner = static_cast<GLuint>(row * width + column);
            if (column + 1 < width)
                edges.insert(edges.end(), {corner, corner + 1});
            if (row + 1 < height)
                edges.insert(edges.end(), {corner, corner + static_cast<GLuint>(width)});
        }
    }
    return edges;
}

/// Each edge once, however many polygons share it.
std::vector<GLuint> PolygonEdges(const int* indices, int polygons)
{
    std::vector<std::uint64_t> pairs;
    ForEachPolygon(indices, polygons, [&pairs](const std::vector<GLuint>& vertices) {
        for (size_t i = 0; vertices.size() > 2 && i < vertices.size(); ++i) {
            const std::uint64_t a = vertices[i], b = vertices[(i + 1) % vertices.size()];
            pairs.push_back(std::min(a, b) << 32 | std::max(a, b));
        }
    });
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    std::vector<GLuint> edges;
    edges.reserve(pairs.size() * 2);
    for (const std::uint64_t pair : pairs) {
        edges.push_back(static_cast<GLuint>(pair >> 32));
        edges.push_back(static_cast<GLuint>(pair));
    }
    return edges;
}
} // namespace

MeshBuffers::MeshBuffers(ZModelGeometryBase& model) : m_model(&model) { m_handle.Set(&model); }

bool MeshBuffers::IsOf(const ZModelGeometryBase* model) const { return m_handle.IsValid() && m_model == model; }

void MeshBuffers::Buffer::Write(GLenum target, const void* data, size_t bytes, GLenum usage)
{
    if (bytes == 0) {
        Free();
        return;
    }
    if (name == 0)
        glGenBuffers(1, &name);
    glBindBuffer(target, name);
    glBufferData(target, static_cast<GLsizeiptr>(bytes), data, usage);
    glBindBuffer(target, 0);
    count = static_cast<GLsizei>(bytes / sizeof(GLuint));
}

void MeshBuffers::Buffer::Free()
{
    if (name != 0)
        glDeleteBuffers(1, &name);
    name = 0;
    count = 0;
}

void MeshBuffers::Free()
{
    for (Buffer* buffer : {&m_points, &m_normals, &m_colours, &m_faces, &m_edges, &m_looseLines, &m_loosePoints})
        buffer->Free();
    m_pictures.Free();
    m_known = m_edgesKnown = false;
}

MeshBuffers::Shape MeshBuffers::CurrentShape() const
{
    IModelGeometry& geometry = m_model->Geometry();
    Shape shape;
    if (m_model->GetKind() == ZModelKind::Nurbs) {
        const float* const points = geometry.TessellatedPoints(1);
        shape.width = points != nullptr ? geometry.TessellationWidth() : 0;
        shape.height = points != nullptr ? geometry.TessellationHeight() : 0;
        shape.points = shape.width * shape.height;
    } else {
        shape.points = geometry.VertexPositions(1) != nullptr ? geometry.VertexCount() : 0;
        shape.polygons = shape.points > 0 ? geometry.PolygonCount() : 0;
        shape.indices = geometry.PolygonIndices(1);
    }
    return shape;
}

void MeshBuffers::BringUpToDate(bool withEdges)
{
    const Shape shape = CurrentShape(); // evaluates the deformation
    const bool newShape = !m_known || shape != m_shape;
    m_shape = shape;
    if (newShape || m_deformVersion != m_model->GetDeformVersion()) {
        WritePoints();
        m_deformVersion = m_model->GetDeformVersion();
    }
    if (newShape) {
        WriteFaces();
        m_edgesKnown = false;
    }
    if (withEdges && !m_edgesKnown)
        WriteEdges();
    ZSkin* const skin = m_model->GetSkin();
    const int link = skin != nullptr ? HeatColour_ShownLink(*skin) : -1;
    if (newShape || link != m_shownLink || (link >= 0 && skin->GetVersion() != m_skinVersion)) {
        m_shownLink = link;
        m_skinVersion = link >= 0 ? skin->GetVersion() : 0;
        WriteColours();
    }
    m_known = true;
}

void MeshBuffers::WritePoints()
{
    IModelGeometry& geometry = m_model->Geometry();
    const bool grid = m_model->GetKind() == ZModelKind::Nurbs;
    const float* const points = grid ? geometry.TessellatedPoints(1) : geometry.VertexPositions(1);
    const float* normals = nullptr;
    if (m_shape.points > 0)
        normals = grid ? static_cast<ZModelNurbs*>(m_model)->TessellatedNormals(1) : geometry.DisplayPositions(1);
    const size_t bytes = static_cast<size_t>(m_shape.points) * kPointStride;
    m_points.Write(GL_ARRAY_BUFFER, points, points != nullptr ? bytes : 0, GL_DYNAMIC_DRAW);
    m_normals.Write(GL_ARRAY_BUFFER, normals, normals != nullptr ? bytes : 0, GL_DYNAMIC_DRAW);
}

void MeshBuffers::WriteColours()
{
    const std::vector<std::uint8_t> colours =
        m_shownLink >= 0 ? HeatColour_Table(*m_model, m_shownLink, m_shape.width, m_shape.height)
                         : std::vector<std::uint8_t>();
    const bool fits = colours.size() == 4 * static_cast<size_t>(m_shape.points);
    m_colours.Write(GL_ARRAY_BUFFER, colours.data(), fits ? colours.size() : 0, GL_DYNAMIC_DRAW);
}

void MeshBuffers::WriteFaces()
{
    std::vector<GLuint> faces, lines, points;
    if (m_model->GetKind() == ZModelKind::Nurbs) {
        faces = GridFaces(m_shape.width, m_shape.height);
    } else if (m_shape.indices != nullptr) {
        ForEachPolygon(m_shape.indices, m_shape.polygons, [&](const std::vector<GLuint>& vertices) {
            if (vertices.size() == 1)
                points.push_back(vertices[0]);
            else if (vertices.size() == 2)
                lines.insert(lines.end(), vertices.begin(), vertices.end());
            for (size_t i = 2; i < vertices.size(); ++i)
                faces.insert(faces.end(), {vertices[0], vertices[i - 1], vertices[i]});
        });
    }
    const auto write = [](Buffer& buffer, const std::vector<GLuint>& indices) {
        buffer.Write(GL_ELEMENT_ARRAY_BUFFER, indices.data(), indices.size() * sizeof(GLuint), GL_STATIC_DRAW);
    };
    write(m_faces, faces);
    write(m_looseLines, lines);
    write(m_loosePoints, points);
}

void MeshBuffers::WriteEdges()
{
    std::vector<GLuint> edges;
    if (m_model->GetKind() == ZModelKind::Nurbs)
        edges = GridEdges(m_shape.width, m_shape.height);
    else if (m_shape.indices != nullptr)
        edges = PolygonEdges(m_shape.indices, m_shape.polygons);
    m_edges.Write(GL_ELEMENT_ARRAY_BUFFER, edges.data(), edges.size() * sizeof(GLuint), GL_STATIC_DRAW);
    m_edgesKnown = true;
}

void MeshBuffers::BindPoints() const
{
    glBindBuffer(GL_ARRAY_BUFFER, m_points.name);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, kPointStride, nullptr);
}

void MeshBuffers::DrawIndices(const Buffer& indices, GLenum mode) const
{
    if (m_points.name == 0 || indices.name == 0)
        return;
    BindPoints();
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indices.name);
    glDrawElements(mode, indices.count, GL_UNSIGNED_INT, nullptr);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glDisableClientState(GL_VERTEX_ARRAY);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void MeshBuffers::DrawFaces() const
{
    if (HasNormals()) {
        glBindBuffer(GL_ARRAY_BUFFER, m_normals.name);
        glEnableClientState(GL_NORMAL_ARRAY);
        glNormalPointer(GL_FLOAT, kPointStride, nullptr);
    }
    if (HasColours()) {
        glBindBuffer(GL_ARRAY_BUFFER, m_colours.name);
        glEnableClientState(GL_COLOR_ARRAY);
        glColorPointer(4, GL_UNSIGNED_BYTE, 0, nullptr);
    }
    DrawIndices(m_faces, GL_TRIANGLES);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
}

void MeshBuffers::DrawEdges() const { DrawIndices(m_edges, GL_LINES); }

void MeshBuffers::DrawLoose() const
{
    DrawIndices(m_looseLines, GL_LINES);
    DrawIndices(m_loosePoints, GL_POINTS);
}
