// SPDX-License-Identifier: MIT
// What a saving has to write for one model.
#include "WeightRows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numeric>
#include <stdexcept>
#include <string>
#include <unordered_map>

namespace skindesk::gltf {

namespace {

using Row = std::vector<Influence>;

bool SameWeight(double a, double b)
{
    return a == b || std::abs(a - b) <= WEIGHT_TOLERANCE || (std::isnan(a) && std::isnan(b));
}

// Both rows ascend by joint.
bool SameRows(const Row& a, const Row& b)
{
    std::size_t i = 0;
    std::size_t k = 0;
    while (i < a.size() || k < b.size()) {
        const bool onlyA = k == b.size() || (i < a.size() && a[i].joint < b[k].joint);
        const bool onlyB = !onlyA && (i == a.size() || b[k].joint < a[i].joint);
        if (!SameWeight(onlyB ? 0 : a[i].weight, onlyA ? 0 : b[k].weight)) {
            return false;
        }
        i += onlyB ? 0 : 1;
        k += onlyA ? 0 : 1;
    }
    return true;
}

void FileRow(const Influences& influences, std::size_t vertex, Row& row)
{
    row.clear();
    for (std::size_t e = influences.offsets[vertex]; e < influences.offsets[vertex + 1]; ++e) {
        row.push_back({influences.joints[e], influences.weights[e]});
    }
}

double SumOf(std::span<const Influence> row)
{
    return std::accumulate(row.begin(), row.end(), 0.0, [](double sum, const Influence& i) { return sum + i.weight; });
}

void Scale(Row& row, double factor)
{
    for (Influence& i : row) {
        i.weight *= factor;
    }
}

// Weights that are no numbers go last, so that the order is one.
bool IsLarger(const Influence& a, const Influence& b)
{
    const double low = -std::numeric_limits<double>::infinity();
    const double wa = std::isnan(a.weight) ? low : a.weight;
    const double wb = std::isnan(b.weight) ? low : b.weight;
    return wa != wb ? wa > wb : a.joint < b.joint;
}

// The host's weights of a model, checked.
class DeskWeights
{
public:
    DeskWeights(const Mesh& mesh, const ModelWeights& weights, std::size_t jointCount)
        : m_weights(weights), m_jointCount(jointCount)
    {
        const std::size_t vertices = mesh.VertexCount();
        if (weights.offsets.size() != vertices + 1 || weights.offsets.front() != 0 ||
            !std::is_sorted(weights.offsets.begin(), weights.offsets.end()) ||
            weights.offsets.back() != weights.joints.size() || weights.joints.size() != weights.weights.size()) {
            throw std::invalid_argument("weights of node " + std::to_string(weights.node) + " do not fit its mesh of " +
                                        std::to_string(vertices) + " vertices");
        }
    }

    // Ascending by joint, each joint once, no zeros.
    void ReadRow(std::size_t vertex, Row& row) const
    {
        row.clear();
        bool isSorted = true;
        for (std::size_t e = m_weights.offsets[vertex]; e < m_weights.offsets[vertex + 1]; ++e) {
            const Influence entry{m_weights.joints[e], m_weights.weights[e]};
            if (entry.joint >= m_jointCount) {
                throw std::invalid_argument("joint " + std::to_string(entry.joint) + " of " +
                                            std::to_string(m_jointCount) + " has weight on node " +
                                            std::to_string(m_weights.node));
            }
            if (entry.weight != 0) {
                isSorted = isSorted && (row.empty() || row.back().joint < entry.joint);
                row.push_back(entry);
            }
        }
        if (!isSorted) {
            MergeJoints(row);
        }
    }

