// SPDX-License-Identifier: MIT
// What a saving has to write for one model: the vertices that are not as in the file, and their influences, sorted out,
// limited and rounded. Plain arithmetic; knows no JSON and no buffers.
#pragma once

#include "CharacterFile.h"

#include <cstdint>
#include <span>
#include <vector>

namespace skindesk::gltf {

struct Influence
{
    std::uint32_t joint = 0;
    double weight = 0;

    bool operator==(const Influence&) const = default;
};

// Rows to be written, by desk vertex. Entries stand largest first, equal ones by joint.
struct WeightRows
{
    std::vector<std::uint8_t> isRequired; // by desk vertex: must be written
    std::vector<std::int32_t> rowOf;      // by desk vertex: -1 where there is no row
    std::vector<std::uint32_t> offsets{0};
    std::vector<Influence> entries;

    [[nodiscard]] bool IsEmpty() const { return rowOf.empty(); }
    [[nodiscard]] std::span<const Influence> Row(std::size_t vertex) const
    {
        const auto row = static_cast<std::size_t>(rowOf[vertex]);
        return {entries.data() + offsets[row], entries.data() + offsets[row + 1]};
    }
    bool operator==(const WeightRows&) const = default;
};

struct RowCounts
{
    std::size_t changed = 0;      // differ from the file
    std::size_t limited = 0;      // lost influences to the limit
    std::size_t weightless = 0;   // changed, and nothing pulls them now
    std::size_t unequalSeams = 0; // control points at the place of another, with other weights
    double dropped = 0;
};

// What one vertex loses to the limit.
class DropListener
{
public:
    virtual ~DropListener() = default;
    virtual void Dropped(const Influence& influence) = 0;
};

struct RowRules
{
    int limit = 0; // 0: none
    bool tieSeams = false;
    bool renormalise = false;
    bool allRows = false; // give every vertex a row, required or not
    DropListener* listener = nullptr;
};

// Compares a model's weights with the file's. `weights` null: as in the file. Throws std::invalid_argument when the
// weights do not fit the mesh, name a joint that is not there, or are changed to what is no finite number.
[[nodiscard]] WeightRows MakeWeightRows(const Mesh& mesh, const ModelWeights* weights, std::size_t jointCount,
                                        const RowRules& rules, RowCounts& counts);

// Entries as single precision, largest first. When they add up to one to within 1e-6, the written ones add up to
// one (to within 1e-13): the last takes what rounding left over.
void RoundToFloats(std::span<const Influence> row, std::vector<float>& out);
// The same as whole numbers of which `one` make a whole (255, 65535).
void RoundToUnits(std::span<const Influence> row, std::uint32_t one, std::vector<std::uint32_t>& out);

// Sums this close to one are meant to be one.
inline constexpr double MEANT_AS_ONE = 1e-6;

} // namespace skindesk::gltf
