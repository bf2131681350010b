// SPDX-License-Identifier: MIT
// What weight editing and its undo records need of the tool and its panel.
#pragma once

#include "weights/IWeightDeform.h"
#include "weights/ZWeightOwner.h"
#include "weights/ZWeightUIModelDataList.h"

class ZWeightSelection;

/// Implemented by the tool, which passes most of it on to its panel.
class IEditingOwner : public IWeightOwner
{
public:
    virtual ZWeightUIModelDataList& ModelDataList() = 0;
    /// The cross-model vertex lists that the panel shows.
    virtual ZWeightSelection& Selection() = 0;

    // What the panel shows and the user set.
    /// The current row of the vertex list (its first selected row), -1 when there is none.
    virtual int CurrentVertexRow() const = 0;
    /// Bone position of each row of the spread.
    virtual const ZArrayTemplate<int, 16>& SpreadRows() const = 0;
    /// 1 = locked, 0 = free, by bone position.
    virtual const ZArrayTemplate<int, 16>& LockFlags() const = 0;
    virtual const ZBoneColourTable& BoneColours() const = 0;
    virtual int WeightingMode() const = 0;
    virtual int ColourMode() const = 0;

    // What follows a change.
    virtual bool SetModelSelected(ZWeightUIModelData* item, bool selected, IModelSelectionRecorder* undo) = 0;
    virtual void RefreshModelList(bool force, bool onlyFlags) = 0;
    /// Rebuilds the vertex rows from the selected vertices of every checked model, then refreshes the bone list, the
    /// vertex list and the spread and takes the snapshot anew: after undo and redo of a selection.
    virtual void RebuildVertexRows() = 0;
    /// Bone list, vertex list and spread, in this order.
    virtual void RefreshPanelLists() = 0;
    virtual void RecolourActiveVertices() = 0;
    virtual void RefreshSpread(bool valuesOnly) = 0;
    /// TakeSpreadSnapshot of the panel's weight change.
    virtual void TakeSpreadSnapshot() = 0;

protected:
    ~IEditingOwner() = default;
};
