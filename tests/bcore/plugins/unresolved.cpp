// SPDX-License-Identifier: MIT
// A plug-in that needs a function which nobody has.
#include "bcore/ZPluginApi.h"

SKINDESK_PLUGIN_STAMP

extern "C" void SkindeskFunctionThatNobodyHas();

SKINDESK_EXPORT void EntryPointunresolved(kDllOperation operation)
{
    if (operation == kDllUnload)
        SkindeskFunctionThatNobodyHas();
}
SKINDESK_EXPORT bool LIBRARY_INIT() { return true; }
