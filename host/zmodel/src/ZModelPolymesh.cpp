// SPDX-License-Identifier: MIT
// Polygon meshes.
#include "SurfaceNormals.h"
#include "zmodel/ZGeometryModels.h"

namespace {
/// Normals about a vertex touch its polygons and their corners: worth it while no more than this part has moved.
constexpr size_t kFewVertices = 16;
} // namespace

struct ZModelPolymesh::Mesh
{
    std::vector<int> polygons; ///< the last index of each complemented
    int polygonCount = 0;
    bool surfaceKnown = false; ///< `surface` has these polygons
    SurfaceNormals surface;
    std::vector<float> undeformedNormals; ///< empty until asked for
    std::vector<float> normals;
    std::uint64_t normalsVersion = 0; ///< of the deformed positions that `normals` belong to
    std::uint64_t normalsMark = 0;
    double normalsSide = 1;         ///< that `normals` were computed for
    bool surfaceIsDeformed = false; ///< `surface` was last asked for `normals`

    void ComputeNormals(const float* points, int vertexCount, double side, std::vector<float>& values);
};

void ZModelPolymesh::Mesh::ComputeNormals(const float* points, int vertexCount, double side, std::vector<float>& values)
{
    if (!surfaceKnown)
        surface.SetPolygons(vertexCount, polygons);
    surfaceKnown = true;
    values.resize(4 * static_cast<size_t>(vertexCount));
    surface.Compute(points, side, values.data());
}

ZModelPolymesh::ZModelPolymesh(const char* name)
    : ZModelGeometryBase(name, ZModelKind::Polymesh), m_mesh(std::make_unique<Mesh>())
{
}

ZModelPolymesh::~ZModelPolymesh() = default;

bool ZModelPolymesh::SetGeometry(const float* positions, int vertexCount, const std::vector<int>& polygons,
                                 const std::vector<int>& sizes)
{
    if (vertexCount < 0)
        return false;
    for (const int vertex : polygons)
        if (vertex < 0 || vertex >= vertexCount)
            return false;
    std::vector<int> complemented = polygons;
    size_t end = 0;
    for (const int size : sizes) {
        if (size < 1 || static_cast<size_t>(size) > polygons.size() - end)
            return false;
        end += static_cast<size_t>(size);
        complemented[end - 1] = ~complemented[end - 1];
    }
    if (end != polygons.size())
        return false;
    SetBasePositions(positions, vertexCount);
    m_mesh->polygons = std::move(complemented);
    m_mesh->polygonCount = static_cast<int>(sizes.size());
    m_mesh->surfaceKnown = false;
    m_mesh->surfaceIsDeformed = false;
    m_mesh->undeformedNormals.clear();
    m_mesh->normals.clear();
    return true;
}

const std::vector<int>& ZModelPolymesh::GetPolygonIndices() const { return m_mesh->polygons; }

int ZModelPolymesh::PolygonCount() { return m_mesh->polygonCount; }

const int* ZModelPolymesh::PolygonIndices(int) { return m_mesh->polygons.empty() ? nullptr : m_mesh->polygons.data(); }

const float* ZModelPolymesh::DisplayPositions(int deformed)
{
    const float* const points = VertexPositions(deformed);
    if (points == nullptr)
        return nullptr;
    Mesh& mesh = *m_mesh;
    if (deformed == 0) {
        if (mesh.undeformedNormals.empty()) {
            mesh.ComputeNormals(points, VertexCount(), 1, mesh.undeformedNormals);
            mesh.surfaceIsDeformed = false;
        }
        return mesh.undeformedNormals.data();
    }
    if (mesh.normals.empty() || mesh.normalsVersion != GetDeformVersion()) {
        const double side = IsDeformationMirrored() ? -1 : 1;
        std::vector<int> moved;
        if (mesh.surfaceIsDeformed && side == mesh.normalsSide && GetDeformedSince(mesh.normalsMark, moved) &&
            moved.size() <= static_cast<size_t>(VertexCount()) / kFewVertices)
            mesh.surface.ComputeAbout(moved, points, side, mesh.normals.data());
        else
            mesh.ComputeNormals(points, VertexCount(), side, mesh.normals);
        mesh.surfaceIsDeformed = true;
        mesh.normalsSide = side;
        mesh.normalsVersion = GetDeformVersion();
        mesh.normalsMark = GetDeformMark();
    }
    return mesh.normals.data();
}
