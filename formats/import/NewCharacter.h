// SPDX-License-Identifier: MIT
// A character that came from a file of another kind, on its way to a new glTF file.
//
// A reader of such a file fills a NewCharacter and hands it to WriteGlb; the bytes are then opened by the ordinary
// reader, so that everything behind it (scene, edits, saving, checks) is the same as for a file that was glTF all
// along.
//
// Indices count from 0, -1 means "none". Space is glTF's: metres, right-handed, Y up, counter-clockwise front faces.
// Matrices are 16 numbers in the order in which glTF lists them: read row by row a matrix for row vectors, with the
// translation in numbers 12 to 14. Quaternions are x y z w. Times are seconds. Texts are UTF-8.
#pragma once

#include "gltf/CharacterFile.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace skindesk::imports {

struct NewNode
{
    std::string name;
    int parent = -1; // the parents form no cycle; they may stand behind their children
    std::array<double, 3> translation{0, 0, 0};
    std::array<double, 4> rotation{0, 0, 0, 1};
    std::array<double, 3> scale{1, 1, 1};
    std::optional<std::array<double, 16>> matrix; // instead of the three above; such a node cannot be animated
    int mesh = -1;
    int skin = -1; // only with a mesh
};

// Triangles of one material.
struct NewTriangles
{
    std::vector<std::uint32_t> corners; // 3 vertices of the mesh each
    int material = -1;
};

struct NewMorphTarget
{
    std::string name;
    std::vector<float> positions; // displacements, 3 per vertex
};

// A surface whose control points are the mesh's vertices, U fastest. The polygon mesh that shows it to programs that
// know no surfaces is made on writing; `triangles` stays empty.
struct NewNurbsSurface
{
    std::array<int, 2> degree{};              // in U and in V, 1 to 5
    std::array<int, 2> count{};               // control points in U and in V
    std::array<std::vector<double>, 2> knots; // count + degree + 1 each, not descending
    std::vector<double> pointWeights;         // one per control point, above 0; empty: all 1
    std::array<int, 2> grid{};                // vertices of the polygon mesh; 0: chosen by the number of spans
    int material = -1;
};

struct NewMesh
{
    std::string name;
    std::vector<float> positions; // 3 per vertex, finite
    std::vector<float> normals;   // 3 per vertex; empty: none
    std::vector<float> texCoords; // 2 per vertex, V downwards as in glTF; empty: none
    std::vector<NewTriangles> triangles;
    std::vector<NewMorphTarget> morphTargets;

    // Who pulls a vertex: the entries [influenceOffsets[v], influenceOffsets[v + 1]). All four empty: no skin.
    // Any number of entries per vertex, in any order; two of one joint are summed, those not above 0 dropped. Sums that
    // are not one are scaled and a vertex without weight hangs on joint 0, since glTF wants both so; WriteGlb says how
    // many vertices that were.
    std::vector<std::uint32_t> influenceOffsets; // one more than there are vertices
    std::vector<std::uint32_t> influenceJoints;  // positions in the skin's joints
    std::vector<float> influenceWeights;

    std::optional<NewNurbsSurface> nurbs;
};

struct NewSkin
{
    std::string name;
    std::vector<int> joints;                                 // nodes
    std::vector<std::array<double, 16>> inverseBindMatrices; // one per joint; empty: identities
};

struct NewChannel
{
    int node = -1;
    gltf::AnimatedProperty property = gltf::AnimatedProperty::Translation;
    gltf::Interpolation interpolation = gltf::Interpolation::Linear;
    std::vector<float> times;  // ascending, none twice, not below 0
    std::vector<float> values; // as of gltf::AnimationSampler
};

struct NewAnimation
{
    std::string name;
    std::vector<NewChannel> channels;
};

struct NewMaterial
{
    std::string name;
    std::array<double, 4> baseColour{1, 1, 1, 1}; // linear red, green, blue, alpha; 0 to 1
    bool doubleSided = false;
};

struct NewCharacter
{
    std::string generator; // what stands in the file as its maker
    std::vector<NewNode> nodes;
    std::vector<NewMesh> meshes;
    std::vector<NewSkin> skins;
    std::vector<NewAnimation> animations;
    std::vector<NewMaterial> materials;
    std::vector<std::string> warnings; // what the other file held and glTF or the desk has no place for, a line each
};

// The bytes of a .glb file. Meshes keep their vertices, their order and all their influences. Lines about what had to
// be changed for a valid file are added to `character.warnings`.
// Throws gltf::FileError with `path` (the file that the character came from) when the records do not fit together or
// hold numbers that are not finite; nothing is written.
[[nodiscard]] std::vector<std::uint8_t> WriteGlb(NewCharacter& character, const std::string& path);

} // namespace skindesk::imports
