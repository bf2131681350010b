// SPDX-License-Identifier: MIT
// What differs between two glTF files, seen by eyes of their own: this parses files without the reader and the writer
// that it judges, with another JSON parser and no shared line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace skindesk::test {

// A file taken apart. Numbers of the JSON keep their spelling in `tokens`.
struct RawGltf
{
    std::vector<std::uint8_t> bytes;
    nlohmann::json json;
    std::vector<std::pair<std::string, std::string>> tokens; // JSON pointer and text of each leaf, in the file's order
    std::vector<std::vector<std::uint8_t>> buffers;
    std::size_t glbTail = 0; // bytes behind the binary chunk
};

std::vector<std::uint8_t> ReadBytes(const std::string& path);
void WriteBytes(const std::string& path, const std::vector<std::uint8_t>& bytes);

// Throws std::runtime_error when the file is none. Buffer files are looked for beside it.
RawGltf ReadRawGltf(const std::string& path);

// All elements of an accessor as doubles, normalised integers as fractions.
std::vector<std::vector<double>> DecodeRaw(const RawGltf& file, std::size_t accessor);

struct GltfChanges
{
    std::vector<std::string> replaced; // JSON pointers whose text differs
    std::vector<std::string> removed;
    std::vector<std::string> added;
    bool keepsOrder = true;                                // what stands in both stands in the same order
    std::map<std::size_t, std::vector<std::size_t>> bytes; // by buffer: offsets that differ, as far as both reach
};

GltfChanges CompareGltf(const RawGltf& before, const RawGltf& after);

// Sentences for every change that an edit of weights has no business with; empty when there is none. Allowed are:
// joints and weights of primitives and their stated bounds, elements added to accessors, buffer views, buffers and
// meshes, joints added to skins, a node's mesh, the length of a buffer that grew, a replaced weight buffer file, and
// bytes that belong to joints and weights.
std::vector<std::string> ForeignChanges(const RawGltf& before, const RawGltf& after);

} // namespace skindesk::test
