// SPDX-License-Identifier: MIT
// A plug-in that says that it did not initialise, after its start routine has put something into the catalogue.
#include "bcore/ZPluginApi.h"
#include "object/ZCatalogue.h"

SKINDESK_PLUGIN_STAMP

static IObject* MakeNothing(IObject*, const char*, void*) { return nullptr; }

SKINDESK_EXPORT void EntryPointuninitialised(kDllOperation operation)
{
    if (operation == kDllLoad)
        Object_Register("UI/Tools", "Uninitialised", "", MakeNothing, false, "", nullptr);
}
SKINDESK_EXPORT bool LIBRARY_INIT() { return false; }
[[gnu::constructor]] static void Start() { EntryPointuninitialised(kDllLoad); }
