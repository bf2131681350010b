// SPDX-License-Identifier: MIT
// A bone that draws itself through its drawing interface, as guests ask it to.
#include "support/GlRecorder.h"
#include "zmanipulator/ZViewer.h"
#include "zmodel/ZScene.h"

#include <gmock/gmock.h>

#include <GL/gl.h>

namespace {
using testing::IsEmpty;

class BoneDrawer : public testing::Test
{
protected:
    void SetUp() override
    {
        hip = AddBone("hip", {0, 1, 0}, nullptr);
        knee = AddBone("knee", {0, -4, 0}, hip);
        GlRecorder::Clear();
    }
    ZModel* AddBone(const char* name, const ZgeVector3& place, ZModel* parent)
    {
        ZModel* const bone = scene.AddModel(std::make_unique<ZModel>(name, ZModelKind::Bone));
        bone->SetParent(parent);
        bone->SetFileTransform(ZgeTranslation(place));
        return bone;
    }
    static void Draw(ZModel& bone, const ZgeVector3* toViewer)
    {
        auto* const surface = static_cast<ISurface*>(bone.IQuery(kInterfaceSurface, 0));
        ASSERT_NE(surface, nullptr);
        surface->Draw(toViewer);
    }
    static int DrawnPoints()
    {
        int points = 0;
        for (const GlCall& call : GlRecorder::Calls())
            if (call.name == "glDrawArrays")
                points += static_cast<int>(call.args[2]);
        return points;
    }

    ZScene scene;
    ZViewer viewer{&scene}; // a viewer says how long a bone without any other is
    ZModel* hip = nullptr;
    ZModel* knee = nullptr;
};

TEST_F(BoneDrawer, IsInstalledWithTheLibrary)
{
    EXPECT_NE(hip->IQuery(kInterfaceSurface, 0), nullptr);
    EXPECT_EQ(hip->IQuery(kInterfaceBoneOwnDrawingA, 0), nullptr);
}

TEST_F(BoneDrawer, DrawsOneOctahedronForEachChildBone)
{
    const ZgeVector3 toViewer{0, 0, 1};
    Draw(*hip, &toViewer);
    EXPECT_EQ(DrawnPoints(), 24);
    AddBone("other knee", {1, -4, 0}, hip);
    GlRecorder::Clear();
    Draw(*hip, &toViewer);
    EXPECT_EQ(DrawnPoints(), 48);
}

TEST_F(BoneDrawer, ALeafDrawsAShortOne)
{
    Draw(*knee, nullptr);
    EXPECT_EQ(DrawnPoints(), 24);
}

TEST_F(BoneDrawer, LooksThroughPlainNodesForTheNextBone)
{
    ZModel* const between = scene.AddModel(std::make_unique<ZModel>("between"));
    between->SetParent(knee);
    between->SetFileTransform(ZgeTranslation({0, -1, 0}));
    AddBone("foot", {1, 0, 0}, between);
    AddBone("toe", {0, 0, 1}, between);
    Draw(*knee, nullptr);
    EXPECT_EQ(DrawnPoints(), 48);
}

TEST_F(BoneDrawer, LeavesTheStateAsItFoundIt)
{
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glColor4f(0.25F, 0.5F, 0.75F, 0.9F);
    const ZgeVector3 toViewer{0, 0, 1};
    Draw(*hip, &toViewer);
    EXPECT_TRUE(GlRecorder::IsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(GlRecorder::IsEnabled(GL_BLEND));
    EXPECT_FALSE(GlRecorder::IsEnabled(GL_CULL_FACE));
    EXPECT_EQ(GlRecorder::StackDepth(GL_MODELVIEW), 0);
    glBegin(GL_POINTS);
    glVertex3f(0, 0, 0);
    glEnd();
    EXPECT_NEAR(GlRecorder::Batches().back().vertices[0].colour[3], 0.9, 1e-6);
    EXPECT_THAT(GlRecorder::Mistakes(), IsEmpty());
}

TEST_F(BoneDrawer, ABoneThatIsScaledToNothingDrawsNothing)
{
    hip->SetFileTransform(ZgeScaling({1, 0, 1}));
    Draw(*hip, nullptr);
    EXPECT_EQ(DrawnPoints(), 0);
}

TEST(GlRecorderState, FollowsMatricesAsOpenGLDoes)
{
    GlRecorder::Clear();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glTranslated(1, 2, 3);
    glScalef(2, 2, 2);
    // The call that comes last is applied to points first.
    EXPECT_EQ(GlRecorder::Matrix(GL_MODELVIEW), ZgeScaling({2, 2, 2}) * ZgeTranslation({1, 2, 3}));
    EXPECT_EQ(GlRecorder::StackDepth(GL_MODELVIEW), 1);
    glPopMatrix();
    EXPECT_EQ(GlRecorder::Matrix(GL_MODELVIEW), ZgeMatrix());
    EXPECT_THAT(GlRecorder::Mistakes(), IsEmpty());
    glPopMatrix();
    EXPECT_EQ(GlRecorder::Mistakes().size(), 1U);
}

TEST(GlRecorderState, KeepsVerticesWithTheirColours)
{
    GlRecorder::Clear();
    glPointSize(6);
    glBegin(GL_POINTS);
    glColor3f(1, 0.5F, 0);
    const float place[3] = {1, 2, 3};
    glVertex3fv(place);
    glEnd();
    ASSERT_EQ(GlRecorder::Batches().size(), 1U);
    const GlBatch& batch = GlRecorder::Batches()[0];
    EXPECT_EQ(batch.pointSize, 6);
    ASSERT_EQ(batch.vertices.size(), 1U);
    EXPECT_EQ(batch.vertices[0].place[2], 3);
    EXPECT_EQ(batch.vertices[0].colour[1], 0.5);
    EXPECT_EQ(batch.vertices[0].colour[3], 1);
    glEnd();
    EXPECT_EQ(GlRecorder::Mistakes().size(), 1U);
}

TEST(GlRecorderState, GivesBackWhatWasPushed)
{
    GlRecorder::Clear();
    glEnable(GL_BLEND);
    glPushAttrib(GL_ENABLE_BIT);
    glDisable(GL_BLEND);
    glPointSize(9);
    glPopAttrib();
    EXPECT_TRUE(GlRecorder::IsEnabled(GL_BLEND));
    EXPECT_EQ(GlRecorder::PointSize(), 9); // not among what was pushed
}
} // namespace
