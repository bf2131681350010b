// SPDX-License-Identifier: MIT
#include "object/ZCatalogue.h"

#include <algorithm>

namespace {
std::vector<ZCatalogueEntry>& Entries()
{
    static std::vector<ZCatalogueEntry>& entries = *new std::vector<ZCatalogueEntry>;
    return entries;
}

auto Find(const char* path, const char* name)
{
    return std::find_if(Entries().begin(), Entries().end(), [path, name](const ZCatalogueEntry& entry) {
        return entry.path == path && entry.name == name;
    });
}

bool IsText(const char* text) { return text != nullptr && *text != '\0'; }
std::string TextOf(const char* text) { return text != nullptr ? text : ""; }
} // namespace

bool Object_Register(const char* path, const char* name, const char* description, ZObjectFactory factory, bool flag,
                     const char* icon, ZObject* owner)
{
    if (!IsText(path) || !IsText(name) || factory == nullptr)
        return false;
    if (Find(path, name) == Entries().end())
        Entries().push_back({path, name, TextOf(description), factory, flag, TextOf(icon), owner});
    return true;
}

const std::vector<ZCatalogueEntry>& Object_GetCatalogue() { return Entries(); }

bool Object_Withdraw(const char* path, const char* name)
{
    if (!IsText(path) || !IsText(name))
        return false;
    const auto found = Find(path, name);
    if (found == Entries().end())
        return false;
    Entries().erase(found);
    return true;
}
