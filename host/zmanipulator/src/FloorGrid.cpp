// SPDX-License-Identifier: MIT
#include "FloorGrid.h"

#include <cmath>

namespace {
constexpr double kCellsAlongDiagonal = 10;
// However far from the origin the scene stands, a line count is no surprise.
constexpr long kMostLines = 200;

double RoundSpacing(double wanted)
{
    const double power = std::pow(10, std::floor(std::log10(wanted)));
    const double lead = wanted / power;
    return (lead < 1.5 ? 1 : lead < 3.5 ? 2 : lead < 7.5 ? 5 : 10) * power;
}

void AddLine(std::vector<ZFloorPoint>& lines, double x0, double z0, double x1, double z1, const float (&colour)[3])
{
    for (const auto& [x, z] : {std::pair(x0, z0), std::pair(x1, z1)})
        lines.push_back({{static_cast<float>(x), 0, static_cast<float>(z)}, {colour[0], colour[1], colour[2]}});
}
} // namespace

ZFloorGrid FloorGrid_For(const ZgeBox& scene)
{
    ZgeBox box = scene;
    if (!(box.Diagonal() > 0) || !std::isfinite(box.Diagonal())) {
        box = ZgeBox();
        box.Widen(ZgeVector3{-1, -1, -1});
        box.Widen(ZgeVector3{1, 1, 1});
    }
    ZFloorGrid floor;
    floor.spacing = RoundSpacing(box.Diagonal() / kCellsAlongDiagonal);
    const double margin = 3 * floor.spacing;
    floor.x0 = std::floor((box.minimum.x - margin) / floor.spacing) * floor.spacing;
    floor.x1 = std::ceil((box.maximum.x + margin) / floor.spacing) * floor.spacing;
    floor.z0 = std::floor((box.minimum.z - margin) / floor.spacing) * floor.spacing;
    floor.z1 = std::ceil((box.maximum.z + margin) / floor.spacing) * floor.spacing;
    return floor;
}

ZgeBox FloorGrid_Box(const ZFloorGrid& floor)
{
    ZgeBox box;
    box.Widen(ZgeVector3{floor.x0, 0, floor.z0});
    box.Widen(ZgeVector3{floor.x1, 0, floor.z1});
    return box;
}

std::vector<ZFloorPoint> FloorGrid_Lines(const ZFloorGrid& floor)
{
    constexpr float kPlain[3] = {0.36F, 0.37F, 0.39F}, kAlongX[3] = {0.55F, 0.33F, 0.33F},
                    kAlongZ[3] = {0.33F, 0.38F, 0.58F};
    std::vector<ZFloorPoint> lines;
    const long rows = std::lround((floor.z1 - floor.z0) / floor.spacing);
    const long columns = std::lround((floor.x1 - floor.x0) / floor.spacing);
    const auto isOrigin = [&floor](double place) { return std::abs(place) < floor.spacing / 2; };
    for (long i = 0; i <= rows && i < kMostLines; ++i) {
        const double z = floor.z0 + static_cast<double>(i) * floor.spacing;
        AddLine(lines, floor.x0, z, floor.x1, z, isOrigin(z) ? kAlongX : kPlain);
    }
    for (long i = 0; i <= columns && i < kMostLines; ++i) {
        const double x = floor.x0 + static_cast<double>(i) * floor.spacing;
        AddLine(lines, x, floor.z0, x, floor.z1, isOrigin(x) ? kAlongZ : kPlain);
    }
    return lines;
}
