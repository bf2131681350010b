// SPDX-License-Identifier: MIT
// Constraints: enabling, connectors, reference objects, and what happens to what they drove.
#include "ScriptedConstraint.h"
#include "zbaselib/ZReport.h"

#include <gmock/gmock.h>
#include <memory>
#include <stdexcept>

namespace {
class Constraint : public testing::Test
{
protected:
    void SetUp() override { ZReport_ClearWarnings(); }
    void TearDown() override
    {
        ZReport_ClearWarnings();
        ZReport_SetMisuseFatal(true);
    }
    static bool Pass() { return ZEvaluateManager::TheOne()->Evaluate(0); }
    /// Drives the tip to a place.
    void DriveTip(ScriptedConstraint& constraint, const ZgeTRS& to)
    {
        constraint.Drive(m_tip);
        constraint.evaluate = [&constraint, to](const ZEvaluateInfo& info) {
            return ScriptedConstraint::Write(constraint.targets[0], to, info);
        };
    }

    ZScene m_scene;
    ZModel* m_root = AddBone(m_scene, "root", {1, 0, 0});
    ZModel* m_tip = AddBone(m_scene, "tip", {0, 2, 0}, m_root);
    ZModel* m_leaf = AddBone(m_scene, "leaf", {0, 0, 3}, m_tip);
};
} // namespace

TEST_F(Constraint, IsKnownToTheManagerWhileItLives)
{
    const size_t before = ZEvaluateManager::TheOne()->GetConstraints().size();
    {
        const ScriptedConstraint constraint;
        EXPECT_EQ(ZEvaluateManager::TheOne()->GetConstraints().back(), &constraint);
    }
    EXPECT_EQ(ZEvaluateManager::TheOne()->GetConstraints().size(), before);
}

TEST_F(Constraint, EnablingSetsUpAndDisablingReleases)
{
    ScriptedConstraint constraint;
    EXPECT_FALSE(ZEvaluateManager::TheOne()->HasWork());
    EXPECT_TRUE(constraint.ConstraintSetEnabled(true));
    EXPECT_EQ(constraint.setups, 1);
    EXPECT_TRUE(ZEvaluateManager::TheOne()->HasWork());
    EXPECT_FALSE(constraint.ConstraintSetEnabled(false));
    EXPECT_EQ(constraint.releases, 1);
    EXPECT_FALSE(constraint.ConstraintSetEnabled(false));
    EXPECT_EQ(constraint.releases, 1) << "nothing to release the second time";
    EXPECT_FALSE(ZEvaluateManager::TheOne()->HasWork());
}

TEST_F(Constraint, IsEvaluatedOnlyWhileEnabledOrMarked)
{
    ScriptedConstraint constraint;
    Pass();
    EXPECT_EQ(constraint.evaluations, 0);
    constraint.MarkForEvaluation();
    EXPECT_TRUE(ZEvaluateManager::TheOne()->HasWork());
    Pass();
    EXPECT_EQ(constraint.evaluations, 1);
    EXPECT_FALSE(constraint.IsMarkedForEvaluation());
    Pass();
    EXPECT_EQ(constraint.evaluations, 1);
    constraint.ConstraintSetEnabled(true);
    Pass();
    Pass();
    EXPECT_EQ(constraint.evaluations, 3);
}

TEST_F(Constraint, DrivesAnObjectAndItsChildrenFollow)
{
    ScriptedConstraint constraint;
    DriveTip(constraint, {{5, 6, 7, 1}, {0, 0, 90}, {1, 1, 1}});
    constraint.ConstraintSetEnabled(true);
    EXPECT_TRUE(Pass());
    EXPECT_EQ(PlaceOf(m_tip), (ZgeVector3{5, 6, 7}));
    EXPECT_EQ(PlaceOf(m_leaf), (ZgeVector3{5, 6, 10}));
    EXPECT_EQ(PlaceOf(m_root), (ZgeVector3{1, 0, 0}));
    constraint.ConstraintSetEnabled(false);
    EXPECT_EQ(PlaceOf(m_tip), (ZgeVector3{1, 2, 0}));
    EXPECT_FALSE(m_tip->GetConstrainedGlobal().has_value());
}

