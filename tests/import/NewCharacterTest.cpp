// SPDX-License-Identifier: MIT
// Records of another kind of file become a glTF file that the ordinary reader takes without a word.
#include "import/NewCharacter.h"
#include "import/GltfText.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

namespace skindesk::test {
namespace {

using imports::NewCharacter;
using testing::Each;
using testing::ElementsAre;
using testing::FloatEq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

// A triangle on two bones, one above the other: node 0 shows it, 1 and 2 are the bones.
NewCharacter MakeTriangle()
{
    NewCharacter character;
    character.generator = "test";
    character.nodes.resize(3);
    character.nodes[0] = {"Flag", -1, {}, {0, 0, 0, 1}, {1, 1, 1}, {}, 0, 0};
    character.nodes[1].name = "Lower";
    character.nodes[2] = {"Upper", 1, {0, 1, 0}, {0, 0, 0, 1}, {1, 2, 1}, {}, -1, -1};
    character.meshes.resize(1);
    imports::NewMesh& mesh = character.meshes[0];
    mesh.name = "Cloth";
    mesh.positions = {0, 0, 0, 1, 0, 0, 0, 2, 0};
    mesh.triangles = {{{0, 1, 2}, -1}};
    mesh.influenceOffsets = {0, 1, 2, 4};
    mesh.influenceJoints = {0, 0, 1, 0};
    mesh.influenceWeights = {1, 1, 0.75F, 0.25F};
    character.skins = {{"Rig", {1, 2}, {}}};
    return character;
}

gltf::CharacterFile Written(NewCharacter character)
{
    return gltf::ReadCharacter(imports::WriteGlb(character, "other.file"), "other.glb");
}

std::string RefusalOf(const std::function<void(NewCharacter&)>& spoil)
{
    NewCharacter character = MakeTriangle();
    spoil(character);
    try {
        static_cast<void>(imports::WriteGlb(character, "other.file"));
    } catch (const gltf::FileError& error) {
        return error.what();
    }
    return "";
}

TEST(NewCharacter, WhatIsGivenIsReadBack)
{
    const gltf::CharacterFile file = Written(MakeTriangle());
    EXPECT_THAT(file.warnings, IsEmpty());
    ASSERT_THAT(file.nodes, SizeIs(3));
    EXPECT_EQ(file.nodes[2].name, "Upper");
    EXPECT_EQ(file.nodes[2].parent, 1);
    EXPECT_THAT(file.nodes[2].translation, ElementsAre(0, 1, 0));
    EXPECT_THAT(file.nodes[2].scale, ElementsAre(1, 2, 1));
    EXPECT_THAT(file.scenes[0].nodes, ElementsAre(0, 1));
    EXPECT_EQ(file.meshes[0].name, "Cloth");
    EXPECT_THAT(file.meshes[0].triangles, ElementsAre(0, 1, 2));
    EXPECT_THAT(file.meshes[0].influences.offsets, ElementsAre(0, 1, 2, 4));
    EXPECT_THAT(file.meshes[0].influences.joints, ElementsAre(0, 0, 0, 1));
    EXPECT_THAT(file.meshes[0].influences.weights, ElementsAre(1, 1, 0.25F, 0.75F));
    EXPECT_THAT(file.skins[0].joints, ElementsAre(1, 2));
}

TEST(NewCharacter, MaterialsTexturePlacesNormalsAndMorphTargetsAreWritten)
{
    NewCharacter character = MakeTriangle();
    character.materials = {{"Red", {1, 0, 0, 0.5}, true}};
    imports::NewMesh& mesh = character.meshes[0];
    mesh.triangles[0].material = 0;
    mesh.normals = {0, 0, 2, 0, 0, 0, 0, 0, -1}; // too long; none; as it should be
    mesh.texCoords = {0, 0, 1, 0, 0, 1};
    mesh.morphTargets = {{"Wave", {0, 0, 1, 0, 0, 0, 0, 0, 0}}};
    const gltf::CharacterFile file = Written(character);
    EXPECT_EQ(file.meshes[0].primitives[0].material, 0);
    EXPECT_THAT(file.materials[0].baseColour, ElementsAre(1, 0, 0, 0.5));
    EXPECT_THAT(file.meshes[0].normals, ElementsAre(0, 0, 1, 0, 0, 1, 0, 0, -1));
    EXPECT_THAT(file.meshes[0].morphNames, ElementsAre("Wave"));
    EXPECT_EQ(file.meshes[0].morphTargets[0].positions[2], 1);
}

TEST(NewCharacter, AnimationsAreWritten)
{
    NewCharacter character = MakeTriangle();
    imports::NewChannel turn{1, gltf::AnimatedProperty::Rotation, gltf::Interpolation::Linear, {0, 0.5F}, {}};
    turn.values = {0, 0, 0, 2, 0, 0, 0, 0}; // too long; none
    imports::NewChannel move{1, gltf::AnimatedProperty::Translation, gltf::Interpolation::Step, {0}, {1, 2, 3}};
    imports::NewChannel again = move;
    again.values = {9, 9, 9};
    character.animations = {{"Turn", {turn, move, again}}, {"Nothing", {}}};
    std::vector<std::uint8_t> bytes = imports::WriteGlb(character, "other.file");
    const gltf::CharacterFile file = gltf::ReadCharacter(bytes, "other.glb");
    ASSERT_THAT(file.animations, SizeIs(1));
    ASSERT_THAT(file.animations[0].channels, SizeIs(2));
    EXPECT_THAT(file.animations[0].samplers[0].values, ElementsAre(0, 0, 0, 1, 0, 0, 0, 1));
    EXPECT_THAT(file.animations[0].samplers[1].values, ElementsAre(1, 2, 3));
    EXPECT_EQ(file.animations[0].samplers[1].interpolation, gltf::Interpolation::Step);
    EXPECT_THAT(character.warnings, ElementsAre("1 animation channel moves what an earlier one moves already; the "
                                                "earlier one is kept"));
}

TEST(NewCharacter, MoreThanFourInfluencesAreKept)
{
    NewCharacter character = MakeTriangle();
    for (int i = 0; i < 300; ++i) {
        character.nodes.emplace_back().parent = 1;
        character.skins[0].joints.push_back(3 + i);
    }
    character.meshes[0].influenceOffsets = {0, 9, 10, 11};
    character.meshes[0].influenceJoints = {301, 1, 2, 3, 4, 5, 6, 7, 300, 0, 1};
    character.meshes[0].influenceWeights = {0.25F,   0.125F,  0.125F,  0.125F, 0.125F, 0.0625F,
                                            0.0625F, 0.0625F, 0.0625F, 1,      1};
    const gltf::CharacterFile file = Written(character);
    EXPECT_EQ(file.meshes[0].influenceSets, 3);
    EXPECT_EQ(file.meshes[0].influences.offsets[1], 9U);
    EXPECT_EQ(file.meshes[0].influences.joints[8], 301U);
    EXPECT_EQ(file.meshes[0].influences.weights[8], 0.25F);
    EXPECT_THAT(file.warnings, IsEmpty());
}

TEST(NewCharacter, WeightsBecomeThoseOfAWholeAndWhatChangedIsCounted)
{
    NewCharacter character = MakeTriangle();
    character.meshes[0].influenceOffsets = {0, 3, 5, 5};
    character.meshes[0].influenceJoints = {1, 0, 1, 0, 1};
    character.meshes[0].influenceWeights = {1, 2, 1, 0.5F, -0.5F};
    const std::vector<std::uint8_t> bytes = imports::WriteGlb(character, "other.file");
    const gltf::CharacterFile file = gltf::ReadCharacter(bytes, "other.glb");
    const gltf::Influences& read = file.meshes[0].influences;
    EXPECT_THAT(read.offsets, ElementsAre(0, 2, 3, 4));
    EXPECT_THAT(read.weights, ElementsAre(0.5F, 0.5F, 1, 1));
    EXPECT_EQ(read.joints[3], 0U);
    EXPECT_THAT(character.warnings,
                ElementsAre("1 vertex has weights below 0, which are left out",
                            "2 vertices have weights that do not add up to one; they are scaled",
                            "1 vertex of a skinned mesh has no weight; the skin's first bone pulls what has none"));
}

TEST(NewCharacter, BonesWithoutACommonAncestorGetOne)
{
    NewCharacter character = MakeTriangle();
    character.nodes[2].parent = -1;
    const gltf::CharacterFile file = Written(character);
    ASSERT_THAT(file.nodes, SizeIs(4));
    EXPECT_EQ(file.nodes[1].parent, 3);
    EXPECT_EQ(file.nodes[2].parent, 3);
    EXPECT_THAT(file.scenes[0].nodes, ElementsAre(3));
}

TEST(NewCharacter, MeshesWithoutVerticesAndSkinsWithoutBonesAreLeftOut)
{
    NewCharacter character = MakeTriangle();
    character.meshes.insert(character.meshes.begin(), imports::NewMesh{});
    character.skins.insert(character.skins.begin(), imports::NewSkin{});
    character.nodes[0].mesh = 1;
    character.nodes[0].skin = 1;
    character.nodes[1].mesh = 0;
    character.nodes[1].skin = 0;
    const gltf::CharacterFile file = Written(character);
    EXPECT_EQ(file.nodes[0].mesh, 0);
    EXPECT_EQ(file.nodes[0].skin, 0);
    EXPECT_EQ(file.nodes[1].mesh, -1);
    EXPECT_THAT(file.skins, SizeIs(1));
}

TEST(NewCharacter, AMeshOfPointsAloneIsAMeshWithoutPolygons)
{
    NewCharacter character = MakeTriangle();
    character.meshes[0].triangles.clear();
    const gltf::CharacterFile file = Written(character);
    EXPECT_EQ(file.meshes[0].VertexCount(), 3U);
    EXPECT_THAT(file.meshes[0].triangles, IsEmpty());
}

TEST(NewCharacter, ADeepChainAndAChainBackwardsAreWritten)
{
    NewCharacter character = MakeTriangle();
    const int count = 100000;
    character.nodes.resize(static_cast<std::size_t>(count));
    for (int i = 1; i + 1 < count; ++i) {
        character.nodes[static_cast<std::size_t>(i)].parent = i + 1; // parents behind their children
    }
    character.skins[0].joints = {1, 2};
    EXPECT_EQ(Written(character).nodes[1].parent, 2);
}

TEST(NewCharacter, NamesThatAreNoUtf8AreMadeReadable)
{
    NewCharacter character = MakeTriangle();
    character.nodes[1].name = "M\xFCller";
    EXPECT_EQ(Written(character).nodes[1].name, "M\xEF\xBF\xBDller");
}

TEST(NewCharacter, WhatDoesNotFitTogetherIsRefused)
{
    const auto mesh = [](auto change) { return RefusalOf([&](NewCharacter& c) { change(c.meshes[0]); }); };
    EXPECT_EQ(RefusalOf([](NewCharacter&) {}), "");
    EXPECT_EQ(RefusalOf([](NewCharacter& c) { c = {}; }), "other.file: holds nothing that the desk can show");
    EXPECT_EQ(RefusalOf([](NewCharacter& c) { c.nodes[1].parent = 2; }),
              "other.file: node \"Lower\": its parents lead in a circle");
    EXPECT_EQ(RefusalOf([](NewCharacter& c) { c.nodes[1].parent = 7; }),
              "other.file: node \"Lower\": its parent is no node");
    EXPECT_THAT(RefusalOf([](NewCharacter& c) { c.nodes[0].mesh = 1; }), HasSubstr("its mesh is not there"));
    EXPECT_THAT(RefusalOf([](NewCharacter& c) { c.nodes[0].skin = 1; }), HasSubstr("its skin is not there"));
    EXPECT_THAT(RefusalOf([](NewCharacter& c) { c.nodes[0].scale[1] = NOT_A_NUMBER; }),
                HasSubstr("its place is not a number"));
    EXPECT_THAT(RefusalOf([](NewCharacter& c) { c.skins[0].joints[1] = 3; }), HasSubstr("one of its bones is no node"));
    EXPECT_THAT(RefusalOf([](NewCharacter& c) { c.skins[0].joints[1] = 1; }), HasSubstr("names a bone twice"));
    EXPECT_THAT(RefusalOf([](NewCharacter& c) { c.skins[0].joints.pop_back(); }),
                HasSubstr("hangs on bones that its skin does not have"));
    EXPECT_THAT(mesh([](auto& m) { m.positions[4] = NOT_A_NUMBER; }), HasSubstr("not a number"));
    EXPECT_THAT(mesh([](auto& m) { m.positions.pop_back(); }), HasSubstr("not a number"));
    EXPECT_THAT(mesh([](auto& m) { m.normals = {0, 0, 1}; }), HasSubstr("not as many normals"));
    EXPECT_THAT(mesh([](auto& m) { m.triangles[0].corners[1] = 3; }), HasSubstr("vertex that is not there"));
    EXPECT_THAT(mesh([](auto& m) { m.triangles[0].corners.pop_back(); }), HasSubstr("three corners"));
    EXPECT_THAT(mesh([](auto& m) { m.triangles[0].material = 0; }), HasSubstr("its material is not there"));
    EXPECT_THAT(mesh([](auto& m) { m.influenceOffsets[1] = 3; }), HasSubstr("weights do not fit its vertices"));
    EXPECT_THAT(mesh([](auto& m) { m.influenceWeights[0] = NOT_A_NUMBER; }), HasSubstr("a weight is not a number"));
    EXPECT_THAT(RefusalOf([](NewCharacter& c) {
                    c.animations = {{"Bad", {{1, gltf::AnimatedProperty::Scale, {}, {0, 0}, {1, 1, 1, 1, 1, 1}}}}};
                }),
                HasSubstr("do not follow each other in time"));
    EXPECT_THAT(RefusalOf([](NewCharacter& c) {
                    c.animations = {{"Bad", {{1, gltf::AnimatedProperty::Scale, {}, {0, 1}, {1, 1, 1}}}}};
                }),
                HasSubstr("not as many values"));
}

TEST(NewCharacter, AsATextItIsTheSameCharacter)
{
    const gltf::CharacterFile binary = Written(MakeTriangle());
    const gltf::CharacterFile text = imports::AsGltfText(binary);
    EXPECT_EQ(text.path, "other.gltf");
    EXPECT_EQ(text.nodes.size(), binary.nodes.size());
    EXPECT_EQ(text.meshes[0].positions, binary.meshes[0].positions);
    EXPECT_EQ(text.meshes[0].influences.weights, binary.meshes[0].influences.weights);
    EXPECT_EQ(text.skins[0].inverseBindMatrices, binary.skins[0].inverseBindMatrices);
}

RC_GTEST_PROP(NewCharacterProperty, WhateverTheWeightsEachVertexAddsUpToOne, ())
{
    NewCharacter character = MakeTriangle();
    for (int i = 0; i < 7; ++i) {
        character.nodes.emplace_back().parent = 1;
        character.skins[0].joints.push_back(3 + i);
    }
    imports::NewMesh& mesh = character.meshes[0];
    mesh.influenceOffsets = {0};
    mesh.influenceJoints.clear();
    mesh.influenceWeights.clear();
    for (int v = 0; v < 3; ++v) {
        const auto row = *rc::gen::container<std::vector<std::pair<int, int>>>(
            rc::gen::pair(rc::gen::inRange(0, 9), rc::gen::inRange(-3, 1000)));
        for (const auto& [joint, weight] : row) {
            mesh.influenceJoints.push_back(static_cast<std::uint32_t>(joint));
            mesh.influenceWeights.push_back(static_cast<float>(weight) / 700);
        }
        mesh.influenceOffsets.push_back(static_cast<std::uint32_t>(mesh.influenceJoints.size()));
    }
    const gltf::CharacterFile file = Written(character);
    const gltf::Influences& read = file.meshes[0].influences;
    for (std::size_t v = 0; v < 3; ++v) {
        const double sum =
            std::accumulate(read.weights.begin() + read.offsets[v], read.weights.begin() + read.offsets[v + 1], 0.0);
        RC_ASSERT(std::abs(sum - 1) < 1e-7);
    }
}

} // namespace
} // namespace skindesk::test
