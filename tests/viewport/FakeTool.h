// SPDX-License-Identifier: MIT
// A tool for tests of the manipulator: real model data and a real selection, with the panel's answers as plain members.
#pragma once

#include "editing/ZWeightSelection.h"
#include "editing/ZWeightStrategies.h"
#include "editing/ZWeightingUndo.h"
#include "object/ZUndoStack.h"
#include "viewport/ZViewportOwner.h"
#include "weights/ZWeightUIModelData.h"
#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZScene.h"

#include <memory>
#include <vector>

class FakeTool final : public IViewportOwner
{
public:
    FakeTool() : selection(*this) { ZWeightingUndo_ToolOpened(this); }
    ~FakeTool()
    {
        ZWeightingUndo_ToolClosed(this);
        ZUndoStack::TheOne()->Clear();
    }

    /// Admits a model and checks it.
    ZWeightUIModelData& Admit(ZModel* model, bool checked = true)
    {
        owned.push_back(std::make_unique<ZWeightUIModelData>(model, this, false));
        models.Add(owned.back().get());
        owned.back()->SetModelSelected(checked, nullptr);
        owned.back()->Refresh();
        return *owned.back();
    }
    void AddBone(ZModel* bone)
    {
        bones.Add(bone);
        for (const float component : {0.5F, 0.25F, 0.125F})
            colours.Add(component);
    }

    const ZArrayTemplate<ZModel*>& BoneList() const override { return bones; }
    int BonePosition(const ZModel* bone) const override { return bones.Find(const_cast<ZModel*>(bone)); }
    IWeightDeform* MakeStrategy(int deformMode) override { return ZWeightStrategy_Make(deformMode); }
    void WeightViewChanged() override {}
    ZWeightUIModelDataList& ModelDataList() override { return models; }
    ZWeightSelection& Selection() override { return selection; }
    int CurrentVertexRow() const override { return selection.targetRows.IsEmpty() ? -1 : selection.targetRows[0]; }
    const ZArrayTemplate<int, 16>& SpreadRows() const override { return none; }
    const ZArrayTemplate<int, 16>& LockFlags() const override { return none; }
    const ZBoneColourTable& BoneColours() const override { return colours; }
    int WeightingMode() const override { return 0; }
    int ColourMode() const override { return 0; }
    bool SetModelSelected(ZWeightUIModelData* item, bool selected, IModelSelectionRecorder* undo) override
    {
        return item->SetModelSelected(selected, undo);
    }
    void RefreshModelList(bool, bool) override {}
    void RebuildVertexRows() override
    {
        selection.RebuildRows();
        ++rebuilds;
    }
    void RefreshPanelLists() override { ++refreshes; }
    void RecolourActiveVertices() override {}
    void RefreshSpread(bool) override {}
    void TakeSpreadSnapshot() override { ++snapshots; }
    bool IsModelSelectionEnabled() const override { return modelSelectionEnabled; }
    bool IsForegroundOnly() const override { return foregroundOnly; }
    const ZArrayTemplate<int, 16>& SelectedBones() const override { return selectedBones; }

    ZWeightSelection selection;
    ZWeightUIModelDataList models;
    std::vector<std::unique_ptr<ZWeightUIModelData>> owned;
    ZArrayTemplate<ZModel*> bones;
    ZArrayTemplate<int, 16> none;
    ZArrayTemplate<int, 16> selectedBones;
    ZBoneColourTable colours;
    bool modelSelectionEnabled = false;
    bool foregroundOnly = false;
    int refreshes = 0;
    int rebuilds = 0;
    int snapshots = 0;
};

/// A mesh of single points at `positions` (three floats each), all pulled by one bone.
inline ZModelPolymesh* AddPointMesh(ZScene& scene, const char* name, const std::vector<float>& positions, ZModel* bone)
{
    auto mesh = std::make_unique<ZModelPolymesh>(name);
    const int count = static_cast<int>(positions.size() / 3);
    std::vector<int> polygon;
    for (int i = 0; i < count; ++i)
        polygon.push_back(i);
    mesh->SetGeometry(positions.data(), count, polygon, {count});
    ZSkin* const skin = mesh->MakeSkin(kDeformNormalise);
    skin->AppendLink(bone, ZgeMatrix());
    skin->BeginLink(0);
    for (int i = 0; i < count; ++i)
        skin->AddEntry(i, 1.0);
    skin->EndLink();
    return static_cast<ZModelPolymesh*>(scene.AddModel(std::move(mesh)));
}

inline ZModel* AddBone(ZScene& scene, const char* name, const ZgeMatrix& local, ZModel* parent = nullptr)
{
    auto bone = std::make_unique<ZModel>(name, ZModelKind::Bone);
    bone->SetBone(true);
    bone->SetFileTransform(local);
    ZModel* const added = scene.AddModel(std::move(bone));
    if (parent != nullptr)
        added->SetParent(parent);
    return added;
}
