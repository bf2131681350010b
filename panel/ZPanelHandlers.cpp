// SPDX-License-Identifier: MIT
// What each control does when the user changes it.
#include "panel/ZCharacterWeightingNormalLayout.h"
#include "weights/ZWeightUIModelData.h"

using Panel = ZCharacterWeightingNormalLayout;

void ZCharacterWeightingNormalLayout::RegisterHandlers()
{
    listBonesList.RegisterHandler(kViewSelectionChanged, ZMakeHandler<&Panel::OnBoneSelection>(this));
    listBonesList.RegisterHandler(kViewDragAndDrop, ZMakeHandler<&Panel::OnBoneDrop>(this));
    listVertexList.RegisterHandler(kViewSelectionChanged, ZMakeHandler<&Panel::OnVertexSelection>(this));
    listWeightingMode.RegisterHandler(kViewValueChanged, ZMakeHandler<&Panel::OnWeightingMode>(this));
    colorModeList.RegisterHandler(kViewValueChanged, ZMakeHandler<&Panel::OnColourMode>(this));
    automaticBoneSelectionButton.RegisterHandler(kViewClicked, ZMakeHandler<&Panel::OnAutomaticBoneSelection>(this));
    cullFaceButton.RegisterHandler(kViewClicked, ZMakeHandler<&Panel::OnCullFace>(this));
    boneColorEdit.RegisterHandler(kViewValueChanged, ZMakeHandler<&Panel::OnBoneColour>(this));
    toRestPositionButton.RegisterHandler(kViewClicked, ZMakeHandler<&Panel::OnToRestPosition>(this));
    selectUButton.RegisterHandler(kViewClicked, ZMakeHandler<&Panel::OnSelectU>(this));
    selectVButton.RegisterHandler(kViewClicked, ZMakeHandler<&Panel::OnSelectV>(this));
    // A slider's value at any moment: taken hold of, moved, let go.
    for (const int kind : {kViewPress, kViewValueChanged, kViewRelease})
        sphereSizeSlider.RegisterHandler(kind, ZMakeHandler<&Panel::OnSphereSize>(this));
    enableModelSelectionCheckBox.RegisterHandler(kViewClicked, ZMakeHandler<&Panel::OnModelSelection>(this));
    spreadWeights.RegisterHandler(kViewValueChanged, ZMakeHandler<&Panel::OnSpreadCell>(this));
}

void ZCharacterWeightingNormalLayout::OnBoneSelection(ZObject*, ZEvent& event)
{
    if (BoneCount() == 0) {
        listBonesList.DeselectAll(); // the row "Empty" is no bone
        return;
    }
    CutOffDrag();
    selectedBones.RemoveAll();
    for (const int row : listBonesList.GetSelectedRows())
        selectedBones.Add(row);
    m_touchedBone = static_cast<const ZtEvent&>(event).row;
    UpdateCurrentBone();
    RefillVertexList();
    RefreshSpread(false);
    m_editing.WeightViewChanged();
}

void ZCharacterWeightingNormalLayout::OnVertexSelection(ZObject*, ZEvent&)
{
    if (selection.vertexRows.IsEmpty()) {
        listVertexList.DeselectAll(); // the row "Empty" is no vertex
        return;
    }
    CutOffDrag();
    selection.RowSelectionChanged(listVertexList.GetSelectedRows());
}

void ZCharacterWeightingNormalLayout::OnWeightingMode(ZObject*, ZEvent&)
{
    CutOffDrag(); // a change is written one way from its beginning to its end
    weightingMode = listWeightingMode.GetIndex();
}

void ZCharacterWeightingNormalLayout::OnColourMode(ZObject*, ZEvent&)
{
    colourMode = colorModeList.GetIndex();
    const ZWeightUIModelDataList& models = m_editing.ModelDataList();
    for (int model = 0; model < models.GetCount(); ++model)
        models[model]->ComputeColors(boneColours, colourMode);
    m_editing.WeightViewChanged();
}

void ZCharacterWeightingNormalLayout::OnAutomaticBoneSelection(ZObject*, ZEvent&)
{
    CutOffDrag();
    automaticBoneSelection = automaticBoneSelectionButton.GetState();
    m_editing.RefreshPanelLists();
}

void ZCharacterWeightingNormalLayout::OnCullFace(ZObject*, ZEvent&) { foregroundOnly = cullFaceButton.GetState(); }

void ZCharacterWeightingNormalLayout::OnBoneColour(ZObject*, ZEvent&)
{
    if (m_currentBone >= 0 && m_currentBone < boneColours.GetCount() / 3)
        SetBoneColour(boneColorEdit.GetColour());
}

void ZCharacterWeightingNormalLayout::SetBoneColour(const double* colour)
{
    float* const entry = &boneColours[3 * m_currentBone];
    const float old[3] = {entry[0], entry[1], entry[2]};
    for (int component = 0; component < 3; ++component)
        entry[component] = static_cast<float>(colour[component]);
    const ZWeightUIModelDataList& models = m_editing.ModelDataList();
    for (int model = 0; model < models.GetCount(); ++model)
        if (models[model]->modelSelected != 0)
            models[model]->BoneColorChanged(boneColours, m_currentBone, colourMode, old[0], old[1], old[2]);
    RefreshSpread(false);
    m_editing.WeightViewChanged();
}

void ZCharacterWeightingNormalLayout::OnToRestPosition(ZObject*, ZEvent&)
{
    if (toRestPositionButton.GetState()) {
        SetRestPosition(m_owner.EnterRestPosition()); // springs back when there is no bone to hold
    } else {
        m_owner.LeaveRestPosition(true);
        SetRestPosition(false);
    }
}

void ZCharacterWeightingNormalLayout::OnSelectU(ZObject*, ZEvent&) { selection.selectU = selectUButton.GetState(); }

void ZCharacterWeightingNormalLayout::OnSelectV(ZObject*, ZEvent&) { selection.selectV = selectVButton.GetState(); }

void ZCharacterWeightingNormalLayout::OnSphereSize(ZObject*, ZEvent&)
{
    m_owner.SetSphereRadius(sphereSizeSlider.GetValue());
}

void ZCharacterWeightingNormalLayout::OnModelSelection(ZObject*, ZEvent&)
{
    modelSelectionEnabled = enableModelSelectionCheckBox.GetState();
}
