// SPDX-License-Identifier: MIT
// Building and asking the vertex -> entry index of a skin link.
#include "EntryIndex.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

bool IsRun(const ZArrayTemplate<int>& vertices)
{
    for (int i = 1; i < vertices.GetCount(); ++i)
        if (vertices[i] != vertices[i - 1] + 1)
            return false;
    return true;
}

/// Spreads neighbouring vertices over the slots (multiplicative hashing: D. Knuth, "The Art of Computer Programming",
/// vol. 3, 6.4).
size_t FirstSlot(int vertex, size_t slotCount)
{
    const std::uint64_t mixed = static_cast<std::uint32_t>(vertex) * UINT64_C(0x9E3779B97F4A7C15);
    return static_cast<size_t>((mixed >> 32U) * slotCount >> 32U);
}

} // namespace

void EntryIndex::Drop()
{
    m_form = Form::None;
    m_slots = std::vector<int>();
}

void EntryIndex::Build(const ZArrayTemplate<int>& vertices)
{
    m_first = 0;
    m_range = 0;
    if (!vertices.IsEmpty()) {
        const auto [lowest, highest] = std::minmax_element(vertices.begin(), vertices.end());
        m_first = *lowest;
        m_range = *highest - *lowest + 1;
    }
    if (IsRun(vertices))
        m_form = Form::Run;
    else if (m_range / 2 <= vertices.GetCount())
        BuildTable(vertices);
    else
        BuildHash(vertices);
}

void EntryIndex::BuildTable(const ZArrayTemplate<int>& vertices)
{
    m_form = Form::Table;
    m_slots.assign(static_cast<size_t>(m_range), -1);
    for (int entry = vertices.GetCount() - 1; entry >= 0; --entry)
        m_slots[static_cast<size_t>(vertices[entry] - m_first)] = entry;
}

void EntryIndex::BuildHash(const ZArrayTemplate<int>& vertices)
{
    m_form = Form::Hash;
    m_slots = std::vector<int>(static_cast<size_t>(vertices.GetCount()) * 2 + 8, -1);
    for (int entry = 0; entry < vertices.GetCount(); ++entry)
        InsertHashed(vertices, entry);
}

void EntryIndex::InsertHashed(const ZArrayTemplate<int>& vertices, int entry)
{
    const int vertex = vertices[entry];
    size_t slot = FirstSlot(vertex, m_slots.size());
    while (m_slots[slot] >= 0) {
        if (vertices[m_slots[slot]] == vertex)
            return;
        slot = slot + 1 == m_slots.size() ? 0 : slot + 1;
    }
    m_slots[slot] = entry;
}

int EntryIndex::FindHashed(const ZArrayTemplate<int>& vertices, int vertex) const
{
    size_t slot = FirstSlot(vertex, m_slots.size());
    while (m_slots[slot] >= 0) {
        if (vertices[m_slots[slot]] == vertex)
            return m_slots[slot];
        slot = slot + 1 == m_slots.size() ? 0 : slot + 1;
    }
    return -1;
}

void EntryIndex::Appended(const ZArrayTemplate<int>& vertices, int begin)
{
    const int count = vertices.GetCount();
    for (int entry = begin; entry < count; ++entry) {
        if (m_form == Form::Table)
            entry = AppendToTable(vertices, entry);
        if (entry < count && !AppendOne(vertices, entry)) {
            // Outgrown. A run with its first gap or a full hash takes the form that suits what is there now. A table
            // that became too sparse becomes a hash, and a hash is left only after growing by half, so appending stays
            // linear in all.
            if (m_form == Form::Table)
                BuildHash(vertices);
            else
                Build(vertices);
            return;
        }
    }
}

/// Answers the first entry that the table could not take.
int EntryIndex::AppendToTable(const ZArrayTemplate<int>& vertices, int entry)
{
    for (; entry < vertices.GetCount(); ++entry) {
        const int vertex = vertices[entry];
        if (!InRange(vertex))
            break;
        int& slot = m_slots[static_cast<size_t>(vertex - m_first)];
        slot = slot < 0 ? entry : slot;
    }
    return entry;
}

/// False when the form cannot take it.
bool EntryIndex::AppendOne(const ZArrayTemplate<int>& vertices, int entry)
{
    const int vertex = vertices[entry];
    switch (m_form) {
    case Form::Run:
        if (m_range != 0 && vertex != m_first + m_range)
            return false;
        m_first = m_range == 0 ? vertex : m_first;
        ++m_range;
        return true;
    case Form::Table:
        if (!Widen(vertex, entry + 1))
            return false;
        m_slots[static_cast<size_t>(vertex - m_first)] = entry;
        return true;
    default:
        if (static_cast<size_t>(entry) * 4 >= m_slots.size() * 3)
            return false;
        InsertHashed(vertices, entry);
        return true;
    }
}

/// Makes a table reach `vertex`, when it is dense enough then. Room is made for more than was asked, so that entries
/// that come one by one, upwards or downwards, move the table rarely.
bool EntryIndex::Widen(int vertex, int entryCount)
{
    const int end = m_first + m_range;
    const int slack = m_range / 4;
    const int newFirst = vertex < m_first ? std::max(0, vertex - slack) : m_first;
    const int newEnd = vertex >= end ? vertex + 1 + std::min(slack, std::numeric_limits<int>::max() - 1 - vertex) : end;
    if ((newEnd - newFirst) / 2 > entryCount + slack)
        return false;
    m_slots.insert(m_slots.begin(), static_cast<size_t>(m_first - newFirst), -1);
    m_slots.resize(static_cast<size_t>(newEnd - newFirst), -1);
    m_first = newFirst;
    m_range = newEnd - newFirst;
    return true;
}
