// SPDX-License-Identifier: MIT
// Typed arrays: every component type, layout and way to be out of bounds.
#include "GltfBuilder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace skindesk::test {
namespace {

using gltf::CharacterFile;
using testing::ElementsAre;
using testing::FloatNear;
using testing::HasSubstr;
using testing::Pair;

struct Stored
{
    int componentType;
    bool normalised;
    double one;     // what is stored for a weight of three quarters
    double decoded; // and what that means
};

class WeightType : public testing::TestWithParam<Stored>
{
};

TEST_P(WeightType, IsDecoded)
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<double> numbers(32, 0);
    for (std::size_t v = 0; v < 8; ++v) {
        numbers[v * 4] = GetParam().one;
    }
    b.Primitive()["attributes"]["WEIGHTS_0"] =
        b.AddAccessor("VEC4", GetParam().componentType, numbers, GetParam().normalised);
    const CharacterFile file = b.Read();
    EXPECT_THAT(RowOf(file.meshes[0].influences, 0),
                ElementsAre(Pair(0, testing::DoubleNear(GetParam().decoded, 1e-7))));
}

INSTANTIATE_TEST_SUITE_P(All, WeightType,
                         testing::Values(Stored{5126, false, 0.75, 0.75}, Stored{5121, true, 191, 191.0 / 255},
                                         Stored{5123, true, 49151, 49151.0 / 65535}, Stored{5120, true, 95, 95.0 / 127},
                                         Stored{5122, true, 24575, 24575.0 / 32767}, Stored{5121, false, 3, 3},
                                         Stored{5123, false, 300, 300}, Stored{5120, false, -3, -3},
                                         Stored{5122, false, -300, -300}, Stored{5125, false, 70000, 70000},
                                         Stored{5120, true, -128, -1}));

TEST(Accessor, JointsMayBeBytesWordsOrLongs)
{
    for (const int type : {5121, 5123, 5125}) {
        GltfBuilder b = MakeValidCharacter();
        std::vector<double> numbers(32, 0);
        numbers[4 * 7] = 1;
        b.Primitive()["attributes"]["JOINTS_0"] = b.AddAccessor("VEC4", type, numbers);
        EXPECT_THAT(RowOf(b.Read().meshes[0].influences, 7), ElementsAre(Pair(1, 1.0))) << type;
    }
    for (const int type : {5120, 5122, 5126}) {
        GltfBuilder b = MakeValidCharacter();
        b.Primitive()["attributes"]["JOINTS_0"] = b.AddAccessor("VEC4", type, std::vector<double>(32, 0));
        EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("no unsigned component type")) << type;
    }
}

TEST(Accessor, InterleavedAttributesAreFoundByTheirStride)
{
    GltfBuilder b = MakeValidCharacter();
    const CharacterFile plain = b.Read();
    // position (12 bytes), joints (4 bytes as unsigned char), weights (16 bytes): 32 bytes a vertex
    std::vector<std::uint8_t> bytes(8 * 32);
    for (std::size_t v = 0; v < 8; ++v) {
        std::memcpy(&bytes[v * 32], &plain.meshes[0].positions[v * 3], 12);
        float weights[4]{};
        for (const auto& [joint, weight] : RowOf(plain.meshes[0].influences, v)) {
            bytes[v * 32 + 12 + joint] = static_cast<std::uint8_t>(joint);
            weights[joint] = static_cast<float>(weight);
        }
        std::memcpy(&bytes[v * 32 + 16], weights, 16);
    }
    const std::size_t view = b.AddView(bytes);
    b.json["bufferViews"][view]["byteStride"] = 32;
    const auto place = [&](const char* attribute, int type, int offset) {
        Json& accessor = b.Accessor(attribute);
        accessor["bufferView"] = view;
        accessor["byteOffset"] = offset;
        accessor["componentType"] = type;
    };
    place("POSITION", 5126, 0);
    place("JOINTS_0", 5121, 12);
    place("WEIGHTS_0", 5126, 16);
    const CharacterFile interleaved = b.Read();
    EXPECT_EQ(interleaved.meshes[0].positions, plain.meshes[0].positions);
    EXPECT_EQ(interleaved.meshes[0].influences.joints, plain.meshes[0].influences.joints);
    EXPECT_EQ(interleaved.meshes[0].influences.weights, plain.meshes[0].influences.weights);
}

