// SPDX-License-Identifier: MIT
// COLLADA files as new characters.
#include "ColladaText.h"

#include "assimp/AssimpFile.h"
#include "assimp/SceneImport.h"

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <unistd.h>

namespace skindesk::test {
namespace {

using imports::NewCharacter;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

NewCharacter ImportText(const std::string& text)
{
    return assimp::ImportScene({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                               assimp::SceneKind::Collada, "tiny.dae");
}

int NodeNamed(const NewCharacter& character, const std::string& name)
{
    for (std::size_t i = 0; i < character.nodes.size(); ++i) {
        if (character.nodes[i].name == name) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

const imports::NewNode& At(const NewCharacter& character, const std::string& name)
{
    return character.nodes.at(static_cast<std::size_t>(NodeNamed(character, name)));
}

using Row = std::map<int, float>; // node of the joint -> weight

// By place of the vertex, in the mesh's own space.
std::map<std::pair<float, float>, Row> RowsByPlace(const NewCharacter& character, const imports::NewNode& node)
{
    const imports::NewMesh& mesh = character.meshes.at(static_cast<std::size_t>(node.mesh));
    const imports::NewSkin& skin = character.skins.at(static_cast<std::size_t>(node.skin));
    std::map<std::pair<float, float>, Row> rows;
    for (std::size_t v = 0; v + 1 < mesh.influenceOffsets.size(); ++v) {
        Row& row = rows[{mesh.positions[3 * v], mesh.positions[3 * v + 1]}];
        row.clear();
        for (std::size_t e = mesh.influenceOffsets[v]; e < mesh.influenceOffsets[v + 1]; ++e) {
            row[skin.joints.at(mesh.influenceJoints[e])] += mesh.influenceWeights[e];
        }
    }
    return rows;
}

TEST(ImportCollada, ASkinnedStripKeepsNamesHierarchyBindMatricesAndWeights)
{
    NewCharacter character = ImportText(ColladaStrip{}.Text());
    EXPECT_THAT(character.warnings, IsEmpty());
    const int lower = NodeNamed(character, "Bone0");
    const int upper = NodeNamed(character, "Bone1");
    ASSERT_GE(lower, 0);
    ASSERT_GE(upper, 0);
    EXPECT_EQ(character.nodes[static_cast<std::size_t>(lower)].parent, -1);
    EXPECT_EQ(character.nodes[static_cast<std::size_t>(upper)].parent, lower);
    EXPECT_THAT(character.nodes[static_cast<std::size_t>(upper)].translation, ElementsAre(0, 1, 0));

    const imports::NewNode& strip = At(character, "Strip");
    ASSERT_GE(strip.skin, 0);
    const imports::NewSkin& skin = character.skins.at(static_cast<std::size_t>(strip.skin));
    EXPECT_THAT(skin.joints, ElementsAre(lower, upper));
    EXPECT_THAT(skin.inverseBindMatrices[1], ElementsAre(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -1, 0, 1));
    const auto rows = RowsByPlace(character, strip);
    EXPECT_EQ(rows.size(), 6u);
    EXPECT_EQ(rows.at({0, 0}), (Row{{lower, 1.0F}}));
    EXPECT_EQ(rows.at({0, 1}), (Row{{lower, 0.75F}, {upper, 0.25F}}));
    EXPECT_EQ(rows.at({1, 1}), (Row{{lower, 0.5F}, {upper, 0.5F}}));
    EXPECT_EQ(rows.at({1, 2}), (Row{{upper, 1.0F}}));
    // Two quads are four triangles.
    ASSERT_EQ(character.meshes[0].triangles.size(), 1u);
    EXPECT_EQ(character.meshes[0].triangles[0].corners.size(), 12u);
}

TEST(ImportCollada, WhatWasReadBecomesAFileThatTheOrdinaryReaderOpens)
{
    NewCharacter character = ImportText(ColladaStrip{}.Text());
    const gltf::CharacterFile file = gltf::ReadCharacter(imports::WriteGlb(character, "tiny.dae"), "tiny.glb");
    EXPECT_THAT(file.warnings, IsEmpty());
    ASSERT_EQ(file.skins.size(), 1u);
    ASSERT_EQ(file.meshes.size(), 1u);
    EXPECT_EQ(file.meshes[0].VertexCount(), 6u);
    EXPECT_EQ(file.meshes[0].influences.weights.size(), 8u);
}

TEST(ImportCollada, SixInfluencesOfAVertexAreAllKept)
{
    ColladaStrip strip;
    strip.bones = 6;
    strip.weights = {
        {{0, 0.25}, {1, 0.25}, {2, 0.125}, {3, 0.125}, {4, 0.125}, {5, 0.125}}, {{0, 1}}, {{1, 1}}, {{2, 1}}};
    const NewCharacter character = ImportText(strip.Text());
    EXPECT_THAT(character.warnings, IsEmpty());
    const auto rows = RowsByPlace(character, At(character, "Strip"));
    EXPECT_EQ(rows.at({0, 0}).size(), 6u);
    EXPECT_EQ(rows.at({0, 0}).at(NodeNamed(character, "Bone5")), 0.125F);
}

TEST(ImportCollada, CentimetresAndZUpBecomeMetresAndYUp)
{
    ColladaStrip strip;
    strip.unit = "0.01";
    strip.upAxis = "Z_UP";
    const NewCharacter character = ImportText(strip.Text());
    // Whatever node carries it: the second bone stands one of the file's units along its Y, which points backwards.
    std::array<double, 3> place{0, 0, 0};
    for (int at = NodeNamed(character, "Bone1"); at >= 0; at = character.nodes[static_cast<std::size_t>(at)].parent) {
        const imports::NewNode& node = character.nodes[static_cast<std::size_t>(at)];
        const auto& [x, y, z, w] = node.rotation;
        std::array<double, 3> p{place[0] * node.scale[0], place[1] * node.scale[1], place[2] * node.scale[2]};
        const std::array<double, 3> t{2 * (y * p[2] - z * p[1]), 2 * (z * p[0] - x * p[2]), 2 * (x * p[1] - y * p[0])};
        place = {p[0] + w * t[0] + y * t[2] - z * t[1] + node.translation[0],
                 p[1] + w * t[1] + z * t[0] - x * t[2] + node.translation[1],
                 p[2] + w * t[2] + x * t[1] - y * t[0] + node.translation[2]};
    }
    EXPECT_THAT(place, ElementsAre(testing::DoubleNear(0, 1e-6), testing::DoubleNear(0, 1e-6),
                                   testing::DoubleNear(-0.01, 1e-6)));
}

TEST(ImportCollada, AnimationsMoveBonesInSeconds)
{
    ColladaStrip strip;
    strip.libraries = ColladaAnimation("Bone1", {0, 0.5, 2}, {1, 3, 1});
    const NewCharacter character = ImportText(strip.Text());
    ASSERT_EQ(character.animations.size(), 1u);
    bool isFound = false;
    for (const imports::NewChannel& channel : character.animations[0].channels) {
        if (channel.property == gltf::AnimatedProperty::Translation) {
            isFound = true;
            EXPECT_EQ(channel.node, NodeNamed(character, "Bone1"));
            EXPECT_THAT(channel.times, ElementsAre(0, 0.5, 2));
            EXPECT_THAT(channel.values, ElementsAre(0, 1, 0, 0, 3, 0, 0, 1, 0));
        }
    }
    EXPECT_TRUE(isFound);
}

TEST(ImportCollada, AnAnimationFromBeforeZeroBeginsThereWithAWarning)
{
    ColladaStrip strip;
    strip.libraries = ColladaAnimation("Bone1", {-1, 0, 1}, {1, 3, 1});
    const NewCharacter character = ImportText(strip.Text());
    EXPECT_THAT(character.warnings, Contains("1 animation began before 0 seconds and begins there now"));
    ASSERT_EQ(character.animations.size(), 1u);
    EXPECT_THAT(character.animations[0].channels.at(0).times, ElementsAre(0, 1, 2));
}

TEST(ImportCollada, TheBindShapeIsPartOfTheBindMatrices)
{
    ColladaStrip strip;
    strip.bindShape = "2 0 0 0 0 2 0 0 0 0 2 0 0 0 0 1";
    const NewCharacter character = ImportText(strip.Text());
    EXPECT_THAT(character.skins.at(0).inverseBindMatrices.at(1),
                ElementsAre(2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, -1, 0, 1));
}

TEST(ImportCollada, ABoneWithoutANodeLosesItsWeightsWithAWarning)
{
    std::string text = ColladaStrip{}.Text();
    const std::string node = "<node id='Bone1' sid='Bone1' name='Bone1'";
    text.replace(text.find(node), node.size(), "<node id='Other' sid='Other' name='Other'");
    const NewCharacter character = ImportText(text);
    EXPECT_THAT(character.warnings, Contains("1 bone has no node of its name; its weights are left out"));
    EXPECT_THAT(character.skins.at(0).joints, ElementsAre(NodeNamed(character, "Bone0")));
}

TEST(ImportCollada, AShearedNodeKeepsItsMatrix)
{
    ColladaStrip strip;
    strip.nodes = "<node id='leaning' name='leaning'><matrix>1 0.5 0 3 0 1 0 4 0 0 1 5 0 0 0 1</matrix></node>";
    const NewCharacter character = ImportText(strip.Text());
    ASSERT_TRUE(At(character, "leaning").matrix.has_value());
    EXPECT_THAT(*At(character, "leaning").matrix, ElementsAre(1, 0, 0, 0, 0.5, 1, 0, 0, 0, 0, 1, 0, 3, 4, 5, 1));
    EXPECT_THAT(character.warnings, Contains("1 node is sheared and keeps its matrix"));
}

// Two triangles of two materials.
constexpr const char* TWO_COLOURS =
    "<library_effects><effect id='red-effect'><profile_COMMON><technique sid='t'><lambert><diffuse><color>1 0 0 "
    "1</color>"
    "</diffuse></lambert></technique></profile_COMMON></effect><effect id='blue-effect'><profile_COMMON><technique "
    "sid='t'><lambert><diffuse><color>0 0 1 1</color></diffuse></lambert></technique></profile_COMMON></effect>"
    "</library_effects><library_materials><material id='red' name='red'><instance_effect url='#red-effect'/></material>"
    "<material id='blue' name='blue'><instance_effect url='#blue-effect'/></material></library_materials>"
    "<library_geometries><geometry id='two' name='Two'><mesh><source id='two-places'><float_array id='two-array' "
    "count='12'>0 0 0 1 0 0 0 1 0 1 1 0</float_array><technique_common><accessor source='#two-array' count='4' "
    "stride='3'><param name='X' type='float'/><param name='Y' type='float'/><param name='Z' type='float'/></accessor>"
    "</technique_common></source><vertices id='two-vertices'><input semantic='POSITION' "
    "source='#two-places'/></vertices>"
    "<triangles material='A' count='1'><input semantic='VERTEX' source='#two-vertices' offset='0'/><p>0 1 "
    "2</p></triangles>"
    "<triangles material='B' count='1'><input semantic='VERTEX' source='#two-vertices' offset='0'/><p>1 3 "
    "2</p></triangles>"
    "</mesh></geometry></library_geometries>";

std::string NodeWithTwoColours(const std::string& name)
{
    return "<node id='" + name + "' name='" + name +
           "'><instance_geometry url='#two'><bind_material><technique_common><instance_material symbol='A' "
           "target='#red'/><instance_material symbol='B' target='#blue'/></technique_common></bind_material>"
           "</instance_geometry></node>";
}

TEST(ImportCollada, SeveralMaterialsOfOneNodeAreOneMeshAndSeveralNodesMayShowIt)
{
    ColladaStrip strip;
    strip.libraries = TWO_COLOURS;
    strip.nodes = NodeWithTwoColours("first") + NodeWithTwoColours("second");
    const NewCharacter character = ImportText(strip.Text());
    EXPECT_THAT(character.warnings, IsEmpty());
    ASSERT_EQ(character.meshes.size(), 2u);
    const imports::NewNode& first = At(character, "first");
    EXPECT_EQ(At(character, "second").mesh, first.mesh);
    EXPECT_NE(At(character, "Strip").mesh, first.mesh);
    EXPECT_EQ(first.skin, -1);
    const imports::NewMesh& mesh = character.meshes.at(static_cast<std::size_t>(first.mesh));
    ASSERT_EQ(mesh.triangles.size(), 2u);
    std::vector<std::string> colours;
    for (const imports::NewTriangles& triangles : mesh.triangles) {
        EXPECT_EQ(triangles.corners.size(), 3u);
        colours.push_back(character.materials.at(static_cast<std::size_t>(triangles.material)).name);
    }
    EXPECT_THAT(colours, ElementsAre("red", "blue"));
    EXPECT_THAT(character.materials.at(static_cast<std::size_t>(mesh.triangles[1].material)).baseColour,
                ElementsAre(0, 0, 1, 1));
}

TEST(ImportCollada, OneGeometryWithAndWithoutBonesIsTwoMeshes)
{
    ColladaStrip strip;
    strip.nodes = "<node id='stiff' name='Stiff'><instance_geometry url='#strip'/></node>";
    const NewCharacter character = ImportText(strip.Text());
    const imports::NewNode& stiff = At(character, "Stiff");
    const imports::NewNode& soft = At(character, "Strip");
    EXPECT_EQ(stiff.skin, -1);
    EXPECT_GE(soft.skin, 0);
    EXPECT_NE(stiff.mesh, soft.mesh);
    EXPECT_THAT(character.meshes.at(static_cast<std::size_t>(stiff.mesh)).influenceOffsets, IsEmpty());
}

TEST(ImportCollada, WhatHasNoPlaceIsSaidWithItsCount)
{
    ColladaStrip strip;
    strip.libraries =
        "<library_cameras><camera id='cam'><optics><technique_common><perspective><xfov>40</xfov><znear>1</znear>"
        "<zfar>9</zfar></perspective></technique_common></optics></camera></library_cameras><library_lights><light "
        "id='lamp'><technique_common><point><color>1 1 1</color></point></technique_common></light></library_lights>";
    strip.nodes = "<node id='a' name='a'><instance_camera url='#cam'/></node>"
                  "<node id='b' name='b'><instance_light url='#lamp'/></node>";
    EXPECT_THAT(ImportText(strip.Text()).warnings, ElementsAre("1 camera is left out", "1 light is left out"));
}

TEST(ImportCollada, BrokenTextsAreOneSentence)
{
    const auto refusal = [](const std::string& text) -> std::string {
        try {
            static_cast<void>(ImportText(text));
            return "";
        } catch (const gltf::FileError& error) {
            EXPECT_EQ(error.path(), "tiny.dae");
            EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
            return error.what();
        }
    };
    EXPECT_EQ(refusal(""), "tiny.dae: the file is empty");
    EXPECT_THAT(refusal("this is no XML"), HasSubstr("tiny.dae: cannot be read: "));
    EXPECT_THAT(refusal("<svg/>"), HasSubstr("tiny.dae: cannot be read: "));
    EXPECT_THAT(refusal("<COLLADA version='1.4.1'></COLLADA>"), HasSubstr("tiny.dae: cannot be read: "));
    std::string text = ColladaStrip{}.Text();
    EXPECT_THAT(refusal(text.substr(0, text.size() / 2)), HasSubstr("tiny.dae: cannot be read: "));
    text.replace(text.find("#strip'"), 7, "#gone'");
    EXPECT_THAT(refusal(text), testing::Not(HasSubstr("\n")));
}

class ColladaFile : public testing::Test
{
protected:
    ColladaFile()
        : m_path(std::filesystem::temp_directory_path() / ("skindesk-collada-" + std::to_string(::getpid()) + ".dae"))
    {
    }
    ~ColladaFile() override { std::filesystem::remove(m_path); }
    // What reading the text in a process of its own says; "" when it is taken.
    std::string RefusalOf(const std::string& text)
    {
        std::ofstream(m_path, std::ios::binary) << text;
        try {
            m_read = assimp::ReadCollada(m_path.string());
            return "";
        } catch (const gltf::FileError& error) {
            EXPECT_EQ(error.path(), m_path.string());
            return error.what();
        }
    }
    std::filesystem::path m_path;
    NewCharacter m_read;
};

TEST_F(ColladaFile, IsReadApartAndComesOverWhole)
{
    ColladaStrip strip;
    strip.libraries = ColladaAnimation("Bone1", {0, 1}, {1, 2});
    ASSERT_EQ(RefusalOf(strip.Text()), "");
    NewCharacter here = ImportText(strip.Text());
    EXPECT_EQ(imports::WriteGlb(m_read, "x"), imports::WriteGlb(here, "x"));
    EXPECT_EQ(m_read.warnings, here.warnings);
}

TEST_F(ColladaFile, CutAnywhereIsOneSentenceOrACharacter)
{
    const std::string text = ColladaStrip{}.Text();
    for (std::size_t length = 0; length < text.size(); length += 97) {
        EXPECT_NE(RefusalOf(text.substr(0, length)), "") << length;
    }
}

TEST_F(ColladaFile, AHundredThousandNodesDeepIsASentenceOrACharacterAndNoBreakdownHere)
{
    constexpr int DEPTH = 100'000;
    ColladaStrip strip;
    for (int i = 0; i < DEPTH; ++i) {
        strip.nodes += "<node name='n'>";
    }
    for (int i = 0; i < DEPTH; ++i) {
        strip.nodes += "</node>";
    }
    const std::string refusal = RefusalOf(strip.Text());
    EXPECT_TRUE(refusal.empty() || refusal.find("cannot be read: ") != std::string::npos) << refusal;
}

TEST_F(ColladaFile, AMissingFileOrAFolderIsRefused)
{
    EXPECT_THROW(static_cast<void>(assimp::ReadCollada(m_path.string())), gltf::FileError);
    EXPECT_THROW(static_cast<void>(assimp::ReadCollada("/")), gltf::FileError);
}

} // namespace
} // namespace skindesk::test
