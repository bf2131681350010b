// SPDX-License-Identifier: MIT
// The session's plug-ins: finding, loading and unloading them.
#include "Plugin.h"
#include "Watch.h"
#include "bcore/ZPluginFile.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"
#include "zconstraints/ZEvaluateManager.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace {
namespace fs = std::filesystem;

/// The file that a name leads to, so that one library is not loaded under two names.
std::string Identity(const std::string& file)
{
    std::error_code error;
    const fs::path real = fs::canonical(file, error);
    return error ? file : real.string();
}

std::string ProgramFolder()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path().string();
}

std::vector<std::string> SplitFolders(const std::string& text)
{
    std::vector<std::string> folders;
    std::istringstream stream(text);
    for (std::string folder; std::getline(stream, folder, ':');)
        if (!folder.empty())
            folders.push_back(folder);
    return folders;
}

/// Every libNAME.so of a folder, in the order of the names.
std::vector<std::string> LibrariesIn(const std::string& folder)
{
    std::vector<std::string> libraries;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (!ZPluginFile_Name(entry->path().string()).empty())
            libraries.push_back(entry->path().string());
    std::sort(libraries.begin(), libraries.end());
    return libraries;
}
} // namespace

std::vector<std::string> ZSession::PluginFolders() const
{
    if (!m_options.pluginFolders.empty())
        return m_options.pluginFolders;
    if (const char* named = std::getenv("SKINDESK_PLUGINS"); named != nullptr && *named != '\0')
        return SplitFolders(named);
    const std::string program = m_options.programFolder.empty() ? ProgramFolder() : m_options.programFolder;
    const std::string beside = (fs::path(program) / "../lib/skindesk/plugins").lexically_normal().string();
    // A program without plug-ins beside it is no mistake of the user's, so a folder that nobody named may be missing.
    std::error_code error;
    return fs::is_directory(beside, error) ? std::vector<std::string>{beside} : std::vector<std::string>();
}

void ZSession::LoadPlugins()
{
    for (const std::string& folder : PluginFolders()) {
        std::error_code error;
        if (!fs::is_directory(folder, error)) {
            ZReport_Warning(folder + " is no folder of plug-ins.");
            continue;
        }
        for (const std::string& library : LibrariesIn(folder))
            if (std::string why; !LoadPlugin(library, &why))
                ZReport_Warning(why);
    }
}

bool ZSession::LoadPlugin(const std::string& file, std::string* why)
{
    const std::string identity = Identity(file);
    const std::string name = ZPluginFile_Name(file);
    std::string wrong;
    for (const auto& plugin : m_plugins) {
        if (plugin->identity == identity)
            return true;
        if (ZPluginFile_Name(plugin->file) == name)
            wrong = fs::path(file).filename().string() + " is loaded already, from " +
                    fs::path(plugin->file).parent_path().string() + ".";
    }
    if (wrong.empty()) {
        auto plugin = std::make_unique<Plugin>(file, identity);
        wrong = plugin->Load();
        if (wrong.empty())
            m_plugins.push_back(std::move(plugin));
    }
    if (why != nullptr)
        *why = wrong;
    return wrong.empty();
}

bool ZSession::UnloadPlugin(const std::string& file)
{
    const std::string identity = Identity(file);
    const auto place = std::find_if(m_plugins.begin(), m_plugins.end(), [&](const auto& plugin) {
        return plugin->file == file || plugin->identity == identity;
    });
    if (place == m_plugins.end())
        return false;
    const Plugin& plugin = **place;
    const std::vector<ZTool*> tools = m_tools;
    for (auto tool = tools.rbegin(); tool != tools.rend(); ++tool)
        if (plugin.Made(**tool))
            CloseTool(*tool);
    const std::vector<ZManipulator*> manipulators = ZManipulator_GetManipulatorSet()->GetManipulators();
    for (ZManipulator* manipulator : manipulators)
        if (plugin.Made(*manipulator))
            ZManipulator_GetManipulatorSet()->ManipulatorRemove(manipulator);
    // Records may be of the library's classes; nobody else can tell which, so the history goes with it.
    EndGestures();
    ZUndoStack::TheOne()->Clear();
    m_plugins.erase(place);
    return true;
}

std::vector<std::string> ZSession::GetLoadedPlugins() const
{
    std::vector<std::string> files;
    for (const auto& plugin : m_plugins)
        files.push_back(plugin->file);
    return files;
}
