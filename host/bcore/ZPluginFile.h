// SPDX-License-Identifier: MIT
// Reading a plug-in's file before any of its code runs.
#pragma once

#include <cstddef>
#include <span>
#include <string>

/// "NAME" of a file called "libNAME.so"; empty for any other name.
std::string ZPluginFile_Name(const std::string& file);

/// Is the file a plug-in that this host may load? Empty when it is, else one sentence that begins with the file's name
/// and says why not: it is no shared library for this machine, it is cut short, it lacks `EntryPointNAME` or
/// `LIBRARY_INIT`, or it was built for another version of the host.
std::string ZPluginFile_Check(const std::string& file);

/// The same for the bytes of a file; they are not trusted. The file's name gives NAME.
std::string ZPluginFile_CheckBytes(const std::string& file, std::span<const std::byte> bytes);
