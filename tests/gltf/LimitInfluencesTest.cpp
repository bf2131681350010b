// SPDX-License-Identifier: MIT
// Fewer influences on saving, and rounding that keeps sums exact.
#include "GltfBuilder.h"
#include "gltf/WeightRows.h"
#include "support/GltfCompare.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <numeric>

namespace skindesk::test {
namespace {

using gltf::CharacterEdits;
using gltf::CharacterFile;
using gltf::Influence;
using gltf::SaveOptions;
using gltf::SaveReport;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

// Eight vertices; the first has six influences of 0.3, 0.25, 0.2, 0.1, 0.1, 0.05 in two sets, the rest joint 0 only,
// vertex 7 in the second set.
GltfBuilder TwoSets()
{
    GltfBuilder b = MakeValidCharacter();
    for (int joint = 3; joint < 8; ++joint) {
        b.json["nodes"].push_back({{"name", "extra"}});
        b.json["skins"][0]["joints"].push_back(joint);
    }
    b.json["skins"][0].erase("inverseBindMatrices");
    std::vector<double> joints(32, 0);
    std::vector<double> weights(32, 0);
    std::vector<double> moreJoints(32, 0);
    std::vector<double> moreWeights(32, 0);
    for (std::size_t k = 0; k < 4; ++k) {
        joints[k] = static_cast<double>(k);
        weights[k] = std::array{0.3, 0.25, 0.2, 0.1}[k];
        moreJoints[k] = static_cast<double>(k < 2 ? 4 + k : 0);
        moreWeights[k] = std::array{0.1, 0.05, 0.0, 0.0}[k];
    }
    for (std::size_t v = 1; v < 7; ++v) {
        weights[4 * v] = 1;
    }
    moreWeights[28] = 1;
    b.Primitive()["attributes"]["JOINTS_0"] = b.AddAccessor("VEC4", 5121, joints);
    b.Primitive()["attributes"]["WEIGHTS_0"] = b.AddAccessor("VEC4", 5126, weights);
    b.Primitive()["attributes"]["JOINTS_1"] = b.AddAccessor("VEC4", 5121, moreJoints);
    b.Primitive()["attributes"]["WEIGHTS_1"] = b.AddAccessor("VEC4", 5126, moreWeights);
    return b;
}

SaveOptions AtMost(int influences)
{
    SaveOptions options;
    options.maxInfluences = influences;
    return options;
}

TEST(LimitInfluences, KeepsTheLargestRenormalisesAndCountsWhatWasLost)
{
    const CharacterFile file = TwoSets().Read();
    const TemporaryFolder folder;
    const SaveReport report = gltf::WriteCharacter(file, {}, AtMost(3), folder / "a.glb");
    EXPECT_EQ(report.verticesLimited, 1u);
    EXPECT_NEAR(report.weightDropped, 0.25, 1e-6);
    EXPECT_EQ(report.verticesChanged, 0u);
    const CharacterFile saved = gltf::ReadCharacter(folder / "a.glb");
    EXPECT_THAT(RowOf(saved.meshes[0].influences, 0),
                ElementsAre(Pair(0, Near(0.4)), Pair(1, Near(0.25 / 0.75)), Pair(2, Near(0.2 / 0.75))));
}

TEST(LimitInfluences, RemovesSetsThatAreNoLongerNeededWithoutLosingWeightInThem)
{
    const CharacterFile file = TwoSets().Read();
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, {}, AtMost(4), folder / "a.glb"));
    const RawGltf raw = ReadRawGltf(folder / "a.glb");
    const auto& attributes = raw.json["meshes"][0]["primitives"][0]["attributes"];
    EXPECT_FALSE(attributes.contains("JOINTS_1"));
    EXPECT_FALSE(attributes.contains("WEIGHTS_1"));
    const CharacterFile saved = gltf::ReadCharacter(folder / "a.glb");
    EXPECT_THAT(RowOf(saved.meshes[0].influences, 7), ElementsAre(Pair(0, 1.0)));
    WriteBytes(folder / "o.glb", TwoSets().Glb());
    EXPECT_THAT(ForeignChanges(ReadRawGltf(folder / "o.glb"), raw), IsEmpty());
}

TEST(LimitInfluences, AsManyAsThereAreChangeNothing)
{
    const std::vector<std::uint8_t> bytes = TwoSets().Glb();
    const CharacterFile file = gltf::ReadCharacter(bytes, "a.glb");
    const TemporaryFolder folder;
    const SaveReport report = gltf::WriteCharacter(file, {}, AtMost(6), folder / "a.glb");
    EXPECT_EQ(report.verticesLimited, 0u);
    EXPECT_EQ(ReadBytes(folder / "a.glb"), bytes);
}

TEST(LimitInfluences, AppliesToModelsThatNobodyEdited)
{
    GltfBuilder b = TwoSets();
    b.json["meshes"].push_back(b.json["meshes"][0]);
    b.json["nodes"].push_back({{"mesh", 1}, {"skin", 0}});
    const CharacterFile file = b.Read();
    CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    SetRow(edits.models[0], 1, {{1, 1.0}});
    const TemporaryFolder folder;
    const SaveReport report = gltf::WriteCharacter(file, edits, AtMost(2), folder / "a.glb");
    EXPECT_EQ(report.verticesLimited, 2u);
    const CharacterFile saved = gltf::ReadCharacter(folder / "a.glb");
    EXPECT_EQ(RowOf(saved.meshes[1].influences, 0).size(), 2u);
    EXPECT_THAT(RowOf(saved.meshes[1].influences, 1), ElementsAre(Pair(0, 1.0)));
    EXPECT_THAT(RowOf(saved.meshes[0].influences, 1), ElementsAre(Pair(1, 1.0)));
}

