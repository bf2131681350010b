// SPDX-License-Identifier: MIT
// Between the scene and the pixels of a camera's viewport.
#pragma once

#include "zmanipulator/ZCamera.h"

#include <optional>

/// A place in the viewport: pixels from its top left corner, x right, y down.
struct ScreenPoint
{
    double x = 0, y = 0;
};

/// From the eye through a pixel; `direction` is a unit vector.
struct ScreenRay
{
    ZgeVector3 start, direction;
};

/// The camera as it is now.
class ScreenSpace
{
public:
    explicit ScreenSpace(ZCamera& camera);
    /// Null behind the eye.
    std::optional<ScreenPoint> Project(const ZgeVector3& place) const;
    ScreenRay RayThrough(double x, double y) const;
    /// The length in the scene that one pixel shows at this place; not above 0 behind the eye.
    double PixelSize(const ZgeVector3& place) const;
    const ZgeVector3& GetEye() const { return m_eye; }

private:
    ZgeMatrix m_toClip;
    ZgeVector3 m_eye, m_right, m_up, m_back;
    double m_width, m_height, m_tangent;
};

/// The distance of a point from the straight line between two others.
double DistanceToSegment(const ScreenPoint& point, const ScreenPoint& a, const ScreenPoint& b);
