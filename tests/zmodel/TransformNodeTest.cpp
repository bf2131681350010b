// SPDX-License-Identifier: MIT
// Hierarchy, layers and global matrices of nodes.
#include "TinyModels.h"

#include <rapidcheck/gtest.h>

#include <cmath>

namespace {

constexpr double kTiny = 1e-12;

ZgeMatrix At(double x, double y = 0, double z = 0) { return ZgeTranslation({x, y, z}); }

class TransformNode : public ReportTest
{
protected:
    ZTransformNode root{"root"};
    ZTransformNode arm{"arm"};
    ZTransformNode hand{"hand"};
    void SetUp() override
    {
        ReportTest::SetUp();
        arm.SetParent(&root);
        hand.SetParent(&arm);
        root.SetFileTransform(At(1));
        arm.SetFileTransform(At(10));
        hand.SetFileTransform(At(100));
    }
};

TEST_F(TransformNode, GlobalIsTheProductFromTheNodeToTheRoot)
{
    arm.SetFileTransform(ZgeRotationFromEuler({0, 0, 90}) * At(10));
    ExpectNear(hand.GetTransformMatrix(true), At(100) * ZgeRotationFromEuler({0, 0, 90}) * At(11), kTiny);
    ExpectNear(hand.GetTransformMatrix(false), At(100), kTiny);
    EXPECT_EQ(hand.GetDepth(), 2);
    EXPECT_EQ(root.GetDepth(), 0);
}

TEST_F(TransformNode, TheLaterLayerThatIsSetHolds)
{
    arm.SetAnimatedTransform(At(20));
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 121);
    arm.SetPosedTransform(At(30));
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 131);
    arm.SetAnimatedTransform(At(40));
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 131);
    arm.SetPosedTransform(std::nullopt);
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 141);
    arm.SetAnimatedTransform(std::nullopt);
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 111);
}

TEST_F(TransformNode, AConstraintOverridesAndChildrenFollowIt)
{
    arm.SetPosedTransform(At(30));
    arm.SetConstrainedGlobal(At(500));
    EXPECT_EQ(arm.GetTransformMatrix(true)(3, 0), 500);
    EXPECT_EQ(arm.GetTransformMatrix(false)(3, 0), 499);
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 600);
    EXPECT_EQ(hand.GetUnconstrainedGlobal()(3, 0), 131);
    root.SetFileTransform(At(2));
    EXPECT_EQ(arm.GetTransformMatrix(true)(3, 0), 500);
    arm.SetConstrainedGlobal(std::nullopt);
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 132);
}

TEST_F(TransformNode, VersionMovesExactlyWithTheGlobalMatrix)
{
    const std::uint64_t handBefore = hand.GetTransformVersion();
    const std::uint64_t rootBefore = root.GetTransformVersion();
    EXPECT_EQ(hand.GetTransformVersion(), handBefore);
    arm.SetFileTransform(At(11));
    EXPECT_NE(hand.GetTransformVersion(), handBefore);
    EXPECT_EQ(root.GetTransformVersion(), rootBefore);
    const std::uint64_t moved = hand.GetTransformVersion();
    arm.SetAnimatedTransform(At(11)); // the same place, said by another layer
    EXPECT_EQ(hand.GetTransformVersion(), moved);
}

TEST_F(TransformNode, SeveralChangesBeforeAQuestionAreAllSeen)
{
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 111);
    root.SetFileTransform(At(2));
    arm.SetFileTransform(At(20));
    hand.SetFileTransform(At(200));
    EXPECT_EQ(root.GetTransformMatrix(true)(3, 0), 2);
    arm.SetFileTransform(At(30));
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 232);
}

TEST_F(TransformNode, MovingUnderAnotherParentKeepsTheLocalTransform)
{
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 111);
    hand.SetParent(&root);
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 101);
    EXPECT_THAT(arm.GetChildren(), testing::IsEmpty());
    EXPECT_THAT(root.GetChildren(), testing::ElementsAre(&arm, &hand));
    hand.SetParent(nullptr);
    EXPECT_EQ(hand.GetTransformMatrix(true)(3, 0), 100);
}

TEST_F(TransformNode, UnderItselfIsMisuse)
{
    EXPECT_THROW(arm.SetParent(&arm), ZHostMisuse);
    EXPECT_THROW(root.SetParent(&hand), ZHostMisuse);
    EXPECT_EQ(root.GetParent(), nullptr);
    EXPECT_EQ(arm.GetParent(), &root);
}

TEST_F(TransformNode, SecondSiblingOfOneNameIsNumbered)
{
    ZTransformNode second("arm");
    ZTransformNode third("arm");
    ZTransformNode below("hand");
    second.SetParent(&root);
    third.SetParent(&root);
    below.SetParent(&second);
    EXPECT_EQ(hand.GetPath(), "root/arm/hand");
    EXPECT_EQ(below.GetPath(), "root/arm[2]/hand");
    EXPECT_EQ(third.GetPath(), "root/arm[3]");
    arm.SetParent(nullptr);
    EXPECT_EQ(third.GetPath(), "root/arm[2]");
}

TEST_F(TransformNode, PartsOfTheFileAreKeptExactly)
{
    ZNodeTRS trs;
    trs.translation = {1, 2, 3};
    trs.rotation = {0.5, 0.5, -0.5, 0.5};
    trs.scaling = {2, 0, -1};
    arm.SetFileTRS(trs);
    EXPECT_EQ(arm.GetFileTRS(), trs);
    ExpectNear(arm.GetFileTransform(),
               ZgeScaling({2, 0, -1}) * ZgeRotationFromQuaternion(0.5, 0.5, -0.5, 0.5) * At(1, 2, 3), kTiny);
    arm.SetFileTransform(At(7));
    EXPECT_EQ(arm.GetFileTRS().translation, (ZgeVector3{7, 0, 0}));
}

