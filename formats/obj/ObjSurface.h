// SPDX-License-Identifier: MIT
// A free-form surface of an OBJ file as a NURBS surface.
#pragma once

#include "ObjVertices.h"

#include "import/NewCharacter.h"

#include <array>
#include <string>
#include <vector>

namespace skindesk::obj {

enum class ObjCurveType
{
    None, // no cstype yet
    BSpline,
    Bezier,
    Other // basis matrix, Cardinal, Taylor
};

// What `cstype` and `deg` said last, and a surface from its `surf` to its `end`.
struct ObjSurface
{
    std::size_t line = 0; // of its `surf`
    ObjCurveType type = ObjCurveType::None;
    bool isRational = false;
    std::array<int, 2> degree{0, 0};
    std::array<double, 4> range{}; // s0 s1 t0 t1: the part of the domain that is shown
    std::vector<ObjCorner> points;
    std::array<std::vector<double>, 2> parameters; // of `parm u` and `parm v`
    std::string name;
    int material = -1;
};

// Bezier patches become B-splines with full knots, which are the same surface. Throws gltf::FileError with the line
// when numbers do not fit together. `*isPart` says that the file shows only a part of the domain.
[[nodiscard]] imports::NewMesh ToNurbs(const ObjSurface& surface, const ObjVertices& vertices, const ObjPlace& place,
                                       bool* isPart);

} // namespace skindesk::obj
