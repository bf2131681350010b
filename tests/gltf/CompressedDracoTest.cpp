// SPDX-License-Identifier: MIT
// Meshes compressed with KHR_draco_mesh_compression: read as if they were plain, saved without touching them.
#include "GltfBuilder.h"
#include "gltf/Textures.h"
#include "support/GltfCompare.h"

#include <draco/compression/encode.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

namespace skindesk::test {
namespace {

using gltf::CharacterFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* EXTENSION = "KHR_draco_mesh_compression";

// The numbers of an attribute of the builder's first primitive.
template <class Stored> std::vector<Stored> StoredAs(GltfBuilder& b, const std::string& attribute)
{
    const auto view = b.json["bufferViews"][b.Accessor(attribute)["bufferView"].get<std::size_t>()];
    std::vector<Stored> numbers(view["byteLength"].get<std::size_t>() / sizeof(Stored));
    std::copy_n(b.buffer.begin() + view["byteOffset"].get<std::ptrdiff_t>(), numbers.size() * sizeof(Stored),
                reinterpret_cast<std::uint8_t*>(numbers.data()));
    return numbers;
}

template <class Stored>
int AddAttribute(draco::Mesh& mesh, draco::GeometryAttribute::Type kind, draco::DataType type, int components,
                 const std::vector<Stored>& numbers)
{
    draco::GeometryAttribute attribute;
    attribute.Init(kind, nullptr, static_cast<std::uint8_t>(components), type, false,
                   static_cast<std::int64_t>(sizeof(Stored)) * components, 0);
    const std::size_t count = numbers.size() / static_cast<std::size_t>(components);
    const int id = mesh.AddAttribute(attribute, true, static_cast<std::uint32_t>(count));
    for (std::size_t i = 0; i < count; ++i) {
        mesh.attribute(id)->SetAttributeValue(draco::AttributeValueIndex(static_cast<std::uint32_t>(i)),
                                              &numbers[i * static_cast<std::size_t>(components)]);
    }
    return id;
}

struct CompressedStrip
{
    std::vector<std::uint8_t> bytes;
    int position = 0;
    int joints = 0;
    int weights = 0;
};

// The strip of MakeValidCharacter as one compressed mesh.
CompressedStrip CompressStrip(GltfBuilder& b, draco::MeshEncoderMethod method)
{
    draco::Mesh mesh;
    mesh.set_num_points(8);
    CompressedStrip strip;
    strip.position =
        AddAttribute(mesh, draco::GeometryAttribute::POSITION, draco::DT_FLOAT32, 3, StoredAs<float>(b, "POSITION"));
    strip.joints = AddAttribute(mesh, draco::GeometryAttribute::GENERIC, draco::DT_UINT16, 4,
                                StoredAs<std::uint16_t>(b, "JOINTS_0"));
    strip.weights =
        AddAttribute(mesh, draco::GeometryAttribute::GENERIC, draco::DT_FLOAT32, 4, StoredAs<float>(b, "WEIGHTS_0"));
    for (const std::array<std::uint32_t, 3>& corners :
         std::vector<std::array<std::uint32_t, 3>>{{0, 1, 2}, {1, 3, 2}, {2, 3, 4}, {3, 5, 4}, {4, 5, 6}, {5, 7, 6}}) {
        mesh.AddFace({draco::PointIndex(corners[0]), draco::PointIndex(corners[1]), draco::PointIndex(corners[2])});
    }
    draco::Encoder encoder;
    encoder.SetEncodingMethod(method);
    draco::EncoderBuffer buffer;
    if (!encoder.EncodeMeshToBuffer(mesh, &buffer).ok()) {
        throw std::runtime_error("the strip cannot be compressed");
    }
    strip.bytes.assign(buffer.data(), buffer.data() + buffer.size());
    return strip;
}

// The strip, compressed; without `isPlainToo` its accessors have no bytes of their own.
GltfBuilder MakeCompressed(draco::MeshEncoderMethod method = draco::MESH_SEQUENTIAL_ENCODING, bool isPlainToo = false)
{
    GltfBuilder b = MakeValidCharacter();
    const CompressedStrip strip = CompressStrip(b, method);
    b.json["extensionsUsed"] = {EXTENSION};
    b.Primitive()["extensions"][EXTENSION] = {
        {"bufferView", b.AddView(strip.bytes)},
        {"attributes", {{"POSITION", strip.position}, {"JOINTS_0", strip.joints}, {"WEIGHTS_0", strip.weights}}}};
    if (!isPlainToo) {
        b.json["extensionsRequired"] = {EXTENSION};
        for (int i = 0; i < 4; ++i) {
            b.json["accessors"][static_cast<std::size_t>(i)].erase("bufferView");
        }
    }
    return b;
}

Json& ExtensionOf(GltfBuilder& b) { return b.Primitive()["extensions"][EXTENSION]; }

// The bytes of the builder's compressed mesh.
std::uint8_t* CompressedBytes(GltfBuilder& b)
{
    const Json& view = b.json["bufferViews"][ExtensionOf(b)["bufferView"].get<std::size_t>()];
    return b.buffer.data() + view["byteOffset"].get<std::size_t>();
}

void ReplaceCompressed(GltfBuilder& b, const std::vector<int>& bytes)
{
    std::string text;
    for (const int byte : bytes) {
        text += static_cast<char>(byte);
    }
    ExtensionOf(b)["bufferView"] = b.AddView(BytesOf(text));
}

using Place = std::array<float, 3>;
using Row = std::vector<std::pair<std::uint32_t, double>>;

Place PlaceOf(const gltf::Mesh& mesh, std::size_t vertex)
{
    return {mesh.positions[3 * vertex], mesh.positions[3 * vertex + 1], mesh.positions[3 * vertex + 2]};
}

std::map<Place, Row> RowsByPlace(const gltf::Mesh& mesh)
{
    std::map<Place, Row> rows;
    for (std::size_t v = 0; v < mesh.VertexCount(); ++v) {
        rows[PlaceOf(mesh, v)] = RowOf(mesh.influences, v);
    }
    return rows;
}

// Triangles by the places of their corners, each beginning with the smallest, so that winding still counts.
std::multiset<std::array<Place, 3>> TrianglesByPlace(const gltf::Mesh& mesh)
{
    std::multiset<std::array<Place, 3>> triangles;
    for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
        std::array<Place, 3> corners;
        for (std::size_t c = 0; c < 3; ++c) {
            corners[c] = PlaceOf(mesh, static_cast<std::size_t>(mesh.triangles[t + c]));
        }
        std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
        triangles.insert(corners);
    }
    return triangles;
}

class DracoMeshInBothWays : public testing::TestWithParam<draco::MeshEncoderMethod>
{
};

TEST_P(DracoMeshInBothWays, IsReadAsIfItWerePlain)
{
    const CharacterFile plain = MakeValidCharacter().Read();
    const CharacterFile compressed = MakeCompressed(GetParam()).Read();
    EXPECT_THAT(compressed.warnings, IsEmpty());
    EXPECT_EQ(RowsByPlace(compressed.meshes[0]), RowsByPlace(plain.meshes[0]));
    EXPECT_EQ(TrianglesByPlace(compressed.meshes[0]), TrianglesByPlace(plain.meshes[0]));
    EXPECT_EQ(compressed.meshes[0].influenceSets, 1);
}

TEST_P(DracoMeshInBothWays, SavedUntouchedIsTheSameBytes)
{
    const GltfBuilder b = MakeCompressed(GetParam());
    const CharacterFile file = b.Read();
    const TemporaryFolder folder;
    const gltf::SaveReport report = gltf::WriteCharacter(file, {{WeightsOf(file, 0)}, {}}, {}, folder / "a.glb");
    EXPECT_EQ(ReadBytes(folder / "a.glb"), b.Glb());
    EXPECT_THAT(report.warnings, IsEmpty());
}

TEST_P(DracoMeshInBothWays, EditedWeightsAreSavedPlainBesideTheCompressedGeometry)
{
    const GltfBuilder b = MakeCompressed(GetParam());
    const CharacterFile file = b.Read();
    const TemporaryFolder folder;
    WriteBytes(folder / "opened.glb", b.Glb());
    gltf::CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    SetRow(edits.models[0], 3, {{0, 0.25}, {1, 0.75}});
    const gltf::SaveReport report = gltf::WriteCharacter(file, edits, {}, folder / "a.glb");
    EXPECT_EQ(report.verticesChanged, 1u);
    EXPECT_THAT(report.warnings, ElementsAre("1 compressed primitive has changed weights; they are saved uncompressed, "
                                             "all else stays compressed"));
    EXPECT_THAT(ForeignChanges(ReadRawGltf(folder / "opened.glb"), ReadRawGltf(folder / "a.glb")), IsEmpty());

    const Json primitive = ReadRawGltf(folder / "a.glb").json["meshes"][0]["primitives"][0];
    EXPECT_FALSE(primitive["extensions"][EXTENSION]["attributes"].contains("WEIGHTS_0"));
    EXPECT_TRUE(primitive["extensions"][EXTENSION]["attributes"].contains("POSITION"));
    const CharacterFile saved = gltf::ReadCharacter(folder / "a.glb");
    std::map<Place, Row> expected = RowsByPlace(file.meshes[0]);
    expected[PlaceOf(file.meshes[0], 3)] = {{0, 0.25}, {1, 0.75}};
    EXPECT_EQ(RowsByPlace(saved.meshes[0]), expected);
    EXPECT_EQ(TrianglesByPlace(saved.meshes[0]), TrianglesByPlace(file.meshes[0]));

    // The weights are plain now, so a second edit of the saved file fits over them.
    gltf::CharacterEdits again{{WeightsOf(saved, 0)}, {}};
    SetRow(again.models[0], 3, {{0, 0.5}, {1, 0.5}});
    EXPECT_THAT(gltf::WriteCharacter(saved, again, {}, folder / "b.glb").warnings, IsEmpty());
    EXPECT_EQ(ReadBytes(folder / "b.glb").size(), ReadBytes(folder / "a.glb").size());
}

TEST_P(DracoMeshInBothWays, CutOrChangedAnywhereIsOneSentenceOrAMesh)
{
    const GltfBuilder b = MakeCompressed(GetParam());
    const auto size = b.json["bufferViews"].back()["byteLength"].get<std::size_t>();
    std::size_t refused = 0;
    const auto judge = [&refused](const GltfBuilder& broken) {
        const std::string refusal = RefusalOf(broken.Glb());
        EXPECT_EQ(refusal.find('\n'), std::string::npos);
        refused += refusal.empty() ? 0 : 1;
    };
    for (std::size_t length = 0; length < size; ++length) {
        GltfBuilder cut = b;
        cut.json["bufferViews"].back()["byteLength"] = length;
        judge(cut);
    }
    EXPECT_GT(refused, size * 3 / 4);
    for (std::size_t at = 0; at < size; ++at) {
        for (const int change : {0x01, 0x80, 0xFF}) {
            GltfBuilder changed = b;
            CompressedBytes(changed)[at] ^= static_cast<std::uint8_t>(change);
            judge(changed);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfTheStrip, DracoMeshInBothWays,
                         testing::Values(draco::MESH_SEQUENTIAL_ENCODING, draco::MESH_EDGEBREAKER_ENCODING),
                         [](const auto& method) {
                             return method.param == draco::MESH_SEQUENTIAL_ENCODING ? "Sequential" : "Edgebreaker";
                         });

std::vector<int> Header(int method, const std::vector<int>& rest)
{
    std::vector<int> bytes{'D', 'R', 'A', 'C', 'O', 2, 2, 1, method, 0, 0};
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
}

TEST(DracoMesh, ThatAnnouncesMoreThanTheFileCanHoldIsRefusedBeforeMemoryIsAskedFor)
{
    GltfBuilder b = MakeCompressed();
    // Four thousand million points in no triangle.
    ReplaceCompressed(b, Header(0, {0, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 1}));
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("announces so much"));
    // A thousand million triangles with seams.
    ReplaceCompressed(b, Header(1, {0, 3, 0xFF, 0xFF, 0xFF, 0xFF, 0x03, 200, 1, 0}));
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("announces so much"));
    // 20000 points in 6667 triangles, with two attributes of 255 doubles each.
    std::vector<int> greedy{0x8B, 0x34, 0xA0, 0x9C, 0x01, 1};
    greedy.resize(greedy.size() + std::size_t{6667} * 3 * 2, 0);
    for (const int byte : {1, 2, 4, 10, 255, 0, 0, 4, 10, 255, 0, 1, 0, 0, 0, 0, 0, 0}) {
        greedy.push_back(byte);
    }
    ReplaceCompressed(b, Header(0, greedy));
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("announces so much"));
}

