// SPDX-License-Identifier: MIT
// Bones dropped on the bone list become links of the checked models; bones dragged out of it stop being links.
#include "object/ZAction.h"
#include "panel/ZCharacterWeightingNormalLayout.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZModel.h"
#include "ztoolkit/ZToolKit.h"

namespace {

constexpr int kKeyDragOut = 4; ///< the middle mouse button

constexpr int kAnswerOkToAll = 2;
constexpr int kAnswerCancel = 3;

bool IsMirrored(const ZModel& bone)
{
    const ZgeVector3 scaling = ZTransformNode::GetScalingVector(&bone, true, nullptr);
    return scaling.x < 0.0 || scaling.y < 0.0 || scaling.z < 0.0;
}

} // namespace

void ZCharacterWeightingNormalLayout::OnBoneDrop(ZObject*, ZEvent& event)
{
    switch (static_cast<const ZtEvent&>(event).stage) {
    case kDragOver:
        GlobalDragAndDrop_Accept();
        break;
    case kDragDrop:
        CutOffDrag();
        DropBones();
        m_owner.RebuildBoneList();
        break;
    case kDragStart:
        if (Object_GetCurrentKeyState(kKeyDragOut, true)) {
            CutOffDrag();
            m_owner.RemoveIdleSelectedBones();
        }
        break;
    default:
        break;
    }
}

void ZCharacterWeightingNormalLayout::DropBones()
{
    bool stopAsking = false;
    for (int i = 0; i < GlobalDragAndDrop_GetCount(); ++i) {
        IObject* const object = GlobalDragAndDrop_Get(i);
        ZModel* const bone = object != nullptr ? Object_Cast<ZModel>(object) : nullptr;
        if (bone == nullptr)
            continue;
        bool cancelled = false;
        if (!stopAsking && IsMirrored(*bone))
            stopAsking = ConfirmNegativeScaling(*bone, cancelled);
        if (cancelled)
            return;
        m_owner.AddBoneToCheckedModels(bone);
    }
}

/// Answers whether the user wants no further question in this drop.
bool ZCharacterWeightingNormalLayout::ConfirmNegativeScaling(const ZModel& bone, bool& cancelled) const
{
    const std::string text =
        std::string("Negative scaling detected in Bone : ") + bone.GetObjectLabelName() + ". This is not recommended.";
    const int answer = ZtDisplayMessage("Skinning Tool", text.c_str(), "Ok", "Ok to All", "Cancel", 0, 0);
    cancelled = answer == kAnswerCancel;
    return answer == kAnswerOkToAll;
}
