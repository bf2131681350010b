// SPDX-License-Identifier: MIT
// The rest-position constraint on real bones, evaluated by the host.
#include "FakeTool.h"

#include "viewport/ZCharacterWeightingConstraint.h"
#include "zconstraints/ZEvaluateManager.h"
#include "zmodel/ZScene.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

ZgeMatrix Place(double x, double y, double z, const ZgeVector3& degrees = {}, const ZgeVector3& scaling = {1, 1, 1})
{
    return ZgeCompose({{x, y, z, 1}, degrees, scaling});
}

void ExpectNear(const ZgeMatrix& a, const ZgeMatrix& b, double tolerance = 1e-9)
{
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_NEAR(a(row, column), b(row, column), tolerance) << row << "," << column;
}

/// Hip with a knee and a foot below it, and a mesh bound to them as they stand.
class ConstraintTest : public testing::Test
{
protected:
    ConstraintTest() : constraint("ZCharacterWeightingConstraint")
    {
        hip = AddBone(scene, "Hip", Place(0, 2, 0, {0, 30, 0}));
        knee = AddBone(scene, "Knee", Place(0, -1, 0.1, {10, 0, 0}), hip);
        foot = AddBone(scene, "Foot", Place(0, -1, 0, {-20, 0, 5}), knee);
        mesh = AddPointMesh(scene, "Leg", {0, 2, 0, 0, 1, 0, 0, 0, 0}, hip);
        ZSkin& skin = *mesh->GetSkin();
        skin.RemoveLink(0);
        for (ZModel* const bone : {hip, knee, foot}) {
            const int link = skin.AppendLink(bone, ZgeInverse(bone->GetTransformMatrix(true)));
            skin.BeginLink(link);
            skin.AddEntry(link, 1.0);
            skin.EndLink();
        }
        for (ZModel* const bone : {hip, knee, foot})
            rest.push_back(bone->GetTransformMatrix(true));
    }

    void Bend()
    {
        hip->SetPosedTransform(Place(1, 3, 0, {0, 60, 20}));
        knee->SetPosedTransform(Place(0, -1, 0.1, {80, 0, 0}));
        foot->SetPosedTransform(Place(0, -1, 0, {40, 10, 5}));
    }
    void AddAll()
    {
        for (ZModel* const bone : {hip, knee, foot})
            constraint.AddBone(bone, mesh);
    }
    void Evaluate()
    {
        constraint.MarkForEvaluation();
        ASSERT_TRUE(ZEvaluateManager::TheOne()->Evaluate(0));
    }

    ZScene scene;
    ZModel* hip = nullptr;
    ZModel* knee = nullptr;
    ZModel* foot = nullptr;
    ZModelPolymesh* mesh = nullptr;
    std::vector<ZgeMatrix> rest;
    ZCharacterWeightingConstraint constraint;
};

TEST_F(ConstraintTest, PutsEveryVertexAtItsUndeformedPlaceMovedByTheAnchor)
{
    Bend();
    AddAll();
    EXPECT_TRUE(constraint.ConstraintSetEnabled(true));
    Evaluate();
    const ZgeMatrix anchor = ZgeInverse(rest[0]) * hip->GetTransformMatrix(true);
    ExpectNear(knee->GetTransformMatrix(true), rest[1] * anchor);
    ExpectNear(foot->GetTransformMatrix(true), rest[2] * anchor);
    const float* const positions = mesh->Geometry().VertexPositions(1);
    for (int vertex = 0; vertex < 3; ++vertex) {
        const ZgeVector3 expected = ZgeTransformPoint({0, 2.0 - vertex, 0}, anchor);
        EXPECT_NEAR(static_cast<double>(positions[4 * vertex]), expected.x, 1e-5);
        EXPECT_NEAR(static_cast<double>(positions[4 * vertex + 1]), expected.y, 1e-5);
        EXPECT_NEAR(static_cast<double>(positions[4 * vertex + 2]), expected.z, 1e-5);
    }
}

TEST_F(ConstraintTest, TheRootIsNeverWritten)
{
    Bend();
    AddAll();
    constraint.ConstraintSetEnabled(true);
    Evaluate();
    EXPECT_FALSE(hip->GetConstrainedGlobal().has_value());
    EXPECT_TRUE(knee->GetConstrainedGlobal().has_value());
}

TEST_F(ConstraintTest, SingleBoneWritesNothing)
{
    Bend();
    constraint.AddBone(knee, mesh);
    constraint.ConstraintSetEnabled(true);
    Evaluate();
    EXPECT_FALSE(knee->GetConstrainedGlobal().has_value());
}

