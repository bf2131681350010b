// SPDX-License-Identifier: MIT
// OpenGL with the buffer functions, and guards that give its state back.
#pragma once

#ifndef GL_GLEXT_PROTOTYPES
#define GL_GLEXT_PROTOTYPES
#endif
#include <GL/gl.h>
#include <GL/glext.h>

/// Takes the state that a drawing of the host begins with (everything plain, no program, no bound buffers) and gives
/// back what was found: attributes, client attributes, both matrices, the program and the vertex array object.
class GlStateGuard
{
public:
    GlStateGuard();
    ~GlStateGuard();
    GlStateGuard(const GlStateGuard&) = delete;
    GlStateGuard& operator=(const GlStateGuard&) = delete;

private:
    GLdouble m_projection[16] = {}, m_modelview[16] = {}, m_texture[16] = {};
    GLint m_program = 0, m_vertexArray = 0;
};

/// Pops what a guest's drawing left on the matrix stacks; less than what it found cannot be given back.
class GlStackGuard
{
public:
    GlStackGuard();
    ~GlStackGuard();
    GlStackGuard(const GlStackGuard&) = delete;
    GlStackGuard& operator=(const GlStackGuard&) = delete;

private:
    GLint m_depths[2] = {1, 1};
};
