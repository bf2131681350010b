// SPDX-License-Identifier: MIT
// The skinning tool's library as the loader sees it, without a session's loading.
#pragma once

#include "object/ZCatalogue.h"

#include <dlfcn.h>

#include <algorithm>

/// How often the tool stands in the catalogue.
inline int SkinEntries()
{
    const auto& catalogue = Object_GetCatalogue();
    return static_cast<int>(std::count_if(catalogue.begin(), catalogue.end(), [](const ZCatalogueEntry& entry) {
        return entry.path == "UI/Tools" && entry.name == "Skins";
    }));
}

/// Loaded as long as it lives; the catalogue entry that the library leaves behind goes with it.
class LoadedLibrary
{
public:
    LoadedLibrary() : m_handle(dlopen(TOOLWEIGHTING_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}
    ~LoadedLibrary()
    {
        if (m_handle != nullptr)
            dlclose(m_handle);
        Object_Withdraw("UI/Tools", "Skins");
    }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;
    bool IsOpen() const { return m_handle != nullptr; }
    template <class Function> Function Find(const char* name) const
    {
        return reinterpret_cast<Function>(dlsym(m_handle, name));
    }

private:
    void* m_handle;
};
