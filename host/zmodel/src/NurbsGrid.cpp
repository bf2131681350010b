// SPDX-License-Identifier: MIT
// Tensor-product sums: over U for every control row first, then over V.
#include "NurbsGrid.h"

#include "SurfaceNormals.h"
#include "WorkerPool.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kParallelPoints = 4096;

/// Rows of `width` points that are worth a piece of work of their own.
int RowGrain(int width) { return std::max(1, kParallelPoints / std::max(1, width)); }

} // namespace

void NurbsGrid::Homogeneous::Add(const Homogeneous& other, double share)
{
    x += share * other.x;
    y += share * other.y;
    z += share * other.z;
    w += share * other.w;
}

void NurbsGrid::SetGrid(const ZNurbsSurface& surface, const std::vector<double>& atU, const std::vector<double>& atV)
{
    m_surface = &surface;
    m_atU = atU;
    m_atV = atV;
    m_columns.clear();
    m_rows.clear();
    for (const double u : atU)
        m_columns.push_back(EvaluateBasis(NurbsDirection::U(surface), u));
    for (const double v : atV)
        m_rows.push_back(EvaluateBasis(NurbsDirection::V(surface), v));
}

NurbsGrid::Homogeneous NurbsGrid::ControlPoint(const float* controlPoints, int u, int v) const
{
    const size_t number = static_cast<size_t>(v) * static_cast<size_t>(m_surface->countU) + static_cast<size_t>(u);
    const double weight = m_surface->weights.empty() ? 1 : m_surface->weights[number];
    const float* const p = controlPoints + 4 * number;
    return {weight * static_cast<double>(p[0]), weight * static_cast<double>(p[1]), weight * static_cast<double>(p[2]),
            weight};
}

void NurbsGrid::SumOverU(const float* controlPoints, bool derivatives)
{
    const size_t width = m_columns.size();
    m_sums.assign(width * static_cast<size_t>(m_surface->countV), {});
    m_sumsAlong.assign(derivatives ? m_sums.size() : 0, {});
    ParallelFor(m_surface->countV, RowGrain(GetWidth()), [&](int begin, int end) {
        for (int v = begin; v < end; ++v) {
            for (size_t column = 0; column < width; ++column) {
                const NurbsBasis& basis = m_columns[column];
                const size_t place = static_cast<size_t>(v) * width + column;
                for (int i = 0; i <= m_surface->degreeU; ++i) {
                    const Homogeneous point = ControlPoint(controlPoints, basis.first + i, v);
                    m_sums[place].Add(point, basis.values[i]);
                    if (derivatives)
                        m_sumsAlong[place].Add(point, basis.derivatives[i]);
                }
            }
        }
    });
}

void NurbsGrid::ComputePoints(const float* controlPoints, float* points)
{
    SumOverU(controlPoints, false);
    const size_t width = m_columns.size();
    ParallelFor(GetHeight(), RowGrain(GetWidth()), [&](int begin, int end) {
        for (int row = begin; row < end; ++row) {
            const NurbsBasis& basis = m_rows[static_cast<size_t>(row)];
            for (size_t column = 0; column < width; ++column) {
                Homogeneous place;
                for (int j = 0; j <= m_surface->degreeV; ++j)
                    place.Add(m_sums[static_cast<size_t>(basis.first + j) * width + column], basis.values[j]);
                float* const point = points + 4 * (static_cast<size_t>(row) * width + column);
                point[0] = static_cast<float>(place.x / place.w);
                point[1] = static_cast<float>(place.y / place.w);
                point[2] = static_cast<float>(place.z / place.w);
                point[3] = 1;
            }
        }
    });
}

