// SPDX-License-Identifier: MIT
// The colour of one vertex from its influences, for the three colour modes.
#pragma once

#include "weights/ZWeightUIModelData.h"

#include <vector>

/// Red, green, blue and an unused fourth: added and scaled channel by channel, so the order of additions in each
/// channel is that of the influences.
using VertexColour = float __attribute__((vector_size(16)));

/// The colours of a model's links, looked up once a pass. Links without a bone in the bone list, or whose bone has no
/// colour, have none: their influences are passed over.
class LinkColours
{
public:
    LinkColours(const ZBoneColourTable& table, const ZWeightUIModelData& data);
    bool Has(int link) const { return m_known[Clamp(link)] != 0; }
    /// Black for a link without a colour.
    VertexColour Of(int link) const { return m_colours[Clamp(link)]; }

private:
    /// Every index outside the table stands for one last entry.
    size_t Clamp(int link) const
    {
        const auto index = static_cast<size_t>(static_cast<unsigned>(link));
        return index < m_last ? index : m_last;
    }
    size_t m_last;
    std::vector<VertexColour> m_colours;
    std::vector<unsigned char> m_known;
};

/// Left to right, in float.
inline float SumOfWeights(const VertexInfluences& record)
{
    float sum = 0.0F;
    for (const float weight : record.weights)
        sum += weight;
    return sum;
}

/// Weights taken as shares of `scale` times themselves.
inline VertexColour MixedColour(const VertexInfluences& record, const LinkColours& colours, float scale)
{
    const int count = record.GetCount();
    const int* const links = record.links.GetData();
    const float* const weights = record.weights.GetData();
    VertexColour colour = {0, 0, 0, 0};
    for (int k = 0; k < count; ++k)
        colour += (weights[k] * scale) * colours.Of(links[k]);
    return colour;
}

/// The first of the largest weights; an influence of weight 0 counts, a link without a colour does not.
inline VertexColour MostInfluentialColour(const VertexInfluences& record, const LinkColours& colours)
{
    const int count = record.GetCount();
    const int* const links = record.links.GetData();
    const float* const weights = record.weights.GetData();
    float best = -1.0F;
    int bestLink = -1;
    for (int k = 0; k < count; ++k) {
        const bool better = (weights[k] > best) & colours.Has(links[k]);
        best = better ? weights[k] : best;
        bestLink = better ? links[k] : bestLink;
    }
    return colours.Of(bestLink);
}

/// The first of the smallest weights above 0.
inline VertexColour LeastInfluentialColour(const VertexInfluences& record, const LinkColours& colours)
{
    const int count = record.GetCount();
    const int* const links = record.links.GetData();
    const float* const weights = record.weights.GetData();
    float best = 2.0F;
    int bestLink = -1;
    for (int k = 0; k < count; ++k) {
        const bool better = (best > weights[k]) & (weights[k] > 0.0F) & colours.Has(links[k]);
        best = better ? weights[k] : best;
        bestLink = better ? links[k] : bestLink;
    }
    return colours.Of(bestLink);
}
