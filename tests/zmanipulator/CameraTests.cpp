// SPDX-License-Identifier: MIT
// The camera's matrices, movements and framing.
#include "zmanipulator/ZCamera.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>

namespace {
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

ZgeBox MakeBox(const ZgeVector3& a, const ZgeVector3& b)
{
    ZgeBox box;
    box.Widen(a);
    box.Widen(b);
    return box;
}

ZgeVector4 Project(ZCamera& camera, const ZgeVector3& p)
{
    return ZgeVector4{p.x, p.y, p.z, 1} * (camera.ViewMatrix() * camera.ProjectionMatrix());
}

bool IsInside(const ZgeVector4& clip)
{
    return std::abs(clip.x) <= clip.w && std::abs(clip.y) <= clip.w && std::abs(clip.z) <= clip.w;
}

std::vector<ZgeVector3> Corners(const ZgeBox& box)
{
    std::vector<ZgeVector3> corners;
    for (int i = 0; i < 8; ++i)
        corners.push_back({(i & 1) != 0 ? box.maximum.x : box.minimum.x, (i & 2) != 0 ? box.maximum.y : box.minimum.y,
                           (i & 4) != 0 ? box.maximum.z : box.minimum.z});
    return corners;
}

void ExpectNear(const ZgeVector3& actual, const ZgeVector3& expected, double tolerance)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

double Within(double low, double high) { return low + (high - low) * *rc::gen::inRange(0, 100001) / 100000.0; }

ZgeVector3 VectorWithin(double reach) { return {Within(-reach, reach), Within(-reach, reach), Within(-reach, reach)}; }

/// A camera that looks from anywhere to anywhere, with any field of view and shape of window.
ZCamera AnyCamera()
{
    ZCamera camera;
    camera.SetViewport(0, 0, *rc::gen::inRange(1, 3000), *rc::gen::inRange(1, 3000));
    camera.SetFov(Within(5, 120));
    const ZgeVector3 target = VectorWithin(50);
    RC_PRE(camera.LookAt(target + VectorWithin(30), target, {0, 1, 0}));
    ZgeVector3 right, up, back;
    camera.GetAxes(right, up, back);
    RC_PRE(std::abs(back.y) < 0.999);
    return camera;
}

TEST(Camera, LooksAlongMinusZAtFirst)
{
    ZCamera camera;
    const ZgeVector4 centre = Project(camera, {0, 0, 0});
    EXPECT_NEAR(centre.x / centre.w, 0, 1e-12);
    EXPECT_NEAR(centre.y / centre.w, 0, 1e-12);
    EXPECT_TRUE(IsInside(centre));
    const ZgeVector4 right = Project(camera, {1, 0, 0}), above = Project(camera, {0, 1, 0});
    EXPECT_GT(right.x, 0);
    EXPECT_GT(above.y, 0);
}

TEST(Camera, AUnitOfViewSpaceIsOnePercentOfTheDiagonal)
{
    ZCamera camera;
    camera.SetSceneBox(MakeBox({0, 0, 0}, {30, 40, 0}));
    EXPECT_DOUBLE_EQ(camera.GetUnit(), 0.5);
    const ZgeVector3 moved = ZgeTransformDirection({0, 3, 0}, camera.ViewMatrix());
    EXPECT_NEAR(ZgeLength(moved), 6, 1e-12);
}

TEST(Camera, TheUnitDoesNotChangeThePicture)
{
    ZCamera small, large;
    small.SetSceneBox(MakeBox({-1, -1, -1}, {1, 1, 1}));
    large.SetSceneBox(MakeBox({-4, -4, -4}, {4, 4, 4}));
    const ZgeVector4 a = Project(small, {0.3, -0.7, 0.2}), b = Project(large, {0.3, -0.7, 0.2});
    EXPECT_NEAR(a.x / a.w, b.x / b.w, 1e-12);
    EXPECT_NEAR(a.y / a.w, b.y / b.w, 1e-12);
}

TEST(Camera, AnEmptySceneCountsAsABoxOfSizeTwo)
{
    ZCamera camera;
    EXPECT_DOUBLE_EQ(camera.GetUnit(), std::sqrt(12.0) / 100);
    camera.SetSceneBox(MakeBox({0, 0, 0}, {300, 0, 0}));
    camera.SetSceneBox(ZgeBox());
    EXPECT_DOUBLE_EQ(camera.GetUnit(), std::sqrt(12.0) / 100);
    camera.SetSceneBox(MakeBox({0, 0, 0}, {kInfinity, 0, 0}));
    EXPECT_DOUBLE_EQ(camera.GetUnit(), std::sqrt(12.0) / 100);
    camera.SetSceneBox(MakeBox({5, 5, 5}, {5, 5, 5}));
    EXPECT_DOUBLE_EQ(camera.GetUnit(), std::sqrt(12.0) / 100);
}

TEST(Camera, TheOriginOfCameraSpaceIsTheEye)
{
    ZCamera camera;
    ASSERT_TRUE(camera.LookAt({3, 4, 5}, {1, 1, 1}, {0, 1, 0}));
    const ZgeVector4 eye = camera.CameraToScene({0, 0, 0, 1});
    EXPECT_EQ(eye.x, 3);
    EXPECT_EQ(eye.y, 4);
    EXPECT_EQ(eye.z, 5);
    EXPECT_EQ(eye.w, 1);
}

RC_GTEST_PROP(CameraProperty, CameraToSceneUndoesTheViewMatrix, ())
{
    ZCamera camera = AnyCamera();
    const ZgeVector3 p = VectorWithin(40);
    const ZgeVector4 there = ZgeVector4{p.x, p.y, p.z, 1} * camera.ViewMatrix();
    const ZgeVector4 back = camera.CameraToScene(there);
    RC_ASSERT(ZgeLength(ZgeVector3{back.x, back.y, back.z} - p) < 1e-9);
}

RC_GTEST_PROP(CameraProperty, AFramedBoxLiesWhollyInTheClipVolume, ())
{
    ZCamera camera = AnyCamera();
    const ZgeVector3 centre = VectorWithin(100);
    const double size = std::pow(10, Within(-3, 3));
    const ZgeVector3 reach{Within(0, size), Within(0, size), Within(0, size)};
    const ZgeBox box = MakeBox(centre - reach, centre + reach);
    camera.SetSceneBox(box);
    ZgeVector3 right, up, back, rightAfter, upAfter, backAfter;
    camera.GetAxes(right, up, back);
    camera.FrameBox(box);
    camera.GetAxes(rightAfter, upAfter, backAfter);
    RC_ASSERT(ZgeLength(back - backAfter) < 1e-6);
    for (const ZgeVector3& corner : Corners(box))
        RC_ASSERT(IsInside(Project(camera, corner)));
}

RC_GTEST_PROP(CameraProperty, NearAndFarHoldTheSceneInFrontOfTheEye, ())
{
    ZCamera camera = AnyCamera();
    const ZgeVector3 centre = VectorWithin(60);
    const ZgeVector3 reach{Within(0.1, 20), Within(0.1, 20), Within(0.1, 20)};
    const ZgeBox box = MakeBox(centre - reach, centre + reach);
    camera.SetSceneBox(box);
    ZgeVector3 right, up, back;
    camera.GetAxes(right, up, back);
    for (const ZgeVector3& corner : Corners(box)) {
        // What is nearer than a fiftieth of the way to the target may be cut off.
        if (ZgeDot(camera.GetEye() - corner, back) < 0.02 * camera.GetDistance())
            continue;
        const ZgeVector4 clip = Project(camera, corner);
        RC_ASSERT(clip.z <= clip.w);
        RC_ASSERT(clip.z >= -clip.w);
    }
}

RC_GTEST_PROP(CameraProperty, OrbitAndBackIsWhereItWas, ())
{
    ZCamera camera = AnyCamera();
    const ZgeVector3 eye = camera.GetEye();
    const double distance = camera.GetDistance();
    const double right = Within(-360, 360), up = Within(-1.5, 1.5);
    camera.Orbit(right, up);
    RC_ASSERT(std::abs(camera.GetDistance() - distance) < 1e-9 * distance);
    camera.Orbit(-right, -up);
    RC_ASSERT(ZgeLength(camera.GetEye() - eye) < 1e-8 * distance);
}

RC_GTEST_PROP(CameraProperty, PanMovesTheTargetByThatManyPixels, ())
{
    ZCamera camera = AnyCamera();
    const ZgeVector3 held = camera.GetTarget();
    const double right = Within(-500, 500), down = Within(-500, 500);
    camera.Pan(right, down);
    const ZgeVector4 clip = Project(camera, held);
    RC_ASSERT(std::abs(clip.x / clip.w * camera.ViewportWidth() / 2 - right) < 1e-6);
    RC_ASSERT(std::abs(clip.y / clip.w * camera.ViewportHeight() / 2 + down) < 1e-6);
}

TEST(Camera, OrbitStopsBeforeTheAxis)
{
    ZCamera camera;
    camera.Orbit(0, 500);
    ZgeVector3 right, up, back;
    camera.GetAxes(right, up, back);
    EXPECT_NEAR(back.y, 1, 1e-5);
    EXPECT_GT(ZgeLength(right), 0.99);
    EXPECT_GT(camera.GetEye().z, 0); // not over it
    camera.Orbit(0, -500);
    camera.GetAxes(right, up, back);
    EXPECT_NEAR(back.y, -1, 1e-5);
}

TEST(Camera, OrbitGoesToTheRightAndUp)
{
    ZCamera camera;
    camera.Orbit(90, 0);
    ExpectNear(camera.GetEye(), {10, 0, 0}, 1e-12);
    camera.Orbit(0, 30);
    EXPECT_NEAR(camera.GetEye().y, 5, 1e-12);
}

TEST(Camera, ZoomKeepsTheDirectionAndStopsShortOfTheTarget)
{
    ZCamera camera;
    camera.Zoom(0.5);
    ExpectNear(camera.GetEye(), {0, 0, 5}, 1e-12);
    for (int i = 0; i < 200; ++i)
        camera.Zoom(0.5);
    EXPECT_GT(camera.GetEye().z, 0);
    const ZgeVector3 before = camera.GetEye();
    for (const double factor : {0.0, -1.0, kInfinity, kNotANumber})
        camera.Zoom(factor);
    EXPECT_EQ(camera.GetEye(), before);
    for (int i = 0; i < 2000; ++i)
        camera.Zoom(2);
    EXPECT_TRUE(std::isfinite(camera.ProjectionMatrix()(2, 2)));
}

TEST(Camera, FramingAnEmptyBoxChangesNothing)
{
    ZCamera camera;
    const ZgeMatrix view = camera.ViewMatrix();
    camera.FrameBox(ZgeBox());
    EXPECT_EQ(camera.ViewMatrix(), view);
}

TEST(Camera, FramingABoxThatIsNotFiniteChangesNothing)
{
    ZCamera camera;
    const ZgeMatrix view = camera.ViewMatrix();
    ZgeBox box = MakeBox({0, 0, 0}, {1, 1, 1});
    box.maximum.y = kInfinity;
    camera.FrameBox(box);
    box.maximum.y = kNotANumber;
    camera.FrameBox(box);
    camera.FrameBox(MakeBox({-1e308, -1e308, -1e308}, {1e308, 1e308, 1e308}));
    EXPECT_EQ(camera.ViewMatrix(), view);
}

TEST(Camera, FramingAPointShowsItsNeighbourhood)
{
    ZCamera camera;
    camera.SetSceneBox(MakeBox({-50, -50, -50}, {50, 50, 50}));
    camera.FrameBox(MakeBox({7, 8, 9}, {7, 8, 9}));
    ExpectNear(camera.GetTarget(), {7, 8, 9}, 1e-12);
    EXPECT_GT(camera.GetDistance(), 2 * camera.GetUnit());
    EXPECT_LT(camera.GetDistance(), 100 * camera.GetUnit());
}

TEST(Camera, LookAtRefusesWhatIsNoView)
{
    ZCamera camera;
    const ZgeVector3 eye = camera.GetEye();
    EXPECT_FALSE(camera.LookAt({1, 1, 1}, {1, 1, 1}, {0, 1, 0}));
    EXPECT_FALSE(camera.LookAt({0, 5, 0}, {0, 0, 0}, {0, 1, 0}));
    EXPECT_FALSE(camera.LookAt({0, 5, 0}, {0, 0, 0}, {0, 0, 0}));
    EXPECT_FALSE(camera.LookAt({kNotANumber, 5, 0}, {0, 0, 0}, {0, 1, 0}));
    EXPECT_FALSE(camera.LookAt({0, 5, 0}, {0, kInfinity, 0}, {0, 1, 0}));
    EXPECT_EQ(camera.GetEye(), eye);
    EXPECT_TRUE(camera.LookAt({0, 5, 0}, {0, 0, 0}, {0, 0, -1}));
}

TEST(Camera, TheFieldOfViewIsVerticalAndClamped)
{
    ZCamera camera;
    camera.SetFov(90);
    const ZgeVector4 clip = Project(camera, {0, 10, 0});
    EXPECT_NEAR(clip.y / clip.w, 1, 1e-12);
    camera.SetFov(0);
    EXPECT_EQ(camera.GetFov(), 1);
    camera.SetFov(500);
    EXPECT_EQ(camera.GetFov(), 170);
    camera.SetFov(kNotANumber);
    EXPECT_EQ(camera.GetFov(), 170);
}

TEST(Camera, TheViewportHasAtLeastOnePixel)
{
    ZCamera camera;
    camera.SetViewport(3, 4, 0, -7);
    EXPECT_EQ(camera.ViewportX(), 3);
    EXPECT_EQ(camera.ViewportY(), 4);
    EXPECT_EQ(camera.ViewportWidth(), 1);
    EXPECT_EQ(camera.ViewportHeight(), 1);
}

TEST(Camera, ASceneBehindTheEyeStillHasPlanes)
{
    ZCamera camera;
    camera.SetSceneBox(MakeBox({-1, -1, 90}, {1, 1, 92}));
    const ZgeMatrix& projection = camera.ProjectionMatrix();
    EXPECT_LT(projection(2, 2), -1);
    EXPECT_LT(projection(3, 2), 0);
    EXPECT_TRUE(IsInside(Project(camera, camera.GetTarget())));
}

TEST(Camera, SurroundingsWidenThePlanesButNotTheUnit)
{
    ZCamera camera;
    camera.SetSceneBox(MakeBox({-1, -1, -1}, {1, 1, 1}));
    const double unit = camera.GetUnit();
    EXPECT_FALSE(IsInside(Project(camera, {0, 0, -50})));
    camera.SetSurroundings(MakeBox({-1, 0, -60}, {1, 0, 5}));
    EXPECT_TRUE(IsInside(Project(camera, {0, 0, -50})));
    EXPECT_EQ(camera.GetUnit(), unit);
}
} // namespace
