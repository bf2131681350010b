// SPDX-License-Identifier: MIT
// One loaded library.
#pragma once

#include "bcore/ZPluginApi.h"
#include "bcore/ZSession.h"

#include <string>
#include <utility>
#include <vector>

/// Loading, as a story: the file is read and judged without running anything of it; the loader maps it and runs its
/// constructors, and with them its start routine; LIBRARY_INIT is asked; the entry point is called. Whatever the
/// library put into the catalogue meanwhile is remembered and withdrawn when it goes, also when it is refused halfway.
struct ZSession::Plugin
{
    Plugin(std::string file, std::string identity);
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    /// Empty when the library is loaded, else the sentence that says why it is not; nothing of it stays then.
    std::string Load();
    /// Calls the entry point for unloading, withdraws the catalogue entries and closes the library.
    void Unload();
    /// Was this object's class made by the library? Its code goes with the library.
    bool Made(const ZObject& object) const;

    const std::string file;                                   ///< as it was named
    const std::string identity;                               ///< the file itself, whatever name led to it
    std::vector<std::pair<std::string, std::string>> entries; ///< path and name in the catalogue

private:
    std::string Start();
    void RememberEntries(size_t before);
    void Close();

    void* m_library = nullptr;
    ZPluginEntryPoint m_entryPoint = nullptr;
};
