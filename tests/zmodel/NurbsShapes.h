// SPDX-License-Identifier: MIT
// Surfaces that are known in closed form.
#pragma once

#include "zmodel/ZNurbs.h"

#include <cmath>
#include <functional>
#include <vector>

/// Knots 0 ... 0, equal steps, 1 ... 1.
inline std::vector<double> ClampedKnots(int degree, int count)
{
    std::vector<double> knots;
    const int spans = count - degree;
    for (int i = -degree; i <= spans + degree; ++i)
        knots.push_back(std::min(std::max(i, 0), spans) / static_cast<double>(spans));
    return knots;
}

/// Knots one apart, for open and periodic surfaces.
inline std::vector<double> UniformKnots(int degree, int count)
{
    std::vector<double> knots;
    for (int i = 0; i <= count + degree; ++i)
        knots.push_back(i);
    return knots;
}

/// The mean of the knots inside a control point's support, where a surface linear in its parameters has the point.
inline double GrevilleOf(const std::vector<double>& knots, int degree, int point)
{
    double sum = 0;
    for (int k = point + 1; k <= point + degree; ++k)
        sum += knots[static_cast<size_t>(k)];
    return sum / degree;
}

/// The plane (u, v, 2u - v + 1) over the domain of the given knots.
inline ZNurbsSurface MakePlane(int degreeU, int degreeV, std::vector<double> knotsU, std::vector<double> knotsV)
{
    ZNurbsSurface plane;
    plane.degreeU = degreeU;
    plane.degreeV = degreeV;
    plane.countU = static_cast<int>(knotsU.size()) - degreeU - 1;
    plane.countV = static_cast<int>(knotsV.size()) - degreeV - 1;
    plane.knotsU = std::move(knotsU);
    plane.knotsV = std::move(knotsV);
    for (int v = 0; v < plane.countV; ++v) {
        for (int u = 0; u < plane.countU; ++u) {
            const double x = GrevilleOf(plane.knotsU, degreeU, u);
            const double y = GrevilleOf(plane.knotsV, degreeV, v);
            plane.points.insert(plane.points.end(), {x, y, 2 * x - y + 1});
        }
    }
    return plane;
}

/// The nine-point rational quadratic circle of radius 1: x, y and weight of each point, and its knots.
struct UnitCircle
{
    std::vector<double> knots{0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 4};
    double x[9] = {1, 1, 0, -1, -1, -1, 0, 1, 1};
    double y[9] = {0, 1, 1, 1, 0, -1, -1, -1, 0};
    double Weight(int i) const { return i % 2 == 0 ? 1 : std::sqrt(0.5); }
};

/// A profile (r, z) turned about Z; U runs around.
inline ZNurbsSurface Revolve(const std::vector<double>& r, const std::vector<double>& z,
                             const std::vector<double>& weights, int degree, std::vector<double> knots)
{
    const UnitCircle circle;
    ZNurbsSurface surface;
    surface.degreeU = 2;
    surface.degreeV = degree;
    surface.countU = 9;
    surface.countV = static_cast<int>(r.size());
    surface.knotsU = circle.knots;
    surface.knotsV = std::move(knots);
    for (size_t v = 0; v < r.size(); ++v) {
        for (int u = 0; u < 9; ++u) {
            surface.points.insert(surface.points.end(), {r[v] * circle.x[u], r[v] * circle.y[u], z[v]});
            surface.weights.push_back(weights[v] * circle.Weight(u));
        }
    }
    return surface;
}

inline ZNurbsSurface MakeCylinder(double radius, double height)
{
    return Revolve({radius, radius}, {0, height}, {1, 1}, 1, {0, 0, 1, 1});
}

/// A whole sphere about the origin, south pole to north pole in V.
inline ZNurbsSurface MakeSphere(double radius)
{
    const double w = std::sqrt(0.5);
    return Revolve({0, radius, radius, radius, 0}, {-radius, -radius, 0, radius, radius}, {1, w, 1, w, 1}, 2,
                   {0, 0, 0, 1, 1, 2, 2, 2});
}

/// A torus about Z: circle of radius `tube` at distance `ring`.
inline ZNurbsSurface MakeTorus(double ring, double tube)
{
    const UnitCircle circle;
    std::vector<double> r, z, w;
    for (int i = 0; i < 9; ++i) {
        r.push_back(ring + tube * circle.x[i]);
        z.push_back(tube * circle.y[i]);
        w.push_back(circle.Weight(i));
    }
    return Revolve(r, z, w, 2, circle.knots);
}
