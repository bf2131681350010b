// SPDX-License-Identifier: MIT
// The manipulator's overlay: the vertices of the checked models, and a translucent disc at every selected bone.
#include "editing/ZWeightSelection.h"
#include "viewport/ZCharacterWeightingManipulator.h"
#include "weights/ZWeightUIModelData.h"

#include <GL/gl.h>

#include <array>
#include <cmath>

namespace {

constexpr int kOutlineCount = 20;
using DiscOutline = std::array<std::array<float, 3>, kOutlineCount>;

/// Points along the unit circle, every 18 degrees.
const DiscOutline& Outline()
{
    static const DiscOutline outline = [] {
        DiscOutline points{};
        for (int i = 0; i < kOutlineCount; ++i) {
            const double angle = 2 * i * 3.14159265358979323846 / 20.0;
            points[static_cast<size_t>(i)] = {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)),
                                              0.0F};
        }
        return points;
    }();
    return outline;
}

/// Rotation, scale and translation of a view matrix: its first three columns.
ZgeMatrix AffinePart(const ZgeMatrix& matrix)
{
    ZgeMatrix affine;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 3; ++column)
            affine(row, column) = matrix(row, column);
    return affine;
}

/// The host's drawing goes on after the overlay's: what the overlay sets, and what a bone's own drawing may set beside,
/// is given back.
class GlStateKeeper
{
public:
    GlStateKeeper()
    {
        glPushAttrib(GL_COLOR_BUFFER_BIT | GL_CURRENT_BIT | GL_DEPTH_BUFFER_BIT | GL_ENABLE_BIT | GL_LINE_BIT |
                     GL_POINT_BIT | GL_POLYGON_BIT | GL_TRANSFORM_BIT | GL_VIEWPORT_BIT);
    }
    ~GlStateKeeper() { glPopAttrib(); }
    GlStateKeeper(const GlStateKeeper&) = delete;
    GlStateKeeper& operator=(const GlStateKeeper&) = delete;
};

bool HasOwnDrawing(ZModel& bone)
{
    for (const int id : {kInterfaceBoneOwnDrawingA, kInterfaceBoneOwnDrawingB, kInterfaceBoneOwnDrawingC})
        if (bone.IQuery(id, 0) != nullptr)
            return true;
    return false;
}

void DrawBone(ZModel& bone, const ZgeMatrix& global, const ZgeVector3& viewer)
{
    auto* const surface = static_cast<ISurface*>(bone.IQuery(kInterfaceSurface, 0));
    const bool own = HasOwnDrawing(bone);
    if (own)
        glPushMatrix();
    glMultMatrixd(global.Data());
    if (surface != nullptr)
        surface->Draw(own ? nullptr : &viewer);
    if (own)
        glPopMatrix();
}

/// Fades from transparent at the bone to 45 % at its rim; faces the viewer, since only the bone's place in view space
/// is kept.
void DrawDisc(const float* colour, const ZgeMatrix& inView, float radius)
{
    glColor4f(colour[0], colour[1], colour[2], 0.0F);
    glLoadIdentity();
    glTranslated(inView(3, 0), inView(3, 1), inView(3, 2));
    glScalef(radius, radius, radius);
    glBegin(GL_TRIANGLE_FAN);
    glVertex3f(0.0F, 0.0F, 0.0F);
    glColor4f(colour[0], colour[1], colour[2], 0.45F);
    for (const auto& point : Outline())
        glVertex3fv(point.data());
    glVertex3fv(Outline().front().data());
    glEnd();
}

} // namespace

void ZCharacterWeightingManipulator::ManipulatorDraw(ZManipulatorDraw& draw)
{
    if (!ManipulatorGetInUse() || m_tool == nullptr || m_tool->ModelDataList().GetCount() == 0)
        return;
    m_draw = &draw;
    const GlStateKeeper keeper;
    IViewerCamera& camera = *draw.camera;
    glEnable(GL_DEPTH_TEST);
    glViewport(camera.ViewportX(), camera.ViewportY(), camera.ViewportWidth(), camera.ViewportHeight());
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadMatrixd(camera.ProjectionMatrix().Data());
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadMatrixd(AffinePart(camera.ViewMatrix()).Data());

    ZWeightUIModelDataList& models = m_tool->ModelDataList();
    const float pointSize = m_tool->Selection().noSelection ? 4.0F : 2.0F;
    for (int i = 0; i < models.GetCount(); ++i)
        if (models[i]->modelSelected != 0 && models[i]->geometry != nullptr)
            models[i]->geometry->Draw(*models[i], pointSize);
    if (!m_tool->SelectedBones().IsEmpty())
        DrawDiscs(draw);

    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glDisable(GL_DEPTH_TEST);
    m_draw = nullptr;
}

void ZCharacterWeightingManipulator::DrawDiscs(ZManipulatorDraw& draw)
{
    const ZArrayTemplate<ZModel*>& bones = m_tool->BoneList();
    const ZBoneColourTable& colours = m_tool->BoneColours();
    const ZgeMatrix view = AffinePart(draw.camera->ViewMatrix());
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_BLEND);
    for (const int index : m_tool->SelectedBones()) {
        if (index < 0 || index >= bones.GetCount() || 3 * index + 2 >= colours.GetCount())
            continue;
        ZModel& bone = *bones[index];
        auto* const transform = static_cast<IModelGeometry*>(bone.IQuery(kInterfaceModelGeometry, 0));
        const ZgeMatrix global = transform->GlobalTransform();
        const float* const colour = &colours[3 * index];
        glPushMatrix();
        glColor4f(colour[0], colour[1], colour[2], 0.9F);
        DrawBone(bone, global, draw.viewerVector);
        DrawDisc(colour, global * view, m_discSize);
        glPopMatrix();
    }
    glDisable(GL_BLEND);
}
