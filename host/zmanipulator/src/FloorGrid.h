// SPDX-License-Identifier: MIT
// The floor: a grid on the plane y = 0, as wide as the scene asks for.
#pragma once

#include "zbaselib/ZGe.h"

#include <vector>

struct ZFloorGrid
{
    double spacing = 1;       ///< 1, 2 or 5 times a power of ten
    double x0 = -10, x1 = 10; ///< whole multiples of the spacing
    double z0 = -10, z1 = 10;
    friend bool operator==(const ZFloorGrid&, const ZFloorGrid&) = default;
};

/// About ten cells along the scene's diagonal, with a margin about what stands on it. An empty box counts as one of
/// size 2 about the origin.
ZFloorGrid FloorGrid_For(const ZgeBox& scene);
ZgeBox FloorGrid_Box(const ZFloorGrid& floor);

/// The end of a line with its colour.
struct ZFloorPoint
{
    float place[3];
    float colour[3];
};
/// Two points a line; the lines through the origin are tinted: X reddish, Z bluish.
std::vector<ZFloorPoint> FloorGrid_Lines(const ZFloorGrid& floor);
