// SPDX-License-Identifier: MIT
// Taking many rows out of the cross-model vertex lists at once.
#pragma once

#include "editing/ZWeightSelection.h"
#include "zbaselib/ZMemory.h"

#include <cstdint>
#include <memory>
#include <unordered_map>

/// Rows that leave are collected and go in one stable pass at the end. The result is that of removing, one by one, the
/// first row of the vertex, appended rows in between included: so a removal counts only when a row of the vertex is
/// there at that moment, and at the end as many first rows of each vertex go as removals counted.
class RowRemovals
{
public:
    explicit RowRemovals(ZWeightSelection& rows) : m_rows(rows) {}
    ~RowRemovals() { Finish(); }
    RowRemovals(const RowRemovals&) = delete;
    RowRemovals& operator=(const RowRemovals&) = delete;

    /// Room for so many more rows.
    void Reserve(int more);
    void Append(ZWeightUIModelData& data, int vertex);
    /// The vertex will be asked for soon.
    [[gnu::always_inline]] void Prefetch(const ZWeightUIModelData& data, int vertex)
    {
        if (&data == m_lastData)
            ZMemory_FetchPlace(*m_lastCounts, vertex);
    }
    /// Removes the first row of the vertex, if there is one.
    void Remove(ZWeightUIModelData& data, int vertex);
    bool IsListEmpty() const { return m_rows.vertexRows.GetCount() == m_pendingCount; }
    /// Makes the lists true.
    void Finish();

private:
    struct Counts
    {
        std::uint8_t present = 0; ///< rows of the vertex that are there; no more than kMost are counted
        std::uint8_t pending = 0; ///< first rows of it that are to go; at kMost they go
    };
    static constexpr int kMost = 255;
    using ModelCounts = ZArrayTemplate<Counts>;

    ModelCounts& CountsOf(const ZWeightUIModelData* data);
    Counts* CountOf(const ZWeightUIModelData* data, int vertex);
    void CountRows();
    void ForgetCounts();
    /// Rows stand in the order of the picks: the count of a later one, most likely of the same model, is fetched early.
    [[gnu::always_inline]] void FetchRowAhead(int row) const
    {
        if (m_lastCounts != nullptr)
            ZMemory_FetchAhead(*m_lastCounts, m_rows.vertexRows.Span(), row);
    }

    ZWeightSelection& m_rows;
    std::unordered_map<const ZWeightUIModelData*, std::unique_ptr<ModelCounts>> m_counts;
    const ZWeightUIModelData* m_lastData = nullptr;
    ModelCounts* m_lastCounts = nullptr;
    bool m_counted = false;
    int m_pendingCount = 0;
};
