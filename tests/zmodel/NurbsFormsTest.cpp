// SPDX-License-Identifier: MIT
// Rational surfaces of every degree, and displayed grids, against closed forms.
#include "NurbsShapes.h"
#include "TinyModels.h"

#include <array>

namespace {

// Of the surface's size.
constexpr double kAccuracy = 1e-5;

/// Points (weight times x, weight times y, weight) of a curve that is one polynomial piece.
using HomogeneousArc = std::vector<std::array<double, 3>>;

/// The quarter of the unit circle from (1, 0) to (0, 1).
HomogeneousArc QuarterCircle()
{
    const double w = std::sqrt(0.5);
    return {{1, 0, 1}, {w, w, w}, {0, 1, 1}};
}

/// The same curve, one degree higher: each new point is the mean of two old ones, by how far along it is.
HomogeneousArc Raised(const HomogeneousArc& arc)
{
    const size_t degree = arc.size();
    HomogeneousArc raised;
    for (size_t i = 0; i <= degree; ++i) {
        const double share = static_cast<double>(i) / static_cast<double>(degree);
        std::array<double, 3> point{};
        for (size_t k = 0; k < 3; ++k)
            point[k] = (i > 0 ? share * arc[i - 1][k] : 0) + (i < degree ? (1 - share) * arc[i][k] : 0);
        raised.push_back(point);
    }
    return raised;
}

/// Knots 0 and 1 only.
std::vector<double> OnePieceKnots(int degree)
{
    std::vector<double> knots(static_cast<size_t>(degree) + 1, 0.0);
    knots.resize(2 * knots.size(), 1.0);
    return knots;
}

/// An eighth of a sphere, pole to equator in V, both directions of the given degree.
ZNurbsSurface SpherePatch(double radius, int degree)
{
    HomogeneousArc arc = QuarterCircle();
    while (static_cast<int>(arc.size()) <= degree)
        arc = Raised(arc);
    ZNurbsSurface patch;
    patch.degreeU = patch.degreeV = degree;
    patch.countU = patch.countV = degree + 1;
    patch.knotsU = patch.knotsV = OnePieceKnots(degree);
    for (const auto& inV : arc) {
        for (const auto& inU : arc) {
            // Turned about Z: the profile's distance times the circle, the profile's height as it is.
            const double weight = inU[2] * inV[2];
            patch.points.insert(patch.points.end(), {radius * inU[0] * inV[1] / weight,
                                                     radius * inU[1] * inV[1] / weight, radius * inV[0] / inV[2]});
            patch.weights.push_back(weight);
        }
    }
    return patch;
}

TEST(NurbsForms, ASpherePatchOfAnyDegreeIsRound)
{
    for (int degree = 2; degree <= kNurbsHighestDegree; ++degree) {
        const ZNurbsSurface patch = SpherePatch(3, degree);
        ASSERT_EQ(patch.Validate(), "") << degree;
        for (int i = 0; i <= 10; ++i) {
            for (int j = 0; j <= 10; ++j) {
                double p[3];
                ZNurbs_Evaluate(patch, i / 10.0, j / 10.0, p);
                EXPECT_NEAR(std::hypot(p[0], p[1], p[2]), 3, 1e-12) << degree;
            }
        }
        double corner[3];
        ZNurbs_Evaluate(patch, 1, 1, corner);
        EXPECT_NEAR(corner[1], 3, 1e-12);
        ZNurbs_Evaluate(patch, 0.5, 1, corner); // halfway round the equator
        EXPECT_NEAR(corner[0], 3 * std::sqrt(0.5), 1e-12);
        EXPECT_NEAR(corner[1], 3 * std::sqrt(0.5), 1e-12);
    }
}

/// Weights move points within a plane, never out of it; the same weight everywhere moves nothing.
TEST(NurbsForms, APlaneStaysFlatUnderAnyWeightsAndKnots)
{
    for (int degree = 1; degree <= kNurbsHighestDegree; ++degree) {
        for (const bool clamped : {true, false}) {
            const std::vector<double> knots =
                clamped ? ClampedKnots(degree, degree + 3) : UniformKnots(degree, degree + 3);
            ZNurbsSurface plane = MakePlane(degree, 1, knots, ClampedKnots(1, 4));
            const double begin = knots[static_cast<size_t>(degree)], end = knots[static_cast<size_t>(plane.countU)];
            for (const bool equal : {true, false}) {
                plane.weights.clear();
                for (int i = 0; i < plane.countU * plane.countV; ++i)
                    plane.weights.push_back(equal ? 2.5 : 0.5 + (i * 7) % 5);
                ASSERT_EQ(plane.Validate(), "");
                for (int i = 0; i <= 12; ++i) {
                    const double u = begin + (end - begin) * i / 12;
                    double p[3];
                    ZNurbs_Evaluate(plane, u, 0.3, p);
                    EXPECT_NEAR(p[2], 2 * p[0] - p[1] + 1, 1e-11) << degree;
                    if (equal) {
                        EXPECT_NEAR(p[0], u, 1e-11) << degree;
                    }
                }
            }
        }
    }
}

class NurbsGrid : public ReportTest
{
protected:
    static constexpr int kWidth = 41, kHeight = 23;
    void Show(const ZNurbsSurface& surface) { ASSERT_TRUE(model.SetSurface(surface, kWidth, kHeight)); }
    void ForGrid(const std::function<void(const float* point, int column, int row)>& visit)
    {
        const float* const points = model.TessellatedPoints(1);
        ASSERT_NE(points, nullptr);
        for (int row = 0; row < kHeight; ++row)
            for (int column = 0; column < kWidth; ++column)
                visit(points + 4 * (row * kWidth + column), column, row);
    }
    ZModelNurbs model{"surface"};
};

TEST_F(NurbsGrid, OfACylinderLiesOnTheCylinder)
{
    Show(MakeCylinder(3, 10));
    ForGrid([](const float* p, int column, int row) {
        EXPECT_NEAR(std::hypot(p[0], p[1]), 3, kAccuracy * 10);
        EXPECT_NEAR(p[2], 10.0 * row / (kHeight - 1), kAccuracy * 10);
        if (column % 10 == 0) { // a quarter turn
            EXPECT_NEAR(p[0], 3 * std::cos(column * M_PI / 20), kAccuracy * 10);
            EXPECT_NEAR(p[1], 3 * std::sin(column * M_PI / 20), kAccuracy * 10);
        }
    });
}

TEST_F(NurbsGrid, OfASpherePatchLiesOnTheSphere)
{
    for (int degree = 2; degree <= kNurbsHighestDegree; ++degree) {
        Show(SpherePatch(2, degree));
        ForGrid([](const float* p, int, int) {
            EXPECT_NEAR(std::hypot(p[0], p[1], p[2]), 2, kAccuracy * 2);
            EXPECT_GE(p[0], -kAccuracy);
            EXPECT_GE(p[1], -kAccuracy);
            EXPECT_GE(p[2], -kAccuracy);
        });
    }
}

TEST_F(NurbsGrid, OfATorusLiesOnTheTorus)
{
    Show(MakeTorus(5, 2));
    ForGrid([](const float* p, int, int) {
        EXPECT_NEAR(std::hypot(std::hypot(p[0], p[1]) - 5, static_cast<double>(p[2])), 2, kAccuracy * 14);
    });
}

} // namespace
