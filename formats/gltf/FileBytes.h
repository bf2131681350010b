// SPDX-License-Identifier: MIT
// Whole files in and out of memory: reading what is really there, and replacing a file so that at every moment either
// the old or the new one is whole.
#pragma once

#include "CharacterFile.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace skindesk::gltf {

using ByteSpan = std::span<const std::uint8_t>;

// Bytes on the heap that are not cleared before they are filled: a large file is touched once, not twice.
class ByteBlock
{
public:
    ByteBlock() = default;
    explicit ByteBlock(std::size_t size) : m_bytes(new std::uint8_t[size]), m_size(size) {}
    explicit ByteBlock(ByteSpan from);

    [[nodiscard]] std::uint8_t* Data() { return m_bytes.get(); }
    [[nodiscard]] ByteSpan Span() const { return {m_bytes.get(), m_size}; }
    [[nodiscard]] std::size_t Size() const { return m_size; }

private:
    std::unique_ptr<std::uint8_t[]> m_bytes;
    std::size_t m_size = 0;
};

// The content of an ordinary file. Folders, pipes and devices are refused, so that reading cannot hang.
// `path` is opened; `named` is how errors name it.
[[nodiscard]] ByteBlock ReadWholeFile(const std::string& path, const std::string& named);

// A 64-bit digest to see whether content is the same; not proof against someone who tries.
class ContentHash
{
public:
    void Add(ByteSpan bytes);
    [[nodiscard]] std::uint64_t Value() const;

private:
    void AddWord(std::uint64_t word);
    std::uint64_t m_state = 0x9E3779B97F4A7C15u;
    std::uint64_t m_length = 0;
    std::uint64_t m_pending = 0; // bytes that do not yet fill a word
};

[[nodiscard]] std::uint64_t HashOf(ByteSpan bytes);
// Sixteen lower-case hexadecimal digits.
[[nodiscard]] std::string HexOf(std::uint64_t value);

// Size and time of a file; `contentHash` is left 0. All 0 when there is none.
[[nodiscard]] FileStamp QuickStamp(const std::string& path);

// Whether an ordinary file with exactly this content is there.
[[nodiscard]] bool HasContent(const std::string& path, ByteSpan content);

// The file that a path means once symbolic links are followed, whether or not it exists yet. Throws FileError on a
// loop.
[[nodiscard]] std::string FollowLinks(const std::string& path);

// Replaces the file at `path` by the concatenation of `pieces`: temporary file in the same folder, synced, renamed over
// it, folder synced. On FileError the old file is whole and the temporary one is gone.
void ReplaceFile(const std::string& path, std::span<const ByteSpan> pieces);

} // namespace skindesk::gltf
