// SPDX-License-Identifier: MIT
// Property names, kept once for the whole process.
#pragma once

/// The process's own copy of `name`; valid until the process ends. Property maps hold C strings by their pointer and
/// may outlive both the caller's text and the library that named the property.
const char* PropertyNames_Keep(const char* name);
