// SPDX-License-Identifier: MIT
// Picking: which vertices fall into the rectangle.
#include "FakeTool.h"

#include "viewport/ZWeightPick.h"
#include "zmodel/ZScene.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A camera with given matrices and nothing else.
class PlainCamera : public IViewerCamera
{
public:
    const ZgeMatrix& ProjectionMatrix() override { return projection; }
    const ZgeMatrix& ViewMatrix() override { return view; }
    ZgeVector4 CameraToScene(const ZgeVector4& point) override { return point * ZgeInverse(view); }
    void FrameBox(const ZgeBox&) override {}
    int ViewportX() override { return 0; }
    int ViewportY() override { return 0; }
    int ViewportWidth() override { return 100; }
    int ViewportHeight() override { return 100; }
    ZgeMatrix projection, view;
};

class PickTest : public testing::Test
{
protected:
    PickTest() { bone = AddBone(scene, "Bone", ZgeMatrix()); }
    std::vector<int> Pick(const ZPickRectangle& rectangle, bool restricted = false)
    {
        ZArrayTemplate<int> hits;
        ZWeightPick_Pick(tool, camera, rectangle, restricted, hits);
        return {hits.begin(), hits.end()};
    }
    ZScene scene;
    ZModel* bone = nullptr;
    FakeTool tool;
    PlainCamera camera; // identity: positions are normalised viewer coordinates
};

constexpr ZPickRectangle kHalf{-0.5F, -0.5F, 0.5F, 0.5F};

TEST_F(PickTest, EdgesAndCornersAreInside)
{
    tool.Admit(AddPointMesh(scene, "M", {0.5F, 0.5F, 0, -0.5F, 0, 0, 0.51F, 0, 0, 0, 0.5F, 0}, bone));
    EXPECT_THAT(Pick(kHalf), ElementsAre(0, 0, 0, 1, 0, 3));
}

TEST_F(PickTest, HitsComeInModelOrderThenVertexOrder)
{
    tool.Admit(AddPointMesh(scene, "A", {0, 0, 0, 9, 0, 0, 0.1F, 0, 0}, bone));
    tool.Admit(AddPointMesh(scene, "B", {0, 0, 0}, bone), false); // not checked: passed over, keeps its index
    tool.Admit(AddPointMesh(scene, "C", {0, 0, 0}, bone));
    EXPECT_THAT(Pick(kHalf), ElementsAre(0, 0, 0, 2, 2, 0));
}

TEST_F(PickTest, DepthIsNotTested)
{
    tool.Admit(AddPointMesh(scene, "M", {0, 0, 100, 0, 0, -100}, bone));
    EXPECT_THAT(Pick(kHalf), ElementsAre(0, 0, 0, 1));
}

TEST_F(PickTest, VertexInTheCamerasPlaneIsNeverHit)
{
    camera.projection(2, 3) = 1; // W = z
    camera.projection(3, 3) = 0;
    tool.Admit(AddPointMesh(scene, "M", {0, 0, 0, 1, 0, 0, 0, 0, 1, 1e-30F, 1, 1e-42F}, bone));
    EXPECT_THAT(Pick(kHalf), ElementsAre(0, 2));
}

TEST_F(PickTest, VertexBehindTheCameraIsTestedLikeAnyOther)
{
    camera.projection(2, 3) = 1;
    camera.projection(3, 3) = 0;
    tool.Admit(AddPointMesh(scene, "M", {0.2F, 0, -1}, bone));
    EXPECT_THAT(Pick(kHalf), ElementsAre(0, 0));
}

TEST_F(PickTest, ForegroundFilterKeepsVerticesThatFaceTheEye)
{
    // Two triangles, the second one turned away from a viewer at z = 10.
    auto made = std::make_unique<ZModelPolymesh>("M");
    const float positions[] = {0, 0, 0, 0.1F, 0, 0, 0, 0.1F, 0, 0.2F, 0, 0, 0.3F, 0, 0, 0.2F, 0.1F, 0};
    made->SetGeometry(positions, 6, {0, 1, 2, 3, 5, 4}, {3, 3});
    made->MakeSkin(kDeformNormalise)->AppendLink(bone, ZgeMatrix());
    tool.Admit(scene.AddModel(std::move(made)));
    camera.view = ZgeTranslation({0, 0, -10});
    EXPECT_THAT(Pick(kHalf).size(), 12U);
    tool.foregroundOnly = true;
    EXPECT_THAT(Pick(kHalf), ElementsAre(0, 0, 0, 1, 0, 2));
}

TEST_F(PickTest, WithoutSurfacePositionsTheFilterPasses)
{
    ZWeightUIModelData& data = tool.Admit(AddPointMesh(scene, "M", {0, 0, 0}, bone));
    struct NoNormals : IWeightGeom
    {
        void Draw(const ZWeightUIModelData&, float) override {}
        int VertexCount() override { return 1; }
        const float* VertexPositions() override { return point; }
        const float* SurfacePositions() override { return nullptr; }
        float point[4] = {0, 0, 0, 1};
    };
    delete data.geometry;
    data.geometry = new NoNormals;
    tool.foregroundOnly = true;
    EXPECT_THAT(Pick(kHalf), ElementsAre(0, 0));
}

TEST_F(PickTest, RestrictedPickTestsOnlySelectedVerticesInListOrder)
{
    ZWeightUIModelData& data = tool.Admit(AddPointMesh(scene, "M", {0, 0, 0, 0.1F, 0, 0, 0.2F, 0, 0}, bone));
    ZArrayTemplate<int> batch{0, 2, 0, 0};
    ZUndoStack::TheOne()->TransactionBegin("", false);
    tool.selection.PickSelect(batch, kPickAdd);
    ZUndoStack::TheOne()->TransactionEnd(false, false);
    ASSERT_EQ(data.GetVertexState(2), 2);
    EXPECT_THAT(Pick(kHalf, true), ElementsAre(0, 2, 0, 0));
    EXPECT_THAT(Pick({5, 5, 6, 6}, true), IsEmpty());
}

TEST_F(PickTest, PickUsesTheDeformedPositions)
{
    ZModelPolymesh* const mesh = AddPointMesh(scene, "M", {0, 0, 0}, bone);
    tool.Admit(mesh);
    bone->SetPosedTransform(ZgeTranslation({3, 0, 0}));
    EXPECT_THAT(Pick(kHalf), IsEmpty());
    EXPECT_THAT(Pick({2.5F, -0.5F, 3.5F, 0.5F}), ElementsAre(0, 0));
}

TEST_F(PickTest, SelectionBoxHoldsTheSelectedVerticesOfCheckedModels)
{
    ZWeightUIModelData& data = tool.Admit(AddPointMesh(scene, "M", {0, 0, 0, 1, 2, 3, 9, 9, 9}, bone));
    ZgeBox box;
    EXPECT_FALSE(ZWeightPick_SelectionBox(tool, box));
    data.SelectVertex(0, nullptr);
    data.SelectVertex(1, nullptr);
    EXPECT_TRUE(ZWeightPick_SelectionBox(tool, box));
    EXPECT_EQ(box.maximum, (ZgeVector3{1, 2, 3}));
    EXPECT_EQ(box.minimum, (ZgeVector3{0, 0, 0}));
}

TEST_F(PickTest, SelectionBoxOfNoModelsIsNoBox)
{
    ZgeBox box;
    EXPECT_FALSE(ZWeightPick_SelectionBox(tool, box));
    EXPECT_TRUE(box.IsEmpty());
}

} // namespace
