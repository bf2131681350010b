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
        : std::runtime_error(path + ": " + (where.empty() ? "" : where + ": ") + sentence), m_path(std::move(path)),
          m_where(std::move(where))
    {
    }

    // The file as the caller named it.
    [[nodiscard]] const std::string& path() const { return m_path; }
    // A JSON pointer ("/accessors/3/count"), a byte offset ("byte 12"), or empty when the whole file is meant.
    [[nodiscard]] const std::string& where() const { return m_where; }

private:
    std::string m_path;
    std::string m_where;
};

} // namespace skindesk::gltf
