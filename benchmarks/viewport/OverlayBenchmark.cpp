// SPDX-License-Identifier: MIT
// The tool's overlay over a mesh, as the tool draws it, and the same picture from buffers that are filled once.
// Argument: vertices. Frames are drawn off screen and read back; BareFrame is one without an overlay.
#include "support/PlainCopy.h"
#include "viewport/FakeTool.h"
#include "viewport/ZCharacterWeightingManipulator.h"
#include "zmanipulator/Sheet.h"
#include "zmodel/CopyRatio.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <benchmark/benchmark.h>

namespace {

constexpr float kPointSize = 4;

/// The sheet, admitted by a tool, with a colour for every vertex.
struct WeightedSheet
{
    explicit WeightedSheet(int vertices) : sheet(vertices)
    {
        tool.AddBone(sheet.bone);
        data = &tool.Admit(sheet.mesh);
        const int count = sheet.side * sheet.side;
        data->vertexColours.SetCount(4 * count);
        for (int vertex = 0; vertex < count; ++vertex)
            for (int channel = 0; channel < 4; ++channel)
                data->vertexColours[4 * vertex + channel] = static_cast<float>((vertex + channel) % 7) / 7;
    }
    ~WeightedSheet() { tool.models.RemoveAll(); }
    Sheet sheet;
    FakeTool tool;
    ZWeightUIModelData* data = nullptr;
};

/// Edges and points from buffers; each edge once, where the tool draws it with each of its polygons.
class BufferedOverlay : public ZManipulator
{
public:
    explicit BufferedOverlay(WeightedSheet& weighted) : ZManipulator("buffered"), m_weighted(weighted)
    {
        ZManipulator_GetManipulatorSet()->ManipulatorAdd(this);
    }
    void ManipulatorDraw(ZManipulatorDraw&) override
    {
        if (m_names[0] == 0)
            MakeBuffers();
        glEnable(GL_DEPTH_TEST);
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_COLOR_ARRAY);
        Point(m_names[0], m_names[1]);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_names[3]);
        glDrawElements(GL_LINES, m_lineEnds, GL_UNSIGNED_INT, nullptr);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
        Point(m_names[0], m_names[2]);
        glPointSize(kPointSize);
        glDrawArrays(GL_POINTS, 0, m_weighted.sheet.side * m_weighted.sheet.side);
        glPointSize(1);
        glDisableClientState(GL_COLOR_ARRAY);
        glDisableClientState(GL_VERTEX_ARRAY);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glDisable(GL_DEPTH_TEST);
    }

private:
    static void Point(GLuint positions, GLuint colours)
    {
        glBindBuffer(GL_ARRAY_BUFFER, positions);
        glVertexPointer(3, GL_FLOAT, 4 * sizeof(float), nullptr);
        glBindBuffer(GL_ARRAY_BUFFER, colours);
        glColorPointer(3, GL_FLOAT, 4 * sizeof(float), nullptr);
    }
    static void Fill(GLenum target, GLuint name, const void* data, size_t bytes)
    {
        glBindBuffer(target, name);
        glBufferData(target, static_cast<GLsizeiptr>(bytes), data, GL_STATIC_DRAW);
        glBindBuffer(target, 0);
    }
    void MakeBuffers()
    {
        std::vector<GLuint> ends;
        const int side = m_weighted.sheet.side;
        for (int row = 0; row < side; ++row) {
            for (int column = 0; column < side; ++column) {
                const auto here = static_cast<GLuint>(row * side + column);
                if (column + 1 < side)
                    ends.insert(ends.end(), {here, here + 1});
                if (row + 1 < side)
                    ends.insert(ends.end(), {here, here + static_cast<GLuint>(side)});
            }
        }
        m_lineEnds = static_cast<GLsizei>(ends.size());
        const auto& colours = m_weighted.data->vertexColours;
        std::vector<float> dimmed(colours.begin(), colours.end());
        for (float& channel : dimmed)
            channel *= 0.7F;
        glGenBuffers(4, m_names);
        const size_t bytes = colours.size() * sizeof(float);
        Fill(GL_ARRAY_BUFFER, m_names[0], m_weighted.data->geometry->VertexPositions(), bytes);
        Fill(GL_ARRAY_BUFFER, m_names[1], dimmed.data(), bytes);
        Fill(GL_ARRAY_BUFFER, m_names[2], colours.GetData(), bytes);
        Fill(GL_ELEMENT_ARRAY_BUFFER, m_names[3], ends.data(), ends.size() * sizeof(GLuint));
    }

    WeightedSheet& m_weighted;
    GLuint m_names[4] = {0, 0, 0, 0}; ///< positions, colours of edges and points, ends of edges
    GLsizei m_lineEnds = 0;
};

void Measure(benchmark::State& state, WeightedSheet& weighted)
{
    weighted.sheet.Grab();
    RunOnAllCoresAgainstCopy(state, weighted.sheet.Bytes(), [&weighted] { weighted.sheet.Grab(); });
}

void BareFrame(benchmark::State& state)
{
    WeightedSheet weighted(static_cast<int>(state.range(0)));
    Measure(state, weighted);
}

void FrameWithTheToolsOverlay(benchmark::State& state)
{
    WeightedSheet weighted(static_cast<int>(state.range(0)));
    auto* const manipulator = new ZCharacterWeightingManipulator("Skin", 1); // owned by the host's set
    manipulator->SetTool(&weighted.tool);
    manipulator->ManipulatorSetHidden(false);
    Measure(state, weighted);
    manipulator->SetTool(nullptr);
    ZManipulator_GetManipulatorSet()->ManipulatorRemove(manipulator);
}

void FrameWithABufferedOverlay(benchmark::State& state)
{
    WeightedSheet weighted(static_cast<int>(state.range(0)));
    BufferedOverlay overlay(weighted);
    Measure(state, weighted);
}

void Sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgName("vertices")->Arg(100000)->Arg(1000000);
    benchmark->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
}

BENCHMARK(BareFrame)->Apply(Sizes);
BENCHMARK(FrameWithTheToolsOverlay)->Apply(Sizes);
BENCHMARK(FrameWithABufferedOverlay)->Apply(Sizes);

} // namespace
