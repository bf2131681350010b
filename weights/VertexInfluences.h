// SPDX-License-Identifier: MIT
// Which skin links pull one vertex, and how strongly.
#pragma once

#include "zbaselib/ZArray.h"

#include <limits>

/// Can a weight of a skin stand in a record? Not when it is negative, no number, or none that a float can hold.
inline bool IsInfluenceWeight(float weight) { return weight >= 0.0F && weight <= std::numeric_limits<float>::max(); }

/// Two arrays of the same length and order: link indices (positions in the skin's link list) and weights (fractions of
/// one). Up to four influences need no allocation: the record is one cache line.
struct VertexInfluences
{
    ZArrayTemplate<int, 16> links;
    ZArrayTemplate<float, 16> weights;

    int GetCount() const { return links.GetCount(); }
    void Add(int link, float weight)
    {
        links.Add(link);
        weights.Add(weight);
    }
    void Clear()
    {
        links.RemoveAll();
        weights.RemoveAll();
    }
    friend bool operator==(const VertexInfluences&, const VertexInfluences&) = default;
};
static_assert(sizeof(VertexInfluences) == 64);
