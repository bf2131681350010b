// SPDX-License-Identifier: MIT
// What the weighting data of a model keeps beside its documented fields.
#pragma once

#include "weights/VertexInfluencesSlab.h"
#include "weights/ZWeightUIModelData.h"

struct ZWeightUIModelData::Private
{
    /// Memory of the records that vertexInfluences points at.
    VertexInfluencesSlab slab;

    /// By bone position: the first position of the bone in boneLinkPositions, -1 for none.
    ZArrayTemplate<int> linkOfBone;
    /// How many entries boneLinkPositions had when linkOfBone was built; -1: never.
    int indexedLinks = -1;

    /// The skin may hold entries that no record names: a weight that was taken back by an undo, or one that is none.
    /// Then a new influence looks for its entry before it makes one.
    bool skinHoldsMore = false;
    /// Records may name links that have no entry for their vertex: making a change again gives one record to several
    /// vertices, and writing a record adds no entries. Then a weight other than 0 makes the entry that it lacks.
    bool recordsHoldMore = false;

    // A batch of selection changes: vertices that left a list still stand in it.
    int liveSelected = 0; ///< entries of selectedVertices that count
    int liveActive = 0;   ///< entries of activeVertices that count
    /// A vertex may have left a list and come back: then it stands there twice.
    bool selectedCameBack = false;
    bool activeCameBack = false;
    int batchDepth = 0;
};
