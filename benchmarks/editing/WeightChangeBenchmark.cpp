// SPDX-License-Identifier: MIT
// A weight change on all vertices, its undo and its redo, the skin and the colours included.
#include "editing/LoadedCharacter.h"
#include "support/PlainCopy.h"

namespace {

/// Everything active; the current vertex is the first one.
void ActivateAll(LoadedCharacter& loaded)
{
    for (int vertex = 0; vertex < loaded.data.vertexStates.GetCount(); ++vertex)
        loaded.data.SetVertexState(vertex, 2);
    loaded.tool.selection.RebuildRows();
    loaded.tool.weightingMode = kAffectAllSelected;
}

void WeightChangeOnAll(benchmark::State& state)
{
    double change = 0, drag = 0, undo = 0, redo = 0, copies = 0, step = 0;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        LoadedCharacter loaded(SkinOf(state));
        ActivateAll(loaded);
        const size_t bytesBefore = loaded.RecordBytes();
        Bench_HavePagesAtHand(4 * SkinOf(state).ByteCount());
        const double first = Bench_Time([&] { loaded.tool.change.ApplyWeightChange(true, true, 40, 0); });
        state.SetIterationTime(first);
        // Now the records hold what they had at weight 0, and the new spread: the bytes touched.
        const double copy = Bench_CopySeconds(loaded.RecordBytes());
        change += first / copy;
        copies += Bench_CopySeconds(bytesBefore) / copy;
        auto* const record = static_cast<ZWeightingWeightChangeUndo*>(ZUndoStack::TheOne()->TransactionGetUndo(1, 1));
        step += static_cast<double>(record->GetByteCount()) / static_cast<double>(SkinOf(state).ByteCount());
        undo += Bench_Time([] { ZUndoStack::TheOne()->Undo(); }) / copy;
        redo += Bench_Time([] { ZUndoStack::TheOne()->Redo(); }) / copy;
        loaded.tool.change.ApplyWeightChange(true, false, 30, 0);
        drag += Bench_Time([&] { loaded.tool.change.ApplyWeightChange(false, false, 35, 0); }) / copy;
        loaded.tool.change.CloseOpenChange();
    }
    const auto rounds = static_cast<double>(state.iterations());
    state.counters["change"] = change / rounds;
    state.counters["drag_event"] = drag / rounds;
    state.counters["undo"] = undo / rounds;
    state.counters["redo"] = redo / rounds;
    state.counters["step_bytes"] = step / rounds;
    state.counters["before_to_after"] = copies / rounds;
}

BENCHMARK(WeightChangeOnAll)->Apply(Sizes)->Iterations(2);

} // namespace
