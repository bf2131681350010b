// SPDX-License-Identifier: MIT
#include "Plugin.h"

#include "bcore/ZPluginFile.h"
#include "object/ZCatalogue.h"
#include "zbaselib/ZReport.h"

#include <dlfcn.h>
#include <filesystem>
#include <typeinfo>

namespace {
std::string FileName(const std::string& file) { return std::filesystem::path(file).filename().string(); }

template <class Function> Function FindFunction(void* library, const std::string& name)
{
    return reinterpret_cast<Function>(dlsym(library, name.c_str()));
}

/// Where the library that holds `address` begins; null when none does.
const void* LibraryOf(const void* address)
{
    Dl_info info{};
    return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}
} // namespace

ZSession::Plugin::Plugin(std::string fileName, std::string fileIdentity)
    : file(std::move(fileName)), identity(std::move(fileIdentity))
{
}

ZSession::Plugin::~Plugin() { Unload(); }

std::string ZSession::Plugin::Load()
{
    if (std::string wrong = ZPluginFile_Check(file); !wrong.empty())
        return wrong;
    const size_t before = Object_GetCatalogue().size();
    // Everything is bound now: a library with a missing symbol is refused here and does not fail in the middle of a
    // gesture.
    m_library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_library == nullptr) {
        const char* const reason = dlerror();
        return FileName(file) + " cannot be loaded: " + (reason != nullptr ? reason : "no reason given") + ".";
    }
    std::string wrong = Start();
    RememberEntries(before);
    if (!wrong.empty())
        Close();
    return wrong;
}

std::string ZSession::Plugin::Start()
{
    const auto initialised = FindFunction<ZPluginInit>(m_library, "LIBRARY_INIT");
    m_entryPoint = FindFunction<ZPluginEntryPoint>(m_library, "EntryPoint" + ZPluginFile_Name(file));
    if (initialised == nullptr || m_entryPoint == nullptr)
        return FileName(file) + " has no entry point.";
    try {
        if (!initialised())
            return FileName(file) + " says that it could not be initialised.";
        m_entryPoint(kDllLoad);
    } catch (const std::exception& exception) {
        return FileName(file) + " failed while it was loaded: " + exception.what() + ".";
    } catch (...) {
        return FileName(file) + " failed while it was loaded.";
    }
    return "";
}

void ZSession::Plugin::RememberEntries(size_t before)
{
    const auto& catalogue = Object_GetCatalogue();
    for (size_t i = before; i < catalogue.size(); ++i)
        entries.emplace_back(catalogue[i].path, catalogue[i].name);
}

void ZSession::Plugin::Unload()
{
    if (m_library == nullptr)
        return;
    try {
        m_entryPoint(kDllUnload);
    } catch (const std::exception& exception) {
        ZReport_Warning(FileName(file) + " failed while it was unloaded: " + exception.what());
    } catch (...) {
        ZReport_Warning(FileName(file) + " failed while it was unloaded.");
    }
    Close();
}

void ZSession::Plugin::Close()
{
    for (const auto& [path, name] : entries)
        Object_Withdraw(path.c_str(), name.c_str());
    entries.clear();
    dlclose(m_library);
    m_library = nullptr;
    m_entryPoint = nullptr;
}

bool ZSession::Plugin::Made(const ZObject& object) const
{
    if (m_entryPoint == nullptr)
        return false;
    const void* const library = LibraryOf(reinterpret_cast<const void*>(m_entryPoint));
    return library != nullptr && LibraryOf(&typeid(object)) == library;
}
