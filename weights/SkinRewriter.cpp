// SPDX-License-Identifier: MIT
#include "weights/SkinRewriter.h"

#include "zmodel/ZModelInterfaces.h"

#include <algorithm>

namespace {

/// The entries of one block of vertices, sorted by link (a counting sort, so that vertices keep their order).
class LinkBuckets
{
public:
    explicit LinkBuckets(int linkCount) : m_ends(static_cast<size_t>(linkCount) + 1, 0) {}

    void Collect(const VertexInfluences* records, int begin, int end)
    {
        std::fill(m_ends.begin(), m_ends.end(), 0);
        for (int vertex = begin; vertex < end; ++vertex)
            for (const int link : records[vertex].links)
                ++m_ends[static_cast<size_t>(link) + 1];
        for (size_t link = 1; link < m_ends.size(); ++link)
            m_ends[link] += m_ends[link - 1];
        const auto total = static_cast<size_t>(m_ends.back());
        if (m_vertices.size() < total) {
            m_vertices.resize(total);
            m_weights.resize(total);
        }
        // From here on m_ends[link] is where the link's next entry goes, and in the end where its stretch ends.
        for (int vertex = begin; vertex < end; ++vertex) {
            const VertexInfluences& record = records[vertex];
            for (int k = 0; k < record.GetCount(); ++k) {
                const auto place = static_cast<size_t>(m_ends[static_cast<size_t>(record.links[k])]++);
                m_vertices[place] = vertex;
                m_weights[place] = static_cast<double>(record.weights[k]);
            }
        }
    }
    void AddTo(ISkinLinks& links) const
    {
        int begin = 0;
        for (size_t link = 0; link + 1 < m_ends.size(); ++link) {
            const int end = m_ends[link];
            if (end > begin) {
                links.BeginLink(static_cast<int>(link));
                links.AddEntries(m_vertices.data() + begin, m_weights.data() + begin, end - begin);
                links.EndLink();
            }
            begin = end;
        }
    }

private:
    std::vector<int> m_ends;
    std::vector<int> m_vertices;
    std::vector<double> m_weights;
};

} // namespace

void SkinRewriter_Rewrite(ISkinLinks& links, const VertexInfluences* records, int vertexCount)
{
    constexpr int kBlock = 4096;
    const int linkCount = links.LinkCount();
    for (int link = 0; link < linkCount; ++link) {
        links.BeginLink(link);
        links.ClearEntries();
        links.EndLink();
    }
    LinkBuckets buckets(linkCount);
    for (int begin = 0; begin < vertexCount; begin += kBlock) {
        buckets.Collect(records, begin, std::min(begin + kBlock, vertexCount));
        buckets.AddTo(links);
    }
}

SkinWeightBatch::SkinWeightBatch(ISkinLinks* links, size_t vertices)
    : m_links(links), m_vertices(static_cast<int>(vertices)),
      m_setsPerLink(static_cast<int>(std::clamp<size_t>(vertices, 1, 512))),
      m_setCounts(links != nullptr ? static_cast<size_t>(links->LinkCount()) : 0, 0),
      m_setVertices(new int[m_setCounts.size() * static_cast<size_t>(m_setsPerLink)]),
      m_setWeights(new double[m_setCounts.size() * static_cast<size_t>(m_setsPerLink)]), m_adds(m_setCounts.size())
{
}

SkinWeightBatch::~SkinWeightBatch() { Finish(); }

int SkinWeightBatch::Finish()
{
    for (size_t link = 0; link < m_setCounts.size(); ++link)
        WriteLink(static_cast<int>(link));
    return m_passedOver;
}

void SkinWeightBatch::Add(int link, int vertex, double weight, bool mayBeThere)
{
    if (!HasLink(link))
        return;
    m_mayBeThere = m_mayBeThere || mayBeThere;
    NewEntries& entries = m_adds[static_cast<size_t>(link)];
    entries.vertices.push_back(vertex);
    entries.weights.push_back(weight);
    if (entries.vertices.size() >= kAdds)
        WriteLink(link);
}

void SkinWeightBatch::WriteLink(int link)
{
    int& setCount = m_setCounts[static_cast<size_t>(link)];
    NewEntries& adds = m_adds[static_cast<size_t>(link)];
    if (setCount == 0 && adds.vertices.empty())
        return;
    m_links->BeginLink(link);
    // The first of many: a link gets one new entry a vertex at most.
    if (adds.vertices.size() == kAdds && !adds.hasRoom) {
        m_links->ReserveEntries(m_vertices);
        adds.hasRoom = true;
    }
    // New entries first: a weight that was set after its entry was added finds it.
    if (!adds.vertices.empty() && m_mayBeThere)
        SetOrAddEach(adds);
    else if (!adds.vertices.empty())
        m_links->AddEntries(adds.vertices.data(), adds.weights.data(), static_cast<int>(adds.vertices.size()));
    if (setCount > 0)
        m_passedOver +=
            m_links->SetVertexWeights(&m_setVertices[FirstSet(link)], &m_setWeights[FirstSet(link)], setCount);
    m_links->EndLink();
    setCount = 0;
    adds.vertices.clear();
    adds.weights.clear();
}

void SkinWeightBatch::SetOrAddEach(const NewEntries& entries)
{
    // One by one: a vertex that comes twice finds the entry that it was given the first time.
    for (size_t i = 0; i < entries.vertices.size(); ++i) {
        const int entry = m_links->FindEntry(entries.vertices[i]);
        if (entry >= 0)
            m_links->SetEntryWeight(entries.weights[i], entry);
        else
            m_links->AddEntry(entries.vertices[i], entries.weights[i]);
    }
}
