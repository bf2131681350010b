// SPDX-License-Identifier: MIT
// Matrices for row vectors, and their split into translation, rotation and scaling.
#include "zbaselib/ZGe.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck/gtest.h>

namespace {
constexpr double kNear = 1e-9;
constexpr double kDegree = 0.017453292519943295;

double Difference(const ZgeMatrix& a, const ZgeMatrix& b)
{
    double largest = 0;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            largest = std::max(largest, std::abs(a(row, column) - b(row, column)));
    return largest;
}

double AnyDouble(double low, double high) { return low + (high - low) * (*rc::gen::inRange(0, 1000001)) / 1000000.0; }

ZgeTRS AnyTRS()
{
    const double mirror = *rc::gen::arbitrary<bool>() ? -1.0 : 1.0;
    ZgeTRS trs;
    trs.translation = {AnyDouble(-50, 50), AnyDouble(-50, 50), AnyDouble(-50, 50), 1};
    trs.rotation = {AnyDouble(-180, 180), AnyDouble(-90, 90), AnyDouble(-180, 180)};
    trs.scaling = {mirror * AnyDouble(0.1, 4), mirror * AnyDouble(0.1, 4), mirror * AnyDouble(0.1, 4)};
    return trs;
}

void ExpectNear(const ZgeVector3& a, const ZgeVector3& b, double near = kNear)
{
    EXPECT_NEAR(a.x, b.x, near);
    EXPECT_NEAR(a.y, b.y, near);
    EXPECT_NEAR(a.z, b.z, near);
}
} // namespace

TEST(ZgeMatrixProduct, AppliesTheLeftOneFirst)
{
    const ZgeMatrix scaledThenMoved = ZgeScaling({2, 2, 2}) * ZgeTranslation({1, 0, 0});
    ExpectNear(ZgeTransformPoint({1, 1, 1}, scaledThenMoved), {3, 2, 2});
    const ZgeVector4 point = ZgeVector4{1, 1, 1, 1} * scaledThenMoved;
    EXPECT_EQ(point, (ZgeVector4{3, 2, 2, 1}));
    ExpectNear(ZgeTransformDirection({1, 1, 1}, scaledThenMoved), {2, 2, 2});
}

TEST(ZgeRotation, EulerAnglesTurnAboutXThenYThenZ)
{
    const ZgeVector3 angles{20, -35, 110};
    const ZgeMatrix steps = ZgeRotationFromEuler({angles.x, 0, 0}) * ZgeRotationFromEuler({0, angles.y, 0}) *
                            ZgeRotationFromEuler({0, 0, angles.z});
    EXPECT_LT(Difference(ZgeRotationFromEuler(angles), steps), kNear);
    ExpectNear(ZgeTransformPoint({1, 0, 0}, ZgeRotationFromEuler({0, 0, 90})), {0, 1, 0});
    ExpectNear(ZgeTransformPoint({0, 1, 0}, ZgeRotationFromEuler({90, 0, 0})), {0, 0, 1});
    ExpectNear(ZgeTransformPoint({0, 0, 1}, ZgeRotationFromEuler({0, 90, 0})), {1, 0, 0});
}

TEST(ZgeRotation, AQuaternionTurnsTheSameWay)
{
    const double half = 30 * kDegree / 2;
    EXPECT_LT(
        Difference(ZgeRotationFromQuaternion(std::sin(half), 0, 0, std::cos(half)), ZgeRotationFromEuler({30, 0, 0})),
        kNear);
    EXPECT_LT(Difference(ZgeRotationFromQuaternion(0, 5 * std::sin(half), 0, 5 * std::cos(half)),
                         ZgeRotationFromEuler({0, 30, 0})),
              kNear);
    EXPECT_EQ(ZgeRotationFromQuaternion(0, 0, 0, 0), ZgeMatrix());
}

TEST(ZgeInverse, SingularMatricesAnswerTheIdentity)
{
    bool singular = false;
    EXPECT_EQ(ZgeInverse(ZgeScaling({1, 0, 1}), &singular), ZgeMatrix());
    EXPECT_TRUE(singular);
    ZgeMatrix twice;
    twice.m[1] = twice.m[0];
    EXPECT_EQ(ZgeInverse(twice, &singular), ZgeMatrix());
    EXPECT_TRUE(singular);
    ZgeMatrix broken;
    broken(0, 0) = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(ZgeInverse(broken, &singular), ZgeMatrix());
    EXPECT_TRUE(singular);
}

