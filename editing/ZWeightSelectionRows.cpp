// SPDX-License-Identifier: MIT
// The cross-model vertex lists: what clears them, what rebuilds them, and how they follow the models.
#include "editing/ZWeightSelection.h"
#include "editing/ZWeightingUndo.h"
#include "zbaselib/ZMemory.h"

#include <algorithm>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

ZWeightingSelectionUndo* NewRecord(IEditingOwner& owner, ZWeightUIModelData& data)
{
    auto* const record = new (std::nothrow) ZWeightingSelectionUndo(&owner);
    if (record == nullptr)
        return nullptr;
    record->SetModel(&data);
    ZUndoStack::TheOne()->TransactionAdd(record);
    return record;
}

/// The record of the model at hand: a new one for each model, unless nothing has come into the last one yet. Null when
/// there is no memory for one: what happens then is not recorded.
class RecordPerModel
{
public:
    explicit RecordPerModel(IEditingOwner& owner) : m_owner(owner) {}
    ZWeightingSelectionUndo* For(ZWeightUIModelData& data)
    {
        if (m_record != nullptr && m_record->IsEmpty()) {
            m_record->SetModel(&data);
            return m_record;
        }
        m_record = NewRecord(m_owner, data);
        return m_record;
    }

private:
    IEditingOwner& m_owner;
    ZWeightingSelectionUndo* m_record = nullptr;
};

/// Every list of the model is emptied; the record hears of each vertex once.
void ClearVertexLists(ZWeightUIModelData& data, ZWeightingSelectionUndo* undo)
{
    if (undo != nullptr)
        undo->Reserve(data.selectedVertices.GetCount());
    for (int i = 0; i < data.selectedVertices.GetCount(); ++i) {
        ZMemory_FetchAhead(data.vertexStates, data.selectedVertices.Span(), i);
        const int vertex = data.selectedVertices[i];
        if (undo != nullptr)
            undo->RecordTransition(vertex, data.vertexStates[vertex], 0);
        data.vertexStates[vertex] = 0;
    }
    data.noActiveVertices = 1;
    data.noSelectedVertices = 1;
    data.activeVertices.RemoveAll();
    data.selectedVertices.RemoveAll();
}

} // namespace

void ZWeightSelection::ClearAllVertexLists()
{
    ZUndoStack* const stack = ZUndoStack::TheOne();
    stack->TransactionBegin("Tool Weighting Clear All Vertex Lists", false);
    RecordPerModel record(m_owner);
    ZWeightUIModelDataList& models = m_owner.ModelDataList();
    for (int i = 0; i < models.GetCount(); ++i)
        if (models[i]->modelSelected != 0 && !models[i]->selectedVertices.IsEmpty())
            ClearVertexLists(*models[i], record.For(*models[i]));
    Clear();
    stack->TransactionEnd(false, false);
}

void ZWeightSelection::DeactivateAll()
{
    ZUndoStack* const stack = ZUndoStack::TheOne();
    stack->TransactionBegin("", false);
    targetRows.RemoveAll();
    noActive = true;
    RecordPerModel record(m_owner);
    ZWeightUIModelDataList& models = m_owner.ModelDataList();
    for (int i = 0; i < models.GetCount(); ++i) {
        ZWeightUIModelData& data = *models[i];
        if (data.modelSelected == 0)
            continue;
        ZWeightingSelectionUndo* const undo = record.For(data);
        if (undo != nullptr)
            undo->Reserve(data.activeVertices.GetCount());
        for (int k = 0; k < data.activeVertices.GetCount(); ++k) {
            ZMemory_FetchAhead(data.vertexStates, data.activeVertices.Span(), k);
            const int vertex = data.activeVertices[k];
            if (undo != nullptr)
                undo->RecordTransition(vertex, data.vertexStates[vertex], 1);
            data.vertexStates[vertex] = 1;
        }
        data.activeVertices.RemoveAll();
        data.noActiveVertices = 1;
    }
    stack->TransactionEnd(false, false);
}

