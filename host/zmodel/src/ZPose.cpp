// SPDX-License-Identifier: MIT
// Poses made by hand, and their undo record.
#include "zmodel/ZPose.h"

#include "object/ZUndoStack.h"
#include "zmodel/ZScene.h"

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr char kPoseStep[] = "Pose ";
constexpr char kClearStep[] = "Back to the file's pose";

/// The posed transform of one model; undo and redo change it for the one kept here. A model that is gone is passed
/// over.
struct KeptPose
{
    HdlZPlug handle;
    ZModel* model = nullptr;
    std::optional<ZgeMatrix> kept;
};

class PoseUndo : public IUndo
{
public:
    void* IQuery(int interfaceId, int) override
    {
        return interfaceId == kInterfaceObject || interfaceId == kInterfaceUndo ? this : nullptr;
    }
    void Destroy() override { delete this; }
    bool IsEmpty() override { return m_poses.empty(); }
    void TransactionClosed() override {}
    void Undo() override { Swap(); }
    void Redo() override { Swap(); }
    const char* GetName() override { return "ZPose"; }

    /// The model has been posed already.
    void Keep(ZModel& model, const std::optional<ZgeMatrix>& before)
    {
        KeptPose pose;
        pose.handle.Set(&model);
        pose.model = &model;
        pose.kept = before;
        m_poses.push_back(std::move(pose));
    }
    void Pose(ZModel& model, const std::optional<ZgeMatrix>& posed)
    {
        Keep(model, model.GetPosedTransform());
        model.SetPosedTransform(posed);
    }

private:
    void Swap()
    {
        for (KeptPose& pose : m_poses) {
            if (!pose.handle.IsValid())
                continue;
            const std::optional<ZgeMatrix> present = pose.model->GetPosedTransform();
            pose.model->SetPosedTransform(pose.kept);
            pose.kept = present;
        }
    }

    std::vector<KeptPose> m_poses;
};

void AddStep(const std::string& name, std::unique_ptr<PoseUndo> record)
{
    ZUndoStack* const stack = ZUndoStack::TheOne();
    stack->TransactionBegin(name.c_str(), false);
    stack->TransactionAdd(record.release());
    stack->TransactionEnd(false, false);
}

} // namespace

ZgeTRS ZPose_Get(const ZModel& model) { return ZgeDecompose(model.GetTransformMatrix(false)); }

void ZPose_Set(ZModel& model, const ZgeTRS& pose)
{
    if (pose == ZPose_Get(model))
        return;
    auto record = std::make_unique<PoseUndo>();
    record->Pose(model, ZgeCompose(pose));
    AddStep(kPoseStep + model.GetObjectName(), std::move(record));
}

void ZPose_AddStep(ZModel& model, const std::optional<ZgeMatrix>& before)
{
    if (model.GetPosedTransform() == before)
        return;
    auto record = std::make_unique<PoseUndo>();
    record->Keep(model, before);
    AddStep(kPoseStep + model.GetObjectName(), std::move(record));
}

bool ZPose_IsPosed(const ZScene& scene)
{
    for (const ZModel* const model : scene.GetModels())
        if (model->GetPosedTransform())
            return true;
    return false;
}

bool ZPose_Clear(const ZScene& scene)
{
    if (!ZPose_IsPosed(scene))
        return false;
    auto record = std::make_unique<PoseUndo>();
    for (ZModel* const model : scene.GetModels())
        if (model->GetPosedTransform())
            record->Pose(*model, std::nullopt);
    AddStep(kClearStep, std::move(record));
    return true;
}

bool ZPose_IsStepName(const char* name)
{
    return std::strncmp(name, kPoseStep, std::strlen(kPoseStep)) == 0 || std::strcmp(name, kClearStep) == 0;
}
