// SPDX-License-Identifier: MIT
// What the user asked for on the command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct CommandLine
{
    std::vector<std::string> files;
    std::string screenshot;          ///< a picture to save instead of waiting for the user
    std::vector<std::string> script; ///< with --batch: the script and what follows it
    std::optional<int> ended;        ///< the status, when there is nothing more to do
};

/// `arguments` without the program's name. Answers --help and --version, and refuses what it does not know with one
/// line on stderr.
CommandLine CommandLine_Read(const std::vector<std::string>& arguments);
/// Says one line on stderr; answers the status for a process that ends because of it.
int CommandLine_Refuse(const std::string& sentence);

/// Runs a script by the system's Python, which finds the module `skindesk` that belongs to this program, in place of
/// this process. Comes back only when that cannot be done, with the status.
int CommandLine_RunScript(const std::vector<std::string>& script);
