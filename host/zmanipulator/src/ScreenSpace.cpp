// SPDX-License-Identifier: MIT
#include "ScreenSpace.h"

#include <algorithm>
#include <cmath>

ScreenSpace::ScreenSpace(ZCamera& camera)
    : m_toClip(camera.ViewMatrix() * camera.ProjectionMatrix()), m_eye(camera.GetEye()),
      m_width(camera.ViewportWidth()), m_height(camera.ViewportHeight()),
      m_tangent(std::tan(camera.GetFov() / 2 * 0.017453292519943295))
{
    camera.GetAxes(m_right, m_up, m_back);
}

std::optional<ScreenPoint> ScreenSpace::Project(const ZgeVector3& place) const
{
    const ZgeVector4 clip = ZgeVector4{place.x, place.y, place.z, 1} * m_toClip;
    if (!(clip.w > 0) || !std::isfinite(clip.x) || !std::isfinite(clip.y))
        return std::nullopt;
    return ScreenPoint{(clip.x / clip.w + 1) / 2 * m_width, (1 - clip.y / clip.w) / 2 * m_height};
}

ScreenRay ScreenSpace::RayThrough(double x, double y) const
{
    const ZgeVector3 direction = m_right * ((2 * x / m_width - 1) * m_tangent * m_width / m_height) +
                                 m_up * ((1 - 2 * y / m_height) * m_tangent) - m_back;
    return {m_eye, ZgeNormalised(direction)};
}

double ScreenSpace::PixelSize(const ZgeVector3& place) const
{
    return ZgeDot(m_eye - place, m_back) * 2 * m_tangent / m_height;
}

double DistanceToSegment(const ScreenPoint& point, const ScreenPoint& a, const ScreenPoint& b)
{
    const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
    const double along =
        square > 0 ? std::clamp(((point.x - a.x) * dx + (point.y - a.y) * dy) / square, 0.0, 1.0) : 0.0;
    return std::hypot(point.x - a.x - along * dx, point.y - a.y - along * dy);
}