    // Whether the row has the file's joints in the file's order with the file's weights: true for most vertices of a
    // large mesh, and cheap to see. False says nothing.
    [[nodiscard]] bool IsPlainlySame(const Influences& file, std::size_t vertex) const
    {
        const std::size_t mine = m_weights.offsets[vertex];
        const std::size_t theirs = file.offsets[vertex];
        const std::size_t count = m_weights.offsets[vertex + 1] - mine;
        if (count != file.offsets[vertex + 1] - theirs) {
            return false;
        }
        for (std::size_t k = 0; k < count; ++k) {
            if (m_weights.joints[mine + k] != file.joints[theirs + k] ||
                !(std::abs(m_weights.weights[mine + k] - file.weights[theirs + k]) <= WEIGHT_TOLERANCE)) {
                return false;
            }
        }
        return true;
    }

private:
    static void MergeJoints(Row& row)
    {
        std::stable_sort(row.begin(), row.end(),
                         [](const Influence& a, const Influence& b) { return a.joint < b.joint; });
        std::size_t kept = 0;
        for (std::size_t i = 1; i < row.size(); ++i) {
            if (row[i].joint == row[kept].joint) {
                row[kept].weight += row[i].weight;
            } else {
                row[++kept] = row[i];
            }
        }
        row.resize(std::min(row.size(), kept + 1));
    }

    const ModelWeights& m_weights;
    std::size_t m_jointCount;
};

// For each control point the first one at the same place.
std::vector<std::uint32_t> FirstAtPlace(const std::vector<float>& positions)
{
    struct Place
    {
        std::array<float, 3> at;
        bool operator==(const Place&) const = default;
    };
    struct PlaceHash
    {
        std::size_t operator()(const Place& p) const
        {
            std::uint64_t hash = 0;
            for (const float x : p.at) {
                hash = (hash ^ std::bit_cast<std::uint32_t>(x)) * 0x9FB21C651E98DF25u;
                hash ^= hash >> 29;
            }
            return hash;
        }
    };
    std::unordered_map<Place, std::uint32_t, PlaceHash> first;
    std::vector<std::uint32_t> result(positions.size() / 3);
    for (std::uint32_t i = 0; i < result.size(); ++i) {
        const float* p = &positions[std::size_t{3} * i];
        result[i] = first.try_emplace(Place{{p[0], p[1], p[2]}}, i).first->second;
    }
    return result;
}

class RowMaker
{
public:
    RowMaker(const Mesh& mesh, const ModelWeights* weights, std::size_t jointCount, const RowRules& rules,
             RowCounts& counts)
        : m_mesh(mesh), m_rules(rules), m_counts(counts)
    {
        if (weights != nullptr) {
            m_desk.emplace(mesh, *weights, jointCount);
        }
        if (mesh.nurbs) {
            m_firstAtPlace = FirstAtPlace(mesh.positions);
        }
    }

    WeightRows Make()
    {
        for (std::size_t v = 0; v < m_mesh.VertexCount(); ++v) {
            MakeRow(v);
        }
        return std::move(m_rows);
    }

private:
    void ReadDeskRow(std::size_t vertex, Row& row) const
    {
        if (m_desk) {
            m_desk->ReadRow(vertex, row);
        } else {
            FileRow(m_mesh.influences, vertex, row);
        }
    }

    void MakeRow(std::size_t vertex)
    {
        if (m_desk && m_rules.limit == 0 && !m_rules.allRows && m_firstAtPlace.empty() &&
            m_desk->IsPlainlySame(m_mesh.influences, vertex)) {
            return;
        }
        FileRow(m_mesh.influences, vertex, m_old);
        ReadDeskRow(vertex, m_new);
        TieSeam(vertex);
        const bool isChanged = !SameRows(m_old, m_new);
        if (isChanged) {
            ++m_counts.changed;
            CheckFinite();
            if (m_new.empty()) {
                ++m_counts.weightless;
            }
            const double sum = SumOf(m_new);
            if (m_rules.renormalise && sum > 0) {
                Scale(m_new, 1 / sum);
            }
        } else {
            m_new = m_old;
        }
        const bool isLimited = Limit();
        if (isChanged || isLimited || m_rules.allRows) {
            Keep(vertex, isChanged || isLimited);
        }
    }

    void TieSeam(std::size_t vertex)
    {
        if (m_firstAtPlace.empty() || m_firstAtPlace[vertex] == vertex) {
            return;
        }
        ReadDeskRow(m_firstAtPlace[vertex], m_first);
        if (!SameRows(m_first, m_new)) {
            ++m_counts.unequalSeams;
            if (m_rules.tieSeams) {
                m_new = m_first;
            }
        }
    }

