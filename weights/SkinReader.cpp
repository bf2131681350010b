// SPDX-License-Identifier: MIT
#include "weights/SkinReader.h"

#include "zmodel/ZModelInterfaces.h"

#include <algorithm>

SkinReader::SkinReader(ISkinLinks& links, Filter filter) : m_links(links), m_filter(filter)
{
    const int linkCount = links.LinkCount();
    m_entries.reserve(static_cast<size_t>(linkCount));
    for (int link = 0; link < linkCount; ++link) {
        if (links.LinkModel(link) == nullptr) {
            m_passedOver = true;
            continue;
        }
        Entries entries;
        entries.link = link;
        links.BeginLink(link);
        if (links.EntryArrays(entries.vertices, entries.weights, entries.count))
            m_followsVertices = m_followsVertices && std::is_sorted(entries.vertices, entries.vertices + entries.count);
        else
            m_followsVertices = false;
        links.EndLink();
        m_entries.push_back(entries);
    }
}

bool SkinReader::Takes(float weight) const
{
    return IsInfluenceWeight(weight) && (m_filter == kNotNegative || weight > 0.0F);
}

void SkinReader::ReadBlock(VertexInfluencesSlab& slab, int begin, int end)
{
    VertexInfluences* const records = slab.GetData();
    for (Entries& entries : m_entries) {
        int entry = entries.cursor;
        while (entry < entries.count && entries.vertices[entry] < begin)
            ++entry;
        for (; entry < entries.count && entries.vertices[entry] < end; ++entry) {
            const float weight = static_cast<float>(entries.weights[entry]);
            if (Takes(weight))
                slab.Add(records[entries.vertices[entry]], entries.link, weight);
            else
                m_passedOver = true;
        }
        entries.cursor = entry;
    }
}

void SkinReader::ReadAll(VertexInfluencesSlab& slab, int vertexCount)
{
    for (const Entries& entries : m_entries) {
        if (entries.vertices == nullptr) {
            ReadEntryByEntry(entries, slab, vertexCount);
            continue;
        }
        for (int entry = 0; entry < entries.count; ++entry) {
            const int vertex = entries.vertices[entry];
            const float weight = static_cast<float>(entries.weights[entry]);
            if (vertex >= 0 && vertex < vertexCount && Takes(weight))
                slab.Add(slab.GetData()[vertex], entries.link, weight);
            else
                m_passedOver = true;
        }
    }
}

void SkinReader::ReadEntryByEntry(const Entries& entries, VertexInfluencesSlab& slab, int vertexCount)
{
    m_links.BeginLink(entries.link);
    const int count = m_links.EntryCount();
    for (int entry = 0; entry < count; ++entry) {
        const int vertex = m_links.EntryVertex(entry);
        const float weight = static_cast<float>(m_links.EntryWeight(entry));
        if (vertex >= 0 && vertex < vertexCount && Takes(weight))
            slab.Add(slab.GetData()[vertex], entries.link, weight);
        else
            m_passedOver = true;
    }
    m_links.EndLink();
}
