// SPDX-License-Identifier: MIT
// Real characters and broken ones: what opens, what is refused, and that saving keeps every byte that it may keep.
#include "GltfBuilder.h"
#include "support/GltfCompare.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace skindesk::test {
namespace {

using gltf::CharacterFile;
using testing::IsEmpty;

const std::vector<std::string> CHARACTERS{
    "skinned/Fox.glb",
    "skinned/CesiumMan.glb",
    "skinned/RiggedSimple.gltf",
    "skinned/KayKit_Knight.glb",
    "skinned/greenman.glb",
    "skinned/fox_sparse_weights.glb",
    "skinned/fox_unnormalised.glb",
    "skinned/AG_SkinType_01_u8n/Animation_SkinType_01.gltf",
    "skinned/AG_SkinType_02_u16n/Animation_SkinType_02.gltf",
    "skinned/AG_Skin_03_noIBM/Animation_Skin_03.gltf",
    "skinned/AG_Skin_07_twoSkins/Animation_Skin_07.gltf",
    "skinned/magnum_multiple_sets/skin-multiple-sets.gltf",
    "skinned/magnum_skin_shared/skin-shared.gltf",
};

struct Verdict
{
    std::string file;
    bool loads;
    std::string says; // part of the refusal or of a warning; empty: nothing odd to say
};

const std::vector<Verdict> VERDICTS{
    {"accessor_byteOffset_odd.gltf", false, "WEIGHTS has 7 elements, POSITION has 8"},
    {"accessor_count_2e63.gltf", false, "count is 9223372036854775807"},
    {"accessor_count_huge.gltf", false, "4294967295 elements need 68719476720 bytes"},
    {"accessor_count_zero.gltf", false, "vertex 7 is named, there are 0"},
    {"accessor_index_oob.gltf", false, "number 99 of the accessors is meant, there are 5"},
    {"buffer_length_long.gltf", false, "says it has 1048576 bytes, 452 are there"},
    {"buffer_uri_bad_base64.gltf", false, "holds what is no base64"},
    {"buffer_uri_file.gltf", false, "the scheme \"file\""},
    {"buffer_uri_percent.gltf", false, "has a zero byte"},
    {"empty.glb", false, "the file is empty"},
    {"ext_required_unknown.gltf", false, "needs the extension VENDOR_nope"},
    {"glb_chunk_huge.glb", false, "the chunk says it has 4294967292 bytes, 1496 are left"},
    {"glb_magic.glb", false, "a GLB begins with the four letters glTF"},
    {"glb_truncated_half.glb", false, "says it has 1516 bytes, the file has 758"},
    {"ibm_bad_last_row.gltf", true, "does not end in 0, 0, 0, 1"},
    {"ibm_nan.gltf", true, "numbers that are not finite"},
    {"ibm_type_vec4.gltf", false, "the type VEC4, MAT4 is needed"},
    {"joint_duplicate.gltf", true, "one joint in two slots"},
    {"joint_index_oob.gltf", false, "joint 2 has weight, skin 0 has 2 joints"},
    {"joints_count_short.gltf", false, "JOINTS has 7 elements, POSITION has 8"},
    {"joints_normalized.gltf", true, "marked as normalised"},
    {"joints_vec2.gltf", false, "the type VEC2, VEC4 is needed"},
    {"json_array.gltf", false, "the JSON is no object"},
    {"json_bom.gltf", true, "byte order mark"},
    {"json_dup_keys.gltf", false, "the key \"skins\" stands twice"},
    {"json_number_huge.gltf", false, "count is 1e999"},
    {"json_utf16.gltf", false, "UTF-16"},
    {"names_control.gltf", true, "control characters"},
    {"names_equal.gltf", true, "the name of another joint"},
    {"node_cycle.gltf", false, "its own ancestor"},
    {"node_matrix_and_trs.gltf", true, "the matrix is taken"},
    {"node_rotation_zero.gltf", true, "rotation is 0, 0, 0, 0"},
    {"node_scale_zero.gltf", true, "scaled by 0"},
    {"node_skin_oob.gltf", false, "number 5 of the skins is meant, there are 1"},
    {"ok_reference.gltf", true, ""},
    {"skin_joint_is_mesh_node.gltf", true, ""},
    {"skin_joints_duplicate.gltf", true, "a second time"},
    {"skin_skeleton_oob.gltf", true, "node 99 is named as the skeleton, there are 3 nodes"},
    {"sparse_count_huge.gltf", false, "1000000000 sparse values replace 8 elements"},
    {"sparse_index_oob.gltf", false, "the sparse index 200 is named, there are 8"},
    {"sparse_ok.gltf", true, ""},
    {"view_buffer_oob.gltf", false, "number 7 of the buffers is meant, there are 1"},
    {"view_oob.gltf", false, "ends at byte 1073741984, its buffer has 452"},
    {"view_stride_huge.gltf", false, "byteStride is 2147483647"},
    {"weight_denormal.gltf", true, "do not add up to one"},
    {"weight_inf.gltf", true, "1 with an infinite weight"},
    {"weight_negative.gltf", true, "1 with a negative weight"},
    {"weights_count_short.gltf", false, "WEIGHTS has 1 element, POSITION has 8"},
    {"weights_without_joints.gltf", true, "weights without joints"},
};

class BrokenFile : public testing::TestWithParam<Verdict>
{
};

TEST_P(BrokenFile, GetsItsVerdictInOneLine)
{
    const Verdict& verdict = GetParam();
    const std::string path = DataPath("hostile/" + verdict.file);
    try {
        const CharacterFile file = gltf::ReadCharacter(path);
        EXPECT_TRUE(verdict.loads) << "was taken";
        if (verdict.says.empty()) {
            EXPECT_THAT(file.warnings, IsEmpty());
        } else {
            EXPECT_THAT(file.warnings, testing::Contains(testing::HasSubstr(verdict.says)));
        }
    } catch (const gltf::FileError& error) {
        EXPECT_FALSE(verdict.loads) << error.what();
        EXPECT_EQ(error.path(), path);
        EXPECT_THAT(error.what(), testing::HasSubstr(verdict.says));
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
    }
}

std::string NameOf(const std::string& file)
{
    std::string name = file;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(OfTheCollection, BrokenFile, testing::ValuesIn(VERDICTS),
                         [](const auto& file) { return NameOf(file.param.file); });

TEST(BrokenFiles, EveryFileOfTheFolderHasAVerdict)
{
    std::set<std::string> judged;
    for (const Verdict& verdict : VERDICTS) {
        judged.insert(verdict.file);
    }
    std::set<std::string> there;
    for (const auto& entry : std::filesystem::directory_iterator(DataPath("hostile"))) {
        there.insert(entry.path().filename().string());
    }
    EXPECT_EQ(judged, there);
}

class Character : public testing::TestWithParam<std::string>
{
protected:
    Character()
        : m_source(DataPath(GetParam())), m_saved(m_folder / std::filesystem::path(m_source).filename().string())
    {
    }

    // A new weight for joint 1 of one vertex in the middle of each skinned model.
    [[nodiscard]] gltf::CharacterEdits EditOneVertexOfEachModel(const CharacterFile& file) const
    {
        gltf::CharacterEdits edits;
        for (std::size_t n = 0; n < file.nodes.size(); ++n) {
            if (file.nodes[n].skin >= 0) {
                gltf::ModelWeights weights = WeightsOf(file, static_cast<int>(n));
                SetRow(weights, (weights.offsets.size() - 1) / 2, {{0, 0.4}, {1, 0.6}});
                edits.models.push_back(std::move(weights));
            }
        }
        return edits;
    }

    std::string m_source;
    TemporaryFolder m_folder;
    std::string m_saved;
};

TEST_P(Character, SavedUntouchedIsTheSameBytes)
{
    const CharacterFile file = gltf::ReadCharacter(m_source);
    const gltf::SaveReport report = gltf::WriteCharacter(file, {}, {}, m_saved);
    EXPECT_EQ(ReadBytes(m_saved), ReadBytes(m_source));
    EXPECT_EQ(report.bytes, ReadBytes(m_source).size());
    EXPECT_EQ(report.verticesChanged, 0u);
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(m_source).parent_path())) {
        if (entry.path().extension() == ".bin") {
            EXPECT_EQ(ReadBytes(m_folder / entry.path().filename().string()), ReadBytes(entry.path().string()));
        }
    }
}

