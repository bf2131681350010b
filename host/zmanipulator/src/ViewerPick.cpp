// SPDX-License-Identifier: MIT
#include "ViewerPick.h"

#include "BoneShape.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {
constexpr double kRadiansPerDegree = 0.017453292519943295;

struct Ray
{
    ZgeVector3 start, direction;
};

Ray RayThrough(ZCamera& camera, double x, double y)
{
    ZgeVector3 right, up, back;
    camera.GetAxes(right, up, back);
    const double width = camera.ViewportWidth(), height = camera.ViewportHeight();
    const double tangent = std::tan(camera.GetFov() / 2 * kRadiansPerDegree);
    const ZgeVector3 direction =
        right * ((2 * x / width - 1) * tangent * width / height) + up * ((1 - 2 * y / height) * tangent) - back;
    return {camera.GetEye(), direction};
}

/// The place on the ray, in units of its direction, of the hit on the triangle; none behind the start. After T. Moeller
/// and B. Trumbore, "Fast, minimum storage ray/triangle intersection", 1997; both sides count.
std::optional<double> HitTriangle(const Ray& ray, const ZgeVector3& a, const ZgeVector3& b, const ZgeVector3& c)
{
    const ZgeVector3 ab = b - a, ac = c - a;
    const ZgeVector3 p = ZgeCross(ray.direction, ac);
    const double determinant = ZgeDot(ab, p);
    if (determinant == 0)
        return std::nullopt;
    const ZgeVector3 fromA = ray.start - a;
    const double u = ZgeDot(fromA, p) / determinant;
    if (!(u >= 0 && u <= 1))
        return std::nullopt;
    const ZgeVector3 q = ZgeCross(fromA, ab);
    const double v = ZgeDot(ray.direction, q) / determinant;
    if (!(v >= 0 && u + v <= 1))
        return std::nullopt;
    const double along = ZgeDot(ac, q) / determinant;
    return along > 0 ? std::optional<double>(along) : std::nullopt;
}

ZgeVector3 PointAt(const float* points, int index)
{
    const float* const p = points + 4 * static_cast<size_t>(index);
    return {p[0], p[1], p[2]};
}

/// Keeps the nearest of the hits that it is shown.
struct Nearest
{
    double along = HUGE_VAL;
    void Show(const std::optional<double>& hit)
    {
        if (hit.has_value())
            along = std::min(along, *hit);
    }
};

double HitMesh(IModelGeometry& geometry, const Ray& ray)
{
    Nearest nearest;
    const float* const points = geometry.VertexPositions(1);
    const int* index = geometry.PolygonIndices(1);
    if (points == nullptr || index == nullptr)
        return nearest.along;
    for (int polygon = geometry.PolygonCount(); polygon > 0; --polygon) {
        if (*index < 0) { // a single vertex
            ++index;
            continue;
        }
        const ZgeVector3 first = PointAt(points, *index++);
        bool last = *index < 0;
        ZgeVector3 previous = PointAt(points, last ? ~*index : *index);
        ++index;
        while (!last) {
            last = *index < 0;
            const ZgeVector3 here = PointAt(points, last ? ~*index : *index);
            ++index;
            nearest.Show(HitTriangle(ray, first, previous, here));
            previous = here;
        }
    }
    return nearest.along;
}

double HitGrid(IModelGeometry& geometry, const Ray& ray)
{
    Nearest nearest;
    const float* const points = geometry.TessellatedPoints(1);
    if (points == nullptr)
        return nearest.along;
    const int width = geometry.TessellationWidth(), height = geometry.TessellationHeight();
    for (int row = 0; row + 1 < height; ++row) {
        for (int column = 0; column + 1 < width; ++column) {
            const int corner = row * width + column;
            const ZgeVector3 a = PointAt(points, corner), b = PointAt(points, corner + 1);
            const ZgeVector3 c = PointAt(points, corner + width), d = PointAt(points, corner + width + 1);
            nearest.Show(HitTriangle(ray, a, b, d));
            nearest.Show(HitTriangle(ray, a, d, c));
        }
    }
    return nearest.along;
}

