// SPDX-License-Identifier: MIT
// Makes one desk vertex of the file vertices that a seam has split.
#include "SeamJoin.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace skindesk::gltf {

namespace {

constexpr std::size_t BLOCK_SIZE = 256;
constexpr double FAR_FROM_ONE = 0.01;

std::uint64_t Mixed(std::uint64_t hash, std::uint64_t word)
{
    hash = (hash ^ word) * 0x9FB21C651E98DF25u;
    return hash ^ hash >> 29;
}

std::uint64_t PairOf(std::uint32_t low, std::uint32_t high) { return static_cast<std::uint64_t>(high) << 32 | low; }

// Minus zero is the same place as zero; adding zero turns the one into the other and leaves everything else.
void UnifyZeros(std::vector<float>& numbers)
{
    for (float& x : numbers) {
        x += 0.0F;
    }
}

} // namespace

void OddWeights::Add(const OddWeights& other)
{
    notNumbers += other.notNumbers;
    infinite += other.infinite;
    negative += other.negative;
    none += other.none;
    farFromOne += other.farFromOne;
    jointTwice += other.jointTwice;
    farthest = std::max(farthest, other.farthest);
}

SeamJoin::SeamJoin(Mesh& mesh, std::size_t expected, bool joinsSeams) : m_mesh(mesh), m_joinsSeams(joinsSeams)
{
    if (joinsSeams) {
        m_table.resize(std::bit_ceil(std::max<std::size_t>(16, expected + expected / 2)));
    }
    mesh.positions.reserve(expected * 3);
    mesh.influences.offsets.reserve(expected + 1);
}

VertexMap SeamJoin::Add(const AttributeSet& set)
{
    const std::size_t count = set.positions.Count();
    // Most vertices use no more than four slots; memory that is never written costs nothing.
    m_mesh.influences.joints.reserve(m_mesh.influences.joints.size() + (set.influences.empty() ? 0 : count * 4));
    m_mesh.influences.weights.reserve(m_mesh.influences.weights.size() + (set.influences.empty() ? 0 : count * 4));
    VertexMap map;
    map.deskVertices.resize(count);
    for (std::size_t first = 0; first < count; first += BLOCK_SIZE) {
        Decode(set, first, std::min(BLOCK_SIZE, count - first));
        for (std::size_t i = 0; i < m_block.count; ++i) {
            map.deskVertices[first + i] = static_cast<std::int32_t>(FindOrAdd(i));
        }
    }
    return map;
}

void SeamJoin::Decode(const AttributeSet& set, std::size_t first, std::size_t count)
{
    Block& block = m_block;
    block.count = count;
    block.positions.resize(count * 3);
    set.positions.Floats(first, count, block.positions.data());
    UnifyZeros(block.positions);
    block.normals.assign(set.normals ? count * 3 : 0, 0.0F);
    if (set.normals) {
        set.normals->Floats(first, count, block.normals.data());
    }
    block.morphs.resize(m_mesh.morphTargets.size());
    for (std::size_t t = 0; t < block.morphs.size(); ++t) {
        block.morphs[t].assign(count * 3, 0.0F);
        if (t < set.morphPositions.size() && set.morphPositions[t]) {
            set.morphPositions[t]->Floats(first, count, block.morphs[t].data());
            UnifyZeros(block.morphs[t]);
        }
    }
    const std::size_t sets = set.influences.size();
    block.joints.resize(sets * count * 4);
    block.weights.resize(sets * count * 4);
    for (std::size_t s = 0; s < sets; ++s) {
        set.influences[s].joints.Unsigned(first, count, block.joints.data() + s * count * 4);
        set.influences[s].weights.Floats(first, count, block.weights.data() + s * count * 4);
    }
    block.entries.clear();
    block.rowEnds.resize(count);
    block.hashes.resize(count);
    block.jointTwice.assign(count, 0);
    for (std::size_t i = 0; i < count; ++i) {
        MakeRow(i, sets);
        if (m_joinsSeams) {
            block.hashes[i] = HashOfRow(i);
            __builtin_prefetch(&m_table[block.hashes[i] & (m_table.size() - 1)]);
        }
    }
}

