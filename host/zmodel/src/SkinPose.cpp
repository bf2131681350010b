// SPDX-License-Identifier: MIT
// Where a skin's links stand, and for which vertices that differs from before.
#include "Deformer.h"

#include "TouchedLog.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

/// More vertices than this are not worth picking out: a pass over all of them runs in memory order.
size_t MostWorthPicking(const ZSkin& skin) { return static_cast<size_t>(std::max(16, skin.GetVertexCount() / 8)); }

} // namespace

SkinPose::Change SkinPose::Update(ZSkin& skin, const ZgeVector3& middle, const ZTransformNode& model,
                                  std::vector<int>& touched)
{
    const bool sameLinks =
        m_linkVersion == skin.GetLinkVersion() && m_links.size() == static_cast<size_t>(skin.LinkCount());
    const bool sameEntries = m_entryVersion == skin.GetVersion();
    bool all = !sameLinks || m_modelVersion != model.GetTransformVersion() || !(m_middle == middle);
    if (!sameLinks)
        m_sorted.clear();
    if (!sameEntries) {
        const bool known = skin.GetTouchedSince(m_touchMark, touched);
        KeepSorted(skin, known ? &touched : nullptr);
        all = all || !known;
    }
    m_linkVersion = skin.GetLinkVersion();
    m_entryVersion = skin.GetVersion();
    m_touchMark = skin.GetTouchMark();
    m_modelVersion = model.GetTransformVersion();
    m_middle = middle;
    std::vector<int> moved;
    all = PlaceLinks(skin, model, all, moved) || all;
    if (all || !AddVerticesOf(skin, moved, touched) || touched.size() > MostWorthPicking(skin)) {
        touched.clear();
        return Change::All;
    }
    SortUnique(touched);
    return touched.empty() ? Change::None : Change::Some;
}

/// Brings the links that moved, or all of them, to where they stand; true when the model's matrix lost or found its
/// inverse, or the deformation began or ceased to mirror.
bool SkinPose::PlaceLinks(ZSkin& skin, const ZTransformNode& model, bool all, std::vector<int>& moved)
{
    const bool wasSingular = m_singular;
    const ZgeMatrix toModel = ZgeInverse(model.GetTransformMatrix(true), &m_singular);
    m_links.resize(static_cast<size_t>(skin.LinkCount()));
    for (int link = 0; link < skin.LinkCount(); ++link) {
        LinkState& state = m_links[static_cast<size_t>(link)];
        const ZTransformNode* const bone = skin.LinkModel(link);
        const std::uint64_t version = bone != nullptr ? bone->GetTransformVersion() : 0;
        if (!all && state.bone == bone && state.boneVersion == version)
            continue;
        moved.push_back(link);
        state.bone = bone;
        state.boneVersion = version;
        state.takesPart = false;
        if (bone != nullptr && skin.GetLinkOption(link) == 0)
            PlaceLink(state, skin.GetInverseBind(link), toModel);
    }
    const bool wasMirrored = m_mirrored;
    CountMirroringLinks();
    return m_singular != wasSingular || m_mirrored != wasMirrored;
}

void SkinPose::CountMirroringLinks()
{
    int more = 0;
    for (const LinkState& state : m_links)
        more += !state.takesPart ? 0 : state.mirrors ? 1 : -1;
    m_mirrored = more > 0;
}

void SkinPose::PlaceLink(LinkState& state, const ZgeMatrix& inverseBind, const ZgeMatrix& toModel) const
{
    ZgeMatrix carried = inverseBind * state.bone->GetTransformMatrix(true) * toModel;
    state.mirrors = ZgeDeterminant3(carried) < 0;
    const ZgeVector3 middle = ZgeTransformPoint(m_middle, carried);
    carried(3, 0) = middle.x - m_middle.x;
    carried(3, 1) = middle.y - m_middle.y;
    carried(3, 2) = middle.z - m_middle.z;
    for (int axis = 0; axis < 3; ++axis)
        carried(axis, axis) -= 1;
    state.takesPart = true;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column) {
            state.rows[row][column] = static_cast<float>(carried(row, column));
            state.takesPart = state.takesPart && std::isfinite(state.rows[row][column]);
        }
        state.rows[row][3] = row == 3 ? 1.0F : 0.0F;
    }
}

/// Links whose vertices do not rise are read through a sorted copy, which follows the weights of the `touched`
/// vertices, or of all (null).
void SkinPose::KeepSorted(ZSkin& skin, const std::vector<int>* touched)
{
    for (int link = 0; link < skin.LinkCount(); ++link) {
        const bool ascending = skin.AreEntriesAscending(link);
        if (ascending && m_sorted.empty())
            continue;
        m_sorted.resize(static_cast<size_t>(skin.LinkCount()));
        SortedEntries& sorted = m_sorted[static_cast<size_t>(link)];
        if (ascending) {
            sorted = SortedEntries();
        } else if (touched == nullptr || sorted.listVersion != skin.GetEntryListVersion(link)) {
            SortEntries(skin, link, sorted);
        } else {
            const double* const weights = skin.GetEntryWeights(link).GetData();
            for (const int vertex : *touched) {
                const auto range = std::equal_range(sorted.vertices.begin(), sorted.vertices.end(), vertex);
                for (auto place = range.first; place != range.second; ++place) {
                    const auto number = static_cast<size_t>(place - sorted.vertices.begin());
                    sorted.weights[number] = weights[sorted.entries[number]];
                }
            }
        }
    }
}

void SkinPose::SortEntries(ZSkin& skin, int link, SortedEntries& sorted)
{
    const ZArrayTemplate<int>& vertices = skin.GetEntryVertices(link);
    const ZArrayTemplate<double>& weights = skin.GetEntryWeights(link);
    sorted.listVersion = skin.GetEntryListVersion(link);
    sorted.entries.resize(static_cast<size_t>(vertices.GetCount()));
    std::iota(sorted.entries.begin(), sorted.entries.end(), 0);
    std::stable_sort(sorted.entries.begin(), sorted.entries.end(),
                     [&](int a, int b) { return vertices[a] < vertices[b]; });
    sorted.vertices.clear();
    sorted.weights.clear();
    for (const int entry : sorted.entries) {
        sorted.vertices.push_back(vertices[entry]);
        sorted.weights.push_back(weights[entry]);
    }
}

/// False when they are so many that all vertices may as well be taken.
bool SkinPose::AddVerticesOf(ZSkin& skin, const std::vector<int>& links, std::vector<int>& touched)
{
    for (const int link : links) {
        const ZArrayTemplate<int>& vertices = skin.GetEntryVertices(link);
        if (touched.size() + static_cast<size_t>(vertices.GetCount()) > MostWorthPicking(skin))
            return false;
        touched.insert(touched.end(), vertices.GetData(), vertices.GetData() + vertices.GetCount());
    }
    return true;
}
