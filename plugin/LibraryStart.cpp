// SPDX-License-Identifier: MIT
// The library's start routine: the loader runs it when the library comes and when it goes.
//
// It runs between the static objects' construction and destruction: those that the host has to know are built at an
// earlier priority (ClassRegistration.cpp), constructors of this kind come after all that have a priority, and
// destructors of this kind run before any static object is destroyed.
#include "plugin/EntryPoint.h"

namespace {

__attribute__((constructor)) void OnProcessAttach() { EntryPointtoolweighting(kDllLoad); }

__attribute__((destructor)) void OnProcessDetach() { EntryPointtoolweighting(kDllUnload); }

} // namespace
