// SPDX-License-Identifier: MIT
// What the weighting data of a model keeps beside its documented fields.
#pragma once

#include "weights/VertexInfluencesSlab.h"
#include "weights/ZWeightUIModelData.h"

#include <cstdint>

struct ZWeightUIModelData::Private
{
    /// Memory of the records that vertexInfluences points at.
    VertexInfluencesSlab slab;

    /// By bone position: the first position of the bone in boneLinkPositions, -1 for none.
    ZArrayTemplate<int> linkOfBone;
    /// How many entries boneLinkPositions had when linkOfBone was built; -1: never.
    int indexedLinks = -1;

    /// Removals that wait for the end of a batch. For each vertex, how often its first entry has still to leave a list:
    /// the lower four bits count for selectedVertices, the upper four for activeVertices. Empty outside a batch and until
    /// its first removal.
    ZArrayTemplate<std::uint8_t> pendingRemovals;
    int pendingSelected = 0;
    int pendingActive = 0;
    int batchDepth = 0;
};
