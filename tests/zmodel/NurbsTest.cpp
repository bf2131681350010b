// SPDX-License-Identifier: MIT
// NURBS surfaces: checking, points and basis, against closed forms and against the recurrence as it is written.
#include "NurbsShapes.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <rapidcheck/gtest.h>

#include <array>
#include <fstream>

namespace {

using Point = std::array<double, 3>;

Point Evaluate(const ZNurbsSurface& surface, double u, double v)
{
    Point point;
    ZNurbs_Evaluate(surface, u, v, point.data());
    return point;
}

double Distance(const Point& a, const Point& b) { return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]); }

/// Calls `visit(u, v)` on a lattice over the whole domain, both ends included.
void ForDomain(const ZNurbsSurface& surface, int steps, const std::function<void(double, double)>& visit)
{
    const auto at = [steps](const std::vector<double>& knots, int degree, int count, int i) {
        const double begin = knots[static_cast<size_t>(degree)], end = knots[static_cast<size_t>(count)];
        return i == steps ? end : begin + (end - begin) * i / steps;
    };
    for (int i = 0; i <= steps; ++i)
        for (int j = 0; j <= steps; ++j)
            visit(at(surface.knotsU, surface.degreeU, surface.countU, i),
                  at(surface.knotsV, surface.degreeV, surface.countV, j));
}

/// The basis function of Cox and de Boor as their recurrence reads, with 0 / 0 = 0; at the domain's end the last span
/// that is not empty is closed.
double BasisAsWritten(const std::vector<double>& knots, int point, int degree, double t, double end)
{
    const auto at = [&knots](int i) { return knots[static_cast<size_t>(i)]; };
    if (degree == 0)
        return at(point) <= t && (t < at(point + 1) || (t == end && at(point) < at(point + 1) && at(point + 1) == end));
    double value = 0;
    if (at(point + degree) > at(point))
        value += (t - at(point)) / (at(point + degree) - at(point)) * BasisAsWritten(knots, point, degree - 1, t, end);
    if (at(point + degree + 1) > at(point + 1))
        value += (at(point + degree + 1) - t) / (at(point + degree + 1) - at(point + 1)) *
                 BasisAsWritten(knots, point + 1, degree - 1, t, end);
    return value;
}

Point EvaluateAsWritten(const ZNurbsSurface& surface, double u, double v)
{
    Point sum{};
    double weights = 0;
    for (int j = 0; j < surface.countV; ++j) {
        const double inV =
            BasisAsWritten(surface.knotsV, j, surface.degreeV, v, surface.knotsV[static_cast<size_t>(surface.countV)]);
        for (int i = 0; i < surface.countU && inV != 0; ++i) {
            const size_t number = static_cast<size_t>(j * surface.countU + i);
            const double share = inV * (surface.weights.empty() ? 1 : surface.weights[number]) *
                                 BasisAsWritten(surface.knotsU, i, surface.degreeU, u,
                                                surface.knotsU[static_cast<size_t>(surface.countU)]);
            for (size_t axis = 0; axis < 3; ++axis)
                sum[axis] += share * surface.points[3 * number + axis];
            weights += share;
        }
    }
    return {sum[0] / weights, sum[1] / weights, sum[2] / weights};
}

Point FromBasis(const ZNurbsSurface& surface, double u, double v)
{
    std::vector<int> points;
    std::vector<double> shares;
    ZNurbs_Basis(surface, u, v, points, shares);
    Point sum{};
    for (size_t i = 0; i < points.size(); ++i)
        for (size_t axis = 0; axis < 3; ++axis)
            sum[axis] += shares[i] * surface.points[3 * static_cast<size_t>(points[i]) + axis];
    return sum;
}