TEST(DracoMesh, ThatIsNoMeshOrOfAnotherVersionIsRefused)
{
    GltfBuilder b = MakeCompressed();
    ReplaceCompressed(b, {'D', 'R', 'A', 'C', 'O', 1, 3, 1, 0, 0, 0, 0, 0});
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("has version 1.3, 2.2 is read"));
    ReplaceCompressed(b, {'D', 'R', 'A', 'C', 'O', 2, 3, 0, 0, 0, 0, 0, 0});
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("holds no triangles"));
    ReplaceCompressed(b, {'n', 'o', 't', 'h', 'i', 'n', 'g'});
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("KHR_draco_mesh_compression does not begin as one"));
    ReplaceCompressed(b, {});
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("KHR_draco_mesh_compression does not begin as one"));
}

TEST(DracoMesh, WhatDoesNotGoWithItsPrimitiveIsRefused)
{
    const auto refusal = [](auto spoil) {
        GltfBuilder b = MakeCompressed();
        spoil(b);
        return RefusalOf(b.Glb());
    };
    EXPECT_THAT(refusal([](GltfBuilder& b) { ExtensionOf(b)["attributes"]["WEIGHTS_0"] = 99; }),
                HasSubstr("/extensions/KHR_draco_mesh_compression/attributes/WEIGHTS_0: the compressed mesh has no "
                          "attribute 99"));
    EXPECT_THAT(refusal([](GltfBuilder& b) { ExtensionOf(b)["attributes"]["NORMAL"] = 0; }),
                HasSubstr("the primitive has no attribute NORMAL"));
    EXPECT_THAT(refusal([](GltfBuilder& b) { ExtensionOf(b)["attributes"]["WEIGHTS_0"] = 0; }),
                HasSubstr("the compressed attribute has 3 components, its accessor has 4"));
    EXPECT_THAT(refusal([](GltfBuilder& b) { ExtensionOf(b)["attributes"] = 7; }), HasSubstr("an object is needed"));
    EXPECT_THAT(refusal([](GltfBuilder& b) { ExtensionOf(b).erase("bufferView"); }), HasSubstr("names no buffer view"));
    EXPECT_THAT(refusal([](GltfBuilder& b) { ExtensionOf(b)["bufferView"] = 99; }),
                HasSubstr("number 99 of the bufferViews is meant"));
    EXPECT_THAT(refusal([](GltfBuilder& b) { b.Primitive()["mode"] = 1; }), HasSubstr("knows triangles only"));
    EXPECT_THAT(refusal([](GltfBuilder& b) { b.Primitive()["extensions"][EXTENSION] = Json::array(); }),
                HasSubstr("an object is needed"));
    EXPECT_THAT(refusal([](GltfBuilder& b) { b.Accessor("WEIGHTS_0")["componentType"] = 5123; }),
                HasSubstr("holds numbers that its accessor has no place for"));
    // Joint numbers as large as 1 have a place in a byte.
    EXPECT_EQ(refusal([](GltfBuilder& b) { b.Accessor("JOINTS_0")["componentType"] = 5121; }), "");
}

