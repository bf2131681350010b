// SPDX-License-Identifier: MIT
// Frames of the viewer, drawn off screen and read back, at 800 x 600. Argument: vertices of a sheet that fills the
// view. The bytes compared with are those of its positions and normals, four floats each.
#include "zmanipulator/ZOffscreen.h"
#include "zmanipulator/ZViewer.h"
#include "zmodel/CopyRatio.h"
#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZScene.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <cmath>
#include <stdexcept>

namespace {
constexpr size_t kBytesPerVertex = 8 * sizeof(float);

/// A wavy sheet of quads that hangs on one bone, framed.
struct Sheet
{
    explicit Sheet(int wanted) : side(static_cast<int>(std::lround(std::sqrt(wanted))))
    {
        std::vector<float> positions;
        std::vector<int> polygons;
        for (int row = 0; row < side; ++row) {
            for (int column = 0; column < side; ++column) {
                const double x = 2.0 * column / side - 1, y = 2.0 * row / side - 1;
                for (const double part : {x, y, 0.05 * std::sin(12 * x) * std::cos(9 * y)})
                    positions.push_back(static_cast<float>(part));
                if (row + 1 < side && column + 1 < side)
                    for (const int step : {0, 1, side + 1, side})
                        polygons.push_back(row * side + column + step);
            }
        }
        auto owned = std::make_unique<ZModelPolymesh>("sheet");
        mesh = owned.get();
        mesh->SetGeometry(positions.data(), side * side, polygons, std::vector<int>(polygons.size() / 4, 4));
        scene.AddModel(std::move(owned));
        bone = scene.AddModel(std::make_unique<ZModel>("bone", ZModelKind::Bone));
        ZSkin* const skin = mesh->MakeSkin(kDeformNormalise);
        skin->AppendLink(bone, ZgeMatrix());
        skin->BeginLink(0);
        for (int vertex = 0; vertex < side * side; ++vertex)
            skin->AddEntry(vertex, 1);
        skin->EndLink();
        viewer.SetSize(800, 600);
        viewer.Frame({mesh});
        Grab();
    }
    void Grab()
    {
        std::string why;
        if (!ZOffscreen_Grab(viewer, image, &why))
            throw std::runtime_error(why);
    }
    size_t Bytes() const { return static_cast<size_t>(side) * static_cast<size_t>(side) * kBytesPerVertex; }

