// SPDX-License-Identifier: MIT
// Entries found by the runs in which they rise.
#include "zmodel/src/RisingRuns.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <vector>

namespace {

struct Entries
{
    explicit Entries(const std::vector<int>& all)
    {
        for (const int vertex : all)
            Append(vertex);
    }
    void Append(int vertex)
    {
        runs.Append(static_cast<int>(vertices.size()), vertex);
        vertices.push_back(vertex);
    }
    int Find(int vertex) { return runs.Find(vertices.data(), static_cast<int>(vertices.size()), vertex); }

    RisingRuns runs;
    std::vector<int> vertices;
};

/// Up to four runs of vertices below `end`, each less than `longestStep` above the one before.
Entries SomeRuns(int end, int longestStep)
{
    Entries entries({});
    const int runs = *rc::gen::inRange(0, 5);
    for (int run = 0; run < runs; ++run)
        for (int vertex = *rc::gen::inRange(0, 40); vertex < end; vertex += *rc::gen::inRange(1, longestStep))
            entries.Append(vertex);
    return entries;
}

TEST(RisingRuns, VerticesAskedForInOrderAreAllKnown)
{
    // Old entries of even vertices, new ones of odd: two runs.
    Entries entries({});
    for (int vertex = 0; vertex < 1000; vertex += 2)
        entries.Append(vertex);
    for (int vertex = 1; vertex < 1000; vertex += 2)
        entries.Append(vertex);
    EXPECT_FALSE(entries.runs.IsAscending());
    for (int vertex = 0; vertex < 1000; ++vertex)
        ASSERT_EQ(entries.Find(vertex), vertex / 2 + (vertex % 2) * 500);
    EXPECT_EQ(entries.Find(1000), -1);
}

TEST(RisingRuns, WhatLiesBetweenNeighboursIsNotThere)
{
    Entries entries({3, 7, 9});
    EXPECT_TRUE(entries.runs.IsAscending());
    EXPECT_EQ(entries.Find(2), -1);
    EXPECT_EQ(entries.Find(5), -1);
    EXPECT_EQ(entries.Find(6), -1);
    EXPECT_EQ(entries.Find(9), 2);
    EXPECT_EQ(entries.Find(10), -1);
}

TEST(RisingRuns, OfTwoEntriesOfAVertexTheFirstIsFound)
{
    Entries entries({1, 5, 5, 6});
    EXPECT_EQ(entries.Find(5), 1);
    EXPECT_EQ(entries.Find(6), 3);
}

TEST(RisingRuns, FarAwayIsUnknownUntilSomebodyGoesThere)
{
    Entries entries({});
    for (int vertex = 0; vertex < 100; ++vertex)
        entries.Append(vertex);
    EXPECT_EQ(entries.Find(50), RisingRuns::kUnknown);
    entries.runs.GoTo(50);
    EXPECT_EQ(entries.Find(50), 50);
    EXPECT_EQ(entries.Find(49), RisingRuns::kUnknown);
}

TEST(RisingRuns, TooManyRunsAreLeftToTheIndex)
{
    Entries entries({9, 8, 7, 6});
    EXPECT_EQ(entries.Find(9), 0);
    EXPECT_EQ(entries.Find(6), 3);
    entries.Append(5);
    EXPECT_EQ(entries.Find(9), RisingRuns::kUnknown);
    entries.runs.Restart();
    EXPECT_TRUE(entries.runs.IsAscending());
}

RC_GTEST_PROP(RisingRuns, NeverNameAnotherEntryThanTheFirst, ())
{
    Entries entries(*rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 60)));
    for (const int vertex : *rc::gen::container<std::vector<int>>(rc::gen::inRange(-1, 61))) {
        const auto first = std::find(entries.vertices.begin(), entries.vertices.end(), vertex);
        const int expected = first == entries.vertices.end() ? -1 : static_cast<int>(first - entries.vertices.begin());
        const int found = entries.Find(vertex);
        if (found == RisingRuns::kUnknown) {
            if (expected >= 0)
                entries.runs.GoTo(expected);
            continue;
        }
        RC_ASSERT(found == expected);
    }
}

RC_GTEST_PROP(RisingRuns, ManyAtOnceAreFoundAsOneByOne, ())
{
    Entries entries = SomeRuns(400, 60);
    for (int round = 0; round < 3; ++round) {
        // Without a gap, or with some.
        const int longestStep = *rc::gen::element(2, 50);
        std::vector<int> wanted;
        for (int vertex = *rc::gen::inRange(0, 300); vertex < 420; vertex += *rc::gen::inRange(1, longestStep))
            wanted.push_back(vertex);
        std::vector<int> found(wanted.size());
        if (!entries.runs.FindRising(entries.vertices.data(), static_cast<int>(entries.vertices.size()), wanted,
                                     found.data()))
            continue;
        for (size_t i = 0; i < wanted.size(); ++i) {
            const auto first = std::find(entries.vertices.begin(), entries.vertices.end(), wanted[i]);
            RC_ASSERT(found[i] ==
                      (first == entries.vertices.end() ? -1 : static_cast<int>(first - entries.vertices.begin())));
        }
    }
}

TEST(RisingRuns, EntriesSideBySideAreAStretch)
{
    Entries entries({2, 4, 6, 8, 5, 7, 9});
    const auto stretch = [&entries](const std::vector<int>& wanted) {
        return entries.runs.FindStretch(entries.vertices.data(), static_cast<int>(entries.vertices.size()), wanted);
    };
    EXPECT_EQ(stretch({4, 6}), 1);
    EXPECT_EQ(stretch({2, 4, 6, 8}), 0);
    EXPECT_EQ(stretch({9}), 6);
    EXPECT_EQ(stretch({5, 7}), RisingRuns::kUnknown); // 6 and 8 of the first run lie there, too
    EXPECT_EQ(stretch({4, 8}), RisingRuns::kUnknown);
    EXPECT_EQ(stretch({6, 4}), RisingRuns::kUnknown);
    EXPECT_EQ(stretch({8, 9}), RisingRuns::kUnknown);
    EXPECT_EQ(stretch({10}), RisingRuns::kUnknown);
    EXPECT_EQ(stretch({}), RisingRuns::kUnknown);
}

RC_GTEST_PROP(RisingRuns, AStretchIsWhatOneByOneFinds, ())
{
    Entries entries = SomeRuns(80, 4);
    for (int round = 0; round < 5; ++round) {
        std::vector<int> wanted;
        if (!entries.vertices.empty()) {
            const auto begin = *rc::gen::inRange<size_t>(0, entries.vertices.size());
            const auto end = *rc::gen::inRange(begin, entries.vertices.size());
            wanted.assign(entries.vertices.begin() + static_cast<std::ptrdiff_t>(begin),
                          entries.vertices.begin() + static_cast<std::ptrdiff_t>(end));
        }
        const int found =
            entries.runs.FindStretch(entries.vertices.data(), static_cast<int>(entries.vertices.size()), wanted);
        for (size_t i = 0; found != RisingRuns::kUnknown && i < wanted.size(); ++i) {
            const auto first = std::find(entries.vertices.begin(), entries.vertices.end(), wanted[i]);
            RC_ASSERT(found + static_cast<int>(i) == static_cast<int>(first - entries.vertices.begin()));
        }
    }
}

} // namespace
