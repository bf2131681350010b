// SPDX-License-Identifier: MIT
// Numbers of an OBJ file and what they lead to.
#include "ObjVertices.h"

#include "gltf/FileError.h"
#include "gltf/JsonPlaces.h"

#include <charconv>
#include <cmath>

namespace skindesk::obj {

namespace {

std::uint32_t IndexOf(std::string_view word, std::size_t count, const char* what, const ObjPlace& place)
{
    const long long number = place.WholeNumber(word);
    const auto there = static_cast<long long>(count);
    if (number == 0 || number > there || number < -there) {
        place.Refuse(std::string(what) + " " + std::to_string(number) + " is not there, " + std::to_string(count) +
                     " stand before this line");
    }
    return static_cast<std::uint32_t>(number > 0 ? number - 1 : there + number);
}

} // namespace

std::string Shown(std::string_view word) { return "\"" + gltf::OneLine(word) + "\""; }

void ObjPlace::Refuse(const std::string& sentence) const
{
    throw gltf::FileError(path, "line " + std::to_string(line), sentence);
}

double ObjPlace::Number(std::string_view word) const
{
    std::string_view digits = word;
    if (digits.starts_with('+')) {
        digits.remove_prefix(1);
    }
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    // A number too small for a double is nothing; one too large is none.
    const bool isTiny = error == std::errc::result_out_of_range && digits.find("e-") != std::string_view::npos;
    if (isTiny && end == digits.data() + digits.size()) {
        return 0;
    }
    if (error != std::errc() || end != digits.data() + digits.size()) {
        Refuse(Shown(word) + " is no number");
    }
    if (!std::isfinite(static_cast<float>(value))) {
        Refuse(Shown(word) + " is larger than a number of a file can be");
    }
    return value;
}

long long ObjPlace::WholeNumber(std::string_view word) const
{
    std::string_view digits = word;
    if (digits.starts_with('+')) {
        digits.remove_prefix(1);
    }
    long long value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        Refuse(Shown(word) + " is no whole number");
    }
    return value;
}

ObjCorner ObjVertices::Corner(std::string_view word, const ObjPlace& place) const
{
    ObjCorner corner;
    const std::size_t first = word.find('/');
    corner.vertex = IndexOf(word.substr(0, first), positions.size(), "vertex", place);
    if (first == std::string_view::npos) {
        return corner;
    }
    const std::string_view rest = word.substr(first + 1);
    const std::size_t second = rest.find('/');
    if (const std::string_view part = rest.substr(0, second); !part.empty()) {
        corner.texCoord = IndexOf(part, texCoords.size(), "texture vertex", place);
    }
    if (second != std::string_view::npos && second + 1 < rest.size()) {
        corner.normal = IndexOf(rest.substr(second + 1), normals.size(), "normal", place);
    }
    return corner;
}

} // namespace skindesk::obj
