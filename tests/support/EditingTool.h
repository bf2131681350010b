// SPDX-License-Identifier: MIT
// The least of a tool and a panel that weight editing needs: real model data, real selection, real undo stack.
#pragma once

#include "editing/ZEditingOwner.h"
#include "editing/ZWeightChange.h"
#include "editing/ZWeightSelection.h"
#include "editing/ZWeightStrategies.h"
#include "editing/ZWeightingUndo.h"
#include "support/TinyCharacter.h"
#include "weights/ZWeightUIModelData.h"
#include "zbaselib/ZReport.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// What the panel would show and set are plain members; every row of the spread is a bone, in bone order.
class EditingTool final : public IEditingOwner
{
public:
    EditingTool()
    {
        ZUndoStack::TheOne()->Clear();
        ZReport_SetMisuseFatal(true);
        ZWeightingUndo_ToolOpened(this);
    }
    ~EditingTool()
    {
        ZWeightingUndo_ToolClosed(this);
        ZUndoStack::TheOne()->Clear();
        ZReport_SetMisuseFatal(false);
    }

    ZWeightUIModelData& Admit(ZModel* model, bool checked = true)
    {
        owned.push_back(std::make_unique<ZWeightUIModelData>(model, this, false));
        models.Add(owned.back().get());
        owned.back()->SetModelSelected(checked, nullptr);
        return *owned.back();
    }
    /// The bone list anew from the checked models, then everything that follows it.
    void RebuildBoneList()
    {
        boneList.RemoveAll();
        positions.clear();
        for (int i = 0; i < models.GetCount(); ++i) {
            ISkinLinks* const links = models[i]->modelSelected != 0 ? models[i]->SkinLinks() : nullptr;
            for (int link = 0; links != nullptr && link < links->LinkCount(); ++link)
                if (positions.emplace(links->LinkModel(link), boneList.GetCount()).second)
                    boneList.Add(links->LinkModel(link));
        }
        selection.SyncPanelSelection();
        for (int i = 0; i < models.GetCount(); ++i) {
            models[i]->Refresh();
            models[i]->ResetSkinHint();
        }
        spreadRows.RemoveAll();
        colours.RemoveAll();
        for (int bone = 0; bone < boneList.GetCount(); ++bone) {
            spreadRows.Add(bone);
            for (const int step : {1, 3, 5})
                colours.Add(static_cast<float>((bone * step) % 8) / 8.0F);
        }
        locks.SetCount(boneList.GetCount());
        for (int i = 0; i < models.GetCount(); ++i)
            models[i]->ComputeColors(colours, colourMode);
    }
    /// The model goes, as the user drags it out.
    void Remove(ZWeightUIModelData& data)
    {
        selection.RemoveModel(&data);
        models.Remove(&data);
        std::erase_if(owned, [&](const auto& item) { return item.get() == &data; });
    }
    /// One gesture of the viewer: a pick inside a transaction of its own.
    void Pick(const std::vector<int>& batch, int code, bool selectOnly = false)
    {
        ZArrayTemplate<int> pairs;
        for (const int number : batch)
            pairs.Add(number);
        ZUndoStack::TheOne()->TransactionBegin("", false);
        if (selectOnly)
            selection.PickSelectOnly(pairs, code);
        else
            selection.PickSelect(pairs, code);
        ZUndoStack::TheOne()->TransactionEnd(false, false);
        RefreshPanelLists();
        TakeSpreadSnapshot();
    }

    // IEditingOwner.
    const ZArrayTemplate<ZModel*>& BoneList() const override { return boneList; }
    int BonePosition(const ZModel* bone) const override
    {
        const auto found = positions.find(bone);
        return found == positions.end() ? -1 : found->second;
    }
    IWeightDeform* MakeStrategy(int deformMode) override { return ZWeightStrategy_Make(deformMode); }
    void WeightViewChanged() override {}
    ZWeightUIModelDataList& ModelDataList() override { return models; }
    ZWeightSelection& Selection() override { return selection; }
    int CurrentVertexRow() const override
    {
        int first = -1;
        for (const int row : selection.targetRows)
            first = first < 0 || row < first ? row : first;
        return first;
    }
    const ZArrayTemplate<int, 16>& SpreadRows() const override { return spreadRows; }
    const ZArrayTemplate<int, 16>& LockFlags() const override { return locks; }
    const ZBoneColourTable& BoneColours() const override { return colours; }
    int WeightingMode() const override { return weightingMode; }
    int ColourMode() const override { return colourMode; }
    bool SetModelSelected(ZWeightUIModelData* item, bool selected, IModelSelectionRecorder* undo) override
    {
        return item->SetModelSelected(selected, undo);
    }
    void RefreshModelList(bool, bool) override
    {
        calls.push_back("RefreshModelList");
        RebuildBoneList();
    }
    void RebuildVertexRows() override
    {
        calls.push_back("RebuildVertexRows");
        selection.RebuildRows();
        change.TakeSpreadSnapshot();
    }
    /// As the panel's vertex list does when it is filled: the target rows are the rows of active vertices.
    void RefreshPanelLists() override
    {
        calls.push_back("RefreshPanelLists");
        selection.targetRows.RemoveAll();
        selection.noActive = true;
        for (int row = 0; row < selection.vertexRows.GetCount(); ++row) {
            if (selection.vertexModels[row]->GetVertexState(selection.vertexRows[row]) != 2)
                continue;
            selection.targetRows.Add(row);
            selection.noActive = false;
        }
    }
    void RecolourActiveVertices() override
    {
        calls.push_back("RecolourActiveVertices");
        for (int i = 0; i < models.GetCount(); ++i)
            models[i]->ComputeActiveColors(colours, colourMode, weightingMode);
    }
    void RefreshSpread(bool valuesOnly) override
    {
        calls.push_back(valuesOnly ? "RefreshSpread(1)" : "RefreshSpread(0)");
    }
    void TakeSpreadSnapshot() override { change.TakeSpreadSnapshot(); }

    TinyCharacter character;
    std::vector<std::unique_ptr<ZWeightUIModelData>> owned;
    ZWeightUIModelDataList models;
    ZArrayTemplate<ZModel*> boneList;
    std::unordered_map<const ZModel*, int> positions;
    ZArrayTemplate<int, 16> spreadRows;
    ZArrayTemplate<int, 16> locks;
    ZBoneColourTable colours;
    int weightingMode = 0;
    int colourMode = 0;
    ZWeightSelection selection{*this};
    ZWeightChange change{*this};
    std::vector<std::string> calls;
};
