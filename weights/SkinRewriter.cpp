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

SkinWeightBatch::SkinWeightBatch(ISkinLinks* links) : m_links(links) {}

void SkinWeightBatch::Flush()
{
    // New entries first: a weight that is set after its entry was added finds it.
    Write(m_adds, true);
    Write(m_sets, false);
}

void SkinWeightBatch::Write(std::vector<Change>& changes, bool add)
{
    const int linkCount = m_links != nullptr && !changes.empty() ? m_links->LinkCount() : 0;
    m_ends.assign(static_cast<size_t>(linkCount) + 1, 0);
    const auto isThere = [linkCount](const Change& change) { return change.link >= 0 && change.link < linkCount; };
    for (const Change& change : changes)
        if (isThere(change))
            ++m_ends[static_cast<size_t>(change.link) + 1];
    for (size_t link = 1; link < m_ends.size(); ++link)
        m_ends[link] += m_ends[link - 1];
    m_vertices.resize(changes.size());
    m_weights.resize(changes.size());
    for (const Change& change : changes) {
        if (!isThere(change))
            continue;
        const auto place = static_cast<size_t>(m_ends[static_cast<size_t>(change.link)]++);
        m_vertices[place] = change.vertex;
        m_weights[place] = change.weight;
    }
    changes.clear();
    int begin = 0;
    for (int link = 0; link < linkCount; ++link) {
        const int end = m_ends[static_cast<size_t>(link)];
        if (end > begin) {
            m_links->BeginLink(link);
            if (add)
                SetOrAddToCurrentLink(begin, end);
            else
                m_links->SetVertexWeights(m_vertices.data() + begin, m_weights.data() + begin, end - begin);
            m_links->EndLink();
        }
        begin = end;
    }
}

void SkinWeightBatch::SetOrAddToCurrentLink(int begin, int end)
{
    m_newVertices.clear();
    m_newWeights.clear();
    const bool isEmpty = m_links->EntryCount() == 0;
    for (int i = begin; i < end; ++i) {
        const int vertex = m_vertices[static_cast<size_t>(i)];
        const double weight = m_weights[static_cast<size_t>(i)];
        const int entry = isEmpty ? -1 : m_links->FindEntry(vertex);
        if (entry >= 0) {
            m_links->SetEntryWeight(weight, entry);
            continue;
        }
        m_newVertices.push_back(vertex);
        m_newWeights.push_back(weight);
    }
    if (!m_newVertices.empty())
        m_links->AddEntries(m_newVertices.data(), m_newWeights.data(), static_cast<int>(m_newVertices.size()));
}
