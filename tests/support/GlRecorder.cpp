// SPDX-License-Identifier: MIT
#include "GlRecorder.h"

#include <GL/gl.h>

#include <initializer_list>
#include <map>

namespace {
struct MatrixStack
{
    ZgeMatrix top;
    std::vector<ZgeMatrix> below;
};

/// What glPushAttrib saves.
struct Attributes
{
    GLbitfield mask = 0;
    GlState state;
};

struct Recording
{
    std::vector<GlCall> calls;
    std::vector<Attributes> saved;
    std::vector<GlBatch> batches;
    std::vector<std::string> mistakes;
    std::map<GLenum, MatrixStack> stacks;
    GlState now;
    bool inBatch = false;

    MatrixStack& Stack() { return stacks[now.matrixMode]; }
};

Recording& TheRecording()
{
    static Recording& recording = *new Recording;
    return recording;
}

GlState& Now() { return TheRecording().now; }

void Note(const char* name, std::vector<double> args) { TheRecording().calls.push_back({name, std::move(args)}); }

template <class Number> std::vector<double> Numbers(const Number* values, int count)
{
    return {values, values + count};
}

/// A call that is not allowed between glBegin and glEnd.
void NoteOutside(const char* name, std::vector<double> args)
{
    if (TheRecording().inBatch)
        TheRecording().mistakes.push_back(std::string(name) + " between glBegin and glEnd");
    Note(name, std::move(args));
}

template <class Number> void SetColour(const Number* parts, int count)
{
    std::array<double, 4>& colour = Now().colour;
    for (int i = 0; i < 4; ++i)
        colour[static_cast<size_t>(i)] = i < count ? static_cast<double>(parts[i]) : 1.0;
}

template <class Number> void AddVertex(const Number* place, int count)
{
    Recording& state = TheRecording();
    if (!state.inBatch) {
        state.mistakes.push_back("a vertex outside glBegin and glEnd");
        return;
    }
    GlVertex vertex;
    for (int i = 0; i < count; ++i)
        vertex.place[i] = static_cast<double>(place[i]);
    for (int i = 0; i < 4; ++i)
        vertex.colour[i] = state.now.colour[static_cast<size_t>(i)];
    state.batches.back().vertices.push_back(vertex);
}

template <class Number> ZgeMatrix ToMatrix(const Number* numbers)
{
    ZgeMatrix matrix;
    for (int i = 0; i < 16; ++i)
        matrix(i / 4, i % 4) = static_cast<double>(numbers[i]);
    return matrix;
}

void GiveBackFeature(const GlState& saved, GLenum feature)
{
    if (saved.enabled.count(feature) != 0)
        Now().enabled.insert(feature);
    else
        Now().enabled.erase(feature);
}

/// What glPopAttrib does for each group of the mask.
void GiveBack(GLbitfield mask, const GlState& saved)
{
    GlState& now = Now();
    if ((mask & GL_ENABLE_BIT) != 0)
        now.enabled = saved.enabled;
    if ((mask & GL_TRANSFORM_BIT) != 0)
        now.matrixMode = saved.matrixMode;
    if ((mask & GL_POINT_BIT) != 0)
        now.pointSize = saved.pointSize;
    if ((mask & GL_LINE_BIT) != 0)
        now.lineWidth = saved.lineWidth;
    if ((mask & GL_CURRENT_BIT) != 0)
        now.colour = saved.colour;
    if ((mask & GL_POLYGON_BIT) != 0)
        now.polygonMode = saved.polygonMode;
    if ((mask & GL_LIGHTING_BIT) != 0)
        now.shadeModel = saved.shadeModel;
    if ((mask & GL_VIEWPORT_BIT) != 0)
        now.viewport = saved.viewport;
    if ((mask & GL_COLOR_BUFFER_BIT) != 0) {
        now.blend = saved.blend;
        GiveBackFeature(saved, GL_BLEND);
    }
    if ((mask & GL_DEPTH_BUFFER_BIT) != 0) {
        now.depthMask = saved.depthMask;
        now.depthFunction = saved.depthFunction;
        GiveBackFeature(saved, GL_DEPTH_TEST);
    }
}

void Multiply(const ZgeMatrix& matrix) { TheRecording().Stack().top = matrix * TheRecording().Stack().top; }
} // namespace

void GlRecorder::Clear() { TheRecording() = Recording(); }
const std::vector<GlCall>& GlRecorder::Calls() { return TheRecording().calls; }
const std::vector<GlBatch>& GlRecorder::Batches() { return TheRecording().batches; }
const std::vector<std::string>& GlRecorder::Mistakes() { return TheRecording().mistakes; }
int GlRecorder::StackDepth(unsigned matrixMode)
{
    return static_cast<int>(TheRecording().stacks[matrixMode].below.size());
}
const ZgeMatrix& GlRecorder::Matrix(unsigned matrixMode) { return TheRecording().stacks[matrixMode].top; }
unsigned GlRecorder::MatrixMode() { return Now().matrixMode; }
bool GlRecorder::IsEnabled(unsigned feature) { return Now().enabled.count(feature) != 0; }
double GlRecorder::PointSize() { return Now().pointSize; }
const GlState& GlRecorder::State() { return Now(); }
int GlRecorder::AttributeDepth() { return static_cast<int>(TheRecording().saved.size()); }

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
    Recording& state = TheRecording();
    state.inBatch = true;
    GlBatch batch;
    batch.mode = mode;
    batch.pointSize = state.now.pointSize;
    batch.blend = state.now.enabled.count(GL_BLEND) != 0;
    batch.depthTest = state.now.enabled.count(GL_DEPTH_TEST) != 0;
    batch.projection = state.stacks[GL_PROJECTION].top;
    batch.modelview = state.stacks[GL_MODELVIEW].top;
    state.batches.push_back(batch);
}

