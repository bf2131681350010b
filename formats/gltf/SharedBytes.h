// SPDX-License-Identifier: MIT
// Which accessors may be overwritten in place: those whose bytes nothing else in the file looks at.
#pragma once

#include "Accessor.h"

#include <cstdint>
#include <vector>

namespace skindesk::gltf {

// Counts who names what, conservatively: whatever looks like a reference counts as one, extensions included.
class SharedBytes
{
public:
    explicit SharedBytes(const OpenedFile& file);

    // How often the JSON names an accessor.
    [[nodiscard]] std::size_t Uses(int accessor) const { return m_uses[static_cast<std::size_t>(accessor)]; }
    // Whether no byte of the accessor's elements belongs to anything else. Elements of interleaved accessors lie
    // between each other without sharing a byte.
    [[nodiscard]] bool OwnsItsBytes(int accessor) const;

private:
    struct Range
    {
        int buffer;
        std::size_t start;
        std::size_t end;
        std::size_t stride;
        std::size_t size; // of an element
        int accessor;     // -1: a view that something else than an accessor uses
    };

    void CountReferences(const OpenedFile& file);
    void CollectRanges(const OpenedFile& file);
    void CollectCompressed(const OpenedFile& file);
    [[nodiscard]] static bool Collide(const Range& a, const Range& b);

    std::vector<std::size_t> m_uses;      // by accessor
    std::vector<std::size_t> m_viewUses;  // by view: all references
    std::vector<Range> m_ranges;          // by buffer and start
    std::vector<std::size_t> m_reachedBy; // by range: the farthest end of the ranges up to it in its buffer
    std::vector<std::size_t> m_rangeOf;   // by accessor: position in m_ranges, or NO_RANGE
};

} // namespace skindesk::gltf
