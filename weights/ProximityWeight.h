// SPDX-License-Identifier: MIT
// How near a point lies to a bone, as a weight.
#pragma once

#include "zbaselib/ZGe.h"

#include <span>

/// 1 to 100. `bone` and `children` are where the bone and its children stand, `point` the vertex. A bone without
/// children has weight 1 everywhere. Beside the segment to a child, at a distance smaller than the segment's length,
/// the weight is 100; past either end it falls off over 15 % of the length. A child that stands where the bone stands
/// adds nothing.
double ProximityWeight(const ZgeVector3& bone, std::span<const ZgeVector3> children, const ZgeVector3& point);
