// SPDX-License-Identifier: MIT
// The catalogue: what plug-ins offer, by path and name.
#pragma once

#include "object/ZClassDefinition.h"

#include <string>
#include <vector>

class ZObject;

struct ZCatalogueEntry
{
    std::string path;
    std::string name;
    std::string description; ///< the menu label
    ZObjectFactory factory = nullptr;
    bool flag = false;
    std::string icon; ///< path inside the host's image set
    ZObject* owner = nullptr;
};

/// Adds an entry. The same path and name a second time changes nothing and answers true. False without path, name or
/// factory.
bool Object_Register(const char* path, const char* name, const char* description, ZObjectFactory factory, bool flag,
                     const char* icon, ZObject* owner);
/// All entries in order of registration.
const std::vector<ZCatalogueEntry>& Object_GetCatalogue();
/// Withdraws an entry, for a library that goes; false when there is none.
bool Object_Withdraw(const char* path, const char* name);
