// SPDX-License-Identifier: MIT
// Reading the command line, and handing a script to Python.
#include "desk/windows/CommandLine.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr char kUsage[] =
    "skindesk [FILE]...          opens the desk on FILEs (.glb or .gltf)\n"
    "  --batch SCRIPT [ARG]...   runs a Python script that may import skindesk, without a window\n"
    "  --screenshot PICTURE      opens FILEs, adds all skinned models, saves a picture of the window, ends\n"
    "  --version                 names the version\n"
    "  --help                    this text\n";
constexpr char kPython[] = "/usr/bin/python3"; ///< the one that the module is built for

/// The folder that holds the module: of an installation, else of a build.
fs::path ModuleFolder()
{
    std::error_code failed;
    const fs::path program = fs::read_symlink("/proc/self/exe", failed).parent_path();
    for (const char* const place : {"../lib/skindesk/python", "../python"})
        if (fs::path folder = (program / place).lexically_normal(); fs::exists(folder / "skindesk", failed))
            return folder;
    return {};
}

} // namespace

int CommandLine_Refuse(const std::string& sentence)
{
    std::fprintf(stderr, "skindesk: %s\n", sentence.c_str());
    return 1;
}

CommandLine CommandLine_Read(const std::vector<std::string>& arguments)
{
    CommandLine line;
    bool onlyFiles = false;
    for (size_t i = 0; i < arguments.size() && !line.ended; ++i) {
        const std::string& argument = arguments[i];
        const bool isLast = i + 1 == arguments.size();
        if (onlyFiles || argument.empty() || argument[0] != '-') {
            line.files.push_back(argument);
        } else if (argument == "--") {
            onlyFiles = true;
        } else if (argument == "--help" || argument == "-h") {
            std::fputs(kUsage, stdout);
            line.ended = 0;
        } else if (argument == "--version") {
            std::printf("skindesk %s\n", SKINDESK_VERSION);
            line.ended = 0;
        } else if ((argument == "--screenshot" || argument == "--batch") && isLast) {
            line.ended = CommandLine_Refuse(
                argument + (argument == "--batch" ? " needs a script" : " needs the name of a picture"));
        } else if (argument == "--screenshot") {
            line.screenshot = arguments[++i];
        } else if (argument == "--batch") {
            // All that follows is the script's.
            line.script.assign(arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1, arguments.end());
            return line;
        } else {
            line.ended = CommandLine_Refuse("unknown option " + argument + " (skindesk --help tells all)");
        }
    }
    return line;
}

int CommandLine_RunScript(const std::vector<std::string>& script)
{
    if (::access(script.front().c_str(), R_OK) != 0)
        return CommandLine_Refuse(script.front() + ": " + std::strerror(errno));
    const fs::path folder = ModuleFolder();
    if (folder.empty())
        return CommandLine_Refuse("the Python module skindesk is not installed beside this program");
    const char* const before = std::getenv("PYTHONPATH");
    const std::string path =
        folder.string() + (before != nullptr && *before != '\0' ? std::string(":") + before : std::string());
    ::setenv("PYTHONPATH", path.c_str(), 1);
    std::vector<std::string> arguments{kPython};
    arguments.insert(arguments.end(), script.begin(), script.end());
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    ::execv(kPython, pointers.data());
    return CommandLine_Refuse(std::string(kPython) + ": " + std::strerror(errno));
}
