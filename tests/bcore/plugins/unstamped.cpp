// SPDX-License-Identifier: MIT
// A library with the right functions that names no host.
#include "bcore/ZPluginApi.h"

SKINDESK_EXPORT void EntryPointunstamped(kDllOperation) {}
SKINDESK_EXPORT bool LIBRARY_INIT() { return true; }
