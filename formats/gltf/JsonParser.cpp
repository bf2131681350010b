// SPDX-License-Identifier: MIT
// Checks a JSON text and notes where each value lies. One loop over the bytes with a stack of its own.
#include "JsonPlaces.h"

#include <algorithm>
#include <deque>

namespace skindesk::gltf {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// The length of the well-formed UTF-8 character at the beginning of `text`, 0 when it is none (RFC 3629, table in 4).
std::size_t Utf8Length(std::string_view text)
{
    const auto at = [text](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const auto follows = [&at](std::size_t i, unsigned low = 0x80, unsigned high = 0xBF) {
        return at(i) >= low && at(i) <= high;
    };
    const unsigned lead = at(0);
    if (lead >= 0xC2 && lead <= 0xDF) {
        return follows(1) ? 2 : 0;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        const unsigned low = lead == 0xE0 ? 0xA0 : 0x80;
        const unsigned high = lead == 0xED ? 0x9F : 0xBF;
        return follows(1, low, high) && follows(2) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const unsigned low = lead == 0xF0 ? 0x90 : 0x80;
        const unsigned high = lead == 0xF4 ? 0x8F : 0xBF;
        return follows(1, low, high) && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

} // namespace

class JsonParser
{
public:
    JsonParser(std::string_view text, JsonPlaces& into) : m_text(text), m_into(into) {}

    void Run(bool zeroPadded)
    {
        SkipMark();
        SkipSpace();
        if (m_at == m_text.size()) {
            Fail("there is no JSON");
        }
        do {
            BeginValue();
        } while (AfterValue());
        SkipSpace();
        while (zeroPadded && m_at < m_text.size() && m_text[m_at] == '\0') {
            ++m_at;
        }
        if (m_at != m_text.size()) {
            Fail("there is more behind the end of the JSON");
        }
    }

private:
    [[noreturn]] void Fail(const std::string& sentence) const { throw JsonError(m_at, sentence); }

    [[nodiscard]] char Here() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }

    void SkipMark()
    {
        if (m_text.starts_with("\xFF\xFE") || m_text.starts_with("\xFE\xFF") ||
            (m_text.size() > 1 && (m_text[0] == '\0' || m_text[1] == '\0'))) {
            Fail("the text is UTF-16 or UTF-32, JSON here is UTF-8");
        }
        if (m_text.starts_with("\xEF\xBB\xBF")) {
            m_into.m_hasByteOrderMark = true;
            m_at = 3;
        }
    }

    void SkipSpace()
    {
        while (m_at < m_text.size() &&
               (m_text[m_at] == ' ' || m_text[m_at] == '\n' || m_text[m_at] == '\r' || m_text[m_at] == '\t')) {
            ++m_at;
        }
    }

    void BeginValue()
    {
        switch (Here()) {
        case '{':
            Open(JsonKind::Object);
            break;
        case '[':
            Open(JsonKind::Array);
            break;
        case '"':
            Leaf(JsonKind::String, &JsonParser::SkipString);
            break;
        case 't':
            Word(JsonKind::True, "true");
            break;
        case 'f':
            Word(JsonKind::False, "false");
            break;
        case 'n':
            Word(JsonKind::Null, "null");
            break;
        default:
            Leaf(JsonKind::Number, &JsonParser::SkipNumber);
            break;
        }
    }

    JsonValue Add(JsonKind kind)
    {
        const auto number = static_cast<JsonValue>(m_into.m_values.size());
        const auto start = static_cast<std::uint32_t>(m_at);
        m_into.m_values.push_back({start, start, number + 1, m_keyStart, m_keyEnd, kind});
        m_keyStart = m_keyEnd = 0;
        return number;
    }

    void Leaf(JsonKind kind, void (JsonParser::*skip)())
    {
        const JsonValue v = Add(kind);
        (this->*skip)();
        m_into.m_values[v].end = static_cast<std::uint32_t>(m_at);
    }

    void Word(JsonKind kind, std::string_view word)
    {
        if (m_text.substr(m_at, word.size()) != word) {
            Fail("this begins no JSON value");
        }
        const JsonValue v = Add(kind);
        m_at += word.size();
        m_into.m_values[v].end = static_cast<std::uint32_t>(m_at);
    }

    void Open(JsonKind kind)
    {
        m_open.push_back(Add(kind));
        ++m_at;
        m_isFresh = true;
    }

    // Closes what ends here; true when another value is to be read at the place reached.
    bool AfterValue()
    {
        while (!m_open.empty()) {
            const JsonValue container = m_open.back();
            const bool isObject = m_into.m_values[container].kind == JsonKind::Object;
            SkipSpace();
            if (Here() == (isObject ? '}' : ']')) {
                Close(container, isObject);
                continue;
            }
            if (!m_isFresh) {
                if (Here() != ',') {
                    Fail(m_at == m_text.size() ? "the JSON ends too early"
                                               : std::string("a comma or ") + (isObject ? "}" : "]") + " is missing");
                }
                ++m_at;
                SkipSpace();
            }
            m_isFresh = false;
            if (isObject) {
                ReadKey();
            }
            return true;
        }
        return false;
    }

    void Close(JsonValue container, bool isObject)
    {
        ++m_at;
        m_into.m_values[container].end = static_cast<std::uint32_t>(m_at);
        m_into.m_values[container].next = static_cast<JsonValue>(m_into.m_values.size());
        m_open.pop_back();
        m_isFresh = false;
        if (isObject) {
            CheckKeysDiffer(container);
        }
    }

    void ReadKey()
    {
        if (Here() != '"') {
            Fail(m_at == m_text.size() ? "the JSON ends too early" : "a key in quotes is missing");
        }
        const auto start = static_cast<std::uint32_t>(m_at);
        SkipString();
        const auto end = static_cast<std::uint32_t>(m_at);
        SkipSpace();
        if (Here() != ':') {
            Fail("a colon is missing behind the key");
        }
        ++m_at;
        SkipSpace();
        m_keyStart = start;
        m_keyEnd = end;
    }

    void SkipString()
    {
        ++m_at;
        while (true) {
            if (m_at == m_text.size()) {
                Fail("a string has no closing quote");
            }
            const auto c = static_cast<unsigned char>(m_text[m_at]);
            if (c == '"') {
                ++m_at;
                return;
            }
            if (c == '\\') {
                SkipEscape();
            } else if (c < 0x20) {
                Fail("a control character stands in a string");
            } else if (c < 0x80) {
                ++m_at;
            } else {
                const std::size_t length = Utf8Length(m_text.substr(m_at));
                if (length == 0) {
                    Fail("a string is not UTF-8 here");
                }
                m_at += length;
            }
        }
    }

    unsigned SkipUnicodeEscape()
    {
        unsigned code = 0;
        for (std::size_t i = 2; i < 6; ++i) {
            const char c = m_at + i < m_text.size() ? m_text[m_at + i] : '\0';
            if (!IsHexDigit(c)) {
                Fail("\\u needs four hexadecimal digits");
            }
            code = code * 16 + static_cast<unsigned>(IsDigit(c) ? c - '0' : (c | 0x20) - 'a' + 10);
        }
        m_at += 6;
        return code;
    }

    void SkipEscape()
    {
        const char kind = m_at + 1 < m_text.size() ? m_text[m_at + 1] : '\0';
        if (kind != 'u') {
            if (kind == '\0' || std::string_view("\"\\/bfnrt").find(kind) == std::string_view::npos) {
                Fail("a backslash begins no escape that JSON knows");
            }
            m_at += 2;
            return;
        }
        const unsigned code = SkipUnicodeEscape();
        if (code >= 0xDC00 && code < 0xE000) {
            Fail("half of a surrogate pair stands alone");
        }
        if (code >= 0xD800 && code < 0xDC00) {
            if (m_text.substr(m_at, 2) != "\\u") {
                Fail("half of a surrogate pair stands alone");
            }
            const unsigned second = SkipUnicodeEscape();
            if (second < 0xDC00 || second >= 0xE000) {
                Fail("half of a surrogate pair stands alone");
            }
        }
    }

    void SkipDigits(const char* complaint)
    {
        if (!IsDigit(Here())) {
            Fail(complaint);
        }
        while (IsDigit(Here())) {
            ++m_at;
        }
    }

    void SkipNumber()
    {
        if (Here() != '-' && !IsDigit(Here())) {
            Fail(m_at == m_text.size() ? "the JSON ends too early" : "this begins no JSON value");
        }
        if (Here() == '-') {
            ++m_at;
        }
        if (Here() == '0') {
            ++m_at;
        } else {
            SkipDigits("a number has no digits");
        }
        if (Here() == '.') {
            ++m_at;
            SkipDigits("a number has no digits behind its point");
        }
        if (Here() == 'e' || Here() == 'E') {
            ++m_at;
            if (Here() == '+' || Here() == '-') {
                ++m_at;
            }
            SkipDigits("a number has no digits in its exponent");
        }
    }

    // Two readers would see two different files in an object that gives a key twice.
    void CheckKeysDiffer(JsonValue object)
    {
        m_keys.clear();
        m_unescaped.clear();
        for (JsonValue c = m_into.FirstChild(object); c != JSON_NONE; c = m_into.NextSibling(object, c)) {
            std::string_view raw = m_text.substr(m_into.KeyStart(c) + 1, m_into.KeyEnd(c) - m_into.KeyStart(c) - 2);
            if (raw.find('\\') != std::string_view::npos) {
                raw = m_unescaped.emplace_back(m_into.Key(c));
            }
            m_keys.push_back({raw, c});
        }
        std::sort(m_keys.begin(), m_keys.end());
        const auto twice = std::adjacent_find(m_keys.begin(), m_keys.end(),
                                              [](const auto& a, const auto& b) { return a.first == b.first; });
        if (twice != m_keys.end()) {
            const JsonValue second = std::next(twice)->second;
            throw JsonError(m_into.KeyStart(second),
                            "the key \"" + OneLine(twice->first) + "\" stands twice in one object");
        }
    }

    std::string_view m_text;
    JsonPlaces& m_into;
    std::size_t m_at = 0;
    std::uint32_t m_keyStart = 0;
    std::uint32_t m_keyEnd = 0;
    bool m_isFresh = false; // a container was opened and nothing is in it yet
    std::vector<JsonValue> m_open;
    std::vector<std::pair<std::string_view, JsonValue>> m_keys;
    std::deque<std::string> m_unescaped;
};

JsonPlaces::JsonPlaces(std::string_view text, bool zeroPadded) : m_text(text)
{
    if (text.size() >= JSON_NONE) {
        throw JsonError(0, "the JSON has " + std::to_string(text.size()) + " bytes, at most " +
                               std::to_string(JSON_NONE - 1) + " are taken");
    }
    JsonParser(text, *this).Run(zeroPadded);
}

} // namespace skindesk::gltf
