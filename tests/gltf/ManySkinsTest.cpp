// SPDX-License-Identifier: MIT
// Files with very many skins, and meshes that have none.
#include "GltfBuilder.h"
#include "support/GltfCompare.h"

namespace skindesk::test {
namespace {

using gltf::CharacterFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

// The strip two hundred times over, each on a skin and on bones of its own; the meshes share their accessors.
GltfBuilder MakeCrowd(std::size_t size)
{
    GltfBuilder b = MakeValidCharacter();
    for (std::size_t i = 1; i < size; ++i) {
        const std::size_t first = b.json["nodes"].size();
        b.json["nodes"].push_back({{"mesh", i}, {"skin", i}});
        b.json["nodes"].push_back({{"name", "lower" + std::to_string(i)}, {"children", {first + 2}}});
        b.json["nodes"].push_back({{"name", "upper" + std::to_string(i)}, {"translation", {0, 1, 0}}});
        b.json["skins"].push_back(Json(b.json["skins"][0]));
        b.json["skins"].back()["joints"] = {first + 1, first + 2};
        b.json["meshes"].push_back(Json(b.json["meshes"][0]));
        b.json["scenes"][0]["nodes"].push_back(first);
        b.json["scenes"][0]["nodes"].push_back(first + 1);
    }
    return b;
}

TEST(ManySkins, AreEachOnTheirOwnBones)
{
    const CharacterFile file = MakeCrowd(200).Read();
    EXPECT_THAT(file.warnings, IsEmpty());
    ASSERT_EQ(file.skins.size(), 200u);
    EXPECT_THAT(file.skins[199].joints, ElementsAre(598, 599));
    EXPECT_EQ(file.nodes[597].skin, 199);
}

TEST(ManySkins, AnEditOfOneMeshLeavesAllOthersAsTheyWere)
{
    const TemporaryFolder folder;
    WriteBytes(folder / "opened.glb", MakeCrowd(200).Glb());
    const CharacterFile file = gltf::ReadCharacter(folder / "opened.glb");
    gltf::CharacterEdits edits{{WeightsOf(file, 300)}, {}};
    SetRow(edits.models[0], 2, {{0, 0.25}, {1, 0.75}});
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "saved.glb"));
    EXPECT_THAT(ForeignChanges(ReadRawGltf(folder / "opened.glb"), ReadRawGltf(folder / "saved.glb")), IsEmpty());
    const CharacterFile saved = gltf::ReadCharacter(folder / "saved.glb");
    for (std::size_t mesh = 0; mesh < 200; ++mesh) {
        const auto row = RowOf(saved.meshes[mesh].influences, 2);
        if (mesh == 100) {
            EXPECT_THAT(row, ElementsAre(Pair(0, 0.25), Pair(1, 0.75)));
        } else {
            EXPECT_EQ(row, RowOf(file.meshes[mesh].influences, 2)) << mesh;
        }
    }
}

TEST(MeshWithoutASkin, IsReadWithItsWeightsAndSavedAsItWas)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["nodes"][0].erase("skin");
    const CharacterFile withWeights = b.Read();
    EXPECT_EQ(withWeights.nodes[0].skin, -1);
    EXPECT_EQ(withWeights.meshes[0].VertexCount(), 8u);
    b.Primitive()["attributes"].erase("JOINTS_0");
    b.Primitive()["attributes"].erase("WEIGHTS_0");
    b.json.erase("skins");
    const CharacterFile plain = b.Read();
    EXPECT_THAT(plain.warnings, IsEmpty());
    EXPECT_EQ(plain.meshes[0].influenceSets, 0);
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(plain, {}, {}, folder / "a.glb"));
    EXPECT_EQ(ReadBytes(folder / "a.glb"), b.Glb());
}

TEST(Accessor, JointsMayBeSparseToo)
{
    GltfBuilder b = MakeValidCharacter();
    const std::size_t indices = b.AddAccessor("SCALAR", 5121, {2});
    const std::size_t values = b.AddAccessor("VEC4", 5123, {1, 0, 0, 0});
    b.Accessor("JOINTS_0")["sparse"] = {
        {"count", 1},
        {"indices", {{"bufferView", b.json["accessors"][indices]["bufferView"]}, {"componentType", 5121}}},
        {"values", {{"bufferView", b.json["accessors"][values]["bufferView"]}}}};
    const auto before = RowOf(MakeValidCharacter().Read().meshes[0].influences, 2);
    ASSERT_EQ(before.size(), 2u);
    EXPECT_THAT(RowOf(b.Read().meshes[0].influences, 2),
                ElementsAre(Pair(0, before[1].second), Pair(1, before[0].second)));
}

} // namespace
} // namespace skindesk::test
