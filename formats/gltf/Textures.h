// SPDX-License-Identifier: MIT
// Which point of its base-colour picture each corner of a mesh shows.
#pragma once

#include "CharacterFile.h"

namespace skindesk::gltf {

// Two numbers for each corner of the mesh's triangles, in the order of Mesh::triangles; (0, 0) is the upper left corner
// of the picture, KHR_texture_transform is applied. Corners of primitives that show no picture are zero. Empty when no
// primitive shows one. Read apart from the rest, since only who draws pictures wants it. Throws FileError.
[[nodiscard]] std::vector<float> ReadTexCoords(const CharacterFile& file, int mesh);

} // namespace skindesk::gltf