TEST(ZgeInverse, TinyScalingIsNotSingular)
{
    bool singular = true;
    const ZgeMatrix inverse = ZgeInverse(ZgeScaling({1e-120, 1, 1e-90}), &singular);
    EXPECT_FALSE(singular);
    EXPECT_DOUBLE_EQ(inverse(0, 0), 1e120);
}

TEST(ZgeInverse, AProjectionHasOne)
{
    ZgeMatrix projection;
    projection(2, 2) = -1.2;
    projection(2, 3) = -1;
    projection(3, 2) = -0.4;
    projection(3, 3) = 0;
    bool singular = true;
    EXPECT_LT(Difference(projection * ZgeInverse(projection, &singular), ZgeMatrix()), kNear);
    EXPECT_FALSE(singular);
}

RC_GTEST_PROP(ZgeInverseProperty, TimesTheMatrixIsTheIdentity, ())
{
    const ZgeMatrix m = ZgeCompose(AnyTRS()) * ZgeCompose(AnyTRS());
    bool singular = true;
    const ZgeMatrix inverse = ZgeInverse(m, &singular);
    RC_ASSERT(!singular);
    RC_ASSERT(Difference(m * inverse, ZgeMatrix()) < 1e-8);
    RC_ASSERT(Difference(inverse * m, ZgeMatrix()) < 1e-8);
}

RC_GTEST_PROP(ZgeDecomposeProperty, ComposingAgainGivesTheSameMatrix, ())
{
    const ZgeMatrix m = ZgeCompose(AnyTRS());
    RC_ASSERT(Difference(ZgeCompose(ZgeDecompose(m)), m) < 1e-9);
}

RC_GTEST_PROP(ZgeDecomposeProperty, GivesTheAnglesBackAwayFromTheLock, ())
{
    ZgeTRS trs = AnyTRS();
    trs.rotation.y = AnyDouble(-89, 89);
    trs.rotation.x = AnyDouble(-179, 179);
    trs.rotation.z = AnyDouble(-179, 179);
    const ZgeTRS back = ZgeDecompose(ZgeCompose(trs));
    RC_ASSERT(ZgeLength(back.rotation - trs.rotation) < 1e-6);
    RC_ASSERT(ZgeLength(back.scaling - trs.scaling) < 1e-9);
    RC_ASSERT(back.translation == trs.translation);
}

RC_GTEST_PROP(ZgeDecomposeProperty, TheRotationIsPureAndScalesMultiplyTheRows, ())
{
    const ZgeMatrix m = ZgeCompose(AnyTRS());
    const ZgeMatrix r = ZgeSetRM(m);
    RC_ASSERT(std::abs(ZgeDeterminant3(r) - 1) < 1e-9);
    const ZgeTRS trs = ZgeDecompose(m);
    RC_ASSERT(Difference(r, ZgeRotationFromEuler(trs.rotation)) < 1e-9);
}

TEST(ZgeDecompose, AMirrorNegatesAllThreeScales)
{
    const ZgeTRS trs = ZgeDecompose(ZgeScaling({-2, 3, 4}));
    EXPECT_EQ(trs.scaling, (ZgeVector3{-2, -3, -4}));
    EXPECT_LT(Difference(ZgeCompose(trs), ZgeScaling({-2, 3, 4})), kNear);
}

TEST(ZgeDecompose, TwoNegativeAxesAreARotation)
{
    const ZgeTRS trs = ZgeDecompose(ZgeScaling({-1, -1, 1}));
    EXPECT_EQ(trs.scaling, (ZgeVector3{1, 1, 1}));
    EXPECT_LT(Difference(ZgeCompose(trs), ZgeScaling({-1, -1, 1})), kNear);
}

TEST(ZgeDecompose, AtTheLockZIsZeroAndTheMatrixComesBack)
{
    for (const double y : {90.0, -90.0}) {
        const ZgeMatrix m = ZgeCompose({{1, 2, 3, 1}, {25, y, 40}, {1, 2, 3}});
        const ZgeTRS trs = ZgeDecompose(m);
        EXPECT_EQ(trs.rotation.z, 0);
        EXPECT_NEAR(trs.rotation.y, y, 1e-6);
        EXPECT_LT(Difference(ZgeCompose(trs), m), 1e-8);
    }
}

