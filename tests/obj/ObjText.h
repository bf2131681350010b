// SPDX-License-Identifier: MIT
// OBJ texts for tests.
#pragma once

#include "obj/ObjFile.h"

#include <gmock/gmock.h>

#include <string>

namespace skindesk::test {

// Vertices 1 to 6, three in a row; lines 1 to 6.
inline const std::string SIX_POINTS = "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 0 1 0\nv 1 1 0\nv 2 1 0\n";
// A surface of degree 2 by 1 over them; behind SIX_POINTS its `surf` stands in line 9.
inline const std::string SURFACE = "cstype bspline\ndeg 2 1\nsurf 0 1 0 1 1 2 3 4 5 6\n"
                                   "parm u 0 0 0 1 1 1\nparm v 0 0 1 1\nend\n";

inline imports::NewCharacter ReadText(const std::string& text) { return obj::ReadObj(text, "test.obj"); }

// The line with which a text is refused; "" when it is read.
inline std::string Refusal(const std::string& text)
{
    try {
        static_cast<void>(ReadText(text));
    } catch (const gltf::FileError& error) {
        return error.what();
    }
    return "";
}

// `text` with the first `old` replaced, which must be there.
inline std::string Replaced(std::string text, const std::string& old, const std::string& by)
{
    return text.replace(text.find(old), old.size(), by);
}

} // namespace skindesk::test
