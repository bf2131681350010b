// SPDX-License-Identifier: MIT
// The skinning tool: models and their bones, the panel, the manipulator and the rest-position constraint in one window.
#pragma once

#include "panel/ZCharacterWeightingNormalLayout.h"
#include "panel/ZPanelOwner.h"
#include "viewport/ZViewportOwner.h"
#include "weights/ZWeightUIModelDataList.h"
#include "zdesktop/ZTool.h"
#include "ztoolkit/ZtControls.h"
#include "ztoolkit/ZtListBox.h"

#include <string>
#include <unordered_map>

class ZActionDefinition;
class ZCharacterWeightingConstraint;
class ZCharacterWeightingManipulator;
class ZConfigFile;

/// Life, as a story: the catalogue's factory makes it and hands it to the host; the constructor lays the window out,
/// makes manipulator and constraint, listens to the host and reads the dead weight; ToolActivate shows the manipulator,
/// ToolDeactivate hides it and lets the skeletons go; models are dropped on the model list and dragged out of it; the
/// destructor cuts off what is under way, stops listening, and frees the models' weighting data.
///
/// Owns the weighting data of its models, the panel and the constraint. The manipulator belongs to the host's
/// manipulator set; the tool leaves it there hidden, inactive and without a tool.
class ZToolCharacterWeighting : public ZTool,
                                public IMenuCommandExecutor,
                                public IViewportOwner,
                                public IPanelOwner,
                                private IZtRowSource
{
public:
    ZToolCharacterWeighting();
    ~ZToolCharacterWeighting() override;

    bool ToolActivate() override;
    bool ToolDeactivate() override;
    /// Knows one command: "Clear All Vertex Lists".
    bool ExecuteMenuCommand(const char* command) override;

    // Models.
    /// New weighting data for a model, at the end of the list, unchecked; null when the model is refused. `warn` allows
    /// the message about an additive skin and is cleared once a skin was refused.
    ZWeightUIModelData* AdmitModel(ZModel* model, bool& warn);
    /// Takes a model out of the tool and frees its weighting data. Nothing when there is no such model.
    void RemoveModelAt(int index);
    void RemoveModel(ZWeightUIModelData* item);
    void RefreshModelList(bool force, bool onlyFlags) override;
    bool SetModelSelected(ZWeightUIModelData* item, bool selected, IModelSelectionRecorder* undo) override;

    // Bones.
    const ZArrayTemplate<ZModel*>& BoneList() const override { return m_boneList; }
    int BonePosition(const ZModel* bone) const override;
    void RebuildBoneList() override;
    void AddBoneToCheckedModels(ZModel* bone) override;
    void RemoveIdleSelectedBones() override;

    // Rest position.
    bool EnterRestPosition() override;
    void LeaveRestPosition(bool resetButton) override;

    // What the panel keeps, for those who work on the weights.
    IEditingOwner& Editing() override { return *this; }
    ZWeightUIModelDataList& ModelDataList() override { return m_models; }
    ZWeightSelection& Selection() override { return m_panel.selection; }
    int CurrentVertexRow() const override { return m_panel.CurrentVertexRow(); }
    const ZArrayTemplate<int, 16>& SpreadRows() const override { return m_panel.spreadRows; }
    const ZArrayTemplate<int, 16>& LockFlags() const override { return m_panel.lockFlags; }
    const ZBoneColourTable& BoneColours() const override { return m_panel.boneColours; }
    int WeightingMode() const override { return m_panel.weightingMode; }
    int ColourMode() const override { return m_panel.colourMode; }
    bool IsModelSelectionEnabled() const override { return m_panel.modelSelectionEnabled; }
    bool IsForegroundOnly() const override { return m_panel.foregroundOnly; }
    const ZArrayTemplate<int, 16>& SelectedBones() const override { return m_panel.selectedBones; }
    void ViewerGestureBegins() override { m_panel.CutOffDrag(); }

    // What follows a change.
    IWeightDeform* MakeStrategy(int deformMode) override;
    void WeightViewChanged() override;
    void RebuildVertexRows() override;
    void RefreshPanelLists() override;
    void RecolourActiveVertices() override;
    void RefreshSpread(bool valuesOnly) override { m_panel.RefreshSpread(valuesOnly); }
    void TakeSpreadSnapshot() override { m_panel.weightChange.TakeSpreadSnapshot(); }
    void SetSphereRadius(double radius) override;

    ZCharacterWeightingNormalLayout& Panel() { return m_panel; }
    ZtListBox& ModelListBox() { return m_modelListBox; }
    ZCharacterWeightingManipulator* Manipulator() { return m_manipulator; }
    ZCharacterWeightingConstraint* Constraint() { return m_constraint; }
    /// As a fraction; an influence below it would count as none.
    double DeadWeight() const { return m_deadWeight; }

private:
    // Construction.
    void LayOut();
    void MakeHelpers();
    void RegisterHandlers();
    void UnregisterHandlers();
    void ReadDeadWeight(const ZConfigFile& settings);

    // Handlers of host events.
    void OnPlugNotify(ZObject* sender, ZEvent& event);
    void OnPlugState(ZObject* sender, ZEvent& event);
    void OnSceneEvent(ZObject* sender, ZEvent& event);
    void OnShortCut(ZObject* sender, ZEvent& event);
    void OnModelListEvent(ZObject* sender, ZEvent& event);

    // Events, step by step.
    void ForgetDeletedModel(ZModel* model);
    void ForgetDeletedBone(const ZModel* model);
    void DropModels();
    void DragModelsOut();
    void ChangeChecks();
    void EmptyLists();
    void CutOffGestures();
    void RehandRestPosition();
    bool HandBonesToConstraint();
    void HideManipulator();
    void ReleaseManipulator();

    // The model list.
    std::string RowText(const ZtListBox& list, int row) const override;
    void FillModelRows();
    void ShowModelSelectionBox();

    // The bone list.
    void CollectBones();
    void IndexBones();

    ZtPanel m_modelListPanel{"ListLayout"};
    ZtStatic m_modelListLabel{"ModelListLabel"};
    ZtListBox m_modelListBox{"ModelListUI"};
    ZtPanel m_normalLayoutPanel{"NormalLayoutPanel"};
    bool m_refreshPending = false; ///< the set of models or their checks changed since the list was last refreshed
    ZCharacterWeightingConstraint* m_constraint = nullptr; ///< owned
    double m_deadWeight = 0.001;
    ZCharacterWeightingNormalLayout m_panel;
    ZCharacterWeightingManipulator* m_manipulator = nullptr; ///< owned by the host's manipulator set
    ZWeightUIModelDataList m_models;                         ///< the items are owned by the tool
    ZArrayTemplate<ZModel*> m_boneList;
    std::unordered_map<const ZModel*, int> m_bonePositions; ///< where each bone stands in the bone list
    std::unordered_map<const ZModel*, ZWeightUIModelData*> m_itemOf;
    ZActionDefinition* m_frameAction = nullptr;
};
