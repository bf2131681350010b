// SPDX-License-Identifier: MIT
// NURBS surfaces as models: control points, grid, normals, and their deformation.
#include "NurbsShapes.h"
#include "TinyModels.h"

namespace {

// Of the surface's size.
constexpr double kAccuracy = 1e-5;

class NurbsModel : public ReportTest
{
protected:
    ZModelNurbs model{"surface"};
    const float* Grid(int column, int row, int deformed = 1)
    {
        return model.TessellatedPoints(deformed) + 4 * (row * model.TessellationWidth() + column);
    }
    const float* GridNormal(int column, int row)
    {
        return model.TessellatedNormals(1) + 4 * (row * model.TessellationWidth() + column);
    }
};

TEST_F(NurbsModel, AnswersBothHalvesOfWhatASurfaceIs)
{
    ASSERT_TRUE(model.SetSurface(MakePlane(3, 2, ClampedKnots(3, 4), ClampedKnots(2, 3)), 5, 6));
    auto* const surface = static_cast<ISurface*>(model.IQuery(kInterfaceSurface, 0));
    auto* const geometry = static_cast<IModelGeometry*>(model.IQuery(kInterfaceModelGeometry, 0));
    ASSERT_NE(surface, nullptr);
    EXPECT_EQ(surface->ControlPointCount(), 12);
    EXPECT_EQ(surface->CountU(), 4);
    EXPECT_EQ(surface->CountV(), 3);
    EXPECT_EQ(geometry->VertexCount(), 12);
    EXPECT_EQ(geometry->VertexPositions(1), surface->ControlPoints());
    EXPECT_EQ(geometry->TessellationWidth(), 5);
    EXPECT_EQ(geometry->TessellationHeight(), 6);
    EXPECT_EQ(geometry->PolygonCount(), 0);
    EXPECT_EQ(model.GetKind(), ZModelKind::Nurbs);
    EXPECT_EQ(model.ModelIneligible(), 0);
}

TEST_F(NurbsModel, ControlPointsRunUFastest)
{
    ASSERT_TRUE(model.SetSurface(MakePlane(1, 1, ClampedKnots(1, 4), ClampedKnots(1, 3)), 2, 2));
    ExpectPoint(model.ControlPoints() + 4 * 6, {2.0 / 3, 0.5, 2 * 2.0 / 3 - 0.5 + 1}, 1e-6);
}

TEST_F(NurbsModel, AWrongSurfaceIsRefusedWithTheReason)
{
    ASSERT_TRUE(model.SetSurface(MakePlane(1, 1, ClampedKnots(1, 2), ClampedKnots(1, 2)), 2, 2));
    ZNurbsSurface wrong = MakePlane(1, 1, ClampedKnots(1, 3), ClampedKnots(1, 2));
    wrong.knotsU.pop_back();
    std::string why;
    EXPECT_FALSE(model.SetSurface(wrong, 2, 2, &why));
    EXPECT_THAT(why, testing::HasSubstr("4 knots in U"));
    EXPECT_FALSE(model.SetSurface(wrong, 2, 2));
    EXPECT_EQ(model.ControlPointCount(), 4);
    EXPECT_TRUE(model.SetSurface(MakePlane(1, 1, ClampedKnots(1, 2), ClampedKnots(1, 2)), 2, 2, &why));
    EXPECT_EQ(why, "");
}

TEST_F(NurbsModel, TheGridIsEvenOverTheDomain)
{
    ASSERT_TRUE(model.SetSurface(MakePlane(3, 2, UniformKnots(3, 8), ClampedKnots(2, 5)), 6, 3));
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 6; ++column) {
            const double u = 3 + column, v = row / 2.0;
            ExpectPoint(Grid(column, row), {u, v, 2 * u - v + 1}, kAccuracy * 15);
            ExpectPoint(Grid(column, row, 0), {u, v, 2 * u - v + 1}, kAccuracy * 15);
            EXPECT_EQ(Grid(column, row)[3], 1.0F);
        }
    }
}

TEST_F(NurbsModel, AnEmptyGridHasNoPoints)
{
    for (const auto& [width, height] : {std::pair(0, 0), std::pair(5, 0), std::pair(0, 5), std::pair(-1, 5)}) {
        ASSERT_TRUE(model.SetSurface(MakeCylinder(1, 1), width, height));
        EXPECT_EQ(model.TessellationWidth() * model.TessellationHeight(), 0);
        EXPECT_EQ(model.TessellatedPoints(1), nullptr);
        EXPECT_EQ(model.TessellatedNormals(1), nullptr);
        EXPECT_NE(model.DisplayPositions(1), nullptr);
    }
    model.SetGrid(4, 4);
    EXPECT_NE(model.TessellatedPoints(1), nullptr);
    EXPECT_EQ(ZModelNurbs("new").DisplayPositions(1), nullptr);
}