TEST(LimitInfluences, TheReportNamesEachJointWithItsVerticesAndWeight)
{
    const CharacterFile file = TwoSets().Read();
    const std::vector<gltf::LimitLine> lines = gltf::LimitReport(file, {}, 3);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].joint, 3u);
    EXPECT_EQ(lines[1].joint, 4u);
    EXPECT_EQ(lines[2].joint, 5u);
    EXPECT_EQ(lines[0].node, 0);
    EXPECT_EQ(lines[0].vertices, 1u);
    EXPECT_NEAR(lines[0].weight, 0.1, 1e-7);
    EXPECT_NEAR(lines[2].weight, 0.05, 1e-7);
    EXPECT_THAT(gltf::LimitReport(file, {}, 6), IsEmpty());
}

TEST(LimitInfluences, LessThanOneIsTheCallersMistake)
{
    const CharacterFile file = TwoSets().Read();
    EXPECT_THROW(static_cast<void>(gltf::LimitReport(file, {}, 0)), std::invalid_argument);
    const TemporaryFolder folder;
    EXPECT_THROW(static_cast<void>(gltf::WriteCharacter(file, {}, AtMost(0), folder / "a.glb")), std::invalid_argument);
}

// Random shares of a whole, largest first.
rc::Gen<std::vector<Influence>> Shares()
{
    return rc::gen::map(rc::gen::nonEmpty(rc::gen::container<std::vector<std::pair<int, int>>>(
                            rc::gen::pair(rc::gen::inRange(1, 100000), rc::gen::inRange(0, 4)))),
                        [](const std::vector<std::pair<int, int>>& parts) {
                            std::vector<Influence> row;
                            double sum = 0;
                            for (const auto& [part, tininess] : parts) {
                                const double weight = part * std::pow(1e-4, tininess);
                                row.push_back({static_cast<std::uint32_t>(row.size()), weight});
                                sum += weight;
                            }
                            for (Influence& i : row) {
                                i.weight /= sum;
                            }
                            std::sort(row.begin(), row.end(),
                                      [](const Influence& a, const Influence& b) { return a.weight > b.weight; });
                            return row;
                        });
}

// The last weight takes what is left over. Only when it is a leftover of rounding itself, about 1e-6, can its own
// rounding show: half of its last place, below 1e-13.
constexpr double LEFTOVER_OF_LEFTOVER = 1e-13;

RC_GTEST_PROP(RoundWeights, FloatsOfAWholeAddUpToOne, ())
{
    const std::vector<Influence> row = *Shares();
    std::vector<float> floats;
    gltf::RoundToFloats(row, floats);
    RC_ASSERT(std::abs(std::accumulate(floats.begin(), floats.end(), 0.0) - 1.0) <= LEFTOVER_OF_LEFTOVER);
    for (std::size_t i = 0; i < row.size(); ++i) {
        RC_ASSERT(floats[i] >= 0);
        RC_ASSERT(std::abs(floats[i] - row[i].weight) <= gltf::WEIGHT_TOLERANCE);
    }
}

RC_GTEST_PROP(RoundWeights, UnitsOfAWholeAddUpToExactlyOne, ())
{
    const std::vector<Influence> row = *Shares();
    for (const std::uint32_t one : {255u, 65535u}) {
        std::vector<std::uint32_t> units;
        gltf::RoundToUnits(row, one, units);
        RC_ASSERT(std::accumulate(units.begin(), units.end(), 0u) == one);
        for (std::size_t i = 0; i < row.size(); ++i) {
            RC_ASSERT(std::abs(units[i] - row[i].weight * one) < 1 + 1e-6);
        }
    }
}

TEST(RoundWeights, WhatIsNotAWholeIsRoundedAsItIs)
{
    std::vector<float> floats;
    gltf::RoundToFloats(std::vector<Influence>{{0, 0.5}, {1, 0.25}}, floats);
    EXPECT_THAT(floats, ElementsAre(0.5F, 0.25F));
    gltf::RoundToFloats(std::vector<Influence>{{0, 1.5}, {1, -0.5}}, floats);
    EXPECT_THAT(floats, ElementsAre(1.5F, -0.5F));
    std::vector<std::uint32_t> units;
    gltf::RoundToUnits(std::vector<Influence>{{0, 0.5}, {1, 0.25}}, 255, units);
    EXPECT_EQ(units[0] + units[1], 191u);
    gltf::RoundToUnits(std::vector<Influence>{{0, 7.0}, {1, -3.0}, {2, NAN}}, 255, units);
    EXPECT_THAT(units, ElementsAre(255u, 0u, 0u));
    gltf::RoundToUnits({}, 255, units);
    EXPECT_THAT(units, IsEmpty());
    gltf::RoundToFloats({}, floats);
    EXPECT_THAT(floats, IsEmpty());
}

} // namespace
} // namespace skindesk::test
