// SPDX-License-Identifier: MIT
// Hierarchy, transform layers and lazily computed global matrices.
#include "zmodel/ZTransformNode.h"

#include "zbaselib/ZReport.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kHalfRadiansPerDegree = 0.017453292519943295 / 2;

std::array<double, 4> Multiply(const std::array<double, 4>& a, const std::array<double, 4>& b)
{
    return {
        a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1], a[3] * b[1] - a[0] * b[2] + a[1] * b[3] + a[2] * b[0],
        a[3] * b[2] + a[0] * b[1] - a[1] * b[0] + a[2] * b[3], a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
}

std::array<double, 4> AboutAxis(size_t axis, double degrees)
{
    std::array<double, 4> turn{0, 0, 0, std::cos(degrees * kHalfRadiansPerDegree)};
    turn[axis] = std::sin(degrees * kHalfRadiansPerDegree);
    return turn;
}

/// Position of `node` in `siblings`, looked for from the end: what was added last is moved most.
std::vector<ZTransformNode*>::iterator PlaceOf(std::vector<ZTransformNode*>& siblings, const ZTransformNode* node)
{
    const auto found = std::find(siblings.rbegin(), siblings.rend(), node);
    return found == siblings.rend() ? siblings.end() : std::prev(found.base());
}

} // namespace

ZgeMatrix ZNodeTRS::GetMatrix() const
{
    ZgeMatrix matrix =
        ZgeScaling(scaling) * ZgeRotationFromQuaternion(rotation[0], rotation[1], rotation[2], rotation[3]);
    matrix(3, 0) = translation.x;
    matrix(3, 1) = translation.y;
    matrix(3, 2) = translation.z;
    return matrix;
}

ZNodeTRS ZNodeTRS::FromMatrix(const ZgeMatrix& matrix)
{
    const ZgeTRS parts = ZgeDecompose(matrix);
    ZNodeTRS trs;
    trs.translation = {parts.translation.x, parts.translation.y, parts.translation.z};
    trs.rotation = Multiply(AboutAxis(2, parts.rotation.z),
                            Multiply(AboutAxis(1, parts.rotation.y), AboutAxis(0, parts.rotation.x)));
    trs.scaling = parts.scaling;
    return trs;
}

ZTransformNode::ZTransformNode(const char* name) : ZEntity(name) {}

ZTransformNode::~ZTransformNode()
{
    Detach();
    for (ZTransformNode* child : m_children) {
        child->MarkSubtree();
        child->m_parent = nullptr;
        if (child->m_rootLevel != nullptr)
            child->m_rootLevel->push_back(child);
    }
}

std::vector<ZTransformNode*>* ZTransformNode::SiblingList() const
{
    return m_parent != nullptr ? &m_parent->m_children : m_rootLevel;
}

void ZTransformNode::Detach()
{
    std::vector<ZTransformNode*>* const siblings = SiblingList();
    if (siblings != nullptr) {
        const auto place = PlaceOf(*siblings, this);
        if (place != siblings->end())
            siblings->erase(place);
    }
    m_parent = nullptr;
}

void ZTransformNode::SetParent(ZTransformNode* parent)
{
    // Only a node with children can stand above another one: without this, building a long chain would take a walk up
    // for each of its nodes.
    const ZTransformNode* above = parent;
    while (above != nullptr && above != this)
        above = m_children.empty() ? nullptr : above->m_parent;
    if (above == this) {
        ZReport_Misuse("ZTransformNode::SetParent", "'" + GetObjectName() + "' cannot stand under itself.");
        return;
    }
    Detach();
    m_parent = parent;
    if (std::vector<ZTransformNode*>* const siblings = SiblingList())
        siblings->push_back(this);
    MarkSubtree();
}

int ZTransformNode::GetDepth() const
{
    int depth = 0;
    for (const ZTransformNode* node = m_parent; node != nullptr; node = node->m_parent)
        ++depth;
    return depth;
}

void ZTransformNode::SetFileTransform(const ZgeMatrix& local)
{
    m_file = local;
    m_fileParts.reset();
    MarkSubtree();
}

void ZTransformNode::SetFileTRS(const ZNodeTRS& trs)
{
    m_file = trs.GetMatrix();
    m_fileParts = std::make_unique<ZNodeTRS>(trs);
    MarkSubtree();
}

ZNodeTRS ZTransformNode::GetFileTRS() const { return m_fileParts ? *m_fileParts : ZNodeTRS::FromMatrix(m_file); }

void ZTransformNode::SetAnimatedTransform(const std::optional<ZgeMatrix>& local)
{
    m_animated = local;
    MarkSubtree();
}

void ZTransformNode::SetPosedTransform(const std::optional<ZgeMatrix>& local)
{
    m_posed = local;
    MarkSubtree();
}