    int side;
    ZScene scene;
    ZModelPolymesh* mesh = nullptr;
    ZModel* bone = nullptr;
    ZViewer viewer{&scene};
    ZImage image;
};

void StillFrame(benchmark::State& state)
{
    Sheet sheet(static_cast<int>(state.range(0)));
    RunOnAllCoresAgainstCopy(state, sheet.Bytes(), [&sheet] { sheet.Grab(); });
}

/// The bone moves between frames: deformation, normals, scene box and buffers anew.
void MovedFrame(benchmark::State& state)
{
    Sheet sheet(static_cast<int>(state.range(0)));
    int frame = 0;
    RunOnAllCoresAgainstCopy(state, sheet.Bytes(), [&] {
        sheet.bone->SetPosedTransform(ZgeTranslation({0, 0, 0.001 * (++frame % 9)}));
        sheet.Grab();
    });
}

void ModelUnderAPixel(benchmark::State& state)
{
    Sheet sheet(static_cast<int>(state.range(0)));
    sheet.viewer.SetShowBones(false);
    RunAgainstCopy(state, sheet.Bytes(), [&sheet] {
        ZModel* const found = sheet.viewer.ModelAt(400, 300);
        if (found != sheet.mesh)
            throw std::runtime_error("the sheet fills the view");
    });
}

/// The tool's kind of overlay, edges and points with a colour a vertex, drawn over the sheet by a manipulator.
class Overlay : public ZManipulator
{
public:
    Overlay(Sheet& sheet, bool buffers) : ZManipulator("overlay"), m_sheet(sheet), m_buffers(buffers)
    {
        ZManipulator_GetManipulatorSet()->ManipulatorAdd(this);
        for (int vertex = 0; vertex < sheet.side * sheet.side; ++vertex)
            m_colours.insert(m_colours.end(), {0.7F, static_cast<float>(vertex % 7) / 7, 0.2F});
    }
    void ManipulatorDraw(ZManipulatorDraw&) override
    {
        glEnable(GL_DEPTH_TEST);
        if (m_buffers)
            DrawBuffers();
        else
            DrawImmediately();
        glPointSize(1);
        glDisable(GL_DEPTH_TEST);
    }

private:
    const float* Positions() { return m_sheet.mesh->Geometry().VertexPositions(1); }
    void PutVertex(const float* positions, int vertex)
    {
        glColor3fv(&m_colours[3 * static_cast<size_t>(vertex)]);
        glVertex3fv(positions + 4 * static_cast<size_t>(vertex));
    }
    void DrawImmediately()
    {
        const float* const positions = Positions();
        const int* index = m_sheet.mesh->Geometry().PolygonIndices(1);
        for (int polygon = m_sheet.mesh->Geometry().PolygonCount(); polygon > 0; --polygon) {
            glBegin(GL_LINE_LOOP);
            for (; *index >= 0; ++index)
                PutVertex(positions, *index);
            PutVertex(positions, ~*index++);
            glEnd();
        }
        glPointSize(4);
        glBegin(GL_POINTS);
        for (int vertex = 0; vertex < m_sheet.side * m_sheet.side; ++vertex)
            PutVertex(positions, vertex);
        glEnd();
    }
    void DrawBuffers()
    {
        if (m_names[0] == 0)
            MakeBuffers();
        glBindBuffer(GL_ARRAY_BUFFER, m_names[0]);
        glVertexPointer(3, GL_FLOAT, 4 * sizeof(float), nullptr);
        glBindBuffer(GL_ARRAY_BUFFER, m_names[1]);
        glColorPointer(3, GL_FLOAT, 0, nullptr);
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_COLOR_ARRAY);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_names[2]);
        glDrawElements(GL_LINES, m_lineEnds, GL_UNSIGNED_INT, nullptr);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
        glPointSize(4);
        glDrawArrays(GL_POINTS, 0, m_sheet.side * m_sheet.side);
        glDisableClientState(GL_COLOR_ARRAY);
        glDisableClientState(GL_VERTEX_ARRAY);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    }
    void MakeBuffers()
    {
        std::vector<GLuint> ends;
        const int side = m_sheet.side;
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
        glGenBuffers(3, m_names);
        Fill(GL_ARRAY_BUFFER, m_names[0], Positions(), static_cast<size_t>(side * side) * 4 * sizeof(float));
        Fill(GL_ARRAY_BUFFER, m_names[1], m_colours.data(), m_colours.size() * sizeof(float));
        Fill(GL_ELEMENT_ARRAY_BUFFER, m_names[2], ends.data(), ends.size() * sizeof(GLuint));
    }
    static void Fill(GLenum target, GLuint name, const void* data, size_t bytes)
    {
        glBindBuffer(target, name);
        glBufferData(target, static_cast<GLsizeiptr>(bytes), data, GL_STATIC_DRAW);
        glBindBuffer(target, 0);
    }

    Sheet& m_sheet;
    bool m_buffers;
    std::vector<float> m_colours;
    GLuint m_names[3] = {0, 0, 0};
    GLsizei m_lineEnds = 0;
};

void FrameWithOverlay(benchmark::State& state, bool buffers)
{
    Sheet sheet(static_cast<int>(state.range(0)));
    Overlay overlay(sheet, buffers);
    RunOnAllCoresAgainstCopy(state, sheet.Bytes(), [&sheet] { sheet.Grab(); });
}

void ImmediateOverlay(benchmark::State& state) { FrameWithOverlay(state, false); }
void BufferedOverlay(benchmark::State& state) { FrameWithOverlay(state, true); }

BENCHMARK(StillFrame)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Iterations(9)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(MovedFrame)->Arg(100000)->Arg(1000000)->Iterations(9)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ModelUnderAPixel)->Arg(100000)->Arg(1000000)->Iterations(9)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ImmediateOverlay)->Arg(100000)->Arg(1000000)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BufferedOverlay)->Arg(100000)->Arg(1000000)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
} // namespace
