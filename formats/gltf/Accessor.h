// SPDX-License-Identifier: MIT
// Typed arrays in a file: every component type, normalised or not, interleaved, sparse, or without bytes of their own.
#pragma once

#include "OpenedFile.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace skindesk::gltf {

enum class ComponentType : int
{
    Int8 = 5120,
    UInt8 = 5121,
    Int16 = 5122,
    UInt16 = 5123,
    UInt32 = 5125,
    Float = 5126
};

[[nodiscard]] std::size_t ComponentSize(ComponentType type);
[[nodiscard]] bool IsUnsigned(ComponentType type);
// What a stored integer is divided by to give a fraction; 1 for floats.
[[nodiscard]] double NormalisingDivisor(ComponentType type);

// What an accessor says of itself; its numbers are checked for themselves, not yet against the buffer view.
struct Accessor
{
    JsonValue value = JSON_NONE;
    int view = -1; // -1: all zeros (before sparse values)
    std::size_t offset = 0;
    std::size_t count = 0;
    ComponentType type = ComponentType::Float;
    std::string shape; // "SCALAR", "VEC4", ...
    std::size_t components = 1;
    std::size_t elementSize = 4; // bytes, with the padding that columns of small matrices have
    bool normalised = false;
    JsonValue sparse = JSON_NONE;
};

// How much memory decoding may still ask for. Accessors can be named any number of times, so what a small file makes of
// itself is bounded by what it is.
class DecodeBudget
{
public:
    explicit DecodeBudget(const OpenedFile& file);
    // Throws FileError naming `where` when the file asks for too much.
    void Spend(JsonValue where, std::size_t count, std::size_t bytesEach);
    [[nodiscard]] std::size_t Spent() const { return m_spent; }
    // Raises the bound for bytes that came out of compressed ones, which have been bounded themselves.
    void Allow(std::size_t decodedBytes);

    // Accessors whose numbers do not begin at a multiple of their size: read all the same, and reported at the end.
    void NoteMisaligned(JsonValue accessor);
    [[nodiscard]] const std::set<JsonValue>& Misaligned() const { return m_misaligned; }

private:
    const OpenedFile& m_file;
    std::size_t m_left;
    std::size_t m_spent = 0;
    std::set<JsonValue> m_misaligned;
};

// The elements of an accessor, in bounds. Points into the file's buffers, or owns them where they had to be put
// together; it must not outlive the file.
class AccessorView
{
public:
    AccessorView() = default;
    AccessorView(const Accessor& accessor, const std::uint8_t* base, std::size_t stride);
    AccessorView(const Accessor& accessor, std::shared_ptr<const ByteBlock> owned);

    [[nodiscard]] std::size_t Count() const { return m_count; }
    [[nodiscard]] std::size_t Components() const { return m_components; }
    [[nodiscard]] ComponentType Type() const { return m_type; }
    [[nodiscard]] bool IsNormalised() const { return m_normalised; }
    [[nodiscard]] const std::uint8_t* Element(std::size_t i) const { return m_base + i * m_stride; }

    // Decodes elements [first, first + n) to Components() numbers each. Normalised integers become fractions.
    void Floats(std::size_t first, std::size_t n, float* out) const;
    // The same for whole numbers as they are stored; for unsigned component types.
    void Unsigned(std::size_t first, std::size_t n, std::uint32_t* out) const;

private:
    template <class Stored, class Out, class Convert>
    void Decode(std::size_t first, std::size_t n, Out* out, Convert convert) const;

    const std::uint8_t* m_base = nullptr;
    std::size_t m_stride = 0;
    std::size_t m_count = 0;
    std::size_t m_components = 1;
    ComponentType m_type = ComponentType::Float;
    bool m_normalised = false;
    std::shared_ptr<const ByteBlock> m_owned;
};

// Reads what accessor `index` says. Throws FileError.
[[nodiscard]] Accessor DescribeAccessor(const OpenedFile& file, int index);
// Its elements, after checking that they lie in their buffer views. Throws FileError.
[[nodiscard]] AccessorView ViewAccessor(const OpenedFile& file, const Accessor& accessor, DecodeBudget& budget);
// The same for the accessor named at `where`, whose elements may be compressed ones; then `accessor` gets their count.
[[nodiscard]] AccessorView ViewNamedAt(const OpenedFile& file, JsonValue where, Accessor& accessor,
                                       DecodeBudget& budget);

// Both, for the accessor whose index stands at `where`, which must have the given shape.
[[nodiscard]] AccessorView ViewAt(const OpenedFile& file, JsonValue where, std::string_view shape,
                                  DecodeBudget& budget);

} // namespace skindesk::gltf
