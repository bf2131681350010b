// SPDX-License-Identifier: MIT
// What an edit changes in a file, and what it must leave alone.
#include "GltfBuilder.h"
#include "support/GltfCompare.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <numeric>

namespace skindesk::test {
namespace {

using gltf::CharacterEdits;
using gltf::CharacterFile;
using gltf::SaveOptions;
using gltf::SaveReport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using Row = std::vector<std::pair<std::uint32_t, double>>;

// Opens what a builder made, changes rows, saves, and takes the saved file apart.
class Saved
{
public:
    Saved(const std::vector<std::uint8_t>& bytes, const std::map<std::size_t, Row>& rows,
          const SaveOptions& options = {}, const std::string& name = "tiny.glb")
        : m_path(m_folder / name)
    {
        WriteBytes(m_folder / ("opened-" + name), bytes);
        before = ReadRawGltf(m_folder / ("opened-" + name));
        opened = gltf::ReadCharacter(m_folder / ("opened-" + name));
        CharacterEdits edits;
        if (!rows.empty()) {
            edits.models.push_back(WeightsOf(opened, 0));
            for (const auto& [vertex, row] : rows) {
                SetRow(edits.models[0], vertex, row);
            }
        }
        report = gltf::WriteCharacter(opened, edits, options, m_path);
        after = ReadRawGltf(m_path);
        saved = gltf::ReadCharacter(m_path);
    }

    [[nodiscard]] Row SavedRow(std::size_t vertex, std::size_t mesh = 0) const
    {
        return RowOf(saved.meshes[mesh].influences, vertex);
    }
    [[nodiscard]] std::size_t AccessorOf(const std::string& attribute, std::size_t mesh = 0) const
    {
        return after.json["meshes"][mesh]["primitives"][0]["attributes"][attribute];
    }
    [[nodiscard]] std::vector<double> Slots(const std::string& attribute, std::size_t vertex) const
    {
        return DecodeRaw(after, AccessorOf(attribute)).at(vertex);
    }

