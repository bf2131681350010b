// SPDX-License-Identifier: MIT
// Any bytes as an OBJ file: they are refused in one line, or become a glTF file that the ordinary reader takes, with
// the models that the OBJ file named.
#include "Require.h"
#include "import/GltfText.h"
#include "obj/ObjFile.h"

#include <cstddef>
#include <cstdint>

using namespace skindesk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    std::vector<std::uint8_t> glb;
    std::size_t meshes = 0;
    try {
        imports::NewCharacter character = obj::ReadObj({reinterpret_cast<const char*>(data), size}, "fuzz.obj");
        meshes = character.meshes.size();
        Require(meshes > 0 && character.nodes.size() == meshes);
        glb = imports::WriteGlb(character, "fuzz.obj");
    } catch (const gltf::FileError& error) {
        const std::string line = error.what();
        Require(line.starts_with("fuzz.obj: ") && line.find('\n') == std::string::npos);
        return 0;
    }
    const gltf::CharacterFile file = gltf::ReadCharacter(glb, "fuzz.glb");
    Require(file.meshes.size() == meshes);
    Require(imports::AsGltfText(file).meshes.size() == meshes);
    return 0;
}
