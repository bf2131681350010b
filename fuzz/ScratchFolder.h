// SPDX-License-Identifier: MIT
// A folder for what a fuzzer saves.
#pragma once

#include "Require.h"

#include <filesystem>
#include <string>

/// One folder for the whole run, in memory where there is one: thousands of files are saved a minute.
inline const std::string& ScratchFolder()
{
    static const std::string s_folder = [] {
        const bool hasMemory = std::filesystem::is_directory("/dev/shm");
        std::string pattern = (hasMemory ? std::filesystem::path("/dev/shm") : std::filesystem::temp_directory_path()) /
                              ("skindesk-fuzz-" + std::string(6, 'X'));
        Require(::mkdtemp(pattern.data()) != nullptr);
        return pattern;
    }();
    return s_folder;
}
