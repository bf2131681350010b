// SPDX-License-Identifier: MIT
// The arithmetic of a weight change: plain numbers in, plain numbers out.
#pragma once

#include "zbaselib/ZArray.h"

#include <span>
#include <vector>

/// A bone (position in the bone list) and its per cent.
struct BoneShare
{
    int bone = -1;
    double percent = 0;
    friend bool operator==(const BoneShare&, const BoneShare&) = default;
};

/// What a change makes of a spread.
struct RebalancedSpread
{
    std::vector<BoneShare> free;   ///< in bone order, then what flowed back from the snapshot
    std::vector<BoneShare> locked; ///< in bone order
    /// The request went beyond the free share and was capped: the snapshot of what the others held stays.
    bool capped = false;
};

/// `weights` are fractions of one by bone; `locks` 1 for a locked bone, 0 for a free one (missing: free). `changed` is
/// the bone whose per cent is asked for; the request is clamped to 0..100, and one that is no number asks for what the
/// bone has. The snapshot is what bones held before a drag pushed their weight out.
RebalancedSpread Spread_Rebalance(std::span<const float> weights, std::span<const int> locks, int changed,
                                  double requested, std::span<const int> snapshotBones,
                                  std::span<const float> snapshotPercents);
