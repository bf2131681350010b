// SPDX-License-Identifier: MIT
// From compressed bytes to plain ones, before anything else looks at them. Sizes are checked before memory is asked
// for; what cannot be decoded is refused in one sentence, or said in a warning where the file holds the same plain.
#pragma once

#include "Reading.h"

namespace skindesk::gltf {

// Decodes all that the file holds compressed. Throws FileError.
[[nodiscard]] DecodedBytes DecodeCompressed(Reading& reading);

// The two halves of it; `budget` bounds what they make together.
void DecodeViews(Reading& reading, DecodeBudget& budget, DecodedBytes& into);
void DecodePrimitives(Reading& reading, DecodeBudget& budget, DecodedBytes& into);

// The object of EXT_meshopt_compression in a buffer view, JSON_NONE when the view is plain.
[[nodiscard]] JsonValue MeshoptExtensionOf(const OpenedFile& file, const BufferView& view);
// The object of KHR_draco_mesh_compression in a primitive, JSON_NONE when the primitive is plain.
[[nodiscard]] JsonValue DracoExtensionOf(const OpenedFile& file, JsonValue primitive);

} // namespace skindesk::gltf
