// SPDX-License-Identifier: MIT
// What a file did wrong, in one sentence: which file, where in it, and the two numbers that disagree.
#pragma once

#include <stdexcept>
#include <string>

namespace skindesk::gltf {

// Thrown when a file cannot be read or written. what() is the whole line, "path: where: sentence", ready for a user.
class FileError : public std::runtime_error
{
public:
    FileError(std::string path, std::string where, const std::string& sentence)
        : std::runtime_error(OnOneLine(path + ": " + (where.empty() ? "" : where + ": ") + sentence)),
          m_path(std::move(path)), m_where(std::move(where))
    {
    }

    // The file as the caller named it.
    [[nodiscard]] const std::string& path() const { return m_path; }
    // A JSON pointer ("/accessors/3/count"), a byte offset ("byte 12"), or empty when the whole file is meant.
    [[nodiscard]] const std::string& where() const { return m_where; }
    // The line without file and place.
    [[nodiscard]] std::string sentence() const
    {
        const std::size_t beforeWhere = m_path.size() + 2;
        return std::string(what()).substr(beforeWhere + (m_where.empty() ? 0 : m_where.size() + 2));
    }

private:
    // Names from a file may hold line breaks; the line stays one.
    static std::string OnOneLine(std::string line)
    {
        for (char& c : line) {
            c = static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
        }
        return line;
    }

    std::string m_path;
    std::string m_where;
};

} // namespace skindesk::gltf
