// SPDX-License-Identifier: MIT
// The steps that turn an opened file into records, and what they share.
#pragma once

#include "Accessor.h"
#include "SeamJoin.h"

#include <string>
#include <vector>

namespace skindesk::gltf {

// Warnings with their places; a file that is odd in a thousand places gets a hundred lines and a count.
class WarningList
{
public:
    explicit WarningList(const OpenedFile& file) : m_file(file) {}
    void Add(JsonValue where, const std::string& sentence);
    [[nodiscard]] std::vector<std::string> Take();

private:
    const OpenedFile& m_file;
    std::vector<std::string> m_lines;
    std::size_t m_unsaid = 0;
};

struct Reading
{
    Reading(const OpenedFile& opened, CharacterFile& records)
        : file(opened), json(opened.Json()), into(records), budget(opened), warnings(opened)
    {
    }

    // Throws FileError when whoever opens the file does not want it any more.
    void GiveUpIfStopped() const;

    const OpenedFile& file;
    const JsonPlaces& json;
    CharacterFile& into;
    DecodeBudget budget;
    WarningList warnings;
    std::vector<std::size_t> jointLimits; // by mesh: one more than the largest joint with weight
    std::vector<OddWeights> oddWeights;   // by mesh
    std::stop_token stop;
};

// One attribute object of a primitive or of a NURBS surface, as indices into the file's accessors.
struct AttributeAccessors
{
    JsonValue object = JSON_NONE;
    JsonValue position = JSON_NONE;
    JsonValue normal = JSON_NONE;
    std::vector<JsonValue> joints;  // JOINTS_0, JOINTS_1, ...; as many as weights
    std::vector<JsonValue> weights; // WEIGHTS_0, WEIGHTS_1, ...
};

// Finds what the attributes name. Sets are counted as long as both halves are there; a half without the other is
// reported to `warnings` when there is one.
[[nodiscard]] AttributeAccessors FindAttributes(const OpenedFile& file, JsonValue attributes, WarningList* warnings);
// Resolves joints and weights and checks that they have `count` elements.
[[nodiscard]] std::vector<InfluenceSet> ViewInfluences(const OpenedFile& file, const AttributeAccessors& attributes,
                                                       std::size_t count, DecodeBudget& budget);

void ReadScenesAndNodes(Reading& reading);
void ReadMeshes(Reading& reading);
// Appends the triangles of a primitive; `vertices` says what each vertex of the file is called there.
void ReadTriangles(Reading& reading, JsonValue primitive, const std::vector<std::int32_t>& vertices,
                   std::vector<std::int32_t>& triangles);
void ReadSkins(Reading& reading);
void ReadMaterialsAndImages(Reading& reading);
void ReadAnimations(Reading& reading);

// Fills the mesh from its extension TW_nurbs_surface; false when it has none.
bool ReadNurbsSurface(Reading& reading, JsonValue mesh, std::size_t index, Mesh& into);
// The extension's object in a mesh, JSON_NONE when there is none.
[[nodiscard]] JsonValue NurbsExtensionOf(const OpenedFile& file, JsonValue mesh);

} // namespace skindesk::gltf
