// SPDX-License-Identifier: MIT
// Which room may include what, and a reader that finds the includes which do not follow.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace boundary {

/// One include that points against the arrows, or a source that lies in no room.
struct Violation
{
    std::string file;    ///< path from the top of the tree, with '/'
    int line = 0;        ///< counted from 1; 0 when the whole file is meant
    std::string include; ///< as written, without quotes or angles; empty when the whole file is meant
    std::string reason;  ///< one sentence
};

/// The line that a failed test shows for it.
std::string Describe(const Violation& violation);

/// The includes of one source file that its room may not make. Knows paths only: nothing is read from disk.
///
/// `path` is the file's path from the top of the tree, `text` its content. Includes in comments do not count. Tests,
/// benchmarks, fuzzers and examples look at the whole and are free to include what they like.
std::vector<Violation> CheckIncludes(std::string_view path, std::string_view text);

/// Every source of the tree below `top` (*.h, *.cpp), as paths from there, sorted; without hidden and built folders.
std::vector<std::string> SourcesOf(const std::filesystem::path& top);

/// A whole file as text; throws std::runtime_error when it cannot be read.
std::string ReadText(const std::filesystem::path& path);

} // namespace boundary