TEST(DracoMesh, ThatHasAnotherNumberOfVerticesThanItsAccessorsIsTakenWithAWarning)
{
    GltfBuilder b = MakeCompressed();
    for (const char* attribute : {"POSITION", "JOINTS_0", "WEIGHTS_0"}) {
        b.Accessor(attribute)["count"] = 9;
    }
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.meshes[0].VertexCount(), 8u);
    EXPECT_THAT(file.warnings,
                ElementsAre(HasSubstr("the accessors have 9 elements, the compressed mesh has 8 vertices")));
}

TEST(DracoMesh, ThatIsBrokenIsReadFromThePlainCopyWithAWarning)
{
    GltfBuilder b = MakeCompressed(draco::MESH_SEQUENTIAL_ENCODING, true);
    EXPECT_THAT(b.Read().warnings, IsEmpty());
    CompressedBytes(b)[0] = 'X';
    const CharacterFile file = b.Read();
    EXPECT_THAT(file.warnings, ElementsAre(HasSubstr("the uncompressed mesh is taken: the mesh compressed with")));
    EXPECT_EQ(RowsByPlace(file.meshes[0]), RowsByPlace(MakeValidCharacter().Read().meshes[0]));
    b.json["extensionsRequired"] = {EXTENSION};
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("does not begin as one"));
}

