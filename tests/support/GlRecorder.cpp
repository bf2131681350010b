// SPDX-License-Identifier: MIT
#include "GlRecorder.h"

#include <GL/gl.h>

#include <initializer_list>
#include <map>
#include <set>

namespace {
struct MatrixStack
{
    ZgeMatrix top;
    std::vector<ZgeMatrix> below;
};

/// What glPushAttrib saves of what is followed here.
struct Attributes
{
    GLbitfield mask = 0;
    std::set<GLenum> enabled;
    GLenum matrixMode = GL_MODELVIEW;
    double pointSize = 1;
    std::vector<double> colour;
};

struct State
{
    std::vector<GlCall> calls;
    std::vector<Attributes> saved;
    std::vector<GlBatch> batches;
    std::vector<std::string> mistakes;
    std::map<GLenum, MatrixStack> stacks;
    std::set<GLenum> enabled;
    GLenum matrixMode = GL_MODELVIEW;
    double pointSize = 1;
    double colour[4] = {1, 1, 1, 1};
    bool inBatch = false;

    MatrixStack& Stack() { return stacks[matrixMode]; }
};

State& TheState()
{
    static State& state = *new State;
    return state;
}

void Note(const char* name, std::vector<double> args) { TheState().calls.push_back({name, std::move(args)}); }

template <class Number> std::vector<double> Numbers(const Number* values, int count)
{
    return {values, values + count};
}

/// A call that is not allowed between glBegin and glEnd.
void NoteOutside(const char* name, std::vector<double> args)
{
    if (TheState().inBatch)
        TheState().mistakes.push_back(std::string(name) + " between glBegin and glEnd");
    Note(name, std::move(args));
}

template <class Number> void SetColour(const Number* parts, int count)
{
    double* const colour = TheState().colour;
    for (int i = 0; i < 4; ++i)
        colour[i] = i < count ? static_cast<double>(parts[i]) : 1.0;
}

template <class Number> void AddVertex(const Number* place, int count)
{
    State& state = TheState();
    if (!state.inBatch) {
        state.mistakes.push_back("a vertex outside glBegin and glEnd");
        return;
    }
    GlVertex vertex;
    for (int i = 0; i < count; ++i)
        vertex.place[i] = static_cast<double>(place[i]);
    for (int i = 0; i < 4; ++i)
        vertex.colour[i] = state.colour[i];
    state.batches.back().vertices.push_back(vertex);
}

template <class Number> ZgeMatrix ToMatrix(const Number* numbers)
{
    ZgeMatrix matrix;
    for (int i = 0; i < 16; ++i)
        matrix(i / 4, i % 4) = static_cast<double>(numbers[i]);
    return matrix;
}

void Multiply(const ZgeMatrix& matrix) { TheState().Stack().top = matrix * TheState().Stack().top; }
} // namespace

void GlRecorder::Clear() { TheState() = State(); }
const std::vector<GlCall>& GlRecorder::Calls() { return TheState().calls; }
const std::vector<GlBatch>& GlRecorder::Batches() { return TheState().batches; }
const std::vector<std::string>& GlRecorder::Mistakes() { return TheState().mistakes; }
int GlRecorder::StackDepth(unsigned matrixMode) { return static_cast<int>(TheState().stacks[matrixMode].below.size()); }
const ZgeMatrix& GlRecorder::Matrix(unsigned matrixMode) { return TheState().stacks[matrixMode].top; }
unsigned GlRecorder::MatrixMode() { return TheState().matrixMode; }
bool GlRecorder::IsEnabled(unsigned feature) { return TheState().enabled.count(feature) != 0; }
double GlRecorder::PointSize() { return TheState().pointSize; }

std::vector<std::string> GlRecorder::Names()
{
    std::vector<std::string> names;
    for (const GlCall& call : Calls())
        names.push_back(call.name);
    return names;
}

