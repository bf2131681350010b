// SPDX-License-Identifier: MIT
// The table of the other kinds of files.
#include "documents/ZForeignFile.h"

#include "assimp/AssimpFile.h"
#include "obj/ObjFile.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace gltf = skindesk::gltf;
namespace imports = skindesk::imports;

namespace {

imports::NewCharacter ReadObj(const std::string& path) { return skindesk::obj::ReadObj(path); }

constexpr std::array kKinds{
    ZForeignKind{".dae", "COLLADA", skindesk::assimp::ReadCollada},
    ZForeignKind{".fbx", "FBX", skindesk::assimp::ReadFbx},
    ZForeignKind{".obj", "OBJ surfaces and meshes", ReadObj},
};

} // namespace

std::span<const ZForeignKind> ZForeignFile_Kinds() { return kKinds; }

const ZForeignKind* ZForeignFile_KindOf(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    std::ranges::transform(extension, extension.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    const auto* const found =
        std::ranges::find_if(kKinds, [&](const ZForeignKind& kind) { return extension == kind.extension; });
    return found == kKinds.end() ? nullptr : found;
}

gltf::CharacterFile ZForeignFile_Read(const ZForeignKind& kind, const std::string& path)
{
    imports::NewCharacter character = kind.read(path);
    const std::vector<std::uint8_t> bytes = imports::WriteGlb(character, path);
    gltf::CharacterFile file =
        gltf::ReadCharacter(bytes, std::filesystem::path(path).replace_extension(".glb").string());
    file.warnings.insert(file.warnings.begin(), character.warnings.begin(), character.warnings.end());
    return file;
}
