// SPDX-License-Identifier: MIT
// Reads the entries of a skin's links into records, vertex by vertex.
#pragma once

#include "weights/VertexInfluencesSlab.h"

#include <vector>

class ISkinLinks;

/// Numbers from outside: weights that are not finite or are negative, and vertices that are not there, are passed over.
class SkinReader
{
public:
    enum Filter
    {
        kPositive,
        kNotNegative
    };

    /// Looks at every link that has a bone. What it holds is valid until the skin next changes.
    SkinReader(ISkinLinks& links, Filter filter);

    /// Do the entries of every link come in the order of the vertices, as arrays? Then ReadBlock may be used.
    bool FollowsVertices() const { return m_followsVertices; }
    /// Appends to the records of the vertices begin .. end-1. Blocks are asked for in ascending order, without gaps.
    void ReadBlock(VertexInfluencesSlab& slab, int begin, int end);
    /// Appends to all records, link after link.
    void ReadAll(VertexInfluencesSlab& slab, int vertexCount);
    /// Was there an entry that did not go into a record?
    bool PassedOverAny() const { return m_passedOver; }

private:
    struct Entries
    {
        int link = -1;
        const int* vertices = nullptr; ///< null: the skin has no arrays and is asked entry by entry
        const double* weights = nullptr;
        int count = 0;
        int cursor = 0;
    };
    bool Takes(float weight) const;
    void ReadEntryByEntry(const Entries& entries, VertexInfluencesSlab& slab, int vertexCount);

    ISkinLinks& m_links;
    Filter m_filter;
    bool m_followsVertices = true;
    bool m_passedOver = false;
    std::vector<Entries> m_entries;
};