// The calls themselves: same names and arguments as in the system's header, which declares them.
extern "C" {

void glBegin(GLenum mode)
{
    NoteOutside("glBegin", {static_cast<double>(mode)});
    State& state = TheState();
    state.inBatch = true;
    GlBatch batch;
    batch.mode = mode;
    batch.pointSize = state.pointSize;
    batch.blend = state.enabled.count(GL_BLEND) != 0;
    batch.depthTest = state.enabled.count(GL_DEPTH_TEST) != 0;
    batch.projection = state.stacks[GL_PROJECTION].top;
    batch.modelview = state.stacks[GL_MODELVIEW].top;
    state.batches.push_back(batch);
}

void glEnd(void)
{
    if (!TheState().inBatch)
        TheState().mistakes.push_back("glEnd without glBegin");
    TheState().inBatch = false;
    Note("glEnd", {});
}

void glVertex2f(GLfloat x, GLfloat y)
{
    const GLfloat place[] = {x, y};
    Note("glVertex2f", Numbers(place, 2));
    AddVertex(place, 2);
}

void glVertex3f(GLfloat x, GLfloat y, GLfloat z)
{
    const GLfloat place[] = {x, y, z};
    Note("glVertex3f", Numbers(place, 3));
    AddVertex(place, 3);
}

void glVertex3fv(const GLfloat* place)
{
    Note("glVertex3fv", Numbers(place, 3));
    AddVertex(place, 3);
}

void glVertex3d(GLdouble x, GLdouble y, GLdouble z)
{
    const GLdouble place[] = {x, y, z};
    Note("glVertex3d", Numbers(place, 3));
    AddVertex(place, 3);
}

void glVertex3dv(const GLdouble* place)
{
    Note("glVertex3dv", Numbers(place, 3));
    AddVertex(place, 3);
}

void glColor3f(GLfloat red, GLfloat green, GLfloat blue)
{
    const GLfloat parts[] = {red, green, blue};
    Note("glColor3f", Numbers(parts, 3));
    SetColour(parts, 3);
}

void glColor3fv(const GLfloat* parts)
{
    Note("glColor3fv", Numbers(parts, 3));
    SetColour(parts, 3);
}

void glColor4f(GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha)
{
    const GLfloat parts[] = {red, green, blue, alpha};
    Note("glColor4f", Numbers(parts, 4));
    SetColour(parts, 4);
}

void glColor4fv(const GLfloat* parts)
{
    Note("glColor4fv", Numbers(parts, 4));
    SetColour(parts, 4);
}

void glNormal3f(GLfloat x, GLfloat y, GLfloat z) { Note("glNormal3f", {x, y, z}); }

void glMatrixMode(GLenum mode)
{
    NoteOutside("glMatrixMode", {static_cast<double>(mode)});
    TheState().matrixMode = mode;
}

void glPushMatrix(void)
{
    NoteOutside("glPushMatrix", {});
    MatrixStack& stack = TheState().Stack();
    stack.below.push_back(stack.top);
}

void glPopMatrix(void)
{
    NoteOutside("glPopMatrix", {});
    MatrixStack& stack = TheState().Stack();
    if (stack.below.empty()) {
        TheState().mistakes.push_back("glPopMatrix of an empty stack");
        return;
    }
    stack.top = stack.below.back();
    stack.below.pop_back();
}

void glLoadIdentity(void)
{
    NoteOutside("glLoadIdentity", {});
    TheState().Stack().top = ZgeMatrix();
}

void glLoadMatrixd(const GLdouble* matrix)
{
    NoteOutside("glLoadMatrixd", Numbers(matrix, 16));
    TheState().Stack().top = ToMatrix(matrix);
}

void glLoadMatrixf(const GLfloat* matrix)
{
    NoteOutside("glLoadMatrixf", Numbers(matrix, 16));
    TheState().Stack().top = ToMatrix(matrix);
}

void glMultMatrixd(const GLdouble* matrix)
{
    NoteOutside("glMultMatrixd", Numbers(matrix, 16));
    Multiply(ToMatrix(matrix));
}

void glMultMatrixf(const GLfloat* matrix)
{
    NoteOutside("glMultMatrixf", Numbers(matrix, 16));
    Multiply(ToMatrix(matrix));
}

void glTranslated(GLdouble x, GLdouble y, GLdouble z)
{
    NoteOutside("glTranslated", {x, y, z});
    Multiply(ZgeTranslation({x, y, z}));
}

void glTranslatef(GLfloat x, GLfloat y, GLfloat z)
{
    NoteOutside("glTranslatef", {x, y, z});
    Multiply(ZgeTranslation({x, y, z}));
}

void glScaled(GLdouble x, GLdouble y, GLdouble z)
{
    NoteOutside("glScaled", {x, y, z});
    Multiply(ZgeScaling({x, y, z}));
}

void glScalef(GLfloat x, GLfloat y, GLfloat z)
{
    NoteOutside("glScalef", {x, y, z});
    Multiply(ZgeScaling({x, y, z}));
}

void glEnable(GLenum feature)
{
    NoteOutside("glEnable", {static_cast<double>(feature)});
    TheState().enabled.insert(feature);
}

void glDisable(GLenum feature)
{
    NoteOutside("glDisable", {static_cast<double>(feature)});
    TheState().enabled.erase(feature);
}

void glBlendFunc(GLenum source, GLenum destination)
{
    NoteOutside("glBlendFunc", {static_cast<double>(source), static_cast<double>(destination)});
}

void glDepthFunc(GLenum function) { NoteOutside("glDepthFunc", {static_cast<double>(function)}); }
void glDepthMask(GLboolean write) { NoteOutside("glDepthMask", {static_cast<double>(write)}); }
void glShadeModel(GLenum model) { NoteOutside("glShadeModel", {static_cast<double>(model)}); }
void glLineWidth(GLfloat width) { NoteOutside("glLineWidth", {width}); }

void glPointSize(GLfloat size)
{
    NoteOutside("glPointSize", {size});
    TheState().pointSize = size;
}

void glViewport(GLint x, GLint y, GLsizei width, GLsizei height)
{
    NoteOutside("glViewport", {static_cast<double>(x), static_cast<double>(y), static_cast<double>(width),
                               static_cast<double>(height)});
}

void glPushAttrib(GLbitfield mask)
{
    NoteOutside("glPushAttrib", {static_cast<double>(mask)});
    State& state = TheState();
    state.saved.push_back({mask, state.enabled, state.matrixMode, state.pointSize, Numbers(state.colour, 4)});
}

void glPopAttrib(void)
{
    NoteOutside("glPopAttrib", {});
    State& state = TheState();
    if (state.saved.empty()) {
        state.mistakes.push_back("glPopAttrib without glPushAttrib");
        return;
    }
    const Attributes& saved = state.saved.back();
    if ((saved.mask & GL_ENABLE_BIT) != 0)
        state.enabled = saved.enabled;
    if ((saved.mask & GL_TRANSFORM_BIT) != 0)
        state.matrixMode = saved.matrixMode;
    if ((saved.mask & GL_POINT_BIT) != 0)
        state.pointSize = saved.pointSize;
    if ((saved.mask & GL_CURRENT_BIT) != 0)
        SetColour(saved.colour.data(), 4);
    state.saved.pop_back();
}

void glPushClientAttrib(GLbitfield mask) { NoteOutside("glPushClientAttrib", {static_cast<double>(mask)}); }
void glPopClientAttrib(void) { NoteOutside("glPopClientAttrib", {}); }
void glEnableClientState(GLenum array) { NoteOutside("glEnableClientState", {static_cast<double>(array)}); }
void glDisableClientState(GLenum array) { NoteOutside("glDisableClientState", {static_cast<double>(array)}); }

void glVertexPointer(GLint size, GLenum type, GLsizei stride, const void*)
{
    NoteOutside("glVertexPointer", {static_cast<double>(size), static_cast<double>(type), static_cast<double>(stride)});
}

void glColorPointer(GLint size, GLenum type, GLsizei stride, const void*)
{
    NoteOutside("glColorPointer", {static_cast<double>(size), static_cast<double>(type), static_cast<double>(stride)});
}

void glDrawArrays(GLenum mode, GLint first, GLsizei count)
{
    NoteOutside("glDrawArrays", {static_cast<double>(mode), static_cast<double>(first), static_cast<double>(count)});
}

void glDrawElements(GLenum mode, GLsizei count, GLenum type, const void*)
{
    NoteOutside("glDrawElements", {static_cast<double>(mode), static_cast<double>(count), static_cast<double>(type)});
}

void glGetFloatv(GLenum what, GLfloat* answer)
{
    for (int i = 0; what == GL_CURRENT_COLOR && i < 4; ++i)
        answer[i] = static_cast<GLfloat>(TheState().colour[i]);
}

void glGetIntegerv(GLenum what, GLint* answer)
{
    if (what == GL_MODELVIEW_STACK_DEPTH || what == GL_PROJECTION_STACK_DEPTH)
        *answer = 1 + GlRecorder::StackDepth(what == GL_MODELVIEW_STACK_DEPTH ? GL_MODELVIEW : GL_PROJECTION);
    else if (what == GL_MATRIX_MODE)
        *answer = static_cast<GLint>(TheState().matrixMode);
}

GLboolean glIsEnabled(GLenum feature) { return GlRecorder::IsEnabled(feature) ? GL_TRUE : GL_FALSE; }
GLenum glGetError(void) { return GL_NO_ERROR; }

} // extern "C"
