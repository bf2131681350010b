// SPDX-License-Identifier: MIT
// B-spline basis functions of one direction.
#pragma once

#include "zmodel/ZNurbs.h"

#include <vector>

/// One direction of a surface; points into it.
struct NurbsDirection
{
    const std::vector<double>& knots;
    int degree;
    int count;

    static NurbsDirection U(const ZNurbsSurface& surface) { return {surface.knotsU, surface.degreeU, surface.countU}; }
    static NurbsDirection V(const ZNurbsSurface& surface) { return {surface.knotsV, surface.degreeV, surface.countV}; }

    double Begin() const { return knots[static_cast<size_t>(degree)]; }
    double End() const { return knots[static_cast<size_t>(count)]; }
    /// `t` moved into the domain; what is no number goes to its beginning.
    double Clamp(double t) const;
    /// The i with knots[i] <= t < knots[i + 1]; at the domain's end the last span that is not empty.
    int FindSpan(double t) const;
    /// `count` parameters evenly over the domain, both ends included; the beginning when it is one.
    std::vector<double> Evenly(int samples) const;
    /// Where each control point pulls most (T. Greville): the mean of the knots inside its support.
    std::vector<double> Greville() const;
};

/// The degree + 1 basis functions that are not zero at a parameter, and their derivatives.
struct NurbsBasis
{
    int first = 0; ///< the control point of values[0]
    double values[kNurbsHighestDegree + 1] = {};
    double derivatives[kNurbsHighestDegree + 1] = {};
};

/// Cox's and de Boor's recurrence in its triangular form, in which no quotient has a vanishing denominator (M. Cox,
/// 1972; C. de Boor, 1972; as algorithm A2.2 of L. Piegl and W. Tiller, "The NURBS Book").
NurbsBasis EvaluateBasis(const NurbsDirection& direction, double t);
