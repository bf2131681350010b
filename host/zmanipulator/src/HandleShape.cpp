// SPDX-License-Identifier: MIT
#include "HandleShape.h"

#include "zmanipulator/ZTransformManager.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr int kRingPieces = 64;
constexpr int kHeadSides = 12;
constexpr double kHeadPixels = 14, kHeadRadiusPixels = 5;
constexpr double kShortestArrowPixels = 10; ///< on the screen; a shorter one points at the eye

bool IsFinite(const ZgeVector3& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

/// How far a chain of points passes from a pixel.
double DistanceToChain(const ScreenSpace& screen, const std::vector<ZgeVector3>& chain, const ScreenPoint& pixel)
{
    double nearest = HUGE_VAL;
    std::optional<ScreenPoint> before;
    for (const ZgeVector3& place : chain) {
        const std::optional<ScreenPoint> here = screen.Project(place);
        if (before.has_value() && here.has_value())
            nearest = std::min(nearest, DistanceToSegment(pixel, *before, *here));
        before = here;
    }
    return nearest;
}
} // namespace

ZgeVector3 AnyAcross(const ZgeVector3& axis)
{
    // Crossed with the coordinate axis that it is farthest from.
    const double x = std::abs(axis.x), y = std::abs(axis.y), z = std::abs(axis.z);
    const ZgeVector3 other = x <= y && x <= z ? ZgeVector3{1, 0, 0}
                             : y <= z         ? ZgeVector3{0, 1, 0}
                                              : ZgeVector3{0, 0, 1};
    return ZgeNormalised(ZgeCross(axis, other));
}

ZgeMatrix TurnAbout(const ZgeVector3& axis, double radians)
{
    // Rodrigues' formula; each row is where a coordinate axis comes to lie.
    const double c = std::cos(radians), s = std::sin(radians);
    const auto turned = [&](const ZgeVector3& v) {
        return v * c + ZgeCross(axis, v) * s + axis * (ZgeDot(axis, v) * (1 - c));
    };
    const ZgeVector3 rows[3] = {turned({1, 0, 0}), turned({0, 1, 0}), turned({0, 0, 1})};
    ZgeMatrix matrix;
    for (int row = 0; row < 3; ++row) {
        matrix(row, 0) = rows[row].x;
        matrix(row, 1) = rows[row].y;
        matrix(row, 2) = rows[row].z;
    }
    return matrix;
}

std::optional<HandleShape> HandleShape::Of(const ZModel& bone, const ScreenSpace& screen)
{
    const ZgeMatrix& global = bone.GetTransformMatrix(true);
    HandleShape shape;
    shape.m_centre = ZgeTransformPoint({0, 0, 0}, global);
    shape.m_pixel = screen.PixelSize(shape.m_centre);
    if (!IsFinite(shape.m_centre) || !(shape.m_pixel > 0))
        return std::nullopt;
    for (int axis = 0; axis < 3; ++axis) {
        const ZgeVector3 row{global(axis, 0), global(axis, 1), global(axis, 2)};
        shape.m_axes[static_cast<size_t>(axis)] = ZgeNormalised(row);
        if (!IsFinite(row) || !(ZgeLength(row) > 0))
            return std::nullopt;
    }
    shape.m_toEye = ZgeNormalised(screen.GetEye() - shape.m_centre);
    return shape;
}

ZgeVector3 HandleShape::RingPoint(int axis, const ZgeVector3& from, double degrees) const
{
    const double radius = ZTransformManager::kRingPixels * m_pixel;
    const ZgeVector3 direction = ZgeTransformDirection(from, TurnAbout(GetAxis(axis), degrees * kRadiansPerDegree));
    return m_centre + direction * radius;
}

std::vector<ZgeVector3> HandleShape::WholeRing(int axis) const
{
    std::vector<ZgeVector3> points;
    const ZgeVector3 from = AnyAcross(GetAxis(axis));
    for (int i = 0; i <= kRingPieces; ++i)
        points.push_back(RingPoint(axis, from, 360.0 * i / kRingPieces));
    return points;
}

std::vector<ZgeVector3> HandleShape::NearHalf(int axis) const
{
    // The ring's direction that points to the eye most, and a quarter turn to either side of it. A ring that is seen
    // face on has no far half.
    const ZgeVector3 across = m_toEye - GetAxis(axis) * ZgeDot(m_toEye, GetAxis(axis));
    constexpr double kFaceOn = 0.05;
    if (ZgeLength(across) < kFaceOn)
        return WholeRing(axis);
    std::vector<ZgeVector3> points;
    for (int i = 0; i <= kRingPieces / 2; ++i)
        points.push_back(RingPoint(axis, ZgeNormalised(across), 360.0 * i / kRingPieces - 90));
    return points;
}

std::array<ZgeVector3, 2> HandleShape::Arrow(int axis) const
{
    const ZgeVector3 step = GetAxis(axis) * m_pixel;
    return {m_centre + step * ZTransformManager::kArrowBeginPixels,
            m_centre + step * ZTransformManager::kArrowEndPixels};
}

std::vector<ZgeVector3> HandleShape::ArrowHead(int axis) const
{
    const ZgeVector3 tip = Arrow(axis)[1];
    const ZgeVector3 foot = tip - GetAxis(axis) * (kHeadPixels * m_pixel);
    const ZgeVector3 across = AnyAcross(GetAxis(axis)) * (kHeadRadiusPixels * m_pixel);
    std::vector<ZgeVector3> corners;
    const auto rim = [&](int side) {
        return foot +
               ZgeTransformDirection(across, TurnAbout(GetAxis(axis), 360.0 * side / kHeadSides * kRadiansPerDegree));
    };
    for (int side = 0; side < kHeadSides; ++side) {
        corners.insert(corners.end(), {tip, rim(side), rim(side + 1)});
        corners.insert(corners.end(), {foot, rim(side + 1), rim(side)});
    }
    return corners;
}

int HandleShape::HandleAt(const ScreenSpace& screen, const ScreenPoint& pixel) const
{
    int found = kNoHandle;
    double nearest = ZTransformManager::kReachPixels;
    const auto show = [&](int handle, double distance) {
        if (distance <= nearest) {
            found = handle;
            nearest = distance;
        }
    };
    for (int axis = 0; axis < 3; ++axis)
        show(kRingX + axis, DistanceToChain(screen, NearHalf(axis), pixel));
    // Of equally near ones the arrow: rings can be taken elsewhere as well.
    for (int axis = 0; axis < 3; ++axis) {
        const auto [begin, end] = Arrow(axis);
        const std::optional<ScreenPoint> a = screen.Project(begin), b = screen.Project(end);
        if (a.has_value() && b.has_value() && std::hypot(b->x - a->x, b->y - a->y) >= kShortestArrowPixels)
            show(kArrowX + axis, DistanceToSegment(pixel, *a, *b));
    }
    return found;
}
