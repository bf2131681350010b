// SPDX-License-Identifier: MIT
#include "editing/SpreadRebalance.h"

#include <cmath>
#include <cstdint>

namespace {

double Clamped(double requested, double present)
{
    if (std::isnan(requested))
        return present;
    if (requested > 100.0)
        return 100.0;
    return requested < 0.0 ? 0.0 : requested;
}

bool IsIn(const std::vector<std::uint8_t>& marks, int bone)
{
    return bone >= 0 && static_cast<size_t>(bone) < marks.size() && marks[static_cast<size_t>(bone)] != 0;
}

} // namespace

RebalancedSpread Spread_Rebalance(std::span<const float> weights, std::span<const int> locks, int changed,
                                  double requested, std::span<const int> snapshotBones,
                                  std::span<const float> snapshotPercents)
{
    RebalancedSpread spread;
    const auto percentOf = [&](size_t bone) { return static_cast<double>(weights[bone] * 100.0F); };
    const auto isLocked = [&](size_t bone) { return bone < locks.size() && locks[bone] != 0; };
    double request = Clamped(requested, percentOf(static_cast<size_t>(changed)));

    // Sort the bones into free and locked ones. The changed bone has its place among the free ones even at 0.
    std::vector<std::uint8_t> listed(weights.size(), 0);
    double total = 0.0, oldFree = 0.0, newFree = 0.0;
    size_t place = 0;
    for (size_t bone = 0; bone < weights.size(); ++bone) {
        const double percent = percentOf(bone);
        const int number = static_cast<int>(bone);
        total += percent;
        if (number == changed) {
            if (isLocked(bone)) {
                request = percent;
                spread.locked.push_back({number, percent});
            } else {
                oldFree += percent;
                newFree += request;
            }
            place = spread.free.size();
            spread.free.push_back({number, request});
            listed[bone] = 1;
        } else if (percent != 0.0) {
            listed[bone] = 1;
            if (isLocked(bone)) {
                spread.locked.push_back({number, percent});
                continue;
            }
            spread.free.push_back({number, percent});
            oldFree += percent;
            newFree += percent;
        }
    }

    // Lowering the only free bone gives back what a drag had pushed out of the others.
    if (spread.free.size() == 1 && oldFree > newFree) {
        for (size_t i = 0; i < snapshotBones.size(); ++i) {
            const int bone = snapshotBones[i];
            if (IsIn(listed, bone) || bone < 0 || static_cast<size_t>(bone) >= listed.size())
                continue;
            spread.free.push_back({bone, static_cast<double>(snapshotPercents[i])});
            listed[static_cast<size_t>(bone)] = 1;
            newFree += static_cast<double>(snapshotPercents[i]);
        }
    }

    // What is missing of 100, or beyond it, is the free bones' to take.
    if (total != 100.0)
        oldFree += 100.0 - total;
    // Locked bones that hold more than 100 leave nothing, never less.
    const double share = oldFree > 0.0 ? oldFree : 0.0;
    const double others = newFree - request;
    if (request < share && others == 0.0) {
        spread.free[place].percent = share;
    } else if (request < share) {
        const double scale = (share - request) / others;
        for (BoneShare& entry : spread.free)
            entry.percent *= scale;
        spread.free[place].percent = request;
    } else {
        for (BoneShare& entry : spread.free)
            entry.percent = 0.0;
        spread.free[place].percent = share;
        spread.capped = true;
    }
    return spread;
}
