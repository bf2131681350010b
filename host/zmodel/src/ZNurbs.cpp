// SPDX-License-Identifier: MIT
// Checking a NURBS surface, and its points one by one.
#include "zmodel/ZNurbs.h"

#include "NurbsBasis.h"

#include <algorithm>
#include <cmath>

namespace {

std::string ValidateDirection(const NurbsDirection& direction, const std::string& name)
{
    const size_t needed = static_cast<size_t>(std::max(direction.count, 0)) + static_cast<size_t>(direction.degree) + 1;
    if (direction.degree < 1 || direction.degree > kNurbsHighestDegree)
        return "The degree in " + name + " is " + std::to_string(direction.degree) + "; 1 to " +
               std::to_string(kNurbsHighestDegree) + " can be evaluated.";
    if (direction.count <= direction.degree)
        return "There are " + std::to_string(direction.count) + " control points in " + name + "; degree " +
               std::to_string(direction.degree) + " needs at least " + std::to_string(direction.degree + 1) + ".";
    if (direction.knots.size() != needed)
        return "There are " + std::to_string(direction.knots.size()) + " knots in " + name + "; " +
               std::to_string(direction.count) + " control points of degree " + std::to_string(direction.degree) +
               " need " + std::to_string(needed) + ".";
    for (size_t i = 0; i < needed; ++i) {
        if (!std::isfinite(direction.knots[i]))
            return "Knot " + std::to_string(i) + " in " + name + " is not a finite number.";
        if (i > 0 && direction.knots[i] < direction.knots[i - 1])
            return "Knot " + std::to_string(i) + " in " + name + " is " + std::to_string(direction.knots[i]) +
                   ", less than the one before it, " + std::to_string(direction.knots[i - 1]) + ".";
    }
    if (!(direction.Begin() < direction.End()))
        return "The domain in " + name + " is empty: it begins and ends at " + std::to_string(direction.Begin()) + ".";
    return {};
}

std::string ValidatePoints(const ZNurbsSurface& surface)
{
    const size_t count = static_cast<size_t>(surface.countU) * static_cast<size_t>(surface.countV);
    if (surface.points.size() != 3 * count)
        return "There are " + std::to_string(surface.points.size()) + " coordinates; " +
               std::to_string(surface.countU) + " x " + std::to_string(surface.countV) + " control points need " +
               std::to_string(3 * count) + ".";
    for (size_t i = 0; i < surface.points.size(); ++i)
        if (!std::isfinite(surface.points[i]))
            return "Coordinate " + std::to_string(i % 3) + " of control point " + std::to_string(i / 3) +
                   " is not a finite number.";
    if (!surface.weights.empty() && surface.weights.size() != count)
        return "There are " + std::to_string(surface.weights.size()) + " weights; " + std::to_string(surface.countU) +
               " x " + std::to_string(surface.countV) + " control points need " + std::to_string(count) + " or none.";
    for (size_t i = 0; i < surface.weights.size(); ++i)
        if (!std::isfinite(surface.weights[i]) || surface.weights[i] <= 0)
            return "The weight of control point " + std::to_string(i) + " is " + std::to_string(surface.weights[i]) +
                   "; it must be above 0.";
    return {};
}

struct Homogeneous
{
    double x = 0, y = 0, z = 0, w = 0;
};

Homogeneous Between(const Homogeneous& a, const Homogeneous& b, double fraction)
{
    const double rest = 1 - fraction;
    return {rest * a.x + fraction * b.x, rest * a.y + fraction * b.y, rest * a.z + fraction * b.z,
            rest * a.w + fraction * b.w};
}

/// de Boor's recurrence in place: `points` are the degree + 1 control points of the span that holds `t`.
Homogeneous DeBoor(const NurbsDirection& direction, int span, double t, Homogeneous* points)
{
    const int degree = direction.degree;
    const double* const knots = direction.knots.data();
    for (int level = 1; level <= degree; ++level) {
        for (int i = degree; i >= level; --i) {
            const double from = knots[span - degree + i];
            const double to = knots[span + 1 + i - level];
            points[i] = Between(points[i - 1], points[i], (t - from) / (to - from));
        }
    }
    return points[degree];
}

} // namespace

std::string ZNurbsSurface::Validate() const
{
    std::string wrong = ValidateDirection(NurbsDirection::U(*this), "U");
    if (wrong.empty())
        wrong = ValidateDirection(NurbsDirection::V(*this), "V");
    if (wrong.empty())
        wrong = ValidatePoints(*this);
    return wrong;
}

void ZNurbs_Evaluate(const ZNurbsSurface& surface, double u, double v, double point[3])
{
    const NurbsDirection inU = NurbsDirection::U(surface);
    const NurbsDirection inV = NurbsDirection::V(surface);
    const double atU = inU.Clamp(u);
    const double atV = inV.Clamp(v);
    const int spanU = inU.FindSpan(atU);
    const int spanV = inV.FindSpan(atV);
    Homogeneous column[kNurbsHighestDegree + 1];
    for (int j = 0; j <= inV.degree; ++j) {
        Homogeneous row[kNurbsHighestDegree + 1];
        for (int i = 0; i <= inU.degree; ++i) {
            const size_t number = static_cast<size_t>(spanV - inV.degree + j) * static_cast<size_t>(surface.countU) +
                                  static_cast<size_t>(spanU - inU.degree + i);
            const double weight = surface.weights.empty() ? 1 : surface.weights[number];
            const double* const p = surface.points.data() + 3 * number;
            row[i] = {p[0] * weight, p[1] * weight, p[2] * weight, weight};
        }
        column[j] = DeBoor(inU, spanU, atU, row);
    }
    const Homogeneous place = DeBoor(inV, spanV, atV, column);
    point[0] = place.x / place.w;
    point[1] = place.y / place.w;
    point[2] = place.z / place.w;
}

void ZNurbs_Basis(const ZNurbsSurface& surface, double u, double v, std::vector<int>& points,
                  std::vector<double>& shares)
{
    const NurbsBasis inU = EvaluateBasis(NurbsDirection::U(surface), u);
    const NurbsBasis inV = EvaluateBasis(NurbsDirection::V(surface), v);
    points.clear();
    shares.clear();
    double sum = 0;
    for (int j = 0; j <= surface.degreeV; ++j) {
        for (int i = 0; i <= surface.degreeU; ++i) {
            const int number = (inV.first + j) * surface.countU + inU.first + i;
            const double weight = surface.weights.empty() ? 1 : surface.weights[static_cast<size_t>(number)];
            points.push_back(number);
            shares.push_back(inU.values[i] * inV.values[j] * weight);
            sum += shares.back();
        }
    }
    for (double& share : shares)
        share /= sum;
}