TEST(NurbsValidate, SaysWhichNumbersDisagree)
{
    const ZNurbsSurface good = MakePlane(3, 2, ClampedKnots(3, 6), ClampedKnots(2, 4));
    EXPECT_EQ(good.Validate(), "");
    const auto wrong = [&good](const std::function<void(ZNurbsSurface&)>& spoil) {
        ZNurbsSurface surface = good;
        spoil(surface);
        return surface.Validate();
    };
    EXPECT_THAT(wrong([](auto& s) { s.degreeU = 6; }),
                testing::AllOf(testing::HasSubstr("U"), testing::HasSubstr("6")));
    EXPECT_THAT(wrong([](auto& s) { s.degreeV = 0; }), testing::HasSubstr("V is 0"));
    EXPECT_THAT(wrong([](auto& s) { s.countU = 3; }), testing::HasSubstr("There are 3 control points in U"));
    EXPECT_THAT(wrong([](auto& s) { s.countV = -1; }), testing::HasSubstr("-1"));
    EXPECT_THAT(wrong([](auto& s) { s.knotsU.pop_back(); }),
                testing::AllOf(testing::HasSubstr("9 knots in U"), testing::HasSubstr("need 10")));
    EXPECT_THAT(wrong([](auto& s) { s.knotsV[4] = 0.25; }), testing::HasSubstr("Knot 4 in V"));
    EXPECT_THAT(wrong([](auto& s) { s.knotsU[5] = NAN; }), testing::HasSubstr("Knot 5 in U"));
    EXPECT_THAT(wrong([](auto& s) { std::fill(s.knotsU.begin(), s.knotsU.end(), 1.0); }), testing::HasSubstr("empty"));
    EXPECT_THAT(wrong([](auto& s) { s.points.pop_back(); }),
                testing::AllOf(testing::HasSubstr("71"), testing::HasSubstr("72")));
    EXPECT_THAT(wrong([](auto& s) { s.points[7] = INFINITY; }), testing::HasSubstr("control point 2"));
    EXPECT_THAT(wrong([](auto& s) {
                    s.weights = {1, 2};
                }),
                testing::AllOf(testing::HasSubstr("2 weights"), testing::HasSubstr("24")));
    EXPECT_THAT(wrong([](auto& s) {
                    s.weights.assign(24, 1.0);
                    s.weights[3] = 0;
                }),
                testing::HasSubstr("control point 3"));
    EXPECT_THAT(wrong([](auto& s) { s.countU = s.countV = 2000000000; }), testing::Not(testing::IsEmpty()));
}

TEST(NurbsSurface, APlaneOfAnyDegreeAndKnotsIsItself)
{
    for (int degree = 1; degree <= kNurbsHighestDegree; ++degree) {
        const std::vector<std::vector<double>> knotVectors{
            ClampedKnots(degree, degree + 1), ClampedKnots(degree, degree + 4), UniformKnots(degree, degree + 5)};
        for (const std::vector<double>& knots : knotVectors) {
            const ZNurbsSurface plane = MakePlane(degree, 2, knots, ClampedKnots(2, 5));
            ASSERT_EQ(plane.Validate(), "");
            ForDomain(plane, 7, [&](double u, double v) {
                EXPECT_LT(Distance(Evaluate(plane, u, v), {u, v, 2 * u - v + 1}), 1e-12 * (1 + std::abs(u)));
            });
        }
    }
}

TEST(NurbsSurface, ACylinderIsRound)
{
    const ZNurbsSurface cylinder = MakeCylinder(3, 10);
    ASSERT_EQ(cylinder.Validate(), "");
    ForDomain(cylinder, 24, [&](double u, double v) {
        const Point p = Evaluate(cylinder, u, v);
        EXPECT_NEAR(std::hypot(p[0], p[1]), 3, 1e-12);
        EXPECT_NEAR(p[2], 10 * v, 1e-12);
    });
    EXPECT_LT(Distance(Evaluate(cylinder, 1, 0), {0, 3, 0}), 1e-12);
}

TEST(NurbsSurface, ASphereIsRound)
{
    const ZNurbsSurface sphere = MakeSphere(2);
    ASSERT_EQ(sphere.Validate(), "");
    ForDomain(sphere, 24, [&](double u, double v) { EXPECT_NEAR(Distance(Evaluate(sphere, u, v), {}), 2, 1e-12); });
}

TEST(NurbsSurface, ATorusIsRoundTwice)
{
    const ZNurbsSurface torus = MakeTorus(5, 2);
    ASSERT_EQ(torus.Validate(), "");
    ForDomain(torus, 24, [&](double u, double v) {
        const Point p = Evaluate(torus, u, v);
        EXPECT_NEAR(std::hypot(std::hypot(p[0], p[1]) - 5, p[2]), 2, 1e-12);
    });
}

TEST(NurbsSurface, APeriodicCurveClosesSmoothly)
{
    // Three control points wrap around: the beginning and the end of the domain are one place.
    ZNurbsSurface tube;
    tube.degreeU = 3;
    tube.degreeV = 1;
    tube.countU = 9;
    tube.countV = 2;
    tube.knotsU = UniformKnots(3, 9);
    tube.knotsV = {0, 0, 1, 1};
    for (int v = 0; v < 2; ++v)
        for (int u = 0; u < 9; ++u)
            tube.points.insert(tube.points.end(), {std::cos(u * M_PI / 3), std::sin(u * M_PI / 3), v * 1.0});
    ASSERT_EQ(tube.Validate(), "");
    EXPECT_LT(Distance(Evaluate(tube, 3, 0.5), Evaluate(tube, 9, 0.5)), 1e-12);
}

