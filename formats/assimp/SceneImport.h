// SPDX-License-Identifier: MIT
// From the bytes of an FBX or COLLADA file to the records of a new character, in this process.
#pragma once

#include "gltf/FileBytes.h"
#include "import/NewCharacter.h"

#include <string>

namespace skindesk::assimp {

enum class SceneKind
{
    Fbx,
    Collada
};

// `path` names the file in errors and warnings; no other file is opened, whatever the bytes refer to.
// Throws gltf::FileError. A file made to do harm may still bring the process down: see AssimpFile.h.
[[nodiscard]] imports::NewCharacter ImportScene(gltf::ByteSpan bytes, SceneKind kind, const std::string& path);

} // namespace skindesk::assimp
