// SPDX-License-Identifier: MIT
// What the records say of a file: nodes, meshes, skins, weights, animations.
#include "GltfBuilder.h"

#include <gmock/gmock.h>

#include <cmath>

namespace skindesk::test {
namespace {

using gltf::CharacterFile;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

TEST(ReadCharacter, AValidFileHasNoWarnings)
{
    const CharacterFile file = MakeValidCharacter().Read();
    EXPECT_THAT(file.warnings, IsEmpty());
    EXPECT_EQ(file.meshes[0].VertexCount(), 8u);
    EXPECT_EQ(file.meshes[0].triangles.size(), 18u);
    EXPECT_EQ(file.meshes[0].influenceSets, 1);
    EXPECT_THAT(file.skins[0].joints, ElementsAre(1, 2));
    EXPECT_EQ(file.defaultScene, 0);
    EXPECT_THAT(file.scenes[0].nodes, ElementsAre(0, 1));
}

TEST(ReadNodes, MatricesAreForRowVectors)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["nodes"][1]["translation"] = {1, 2, 3};
    b.json["nodes"][1]["rotation"] = {0, 0, std::sqrt(0.5), std::sqrt(0.5)}; // a quarter turn about Z
    b.json["nodes"][1]["scale"] = {2, 3, 4};
    b.json["nodes"][2].erase("translation");
    b.json["nodes"][2]["matrix"] = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 1};
    const CharacterFile file = b.Read();
    const std::array<double, 16> expected{0, 2, 0, 0, -3, 0, 0, 0, 0, 0, 4, 0, 1, 2, 3, 1};
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(file.nodes[1].matrix[i], expected[i], 1e-12) << i;
    }
    EXPECT_FALSE(file.nodes[1].hasMatrix);
    EXPECT_TRUE(file.nodes[2].hasMatrix);
    EXPECT_EQ(file.nodes[2].matrix[3 * 4 + 1], 11);
    EXPECT_EQ(file.nodes[2].parent, 1);
    EXPECT_EQ(file.nodes[0].parent, -1);
}

TEST(ReadNodes, AChainOfAHundredThousandNodesIsRead)
{
    GltfBuilder b = MakeValidCharacter();
    for (int i = 2; i < 100'000; ++i) {
        b.json["nodes"][static_cast<std::size_t>(i)]["children"] = {i + 1};
        b.json["nodes"].push_back({{"name", "n"}});
    }
    EXPECT_EQ(b.Read().nodes.back().parent, 99'999);
}

TEST(ReadNodes, TwoParentsAndCyclesAreRefused)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["nodes"][0]["children"] = {2};
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("a child of node 0 and of node 1"));
    b = MakeValidCharacter();
    b.json["nodes"][2]["children"] = {1};
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("its own ancestor"));
    b = MakeValidCharacter();
    b.json["nodes"][2]["children"] = {2};
    EXPECT_NE(RefusalOf(b.Glb()), "");
}

TEST(ReadNodes, NamesMayBeEmptyEqualAMegabyteLongOrFullOfControlCharacters)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["nodes"][0]["name"] = std::string(1 << 20, 'x');
    b.json["nodes"][1]["name"] = "";
    b.json["nodes"][2]["name"] = std::string("a\0b\n\xF0\x9F\x98\x80", 8);
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.nodes[0].name.size(), std::size_t{1} << 20);
    EXPECT_EQ(file.nodes[1].name, "");
    EXPECT_EQ(file.nodes[2].name, std::string("a\0b\n\xF0\x9F\x98\x80", 8));
    EXPECT_THAT(file.warnings, ElementsAre(HasSubstr("1 node name has control characters")));
}

TEST(ReadNodes, SeveralScenesAndTheDefaultOneAreKnown)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["scenes"].push_back({{"name", "second"}, {"nodes", {1}}});
    b.json["scene"] = 1;
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.scenes[1].name, "second");
    EXPECT_EQ(file.defaultScene, 1);
    b.json.erase("scene");
    EXPECT_EQ(b.Read().defaultScene, -1);
}

TEST(ReadWeights, SlotsOfWeightZeroAreNoEntriesWhateverTheirJoint)
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<double> joints(32, 60000);
    for (std::size_t v = 0; v < 8; ++v) {
        joints[v * 4 + 2] = 1;
    }
    std::vector<double> weights(32, 0);
    for (std::size_t v = 0; v < 8; ++v) {
        weights[v * 4 + 2] = 1;
    }
    b.Primitive()["attributes"]["JOINTS_0"] = b.AddAccessor("VEC4", 5123, joints);
    b.Primitive()["attributes"]["WEIGHTS_0"] = b.AddAccessor("VEC4", 5126, weights);
    const CharacterFile file = b.Read();
    EXPECT_THAT(file.warnings, IsEmpty());
    EXPECT_THAT(RowOf(file.meshes[0].influences, 4), ElementsAre(Pair(1, 1.0)));
}

