// SPDX-License-Identifier: MIT
// Who keeps up is told what changed, who does not that anything may have.
#include "zmodel/src/TouchedLog.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(TouchedLog, TellsWhatCameSinceAMark)
{
    TouchedLog log(800);
    log.Add(3);
    const std::uint64_t mark = log.GetMark();
    log.Add(7);
    const int more[] = {9, 7};
    log.Add(more, 2);
    std::vector<int> since{1};
    EXPECT_TRUE(log.GetSince(mark, since));
    EXPECT_THAT(since, ElementsAre(1, 7, 9, 7)) << "appended, in order, with repeats";
    since.clear();
    EXPECT_TRUE(log.GetSince(log.GetMark(), since));
    EXPECT_THAT(since, IsEmpty());
}

TEST(TouchedLog, WhoNeverAskedIsBehind)
{
    const TouchedLog log(800);
    std::vector<int> since;
    EXPECT_FALSE(log.GetSince(0, since));
    EXPECT_FALSE(log.GetSince(log.GetMark() + 1, since)) << "a mark of another log";
}

TEST(TouchedLog, AReaderNoFurtherBehindThanAnEighthOfTheVerticesIsAlwaysServed)
{
    TouchedLog log(800);
    for (int round = 0; round < 1000; ++round) {
        const std::uint64_t mark = log.GetMark();
        const std::vector<int> batch(static_cast<size_t>(round % 51), round);
        log.Add(batch.data(), batch.size());
        for (int i = 0; i < round % 50; ++i)
            log.Add(round);
        std::vector<int> since;
        ASSERT_TRUE(log.GetSince(mark, since)) << round;
        ASSERT_EQ(since.size(), static_cast<size_t>(round % 51 + round % 50)) << round;
        ASSERT_EQ(std::count(since.begin(), since.end(), round), static_cast<std::ptrdiff_t>(since.size()));
    }
}

TEST(TouchedLog, ForgetsWhatLiesFartherBack)
{
    TouchedLog log(800);
    const std::uint64_t mark = log.GetMark();
    std::vector<int> since;
    for (int vertex = 0; vertex < 201; ++vertex)
        log.Add(vertex);
    EXPECT_FALSE(log.GetSince(mark, since));
    const std::vector<int> many(101, 3);
    std::uint64_t fresh = log.GetMark();
    log.Add(many.data(), many.size());
    EXPECT_FALSE(log.GetSince(fresh, since)) << "more than it keeps, at once";
    EXPECT_THAT(since, IsEmpty());
    fresh = log.GetMark();
    log.Add(5);
    EXPECT_TRUE(log.GetSince(fresh, since));
    EXPECT_THAT(since, ElementsAre(5));
    log.Restart(8000);
    EXPECT_FALSE(log.GetSince(fresh, since));
}

TEST(TouchedLog, WhatNobodyListensToIsNotRememberedAndLaterReadersAreServed)
{
    TouchedLog log(800);
    const std::uint64_t old = log.GetMark();
    for (int vertex = 0; vertex < 10000; ++vertex)
        log.Add(vertex % 800);
    std::vector<int> since;
    EXPECT_FALSE(log.GetSince(old, since));
    const std::uint64_t mark = log.GetMark();
    EXPECT_GT(mark, old);
    log.Add(5);
    EXPECT_TRUE(log.GetSince(mark, since));
    EXPECT_THAT(since, ElementsAre(5));
    EXPECT_FALSE(log.GetSince(old, since));
}

} // namespace
