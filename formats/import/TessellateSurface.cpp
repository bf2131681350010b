// SPDX-License-Identifier: MIT
// Points and normals of a NURBS surface over an even grid.
#include "TessellateSurface.h"

#include "gltf/NurbsStandIn.h"

#include <algorithm>
#include <cmath>

namespace skindesk::imports {

namespace {

constexpr std::size_t MOST_VERTICES = 1u << 20;
constexpr std::size_t STEPS_PER_SPAN = 8;
// How far from a pole its normal is taken, as a part of the domain.
constexpr double BESIDE = 1e-4;

using Vector3 = std::array<double, 3>;
using Homogeneous = std::array<double, 4>; // x y z times weight, weight

// The functions of one direction at one parameter, and their derivatives.
struct Basis
{
    std::size_t first = 0;
    std::vector<double> values;
    std::vector<double> slopes;
};

Basis BasisAndSlopes(const std::vector<double>& knots, int degree, int count, double u)
{
    const gltf::BasisSpan at = gltf::BasisAt(knots, degree, count, u);
    Basis basis;
    basis.first = static_cast<std::size_t>(at.first);
    basis.values = at.values;
    basis.slopes.assign(at.values.size(), 0);
    const auto p = static_cast<std::size_t>(degree);
    const std::vector<double> lower = gltf::BasisInSpan(knots, degree - 1, at.first + degree, u);
    // lower[r] belongs to function first + 1 + r of one degree less; it pulls two neighbours, in opposite directions.
    for (std::size_t r = 0; r < p; ++r) {
        const std::size_t i = basis.first + 1 + r;
        const double width = knots[i + p] - knots[i];
        const double slope = width > 0 ? degree * lower[r] / width : 0;
        basis.slopes[r] -= slope;
        basis.slopes[r + 1] += slope;
    }
    return basis;
}

struct PointAndSlopes
{
    Vector3 point{};
    Vector3 alongU{};
    Vector3 alongV{};
};

Vector3 Cross(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double LengthOf(const Vector3& v) { return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]); }

class Evaluator
{
public:
    Evaluator(const NewNurbsSurface& surface, const std::vector<float>& points) : m_surface(surface), m_points(points)
    {
    }

    [[nodiscard]] Basis BasisOf(std::size_t direction, double u) const
    {
        return BasisAndSlopes(m_surface.knots[direction], m_surface.degree[direction], m_surface.count[direction], u);
    }

    // The parameter of step `i` of `steps` from one end of the domain to the other. Knots may lie so far apart that
    // their distance is no number; what is between them always is.
    [[nodiscard]] double ParameterAt(std::size_t direction, int i, int steps) const
    {
        const auto [from, to] = DomainOf(direction);
        const double share = static_cast<double>(i) / (steps - 1);
        return i + 1 == steps ? to : from * (1 - share) + to * share;
    }

    // The same a little further inside.
    [[nodiscard]] double Inside(std::size_t direction, double u) const
    {
        const auto [from, to] = DomainOf(direction);
        const double step = to * BESIDE - from * BESIDE;
        return std::clamp(u, from + step, to - step);
    }

    [[nodiscard]] PointAndSlopes At(const Basis& u, const Basis& v) const
    {
        Homogeneous point{};
        Homogeneous alongU{};
        Homogeneous alongV{};
        for (std::size_t j = 0; j < v.values.size(); ++j) {
            for (std::size_t i = 0; i < u.values.size(); ++i) {
                const Homogeneous p = PointAt(u.first + i, v.first + j);
                for (std::size_t c = 0; c < 4; ++c) {
                    point[c] += u.values[i] * v.values[j] * p[c];
                    alongU[c] += u.slopes[i] * v.values[j] * p[c];
                    alongV[c] += u.values[i] * v.slopes[j] * p[c];
                }
            }
        }
        PointAndSlopes at;
        for (std::size_t c = 0; c < 3; ++c) {
            at.point[c] = point[c] / point[3];
            at.alongU[c] = (alongU[c] - alongU[3] * at.point[c]) / point[3];
            at.alongV[c] = (alongV[c] - alongV[3] * at.point[c]) / point[3];
        }
        return at;
    }

private:
    [[nodiscard]] std::pair<double, double> DomainOf(std::size_t direction) const
    {
        const std::vector<double>& knots = m_surface.knots[direction];
        return {knots[static_cast<std::size_t>(m_surface.degree[direction])],
                knots[static_cast<std::size_t>(m_surface.count[direction])]};
    }

    [[nodiscard]] Homogeneous PointAt(std::size_t i, std::size_t j) const
    {
        const std::size_t n = j * static_cast<std::size_t>(m_surface.count[0]) + i;
        const double weight = m_surface.pointWeights.empty() ? 1 : m_surface.pointWeights[n];
        return {weight * m_points[3 * n], weight * m_points[3 * n + 1], weight * m_points[3 * n + 2], weight};
    }

