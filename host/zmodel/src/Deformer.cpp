// SPDX-License-Identifier: MIT
// Linear blend skinning, link after link over blocks of vertices that stay in the first cache.
#include "Deformer.h"

#include "WorkerPool.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <numeric>

namespace {

// Four lanes: x, y, z and the weight.
using Float4 = float __attribute__((vector_size(16)));

Float4 Load(const float* values)
{
    Float4 loaded;
    std::memcpy(&loaded, values, sizeof loaded);
    return loaded;
}

void Store(float* values, Float4 stored) { std::memcpy(values, &stored, sizeof stored); }

Float4 Spread(float value) { return Float4{value, value, value, value}; }

constexpr int kBlock = 1024;         // vertices whose sums are kept at once: 16 KiB
constexpr int kParallelGrain = 8192; // fewer are not worth waking a thread for

// Sums of weights for which single precision is not enough are rare: files with weights of 1e-42 or 1e38.
constexpr float kSmallestSum = 1e-30F;
constexpr float kLargestSum = 1e30F;

/// A weight that is no number takes no part: it must not spoil what the others say.
bool IsUsable(double weight) { return std::abs(weight) <= static_cast<double>(FLT_MAX); }

} // namespace

struct SkinPose::EntryRange
{
    const LinkState* link;
    const int* vertices;
    const double* weights;
    int next; ///< first entry that has not been passed
    int count;
};

void SkinPose::PlaceLink(LinkState& state, const ZgeMatrix& inverseBind, const ZgeMatrix& toModel) const
{
    ZgeMatrix carried = inverseBind * state.bone->GetTransformMatrix(true) * toModel;
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

bool SkinPose::Update(ZSkin& skin, const ZgeVector3& middle, const ZTransformNode& model)
{
    const bool sameLinks =
        m_linkVersion == skin.GetLinkVersion() && m_links.size() == static_cast<size_t>(skin.LinkCount());
    const bool sameEntries = m_entryVersion == skin.GetVersion();
    const bool all = !sameLinks || m_modelVersion != model.GetTransformVersion() || !(m_middle == middle);
    bool changed = all || !sameEntries;
    if (!sameEntries)
        SortDisorderedLinks(skin);
    m_linkVersion = skin.GetLinkVersion();
    m_entryVersion = skin.GetVersion();
    m_modelVersion = model.GetTransformVersion();
    m_middle = middle;
    m_links.resize(static_cast<size_t>(skin.LinkCount()));
    const ZgeMatrix toModel = ZgeInverse(model.GetTransformMatrix(true), &m_singular);
    for (int link = 0; link < skin.LinkCount(); ++link) {
        LinkState& state = m_links[static_cast<size_t>(link)];
        const ZTransformNode* const bone = skin.LinkModel(link);
        const std::uint64_t version = bone != nullptr ? bone->GetTransformVersion() : 0;
        if (!all && state.bone == bone && state.boneVersion == version)
            continue;
        changed = true;
        state.bone = bone;
        state.boneVersion = version;
        state.takesPart = false;
        if (bone != nullptr)
            PlaceLink(state, skin.GetInverseBind(link), toModel);
    }
    return changed;
}

void SkinPose::SortDisorderedLinks(ZSkin& skin)
{
    m_sorted.clear();
    for (int link = 0; link < static_cast<int>(skin.LinkCount()); ++link) {
        if (skin.AreEntriesAscending(link))
            continue;
        m_sorted.resize(static_cast<size_t>(skin.LinkCount()));
        const ZArrayTemplate<int>& vertices = skin.GetEntryVertices(link);
        std::vector<int> order(static_cast<size_t>(vertices.GetCount()));
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return vertices[a] < vertices[b]; });
        SortedEntries& sorted = m_sorted[static_cast<size_t>(link)];
        for (const int entry : order) {
            sorted.vertices.push_back(vertices[entry]);
            sorted.weights.push_back(skin.GetEntryWeights(link)[entry]);
        }
    }
}

std::vector<SkinPose::EntryRange> SkinPose::CollectEntries(ZSkin& skin) const
{
    std::vector<EntryRange> entries;
    for (size_t link = 0; link < m_links.size(); ++link) {
        if (!m_links[link].takesPart)
            continue;
        if (!m_sorted.empty() && !m_sorted[link].vertices.empty()) {
            const SortedEntries& sorted = m_sorted[link];
            entries.push_back({&m_links[link], sorted.vertices.data(), sorted.weights.data(), 0,
                               static_cast<int>(sorted.vertices.size())});
        } else {
            const ZArrayTemplate<int>& vertices = skin.GetEntryVertices(static_cast<int>(link));
            entries.push_back({&m_links[link], vertices.GetData(),
                               skin.GetEntryWeights(static_cast<int>(link)).GetData(), 0, vertices.GetCount()});
        }
    }
    return entries;
}

