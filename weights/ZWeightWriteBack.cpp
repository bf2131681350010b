// SPDX-License-Identifier: MIT
// Weights by bone, and their way back into the skin.
#include "weights/ModelDataPrivate.h"
#include "weights/SkinRewriter.h"
#include "zbaselib/ZMemory.h"
#include "zmodel/ZModelInterfaces.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace {

/// Marks the links of one record after the other without being cleared in between.
class LinkMarks
{
public:
    void Next() { ++m_round; }
    /// True the first time in this round. Links that no table can have are never marked.
    bool Mark(int link)
    {
        if (link < 0)
            return false;
        if (static_cast<size_t>(link) >= m_rounds.size())
            m_rounds.resize(static_cast<size_t>(link) + 64, 0);
        std::uint32_t& round = m_rounds[static_cast<size_t>(link)];
        const bool first = round != m_round;
        round = m_round;
        return first;
    }
    bool IsMarked(int link) const
    {
        return link >= 0 && static_cast<size_t>(link) < m_rounds.size() &&
               m_rounds[static_cast<size_t>(link)] == m_round;
    }

private:
    std::uint32_t m_round = 0;
    std::vector<std::uint32_t> m_rounds;
};

/// Are the new record's links those that the record has first?
bool BeginsWith(const VertexInfluences& record, const VertexInfluencesView& view)
{
    if (view.count > record.GetCount())
        return false;
    bool same = true; // for so few numbers quicker than to stop at the first that differs
    for (int k = 0; k < view.count; ++k)
        same &= view.links[k] == record.links[k];
    return same;
}

void Copy(const VertexInfluencesView& from, VertexInfluences& to, VertexInfluencesSlab& slab)
{
    slab.MakeRoom(to, from.count);
    to.links.Assign(from.links, from.count);
    to.weights.Assign(from.weights, from.count);
}

/// Records with more influences than they hold themselves keep them elsewhere: both are fetched while earlier vertices
/// are at work.
[[gnu::always_inline]] inline void FetchRecordAhead(const ZArrayTemplate<VertexInfluences*>& records,
                                                    std::span<const int> vertices, size_t index)
{
    constexpr size_t kAhead = 8;
    if (index + 2 * kAhead >= vertices.size())
        return;
    const auto recordAt = [&](size_t at) {
        const int vertex = vertices[at];
        return vertex >= 0 && vertex < records.GetCount() ? records[vertex] : nullptr;
    };
    ZMemory_Fetch(recordAt(index + 2 * kAhead));
    if (const VertexInfluences* const record = recordAt(index + kAhead)) {
        ZMemory_Fetch(record->links.GetData());
        ZMemory_Fetch(record->weights.GetData());
    }
}

} // namespace

// Bones and links.

void ZWeightUIModelData::IndexBoneLinks() const
{
    ZArrayTemplate<int>& index = m_private->linkOfBone;
    index.RemoveAll();
    for (int link = boneLinkPositions.GetCount() - 1; link >= 0; --link) {
        const int bone = boneLinkPositions[link];
        while (index.GetCount() <= bone)
            index.Add(-1);
        if (bone >= 0)
            index[bone] = link;
    }
    m_private->indexedLinks = boneLinkPositions.GetCount();
}

int ZWeightUIModelData::LinkOfBone(int bone) const
{
    if (m_private->indexedLinks != boneLinkPositions.GetCount())
        IndexBoneLinks();
    const ZArrayTemplate<int>& index = m_private->linkOfBone;
    return bone >= 0 && bone < index.GetCount() ? index[bone] : -1;
}

void ZWeightUIModelData::AppendBoneLinkPosition(int bone)
{
    boneLinkPositions.Add(bone);
    IndexBoneLinks();
}

// Single weights.

float ZWeightUIModelData::VertexBoneWeight(int bone, int vertex) const
{
    const VertexInfluences* const record = RecordOf(vertex);
    const int link = record != nullptr ? LinkOfBone(bone) : -1;
    const int place = link >= 0 ? record->links.Find(link) : -1;
    return place >= 0 ? record->weights[place] : 0.0F;
}

