// SPDX-License-Identifier: MIT
#include "Gl.h"

#include <initializer_list>

namespace {
constexpr struct
{
    GLenum mode, depth;
} kStacks[2] = {{GL_PROJECTION, GL_PROJECTION_STACK_DEPTH}, {GL_MODELVIEW, GL_MODELVIEW_STACK_DEPTH}};

void LoadMatrix(GLenum mode, const GLdouble* matrix)
{
    glMatrixMode(mode);
    glLoadMatrixd(matrix);
}

void MakePlain()
{
    for (const GLenum feature :
         {GL_ALPHA_TEST, GL_BLEND, GL_COLOR_LOGIC_OP, GL_COLOR_MATERIAL, GL_CULL_FACE, GL_DEPTH_TEST, GL_FOG,
          GL_LIGHTING, GL_LINE_SMOOTH, GL_LINE_STIPPLE, GL_NORMALIZE, GL_POINT_SMOOTH, GL_POLYGON_OFFSET_FILL,
          GL_POLYGON_SMOOTH, GL_POLYGON_STIPPLE, GL_SCISSOR_TEST, GL_STENCIL_TEST, GL_TEXTURE_1D, GL_TEXTURE_2D})
        glDisable(feature);
    for (GLenum plane = GL_CLIP_PLANE0; plane < GL_CLIP_PLANE0 + 6; ++plane)
        glDisable(plane);
    for (GLenum light = GL_LIGHT1; light < GL_LIGHT0 + 8; ++light)
        glDisable(light);
    for (const GLenum array : {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY})
        glDisableClientState(array);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    // What is drawn again at the same place, such as an overlay's points on its lines, shows.
    glDepthFunc(GL_LEQUAL);
    glDepthRange(0, 1);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glFrontFace(GL_CCW);
    glShadeModel(GL_SMOOTH);
    glLineWidth(1);
    glPointSize(1);
}
} // namespace

GlStateGuard::GlStateGuard()
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    glGetIntegerv(GL_CURRENT_PROGRAM, &m_program);
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &m_vertexArray);
    glUseProgram(0);
    glBindVertexArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    glActiveTexture(GL_TEXTURE0);
    // By value: the projection stack may be only two deep, and guests push too.
    glGetDoublev(GL_PROJECTION_MATRIX, m_projection);
    glGetDoublev(GL_MODELVIEW_MATRIX, m_modelview);
    glGetDoublev(GL_TEXTURE_MATRIX, m_texture);
    MakePlain();
}

GlStateGuard::~GlStateGuard()
{
    glActiveTexture(GL_TEXTURE0);
    LoadMatrix(GL_TEXTURE, m_texture);
    LoadMatrix(GL_PROJECTION, m_projection);
    LoadMatrix(GL_MODELVIEW, m_modelview);
    glUseProgram(static_cast<GLuint>(m_program));
    glBindVertexArray(static_cast<GLuint>(m_vertexArray));
    glPopClientAttrib();
    glPopAttrib();
}

GlStackGuard::GlStackGuard()
{
    for (int i = 0; i < 2; ++i)
        glGetIntegerv(kStacks[i].depth, &m_depths[i]);
}

GlStackGuard::~GlStackGuard()
{
    for (int i = 0; i < 2; ++i) {
        GLint depth = m_depths[i];
        glGetIntegerv(kStacks[i].depth, &depth);
        glMatrixMode(kStacks[i].mode);
        for (; depth > m_depths[i]; --depth)
            glPopMatrix();
    }
}
