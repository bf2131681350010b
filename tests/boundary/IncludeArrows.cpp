// SPDX-License-Identifier: MIT
// The table of the rooms and the reader of includes.
#include "IncludeArrows.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <stdexcept>

namespace boundary {
namespace {

using Names = std::vector<std::string_view>;

/// A room: the folder, the folders of the rooms that it may see, and the foreign libraries that it may include.
struct Room
{
    std::string_view folder;
    Names sees;
    Names libraries;
};

Names Joined(std::initializer_list<Names> lists)
{
    Names all;
    for (const Names& list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

std::vector<Room> MakeRooms()
{
    // The host's libraries, layer by layer: each sees the layers below it.
    const Names base{"host/zbaselib"};
    const Names objects = Joined({base, {"host/object"}});
    const Names middle = Joined({objects, {"host/ztoolkit", "host/zmodel", "host/zxtrobject"}});
    const Names upper = Joined({middle, {"host/zdesktop", "host/zmanipulator", "host/zconstraints"}});
    const Names sdk = Joined({upper, {"host/bcore"}});
    const Names formats{"formats/gltf", "formats/import", "formats/obj", "formats/assimp", "formats/documents"};
    const Names decoders{"JSON", "assimp", "meshoptimizer", "draco"};
    const Names desk = Joined({sdk, formats, {"desk/model"}});
    return {
        {"host/zbaselib", {}, {}},
        {"host/object", base, {}},
        {"host/ztoolkit", objects, {}},
        {"host/zmodel", objects, {}},
        {"host/zxtrobject", objects, {}},
        {"host/zdesktop", middle, {}},
        {"host/zmanipulator", middle, {"OpenGL", "EGL"}},
        {"host/zconstraints", middle, {}},
        {"host/bcore", upper, {}},
        {"weights", sdk, {}},
        {"editing", Joined({sdk, {"weights"}}), {}},
        {"panel", Joined({sdk, {"weights", "editing"}}), {}},
        {"viewport", Joined({sdk, {"weights", "editing"}}), {"OpenGL"}},
        {"tool", Joined({sdk, {"weights", "editing", "panel", "viewport"}}), {}},
        {"plugin", Joined({sdk, {"weights", "editing", "panel", "viewport", "tool"}}), {}},
        {"formats/gltf", Joined({sdk, formats}), decoders},
        {"formats/import", {"formats/gltf"}, {"JSON"}},
        {"formats/obj", {"formats/gltf", "formats/import"}, {}},
        {"formats/assimp", {"formats/gltf", "formats/import"}, {"assimp"}},
        {"formats/documents", Joined({sdk, formats}), decoders},
        {"python", Joined({sdk, formats}), {"Python"}},
        {"desk/model", Joined({sdk, formats}), {}},
        {"desk/widgets", desk, {"Qt"}},
        {"desk/viewer", desk, {"Qt"}},
        {"desk/windows", Joined({desk, {"desk/widgets", "desk/viewer"}}), {"Qt"}},
        {"desk", Joined({desk, {"desk/widgets", "desk/viewer", "desk/windows"}}), {"Qt"}},
    };
}

const std::vector<Room>& Rooms()
{
    static const std::vector<Room> rooms = MakeRooms();
    return rooms;
}

bool IsBelow(std::string_view path, std::string_view folder)
{
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

/// The room of a path; rooms inside a room (desk/model in desk) come first in the table.
const Room* RoomOf(std::string_view path)
{
    const auto found = std::ranges::find_if(Rooms(), [&](const Room& room) { return IsBelow(path, room.folder); });
    return found == Rooms().end() ? nullptr : &*found;
}

/// The room that others reach by this name: "zmodel" and "host/zmodel" are both host/zmodel.
const Room* RoomCalled(std::string_view name)
{
    const auto found = std::ranges::find_if(Rooms(), [&](const Room& room) {
        const auto slash = room.folder.rfind('/');
        return room.folder == name || (slash != std::string_view::npos && room.folder.substr(slash + 1) == name);
    });
    return found == Rooms().end() ? nullptr : &*found;
}

bool Holds(const Names& names, std::string_view name) { return std::ranges::find(names, name) != names.end(); }

/// Which foreign library a header belongs to; none for the C++ library and the system's C interface.
std::optional<std::string> LibraryOf(std::string_view header)
{
    static const std::vector<std::pair<std::string_view, std::string_view>> beginnings{
        {"GL/", "OpenGL"},
        {"EGL/", "EGL"},
        {"KHR/", "EGL"},
        {"GLES", "OpenGL"},
        {"nlohmann/", "JSON"},
        {"assimp/", "assimp"},
        {"draco/", "draco"},
        {"meshoptimizer", "meshoptimizer"},
        {"pybind11/", "Python"},
        {"Python.h", "Python"},
        {"numpy/", "Python"},
        {"Qt", "Qt"},
        {"gtest/", "GoogleTest"},
        {"gmock/", "GoogleTest"},
        {"rapidcheck", "RapidCheck"}};
    for (const auto& [beginning, library] : beginnings)
        if (header.starts_with(beginning))
            return std::string(library);
    if (header.size() > 1 && header[0] == 'Q' && std::isupper(static_cast<unsigned char>(header[1])))
        return "Qt";
    // The system's own folders; what lies in any other folder belongs to a library that no room names.
    for (std::string_view system : {"sys/", "linux/", "arpa/", "netinet/", "bits/", "experimental/"})
        if (header.starts_with(system))
            return std::nullopt;
    const auto slash = header.find('/');
    return slash == std::string_view::npos ? std::nullopt : std::optional(std::string(header.substr(0, slash)));
}

/// Adapters draw their vertices themselves, so drawing sources of `weights` may include OpenGL 1.x.
bool IsAdapterDrawing(std::string_view path)
{
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return path.starts_with("weights/") && name.ends_with(".cpp") &&
           (name.starts_with("ZWeightGeom") || name.find("Draw") != std::string_view::npos);
}

/// Why the room may not include a foreign header, or nothing.
std::string ForeignReason(std::string_view path, const Room& room, std::string_view header)
{
    const auto library = LibraryOf(header);
    if (!library || Holds(room.libraries, *library) || (*library == "OpenGL" && IsAdapterDrawing(path)))
        return {};
    return std::string(room.folder) + " may not include " + *library;
}

/// Why the room may not include this header of another room, or nothing.
std::string ReasonByRoom(const Room& room, const Room& other, std::string_view header)
{
    if (&other == &room)
        return {};
    if (!Holds(room.sees, other.folder))
        return std::string(room.folder) + " may not look into " + std::string(other.folder);
    if (header.find("/src/") != std::string_view::npos)
        return "src/ of " + std::string(other.folder) + " is private";
    return {};
}

/// The same for a header that is named by its path from the top of the tree.
std::string ReasonByPath(const Room& room, std::string_view header)
{
    const Room* other = RoomOf(header);
    return other == nullptr ? "it leads out of every room" : ReasonByRoom(room, *other, header);
}

/// Why this include is against the arrows, or nothing.
std::string Reason(std::string_view path, const Room& room, std::string_view header, bool quoted)
{
    if (quoted && header.starts_with("..")) {
        const auto target = (std::filesystem::path(path).parent_path() / header).lexically_normal();
        return ReasonByPath(room, target.generic_string());
    }
    if (RoomOf(header) != nullptr)
        return ReasonByPath(room, header);
    const auto slash = header.find('/');
    if (slash == std::string_view::npos || header.starts_with("src/"))
        return quoted ? std::string() : ForeignReason(path, room, header);
    if (const Room* other = RoomCalled(header.substr(0, slash)))
        return ReasonByRoom(room, *other, header);
    return ForeignReason(path, room, header);
}

struct Include
{
    int line;
    std::string header;
    bool quoted;
};

/// Blanks comments, keeping line breaks, so that an include in a comment is none.
std::string WithoutComments(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i, 2) == "//") {
            i = std::min(text.find('\n', i), text.size());
        } else if (text.substr(i, 2) == "/*") {
            const std::size_t end = std::min(text.find("*/", i + 2), text.size());
            for (; i < end; ++i)
                if (text[i] == '\n')
                    plain += '\n';
            ++i;
            continue;
        }
        if (i < text.size())
            plain += text[i];
    }
    return plain;
}

std::optional<Include> ParseInclude(std::string_view line, int number)
{
    const auto skip = [&] { line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size())); };
    skip();
    if (!line.starts_with('#'))
        return std::nullopt;
    line.remove_prefix(1);
    skip();
    if (!line.starts_with("include"))
        return std::nullopt;
    line.remove_prefix(7);
    skip();
    if (line.empty() || (line[0] != '"' && line[0] != '<'))
        return std::nullopt;
    const bool quoted = line[0] == '"';
    const auto end = line.find(quoted ? '"' : '>', 1);
    if (end == std::string_view::npos)
        return std::nullopt;
    return Include{number, std::string(line.substr(1, end - 1)), quoted};
}

