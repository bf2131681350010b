// SPDX-License-Identifier: MIT
// Per-vertex unit normals of a polygon surface.
#pragma once

#include <vector>

/// Knows which polygons meet at each vertex; computes normals for any positions of the vertices. A vertex's normal is
/// the sum of its polygons' area vectors, at length one, added in order of the polygons. A vertex whose polygons have
/// no area, or that has none, answers (0, 0, 1): a normal always is a unit vector. Where a deformation mirrors, the
/// polygons turn their other side out, and `side` is -1 so that normals still point outwards; else it is 1.
class SurfaceNormals
{
public:
    /// `polygons`: vertex numbers, the last of each polygon complemented.
    void SetPolygons(int vertexCount, const std::vector<int>& polygons);
    /// `points` and `normals`: four floats a vertex.
    void Compute(const float* points, double side, float* normals);
    /// Compute was called before with the same arrays and side, and since then no other points than those of `moved`
    /// have changed: brings the normals up to date about them, to the same bits as Compute would.
    void ComputeAbout(const std::vector<int>& moved, const float* points, double side, float* normals);

private:
    void ComputeArea(int polygon, const float* points);
    void Gather(int vertex, double side, float* normals) const;

    int m_vertexCount = 0;
    std::vector<int> m_corners;       ///< vertex numbers of all polygons
    std::vector<int> m_firstCorner;   ///< of each polygon, and the end
    std::vector<int> m_firstPolygon;  ///< of each vertex in m_polygons, and the end
    std::vector<int> m_polygons;      ///< those around vertex 0, around vertex 1, ...
    std::vector<float> m_areaVectors; ///< four floats a polygon; kept to spare the allocation
};

/// Writes the unit vector of (x, y, z) and a 0 after it; (0, 0, 1) when it has no length.
void StoreUnitNormal(double x, double y, double z, float* normal);
