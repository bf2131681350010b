// SPDX-License-Identifier: MIT
// Lines into words.
#include "ObjLines.h"

#include <algorithm>

namespace skindesk::obj {

namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr std::string_view BLANKS{" \t\v\f\0", 5};

} // namespace

ObjLines::ObjLines(std::string_view text) : m_rest(text)
{
    if (m_rest.starts_with(BYTE_ORDER_MARK)) {
        m_rest.remove_prefix(BYTE_ORDER_MARK.size());
    }
}

bool ObjLines::Next()
{
    m_words.clear();
    while (m_words.empty() && !m_rest.empty()) {
        m_number = m_passed + 1;
        while (AddWords()) {
        }
    }
    return !m_words.empty();
}

bool ObjLines::AddWords()
{
    const std::size_t end = m_rest.find_first_of("\r\n");
    std::string_view line = m_rest.substr(0, end);
    const bool isPair = end != std::string_view::npos && m_rest.substr(end, 2) == "\r\n";
    m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + (isPair ? 2 : 1));
    ++m_passed;

    line = line.substr(0, line.find('#'));
    const bool goesOn = line.ends_with('\\') && !m_rest.empty();
    if (line.ends_with('\\')) {
        line.remove_suffix(1);
    }
    for (std::size_t at = line.find_first_not_of(BLANKS); at != std::string_view::npos;) {
        const std::size_t wordEnd = std::min(line.find_first_of(BLANKS, at), line.size());
        m_words.push_back(line.substr(at, wordEnd - at));
        at = line.find_first_not_of(BLANKS, wordEnd);
    }
    return goesOn;
}

} // namespace skindesk::obj
