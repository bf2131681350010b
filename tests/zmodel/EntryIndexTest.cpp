// SPDX-License-Identifier: MIT
// The forms of the vertex -> entry index, and what they cost.
#include "zmodel/src/EntryIndex.h"

#include <gmock/gmock.h>

namespace {

ZArrayTemplate<int> Every(int step, int count)
{
    ZArrayTemplate<int> vertices;
    for (int i = 0; i < count; ++i)
        vertices.Add(7 + i * step);
    return vertices;
}

TEST(EntryIndex, ARunNeedsNoMemory)
{
    EntryIndex index;
    const ZArrayTemplate<int> vertices = Every(1, 1000);
    index.Build(vertices);
    EXPECT_EQ(index.GetHeapBytes(), 0U);
    EXPECT_EQ(index.Find(vertices, 7), 0);
    EXPECT_EQ(index.Find(vertices, 1006), 999);
    EXPECT_EQ(index.Find(vertices, 6), -1);
    EXPECT_EQ(index.Find(vertices, 1007), -1);
}

TEST(EntryIndex, NoFormCostsMoreThanTwoIntsAnEntry)
{
    for (const int step : {2, 3, 100}) {
        EntryIndex index;
        const ZArrayTemplate<int> vertices = Every(step, 1000);
        index.Build(vertices);
        EXPECT_LE(index.GetHeapBytes(), (2 * 1000 + 8) * sizeof(int)) << "every " << step;
        for (int entry = 0; entry < 1000; ++entry)
            ASSERT_EQ(index.Find(vertices, 7 + entry * step), entry);
        EXPECT_EQ(index.Find(vertices, 8), -1);
        EXPECT_EQ(index.Find(vertices, -1), -1);
        EXPECT_EQ(index.Find(vertices, 1 << 30), -1);
    }
}

TEST(EntryIndex, AppendingInAnyOrderStaysTrue)
{
    for (const int step : {1, 2, 100, -1, -50}) {
        EntryIndex index;
        ZArrayTemplate<int> vertices;
        index.Build(vertices);
        for (int i = 0; i < 500; ++i) {
            vertices.Add(100000 + i * step);
            index.Appended(vertices, vertices.GetCount() - 1);
            ASSERT_EQ(index.Find(vertices, 100000 + i * step), i);
            ASSERT_EQ(index.Find(vertices, 100000), 0);
            ASSERT_EQ(index.Find(vertices, 100000 + (i + 1) * step), -1);
        }
    }
}

/// A bone that pulls a stretch of the mesh, and then every vertex of it, is a table in the end, not a hash: neighbours
/// are asked for one after the other.
TEST(EntryIndex, ALinkThatComesToHoldEveryVertexStaysTrue)
{
    for (const bool downwards : {false, true}) {
        EntryIndex index;
        ZArrayTemplate<int> vertices;
        for (int i = 0; i < 2000; ++i)
            vertices.Add(4000 + i + i % 2); // every other one twice
        index.Build(vertices);
        for (int i = 0; i < 10000; ++i) {
            const int vertex = downwards ? 9999 - i : i;
            const bool isThere = index.Find(vertices, vertex) >= 0;
            if (isThere)
                continue;
            vertices.Add(vertex);
            index.Appended(vertices, vertices.GetCount() - 1);
            ASSERT_EQ(index.Find(vertices, vertex), vertices.GetCount() - 1);
        }
        EXPECT_LE(index.GetHeapBytes(), 4 * sizeof(int) * static_cast<size_t>(vertices.GetCount()) + 64);
        for (int vertex = 0; vertex < 10000; ++vertex)
            ASSERT_EQ(vertices[index.Find(vertices, vertex)], vertex);
    }
}

TEST(EntryIndex, ManyAppendedAtOnceAreAsAppendedOneByOne)
{
    const ZArrayTemplate<int> order{10, 11, 12, 14, 13, 30, 20, 9, 15, 16, 500, 17, 11, 40000, 18, 2, 70000, 19, 3};
    for (int known = 0; known < order.GetCount(); ++known) {
        EntryIndex index;
        ZArrayTemplate<int> vertices;
        vertices.Assign(order.GetData(), known);
        index.Build(vertices);
        vertices = order;
        index.Appended(vertices, known);
        for (int entry = 0; entry < order.GetCount(); ++entry)
            EXPECT_EQ(index.Find(vertices, order[entry]), order.Find(order[entry])) << known << ' ' << entry;
        EXPECT_EQ(index.Find(vertices, 8), -1);
        EXPECT_EQ(index.Find(vertices, 80000), -1);
    }
}

TEST(EntryIndex, AnEmptyLinkHasNoEntries)
{
    EntryIndex index;
    const ZArrayTemplate<int> none{};
    EXPECT_FALSE(index.IsBuilt());
    index.Build(none);
    EXPECT_TRUE(index.IsBuilt());
    EXPECT_EQ(index.Find(none, 0), -1);
    index.Drop();
    EXPECT_FALSE(index.IsBuilt());
}

TEST(EntryIndex, TheFirstOfSeveralEntriesIsFound)
{
    for (const int far : {9, 100000}) {
        EntryIndex index;
        ZArrayTemplate<int> vertices{5, far, 5};
        index.Build(vertices);
        EXPECT_EQ(index.Find(vertices, 5), 0);
        vertices.Add(far);
        index.Appended(vertices, vertices.GetCount() - 1);
        EXPECT_EQ(index.Find(vertices, far), 1);
    }
}

} // namespace
