// SPDX-License-Identifier: MIT
// Writing many weights into a skin, link by link.
#pragma once

#include "weights/VertexInfluences.h"

#include <vector>

class ISkinLinks;

/// Clears every link and gives it the entries that the records hold, in the order of the vertices.
void SkinRewriter_Rewrite(ISkinLinks& links, const VertexInfluences* records, int vertexCount);

/// Collects changes of single weights and hands them to the skin link by link, so that a link is made current once for
/// many vertices. For each link the vertices keep the order in which they were given. Links that the skin does not have
/// are passed over. The destructor writes what is left.
class SkinWeightBatch
{
public:
    explicit SkinWeightBatch(ISkinLinks* links);
    ~SkinWeightBatch() { Flush(); }
    SkinWeightBatch(const SkinWeightBatch&) = delete;
    SkinWeightBatch& operator=(const SkinWeightBatch&) = delete;

    /// The weight of an entry; passed over when the link has no entry for the vertex.
    void Set(int link, int vertex, double weight)
    {
        m_sets.push_back({link, vertex, weight});
        if (m_sets.size() >= kBatch)
            Flush();
    }
    /// The weight of an entry, which is made when the link has none for the vertex. An undo leaves entries of weight 0
    /// that no record names; they are taken up again, so that a vertex never has two entries of one link.
    void SetOrAdd(int link, int vertex, double weight)
    {
        m_adds.push_back({link, vertex, weight});
        if (m_adds.size() >= kBatch)
            Flush();
    }
    void Flush();

private:
    struct Change
    {
        int link;
        int vertex;
        double weight;
    };
    static constexpr size_t kBatch = 32768;

    void Write(std::vector<Change>& changes, bool add);
    void SetOrAddToCurrentLink(int begin, int end);

    ISkinLinks* m_links;
    std::vector<Change> m_sets;
    std::vector<Change> m_adds;
    std::vector<int> m_ends; ///< of each link's stretch in the two arrays below
    std::vector<int> m_vertices;
    std::vector<double> m_weights;
    std::vector<int> m_newVertices;
    std::vector<double> m_newWeights;
};
