// SPDX-License-Identifier: MIT
// The records of a new character as bytes, for the way from one process to another of the same program.
#pragma once

#include "gltf/FileBytes.h"
#include "import/NewCharacter.h"

#include <cstdint>
#include <vector>

namespace skindesk::assimp {

[[nodiscard]] std::vector<std::uint8_t> PackCharacter(imports::NewCharacter& character);
// Throws std::runtime_error when the bytes are not those of a character; no memory is asked for that they do not fill.
[[nodiscard]] imports::NewCharacter UnpackCharacter(gltf::ByteSpan bytes);

} // namespace skindesk::assimp