void ZWeightUIModelData::GetVertexSpread(int vertex, std::span<float> byBone) const
{
    std::fill(byBone.begin(), byBone.end(), 0.0F);
    const VertexInfluences* const record = RecordOf(vertex);
    if (record == nullptr)
        return;
    // Last to first: of two influences on one link the first is the one that counts.
    for (int k = record->GetCount() - 1; k >= 0; --k) {
        const int link = record->links[k];
        const int bone = BoneOfLink(link);
        if (bone >= 0 && static_cast<size_t>(bone) < byBone.size() && LinkOfBone(bone) == link)
            byBone[static_cast<size_t>(bone)] = record->weights[k];
    }
}

void ZWeightUIModelData::SetVertexBoneWeight(int bone, int vertex, double weight)
{
    VertexInfluences* const record = RecordOf(vertex);
    if (record == nullptr)
        return;
    int link = LinkOfBone(bone);
    if (link < 0) {
        const ZArrayTemplate<ZModel*>& bones = tool->BoneList();
        if (weight == 0.0 || bone < 0 || bone >= bones.GetCount() || AddLink(bones[bone]) < 0)
            return;
        AppendBoneLinkPosition(bone);
        link = LinkOfBone(bone);
    }
    ISkinLinks* const links = SkinLinks();
    const bool linkIsThere = links != nullptr && link < links->LinkCount();
    const int place = record->links.Find(link);
    if (place < 0 && weight == 0.0)
        return;
    if (place < 0)
        m_private->slab.Add(*record, link, static_cast<float>(weight));
    else
        record->weights[place] = static_cast<float>(weight);
    if (!linkIsThere)
        return;
    links->BeginLink(link);
    // An undo leaves entries of weight 0 that the record does not name; such an entry is taken up again. And a redo
    // leaves influences that the skin has no entry for; a weight for them is not lost.
    const int entry = place >= 0 || m_private->skinHoldsMore ? links->FindEntry(vertex) : -1;
    if (entry < 0 && weight != 0.0)
        links->AddEntry(vertex, weight);
    else
        links->SetEntryWeight(weight, entry);
    links->EndLink();
}

// Many vertices at once.

void ZWeightUIModelData::SetManyVertexSpreads(std::span<const int> vertices, std::span<const int> bones,
                                              std::span<const double> weights)
{
    if (vertices.empty())
        return;
    // The new weight of every link, 0 for those that the spread does not name. A bone that is named twice ends with
    // what was said last, at the place where it was first not 0.
    const ZArrayTemplate<ZModel*>& boneList = tool->BoneList();
    std::vector<int> spreadLinks;
    std::vector<double> weightOfLink;
    LinkMarks inSpread;
    inSpread.Next();
    for (size_t i = 0; i < bones.size(); ++i) {
        const int bone = bones[i];
        if (LinkOfBone(bone) < 0 && weights[i] != 0.0 && bone >= 0 && bone < boneList.GetCount() &&
            AddLink(boneList[bone]) >= 0)
            AppendBoneLinkPosition(bone);
        const int link = LinkOfBone(bone);
        if (link < 0)
            continue;
        if (static_cast<size_t>(link) >= weightOfLink.size())
            weightOfLink.resize(static_cast<size_t>(link) + 1, 0.0);
        weightOfLink[static_cast<size_t>(link)] = weights[i];
        if (weights[i] != 0.0 && inSpread.Mark(link))
            spreadLinks.push_back(link);
    }
    weightOfLink.resize(std::max(weightOfLink.size(), static_cast<size_t>(boneLinkPositions.GetCount())), 0.0);
    // Links that a bone stands for: the second link on one bone is out of a spread's reach.
    std::vector<std::uint8_t> reachable(weightOfLink.size(), 0);
    for (int link = 0; link < boneLinkPositions.GetCount(); ++link)
        reachable[static_cast<size_t>(link)] = LinkOfBone(boneLinkPositions[link]) == link ? 1 : 0;

    SkinWeightBatch skin(SkinLinks(), vertices.size());
    LinkMarks seen;
    for (const int vertex : vertices) {
        VertexInfluences* const record = RecordOf(vertex);
        if (record == nullptr)
            continue;
        seen.Next();
        for (int k = 0; k < record->GetCount(); ++k) {
            const int link = record->links[k];
            if (link < 0 || static_cast<size_t>(link) >= reachable.size() ||
                reachable[static_cast<size_t>(link)] == 0 || !seen.Mark(link))
                continue;
            const double weight = weightOfLink[static_cast<size_t>(link)];
            record->weights[k] = static_cast<float>(weight);
            if (m_private->recordsHoldMore && weight != 0.0)
                skin.Add(link, vertex, weight, true);
            else
                skin.Set(link, vertex, weight);
        }
        for (const int link : spreadLinks) {
            if (seen.IsMarked(link))
                continue;
            const double weight = weightOfLink[static_cast<size_t>(link)];
            m_private->slab.Add(*record, link, static_cast<float>(weight));
            skin.Add(link, vertex, weight, m_private->skinHoldsMore);
        }
    }
}

