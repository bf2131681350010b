// SPDX-License-Identifier: MIT
// Taking many rows out of the cross-model vertex lists at once.
#pragma once

#include "editing/ZWeightSelection.h"

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
    void Prefetch(const ZWeightUIModelData& data, int vertex)
    {
        if (&data == m_lastData && vertex < m_lastCounts->GetCount())
            __builtin_prefetch(m_lastCounts->GetData() + vertex, 1);
    }
    /// Removes the first row of the vertex, if there is one.
    void Remove(ZWeightUIModelData& data, int vertex);
    bool IsListEmpty() const { return m_rows.vertexRows.GetCount() == m_pendingCount; }
    /// Makes the lists true.
    void Finish();

private:
    struct Counts
    {
        std::uint16_t present = 0; ///< rows of the vertex that are there; no more than kMost are counted
        std::uint16_t pending = 0; ///< first rows of it that are to go; at kMost they go
    };
    static constexpr int kMost = 65535;
    using ModelCounts = ZArrayTemplate<Counts>;

    ModelCounts& CountsOf(const ZWeightUIModelData* data);
    Counts* CountOf(const ZWeightUIModelData* data, int vertex);
    void CountRows();

    ZWeightSelection& m_rows;
    std::unordered_map<const ZWeightUIModelData*, std::unique_ptr<ModelCounts>> m_counts;
    const ZWeightUIModelData* m_lastData = nullptr;
    ModelCounts* m_lastCounts = nullptr;
    bool m_counted = false;
    int m_pendingCount = 0;
};