std::vector<Include> IncludesOf(std::string_view text)
{
    std::vector<Include> includes;
    const std::string plain = WithoutComments(text);
    int number = 0;
    for (std::size_t start = 0; start < plain.size();) {
        const std::size_t end = std::min(plain.find('\n', start), plain.size());
        if (auto include = ParseInclude(std::string_view(plain).substr(start, end - start), ++number))
            includes.push_back(std::move(*include));
        start = end + 1;
    }
    return includes;
}

bool LooksAtTheWhole(std::string_view path)
{
    return std::ranges::any_of(Names{"tests", "benchmarks", "fuzz", "examples", "cmake"},
                               [&](std::string_view folder) { return IsBelow(path, folder); });
}

} // namespace

std::string Describe(const Violation& violation)
{
    std::string line = violation.file;
    if (violation.line > 0)
        line += ":" + std::to_string(violation.line) + ": includes " + violation.include;
    return line + ": " + violation.reason;
}

std::vector<Violation> CheckIncludes(std::string_view path, std::string_view text)
{
    if (LooksAtTheWhole(path))
        return {};
    const Room* room = RoomOf(path);
    if (room == nullptr)
        return {{std::string(path), 0, "", "it lies in no room"}};
    std::vector<Violation> violations;
    for (const Include& include : IncludesOf(text)) {
        std::string reason = Reason(path, *room, include.header, include.quoted);
        if (!reason.empty())
            violations.push_back({std::string(path), include.line, include.header, std::move(reason)});
    }
    return violations;
}

std::vector<std::string> SourcesOf(const std::filesystem::path& top)
{
    std::vector<std::string> sources;
    for (auto entry = std::filesystem::recursive_directory_iterator(top); entry != end(entry); ++entry) {
        const std::string name = entry->path().filename().string();
        if (entry->is_directory()) {
            const bool built = entry.depth() == 0 && (name == "build" || name.starts_with("build-") || name == "out");
            if (built || name.starts_with('.'))
                entry.disable_recursion_pending();
        } else if (name.ends_with(".h") || name.ends_with(".cpp")) {
            sources.push_back(entry->path().lexically_relative(top).generic_string());
        }
    }
    std::ranges::sort(sources);
    return sources;
}

std::string ReadText(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error(path.string() + " cannot be read");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace boundary
