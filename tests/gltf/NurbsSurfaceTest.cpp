// SPDX-License-Identifier: MIT
// NURBS surfaces beside the primitive that shows them to other programs.
#include "GltfBuilder.h"
#include "gltf/NurbsStandIn.h"
#include "support/GltfCompare.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <numeric>

namespace skindesk::test {
namespace {

using gltf::CharacterEdits;
using gltf::CharacterFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

// A surface of degree 2 by 1 with 3 by 2 control points, shown by a grid of 3 by 2 vertices; control point i is at
// (i % 3, i / 3, 0) and hangs on joint 0 alone, as the grid does.
GltfBuilder MakeSurface()
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<double> points;
    std::vector<double> weights;
    for (int i = 0; i < 6; ++i) {
        points.insert(points.end(), {double(i % 3), double(i / 3), 0});
        weights.insert(weights.end(), {1, 0, 0, 0});
    }
    const auto attributes = [&] {
        return Json{{"POSITION", b.AddAccessor("VEC3", 5126, points)},
                    {"JOINTS_0", b.AddAccessor("VEC4", 5121, std::vector<double>(24, 0))},
                    {"WEIGHTS_0", b.AddAccessor("VEC4", 5126, weights)}};
    };
    b.Primitive()["attributes"] = attributes();
    b.Primitive()["indices"] = b.AddAccessor("SCALAR", 5121, {0, 1, 3, 1, 4, 3, 1, 2, 4, 2, 5, 4});
    b.json["extensionsUsed"] = {"TW_nurbs_surface"};
    b.json["meshes"][0]["extensions"]["TW_nurbs_surface"] = {{"degree", {2, 1}},
                                                             {"count", {3, 2}},
                                                             {"knots", {{0, 0, 0, 1, 1, 1}, {0, 0, 1, 1}}},
                                                             {"grid", {3, 2}},
                                                             {"attributes", attributes()}};
    return b;
}

Json& Extension(GltfBuilder& b) { return b.json["meshes"][0]["extensions"]["TW_nurbs_surface"]; }

TEST(NurbsSurface, ItsControlPointsAreTheVertices)
{
    const CharacterFile file = MakeSurface().Read();
    const gltf::Mesh& mesh = file.meshes[0];
    ASSERT_TRUE(mesh.nurbs);
    EXPECT_EQ(mesh.VertexCount(), 6u);
    EXPECT_THAT(mesh.triangles, IsEmpty());
    EXPECT_TRUE(mesh.primitives[0].standIn);
    EXPECT_THAT(mesh.FileVertices(0), IsEmpty());
    EXPECT_THAT(mesh.nurbs->pointWeights, testing::Each(1.0));
    EXPECT_THAT(mesh.nurbs->knots[1], ElementsAre(0, 0, 1, 1));
    EXPECT_THAT(file.warnings, IsEmpty());
}

TEST(NurbsSurface, ControlPointsAtOnePlaceAreNeverJoined)
{
    GltfBuilder b = MakeSurface();
    Extension(b)["attributes"]["POSITION"] = b.AddAccessor("VEC3", 5126, std::vector<double>(18, 0));
    EXPECT_EQ(b.Read().meshes[0].VertexCount(), 6u);
}

TEST(NurbsSurface, WhatDoesNotFitTogetherIsRefusedWithBothNumbers)
{
    const auto refusal = [](const std::function<void(GltfBuilder&)>& spoil) {
        GltfBuilder b = MakeSurface();
        spoil(b);
        return RefusalOf(b.Glb());
    };
    EXPECT_THAT(refusal([](auto& b) {
                    Extension(b)["count"] = {3, 3};
                }),
                HasSubstr("4 numbers stand here, 5 are needed"));
    EXPECT_THAT(refusal([](auto& b) {
                    Extension(b)["degree"] = {3, 1};
                }),
                HasSubstr("degree 3 needs at least 4 control points, there are 3"));
    EXPECT_THAT(refusal([](auto& b) {
                    Extension(b)["degree"] = {0, 1};
                }),
                HasSubstr("degree 0 is not read, 1 to 5 are"));
    EXPECT_THAT(refusal([](auto& b) {
                    Extension(b)["grid"] = {4, 2};
                }),
                HasSubstr("grid is 4 times 2, primitive 0 has 6 vertices"));
    EXPECT_THAT(refusal([](auto& b) { Extension(b)["knots"][1] = {0, 1, 0, 1}; }), HasSubstr("the knots descend"));
    EXPECT_THAT(refusal([](auto& b) { Extension(b)["knots"][1] = {0, 0, 0, 1}; }), HasSubstr("is empty"));
    EXPECT_THAT(refusal([](auto& b) { Extension(b).erase("attributes"); }), HasSubstr("no attributes"));
    EXPECT_THAT(refusal([](auto& b) {
                    Extension(b)["attributes"]["POSITION"] = b.AddAccessor("VEC3", 5126, {0, 0, 0});
                }),
                HasSubstr("1 control point is there, count says 3 times 2"));
    EXPECT_THAT(refusal([](auto& b) {
                    Extension(b)["attributes"]["POINT_WEIGHT"] = b.AddAccessor("SCALAR", 5126, {1, 1, 0, 1, 1, 1});
                }),
                HasSubstr("the weight of control point 2 is not above 0"));
    EXPECT_THAT(refusal([](auto& b) { Extension(b)["count"] = {2147483648.0, 2}; }), HasSubstr("count is 2147483648"));
    EXPECT_THAT(refusal([](auto& b) { b.json["meshes"][0]["primitives"] = Json::array(); }), HasSubstr("no primitive"));
    EXPECT_EQ(refusal([](auto&) {}), "");
}

// A surface of this degree by 1 with the fewest control points.
GltfBuilder MakeSurfaceOfDegree(int degree)
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<double> points;
    std::vector<double> weights;
    for (int i = 0; i < 2 * (degree + 1); ++i) {
        points.insert(points.end(), {double(i % (degree + 1)), double(i / (degree + 1)), 0});
        weights.insert(weights.end(), {1, 0, 0, 0});
    }
    Json knots = Json::array();
    for (int i = 0; i < 2 * (degree + 1); ++i) {
        knots.push_back(i > degree ? 1 : 0);
    }
    b.Primitive()["attributes"] = {{"POSITION", b.AddAccessor("VEC3", 5126, {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0})}};
    b.Primitive()["indices"] = b.AddAccessor("SCALAR", 5121, {0, 1, 3, 0, 3, 2});
    b.json["extensionsUsed"] = {"TW_nurbs_surface"};
    Extension(b) = {{"degree", {degree, 1}},
                    {"count", {degree + 1, 2}},
                    {"knots", {knots, {0, 0, 1, 1}}},
                    {"grid", {2, 2}},
                    {"attributes",
                     {{"POSITION", b.AddAccessor("VEC3", 5126, points)},
                      {"JOINTS_0", b.AddAccessor("VEC4", 5121, std::vector<double>(points.size() / 3 * 4, 0))},
                      {"WEIGHTS_0", b.AddAccessor("VEC4", 5126, weights)}}}};
    return b;
}

