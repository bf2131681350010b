// SPDX-License-Identifier: MIT
// What a file holds in compressed form, once it is decoded. Kept beside the opened file, whose own bytes stay as they
// are: reading looks here first, and saving starts from the file.
#pragma once

#include "FileBytes.h"
#include "JsonPlaces.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace skindesk::gltf {

// Elements in the component type and shape of the accessor that they stand for, lying close.
struct DecodedArray
{
    std::shared_ptr<const ByteBlock> bytes;
    std::size_t count = 0; // elements; decides, whatever the accessor says
};

struct DecodedBytes
{
    // By buffer view (EXT_meshopt_compression): its content, byteLength of it; null where the view is plain. Empty when
    // no view is compressed.
    std::vector<std::shared_ptr<const ByteBlock>> views;
    // By the place in the JSON that names the accessor (KHR_draco_mesh_compression), and a primitive's corners as
    // 32-bit numbers by the place of its extension.
    std::map<JsonValue, DecodedArray> arrays;
};

} // namespace skindesk::gltf
