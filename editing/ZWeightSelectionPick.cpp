// SPDX-License-Identifier: MIT
// Batches: the changes that a pick makes to the vertices of many models.
#include "editing/RowRemovals.h"
#include "editing/ZWeightSelection.h"
#include "editing/ZWeightingUndo.h"

#include <cstdint>
#include <new>
#include <vector>

namespace {

using Transition = void (ZWeightUIModelData::*)(int vertex, IVertexTransitionRecorder* undo);
using Extension = void (IWeightGeom::*)(ZWeightUIModelData& data, int vertex, IVertexTransitionRecorder* undo);

/// A transition, and what extends it to a vertex's row and column.
struct Move
{
    Transition vertex;
    Extension row;
    Extension column;
};
constexpr Move kSelect{&ZWeightUIModelData::SelectVertex, &IWeightGeom::SelectRow, &IWeightGeom::SelectColumn};
constexpr Move kDeselect{&ZWeightUIModelData::DeselectVertex, &IWeightGeom::DeselectRow, &IWeightGeom::DeselectColumn};
constexpr Move kActivate{&ZWeightUIModelData::ActivateVertex, &IWeightGeom::ActivateRow, &IWeightGeom::ActivateColumn};
constexpr Move kDeactivate{&ZWeightUIModelData::DeactivateVertex, &IWeightGeom::DeactivateRow,
                           &IWeightGeom::DeactivateColumn};

/// A vertex of the batch, with the record that hears of what happens to it.
class PickedVertex
{
public:
    PickedVertex(const ZWeightSelection& options, ZWeightUIModelData& owner, int number,
                 ZWeightingSelectionUndo* recorder)
        : data(owner), vertex(number), m_options(options), m_undo(recorder)
    {
    }
    int State() const { return data.vertexStates[vertex]; }
    void Apply(const Move& move)
    {
        (data.*move.vertex)(vertex, m_undo);
        if (m_options.selectU)
            (data.geometry->*move.row)(data, vertex, m_undo);
        if (m_options.selectV)
            (data.geometry->*move.column)(data, vertex, m_undo);
    }

    ZWeightUIModelData& data;
    const int vertex;

private:
    const ZWeightSelection& m_options;
    ZWeightingSelectionUndo* m_undo;
};

/// A walk over the pairs of a batch. Each run of pairs of one model gets a record, which is added to the open
/// transaction at once. Lists are true again when the walk ends.
class BatchWalk
{
public:
    BatchWalk(IEditingOwner& owner, ZWeightSelection& selection)
        : rows(selection), m_owner(owner), m_selection(selection), m_models(owner.ModelDataList()),
          m_begun(static_cast<size_t>(m_models.GetCount()), 0)
    {
    }
    ~BatchWalk() { Finish(); }
    BatchWalk(const BatchWalk&) = delete;
    BatchWalk& operator=(const BatchWalk&) = delete;

    template <class Action> void ForEach(const ZArrayTemplate<int>& batch, const Action& action)
    {
        // Batches may come in any order: what a later pair needs is fetched while earlier ones are at work.
        constexpr int kAhead = 2 * 128;
        int previous = -1;
        ZWeightingSelectionUndo* undo = nullptr;
        ZWeightUIModelData* data = nullptr;
        for (int i = 0; i + 1 < batch.GetCount(); i += 2) {
            const int model = batch[i];
            const int vertex = batch[i + 1];
            if (model < 0 || model >= m_models.GetCount())
                continue;
            if (model != previous) {
                data = m_models[model];
                Begin(model, *data);
                undo = MakeRecord(*data);
                if (undo != nullptr)
                    undo->Reserve(2 * RunLength(batch, i));
                previous = model;
            }
            if (i + kAhead + 1 < batch.GetCount())
                Prefetch(*data, batch[i + kAhead + 1]);
            if (vertex < 0 || vertex >= data->vertexStates.GetCount() || data->geometry == nullptr)
                continue;
            PickedVertex picked(m_selection, *data, vertex, undo);
            action(picked);
        }
    }
    /// Room for what the batch may add.
    void Reserve(const ZArrayTemplate<int>& batch)
    {
        rows.Reserve(batch.GetCount() / 2);
        for (int i = 0; i + 1 < batch.GetCount(); i += 2 * RunLength(batch, i))
            if (batch[i] >= 0 && batch[i] < m_models.GetCount())
                m_models[batch[i]]->ReserveSelection(RunLength(batch, i));
    }
    void Select(PickedVertex& picked)
    {
        rows.Append(picked.data, picked.vertex);
        picked.Apply(kSelect);
        m_selection.noSelection = false;
    }
    void Deselect(PickedVertex& picked)
    {
        rows.Remove(picked.data, picked.vertex);
        picked.Apply(kDeselect);
    }
    void Finish()
    {
        rows.Finish();
        for (size_t model = 0; model < m_begun.size(); ++model)
            if (m_begun[model] != 0)
                m_models[static_cast<int>(model)]->EndSelectionBatch();
        m_begun.clear();
    }

