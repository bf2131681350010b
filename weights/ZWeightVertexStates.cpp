// SPDX-License-Identifier: MIT
// The states of a model's vertices, and the two lists that follow them.
#include "weights/ModelDataPrivate.h"

#include <cmath>

namespace {

constexpr int kNotSelected = 0;
constexpr int kSelected = 1;
constexpr int kActive = 2;

constexpr int kSelectedUnit = 1;
constexpr int kSelectedMask = 15;
constexpr int kActiveUnit = 16;
constexpr int kActiveMask = 240;

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

/// Takes as many first entries of each vertex out of the list as wait for it; the others keep their order.
void DropPending(ZArrayTemplate<int, 16>& list, ZArrayTemplate<std::uint8_t>& pending, int mask, int unit)
{
    int kept = 0;
    for (int i = 0; i < list.GetCount(); ++i) {
        const int vertex = list[i];
        std::uint8_t& waiting = pending[vertex];
        if ((waiting & mask) != 0)
            waiting = static_cast<std::uint8_t>(waiting - unit);
        else
            list[kept++] = vertex;
    }
    list.SetCount(kept);
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
    selectedVertices.Add(vertex);
    noSelectedVertices = 0;
}

void ZWeightUIModelData::ActivateVertex(int vertex, IVertexTransitionRecorder* undo)
{
    if (!HasVertex(vertex) || vertexStates[vertex] != kSelected)
        return;
    Record(undo, vertex, kSelected, kActive);
    vertexStates[vertex] = kActive;
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

// Removals: one by one, or collected. A vertex that left a list in the middle of a batch and came back stands in the list
// twice until the end, and the first of the two is the one that goes; so the end is the same as doing it one by one.

void ZWeightUIModelData::BeginSelectionBatch() { ++m_private->batchDepth; }

void ZWeightUIModelData::EndSelectionBatch()
{
    if (m_private->batchDepth == 0 || --m_private->batchDepth > 0)
        return;
    FlushSelectionBatch();
    m_private->pendingRemovals.Release();
}

void ZWeightUIModelData::FlushSelectionBatch()
{
    Private& state = *m_private;
    if (state.pendingSelected > 0)
        DropPending(selectedVertices, state.pendingRemovals, kSelectedMask, kSelectedUnit);
    if (state.pendingActive > 0)
        DropPending(activeVertices, state.pendingRemovals, kActiveMask, kActiveUnit);
    state.pendingSelected = 0;
    state.pendingActive = 0;
}

void ZWeightUIModelData::RemoveFromSelected(int vertex)
{
    Private& state = *m_private;
    if (state.batchDepth == 0) {
        RemoveFirst(selectedVertices, vertex);
    } else {
        if (state.pendingRemovals.IsEmpty())
            state.pendingRemovals.SetCount(vertexStates.GetCount());
        if ((state.pendingRemovals[vertex] & kSelectedMask) == kSelectedMask)
            FlushSelectionBatch();
        state.pendingRemovals[vertex] = static_cast<std::uint8_t>(state.pendingRemovals[vertex] + kSelectedUnit);
        ++state.pendingSelected;
    }
    if (selectedVertices.GetCount() == state.pendingSelected)
        noSelectedVertices = 1;
}

void ZWeightUIModelData::RemoveFromActive(int vertex)
{
    Private& state = *m_private;
    if (state.batchDepth == 0) {
        RemoveFirst(activeVertices, vertex);
    } else {
        if (state.pendingRemovals.IsEmpty())
            state.pendingRemovals.SetCount(vertexStates.GetCount());
        if ((state.pendingRemovals[vertex] & kActiveMask) == kActiveMask)
            FlushSelectionBatch();
        state.pendingRemovals[vertex] = static_cast<std::uint8_t>(state.pendingRemovals[vertex] + kActiveUnit);
        ++state.pendingActive;
    }
    if (activeVertices.GetCount() == state.pendingActive)
        noActiveVertices = 1;
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