void NurbsGrid::ComputeNormals(const float* controlPoints, float* normals)
{
    SumOverU(controlPoints, true);
    const size_t width = m_columns.size();
    ParallelFor(GetHeight(), RowGrain(GetWidth()), [&](int begin, int end) {
        for (int row = begin; row < end; ++row) {
            const NurbsBasis& basis = m_rows[static_cast<size_t>(row)];
            for (size_t column = 0; column < width; ++column) {
                Homogeneous place, alongU, alongV;
                for (int j = 0; j <= m_surface->degreeV; ++j) {
                    const size_t sum = static_cast<size_t>(basis.first + j) * width + column;
                    place.Add(m_sums[sum], basis.values[j]);
                    alongU.Add(m_sumsAlong[sum], basis.values[j]);
                    alongV.Add(m_sums[sum], basis.derivatives[j]);
                }
                float* const normal = normals + 4 * (static_cast<size_t>(row) * width + column);
                if (!StoreNormal(place, alongU, alongV, normal))
                    NormalInside(controlPoints, static_cast<int>(column), row, normal);
            }
        }
    });
}

bool NurbsGrid::StoreNormal(const Homogeneous& place, const Homogeneous& alongU, const Homogeneous& alongV,
                            float* normal)
{
    // dS = (dA - dw S) / w for S = A / w; the divisor changes no direction.
    const double s[3] = {place.x / place.w, place.y / place.w, place.z / place.w};
    const double du[3] = {alongU.x - alongU.w * s[0], alongU.y - alongU.w * s[1], alongU.z - alongU.w * s[2]};
    const double dv[3] = {alongV.x - alongV.w * s[0], alongV.y - alongV.w * s[1], alongV.z - alongV.w * s[2]};
    const double x = du[1] * dv[2] - du[2] * dv[1];
    const double y = du[2] * dv[0] - du[0] * dv[2];
    const double z = du[0] * dv[1] - du[1] * dv[0];
    StoreUnitNormal(x, y, z, normal);
    // Control points are single precision: a tangent shorter than their rounding, or two that are parallel within it,
    // say nothing about a direction.
    constexpr double kRounding = 1e-6;
    const double extent = (std::abs(s[0]) + std::abs(s[1]) + std::abs(s[2])) * place.w;
    const double lengthU = std::sqrt(du[0] * du[0] + du[1] * du[1] + du[2] * du[2]);
    const double lengthV = std::sqrt(dv[0] * dv[0] + dv[1] * dv[1] + dv[2] * dv[2]);
    const double longer = std::max({lengthU, lengthV, extent * kRounding});
    return std::sqrt(x * x + y * y + z * z) > kRounding * longer * longer;
}

bool NurbsGrid::NormalAt(const float* controlPoints, const NurbsBasis& inU, const NurbsBasis& inV, float* normal) const
{
    Homogeneous place, alongU, alongV;
    for (int j = 0; j <= m_surface->degreeV; ++j) {
        for (int i = 0; i <= m_surface->degreeU; ++i) {
            const Homogeneous point = ControlPoint(controlPoints, inU.first + i, inV.first + j);
            place.Add(point, inU.values[i] * inV.values[j]);
            alongU.Add(point, inU.derivatives[i] * inV.values[j]);
            alongV.Add(point, inU.values[i] * inV.derivatives[j]);
        }
    }
    return StoreNormal(place, alongU, alongV, normal);
}

void NurbsGrid::NormalInside(const float* controlPoints, int column, int row, float* normal) const
{
    const NurbsDirection inU = NurbsDirection::U(*m_surface);
    const NurbsDirection inV = NurbsDirection::V(*m_surface);
    const double u = m_atU[static_cast<size_t>(column)];
    const double v = m_atV[static_cast<size_t>(row)];
    const double middleU = (inU.Begin() + inU.End()) / 2;
    const double middleV = (inV.Begin() + inV.End()) / 2;
    // A collapsed edge opens a little way inside; several equal control rows, as in a closed tip, only further in.
    for (const double step : {1e-3, 1e-2, 1e-1}) {
        const NurbsBasis insideU = EvaluateBasis(inU, u + (middleU - u) * step);
        const NurbsBasis insideV = EvaluateBasis(inV, v + (middleV - v) * step);
        if (NormalAt(controlPoints, insideU, insideV, normal))
            return;
    }
}
