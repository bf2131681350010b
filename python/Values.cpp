// SPDX-License-Identifier: MIT
#include "Values.h"

#include "object/ZAction.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
std::string Shown(py::handle value)
{
    const std::string text = py::repr(value).cast<std::string>();
    constexpr size_t kLongest = 60;
    return text.size() <= kLongest ? text : text.substr(0, kLongest) + "...";
}

/// Does the value count as True or False, NumPy's included?
bool IsTruthValue(py::handle value)
{
    return PyBool_Check(value.ptr()) != 0 || std::string(Py_TYPE(value.ptr())->tp_name) == "numpy.bool_";
}
} // namespace

double NumberFrom(py::handle value, const char* what)
{
    double number = 0;
    bool isNumber = !IsTruthValue(value);
    if (isNumber) {
        // Takes what has a number in it and, unlike float(), no text.
        number = PyFloat_AsDouble(value.ptr());
        if (PyErr_Occurred() != nullptr) {
            isNumber = false;
            PyErr_Clear();
        }
    }
    if (!isNumber || !std::isfinite(number))
        throw py::value_error(std::string(what) + " must be a finite number, not " + Shown(value));
    return number;
}

int PixelFrom(py::handle value, const char* what)
{
    const double pixel = std::round(NumberFrom(value, what));
    return static_cast<int>(
        std::clamp<double>(pixel, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::vector<double> DragFrom(const py::object& values)
{
    std::vector<double> drag;
    for (const py::handle value : py::iter(values))
        drag.push_back(NumberFrom(value, "each value of a drag"));
    if (drag.empty())
        throw py::value_error("a drag needs at least one value");
    return drag;
}

ZgeVector3 VectorFrom(const py::object& value, const char* what)
{
    std::vector<double> numbers;
    for (const py::handle number : py::iter(value))
        numbers.push_back(NumberFrom(number, what));
    if (numbers.size() != 3)
        throw py::value_error(std::string(what) + " must be three numbers, not " + std::to_string(numbers.size()));
    return {numbers[0], numbers[1], numbers[2]};
}

int IndexFrom(py::handle value, int count, const std::string& what)
{
    const py::object whole = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
    if (!whole)
        throw py::error_already_set();
    int overflow = 0;
    const long index = PyLong_AsLongAndOverflow(whole.ptr(), &overflow);
    if (overflow != 0 || index < 0 || index >= count)
        throw py::index_error("there is no " + what + ' ' + Shown(whole) + "; there are " + std::to_string(count));
    return static_cast<int>(index);
}

std::string PathFrom(const py::object& path)
{
    const py::object text = py::reinterpret_steal<py::object>(PyOS_FSPath(path.ptr()));
    if (!text)
        throw py::error_already_set();
    const py::object bytes =
        PyBytes_Check(text.ptr()) ? text : py::reinterpret_steal<py::object>(PyUnicode_EncodeFSDefault(text.ptr()));
    if (!bytes)
        throw py::error_already_set();
    std::string result = bytes.cast<std::string>();
    if (result.find('\0') != std::string::npos)
        throw py::value_error("a path cannot hold a null character");
    return result;
}

int ModifiersFrom(const py::object& names)
{
    const auto maskOf = [](py::handle name) {
        const std::string text = py::isinstance<py::str>(name) ? name.cast<std::string>() : std::string();
        if (text == "shift")
            return kModifierShift;
        if (text == "ctrl")
            return kModifierControl;
        if (text == "alt")
            return kModifierAlt;
        throw py::value_error("a modifier is \"shift\", \"ctrl\" or \"alt\", not " + Shown(name));
    };
    if (py::isinstance<py::str>(names))
        return maskOf(names);
    int mask = 0;
    for (const py::handle name : py::iter(names))
        mask |= maskOf(name);
    return mask;
}

Triple TripleOf(const ZgeVector3& vector) { return {vector.x, vector.y, vector.z}; }

py::array_t<double> ArrayOf(const ZgeMatrix& matrix) { return ArrayOf(matrix.Data(), 4, 4); }
