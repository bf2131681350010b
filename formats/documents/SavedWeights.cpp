// SPDX-License-Identifier: MIT
#include "documents/SavedWeights.h"

#include "zmodel/ZSkin.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace gltf = skindesk::gltf;

namespace {

bool IsSameWeight(double now, double saved)
{
    return now == saved || std::abs(now - saved) <= gltf::WEIGHT_TOLERANCE || (std::isnan(now) && std::isnan(saved));
}

/// An entry that another one within the tolerance would not stand for: not a number is such a one.
bool IsWeight(double weight) { return !(std::abs(weight) <= gltf::WEIGHT_TOLERANCE); }

/// By their bits: a file may hold a matrix of what is no number, and that is equal to nothing.
bool HasSameBits(const ZgeMatrix& one, const ZgeMatrix& other)
{
    const auto bits = [](double number) { return std::bit_cast<std::uint64_t>(number); };
    return std::equal(one.Data(), one.Data() + 16, other.Data(),
                      [&](double a, double b) { return bits(a) == bits(b); });
}

} // namespace

void SavedWeights::NoteLinks(ZSkin& skin)
{
    m_links.clear();
    for (int link = 0; link < skin.LinkCount(); ++link)
        m_links.push_back({skin.LinkModel(link), skin.GetInverseBind(link)});
    m_version = skin.GetVersion();
    m_changed = false;
}

void SavedWeights::NoteOpened(ZSkin& skin, const gltf::Influences& influences)
{
    m_opened = &influences;
    NoteLinks(skin);
}

void SavedWeights::NoteSaved(ZSkin& skin)
{
    if (skin.GetVersion() != m_version || m_changed) {
        std::vector<int> offsets, links;
        std::vector<double> weights;
        skin.BuildCsr(offsets, links, weights);
        m_own.offsets.assign(offsets.begin(), offsets.end());
        m_own.joints.assign(links.begin(), links.end());
        m_own.weights.assign(weights.begin(), weights.end());
        m_opened = nullptr;
    }
    NoteLinks(skin);
}

bool SavedWeights::HasSameLinks(ZSkin& skin) const
{
    if (skin.LinkCount() != static_cast<int>(m_links.size()))
        return false;
    for (int link = 0; link < skin.LinkCount(); ++link) {
        const Link& saved = m_links[static_cast<size_t>(link)];
        if (skin.LinkModel(link) != saved.bone || !HasSameBits(skin.GetInverseBind(link), saved.inverseBind))
            return false;
    }
    return true;
}

/// Link by link, each entry looked up in the saved row of its vertex, which is a few numbers long. What was saved and
/// has no entry any more shows in the count.
bool SavedWeights::HasSameWeights(const ZSkin& skin) const
{
    const gltf::Influences& saved = Saved();
    const size_t vertices = saved.VertexCount();
    size_t found = 0, all = 0;
    for (const float weight : saved.weights)
        all += IsWeight(static_cast<double>(weight));
    for (int link = 0; link < static_cast<int>(m_links.size()); ++link) {
        const ZArrayTemplate<int>& entries = skin.GetEntryVertices(link);
        const ZArrayTemplate<double>& weights = skin.GetEntryWeights(link);
        for (int entry = 0; entry < entries.GetCount(); ++entry) {
            const auto vertex = static_cast<size_t>(entries[entry]);
            double before = 0;
            if (vertex < vertices)
                for (std::uint32_t at = saved.offsets[vertex]; at < saved.offsets[vertex + 1]; ++at)
                    if (saved.joints[at] == static_cast<std::uint32_t>(link))
                        before = static_cast<double>(saved.weights[at]);
            if (!IsSameWeight(weights[entry], before))
                return false;
            found += IsWeight(before);
        }
    }
    return found == all;
}

bool SavedWeights::IsChanged(ZSkin& skin, bool historyMoved, bool isGesture)
{
    if (skin.GetVersion() == m_version)
        return m_changed;
    if (isGesture)
        return true;
    if (!m_changed || historyMoved)
        m_changed = !HasSameLinks(skin) || !HasSameWeights(skin);
    m_version = skin.GetVersion();
    return m_changed;
}
