// SPDX-License-Identifier: MIT
// Weights of the tessellated primitive that shows a NURBS surface.
#include "NurbsStandIn.h"

#include <algorithm>
#include <cmath>

namespace skindesk::gltf {

namespace {

// The basis of every row or column of the grid.
std::vector<BasisSpan> BasisOfGrid(const NurbsSurface& surface, std::size_t direction)
{
    const std::vector<double>& knots = surface.knots[direction];
    const auto degree = static_cast<std::size_t>(surface.degree[direction]);
    const double from = knots[degree];
    const double to = knots[knots.size() - 1 - degree];
    const int steps = surface.grid[direction];
    std::vector<BasisSpan> basis;
    for (int i = 0; i < steps; ++i) {
        const double u = i + 1 == steps ? to : from + (to - from) * i / (steps - 1);
        basis.push_back(BasisAt(knots, surface.degree[direction], surface.count[direction], u));
    }
    return basis;
}

class StandInMaker
{
public:
    StandInMaker(const Mesh& mesh, const WeightRows& points, int mostInfluences)
        : m_mesh(mesh), m_points(points), m_most(static_cast<std::size_t>(mostInfluences))
    {
    }

    WeightRows Make()
    {
        const std::vector<BasisSpan> us = BasisOfGrid(*m_mesh.nurbs, 0);
        const std::vector<BasisSpan> vs = BasisOfGrid(*m_mesh.nurbs, 1);
        for (const BasisSpan& v : vs) {
            for (const BasisSpan& u : us) {
                AddVertex(u, v);
            }
        }
        return std::move(m_rows);
    }

private:
    void AddVertex(const BasisSpan& u, const BasisSpan& v)
    {
        m_sum.clear();
        bool isRequired = false;
        for (std::size_t j = 0; j < v.values.size(); ++j) {
            for (std::size_t i = 0; i < u.values.size(); ++i) {
                const std::size_t point =
                    (static_cast<std::size_t>(v.first) + j) * static_cast<std::size_t>(m_mesh.nurbs->count[0]) +
                    static_cast<std::size_t>(u.first) + i;
                const double basis = u.values[i] * v.values[j] * m_mesh.nurbs->pointWeights[point];
                if (basis > 0) {
                    AddPoint(point, basis);
                    isRequired |= !m_points.IsEmpty() && m_points.isRequired[point] != 0;
                }
            }
        }
        KeepLargest();
        m_rows.rowOf.push_back(static_cast<std::int32_t>(m_rows.offsets.size() - 1));
        m_rows.isRequired.push_back(isRequired ? 1 : 0);
        m_rows.entries.insert(m_rows.entries.end(), m_sum.begin(), m_sum.end());
        m_rows.offsets.push_back(static_cast<std::uint32_t>(m_rows.entries.size()));
    }

    void AddPoint(std::size_t point, double basis)
    {
        if (!m_points.IsEmpty() && m_points.rowOf[point] >= 0) {
            for (const Influence& i : m_points.Row(point)) {
                m_sum.push_back({i.joint, i.weight * basis});
            }
            return;
        }
        const Influences& file = m_mesh.influences;
        for (std::size_t e = file.offsets[point]; e < file.offsets[point + 1]; ++e) {
            m_sum.push_back({file.joints[e], file.weights[e] * basis});
        }
    }

    void KeepLargest()
    {
        std::stable_sort(m_sum.begin(), m_sum.end(),
                         [](const Influence& a, const Influence& b) { return a.joint < b.joint; });
        std::vector<Influence> merged;
        for (const Influence& i : m_sum) {
            if (!merged.empty() && merged.back().joint == i.joint) {
                merged.back().weight += i.weight;
            } else {
                merged.push_back(i);
            }
        }
        // Other programs take a stand-in for an ordinary mesh; only weights that those understand go there.
        std::erase_if(merged, [](const Influence& i) { return !(i.weight > 0) || !std::isfinite(i.weight); });
        std::stable_sort(merged.begin(), merged.end(),
                         [](const Influence& a, const Influence& b) { return a.weight > b.weight; });
        merged.resize(std::min(merged.size(), m_most));
        double whole = 0;
        for (const Influence& i : merged) {
            whole += i.weight;
        }
        for (Influence& i : merged) {
            i.weight /= whole;
        }
        m_sum = std::move(merged);
    }

    const Mesh& m_mesh;
    const WeightRows& m_points;
    std::size_t m_most;
    WeightRows m_rows;
    std::vector<Influence> m_sum;
};

} // namespace

BasisSpan BasisAt(std::span<const double> knots, int degree, int count, double u)
{
    const auto p = static_cast<std::size_t>(degree);
    const auto n = static_cast<std::size_t>(count);
    // The last span that begins at or before u and is not empty.
    const auto behind = std::upper_bound(knots.begin() + degree, knots.begin() + count, u);
    auto span = static_cast<std::size_t>(behind - knots.begin()) - 1;
    while (span > p && !(knots[span] < knots[span + 1])) {
        --span;
    }
    span = std::min(span, n - 1);
    return {static_cast<int>(span - p), BasisInSpan(knots, degree, static_cast<int>(span), u)};
}

std::vector<double> BasisInSpan(std::span<const double> knots, int degree, int spanIndex, double u)
{
    const auto p = static_cast<std::size_t>(degree);
    const auto span = static_cast<std::size_t>(spanIndex);
    std::vector<double> values(p + 1, 0.0);
    values[0] = 1.0;
    std::vector<double> left(p + 1);
    std::vector<double> right(p + 1);
    for (std::size_t j = 1; j <= p; ++j) {
        left[j] = u - knots[span + 1 - j];
        right[j] = knots[span + j] - u;
        double saved = 0;
        for (std::size_t r = 0; r < j; ++r) {
            const double width = right[r + 1] + left[j - r];
            const double part = width != 0 ? values[r] / width : 0;
            values[r] = saved + right[r + 1] * part;
            saved = left[j - r] * part;
        }
        values[j] = saved;
    }
    return values;
}

WeightRows MakeStandInRows(const Mesh& mesh, const WeightRows& points, int mostInfluences)
{
    return StandInMaker(mesh, points, mostInfluences).Make();
}

} // namespace skindesk::gltf
