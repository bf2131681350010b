// SPDX-License-Identifier: MIT
// A recorder of OpenGL calls: a test program that links the objects `gl_recorder` has its own glBegin, glVertex3fv and
// so on, which stand before those of the library for everything in the process, the host's and guest's libraries
// included. They draw nothing and need no context; they write down what was called and follow the state that an overlay
// changes.
#pragma once

#include "zbaselib/ZGe.h"

#include <string>
#include <vector>

/// One call with its arguments as numbers; those that take a pointer to numbers have the numbers. "glVertex3fv" {1, 2,
/// 3}.
struct GlCall
{
    std::string name;
    std::vector<double> args;
    friend bool operator==(const GlCall&, const GlCall&) = default;
};

/// A vertex between glBegin and glEnd with the colour that was current.
struct GlVertex
{
    double place[3] = {0, 0, 0};
    double colour[4] = {1, 1, 1, 1};
};

/// What one glBegin ... glEnd drew, and the state it was drawn in.
struct GlBatch
{
    unsigned mode = 0;
    double pointSize = 1;
    bool blend = false, depthTest = false;
    ZgeMatrix projection, modelview; ///< for row vectors, as the rest of the program has them
    std::vector<GlVertex> vertices;
};

namespace GlRecorder {
/// Forgets all calls and puts the state back to that of a new context.
void Clear();
/// Every call in order. Those of arrays, buffers and attributes are listed too, pointers left out.
const std::vector<GlCall>& Calls();
std::vector<std::string> Names();
const std::vector<GlBatch>& Batches();
/// What no context would have taken: a glEnd without glBegin, a pop of an empty stack, a state call inside a batch.
const std::vector<std::string>& Mistakes();

/// Matrices pushed and not popped, of GL_MODELVIEW or GL_PROJECTION.
int StackDepth(unsigned matrixMode);
const ZgeMatrix& Matrix(unsigned matrixMode);
unsigned MatrixMode();
bool IsEnabled(unsigned feature);
double PointSize();
} // namespace GlRecorder
