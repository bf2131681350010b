// SPDX-License-Identifier: MIT
// The camera: a turntable about a target, with planes that follow the scene.
#include "zmanipulator/ZCamera.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {
constexpr double kRadiansPerDegree = 0.017453292519943295;
// Nearer to the axis than this the camera's right is no longer certain.
constexpr double kSmallestPolarDegrees = 0.1;
constexpr double kParallelSine = 1e-9;
// The free margin about what is framed.
constexpr double kFrameMargin = 1.05;
// A framed box has at least this radius, in viewer units: one vertex is seen with its neighbourhood.
constexpr double kSmallestFrameUnits = 2.5;
// Of the distance to the target: what is nearer is not what the user looks at, and a near plane there keeps the depth
// buffer fine where the target is.
constexpr double kNearOfDistance = 0.02;
constexpr double kNearOfFar = 1e-3;
constexpr double kPlaneMargin = 0.01;

bool IsFinite(const ZgeVector3& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

bool IsUsable(const ZgeBox& box)
{
    return !box.IsEmpty() && IsFinite(box.minimum) && IsFinite(box.maximum) && std::isfinite(box.Diagonal());
}

ZgeBox BoxAbout(const ZgeVector3& centre, double half)
{
    const ZgeVector3 reach{half, half, half};
    ZgeBox box;
    box.Widen(centre - reach);
    box.Widen(centre + reach);
    return box;
}

std::array<ZgeVector3, 8> Corners(const ZgeBox& box)
{
    std::array<ZgeVector3, 8> corners;
    for (size_t i = 0; i < corners.size(); ++i)
        corners[i] = {(i & 1) != 0 ? box.maximum.x : box.minimum.x, (i & 2) != 0 ? box.maximum.y : box.minimum.y,
                      (i & 4) != 0 ? box.maximum.z : box.minimum.z};
    return corners;
}

/// Right-handed turn of `v` about the unit vector `axis` for a `v` that stands at a right angle to it.
ZgeVector3 TurnedAbout(const ZgeVector3& axis, const ZgeVector3& v, double radians)
{
    return v * std::cos(radians) + ZgeCross(axis, v) * std::sin(radians);
}
} // namespace

ZCamera::ZCamera() { SetSceneBox(ZgeBox()); }

void ZCamera::SetViewport(int x, int y, int width, int height)
{
    m_x = x;
    m_y = y;
    m_width = std::max(1, width);
    m_height = std::max(1, height);
    m_known = false;
}

void ZCamera::SetFov(double degrees)
{
    if (!std::isfinite(degrees))
        return;
    m_fov = std::clamp(degrees, 1.0, 170.0);
    m_known = false;
}

bool ZCamera::LookAt(const ZgeVector3& eye, const ZgeVector3& target, const ZgeVector3& up)
{
    const ZgeVector3 back = eye - target;
    const double distance = ZgeLength(back), upLength = ZgeLength(up);
    if (!IsFinite(eye) || !IsFinite(target) || !IsFinite(up) || !std::isfinite(distance) || !std::isfinite(upLength))
        return false;
    if (!(distance > 0) || !(upLength > 0))
        return false;
    if (!(ZgeLength(ZgeCross(up * (1 / upLength), back * (1 / distance))) > kParallelSine))
        return false;
    m_eye = eye;
    m_target = target;
    m_up = up;
    m_known = false;
    return true;
}

double ZCamera::GetDistance() const { return ZgeLength(m_eye - m_target); }

double ZCamera::GetUnit() const { return m_box.Diagonal() / 100; }

void ZCamera::GetAxes(ZgeVector3& right, ZgeVector3& up, ZgeVector3& back) const
{
    back = ZgeNormalised(m_eye - m_target);
    right = ZgeNormalised(ZgeCross(ZgeNormalised(m_up), back));
    up = ZgeCross(back, right);
}

void ZCamera::Orbit(double right, double up)
{
    if (!std::isfinite(right) || !std::isfinite(up))
        return;
    const ZgeVector3 axis = ZgeNormalised(m_up), offset = m_eye - m_target;
    const double distance = ZgeLength(offset), height = ZgeDot(offset, axis);
    const ZgeVector3 level = offset - axis * height;
    const double polar = std::atan2(ZgeLength(level), height);
    // A view from nearer to the axis, set by LookAt, may stay where it is.
    const double limit = std::min({kSmallestPolarDegrees * kRadiansPerDegree, polar, std::acos(-1.0) - polar});
    const double turned = std::clamp(polar - up * kRadiansPerDegree, limit, std::acos(-1.0) - limit);
    const ZgeVector3 side = TurnedAbout(axis, ZgeNormalised(level), right * kRadiansPerDegree);
    LookAt(m_target + (axis * std::cos(turned) + side * std::sin(turned)) * distance, m_target, m_up);
}

