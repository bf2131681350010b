// SPDX-License-Identifier: MIT
// The host's own shading of one link's weights.
#pragma once

#include "zmodel/ZGeometryModels.h"

#include <cstdint>
#include <vector>

/// The link that the skin's display value names; -1 for none.
int HeatColour_ShownLink(const ZSkin& skin);
/// Red, green, blue, 255 of a weight: 0 blue over cyan, green and yellow to 1 red. Clamped; not a number counts as 0.
void HeatColour_Of(double weight, std::uint8_t colour[4]);
/// One colour a vertex of a mesh, or a point of a NURBS surface's grid of `width` x `height` points, where the weights
/// of the control points count by the rational basis.
std::vector<std::uint8_t> HeatColour_Table(ZModelGeometryBase& model, int link, int width, int height);
