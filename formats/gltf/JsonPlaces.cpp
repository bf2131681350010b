// SPDX-License-Identifier: MIT
// Looking things up in a JSON text whose places are known.
#include "JsonPlaces.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace skindesk::gltf {

namespace {

unsigned HexValue(std::string_view digits)
{
    unsigned value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    return value;
}

void AppendUtf8(std::string& text, unsigned code)
{
    const auto byte = [&text](unsigned value) { text.push_back(static_cast<char>(value)); };
    if (code < 0x80) {
        byte(code);
    } else if (code < 0x800) {
        byte(0xC0 | code >> 6);
        byte(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        byte(0xE0 | code >> 12);
        byte(0x80 | (code >> 6 & 0x3F));
        byte(0x80 | (code & 0x3F));
    } else {
        byte(0xF0 | code >> 18);
        byte(0x80 | (code >> 12 & 0x3F));
        byte(0x80 | (code >> 6 & 0x3F));
        byte(0x80 | (code & 0x3F));
    }
}

// The power of ten of the first digit that is not 0, near enough to tell a huge number from a tiny one.
double DecimalExponent(std::string_view number)
{
    const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, mark);
    const auto first = static_cast<double>(digits.find_first_of("123456789"));
    const auto point = static_cast<double>(std::min(digits.find('.'), digits.size()));
    double exponent = 0;
    if (mark < number.size()) {
        for (const char c : number.substr(mark + 1)) {
            exponent = c >= '0' && c <= '9' ? exponent * 10 + (c - '0') : exponent;
        }
        exponent = number[mark + 1] == '-' ? -exponent : exponent;
    }
    return point - first + exponent;
}

} // namespace

std::string UnescapedJson(std::string_view quoted)
{
    const std::string_view inside = quoted.substr(1, quoted.size() - 2);
    std::string text;
    text.reserve(inside.size());
    for (std::size_t i = 0; i < inside.size(); ++i) {
        if (inside[i] != '\\') {
            text.push_back(inside[i]);
            continue;
        }
        const char escape = inside[++i];
        switch (escape) {
        case 'b':
            text.push_back('\b');
            break;
        case 'f':
            text.push_back('\f');
            break;
        case 'n':
            text.push_back('\n');
            break;
        case 'r':
            text.push_back('\r');
            break;
        case 't':
            text.push_back('\t');
            break;
        case 'u': {
            unsigned code = HexValue(inside.substr(i + 1, 4));
            i += 4;
            if (code >= 0xD800 && code < 0xDC00) {
                code = 0x10000 + ((code - 0xD800) << 10) + (HexValue(inside.substr(i + 3, 4)) - 0xDC00);
                i += 6;
            }
            AppendUtf8(text, code);
            break;
        }
        default:
            text.push_back(escape);
            break;
        }
    }
    return text;
}

std::string QuotedJson(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (code < 0x20) {
            quoted += "\\u00";
            quoted += "0123456789abcdef"[code >> 4];
            quoted += "0123456789abcdef"[code & 15];
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

std::string OneLine(std::string_view text, std::size_t limit)
{
    std::size_t size = std::min(text.size(), limit);
    while (size > 0 && size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0u) == 0x80u) {
        --size;
    }
    std::string line(text.substr(0, size));
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    return size < text.size() ? line + "..." : line;
}

std::string JsonPlaces::Key(JsonValue v) const
{
    return UnescapedJson(m_text.substr(KeyStart(v), KeyEnd(v) - KeyStart(v)));
}

bool JsonPlaces::KeyIs(JsonValue v, std::string_view key) const
{
    const std::string_view raw = m_text.substr(KeyStart(v) + 1, KeyEnd(v) - KeyStart(v) - 2);
    if (raw.find('\\') == std::string_view::npos) {
        return raw == key;
    }
    return Key(v) == key;
}

JsonValue JsonPlaces::FirstChild(JsonValue v) const { return m_values[v].next > v + 1 ? v + 1 : JSON_NONE; }

JsonValue JsonPlaces::NextSibling(JsonValue parent, JsonValue child) const
{
    const JsonValue next = m_values[child].next;
    return next < m_values[parent].next ? next : JSON_NONE;
}

std::vector<JsonValue> JsonPlaces::Children(JsonValue v) const
{
    std::vector<JsonValue> children;
    for (JsonValue c = FirstChild(v); c != JSON_NONE; c = NextSibling(v, c)) {
        children.push_back(c);
    }
    return children;
}

JsonValue JsonPlaces::Member(JsonValue object, std::string_view key) const
{
    if (!Is(object, JsonKind::Object)) {
        return JSON_NONE;
    }
    for (JsonValue c = FirstChild(object); c != JSON_NONE; c = NextSibling(object, c)) {
        if (KeyIs(c, key)) {
            return c;
        }
    }
    return JSON_NONE;
}

std::string JsonPlaces::String(JsonValue v) const { return UnescapedJson(Raw(v)); }

double JsonPlaces::Number(JsonValue v) const
{
    const std::string_view raw = Raw(v);
    double value = 0;
    const auto result = std::from_chars(raw.data(), raw.data() + raw.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        const double huge = std::numeric_limits<double>::infinity();
        return DecimalExponent(raw) < 0 ? 0.0 : raw[0] == '-' ? -huge : huge;
    }
    return value;
}

std::string JsonPlaces::Pointer(JsonValue v) const
{
    std::string pointer;
    JsonValue at = Root();
    while (at != v) {
        std::size_t position = 0;
        JsonValue child = FirstChild(at);
        while (m_values[child].next <= v) {
            child = m_values[child].next;
            ++position;
        }
        pointer += '/';
        if (Kind(at) == JsonKind::Array) {
            pointer += std::to_string(position);
        } else {
            for (const char c : Key(child)) {
                pointer += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
            }
        }
        at = child;
    }
    return pointer;
}

JsonValue JsonPlaces::At(std::string_view pointer) const
{
    JsonValue at = Root();
    while (!pointer.empty() && at != JSON_NONE) {
        pointer.remove_prefix(1);
        const std::string_view step = pointer.substr(0, pointer.find('/'));
        pointer.remove_prefix(step.size());
        if (Kind(at) == JsonKind::Array) {
            std::size_t position = 0;
            std::from_chars(step.data(), step.data() + step.size(), position);
            JsonValue child = FirstChild(at);
            for (; child != JSON_NONE && position > 0; --position) {
                child = NextSibling(at, child);
            }
            at = child;
        } else {
            std::string key;
            for (std::size_t i = 0; i < step.size(); ++i) {
                if (step[i] == '~' && i + 1 < step.size()) {
                    key += step[++i] == '1' ? '/' : '~';
                } else {
                    key += step[i];
                }
            }
            at = Member(at, key);
        }
    }
    return at;
}

} // namespace skindesk::gltf
