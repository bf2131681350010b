// SPDX-License-Identifier: MIT
// The states of a model's vertices, and the two lists that follow them.
#include "weights/ModelDataPrivate.h"
#include "zbaselib/ZMemory.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr int kNotSelected = 0;
constexpr int kSelected = 1;
constexpr int kActive = 2;

void Record(IVertexTransitionRecorder* undo, int vertex, int oldState, int newState)
{
    if (undo != nullptr)
        undo->RecordTransition(vertex, oldState, newState);
}

void RemoveFirst(ZArrayTemplate<int, 16>& list, int vertex)
{
    const int place = list.Find(vertex);
    if (place >= 0)
        list.RemoveAt(place);
}

/// Drops the entries of vertices that are not at least in state `least`, in one pass; the others keep their order.
void DropLeft(ZArrayTemplate<int, 16>& list, const ZArrayTemplate<int, 16>& states, int least)
{
    int kept = 0;
    for (int i = 0; i < list.GetCount(); ++i) {
        ZMemory_FetchAhead(states, list.Span(), i);
        const int vertex = list[i];
        list[kept] = vertex;
        kept += states[vertex] >= least ? 1 : 0;
    }
    list.SetCount(kept);
}

/// The same for a list in which vertices that came back stand twice: only their last entry counts.
void DropLeftAndEarlier(ZArrayTemplate<int, 16>& list, const ZArrayTemplate<int, 16>& states, int least)
{
    ZArrayTemplate<std::uint8_t> seen;
    seen.SetCountUninitialised(states.GetCount());
    ZMemory_ExpectAnyOrder(seen.GetData(), seen.size());
    seen.Fill(0);
    int kept = list.GetCount();
    for (int i = list.GetCount() - 1; i >= 0; --i) {
        ZMemory_FetchAhead(states, list.Span(), i, -1);
        ZMemory_FetchAhead(seen, list.Span(), i, -1);
        const int vertex = list[i];
        std::uint8_t& isSeen = seen[vertex];
        if (states[vertex] < least || isSeen != 0)
            continue;
        isSeen = 1;
        list[--kept] = vertex;
    }
    std::copy(list.begin() + kept, list.end(), list.begin());
    list.SetCount(list.GetCount() - kept);
}

} // namespace

int ZWeightUIModelData::GetVertexState(int vertex) const
{
    return HasVertex(vertex) ? vertexStates[vertex] : kNotSelected;
}

void ZWeightUIModelData::SelectVertex(int vertex, IVertexTransitionRecorder* undo)
{
    if (!HasVertex(vertex) || vertexStates[vertex] != kNotSelected)
        return;
    Record(undo, vertex, kNotSelected, kSelected);
    vertexStates[vertex] = kSelected;
    Private& state = *m_private;
    state.selectedCameBack = state.selectedCameBack || state.liveSelected < selectedVertices.GetCount();
    ++state.liveSelected;
    selectedVertices.Add(vertex);
    noSelectedVertices = 0;
}

void ZWeightUIModelData::ActivateVertex(int vertex, IVertexTransitionRecorder* undo)
{
    if (!HasVertex(vertex) || vertexStates[vertex] != kSelected)
        return;
    Record(undo, vertex, kSelected, kActive);
    vertexStates[vertex] = kActive;
    Private& state = *m_private;
    state.activeCameBack = state.activeCameBack || state.liveActive < activeVertices.GetCount();
    ++state.liveActive;
    activeVertices.Add(vertex);
    noActiveVertices = 0;
}

void ZWeightUIModelData::DeactivateVertex(int vertex, IVertexTransitionRecorder* undo)
{
    if (!HasVertex(vertex) || vertexStates[vertex] != kActive)
        return;
    Record(undo, vertex, kActive, kSelected);
    vertexStates[vertex] = kSelected;
    RemoveFromActive(vertex);
}

void ZWeightUIModelData::DeselectVertex(int vertex, IVertexTransitionRecorder* undo)
{
    if (!HasVertex(vertex) || vertexStates[vertex] == kNotSelected)
        return;
    Record(undo, vertex, vertexStates[vertex], kNotSelected);
    DeactivateVertex(vertex, nullptr);
    vertexStates[vertex] = kNotSelected;
    RemoveFromSelected(vertex);
}