void ZWeightSelection::RowSelectionChanged(const std::vector<int>& selected)
{
    ZUndoStack* const stack = ZUndoStack::TheOne();
    stack->TransactionBegin("", false);
    targetRows.RemoveAll();
    noActive = true;
    std::unordered_set<ZWeightUIModelData*> begun;
    ZWeightUIModelData* data = nullptr;
    ZWeightingSelectionUndo* undo = nullptr;
    auto next = selected.begin();
    for (int row = 0; row < vertexRows.GetCount(); ++row) {
        if (vertexModels[row] != data) {
            data = vertexModels[row];
            undo = NewRecord(m_owner, *data);
            if (begun.insert(data).second)
                data->BeginSelectionBatch();
        }
        while (next != selected.end() && *next < row)
            ++next;
        if (next != selected.end() && *next == row) {
            targetRows.Add(row);
            data->ActivateVertex(vertexRows[row], undo);
            noActive = false;
        } else {
            data->DeactivateVertex(vertexRows[row], undo);
        }
    }
    for (ZWeightUIModelData* const model : begun)
        model->EndSelectionBatch();
    stack->TransactionEnd(false, false);
    m_owner.RefreshPanelLists();
    m_owner.TakeSpreadSnapshot();
}

void ZWeightSelection::SyncPanelSelection()
{
    DeselectUnchecked();
    targetRows.RemoveAll();
    if (m_owner.ModelDataList().GetCount() == 0) {
        Clear();
        return;
    }
    if (!AppendActiveRowsInOrder()) {
        targetRows.RemoveAll();
        AppendActiveRows();
    }
    noActive = targetRows.IsEmpty();
    if (vertexRows.IsEmpty()) {
        noSelection = true;
        noActive = true;
    }
}

/// Models that are not checked lose their vertex selection, without a record, and their rows.
void ZWeightSelection::DeselectUnchecked()
{
    ZWeightUIModelDataList& models = m_owner.ModelDataList();
    std::unordered_set<const ZWeightUIModelData*> unchecked;
    for (int i = 0; i < models.GetCount(); ++i) {
        ZWeightUIModelData& data = *models[i];
        if (data.modelSelected != 0)
            continue;
        unchecked.insert(&data);
        if (!data.selectedVertices.IsEmpty())
            ClearVertexLists(data, nullptr);
    }
    if (unchecked.empty())
        return;
    int kept = 0;
    for (int row = 0; row < vertexRows.GetCount(); ++row) {
        if (unchecked.count(vertexModels[row]) > 0)
            continue;
        vertexRows[kept] = vertexRows[row];
        vertexModels[kept] = vertexModels[row];
        ++kept;
    }
    vertexRows.SetCount(kept);
    vertexModels.SetCount(kept);
}

/// A pick appends rows and active vertices in the same order: then going along both finds the rows. False where orders
/// differ, or a vertex has two rows; what was appended until then does not count.
bool ZWeightSelection::AppendActiveRowsInOrder()
{
    ZWeightUIModelDataList& models = m_owner.ModelDataList();
    int model = 0;
    int next = 0; // of the model's active vertices
    const auto isDone = [&] { return next == models[model]->activeVertices.GetCount(); };
    for (int row = 0; row < vertexRows.GetCount(); ++row) {
        const ZWeightUIModelData& data = *vertexModels[row];
        if (data.activeVertices.IsEmpty())
            continue;
        for (; models[model] != &data; next = 0)
            if (!isDone() || ++model == models.GetCount())
                return false;
        if (next == 0)
            ZMemory_ReserveMore(targetRows, data.activeVertices.GetCount());
        if (!isDone() && data.activeVertices[next] == vertexRows[row]) {
            targetRows.Add(row);
            ++next;
            continue;
        }
        ZMemory_FetchAhead(data.vertexStates, vertexRows.Span(), row);
        if (data.GetVertexState(vertexRows[row]) == 2)
            return false;
    }
    for (; model < models.GetCount(); ++model, next = 0)
        if (!isDone())
            return false;
    return true;
}

