// SPDX-License-Identifier: MIT
// The outer shape of a file: one JSON text, or a GLB with a JSON chunk and perhaps a binary chunk.
#pragma once

#include "FileBytes.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace skindesk::gltf {

inline constexpr std::uint32_t GLB_MAGIC = 0x46546C67u;      // "glTF"
inline constexpr std::uint32_t GLB_JSON_CHUNK = 0x4E4F534Au; // "JSON"
inline constexpr std::uint32_t GLB_BIN_CHUNK = 0x004E4942u;  // "BIN\0"
inline constexpr std::size_t GLB_HEADER_SIZE = 12;
inline constexpr std::size_t GLB_CHUNK_HEADER_SIZE = 8;

// Where the chunks of a file lie, as ranges of its bytes. A text file is all JSON.
struct GltfContainer
{
    bool isBinary = false;
    std::size_t jsonStart = 0;
    std::size_t jsonSize = 0;
    bool hasBin = false;
    std::size_t binStart = 0; // content, behind the chunk header
    std::size_t binSize = 0;
    std::size_t restStart = 0; // chunks that nobody here knows, and what lies behind the length that the header gives
    std::size_t lengthInHeader = 0;

    [[nodiscard]] static std::string_view Text(ByteSpan bytes, std::size_t start, std::size_t size)
    {
        return {reinterpret_cast<const char*>(bytes.data()) + start, size};
    }
};

// Finds the chunks. Throws FileError, naming `path`, when the bytes cannot be what the name or the first bytes promise.
[[nodiscard]] GltfContainer FindChunks(ByteSpan bytes, const std::string& path);

// The lower-case extension of a path with its dot, "" when it has none.
[[nodiscard]] std::string ExtensionOf(const std::string& path);

} // namespace skindesk::gltf