/// What the quick pass computes for one vertex in mode 0, all in double. `point` is relative to the middle.
void SkinPose::AddNormalisedOffset(const std::vector<EntryRange>& entries, int vertex, const float* point, float* place)
{
    double sum[4] = {};
    for (const EntryRange& range : entries) {
        const int* const end = range.vertices + range.count;
        for (const int* found = std::lower_bound(range.vertices, end, vertex); found != end && *found == vertex;
             ++found) {
            const double weight = range.weights[found - range.vertices];
            if (!IsUsable(weight))
                continue;
            const auto& rows = range.link->rows;
            for (int column = 0; column < 4; ++column)
                sum[column] += weight * (static_cast<double>(point[0]) * rows[0][column] +
                                         static_cast<double>(point[1]) * rows[1][column] +
                                         static_cast<double>(point[2]) * rows[2][column] + rows[3][column]);
        }
    }
    for (int axis = 0; axis < 3 && sum[3] != 0; ++axis)
        place[axis] += static_cast<float>(sum[axis] / sum[3]);
}

void SkinPose::Deform(ZSkin& skin, const float* points, float* deformed, int count) const
{
    const std::vector<EntryRange> entries = CollectEntries(skin);
    const bool normalise = skin.DeformMode() != kDeformAdditive && skin.DeformMode() != kDeformTotal100;
    ParallelFor(count, kParallelGrain, [&](int begin, int end) {
        std::vector<EntryRange> own = entries;
        for (EntryRange& range : own)
            range.next = static_cast<int>(std::lower_bound(range.vertices, range.vertices + range.count, begin) -
                                          range.vertices);
        DeformRange(own, normalise, points, deformed, begin, end);
    });
}

void SkinPose::DeformRange(std::vector<EntryRange>& entries, bool normalise, const float* points, float* deformed,
                           int begin, int end) const
{
    // Order of additions: a vertex's links in link order, whatever the blocks and threads.
    alignas(16) float sums[4 * kBlock];
    const Float4 middle{static_cast<float>(m_middle.x), static_cast<float>(m_middle.y), static_cast<float>(m_middle.z),
                        0};
    for (int first = begin; first < end; first += kBlock) {
        const int last = std::min(end - first, kBlock) + first;
        std::memset(sums, 0, sizeof(float) * 4 * static_cast<size_t>(last - first));
        for (EntryRange& range : entries) {
            const Float4 row0 = Load(range.link->rows[0]);
            const Float4 row1 = Load(range.link->rows[1]);
            const Float4 row2 = Load(range.link->rows[2]);
            const Float4 row3 = Load(range.link->rows[3]);
            int entry = range.next;
            for (; entry < range.count && range.vertices[entry] < last; ++entry) {
                const double weight = range.weights[entry];
                // A weight that is no number takes no part; it must not spoil what the others say.
                if (!IsUsable(weight))
                    continue;
                const int vertex = range.vertices[entry];
                const Float4 p = Load(points + 4 * static_cast<size_t>(vertex)) - middle;
                float* const sum = sums + 4 * static_cast<size_t>(vertex - first);
                const Float4 offset = Spread(p[0]) * row0 + Spread(p[1]) * row1 + Spread(p[2]) * row2 + row3;
                Store(sum, Load(sum) + Spread(static_cast<float>(weight)) * offset);
            }
            range.next = entry;
        }
        for (int vertex = first; vertex < last; ++vertex) {
            const Float4 sum = Load(sums + 4 * static_cast<size_t>(vertex - first));
            float* const place = deformed + 4 * static_cast<size_t>(vertex);
            const Float4 point = Load(points + 4 * static_cast<size_t>(vertex));
            const float total = std::abs(sum[3]);
            if (!normalise) {
                Store(place, point + sum);
            } else if (total >= kSmallestSum && total <= kLargestSum) {
                Store(place, point + sum / Spread(sum[3]));
            } else {
                Store(place, point);
                float relative[4];
                Store(relative, point - middle);
                if (total != 0)
                    AddNormalisedOffset(entries, vertex, relative, place);
            }
            place[3] = 1;
        }
    }
}

void MorphPositions(const float* points, const std::vector<ZMorphTarget>& targets, const std::vector<float>& weights,
                    float* morphed, int count)
{
    ParallelFor(count, kParallelGrain, [&](int begin, int end) {
        for (int first = begin; first < end; first += kBlock) {
            const int last = std::min(end - first, kBlock) + first;
            float* const block = morphed + 4 * static_cast<size_t>(first);
            std::memcpy(block, points + 4 * static_cast<size_t>(first),
                        sizeof(float) * 4 * static_cast<size_t>(last - first));
            for (size_t target = 0; target < targets.size(); ++target) {
                const float weight = weights[target];
                if (weight == 0)
                    continue;
                const float* const offsets = targets[target].positions.data() + 3 * static_cast<size_t>(first);
                for (size_t i = 0; i < static_cast<size_t>(last - first); ++i) {
                    block[4 * i] += weight * offsets[3 * i];
                    block[4 * i + 1] += weight * offsets[3 * i + 1];
                    block[4 * i + 2] += weight * offsets[3 * i + 2];
                }
            }
        }
    });
}
