// SPDX-License-Identifier: MIT
// Computes the rectangles of a layout's regions from their edges.
#pragma once

#include "ztoolkit/ZtLayout.h"

#include <memory>
#include <string>
#include <vector>

/// Writes the rectangle of each region for a form of this size. Each edge is computed once, after those that it depends
/// on. Answers an empty text, or one sentence that names the regions that could not be computed and got an empty
/// rectangle.
std::string ArrangeRegions(const std::vector<std::unique_ptr<ZtRegion>>& regions, int width, int height);