    const NewNurbsSurface& m_surface;
    const std::vector<float>& m_points;
};

// Of unit length; nothing where the surface has no direction.
bool UnitNormal(const PointAndSlopes& at, Vector3& normal)
{
    normal = Cross(at.alongU, at.alongV);
    const double length = LengthOf(normal);
    // Beside rounding, a cross product says nothing about the direction.
    if (!(length > 1e-10 * LengthOf(at.alongU) * LengthOf(at.alongV)) || !std::isfinite(length)) {
        return false;
    }
    for (double& c : normal) {
        c /= length;
    }
    return true;
}

Vector3 NormalAt(const Evaluator& evaluator, const PointAndSlopes& at, double u, double v)
{
    Vector3 normal;
    if (UnitNormal(at, normal)) {
        return normal;
    }
    const PointAndSlopes beside =
        evaluator.At(evaluator.BasisOf(0, evaluator.Inside(0, u)), evaluator.BasisOf(1, evaluator.Inside(1, v)));
    return UnitNormal(beside, normal) ? normal : Vector3{0, 0, 1};
}

std::vector<std::uint32_t> CornersOf(const std::array<int, 2>& grid)
{
    std::vector<std::uint32_t> corners;
    const auto width = static_cast<std::uint32_t>(grid[0]);
    const auto height = static_cast<std::uint32_t>(grid[1]);
    corners.reserve(std::size_t{6} * (width - 1) * (height - 1));
    for (std::uint32_t j = 0; j + 1 < height; ++j) {
        for (std::uint32_t i = 0; i + 1 < width; ++i) {
            const std::uint32_t a = j * width + i;
            corners.insert(corners.end(), {a, a + 1, a + width + 1, a, a + width + 1, a + width});
        }
    }
    return corners;
}

std::size_t SpansOf(const NewNurbsSurface& surface, std::size_t direction)
{
    const std::vector<double>& knots = surface.knots[direction];
    std::size_t spans = 0;
    for (auto i = static_cast<std::size_t>(surface.degree[direction]);
         i < static_cast<std::size_t>(surface.count[direction]); ++i) {
        spans += knots[i] < knots[i + 1] ? 1 : 0;
    }
    return spans;
}

} // namespace

std::vector<std::array<int, 2>> ChooseGrids(const std::vector<const NewNurbsSurface*>& surfaces)
{
    std::vector<std::array<std::size_t, 2>> spans;
    spans.reserve(surfaces.size());
    for (const NewNurbsSurface* surface : surfaces) {
        spans.push_back({SpansOf(*surface, 0), SpansOf(*surface, 1)});
    }
    const auto verticesAt = [&](std::size_t steps) {
        std::size_t vertices = 0;
        for (const auto& [u, v] : spans) {
            vertices += (u * steps + 1) * (v * steps + 1);
        }
        return vertices;
    };
    std::size_t steps = STEPS_PER_SPAN;
    while (steps > 1 && verticesAt(steps) > MOST_VERTICES) {
        --steps;
    }
    std::vector<std::array<int, 2>> grids;
    for (std::size_t i = 0; i < surfaces.size(); ++i) {
        const std::array<int, 2> chosen{static_cast<int>(spans[i][0] * steps + 1),
                                        static_cast<int>(spans[i][1] * steps + 1)};
        grids.push_back(surfaces[i]->grid[0] > 0 ? surfaces[i]->grid : chosen);
    }
    return grids;
}

Tessellation Tessellate(const NewNurbsSurface& surface, const std::vector<float>& points,
                        const std::array<int, 2>& grid)
{
    const Evaluator evaluator(surface, points);
    Tessellation shape;
    shape.grid = grid;
    std::vector<Basis> rowBasis;
    rowBasis.reserve(static_cast<std::size_t>(shape.grid[0]));
    for (int i = 0; i < shape.grid[0]; ++i) {
        rowBasis.push_back(evaluator.BasisOf(0, evaluator.ParameterAt(0, i, shape.grid[0])));
    }
    for (int j = 0; j < shape.grid[1]; ++j) {
        const double v = evaluator.ParameterAt(1, j, shape.grid[1]);
        const Basis column = evaluator.BasisOf(1, v);
        for (int i = 0; i < shape.grid[0]; ++i) {
            const PointAndSlopes at = evaluator.At(rowBasis[static_cast<std::size_t>(i)], column);
            const Vector3 normal = NormalAt(evaluator, at, evaluator.ParameterAt(0, i, shape.grid[0]), v);
            shape.positions.insert(shape.positions.end(), at.point.begin(), at.point.end());
            shape.normals.insert(shape.normals.end(), normal.begin(), normal.end());
        }
    }
    shape.corners = CornersOf(shape.grid);
    return shape;
}

} // namespace skindesk::imports
