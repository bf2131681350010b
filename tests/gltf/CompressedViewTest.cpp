// SPDX-License-Identifier: MIT
// Buffer views compressed with EXT_meshopt_compression: read as if they were plain, saved without touching them.
#include "GltfBuilder.h"
#include "support/GltfCompare.h"

#include <meshoptimizer.h>

#include <algorithm>
#include <cmath>

namespace skindesk::test {
namespace {

using gltf::CharacterFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* EXTENSION = "EXT_meshopt_compression";
using Bytes = std::vector<std::uint8_t>;

// Compresses one buffer view of the builder. Its plain bytes stay, or it becomes one of a placeholder without bytes.
void CompressView(GltfBuilder& b, std::size_t view, std::size_t stride, const std::string& mode, bool isPlainToo)
{
    const auto offset = b.json["bufferViews"][view]["byteOffset"].get<std::size_t>();
    const auto length = b.json["bufferViews"][view]["byteLength"].get<std::size_t>();
    const std::size_t count = length / stride;
    Bytes compressed;
    if (mode == "ATTRIBUTES") {
        compressed.resize(meshopt_encodeVertexBufferBound(count, stride));
        compressed.resize(
            meshopt_encodeVertexBuffer(compressed.data(), compressed.size(), &b.buffer[offset], count, stride));
    } else {
        std::vector<unsigned> indices;
        for (std::size_t i = 0; i < count; ++i) {
            indices.push_back(unsigned{b.buffer[offset + i * stride]} | unsigned{b.buffer[offset + i * stride + 1]}
                                                                            << 8);
        }
        meshopt_encodeIndexVersion(1);
        compressed.resize(
            std::max(meshopt_encodeIndexBufferBound(count, 8), meshopt_encodeIndexSequenceBound(count, 8)));
        compressed.resize(
            mode == "TRIANGLES"
                ? meshopt_encodeIndexBuffer(compressed.data(), compressed.size(), indices.data(), count)
                : meshopt_encodeIndexSequence(compressed.data(), compressed.size(), indices.data(), count));
    }
    const std::size_t place = b.AddView(compressed);
    b.json["bufferViews"][view]["extensions"][EXTENSION] = {{"buffer", 0},
                                                            {"byteOffset", b.json["bufferViews"][place]["byteOffset"]},
                                                            {"byteLength", compressed.size()},
                                                            {"byteStride", stride},
                                                            {"count", count},
                                                            {"mode", mode}};
    b.json["bufferViews"].erase(place); // the last one; only the extension knows the compressed bytes
    b.json["extensionsUsed"] = {EXTENSION};
    if (!isPlainToo) {
        b.json["extensionsRequired"] = {EXTENSION};
        b.json["bufferViews"][view]["buffer"] = 1;
        b.json["bufferViews"][view]["byteOffset"] = 0;
        b.json["buffers"] = Json::array({{{"byteLength", 4096}, {"extensions", {{EXTENSION, {{"fallback", true}}}}}}});
        std::fill_n(b.buffer.begin() + static_cast<std::ptrdiff_t>(offset), length, std::uint8_t{0xEE});
    }
}

constexpr std::size_t POSITION_VIEW = 0;
constexpr std::size_t JOINT_VIEW = 1;
constexpr std::size_t WEIGHT_VIEW = 2;
constexpr std::size_t INDEX_VIEW = 3;

GltfBuilder MakeCompressed(const std::string& indexMode = "TRIANGLES", bool isPlainToo = false)
{
    GltfBuilder b = MakeValidCharacter();
    CompressView(b, POSITION_VIEW, 12, "ATTRIBUTES", isPlainToo);
    CompressView(b, JOINT_VIEW, 8, "ATTRIBUTES", isPlainToo);
    CompressView(b, WEIGHT_VIEW, 16, "ATTRIBUTES", isPlainToo);
    CompressView(b, INDEX_VIEW, 2, indexMode, isPlainToo);
    return b;
}

Json& ExtensionOf(GltfBuilder& b, std::size_t view) { return b.json["bufferViews"][view]["extensions"][EXTENSION]; }

void ExpectSameMesh(const gltf::Mesh& mesh, const gltf::Mesh& expected)
{
    EXPECT_EQ(mesh.positions, expected.positions);
    EXPECT_EQ(mesh.influences.offsets, expected.influences.offsets);
    EXPECT_EQ(mesh.influences.joints, expected.influences.joints);
    EXPECT_EQ(mesh.influences.weights, expected.influences.weights);
    // The codec may turn a triangle: the same corners in the same order, begun at another one.
    ASSERT_EQ(mesh.triangles.size(), expected.triangles.size());
    for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
        std::array<std::int32_t, 3> turned{mesh.triangles[t], mesh.triangles[t + 1], mesh.triangles[t + 2]};
        const auto first = std::find(turned.begin(), turned.end(), expected.triangles[t]);
        ASSERT_NE(first, turned.end());
        std::rotate(turned.begin(), first, turned.end());
        EXPECT_THAT(turned, testing::ElementsAreArray(&expected.triangles[t], 3));
    }
}

TEST(MeshoptView, IsReadAsIfItWerePlain)
{
    for (const char* mode : {"TRIANGLES", "INDICES"}) {
        const CharacterFile file = MakeCompressed(mode).Read();
        EXPECT_THAT(file.warnings, IsEmpty()) << mode;
        ExpectSameMesh(file.meshes[0], MakeValidCharacter().Read().meshes[0]);
    }
}

TEST(MeshoptView, MayHoldInverseBindMatricesToo)
{
    GltfBuilder b = MakeValidCharacter();
    CompressView(b, 4, 64, "ATTRIBUTES", false);
    EXPECT_EQ(b.Read().skins[0].inverseBindMatrices, MakeValidCharacter().Read().skins[0].inverseBindMatrices);
}

TEST(MeshoptView, SavedUntouchedIsTheSameBytes)
{
    const GltfBuilder b = MakeCompressed();
    const CharacterFile file = b.Read();
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, {{WeightsOf(file, 0)}, {}}, {}, folder / "a.glb"));
    EXPECT_EQ(ReadBytes(folder / "a.glb"), b.Glb());
}

