// SPDX-License-Identifier: MIT
// Finding the chunks of a GLB.
#include "GltfContainer.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>

namespace skindesk::gltf {

namespace {

std::string AtByte(std::size_t offset) { return "byte " + std::to_string(offset); }

std::uint32_t WordAt(ByteSpan bytes, std::size_t offset)
{
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data() + offset, sizeof word);
    return word;
}

struct Chunk
{
    std::uint32_t type;
    std::size_t start;
    std::size_t size;
};

Chunk ChunkAt(ByteSpan bytes, std::size_t offset, std::size_t end, const std::string& path)
{
    if (end - offset < GLB_CHUNK_HEADER_SIZE) {
        throw FileError(path, AtByte(offset),
                        "a chunk header needs 8 bytes, " + std::to_string(end - offset) + " are left");
    }
    const Chunk chunk{WordAt(bytes, offset + 4), offset + GLB_CHUNK_HEADER_SIZE, WordAt(bytes, offset)};
    if (chunk.size > end - chunk.start) {
        throw FileError(path, AtByte(offset),
                        "the chunk says it has " + std::to_string(chunk.size) + " bytes, " +
                            std::to_string(end - chunk.start) + " are left");
    }
    return chunk;
}

std::size_t CheckHeader(ByteSpan bytes, const std::string& path)
{
    if (bytes.size() < GLB_HEADER_SIZE) {
        throw FileError(path, AtByte(0), "a GLB header has 12 bytes, the file has " + std::to_string(bytes.size()));
    }
    if (WordAt(bytes, 4) != 2) {
        throw FileError(path, AtByte(4), "the GLB has version " + std::to_string(WordAt(bytes, 4)) + ", 2 is read");
    }
    const std::size_t length = WordAt(bytes, 8);
    if (length > bytes.size()) {
        throw FileError(path, AtByte(8),
                        "the GLB says it has " + std::to_string(length) + " bytes, the file has " +
                            std::to_string(bytes.size()));
    }
    if (length < GLB_HEADER_SIZE) {
        throw FileError(path, AtByte(8), "the GLB says it has " + std::to_string(length) + " bytes, its header has 12");
    }
    return length;
}

GltfContainer FindGlbChunks(ByteSpan bytes, const std::string& path)
{
    GltfContainer found;
    found.isBinary = true;
    const std::size_t end = CheckHeader(bytes, path);
    found.lengthInHeader = end;
    const Chunk json = ChunkAt(bytes, GLB_HEADER_SIZE, end, path);
    if (json.type != GLB_JSON_CHUNK) {
        throw FileError(path, AtByte(GLB_HEADER_SIZE + 4), "the first chunk of a GLB is JSON, this one is not");
    }
    found.jsonStart = json.start;
    found.jsonSize = json.size;
    found.restStart = json.start + json.size;
    if (end - found.restStart >= GLB_CHUNK_HEADER_SIZE) {
        const Chunk second = ChunkAt(bytes, found.restStart, end, path);
        if (second.type == GLB_BIN_CHUNK) {
            found.hasBin = true;
            found.binStart = second.start;
            found.binSize = second.size;
            found.restStart = second.start + second.size;
        }
    }
    return found;
}

} // namespace

std::string ExtensionOf(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

GltfContainer FindChunks(ByteSpan bytes, const std::string& path)
{
    if (bytes.empty()) {
        throw FileError(path, "", "the file is empty");
    }
    const bool hasMagic = bytes.size() >= 4 && WordAt(bytes, 0) == GLB_MAGIC;
    if (hasMagic) {
        return FindGlbChunks(bytes, path);
    }
    if (ExtensionOf(path) == ".glb") {
        throw FileError(path, AtByte(0), "a GLB begins with the four letters glTF, this file does not");
    }
    GltfContainer found;
    found.jsonSize = bytes.size();
    return found;
}

} // namespace skindesk::gltf
