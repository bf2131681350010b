// SPDX-License-Identifier: MIT
#include "PictureBuffers.h"

#include <algorithm>
#include <map>

namespace {

constexpr GLsizei kPointStride = 6 * sizeof(float); // place, normal
constexpr int kFloatsPerPoint = 4;                  // of the model's arrays

/// The vertices to draw: each pair of a vertex and a point of the picture once. The pairs of one vertex are chained, so
/// that a corner looks at those few only.
struct DrawnVertices
{
    std::vector<int> vertices; ///< of the model
    std::vector<float> texCoords;
    std::vector<GLuint> corners;

    DrawnVertices(const int* indices, int polygons, int vertexCount, const std::vector<float>& points)
        : m_first(static_cast<size_t>(vertexCount), -1)
    {
        corners.reserve(3 * static_cast<size_t>(polygons));
        for (size_t corner = 0; corner < 3 * static_cast<size_t>(polygons); ++corner) {
            const int index = indices[corner];
            corners.push_back(static_cast<GLuint>(Find(index < 0 ? ~index : index, &points[2 * corner])));
        }
    }

private:
    int Find(int vertex, const float* point)
    {
        int& first = m_first[static_cast<size_t>(vertex)];
        for (int drawn = first; drawn >= 0; drawn = m_next[static_cast<size_t>(drawn)])
            if (std::equal(point, point + 2, &texCoords[2 * static_cast<size_t>(drawn)]))
                return drawn;
        m_next.push_back(first);
        first = static_cast<int>(vertices.size());
        vertices.push_back(vertex);
        texCoords.insert(texCoords.end(), point, point + 2);
        return first;
    }
    std::vector<int> m_first, m_next;
};

void Upload(GLuint name, GLenum target, const void* data, size_t bytes, GLenum usage)
{
    glBindBuffer(target, name);
    glBufferData(target, static_cast<GLsizeiptr>(bytes), data, usage);
    glBindBuffer(target, 0);
}

GLuint MakeTexture(const ZPicture& picture)
{
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, GL_TRUE);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, picture.width, picture.height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 picture.rgba.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return name;
}

} // namespace

bool PictureBuffers::Fits(ZModelGeometryBase& model) const
{
    const auto polygons = static_cast<size_t>(model.Geometry().PolygonCount());
    if (model.GetKind() != ZModelKind::Polymesh || m_appearance->texCoords.size() != 6 * polygons)
        return false;
    const int* const indices = model.Geometry().PolygonIndices(1);
    for (size_t polygon = 0; polygon < polygons; ++polygon)
        if (indices[3 * polygon] < 0 || indices[3 * polygon + 1] < 0 || indices[3 * polygon + 2] >= 0)
            return false; // no triangle
    return std::all_of(m_appearance->runs.begin(), m_appearance->runs.end(), [polygons](const ZMaterialRun& run) {
        return run.firstTriangle <= polygons && run.triangleCount <= polygons - run.firstTriangle;
    });
}

bool PictureBuffers::BringUpToDate(ZModelGeometryBase& model)
{
    if (m_appearance != model.GetAppearance()) {
        Free();
        m_appearance = model.GetAppearance();
        m_fits = m_appearance != nullptr && Fits(model);
        if (m_fits) {
            WriteShape(model);
            WriteTextures();
        }
    }
    if (!m_fits)
        return false;
    static_cast<void>(model.Geometry().VertexPositions(1)); // evaluates the deformation
    if (!m_pointsKnown || m_deformVersion != model.GetDeformVersion()) {
        WritePoints(model);
        m_pointsKnown = true;
        m_deformVersion = model.GetDeformVersion();
    }
    return true;
}

void PictureBuffers::WriteShape(ZModelGeometryBase& model)
{
    IModelGeometry& geometry = model.Geometry();
    DrawnVertices drawn(geometry.PolygonIndices(1), geometry.PolygonCount(), geometry.VertexCount(),
                        m_appearance->texCoords);
    glGenBuffers(3, m_buffers);
    Upload(m_buffers[1], GL_ARRAY_BUFFER, drawn.texCoords.data(), drawn.texCoords.size() * sizeof(float),
           GL_STATIC_DRAW);
    Upload(m_buffers[2], GL_ELEMENT_ARRAY_BUFFER, drawn.corners.data(), drawn.corners.size() * sizeof(GLuint),
           GL_STATIC_DRAW);
    m_vertices = std::move(drawn.vertices);
}

void PictureBuffers::WriteTextures()
{
    std::map<const ZPicture*, GLuint> known;
    for (const ZMaterialRun& run : m_appearance->runs) {
        Run drawn;
        std::copy_n(run.colour, 3, drawn.colour);
        drawn.first = 3 * run.firstTriangle;
        drawn.count = static_cast<GLsizei>(3 * run.triangleCount);
        if (run.picture != nullptr) {
            GLuint& texture = known[run.picture.get()];
            if (texture == 0) {
                texture = MakeTexture(*run.picture);
                m_textures.push_back(texture);
            }
            drawn.texture = texture;
        }
        m_runs.push_back(drawn);
    }
}

void PictureBuffers::WritePoints(ZModelGeometryBase& model)
{
    const float* const places = model.Geometry().VertexPositions(1);
    const float* const normals = model.Geometry().DisplayPositions(1);
    std::vector<float> points;
    points.reserve(6 * m_vertices.size());
    for (const int vertex : m_vertices) {
        const float* const place = places + kFloatsPerPoint * static_cast<size_t>(vertex);
        const float* const normal = normals + kFloatsPerPoint * static_cast<size_t>(vertex);
        points.insert(points.end(), {place[0], place[1], place[2], normal[0], normal[1], normal[2]});
    }
    Upload(m_buffers[0], GL_ARRAY_BUFFER, points.data(), points.size() * sizeof(float), GL_DYNAMIC_DRAW);
}

void PictureBuffers::Draw(const std::function<void(const float (&colour)[3])>& setColour) const
{
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glBindBuffer(GL_ARRAY_BUFFER, m_buffers[0]);
    glVertexPointer(3, GL_FLOAT, kPointStride, nullptr);
    glNormalPointer(GL_FLOAT, kPointStride, reinterpret_cast<const void*>(3 * sizeof(float)));
    glBindBuffer(GL_ARRAY_BUFFER, m_buffers[1]);
    glTexCoordPointer(2, GL_FLOAT, 0, nullptr);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[2]);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    for (const Run& run : m_runs) {
        setColour(run.colour);
        if (run.texture != 0) {
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, run.texture);
        }
        glDrawElements(GL_TRIANGLES, run.count, GL_UNSIGNED_INT,
                       reinterpret_cast<const void*>(run.first * sizeof(GLuint)));
        glDisable(GL_TEXTURE_2D);
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}

void PictureBuffers::Free()
{
    if (!m_textures.empty())
        glDeleteTextures(static_cast<GLsizei>(m_textures.size()), m_textures.data());
    if (m_buffers[0] != 0)
        glDeleteBuffers(3, m_buffers);
    std::fill_n(m_buffers, 3, 0U);
    m_textures.clear();
    m_runs.clear();
    m_vertices.clear();
    m_appearance.reset();
    m_fits = m_pointsKnown = false;
}
