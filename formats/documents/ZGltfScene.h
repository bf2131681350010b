// SPDX-License-Identifier: MIT
// Between plain glTF records and the scene: records become models, and the models' skins become edits of the records.
#pragma once

#include "gltf/CharacterFile.h"
#include "object/ZPlug.h"

#include <cstdint>
#include <vector>

class ZModel;
class ZScene;

/// What a file became in the scene.
struct ZGltfScene
{
    int document = -1;
    skindesk::gltf::CharacterFile file;
    std::vector<HdlZPlug> models;            ///< by node; the handle is dead once the model was deleted
    std::vector<std::uint64_t> skinVersions; ///< by node: the skin's version as it was loaded; 0 without one

    /// The model of a node, or null when it was deleted.
    ZModel* ModelOf(int node) const;
};

/// Adds every node of `scene.file` as a model, with hierarchy, geometry, skins and animations. Throws nothing: the
/// records have been checked.
void ZGltfScene_Add(ZScene& target, ZGltfScene& scene);

/// The weights of every model whose skin changed since it was loaded, in the file's joint numbers; bones that were
/// added become joints. Lines about what cannot be written go to `warnings`. `*lostBones` says that links were lost
/// with deleted bones, so that vertices no longer sum to what they did.
skindesk::gltf::CharacterEdits ZGltfScene_CollectEdits(const ZGltfScene& scene, std::vector<std::string>& warnings,
                                                       bool* lostBones);
