// SPDX-License-Identifier: MIT
// Vertex -> entry of one skin link.
#pragma once

#include "zbaselib/ZArray.h"

#include <cstddef>
#include <vector>

/// Finds the entry of a vertex in constant time. Three forms, by what the link's entries look like, so that three
/// hundred bones on a million vertices cost no more than a few bytes an entry:
///   run    vertices follow each other without a gap: entry = vertex - first, no memory;
///   table  at least half of the vertices between the lowest and the highest have an entry: one int a vertex of that
///          range (8 bytes an entry at most, twice that while it grows);
///   hash   anything else: open addressing over entry numbers, half full when built (8 bytes an entry) and three
///          quarters at most.
/// When a vertex has several entries, the first is found.
class EntryIndex
{
public:
    bool IsBuilt() const { return m_form != Form::None; }
    void Build(const ZArrayTemplate<int>& vertices);
    void Drop();
    /// The entry of `vertex`, or -1. Only while built, with the array that it was built for.
    int Find(const ZArrayTemplate<int>& vertices, int vertex) const
    {
        switch (m_form) {
        case Form::Run:
            return InRange(vertex) ? vertex - m_first : -1;
        case Form::Table:
            return InRange(vertex) ? m_slots[static_cast<size_t>(vertex - m_first)] : -1;
        default:
            return FindHashed(vertices, vertex);
        }
    }
    /// The elements of `vertices` from `begin` on were just appended: keeps the index true.
    void Appended(const ZArrayTemplate<int>& vertices, int begin);
    size_t GetHeapBytes() const { return m_slots.capacity() * sizeof(int); }

private:
    enum class Form : unsigned char
    {
        None,
        Run,
        Table,
        Hash
    };

    bool InRange(int vertex) const { return vertex >= m_first && vertex - m_first < m_range; }
    int FindHashed(const ZArrayTemplate<int>& vertices, int vertex) const;
    void BuildTable(const ZArrayTemplate<int>& vertices);
    void BuildHash(const ZArrayTemplate<int>& vertices);
    int AppendToTable(const ZArrayTemplate<int>& vertices, int entry);
    bool AppendOne(const ZArrayTemplate<int>& vertices, int entry);
    bool Widen(int vertex, int entryCount);
    void InsertHashed(const ZArrayTemplate<int>& vertices, int entry);

    Form m_form = Form::None;
    int m_first = 0; ///< lowest vertex
    int m_range = 0; ///< highest - lowest + 1
    std::vector<int> m_slots;
};
