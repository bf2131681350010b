// SPDX-License-Identifier: MIT
// Picking: a rectangle over all, half or none of the vertices of a mesh, in copies of its positions (four floats each).
// Arguments: vertices, per cent of them in the rectangle, foreground only.
#include "support/LargeCharacter.h"
#include "support/PlainCopy.h"
#include "viewport/FakeTool.h"
#include "viewport/ZWeightPick.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <stdexcept>

namespace {

/// A camera that sees x from 0 to `width` across the whole view, in perspective.
class WideCamera final : public IViewerCamera
{
public:
    explicit WideCamera(double width)
    {
        m_view = ZgeTranslation({-width / 2, 0, -width});
        m_projection(0, 0) = m_projection(1, 1) = 2;
        m_projection(2, 3) = -1;
        m_projection(3, 3) = 0;
    }
    const ZgeMatrix& ProjectionMatrix() override { return m_projection; }
    const ZgeMatrix& ViewMatrix() override { return m_view; }
    ZgeVector4 CameraToScene(const ZgeVector4& point) override { return point * ZgeInverse(m_view); }
    void FrameBox(const ZgeBox&) override {}
    int ViewportX() override { return 0; }
    int ViewportY() override { return 0; }
    int ViewportWidth() override { return 800; }
    int ViewportHeight() override { return 600; }

private:
    ZgeMatrix m_view, m_projection;
};

class PickStage
{
public:
    PickStage(int vertices, int percent, bool foregroundOnly) : m_character(SkinOf(vertices)), m_camera(vertices)
    {
        for (const auto& bone : m_character.Bones())
            m_tool.AddBone(bone.get());
        m_tool.Admit(&m_character.Mesh());
        m_tool.foregroundOnly = foregroundOnly;
        m_rectangle = {-1.0F, -0.5F, -1.0F + 0.02F * static_cast<float>(percent), 0.5F};
        if (percent == 0)
            m_rectangle = {2.0F, 2.0F, 3.0F, 3.0F};
    }
    ~PickStage() { m_tool.models.RemoveAll(); }
    int Pick()
    {
        ZArrayTemplate<int> hits;
        ZWeightPick_Pick(m_tool, m_camera, m_rectangle, false, hits);
        benchmark::DoNotOptimize(hits.GetData());
        return hits.GetCount() / 2;
    }

private:
    static LargeSkin SkinOf(int vertices)
    {
        LargeSkin skin;
        skin.vertices = vertices;
        skin.influences = 1;
        skin.bones = 4;
        return skin;
    }
    LargeCharacter m_character;
    FakeTool m_tool;
    WideCamera m_camera;
    ZPickRectangle m_rectangle;
};

void Pick(benchmark::State& state)
{
    const auto vertices = static_cast<int>(state.range(0));
    const auto percent = static_cast<int>(state.range(1));
    PickStage stage(vertices, percent, state.range(2) != 0);
    const double copy = Bench_CopySeconds(static_cast<size_t>(vertices) * 4 * sizeof(float));
    int hits = stage.Pick(); // positions are deformed before anything is measured
    std::vector<double> times;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        times.push_back(Bench_Time([&] { hits = stage.Pick(); }));
        state.SetIterationTime(times.back());
    }
    if (state.range(2) == 0 && hits / (vertices / 100) != percent)
        throw std::runtime_error("the rectangle holds " + std::to_string(hits) + " vertices");
    std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
    state.counters["copies"] = times[times.size() / 2] / copy;
    state.counters["ns_per_vertex"] = times[times.size() / 2] * 1e9 / vertices;
}

/// vertices, per cent hit, foreground only
void Sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgNames({"vertices", "percent", "foreground"});
    for (const int vertices : {10000, 100000, 1000000, 4000000})
        for (const int percent : {0, 50, 100})
            benchmark->Args({vertices, percent, 0});
    benchmark->Args({1000000, 100, 1})->Args({4000000, 100, 1});
    benchmark->UseManualTime()->Iterations(11)->Unit(benchmark::kMillisecond);
}

BENCHMARK(Pick)->Apply(Sizes);

} // namespace
