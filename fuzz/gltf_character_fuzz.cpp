// SPDX-License-Identifier: MIT
// Any bytes as a character: they are refused in one line, or read; what was read can be edited, saved and read again,
// and the edit is there.
#include "Require.h"
#include "ScratchFolder.h"
#include "gltf/CharacterFile.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace {

using namespace skindesk::gltf;

void CheckRecords(const CharacterFile& file)
{
    for (const Mesh& mesh : file.meshes) {
        const std::size_t vertices = mesh.VertexCount();
        Require(mesh.influences.VertexCount() == vertices);
        Require(mesh.influences.joints.size() == mesh.influences.weights.size());
        Require(mesh.influences.offsets.back() == mesh.influences.joints.size());
        for (const std::int32_t corner : mesh.triangles) {
            Require(corner >= 0 && static_cast<std::size_t>(corner) < vertices);
        }
        for (const VertexMap& map : mesh.vertexMaps) {
            for (const std::int32_t vertex : map.deskVertices) {
                Require(vertex >= 0 && static_cast<std::size_t>(vertex) < vertices);
            }
        }
    }
}

// All weights of a model; the first vertex hangs on the first joint alone.
ModelWeights EditedWeights(int node, const Mesh& mesh)
{
    ModelWeights weights{node, {0, 1}, {0}, {1.0}};
    for (std::size_t v = 1; v < mesh.VertexCount(); ++v) {
        for (std::size_t e = mesh.influences.offsets[v]; e < mesh.influences.offsets[v + 1]; ++e) {
            weights.joints.push_back(mesh.influences.joints[e]);
            weights.weights.push_back(mesh.influences.weights[e]);
        }
        weights.offsets.push_back(static_cast<std::uint32_t>(weights.joints.size()));
    }
    return weights;
}

void SaveAndReadAgain(const CharacterFile& file, int node, std::uint8_t choice)
{
    const std::string path = ScratchFolder() + "/" + std::filesystem::path(file.path).filename().string();
    const Mesh& mesh = file.meshes[static_cast<std::size_t>(file.nodes[static_cast<std::size_t>(node)].mesh)];
    const bool canEdit =
        mesh.VertexCount() > 0 &&
        !file.skins[static_cast<std::size_t>(file.nodes[static_cast<std::size_t>(node)].skin)].joints.empty();
    CharacterEdits edits;
    if (canEdit) {
        edits.models.push_back(EditedWeights(node, mesh));
    }
    SaveOptions options;
    options.keepTypes = (choice & 1u) != 0;
    if ((choice & 2u) != 0) {
        options.maxInfluences = 1 + (choice >> 4);
    }
    static_cast<void>(WriteCharacter(file, edits, options, path));
    const CharacterFile saved = ReadCharacter(path);
    CheckRecords(saved);
    Require(saved.nodes.size() == file.nodes.size());
    if (canEdit) {
        const auto savedMesh = static_cast<std::size_t>(saved.nodes[static_cast<std::size_t>(node)].mesh);
        const Influences& influences = saved.meshes[savedMesh].influences;
        bool hasFirst = false;
        for (std::size_t e = 0; e < influences.offsets[1]; ++e) {
            const double wanted = influences.joints[e] == 0 ? 1 : 0;
            hasFirst |= influences.joints[e] == 0;
            Require(std::abs(influences.weights[e] - wanted) <= 2 * WEIGHT_TOLERANCE);
        }
        Require(hasFirst);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    const bool isBinary = size >= 4 && data[0] == 'g' && data[1] == 'l';
    CharacterFile file;
    try {
        file = ReadCharacter({data, size}, ScratchFolder() + (isBinary ? "/in/fuzz.glb" : "/in/fuzz.gltf"));
    } catch (const FileError& error) {
        Require(std::string(error.what()).find('\n') == std::string::npos);
        return 0;
    }
    CheckRecords(file);
    for (std::size_t n = 0; n < file.nodes.size(); ++n) {
        if (file.nodes[n].skin >= 0) {
            SaveAndReadAgain(file, static_cast<int>(n), data[size - 1]);
            break;
        }
    }
    return 0;
}
