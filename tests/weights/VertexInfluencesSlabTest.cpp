// SPDX-License-Identifier: MIT
// Records side by side, and the pieces in which they grow.
#include "weights/VertexInfluencesSlab.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <utility>
#include <vector>

namespace {

void Fill(VertexInfluencesSlab& slab, int records, int influences)
{
    slab.Allocate(records);
    slab.ConstructUpTo(records);
    for (int vertex = 0; vertex < records; ++vertex)
        for (int k = 0; k < influences; ++k)
            slab.Add(slab.GetData()[vertex], k, static_cast<float>(vertex));
}

TEST(VertexInfluencesSlab, FourInfluencesNeedNoMoreThanTheRecord)
{
    VertexInfluencesSlab slab;
    Fill(slab, 10, 4);
    EXPECT_EQ(slab.GetByteCount(), 10 * sizeof(VertexInfluences));
}

TEST(VertexInfluencesSlab, EightInfluencesShareOneCacheLine)
{
    VertexInfluencesSlab slab;
    Fill(slab, 3, 8);
    for (int vertex = 0; vertex < 3; ++vertex) {
        const VertexInfluences& record = slab.GetData()[vertex];
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(record.links.GetData()) % 64, 0U);
        EXPECT_EQ(static_cast<const void*>(record.weights.GetData()), record.links.GetData() + 8);
    }
    EXPECT_EQ(slab.GetByteCount(), 3 * (sizeof(VertexInfluences) + 64));
}

TEST(VertexInfluencesSlab, APieceThatWasOutgrownIsTakenByTheNextRecord)
{
    VertexInfluencesSlab slab;
    Fill(slab, 2, 4);
    VertexInfluences& first = slab.GetData()[0];
    slab.MakeRoom(first, 5);
    const int* const piece = first.links.GetData();
    slab.MakeRoom(first, 9);
    EXPECT_GE(first.weights.GetCapacity(), 9);
    VertexInfluences& second = slab.GetData()[1];
    slab.MakeRoom(second, 5);
    EXPECT_EQ(second.links.GetData(), piece);
    EXPECT_EQ(first.GetCount(), 4);
    EXPECT_EQ(second.weights[3], 1.0F);
}

TEST(VertexInfluencesSlab, ARecordOfManyThousandInfluencesHasRoom)
{
    constexpr int kMany = 300000; // longer than a stretch begins
    VertexInfluencesSlab slab;
    Fill(slab, 1, kMany);
    const VertexInfluences& record = slab.GetData()[0];
    ASSERT_EQ(record.GetCount(), kMany);
    for (int k = 0; k < kMany; ++k)
        ASSERT_EQ(record.links[k], k);
}

RC_GTEST_PROP(VertexInfluencesSlab, RecordsHoldWhatPlainListsHold, ())
{
    constexpr int kRecords = 6;
    VertexInfluencesSlab slab;
    slab.Allocate(kRecords);
    slab.ConstructUpTo(kRecords);
    std::vector<std::vector<std::pair<int, float>>> plain(kRecords);
    const int steps = *rc::gen::inRange(0, 400);
    for (int step = 0; step < steps; ++step) {
        const int vertex = *rc::gen::inRange(0, kRecords);
        VertexInfluences& record = slab.GetData()[vertex];
        auto& list = plain[static_cast<size_t>(vertex)];
        const int what = *rc::gen::inRange(0, 30);
        if (what == 0) {
            record.Clear();
            list.clear();
        } else if (what == 1) { // whoever does not know the slab may still append
            record.Add(step, 0.5F);
            list.emplace_back(step, 0.5F);
        } else if (what == 2) {
            slab.MakeRoom(record, *rc::gen::inRange(1, 40));
        } else {
            slab.Add(record, step, 0.25F);
            list.emplace_back(step, 0.25F);
        }
    }
    for (int vertex = 0; vertex < kRecords; ++vertex) {
        const VertexInfluences& record = slab.GetData()[vertex];
        RC_ASSERT(record.GetCount() == static_cast<int>(plain[static_cast<size_t>(vertex)].size()));
        for (int k = 0; k < record.GetCount(); ++k)
            RC_ASSERT(std::pair(record.links[k], record.weights[k]) ==
                      plain[static_cast<size_t>(vertex)][static_cast<size_t>(k)]);
    }
}

} // namespace
