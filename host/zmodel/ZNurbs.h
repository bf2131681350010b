// SPDX-License-Identifier: MIT
// A rational B-spline (NURBS) surface and its evaluation.
#pragma once

#include <string>
#include <vector>

inline constexpr int kNurbsHighestDegree = 5;

/// Control points run U fastest: point = v * countU + u. Knot vectors have count + degree + 1 numbers that never
/// decrease; open, clamped and periodic vectors alike. The domain is knots[degree] to knots[count] in each direction.
struct ZNurbsSurface
{
    int degreeU = 3, degreeV = 3; ///< 1 to 5
    int countU = 0, countV = 0;
    std::vector<double> knotsU, knotsV;
    std::vector<double> points;  ///< three doubles a control point
    std::vector<double> weights; ///< one a control point, positive; empty: all 1

    /// Empty when the parts fit together, else one sentence that says which numbers disagree.
    std::string Validate() const;
};

/// Point at (u, v), three doubles, of a surface that Validate finds nothing wrong with; u and v are clamped to the
/// domain. de Boor's recurrence on homogeneous points (C. de Boor, "On calculating with B-splines", J. Approx. Theory
/// 6, 1972).
void ZNurbs_Evaluate(const ZNurbsSurface& surface, double u, double v, double point[3]);

/// Rational basis: how much each control point counts at (u, v). Writes the (degreeU+1)*(degreeV+1) numbers of the
/// control points that matter, and their numbers; both arrays have that length. The numbers sum to one.
void ZNurbs_Basis(const ZNurbsSurface& surface, double u, double v, std::vector<int>& points,
                  std::vector<double>& shares);
