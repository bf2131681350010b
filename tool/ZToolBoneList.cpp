// SPDX-License-Identifier: MIT
// The bones of the checked models: the bone list, what is kept true with it, and the skins' links that it comes from.
#include "tool/ZToolCharacterWeighting.h"

#include "viewport/ZCharacterWeightingConstraint.h"
#include "weights/ZWeightUIModelData.h"

#include <algorithm>
#include <vector>

namespace {

/// Does the current link pull any vertex? An entry of weight zero pulls none.
bool PullsVertices(ISkinLinks& links)
{
    const int entries = links.EntryCount();
    for (int entry = 0; entry < entries; ++entry)
        if (links.EntryWeight(entry) != 0.0)
            return true;
    return false;
}

} // namespace

int ZToolCharacterWeighting::BonePosition(const ZModel* bone) const
{
    const auto found = m_bonePositions.find(bone);
    return found == m_bonePositions.end() ? -1 : found->second;
}

/// One operation, in this order: the bones anew; the selection drops what unchecked models held; the models read their
/// skins, with their links' places in the new list; colours start afresh, locks and selected bones follow their bones;
/// the models are coloured; the lists are shown and the snapshot of the spread is taken.
void ZToolCharacterWeighting::RebuildBoneList()
{
    const ZArrayTemplate<ZModel*> oldBones = m_boneList;
    CollectBones();
    m_panel.selection.SyncPanelSelection();
    for (int i = 0; i < m_models.GetCount(); ++i) {
        m_models[i]->Refresh();
        m_models[i]->ResetSkinHint();
    }
    m_panel.ResetBoneColours();
    m_panel.FollowBones(oldBones);
    for (int i = 0; i < m_models.GetCount(); ++i)
        m_models[i]->ComputeColors(m_panel.boneColours, m_panel.colourMode);
    RefreshPanelLists();
    TakeSpreadSnapshot();
}

void ZToolCharacterWeighting::CollectBones()
{
    m_boneList.RemoveAll();
    m_bonePositions.clear();
    for (int i = 0; i < m_models.GetCount(); ++i) {
        ISkinLinks* const links = m_models[i]->modelSelected != 0 ? m_models[i]->SkinLinks() : nullptr;
        const int count = links != nullptr ? links->LinkCount() : 0;
        for (int link = 0; link < count; ++link) {
            ZModel* const bone = links->LinkModel(link);
            if (bone != nullptr && m_bonePositions.emplace(bone, m_boneList.GetCount()).second)
                m_boneList.Add(bone);
        }
    }
}

void ZToolCharacterWeighting::IndexBones()
{
    m_bonePositions.clear();
    for (int position = 0; position < m_boneList.GetCount(); ++position)
        m_bonePositions.emplace(m_boneList[position], position);
}

void ZToolCharacterWeighting::AddBoneToCheckedModels(ZModel* bone)
{
    for (int i = 0; i < m_models.GetCount(); ++i)
        if (m_models[i]->modelSelected != 0)
            m_models[i]->AddLink(bone);
}

void ZToolCharacterWeighting::RemoveIdleSelectedBones()
{
    std::vector<bool> selected(static_cast<size_t>(m_boneList.GetCount()), false);
    for (const int bone : m_panel.selectedBones)
        selected[static_cast<size_t>(bone)] = true;
    for (int i = 0; i < m_models.GetCount(); ++i) {
        ISkinLinks* const links = m_models[i]->modelSelected != 0 ? m_models[i]->SkinLinks() : nullptr;
        if (links == nullptr)
            continue;
        // From the last link to the first: removing one shifts the later ones only.
        for (int link = links->LinkCount() - 1; link >= 0; --link) {
            const int bone = BonePosition(links->LinkModel(link));
            if (bone < 0 || !selected[static_cast<size_t>(bone)])
                continue;
            links->BeginLink(link);
            const bool idle = !PullsVertices(*links);
            links->EndLink();
            if (idle)
                links->RemoveLink(link);
        }
    }
    RebuildBoneList();
    RehandRestPosition();
}

/// Hands the constraint every bone of every checked model, in bone list order; false when there is none.
bool ZToolCharacterWeighting::HandBonesToConstraint()
{
    m_constraint->ConstraintSetEnabled(false);
    m_constraint->RequestTeardown(); // what an earlier stay in the rest position left
    bool any = false;
    for (int i = 0; i < m_models.GetCount(); ++i) {
        ISkinLinks* const links = m_models[i]->modelSelected != 0 ? m_models[i]->SkinLinks() : nullptr;
        std::vector<int> positions;
        for (int link = 0; links != nullptr && link < links->LinkCount(); ++link)
            if (const int position = BonePosition(links->LinkModel(link)); position >= 0)
                positions.push_back(position);
        std::sort(positions.begin(), positions.end());
        positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
        for (const int position : positions)
            m_constraint->AddBone(m_boneList[position], m_models[i]->GetModel());
        any = any || !positions.empty();
    }
    return any;
}

/// The set of bones changed while skeletons are held: those that are left are held from here on.
void ZToolCharacterWeighting::RehandRestPosition()
{
    if (m_panel.restPositionMode && !EnterRestPosition())
        LeaveRestPosition(true);
}
