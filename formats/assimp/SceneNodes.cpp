// SPDX-License-Identifier: MIT
// Nodes and materials, and the words for what was lost.
#include "SceneParts.h"

#include <assimp/material.h>

#include <algorithm>
#include <cmath>

namespace skindesk::assimp {

namespace {

// How far a matrix put together again may be off, as a share of its largest number.
constexpr double SHEAR_TOLERANCE = 1e-4;

bool IsSheared(const aiMatrix4x4& matrix, const aiVector3D& scale, const aiQuaternion& rotation,
               const aiVector3D& translation)
{
    const auto listed = ListedMatrix(matrix);
    const auto again = ListedMatrix(aiMatrix4x4(scale, rotation, translation));
    double largest = 0;
    double off = 0;
    for (std::size_t i = 0; i < listed.size(); ++i) {
        largest = std::max(largest, std::abs(listed[i]));
        off = std::max(off, std::abs(listed[i] - again[i]));
    }
    return !(off <= SHEAR_TOLERANCE * largest);
}

void SetTransform(const aiMatrix4x4& matrix, imports::NewNode& node)
{
    aiVector3D scale;
    aiVector3D translation;
    aiQuaternion rotation;
    matrix.Decompose(scale, rotation, translation);
    node.translation = {translation.x, translation.y, translation.z};
    node.rotation = {rotation.x, rotation.y, rotation.z, rotation.w};
    node.scale = {scale.x, scale.y, scale.z};
    if (IsSheared(matrix, scale, rotation, translation)) {
        node.matrix = ListedMatrix(matrix);
    }
}

// The library puts a node of its own over the file's; it says nothing unless it turns or scales what is below.
bool IsOnlyAFrame(const aiNode& root)
{
    return root.mNumMeshes == 0 && root.mNumChildren > 0 && root.mTransformation.IsIdentity();
}

} // namespace

std::array<double, 16> ListedMatrix(const aiMatrix4x4& matrix)
{
    std::array<double, 16> listed{};
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            listed[4 * column + row] = static_cast<double>(matrix[row][column]);
        }
    }
    return listed;
}

void ImportNodes(SceneParts& parts)
{
    struct Waiting
    {
        const aiNode* node;
        int parent;
    };
    std::vector<Waiting> waiting;
    const auto push = [&waiting](const aiNode& of, int parent) {
        for (unsigned i = of.mNumChildren; i-- > 0;) {
            waiting.push_back({of.mChildren[i], parent});
        }
    };
    const aiNode& root = *parts.scene.mRootNode;
    if (IsOnlyAFrame(root)) {
        push(root, -1);
    } else {
        waiting.push_back({&root, -1});
    }
    while (!waiting.empty()) {
        const Waiting next = waiting.back();
        waiting.pop_back();
        const auto index = static_cast<int>(parts.into.nodes.size());
        imports::NewNode& node = parts.into.nodes.emplace_back();
        node.name = next.node->mName.C_Str();
        node.parent = next.parent;
        SetTransform(next.node->mTransformation, node);
        parts.losses.shearedNodes += node.matrix ? 1 : 0;
        parts.nodes[next.node] = index;
        parts.byName.try_emplace(node.name, index);
        ++parts.sameName[node.name];
        push(*next.node, index);
    }
}

void ImportMaterials(SceneParts& parts)
{
    for (unsigned i = 0; i < parts.scene.mNumMaterials; ++i) {
        const aiMaterial& from = *parts.scene.mMaterials[i];
        imports::NewMaterial& material = parts.into.materials.emplace_back();
        aiString name;
        if (from.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS) {
            material.name = name.C_Str();
        }
        aiColor4D colour(1, 1, 1, 1);
        if (from.Get(AI_MATKEY_COLOR_DIFFUSE, colour) == aiReturn_SUCCESS) {
            material.baseColour = {colour.r, colour.g, colour.b, 1};
        }
        ai_real opacity = 1;
        if (from.Get(AI_MATKEY_OPACITY, opacity) == aiReturn_SUCCESS) {
            material.baseColour[3] = static_cast<double>(opacity);
        }
        for (int type = aiTextureType_DIFFUSE; type <= AI_TEXTURE_TYPE_MAX; ++type) {
            parts.losses.textures += from.GetTextureCount(static_cast<aiTextureType>(type));
        }
    }
}

void Losses::Report(std::vector<std::string>& warnings) const
{
    const auto say = [&warnings](std::size_t count, const char* one, const char* many) {
        if (count > 0) {
            warnings.push_back(std::to_string(count) + " " + (count == 1 ? one : many));
        }
    };
    say(cameras, "camera is left out", "cameras are left out");
    say(lights, "light is left out", "lights are left out");
    say(textures, "texture is left out; materials keep their colour",
        "textures are left out; materials keep their colours");
    say(colourSets, "set of vertex colours is left out", "sets of vertex colours are left out");
    say(moreTexCoords, "further set of texture coordinates is left out",
        "further sets of texture coordinates are left out");
    say(pointsAndLines, "point or line is left out", "points and lines are left out");
    say(bonesWithoutNode, "bone has no node of its name; its weights are left out",
        "bones have no node of their name; their weights are left out");
    say(bonesOfSharedName, "bone has the name of several nodes; the first one is taken",
        "bones have the names of several nodes; the first one of each is taken");
    say(shearedNodes, "node is sheared and keeps its matrix", "nodes are sheared and keep their matrices");
    say(morphAnimations, "animation of morph targets is left out", "animations of morph targets are left out");
    say(channelsWithoutNode, "animation channel moves a node that is not there and is left out",
        "animation channels move nodes that are not there and are left out");
    say(shiftedAnimations, "animation began before 0 seconds and begins there now",
        "animations began before 0 seconds and begin there now");
}

} // namespace skindesk::assimp
