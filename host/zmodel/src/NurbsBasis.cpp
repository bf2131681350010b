// SPDX-License-Identifier: MIT
// Spans, basis functions and their derivatives.
#include "NurbsBasis.h"

#include <algorithm>

double NurbsDirection::Clamp(double t) const
{
    if (!(t > Begin()))
        return Begin();
    return std::min(t, End());
}

int NurbsDirection::FindSpan(double t) const
{
    const auto lowest = knots.begin() + degree;
    const auto highest = knots.begin() + count;
    const auto above = t < End() ? std::upper_bound(lowest, highest, t) : std::lower_bound(lowest, highest, End());
    return static_cast<int>(above - knots.begin()) - 1;
}

std::vector<double> NurbsDirection::Evenly(int samples) const
{
    std::vector<double> parameters(static_cast<size_t>(samples), Begin());
    for (int i = 1; i < samples; ++i)
        parameters[static_cast<size_t>(i)] = i == samples - 1 ? End() : Begin() + (End() - Begin()) * i / (samples - 1);
    return parameters;
}

std::vector<double> NurbsDirection::Greville() const
{
    std::vector<double> parameters;
    for (int i = 0; i < count; ++i) {
        double sum = 0;
        for (int k = i + 1; k <= i + degree; ++k)
            sum += knots[static_cast<size_t>(k)];
        parameters.push_back(Clamp(sum / degree));
    }
    return parameters;
}

NurbsBasis EvaluateBasis(const NurbsDirection& direction, double t)
{
    const double parameter = direction.Clamp(t);
    const int span = direction.FindSpan(parameter);
    const double* const knots = direction.knots.data();
    NurbsBasis basis;
    basis.first = span - direction.degree;
    double lower[kNurbsHighestDegree + 1] = {}; // the functions of one degree less, for the derivatives
    basis.values[0] = 1;
    for (int degree = 1; degree <= direction.degree; ++degree) {
        std::copy(basis.values, basis.values + degree, lower);
        double carried = 0;
        for (int i = 0; i < degree; ++i) {
            const double right = knots[span + i + 1] - parameter;
            const double left = parameter - knots[span + i + 1 - degree];
            const double share = lower[i] / (right + left);
            basis.values[i] = carried + right * share;
            carried = left * share;
        }
        basis.values[degree] = carried;
    }
    const int degree = direction.degree;
    for (int i = 0; i <= degree; ++i) {
        const double before = i > 0 ? lower[i - 1] / (knots[span + i] - knots[span + i - degree]) : 0;
        const double after = i < degree ? lower[i] / (knots[span + i + 1] - knots[span + i + 1 - degree]) : 0;
        basis.derivatives[i] = degree * (before - after);
    }
    return basis;
}
