// SPDX-License-Identifier: MIT
// What a drawable bone does when a guest asks it to draw itself: the viewer's octahedra, in the colour that is current.
#include "BonePaint.h"
#include "BoneShape.h"
#include "zmanipulator/ZViewer.h"

#include <algorithm>

namespace {
// Without a viewer the light stands still over the scene.
constexpr ZgeVector3 kStandingLight{0.45, 0.78, 0.43};

double UnitOf(const ZModel& bone)
{
    for (ZViewer* viewer : ZViewer::GetViewers())
        if (viewer->GetScene() == bone.GetScene())
            return viewer->GetCamera().GetUnit();
    return ZCamera().GetUnit();
}

/// The faces in the bone's own space, since its matrix is loaded; made in the scene, so that a bone under uneven or
/// mirrored scaling has the same shape.
std::vector<BonePaintPoint> FacesOf(const ZModel& bone, const ZgeVector3& toViewer, const GLfloat (&colour)[4])
{
    std::vector<BonePaintPoint> points;
    bool flat = false;
    const ZgeMatrix toBone = ZgeInverse(bone.GetTransformMatrix(true), &flat);
    if (flat)
        return points;
    std::vector<ZBoneSegment> segments;
    BoneShape_AddSegments(bone, UnitOf(bone), segments);
    std::vector<ZBoneCorner> corners;
    for (const ZBoneSegment& segment : segments)
        BoneShape_AddOctahedron(segment, corners);
    for (const ZBoneCorner& corner : corners) {
        const ZgeVector3 place = ZgeTransformPoint(corner.place, toBone);
        const float shade = BonePaint_Brightness(corner.normal, toViewer);
        points.push_back({{static_cast<float>(place.x), static_cast<float>(place.y), static_cast<float>(place.z)},
                          {colour[0] * shade, colour[1] * shade, colour[2] * shade, colour[3]}});
    }
    return points;
}

void DrawBone(const ZModel& bone, const ZgeVector3* viewer)
{
    GLfloat colour[4] = {1, 1, 1, 1};
    glGetFloatv(GL_CURRENT_COLOR, colour);
    const std::vector<BonePaintPoint> points = FacesOf(bone, viewer != nullptr ? *viewer : kStandingLight, colour);
    if (points.empty())
        return;
    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_POLYGON_BIT | GL_LIGHTING_BIT);
    glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST); // bones lie inside what they move
    glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glFrontFace(GL_CCW);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glVertexPointer(3, GL_FLOAT, sizeof(BonePaintPoint), points.front().place);
    glColorPointer(4, GL_FLOAT, sizeof(BonePaintPoint), points.front().colour);
    glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(points.size()));
    glPopClientAttrib();
    glPopAttrib();
}

/// Installed when the library is loaded, since bones are drawable from then on, with or without a viewer.
const bool s_installed = (ZModel_SetBoneDrawer(&DrawBone), true);
} // namespace