void glEnd(void)
{
    if (!TheRecording().inBatch)
        TheRecording().mistakes.push_back("glEnd without glBegin");
    TheRecording().inBatch = false;
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
    Now().matrixMode = mode;
}

void glPushMatrix(void)
{
    NoteOutside("glPushMatrix", {});
    MatrixStack& stack = TheRecording().Stack();
    stack.below.push_back(stack.top);
}

void glPopMatrix(void)
{
    NoteOutside("glPopMatrix", {});
    MatrixStack& stack = TheRecording().Stack();
    if (stack.below.empty()) {
        TheRecording().mistakes.push_back("glPopMatrix of an empty stack");
        return;
    }
    stack.top = stack.below.back();
    stack.below.pop_back();
}

void glLoadIdentity(void)
{
    NoteOutside("glLoadIdentity", {});
    TheRecording().Stack().top = ZgeMatrix();
}

void glLoadMatrixd(const GLdouble* matrix)
{
    NoteOutside("glLoadMatrixd", Numbers(matrix, 16));
    TheRecording().Stack().top = ToMatrix(matrix);
}

void glLoadMatrixf(const GLfloat* matrix)
{
    NoteOutside("glLoadMatrixf", Numbers(matrix, 16));
    TheRecording().Stack().top = ToMatrix(matrix);
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
    Now().enabled.insert(feature);
}

void glDisable(GLenum feature)
{
    NoteOutside("glDisable", {static_cast<double>(feature)});
    Now().enabled.erase(feature);
}

void glBlendFunc(GLenum source, GLenum destination)
{
    NoteOutside("glBlendFunc", {static_cast<double>(source), static_cast<double>(destination)});
    Now().blend = {source, destination};
}

void glDepthFunc(GLenum function)
{
    NoteOutside("glDepthFunc", {static_cast<double>(function)});
    Now().depthFunction = function;
}

void glDepthMask(GLboolean write)
{
    NoteOutside("glDepthMask", {static_cast<double>(write)});
    Now().depthMask = write;
}

void glShadeModel(GLenum model)
{
    NoteOutside("glShadeModel", {static_cast<double>(model)});
    Now().shadeModel = model;
}

void glLineWidth(GLfloat width)
{
    NoteOutside("glLineWidth", {width});
    Now().lineWidth = static_cast<double>(width);
}

void glPolygonMode(GLenum face, GLenum mode)
{
    NoteOutside("glPolygonMode", {static_cast<double>(face), static_cast<double>(mode)});
    if (face != GL_BACK)
        Now().polygonMode[0] = mode;
    if (face != GL_FRONT)
        Now().polygonMode[1] = mode;
}

void glPointSize(GLfloat size)
{
    NoteOutside("glPointSize", {size});
    Now().pointSize = size;
}

void glViewport(GLint x, GLint y, GLsizei width, GLsizei height)
{
    NoteOutside("glViewport", {static_cast<double>(x), static_cast<double>(y), static_cast<double>(width),
                               static_cast<double>(height)});
    Now().viewport = {x, y, width, height};
}

void glPushAttrib(GLbitfield mask)
{
    NoteOutside("glPushAttrib", {static_cast<double>(mask)});
    Recording& state = TheRecording();
    state.saved.push_back({mask, state.now});
}

void glPopAttrib(void)
{
    NoteOutside("glPopAttrib", {});
    Recording& state = TheRecording();
    if (state.saved.empty()) {
        state.mistakes.push_back("glPopAttrib without glPushAttrib");
        return;
    }
    const Attributes& saved = state.saved.back();
    GiveBack(saved.mask, saved.state);
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
        answer[i] = static_cast<GLfloat>(Now().colour[i]);
}

void glGetIntegerv(GLenum what, GLint* answer)
{
    if (what == GL_MODELVIEW_STACK_DEPTH || what == GL_PROJECTION_STACK_DEPTH)
        *answer = 1 + GlRecorder::StackDepth(what == GL_MODELVIEW_STACK_DEPTH ? GL_MODELVIEW : GL_PROJECTION);
    else if (what == GL_MATRIX_MODE)
        *answer = static_cast<GLint>(Now().matrixMode);
}

GLboolean glIsEnabled(GLenum feature) { return GlRecorder::IsEnabled(feature) ? GL_TRUE : GL_FALSE; }
GLenum glGetError(void) { return GL_NO_ERROR; }

} // extern "C"
