// SPDX-License-Identifier: MIT
// Faces into triangles.
#include "ObjMeshes.h"

#include <algorithm>

namespace skindesk::obj {

namespace {

using Vector3 = std::array<double, 3>;

Vector3 Between(const std::array<float, 3>& from, const std::array<float, 3>& to)
{
    return {double{to[0]} - from[0], double{to[1]} - from[1], double{to[2]} - from[2]};
}

Vector3 Cross(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double Dot(const Vector3& a, const Vector3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

} // namespace

std::size_t ObjMesh::CornerHash::operator()(const ObjCorner& corner) const
{
    std::uint64_t hash = corner.vertex * 0x9E3779B97F4A7C15u;
    hash = (hash ^ corner.texCoord) * 0xC2B2AE3D27D4EB4Fu;
    hash = (hash ^ corner.normal) * 0x165667B19E3779F9u;
    return static_cast<std::size_t>(hash ^ hash >> 32);
}

std::uint32_t ObjMesh::VertexOf(const ObjCorner& corner)
{
    const auto [found, isNew] = m_known.try_emplace(corner, static_cast<std::uint32_t>(m_corners.size()));
    if (isNew) {
        m_corners.push_back(corner);
    }
    return found->second;
}

// Whether the diagonal from corner 0 to corner 2 leaves a quad with a dent: then its halves face away from each other.
bool ObjMesh::CutsTheOtherWay(const std::vector<ObjCorner>& corners) const
{
    const auto at = [&](std::size_t i) { return m_vertices.positions[corners[i].vertex]; };
    const Vector3 diagonal = Between(at(0), at(2));
    return Dot(Cross(Between(at(0), at(1)), diagonal), Cross(diagonal, Between(at(0), at(3)))) < 0;
}

void ObjMesh::AddFace(const std::vector<ObjCorner>& corners, int material)
{
    std::vector<std::uint32_t> vertices;
    vertices.reserve(corners.size());
    for (const ObjCorner& corner : corners) {
        vertices.push_back(VertexOf(corner));
    }
    if (corners.size() == 4 && CutsTheOtherWay(corners)) {
        std::rotate(vertices.begin(), vertices.begin() + 1, vertices.end());
    }
    std::vector<std::uint32_t>& triangles = m_triangles[material];
    for (std::size_t i = 1; i + 1 < vertices.size(); ++i) {
        triangles.insert(triangles.end(), {vertices[0], vertices[i], vertices[i + 1]});
    }
}

imports::NewMesh ObjMesh::Take()
{
    imports::NewMesh mesh;
    mesh.name = m_name;
    const bool haveNormals =
        std::all_of(m_corners.begin(), m_corners.end(), [](const auto& c) { return c.normal != ObjCorner::NONE; });
    const bool haveTexCoords =
        std::all_of(m_corners.begin(), m_corners.end(), [](const auto& c) { return c.texCoord != ObjCorner::NONE; });
    for (const ObjCorner& corner : m_corners) {
        const auto& position = m_vertices.positions[corner.vertex];
        mesh.positions.insert(mesh.positions.end(), position.begin(), position.end());
        if (haveNormals) {
            const auto& normal = m_vertices.normals[corner.normal];
            mesh.normals.insert(mesh.normals.end(), normal.begin(), normal.end());
        }
        if (haveTexCoords) {
            const auto& place = m_vertices.texCoords[corner.texCoord];
            mesh.texCoords.insert(mesh.texCoords.end(), {place[0], 1 - place[1]});
        }
    }
    for (auto& [material, corners] : m_triangles) {
        mesh.triangles.push_back({std::move(corners), material});
    }
    return mesh;
}

} // namespace skindesk::obj
