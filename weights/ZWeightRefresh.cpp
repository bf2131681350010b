// SPDX-License-Identifier: MIT
// Reading a skin into records, and the one rewriting that makes its weights sum to one.
//
// A skin keeps its entries link by link, the records stand vertex by vertex. Passing over all vertices once a link
// would touch every record once an influence, each time from far memory. So when every link's entries come in the order
// of the vertices, which is how files have them and how the rewriting leaves them, the passes run over blocks of
// vertices whose records stay in the cache while each link adds its share. The order of the influences in a record is
// that of the links either way.
#include "weights/ModelDataPrivate.h"
#include "weights/SkinReader.h"
#include "weights/SkinRewriter.h"
#include "zmodel/ZModelInterfaces.h"

#include <algorithm>

namespace {

/// Records of a block and the entries that go into it fit into a core's own cache together.
constexpr int kBlock = 4096;

/// Weights that sum to one; the sum is taken in double. A record without weight stays as it is.
void NormaliseRecords(VertexInfluences* records, int begin, int end)
{
    for (VertexInfluences* record = records + begin; record != records + end; ++record) {
        double sum = 0.0;
        for (const float weight : record->weights)
            sum += static_cast<double>(weight);
        if (sum == 0.0)
            continue;
        const double scale = 1.0 / sum;
        for (float& weight : record->weights)
            weight = static_cast<float>(static_cast<double>(weight) * scale);
    }
}

} // namespace

void ZWeightUIModelData::Refresh()
{
    RebuildBoneLinkPositions();
    const int vertexCount = geometry != nullptr ? geometry->VertexCount() : 0;
    if (modelSelected == 0 || vertexCount <= 0) {
        Unload();
        normaliseOnRefresh = 0;
        return;
    }
    const bool fresh = vertexInfluences.GetCount() != vertexCount;
    if (fresh) {
        vertexColours.Release();
        vertexInfluences.RemoveAll();
        m_private->slab.Allocate(vertexCount);
        vertexInfluences.SetCountUninitialised(vertexCount);
        vertexColours.SetCountUninitialised(4 * vertexCount);
    }
    if (ISkinLinks* const links = SkinLinks())
        ReadSkin(*links, vertexCount, fresh);
    else
        PrepareRecords(0, vertexCount, fresh);
    normaliseOnRefresh = 0;
}

void ZWeightUIModelData::RebuildBoneLinkPositions()
{
    boneLinkPositions.RemoveAll();
    m_private->indexedLinks = -1;
    ISkinLinks* const links = SkinLinks();
    const int linkCount = links != nullptr ? links->LinkCount() : 0;
    for (int link = 0; link < linkCount; ++link) {
        const ZModel* const bone = links->LinkModel(link);
        const int position = bone != nullptr ? tool->BonePosition(bone) : -1;
        if (position >= 0)
            boneLinkPositions.Add(position);
    }
}

/// The flags noActiveVertices and noSelectedVertices keep their values: nothing is drawn of a model that is not
/// selected.
void ZWeightUIModelData::Unload()
{
    vertexColours.Release();
    vertexInfluences.Release();
    m_private->slab.Free();
    activeVertices.Release();
    selectedVertices.Release();
    vertexStates.Fill(0);
    m_private->liveSelected = 0;
    m_private->liveActive = 0;
}

/// Colours are black and records empty afterwards.
void ZWeightUIModelData::PrepareRecords(int begin, int end, bool fresh)
{
    VertexInfluences* const records = m_private->slab.GetData();
    std::fill(vertexColours.begin() + 4 * begin, vertexColours.begin() + 4 * end, 0.0F);
    if (fresh) {
        m_private->slab.ConstructUpTo(end);
        for (int vertex = begin; vertex < end; ++vertex)
            vertexInfluences[vertex] = records + vertex;
        return;
    }
    for (int vertex = begin; vertex < end; ++vertex)
        records[vertex].Clear();
}

void ZWeightUIModelData::ReadSkin(ISkinLinks& links, int vertexCount, bool fresh)
{
    const bool normalise = normaliseOnRefresh != 0;
    VertexInfluences* const records = m_private->slab.GetData();
    // Normalising starts from the weights that count; later an influence of weight 0 keeps its place, so that a weight
    // that was set to 0 and is raised again has its one entry.
    SkinReader reader(links, normalise ? SkinReader::kPositive : SkinReader::kNotNegative);
    if (reader.FollowsVertices()) {
        for (int begin = 0; begin < vertexCount; begin += kBlock) {
            const int end = std::min(begin + kBlock, vertexCount);
            PrepareRecords(begin, end, fresh);
            reader.ReadBlock(m_private->slab, begin, end);
            if (normalise)
                NormaliseRecords(records, begin, end);
        }
    } else {
        PrepareRecords(0, vertexCount, fresh);
        reader.ReadAll(m_private->slab, vertexCount);
        if (normalise)
            NormaliseRecords(records, 0, vertexCount);
    }
    // The skin gets what the records now hold, entry for entry in the order in which reading it again would find them,
    // so the records need not be read again.
    if (normalise)
        SkinRewriter_Rewrite(links, records, vertexCount);
    m_private->skinHoldsMore = !normalise && reader.PassedOverAny();
    m_private->recordsHoldMore = false;
}
