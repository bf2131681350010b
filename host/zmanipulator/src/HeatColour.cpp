// SPDX-License-Identifier: MIT
#include "HeatColour.h"

#include <algorithm>
#include <cmath>

namespace {
std::vector<double> VertexWeights(ZModelGeometryBase& model, int link)
{
    const ZSkin& skin = *model.GetSkin();
    std::vector<double> weights(static_cast<size_t>(std::max(0, model.VertexCount())));
    const auto& vertices = skin.GetEntryVertices(link);
    const auto& entryWeights = skin.GetEntryWeights(link);
    for (int i = 0; i < vertices.GetCount(); ++i)
        if (const auto vertex = static_cast<size_t>(vertices[i]); vertex < weights.size())
            weights[vertex] += entryWeights[i];
    return weights;
}

/// Weights at the points of an even grid over the surface's domain.
std::vector<double> GridWeights(const ZNurbsSurface& surface, const std::vector<double>& control, int width, int height)
{
    const auto at = [](const std::vector<double>& knots, int degree, int count, int i, int n) {
        const double first = knots[static_cast<size_t>(degree)], last = knots[static_cast<size_t>(count)];
        return n > 1 ? first + (last - first) * i / (n - 1) : first;
    };
    std::vector<double> weights;
    weights.reserve(static_cast<size_t>(width) * static_cast<size_t>(height));
    std::vector<int> points;
    std::vector<double> shares;
    for (int row = 0; row < height; ++row) {
        const double v = at(surface.knotsV, surface.degreeV, surface.countV, row, height);
        for (int column = 0; column < width; ++column) {
            ZNurbs_Basis(surface, at(surface.knotsU, surface.degreeU, surface.countU, column, width), v, points,
                         shares);
            double weight = 0;
            for (size_t i = 0; i < points.size(); ++i)
                weight += shares[i] * control[static_cast<size_t>(points[i])];
            weights.push_back(weight);
        }
    }
    return weights;
}
} // namespace

int HeatColour_ShownLink(const ZSkin& skin)
{
    const double value = skin.GetDisplayValue();
    const int links = const_cast<ZSkin&>(skin).LinkCount();
    return value >= 0 && value < links ? static_cast<int>(value) : -1;
}

void HeatColour_Of(double weight, std::uint8_t colour[4])
{
    const double w = weight > 0 ? std::min(weight, 1.0) : 0.0;
    const auto part = [](double value) { return std::clamp(value, 0.0, 1.0); };
    const double parts[3] = {part(4 * w - 2), part(2 - std::abs(4 * w - 2)), part(2 - 4 * w)};
    for (int i = 0; i < 3; ++i)
        colour[i] = static_cast<std::uint8_t>(std::lround(255 * parts[i]));
    colour[3] = 255;
}

std::vector<std::uint8_t> HeatColour_Table(ZModelGeometryBase& model, int link, int width, int height)
{
    std::vector<double> weights = VertexWeights(model, link);
    if (const auto* const nurbs = Object_Cast<ZModelNurbs>(&model))
        weights = GridWeights(nurbs->GetSurface(), weights, width, height);
    std::vector<std::uint8_t> colours(weights.size() * 4);
    for (size_t i = 0; i < weights.size(); ++i)
        HeatColour_Of(weights[i], &colours[4 * i]);
    return colours;
}
