// SPDX-License-Identifier: MIT
// The rings and arrows of one bone: where they lie and which of them is at a pixel.
#pragma once

#include "ScreenSpace.h"
#include "zmodel/ZModel.h"

#include <array>
#include <optional>
#include <vector>

/// Numbers of handles: rings about X, Y, Z, then arrows along them.
inline constexpr int kNoHandle = -1;
inline constexpr int kRingX = 0;
inline constexpr int kArrowX = 3;
inline constexpr int kHandleCount = 6;

inline bool IsRing(int handle) { return handle >= kRingX && handle < kArrowX; }
inline int AxisOf(int handle) { return handle % 3; }

class HandleShape
{
public:
    /// Null when the bone is behind the eye, scaled to nothing or not at a finite place.
    static std::optional<HandleShape> Of(const ZModel& bone, const ScreenSpace& screen);

    const ZgeVector3& GetCentre() const { return m_centre; }
    /// Unit vector in the scene.
    const ZgeVector3& GetAxis(int axis) const { return m_axes[static_cast<size_t>(axis)]; }
    /// The half of the ring that faces the eye: a chain of points.
    std::vector<ZgeVector3> NearHalf(int axis) const;
    std::vector<ZgeVector3> WholeRing(int axis) const;
    /// Begin and end of an arrow.
    std::array<ZgeVector3, 2> Arrow(int axis) const;
    /// The corners of the triangles of its head.
    std::vector<ZgeVector3> ArrowHead(int axis) const;
    /// Unit vector from the centre to the eye.
    const ZgeVector3& GetToEye() const { return m_toEye; }

    /// The handle whose line passes nearest to the pixel, within reach; kNoHandle for none. Rings are taken by the half
    /// that faces the eye, arrows only while they do not point at it.
    int HandleAt(const ScreenSpace& screen, const ScreenPoint& pixel) const;

private:
    ZgeVector3 RingPoint(int axis, const ZgeVector3& from, double degrees) const;

    ZgeVector3 m_centre, m_toEye;
    std::array<ZgeVector3, 3> m_axes;
    double m_pixel = 1; ///< the length in the scene of one pixel at the centre
};

/// A unit vector at right angles to a unit vector.
ZgeVector3 AnyAcross(const ZgeVector3& axis);
/// The matrix that turns about an axis (unit vector) through the origin; counter-clockwise for who looks against it.
ZgeMatrix TurnAbout(const ZgeVector3& axis, double radians);