TEST(NurbsSurface, ParametersOutsideTheDomainGoToItsEnds)
{
    const ZNurbsSurface plane = MakePlane(3, 3, ClampedKnots(3, 5), UniformKnots(3, 6));
    EXPECT_EQ(Evaluate(plane, -5, 100), Evaluate(plane, 0, 6));
    EXPECT_EQ(Evaluate(plane, 5, NAN), Evaluate(plane, 1, 3));
}

TEST(NurbsSurface, BasisSumsToOneAndGivesThePoint)
{
    const ZNurbsSurface torus = MakeTorus(5, 2);
    ForDomain(torus, 12, [&](double u, double v) {
        std::vector<int> points;
        std::vector<double> shares;
        ZNurbs_Basis(torus, u, v, points, shares);
        EXPECT_EQ(points.size(), 9U);
        EXPECT_EQ(shares.size(), 9U);
        double sum = 0;
        for (const double share : shares) {
            EXPECT_GE(share, 0);
            sum += share;
        }
        EXPECT_NEAR(sum, 1, 1e-14);
        EXPECT_LT(Distance(FromBasis(torus, u, v), Evaluate(torus, u, v)), 1e-12);
    });
}

std::vector<ZNurbsSurface> ReadDuck()
{
    std::ifstream file(SKINDESK_SOURCE_DIR "/tests/data/nurbs/duck.json");
    std::vector<ZNurbsSurface> surfaces;
    for (const auto& part : nlohmann::json::parse(file)) {
        ZNurbsSurface surface;
        surface.degreeU = part["degree_u"];
        surface.degreeV = part["degree_v"];
        surface.countU = part["count_u"];
        surface.countV = part["count_v"];
        surface.knotsU = part["knots_u"].get<std::vector<double>>();
        surface.knotsV = part["knots_v"].get<std::vector<double>>();
        for (int v = 0; v < surface.countV; ++v) { // the file runs V fastest
            for (int u = 0; u < surface.countU; ++u) {
                const size_t number = static_cast<size_t>(v + surface.countV * u);
                for (size_t axis = 0; axis < 3; ++axis)
                    surface.points.push_back(part["points"][number][axis]);
                surface.weights.push_back(part["weights"][number]);
            }
        }
        surfaces.push_back(surface);
    }
    return surfaces;
}

TEST(NurbsSurface, TheDuckEqualsTheRecurrenceAsWritten)
{
    const std::vector<ZNurbsSurface> duck = ReadDuck();
    ASSERT_EQ(duck.size(), 3U);
    for (const ZNurbsSurface& surface : duck) {
        ASSERT_EQ(surface.Validate(), "");
        ForDomain(surface, 20, [&](double u, double v) {
            const Point point = Evaluate(surface, u, v);
            ASSERT_LT(Distance(point, EvaluateAsWritten(surface, u, v)), 1e-9);
            ASSERT_LT(Distance(point, FromBasis(surface, u, v)), 1e-9);
        });
    }
}

RC_GTEST_PROP(NurbsProperty, AnyKnotsAndWeightsEqualTheRecurrenceAsWritten, ())
{
    const auto direction = [](int& degree, int& count, std::vector<double>& knots) {
        degree = *rc::gen::inRange(1, kNurbsHighestDegree + 1);
        count = degree + *rc::gen::inRange(1, 6);
        double knot = *rc::gen::inRange(-5, 5);
        int repeats = 0;
        for (int i = 0; i <= count + degree; ++i) {
            const double step = *rc::gen::inRange(0, 3) / 2.0;
            repeats = step == 0 ? repeats + 1 : 0;
            // A knot repeated more often than the degree tears the surface apart.
            knot += repeats > degree - 1 ? 0.5 : step;
            repeats = repeats > degree - 1 ? 0 : repeats;
            knots.push_back(knot);
        }
    };
    ZNurbsSurface surface;
    direction(surface.degreeU, surface.countU, surface.knotsU);
    direction(surface.degreeV, surface.countV, surface.knotsV);
    for (int i = 0; i < surface.countU * surface.countV; ++i) {
        for (int axis = 0; axis < 3; ++axis)
            surface.points.push_back(*rc::gen::inRange(-100, 100) / 10.0);
        surface.weights.push_back(*rc::gen::inRange(1, 50) / 10.0);
    }
    RC_PRE(surface.Validate().empty());
    bool equal = true;
    ForDomain(surface, 5, [&](double u, double v) {
        const Point expected = EvaluateAsWritten(surface, u, v);
        equal = equal && Distance(Evaluate(surface, u, v), expected) < 1e-9 &&
                Distance(FromBasis(surface, u, v), expected) < 1e-9;
    });
    RC_ASSERT(equal);
}

} // namespace