TEST(Accessor, QuantisedPositionsAreWholeNumbersOrFractions)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["extensionsRequired"] = {"KHR_mesh_quantization"};
    std::vector<double> numbers;
    for (int v = 0; v < 8; ++v) {
        numbers.insert(numbers.end(), {double(v), -32767, 300, 0}); // padded to a multiple of four bytes
    }
    const std::size_t accessor = b.AddAccessor("VEC4", 5122, numbers);
    b.json["accessors"][accessor]["type"] = "VEC3";
    b.json["bufferViews"].back()["byteStride"] = 8;
    b.Primitive()["attributes"]["POSITION"] = accessor;
    const CharacterFile whole = b.Read();
    EXPECT_EQ(whole.meshes[0].positions[3], 1);
    EXPECT_EQ(whole.meshes[0].positions[4], -32767);
    b.json["accessors"][accessor]["normalized"] = true;
    const CharacterFile fractions = b.Read();
    EXPECT_THAT(fractions.meshes[0].positions[4], FloatNear(-1, 1e-7F));
    EXPECT_THAT(fractions.meshes[0].positions[5], FloatNear(300.0F / 32767, 1e-7F));
}

TEST(Accessor, SparseValuesReplaceElementsWhateverTheTypeOfTheirIndices)
{
    for (const int type : {5121, 5123, 5125}) {
        GltfBuilder b = MakeValidCharacter();
        const std::size_t indices = b.AddAccessor("SCALAR", type, {3, 7});
        const std::size_t values = b.AddAccessor("VEC4", 5126, {0.25, 0.75, 0, 0, 0.5, 0.5, 0, 0});
        const auto viewOf = [&](std::size_t accessor) { return b.json["accessors"][accessor]["bufferView"]; };
        b.Accessor("WEIGHTS_0")["sparse"] = {{"count", 2},
                                             {"indices", {{"bufferView", viewOf(indices)}, {"componentType", type}}},
                                             {"values", {{"bufferView", viewOf(values)}}}};
        const CharacterFile file = b.Read();
        EXPECT_THAT(RowOf(file.meshes[0].influences, 3), ElementsAre(Pair(0, 0.25), Pair(1, 0.75)));
        EXPECT_THAT(RowOf(file.meshes[0].influences, 0), ElementsAre(Pair(0, 1.0)));
    }
}

TEST(Accessor, WithoutABufferViewIsAllZerosApartFromSparseValues)
{
    GltfBuilder b = MakeValidCharacter();
    b.Accessor("WEIGHTS_0").erase("bufferView");
    CharacterFile file = b.Read();
    EXPECT_TRUE(file.meshes[0].influences.joints.empty());
    EXPECT_THAT(file.warnings, ElementsAre(HasSubstr("8 without any weight")));

    const std::size_t indices = b.AddAccessor("SCALAR", 5121, {2});
    const std::size_t values = b.AddAccessor("VEC4", 5126, {1, 0, 0, 0});
    b.Accessor("WEIGHTS_0")["sparse"] = {
        {"count", 1},
        {"indices", {{"bufferView", b.json["accessors"][indices]["bufferView"]}, {"componentType", 5121}}},
        {"values", {{"bufferView", b.json["accessors"][values]["bufferView"]}}}};
    file = b.Read();
    EXPECT_THAT(RowOf(file.meshes[0].influences, 2), ElementsAre(Pair(0, 1.0)));
    EXPECT_THAT(RowOf(file.meshes[0].influences, 1), testing::IsEmpty());
}

TEST(Accessor, ManyElementsWithoutBytesAreRefusedBeforeMemoryIsAskedFor)
{
    GltfBuilder b = MakeValidCharacter();
    for (const char* attribute : {"POSITION", "JOINTS_0", "WEIGHTS_0"}) {
        b.Accessor(attribute).erase("bufferView");
        b.Accessor(attribute)["count"] = 4'000'000'000;
    }
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("4000000000 elements without a buffer view in a file of"));
}