TEST_F(Constraint, ReadsGlobalUnconstrainedTransforms)
{
    ScriptedConstraint constraint;
    constraint.Read(m_tip);
    DriveTip(constraint, {{5, 6, 7, 1}, {10, 20, 30}, {2, 2, 2}});
    ZgeTRS seen;
    constraint.evaluate = [&](const ZEvaluateInfo& info) {
        return ScriptedConstraint::Read(constraint.sources[0], seen, info) &&
               ScriptedConstraint::Write(constraint.targets[0], {{5, 6, 7, 1}, {10, 20, 30}, {2, 2, 2}}, info);
    };
    constraint.ConstraintSetEnabled(true);
    for (int pass = 0; pass < 2; ++pass) { // the second time the object is driven already
        Pass();
        EXPECT_EQ(seen.translation, (ZgeVector4{1, 2, 0, 1}));
        EXPECT_EQ(seen.scaling, (ZgeVector3{1, 1, 1}));
    }
    EXPECT_EQ(constraint.sources[0].type[0]->GetBufferType(), kBufferTypeGlobal);
    EXPECT_EQ(constraint.sources[0].type[1]->GetDataType(), ZDataTypeRotation);
    EXPECT_EQ(constraint.sources[0].type[1]->GetObject(), m_tip);
}

TEST_F(Constraint, WhatIsNotWrittenStaysTheObjectsOwn)
{
    ScriptedConstraint constraint;
    constraint.Drive(m_tip);
    constraint.evaluate = [&](const ZEvaluateInfo& info) {
        const double scaling[] = {2, 3, 4};
        return constraint.targets[0].type[2]->WriteDataEx(scaling, kBufferTypeGlobal, info, kConnectorWriteDirect);
    };
    constraint.ConstraintSetEnabled(true);
    Pass();
    const ZgeTRS now = ZgeDecompose(m_tip->GetTransformMatrix(true));
    EXPECT_EQ(now.translation, (ZgeVector4{1, 2, 0, 1}));
    EXPECT_EQ(now.scaling, (ZgeVector3{2, 3, 4}));
}

TEST_F(Constraint, AWrittenValueHoldsForItsPassOnly)
{
    ScriptedConstraint constraint;
    DriveTip(constraint, {{5, 6, 7, 1}, {}, {1, 1, 1}});
    constraint.ConstraintSetEnabled(true);
    Pass();
    constraint.evaluate = [](const ZEvaluateInfo&) { return true; };
    Pass();
    EXPECT_EQ(PlaceOf(m_tip), (ZgeVector3{1, 2, 0}));
}

TEST_F(Constraint, APassThatIsNotHandledChangesNothing)
{
    ScriptedConstraint constraint;
    DriveTip(constraint, {{5, 6, 7, 1}, {}, {1, 1, 1}});
    constraint.ConstraintSetEnabled(true);
    Pass();
    constraint.evaluate = [](const ZEvaluateInfo&) { return false; };
    Pass();
    EXPECT_EQ(PlaceOf(m_tip), (ZgeVector3{5, 6, 7}));
}

TEST_F(Constraint, ConnectorsRefuseWhatIsNotTheirs)
{
    ScriptedConstraint constraint;
    constraint.Read(m_root);
    constraint.Drive(m_tip);
    bool checked = false;
    constraint.evaluate = [&](const ZEvaluateInfo& info) {
        IConnector* source = constraint.sources[0].type[0];
        IConnector* target = constraint.targets[0].type[0];
        double data[4] = {1, 2, 3, 1};
        kBufferTypeLocalGlobal buffer = kBufferTypeLocal;
        EXPECT_FALSE(source->WriteDataEx(data, kBufferTypeGlobal, info, kConnectorWriteDirect));
        EXPECT_FALSE(source->ReadDataEx(nullptr, buffer, info));
        EXPECT_FALSE(target->ReadDataEx(data, buffer, info));
        EXPECT_FALSE(target->WriteDataEx(nullptr, kBufferTypeGlobal, info, kConnectorWriteDirect));
        EXPECT_FALSE(target->WriteDataEx(data, kBufferTypeLocal, info, kConnectorWriteDirect));
        EXPECT_FALSE(target->WriteDataEx(data, kBufferTypeGlobal, info, 1));
        checked = true;
        return true;
    };
    constraint.ConstraintSetEnabled(true);
    Pass();
    EXPECT_TRUE(checked);
    EXPECT_EQ(PlaceOf(m_tip), (ZgeVector3{1, 2, 0}));
}

TEST_F(Constraint, OneConnectorForEachObjectAndType)
{
    ScriptedConstraint constraint;
    IConnector* first = constraint.ConstraintGetSourceConnector(m_tip, ZDataTypeRotation);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(constraint.ConstraintGetSourceConnector(m_tip, ZDataTypeRotation), first);
    EXPECT_NE(constraint.ConstraintGetSourceConnector(m_tip, ZDataTypeScaling), first);
    EXPECT_NE(constraint.ConstraintGetDestinationConnector(m_tip, ZDataTypeRotation), first);
    EXPECT_EQ(constraint.ConstraintGetSourceConnector(nullptr, ZDataTypeRotation), nullptr);
    EXPECT_EQ(constraint.ConstraintGetSourceConnector(m_tip, static_cast<ZDataType>(3)), nullptr);
    EXPECT_EQ(constraint.ConstraintGetDestinationConnector(nullptr, ZDataTypeRotation), nullptr);
}

