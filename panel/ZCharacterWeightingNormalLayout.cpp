// SPDX-License-Identifier: MIT
// The panel's life: building, first values, and what it keeps for each bone.
#include "panel/ZCharacterWeightingNormalLayout.h"

#include "ztoolkit/ZToolKit.h"

#include <algorithm>

namespace {

/// Colours of bones by position, over and over.
constexpr float kPalette[6][3] = {{1.0F, 0.0F, 0.0F}, {0.0F, 0.8F, 0.0F}, {0.0F, 0.0F, 1.0F},
                                  {1.0F, 0.0F, 1.0F}, {0.0F, 1.0F, 1.0F}, {1.0F, 1.0F, 0.0F}};

void SetListProperties(ZtListBox& list)
{
    list.SetListStyle(0);
    list.SetMultipleSelection(true);
    list.SetExtendedSelection(false);
}

void SetToggle(ZtCheckBox& button, const char* caption)
{
    button.SetCaption(caption);
    button.SetPushButtonLook(true);
    button.SetState(false);
}

} // namespace

ZCharacterWeightingNormalLayout::ZCharacterWeightingNormalLayout(IPanelOwner& owner)
    : ZtForm("fmcharacterweightingnormallayout"), selection(owner.Editing()), weightChange(owner.Editing()),
      m_owner(owner), m_editing(owner.Editing())
{
    SetDesignSize(958, 368);
}

ZCharacterWeightingNormalLayout::~ZCharacterWeightingNormalLayout()
{
    listBonesList.SetRowSource(nullptr);
    listVertexList.SetRowSource(nullptr);
}

void ZCharacterWeightingNormalLayout::Build()
{
    MakeDefaultLayout();
    if (ZToolKit_GetScreenWidth() < kWideScreen)
        MakeNarrowLayout();
    SetInitialValues();
    SetUpSpreadColumns();
    if (!m_built)
        RegisterHandlers();
    m_built = true;
    RefreshLists();
}

void ZCharacterWeightingNormalLayout::SetInitialValues()
{
    labelBonesList.SetCaption("Bones List  ");
    labelVertexList.SetCaption("Vertex List ");
    labelWeights.SetCaption(" Weights");
    sphereSizeLabel.SetCaption("Sphere Size :");
    for (ZtListBox* const list : {&listBonesList, &listVertexList}) {
        SetListProperties(*list);
        list->SetRowSource(this);
        list->ClearRows();
    }
    listWeightingMode.GetItems().SetText("Affect first selected vertex~Affect all selected vertices", '~');
    listWeightingMode.SetIndex(0);
    colorModeList.GetItems().SetText("Smooth Colors~Most Influential Bone~Least Influential Bone", '~');
    colorModeList.SetIndex(0);
    SetToggle(automaticBoneSelectionButton, "Automatic Bone Selection");
    SetToggle(cullFaceButton, "Foreground Vertices Selection");
    SetToggle(toRestPositionButton, "To Rest Position");
    SetToggle(selectUButton, "Select U");
    SetToggle(selectVButton, "Select V");
    boneColorEdit.SetComponentCount(3);
    sphereSizeSlider.SetHorizontal(true);
    sphereSizeSlider.SetRange(0.0, 10.0);
    sphereSizeSlider.SetValue(1.0);
    enableModelSelectionCheckBox.SetCaption("Model Selection");
    enableModelSelectionCheckBox.SetState(true);

    automaticBoneSelection = foregroundOnly = restPositionMode = false;
    selection.selectU = selection.selectV = false;
    modelSelectionEnabled = true;
    colourMode = kColourSmooth;
    weightingMode = kAffectFirstSelected;
    boneColours.RemoveAll();
    lockFlags.RemoveAll();
    selectedBones.RemoveAll();
    spreadRows.RemoveAll();
    m_currentBone = m_touchedBone = -1;
}

void ZCharacterWeightingNormalLayout::ResetBoneColours()
{
    const int bones = BoneCount();
    boneColours.RemoveAll();
    for (int bone = 0; bone < bones; ++bone)
        for (const float component : kPalette[bone % 6])
            boneColours.Add(component);
}

void ZCharacterWeightingNormalLayout::FollowBones(const ZArrayTemplate<ZModel*>& oldBones)
{
    const auto newPosition = [&](int old) {
        return old >= 0 && old < oldBones.GetCount() ? m_editing.BonePosition(oldBones[old]) : -1;
    };
    ZArrayTemplate<int, 16> locks;
    for (int bone = 0; bone < BoneCount(); ++bone)
        locks.Add(0);
    for (int old = 0; old < std::min(oldBones.GetCount(), lockFlags.GetCount()); ++old)
        if (const int position = newPosition(old); position >= 0)
            locks[position] = lockFlags[old];
    lockFlags = std::move(locks);

    ZArrayTemplate<int, 16> selected;
    for (const int old : selectedBones)
        if (const int position = newPosition(old); position >= 0)
            selected.Add(position);
    std::sort(selected.begin(), selected.end());
    selectedBones = std::move(selected);
    m_touchedBone = newPosition(m_touchedBone);
}

void ZCharacterWeightingNormalLayout::RemoveBoneAt(int position)
{
    const auto moveDown = [position](int& index) {
        if (index == position)
            index = -1;
        else if (index > position)
            --index;
    };
    for (ZArrayTemplate<int, 16>* const table : {&selectedBones, &spreadRows}) {
        for (int& index : *table)
            moveDown(index);
        table->RemoveIf([](int index) { return index < 0; });
    }
    if (position < lockFlags.GetCount())
        lockFlags.RemoveAt(position);
    for (int component = 0; component < 3 && 3 * position < boneColours.GetCount(); ++component)
        boneColours.RemoveAt(3 * position);
    moveDown(m_touchedBone);
    moveDown(m_currentBone);
}

bool ZCharacterWeightingNormalLayout::SelectBone(int position)
{
    if (selectedBones.Find(position) >= 0)
        return false;
    selectedBones.Add(position);
    return true;
}

void ZCharacterWeightingNormalLayout::CutOffDrag()
{
    m_dragging = false;
    weightChange.CloseOpenChange();
}

void ZCharacterWeightingNormalLayout::SetRestPosition(bool on)
{
    restPositionMode = on;
    toRestPositionButton.SetState(on);
}
