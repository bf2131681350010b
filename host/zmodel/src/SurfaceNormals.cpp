// SPDX-License-Identifier: MIT
// Area vectors polygon by polygon, then gathered vertex by vertex: both passes can be cut anywhere without changing a
// sum.
#include "SurfaceNormals.h"

#include "TouchedLog.h"
#include "WorkerPool.h"

#include <cmath>
#include <cstddef>

namespace {

constexpr int kParallelGrain = 8192;

} // namespace

void StoreUnitNormal(double x, double y, double z, float* normal)
{
    const double length = std::sqrt(x * x + y * y + z * z);
    const bool unit = length > 0 && std::isfinite(length);
    normal[0] = unit ? static_cast<float>(x / length) : 0.0F;
    normal[1] = unit ? static_cast<float>(y / length) : 0.0F;
    normal[2] = unit ? static_cast<float>(z / length) : 1.0F;
    normal[3] = 0.0F;
}

void SurfaceNormals::SetPolygons(int vertexCount, const std::vector<int>& polygons)
{
    m_vertexCount = vertexCount;
    m_corners.clear();
    m_corners.reserve(polygons.size());
    m_firstCorner.assign(1, 0);
    m_firstPolygon.assign(static_cast<size_t>(vertexCount) + 1, 0);
    for (const int index : polygons) {
        const int vertex = index < 0 ? ~index : index;
        m_corners.push_back(vertex);
        ++m_firstPolygon[static_cast<size_t>(vertex) + 1];
        if (index < 0)
            m_firstCorner.push_back(static_cast<int>(m_corners.size()));
    }
    for (size_t i = 1; i < m_firstPolygon.size(); ++i)
        m_firstPolygon[i] += m_firstPolygon[i - 1];
    m_polygons.resize(m_corners.size());
    std::vector<int> next(m_firstPolygon.begin(), m_firstPolygon.end() - 1);
    for (size_t polygon = 0; polygon + 1 < m_firstCorner.size(); ++polygon)
        for (int corner = m_firstCorner[polygon]; corner < m_firstCorner[polygon + 1]; ++corner)
            m_polygons[static_cast<size_t>(next[static_cast<size_t>(m_corners[static_cast<size_t>(corner)])]++)] =
                static_cast<int>(polygon);
    m_areaVectors.resize(4 * (m_firstCorner.size() - 1));
}

void SurfaceNormals::Compute(const float* points, double side, float* normals)
{
    const int polygonCount = static_cast<int>(m_firstCorner.size()) - 1;
    ParallelFor(polygonCount, kParallelGrain, [&](int begin, int end) {
        for (int polygon = begin; polygon < end; ++polygon)
            ComputeArea(polygon, points);
    });
    ParallelFor(m_vertexCount, kParallelGrain, [&](int begin, int end) {
        for (int vertex = begin; vertex < end; ++vertex)
            Gather(vertex, side, normals);
    });
}

void SurfaceNormals::ComputeAbout(const std::vector<int>& moved, const float* points, double side, float* normals)
{
    std::vector<int> polygons;
    for (const int vertex : moved)
        polygons.insert(polygons.end(), m_polygons.begin() + m_firstPolygon[static_cast<size_t>(vertex)],
                        m_polygons.begin() + m_firstPolygon[static_cast<size_t>(vertex) + 1]);
    SortUnique(polygons);
    std::vector<int> vertices;
    for (const int polygon : polygons) {
        ComputeArea(polygon, points);
        vertices.insert(vertices.end(), m_corners.begin() + m_firstCorner[static_cast<size_t>(polygon)],
                        m_corners.begin() + m_firstCorner[static_cast<size_t>(polygon) + 1]);
    }
    SortUnique(vertices);
    for (const int vertex : vertices)
        Gather(vertex, side, normals);
}

void SurfaceNormals::ComputeArea(int polygon, const float* points)
{
    const int* corner = m_corners.data() + m_firstCorner[static_cast<size_t>(polygon)];
    const int* const last = m_corners.data() + m_firstCorner[static_cast<size_t>(polygon) + 1];
    float* const area = m_areaVectors.data() + 4 * static_cast<size_t>(polygon);
    area[0] = area[1] = area[2] = area[3] = 0;
    if (last - corner < 3)
        return;
    // The fan from the first corner sums to the area vector of any polygon, plane or not, convex or not.
    const float* const o = points + 4 * static_cast<size_t>(*corner++);
    const float* a = points + 4 * static_cast<size_t>(*corner++);
    for (; corner != last; ++corner) {
        const float* const b = points + 4 * static_cast<size_t>(*corner);
        const float ax = a[0] - o[0], ay = a[1] - o[1], az = a[2] - o[2];
        const float bx = b[0] - o[0], by = b[1] - o[1], bz = b[2] - o[2];
        area[0] += ay * bz - az * by;
        area[1] += az * bx - ax * bz;
        area[2] += ax * by - ay * bx;
        a = b;
    }
}

void SurfaceNormals::Gather(int vertex, double side, float* normals) const
{
    double x = 0, y = 0, z = 0;
    const int last = m_firstPolygon[static_cast<size_t>(vertex) + 1];
    for (int i = m_firstPolygon[static_cast<size_t>(vertex)]; i < last; ++i) {
        const float* const area = m_areaVectors.data() + 4 * static_cast<size_t>(m_polygons[static_cast<size_t>(i)]);
        x += static_cast<double>(area[0]);
        y += static_cast<double>(area[1]);
        z += static_cast<double>(area[2]);
    }
    StoreUnitNormal(side * x, side * y, side * z, normals + 4 * static_cast<size_t>(vertex));
}
