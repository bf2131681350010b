// SPDX-License-Identifier: MIT
// The two functions that the host finds by name in this library.
#pragma once

#include "bcore/ZPluginApi.h"

/// At kDllLoad the tool enters the host's catalogue, harmlessly more than once; every other operation does nothing.
SKINDESK_EXPORT void EntryPointtoolweighting(kDllOperation operation);
/// Always true, also before the entry point was called.
SKINDESK_EXPORT bool LIBRARY_INIT();
