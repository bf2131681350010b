// SPDX-License-Identifier: MIT
// Runs the library over a file's bytes, and the order of the steps behind it.
#include "SceneImport.h"

#include "SceneParts.h"

#include <assimp/BaseImporter.h>
#include <assimp/IOSystem.hpp>
#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/importerdesc.h>
#include <assimp/postprocess.h>

#include <exception>
#include <memory>
#include <sstream>

namespace skindesk::assimp {

namespace {

// Files may name others, pictures and whole scenes. None is opened.
class NoOtherFiles : public Assimp::IOSystem
{
public:
    bool Exists(const char*) const override { return false; }
    char getOsSeparator() const override { return '/'; }
    Assimp::IOStream* Open(const char*, const char*) override { return nullptr; }
    void Close(Assimp::IOStream*) override {}
};

const char* ExtensionFor(SceneKind kind) { return kind == SceneKind::Fbx ? "fbx" : "dae"; }

// The library guesses by content and knows dozens of kinds; only the one that the name promises may look at the bytes.
void KeepOnlyReaderOf(Assimp::Importer& importer, const std::string& extension)
{
    for (std::size_t i = importer.GetImporterCount(); i-- > 0;) {
        std::istringstream extensions(importer.GetImporterInfo(i)->mFileExtensions);
        bool isWanted = false;
        for (std::string one; extensions >> one;) {
            isWanted |= one == extension;
        }
        if (!isWanted) {
            const std::unique_ptr<Assimp::BaseImporter> reader(importer.GetImporter(i));
            importer.UnregisterLoader(reader.get());
        }
    }
}

// The library's own words, on one line and without the reader's name before them.
std::string WhyNot(const Assimp::Importer& importer)
{
    std::string words = importer.GetErrorString();
    for (const char* name : {"FBX: ", "Collada: ", "FBX-Tokenize ", "FBX-Parser ", "FBX-DOM "}) {
        if (words.starts_with(name)) {
            words.erase(0, std::string_view(name).size());
        }
    }
    return words.empty() ? "nobody knows why" : words;
}

// Pivots as nodes of their own would be bones that nobody made; they are folded into the nodes they belong to.
constexpr unsigned STEPS = aiProcess_Triangulate | aiProcess_JoinIdenticalVertices;

const aiScene& ReadScene(Assimp::Importer& importer, gltf::ByteSpan bytes, SceneKind kind, const std::string& path)
{
    const std::string extension = ExtensionFor(kind);
    importer.SetIOHandler(new NoOtherFiles); // the importer's from now on
    KeepOnlyReaderOf(importer, extension);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
    // COLLADA's units are applied by its reader, those of FBX in a step of their own.
    const unsigned steps = STEPS | (kind == SceneKind::Fbx ? unsigned{aiProcess_GlobalScale} : 0U);
    const aiScene* scene = importer.ReadFileFromMemory(bytes.data(), bytes.size(), steps, extension.c_str());
    if (scene == nullptr || scene->mRootNode == nullptr) {
        throw gltf::FileError(path, "", "cannot be read: " + WhyNot(importer));
    }
    return *scene;
}

} // namespace

imports::NewCharacter ImportScene(gltf::ByteSpan bytes, SceneKind kind, const std::string& path)
{
    if (bytes.empty()) {
        throw gltf::FileError(path, "", "the file is empty");
    }
    imports::NewCharacter character;
    character.generator = kind == SceneKind::Fbx ? "Skindesk, from FBX" : "Skindesk, from COLLADA";
    try {
        Assimp::Importer importer;
        SceneParts parts{ReadScene(importer, bytes, kind, path), character, {}, {}, {}, {}};
        ImportNodes(parts);
        ImportMaterials(parts);
        ImportMeshes(parts);
        ImportAnimations(parts);
        parts.losses.cameras = parts.scene.mNumCameras;
        parts.losses.lights = parts.scene.mNumLights;
        parts.losses.Report(character.warnings);
    } catch (const gltf::FileError&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw gltf::FileError(path, "", "cannot be read: it needs more memory than a file of its size should");
    } catch (const std::exception& error) {
        throw gltf::FileError(path, "", std::string("cannot be read: ") + error.what());
    }
    return character;
}

} // namespace skindesk::assimp
