// SPDX-License-Identifier: MIT
// Curves, and the scene's time.
#include "TinyModels.h"

#include <rapidcheck/gtest.h>

#include <cmath>

namespace {

ZAnimationChannel Curve(ZInterpolation interpolation, std::vector<float> times, std::vector<float> values,
                        int components, ZAnimationPath path = ZAnimationPath::Translation)
{
    return {nullptr, path, interpolation, std::move(times), std::move(values), components};
}

std::vector<float> At(const ZAnimationChannel& channel, double seconds)
{
    std::vector<float> value(static_cast<size_t>(channel.components), -99.0F);
    ZAnimation_Evaluate(channel, seconds, value.data());
    return value;
}

TEST(AnimationCurve, StepHoldsTheKeyBefore)
{
    const ZAnimationChannel curve = Curve(ZInterpolation::Step, {1, 2, 4}, {10, 20, 40}, 1);
    EXPECT_EQ(At(curve, 0)[0], 10);
    EXPECT_EQ(At(curve, 1.999)[0], 10);
    EXPECT_EQ(At(curve, 2)[0], 20);
    EXPECT_EQ(At(curve, 9)[0], 40);
}

TEST(AnimationCurve, LinearGoesStraightBetweenKeysAndHoldsTheEnds)
{
    const ZAnimationChannel curve = Curve(ZInterpolation::Linear, {1, 2, 4}, {0, 0, 10, 100, 20, 0}, 2);
    EXPECT_THAT(At(curve, -5), testing::ElementsAre(0, 0));
    EXPECT_THAT(At(curve, 1.5), testing::ElementsAre(5, 50));
    EXPECT_THAT(At(curve, 3), testing::ElementsAre(15, 50));
    EXPECT_THAT(At(curve, 4), testing::ElementsAre(20, 0));
    EXPECT_THAT(At(curve, 400), testing::ElementsAre(20, 0));
}

TEST(AnimationCurve, RotationsGoTheShortWay)
{
    const float half = static_cast<float>(std::sqrt(0.5));
    // From no turn to a quarter turn about Z, whose quaternion is given with the other sign.
    const ZAnimationChannel curve =
        Curve(ZInterpolation::Linear, {0, 1}, {0, 0, 0, 1, 0, 0, -half, -half}, 4, ZAnimationPath::Rotation);
    const std::vector<float> middle = At(curve, 0.5);
    EXPECT_NEAR(std::abs(middle[2]), std::sin(M_PI / 8), 1e-6);
    EXPECT_NEAR(std::abs(middle[3]), std::cos(M_PI / 8), 1e-6);
    EXPECT_GT(middle[2] * middle[3], 0);
}

TEST(AnimationCurve, RotationsTurnAtOneSpeed)
{
    const ZAnimationChannel curve =
        Curve(ZInterpolation::Linear, {0, 1}, {0, 0, 0, 1, 1, 0, 0, 0}, 4, ZAnimationPath::Rotation);
    for (double t = 0; t <= 1; t += 0.125) {
        const std::vector<float> value = At(curve, t);
        EXPECT_NEAR(value[0], std::sin(t * M_PI / 2), 1e-6);
        EXPECT_NEAR(value[3], std::cos(t * M_PI / 2), 1e-6);
    }
}

TEST(AnimationCurve, EqualRotationsStayUnit)
{
    const ZAnimationChannel curve =
        Curve(ZInterpolation::Linear, {0, 1}, {0, 0, 0.6F, 0.8F, 0, 0, 0.6F, 0.8F}, 4, ZAnimationPath::Rotation);
    EXPECT_NEAR(At(curve, 0.3)[2], 0.6, 1e-6);
    EXPECT_NEAR(At(curve, 0.3)[3], 0.8, 1e-6);
}

TEST(AnimationCurve, CubicSplineIsHermitesWithTangentsScaledByTime)
{
    // In-tangent, value, out-tangent of each key; the keys are two seconds apart.
    const ZAnimationChannel curve = Curve(ZInterpolation::CubicSpline, {1, 3}, {9, 2, 3, -1, 4, 9}, 1);
    EXPECT_EQ(At(curve, 0)[0], 2);
    EXPECT_EQ(At(curve, 1)[0], 2);
    EXPECT_EQ(At(curve, 3)[0], 4);
    EXPECT_EQ(At(curve, 8)[0], 4);
    // t = 1/2: v0/2 + td b/8 + v1/2 - td a/8.
    EXPECT_FLOAT_EQ(At(curve, 2)[0], 1 + 2 * 3 / 8.0F + 2 + 2 * 1 / 8.0F);
    // t = 1/4: 27/32 v0 + td 9/64 b + 5/32 v1 - td 3/64 a.
    EXPECT_FLOAT_EQ(At(curve, 1.5)[0], 54 / 32.0F + 54 / 64.0F + 20 / 32.0F + 6 / 64.0F);
}

TEST(AnimationCurve, CubicRotationsAreNormalised)
{
    const ZAnimationChannel curve = Curve(
        ZInterpolation::CubicSpline, {0, 1},
        {0, 0, 0, 0, 0, 0, 0, 1, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0.6F, 0, 0.8F, 0, 0, 0, 0}, 4, ZAnimationPath::Rotation);
    const std::vector<float> value = At(curve, 0.4);
    EXPECT_NEAR(std::sqrt(value[0] * value[0] + value[1] * value[1] + value[2] * value[2] + value[3] * value[3]), 1,
                1e-6);
}

TEST(AnimationCurve, OneKeyHoldsAlways)
{
    const ZAnimationChannel curve = Curve(ZInterpolation::Linear, {2}, {7}, 1);
    for (const double t : {0.0, 2.0, 5.0})
        EXPECT_EQ(At(curve, t)[0], 7);
}

TEST(AnimationCurve, KeysAtOneTimeJump)
{
    const ZAnimationChannel curve = Curve(ZInterpolation::Linear, {0, 1, 1, 2}, {0, 10, 50, 60}, 1);
    EXPECT_FLOAT_EQ(At(curve, 0.999)[0], 9.99F);
    EXPECT_EQ(At(curve, 1)[0], 50);
    EXPECT_EQ(At(curve, 1.5)[0], 55);
}

TEST(AnimationCurve, WithoutKeysOrWithValuesMissingNothingIsReadThatIsNotThere)
{
    EXPECT_EQ(At(Curve(ZInterpolation::Linear, {}, {}, 1), 1)[0], -99);
    EXPECT_EQ(At(Curve(ZInterpolation::Linear, {0, 1, 2}, {5, 6}, 1), 9)[0], 6);
    EXPECT_EQ(At(Curve(ZInterpolation::CubicSpline, {0}, {5, 6}, 1), 0)[0], -99);
}

RC_GTEST_PROP(AnimationProperty, LinearStaysBetweenItsNeighbours, (unsigned seed))
{
    std::vector<float> times, values;
    float time = 0;
    for (int i = 0; i < 10; ++i) {
        seed = seed * 1664525U + 1013904223U;
        time += static_cast<float>(seed % 100) / 50;
        times.push_back(time);
        values.push_back(static_cast<float>(seed % 977));
    }
    const ZAnimationChannel curve = Curve(ZInterpolation::Linear, times, values, 1);
    const double seconds = *rc::gen::inRange(-100, 2200) / 100.0;
    const float value = At(curve, seconds)[0];
    float low = values.back(), high = values.back();
    for (size_t i = 0; i + 1 < times.size(); ++i) {
        if (times[i] <= seconds && seconds < times[i + 1]) {
            low = std::min(values[i], values[i + 1]);
            high = std::max(values[i], values[i + 1]);
        }
    }
    if (seconds < times.front())
        low = high = values.front();
    RC_ASSERT(low <= value && value <= high);
}

class SceneTime : public ReportTest
{
protected:
    ZScene scene;
    ZModel* bone = nullptr;
    ZModel* other = nullptr;