TEST(ZgeDecompose, AtTheBoundTheDegenerateBranchIsTaken)
{
    // Rows of length one within rounding: the cosine of the Y angle is sqrt(m00^2 + m01^2) = |m00|.
    const auto withCosine = [](double c) {
        ZgeMatrix m;
        m.m[0] = {c, 0, -1, 0};
        m.m[1] = {0, 1, 0, 0};
        m.m[2] = {1, 0, c, 0};
        return m;
    };
    // Above the bound X is read from the last column, at it from the middle one: with a turned middle row they differ.
    ZgeMatrix above = withCosine(1.7e-9), at = withCosine(1.6e-9);
    for (ZgeMatrix* m : {&above, &at}) {
        m->m[1] = {0, std::cos(0.5), std::sin(0.5), 0};
        m->m[2] = {1, -std::sin(0.5), std::cos(0.5), 0};
    }
    const double length = std::sqrt(2.0); // of the last row, which is divided by it
    EXPECT_NEAR(ZgeDecompose(at).rotation.x, std::atan2(std::sin(0.5) / length, std::cos(0.5)) / kDegree, 1e-9);
    EXPECT_EQ(ZgeDecompose(at).rotation.z, 0);
    EXPECT_NEAR(ZgeDecompose(above).rotation.x, std::atan2(std::sin(0.5), std::cos(0.5) / length) / kDegree, 1e-9);
}

TEST(ZgeDecompose, NearTheLockASinglePrecisionRotationComesBack)
{
    for (const double tilt : {1e-8, 1e-7, 4e-6, 1e-4, 1e-2}) {
        const ZgeMatrix exact = ZgeRotationFromEuler({33, 90 - tilt, -71});
        ZgeMatrix rounded = exact;
        for (int i = 0; i < 12; ++i)
            rounded.Data()[i] = static_cast<double>(static_cast<float>(exact.Data()[i]));
        const ZgeMatrix again = ZgeCompose(ZgeDecompose(rounded));
        for (int i = 0; i < 12; ++i)
            EXPECT_NEAR(again.Data()[i], exact.Data()[i], 3e-7) << "tilt " << tilt << ", number " << i;
    }
}

TEST(ZgeDecompose, AShearIsDroppedAndTheRowLengthsStay)
{
    ZgeMatrix sheared;
    sheared.m[1] = {0.5, 1, 0, 0};
    const ZgeTRS trs = ZgeDecompose(sheared);
    EXPECT_NEAR(trs.scaling.y, std::sqrt(1.25), kNear);
    EXPECT_NEAR(trs.scaling.x, 1, kNear);
}

TEST(ZgeDecompose, AFlatAxisStaysFinite)
{
    const ZgeTRS trs = ZgeDecompose(ZgeScaling({2, 0, 3}));
    EXPECT_EQ(trs.scaling, (ZgeVector3{2, 0, 3}));
    EXPECT_EQ(trs.rotation, (ZgeVector3{0, 0, 0}));
    EXPECT_EQ(ZgeSetRM(ZgeScaling({2, 0, 3})), ZgeMatrix());
}

TEST(ZgeVector, NormalisingZeroStaysZero)
{
    EXPECT_EQ(ZgeNormalised({0, 0, 0}), (ZgeVector3{0, 0, 0}));
    ExpectNear(ZgeNormalised({0, 3, 4}), {0, 0.6, 0.8});
    ExpectNear(ZgeCross({1, 0, 0}, {0, 1, 0}), {0, 0, 1});
    EXPECT_EQ(ZgeDot({1, 2, 3}, {4, 5, 6}), 32);
}

TEST(ZgeBox, IsEmptyUntilItHoldsAPoint)
{
    ZgeBox box;
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_EQ(box.Diagonal(), 0);
    box.Widen(ZgeBox());
    EXPECT_TRUE(box.IsEmpty());
    box.Widen(ZgeVector3{1, 2, 3});
    EXPECT_FALSE(box.IsEmpty());
    EXPECT_EQ(box.Diagonal(), 0);
    box.Widen(ZgeVector3{4, 6, 3});
    EXPECT_EQ(box.Diagonal(), 5);
    EXPECT_EQ(box.Centre(), (ZgeVector3{2.5, 4, 3}));
    box.Widen(ZgeVector3{std::numeric_limits<double>::quiet_NaN(), 0, 0});
    EXPECT_EQ(box.maximum.x, 4);
}