TEST_F(TransformNode, ScalingVectorIsTheRowLengths)
{
    root.SetFileTransform(ZgeScaling({2, 3, 4}));
    arm.SetFileTransform(ZgeScaling({10, 10, 10}));
    const ZgeVector3 global = ZTransformNode::GetScalingVector(&arm, true, nullptr);
    EXPECT_DOUBLE_EQ(global.x, 20);
    EXPECT_DOUBLE_EQ(global.z, 40);
    EXPECT_DOUBLE_EQ(ZTransformNode::GetScalingVector(&arm, false, nullptr).x, 10);
    EXPECT_THROW(ZTransformNode::GetScalingVector(nullptr, true, nullptr), ZHostMisuse);
}

TEST_F(TransformNode, AVeryLongChainNeedsNoDeepStack)
{
    std::vector<std::unique_ptr<ZTransformNode>> chain;
    for (int i = 0; i < 200000; ++i) {
        chain.push_back(std::make_unique<ZTransformNode>("link"));
        chain.back()->SetFileTransform(At(1));
    }
    // From the end, so that no node looks for a cycle through all that are above it.
    for (size_t i = chain.size() - 1; i > 0; --i)
        chain[i]->SetParent(chain[i - 1].get());
    EXPECT_EQ(chain.back()->GetTransformMatrix(true)(3, 0), 200000);
    chain.front()->SetFileTransform(At(2));
    EXPECT_EQ(chain.back()->GetTransformMatrix(true)(3, 0), 200001);
    EXPECT_EQ(chain.back()->GetDepth(), 199999);
}

TEST_F(TransformNode, ADyingParentLeavesItsChildrenAtRootLevel)
{
    auto parent = std::make_unique<ZTransformNode>("parent");
    ZTransformNode child("child");
    child.SetFileTransform(At(5));
    parent->SetFileTransform(At(1));
    child.SetParent(parent.get());
    EXPECT_EQ(child.GetTransformMatrix(true)(3, 0), 6);
    parent.reset();
    EXPECT_EQ(child.GetParent(), nullptr);
    EXPECT_EQ(child.GetTransformMatrix(true)(3, 0), 5);
}

double Number(int range) { return *rc::gen::inRange(-range * 1000, range * 1000) / 1000.0; }

RC_GTEST_PROP(TransformNodeProperty, PartsOfAMatrixComposeToItAgain, ())
{
    ZgeTRS trs;
    trs.translation = {Number(50), Number(50), Number(50), 1};
    trs.rotation = {Number(180), Number(89), Number(180)};
    trs.scaling = {0.1 + std::abs(Number(9)), 0.1 + std::abs(Number(9)), 0.1 + std::abs(Number(9))};
    if (*rc::gen::arbitrary<bool>())
        trs.scaling = trs.scaling * -1.0;
    const ZgeMatrix matrix = ZgeCompose(trs);
    const ZgeMatrix again = ZNodeTRS::FromMatrix(matrix).GetMatrix();
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            RC_ASSERT(std::abs(matrix(row, column) - again(row, column)) < 1e-9);
}

RC_GTEST_PROP(TransformNodeProperty, LazyGlobalsEqualProductsComputedAfresh, ())
{
    std::vector<std::unique_ptr<ZTransformNode>> nodes;
    for (int i = 0; i < 8; ++i)
        nodes.push_back(std::make_unique<ZTransformNode>("node"));
    const int steps = *rc::gen::inRange(1, 60);
    for (int step = 0; step < steps; ++step) {
        ZTransformNode& node = *nodes[*rc::gen::inRange<size_t>(0, nodes.size())];
        const ZgeMatrix matrix = ZgeRotationFromEuler({Number(90), Number(90), Number(90)}) * At(Number(5), Number(5));
        switch (*rc::gen::inRange(0, 5)) {
        case 0:
            node.SetFileTransform(matrix);
            break;
        case 1:
            node.SetAnimatedTransform(matrix);
            break;
        case 2:
            node.SetPosedTransform(*rc::gen::arbitrary<bool>() ? std::optional<ZgeMatrix>(matrix) : std::nullopt);
            break;
        case 3: {
            ZTransformNode* const parent = nodes[*rc::gen::inRange<size_t>(0, nodes.size())].get();
            bool below = false;
            for (const ZTransformNode* up = parent; up != nullptr; up = up->GetParent())
                below = below || up == &node;
            if (!below)
                node.SetParent(parent);
            break;
        }
        default:
            node.GetTransformMatrix(true);
        }
    }
    for (const auto& node : nodes) {
        ZgeMatrix expected;
        for (const ZTransformNode* up = node.get(); up != nullptr; up = up->GetParent()) {
            const ZgeMatrix local = up->GetPosedTransform()      ? *up->GetPosedTransform()
                                    : up->GetAnimatedTransform() ? *up->GetAnimatedTransform()
                                                                 : up->GetFileTransform();
            expected = expected * local;
        }
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column)
                RC_ASSERT(std::abs(node->GetTransformMatrix(true)(row, column) - expected(row, column)) < 1e-9);
    }
    while (!nodes.empty())
        nodes.pop_back();
}

} // namespace