TEST(NurbsDegree, OneToFiveAreRead)
{
    for (int degree = 1; degree <= 5; ++degree) {
        const CharacterFile file = MakeSurfaceOfDegree(degree).Read();
        EXPECT_EQ(file.meshes[0].nurbs->degree[0], degree);
        EXPECT_EQ(file.meshes[0].VertexCount(), static_cast<std::size_t>(2 * (degree + 1)));
    }
}

TEST(NurbsDegree, EveryOtherValueIsRefusedInASentence)
{
    for (const int degree : {6, 7, 30}) {
        EXPECT_EQ(RefusalOf(MakeSurfaceOfDegree(degree).Glb()),
                  "tiny.glb: /meshes/0/extensions/TW_nurbs_surface/degree: degree " + std::to_string(degree) +
                      " is not read, 1 to 5 are");
    }
    for (const Json& value : {Json(0), Json(-1), Json(1.5), Json("2"), Json(nullptr), Json(1e300), Json(true),
                              Json::array({1}), Json::object(), Json(4294967297.0)}) {
        for (const std::size_t direction : {0u, 1u}) {
            GltfBuilder b = MakeSurface();
            Extension(b)["degree"][direction] = value;
            EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("/meshes/0/extensions/TW_nurbs_surface/degree")) << value;
        }
    }
    for (const Json& value : {Json(2), Json::array(), Json::array({2}), Json::array({2, 1, 1}), Json("21")}) {
        GltfBuilder b = MakeSurface();
        Extension(b)["degree"] = value;
        EXPECT_THAT(RefusalOf(b.Glb()), HasSubstr("/meshes/0/extensions/TW_nurbs_surface/degree")) << value;
    }
}

