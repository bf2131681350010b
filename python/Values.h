// SPDX-License-Identifier: MIT
// Values between Python and the host: numbers that are checked, rows, paths, arrays.
#pragma once

#include "zbaselib/ZGe.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace py = pybind11;

using Triple = std::tuple<double, double, double>;

/// A finite number. ValueError, with `what` in its sentence, for all else: text, None, a truth value, NaN, infinity.
double NumberFrom(py::handle value, const char* what);
/// A number of pixels, rounded to the nearest; far outside any screen it stops at the edge of 32 bits.
int PixelFrom(py::handle value, const char* what);
/// At least one finite number. ValueError otherwise.
std::vector<double> DragFrom(const py::object& values);
/// Three finite numbers.
ZgeVector3 VectorFrom(const py::object& value, const char* what);
/// A whole number from 0 to count - 1. IndexError outside, TypeError for what is no whole number.
int IndexFrom(py::handle value, int count, const std::string& what);
/// A path given as str or os.PathLike.
std::string PathFrom(const py::object& path);
/// "shift", "ctrl", "alt" as the host's mask; one name alone or several. ValueError for another name.
int ModifiersFrom(const py::object& names);

Triple TripleOf(const ZgeVector3& vector);
/// 4 x 4 float64.
py::array_t<double> ArrayOf(const ZgeMatrix& matrix);
/// count x width, a copy; no rows for a null pointer.
template <class T> py::array_t<T> ArrayOf(const T* values, int count, int width)
{
    const py::ssize_t rows = values != nullptr ? count : 0;
    return py::array_t<T>({rows, static_cast<py::ssize_t>(width)}, values);
}
template <class T> py::array_t<T> ArrayOf(const T* values, int count)
{
    return py::array_t<T>(static_cast<py::ssize_t>(values != nullptr ? count : 0), values);
}
/// An array that takes the vector's memory over.
template <class T> py::array_t<T> ArrayOf(std::vector<T>&& values)
{
    auto* const owned = new std::vector<T>(std::move(values));
    const py::capsule owner(owned, [](void* memory) { delete static_cast<std::vector<T>*>(memory); });
    return py::array_t<T>(static_cast<py::ssize_t>(owned->size()), owned->data(), owner);
}
