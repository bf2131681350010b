// SPDX-License-Identifier: MIT
#include "Errors.h"

#include "gltf/FileError.h"
#include "zbaselib/ZReport.h"

namespace py = pybind11;

namespace {
// Kept for as long as the process lives: exceptions may be raised while the interpreter shuts down.
PyObject* s_error = nullptr;
PyObject* s_fileError = nullptr;

void RaiseFileError(const skindesk::gltf::FileError& error)
{
    const py::object type = py::reinterpret_borrow<py::object>(s_fileError);
    const py::object exception = type(error.what());
    exception.attr("path") = error.path();
    exception.attr("where") = error.where();
    PyErr_SetObject(s_fileError, exception.ptr());
}

void Translate(std::exception_ptr thrown)
{
    try {
        std::rethrow_exception(std::move(thrown));
    } catch (const skindesk::gltf::FileError& error) {
        RaiseFileError(error);
    } catch (const ZHostMisuse& error) {
        PyErr_SetString(s_error, error.what());
    } catch (const DoorError& error) {
        PyErr_SetString(s_error, error.what());
    }
}
} // namespace

void BindErrors(py::module_& module)
{
    s_error =
        PyErr_NewExceptionWithDoc("skindesk.Error", "What the host refused, in its own sentence. Nothing was changed.",
                                  PyExc_RuntimeError, nullptr);
    s_fileError =
        PyErr_NewExceptionWithDoc("skindesk.FileError",
                                  "A file that cannot be read or written. `path` is the file as it was named, "
                                  "`where` the place in it (a JSON pointer or a byte offset) or \"\".",
                                  s_error, nullptr);
    if (s_error == nullptr || s_fileError == nullptr)
        throw py::error_already_set();
    module.attr("Error") = py::reinterpret_borrow<py::object>(s_error);
    module.attr("FileError") = py::reinterpret_borrow<py::object>(s_fileError);
    py::register_exception_translator(&Translate);
}