void ZCamera::Pan(double pixelsRight, double pixelsDown)
{
    ZgeVector3 right, up, back;
    GetAxes(right, up, back);
    const double perPixel = 2 * GetDistance() * std::tan(m_fov / 2 * kRadiansPerDegree) / m_height;
    const ZgeVector3 move = up * (pixelsDown * perPixel) - right * (pixelsRight * perPixel);
    LookAt(m_eye + move, m_target + move, m_up);
}

void ZCamera::Zoom(double factor)
{
    if (!std::isfinite(factor) || !(factor > 0))
        return;
    // Between a thousandth of a viewer unit and ten thousand scenes away.
    const double distance = GetDistance(), unit = GetUnit();
    const double wanted =
        std::clamp(distance * factor, std::min(distance, unit * 1e-3), std::max(distance, unit * 1e6));
    LookAt(m_target + (m_eye - m_target) * (wanted / distance), m_target, m_up);
}

void ZCamera::SetSceneBox(const ZgeBox& box)
{
    ZgeBox used = IsUsable(box) ? box : BoxAbout(ZgeVector3(), 1);
    if (!(used.Diagonal() > 0))
        used = BoxAbout(used.Centre(), 1);
    m_box = used;
    m_known = false;
}

void ZCamera::SetSurroundings(const ZgeBox& box)
{
    m_surroundings = IsUsable(box) ? box : ZgeBox();
    m_known = false;
}

void ZCamera::FrameBox(const ZgeBox& box)
{
    if (!IsUsable(box))
        return;
    ZgeVector3 right, up, back;
    GetAxes(right, up, back);
    const double tangentV = std::tan(m_fov / 2 * kRadiansPerDegree);
    const double tangentH = tangentV * m_width / m_height;
    const ZgeVector3 centre = box.Centre();
    const double smallest = kSmallestFrameUnits * GetUnit();
    const bool tiny = box.Diagonal() / 2 < smallest;
    double distance = 0;
    for (const ZgeVector3& corner : Corners(tiny ? BoxAbout(centre, smallest) : box)) {
        const ZgeVector3 p = corner - centre;
        const double sideways = std::max(std::abs(ZgeDot(p, right)) / tangentH, std::abs(ZgeDot(p, up)) / tangentV);
        distance = std::max(distance, ZgeDot(p, back) + sideways);
    }
    LookAt(centre + back * (distance * kFrameMargin), centre, m_up);
}

void ZCamera::DepthRange(double& nearest, double& farthest) const
{
    const ZgeVector3 back = ZgeNormalised(m_eye - m_target);
    nearest = HUGE_VAL;
    farthest = -HUGE_VAL;
    for (const ZgeBox* box : {&m_box, &m_surroundings}) {
        if (box->IsEmpty())
            continue;
        for (const ZgeVector3& corner : Corners(*box)) {
            const double depth = ZgeDot(m_eye - corner, back);
            nearest = std::min(nearest, depth);
            farthest = std::max(farthest, depth);
        }
    }
}

void ZCamera::Update()
{
    if (m_known)
        return;
    ZgeVector3 right, up, back;
    GetAxes(right, up, back);
    const double scale = 1 / GetUnit();
    const ZgeVector3 columns[3] = {right * scale, up * scale, back * scale};
    for (int column = 0; column < 3; ++column) {
        m_view(0, column) = columns[column].x;
        m_view(1, column) = columns[column].y;
        m_view(2, column) = columns[column].z;
        m_view(3, column) = -ZgeDot(m_eye, columns[column]);
    }

    double nearest = 0, farthest = 0;
    DepthRange(nearest, farthest);
    const double distance = GetDistance();
    const double farPlane = farthest > 0 ? farthest * (1 + kPlaneMargin) : distance * 2;
    const double nearPlane =
        std::max(nearest * (1 - kPlaneMargin), std::min(kNearOfDistance * distance, kNearOfFar * farPlane));
    const double n = nearPlane * scale, f = farPlane * scale;
    const double focal = 1 / std::tan(m_fov / 2 * kRadiansPerDegree);
    m_projection = ZgeMatrix();
    m_projection(0, 0) = focal * m_height / m_width;
    m_projection(1, 1) = focal;
    m_projection(2, 2) = (f + n) / (n - f);
    m_projection(2, 3) = -1;
    m_projection(3, 2) = 2 * f * n / (n - f);
    m_projection(3, 3) = 0;
    m_known = true;
}

const ZgeMatrix& ZCamera::ProjectionMatrix()
{
    Update();
    return m_projection;
}

const ZgeMatrix& ZCamera::ViewMatrix()
{
    Update();
    return m_view;
}

ZgeVector4 ZCamera::CameraToScene(const ZgeVector4& point)
{
    ZgeVector3 right, up, back;
    GetAxes(right, up, back);
    const double unit = GetUnit();
    const ZgeVector3 scene =
        right * (point.x * unit) + up * (point.y * unit) + back * (point.z * unit) + m_eye * point.w;
    return {scene.x, scene.y, scene.z, point.w};
}
