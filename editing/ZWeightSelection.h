// SPDX-License-Identifier: MIT
// The cross-model vertex selection that the panel shows, and the operations that change many vertices at once.
#pragma once

#include "editing/ZEditingOwner.h"
#include "zbaselib/ZArray.h"

#include <vector>

inline constexpr int kPickAdd = 0;
inline constexpr int kPickRemove = 1;
inline constexpr int kPickToggle = 2;

/// A vertex number is meaningful only with its model: two parallel arrays. Target rows are the rows of the vertex list
/// whose vertices are active; they are what weight edits apply to. A batch is pairs (model index, vertex number), the
/// model index being the position in the tool's model data list.
class ZWeightSelection
{
public:
    explicit ZWeightSelection(IEditingOwner& owner) : m_owner(owner) {}

    // Tables and flags.
    ZArrayTemplate<int> vertexRows;
    ZArrayTemplate<ZWeightUIModelData*> vertexModels;
    ZArrayTemplate<int, 16> targetRows;
    bool noSelection = true;
    bool noActive = true;
    bool selectU = false;
    bool selectV = false;

    // Batches; each model run gets one record, added to the open transaction at once. A pair that names no model or no
    // vertex is passed over. Nothing is refreshed: whoever ends the gesture does that (only PickSelectOnly's toggle
    // under Select U or V rebuilds the rows and asks the owner to refresh its lists).
    void PickSelect(const ZArrayTemplate<int>& batch, int code);
    void PickSelectOnly(const ZArrayTemplate<int>& batch, int code);
    void PickActivate(const ZArrayTemplate<int>& batch, int code);

    /// Transaction "Tool Weighting Clear All Vertex Lists". The caller refreshes.
    void ClearAllVertexLists();
    /// Under the transaction name "": every active vertex of every checked model falls back to selected. The caller
    /// refreshes.
    void DeactivateAll();
    /// The user selected rows of the vertex list: `selected` is ascending. Transaction name "". Ends with the owner's
    /// RefreshPanelLists and TakeSpreadSnapshot.
    void RowSelectionChanged(const std::vector<int>& selected);

    void SyncPanelSelection();
    /// Rows anew from the selected vertices of every checked model, in model order and selection order; target rows and
    /// flags follow.
    void RebuildRows();
    /// Drops what refers to a model that leaves; target rows follow their vertices.
    void RemoveModel(ZWeightUIModelData* item);
    /// Empties everything.
    void Clear();

private:
    bool AppendActiveRowsInOrder();
    void AppendActiveRows();
    void DeselectUnchecked();

    IEditingOwner& m_owner;
};