/// A point of the viewport in pixels, with its depth in view units.
struct Projected
{
    double x, y, depth;
};

/// The segment in the viewport, cut where it goes behind the near plane; none when all of it is behind.
std::optional<std::pair<Projected, Projected>> ProjectSegment(ZCamera& camera, const ZBoneSegment& segment)
{
    const ZgeMatrix both = camera.ViewMatrix() * camera.ProjectionMatrix();
    ZgeVector4 a = ZgeVector4{segment.head.x, segment.head.y, segment.head.z, 1} * both;
    ZgeVector4 b = ZgeVector4{segment.tail.x, segment.tail.y, segment.tail.z, 1} * both;
    // In front of the near plane z + w >= 0.
    const double inA = a.z + a.w, inB = b.z + b.w;
    if (inA < 0 && inB < 0)
        return std::nullopt;
    const auto between = [&a, &b](double t) {
        return ZgeVector4{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t, a.w + (b.w - a.w) * t};
    };
    if (inA < 0)
        a = between(inA / (inA - inB));
    else if (inB < 0)
        b = between(inA / (inA - inB));
    const auto pixels = [&camera](const ZgeVector4& p) {
        return Projected{(p.x / p.w + 1) / 2 * camera.ViewportWidth(), (1 - p.y / p.w) / 2 * camera.ViewportHeight(),
                         p.w};
    };
    if (!(a.w > 0) || !(b.w > 0))
        return std::nullopt;
    return std::make_pair(pixels(a), pixels(b));
}
} // namespace

ZModel* ViewerPick_Bone(const ZScene& scene, ZCamera& camera, double x, double y, double reach)
{
    ZModel* found = nullptr;
    double foundDistance = reach, foundDepth = HUGE_VAL;
    std::vector<ZBoneSegment> segments;
    for (ZModel* model : scene.GetModels()) {
        if (!model->IsBone() || model->IsHidden())
            continue;
        segments.clear();
        BoneShape_AddSegments(*model, camera.GetUnit(), segments);
        for (const ZBoneSegment& segment : segments) {
            const auto ends = ProjectSegment(camera, segment);
            if (!ends.has_value())
                continue;
            const auto& [a, b] = *ends;
            const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
            const double t = square > 0 ? std::clamp(((x - a.x) * dx + (y - a.y) * dy) / square, 0.0, 1.0) : 0;
            const double distance = std::hypot(x - a.x - t * dx, y - a.y - t * dy);
            const double depth = a.depth + (b.depth - a.depth) * t;
            if (distance < foundDistance || (distance == foundDistance && depth < foundDepth)) {
                found = model;
                foundDistance = distance;
                foundDepth = depth;
            }
        }
    }
    return found;
}

ZModel* ViewerPick_Surface(const ZScene& scene, ZCamera& camera, double x, double y)
{
    const Ray ray = RayThrough(camera, x, y);
    ZModel* found = nullptr;
    double nearest = HUGE_VAL;
    for (ZModel* model : scene.GetModels()) {
        if (model->IsHidden() || !model->HasGeometry())
            continue;
        bool flat = false;
        const ZgeMatrix toModel = ZgeInverse(model->GetTransformMatrix(true), &flat);
        if (flat)
            continue;
        // An affine matrix keeps the places along the ray, so hits of all models compare.
        const Ray local{ZgeTransformPoint(ray.start, toModel), ZgeTransformDirection(ray.direction, toModel)};
        IModelGeometry& geometry = model->Geometry();
        const double along =
            model->GetKind() == ZModelKind::Nurbs ? HitGrid(geometry, local) : HitMesh(geometry, local);
        if (along < nearest) {
            nearest = along;
            found = model;
        }
    }
    return found;
}
