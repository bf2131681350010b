// SPDX-License-Identifier: MIT
// Weights of the tessellated primitive that shows a NURBS surface to programs that do not know surfaces.
#pragma once

#include "WeightRows.h"

#include <span>
#include <vector>

namespace skindesk::gltf {

// The basis functions that are not zero at `u`, degree + 1 of them, for control points `first` onwards.
// Piegl and Tiller, The NURBS Book, algorithms A2.1 and A2.2. `u` lies in [knots[degree], knots[count]].
struct BasisSpan
{
    int first = 0;
    std::vector<double> values;
};
[[nodiscard]] BasisSpan BasisAt(std::span<const double> knots, int degree, int count, double u);

// The functions of a degree from 0 on that are not zero in the span [knots[span], knots[span + 1]]: degree + 1 of them,
// the first being that of control point span - degree.
[[nodiscard]] std::vector<double> BasisInSpan(std::span<const double> knots, int degree, int span, double u);

// Rows for the grid of the stand-in: at each (u, v) the control points' influences, weighted by the rational basis;
// the largest `mostInfluences`, scaled to a sum of one. Required are those that a required control point reaches.
// `points` are the rows of the control points; those without one have the file's influences.
[[nodiscard]] WeightRows MakeStandInRows(const Mesh& mesh, const WeightRows& points, int mostInfluences);

} // namespace skindesk::gltf
