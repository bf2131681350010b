// SPDX-License-Identifier: MIT
// The record of a weight change.
#include "editing/ZWeightingUndo.h"

#include "zbaselib/ZMemory.h"

#include <algorithm>

namespace {

ZWeightUIModelData* DataOf(const ZWeightingWeightChangeUndoEntry& entry)
{
    ZPlug* const plug = entry.model.Get();
    return plug != nullptr ? static_cast<ZWeightUIModelData*>(plug->GetPlugOwner()) : nullptr;
}

const VertexInfluences* RecordOf(const ZWeightUIModelData& data, int vertex)
{
    return vertex >= 0 && vertex < data.vertexInfluences.GetCount() ? data.vertexInfluences[vertex] : nullptr;
}

bool IsSame(const VertexInfluencesView& before, const VertexInfluences& now)
{
    return std::equal(before.links, before.links + before.count, now.links.begin(), now.links.end()) &&
           std::equal(before.weights, before.weights + before.count, now.weights.begin(), now.weights.end());
}

} // namespace

void ZWeightingWeightChangeUndoEntry::Reserve(int vertexCount, int influenceCount)
{
    vertices.Reserve(vertexCount);
    m_offsets.Reserve(vertexCount);
    m_links.Reserve(influenceCount);
    m_weights.Reserve(influenceCount);
    // Fresh and written at once: in large pages the system gives them out several times as fast.
    ZMemory_ExpectAnyOrder(vertices.GetData(), vertices.GetHeapBytes());
    ZMemory_ExpectAnyOrder(m_offsets.GetData(), m_offsets.GetHeapBytes());
    ZMemory_ExpectAnyOrder(m_links.GetData(), m_links.GetHeapBytes());
    ZMemory_ExpectAnyOrder(m_weights.GetData(), m_weights.GetHeapBytes());
}

void ZWeightingWeightChangeUndoEntry::AddVertex(int vertex, const VertexInfluences& before)
{
    const int begin = m_links.GetCount();
    const int count = before.GetCount();
    if (begin + count > m_links.GetCapacity())
        Reserve(vertices.GetCount() + 1, std::max(begin + count, 2 * begin));
    m_links.SetCountUninitialised(begin + count);
    m_weights.SetCountUninitialised(begin + count);
    std::copy_n(before.links.GetData(), count, m_links.GetData() + begin);
    std::copy_n(before.weights.GetData(), count, m_weights.GetData() + begin);
    vertices.Add(vertex);
    m_offsets.Add(begin + count);
}

void ZWeightingWeightChangeUndoEntry::SetAfter(const VertexInfluences& record)
{
    after = record;
    m_hasAfter = true;
}

VertexInfluencesRows ZWeightingWeightChangeUndoEntry::RowsBefore() const
{
    return {m_offsets.GetData(), {m_links.GetData(), m_weights.GetData(), m_links.GetCount()}};
}

VertexInfluencesRows ZWeightingWeightChangeUndoEntry::RowsAfter() const
{
    return {nullptr, {after.links.GetData(), after.weights.GetData(), after.GetCount()}};
}

void ZWeightingWeightChangeUndoEntry::GetBefore(int index, VertexInfluences& record) const
{
    const VertexInfluencesView view = RowsBefore()[index];
    record.links.Assign(view.links, view.count);
    record.weights.Assign(view.weights, view.count);
}

size_t ZWeightingWeightChangeUndoEntry::GetByteCount() const
{
    return sizeof(*this) + vertices.GetHeapBytes() + m_offsets.GetHeapBytes() + m_links.GetHeapBytes() +
           m_weights.GetHeapBytes() + after.links.GetHeapBytes() + after.weights.GetHeapBytes();
}

ZWeightingWeightChangeUndo::ZWeightingWeightChangeUndo(IEditingOwner* tool) : ZWeightingUndoBase(tool) {}

ZWeightingWeightChangeUndo::~ZWeightingWeightChangeUndo() { Forget(); }

void ZWeightingWeightChangeUndo::Forget()
{
    while (!entries.empty()) {
        delete entries.back();
        entries.pop_back();
    }
}

void ZWeightingWeightChangeUndo::RecordBefore(ZWeightUIModelData* item)
{
    auto* const entry = new ZWeightingWeightChangeUndoEntry;
    entries.push_back(entry);
    entry->model.Set(item);
    int influences = 0;
    for (const int vertex : item->activeVertices)
        if (const VertexInfluences* const record = RecordOf(*item, vertex))
            influences += record->GetCount();
    entry->Reserve(item->activeVertices.GetCount(), influences);
    for (const int vertex : item->activeVertices)
        if (const VertexInfluences* const record = RecordOf(*item, vertex))
            entry->AddVertex(vertex, *record);
}

void ZWeightingWeightChangeUndo::RecordAfter()
{
    if (!ChangedAnything()) {
        Forget();
        return;
    }
    for (ZWeightingWeightChangeUndoEntry* const entry : entries) {
        const ZWeightUIModelData* const data = DataOf(*entry);
        if (data == nullptr || data->modelSelected == 0 || data->activeVertices.IsEmpty())
            continue;
        if (const VertexInfluences* const record = RecordOf(*data, data->activeVertices[0]))
            entry->SetAfter(*record);
    }
}

bool ZWeightingWeightChangeUndo::ChangedAnything() const
{
    for (const ZWeightingWeightChangeUndoEntry* const entry : entries) {
        const ZWeightUIModelData* const data = DataOf(*entry);
        for (int i = 0; data != nullptr && i < entry->vertices.GetCount(); ++i) {
            const VertexInfluences* const now = RecordOf(*data, entry->vertices[i]);
            if (now == nullptr || !IsSame(entry->RowsBefore()[i], *now))
                return true;
        }
    }
    return false;
}

bool ZWeightingWeightChangeUndo::IsEmpty() { return entries.empty(); }

void ZWeightingWeightChangeUndo::Undo() { Write(false); }
void ZWeightingWeightChangeUndo::Redo() { Write(true); }

void ZWeightingWeightChangeUndo::Write(bool after)
{
    bool any = false;
    for (const ZWeightingWeightChangeUndoEntry* const entry : entries) {
        ZWeightUIModelData* const data = DataOf(*entry);
        if (data == nullptr)
            continue;
        any = true;
        if (after && !entry->HasAfter())
            continue; // an empty record in its place would take every weight away
        data->ApplyManyVertexInfluences(entry->vertices.Span(), after ? entry->RowsAfter() : entry->RowsBefore());
    }
    IEditingOwner* const tool = Tool();
    if (!any || tool == nullptr)
        return;
    tool->RecolourActiveVertices();
    tool->RefreshSpread(true);
}

size_t ZWeightingWeightChangeUndo::GetByteCount() const
{
    size_t bytes = sizeof(*this) + entries.capacity() * sizeof(entries[0]);
    for (const ZWeightingWeightChangeUndoEntry* const entry : entries)
        bytes += entry->GetByteCount();
    return bytes;
}