TEST_P(Character, SavedWithTheWeightsOfTheFileIsTheSameBytes)
{
    const CharacterFile file = gltf::ReadCharacter(m_source);
    gltf::CharacterEdits edits;
    for (std::size_t n = 0; n < file.nodes.size(); ++n) {
        if (file.nodes[n].skin >= 0) {
            edits.models.push_back(WeightsOf(file, static_cast<int>(n)));
        }
    }
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, m_saved));
    EXPECT_EQ(ReadBytes(m_saved), ReadBytes(m_source));
}

TEST_P(Character, AnEditIsReadBackAndEveryOtherVertexIsAsItWas)
{
    const CharacterFile file = gltf::ReadCharacter(m_source);
    const gltf::CharacterEdits edits = EditOneVertexOfEachModel(file);
    const gltf::SaveReport report = gltf::WriteCharacter(file, edits, {}, m_saved);
    EXPECT_EQ(report.verticesChanged, edits.models.size());

    const CharacterFile saved = gltf::ReadCharacter(m_saved);
    for (const gltf::ModelWeights& model : edits.models) {
        const auto& node = saved.nodes[static_cast<std::size_t>(model.node)];
        const gltf::Mesh& mesh = saved.meshes[static_cast<std::size_t>(node.mesh)];
        ASSERT_EQ(mesh.VertexCount() + 1, model.offsets.size());
        for (std::size_t v = 0; v < mesh.VertexCount(); ++v) {
            const auto row = RowOf(mesh.influences, v);
            ASSERT_EQ(row.size(), model.offsets[v + 1] - model.offsets[v]) << "vertex " << v;
            for (std::size_t k = 0; k < row.size(); ++k) {
                EXPECT_EQ(row[k].first, model.joints[model.offsets[v] + k]);
                EXPECT_NEAR(row[k].second, model.weights[model.offsets[v] + k], gltf::WEIGHT_TOLERANCE);
            }
        }
    }
}

