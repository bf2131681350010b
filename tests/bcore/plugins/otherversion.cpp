// SPDX-License-Identifier: MIT
// A plug-in that was built for another version of the host. Its constructor would leave a trace if it ever ran.
#include "bcore/ZPluginApi.h"
#include "zbaselib/ZReport.h"

SKINDESK_EXPORT __attribute__((used)) const char SkindeskPluginStamp[] = "SkindeskPluginStamp=skindesk-host-0";

SKINDESK_EXPORT void EntryPointotherversion(kDllOperation) {}
SKINDESK_EXPORT bool LIBRARY_INIT() { return true; }
[[gnu::constructor]] static void Start() { ZReport_Status("otherversion ran"); }