TEST(DracoMesh, ThatHasAPlainCopyLosesNeitherByAnEdit)
{
    const GltfBuilder b = MakeCompressed(draco::MESH_SEQUENTIAL_ENCODING, true);
    const CharacterFile file = b.Read();
    const TemporaryFolder folder;
    gltf::CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    SetRow(edits.models[0], 2, {{0, 0.125}, {1, 0.875}});
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "a.glb"));
    const RawGltf saved = ReadRawGltf(folder / "a.glb");
    EXPECT_TRUE(std::equal(b.buffer.begin(), b.buffer.end(), saved.buffers[0].begin()));
    // Programs that decode and programs that do not find the same new weights.
    const Json& primitive = saved.json["meshes"][0]["primitives"][0];
    EXPECT_FALSE(primitive["extensions"][EXTENSION]["attributes"].contains("WEIGHTS_0"));
    EXPECT_THAT(DecodeRaw(saved, primitive["attributes"]["WEIGHTS_0"])[2], ElementsAre(0.875, 0.125, 0, 0));
}

TEST(DracoMesh, OfTwoPrimitivesOnOneSetOfAccessorsEachHasItsOwnVertices)
{
    GltfBuilder b = MakeCompressed();
    GltfBuilder moved = MakeValidCharacter();
    auto* x = reinterpret_cast<float*>(moved.buffer.data());
    for (int v = 0; v < 8; ++v) {
        x[3 * v + 2] += 5;
    }
    Json second = b.Primitive();
    second["extensions"][EXTENSION]["bufferView"] =
        b.AddView(CompressStrip(moved, draco::MESH_SEQUENTIAL_ENCODING).bytes);
    b.json["meshes"][0]["primitives"].push_back(second);
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.meshes[0].VertexCount(), 16u);
    EXPECT_EQ(file.meshes[0].triangles.size(), 36u);
}

