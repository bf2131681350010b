// SPDX-License-Identifier: MIT
// Which point of its picture each corner of a mesh shows.
#include "GltfBuilder.h"

#include "gltf/FileError.h"
#include "gltf/Textures.h"

using namespace skindesk;
using namespace skindesk::test;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr int kFloat = 5126;
constexpr int kByte = 5121;

/// The strip with a picture on it; vertex i of the file shows the point (i / 8, 1 - i / 8).
GltfBuilder MakeTexturedCharacter()
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<double> points;
    for (int i = 0; i < 8; ++i)
        points.insert(points.end(), {i / 8.0, 1 - i / 8.0});
    b.Primitive()["attributes"]["TEXCOORD_0"] = b.AddAccessor("VEC2", kFloat, points);
    b.json["images"] = Json::array({{{"uri", "data:image/png;base64,AQID"}}});
    b.json["textures"] = Json::array({{{"source", 0}}});
    b.json["materials"] = Json::array({{{"pbrMetallicRoughness", {{"baseColorTexture", {{"index", 0}}}}}}});
    b.Primitive()["material"] = 0;
    return b;
}

Json& TextureOf(GltfBuilder& b) { return b.json["materials"][0]["pbrMetallicRoughness"]["baseColorTexture"]; }

TEST(TexCoords, EveryCornerHasThePointOfItsVertex)
{
    GltfBuilder b = MakeTexturedCharacter();
    const gltf::CharacterFile file = b.Read();
    const std::vector<float> points = gltf::ReadTexCoords(file, 0);
    ASSERT_EQ(points.size(), 2 * file.meshes[0].triangles.size());
    // Without seams the desk's vertices are the file's.
    for (std::size_t corner = 0; corner < file.meshes[0].triangles.size(); ++corner) {
        const auto vertex = static_cast<float>(file.meshes[0].triangles[corner]);
        EXPECT_EQ(points[2 * corner], vertex / 8);
        EXPECT_EQ(points[2 * corner + 1], 1 - vertex / 8);
    }
}

TEST(TexCoords, MeshWithoutAPictureHasNone)
{
    const gltf::CharacterFile file = MakeValidCharacter().Read();
    EXPECT_THAT(gltf::ReadTexCoords(file, 0), IsEmpty());
}

TEST(TexCoords, TransformOfTheTextureIsApplied)
{
    GltfBuilder b = MakeTexturedCharacter();
    TextureOf(b)["extensions"]["KHR_texture_transform"] = {{"offset", {0.5, 0.25}}, {"scale", {2, 4}}};
    const gltf::CharacterFile plain = MakeTexturedCharacter().Read(), moved = b.Read();
    const std::vector<float> before = gltf::ReadTexCoords(plain, 0), after = gltf::ReadTexCoords(moved, 0);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); i += 2) {
        EXPECT_FLOAT_EQ(after[i], 2 * before[i] + 0.5F);
        EXPECT_FLOAT_EQ(after[i + 1], 4 * before[i + 1] + 0.25F);
    }
}

TEST(TexCoords, QuarterTurnIsCounterClockwise)
{
    GltfBuilder b = MakeTexturedCharacter();
    TextureOf(b)["extensions"]["KHR_texture_transform"] = {{"rotation", 1.5707963267948966}};
    const std::vector<float> before = gltf::ReadTexCoords(MakeTexturedCharacter().Read(), 0);
    const std::vector<float> after = gltf::ReadTexCoords(b.Read(), 0);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); i += 2) {
        EXPECT_NEAR(after[i], before[i + 1], 1e-6);
        EXPECT_NEAR(after[i + 1], -before[i], 1e-6);
    }
}

TEST(TexCoords, NormalisedBytesAreFractions)
{
    GltfBuilder b = MakeTexturedCharacter();
    std::vector<double> points(16, 255);
    b.Primitive()["attributes"]["TEXCOORD_0"] = b.AddAccessor("VEC2", kByte, points, true);
    EXPECT_THAT(gltf::ReadTexCoords(b.Read(), 0), testing::Each(1.0F));
}

TEST(TexCoords, OtherCountThanPositionsIsRefused)
{
    GltfBuilder b = MakeTexturedCharacter();
    b.Primitive()["attributes"]["TEXCOORD_0"] = b.AddAccessor("VEC2", kFloat, {0, 0, 1, 1});
    const gltf::CharacterFile file = b.Read();
    try {
        static_cast<void>(gltf::ReadTexCoords(file, 0));
        FAIL() << "two points were taken for eight vertices";
    } catch (const gltf::FileError& error) {
        EXPECT_THAT(error.what(), HasSubstr("texture coordinates have 2 elements, POSITION has 8"));
    }
}

TEST(TexCoords, SetThatIsNotThereShowsTheCorner)
{
    GltfBuilder b = MakeTexturedCharacter();
    TextureOf(b)["texCoord"] = 3;
    EXPECT_THAT(gltf::ReadTexCoords(b.Read(), 0), testing::Each(0.0F));
}

} // namespace
