// SPDX-License-Identifier: MIT
// Batches against a plain version that searches its lists, and walks over undo and redo.
#include "support/EditingTool.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <set>
#include <vector>

namespace {

using Transition = std::vector<int>; // model, vertex, old state, new state

/// One model as plain lists.
struct PlainModel
{
    std::vector<int> states, selected, active;
    int countU = 0; ///< 0: no rows and columns
};

/// The batch operations, word by word.
struct PlainSelection
{
    std::vector<PlainModel> models;
    std::vector<std::pair<int, int>> rows; ///< model, vertex
    std::vector<Transition> log;
    std::vector<int> runs; ///< model of each record
    bool noSelection = true, noActive = true, selectU = false, selectV = false;
    bool targetsEmpty = true;

    int& State(int model, int vertex) { return models[static_cast<size_t>(model)].states[static_cast<size_t>(vertex)]; }
    static void Erase(std::vector<int>& list, int vertex)
    {
        const auto found = std::find(list.begin(), list.end(), vertex);
        if (found != list.end())
            list.erase(found);
    }
    void One(int operation, int m, int v)
    {
        PlainModel& model = models[static_cast<size_t>(m)];
        int& state = State(m, v);
        if (operation == 0 && state == 0) { // select
            log.push_back({m, v, 0, 1});
            state = 1;
            model.selected.push_back(v);
        } else if (operation == 1 && state == 1) { // activate
            log.push_back({m, v, 1, 2});
            state = 2;
            model.active.push_back(v);
        } else if (operation == 2 && state == 2) { // deactivate
            log.push_back({m, v, 2, 1});
            state = 1;
            Erase(model.active, v);
        } else if (operation == 3 && state != 0) { // deselect
            log.push_back({m, v, state, 0});
            if (state == 2)
                Erase(model.active, v);
            state = 0;
            Erase(model.selected, v);
        }
    }
    void Extended(int operation, int m, int v)
    {
        const PlainModel& model = models[static_cast<size_t>(m)];
        One(operation, m, v);
        const int count = static_cast<int>(model.states.size());
        if (selectU && model.countU > 0)
            for (int u = 0; u < model.countU; ++u)
                One(operation, m, v - v % model.countU + u);
        if (selectV && model.countU > 0)
            for (int w = v % model.countU; w < count; w += model.countU)
                One(operation, m, w);
    }
    void Select(int m, int v)
    {
        rows.emplace_back(m, v);
        Extended(0, m, v);
        noSelection = false;
    }
    void Deselect(int m, int v)
    {
        const auto found = std::find(rows.begin(), rows.end(), std::pair(m, v));
        if (found != rows.end())
            rows.erase(found);
        Extended(3, m, v);
    }
    /// operation: 0 PickSelect, 1 PickSelectOnly, 2 PickActivate
    void Pick(int operation, const std::vector<std::pair<int, int>>& batch, int code)
    {
        int previous = -1;
        for (const auto& [m, v] : batch) {
            if (m != previous)
                runs.push_back(m);
            previous = m;
            Pair(operation, m, v, code);
        }
        if (operation == 0 && code == 1)
            noSelection = noSelection || rows.empty();
        if (operation == 0 && code == 2)
            (rows.empty() ? noSelection : noActive) = rows.empty();
        if (operation == 1 && code == 1) {
            noSelection = noSelection || rows.empty();
            noActive = noActive || targetsEmpty;
        }
        if (operation == 1 && code == 2) {
            noSelection = noSelection || rows.empty();
            if (selectU || selectV)
                Rebuild();
        }
        if (operation == 2 && code == 1)
            noActive = noActive || targetsEmpty;
        if (operation == 2 && code == 2)
            (rows.empty() ? noSelection : noActive) = rows.empty();
    }
    void Pair(int operation, int m, int v, int code)
    {
        const auto state = [&] { return State(m, v); };
        if (operation == 0 && code == 0) {
            if (state() == 0)
                Select(m, v);
            if (state() == 1) {
                Extended(1, m, v);
                noActive = false;
            }
        } else if (operation == 0 && code == 1) {
            if (state() != 0)
                Deselect(m, v);
        } else if (operation == 0) {
            state() == 0 ? Select(m, v) : Deselect(m, v);
            Extended(state() == 2 ? 2 : 1, m, v);
        } else if (operation == 1 && code == 0) {
            if (state() == 0)
                Select(m, v);
        } else if (operation == 1 && code == 1) {
            if (state() == 2)
                Extended(2, m, v);
            if (state() != 0)
                Deselect(m, v);
        } else if (operation == 1) {
            state() == 0 ? Select(m, v) : Deselect(m, v);
        } else if (code == 0) {
            if (state() == 1) {
                Extended(1, m, v);
                noActive = false;
            }
        } else if (code == 1) {
            if (state() == 2)
                Extended(2, m, v);
        } else {
            Extended(state() == 2 ? 2 : 1, m, v);
        }
    }
    void Rebuild()
    {
        rows.clear();
        bool anyActive = false;
        for (size_t m = 0; m < models.size(); ++m) {
            for (const int v : models[m].selected)
                rows.emplace_back(m, v);
            anyActive = anyActive || !models[m].active.empty();
        }
        noSelection = rows.empty();
        noActive = !anyActive;
        targetsEmpty = !anyActive;
    }
};

std::vector<int> List(const ZArrayTemplate<int, 16>& array) { return {array.begin(), array.end()}; }

std::vector<std::pair<int, int>> Rows(const EditingTool& tool)
{
    std::vector<std::pair<int, int>> rows;
    for (int row = 0; row < tool.selection.vertexRows.GetCount(); ++row)
        rows.emplace_back(tool.selection.vertexModels[row] == tool.owned[0].get() ? 0 : 1,
                          tool.selection.vertexRows[row]);
    return rows;
}

void MakeModels(EditingTool& tool)
{
    tool.character.AddBones(2);
    tool.Admit(tool.character.AddMesh("Body", 5));
    tool.Admit(tool.character.AddSurface("Sheet", 3, 2));
    tool.RebuildBoneList();
}

std::vector<std::pair<int, int>> RandomBatch()
{
    return *rc::gen::container<std::vector<std::pair<int, int>>>(
        rc::gen::pair(rc::gen::inRange(0, 2), rc::gen::inRange(0, 5)));
}

ZArrayTemplate<int> Pairs(const std::vector<std::pair<int, int>>& batch)
{
    ZArrayTemplate<int> pairs;
    for (const auto& [model, vertex] : batch) {
        pairs.Add(model);
        pairs.Add(vertex);
    }
    return pairs;
}

/// The transitions that the records of the open step hold, and the model of each record.
void ReadRecords(const EditingTool& tool, std::vector<Transition>& log, std::vector<int>& runs)
{
    ZUndoStack& stack = *ZUndoStack::TheOne();
    const int step = stack.TransactionGetCount();
    for (int i = 1; i <= stack.TransactionGetUndoCount(step); ++i) {
        const auto* const record = static_cast<ZWeightingSelectionUndo*>(stack.TransactionGetUndo(step, i));
        const int model = record->model.Get() == tool.owned[0].get() ? 0 : 1;
        runs.push_back(model);
        for (int k = 0; k < record->vertices.GetCount(); ++k)
            log.push_back({model, record->vertices[k], record->oldStates[k], record->newStates[k]});
    }
}

TEST(SelectionProperty, BatchesEndAsThePlainVersion)
{
    const bool held = rc::check("batches end as the plain version", [] {
        EditingTool tool;
        MakeModels(tool);
        PlainSelection plain;
        plain.models = {{std::vector<int>(5), {}, {}, 0}, {std::vector<int>(6), {}, {}, 3}};
        ZUndoStack::TheOne()->TransactionBegin("", false);
        const int picks = *rc::gen::inRange(1, 6);
        for (int pick = 0; pick < picks; ++pick) {
            plain.selectU = tool.selection.selectU = *rc::gen::inRange(0, 3) == 0;
            plain.selectV = tool.selection.selectV = *rc::gen::inRange(0, 3) == 0;
            const int operation = *rc::gen::inRange(0, 3);
            const int code = *rc::gen::inRange(0, 3);
            const auto batch = RandomBatch();
            plain.Pick(operation, batch, code);
            if (operation == 0)
                tool.selection.PickSelect(Pairs(batch), code);
            else if (operation == 1)
                tool.selection.PickSelectOnly(Pairs(batch), code);
            else
                tool.selection.PickActivate(Pairs(batch), code);
            for (size_t model = 0; model < 2; ++model) {
                RC_ASSERT(List(tool.owned[model]->vertexStates) == plain.models[model].states);
                RC_ASSERT(List(tool.owned[model]->selectedVertices) == plain.models[model].selected);
                RC_ASSERT(List(tool.owned[model]->activeVertices) == plain.models[model].active);
            }
            RC_ASSERT(Rows(tool) == plain.rows);
            RC_ASSERT(tool.selection.noSelection == plain.noSelection);
            RC_ASSERT(tool.selection.noActive == plain.noActive);
        }
        std::vector<Transition> log;
        std::vector<int> runs;
        ReadRecords(tool, log, runs);
        RC_ASSERT(log == plain.log);
        RC_ASSERT(runs == plain.runs);
        ZUndoStack::TheOne()->TransactionEnd(false, false);
    });
    EXPECT_TRUE(held);
}

TEST(SelectionProperty, TargetRowsAreThoseOfASearch)
{
    const bool held = rc::check("target rows are those of a search", [] {
        EditingTool tool;
        MakeModels(tool);
        tool.Pick({}, kPickAdd);
        ZUndoStack::TheOne()->TransactionBegin("", false);
        tool.selection.PickSelect(Pairs(RandomBatch()), kPickAdd);
        tool.selection.PickActivate(Pairs(RandomBatch()), kPickToggle);
        ZUndoStack::TheOne()->TransactionEnd(false, false);
        for (const auto& [model, vertex] : RandomBatch()) { // rows that stand twice
            tool.selection.vertexRows.Add(vertex);
            tool.selection.vertexModels.Add(tool.owned[static_cast<size_t>(model)].get());
        }
        tool.selection.SyncPanelSelection();
        std::vector<int> expected;
        for (const auto& item : tool.owned)
            for (const int vertex : item->activeVertices)
                for (int row = 0; row < tool.selection.vertexRows.GetCount(); ++row)
                    if (tool.selection.vertexRows[row] == vertex && tool.selection.vertexModels[row] == item.get())
                        expected.push_back(row);
        RC_ASSERT(List(tool.selection.targetRows) == expected);
        RC_ASSERT(tool.selection.noActive == expected.empty());
    });
    EXPECT_TRUE(held);
}

// Walks.

/// What a user sees: states, rows, weights. Rows as a set, since undo may bring vertices back in another order.
struct Sight
{
    std::vector<std::vector<int>> states;
    std::set<std::pair<int, int>> rows;
    std::vector<std::vector<std::vector<float>>> weights;
    bool noSelection = true, noActive = true;
    friend bool operator==(const Sight&, const Sight&) = default;
};

Sight Look(const EditingTool& tool)
{
    Sight sight;
    for (const auto& item : tool.owned) {
        sight.states.push_back(List(item->vertexStates));
        sight.weights.emplace_back();
        for (const auto& row : TinyCharacter::Weights(item->model))
            sight.weights.back().emplace_back(row.begin(), row.end());
    }
    const auto rows = Rows(tool);
    sight.rows = {rows.begin(), rows.end()};
    sight.noSelection = tool.selection.vertexRows.IsEmpty();
    sight.noActive = tool.selection.targetRows.IsEmpty();
    return sight;
}

void Step(EditingTool& tool)
{
    switch (*rc::gen::inRange(0, 6)) {
    case 0:
    case 1: {
        std::vector<int> batch;
        for (const auto& [model, vertex] : RandomBatch())
            batch.insert(batch.end(), {model, vertex});
        tool.Pick(batch, *rc::gen::inRange(0, 3), *rc::gen::inRange(0, 3) == 0);
        break;
    }
    case 2: {
        std::vector<int> selected;
        for (int row = 0; row < tool.selection.vertexRows.GetCount(); ++row)
            if (*rc::gen::inRange(0, 2) == 0)
                selected.push_back(row);
        tool.selection.RowSelectionChanged(selected);
        break;
    }
    case 3:
        tool.selection.ClearAllVertexLists();
        tool.RefreshPanelLists();
        break;
    case 4:
        tool.selection.DeactivateAll();
        tool.RefreshPanelLists();
        break;
    default:
        tool.change.ApplyWeightChange(true, true, *rc::gen::inRange(0, 101), *rc::gen::inRange(0, 2));
    }
}

/// Each vertex on one of the two bones.
void FillWeights(EditingTool& tool)
{
    for (const auto& item : tool.owned) {
        for (int vertex = 0; vertex < item->vertexStates.GetCount(); ++vertex)
            TinyCharacter::Weight(item->model, vertex % 2, vertex, 1.0);
        item->Refresh();
    }
}

/// Making a change of the first selected vertex again is another change, taking it back is not.
TEST(UndoWalkProperty, EveryStateComesBackInBothWeightingModes)
{
    const bool held = rc::check("undo returns to every state", [] {
        EditingTool tool;
        MakeModels(tool);
        FillWeights(tool);
        ZUndoStack& stack = *ZUndoStack::TheOne();
        std::vector<Sight> states{Look(tool)};
        for (int move = *rc::gen::inRange(1, 15); move > 0; --move) {
            tool.weightingMode = *rc::gen::inRange(0, 2);
            const int before = stack.GetUndoCount();
            Step(tool);
            if (stack.GetUndoCount() > before)
                states.push_back(Look(tool));
        }
        for (size_t state = states.size() - 1; state > 0; --state) {
            RC_ASSERT(stack.Undo());
            RC_ASSERT(Look(tool) == states[state - 1]);
        }
        RC_ASSERT(!stack.Undo());
    });
    EXPECT_TRUE(held);
}

TEST(UndoWalkProperty, EveryStateComesBack)
{
    const bool held = rc::check("undo and redo return to every state", [] {
        EditingTool tool;
        MakeModels(tool);
        tool.weightingMode = kAffectAllSelected;
        FillWeights(tool);
        ZUndoStack& stack = *ZUndoStack::TheOne();
        std::vector<Sight> states{Look(tool)};
        size_t at = 0;
        const int moves = *rc::gen::inRange(1, 20);
        for (int move = 0; move < moves; ++move) {
            const int kind = *rc::gen::inRange(0, 4);
            if (kind < 2) {
                const int before = stack.GetUndoCount();
                Step(tool);
                if (stack.GetUndoCount() == before) {
                    RC_ASSERT(Look(tool) == states[at]);
                    continue;
                }
                states.resize(++at);
                states.push_back(Look(tool));
            } else if (kind == 2) {
                RC_ASSERT(stack.Undo() == (at > 0));
                at -= at > 0 ? 1 : 0;
                RC_ASSERT(Look(tool) == states[at]);
            } else {
                RC_ASSERT(stack.Redo() == (at + 1 < states.size()));
                at += at + 1 < states.size() ? 1 : 0;
                RC_ASSERT(Look(tool) == states[at]);
            }
        }
    });
    EXPECT_TRUE(held);
}

} // namespace
