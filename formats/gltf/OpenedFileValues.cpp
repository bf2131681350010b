// SPDX-License-Identifier: MIT
// Values of an opened file's JSON, each with the check that goes with it.
#include "OpenedFile.h"

#include <cmath>

namespace skindesk::gltf {

namespace {

// Whole numbers up to here survive a double, so every program reads the same one.
constexpr double LARGEST_WHOLE = 9007199254740992.0;

} // namespace

std::string Counted(std::size_t count, std::string_view one, std::string_view many)
{
    return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

void OpenedFile::Refuse(JsonValue where, const std::string& sentence) const
{
    throw FileError(m_path, where == JSON_NONE ? "" : m_json.Pointer(where), sentence);
}

std::size_t OpenedFile::WholeNumber(JsonValue v, std::string_view what) const
{
    const double value = m_json.Is(v, JsonKind::Number) ? m_json.Number(v) : -1;
    if (!(value >= 0 && value <= LARGEST_WHOLE && value == std::floor(value))) {
        Refuse(v, std::string(what) + " is " + OneLine(m_json.Raw(v)) + ", a whole number from 0 to 2^53 is needed");
    }
    return static_cast<std::size_t>(value);
}

std::size_t OpenedFile::WholeNumberOr(JsonValue object, std::string_view key, std::size_t otherwise) const
{
    const JsonValue v = m_json.Member(object, key);
    return v == JSON_NONE ? otherwise : WholeNumber(v, key);
}

int OpenedFile::Index(JsonValue v, std::size_t limit, std::string_view things) const
{
    const std::size_t index = WholeNumber(v, "the index");
    if (index >= limit || index > 0x7FFFFFFF) {
        Refuse(v, "number " + std::to_string(index) + " of the " + std::string(things) + " is meant, there are " +
                      std::to_string(limit));
    }
    return static_cast<int>(index);
}

int OpenedFile::IndexOr(JsonValue object, std::string_view key, std::string_view things, int otherwise) const
{
    const JsonValue v = m_json.Member(object, key);
    return v == JSON_NONE ? otherwise : Index(v, List(things).size(), things);
}

double OpenedFile::FiniteNumber(JsonValue v) const
{
    const double value = m_json.Is(v, JsonKind::Number) ? m_json.Number(v) : std::nan("");
    if (!std::isfinite(value)) {
        Refuse(v, "a finite number is needed, " + OneLine(m_json.Raw(v)) + " stands here");
    }
    return value;
}

std::vector<double> OpenedFile::Numbers(JsonValue v) const
{
    std::vector<double> numbers;
    for (const JsonValue element : Array(v)) {
        numbers.push_back(FiniteNumber(element));
    }
    return numbers;
}

std::vector<double> OpenedFile::Numbers(JsonValue v, std::size_t count) const
{
    std::vector<double> numbers = Numbers(v);
    if (numbers.size() != count) {
        Refuse(v, Counted(numbers.size(), "number stands", "numbers stand") + " here, " + std::to_string(count) +
                      " are needed");
    }
    return numbers;
}

std::string OpenedFile::Text(JsonValue v) const
{
    if (!m_json.Is(v, JsonKind::String)) {
        Refuse(v, "a string is needed, " + OneLine(m_json.Raw(v)) + " stands here");
    }
    return m_json.String(v);
}

std::string OpenedFile::TextOr(JsonValue object, std::string_view key, const std::string& otherwise) const
{
    const JsonValue v = m_json.Member(object, key);
    return v == JSON_NONE ? otherwise : Text(v);
}

bool OpenedFile::BooleanOr(JsonValue object, std::string_view key, bool otherwise) const
{
    const JsonValue v = m_json.Member(object, key);
    if (v == JSON_NONE) {
        return otherwise;
    }
    if (!m_json.Is(v, JsonKind::True) && !m_json.Is(v, JsonKind::False)) {
        Refuse(v, "true or false is needed, " + OneLine(m_json.Raw(v)) + " stands here");
    }
    return m_json.Is(v, JsonKind::True);
}

std::vector<JsonValue> OpenedFile::Array(JsonValue v) const
{
    if (v == JSON_NONE) {
        return {};
    }
    if (!m_json.Is(v, JsonKind::Array)) {
        Refuse(v, "a list is needed, " + OneLine(m_json.Raw(v)) + " stands here");
    }
    return m_json.Children(v);
}

JsonValue OpenedFile::Object(JsonValue v) const
{
    if (!m_json.Is(v, JsonKind::Object)) {
        Refuse(v, "an object is needed, " + OneLine(m_json.Raw(v)) + " stands here");
    }
    return v;
}

} // namespace skindesk::gltf