TEST(DracoMesh, LimitedInfluencesLeaveNoCompressedSetBehind)
{
    GltfBuilder b = MakeCompressed();
    b.Primitive()["attributes"]["JOINTS_1"] = b.Primitive()["attributes"]["JOINTS_0"];
    b.Primitive()["attributes"]["WEIGHTS_1"] = b.Primitive()["attributes"]["WEIGHTS_0"];
    ExtensionOf(b)["attributes"]["JOINTS_1"] = ExtensionOf(b)["attributes"]["JOINTS_0"];
    ExtensionOf(b)["attributes"]["WEIGHTS_1"] = ExtensionOf(b)["attributes"]["WEIGHTS_0"];
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.meshes[0].influenceSets, 2);
    const TemporaryFolder folder;
    gltf::SaveOptions options;
    options.maxInfluences = 1;
    static_cast<void>(gltf::WriteCharacter(file, {{WeightsOf(file, 0)}, {}}, options, folder / "a.glb"));
    const Json primitive = ReadRawGltf(folder / "a.glb").json["meshes"][0]["primitives"][0];
    EXPECT_FALSE(primitive["attributes"].contains("WEIGHTS_1"));
    EXPECT_FALSE(primitive["extensions"][EXTENSION]["attributes"].contains("WEIGHTS_1"));
    for (const auto& [place, row] : RowsByPlace(gltf::ReadCharacter(folder / "a.glb").meshes[0])) {
        EXPECT_EQ(row.size(), 1u);
    }
}

// The fox, compressed by another program with rounded places, against the one it was made from.
TEST(DracoMesh, OfTheFoxHasTheWeightsOfTheFox)
{
    const CharacterFile fox = gltf::ReadCharacter(DataPath("skinned/Fox.glb"));
    const CharacterFile compressed = gltf::ReadCharacter(DataPath("skinned/fox_compressed.glb"));
    const gltf::Mesh& original = fox.meshes[0];
    const gltf::Mesh& mesh = compressed.meshes[0];
    EXPECT_EQ(mesh.triangles.size(), original.triangles.size());
    // Places on a raster much coarser than the rounding and much finer than the fox.
    const auto cell = [](const Place& p, int dx, int dy, int dz) {
        return std::array<long, 3>{std::lround(p[0]) + dx, std::lround(p[1]) + dy, std::lround(p[2]) + dz};
    };
    std::multimap<std::array<long, 3>, std::size_t> raster;
    for (std::size_t v = 0; v < original.VertexCount(); ++v) {
        raster.emplace(cell(PlaceOf(original, v), 0, 0, 0), v);
    }
    const auto nearest = [&](const Place& place) {
        std::pair<double, std::size_t> best{1e9, 0};
        for (int i = 0; i < 27; ++i) {
            const auto [from, to] = raster.equal_range(cell(place, i % 3 - 1, i / 3 % 3 - 1, i / 9 - 1));
            for (auto at = from; at != to; ++at) {
                const Place other = PlaceOf(original, at->second);
                best = std::min(
                    best, {std::hypot(place[0] - other[0], place[1] - other[1], place[2] - other[2]), at->second});
            }
        }
        return best;
    };
    for (std::size_t v = 0; v < mesh.VertexCount(); ++v) {
        const auto [distance, other] = nearest(PlaceOf(mesh, v));
        ASSERT_LT(distance, 0.05) << v;
        std::map<std::uint32_t, double> difference;
        for (const auto& [joint, weight] : RowOf(mesh.influences, v)) {
            difference[joint] += weight;
        }
        for (const auto& [joint, weight] : RowOf(original.influences, other)) {
            difference[joint] -= weight;
        }
        for (const auto& [joint, off] : difference) {
            EXPECT_NEAR(off, 0, 0.01) << v;
        }
    }
}

