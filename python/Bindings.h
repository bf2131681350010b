// SPDX-License-Identifier: MIT
// The parts of the module, in the order in which they are bound: each names classes of those before it.
#pragma once

#include <pybind11/pybind11.h>

void BindModel(pybind11::module_& module);
void BindSkin(pybind11::module_& module);
void BindViewer(pybind11::module_& module);
void BindControls(pybind11::module_& module);
void BindTool(pybind11::module_& module);
void BindDesk(pybind11::module_& module);

/// Lets a class or function call itself a part of the package, not of the library inside it.
inline void NameAsPublic(const pybind11::handle& object) { object.attr("__module__") = "skindesk"; }