TEST_P(Character, AnEditChangesNothingButWeightDataAndWhatPointsAtIt)
{
    const CharacterFile file = gltf::ReadCharacter(m_source);
    static_cast<void>(gltf::WriteCharacter(file, EditOneVertexOfEachModel(file), {}, m_saved));
    EXPECT_THAT(ForeignChanges(ReadRawGltf(m_source), ReadRawGltf(m_saved)), IsEmpty());
}

TEST_P(Character, SavedTwiceIsTheSameBytesTwice)
{
    const CharacterFile file = gltf::ReadCharacter(m_source);
    const gltf::CharacterEdits edits = EditOneVertexOfEachModel(file);
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, m_saved));
    const std::vector<std::uint8_t> first = ReadBytes(m_saved);
    const std::vector<std::string> names = m_folder.Names();
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, m_saved));
    EXPECT_EQ(ReadBytes(m_saved), first);
    EXPECT_EQ(m_folder.Names(), names);
}

TEST_P(Character, UndoneAfterSavingIsTheOpenedBytesAgain)
{
    const CharacterFile file = gltf::ReadCharacter(m_source);
    static_cast<void>(gltf::WriteCharacter(file, EditOneVertexOfEachModel(file), {}, m_saved));
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, m_saved));
    EXPECT_EQ(ReadBytes(m_saved), ReadBytes(m_source));
}

TEST_P(Character, FileVerticesOfOneDeskVertexAgreeAfterAnEdit)
{
    const CharacterFile file = gltf::ReadCharacter(m_source);
    static_cast<void>(gltf::WriteCharacter(file, EditOneVertexOfEachModel(file), {}, m_saved));
    const CharacterFile saved = gltf::ReadCharacter(m_saved);
    for (const gltf::Node& node : file.nodes) {
        if (node.mesh >= 0) {
            const gltf::Mesh& before = file.meshes[static_cast<std::size_t>(node.mesh)];
            const gltf::Mesh& after = saved.meshes[static_cast<std::size_t>(node.mesh)];
            ASSERT_EQ(before.vertexMaps.size(), after.vertexMaps.size());
            for (std::size_t m = 0; m < before.vertexMaps.size(); ++m) {
                EXPECT_EQ(before.vertexMaps[m].deskVertices, after.vertexMaps[m].deskVertices);
            }
        }
    }
}

TEST_P(Character, WeightsAreThoseThatAnotherDecoderReads)
{
    const CharacterFile file = gltf::ReadCharacter(m_source);
    const RawGltf raw = ReadRawGltf(m_source);
    for (std::size_t m = 0; m < file.meshes.size(); ++m) {
        for (std::size_t p = 0; p < file.meshes[m].primitives.size(); ++p) {
            const auto& attributes = raw.json["meshes"][m]["primitives"][p]["attributes"];
            if (!attributes.contains("JOINTS_0")) {
                continue;
            }
            const auto vertices = file.meshes[m].FileVertices(p);
            std::vector<std::map<std::uint32_t, double>> expected(vertices.size());
            for (int set = 0; attributes.contains("JOINTS_" + std::to_string(set)); ++set) {
                const auto joints = DecodeRaw(raw, attributes["JOINTS_" + std::to_string(set)]);
                const auto weights = DecodeRaw(raw, attributes["WEIGHTS_" + std::to_string(set)]);
                for (std::size_t v = 0; v < vertices.size(); ++v) {
                    for (std::size_t k = 0; k < 4; ++k) {
                        if (weights.at(v)[k] != 0) {
                            expected[v][static_cast<std::uint32_t>(joints.at(v)[k])] += weights[v][k];
                        }
                    }
                }
            }
            for (std::size_t v = 0; v < vertices.size(); ++v) {
                const auto row = RowOf(file.meshes[m].influences, static_cast<std::size_t>(vertices[v]));
                ASSERT_EQ(row.size(), expected[v].size());
                for (const auto& [joint, weight] : row) {
                    EXPECT_NEAR(weight, expected[v].at(joint), 1e-7);
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfTheCollection, Character, testing::ValuesIn(CHARACTERS),
                         [](const auto& file) { return NameOf(std::filesystem::path(file.param).stem().string()); });

} // namespace
} // namespace skindesk::test
