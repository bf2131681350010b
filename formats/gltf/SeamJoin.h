// SPDX-License-Identifier: MIT
// Makes one desk vertex of the file vertices that a seam has split, so that no edit can tear a surface.
//
// Two file vertices are one desk vertex when they have equal positions, equal morph displacements and equal influences
// (as sets of joint and decoded weight), wherever in the mesh they stand. Desk vertices are numbered by first
// appearance. One pass with a hash table; nothing is allocated for a single vertex.
#pragma once

#include "Accessor.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace skindesk::gltf {

struct InfluenceSet
{
    AccessorView joints;
    AccessorView weights;
};

// What one primitive says about its vertices. All views have as many elements as `positions`.
struct AttributeSet
{
    AccessorView positions;
    std::optional<AccessorView> normals;
    std::vector<std::optional<AccessorView>> morphPositions; // by morph target
    std::vector<InfluenceSet> influences;
};

// What is odd about weights, in desk vertices.
struct OddWeights
{
    std::size_t notNumbers = 0;
    std::size_t infinite = 0;
    std::size_t negative = 0;
    std::size_t none = 0;       // no weight at all
    std::size_t farFromOne = 0; // the sum is more than 0.01 off
    std::size_t jointTwice = 0; // a joint has weight in two slots
    double farthest = 0;        // how far the worst sum is off

    void Add(const OddWeights& other);
};

class SeamJoin
{
public:
    // Fills the positions, normals, morph targets and influences of `mesh`, whose morph targets exist already.
    // `expected` is how many file vertices are to come.
    SeamJoin(Mesh& mesh, std::size_t expected, bool joinsSeams);

    // Adds the vertices of a primitive; the map says what they became.
    VertexMap Add(const AttributeSet& set);
    // Brings normals to unit length. Call once, behind the last Add.
    void Finish();

    [[nodiscard]] const OddWeights& Odd() const { return m_odd; }
    // One more than the largest joint that has weight somewhere.
    [[nodiscard]] std::size_t JointLimit() const { return m_jointLimit; }

private:
    struct Slot
    {
        std::uint32_t hash = 0;
        std::uint32_t vertex = EMPTY;
    };
    struct Entry
    {
        std::uint32_t joint;
        float weight;
    };
    // Vertices decoded together, so that the memory each will be looked up in can be fetched ahead.
    struct Block
    {
        std::size_t count = 0;
        std::vector<float> positions; // 3 each
        std::vector<float> normals;
        std::vector<std::vector<float>> morphs; // by target
        std::vector<std::uint32_t> joints;      // 4 for each set in turn
        std::vector<float> weights;
        std::vector<Entry> entries; // all rows one behind the other
        std::vector<std::uint32_t> rowEnds;
        std::vector<std::uint32_t> hashes;
        std::vector<std::uint8_t> jointTwice;
    };

    static constexpr std::uint32_t EMPTY = 0xFFFFFFFFu;

    void Decode(const AttributeSet& set, std::size_t first, std::size_t count);
    void MakeRow(std::size_t vertex, std::size_t sets);
    [[nodiscard]] std::uint32_t HashOfRow(std::size_t i) const;
    std::uint32_t FindOrAdd(std::size_t i);
    [[nodiscard]] bool IsSame(std::size_t i, std::uint32_t vertex) const;
    std::uint32_t Append(std::size_t i);
    void NoteOddities(std::size_t i);
    void Grow();
    [[nodiscard]] std::size_t RowStart(std::size_t i) const { return i == 0 ? 0 : m_block.rowEnds[i - 1]; }

    Mesh& m_mesh;
    bool m_joinsSeams;
    std::vector<Slot> m_table; // a power of two
    Block m_block;
    OddWeights m_odd;
    std::size_t m_jointLimit = 0;
};

} // namespace skindesk::gltf
