// SPDX-License-Identifier: MIT
// The binary chunk of a new file moves into its JSON.
#include "GltfText.h"

#include "gltf/BufferUri.h"
#include "gltf/JsonSplice.h"
#include "gltf/OpenedFile.h"

#include <filesystem>

namespace skindesk::imports {

gltf::CharacterFile AsGltfText(const gltf::CharacterFile& glb)
{
    const gltf::OpenedFile& source = *glb.source;
    gltf::JsonSplice splice(source.Json());
    for (const gltf::Buffer& buffer : source.Buffers()) {
        if (buffer.home == gltf::BufferHome::BinChunk) {
            const std::string uri = "data:application/octet-stream;base64," + gltf::EncodeBase64(buffer.bytes);
            splice.AppendMember(buffer.value, "uri", gltf::QuotedJson(uri));
        }
    }
    const std::string text = splice.Render();
    const std::string path = std::filesystem::path(glb.path).replace_extension(".gltf").string();
    return gltf::ReadCharacter({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, path);
}

} // namespace skindesk::imports
