// SPDX-License-Identifier: MIT
// The steps that turn the library's scene into records, and what they share.
#pragma once

#include "import/NewCharacter.h"

#include <assimp/scene.h>

#include <array>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace skindesk::assimp {

// The library's matrices are for column vectors, in rows; the records list the columns.
[[nodiscard]] std::array<double, 16> ListedMatrix(const aiMatrix4x4& matrix);

// What the file holds and the records have no place for, counted.
struct Losses
{
    std::size_t cameras = 0;
    std::size_t lights = 0;
    std::size_t textures = 0;
    std::size_t colourSets = 0;
    std::size_t moreTexCoords = 0;
    std::size_t pointsAndLines = 0;
    std::size_t bonesWithoutNode = 0;
    std::size_t bonesOfSharedName = 0;
    std::size_t shearedNodes = 0;
    std::size_t morphAnimations = 0;
    std::size_t channelsWithoutNode = 0;
    std::size_t shiftedAnimations = 0;

    // A line for each kind of loss.
    void Report(std::vector<std::string>& warnings) const;
};

struct SceneParts
{
    const aiScene& scene;
    imports::NewCharacter& into;
    std::unordered_map<const aiNode*, int> nodes;  // to records
    std::unordered_map<std::string, int> byName;   // the first record of each name
    std::unordered_map<std::string, int> sameName; // how many records have it
    Losses losses;
};

void ImportNodes(SceneParts& parts);
void ImportMaterials(SceneParts& parts);
// Meshes and skins, in the nodes that show them.
void ImportMeshes(SceneParts& parts);
void ImportAnimations(SceneParts& parts);

} // namespace skindesk::assimp