TEST(MeshoptView, EditedWeightsGoIntoAPlainViewOfTheirOwn)
{
    for (const bool isPlainToo : {false, true}) {
        const GltfBuilder b = MakeCompressed("TRIANGLES", isPlainToo);
        const CharacterFile file = b.Read();
        const TemporaryFolder folder;
        WriteBytes(folder / "opened.glb", b.Glb());
        gltf::CharacterEdits edits{{WeightsOf(file, 0)}, {}};
        SetRow(edits.models[0], 3, {{0, 0.25}, {1, 0.75}});
        const gltf::SaveReport report = gltf::WriteCharacter(file, edits, {}, folder / "a.glb");
        EXPECT_THAT(report.warnings, ElementsAre("1 compressed primitive has changed weights; they are saved "
                                                 "uncompressed, all else stays compressed"));
        EXPECT_THAT(ForeignChanges(ReadRawGltf(folder / "opened.glb"), ReadRawGltf(folder / "a.glb")), IsEmpty());
        const RawGltf saved = ReadRawGltf(folder / "a.glb");
        EXPECT_TRUE(std::equal(b.buffer.begin(), b.buffer.end(), saved.buffers[0].begin()));
        const CharacterFile again = gltf::ReadCharacter(folder / "a.glb");
        EXPECT_EQ(again.meshes[0].positions, file.meshes[0].positions);
        for (std::size_t v = 0; v < 8; ++v) {
            const std::vector<std::pair<std::uint32_t, double>> edited{{0, 0.25}, {1, 0.75}};
            EXPECT_EQ(RowOf(again.meshes[0].influences, v), v == 3 ? edited : RowOf(file.meshes[0].influences, v));
        }
    }
}

// Weights that lie, plain, inside the bytes of a compressed view belong to that view as well.
TEST(MeshoptView, ItsCompressedBytesAreNeverOverwritten)
{
    GltfBuilder b = MakeValidCharacter();
    CompressView(b, POSITION_VIEW, 12, "ATTRIBUTES", false);
    Json& extension = ExtensionOf(b, POSITION_VIEW);
    const auto weights = b.json["bufferViews"][WEIGHT_VIEW]["byteOffset"].get<std::size_t>();
    const auto start = extension["byteOffset"].get<std::size_t>();
    const Bytes compressed(b.buffer.begin() + static_cast<std::ptrdiff_t>(start),
                           b.buffer.begin() + static_cast<std::ptrdiff_t>(start) +
                               extension["byteLength"].get<std::ptrdiff_t>());
    ASSERT_LE(compressed.size(), 128u);
    std::copy(compressed.begin(), compressed.end(), b.buffer.begin() + static_cast<std::ptrdiff_t>(weights));
    extension["byteOffset"] = weights;
    const CharacterFile file = b.Read();
    const TemporaryFolder folder;
    gltf::CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    SetRow(edits.models[0], 7, {{0, 0.25}, {1, 0.75}});
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "a.glb"));
    EXPECT_EQ(gltf::ReadCharacter(folder / "a.glb").meshes[0].positions, file.meshes[0].positions);
}

