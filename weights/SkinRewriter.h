// SPDX-License-Identifier: MIT
// Writing many weights into a skin, link by link.
#pragma once

#include "weights/VertexInfluences.h"

#include <cstddef>
#include <memory>
#include <vector>

class ISkinLinks;

/// Clears every link and gives it the entries that the records hold, in the order of the vertices.
void SkinRewriter_Rewrite(ISkinLinks& links, const VertexInfluences* records, int vertexCount);

/// Collects changes of single weights and hands them to the skin link by link, so that a link is made current once for
/// many vertices. For each link the vertices keep the order in which they were given. Links that the skin does not have
/// are passed over. Finish, or the destructor, writes what is left.
class SkinWeightBatch
{
public:
    /// `vertices`: how many vertices will be changed, about.
    SkinWeightBatch(ISkinLinks* links, size_t vertices);
    ~SkinWeightBatch();
    SkinWeightBatch(const SkinWeightBatch&) = delete;
    SkinWeightBatch& operator=(const SkinWeightBatch&) = delete;

    /// The weight of an entry; passed over when the link has no entry for the vertex.
    void Set(int link, int vertex, double weight)
    {
        if (!HasLink(link))
            return;
        int& count = m_setCounts[static_cast<size_t>(link)];
        const size_t place = FirstSet(link) + static_cast<size_t>(count);
        m_setVertices[place] = vertex;
        m_setWeights[place] = weight;
        if (++count == m_setsPerLink)
            WriteLink(link);
    }
    /// A new entry. With `mayBeThere` the link is asked first, and an entry that it has gets the weight: an undo leaves
    /// entries of weight 0 that no record names, and a vertex never has two entries of one link.
    void Add(int link, int vertex, double weight, bool mayBeThere);
    /// Writes what is left. Answers how many weights were set for which the skin has no entry.
    int Finish();

private:
    static constexpr size_t kAdds = 4096; // for a few links at once this stays in a core's own cache
    struct NewEntries
    {
        std::vector<int> vertices;
        std::vector<double> weights;
        bool hasRoom = false; ///< the link knows that many come
    };

    bool HasLink(int link) const { return link >= 0 && static_cast<size_t>(link) < m_setCounts.size(); }
    size_t FirstSet(int link) const { return static_cast<size_t>(link) * static_cast<size_t>(m_setsPerLink); }
    void WriteLink(int link);
    void SetOrAddEach(const NewEntries& entries);

    ISkinLinks* m_links;
    int m_vertices;
    int m_setsPerLink;
    std::vector<int> m_setCounts; ///< by link
    std::unique_ptr<int[]> m_setVertices;
    std::unique_ptr<double[]> m_setWeights;
    std::vector<NewEntries> m_adds; ///< by link
    bool m_mayBeThere = false;
    int m_passedOver = 0;
};