// The slots of a vertex as entries with ascending, unique joints.
void SeamJoin::MakeRow(std::size_t vertex, std::size_t sets)
{
    Block& block = m_block;
    const std::size_t start = block.entries.size();
    for (std::size_t s = 0; s < sets; ++s) {
        const std::size_t slots = (s * block.count + vertex) * 4;
        for (std::size_t k = slots; k < slots + 4; ++k) {
            const Entry entry{block.joints[k], block.weights[k]};
            if (entry.weight == 0.0F) {
                continue;
            }
            std::size_t at = block.entries.size();
            while (at > start && block.entries[at - 1].joint > entry.joint) {
                --at;
            }
            if (at > start && block.entries[at - 1].joint == entry.joint) {
                block.entries[at - 1].weight += entry.weight;
                block.jointTwice[vertex] = 1;
            } else {
                block.entries.insert(block.entries.begin() + static_cast<std::ptrdiff_t>(at), entry);
            }
        }
    }
    if (block.jointTwice[vertex] != 0) {
        // Two slots of one joint may have cancelled each other out.
        const auto row = block.entries.begin() + static_cast<std::ptrdiff_t>(start);
        block.entries.erase(std::remove_if(row, block.entries.end(), [](const Entry& e) { return e.weight == 0.0F; }),
                            block.entries.end());
    }
    block.rowEnds[vertex] = static_cast<std::uint32_t>(block.entries.size());
}