TEST_F(Constraint, TwoConstraintsOnOneObjectReleaseIndependently)
{
    ScriptedConstraint first, second;
    DriveTip(first, {{5, 0, 0, 1}, {}, {1, 1, 1}});
    DriveTip(second, {{9, 0, 0, 1}, {}, {1, 1, 1}});
    first.ConstraintSetEnabled(true);
    second.ConstraintSetEnabled(true);
    Pass();
    EXPECT_EQ(PlaceOf(m_tip).x, 9);
    second.ConstraintSetEnabled(false);
    Pass();
    EXPECT_EQ(PlaceOf(m_tip).x, 5);
}

TEST_F(Constraint, DestroyedWhileEnabledGivesBackWhatItDrove)
{
    {
        ScriptedConstraint constraint;
        DriveTip(constraint, {{5, 6, 7, 1}, {}, {1, 1, 1}});
        constraint.ConstraintSetEnabled(true);
        Pass();
        EXPECT_EQ(PlaceOf(m_tip).x, 5);
    }
    EXPECT_EQ(PlaceOf(m_tip).x, 1);
    EXPECT_TRUE(Pass());
}

TEST_F(Constraint, DestroyObjectGivesBackAndForgetsTheConstraint)
{
    ScriptedConstraint constraint;
    DriveTip(constraint, {{5, 6, 7, 1}, {}, {1, 1, 1}});
    constraint.ConstraintSetEnabled(true);
    Pass();
    constraint.DestroyObject();
    EXPECT_EQ(PlaceOf(m_tip).x, 1);
    EXPECT_FALSE(ZEvaluateManager::TheOne()->HasWork());
    EXPECT_FALSE(constraint.ConstraintSetEnabled(false));
    EXPECT_THROW(constraint.ConstraintSetEnabled(true), ZHostMisuse);
}

TEST_F(Constraint, SurvivesTheDeletionOfWhatItReadsAndDrives)
{
    ScriptedConstraint constraint;
    constraint.Read(m_root);
    DriveTip(constraint, {{5, 6, 7, 1}, {}, {1, 1, 1}});
    constraint.ConstraintAddReferenceObject(0, m_tip);
    constraint.ConstraintSetEnabled(true);
    Pass();
    m_scene.DeleteModel(m_tip);
    EXPECT_TRUE(Pass());
    EXPECT_EQ(constraint.ConstraintGetReferenceObject(0, 0), nullptr);
    EXPECT_EQ(constraint.ConstraintGetReferenceObjectCount(0), 1);
    m_scene.Clear();
    EXPECT_TRUE(Pass());
    constraint.ConstraintSetEnabled(false);
}

TEST_F(Constraint, AConnectorOfAGoneObjectReadsNothing)
{
    ScriptedConstraint constraint;
    constraint.Read(m_tip);
    bool read = true;
    constraint.evaluate = [&](const ZEvaluateInfo& info) {
        ZgeTRS trs;
        read = ScriptedConstraint::Read(constraint.sources[0], trs, info);
        return true;
    };
    constraint.ConstraintSetEnabled(true);
    m_scene.Clear();
    Pass();
    EXPECT_FALSE(read);
}

TEST_F(Constraint, ReferenceObjectsComeInGroups)
{
    ScriptedConstraint constraint;
    EXPECT_EQ(constraint.ConstraintGetReferenceObjectCount(0), 0);
    constraint.ConstraintAddReferenceObject(0, m_root);
    constraint.ConstraintAddReferenceObject(0, m_tip);
    constraint.ConstraintAddReferenceObject(1, m_leaf);
    EXPECT_EQ(constraint.ConstraintGetReferenceObjectCount(0), 2);
    EXPECT_EQ(constraint.ConstraintGetReferenceObject(0, 1), m_tip);
    EXPECT_EQ(constraint.ConstraintGetReferenceObject(0, 2), nullptr);
    EXPECT_EQ(constraint.ConstraintGetReferenceObject(0, -1), nullptr);
    EXPECT_EQ(constraint.ConstraintGetReferenceObject(7, 0), nullptr);
    constraint.ConstraintRemoveReferenceObject(0, 0);
    EXPECT_EQ(constraint.ConstraintGetReferenceObject(0, 0), m_tip);
    constraint.ConstraintRemoveReferenceObject(0, 5);
    constraint.ConstraintRemoveReferenceObject(9, 0);
    EXPECT_EQ(constraint.ConstraintGetReferenceObjectCount(0), 1);
    EXPECT_EQ(constraint.ConstraintGetReferenceObjectCount(1), 1);
    EXPECT_THROW(constraint.ConstraintAddReferenceObject(0, nullptr), ZHostMisuse);
}

