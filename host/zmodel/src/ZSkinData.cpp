// SPDX-License-Identifier: MIT
// The skin for whoever fills it from a file, draws it or reads it back; and the count of rewritten vertices.
#include "SkinLink.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZModel.h"

#include <cmath>
#include <string>
#include <utility>

ZModel* ZSkin::GetOwner() const { return m_state->owner; }

int ZSkin::GetVertexCount() const { return m_vertexCount; }

void ZSkin::SetEntries(int link, ZArrayTemplate<int>&& vertices, ZArrayTemplate<double>&& weights)
{
    if (!HasLink("ZSkin::SetEntries", link))
        return;
    if (vertices.GetCount() != weights.GetCount()) {
        ZReport_Misuse("ZSkin::SetEntries", std::to_string(vertices.GetCount()) + " vertices have " +
                                                std::to_string(weights.GetCount()) + " weights.");
        return;
    }
    for (const int vertex : vertices) {
        if (vertex < 0 || vertex >= m_vertexCount) {
            RefuseVertex("ZSkin::SetEntries", vertex);
            return;
        }
    }
    EndRewrite();
    Link& target = *m_state->links[static_cast<size_t>(link)];
    target.Clear();
    target.vertices = std::move(vertices);
    target.weights = std::move(weights);
    for (int entry = 0; entry < target.vertices.GetCount(); ++entry)
        target.runs.Append(entry, target.vertices[entry]);
    m_state->touched.AddAll();
    ++m_version;
}

const ZArrayTemplate<int>& ZSkin::GetEntryVertices(int link) const
{
    static const ZArrayTemplate<int> s_none{};
    return HasLink("ZSkin::GetEntryVertices", link) ? m_state->links[static_cast<size_t>(link)]->vertices : s_none;
}

const ZArrayTemplate<double>& ZSkin::GetEntryWeights(int link) const
{
    static const ZArrayTemplate<double> s_none{};
    return HasLink("ZSkin::GetEntryWeights", link) ? m_state->links[static_cast<size_t>(link)]->weights : s_none;
}

bool ZSkin::AreEntriesAscending(int link) const
{
    return HasLink("ZSkin::AreEntriesAscending", link) && m_state->links[static_cast<size_t>(link)]->runs.IsAscending();
}

const ZgeMatrix& ZSkin::GetInverseBind(int link) const
{
    static const ZgeMatrix s_identity;
    return HasLink("ZSkin::GetInverseBind", link) ? m_state->links[static_cast<size_t>(link)]->inverseBind : s_identity;
}

int ZSkin::GetLinkOption(int link) const
{
    return HasLink("ZSkin::GetLinkOption", link) ? m_state->links[static_cast<size_t>(link)]->option : 0;
}

double ZSkin::GetDisplayValue() const { return m_state->displayValue; }

std::uint64_t ZSkin::GetLinkVersion() const { return m_state->linkVersion; }

std::uint64_t ZSkin::GetEntryListVersion(int link) const
{
    if (!HasLink("ZSkin::GetEntryListVersion", link))
        return 0;
    // Between two clearings entries are only appended: the count tells.
    const Link& asked = *m_state->links[static_cast<size_t>(link)];
    return (static_cast<std::uint64_t>(asked.clearings) << 32U) | static_cast<unsigned>(asked.vertices.GetCount());
}

std::uint64_t ZSkin::GetTouchMark() const { return m_state->touched.GetMark(); }

bool ZSkin::GetTouchedSince(std::uint64_t mark, std::vector<int>& vertices) const
{
    return m_state->touched.GetSince(mark, vertices);
}

void ZSkin::BuildCsr(std::vector<int>& offsets, std::vector<int>& links, std::vector<double>& weights) const
{
    offsets.assign(static_cast<size_t>(m_vertexCount) + 1, 0);
    for (const std::unique_ptr<Link>& link : m_state->links)
        for (const int vertex : link->vertices)
            ++offsets[static_cast<size_t>(vertex) + 1];
    for (size_t i = 1; i < offsets.size(); ++i)
        offsets[i] += offsets[i - 1];
    links.resize(static_cast<size_t>(offsets.back()));
    weights.resize(links.size());
    std::vector<int> next(offsets.begin(), offsets.end() - 1);
    for (size_t number = 0; number < m_state->links.size(); ++number) {
        const Link& link = *m_state->links[number];
        for (int entry = 0; entry < link.vertices.GetCount(); ++entry) {
            const auto place = static_cast<size_t>(next[static_cast<size_t>(link.vertices[entry])]++);
            links[place] = static_cast<int>(number);
            weights[place] = link.weights[entry];
        }
    }
}

// A guest rewrites a skin by clearing its links and adding entries anew. The first link that is cleared begins such a
// rewrite: the sums of all vertices are taken then, once, and compared when somebody asks for the count or when weights
// change in another way. Nothing is added to the cost of an entry; the sums (a double a vertex) live only in between.

std::vector<double> ZSkin::State::SumWeights(int vertexCount) const
{
    std::vector<double> sums(static_cast<size_t>(vertexCount), 0.0);
    for (const std::unique_ptr<Link>& link : links) {
        const double* const weights = link->weights.GetData();
        const int* const vertices = link->vertices.GetData();
        for (int entry = 0; entry < link->vertices.GetCount(); ++entry)
            sums[static_cast<size_t>(vertices[entry])] += weights[entry];
    }
    return sums;
}

void ZSkin::BeginRewrite()
{
    if (m_rewriting)
        return;
    m_state->sumsBefore = m_state->SumWeights(m_vertexCount);
    m_rewriting = true;
}

void ZSkin::EndRewrite()
{
    if (!m_rewriting)
        return;
    constexpr double kUnchanged = 1e-6;
    const std::vector<double> before = std::move(m_state->sumsBefore);
    const std::vector<double> after = m_state->SumWeights(m_vertexCount);
    for (size_t vertex = 0; vertex < before.size(); ++vertex) {
        const bool bothBroken = !std::isfinite(before[vertex]) && !std::isfinite(after[vertex]);
        if (!bothBroken && !(std::abs(before[vertex] - after[vertex]) <= kUnchanged))
            ++m_state->normalisedCount;
    }
    m_state->sumsBefore = std::vector<double>();
    m_rewriting = false;
}

int ZSkin::TakeNormalisedCount()
{
    EndRewrite();
    return std::exchange(m_state->normalisedCount, 0);
}
