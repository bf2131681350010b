// SPDX-License-Identifier: MIT
// One drag of a ring or an arrow: from pixels to the bone's transform.
#pragma once

#include "HandleShape.h"

#include <optional>

/// Begun at a press, asked at every move. A ring follows the pointer round its centre, any number of turns; seen from
/// the edge it rolls along with the pointer. An arrow follows the pointer along its line.
class PoseDrag
{
public:
    PoseDrag(const ZModel& bone, int handle, const HandleShape& shape, const ScreenSpace& screen,
             const ScreenPoint& press);
    int GetHandle() const { return m_handle; }
    /// The bone's local transform with the pointer here; null when the pointer tells nothing (it is beyond the horizon)
    /// or the bone stands under a node that is scaled to nothing.
    std::optional<ZgeMatrix> LocalAt(const ScreenSpace& screen, const ScreenPoint& pointer);

private:
    std::optional<double> AngleAt(const ScreenSpace& screen, const ScreenPoint& pointer);
    std::optional<double> PlaceOnArrow(const ScreenSpace& screen, const ScreenPoint& pointer) const;
    ZgeMatrix Turned(double radians) const;
    ZgeMatrix Moved(double distance) const;

    const int m_handle;
    const ZgeVector3 m_centre, m_axis; ///< in the scene, at the press
    const ZgeMatrix m_local, m_parent; ///< of the bone, at the press
    ZgeMatrix m_toParent;              ///< inverse of m_parent
    bool m_singular = false;
    bool m_edgeOn = false;
    ScreenPoint m_press;
    ScreenPoint m_rolling;             ///< unit vector on the screen along a ring that is seen from the edge
    ZgeVector3 m_zero;                 ///< direction in the ring's plane from which angles count
    double m_angle = 0;                ///< turned so far
    std::optional<double> m_lastAngle; ///< of the pointer, -pi to pi
    std::optional<double> m_pressPlace;
};