    RowRemovals rows;

private:
    /// Pairs from `begin` on that name the same model.
    static int RunLength(const ZArrayTemplate<int>& batch, int begin)
    {
        int end = begin;
        while (end + 1 < batch.GetCount() && batch[end] == batch[begin])
            end += 2;
        return (end - begin) / 2;
    }
    /// The vertex need not be one of this model: then nothing is gained and nothing lost.
    [[gnu::always_inline]] void Prefetch(const ZWeightUIModelData& data, int vertex)
    {
        ZMemory_FetchPlace(data.vertexStates, vertex);
        rows.Prefetch(data, vertex);
    }
    void Begin(int model, ZWeightUIModelData& data)
    {
        std::uint8_t& begun = m_begun[static_cast<size_t>(model)];
        if (begun == 0)
            data.BeginSelectionBatch();
        begun = 1;
    }
    ZWeightingSelectionUndo* MakeRecord(ZWeightUIModelData& data)
    {
        ZUndoStack* const stack = ZUndoStack::TheOne();
        if (!stack->IsTransactionOpen())
            return nullptr;
        auto* const undo = new (std::nothrow) ZWeightingSelectionUndo(&m_owner);
        if (undo == nullptr)
            return nullptr; // the pick goes on and is not recorded
        undo->SetModel(&data);
        stack->TransactionAdd(undo);
        return undo;
    }

    IEditingOwner& m_owner;
    ZWeightSelection& m_selection;
    ZWeightUIModelDataList& m_models;
    std::vector<std::uint8_t> m_begun; ///< by model index
};

constexpr int kNotSelected = 0;
constexpr int kSelected = 1;
constexpr int kActive = 2;

} // namespace

void ZWeightSelection::PickSelect(const ZArrayTemplate<int>& batch, int code)
{
    BatchWalk walk(m_owner, *this);
    if (code == kPickAdd) {
        walk.Reserve(batch);
        walk.ForEach(batch, [&](PickedVertex& picked) {
            if (picked.State() == kNotSelected)
                walk.Select(picked);
            if (picked.State() == kSelected) {
                picked.Apply(kActivate);
                noActive = false;
            }
        });
    } else if (code == kPickRemove) {
        walk.ForEach(batch, [&](PickedVertex& picked) {
            if (picked.State() != kNotSelected)
                walk.Deselect(picked);
        });
        if (walk.rows.IsListEmpty())
            noSelection = true;
    } else if (code == kPickToggle) {
        walk.ForEach(batch, [&](PickedVertex& picked) {
            if (picked.State() == kNotSelected)
                walk.Select(picked);
            else
                walk.Deselect(picked);
            picked.Apply(picked.State() == kActive ? kDeactivate : kActivate);
        });
        if (walk.rows.IsListEmpty())
            noSelection = true;
        else
            noActive = false;
    }
}

void ZWeightSelection::PickSelectOnly(const ZArrayTemplate<int>& batch, int code)
{
    BatchWalk walk(m_owner, *this);
    if (code == kPickAdd) {
        walk.ForEach(batch, [&](PickedVertex& picked) {
            if (picked.State() == kNotSelected)
                walk.Select(picked);
        });
    } else if (code == kPickRemove) {
        walk.ForEach(batch, [&](PickedVertex& picked) {
            if (picked.State() == kActive)
                picked.Apply(kDeactivate);
            if (picked.State() != kNotSelected)
                walk.Deselect(picked);
        });
        if (walk.rows.IsListEmpty())
            noSelection = true;
        if (targetRows.IsEmpty())
            noActive = true;
    } else if (code == kPickToggle) {
        walk.ForEach(batch, [&](PickedVertex& picked) {
            if (picked.State() == kNotSelected)
                walk.Select(picked);
            else
                walk.Deselect(picked);
        });
        if (walk.rows.IsListEmpty())
            noSelection = true;
        if (selectU || selectV) {
            // Rows and columns changed more vertices than the lists were told of.
            walk.Finish();
            RebuildRows();
            m_owner.RefreshPanelLists();
        }
    }
}

void ZWeightSelection::PickActivate(const ZArrayTemplate<int>& batch, int code)
{
    BatchWalk walk(m_owner, *this);
    if (code == kPickAdd) {
        walk.ForEach(batch, [&](PickedVertex& picked) {
            if (picked.State() == kSelected) {
                picked.Apply(kActivate);
                noActive = false;
            }
        });
    } else if (code == kPickRemove) {
        walk.ForEach(batch, [&](PickedVertex& picked) {
            if (picked.State() == kActive)
                picked.Apply(kDeactivate);
        });
        if (targetRows.IsEmpty())
            noActive = true;
    } else if (code == kPickToggle) {
        walk.ForEach(batch,
                     [&](PickedVertex& picked) { picked.Apply(picked.State() == kActive ? kDeactivate : kActivate); });
        if (vertexRows.IsEmpty())
            noSelection = true;
        else
            noActive = false;
    }
}