TEST(ReadWeights, TwoSlotsOfOneJointAreOneEntrySummed)
{
    GltfBuilder b = MakeValidCharacter();
    b.Primitive()["attributes"]["JOINTS_0"] = b.AddAccessor("VEC4", 5121, std::vector<double>(32, 1));
    std::vector<double> weights;
    for (int v = 0; v < 8; ++v) {
        weights.insert(weights.end(), {0.5, 0.25, 0.125, 0.125});
    }
    b.Primitive()["attributes"]["WEIGHTS_0"] = b.AddAccessor("VEC4", 5126, weights);
    const CharacterFile file = b.Read();
    EXPECT_THAT(RowOf(file.meshes[0].influences, 0), ElementsAre(Pair(1, 1.0)));
    EXPECT_THAT(file.warnings, ElementsAre(HasSubstr("8 with weight for one joint in two slots")));
}

TEST(ReadWeights, AllSetsAreRead)
{
    GltfBuilder b = MakeValidCharacter();
    for (int joint = 3; joint < 12; ++joint) {
        b.json["nodes"].push_back({{"name", "extra"}});
        b.json["skins"][0]["joints"].push_back(joint);
    }
    b.json["skins"][0].erase("inverseBindMatrices");
    for (int set = 0; set < 3; ++set) {
        std::vector<double> joints;
        std::vector<double> weights;
        for (int v = 0; v < 8; ++v) {
            for (int k = 0; k < 4; ++k) {
                joints.push_back(std::min(10, set * 4 + k));
                weights.push_back(set * 4 + k < 11 ? 0.0625 : 0);
            }
        }
        b.Primitive()["attributes"]["JOINTS_" + std::to_string(set)] =
            b.AddAccessor("VEC4", set == 1 ? 5123 : 5121, joints);
        b.Primitive()["attributes"]["WEIGHTS_" + std::to_string(set)] = b.AddAccessor("VEC4", 5126, weights);
    }
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.meshes[0].influenceSets, 3);
    EXPECT_EQ(RowOf(file.meshes[0].influences, 5).size(), 11u);
    EXPECT_THAT(RowOf(file.meshes[0].influences, 5), Each(Pair(testing::_, 0.0625)));
}

TEST(ReadWeights, OddOnesAreKeptAndCountedInOneLine)
{
    GltfBuilder b = MakeValidCharacter();
    const std::vector<double> weights{NAN,  0.5, 0, 0, INFINITY, 0, 0, 0, -0.5, 1.5, 0, 0, 0, 0, 0, 0,
                                      0.25, 0,   0, 0, 1,        0, 0, 0, 1,    0,   0, 0, 1, 0, 0, 0};
    b.Primitive()["attributes"]["JOINTS_0"] =
        b.AddAccessor("VEC4", 5121, std::vector<double>{0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0,
                                                        0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0});
    b.Primitive()["attributes"]["WEIGHTS_0"] = b.AddAccessor("VEC4", 5126, weights);
    const CharacterFile file = b.Read();
    ASSERT_THAT(file.warnings, testing::SizeIs(1));
    EXPECT_THAT(file.warnings[0],
                HasSubstr("1 with a weight that is not a number, 1 with an infinite weight, 1 with a "
                          "negative weight, 1 without any weight, 1 whose weights do not add up to one "
                          "(at worst 0.750000 off)"));
    EXPECT_TRUE(std::isnan(RowOf(file.meshes[0].influences, 0)[0].second));
    EXPECT_THAT(RowOf(file.meshes[0].influences, 2), ElementsAre(Pair(0, -0.5), Pair(1, 1.5)));
    EXPECT_THAT(RowOf(file.meshes[0].influences, 3), IsEmpty());
}

TEST(ReadWeights, AJointWithWeightMustBeInEverySkinThatTheMeshHangsOn)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["nodes"].push_back({{"mesh", 0}, {"skin", 1}});
    b.json["skins"].push_back({{"joints", {1}}});
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("joint 1 has weight, skin 1 has 1 joint"));
}

TEST(ReadSkins, WithoutInverseBindMatricesHaveIdentities)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["skins"][0].erase("inverseBindMatrices");
    const CharacterFile file = b.Read();
    const std::array<double, 16> identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_THAT(file.skins[0].inverseBindMatrices, ElementsAre(identity, identity));
}

TEST(ReadSkins, FewerMatricesThanJointsAreRefusedWithBothNumbers)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["skins"][0]["joints"] = {1, 2, 0};
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("2 inverse bind matrices are there, the skin has 3 joints"));
}

