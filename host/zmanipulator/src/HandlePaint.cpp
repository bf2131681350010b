// SPDX-License-Identifier: MIT
// Draws rings and arrows.
#include "Gl.h"
#include "PoseHandles.h"

namespace {
constexpr GLfloat kAxisColours[3][3] = {{0.90F, 0.27F, 0.27F}, {0.45F, 0.80F, 0.25F}, {0.30F, 0.52F, 0.95F}};
constexpr GLfloat kLitColour[3] = {1.0F, 0.90F, 0.25F};
constexpr GLfloat kFarSideAlpha = 0.25F;
constexpr GLfloat kLineWidth = 2, kLitLineWidth = 3;

void DrawPoints(GLenum mode, const std::vector<ZgeVector3>& points)
{
    glBegin(mode);
    for (const ZgeVector3& point : points)
        glVertex3d(point.x, point.y, point.z);
    glEnd();
}

void SetColour(int handle, bool lit, GLfloat alpha)
{
    const GLfloat* const colour = lit ? kLitColour : kAxisColours[AxisOf(handle)];
    glColor4f(colour[0], colour[1], colour[2], alpha);
}

void DrawHandle(const HandleShape& shape, int handle, bool lit)
{
    const int axis = AxisOf(handle);
    glLineWidth(lit ? kLitLineWidth : kLineWidth);
    if (IsRing(handle)) {
        SetColour(handle, lit, kFarSideAlpha);
        DrawPoints(GL_LINE_STRIP, shape.WholeRing(axis));
        SetColour(handle, lit, 1);
        DrawPoints(GL_LINE_STRIP, shape.NearHalf(axis));
        return;
    }
    SetColour(handle, lit, 1);
    const auto ends = shape.Arrow(axis);
    DrawPoints(GL_LINES, {ends[0], ends[1]});
    DrawPoints(GL_TRIANGLES, shape.ArrowHead(axis));
}
} // namespace

void HandlePaint_Draw(const HandleShape& shape, IViewerCamera& camera, int lit, bool alone)
{
    glPushAttrib(GL_ENABLE_BIT | GL_LINE_BIT | GL_CURRENT_BIT | GL_COLOR_BUFFER_BIT | GL_TRANSFORM_BIT);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadMatrixd(camera.ProjectionMatrix().Data());
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadMatrixd(camera.ViewMatrix().Data());
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_BLEND);
    for (int handle = 0; handle < kHandleCount; ++handle)
        if (handle != lit && !alone)
            DrawHandle(shape, handle, false);
    if (lit != kNoHandle)
        DrawHandle(shape, lit, true);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glPopAttrib();
}
