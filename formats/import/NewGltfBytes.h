// SPDX-License-Identifier: MIT
// The binary half of a new glTF file: arrays go in, each becomes a buffer view and an accessor of its own.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace skindesk::imports {

using Json = nlohmann::ordered_json;

enum class ViewKind
{
    Other,
    Vertices,
    Corners // vertex numbers of triangles
};

class NewGltfBytes
{
public:
    // Each returns the index of the accessor. `width` is the number of components of an element: 1 to 4, or 16.
    int AddFloats(std::span<const float> values, std::size_t width, ViewKind kind, bool withBounds = false);
    // Written as bytes, 16 or 32 bits wide, as narrow as `largest` allows; corners take 16 bits at least, since a byte
    // is slow for graphics hardware. The number that means "begin anew" in a width is not used in it.
    int AddWholeNumbers(std::span<const std::uint32_t> values, std::size_t width, ViewKind kind, std::uint32_t largest);

    // The whole file: `document` gets its accessors, buffer views and buffer. Bytes are taken out of this object.
    // Throws std::length_error when it would be larger than its 32-bit lengths can say.
    [[nodiscard]] std::vector<std::uint8_t> FinishGlb(Json document);

private:
    template <typename T> int Add(std::span<const T> values, std::size_t width, ViewKind kind, int componentType);

    std::vector<std::uint8_t> m_bytes;
    Json m_views = Json::array();
    Json m_accessors = Json::array();
};

} // namespace skindesk::imports
