// SPDX-License-Identifier: MIT
// What the statements of an OBJ file name: vertices, texture places and normals, and the numbers that lead to them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace skindesk::obj {

// Where a statement stands, and how to refuse it.
struct ObjPlace
{
    const std::string& path;
    std::size_t line = 0;

    [[noreturn]] void Refuse(const std::string& sentence) const;
    // A finite number that a single precision number can hold.
    [[nodiscard]] double Number(std::string_view word) const;
    [[nodiscard]] long long WholeNumber(std::string_view word) const;
};

// "12/3/4": positions in the lists, counted from 0; NONE where a part is missing.
struct ObjCorner
{
    static constexpr std::uint32_t NONE = 0xFFFFFFFFu;

    std::uint32_t vertex = NONE;
    std::uint32_t texCoord = NONE;
    std::uint32_t normal = NONE;

    bool operator==(const ObjCorner&) const = default;
};

struct ObjVertices
{
    std::vector<std::array<float, 3>> positions;
    std::vector<float> weights; // one per position
    std::vector<std::array<float, 2>> texCoords;
    std::vector<std::array<float, 3>> normals;

    // Reads a corner and checks that what it names stands before it in the file. Negative numbers count from the end.
    [[nodiscard]] ObjCorner Corner(std::string_view word, const ObjPlace& place) const;
};

// A word of the file for a message: short, on one line.
[[nodiscard]] std::string Shown(std::string_view word);

} // namespace skindesk::obj
