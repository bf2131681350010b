// SPDX-License-Identifier: MIT
// The arithmetic of a weight change, in plain numbers.
#include "editing/SpreadRebalance.h"

#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <cmath>
#include <map>

using testing::DoubleNear;

namespace {

/// Per cent of the bones A, B, C, ... after a change.
std::vector<double> After(const std::vector<float>& weights, const std::vector<int>& locks, int changed,
                          double requested, const std::vector<int>& snapshotBones = {},
                          const std::vector<float>& snapshotPercents = {})
{
    const RebalancedSpread spread =
        Spread_Rebalance(weights, locks, changed, requested, snapshotBones, snapshotPercents);
    std::vector<double> percents(weights.size(), 0.0);
    for (const auto* const part : {&spread.free, &spread.locked})
        for (const BoneShare& share : *part)
            percents[static_cast<size_t>(share.bone)] = share.percent;
    return percents;
}

testing::Matcher<std::vector<double>> Are(const std::vector<double>& expected)
{
    return testing::Pointwise(DoubleNear(1e-5), expected);
}

TEST(Rebalance, OthersShareInProportion)
{
    EXPECT_THAT(After({0.5F, 0.3F, 0.2F}, {0, 0, 0}, 0, 70), Are({70, 18, 12}));
}

TEST(Rebalance, LockedBonesKeepTheirShare)
{
    EXPECT_THAT(After({0.5F, 0.3F, 0.2F}, {0, 0, 1}, 0, 70), Are({70, 10, 20}));
}

TEST(Rebalance, RequestIsClamped)
{
    EXPECT_THAT(After({0.5F, 0.3F, 0.2F}, {}, 0, 150), Are({100, 0, 0}));
    EXPECT_THAT(After({0.5F, 0.3F, 0.2F}, {}, 0, -5), Are({0, 60, 40}));
}

TEST(Rebalance, RequestThatIsNoNumberAsksForWhatIsThere)
{
    EXPECT_THAT(After({0.5F, 0.3F, 0.2F}, {}, 0, std::nan("")), Are({50, 30, 20}));
}

TEST(Rebalance, LoweringTheOnlyFreeBoneGivesBackWhatWasPushedOut)
{
    EXPECT_THAT(After({1.0F, 0.0F, 0.0F}, {}, 0, 60, {0, 1, 2}, {50, 30, 20}), Are({60, 24, 16}));
}

TEST(Rebalance, LockedBonesGetNothingBack)
{
    EXPECT_THAT(After({0.8F, 0.0F, 0.2F}, {0, 0, 1}, 0, 50, {0, 1, 2}, {50, 30, 20}), Are({50, 30, 20}));
}

TEST(Rebalance, RaisingDoesNotLookAtTheSnapshot)
{
    EXPECT_THAT(After({0.5F, 0.0F, 0.0F}, {}, 0, 60, {0, 1}, {50, 50}), Are({100, 0, 0}));
}

TEST(Rebalance, MissingShareGoesToTheFreeBones)
{
    EXPECT_THAT(After({0.5F, 0.4F}, {}, 0, 50), Are({50, 50}));
    EXPECT_THAT(After({0.5F, 0.4F}, {0, 1}, 0, 10), Are({60, 40}));
}

TEST(Rebalance, OnlyFreeBoneTakesTheWholeShareWhateverIsAsked)
{
    for (const double requested : {0.0, 25.0, 60.0, 75.0, 100.0})
        EXPECT_THAT(After({0.6F, 0.4F}, {0, 1}, 0, requested), Are({60, 40}));
}

TEST(Rebalance, RequestBeyondTheFreeShareIsCapped)
{
    const std::vector<float> weights{0.5F, 0.3F, 0.2F};
    const std::vector<int> locks{0, 0, 1};
    EXPECT_THAT(After(weights, locks, 0, 95), Are({80, 0, 20}));
    EXPECT_TRUE(Spread_Rebalance(weights, locks, 0, 95, {}, {}).capped);
    EXPECT_FALSE(Spread_Rebalance(weights, locks, 0, 70, {}, {}).capped);
}

TEST(Rebalance, BoneWithoutWeightCanBeRaised) { EXPECT_THAT(After({0.5F, 0.5F, 0.0F}, {}, 2, 20), Are({40, 40, 20})); }

TEST(Rebalance, EmptyVertexGivesEverythingToTheBone) { EXPECT_THAT(After({0.0F, 0.0F}, {}, 1, 30), Are({0, 100})); }

TEST(Rebalance, LocksBeyondAHundredLeaveNothingAndNeverLess)
{
    EXPECT_THAT(After({0.1F, 0.9F, 0.9F}, {0, 1, 1}, 0, 50), Are({0, 90, 90}));
}

TEST(Rebalance, SnapshotBonesThatAreGoneArePassedOver)
{
    EXPECT_THAT(After({1.0F, 0.0F}, {}, 0, 50, {0, 7, -1}, {50, 30, 20}), Are({100, 0}));
}

TEST(Rebalance, FreeBonesComeFirstInBoneOrder)
{
    const std::vector<float> weights{0.25F, 0.25F, 0.25F, 0.25F};
    const std::vector<int> locks{1, 0, 0, 1};
    const RebalancedSpread spread = Spread_Rebalance(weights, locks, 2, 30, {}, {});
    const auto boneOf = [](const BoneShare& share) { return share.bone; };
    EXPECT_THAT(spread.free, testing::ElementsAre(testing::ResultOf(boneOf, 1), testing::ResultOf(boneOf, 2)));
    EXPECT_THAT(spread.locked, testing::ElementsAre(testing::ResultOf(boneOf, 0), testing::ResultOf(boneOf, 3)));
}

TEST(RebalanceProperty, TotalsAHundredAndKeepsLocks)
{
    const bool held = rc::check("a spread totals 100 and locked bones keep theirs", [] {
        const int count = *rc::gen::inRange(1, 8);
        std::vector<int> raw, locks;
        int sum = 0;
        for (int bone = 0; bone < count; ++bone) {
            raw.push_back(*rc::gen::inRange(0, 20));
            locks.push_back(*rc::gen::inRange(0, 2));
            sum += raw.back();
        }
        const int changed = *rc::gen::inRange(0, count);
        locks[static_cast<size_t>(changed)] = 0;
        std::vector<float> weights;
        double locked = 0.0;
        for (int bone = 0; bone < count; ++bone) {
            weights.push_back(sum == 0 ? 0.0F
                                       : static_cast<float>(raw[static_cast<size_t>(bone)]) / static_cast<float>(sum));
            if (locks[static_cast<size_t>(bone)] != 0)
                locked += static_cast<double>(weights.back() * 100.0F);
        }
        const double requested = *rc::gen::inRange(-50, 200);
        const std::vector<double> percents = After(weights, locks, changed, requested);
        double total = 0.0;
        for (const double percent : percents) {
            RC_ASSERT(percent >= 0.0);
            total += percent;
        }
        RC_ASSERT(std::abs(total - 100.0) < 1e-4);
        for (size_t bone = 0; bone < percents.size(); ++bone)
            if (locks[bone] != 0)
                RC_ASSERT(percents[bone] == static_cast<double>(weights[bone] * 100.0F));
        const double clamped = requested < 0 ? 0 : (requested > 100 ? 100 : requested);
        const double got = percents[static_cast<size_t>(changed)];
        RC_ASSERT(got == clamped || std::abs(got - (100.0 - locked)) < 1e-4);
    });
    EXPECT_TRUE(held);
}

} // namespace
