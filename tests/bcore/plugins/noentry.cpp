// SPDX-License-Identifier: MIT
// A library of ours without its entry point. Its constructor would leave a trace if it ever ran.
#include "bcore/ZPluginApi.h"
#include "zbaselib/ZReport.h"

SKINDESK_PLUGIN_STAMP

SKINDESK_EXPORT void EntryPointsomebodyelse(kDllOperation) {}
SKINDESK_EXPORT bool LIBRARY_INIT() { return true; }
[[gnu::constructor]] static void Start() { ZReport_Status("noentry ran"); }