void ZWeightUIModelData::SetVertexState(int vertex, int target)
{
    const int state = GetVertexState(vertex);
    if (!HasVertex(vertex) || state == target)
        return;
    if (target == kNotSelected) {
        DeselectVertex(vertex, nullptr);
    } else if (target == kSelected) {
        if (state != kNotSelected)
            DeactivateVertex(vertex, nullptr);
        else
            SelectVertex(vertex, nullptr);
    } else if (target == kActive) {
        if (state == kNotSelected)
            SelectVertex(vertex, nullptr);
        ActivateVertex(vertex, nullptr);
    }
}

// Removals: one by one, or collected. In a batch a vertex that leaves a list stays in it until the end; what counts is
// its state. One that left and came back stands there twice, and its last entry is the one that one by one would have
// left. A list never names a vertex twice outside a batch.

void ZWeightUIModelData::BeginSelectionBatch()
{
    Private& state = *m_private;
    if (state.batchDepth++ > 0)
        return;
    state.liveSelected = selectedVertices.GetCount();
    state.liveActive = activeVertices.GetCount();
    state.selectedCameBack = false;
    state.activeCameBack = false;
}

void ZWeightUIModelData::EndSelectionBatch()
{
    if (m_private->batchDepth == 0 || --m_private->batchDepth > 0)
        return;
    FlushSelectionBatch();
}

void ZWeightUIModelData::FlushSelectionBatch()
{
    Private& state = *m_private;
    // Outside of a batch nobody counts what leaves: then no count is below its list, and nothing happens here.
    if (state.liveSelected == 0)
        selectedVertices.RemoveAll();
    else if (state.liveSelected < selectedVertices.GetCount())
        (state.selectedCameBack ? DropLeftAndEarlier : DropLeft)(selectedVertices, vertexStates, kSelected);
    if (state.liveActive == 0)
        activeVertices.RemoveAll();
    else if (state.liveActive < activeVertices.GetCount())
        (state.activeCameBack ? DropLeftAndEarlier : DropLeft)(activeVertices, vertexStates, kActive);
    state.selectedCameBack = false;
    state.activeCameBack = false;
}

void ZWeightUIModelData::RemoveFromSelected(int vertex)
{
    Private& state = *m_private;
    if (state.batchDepth == 0)
        RemoveFirst(selectedVertices, vertex);
    else
        --state.liveSelected;
    if ((state.batchDepth == 0 ? selectedVertices.GetCount() : state.liveSelected) == 0)
        noSelectedVertices = 1;
}

void ZWeightUIModelData::RemoveFromActive(int vertex)
{
    Private& state = *m_private;
    if (state.batchDepth == 0)
        RemoveFirst(activeVertices, vertex);
    else
        --state.liveActive;
    if ((state.batchDepth == 0 ? activeVertices.GetCount() : state.liveActive) == 0)
        noActiveVertices = 1;
}

void ZWeightUIModelData::ReserveSelection(int more)
{
    // No list holds more than all vertices, whatever the batch repeats.
    const int all = vertexStates.GetCount();
    const auto reserve = [all, more](ZArrayTemplate<int, 16>& list) {
        ZMemory_ReserveMore(list, std::max(0, std::min(more, all - list.GetCount())));
    };
    reserve(selectedVertices);
    reserve(activeVertices);
}

void ZWeightUIModelData::MarkInfluencingBones(int* marks, int boneCount) const
{
    for (const int vertex : activeVertices) {
        const VertexInfluences* const record = RecordOf(vertex);
        if (record == nullptr)
            continue;
        for (int k = 0; k < record->GetCount(); ++k) {
            const int bone = BoneOfLink(record->links[k]);
            // "Not equal" holds for a weight that is no number, too.
            if (record->weights[k] != 0.0F && bone >= 0 && bone < boneCount)
                marks[bone] = 1;
        }
    }
}
