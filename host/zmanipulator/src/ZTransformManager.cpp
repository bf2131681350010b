// SPDX-License-Identifier: MIT
// Posing on and off.
#include "zmanipulator/ZTransformManager.h"

#include "PoseHandles.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZScene.h"

#include <algorithm>

namespace {
/// What becomes active when posing ends: what was before, else the manipulator that was last added and is shown.
ZManipulator* NextActive(const HdlZPlug& before)
{
    const std::vector<ZManipulator*>& all = ZManipulator_GetManipulatorSet()->GetManipulators();
    const auto shown = [](const ZManipulator* manipulator) { return manipulator->ManipulatorGetInUse(); };
    auto* const earlier = static_cast<ZManipulator*>(before.Get());
    if (earlier != nullptr && shown(earlier) && std::find(all.begin(), all.end(), earlier) != all.end())
        return earlier;
    const auto last = std::find_if(all.rbegin(), all.rend(), shown);
    return last != all.rend() ? *last : nullptr;
}
} // namespace

ZTransformManager* ZTransformManager::TheOne()
{
    static ZTransformManager manager;
    return &manager;
}

bool ZTransformManager::IsPosing() const
{
    const auto* const handles = static_cast<const PoseHandles*>(m_handles.Get());
    return handles != nullptr && handles->ManipulatorGetInUse();
}

void ZTransformManager::SetPosing(bool posing)
{
    if (posing == IsPosing())
        return;
    ZManipulatorSet* const set = ZManipulator_GetManipulatorSet();
    if (!posing) {
        EndPosing();
        set->ManipulatorSetActive(NextActive(m_before));
        return;
    }
    if (!m_handles.IsValid())
        m_handles.Set(new PoseHandles); // the set owns it
    auto* const handles = static_cast<PoseHandles*>(m_handles.Get());
    m_before = HdlZPlug();
    m_before.Set(set->ManipulatorGetActive());
    handles->ManipulatorSetHidden(false);
    set->ManipulatorSetActive(handles);
    ZReport_Status("Posing: click a bone, then drag its rings to turn it or its arrows to move it");
}

void ZTransformManager::EndPosing()
{
    if (IsPosing())
        static_cast<PoseHandles*>(m_handles.Get())->ManipulatorSetHidden(true);
}

ZModel* ZTransformManager::GetPosedBone(const ZScene& scene)
{
    for (ZModel* const model : scene.GetModels())
        if (model->IsSelected() && model->IsBone())
            return model->IsHidden() || model->GetConstrainedGlobal().has_value() ? nullptr : model;
    return nullptr;
}