TEST_F(ConstraintTest, OfEquallyShallowBonesTheEarlierIsTheRoot)
{
    ZModel* const other = AddBone(scene, "Other", Place(5, 0, 0));
    for (ZModel* const bone : {knee, other, hip})
        constraint.AddBone(bone, mesh);
    constraint.SetupAllConnectors(true);
    ASSERT_EQ(constraint.GetEntries().size(), 1U);
    EXPECT_EQ(constraint.GetEntries()[0]->root, 1) << "both are at the top; \"Other\" came first";
}

TEST_F(ConstraintTest, SharedBoneIsWrittenByTheFirstEntryOnly)
{
    ZModelPolymesh* const shoe = AddPointMesh(scene, "Shoe", {0, 0, 0}, foot);
    AddAll();
    constraint.AddBone(foot, shoe);
    ASSERT_EQ(constraint.GetEntries().size(), 2U);
    EXPECT_THAT(constraint.GetEntries()[0]->driven, ElementsAre(0, 1, 2));
    EXPECT_EQ(constraint.GetEntries()[1]->bones.GetCount(), 1);
    EXPECT_THAT(constraint.GetEntries()[1]->driven, IsEmpty());
}

TEST_F(ConstraintTest, SharedBoneFollowsTheFirstEntrysAnchor)
{
    ZModel* const toe = AddBone(scene, "Toe", Place(0, -0.2, 0.3), foot);
    const ZgeMatrix toeAtRest = toe->GetTransformMatrix(true);
    ZModelPolymesh* const shoe = AddPointMesh(scene, "Shoe", {0, 0, 0}, foot);
    ZSkin& skin = *shoe->GetSkin();
    skin.RemoveLink(0);
    for (ZModel* const bone : {foot, toe})
        skin.AppendLink(bone, ZgeInverse(bone->GetTransformMatrix(true)));
    Bend();
    AddAll();
    constraint.AddBone(foot, shoe);
    constraint.AddBone(toe, shoe);
    constraint.ConstraintSetEnabled(true);
    const ZgeMatrix footAsPosed = foot->GetTransformMatrix(true);
    Evaluate();
    ExpectNear(foot->GetTransformMatrix(true), rest[2] * ZgeInverse(rest[0]) * hip->GetTransformMatrix(true));
    // The second entry's anchor is the foot where its pose has it: another entry's result is no input of a pass.
    ExpectNear(toe->GetTransformMatrix(true), toeAtRest * ZgeInverse(rest[2]) * footAsPosed);
}

TEST_F(ConstraintTest, ABoneThatNoLinkFollowsHasTheIdentityForItsBind)
{
    ZModel* const stray = AddBone(scene, "Stray", Place(4, 0, 0), hip);
    AddAll();
    constraint.AddBone(stray, mesh);
    constraint.ConstraintSetEnabled(true);
    Evaluate();
    ExpectNear(stray->GetTransformMatrix(true), ZgeInverse(rest[0]) * hip->GetTransformMatrix(true));
}

TEST_F(ConstraintTest, BonesAreReferenceObjectsOfGroupZero)
{
    AddAll();
    ASSERT_EQ(constraint.ConstraintGetReferenceObjectCount(0), 3);
    EXPECT_EQ(constraint.ConstraintGetReferenceObject(0, 2), foot);
    EXPECT_EQ(constraint.ConstraintGetReferenceObjectCount(1), 0);
    constraint.ResetBones();
    EXPECT_EQ(constraint.ConstraintGetReferenceObjectCount(0), 0);
}

TEST_F(ConstraintTest, AnswersItsFourQuestions)
{
    IConstraint& asked = constraint;
    EXPECT_TRUE(asked.ConstraintCanBeActive());
    EXPECT_FALSE(asked.ConstraintCanSnap());
    EXPECT_TRUE(asked.ConstraintDrivesSeveral());
    EXPECT_TRUE(asked.ConstraintIsLive());
}

TEST_F(ConstraintTest, AnEntryWithoutBonesHasTheFirstPlaceForItsRoot)
{
    constraint.SetupAllConnectors(true);
    EXPECT_THAT(constraint.GetEntries(), IsEmpty());
    AddAll();
    constraint.SetupAllConnectors(true);
    EXPECT_EQ(constraint.GetEntries()[0]->root, 0);
    EXPECT_NE(constraint.GetEntries()[0]->sources[0][0], nullptr);
    EXPECT_EQ(constraint.GetEntries()[0]->sources[0][1], nullptr) << "only the root is read";
}

