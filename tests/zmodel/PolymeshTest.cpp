// SPDX-License-Identifier: MIT
// Polygon lists and the normals of polygon meshes.
#include "TinyModels.h"

#include <cmath>

namespace {

/// A unit square in the XY plane and a triangle that stands on its edge at x = 1.
struct Corner
{
    std::vector<float> positions{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 1, 0, 2};
    std::vector<int> polygons{0, 1, 2, 3, 1, 4, 2};
    std::vector<int> sizes{4, 3};
};

class Polymesh : public ReportTest
{
protected:
    ZModelPolymesh mesh{"mesh"};
    bool Set(const Corner& corner)
    {
        return mesh.SetGeometry(corner.positions.data(), static_cast<int>(corner.positions.size() / 3), corner.polygons,
                                corner.sizes);
    }
    static void ExpectUnit(const float* normals, int count)
    {
        for (int i = 0; i < count; ++i) {
            const float* const n = normals + 4 * static_cast<size_t>(i);
            EXPECT_NEAR(n[0] * n[0] + n[1] * n[1] + n[2] * n[2], 1, 1e-6);
            EXPECT_EQ(n[3], 0.0F);
        }
    }
};

TEST_F(Polymesh, TheLastIndexOfAPolygonIsItsComplement)
{
    ASSERT_TRUE(Set(Corner()));
    EXPECT_THAT(mesh.GetPolygonIndices(), testing::ElementsAre(0, 1, 2, ~3, 1, 4, ~2));
    EXPECT_EQ(mesh.PolygonCount(), 2);
    EXPECT_EQ(mesh.PolygonIndices(0)[3], -4);
    EXPECT_EQ(mesh.PolygonIndices(1), mesh.PolygonIndices(0));
}

TEST_F(Polymesh, VerticesAndPolygonsThatDoNotFitAreRefusedWhole)
{
    ASSERT_TRUE(Set(Corner()));
    const std::vector<std::vector<int>> polygons{{0, 1, 5}, {0, 1, -1}, {0, 1, 2, 3}, {0, 1}, {0, 1, 2}};
    const std::vector<std::vector<int>> sizes{{3}, {3}, {3}, {3}, {3, 0}};
    for (size_t i = 0; i < polygons.size(); ++i) {
        Corner wrong;
        wrong.polygons = polygons[i];
        wrong.sizes = sizes[i];
        EXPECT_FALSE(Set(wrong)) << "case " << i;
    }
    EXPECT_FALSE(mesh.SetGeometry(nullptr, -1, {}, {}));
    EXPECT_EQ(mesh.PolygonCount(), 2);
    EXPECT_EQ(mesh.VertexCount(), 5);
}

TEST_F(Polymesh, PositionsAreFourFloatsAVertex)
{
    ASSERT_TRUE(Set(Corner()));
    const float* const positions = mesh.VertexPositions(0);
    EXPECT_EQ(positions[4 * 4 + 2], 2.0F);
    EXPECT_EQ(positions[4 * 4 + 3], 1.0F);
    EXPECT_EQ(mesh.VertexPositions(1)[4 * 4 + 2], 2.0F);
}

TEST_F(Polymesh, AnEmptyMeshHasNoArrays)
{
    EXPECT_EQ(mesh.VertexPositions(1), nullptr);
    EXPECT_EQ(mesh.DisplayPositions(1), nullptr);
    EXPECT_EQ(mesh.PolygonIndices(1), nullptr);
    EXPECT_TRUE(mesh.SetGeometry(nullptr, 0, {}, {}));
    EXPECT_EQ(mesh.DisplayPositions(0), nullptr);
}

TEST_F(Polymesh, NormalsAreWeightedByArea)
{
    ASSERT_TRUE(Set(Corner()));
    const float* const normals = mesh.DisplayPositions(1);
    ExpectUnit(normals, 5);
    ExpectPoint(normals, {0, 0, 1}, 1e-6);
    ExpectPoint(normals + 16, {-1, 0, 0}, 1e-6);
    // At the shared edge: the square's area is 1, the triangle's 1 as well.
    ExpectPoint(normals + 4, {-std::sqrt(0.5), 0, std::sqrt(0.5)}, 1e-6);
}

TEST_F(Polymesh, NormalsFollowTheDeformation)
{
    ASSERT_TRUE(Set(Corner()));
    const auto bone = MakeBone("bone");
    ZSkin* const skin = mesh.MakeSkin(kDeformNormalise);
    skin->AddLink(bone.get());
    for (int vertex = 0; vertex < 5; ++vertex)
        AddWeight(*skin, 0, vertex, 1);
    ExpectPoint(mesh.DisplayPositions(1), {0, 0, 1}, 1e-6);
    bone->SetPosedTransform(ZgeRotationFromEuler({90, 0, 0}));
    ExpectPoint(mesh.DisplayPositions(1), {0, -1, 0}, 1e-6);
    ExpectPoint(mesh.DisplayPositions(0), {0, 0, 1}, 1e-6);
}

TEST_F(Polymesh, PolygonsWithoutAreaGiveNoBrokenNormal)
{
    Corner flat;
    flat.positions = {0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 0, 0, 5, 5, 5};
    flat.polygons = {0, 1, 2, 3, 3, 3, 0, 1, 4};
    flat.sizes = {3, 3, 2, 1};
    ASSERT_TRUE(Set(flat));
    ExpectUnit(mesh.DisplayPositions(1), 5);
}

TEST_F(Polymesh, ABrokenPositionSpoilsNoOtherVertex)
{
    Corner broken;
    broken.positions[12] = NAN;
    ASSERT_TRUE(Set(broken));
    ExpectUnit(mesh.DisplayPositions(1), 5);
    ExpectPoint(mesh.DisplayPositions(1), {0, 0, 1}, 1e-6);
}

TEST_F(Polymesh, TinyMeshesHaveNormalsToo)
{
    Corner tiny;
    for (float& number : tiny.positions)
        number *= 1e-12F;
    ASSERT_TRUE(Set(tiny));
    ExpectPoint(mesh.DisplayPositions(1), {0, 0, 1}, 1e-6);
    ExpectPoint(mesh.DisplayPositions(1) + 16, {-1, 0, 0}, 1e-6);
}

TEST_F(Polymesh, ASphereOnAllCoresHasItsOwnDirections)
{
    constexpr int kAround = 400, kUp = 201;
    std::vector<float> positions;
    std::vector<int> polygons, sizes;
    for (int row = 0; row < kUp; ++row) {
        for (int column = 0; column < kAround; ++column) {
            const double a = 2 * M_PI * column / kAround, b = M_PI * (row + 0.5) / kUp;
            for (const double p : {std::cos(a) * std::sin(b), std::sin(a) * std::sin(b), std::cos(b)})
                positions.push_back(static_cast<float>(p));
            const int next = (column + 1) % kAround;
            if (row + 1 < kUp) {
                polygons.insert(polygons.end(), {row * kAround + column, (row + 1) * kAround + column,
                                                 (row + 1) * kAround + next, row * kAround + next});
                sizes.push_back(4);
            }
        }
    }
    ASSERT_TRUE(mesh.SetGeometry(positions.data(), kAround * kUp, polygons, sizes));
    const float* const normals = mesh.DisplayPositions(1);
    const float* const points = mesh.VertexPositions(1);
    // Quads are half a degree high; next to the open poles their two rows differ most.
    for (int vertex = kAround; vertex < kAround * (kUp - 1); ++vertex)
        for (int axis = 0; axis < 3; ++axis)
            ASSERT_NEAR(normals[4 * vertex + axis], points[4 * vertex + axis], 4e-3);
}

} // namespace