    CharacterFile opened;
    CharacterFile saved;
    SaveReport report;
    RawGltf before;
    RawGltf after;

private:
    TemporaryFolder m_folder;
    std::string m_path;
};

const std::map<std::size_t, Row> ONE_EDIT{{2, {{0, 0.2}, {1, 0.8}}}};

TEST(WriteWeights, FloatsAreOverwrittenInPlaceAndNothingElseChanges)
{
    const Saved s(MakeValidCharacter().Glb(), ONE_EDIT);
    EXPECT_EQ(s.before.bytes.size(), s.after.bytes.size());
    const GltfChanges changes = CompareGltf(s.before, s.after);
    EXPECT_THAT(changes.replaced, IsEmpty());
    EXPECT_THAT(changes.added, IsEmpty());
    ASSERT_EQ(changes.bytes.size(), 1u);
    for (const std::size_t offset : changes.bytes.at(0)) {
        const auto at = [&](const char* attribute, std::size_t size) {
            const auto& accessor = s.before.json["accessors"][s.AccessorOf(attribute)];
            const std::size_t view =
                s.before.json["bufferViews"][accessor["bufferView"].get<std::size_t>()]["byteOffset"];
            return offset >= view + 2 * size && offset < view + 3 * size;
        };
        EXPECT_TRUE(at("WEIGHTS_0", 16) || at("JOINTS_0", 8)) << offset;
    }
    EXPECT_THAT(s.SavedRow(2), ElementsAre(Pair(0, Near(0.2)), Pair(1, Near(0.8))));
    EXPECT_EQ(s.report.verticesChanged, 1u);
}

TEST(WriteWeights, ADifferenceWithinTheToleranceIsNone)
{
    const double third = 1.0F / 3;
    const Saved s(MakeValidCharacter().Glb(), {{4, {{0, third + 5e-7}, {1, 1 - third}}}});
    EXPECT_EQ(s.report.verticesChanged, 0u);
    EXPECT_EQ(s.before.bytes, s.after.bytes);
}

TEST(WriteWeights, EditedVerticesAreLargestFirstAndUnusedSlotsAreJointZero)
{
    const Saved s(MakeValidCharacter().Glb(), ONE_EDIT);
    EXPECT_THAT(s.Slots("JOINTS_0", 2), ElementsAre(1, 0, 0, 0));
    EXPECT_THAT(s.Slots("WEIGHTS_0", 2), ElementsAre(0.8F, Near(0.2), 0, 0));
}

TEST(WriteWeights, UntouchedVerticesKeepTheOrderOfTheirSlots)
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<double> joints;
    std::vector<double> weights;
    for (int v = 0; v < 8; ++v) {
        joints.insert(joints.end(), {1, 0, 1, 0});
        weights.insert(weights.end(), {0, 0.25, 0.5, 0.25});
    }
    b.Primitive()["attributes"]["JOINTS_0"] = b.AddAccessor("VEC4", 5121, joints);
    b.Primitive()["attributes"]["WEIGHTS_0"] =
        b.AddAccessor("VEC4", 5121, {0, 63, 128, 64, 0, 63, 128, 64, 0, 63, 128, 64, 0, 63, 128, 64,
                                     0, 63, 128, 64, 0, 63, 128, 64, 0, 63, 128, 64, 0, 63, 128, 64},
                      true);
    const Saved s(b.Glb(), ONE_EDIT);
    EXPECT_THAT(s.Slots("JOINTS_0", 5), ElementsAre(1, 0, 1, 0));
    EXPECT_THAT(s.Slots("WEIGHTS_0", 5), ElementsAre(0, 63.0F / 255, 128.0F / 255, 64.0F / 255));
}

TEST(WriteWeights, IntegersBecomeFloatsUnlessTheTypeIsKept)
{
    for (const int type : {5121, 5123}) {
        const double one = type == 5121 ? 255 : 65535;
        GltfBuilder b = MakeValidCharacter();
        std::vector<double> weights;
        for (int v = 0; v < 8; ++v) {
            weights.insert(weights.end(), {one, 0, 0, 0});
        }
        b.Primitive()["attributes"]["WEIGHTS_0"] = b.AddAccessor("VEC4", type, weights, true);
        b.Primitive()["attributes"]["JOINTS_0"] = b.AddAccessor("VEC4", 5121, std::vector<double>(32, 0));
        const std::map<std::size_t, Row> edit{{2, {{0, 1.0 / 3}, {1, 2.0 / 3}}}};

        const Saved asFloats(b.Glb(), edit);
        const auto& accessor = asFloats.after.json["accessors"][asFloats.AccessorOf("WEIGHTS_0")];
        EXPECT_EQ(accessor["componentType"], 5126);
        EXPECT_FALSE(accessor.contains("normalized"));
        EXPECT_THAT(asFloats.Slots("WEIGHTS_0", 3), ElementsAre(1, 0, 0, 0));
        EXPECT_THAT(ForeignChanges(asFloats.before, asFloats.after), IsEmpty());

        SaveOptions keep;
        keep.keepTypes = true;
        const Saved kept(b.Glb(), edit, keep);
        EXPECT_EQ(kept.after.json["accessors"], kept.before.json["accessors"]);
        EXPECT_EQ(kept.before.bytes.size(), kept.after.bytes.size());
        const std::vector<double> slots = kept.Slots("WEIGHTS_0", 2);
        EXPECT_EQ(std::round(slots[0] * one) + std::round(slots[1] * one), one);
    }
}

TEST(WriteWeights, BoundsStayTrueAndTrueNumbersKeepTheirSpelling)
{
    GltfBuilder b = MakeValidCharacter();
    b.Accessor("WEIGHTS_0")["min"] = {0, 0, 0, 0};
    b.Accessor("WEIGHTS_0")["max"] = {1, 0.5, 0, 0}; // what the file says need not be true
    b.Accessor("JOINTS_0")["min"] = {0, 0, 0, 0};
    b.Accessor("JOINTS_0")["max"] = {1, 1, 0, 0};
    const Saved s(b.Text(), {{2, {{0, 0.125}, {1, 0.875}}}}, {}, "tiny.gltf");
    const auto& weights = s.after.json["accessors"][s.AccessorOf("WEIGHTS_0")];
    EXPECT_THAT(weights["max"].get<std::vector<double>>(), ElementsAre(1, 1.0F - static_cast<float>(1.0 / 3), 0, 0));
    EXPECT_THAT(CompareGltf(s.before, s.after).replaced,
                testing::UnorderedElementsAre("/accessors/2/max/1", "/buffers/0/uri", "/accessors/2/min/0"));
}

TEST(WriteWeights, MoreThanFourInfluencesGoIntoFurtherSetsLargestFirst)
{
    GltfBuilder b = MakeValidCharacter();
    for (int joint = 3; joint < 8; ++joint) {
        b.json["nodes"].push_back({{"name", "extra"}});
        b.json["skins"][0]["joints"].push_back(joint);
    }
    b.json["skins"][0].erase("inverseBindMatrices");
    const Row six{{0, 0.1}, {1, 0.3}, {2, 0.05}, {3, 0.25}, {4, 0.2}, {5, 0.1}};
    const Saved s(b.Glb(), {{2, six}});
    EXPECT_THAT(s.Slots("JOINTS_0", 2), ElementsAre(1, 3, 4, 0));
    EXPECT_THAT(s.Slots("JOINTS_1", 2), ElementsAre(5, 2, 0, 0));
    EXPECT_THAT(s.Slots("WEIGHTS_1", 2), ElementsAre(Near(0.1), Near(0.05), 0, 0));
    EXPECT_THAT(s.Slots("WEIGHTS_1", 3), ElementsAre(0, 0, 0, 0));
    EXPECT_EQ(s.SavedRow(2).size(), 6u);
    EXPECT_EQ(s.saved.meshes[0].influenceSets, 2);
    EXPECT_THAT(ForeignChanges(s.before, s.after), IsEmpty());
}

TEST(WriteWeights, AVertexWithoutWeightIsZerosAndCounted)
{
    const Saved s(MakeValidCharacter().Glb(), {{2, {}}, {3, {{0, 0.0}}}});
    EXPECT_THAT(s.Slots("WEIGHTS_0", 2), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(s.Slots("JOINTS_0", 3), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(s.report.warnings, ElementsAre("2 vertices have no weight left and are written as zeros"));
    EXPECT_EQ(s.report.verticesChanged, 2u);
}

TEST(WriteWeights, OddWeightsOfOtherVerticesAreKept)
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<double> weights(32, 0);
    weights[0] = NAN;
    weights[4] = -0.5;
    weights[5] = 1.5;
    weights[12] = INFINITY;
    b.Primitive()["attributes"]["WEIGHTS_0"] = b.AddAccessor("VEC4", 5126, weights);
    b.Primitive()["attributes"]["JOINTS_0"] =
        b.AddAccessor("VEC4", 5121, std::vector<double>{0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                                        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    const Saved s(b.Glb(), ONE_EDIT);
    EXPECT_EQ(s.report.verticesChanged, 1u);
    EXPECT_TRUE(std::isnan(s.Slots("WEIGHTS_0", 0)[0]));
    EXPECT_THAT(s.Slots("WEIGHTS_0", 1), ElementsAre(-0.5, 1.5, 0, 0));
    EXPECT_EQ(s.Slots("WEIGHTS_0", 3)[0], INFINITY);
}

TEST(WriteWeights, ASparseAccessorIsReplacedByADenseOneWithTheSameValues)
{
    GltfBuilder b = MakeValidCharacter();
    const std::size_t indices = b.AddAccessor("SCALAR", 5121, {3});
    const std::size_t values = b.AddAccessor("VEC4", 5126, {0.25, 0.75, 0, 0});
    b.Accessor("WEIGHTS_0")["sparse"] = {
        {"count", 1},
        {"indices", {{"bufferView", b.json["accessors"][indices]["bufferView"]}, {"componentType", 5121}}},
        {"values", {{"bufferView", b.json["accessors"][values]["bufferView"]}}}};
    const Saved s(b.Glb(), ONE_EDIT);
    EXPECT_FALSE(s.after.json["accessors"][s.AccessorOf("WEIGHTS_0")].contains("sparse"));
    EXPECT_THAT(s.Slots("WEIGHTS_0", 3), ElementsAre(0.25, 0.75, 0, 0));
    EXPECT_THAT(s.SavedRow(2), ElementsAre(Pair(0, Near(0.2)), Pair(1, Near(0.8))));
    EXPECT_THAT(ForeignChanges(s.before, s.after), IsEmpty());
}

TEST(WriteWeights, AnAccessorThatAnotherMeshUsesIsNotChanged)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["meshes"].push_back(b.json["meshes"][0]);
    b.json["nodes"].push_back({{"mesh", 1}, {"skin", 0}});
    const Saved s(b.Glb(), ONE_EDIT);
    EXPECT_THAT(CompareGltf(s.before, s.after).bytes, IsEmpty());
    EXPECT_EQ(RowOf(s.saved.meshes[1].influences, 2), RowOf(s.opened.meshes[1].influences, 2));
    EXPECT_THAT(s.SavedRow(2)[0], Pair(0, Near(0.2)));
}

TEST(WriteWeights, BytesThatAnotherAccessorSeesAreNotOverwritten)
{
    GltfBuilder b = MakeValidCharacter();
    Json twin = b.Accessor("WEIGHTS_0");
    twin["type"] = "SCALAR";
    twin["count"] = 4;
    twin["byteOffset"] = 16 * 7; // the last vertex, as four numbers of something else
    b.json["accessors"].push_back(twin);
    const Saved s(b.Glb(), ONE_EDIT);
    EXPECT_TRUE(s.after.buffers[0].size() > s.before.buffers[0].size());
    const GltfChanges changes = CompareGltf(s.before, s.after);
    const auto& weights = s.before.json["bufferViews"][2];
    for (const auto& [buffer, offsets] : changes.bytes) {
        for (const std::size_t offset : offsets) {
            EXPECT_LT(offset, weights["byteOffset"].get<std::size_t>());
        }
    }
}

TEST(WriteWeights, ABrokenAccessorThatNothingUsesIsNoReasonToRefuse)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["accessors"].push_back({{"bufferView", 2}, {"type", "VEC9"}, {"count", -1}});
    const Saved s(b.Glb(), ONE_EDIT);
    EXPECT_THAT(s.SavedRow(2)[0], Pair(0, Near(0.2)));
}

TEST(WriteWeights, AViewThatAnExtensionNamesIsNotOverwritten)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["extensions"]["EXT_something"]["bufferView"] = b.Accessor("WEIGHTS_0")["bufferView"];
    const Saved s(b.Glb(), ONE_EDIT);
    const std::size_t start = s.before.json["bufferViews"][2]["byteOffset"];
    EXPECT_TRUE(std::equal(s.before.buffers[0].begin() + static_cast<std::ptrdiff_t>(start), s.before.buffers[0].end(),
                           s.after.buffers[0].begin() + static_cast<std::ptrdiff_t>(start)));
    EXPECT_THAT(s.SavedRow(2)[0], Pair(0, Near(0.2)));
}

TEST(WriteWeights, InterleavedWeightsAreOverwrittenBetweenTheirNeighbours)
{
    GltfBuilder b = MakeValidCharacter();
    const CharacterFile plain = b.Read();
    std::vector<std::uint8_t> bytes(8 * 32);
    for (std::size_t v = 0; v < 8; ++v) {
        std::memcpy(&bytes[v * 32], &plain.meshes[0].positions[v * 3], 12);
        const float one = 1;
        std::memcpy(&bytes[v * 32 + 16], &one, 4);
    }
    const std::size_t view = b.AddView(bytes);
    b.json["bufferViews"][view]["byteStride"] = 32;
    for (const auto& [attribute, type, offset] : std::vector<std::tuple<std::string, int, int>>{
             {"POSITION", 5126, 0}, {"JOINTS_0", 5121, 12}, {"WEIGHTS_0", 5126, 16}}) {
        b.Accessor(attribute)["bufferView"] = view;
        b.Accessor(attribute)["componentType"] = type;
        b.Accessor(attribute)["byteOffset"] = offset;
    }
    const Saved s(b.Glb(), ONE_EDIT);
    EXPECT_EQ(s.before.bytes.size(), s.after.bytes.size());
    const std::size_t start = s.before.json["bufferViews"][view]["byteOffset"].get<std::size_t>() + 2 * 32 + 12;
    const GltfChanges changes = CompareGltf(s.before, s.after);
    for (const std::size_t offset : changes.bytes.at(0)) {
        EXPECT_TRUE(offset >= start && offset < start + 20) << offset;
    }
    EXPECT_EQ(s.saved.meshes[0].positions, s.opened.meshes[0].positions);
}

TEST(WriteWeights, JointsBeyondAByteGetWiderNumbers)
{
    GltfBuilder b = MakeValidCharacter();
    b.Primitive()["attributes"]["JOINTS_0"] = b.AddAccessor("VEC4", 5121, std::vector<double>(32, 0));
    for (int i = 3; i < 303; ++i) {
        b.json["nodes"].push_back(Json::object());
        b.json["skins"][0]["joints"].push_back(i);
    }
    b.json["skins"][0].erase("inverseBindMatrices");
    const Saved s(b.Glb(), {{2, {{0, 0.25}, {300, 0.75}}}});
    EXPECT_EQ(s.after.json["accessors"][s.AccessorOf("JOINTS_0")]["componentType"], 5123);
    EXPECT_THAT(s.SavedRow(2), ElementsAre(Pair(0, 0.25), Pair(300, 0.75)));
    EXPECT_EQ(s.SavedRow(3), RowOf(s.opened.meshes[0].influences, 3));
}

TEST(WriteWeights, AMeshWithoutJointsGetsThemWhenItsVerticesGetWeight)
{
    GltfBuilder b = MakeValidCharacter();
    b.Primitive()["attributes"].erase("JOINTS_0");
    b.Primitive()["attributes"].erase("WEIGHTS_0");
    const Saved s(b.Glb(), {{2, {{1, 1.0}}}});
    EXPECT_THAT(s.SavedRow(2), ElementsAre(Pair(1, 1.0)));
    EXPECT_THAT(s.SavedRow(0), IsEmpty());
    EXPECT_THAT(ForeignChanges(s.before, s.after), IsEmpty());
}

TEST(WriteWeights, HalfASetAndSetsBehindAGapDoNotComeToLifeByAnEdit)
{
    GltfBuilder b = MakeValidCharacter();
    Json& attributes = b.Primitive()["attributes"];
    attributes["JOINTS_2"] = attributes["JOINTS_0"];
    attributes["WEIGHTS_2"] = attributes["WEIGHTS_0"];
    attributes["WEIGHTS_1"] = attributes["WEIGHTS_0"];
    EXPECT_THAT(b.Read().warnings, ElementsAre(HasSubstr("weights without joints are left out")));
    const Saved s(b.Glb(), ONE_EDIT);
    EXPECT_THAT(s.SavedRow(2), ElementsAre(Pair(0, Near(0.2)), Pair(1, Near(0.8))));
    EXPECT_EQ(s.after.json["meshes"][0]["primitives"][0]["attributes"].size(), 3u);
    EXPECT_THAT(s.saved.warnings, IsEmpty());
}

TEST(WriteWeights, SeamVerticesAreAllWritten)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["meshes"][0]["primitives"].push_back(b.Primitive());
    const auto copy = [&b](const char* attribute) {
        b.json["accessors"].push_back(b.Accessor(attribute));
        Json& accessor = b.json["accessors"].back();
        const auto& view = b.json["bufferViews"][accessor["bufferView"].get<std::size_t>()];
        const std::size_t start = view["byteOffset"];
        const std::size_t size = view["byteLength"];
        accessor["bufferView"] = b.AddView({b.buffer.begin() + static_cast<std::ptrdiff_t>(start),
                                            b.buffer.begin() + static_cast<std::ptrdiff_t>(start + size)});
        b.Primitive(0, 1)["attributes"][attribute] = b.json["accessors"].size() - 1;
    };
    copy("JOINTS_0");
    copy("WEIGHTS_0");
    const Saved s(b.Glb(), ONE_EDIT);
    EXPECT_EQ(s.opened.meshes[0].VertexCount(), 8u);
    EXPECT_EQ(s.saved.meshes[0].VertexCount(), 8u);
    for (const std::size_t primitive : {0u, 1u}) {
        const std::size_t accessor = s.after.json["meshes"][0]["primitives"][primitive]["attributes"]["WEIGHTS_0"];
        EXPECT_THAT(DecodeRaw(s.after, accessor)[2][0], Near(0.8));
    }
}

