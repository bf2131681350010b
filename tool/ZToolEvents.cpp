// SPDX-License-Identifier: MIT
// What the tool does when the scene tells it something: models and bones that go, bones that are selected, the whole
// scene being cleared.
#include "tool/ZToolCharacterWeighting.h"

#include "viewport/ZCharacterWeightingConstraint.h"
#include "weights/ZWeightUIModelData.h"
#include "zxtrobject/ZXtrObject.h"

void ZToolCharacterWeighting::OnPlugNotify(ZObject*, ZEvent& event)
{
    const auto& news = static_cast<const ZPlugEvent&>(event);
    auto* const model = Object_Cast<ZModel>(news.owner);
    if (event.kind != kPlugNotifyDeleted || model == nullptr || Object_Cast<ZEntity>(news.source) == nullptr)
        return;
    const bool bone = BonePosition(model) >= 0;
    ForgetDeletedModel(model);
    if (bone)
        ForgetDeletedBone(model);
}

void ZToolCharacterWeighting::ForgetDeletedModel(ZModel* model)
{
    const auto found = m_itemOf.find(model);
    if (found == m_itemOf.end())
        return;
    CutOffGestures(); // what is under way may hold the model; it ends while the model still lives
    RemoveModel(found->second);
    RefreshModelList(true, false);
    RehandRestPosition();
}

void ZToolCharacterWeighting::ForgetDeletedBone(const ZModel* model)
{
    CutOffGestures();
    // A bone that is a model of the tool as well has left the bone list with it.
    if (const int position = BonePosition(model); position >= 0) {
        m_boneList.RemoveAt(position);
        IndexBones();
        m_panel.RemoveBoneAt(position);
    }
    LeaveRestPosition(true);
    if (m_constraint != nullptr)
        m_constraint->ResetBones();
    RefreshModelList(true, false);
}

void ZToolCharacterWeighting::OnPlugState(ZObject* sender, ZEvent& event)
{
    const auto* const model = Object_Cast<ZModel>(sender);
    if (model == nullptr || event.kind != kPlugStateSelected)
        return;
    const int position = BonePosition(model);
    if (position < 0)
        return;
    m_panel.SelectBone(position);
    RefreshPanelLists();
}

void ZToolCharacterWeighting::OnSceneEvent(ZObject*, ZEvent& event)
{
    if (event.kind != kSceneClearing)
        return;
    CutOffGestures();
    LeaveRestPosition(true);
    if (m_constraint != nullptr)
        m_constraint->ResetBones(); // its bones are about to go without a word about each
    EmptyLists();
    RefreshModelList(true, false);
    m_models.Release();
}