void ZTransformNode::SetConstrainedGlobal(const std::optional<ZgeMatrix>& global)
{
    m_constrained = global;
    MarkSubtree();
}

void ZTransformNode::MarkSubtree()
{
    if (!m_globalKnown)
        return;
    std::vector<ZTransformNode*> open{this};
    while (!open.empty()) {
        ZTransformNode* const node = open.back();
        open.pop_back();
        node->m_globalKnown = false;
        for (ZTransformNode* child : node->m_children)
            if (child->m_globalKnown)
                open.push_back(child);
    }
}

ZgeMatrix ZTransformNode::FileLocal() const { return m_inherited ? m_file * m_inherited->file : m_file; }

ZgeMatrix ZTransformNode::AnimatedLocal() const
{
    if (!m_animated)
        return FileLocal();
    return m_inherited ? *m_animated * m_inherited->live : *m_animated;
}

ZgeMatrix ZTransformNode::LayeredLocal() const { return m_posed ? *m_posed : AnimatedLocal(); }

void ZTransformNode::ComputeGlobal() const
{
    m_local = LayeredLocal();
    ZgeMatrix global = m_parent != nullptr ? m_local * m_parent->m_global : m_local;
    if (m_constrained) {
        global = *m_constrained;
        bool singular = false;
        const ZgeMatrix toParent = m_parent != nullptr ? ZgeInverse(m_parent->m_global, &singular) : ZgeMatrix();
        if (!singular)
            m_local = global * toParent;
    }
    if (!(global == m_global)) {
        m_global = global;
        ++m_version;
    }
    m_globalKnown = true;
}

void ZTransformNode::BringUpToDate() const
{
    if (m_globalKnown)
        return;
    // From the topmost node that is out of date down to this one; a chain may be as long as a file makes it.
    std::vector<const ZTransformNode*> chain;
    for (const ZTransformNode* node = this; node != nullptr && !node->m_globalKnown; node = node->m_parent)
        chain.push_back(node);
    for (auto node = chain.rbegin(); node != chain.rend(); ++node)
        (*node)->ComputeGlobal();
}

const ZgeMatrix& ZTransformNode::GetTransformMatrix(bool global) const
{
    BringUpToDate();
    return global ? m_global : m_local;
}

std::uint64_t ZTransformNode::GetTransformVersion() const
{
    BringUpToDate();
    return m_version;
}

ZgeMatrix ZTransformNode::GetUnconstrainedGlobal() const
{
    ZgeMatrix global = LayeredLocal();
    for (const ZTransformNode* node = m_parent; node != nullptr; node = node->m_parent)
        global = global * node->LayeredLocal();
    return global;
}

ZgeVector3 ZTransformNode::GetScalingVector(const ZTransformNode* node, bool global, const void* time)
{
    static_cast<void>(time);
    if (node == nullptr) {
        ZReport_Misuse("ZTransformNode::GetScalingVector", "The node is null.");
        return {1, 1, 1};
    }
    return ZgeDecompose(node->GetTransformMatrix(global)).scaling;
}

std::string ZTransformNode::PathStep() const
{
    int number = 1;
    if (const std::vector<ZTransformNode*>* const siblings = SiblingList())
        for (auto sibling = siblings->begin(); sibling != siblings->end() && *sibling != this; ++sibling)
            number += (*sibling)->GetObjectName() == GetObjectName() ? 1 : 0;
    return number == 1 ? GetObjectName() : GetObjectName() + "[" + std::to_string(number) + "]";
}

std::string ZTransformNode::GetPath() const
{
    std::vector<std::string> steps;
    for (const ZTransformNode* node = this; node != nullptr; node = node->m_parent)
        steps.push_back(node->PathStep());
    std::string path;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step)
        path += path.empty() && step == steps.rbegin() ? *step : "/" + *step;
    return path;
}

void ZTransformNode::InheritFrom(const ZTransformNode& parent)
{
    // The place of this moment, with the pose by hand if there is one; without it, what animation and file say goes on,
    // each with its own version of the parent's transform.
    const ZgeMatrix place = LayeredLocal() * parent.LayeredLocal();
    if (m_posed || parent.m_posed)
        m_posed = place;
    if (!m_inherited)
        m_inherited = std::make_unique<Inherited>();
    if (parent.m_animated && !m_animated)
        m_animated = FileLocal() * ZgeInverse(m_inherited->live);
    m_inherited->file = m_inherited->file * parent.FileLocal();
    m_inherited->live = m_inherited->live * parent.AnimatedLocal();
}

void ZTransformNode::HandChildrenToParent()
{
    for (ZTransformNode* child : m_children) {
        child->InheritFrom(*this);
        child->MarkSubtree();
        child->m_parent = m_parent;
    }
    if (std::vector<ZTransformNode*>* const siblings = SiblingList())
        siblings->insert(PlaceOf(*siblings, this), m_children.begin(), m_children.end());
    m_children.clear();
}
