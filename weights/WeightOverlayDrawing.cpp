// SPDX-License-Identifier: MIT
#include "weights/WeightOverlayDrawing.h"

#include "weights/ZWeightUIModelData.h"

#include <GL/gl.h>

void WeightOverlay_Begin(const ZgeMatrix& global)
{
    glPushMatrix();
    glMultMatrixd(global.Data());
}

void WeightOverlay_DrawActive(const ZWeightUIModelData& data, const float* positions)
{
    glPointSize(kActivePointSize);
    glColor3fv(ZModelGlobal::SelectionColor());
    glBegin(GL_POINTS);
    for (const int vertex : data.activeVertices)
        glVertex3fv(positions + 4 * vertex);
    glEnd();
}

void WeightOverlay_DrawSelected(const ZWeightUIModelData& data, const float* positions)
{
    const float* const colours = data.vertexColours.GetData();
    glPointSize(kSelectedPointSize);
    glBegin(GL_POINTS);
    for (const int vertex : data.selectedVertices) {
        glColor3fv(colours + 4 * vertex);
        glVertex3fv(positions + 4 * vertex);
    }
    glEnd();
}

void WeightOverlay_End()
{
    glPopMatrix();
    glPointSize(1.0F);
}
