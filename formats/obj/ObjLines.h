// SPDX-License-Identifier: MIT
// The lines of an OBJ file as words: comments gone, continued lines joined, each with its number.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace skindesk::obj {

// A statement at a time; nothing is copied, so the text must live as long. Lines end in LF, CR LF or CR.
class ObjLines
{
public:
    explicit ObjLines(std::string_view text);

    // The next line that has a word; false at the end.
    [[nodiscard]] bool Next();
    [[nodiscard]] std::string_view Keyword() const { return m_words.front(); }
    // The words behind the keyword.
    [[nodiscard]] std::span<const std::string_view> Arguments() const { return std::span(m_words).subspan(1); }
    // Where the statement began, counted from 1.
    [[nodiscard]] std::size_t Number() const { return m_number; }

private:
    // Adds the words of one line of the file; true when it goes on in the next one.
    bool AddWords();

    std::string_view m_rest;
    std::vector<std::string_view> m_words;
    std::size_t m_number = 0;
    std::size_t m_passed = 0;
};

} // namespace skindesk::obj
