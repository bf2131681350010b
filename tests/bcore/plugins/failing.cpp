// SPDX-License-Identifier: MIT
// A plug-in whose entry point throws, after it has put something into the catalogue.
#include "bcore/ZPluginApi.h"
#include "object/ZCatalogue.h"

#include <stdexcept>

SKINDESK_PLUGIN_STAMP

static IObject* MakeNothing(IObject*, const char*, void*) { return nullptr; }

SKINDESK_EXPORT void EntryPointfailing(kDllOperation)
{
    Object_Register("UI/Tools", "Failing", "", MakeNothing, false, "", nullptr);
    throw std::runtime_error("the licence is lost");
}
SKINDESK_EXPORT bool LIBRARY_INIT() { return true; }
