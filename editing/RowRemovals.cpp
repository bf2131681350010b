// SPDX-License-Identifier: MIT
#include "editing/RowRemovals.h"

#include "weights/ZWeightUIModelData.h"
#include "zbaselib/ZMemory.h"

#include <algorithm>

RowRemovals::ModelCounts& RowRemovals::CountsOf(const ZWeightUIModelData* data)
{
    if (data != m_lastData) {
        std::unique_ptr<ModelCounts>& counts = m_counts[data];
        if (!counts) {
            const int vertexCount = data->vertexStates.GetCount();
            counts = std::make_unique<ModelCounts>();
            counts->SetCountUninitialised(vertexCount);
            ZMemory_ExpectAnyOrder(counts->GetData(), sizeof(Counts) * static_cast<size_t>(vertexCount));
            counts->Fill({});
        }
        m_lastData = data;
        m_lastCounts = counts.get();
    }
    return *m_lastCounts;
}

RowRemovals::Counts* RowRemovals::CountOf(const ZWeightUIModelData* data, int vertex)
{
    ModelCounts& counts = CountsOf(data);
    return vertex >= 0 && vertex < counts.GetCount() ? &counts[vertex] : nullptr;
}

/// Done at the first removal: a gesture that only adds pays nothing.
void RowRemovals::CountRows()
{
    m_counted = true;
    for (int row = 0; row < m_rows.vertexRows.GetCount(); ++row) {
        FetchRowAhead(row);
        if (Counts* const count = CountOf(m_rows.vertexModels[row], m_rows.vertexRows[row]))
            count->present = static_cast<std::uint8_t>(std::min(count->present + 1, kMost));
    }
}

void RowRemovals::Reserve(int more)
{
    ZMemory_ReserveMore(m_rows.vertexRows, more);
    ZMemory_ReserveMore(m_rows.vertexModels, more);
}

void RowRemovals::Append(ZWeightUIModelData& data, int vertex)
{
    m_rows.vertexRows.Add(vertex);
    m_rows.vertexModels.Add(&data);
    if (!m_counted)
        return;
    if (Counts* const count = CountOf(&data, vertex))
        count->present = static_cast<std::uint8_t>(std::min(count->present + 1, kMost));
}

void RowRemovals::Remove(ZWeightUIModelData& data, int vertex)
{
    if (!m_counted)
        CountRows();
    Counts* const count = CountOf(&data, vertex);
    if (count == nullptr || count->present == 0)
        return;
    --count->present;
    ++count->pending;
    ++m_pendingCount;
    if (count->pending < kMost)
        return;
    Finish();
    ForgetCounts();
    CountRows();
}

void RowRemovals::ForgetCounts()
{
    m_counts.clear();
    m_lastData = nullptr;
    m_lastCounts = nullptr;
    m_counted = false;
}

void RowRemovals::Finish()
{
    if (m_pendingCount == 0)
        return;
    if (IsListEmpty()) {
        m_rows.vertexRows.RemoveAll();
        m_rows.vertexModels.RemoveAll();
        m_pendingCount = 0;
        ForgetCounts();
        return;
    }
    int kept = 0;
    for (int row = 0; row < m_rows.vertexRows.GetCount(); ++row) {
        FetchRowAhead(row);
        const int vertex = m_rows.vertexRows[row];
        ZWeightUIModelData* const data = m_rows.vertexModels[row];
        Counts* const count = CountOf(data, vertex);
        if (count != nullptr && count->pending > 0) {
            --count->pending;
            continue;
        }
        m_rows.vertexRows[kept] = vertex;
        m_rows.vertexModels[kept] = data;
        ++kept;
    }
    m_rows.vertexRows.SetCount(kept);
    m_rows.vertexModels.SetCount(kept);
    m_pendingCount = 0;
}
