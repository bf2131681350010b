// SPDX-License-Identifier: MIT
// The module's exceptions: skindesk.Error and skindesk.FileError.
#pragma once

#include <pybind11/pybind11.h>

#include <stdexcept>

/// Becomes skindesk.Error. KeyError, IndexError and ValueError are pybind11's own (py::key_error and so on).
class DoorError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Makes the two exception types and the translation of the host's exceptions into them.
void BindErrors(pybind11::module_& module);