TEST(NurbsSurface, AnEditOfAControlPointIsSeenInTheStandInByTheBasis)
{
    const TemporaryFolder folder;
    WriteBytes(folder / "o.glb", MakeSurface().Glb());
    const CharacterFile file = gltf::ReadCharacter(folder / "o.glb");
    CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    SetRow(edits.models[0], 1, {{1, 1.0}}); // the middle of the lower row
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "a.glb"));
    const CharacterFile saved = gltf::ReadCharacter(folder / "a.glb");
    EXPECT_THAT(RowOf(saved.meshes[0].influences, 1), ElementsAre(Pair(1, 1.0)));
    EXPECT_THAT(RowOf(saved.meshes[0].influences, 4), ElementsAre(Pair(0, 1.0)));
    const RawGltf raw = ReadRawGltf(folder / "a.glb");
    const auto& attributes = raw.json["meshes"][0]["primitives"][0]["attributes"];
    const auto weights = DecodeRaw(raw, attributes["WEIGHTS_0"]);
    const auto joints = DecodeRaw(raw, attributes["JOINTS_0"]);
    // At u = 1/2 the middle basis function of degree 2 is 1/2; at the ends and in the upper row it is 0.
    EXPECT_THAT(weights[1], ElementsAre(0.5, 0.5, 0, 0));
    EXPECT_THAT(joints[1], ElementsAre(0, 1, 0, 0));
    for (const std::size_t v : {0u, 2u, 3u, 4u, 5u}) {
        EXPECT_THAT(weights[v], ElementsAre(1, 0, 0, 0)) << v;
    }
    EXPECT_THAT(ForeignChanges(ReadRawGltf(folder / "o.glb"), raw), IsEmpty());
}

TEST(NurbsSurface, PointWeightsPullTheStandIn)
{
    GltfBuilder b = MakeSurface();
    Extension(b)["attributes"]["POINT_WEIGHT"] = b.AddAccessor("SCALAR", 5126, {1, 3, 1, 1, 1, 1});
    const CharacterFile file = b.Read();
    CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    SetRow(edits.models[0], 1, {{1, 1.0}});
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "a.glb"));
    const RawGltf raw = ReadRawGltf(folder / "a.glb");
    const auto weights = DecodeRaw(raw, raw.json["meshes"][0]["primitives"][0]["attributes"]["WEIGHTS_0"]);
    EXPECT_THAT(weights[1], ElementsAre(Near(0.75), Near(0.25), 0, 0)); // 3/2 of 3/2 + 1/2
}

TEST(NurbsSurface, TheStandInKeepsTheFourLargestOfEachVertex)
{
    GltfBuilder b = MakeSurface();
    for (int joint = 3; joint < 9; ++joint) {
        b.json["nodes"].push_back(Json::object());
        b.json["skins"][0]["joints"].push_back(joint);
    }
    b.json["skins"][0].erase("inverseBindMatrices");
    const CharacterFile file = b.Read();
    CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    SetRow(edits.models[0], 0, {{0, 0.3}, {1, 0.25}, {2, 0.2}, {3, 0.1}, {4, 0.1}, {5, 0.05}});
    const TemporaryFolder folder;
    static_cast<void>(gltf::WriteCharacter(file, edits, {}, folder / "a.glb"));
    const RawGltf raw = ReadRawGltf(folder / "a.glb");
    const auto& attributes = raw.json["meshes"][0]["primitives"][0]["attributes"];
    EXPECT_FALSE(attributes.contains("WEIGHTS_1"));
    const double whole = 0.3 + 0.25 + 0.2 + 0.1;
    EXPECT_THAT(DecodeRaw(raw, attributes["WEIGHTS_0"])[0],
                ElementsAre(Near(0.3 / whole), Near(0.25 / whole), Near(0.2 / whole), Near(0.1 / whole)));
    EXPECT_EQ(RowOf(gltf::ReadCharacter(folder / "a.glb").meshes[0].influences, 0).size(), 6u);
}

