// SPDX-License-Identifier: MIT
// A recorder of OpenGL calls: a test program that links the objects `gl_recorder` has its own glBegin, glVertex3fv and
// so on, which stand before those of the library for everything in the process, the host's and guest's libraries
// included. They draw nothing and need no context; they write down what was called and follow the state that an overlay
// changes.
#pragma once

#include "zbaselib/ZGe.h"

#include <array>
#include <set>
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

/// The state beside the matrices that an overlay could disturb, as a context has it when it is new.
struct GlState
{
    std::set<unsigned> enabled;
    unsigned matrixMode = 0x1700; ///< GL_MODELVIEW
    double pointSize = 1, lineWidth = 1;
    std::array<double, 4> colour{1, 1, 1, 1};
    std::array<unsigned, 2> blend{1, 0}; ///< source and destination
    unsigned depthMask = 1, depthFunction = 0x0201, shadeModel = 0x1D01;
    std::array<unsigned, 2> polygonMode{0x1B02, 0x1B02}; ///< of front and back: GL_FILL
    std::array<int, 4> viewport{0, 0, 0, 0};
    friend bool operator==(const GlState&, const GlState&) = default;
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
const GlState& State();
/// Groups of attributes saved and not given back.
int AttributeDepth();
} // namespace GlRecorder