TEST_F(NurbsModel, AGridOfOnePointIsTheBeginningOfTheDomain)
{
    ASSERT_TRUE(model.SetSurface(MakePlane(1, 1, ClampedKnots(1, 2), ClampedKnots(1, 2)), 1, 1));
    ExpectPoint(Grid(0, 0), {0, 0, 1}, 1e-6);
}

TEST_F(NurbsModel, SphereNormalsPointOutwardsAlsoAtThePoles)
{
    ASSERT_TRUE(model.SetSurface(MakeSphere(2), 33, 17));
    for (int row = 0; row < 17; ++row) {
        for (int column = 0; column < 33; ++column) {
            const float* const p = Grid(column, row);
            EXPECT_NEAR(std::hypot(p[0], p[1], p[2]), 2, kAccuracy * 4);
            const bool pole = row == 0 || row == 16;
            ExpectPoint(GridNormal(column, row), {p[0] / 2.0, p[1] / 2.0, p[2] / 2.0}, pole ? 5e-3 : 1e-5);
            EXPECT_EQ(GridNormal(column, row)[3], 0.0F);
        }
    }
}

TEST_F(NurbsModel, NormalsAtControlPointsAreThoseOfTheSurface)
{
    ASSERT_TRUE(model.SetSurface(MakePlane(3, 2, ClampedKnots(3, 6), ClampedKnots(2, 4)), 0, 0));
    const double length = std::sqrt(6.0);
    for (int vertex = 0; vertex < 24; ++vertex)
        ExpectPoint(model.DisplayPositions(1) + 4 * vertex, {-2 / length, 1 / length, 1 / length}, 1e-6);
}

TEST_F(NurbsModel, ACollapsedSurfaceHasUnitNormalsAndNoBrokenNumber)
{
    ZNurbsSurface point = MakePlane(2, 2, ClampedKnots(2, 3), ClampedKnots(2, 3));
    std::fill(point.points.begin(), point.points.end(), 4.0);
    ASSERT_TRUE(model.SetSurface(point, 3, 3));
    ExpectPoint(GridNormal(1, 1), {0, 0, 1}, 0);
    ExpectPoint(Grid(1, 1), {4, 4, 4}, 1e-6);
}

TEST_F(NurbsModel, TheDeformedSurfaceFollowsTheDeformedControlPoints)
{
    const ZNurbsSurface torus = MakeTorus(5, 2);
    ASSERT_TRUE(model.SetSurface(torus, 20, 20));
    const auto bone = MakeBone("bone");
    ZSkin* const skin = model.MakeSkin(kDeformNormalise);
    skin->AddLink(bone.get());
    skin->BeginLink(0);
    for (int vertex = 0; vertex < 81; ++vertex)
        skin->AddEntry(vertex, 1);
    skin->EndLink();
    ASSERT_NEAR(Grid(0, 0)[0], 7, 1e-5);
    const ZgeMatrix moved = ZgeRotationFromEuler({20, 30, 40}) * ZgeTranslation({1, 2, 3});
    bone->SetPosedTransform(moved);
    for (int row = 0; row < 20; ++row) {
        for (int column = 0; column < 20; ++column) {
            double p[3];
            ZNurbs_Evaluate(torus, 4.0 * column / 19, 4.0 * row / 19, p);
            ExpectPoint(Grid(column, row), ZgeTransformPoint({p[0], p[1], p[2]}, moved), kAccuracy * 14);
            ExpectPoint(Grid(column, row, 0), {p[0], p[1], p[2]}, kAccuracy * 14);
        }
    }
    const ZgeVector3 normal = ZgeTransformDirection({1, 0, 0}, moved);
    ExpectPoint(GridNormal(0, 0), normal, 1e-5);
    EXPECT_EQ(model.GetSurface().points, torus.points) << "the file's surface is not touched";
}

TEST_F(NurbsModel, TheGridIsComputedAnewOnlyWhenTheSurfaceMoved)
{
    ASSERT_TRUE(model.SetSurface(MakeTorus(5, 2), 4, 4));
    const auto bone = MakeBone("bone");
    ZSkin* const skin = model.MakeSkin(kDeformNormalise);
    skin->AddLink(bone.get());
    AddWeight(*skin, 0, 0, 1);
    Grid(0, 0);
    const std::uint64_t version = model.GetDeformVersion();
    Grid(1, 1);
    model.DisplayPositions(1);
    EXPECT_EQ(model.GetDeformVersion(), version);
    bone->SetPosedTransform(ZgeTranslation({1, 0, 0}));
    EXPECT_NEAR(Grid(0, 0)[0], 8, 1e-5);
    EXPECT_NE(model.GetDeformVersion(), version);
}

} // namespace