    void CheckFinite() const
    {
        for (const Influence& i : m_new) {
            if (!std::isfinite(i.weight)) {
                throw std::invalid_argument("a changed weight is not a finite number");
            }
        }
    }

    // Drops all but the largest; what stays weighs together what all did.
    bool Limit()
    {
        std::sort(m_new.begin(), m_new.end(), IsLarger);
        const auto limit = static_cast<std::size_t>(m_rules.limit);
        if (limit == 0 || m_new.size() <= limit) {
            return false;
        }
        ++m_counts.limited;
        const double before = SumOf(m_new);
        for (std::size_t i = limit; i < m_new.size(); ++i) {
            m_counts.dropped += m_new[i].weight;
            if (m_rules.listener != nullptr) {
                m_rules.listener->Dropped(m_new[i]);
            }
        }
        m_new.resize(limit);
        const double after = SumOf(m_new);
        if (after > 0 && before > 0 && std::isfinite(before)) {
            Scale(m_new, before / after);
        }
        return true;
    }

    void Keep(std::size_t vertex, bool isRequired)
    {
        if (m_rows.rowOf.empty()) {
            m_rows.rowOf.assign(m_mesh.VertexCount(), -1);
            m_rows.isRequired.assign(m_mesh.VertexCount(), 0);
            // As if all were written: memory that is not written to costs nothing, growing step by step half as much
            // again.
            m_rows.entries.reserve(m_mesh.influences.joints.size());
        }
        m_rows.rowOf[vertex] = static_cast<std::int32_t>(m_rows.offsets.size() - 1);
        m_rows.isRequired[vertex] = isRequired ? 1 : 0;
        m_rows.entries.insert(m_rows.entries.end(), m_new.begin(), m_new.end());
        m_rows.offsets.push_back(static_cast<std::uint32_t>(m_rows.entries.size()));
    }

    const Mesh& m_mesh;
    const RowRules& m_rules;
    RowCounts& m_counts;
    std::optional<DeskWeights> m_desk;
    std::vector<std::uint32_t> m_firstAtPlace;
    WeightRows m_rows;
    Row m_old;
    Row m_new;
    Row m_first;
};

} // namespace

WeightRows MakeWeightRows(const Mesh& mesh, const ModelWeights* weights, std::size_t jointCount, const RowRules& rules,
                          RowCounts& counts)
{
    return RowMaker(mesh, weights, jointCount, rules, counts).Make();
}

void RoundToFloats(std::span<const Influence> row, std::vector<float>& out)
{
    out.clear();
    for (const Influence& i : row) {
        out.push_back(static_cast<float>(i.weight));
    }
    const bool isOne = std::abs(SumOf(row) - 1) <= MEANT_AS_ONE;
    if (!isOne || std::any_of(row.begin(), row.end(), [](const Influence& i) { return i.weight < 0; })) {
        return;
    }
    const auto leftForLast = [&out] { return 1.0 - std::accumulate(out.begin(), out.end() - 1, 0.0); };
    // Rounding up all the larger ones may leave nothing for the last; then the largest gives a little.
    while (out.size() > 1 && leftForLast() <= 0) {
        out[0] = std::nextafter(out[0], 0.0F);
    }
    out.back() = static_cast<float>(leftForLast());
}

void RoundToUnits(std::span<const Influence> row, std::uint32_t one, std::vector<std::uint32_t>& out)
{
    out.assign(row.size(), 0);
    std::vector<double> exact(row.size());
    double sum = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
        // What is no number fits no whole number of units either.
        const double fraction = row[i].weight > 0 ? std::min(row[i].weight, 1.0) : 0.0;
        exact[i] = fraction * one;
        sum += fraction;
    }
    const double wanted = std::abs(sum - 1) <= MEANT_AS_ONE ? one : std::round(sum * one);
    double given = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
        out[i] = static_cast<std::uint32_t>(exact[i]);
        given += out[i];
    }
    // The units that rounding down left over go to those that lost most.
    std::vector<std::size_t> order(row.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return exact[a] - out[a] > exact[b] - out[b]; });
    for (std::size_t i = 0; i < order.size() && given < wanted; ++i) {
        if (out[order[i]] < one) {
            ++out[order[i]];
            ++given;
        }
    }
}

} // namespace skindesk::gltf
