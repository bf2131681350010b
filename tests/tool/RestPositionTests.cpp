// SPDX-License-Identifier: MIT
// Rest position while time goes on: what holds, what gives back, and edits in the middle of playback.
#include "ToolStage.h"

#include "zconstraints/ZEvaluateManager.h"

#include <cmath>

namespace {

using testing::ElementsAre;

/// A character whose knee is turned by an animation, half of every vertex on it.
class RestPosition : public ToolStage
{
protected:
    RestPosition()
    {
        OpenTool();
        body = AddCharacter("Body");
        hip = body->GetSkin()->LinkModel(0);
        knee = body->GetSkin()->LinkModel(1);
        bound = knee->GetTransformMatrix(true);
        auto animation = std::make_unique<ZAnimation>();
        ZAnimationChannel turn;
        turn.target = knee;
        turn.path = ZAnimationPath::Rotation;
        turn.components = 4;
        for (int key = 0; key <= 10; ++key) {
            turn.times.push_back(0.1F * static_cast<float>(key));
            const float half = 0.05F * static_cast<float>(key);
            turn.values.insert(turn.values.end(), {0.0F, 0.0F, std::sin(half), std::cos(half)});
        }
        animation->channels.push_back(turn);
        Scene().SetAnimation(Scene().AddAnimation(std::move(animation)));
        DropModels(body);
    }
    /// One frame of playback.
    void PlayTo(double seconds)
    {
        Scene().SetTime(seconds);
        session->AfterEvent();
    }
    void Click() { ASSERT_TRUE(Panel().toRestPositionButton.UserClick()); }
    static double Difference(const ZgeMatrix& a, const ZgeMatrix& b)
    {
        double largest = 0;
        for (int i = 0; i < 16; ++i)
            largest = std::max(largest, std::abs(a.Data()[i] - b.Data()[i]));
        return largest;
    }
    /// Where the animation has the knee at a time.
    ZgeMatrix Animated(double seconds) const
    {
        return ZgeRotationFromEuler({0, 0, seconds * 180 / 3.14159265358979323846}) * bound;
    }

    ZModelPolymesh* body = nullptr;
    ZModel* hip = nullptr;
    ZModel* knee = nullptr;
    ZgeMatrix bound;
};

TEST_F(RestPosition, HoldsAtEveryTimeAndGivesThePoseOfTheTimeBack)
{
    PlayTo(0.2);
    EXPECT_LT(Difference(knee->GetTransformMatrix(true), Animated(0.2)), 1e-6);
    Click();
    for (const double seconds : {0.2, 0.5, 0.9}) {
        PlayTo(seconds);
        EXPECT_LT(Difference(knee->GetTransformMatrix(true), bound), 1e-9) << seconds;
    }
    Click();
    session->AfterEvent();
    EXPECT_LT(Difference(knee->GetTransformMatrix(true), Animated(0.9)), 1e-6);
}

TEST_F(RestPosition, SpringsBackWhileNoCheckedModelHasABone)
{
    tool->ModelListBox().UserSetCheck(0, false);
    EXPECT_TRUE(Panel().toRestPositionButton.UserClick());
    EXPECT_FALSE(Panel().toRestPositionButton.GetState());
    EXPECT_FALSE(Panel().restPositionMode);
    EXPECT_FALSE(tool->Constraint()->ConstraintGetEnabled());
    tool->ModelListBox().UserSetCheck(0, true);
    Click();
    EXPECT_TRUE(Panel().restPositionMode);
}

TEST_F(RestPosition, TheAnchorMayMoveWhileTheSkeletonIsHeld)
{
    Click();
    PlayTo(0.5);
    hip->SetPosedTransform(ZgeRotationFromEuler({0, 0, 90}) * ZgeTranslation({3, 0, 0}));
    PlayTo(0.6);
    const ZgeMatrix anchor = ZgeInverse(ZgeTranslation({0, 1, 0})) * hip->GetTransformMatrix(true);
    EXPECT_LT(Difference(knee->GetTransformMatrix(true), bound * anchor), 1e-9);
    const float* const places = body->Geometry().VertexPositions(1);
    for (int vertex = 0; vertex < 4; ++vertex) {
        const ZgeVector3 expected = ZgeTransformPoint({1.0 * vertex, 0, 0}, anchor);
        EXPECT_NEAR(static_cast<double>(places[4 * vertex]), expected.x, 1e-5);
        EXPECT_NEAR(static_cast<double>(places[4 * vertex + 1]), expected.y, 1e-5);
    }
}

TEST_F(RestPosition, AWeightEditDuringPlaybackShowsInTheNextFrameAndStaysOneStep)
{
    PickAll();
    SelectBones({0, 1});
    const size_t steps = UndoNames().size();
    const auto heightOf = [this](int vertex) { return body->Geometry().VertexPositions(1)[4 * vertex + 1]; };
    PlayTo(0.3);
    ZtSpread& spread = Panel().spreadWeights;
    spread.UserSlide(1, kSpreadSlider, kViewPress, 60); // the knee's row
    PlayTo(0.4);
    const float before = heightOf(0);
    for (const double percent : {70.0, 80.0, 90.0, 100.0}) {
        spread.UserSlide(1, kSpreadSlider, kViewValueChanged, percent);
        PlayTo(0.4 + percent / 1000);
    }
    spread.UserSlide(1, kSpreadSlider, kViewRelease, 100);
    PlayTo(0.6);
    EXPECT_EQ(SkinWeight(body, 1, 0), 1);
    // All of the first vertex is on the knee now: in the next frame it stands where the knee carries it.
    const ZgeVector3 carried = ZgeTransformPoint({0, 0, 0}, ZgeInverse(bound) * Animated(0.6));
    EXPECT_NEAR(static_cast<double>(heightOf(0)), carried.y, 1e-5);
    EXPECT_NE(heightOf(0), before);
    ASSERT_EQ(UndoNames().size(), steps + 1);
    EXPECT_EQ(UndoNames().front(), "Apply Weight Change");
    PlayTo(0.7);
    EXPECT_TRUE(Undo());
    PlayTo(0.7);
    EXPECT_EQ(SkinWeight(body, 1, 0), 0.5);
    EXPECT_EQ(UndoNames().size(), steps);
    const ZgeVector3 half = ZgeTransformPoint({0, 0, 0}, ZgeInverse(bound) * Animated(0.7));
    EXPECT_NEAR(static_cast<double>(heightOf(0)), half.y / 2, 1e-5);
}

TEST_F(RestPosition, APosedBoneIsHeldAndItsPoseComesBack)
{
    knee->SetPosedTransform(ZgeRotationFromEuler({0, 0, 40}) * ZgeTranslation({0.5, 1, 0}));
    const ZgeMatrix posed = knee->GetTransformMatrix(true);
    Click();
    PlayTo(0.5);
    EXPECT_LT(Difference(knee->GetTransformMatrix(true), bound), 1e-9);
    Click();
    session->AfterEvent();
    EXPECT_LT(Difference(knee->GetTransformMatrix(true), posed), 1e-12);
}

} // namespace
