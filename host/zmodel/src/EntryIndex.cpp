// SPDX-License-Identifier: MIT
// Building and asking the vertex -> entry index of a skin link.
#include "EntryIndex.h"

#include <algorithm>
#include <cstdint>

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

void EntryIndex::Appended(const ZArrayTemplate<int>& vertices)
{
    const int entry = vertices.GetCount() - 1;
    const int vertex = vertices[entry];
    if (m_form == Form::Run && (entry == 0 || vertex == m_first + m_range)) {
        m_first = entry == 0 ? vertex : m_first;
        ++m_range;
    } else if (m_form == Form::Table && InRange(vertex)) {
        int& slot = m_slots[static_cast<size_t>(vertex - m_first)];
        slot = slot < 0 ? entry : slot;
    } else if (m_form == Form::Hash && static_cast<size_t>(entry) * 4 < m_slots.size() * 3) {
        InsertHashed(vertices, entry);
    } else {
        // Outgrown. A hash takes whatever follows and is built anew only after growing by half, so appending stays
        // linear in all.
        BuildHash(vertices);
    }
}