TEST(MeshoptView, FiltersAreUndone)
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<float> normals;
    for (int v = 0; v < 8; ++v) {
        normals.insert(normals.end(), {0.6F, 0.0F, 0.8F, 0.0F});
    }
    Bytes filtered(8 * 4);
    meshopt_encodeFilterOct(filtered.data(), 8, 4, 8, normals.data());
    const std::size_t normalView = b.AddView(filtered);
    b.json["bufferViews"][normalView]["byteStride"] = 4;
    CompressView(b, normalView, 4, "ATTRIBUTES", false);
    ExtensionOf(b, normalView)["filter"] = "OCTAHEDRAL";
    b.json["accessors"].push_back(
        {{"bufferView", normalView}, {"componentType", 5120}, {"normalized", true}, {"type", "VEC3"}, {"count", 8}});
    b.Primitive()["attributes"]["NORMAL"] = b.json["accessors"].size() - 1;

    Bytes weights(8 * 16);
    std::vector<float> plain;
    for (int v = 0; v < 8; ++v) {
        plain.insert(plain.end(), {0.75F, 0.25F, 0.0F, 0.0F});
    }
    meshopt_encodeFilterExp(weights.data(), 8, 16, 15, plain.data());
    const std::size_t weightView = b.AddView(weights);
    CompressView(b, weightView, 16, "ATTRIBUTES", false);
    ExtensionOf(b, weightView)["filter"] = "EXPONENTIAL";
    b.Accessor("WEIGHTS_0")["bufferView"] = weightView;

    std::vector<float> quaternions{0, 0, 0, 1, 0, 0.6F, 0, 0.8F};
    Bytes rotations(2 * 8);
    meshopt_encodeFilterQuat(rotations.data(), 2, 8, 16, quaternions.data());
    const std::size_t rotationView = b.AddView(rotations);
    CompressView(b, rotationView, 8, "ATTRIBUTES", false);
    ExtensionOf(b, rotationView)["filter"] = "QUATERNION";
    const std::size_t times = b.AddAccessor("SCALAR", 5126, {0, 1});
    b.json["accessors"].push_back(
        {{"bufferView", rotationView}, {"componentType", 5122}, {"normalized", true}, {"type", "VEC4"}, {"count", 2}});
    b.json["animations"] = Json::array();
    b.json["animations"].push_back(
        {{"samplers", Json::array({{{"input", times}, {"output", b.json["accessors"].size() - 1}}})},
         {"channels", Json::array({{{"sampler", 0}, {"target", {{"node", 1}, {"path", "rotation"}}}}})}});

    const CharacterFile file = b.Read();
    EXPECT_NEAR(file.meshes[0].normals[0], 0.6, 0.02);
    EXPECT_NEAR(file.meshes[0].normals[2], 0.8, 0.02);
    EXPECT_THAT(RowOf(file.meshes[0].influences, 2),
                ElementsAre(testing::Pair(0, Near(0.75)), testing::Pair(1, Near(0.25))));
    const std::vector<float>& values = file.animations[0].samplers[0].values;
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_NEAR(std::abs(values[i]), quaternions[i], 1e-3) << i;
    }
}

TEST(MeshoptView, FewerBytesThanItsElementsNeedAreRefusedBeforeMemoryIsAskedFor)
{
    GltfBuilder b = MakeCompressed();
    b.json["buffers"][0]["byteLength"] = 16000000000000ULL;
    b.json["bufferViews"][WEIGHT_VIEW]["byteLength"] = 16000000000000ULL;
    ExtensionOf(b, WEIGHT_VIEW)["count"] = 1000000000000ULL;
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("elements need at least 250000000033 compressed bytes"));
    b = MakeCompressed();
    b.json["buffers"][0]["byteLength"] = 6000000000ULL;
    b.json["bufferViews"][INDEX_VIEW]["byteLength"] = 6000000000ULL;
    ExtensionOf(b, INDEX_VIEW)["count"] = 3000000000ULL;
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("elements need at least 1000000017 compressed bytes"));
}

TEST(MeshoptView, ManyViewsOfTheSameBytesAreRefusedBeforeTheirMemoryIsAskedFor)
{
    // A million equal elements are some thousand bytes, which a thousand views may name.
    GltfBuilder b = MakeValidCharacter();
    const std::size_t view = b.AddView(Bytes(4'000'000));
    CompressView(b, view, 4, "ATTRIBUTES", false);
    b.buffer.erase(b.buffer.begin() + 1000, b.buffer.begin() + 1000 + 3'900'000);
    const auto offset = ExtensionOf(b, view)["byteOffset"].get<std::size_t>();
    ExtensionOf(b, view)["byteOffset"] = offset - 3'900'000;
    b.json["buffers"][0]["byteLength"] = 4'000'000;
    EXPECT_EQ(RefusalOf(b.Glb()), "");
    for (int i = 0; i < 1000; ++i) {
        b.json["bufferViews"].push_back(Json(b.json["bufferViews"][view]));
    }
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("times as many would be needed"));
}

