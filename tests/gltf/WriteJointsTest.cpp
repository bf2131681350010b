// SPDX-License-Identifier: MIT
// Bones that became joints, and meshes that several nodes show.
#include "GltfBuilder.h"
#include "support/GltfCompare.h"

#include <gmock/gmock.h>

namespace skindesk::test {
namespace {

using gltf::CharacterEdits;
using gltf::CharacterFile;
using gltf::SaveReport;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Row = std::vector<std::pair<std::uint32_t, double>>;

TEST(WriteJoints, AddedOnesGetTheirMatricesBehindTheFiles)
{
    const GltfBuilder b = MakeValidCharacter();
    const TemporaryFolder folder;
    WriteBytes(folder / "a.glb", b.Glb());
    const CharacterFile file = gltf::ReadCharacter(folder / "a.glb");
    CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    std::array<double, 16> matrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 4, 5, 6, 1};
    edits.addedJoints.push_back({0, 0, matrix});
    SetRow(edits.models[0], 7, {{1, 0.5}, {2, 0.5}});
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "b.glb"));
    const CharacterFile saved = gltf::ReadCharacter(folder / "b.glb");
    EXPECT_THAT(saved.skins[0].joints, ElementsAre(1, 2, 0));
    EXPECT_EQ(saved.skins[0].inverseBindMatrices[2], matrix);
    EXPECT_EQ(saved.skins[0].inverseBindMatrices[1], file.skins[0].inverseBindMatrices[1]);
    EXPECT_THAT(RowOf(saved.meshes[0].influences, 7), ElementsAre(Pair(1, 0.5), Pair(2, 0.5)));
    EXPECT_THAT(ForeignChanges(ReadRawGltf(folder / "a.glb"), ReadRawGltf(folder / "b.glb")), IsEmpty());
}

TEST(WriteJoints, ASkinWithoutMatricesGetsThemOnlyWhenTheNewOneIsNoIdentity)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["skins"][0].erase("inverseBindMatrices");
    const CharacterFile file = b.Read();
    const TemporaryFolder folder;
    CharacterEdits edits;
    edits.addedJoints.push_back({0, 0});
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "a.glb"));
    EXPECT_FALSE(ReadRawGltf(folder / "a.glb").json["skins"][0].contains("inverseBindMatrices"));
    edits.addedJoints[0].inverseBindMatrix[12] = 3;
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "a.glb"));
    const CharacterFile saved = gltf::ReadCharacter(folder / "a.glb");
    EXPECT_EQ(saved.skins[0].inverseBindMatrices[0], file.skins[0].inverseBindMatrices[0]);
    EXPECT_EQ(saved.skins[0].inverseBindMatrices[2][12], 3);
}

class OneMeshTwoNodes : public testing::Test
{
protected:
    OneMeshTwoNodes()
    {
        m_builder.json["nodes"].push_back({{"name", "twin"}, {"mesh", 0}, {"skin", 1}});
        m_builder.json["skins"].push_back({{"joints", {2, 1}}});
        WriteBytes(m_folder / "opened.glb", m_builder.Glb());
        m_file = gltf::ReadCharacter(m_folder / "opened.glb");
    }

    // Saves with a row for vertex 2 of the first and of the second node; an empty row leaves the node as it is.
    CharacterFile Save(const Row& first, const Row& second)
    {
        CharacterEdits edits;
        for (const auto& [node, row] : {std::pair{0, first}, std::pair{3, second}}) {
            if (!row.empty()) {
                edits.models.push_back(WeightsOf(m_file, node));
                SetRow(edits.models.back(), 2, row);
            }
        }
        m_report = gltf::WriteCharacter(m_file, edits, {}, m_folder / "saved.glb");
        m_foreign = ForeignChanges(ReadRawGltf(m_folder / "opened.glb"), ReadRawGltf(m_folder / "saved.glb"));
        return gltf::ReadCharacter(m_folder / "saved.glb");
    }

    static Row RowOfNode(const CharacterFile& file, std::size_t node)
    {
        return RowOf(file.meshes[static_cast<std::size_t>(file.nodes[node].mesh)].influences, 2);
    }

    TemporaryFolder m_folder;
    GltfBuilder m_builder = MakeValidCharacter();
    CharacterFile m_file;
    SaveReport m_report;
    std::vector<std::string> m_foreign;
};

TEST_F(OneMeshTwoNodes, EditedAlikeStayOneMesh)
{
    const CharacterFile saved = Save({{0, 1.0}}, {{0, 1.0}});
    EXPECT_EQ(saved.meshes.size(), 1u);
    EXPECT_THAT(RowOfNode(saved, 3), ElementsAre(Pair(0, 1.0)));
    EXPECT_EQ(m_report.verticesChanged, 2u);
    EXPECT_THAT(m_foreign, IsEmpty());
}

TEST_F(OneMeshTwoNodes, EditedDifferentlyTheSecondGetsItsOwnMeshAndWeights)
{
    const CharacterFile saved = Save({{0, 1.0}}, {{1, 1.0}});
    ASSERT_EQ(saved.meshes.size(), 2u);
    EXPECT_EQ(saved.nodes[0].mesh, 0);
    EXPECT_EQ(saved.nodes[3].mesh, 1);
    EXPECT_EQ(saved.meshes[1].name, "stripMesh");
    EXPECT_THAT(RowOfNode(saved, 0), ElementsAre(Pair(0, 1.0)));
    EXPECT_THAT(RowOfNode(saved, 3), ElementsAre(Pair(1, 1.0)));
    EXPECT_THAT(m_foreign, IsEmpty());
}

TEST_F(OneMeshTwoNodes, OnlyTheSecondEditedLeavesTheFirstAsItIs)
{
    const CharacterFile saved = Save({}, {{1, 1.0}});
    EXPECT_EQ(RowOfNode(saved, 0), RowOfNode(m_file, 0));
    EXPECT_THAT(RowOfNode(saved, 3), ElementsAre(Pair(1, 1.0)));
    EXPECT_THAT(m_foreign, IsEmpty());
}

TEST_F(OneMeshTwoNodes, OnlyTheFirstEditedLeavesTheSecondAsItIs)
{
    const CharacterFile saved = Save({{1, 1.0}}, {});
    EXPECT_THAT(RowOfNode(saved, 0), ElementsAre(Pair(1, 1.0)));
    EXPECT_EQ(RowOfNode(saved, 3), RowOfNode(m_file, 3));
    EXPECT_THAT(m_foreign, IsEmpty());
}

} // namespace
} // namespace skindesk::test
