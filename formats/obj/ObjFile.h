// SPDX-License-Identifier: MIT
// Reads an OBJ file: its B-spline and Bezier surfaces and its polygon meshes.
//
// Read are `v` (with its weight), `vt`, `vn`, `f`, `o`, `g`, `usemtl`, `cstype` (`bspline` and `bezier`, both also
// `rat`), `deg`, `surf`, `parm`, `end`; comments, lines continued by a backslash, and numbers counted from the end. A
// surface or the faces of one object and group become a mesh of that name. Control points run U fastest, in the file as
// in the records.
//
// Trimming loops and everything else that the desk has no place for are left out and named once each in the warnings.
// A file in which something read is broken is refused: nothing half-understood is shown.
#pragma once

#include "import/NewCharacter.h"

#include <string>
#include <string_view>

namespace skindesk::obj {

// Throws gltf::FileError with the line; then nothing was read.
[[nodiscard]] imports::NewCharacter ReadObj(const std::string& path);

// The same from text; `path` names it in errors.
[[nodiscard]] imports::NewCharacter ReadObj(std::string_view text, const std::string& path);

} // namespace skindesk::obj
