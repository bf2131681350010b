// SPDX-License-Identifier: MIT
// Weights into colours.
#include "editing/LoadedCharacter.h"
#include "support/PlainCopy.h"

namespace {

void Recolour(benchmark::State& state, IWeightDeform* strategy, int mode)
{
    LoadedCharacter loaded(SkinOf(state));
    delete loaded.data.strategy;
    loaded.data.strategy = strategy;
    const double copy = Bench_CopySeconds(loaded.RecordBytes() + loaded.data.vertexColours.GetHeapBytes());
    double total = 0;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        const double seconds = Bench_Time([&] { loaded.data.ComputeColors(loaded.tool.colours, mode); });
        state.SetIterationTime(seconds);
        total += seconds;
    }
    state.counters["copies"] = total / static_cast<double>(state.iterations()) / copy;
}

void RecolourSmooth(benchmark::State& state) { Recolour(state, new ZWeightDeformNormalize, kColourSmooth); }
void RecolourSmoothTotal(benchmark::State& state) { Recolour(state, new ZWeightDeformTotal100, kColourSmooth); }
void RecolourMost(benchmark::State& state) { Recolour(state, new ZWeightDeformNormalize, kColourMostInfluential); }
void RecolourLeast(benchmark::State& state) { Recolour(state, new ZWeightDeformNormalize, kColourLeastInfluential); }

/// Against recolouring everything: one link of many.
void OneBonesColour(benchmark::State& state)
{
    LoadedCharacter loaded(SkinOf(state));
    const double all = Bench_Time([&] { loaded.data.ComputeColors(loaded.tool.colours, kColourSmooth); });
    double total = 0;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        const double seconds =
            Bench_Time([&] { loaded.data.BoneColorChanged(loaded.tool.colours, 5, kColourSmooth, 0, 0, 0); });
        state.SetIterationTime(seconds);
        total += seconds;
    }
    state.counters["of_all"] = total / static_cast<double>(state.iterations()) / all;
}

BENCHMARK(RecolourSmooth)->Apply(Sizes)->Iterations(7);
BENCHMARK(RecolourSmoothTotal)->Apply(Sizes)->Iterations(7);
BENCHMARK(RecolourMost)->Apply(Sizes)->Iterations(7);
BENCHMARK(RecolourLeast)->Apply(Sizes)->Iterations(7);
BENCHMARK(OneBonesColour)->Apply(Sizes)->Iterations(7);

} // namespace
