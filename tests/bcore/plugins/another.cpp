// SPDX-License-Identifier: MIT
// A second plug-in, which offers no tool.
#include "bcore/ZPluginApi.h"
#include "object/ZCatalogue.h"

SKINDESK_PLUGIN_STAMP

static IObject* MakeNothing(IObject*, const char*, void*) { return nullptr; }

SKINDESK_EXPORT void EntryPointanother(kDllOperation operation)
{
    if (operation == kDllLoad)
        Object_Register("UI/Brushes", "Soft", "Soft brush", MakeNothing, false, "", nullptr);
}
SKINDESK_EXPORT bool LIBRARY_INIT() { return true; }
