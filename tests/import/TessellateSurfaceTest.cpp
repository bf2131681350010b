// SPDX-License-Identifier: MIT
// The polygon mesh that stands for a surface lies on it, faces its way and follows its bones.
#include "import/TessellateSurface.h"
#include "import/NewCharacter.h"
#include "support/GltfCompare.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <unistd.h>

namespace skindesk::test {
namespace {

using imports::NewCharacter;
using imports::NewNurbsSurface;
using testing::ElementsAre;
using testing::HasSubstr;

// A quarter of a cylinder of radius 1 around Z, two long: exact with rational control points.
imports::NewMesh QuarterCylinder()
{
    imports::NewMesh mesh;
    mesh.name = "Pipe";
    mesh.positions = {1, 0, 0, 1, 1, 0, 0, 1, 0, 1, 0, 2, 1, 1, 2, 0, 1, 2};
    const double middle = std::sqrt(0.5);
    mesh.nurbs =
        NewNurbsSurface{{2, 1}, {3, 2}, {{{0, 0, 0, 1, 1, 1}, {0, 0, 1, 1}}}, {1, middle, 1, 1, middle, 1}, {}, -1};
    return mesh;
}

NewCharacter CharacterOf(imports::NewMesh mesh)
{
    NewCharacter character;
    character.nodes.resize(3);
    character.nodes[0].mesh = 0;
    character.nodes[0].skin = 0;
    character.nodes[2].parent = 1;
    character.meshes.push_back(std::move(mesh));
    character.skins = {{"", {1, 2}, {}}};
    return character;
}

TEST(Tessellation, LiesOnACylinderWithNormalsThatPointOutwards)
{
    const imports::NewMesh mesh = QuarterCylinder();
    const imports::Tessellation shape = imports::Tessellate(*mesh.nurbs, mesh.positions, {9, 5});
    ASSERT_EQ(shape.positions.size(), 9U * 5 * 3);
    for (std::size_t i = 0; i < shape.positions.size(); i += 3) {
        EXPECT_NEAR(std::hypot(shape.positions[i], shape.positions[i + 1]), 1, 1e-6);
        EXPECT_NEAR(shape.normals[i], shape.positions[i], 1e-6);
        EXPECT_NEAR(shape.normals[i + 1], shape.positions[i + 1], 1e-6);
        EXPECT_NEAR(shape.normals[i + 2], 0, 1e-6);
    }
    EXPECT_EQ(shape.positions[shape.positions.size() - 1], 2);
}

TEST(Tessellation, TrianglesFaceTheWayOfTheNormals)
{
    const imports::NewMesh mesh = QuarterCylinder();
    const imports::Tessellation shape = imports::Tessellate(*mesh.nurbs, mesh.positions, {5, 3});
    ASSERT_EQ(shape.corners.size(), 4U * 2 * 6);
    for (std::size_t t = 0; t < shape.corners.size(); t += 3) {
        const float* a = &shape.positions[shape.corners[t] * 3];
        const float* b = &shape.positions[shape.corners[t + 1] * 3];
        const float* c = &shape.positions[shape.corners[t + 2] * 3];
        const float x = (b[1] - a[1]) * (c[2] - a[2]) - (b[2] - a[2]) * (c[1] - a[1]);
        const float y = (b[2] - a[2]) * (c[0] - a[0]) - (b[0] - a[0]) * (c[2] - a[2]);
        EXPECT_GT(x * a[0] + y * a[1], 0);
    }
}

TEST(Tessellation, APoleHasTheNormalOfItsNeighbourhood)
{
    imports::NewMesh mesh = QuarterCylinder();
    for (std::size_t i = 9; i < 18; i += 3) { // the upper row becomes one point on the axis: a cone
        mesh.positions[i] = mesh.positions[i + 1] = 0;
    }
    const imports::Tessellation shape = imports::Tessellate(*mesh.nurbs, mesh.positions, {3, 2});
    const double slope = 2 / std::sqrt(5.0); // of a cone that is 2 high and 1 wide
    EXPECT_NEAR(shape.normals[9], slope, 1e-3);
    EXPECT_NEAR(shape.normals[9 + 2], slope / 2, 1e-3);
}

TEST(Tessellation, ASurfaceThatIsOnePointHasNormalsOfUnitLength)
{
    imports::NewMesh mesh = QuarterCylinder();
    std::fill(mesh.positions.begin(), mesh.positions.end(), 3.0F);
    const imports::Tessellation shape = imports::Tessellate(*mesh.nurbs, mesh.positions, {3, 2});
    EXPECT_THAT(std::vector<float>(shape.normals.begin(), shape.normals.begin() + 3), ElementsAre(0, 0, 1));
}

TEST(Tessellation, IsFinerWhereTheSurfaceHasMoreSpansAndCoarserWhereThereAreMany)
{
    const imports::NewMesh mesh = QuarterCylinder();
    EXPECT_THAT(imports::ChooseGrids({&*mesh.nurbs}), ElementsAre(ElementsAre(9, 9)));
    NewNurbsSurface wide = *mesh.nurbs;
    wide.count[1] = 1001;
    wide.knots[1] = {0};
    for (int i = 0; i <= 1000; ++i) {
        wide.knots[1].push_back(i);
    }
    wide.knots[1].push_back(1000);
    EXPECT_THAT(imports::ChooseGrids({&wide}), ElementsAre(ElementsAre(9, 8001)));
    const std::vector<const NewNurbsSurface*> many(100, &wide);
    EXPECT_THAT(imports::ChooseGrids(many).front(), ElementsAre(3, 2001));
    NewNurbsSurface asked = *mesh.nurbs;
    asked.grid = {4, 7};
    EXPECT_THAT(imports::ChooseGrids({&asked}), ElementsAre(ElementsAre(4, 7)));
}

TEST(NewSurface, IsReadBackWithItsPointsAndAStandInThatFollowsTheBones)
{
    imports::NewMesh mesh = QuarterCylinder();
    mesh.influenceOffsets = {0, 1, 2, 3, 4, 5, 6};
    mesh.influenceJoints = {0, 0, 0, 1, 1, 1}; // the upper row hangs on the upper bone
    mesh.influenceWeights = {1, 1, 1, 1, 1, 1};
    mesh.nurbs->grid = {3, 5};
    NewCharacter character = CharacterOf(mesh);
    const std::vector<std::uint8_t> bytes = imports::WriteGlb(character, "pipe.obj");
    const gltf::CharacterFile file = gltf::ReadCharacter(bytes, "pipe.glb");
    EXPECT_THAT(file.warnings, testing::IsEmpty());
    ASSERT_TRUE(file.meshes[0].nurbs);
    EXPECT_THAT(file.meshes[0].nurbs->degree, ElementsAre(2, 1));
    EXPECT_THAT(file.meshes[0].nurbs->grid, ElementsAre(3, 5));
    EXPECT_EQ(file.meshes[0].positions, mesh.positions);
    EXPECT_EQ(static_cast<float>(file.meshes[0].nurbs->pointWeights[1]), static_cast<float>(std::sqrt(0.5)));
    EXPECT_EQ(file.meshes[0].influences.joints, mesh.influenceJoints);

    const std::string path = testing::TempDir() + "skindesk-surface-" + std::to_string(::getpid()) + ".glb";
    WriteBytes(path, bytes);
    const RawGltf raw = ReadRawGltf(path);
    EXPECT_THAT(raw.json["extensionsUsed"], ElementsAre("TW_nurbs_surface"));
    EXPECT_FALSE(raw.json.contains("extensionsRequired"));
    const auto& attributes = raw.json["meshes"][0]["primitives"][0]["attributes"];
    const auto weights = DecodeRaw(raw, attributes["WEIGHTS_0"]);
    const auto joints = DecodeRaw(raw, attributes["JOINTS_0"]);
    ASSERT_EQ(weights.size(), 15U);
    EXPECT_THAT(weights[0], ElementsAre(1, 0, 0, 0));       // below
    EXPECT_THAT(weights[3], ElementsAre(0.75, 0.25, 0, 0)); // a quarter of the way up
    EXPECT_THAT(joints[3], ElementsAre(0, 1, 0, 0));
    EXPECT_THAT(joints[12], ElementsAre(1, 0, 0, 0)); // above
    ::unlink(path.c_str());
}

TEST(NewSurface, WhatDoesNotFitTogetherIsRefused)
{
    const auto refusal = [](auto spoil) -> std::string {
        imports::NewMesh mesh = QuarterCylinder();
        spoil(mesh);
        NewCharacter character = CharacterOf(mesh);
        try {
            static_cast<void>(imports::WriteGlb(character, "pipe.obj"));
        } catch (const gltf::FileError& error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(refusal([](auto&) {}), "");
    EXPECT_EQ(refusal([](auto& m) {
                  m.nurbs->degree = {0, 1};
              }),
              "pipe.obj: mesh \"Pipe\": degree 0 is not read, 1 to 5 are");
    EXPECT_THAT(refusal([](auto& m) { m.nurbs->degree = {2, 6}; }), HasSubstr("degree 6 is not read"));
    EXPECT_THAT(refusal([](auto& m) { m.nurbs->count = {2, 3}; }), HasSubstr("needs at least 3 control points"));
    EXPECT_THAT(refusal([](auto& m) { m.nurbs->knots[1].push_back(2); }), HasSubstr("there are 5 knots in V"));
    EXPECT_THAT(refusal([](auto& m) { m.nurbs->knots[0][3] = -1; }), HasSubstr("the knots in U descend"));
    EXPECT_THAT(refusal([](auto& m) { m.nurbs->knots[1] = {0, 0, 0, 0}; }), HasSubstr("leave no surface"));
    EXPECT_THAT(refusal([](auto& m) { m.positions.resize(15); }), HasSubstr("there are 5 control points, 3 times 2"));
    EXPECT_THAT(refusal([](auto& m) { m.nurbs->pointWeights[3] = 0; }), HasSubstr("is not above 0"));
    EXPECT_THAT(refusal([](auto& m) { m.nurbs->grid = {1, 5}; }), HasSubstr("one row"));
    EXPECT_THAT(refusal([](auto& m) { m.nurbs->grid = {0, 5}; }), HasSubstr("one direction only"));
    EXPECT_THAT(refusal([](auto& m) {
                    m.nurbs->pointWeights = {1e-30, 3e38, 1, 1, 3e38, 1};
                    m.positions.assign(18, 3e38F);
                    m.positions[0] = -3e38F;
                    m.nurbs->knots[0] = {-1e308, -1e308, -1e308, 1e308, 1e308, 1e308};
                }),
                HasSubstr("farther away than a number can say"));
}

// What is linear stays linear: a surface whose control points lie at the averages of their knots (Greville's places) is
// its own parameters, whatever the degree and the knots.
RC_GTEST_PROP(TessellationProperty, GrevillePointsGiveTheParameters, ())
{
    NewNurbsSurface surface;
    for (std::size_t d = 0; d < 2; ++d) {
        const int degree = *rc::gen::inRange(1, 6);
        const int count = degree + 1 + *rc::gen::inRange(0, 5);
        surface.degree[d] = degree;
        surface.count[d] = count;
        std::vector<double>& knots = surface.knots[d];
        knots.assign(static_cast<std::size_t>(count + degree + 1), 0);
        for (std::size_t i = 1; i < knots.size(); ++i) {
            knots[i] = knots[i - 1] + *rc::gen::inRange(1, 4); // simple knots: no place where the surface may break
        }
    }
    std::vector<float> points;
    const auto greville = [&](std::size_t d, int i) {
        double sum = 0;
        for (int k = 1; k <= surface.degree[d]; ++k) {
            sum += surface.knots[d][static_cast<std::size_t>(i + k)];
        }
        return static_cast<float>(sum / surface.degree[d]);
    };
    for (int j = 0; j < surface.count[1]; ++j) {
        for (int i = 0; i < surface.count[0]; ++i) {
            points.insert(points.end(), {greville(0, i), greville(1, j), 0});
        }
    }
    const imports::Tessellation shape = imports::Tessellate(surface, points, {6, 4});
    for (std::size_t v = 0; v < 24; ++v) {
        for (std::size_t d = 0; d < 2; ++d) {
            const double from = surface.knots[d][static_cast<std::size_t>(surface.degree[d])];
            const double to = surface.knots[d][static_cast<std::size_t>(surface.count[d])];
            const double part = d == 0 ? static_cast<double>(v % 6) / 5 : static_cast<double>(v / 6) / 3;
            RC_ASSERT(std::abs(shape.positions[3 * v + d] - (from + (to - from) * part)) < 1e-4);
        }
        RC_ASSERT(shape.normals[3 * v + 2] > 0.9999F);
    }
}

} // namespace
} // namespace skindesk::test
