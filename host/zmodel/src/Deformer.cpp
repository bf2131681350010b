// SPDX-License-Identifier: MIT
// Linear blend skinning, link after link over blocks of vertices that stay in the first cache.
#include "Deformer.h"

#include "WorkerPool.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstring>

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

bool Normalises(ZSkin& skin) { return skin.DeformMode() != kDeformAdditive && skin.DeformMode() != kDeformTotal100; }

} // namespace

struct SkinPose::EntryRange
{
    const LinkState* link;
    const int* vertices;
    const double* weights;
    int next; ///< first entry that has not been passed
    int count;
};

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
    const bool normalise = Normalises(skin);
    ParallelFor(count, kParallelGrain, [&](int begin, int end) {
        std::vector<EntryRange> own = entries;
        for (EntryRange& range : own)
            range.next = static_cast<int>(std::lower_bound(range.vertices, range.vertices + range.count, begin) -
                                          range.vertices);
        DeformRange(own, normalise, points, deformed, begin, end);
    });
}

void SkinPose::DeformSome(ZSkin& skin, const float* points, float* deformed, const std::vector<int>& vertices) const
{
    const std::vector<EntryRange> entries = CollectEntries(skin);
    const bool normalise = Normalises(skin);
    ParallelFor(static_cast<int>(vertices.size()), kParallelGrain, [&](int begin, int end) {
        std::vector<EntryRange> own = entries;
        DeformListed(own, normalise, points, deformed, vertices.data() + begin, vertices.data() + end);
    });
}

// Order of additions: a vertex's links in link order, whatever the blocks and threads, and whether all vertices are
// computed or some: the two loops below give a vertex the same bits.

/// What both loops know of a block of vertices, and the one thing that they do for an entry.
struct SkinPose::Block
{
    explicit Block(const ZgeVector3& about, const float* undeformed)
        : middle{static_cast<float>(about.x), static_cast<float>(about.y), static_cast<float>(about.z), 0},
          points(undeformed)
    {
    }
    void Clear(int count) { std::memset(sums, 0, sizeof(float) * 4 * static_cast<size_t>(count)); }
    float* SumOf(int place) { return sums + 4 * static_cast<size_t>(place); }

    alignas(16) float sums[4 * kBlock];
    Float4 middle;
    const float* points;
};

namespace {

/// The displacement rows of a link, ready for use.
struct Rows
{
    explicit Rows(const float (&rows)[4][4])
        : row0(Load(rows[0])), row1(Load(rows[1])), row2(Load(rows[2])), row3(Load(rows[3]))
    {
    }
    void AddTo(float* sum, const float* point, Float4 middle, double weight) const
    {
        if (!IsUsable(weight))
            return;
        const Float4 p = Load(point) - middle;
        const Float4 offset = Spread(p[0]) * row0 + Spread(p[1]) * row1 + Spread(p[2]) * row2 + row3;
        Store(sum, Load(sum) + Spread(static_cast<float>(weight)) * offset);
    }
    Float4 row0, row1, row2, row3;
};

/// The first place at or after `from` in a rising list whose number is not below `wanted`: in steps that double, so
/// that a near one is found at once and a far one in few looks.
int FindFrom(const int* rising, int from, int count, int wanted)
{
    int step = 1;
    int below = from;
    while (below < count && rising[below] < wanted) {
        from = below + 1;
        below += step;
        step *= 2;
    }
    return static_cast<int>(std::lower_bound(rising + from, rising + std::min(below, count), wanted) - rising);
}

} // namespace

void SkinPose::DeformRange(std::vector<EntryRange>& entries, bool normalise, const float* points, float* deformed,
                           int begin, int end) const
{
    Block block(m_middle, points);
    for (int first = begin; first < end; first += kBlock) {
        const int last = std::min(end - first, kBlock) + first;
        block.Clear(last - first);
        for (EntryRange& range : entries) {
            const Rows rows(range.link->rows);
            int entry = range.next;
            for (; entry < range.count && range.vertices[entry] < last; ++entry) {
                const int vertex = range.vertices[entry];
                rows.AddTo(block.SumOf(vertex - first), points + 4 * static_cast<size_t>(vertex), block.middle,
                           range.weights[entry]);
            }
            range.next = entry;
        }
        for (int vertex = first; vertex < last; ++vertex)
            PlaceVertex(entries, normalise, block, vertex, block.SumOf(vertex - first),
                        deformed + 4 * static_cast<size_t>(vertex));
    }
}

void SkinPose::DeformListed(std::vector<EntryRange>& entries, bool normalise, const float* points, float* deformed,
                            const int* begin, const int* end) const
{
    Block block(m_middle, points);
    for (const int* first = begin; first < end; first += kBlock) {
        const int count = static_cast<int>(std::min<std::ptrdiff_t>(end - first, kBlock));
        block.Clear(count);
        for (EntryRange& range : entries) {
            const Rows rows(range.link->rows);
            int place = 0;
            // Both lists rise: each jumps to where the other one is.
            while (place < count) {
                range.next = FindFrom(range.vertices, range.next, range.count, first[place]);
                if (range.next == range.count)
                    break;
                const int vertex = range.vertices[range.next];
                place = FindFrom(first, place, count, vertex);
                if (place == count || first[place] != vertex)
                    continue;
                for (; range.next < range.count && range.vertices[range.next] == vertex; ++range.next)
                    rows.AddTo(block.SumOf(place), points + 4 * static_cast<size_t>(vertex), block.middle,
                               range.weights[range.next]);
                ++place;
            }
        }
        for (int place = 0; place < count; ++place)
            PlaceVertex(entries, normalise, block, first[place], block.SumOf(place),
                        deformed + 4 * static_cast<size_t>(first[place]));
    }
}

/// From the sum over a vertex's links to its deformed place.
void SkinPose::PlaceVertex(const std::vector<EntryRange>& entries, bool normalise, const Block& block, int vertex,
                           const float* sumOfLinks, float* place)
{
    const Float4 sum = Load(sumOfLinks);
    const Float4 point = Load(block.points + 4 * static_cast<size_t>(vertex));
    const float total = std::abs(sum[3]);
    if (!normalise) {
        Store(place, point + sum);
    } else if (total >= kSmallestSum && total <= kLargestSum) {
        Store(place, point + sum / Spread(sum[3]));
    } else {
        Store(place, point);
        float relative[4];
        Store(relative, point - block.middle);
        if (total != 0)
            AddNormalisedOffset(entries, vertex, relative, place);
    }
    place[3] = 1;
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