TEST(Accessor, NumbersThatWouldWrapAroundAreOutOfBounds)
{
    for (const double count : {9007199254740992.0, 4611686018427387904.0, 1e19}) {
        GltfBuilder b = MakeValidCharacter();
        b.Accessor("WEIGHTS_0")["count"] = count;
        EXPECT_NE(RefusalOf(b.Glb()), "") << count;
        b = MakeValidCharacter();
        b.Accessor("WEIGHTS_0")["byteOffset"] = count;
        EXPECT_NE(RefusalOf(b.Glb()), "") << count;
        b = MakeValidCharacter();
        b.json["bufferViews"][2]["byteOffset"] = count;
        EXPECT_NE(RefusalOf(b.Glb()), "") << count;
        b = MakeValidCharacter();
        b.json["bufferViews"][2]["byteLength"] = count;
        EXPECT_NE(RefusalOf(b.Glb()), "") << count;
    }
}

TEST(Accessor, ElementsLargerThanTheirStrideAreRefused)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["bufferViews"][b.Accessor("WEIGHTS_0")["bufferView"].get<std::size_t>()]["byteStride"] = 12;
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("byteStride is 12, an element has 16 bytes"));
}

TEST(Accessor, TheLastElementMayEndWithTheBufferAndNotOneByteLater)
{
    GltfBuilder b = MakeValidCharacter();
    const std::size_t view = b.Accessor("WEIGHTS_0")["bufferView"];
    b.json["bufferViews"][view]["byteLength"] = 127;
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("8 elements need 128 bytes of the buffer view, it has 127"));
    b.json["bufferViews"][view]["byteLength"] = 128;
    EXPECT_EQ(RefusalOf(b.Glb()), "");
}

TEST(Accessor, ASmallFileThatNamesOneArrayThousandsOfTimesIsRefused)
{
    GltfBuilder b = MakeValidCharacter();
    b.AddView(std::vector<std::uint8_t>(1 << 16));
    Json big = b.Accessor("POSITION");
    big["bufferView"] = b.json["bufferViews"].size() - 1;
    big["count"] = (1 << 16) / 12;
    big.erase("min");
    big.erase("max");
    for (int i = 0; i < 3000; ++i) {
        b.json["accessors"].push_back(big); // each is another one, so none can be shared
        b.json["meshes"].push_back(
            {{"primitives", Json::array({{{"attributes", {{"POSITION", b.json["accessors"].size() - 1}}}}})}});
    }
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("names them so often"));
}

TEST(Accessor, NumbersAtOddPlacesAreReadAndReported)
{
    GltfBuilder b = MakeValidCharacter();
    const std::size_t view = b.Accessor("WEIGHTS_0")["bufferView"];
    const CharacterFile plain = b.Read();
    const std::size_t start = b.json["bufferViews"][view]["byteOffset"];
    std::vector<std::uint8_t> shifted(129);
    std::copy_n(b.buffer.begin() + static_cast<std::ptrdiff_t>(start), 128, shifted.begin() + 1);
    b.Accessor("WEIGHTS_0")["bufferView"] = b.AddView(shifted);
    b.Accessor("WEIGHTS_0")["byteOffset"] = 1;
    const CharacterFile odd = b.Read();
    EXPECT_EQ(odd.meshes[0].influences.weights, plain.meshes[0].influences.weights);
    EXPECT_THAT(odd.warnings,
                ElementsAre("/accessors/2: 1 accessor does not begin at a multiple of the size of their numbers"));
}

TEST(Accessor, UnknownTypesAreNamed)
{
    GltfBuilder b = MakeValidCharacter();
    b.Accessor("WEIGHTS_0")["componentType"] = 5124;
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("componentType is 5124"));
    b = MakeValidCharacter();
    b.Accessor("WEIGHTS_0")["type"] = "VEC5";
    EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("type is \"VEC5\", which is unknown"));
}

} // namespace
} // namespace skindesk::test
