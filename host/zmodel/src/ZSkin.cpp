// SPDX-License-Identifier: MIT
// The skin's links and their entries.
#include "zmodel/ZSkin.h"

#include "SkinLink.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZModel.h"

#include <algorithm>
#include <cmath>
#include <string>

ZSkin::ZSkin(ZModel* owner, int vertexCount, int deformMode)
    : m_vertexCount(vertexCount), m_state(std::make_unique<State>())
{
    m_state->owner = owner;
    m_state->mode = deformMode;
    m_state->touched.Restart(vertexCount);
}

ZSkin::~ZSkin() = default;

// The current link.

bool ZSkin::HasLink(const char* call, int link) const
{
    const int count = static_cast<int>(m_state->links.size());
    if (link >= 0 && link < count)
        return true;
    ZReport_Misuse(call, "There is no link " + std::to_string(link) + "; the skin has " + std::to_string(count) + ".");
    return false;
}

void ZSkin::NoCurrentLink(const char* call) const
{
    ZReport_Misuse(call, "No link is current: BeginLink comes first.");
}

void ZSkin::RefuseVertex(const char* call, int vertex) const
{
    ZReport_Misuse(call, "There is no vertex " + std::to_string(vertex) + "; the model has " +
                             std::to_string(m_vertexCount) + ".");
}

void ZSkin::BeginLink(int link)
{
    // Also a guest's mistake leaves it with the link that it asked for, never writing into another one.
    const bool nested = m_current != nullptr;
    const bool there = link >= 0 && link < static_cast<int>(m_state->links.size());
    m_current = there ? m_state->links[static_cast<size_t>(link)].get() : nullptr;
    if (nested)
        ZReport_Misuse("ISkinLinks::BeginLink", "A link is current: EndLink comes first.");
    // Link 0 stands for the whole skin where only the mode is asked for, so it may be begun in a skin without links.
    if (!there && link != 0)
        HasLink("ISkinLinks::BeginLink", link);
}

void ZSkin::EndLink() { m_current = nullptr; }

// Links.

int ZSkin::LinkCount() { return static_cast<int>(m_state->links.size()); }

ZModel* ZSkin::LinkModel(int link)
{
    const bool there = link >= 0 && link < static_cast<int>(m_state->links.size());
    return there ? m_state->links[static_cast<size_t>(link)]->bone : nullptr;
}

int ZSkin::FindLink(const ZModel* bone) const
{
    const auto found = m_state->linkOfBone.find(bone);
    return found == m_state->linkOfBone.end() ? -1 : found->second;
}

void ZSkin::State::IndexBones()
{
    linkOfBone.clear();
    for (size_t i = 0; i < links.size(); ++i)
        if (links[i]->bone != nullptr)
            linkOfBone.emplace(links[i]->bone, static_cast<int>(i));
}

int ZSkin::AppendNewLink(ZModel* bone, const ZgeMatrix& inverseBind)
{
    const int index = static_cast<int>(m_state->links.size());
    m_state->links.push_back(std::make_unique<Link>(bone, inverseBind));
    if (bone != nullptr)
        m_state->linkOfBone.emplace(bone, index);
    ++m_state->linkVersion;
    ++m_version;
    return index;
}

int ZSkin::AppendLink(ZModel* bone, const ZgeMatrix& inverseBind) { return AppendNewLink(bone, inverseBind); }

int ZSkin::AddLink(ZModel* bone)
{
    if (bone == nullptr) {
        ZReport_Misuse("ISkinLinks::AddLink", "The bone is null.");
        return -1;
    }
    if (const int link = FindLink(bone); link >= 0)
        return link;
    // With row vectors: bind = offset * ancestor's bind and offset = bone * inverse(ancestor), so
    // inverse(bind) = ancestor's inverse bind * ancestor * inverse(bone). The ancestor's bind need not be invertible.
    ZgeMatrix toBone;
    for (const ZTransformNode* node = bone->GetParent(); node != nullptr; node = node->GetParent()) {
        const auto found = m_state->linkOfBone.find(node);
        if (found == m_state->linkOfBone.end())
            continue;
        toBone = m_state->links[static_cast<size_t>(found->second)]->inverseBind * node->GetTransformMatrix(true);
        break;
    }
    bool singular = false;
    const ZgeMatrix inverseBone = ZgeInverse(bone->GetTransformMatrix(true), &singular);
    if (singular)
        ZReport_Warning("Bone '" + bone->GetObjectName() + "' is scaled to nothing: it is bound to '" +
                        m_state->OwnerName() + "' as if it stood at the scene's origin.");
    return AppendNewLink(bone, toBone * inverseBone);
}

void ZSkin::EraseLink(int link)
{
    EndRewrite();
    Link* const gone = m_state->links[static_cast<size_t>(link)].get();
    if (m_current == gone)
        m_current = nullptr;
    m_state->links.erase(m_state->links.begin() + link);
    if (m_state->displayValue == link)
        m_state->displayValue = -1;
    else if (m_state->displayValue > link)
        m_state->displayValue -= 1;
    m_state->touched.AddAll();
    ++m_state->linkVersion;
    ++m_version;
}

void ZSkin::RemoveLink(int link)
{
    if (!HasLink("ISkinLinks::RemoveLink", link))
        return;
    EraseLink(link);
    m_state->IndexBones();
    ZUndoStack::TheOne()->DropHistory("A link was removed from the skin of '" + m_state->OwnerName() +
                                      "'; earlier steps can no longer be undone.");
}

