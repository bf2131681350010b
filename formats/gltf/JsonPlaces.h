// SPDX-License-Identifier: MIT
// JSON text with the byte place of every value in it, so that a value can be replaced without touching its neighbours.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace skindesk::gltf {

// The text is no JSON: where, and why, in words.
class JsonError : public std::runtime_error
{
public:
    JsonError(std::size_t offset, const std::string& sentence) : std::runtime_error(sentence), m_offset(offset) {}
    [[nodiscard]] std::size_t offset() const { return m_offset; } // bytes from the beginning of the text

private:
    std::size_t m_offset;
};

enum class JsonKind : std::uint8_t
{
    Null,
    True,
    False,
    Number,
    String,
    Array,
    Object
};

// A value by its number: values are numbered in the order in which they begin in the text.
using JsonValue = std::uint32_t;
inline constexpr JsonValue JSON_NONE = 0xFFFFFFFFu;

// A checked JSON text (RFC 8259, UTF-8, unique keys) as a flat list of values. Nothing in it recurses, so depth costs
// memory by the byte and never the stack. The text is not copied and must live as long.
class JsonPlaces
{
public:
    JsonPlaces() = default;
    // Throws JsonError. A byte order mark before the text is stepped over, zero bytes behind it too if `zeroPadded`.
    explicit JsonPlaces(std::string_view text, bool zeroPadded = false);

    [[nodiscard]] JsonValue Root() const { return 0; }
    [[nodiscard]] std::size_t ValueCount() const { return m_values.size(); }
    [[nodiscard]] bool HasByteOrderMark() const { return m_hasByteOrderMark; }
    [[nodiscard]] std::string_view Text() const { return m_text; }

    [[nodiscard]] JsonKind Kind(JsonValue v) const { return m_values[v].kind; }
    [[nodiscard]] bool Is(JsonValue v, JsonKind kind) const { return v != JSON_NONE && Kind(v) == kind; }
    // The bytes [Start, End) of the value; a string's with its quotes.
    [[nodiscard]] std::size_t Start(JsonValue v) const { return m_values[v].start; }
    [[nodiscard]] std::size_t End(JsonValue v) const { return m_values[v].end; }
    [[nodiscard]] std::string_view Raw(JsonValue v) const { return m_text.substr(Start(v), End(v) - Start(v)); }
    // The bytes of a member's key, with its quotes; both 0 for what is no member.
    [[nodiscard]] std::size_t KeyStart(JsonValue v) const { return m_values[v].keyStart; }
    [[nodiscard]] std::size_t KeyEnd(JsonValue v) const { return m_values[v].keyEnd; }
    [[nodiscard]] bool IsMember(JsonValue v) const { return m_values[v].keyEnd != 0; }
    [[nodiscard]] std::string Key(JsonValue v) const;
    // The first value behind this one and all that is in it.
    [[nodiscard]] JsonValue Behind(JsonValue v) const { return m_values[v].next; }

    // Elements or members one after the other; JSON_NONE behind the last, and for what has none.
    [[nodiscard]] JsonValue FirstChild(JsonValue v) const;
    [[nodiscard]] JsonValue NextSibling(JsonValue parent, JsonValue child) const;
    [[nodiscard]] std::vector<JsonValue> Children(JsonValue v) const;
    // The value of a key of an object; JSON_NONE when it is not there or `object` is none. Linear in the members.
    [[nodiscard]] JsonValue Member(JsonValue object, std::string_view key) const;

    // The text of a string, unescaped. A lone number in full; callers check the kind.
    [[nodiscard]] std::string String(JsonValue v) const;
    // The nearest double; infinite when the number is too large for one.
    [[nodiscard]] double Number(JsonValue v) const;

    // "/accessors/3/count"; "" for the root. And back: JSON_NONE when nothing is there.
    [[nodiscard]] std::string Pointer(JsonValue v) const;
    [[nodiscard]] JsonValue At(std::string_view pointer) const;

private:
    friend class JsonParser;

    struct Entry
    {
        std::uint32_t start;
        std::uint32_t end;
        std::uint32_t next; // the first value behind this one and all that is in it
        std::uint32_t keyStart;
        std::uint32_t keyEnd;
        JsonKind kind;
    };

    [[nodiscard]] bool KeyIs(JsonValue v, std::string_view key) const;

    std::string_view m_text;
    std::vector<Entry> m_values;
    bool m_hasByteOrderMark = false;
};

// The text between the quotes of a JSON string, unescaped. The string has been checked.
[[nodiscard]] std::string UnescapedJson(std::string_view quoted);
// A string as JSON, with its quotes.
[[nodiscard]] std::string QuotedJson(std::string_view text);
// At most `limit` bytes of a text on one line, for a message; a longer one ends in dots, never inside a character.
[[nodiscard]] std::string OneLine(std::string_view text, std::size_t limit = 40);

} // namespace skindesk::gltf