class ClosedSurface : public testing::Test
{
protected:
    ClosedSurface()
    {
        GltfBuilder b = MakeSurface();
        Extension(b)["attributes"]["POSITION"] =
            b.AddAccessor("VEC3", 5126, {0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1, 0, 1, 1, 0, 0, 1, 0}); // first = last column
        m_file = b.Read();
        m_edits = {{WeightsOf(m_file, 0)}, {}};
        SetRow(m_edits.models[0], 0, {{1, 1.0}});
    }

    CharacterFile m_file;
    CharacterEdits m_edits;
    TemporaryFolder m_folder;
};

TEST_F(ClosedSurface, UnequalWeightsAtTheSeamAreReported)
{
    const gltf::SaveReport report = gltf::WriteCharacter(m_file, m_edits, {}, m_folder / "a.glb");
    EXPECT_THAT(report.warnings,
                ElementsAre(HasSubstr("1 control point lies at the place of another with other weights")));
    EXPECT_THAT(RowOf(gltf::ReadCharacter(m_folder / "a.glb").meshes[0].influences, 2), ElementsAre(Pair(0, 1.0)));
}

TEST_F(ClosedSurface, TyingGivesTheLaterOneTheEarlierOnesWeights)
{
    gltf::SaveOptions options;
    options.tieSeams = true;
    const gltf::SaveReport report = gltf::WriteCharacter(m_file, m_edits, options, m_folder / "a.glb");
    EXPECT_EQ(report.verticesChanged, 2u);
    EXPECT_THAT(RowOf(gltf::ReadCharacter(m_folder / "a.glb").meshes[0].influences, 2), ElementsAre(Pair(1, 1.0)));
    EXPECT_THAT(RowOf(gltf::ReadCharacter(m_folder / "a.glb").meshes[0].influences, 5), ElementsAre(Pair(0, 1.0)));
}

TEST_F(ClosedSurface, EqualWeightsAtTheSeamAreNoReasonForAWarning)
{
    SetRow(m_edits.models[0], 2, {{1, 1.0}});
    EXPECT_THAT(gltf::WriteCharacter(m_file, m_edits, {}, m_folder / "a.glb").warnings, IsEmpty());
}

TEST_F(ClosedSurface, UnequalWeightsOfTheFileItselfAreReportedAndStayUnlessTied)
{
    static_cast<void>(gltf::WriteCharacter(m_file, m_edits, {}, m_folder / "a.glb"));
    const CharacterFile opened = gltf::ReadCharacter(m_folder / "a.glb");
    const gltf::SaveReport untouched = gltf::WriteCharacter(opened, {}, {}, m_folder / "b.glb");
    EXPECT_THAT(untouched.warnings, ElementsAre(HasSubstr("1 control point lies at the place of another")));
    EXPECT_EQ(ReadBytes(m_folder / "a.glb"), ReadBytes(m_folder / "b.glb"));
    gltf::SaveOptions options;
    options.tieSeams = true;
    const gltf::SaveReport tied = gltf::WriteCharacter(opened, {}, options, m_folder / "c.glb");
    EXPECT_EQ(tied.verticesChanged, 1u);
    EXPECT_THAT(tied.warnings, ElementsAre(HasSubstr("the weights of the first were taken")));
    const CharacterFile read = gltf::ReadCharacter(m_folder / "c.glb");
    EXPECT_EQ(RowOf(read.meshes[0].influences, 2), RowOf(read.meshes[0].influences, 0));
}