TEST(ReadSkins, TheDeformationModeStandsInTheExtras)
{
    GltfBuilder b = MakeValidCharacter();
    EXPECT_EQ(b.Read().skins[0].mode, gltf::DeformMode::Normalise);
    b.json["skins"][0]["extras"]["deformMode"] = "additive";
    EXPECT_EQ(b.Read().skins[0].mode, gltf::DeformMode::Additive);
    b.json["skins"][0]["extras"]["deformMode"] = "total100";
    EXPECT_EQ(b.Read().skins[0].mode, gltf::DeformMode::Total100);
    b.json["skins"][0]["extras"]["deformMode"] = 7;
    EXPECT_EQ(b.Read().skins[0].mode, gltf::DeformMode::Normalise);
    EXPECT_THAT(b.Read().warnings, ElementsAre(HasSubstr("deformMode is none of")));
}

TEST(ReadSkins, TheSkinOfANodeWithoutMeshIsLeftOut)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["nodes"][1]["skin"] = 0;
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.nodes[1].skin, -1);
    EXPECT_THAT(file.warnings, ElementsAre(HasSubstr("shows no mesh")));
}

TEST(ReadTriangles, StripsAndFansKeepTheirWindingAndDropTheirStitches)
{
    GltfBuilder b = MakeValidCharacter();
    b.Primitive()["mode"] = 5;
    b.Primitive()["indices"] = b.AddAccessor("SCALAR", 5121, {0, 1, 2, 3, 3, 4, 5});
    EXPECT_THAT(b.Read().meshes[0].triangles, ElementsAre(0, 1, 2, 1, 3, 2, 3, 4, 5));
    b.Primitive()["mode"] = 6;
    b.Primitive()["indices"] = b.AddAccessor("SCALAR", 5121, {0, 1, 2, 3});
    EXPECT_THAT(b.Read().meshes[0].triangles, ElementsAre(1, 2, 0, 2, 3, 0));
}

TEST(ReadTriangles, WithoutIndicesFollowTheVertices)
{
    GltfBuilder b = MakeValidCharacter();
    b.Primitive().erase("indices");
    const CharacterFile file = b.Read();
    EXPECT_THAT(file.meshes[0].triangles, ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_THAT(file.warnings, ElementsAre(HasSubstr("8 corners are no multiple of three")));
}

TEST(ReadTriangles, PointsAndLinesAreVerticesWithoutPolygons)
{
    for (const int mode : {0, 1, 2, 3}) {
        GltfBuilder b = MakeValidCharacter();
        b.Primitive()["mode"] = mode;
        EXPECT_EQ(b.Read().meshes[0].VertexCount(), 8u);
        EXPECT_THAT(b.Read().meshes[0].triangles, IsEmpty());
    }
    GltfBuilder b = MakeValidCharacter();
    b.Primitive()["mode"] = 7;
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("mode is 7"));
}

TEST(ReadTriangles, AVertexThatIsNotThereIsRefused)
{
    GltfBuilder b = MakeValidCharacter();
    b.Primitive()["indices"] = b.AddAccessor("SCALAR", 5125, {0, 1, 4294967295.0});
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("vertex 4294967295 is named, there are 8 vertices"));
}

TEST(ReadMorphTargets, DisplacementsFollowTheDeskVertices)
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<double> moves(24, 0);
    moves[3] = 5;
    b.Primitive()["targets"] = Json::array({{{"POSITION", b.AddAccessor("VEC3", 5126, moves)}}, Json::object()});
    b.json["meshes"][0]["weights"] = {0.5, 0};
    b.json["meshes"][0]["extras"]["targetNames"] = {"smile", "frown"};
    const CharacterFile file = b.Read();
    ASSERT_EQ(file.meshes[0].morphTargets.size(), 2u);
    EXPECT_EQ(file.meshes[0].morphTargets[0].positions[3], 5);
    EXPECT_THAT(file.meshes[0].morphNames, ElementsAre("smile", "frown"));
    EXPECT_THAT(file.meshes[0].morphWeights, ElementsAre(0.5, 0));
}

TEST(ReadMorphTargets, PrimitivesOfOneMeshHaveEquallyMany)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["meshes"][0]["primitives"].push_back(b.Primitive());
    b.Primitive(0, 1)["targets"] = Json::array({Json::object()});
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("has 1 morph target, the first one of the mesh has 0"));
}

