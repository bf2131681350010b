// SPDX-License-Identifier: MIT
#include "PoseDrag.h"

#include "zmanipulator/ZTransformManager.h"

#include <cmath>

namespace {
constexpr double kPi = 3.14159265358979323846;
constexpr double kEdgeOn = 0.2; ///< sine of the angle between the ring's plane and the line of sight

ZgeMatrix ParentOf(const ZModel& bone)
{
    return bone.GetParent() != nullptr ? bone.GetParent()->GetTransformMatrix(true) : ZgeMatrix();
}
} // namespace

PoseDrag::PoseDrag(const ZModel& bone, int handle, const HandleShape& shape, const ScreenSpace& screen,
                   const ScreenPoint& press)
    : m_handle(handle), m_centre(shape.GetCentre()), m_axis(shape.GetAxis(AxisOf(handle))),
      m_local(bone.GetTransformMatrix(false)), m_parent(ParentOf(bone)), m_press(press)
{
    m_toParent = ZgeInverse(m_parent, &m_singular);
    if (!IsRing(handle)) {
        m_pressPlace = PlaceOnArrow(screen, press);
        return;
    }
    m_zero = AnyAcross(m_axis);
    m_edgeOn = std::abs(ZgeDot(shape.GetToEye(), m_axis)) < kEdgeOn;
    if (!m_edgeOn) {
        m_lastAngle = AngleAt(screen, press);
        m_angle = 0;
        return;
    }
    // Turning carries the side that faces the eye along this direction.
    const ZgeVector3 along = ZgeCross(m_axis, shape.GetToEye());
    const double step = screen.PixelSize(m_centre);
    const auto from = screen.Project(m_centre), to = screen.Project(m_centre + along * step);
    if (from.has_value() && to.has_value()) {
        const double length = std::hypot(to->x - from->x, to->y - from->y);
        if (length > 0)
            m_rolling = {(to->x - from->x) / length, (to->y - from->y) / length};
    }
}

std::optional<ZgeMatrix> PoseDrag::LocalAt(const ScreenSpace& screen, const ScreenPoint& pointer)
{
    if (m_singular)
        return std::nullopt;
    if (!IsRing(m_handle)) {
        const std::optional<double> place = PlaceOnArrow(screen, pointer);
        if (!place.has_value() || !m_pressPlace.has_value())
            return std::nullopt;
        return Moved(*place - *m_pressPlace);
    }
    if (m_edgeOn) {
        const double rolled = (pointer.x - m_press.x) * m_rolling.x + (pointer.y - m_press.y) * m_rolling.y;
        return Turned(rolled / ZTransformManager::kRingPixels);
    }
    const std::optional<double> angle = AngleAt(screen, pointer);
    if (!angle.has_value())
        return std::nullopt;
    if (m_lastAngle.has_value())
        m_angle += std::remainder(*angle - *m_lastAngle, 2 * kPi);
    m_lastAngle = angle;
    return Turned(m_angle);
}

/// Where the pointer is about the ring's axis.
std::optional<double> PoseDrag::AngleAt(const ScreenSpace& screen, const ScreenPoint& pointer)
{
    const ScreenRay ray = screen.RayThrough(pointer.x, pointer.y);
    const double towards = ZgeDot(ray.direction, m_axis);
    const double along = ZgeDot(m_centre - ray.start, m_axis) / towards;
    if (!std::isfinite(along) || along <= 0)
        return std::nullopt;
    const ZgeVector3 from = ray.start + ray.direction * along - m_centre;
    const double x = ZgeDot(from, m_zero), y = ZgeDot(from, ZgeCross(m_axis, m_zero));
    return x == 0 && y == 0 ? std::nullopt : std::optional<double>(std::atan2(y, x));
}

/// How far along the arrow's line the pointer is, in scene units from the centre: beside the line it counts as the
/// place across from it, in the plane through the line that faces the eye.
std::optional<double> PoseDrag::PlaceOnArrow(const ScreenSpace& screen, const ScreenPoint& pointer) const
{
    const ScreenRay ray = screen.RayThrough(pointer.x, pointer.y);
    const ZgeVector3 toEye = ray.start - m_centre;
    const ZgeVector3 facing = ZgeNormalised(toEye - m_axis * ZgeDot(toEye, m_axis));
    const double along = -ZgeDot(toEye, facing) / ZgeDot(ray.direction, facing);
    if (!std::isfinite(along) || along <= 0)
        return std::nullopt;
    return ZgeDot(ray.start + ray.direction * along - m_centre, m_axis);
}

ZgeMatrix PoseDrag::Turned(double radians) const
{
    // About the axis as the parent sees it, so that scaling and shear of the bone stay what they are. Under a mirrored
    // parent a turn in the scene is the opposite one.
    const int row = AxisOf(m_handle);
    const ZgeVector3 axis = ZgeNormalised({m_local(row, 0), m_local(row, 1), m_local(row, 2)});
    ZgeMatrix turned = m_local;
    turned(3, 0) = turned(3, 1) = turned(3, 2) = 0;
    turned = turned * TurnAbout(axis, ZgeDeterminant3(m_parent) < 0 ? -radians : radians);
    for (int column = 0; column < 3; ++column)
        turned(3, column) = m_local(3, column);
    return turned;
}

ZgeMatrix PoseDrag::Moved(double distance) const
{
    const ZgeVector3 step = ZgeTransformDirection(m_axis * distance, m_toParent);
    ZgeMatrix moved = m_local;
    moved(3, 0) += step.x;
    moved(3, 1) += step.y;
    moved(3, 2) += step.z;
    return moved;
}