TEST_F(ConstraintTest, ReleasingClearsAllSixConnectorLists)
{
    AddAll();
    constraint.SetupAllConnectors(true);
    constraint.ReleaseAllConnectors();
    for (int type = 0; type < 3; ++type) {
        EXPECT_THAT(constraint.GetEntries()[0]->sources[type], IsEmpty());
        EXPECT_THAT(constraint.GetEntries()[0]->destinations[type], IsEmpty());
    }
    EXPECT_EQ(constraint.GetEntries()[0]->bones.GetCount(), 3) << "the bones stay";
}

TEST_F(ConstraintTest, AMirroredSkeletonStandsAtItsMirroredRest)
{
    ZModel* const mirror = AddBone(scene, "Mirror", Place(0, 0, 0, {}, {-1, 1, 1}));
    hip->SetParent(mirror);
    rest.clear();
    ZSkin& skin = *mesh->GetSkin();
    while (skin.LinkCount() > 0)
        skin.RemoveLink(0);
    for (ZModel* const bone : {hip, knee, foot}) {
        rest.push_back(bone->GetTransformMatrix(true));
        skin.AppendLink(bone, ZgeInverse(rest.back()));
    }
    Bend();
    AddAll();
    constraint.ConstraintSetEnabled(true);
    Evaluate();
    const ZgeMatrix anchor = ZgeInverse(rest[0]) * hip->GetTransformMatrix(true);
    ExpectNear(knee->GetTransformMatrix(true), rest[1] * anchor);
    ExpectNear(foot->GetTransformMatrix(true), rest[2] * anchor);
    EXPECT_LT(ZgeDeterminant3(foot->GetTransformMatrix(true)), 0);
}

/// Counts what is written through a connector, and writes it.
class CountingConnector final : public IConnector
{
public:
    explicit CountingConnector(IConnector* counted) : m_counted(*counted) {}
    bool ReadDataEx(double* data, kBufferTypeLocalGlobal& buffer, const ZEvaluateInfo& info) override
    {
        return m_counted.ReadDataEx(data, buffer, info);
    }
    bool WriteDataEx(const double* data, kBufferTypeLocalGlobal buffer, const ZEvaluateInfo& info,
                     int writeMode) override
    {
        ++writes;
        return m_counted.WriteDataEx(data, buffer, info, writeMode);
    }
    kBufferTypeLocalGlobal GetBufferType() const override { return m_counted.GetBufferType(); }
    ZDataType GetDataType() const override { return m_counted.GetDataType(); }
    ZModel* GetObject() const override { return m_counted.GetObject(); }

    int writes = 0;

private:
    IConnector& m_counted;
};

TEST_F(ConstraintTest, SamePassIdActsOnce)
{
    AddAll();
    constraint.ConstraintSetEnabled(true);
    Evaluate();
    constexpr size_t kFoot = 2;
    IConnector*& destination = constraint.GetEntries()[0]->destinations[0][kFoot];
    ASSERT_NE(destination, nullptr);
    CountingConnector counting(destination);
    IConnector* const counted = std::exchange(destination, &counting);
    ZEvaluateInfo info;
    info.passId = 4711;
    EXPECT_TRUE(constraint.ConstraintEvaluate(info));
    EXPECT_EQ(counting.writes, 1);
    EXPECT_FALSE(constraint.ConstraintEvaluate(info));
    EXPECT_EQ(counting.writes, 1);
    info.passId = 4712;
    EXPECT_TRUE(constraint.ConstraintEvaluate(info));
    EXPECT_EQ(counting.writes, 2);
    destination = counted;
}

TEST_F(ConstraintTest, TeardownRunsAtTheNextEvaluationAndIsHandled)
{
    AddAll();
    constraint.RequestTeardown();
    EXPECT_EQ(constraint.GetEntries().size(), 1U);
    EXPECT_TRUE(constraint.ConstraintEvaluate({1, 0}));
    EXPECT_THAT(constraint.GetEntries(), IsEmpty());
    EXPECT_EQ(constraint.ConstraintGetReferenceObjectCount(0), 0);
    EXPECT_FALSE(constraint.IsTeardownPending());
}

TEST_F(ConstraintTest, AddingAfterATeardownStartsAnew)
{
    AddAll();
    constraint.RequestTeardown();
    constraint.AddBone(knee, mesh);
    ASSERT_EQ(constraint.GetEntries().size(), 1U);
    EXPECT_EQ(constraint.GetEntries()[0]->bones.GetCount(), 1);
    EXPECT_THAT(constraint.GetEntries()[0]->driven, ElementsAre(0));
}

TEST_F(ConstraintTest, DisablingGivesTheSkeletonBack)
{
    Bend();
    const ZgeMatrix bent = foot->GetTransformMatrix(true);
    AddAll();
    constraint.ConstraintSetEnabled(true);
    Evaluate();
    constraint.RequestTeardown();
    constraint.ConstraintSetEnabled(false);
    EXPECT_FALSE(foot->GetConstrainedGlobal().has_value());
    ExpectNear(foot->GetTransformMatrix(true), bent);
}

