// SPDX-License-Identifier: MIT
// Comparing weight tables.
#pragma once

#include "documents/ZWeightTable.h"

#include <algorithm>

/// The same models with the same rows in the same order, bit for bit.
inline bool IsSame(const ZWeightTable& a, const ZWeightTable& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& left, const auto& right) {
        return left.first == right.first &&
               std::equal(left.second.begin(), left.second.end(), right.second.begin(), right.second.end(),
                          [](const ZWeightRow& x, const ZWeightRow& y) {
                              return x.vertex == y.vertex && x.bone == y.bone && x.weight == y.weight;
                          });
    });
}
