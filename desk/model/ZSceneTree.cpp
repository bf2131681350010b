// SPDX-License-Identifier: MIT
// Building the scene's rows.
#include "desk/model/ZSceneTree.h"

#include "zmodel/ZScene.h"

#include <unordered_map>

void ZSceneTree::Rebuild(const ZScene& scene)
{
    m_rows.clear();
    m_top.clear();
    m_built = scene.GetModels();
    // Parents may be added after their children, so rows are made first and joined afterwards.
    std::unordered_map<const ZTransformNode*, int> rowOf;
    for (ZModel* const model : m_built) {
        rowOf[model] = static_cast<int>(m_rows.size());
        m_rows.push_back({model, -1, 0, {}});
    }
    for (size_t row = 0; row < m_rows.size(); ++row) {
        const auto parent = rowOf.find(m_rows[row].model->GetParent());
        std::vector<int>& siblings =
            parent == rowOf.end() ? m_top : m_rows[static_cast<size_t>(parent->second)].children;
        m_rows[row].parent = parent == rowOf.end() ? -1 : parent->second;
        m_rows[row].place = static_cast<int>(siblings.size());
        siblings.push_back(static_cast<int>(row));
    }
}

bool ZSceneTree::IsOutOfDate(const ZScene& scene) const { return m_built != scene.GetModels(); }

std::string ZSceneTree::KindName(const ZModel& model)
{
    switch (model.GetKind()) {
    case ZModelKind::Polymesh:
        return model.IsBone() ? "mesh, bone" : "mesh";
    case ZModelKind::Nurbs:
        return "NURBS surface";
    case ZModelKind::Bone:
        return "bone";
    default:
        return model.IsBone() ? "bone" : "node";
    }
}