std::uint32_t SeamJoin::HashOfRow(std::size_t i) const
{
    const auto bits = [](float x) { return std::bit_cast<std::uint32_t>(x); };
    const auto point = [&bits](std::uint64_t hash, const float* p) {
        return Mixed(Mixed(hash, PairOf(bits(p[0]), bits(p[1]))), bits(p[2]));
    };
    std::uint64_t hash = point(0x2545F4914F6CDD1Du, &m_block.positions[3 * i]);
    for (const std::vector<float>& morph : m_block.morphs) {
        hash = point(hash, &morph[3 * i]);
    }
    for (std::size_t e = RowStart(i); e < m_block.rowEnds[i]; ++e) {
        hash = Mixed(hash, PairOf(m_block.entries[e].joint, bits(m_block.entries[e].weight)));
    }
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

bool SeamJoin::IsSame(std::size_t i, std::uint32_t vertex) const
{
    const auto samePoint = [i, vertex](const std::vector<float>& mine, const std::vector<float>& theirs) {
        // The same bits, as the hash takes them: a place that is not a number equals itself, and -0 is not 0.
        // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
        return std::memcmp(&mine[3 * i], &theirs[std::size_t{3} * vertex], 3 * sizeof(float)) == 0;
    };
    if (!samePoint(m_block.positions, m_mesh.positions)) {
        return false;
    }
    for (std::size_t t = 0; t < m_block.morphs.size(); ++t) {
        if (!samePoint(m_block.morphs[t], m_mesh.morphTargets[t].positions)) {
            return false;
        }
    }
    const Influences& known = m_mesh.influences;
    std::size_t at = known.offsets[vertex];
    if (m_block.rowEnds[i] - RowStart(i) != known.offsets[vertex + 1] - at) {
        return false;
    }
    for (std::size_t e = RowStart(i); e < m_block.rowEnds[i]; ++e, ++at) {
        // Bits, not values: a weight that is not a number is the same as its like.
        if (m_block.entries[e].joint != known.joints[at] || std::bit_cast<std::uint32_t>(m_block.entries[e].weight) !=
                                                                std::bit_cast<std::uint32_t>(known.weights[at])) {
            return false;
        }
    }
    return true;
}

std::uint32_t SeamJoin::FindOrAdd(std::size_t i)
{
    std::uint32_t vertex = EMPTY;
    if (!m_joinsSeams) {
        vertex = Append(i);
    } else {
        if (m_mesh.VertexCount() * 4 >= m_table.size() * 3) {
            Grow();
        }
        std::size_t at = m_block.hashes[i] & (m_table.size() - 1);
        while (m_table[at].vertex != EMPTY &&
               (m_table[at].hash != m_block.hashes[i] || !IsSame(i, m_table[at].vertex))) {
            at = (at + 1) & (m_table.size() - 1);
        }
        if (m_table[at].vertex == EMPTY) {
            m_table[at] = {m_block.hashes[i], Append(i)};
        }
        vertex = m_table[at].vertex;
    }
    if (!m_block.normals.empty()) {
        m_mesh.normals.resize(m_mesh.positions.size());
        for (std::size_t c = 0; c < 3; ++c) {
            m_mesh.normals[std::size_t{3} * vertex + c] += m_block.normals[3 * i + c];
        }
    }
    return vertex;
}

std::uint32_t SeamJoin::Append(std::size_t i)
{
    const auto vertex = static_cast<std::uint32_t>(m_mesh.VertexCount());
    const auto append = [i](const std::vector<float>& from, std::vector<float>& to) {
        to.resize(to.size() + 3);
        std::memcpy(&to[to.size() - 3], &from[3 * i], 3 * sizeof(float));
    };
    append(m_block.positions, m_mesh.positions);
    for (std::size_t t = 0; t < m_block.morphs.size(); ++t) {
        append(m_block.morphs[t], m_mesh.morphTargets[t].positions);
    }
    Influences& influences = m_mesh.influences;
    for (std::size_t e = RowStart(i); e < m_block.rowEnds[i]; ++e) {
        influences.joints.push_back(m_block.entries[e].joint);
        influences.weights.push_back(m_block.entries[e].weight);
        m_jointLimit = std::max(m_jointLimit, std::size_t{m_block.entries[e].joint} + 1);
    }
    influences.offsets.push_back(static_cast<std::uint32_t>(influences.joints.size()));
    NoteOddities(i);
    return vertex;
}

void SeamJoin::NoteOddities(std::size_t i)
{
    double sum = 0;
    bool notNumber = false;
    bool infinite = false;
    bool negative = false;
    for (std::size_t e = RowStart(i); e < m_block.rowEnds[i]; ++e) {
        const float weight = m_block.entries[e].weight;
        notNumber |= std::isnan(weight);
        infinite |= std::isinf(weight);
        negative |= weight < 0;
        sum += weight;
    }
    const bool isEmpty = RowStart(i) == m_block.rowEnds[i];
    m_odd.notNumbers += notNumber ? 1 : 0;
    m_odd.infinite += infinite ? 1 : 0;
    m_odd.negative += negative ? 1 : 0;
    m_odd.none += isEmpty ? 1 : 0;
    m_odd.jointTwice += m_block.jointTwice[i];
    if (!isEmpty && std::isfinite(sum) && std::abs(sum - 1) > FAR_FROM_ONE) {
        ++m_odd.farFromOne;
        m_odd.farthest = std::max(m_odd.farthest, std::abs(sum - 1));
    }
}

void SeamJoin::Grow()
{
    std::vector<Slot> larger(m_table.size() * 2);
    for (const Slot& slot : m_table) {
        if (slot.vertex != EMPTY) {
            std::size_t at = slot.hash & (larger.size() - 1);
            while (larger[at].vertex != EMPTY) {
                at = (at + 1) & (larger.size() - 1);
            }
            larger[at] = slot;
        }
    }
    m_table = std::move(larger);
}

void SeamJoin::Finish()
{
    if (!m_mesh.normals.empty()) {
        m_mesh.normals.resize(m_mesh.positions.size());
    }
    for (std::size_t i = 0; i + 2 < m_mesh.normals.size(); i += 3) {
        float* n = &m_mesh.normals[i];
        const float length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
        for (int c = 0; c < 3 && length > 0; ++c) {
            n[c] /= length;
        }
    }
}

} // namespace skindesk::gltf