TEST(ReadAnimations, ChannelsAndSamplersOfAllKindsAreRead)
{
    GltfBuilder b = MakeValidCharacter();
    const std::size_t times = b.AddAccessor("SCALAR", 5126, {0, 0.5});
    const std::size_t moves = b.AddAccessor("VEC3", 5126, {0, 0, 0, 1, 2, 3});
    const std::size_t turns = b.AddAccessor("VEC4", 5122, {0, 0, 0, 32767, 0, 0, 32767, 0}, true);
    std::vector<double> spline(18, 0);
    spline[3] = 9;
    const std::size_t scales = b.AddAccessor("VEC3", 5126, spline);
    b.json["animations"] = Json::array({{{"name", "walk"},
                                         {"samplers",
                                          {{{"input", times}, {"output", moves}},
                                           {{"input", times}, {"output", turns}, {"interpolation", "STEP"}},
                                           {{"input", times}, {"output", scales}, {"interpolation", "CUBICSPLINE"}}}},
                                         {"channels",
                                          {{{"sampler", 0}, {"target", {{"node", 1}, {"path", "translation"}}}},
                                           {{"sampler", 1}, {"target", {{"node", 1}, {"path", "rotation"}}}},
                                           {{"sampler", 2}, {"target", {{"node", 2}, {"path", "scale"}}}},
                                           {{"sampler", 0}, {"target", {{"path", "pointer"}}}}}}}});
    const CharacterFile file = b.Read();
    ASSERT_EQ(file.animations.size(), 1u);
    const gltf::Animation& walk = file.animations[0];
    EXPECT_EQ(walk.name, "walk");
    ASSERT_EQ(walk.channels.size(), 3u);
    EXPECT_THAT(walk.samplers[0].values, ElementsAre(0, 0, 0, 1, 2, 3));
    EXPECT_THAT(walk.samplers[1].values, ElementsAre(0, 0, 0, 1, 0, 0, 1, 0));
    EXPECT_EQ(walk.samplers[1].interpolation, gltf::Interpolation::Step);
    EXPECT_EQ(walk.samplers[2].interpolation, gltf::Interpolation::CubicSpline);
    EXPECT_EQ(walk.channels[2].property, gltf::AnimatedProperty::Scale);
}

TEST(ReadAnimations, TooFewNumbersAreRefusedWithBothCounts)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["animations"] = Json::array(
        {{{"samplers",
           {{{"input", b.AddAccessor("SCALAR", 5126, {0, 1, 2})}, {"output", b.AddAccessor("VEC3", 5126, {0, 0, 0})}}}},
          {"channels", {{{"sampler", 0}, {"target", {{"node", 1}, {"path", "translation"}}}}}}}});
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("3 keys need 9 numbers for \"translation\", the output has 3"));
}

TEST(ReadMaterials, TheBaseColourTextureLeadsToItsPicture)
{
    GltfBuilder b = MakeValidCharacter();
    const std::size_t view = b.AddView({1, 2, 3, 4, 5});
    b.json["images"] =
        Json::array({{{"uri", "data:image/png;base64,AQID"}}, {{"bufferView", view}, {"mimeType", "image/png"}}});
    b.json["textures"] = Json::array({{{"source", 1}}, {{"source", 0}}});
    b.json["materials"] =
        Json::array({{{"pbrMetallicRoughness",
                       {{"baseColorFactor", {1, 0.5, 0, 1}}, {"baseColorTexture", {{"index", 0}, {"texCoord", 1}}}}}}});
    b.Primitive()["material"] = 0;
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.meshes[0].primitives[0].material, 0);
    EXPECT_EQ(file.materials[0].baseColourImage, 1);
    EXPECT_EQ(file.materials[0].texCoord, 1);
    EXPECT_EQ(file.materials[0].baseColour[1], 0.5);
    EXPECT_THAT(gltf::ImageBytes(file, 1), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(gltf::ImageBytes(file, 0), ElementsAre(1, 2, 3));
}

TEST(ReadMaterials, PicturesOutsideTheFolderAreWarnedOfAndNotShown)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["images"] = Json::array({{{"uri", "../textures/a.png"}}, {{"uri", "file:///etc/passwd"}}});
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.images[0].file, "");
    EXPECT_THAT(file.warnings, ElementsAre(HasSubstr("leads out of the folder"), HasSubstr("the scheme \"file\"")));
    EXPECT_THROW(static_cast<void>(gltf::ImageBytes(file, 0)), gltf::FileError);
}

TEST(ReadWarnings, AreNeverMoreThanAHundredLines)
{
    GltfBuilder b = MakeValidCharacter();
    for (int i = 0; i < 500; ++i) {
        b.json["nodes"].push_back({{"scale", {0, 0, 0}}});
    }
    EXPECT_EQ(b.Read().warnings.size(), 101u);
    EXPECT_EQ(b.Read().warnings.back(), "and 400 more warnings");
}

} // namespace
} // namespace skindesk::test