TEST_F(Constraint, ReleasingInAnEvaluationGivesBackAtTheEndOfThePass)
{
    ScriptedConstraint constraint;
    DriveTip(constraint, {{5, 6, 7, 1}, {}, {1, 1, 1}});
    constraint.ConstraintAddReferenceObject(0, m_tip);
    constraint.ConstraintSetEnabled(true);
    Pass();
    EXPECT_EQ(PlaceOf(m_tip).x, 5);
    constraint.evaluate = [&](const ZEvaluateInfo&) {
        constraint.ConstraintReleaseAllConnectors();
        constraint.Forget();
        while (constraint.ConstraintGetReferenceObjectCount(0) > 0)
            constraint.ConstraintRemoveReferenceObject(0, 0);
        return true;
    };
    Pass();
    EXPECT_EQ(PlaceOf(m_tip).x, 1);
    EXPECT_EQ(constraint.ConstraintGetReferenceObjectCount(0), 0);
}

TEST_F(Constraint, AskingForConnectorsInAnEvaluationIsMisuse)
{
    ScriptedConstraint constraint;
    constraint.evaluate = [&](const ZEvaluateInfo&) {
        return constraint.ConstraintGetSourceConnector(m_tip, ZDataTypeRotation) != nullptr;
    };
    constraint.ConstraintSetEnabled(true);
    EXPECT_THROW(Pass(), ZHostMisuse);
    EXPECT_FALSE(constraint.ConstraintGetEnabled());
}

TEST_F(Constraint, AnEvaluationThatThrowsSwitchesTheConstraintOff)
{
    ScriptedConstraint constraint("shaky");
    DriveTip(constraint, {{5, 6, 7, 1}, {}, {1, 1, 1}});
    constraint.ConstraintSetEnabled(true);
    Pass();
    constraint.evaluate = [](const ZEvaluateInfo&) -> bool { throw std::runtime_error("division by zero"); };
    EXPECT_TRUE(Pass());
    EXPECT_FALSE(constraint.ConstraintGetEnabled());
    EXPECT_EQ(PlaceOf(m_tip).x, 1);
    ASSERT_EQ(ZReport_Warnings().size(), 1u);
    EXPECT_THAT(ZReport_Warnings()[0],
                testing::AllOf(testing::HasSubstr("shaky"), testing::HasSubstr("division by zero")));
}

TEST_F(Constraint, IsSetUpAnewWhenTheHostNoLongerAsksToSkipIt)
{
    ScriptedConstraint enabled, disabled;
    DriveTip(enabled, {{5, 6, 7, 1}, {}, {1, 1, 1}});
    ZConstraint::SetIgnoreSetupAllConnectors(true);
    EXPECT_TRUE(ZConstraint::IgnoreSetupAllConnectors());
    enabled.ConstraintSetEnabled(true);
    EXPECT_EQ(enabled.targets[0].type[0], nullptr);
    ZConstraint::SetIgnoreSetupAllConnectors(false);
    ZConstraint::SetIgnoreSetupAllConnectors(false);
    EXPECT_EQ(enabled.setups, 2);
    EXPECT_NE(enabled.targets[0].type[0], nullptr);
    EXPECT_EQ(disabled.setups, 0);
}

TEST_F(Constraint, TheHostHasNoBoxConstraint) { EXPECT_EQ(ZConstraints_GetBoxConstraint(), nullptr); }

TEST_F(Constraint, AnswersItsFourQuestionsAndItsClass)
{
    ZConstraint constraint("plain");
    EXPECT_TRUE(constraint.Is(BBox::ClassId));
    EXPECT_TRUE(constraint.Is(ZObjectStorable::ClassId));
    EXPECT_EQ(constraint.GetClassId(), ZConstraint::ClassId);
    EXPECT_TRUE(constraint.ConstraintCanBeActive());
    EXPECT_FALSE(constraint.ConstraintCanSnap());
    EXPECT_FALSE(constraint.ConstraintEvaluate({}));
    constraint.ConstraintSetEnabled(true);
    EXPECT_TRUE(Pass());
}
