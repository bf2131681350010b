// SPDX-License-Identifier: MIT
// Before a new character is written: what does not fit together is refused, what glTF wants otherwise is changed.
#pragma once

#include "NewCharacter.h"

#include <string>

namespace skindesk::imports {

// Indices, sizes, order and finiteness of everything in the records. Throws gltf::FileError with `path`.
void CheckNewCharacter(const NewCharacter& character, const std::string& path);

// The surface of a mesh. Throws gltf::FileError; `where` names the mesh in it.
void CheckNewSurface(const NewMesh& mesh, const std::string& path, const std::string& where);

// Makes checked records such that a valid file can be written of them: meshes without vertices, skins without joints
// and channels without keys or with the target of an earlier one are dropped, directions and rotations get unit length,
// influences are merged, sorted by descending weight and scaled to one, skins whose bones have no common ancestor get
// one. Adds a line to the warnings for each kind of change that loses something.
void MendNewCharacter(NewCharacter& character);

} // namespace skindesk::imports
