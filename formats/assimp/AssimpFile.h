// SPDX-License-Identifier: MIT
// FBX and COLLADA files, read by the library assimp, as records of a new character.
//
// Read are nodes, meshes with all their influences, bind matrices, morph targets, materials' base colours and
// animations of nodes. What a file holds besides is named in the warnings, with counts. Lengths become metres and Y
// points up where the file says what its units and axes are.
//
// Such files come from anywhere and the library was written for files that mean well. It runs in a process of its own,
// with bounded memory and time: when it breaks down over a file, that is one sentence and nothing is lost.
#pragma once

#include "import/NewCharacter.h"

#include <string>

namespace skindesk::assimp {

// Throw gltf::FileError; then nothing was read.
[[nodiscard]] imports::NewCharacter ReadFbx(const std::string& path);
[[nodiscard]] imports::NewCharacter ReadCollada(const std::string& path);

} // namespace skindesk::assimp
