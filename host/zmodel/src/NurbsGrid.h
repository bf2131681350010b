// SPDX-License-Identifier: MIT
// A surface evaluated over a grid of parameters, again and again for moving control points.
#pragma once

#include "NurbsBasis.h"

#include <vector>

/// Keeps the basis functions of each column and row of the grid, so that new control points cost only the sums. Grids
/// run U fastest. Control points, grid points and normals are four floats each; the rational weights are the surface's.
class NurbsGrid
{
public:
    /// `surface` must be valid and outlive the grid, unchanged.
    void SetGrid(const ZNurbsSurface& surface, const std::vector<double>& atU, const std::vector<double>& atV);
    int GetWidth() const { return static_cast<int>(m_columns.size()); }
    int GetHeight() const { return static_cast<int>(m_rows.size()); }

    /// x, y, z, 1 of each grid point.
    void ComputePoints(const float* controlPoints, float* points);
    /// Unit normal and 0 at each grid point: direction of dS/du x dS/dv. Where that vanishes, as at a pole, the normal
    /// a little way inside holds.
    void ComputeNormals(const float* controlPoints, float* normals);

private:
    struct Homogeneous
    {
        double x = 0, y = 0, z = 0, w = 0;
        void Add(const Homogeneous& other, double share);
    };

    Homogeneous ControlPoint(const float* controlPoints, int u, int v) const;
    /// Sums over U for every control row and grid column, with or without the derivative's.
    void SumOverU(const float* controlPoints, bool derivatives);
    bool NormalAt(const float* controlPoints, const NurbsBasis& inU, const NurbsBasis& inV, float* normal) const;
    void NormalInside(const float* controlPoints, int column, int row, float* normal) const;
    static bool StoreNormal(const Homogeneous& place, const Homogeneous& alongU, const Homogeneous& alongV,
                            float* normal);

    const ZNurbsSurface* m_surface = nullptr;
    std::vector<double> m_atU, m_atV;
    std::vector<NurbsBasis> m_columns, m_rows;
    std::vector<Homogeneous> m_sums;      ///< control row * width + column
    std::vector<Homogeneous> m_sumsAlong; ///< the same with the derivative in U
};
