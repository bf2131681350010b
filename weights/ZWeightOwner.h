// SPDX-License-Identifier: MIT
// What the weighting data of a model needs of the tool that owns it, and of the records that remember its changes.
#pragma once

#include "zbaselib/ZArray.h"

class IWeightDeform;
class ZModel;
class ZWeightUIModelData;

/// The tool, as the weighting data sees it.
class IWeightOwner
{
public:
    /// Every bone of the checked models, without repeats, in order of models and links.
    virtual const ZArrayTemplate<ZModel*>& BoneList() const = 0;
    /// The position of a bone in the bone list, or -1; constant time.
    virtual int BonePosition(const ZModel* bone) const = 0;
    /// A new strategy for a deformation mode (0 = normalise, 2 = total 100, others normalise); the caller owns it.
    virtual IWeightDeform* MakeStrategy(int deformMode) = 0;
    /// What the viewer shows of the weights is out of date.
    virtual void WeightViewChanged() = 0;

protected:
    ~IWeightOwner() = default;
};

/// Hears of every change of a vertex's state: 0 not selected, 1 selected, 2 active.
class IVertexTransitionRecorder
{
public:
    virtual void RecordTransition(int vertex, int oldState, int newState) = 0;

protected:
    ~IVertexTransitionRecorder() = default;
};

/// Hears of every change of a model's check mark.
class IModelSelectionRecorder
{
public:
    virtual void RecordModelSelection(ZWeightUIModelData* model, bool oldFlag, bool newFlag) = 0;

protected:
    ~IModelSelectionRecorder() = default;
};