/// For each model in list order and each of its active vertices in activation order: every row of that vertex,
/// ascending. The rows of a vertex are chained through an index, so that nothing is searched for.
void ZWeightSelection::AppendActiveRows()
{
    ZWeightUIModelDataList& models = m_owner.ModelDataList();
    std::unordered_map<const ZWeightUIModelData*, ZArrayTemplate<int>> firstRows;
    for (int i = 0; i < models.GetCount(); ++i) {
        if (models[i]->activeVertices.IsEmpty())
            continue;
        ZArrayTemplate<int>& firsts = firstRows[models[i]];
        firsts.SetCountUninitialised(models[i]->vertexStates.GetCount());
        ZMemory_ExpectAnyOrder(firsts.GetData(), sizeof(int) * firsts.size());
        firsts.Fill(-1);
    }

    std::vector<int> nextRow(static_cast<size_t>(vertexRows.GetCount()), -1);
    const ZWeightUIModelData* last = nullptr;
    ZArrayTemplate<int>* firsts = nullptr;
    for (int row = vertexRows.GetCount() - 1; row >= 0; --row) {
        if (vertexModels[row] != last) {
            last = vertexModels[row];
            const auto found = firstRows.find(last);
            firsts = found == firstRows.end() ? nullptr : &found->second;
        }
        if (firsts != nullptr)
            ZMemory_FetchAhead(*firsts, vertexRows.Span(), row, -1);
        const int vertex = vertexRows[row];
        if (firsts == nullptr || vertex < 0 || vertex >= firsts->GetCount())
            continue;
        nextRow[static_cast<size_t>(row)] = (*firsts)[vertex];
        (*firsts)[vertex] = row;
    }

    for (int i = 0; i < models.GetCount(); ++i) {
        const auto found = firstRows.find(models[i]);
        if (found == firstRows.end())
            continue;
        const ZArrayTemplate<int, 16>& active = models[i]->activeVertices;
        ZMemory_ReserveMore(targetRows, active.GetCount());
        for (int k = 0; k < active.GetCount(); ++k) {
            ZMemory_FetchAhead(found->second, active.Span(), k);
            for (int row = found->second[active[k]]; row >= 0; row = nextRow[static_cast<size_t>(row)])
                targetRows.Add(row);
        }
    }
}

void ZWeightSelection::RebuildRows()
{
    vertexRows.RemoveAll();
    vertexModels.RemoveAll();
    targetRows.RemoveAll();
    ZWeightUIModelDataList& models = m_owner.ModelDataList();
    for (int i = 0; i < models.GetCount(); ++i) {
        ZWeightUIModelData* const data = models[i];
        if (data->modelSelected == 0)
            continue;
        const std::span<const int> selected = data->selectedVertices.Span();
        ZMemory_ReserveMore(vertexRows, static_cast<int>(selected.size()));
        ZMemory_ReserveMore(vertexModels, static_cast<int>(selected.size()));
        for (size_t k = 0; k < selected.size(); ++k) {
            ZMemory_FetchAhead(data->vertexStates, selected, static_cast<int>(k));
            const int row = vertexRows.Add(selected[k]);
            vertexModels.Add(data);
            if (data->GetVertexState(selected[k]) == 2)
                targetRows.Add(row);
        }
    }
    noSelection = vertexRows.IsEmpty();
    noActive = targetRows.IsEmpty();
}

void ZWeightSelection::RemoveModel(ZWeightUIModelData* item)
{
    // Old row -> new row, -1 for a row that goes.
    std::vector<int> newRows(static_cast<size_t>(vertexRows.GetCount()), -1);
    int kept = 0;
    for (int row = 0; row < vertexRows.GetCount(); ++row) {
        if (vertexModels[row] == item)
            continue;
        newRows[static_cast<size_t>(row)] = kept;
        vertexRows[kept] = vertexRows[row];
        vertexModels[kept] = vertexModels[row];
        ++kept;
    }
    vertexRows.SetCount(kept);
    vertexModels.SetCount(kept);
    int targets = 0;
    for (const int row : targetRows) {
        const bool isThere = row >= 0 && static_cast<size_t>(row) < newRows.size();
        if (isThere && newRows[static_cast<size_t>(row)] >= 0)
            targetRows[targets++] = newRows[static_cast<size_t>(row)];
    }
    targetRows.SetCount(targets);
    noSelection = noSelection || vertexRows.IsEmpty();
    noActive = noActive || targetRows.IsEmpty();
}

void ZWeightSelection::Clear()
{
    vertexRows.RemoveAll();
    vertexModels.RemoveAll();
    targetRows.RemoveAll();
    noSelection = true;
    noActive = true;
}
