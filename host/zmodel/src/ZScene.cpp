// SPDX-License-Identifier: MIT
// The scene's models: adding, deleting, paths and extent.
#include "zmodel/ZScene.h"

#include "SceneTracks.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZSkin.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

ZScene::ZScene() : m_self(std::make_shared<ZScene*>(this)) {}

ZScene::~ZScene()
{
    *m_self = nullptr;
    Clear();
}

ZModel* ZScene::AddModel(std::unique_ptr<ZModel> model)
{
    if (!model) {
        ZReport_Misuse("ZScene::AddModel", "The model is null.");
        return nullptr;
    }
    ZModel* const added = model.get();
    added->m_scene = this;
    added->m_rootLevel = &m_roots;
    if (added->GetParent() == nullptr)
        m_roots.push_back(added);
    m_owned.push_back(std::move(model));
    m_models.push_back(added);
    m_present.insert(added);
    return added;
}

bool ZScene::Contains(const ZModel* model) const { return m_present.count(model) != 0; }

std::vector<std::string> ZScene::GetPaths() const
{
    std::unordered_map<const ZTransformNode*, std::string> paths;
    std::vector<const std::vector<ZTransformNode*>*> levels{&m_roots};
    while (!levels.empty()) {
        const std::vector<ZTransformNode*>& level = *levels.back();
        levels.pop_back();
        std::unordered_map<std::string, int> seen;
        for (const ZTransformNode* node : level) {
            std::string path = node->GetParent() != nullptr ? paths[node->GetParent()] + "/" : std::string();
            path += node->GetObjectName();
            if (const int number = ++seen[node->GetObjectName()]; number > 1)
                path += "[" + std::to_string(number) + "]";
            paths[node] = std::move(path);
            if (!node->GetChildren().empty())
                levels.push_back(&node->GetChildren());
        }
    }
    std::vector<std::string> answer;
    answer.reserve(m_models.size());
    for (const ZModel* model : m_models)
        answer.push_back(paths[model]);
    return answer;
}

bool ZScene::IsFollowed(const ZModel* model) const
{
    for (const ZModel* candidate : m_models) {
        ZSkin* const skin = candidate->GetSkin();
        if (skin != nullptr && skin->FindLink(model) >= 0)
            return true;
    }
    return false;
}

void ZScene::DeleteModel(ZModel* model)
{
    if (!Contains(model)) {
        ZReport_Misuse("ZScene::DeleteModel", "The model is not in this scene.");
        return;
    }
    ZUndoStack* const stack = ZUndoStack::TheOne();
    if (!stack->IsTransactionOpen() || !(model->IsBone() || IsFollowed(model))) {
        DeleteNow(model);
        return;
    }
    HdlZPlug handle;
    handle.Set(model);
    stack->AfterTransaction([scene = m_self, handle, model] {
        if (*scene != nullptr && handle.IsValid() && (*scene)->Contains(model))
            (*scene)->DeleteNow(model);
    });
}

void ZScene::DeleteNow(ZModel* model)
{
    for (ZModel* other : m_models)
        if (ZSkin* const skin = other->GetSkin())
            skin->RemoveLinksOf(model);
    m_models.erase(std::find(m_models.begin(), m_models.end(), model));
    m_present.erase(model);
    const auto owned = std::find_if(m_owned.begin(), m_owned.end(),
                                    [model](const std::unique_ptr<ZModel>& entry) { return entry.get() == model; });
    const std::unique_ptr<ZModel> last = std::move(*owned);
    m_owned.erase(owned);
    for (const std::unique_ptr<ZAnimation>& animation : m_animations)
        animation->RemoveTarget(model);
    m_tracks.reset();

    const long clearings = m_clearings;
    ZPlugEvent event(kPlugNotifyDeleted, model, model);
    ZEntity::Notify(event);
    if (m_clearings != clearings)
        CutFromHierarchy(*model); // a handler cleared the scene: parent and children are gone
    model->HandChildrenToParent();
}

void ZScene::CutFromHierarchy(ZModel& model)
{
    model.m_children.clear();
    model.m_parent = nullptr;
    model.m_rootLevel = nullptr;
}

void ZScene::Clear()
{
    ++m_clearings;
    m_animation = -1;
    m_time = 0;
    m_tracks.reset();
    m_animations.clear();
    m_models.clear();
    m_present.clear();
    // Cut the hierarchy first, so that no node looks itself up among its siblings while it goes.
    for (const std::unique_ptr<ZModel>& model : m_owned)
        CutFromHierarchy(*model);
    m_roots.clear();
    const std::vector<std::unique_ptr<ZModel>> gone = std::move(m_owned);
    m_owned.clear();
}

ZgeBox ZScene::GetBox() const
{
    ZgeBox box;
    for (ZModel* model : m_models) {
        if (model->IsHidden() || !model->HasGeometry())
            continue;
        const float* const positions = model->Geometry().VertexPositions(1);
        const int count = positions != nullptr ? model->Geometry().VertexCount() : 0;
        const ZgeMatrix& global = model->GetTransformMatrix(true);
        for (int i = 0; i < count; ++i) {
            const float* const p = positions + 4 * static_cast<size_t>(i);
            const ZgeVector3 place = ZgeTransformPoint({p[0], p[1], p[2]}, global);
            if (std::isfinite(place.x) && std::isfinite(place.y) && std::isfinite(place.z))
                box.Widen(place);
        }
    }
    return box;
}