TEST(WriteWeights, CamerasLightsExtrasAndUnknownExtensionsAreKept)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["cameras"] = Json::array({{{"type", "perspective"}, {"perspective", {{"yfov", 0.8}, {"znear", 0.1}}}}});
    b.json["extensionsUsed"] = {"KHR_lights_punctual", "EXT_unknown"};
    b.json["extensions"]["KHR_lights_punctual"]["lights"] = Json::array({{{"type", "point"}}});
    b.json["extras"] = {{"b", 1}, {"a", {1.5, nullptr, true}}};
    b.Primitive()["extensions"]["EXT_unknown"] = {{"z", 0}, {"attributes", {{"thing", 1}}}};
    b.Primitive()["attributes"]["_CUSTOM"] = b.AddAccessor("SCALAR", 5126, {1, 2, 3, 4, 5, 6, 7, 8});
    const Saved s(b.Glb(), ONE_EDIT);
    EXPECT_THAT(ForeignChanges(s.before, s.after), IsEmpty());
    EXPECT_EQ(s.after.json["extras"], s.before.json["extras"]);
    EXPECT_EQ(s.after.json["cameras"], s.before.json["cameras"]);
}

TEST(WriteWeights, RenormalisingScalesEditedVerticesOnly)
{
    SaveOptions options;
    options.renormalise = true;
    const Saved s(MakeValidCharacter().Glb(), {{2, {{0, 0.1}, {1, 0.3}}}}, options);
    EXPECT_THAT(s.SavedRow(2), ElementsAre(Pair(0, Near(0.25)), Pair(1, Near(0.75))));
    EXPECT_EQ(s.SavedRow(4), RowOf(s.opened.meshes[0].influences, 4));
    const Saved raw(MakeValidCharacter().Glb(), {{2, {{0, 0.1}, {1, 0.3}}}});
    EXPECT_THAT(raw.SavedRow(2), ElementsAre(Pair(0, Near(0.1)), Pair(1, Near(0.3))));
}