TEST(MeshoptView, CutOrChangedAnywhereIsOneSentenceOrAMesh)
{
    const GltfBuilder b = MakeCompressed();
    for (const std::size_t view : {JOINT_VIEW, WEIGHT_VIEW, INDEX_VIEW}) {
        GltfBuilder whole = b;
        const auto length = ExtensionOf(whole, view)["byteLength"].get<std::size_t>();
        const auto offset = ExtensionOf(whole, view)["byteOffset"].get<std::size_t>();
        for (std::size_t i = 0; i < length; ++i) {
            GltfBuilder cut = b;
            ExtensionOf(cut, view)["byteLength"] = i;
            EXPECT_THAT(RefusalOf(cut.Glb()), testing::Not(testing::AnyOf(HasSubstr("\n"), IsEmpty()))) << i;
            for (const int change : {0x01, 0x80, 0xFF}) {
                GltfBuilder changed = b;
                changed.buffer[offset + i] ^= static_cast<std::uint8_t>(change);
                EXPECT_EQ(RefusalOf(changed.Glb()).find('\n'), std::string::npos);
            }
        }
    }
}

TEST(MeshoptView, WhatDoesNotGoWithItsViewIsRefused)
{
    const auto refusal = [](std::size_t view, const char* key, const Json& value) {
        GltfBuilder b = MakeCompressed();
        ExtensionOf(b, view)[key] = value;
        if (value.is_null()) {
            ExtensionOf(b, view).erase(key);
        }
        return RefusalOf(b.Glb());
    };
    EXPECT_THAT(refusal(WEIGHT_VIEW, "count", nullptr),
                HasSubstr("/bufferViews/2/extensions/EXT_meshopt_compression: EXT_meshopt_compression has no count"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "count", 7), HasSubstr("7 elements of 16 bytes do not fill the buffer view"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "byteStride", 6), HasSubstr("multiples of 4 up to 256 can be compressed"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "byteStride", 260), HasSubstr("multiples of 4 up to 256 can be compressed"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "byteStride", 0), HasSubstr("multiples of 4 up to 256 can be compressed"));
    EXPECT_THAT(refusal(INDEX_VIEW, "byteStride", 1), HasSubstr("compressed indices have 2 or 4 bytes"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "mode", "SPHERES"), HasSubstr("is \"SPHERES\", ATTRIBUTES, TRIANGLES"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "mode", nullptr), HasSubstr("is \"\", ATTRIBUTES, TRIANGLES"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "filter", "OCTAHEDRAL"), HasSubstr("does not go with elements of 16 bytes"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "filter", "QUATERNION"), HasSubstr("does not go with elements of 16 bytes"));
    EXPECT_THAT(refusal(INDEX_VIEW, "filter", "EXPONENTIAL"), HasSubstr("does not go with elements of 2 bytes"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "buffer", 5), HasSubstr("number 5 of the buffers is meant, there are 2"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "buffer", 1), HasSubstr("the buffer has 0"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "byteOffset", 9007199254740991LL), HasSubstr("the compressed bytes end at byte"));
    EXPECT_THAT(refusal(WEIGHT_VIEW, "byteLength", 9007199254740991LL), HasSubstr("the compressed bytes end at byte"));
    GltfBuilder b = MakeCompressed();
    b.json["bufferViews"][WEIGHT_VIEW]["extensions"][EXTENSION] = 3;
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("an object is needed"));
}

TEST(MeshoptView, NeedsNoPlainCopyEvenWhereTheFileNamesOne)
{
    GltfBuilder b = MakeCompressed();
    b.json.erase("extensionsRequired");
    b.json["buffers"][0]["uri"] = "left-behind.bin";
    const TemporaryFolder folder;
    WriteBytes(folder / "a.glb", b.Glb());
    ExpectSameMesh(gltf::ReadCharacter(folder / "a.glb").meshes[0], MakeValidCharacter().Read().meshes[0]);
    b.json["buffers"][0].erase("extensions");
    EXPECT_THAT(RefusalOf(b.Glb(), folder / "a.glb"), HasSubstr("the buffer file left-behind.bin: cannot be opened"));
}

TEST(MeshoptView, ThatIsBrokenIsReadFromThePlainCopyWithAWarning)
{
    GltfBuilder b = MakeCompressed("TRIANGLES", true);
    EXPECT_THAT(b.Read().warnings, IsEmpty());
    b.buffer[ExtensionOf(b, WEIGHT_VIEW)["byteOffset"].get<std::size_t>()] = 0;
    const CharacterFile file = b.Read();
    EXPECT_THAT(file.warnings, ElementsAre(HasSubstr("the uncompressed bytes are taken: the buffer view is compressed "
                                                     "with EXT_meshopt_compression and its bytes cannot be decoded")));
    ExpectSameMesh(file.meshes[0], MakeValidCharacter().Read().meshes[0]);
    b.json["extensionsRequired"] = {EXTENSION};
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("cannot be decoded"));
}

} // namespace
} // namespace skindesk::test