void ZSkin::RemoveLinksOf(const ZModel* bone)
{
    if (bone == nullptr || FindLink(bone) < 0)
        return;
    for (int link = LinkCount() - 1; link >= 0; --link)
        if (LinkModel(link) == bone)
            EraseLink(link);
    m_state->IndexBones();
    ZUndoStack::TheOne()->DropHistory("Bone '" + bone->GetObjectName() + "' left the skin of '" + m_state->OwnerName() +
                                      "'; earlier steps can no longer be undone.");
}

// Entries of the current link.

void ZSkin::AddEntry(int vertex, double weight)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::AddEntry");
        return;
    }
    if (vertex < 0 || vertex >= m_vertexCount) {
        RefuseVertex("ISkinLinks::AddEntry", vertex);
        return;
    }
    m_current->Append(vertex, weight);
    m_state->touched.Add(vertex);
    ++m_version;
}

void ZSkin::AddEntries(const int* vertices, const double* weights, int count)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::AddEntries");
        return;
    }
    const auto isStranger = [this](int vertex) { return vertex < 0 || vertex >= m_vertexCount; };
    if (std::none_of(vertices, vertices + count, isStranger)) {
        m_current->AppendMany(vertices, weights, count);
        m_state->touched.Add(vertices, static_cast<size_t>(count));
    } else {
        for (int i = 0; i < count; ++i) {
            if (isStranger(vertices[i])) {
                RefuseVertex("ISkinLinks::AddEntries", vertices[i]);
                continue;
            }
            m_current->Append(vertices[i], weights[i]);
            m_state->touched.Add(vertices[i]);
        }
    }
    ++m_version;
}

void ZSkin::ReserveEntries(int more)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::ReserveEntries");
        return;
    }
    // A link has one entry a vertex: whoever asks for more does not know what is there.
    const int room = m_vertexCount - m_current->vertices.GetCount();
    m_current->ReserveMore(std::clamp(more, 0, std::max(room, 0)));
}

int ZSkin::EntryCount()
{
    if (m_current != nullptr)
        return m_current->vertices.GetCount();
    NoCurrentLink("ISkinLinks::EntryCount");
    return 0;
}

int ZSkin::EntryVertex(int entry)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::EntryVertex");
        return -1;
    }
    return entry >= 0 && entry < m_current->vertices.GetCount() ? m_current->vertices[entry] : -1;
}

double ZSkin::EntryWeight(int entry)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::EntryWeight");
        return 0;
    }
    return entry >= 0 && entry < m_current->weights.GetCount() ? m_current->weights[entry] : 0;
}

bool ZSkin::EntryArrays(const int*& vertices, const double*& weights, int& count)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::EntryArrays");
        return false;
    }
    vertices = m_current->vertices.GetData();
    weights = m_current->weights.GetData();
    count = m_current->vertices.GetCount();
    return true;
}

void ZSkin::SetEntryWeight(double weight, int entry)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::SetEntryWeight");
        return;
    }
    if (entry < 0 || entry >= m_current->weights.GetCount())
        return;
    if (m_rewriting)
        EndRewrite();
    double& held = m_current->weights[entry];
    if (held != weight) {
        held = weight;
        m_state->touched.Add(m_current->vertices[entry]);
        ++m_version;
    }
}

int ZSkin::SetVertexWeights(const int* vertices, const double* weights, int count)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::SetVertexWeights");
        return count;
    }
    if (m_rewriting)
        EndRewrite();
    int passedOver = 0;
    for (int begin = 0; begin < count; begin += Link::kBlock) {
        const auto blockCount = static_cast<size_t>(std::min(count - begin, Link::kBlock));
        int changed[Link::kBlock];
        const size_t changedCount =
            m_current->SetBlock({vertices + begin, blockCount}, weights + begin, changed, passedOver);
        m_state->touched.Add(changed, changedCount);
        m_version += changedCount;
    }
    return passedOver;
}

int ZSkin::FindEntry(int vertex)
{
    if (m_current != nullptr)
        return m_current->Find(vertex);
    NoCurrentLink("ISkinLinks::FindEntry");
    return -1;
}

void ZSkin::ClearEntries()
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::ClearEntries");
        return;
    }
    if (m_current->vertices.IsEmpty())
        return;
    BeginRewrite();
    m_current->Clear();
    m_state->touched.AddAll();
    ++m_version;
}

// Bind transform and options.

void ZSkin::LinkBindTransform(ZgeVector4& translation, ZgeVector3& rotation, ZgeVector3& scaling)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::LinkBindTransform");
        return;
    }
    translation = m_current->answered.translation;
    rotation = m_current->answered.rotation;
    scaling = m_current->answered.scaling;
}

void ZSkin::SetLinkBindTransform(const ZgeVector4& translation, const ZgeVector3& rotation, const ZgeVector3& scaling)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::SetLinkBindTransform");
        return;
    }
    const ZgeTRS given{translation, rotation, scaling};
    if (given == m_current->answered)
        return;
    ZgeMatrix exact = ZgeCompose(given);
    for (const std::unique_ptr<Link>& other : m_state->links) {
        if (other->answered == given) {
            exact = other->inverseBind;
            break;
        }
    }
    m_current->SetBind(exact);
    ++m_state->linkVersion;
    ++m_version;
}

void ZSkin::ResetLinkOption(int option)
{
    if (m_current == nullptr) {
        NoCurrentLink("ISkinLinks::ResetLinkOption");
        return;
    }
    if (m_current->option == option)
        return;
    m_current->option = option;
    ++m_state->linkVersion;
    ++m_version;
}

int ZSkin::DeformMode() { return m_state->mode; }

void ZSkin::SetSkinDisplayValue(double value) { m_state->displayValue = value; }
