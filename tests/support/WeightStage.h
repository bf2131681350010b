// SPDX-License-Identifier: MIT
// A character with weighting data, and the least of a tool that the data needs.
#pragma once

#include "support/TinyCharacter.h"
#include "weights/ZWeightOwner.h"
#include "weights/ZWeightUIModelData.h"
#include "zbaselib/ZReport.h"
#include "ztoolkit/ZToolKit.h"

#include <memory>
#include <vector>

/// A strategy that colours nothing; which mode it was made for is what tests ask.
struct IdleStrategy final : IWeightDeform
{
    explicit IdleStrategy(int mode) : deformMode(mode) {}
    void ComputeColors(const ZBoneColourTable&, int, ZWeightUIModelData&) override {}
    void BoneColorChanged(const ZBoneColourTable&, int, int, float, float, float, ZWeightUIModelData&) override {}
    void ComputeActiveColors(const ZBoneColourTable&, int, int, ZWeightUIModelData&) override {}
    int deformMode;
};

/// The bone list holds every bone of the character when a model is loaded.
class WeightStage final : public IWeightOwner
{
public:
    WeightStage()
    {
        ZToolKit_ClearMessages();
        ZReport_SetMisuseFatal(true);
    }
    ~WeightStage()
    {
        ZReport_SetMisuseFatal(false);
        ZToolKit_SetMessageAnswerer({});
        ZToolKit_ClearMessages();
    }

    const ZArrayTemplate<ZModel*>& BoneList() const override { return boneList; }
    int BonePosition(const ZModel* bone) const override { return boneList.Find(const_cast<ZModel*>(bone)); }
    IWeightDeform* MakeStrategy(int deformMode) override { return new IdleStrategy(deformMode); }
    void WeightViewChanged() override { ++viewChanges; }

    void ListAllBones()
    {
        boneList.RemoveAll();
        for (ZModel* const bone : character.bones)
            boneList.Add(bone);
    }
    std::unique_ptr<ZWeightUIModelData> Admit(ZModel* model, bool showMessage = false)
    {
        return std::make_unique<ZWeightUIModelData>(model, this, showMessage);
    }
    /// Admitted, checked and read.
    std::unique_ptr<ZWeightUIModelData> Load(ZModel* model)
    {
        ListAllBones();
        auto data = Admit(model);
        data->SetModelSelected(true, nullptr);
        data->Refresh();
        return data;
    }

    TinyCharacter character;
    ZArrayTemplate<ZModel*> boneList;
    int viewChanges = 0;
};

/// Remembers transitions as (vertex, old state, new state).
struct TransitionLog final : IVertexTransitionRecorder
{
    struct Transition
    {
        int vertex, oldState, newState;
        friend bool operator==(const Transition&, const Transition&) = default;
    };
    void RecordTransition(int vertex, int oldState, int newState) override
    {
        transitions.push_back({vertex, oldState, newState});
    }
    std::vector<Transition> transitions;
};