    void SetUp() override
    {
        ReportTest::SetUp();
        bone = scene.AddModel(MakeBone("bone"));
        other = scene.AddModel(MakeBone("other", {0, 5, 0}));
        ZNodeTRS trs;
        trs.translation = {1, 2, 3};
        trs.rotation = {0, 0, 1, 0};
        trs.scaling = {2, 0, 2};
        bone->SetFileTRS(trs);
        AddMove("walk", bone, 10);
        AddMove("wave", other, 20);
    }
    /// An animation of two seconds that moves `target` along X to `end`.
    void AddMove(const char* name, ZModel* target, float end)
    {
        auto animation = std::make_unique<ZAnimation>();
        animation->name = name;
        animation->channels.push_back(
            {target, ZAnimationPath::Translation, ZInterpolation::Linear, {0, 2}, {0, 0, 0, end, 0, 0}, 3});
        scene.AddAnimation(std::move(animation));
    }
    double X(const ZModel* model) const { return model->GetTransformMatrix(true)(3, 0); }
};

TEST_F(SceneTime, NothingMovesWithoutAnAnimation)
{
    scene.SetTime(1);
    EXPECT_EQ(scene.GetTime(), 1);
    EXPECT_EQ(scene.GetAnimationTime(), 1);
    EXPECT_EQ(X(bone), 1);
    EXPECT_FALSE(bone->GetAnimatedTransform());
}

TEST_F(SceneTime, AnAnimationOfOnePartKeepsTheOthers)
{
    scene.SetAnimation(0);
    scene.SetTime(1);
    const ZgeMatrix& moved = bone->GetTransformMatrix(true);
    EXPECT_DOUBLE_EQ(moved(3, 0), 5);
    EXPECT_DOUBLE_EQ(moved(0, 0), -2) << "turned half about Z and scaled by 2";
    EXPECT_DOUBLE_EQ(moved(1, 1), 0);
    EXPECT_EQ(X(other), 0);
    EXPECT_EQ(other->GetTransformMatrix(true)(3, 1), 5);
}

TEST_F(SceneTime, ChoosingAnotherAnimationPutsTheFirstOnesNodesBack)
{
    scene.SetAnimation(0);
    scene.SetTime(1);
    scene.SetAnimation(1);
    EXPECT_EQ(X(bone), 1);
    EXPECT_DOUBLE_EQ(X(other), 10);
    scene.SetAnimation(-1);
    EXPECT_EQ(X(other), 0);
    EXPECT_EQ(scene.GetAnimation(), -1);
    EXPECT_EQ(scene.GetTime(), 1);
}

TEST_F(SceneTime, LoopsBeyondTheEndOrHoldsIt)
{
    scene.SetAnimation(0);
    scene.SetTime(2);
    EXPECT_DOUBLE_EQ(X(bone), 10) << "the end itself is shown";
    scene.SetTime(5);
    EXPECT_DOUBLE_EQ(X(bone), 5);
    EXPECT_DOUBLE_EQ(scene.GetAnimationTime(), 1);
    EXPECT_EQ(scene.GetTime(), 5);
    scene.SetLooping(false);
    scene.SetTime(5);
    EXPECT_DOUBLE_EQ(X(bone), 10);
    scene.SetTime(-3);
    EXPECT_DOUBLE_EQ(X(bone), 0);
}

TEST_F(SceneTime, APoseByHandStaysOverTheAnimationUntilItIsCleared)
{
    scene.SetAnimation(0);
    bone->SetPosedTransform(ZgeTranslation({77, 0, 0}));
    scene.SetTime(1);
    EXPECT_EQ(X(bone), 77);
    scene.ClearPose();
    EXPECT_DOUBLE_EQ(X(bone), 5);
}

TEST_F(SceneTime, MorphWeightsMoveAndComeBack)
{
    auto* const mesh = static_cast<ZModelPolymesh*>(scene.AddModel(MakePoints("mesh", 2)));
    ZMorphTarget target;
    target.positions.assign(6, 1.0F);
    mesh->SetMorphTargets({target, target});
    mesh->SetMorphWeights({0.25F, 0});
    auto animation = std::make_unique<ZAnimation>();
    animation->channels.push_back(
        {mesh, ZAnimationPath::MorphWeights, ZInterpolation::Linear, {0, 1}, {0, 0, 1, 0.5F}, 2});
    animation->channels.push_back({bone, ZAnimationPath::MorphWeights, ZInterpolation::Linear, {0, 1}, {0, 1}, 1});
    scene.SetAnimation(scene.AddAnimation(std::move(animation)));
    scene.SetTime(0.5);
    EXPECT_THAT(mesh->GetMorphWeights(), testing::ElementsAre(0.5F, 0.25F));
    EXPECT_FLOAT_EQ(mesh->Geometry().VertexPositions(1)[1], 0.75F);
    EXPECT_FALSE(mesh->GetAnimatedTransform());
    scene.SetAnimation(-1);
    EXPECT_THAT(mesh->GetMorphWeights(), testing::ElementsAre(0.25F, 0));
}

TEST_F(SceneTime, ABrokenCurveLeavesTheFilesValue)
{
    auto animation = std::make_unique<ZAnimation>();
    animation->channels.push_back(
        {bone, ZAnimationPath::Translation, ZInterpolation::Linear, {0, 1}, {NAN, 0, 0, NAN, 0, 0}, 3});
    animation->channels.push_back({bone, ZAnimationPath::Rotation, ZInterpolation::Linear, {}, {}, 4});
    animation->channels.push_back({bone, ZAnimationPath::Scaling, ZInterpolation::Linear, {0}, {1, 1}, 2});
    scene.SetAnimation(scene.AddAnimation(std::move(animation)));
    scene.SetTime(0.5);
    EXPECT_EQ(bone->GetTransformMatrix(true), bone->GetFileTransform());
}

TEST_F(SceneTime, ADeletedTargetLeavesTheAnimation)
{
    scene.SetAnimation(0);
    scene.SetTime(1);
    scene.DeleteModel(bone);
    scene.SetTime(1.5);
    EXPECT_TRUE(scene.GetAnimations()[0]->channels.empty());
    EXPECT_EQ(scene.GetAnimations()[0]->GetDuration(), 0);
    EXPECT_EQ(scene.GetAnimationTime(), 0);
}

TEST_F(SceneTime, AWrongNumberIsMisuse)
{
    EXPECT_THROW(scene.SetAnimation(2), ZHostMisuse);
    EXPECT_THROW(scene.SetAnimation(-2), ZHostMisuse);
    EXPECT_THROW(scene.SetTime(NAN), ZHostMisuse);
    EXPECT_THROW(scene.AddAnimation(nullptr), ZHostMisuse);
    EXPECT_EQ(scene.GetAnimation(), -1);
}

TEST_F(SceneTime, ClearingTheSceneForgetsAnimations)
{
    scene.SetAnimation(1);
    scene.Clear();
    EXPECT_TRUE(scene.GetAnimations().empty());
    EXPECT_EQ(scene.GetAnimation(), -1);
    EXPECT_EQ(scene.GetTime(), 0);
    scene.SetTime(3);
}

} // namespace