TEST(WriteWeights, EditsThatNameWhatIsNotThereAreTheCallersMistake)
{
    const CharacterFile file = MakeValidCharacter().Read();
    const TemporaryFolder folder;
    const auto save = [&](const CharacterEdits& edits) {
        static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "tiny.glb"));
    };
    CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    edits.models[0].node = 1;
    EXPECT_THROW(save(edits), std::invalid_argument);
    edits.models[0].node = 77;
    EXPECT_THROW(save(edits), std::invalid_argument);
    edits.models[0].node = 0;
    edits.models[0].joints[0] = 2;
    EXPECT_THROW(save(edits), std::invalid_argument);
    edits = {{WeightsOf(file, 0), WeightsOf(file, 0)}, {}};
    EXPECT_THROW(save(edits), std::invalid_argument);
    edits = {{WeightsOf(file, 0)}, {}};
    edits.models[0].offsets.pop_back();
    EXPECT_THROW(save(edits), std::invalid_argument);
    edits = {{WeightsOf(file, 0)}, {}};
    edits.models[0].weights[0] = NAN;
    EXPECT_THROW(save(edits), std::invalid_argument);
    EXPECT_THROW(save({{}, {{0, 77, {}}}}), std::invalid_argument);
    EXPECT_THROW(save({{}, {{1, 0, {}}}}), std::invalid_argument);
    EXPECT_THAT(folder.Names(), IsEmpty());
}

} // namespace
} // namespace skindesk::test