TEST_F(ClosedSurface, TheStandInFollowsTheTiedPoints)
{
    gltf::SaveOptions options;
    options.tieSeams = true;
    static_cast<void>(gltf::WriteCharacter(m_file, m_edits, options, m_folder / "a.glb"));
    const RawGltf raw = ReadRawGltf(m_folder / "a.glb");
    const auto& attributes = raw.json["meshes"][0]["primitives"][0]["attributes"];
    // Both ends of the lower row show the point's one joint.
    EXPECT_EQ(DecodeRaw(raw, attributes["JOINTS_0"])[2][0], 1);
    EXPECT_EQ(DecodeRaw(raw, attributes["JOINTS_0"])[0][0], 1);
    EXPECT_EQ(DecodeRaw(raw, attributes["WEIGHTS_0"])[2][0], 1);
}

// A surface of degree 2 that is periodic in U: its last two columns lie where its first two do, without full knots.
TEST(PeriodicSurface, EachRepeatedPointIsTiedToTheFirstAtItsPlace)
{
    GltfBuilder b = MakeSurface();
    std::vector<double> points;
    std::vector<double> weights;
    for (int v = 0; v < 2; ++v) {
        for (int u = 0; u < 5; ++u) {
            points.insert(points.end(), {double(u % 3), double(v), double(u % 3 == 1)});
            weights.insert(weights.end(), {1, 0, 0, 0});
        }
    }
    Extension(b)["count"] = {5, 2};
    Extension(b)["knots"][0] = {0, 1, 2, 3, 4, 5, 6, 7};
    Extension(b)["attributes"] = {{"POSITION", b.AddAccessor("VEC3", 5126, points)},
                                  {"JOINTS_0", b.AddAccessor("VEC4", 5121, std::vector<double>(40, 0))},
                                  {"WEIGHTS_0", b.AddAccessor("VEC4", 5126, weights)}};
    const CharacterFile file = b.Read();
    CharacterEdits edits{{WeightsOf(file, 0)}, {}};
    SetRow(edits.models[0], 1, {{0, 0.5}, {1, 0.5}});
    SetRow(edits.models[0], 8, {{1, 1.0}}); // a later one alone: the first at its place has the say
    const TemporaryFolder folder;
    EXPECT_THAT(gltf::WriteCharacter(file, edits, {}, folder / "a.glb").warnings,
                ElementsAre(HasSubstr("2 control points lie at the place of another")));
    gltf::SaveOptions options;
    options.tieSeams = true;
    static_cast<void>(gltf::WriteCharacter(file, edits, options, folder / "b.glb"));
    const CharacterFile read = gltf::ReadCharacter(folder / "b.glb");
    EXPECT_THAT(RowOf(read.meshes[0].influences, 4), ElementsAre(Pair(0, 0.5), Pair(1, 0.5)));
    EXPECT_THAT(RowOf(read.meshes[0].influences, 8), ElementsAre(Pair(0, 1.0)));
}

RC_GTEST_PROP(NurbsBasis, IsNowhereNegativeAndAddsUpToOne, ())
{
    const int degree = *rc::gen::inRange(1, 5);
    const int count = degree + 1 + *rc::gen::inRange(0, 6);
    std::vector<double> knots(static_cast<std::size_t>(count + degree + 1));
    for (std::size_t i = 1; i < knots.size(); ++i) {
        // One step inside the domain is never empty, so there is a domain.
        knots[i] = knots[i - 1] + *rc::gen::inRange(i == static_cast<std::size_t>(degree) + 1 ? 1 : 0, 3);
    }
    const double from = knots[static_cast<std::size_t>(degree)];
    const double to = knots[static_cast<std::size_t>(count)];
    const double u = from + (to - from) * *rc::gen::inRange(0, 101) / 100.0;
    const gltf::BasisSpan basis = gltf::BasisAt(knots, degree, count, u);
    RC_ASSERT(basis.first >= 0 && basis.first + degree < count);
    for (const double value : basis.values) {
        RC_ASSERT(value > -1e-12);
    }
    RC_ASSERT(std::abs(std::accumulate(basis.values.begin(), basis.values.end(), 0.0) - 1) < 1e-12);
}

} // namespace
} // namespace skindesk::test
