// SPDX-License-Identifier: MIT
// What a plug-in exports and how the session calls it.
#pragma once

/// What the session asks of a plug-in's entry point.
enum kDllOperation
{
    kDllLoad = 0,
    kDllUnload = 1
};

/// The version of these headers. A plug-in compiles it in through SKINDESK_PLUGIN_STAMP, and the session refuses a
/// library that was built for another one before any of its code runs.
#define SKINDESK_HOST_VERSION "skindesk-host-1"

#define SKINDESK_EXPORT extern "C" __attribute__((visibility("default")))

/// A plug-in `libNAME.so` exports `EntryPointNAME(kDllOperation)` and `LIBRARY_INIT()`, which answers whether the
/// library initialised, and carries the stamp. The loader runs the library's constructors and thereby its start
/// routine; the session then asks LIBRARY_INIT and calls the entry point with kDllLoad, which must be harmless the
/// second time. At unloading it calls the entry point with kDllUnload, withdraws the library's catalogue entries and
/// closes it.
using ZPluginEntryPoint = void (*)(kDllOperation operation);
using ZPluginInit = bool (*)();

/// Placed once in a plug-in: the stamp that the session reads from the file.
#define SKINDESK_PLUGIN_STAMP                                                                                          \
    extern "C" __attribute__((visibility("default"), used)) const char SkindeskPluginStamp[] =                         \
        "SkindeskPluginStamp=" SKINDESK_HOST_VERSION;
