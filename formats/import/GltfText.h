// SPDX-License-Identifier: MIT
// A new character as a `.gltf` text instead of a `.glb`.
#pragma once

#include "gltf/CharacterFile.h"

#include <string>

namespace skindesk::imports {

// The same records on the ground of a text with its bytes in a data URI, so that saving writes a `.gltf`. `glb` was
// read from bytes of WriteGlb. All numbers (nodes, meshes, vertices) are the same in both. Throws gltf::FileError.
[[nodiscard]] gltf::CharacterFile AsGltfText(const gltf::CharacterFile& glb);

} // namespace skindesk::imports
