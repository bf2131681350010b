// SPDX-License-Identifier: MIT
// Faces of an OBJ file become polygon meshes, one for each object and group.
#pragma once

#include "ObjVertices.h"

#include "import/NewCharacter.h"

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace skindesk::obj {

// Faces of one name, corner by corner; equal corners are one vertex.
class ObjMesh
{
public:
    ObjMesh(const ObjVertices& vertices, std::string name) : m_vertices(vertices), m_name(std::move(name)) {}

    // A polygon of three corners or more, cut into triangles. One of four corners is cut along the diagonal that lies
    // inside it; a larger one is taken for convex.
    void AddFace(const std::vector<ObjCorner>& corners, int material);
    [[nodiscard]] imports::NewMesh Take();

private:
    struct CornerHash
    {
        std::size_t operator()(const ObjCorner& corner) const;
    };

    std::uint32_t VertexOf(const ObjCorner& corner);
    [[nodiscard]] bool CutsTheOtherWay(const std::vector<ObjCorner>& corners) const;

    const ObjVertices& m_vertices;
    std::string m_name;
    std::unordered_map<ObjCorner, std::uint32_t, CornerHash> m_known;
    std::vector<ObjCorner> m_corners;                      // by vertex
    std::map<int, std::vector<std::uint32_t>> m_triangles; // by material
};

} // namespace skindesk::obj