TEST_F(ConstraintTest, DeletedBoneEmptiesIt)
{
    AddAll();
    constraint.ConstraintSetEnabled(true);
    Evaluate();
    scene.DeleteModel(knee);
    EXPECT_THAT(constraint.GetEntries(), IsEmpty());
    EXPECT_FALSE(foot->GetConstrainedGlobal().has_value());
    Evaluate();
}

TEST_F(ConstraintTest, SkippedSetUpIsMadeUpWhenForced)
{
    AddAll();
    ZConstraint::SetIgnoreSetupAllConnectors(true);
    constraint.SetupAllConnectors(false);
    EXPECT_TRUE(constraint.GetEntries()[0]->sources[0].empty());
    constraint.SetupAllConnectors(true);
    ZConstraint::SetIgnoreSetupAllConnectors(false);
    EXPECT_NE(constraint.GetEntries()[0]->sources[0][0], nullptr);
    EXPECT_EQ(constraint.GetEntries()[0]->destinations[0][0], nullptr);
    EXPECT_NE(constraint.GetEntries()[0]->destinations[0][1], nullptr);
}

TEST_F(ConstraintTest, DestroyedWhileEnabledGivesTheSkeletonBack)
{
    Bend();
    {
        ZCharacterWeightingConstraint other;
        EXPECT_EQ(other.GetObjectName(), "Skinning Tool Rest Position");
        for (ZModel* const bone : {hip, knee, foot})
            other.AddBone(bone, mesh);
        other.ConstraintSetEnabled(true);
        other.MarkForEvaluation();
        ZEvaluateManager::TheOne()->Evaluate(0);
        EXPECT_TRUE(foot->GetConstrainedGlobal().has_value());
    }
    EXPECT_FALSE(foot->GetConstrainedGlobal().has_value());
}

TEST(RestPositionMaths, MirroredTransformSplitsIntoNegativeScaling)
{
    const ZgeTRS split = ZgeDecompose(ZgeScaling({2, -3, 4}));
    EXPECT_NEAR(split.scaling.x, -2, 1e-12);
    EXPECT_NEAR(split.scaling.y, -3, 1e-12);
    EXPECT_NEAR(split.scaling.z, -4, 1e-12);
    ExpectNear(ZgeCompose(split), ZgeScaling({2, -3, 4}), 1e-12);
}

TEST(RestPositionMaths, DegenerateBranchAtExactlyTheBound)
{
    ZgeMatrix m; // rows: c = length of (m00, m01) is exactly 1.6e-9
    m(0, 0) = 1.6e-9;
    m(0, 1) = 0;
    m(0, 2) = -1;
    m(1, 0) = 0;
    m(1, 1) = 1;
    m(1, 2) = 0;
    m(2, 0) = 1;
    m(2, 1) = 0;
    m(2, 2) = 1.6e-9;
    EXPECT_EQ(ZgeDecompose(m).rotation.z, 0);
    EXPECT_NEAR(ZgeDecompose(m).rotation.y, 90, 1e-6);
}

RC_GTEST_PROP(RestPositionMaths, CompositionWithUniformScalingIsTheMatrixProduct, ())
{
    const auto number = [](int range) { return *rc::gen::inRange(-range * 100, range * 100) / 100.0; };
    const auto random = [&](double scale) {
        return Place(number(10), number(10), number(10), {number(180), number(80), number(180)}, {scale, scale, scale});
    };
    const ZgeMatrix a = random(1.5);
    const ZgeMatrix b = random(0.5);
    const ZgeMatrix composed = ZWeightingCompose(a, b);
    const ZgeMatrix product = b * a;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 3; ++column)
            RC_ASSERT(std::abs(composed(row, column) - product(row, column)) < 1e-9);
}

TEST(RestPositionMaths, CompositionMakesNoShear)
{
    const ZgeMatrix a = Place(0, 0, 0, {}, {1, 4, 1});
    const ZgeMatrix b = Place(1, 1, 0, {0, 0, 45});
    const ZgeMatrix c = ZWeightingCompose(a, b);
    const ZgeVector3 x{c(0, 0), c(0, 1), c(0, 2)};
    const ZgeVector3 y{c(1, 0), c(1, 1), c(1, 2)};
    EXPECT_NEAR(ZgeDot(x, y), 0, 1e-12);
    EXPECT_NEAR(ZgeLength(y), 4, 1e-12);
    EXPECT_NEAR(c(3, 1), 4, 1e-12) << "the translation goes through the whole of the outer transform";
}

} // namespace
