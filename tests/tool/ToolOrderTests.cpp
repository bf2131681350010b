// SPDX-License-Identifier: MIT
// The order in which the tool meets the host and takes its leave.
#include "HostRecorder.h"
#include "ToolStage.h"

namespace {

using testing::ElementsAre;

class ToolOrder : public ToolStage
{
};

TEST_F(ToolOrder, RegistersAtItsMakingAndTakesAllBackAtItsEnd)
{
    std::unique_ptr<ZToolCharacterWeighting> made;
    {
        const HostRecording recording;
        made = std::make_unique<ZToolCharacterWeighting>();
        // The first "notify +" is the constraint's own, made right after the manipulator.
        EXPECT_THAT(recording.Calls(),
                    ElementsAre("manipulator Skin", "notify +", "notify +", "state +", "shortcut keys",
                                "settings Weighting/DeadWeight", "scene +", "size", "action 1"));
    }
    ZManipulator* const manipulator = made->Manipulator();
    {
        const HostRecording recording;
        made.reset();
        EXPECT_THAT(recording.Calls(), ElementsAre("notify -", "scene -", "notify -", "state -", "shortcut keys"));
    }
    // The manipulator is the set's; it was neither destroyed nor taken out.
    EXPECT_THAT(ZManipulator_GetManipulatorSet()->GetManipulators(), testing::Contains(manipulator));
    ZManipulator_GetManipulatorSet()->ManipulatorRemove(manipulator);
}

TEST_F(ToolOrder, SettingsAreReadOnceAndNeverWritten)
{
    const HostRecording recording;
    OpenTool();
    DropModels(AddCharacter("Body"));
    PickAll();
    SelectBones({0});
    SlideTo(0, {10, 20, 30});
    session->CloseTool(tool);
    const auto& calls = recording.Calls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "settings Weighting/DeadWeight"), 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "settings written"), 0);
}

TEST_F(ToolOrder, WithABoxConstraintRestPositionOutlivesTheDeactivation)
{
    OpenTool();
    ZModelPolymesh* const body = AddCharacter("Body");
    DropModels(body);
    ZModel* const knee = body->GetSkin()->LinkModel(1);
    const ZgeMatrix bound = knee->GetTransformMatrix(true);
    knee->SetPosedTransform(ZgeRotationFromEuler({0, 0, 40}) * ZgeTranslation({0.5, 1, 0}));
    const ZgeMatrix bent = knee->GetTransformMatrix(true);
    const auto expectKneeAt = [&](const ZgeMatrix& place) {
        session->AfterEvent();
        for (int i = 0; i < 16; ++i)
            EXPECT_NEAR(knee->GetTransformMatrix(true).Data()[i], place.Data()[i], 1e-9) << i;
    };
    Panel().toRestPositionButton.UserClick();
    expectKneeAt(bound);

    const HostWithABoxConstraint host(tool->Constraint());
    tool->ToolDeactivate();
    EXPECT_FALSE(tool->Constraint()->ConstraintGetEnabled());
    EXPECT_TRUE(tool->Manipulator()->ManipulatorGetHidden());
    EXPECT_TRUE(Panel().restPositionMode);
    EXPECT_TRUE(Panel().toRestPositionButton.GetState());
    expectKneeAt(bent); // nobody holds it while the window is hidden
    tool->ToolActivate();
    ASSERT_EQ(tool->Constraint()->GetEntries().size(), 1U);
    EXPECT_EQ(tool->Constraint()->GetEntries()[0]->bones.GetCount(), 2);
    expectKneeAt(bound);
}

} // namespace
