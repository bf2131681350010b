// SPDX-License-Identifier: MIT
// Bones that a guest draws: the viewer hands them the place and takes nothing else from them.
#include "PictureTest.h"

#include <GL/gl.h>

namespace {

/// A bone that fills a square about its place, in the colour that is current, and leaves a mess behind.
class SquareBone : public ZModel, public ISurface
{
public:
    SquareBone() : ZModel("square", ZModelKind::Bone) { SetBone(true); }
    void* IQuery(int interfaceId, int flags) override
    {
        if (interfaceId == kInterfaceSurface)
            return static_cast<ISurface*>(this);
        if (interfaceId == answers)
            return this;
        return ZModel::IQuery(interfaceId, flags);
    }
    void Draw(const ZgeVector3* viewer) override
    {
        ++drawn;
        withViewer = viewer != nullptr;
        glBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair(-1, -1), std::pair(1, -1), std::pair(1, 1), std::pair(-1, 1)})
            glVertex3f(static_cast<float>(x), static_cast<float>(y), 0);
        glEnd();
        glPushMatrix();
        glMatrixMode(GL_PROJECTION);
        glLineWidth(7);
        glPointSize(9);
        glDepthMask(GL_FALSE);
        glEnable(GL_CULL_FACE);
        glCullFace(GL_FRONT_AND_BACK);
        glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
    }

    int answers = -1, drawn = 0;
    bool withViewer = true;
};

class OwnBone : public Picture
{
protected:
    void SetUp() override
    {
        Picture::SetUp();
        auto made = std::make_unique<SquareBone>();
        bone = made.get();
        scene.AddModel(std::move(made));
        bone->SetFileTransform(ZgeTranslation({1.5, 0, 0}));
    }
    Pixel AtTheBone(const ZImage& image) { return At(image, 100 + 26, 75); }
    SquareBone* bone = nullptr;
};

TEST_F(OwnBone, IsDrawnByItselfInItsPlaceAndColour)
{
    for (const int id : {kInterfaceBoneOwnDrawingA, kInterfaceBoneOwnDrawingB, kInterfaceBoneOwnDrawingC}) {
        bone->answers = id;
        bone->drawn = 0;
        const ZImage image = Grab();
        EXPECT_EQ(bone->drawn, 1) << id;
        EXPECT_FALSE(bone->withViewer) << id;
        const Pixel seen = AtTheBone(image);
        EXPECT_NEAR(seen[0], 0.62 * 255, 3);
        EXPECT_NEAR(seen[1], 0.74 * 255, 3);
        EXPECT_NEAR(seen[2], 0.86 * 255, 3);
    }
}

TEST_F(OwnBone, WithoutOneItIsAnOctahedron)
{
    const ZImage plain = Grab();
    EXPECT_EQ(bone->drawn, 0);
    bone->answers = kInterfaceBoneOwnDrawingA;
    EXPECT_GT(DifferentPixels(plain, Grab()), 500) << "a square is larger";
}

TEST_F(OwnBone, SelectedItHasTheSelectionColour)
{
    bone->answers = kInterfaceBoneOwnDrawingA;
    bone->SetSelected(true);
    const Pixel seen = AtTheBone(Grab());
    for (size_t channel = 0; channel < 3; ++channel)
        EXPECT_NEAR(seen[channel], 255 * static_cast<double>(ZModelGlobal::SelectionColor()[channel]), 3);
}

TEST_F(OwnBone, HiddenOrWithBonesHiddenItIsNotDrawn)
{
    bone->answers = kInterfaceBoneOwnDrawingA;
    bone->SetHidden(true);
    Grab();
    bone->SetHidden(false);
    viewer.SetShowBones(false);
    Grab();
    EXPECT_EQ(bone->drawn, 0);
}

TEST_F(OwnBone, ItsMessIsNotSeenInWhatIsDrawnNext)
{
    AddCube(scene, "cube", ZgeTranslation({-1.5, 0, 0}));
    viewer.PickRectStart(10, 10);
    viewer.PickRectMotion(60, 60);
    bone->answers = kInterfaceBoneOwnDrawingA;
    bone->SetFileTransform(ZgeTranslation({1000, 0, -100})); // out of the picture
    const ZImage with = Grab();
    EXPECT_GT(bone->drawn, 0);
    EXPECT_EQ(DifferentPixels(with, GrabWithout(bone)), 0);
}

TEST_F(OwnBone, BehindAMeshItIsHidden)
{
    bone->answers = kInterfaceBoneOwnDrawingA;
    const Pixel free = AtTheBone(Grab());
    AddCube(scene, "cube", ZgeTranslation({1.5, 0, 2}));
    EXPECT_GT(Difference(AtTheBone(Grab()), free), 30) << "its drawing is tested for depth as any other";
}

} // namespace