TEST(DracoMesh, OfTheFoxShowsTheSamePartsOfItsPicture)
{
    // Both have the same triangles in another order, so over all corners the places in the picture are the same.
    const auto meanOf = [](const std::string& path) {
        const std::vector<float> coords = gltf::ReadTexCoords(gltf::ReadCharacter(DataPath(path)), 0);
        std::array<double, 3> mean{0, 0, static_cast<double>(coords.size())};
        for (std::size_t i = 0; i < coords.size(); ++i) {
            mean[i % 2] += static_cast<double>(coords[i]) / static_cast<double>(coords.size() / 2);
        }
        return mean;
    };
    const auto expected = meanOf("skinned/Fox.glb");
    EXPECT_GT(expected[0], 0.1);
    EXPECT_THAT(meanOf("skinned/fox_compressed.glb"), testing::Pointwise(testing::DoubleNear(1e-3), expected));
}

TEST(DracoMesh, WeightsThatCompressionRoundedOffAddUpToOneAgain)
{
    const CharacterFile fox = gltf::ReadCharacter(DataPath("skinned/fox_compressed.glb"));
    EXPECT_THAT(fox.warnings, testing::Contains(HasSubstr("weights that compression rounded off")));
    for (std::size_t v = 0; v < fox.meshes[0].VertexCount(); ++v) {
        double sum = 0;
        for (const auto& [joint, weight] : RowOf(fox.meshes[0].influences, v)) {
            sum += weight;
        }
        EXPECT_NEAR(sum, 1, 3e-7) << v;
    }
    // Weights that are far off were so before they were compressed, and stay.
    GltfBuilder b = MakeValidCharacter();
    reinterpret_cast<float*>(&b.buffer[b.json["bufferViews"][2]["byteOffset"].get<std::size_t>()])[0] = 0.5F;
    const CompressedStrip strip = CompressStrip(b, draco::MESH_SEQUENTIAL_ENCODING);
    GltfBuilder compressed = MakeCompressed();
    ExtensionOf(compressed)["bufferView"] = compressed.AddView(strip.bytes);
    EXPECT_THAT(RowOf(compressed.Read().meshes[0].influences, 0), ElementsAre(testing::Pair(0, 0.5)));
}

TEST(DracoMesh, OfTheFoxIsSavedUntouchedAndWithAnEdit)
{
    const std::string source = DataPath("skinned/fox_compressed.glb");
    const CharacterFile file = gltf::ReadCharacter(source);
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, {}, {}, folder / "same.glb"));
    EXPECT_EQ(ReadBytes(folder / "same.glb"), ReadBytes(source));
    std::size_t node = 0;
    while (file.nodes[node].skin < 0) {
        ++node;
    }
    gltf::CharacterEdits edits{{WeightsOf(file, static_cast<int>(node))}, {}};
    SetRow(edits.models[0], 100, {{0, 0.25}, {1, 0.75}});
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "edited.glb"));
    EXPECT_THAT(ForeignChanges(ReadRawGltf(source), ReadRawGltf(folder / "edited.glb")), IsEmpty());
    const CharacterFile saved = gltf::ReadCharacter(folder / "edited.glb");
    ASSERT_EQ(saved.meshes[0].positions, file.meshes[0].positions);
    EXPECT_EQ(saved.meshes[0].triangles, file.meshes[0].triangles);
    for (std::size_t v = 0; v < file.meshes[0].VertexCount(); ++v) {
        EXPECT_EQ(RowOf(saved.meshes[0].influences, v),
                  v == 100 ? (Row{{0, 0.25}, {1, 0.75}}) : RowOf(file.meshes[0].influences, v));
    }
}

} // namespace
} // namespace skindesk::test