void ZWeightUIModelData::ApplyVertexInfluences(int vertex, const VertexInfluences& record)
{
    // The new record may be the vertex's own.
    const VertexInfluences copy = record;
    ApplyManyVertexInfluences(std::span<const int>(&vertex, 1),
                              {nullptr, {copy.links.GetData(), copy.weights.GetData(), copy.GetCount()}});
}

void ZWeightUIModelData::ApplyManyVertexInfluences(std::span<const int> vertices, const VertexInfluencesRows& records)
{
    if (!IsLoaded()) {
        ApplyToUnloaded(vertices, records);
        return;
    }
    SkinWeightBatch skin(SkinLinks(), vertices.size());
    LinkMarks named;
    for (size_t index = 0; index < vertices.size(); ++index) {
        const int vertex = vertices[index];
        VertexInfluences* const record = RecordOf(vertex);
        if (record == nullptr)
            continue;
        FetchRecordAhead(vertexInfluences, vertices, index);
        const VertexInfluencesView view = records[static_cast<int>(index)];
        named.Next();
        // An undo takes back what was appended: then the new record is how the present one begins.
        const int common = BeginsWith(*record, view) ? view.count : 0;
        for (int k = common; k < view.count; ++k)
            named.Mark(view.links[k]);
        // What the new record does not name ends at 0; what it names need not be 0 in between.
        for (int k = common; k < record->GetCount(); ++k) {
            const int link = record->links[k];
            if (named.IsMarked(link))
                continue;
            skin.Set(link, vertex, 0.0);
            m_private->skinHoldsMore = true;
        }
        for (int k = 0; k < view.count; ++k)
            skin.Set(view.links[k], vertex, static_cast<double>(view.weights[k]));
        Copy(view, *record, m_private->slab);
    }
    if (skin.Finish() > 0)
        m_private->recordsHoldMore = true;
}

/// There are no records that would say which links have an entry for a vertex: every link's entries are gone through
/// once.
void ZWeightUIModelData::ApplyToUnloaded(std::span<const int> vertices, const VertexInfluencesRows& records)
{
    ISkinLinks* const links = SkinLinks();
    if (links == nullptr)
        return;
    std::vector<std::uint8_t> isTarget(static_cast<size_t>(vertexStates.GetCount()), 0);
    for (const int vertex : vertices)
        if (HasVertex(vertex))
            isTarget[static_cast<size_t>(vertex)] = 1;
    const int linkCount = links->LinkCount();
    for (int link = 0; link < linkCount; ++link) {
        links->BeginLink(link);
        const int entryCount = links->EntryCount();
        for (int entry = 0; entry < entryCount; ++entry) {
            const int vertex = links->EntryVertex(entry);
            // A weight that is none was never taken into a record and is not touched here either.
            if (HasVertex(vertex) && isTarget[static_cast<size_t>(vertex)] != 0 &&
                IsInfluenceWeight(static_cast<float>(links->EntryWeight(entry))))
                links->SetEntryWeight(0.0, entry);
        }
        links->EndLink();
    }
    SkinWeightBatch skin(links, vertices.size());
    for (size_t index = 0; index < vertices.size(); ++index) {
        if (!HasVertex(vertices[index]))
            continue;
        const VertexInfluencesView view = records[static_cast<int>(index)];
        for (int k = 0; k < view.count; ++k)
            skin.Set(view.links[k], vertices[index], static_cast<double>(view.weights[k]));
    }
}
