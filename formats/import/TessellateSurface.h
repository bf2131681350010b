// SPDX-License-Identifier: MIT
// The polygon mesh that shows a NURBS surface to programs that know no surfaces.
#pragma once

#include "NewCharacter.h"

#include <array>
#include <cstdint>
#include <vector>

namespace skindesk::imports {

// Vertices evenly over the domain, U fastest; triangles face the side to which dS/du x dS/dv points.
struct Tessellation
{
    std::array<int, 2> grid{};
    std::vector<float> positions; // 3 per vertex
    std::vector<float> normals;   // 3 per vertex, unit length
    std::vector<std::uint32_t> corners;
};

// Vertices in U and in V of each surface: eight steps a span where all surfaces together stay below a million vertices,
// fewer otherwise, one at least. A size that a surface asks for is kept.
[[nodiscard]] std::vector<std::array<int, 2>> ChooseGrids(const std::vector<const NewNurbsSurface*>& surfaces);

// The surface has been checked; `points` are its control points, 3 numbers each. Where a row of control points lies at
// one place (a pole), the normal is that of a neighbouring place.
// Piegl and Tiller, The NURBS Book, sections 4.3 and 4.4: the point and its derivatives from homogeneous coordinates.
[[nodiscard]] Tessellation Tessellate(const NewNurbsSurface& surface, const std::vector<float>& points,
                                      const std::array<int, 2>& grid);

} // namespace skindesk::imports
