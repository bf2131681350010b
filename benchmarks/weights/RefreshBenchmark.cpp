// SPDX-License-Identifier: MIT
// Reading a skin into records: the first time with normalising, and again.
#include "support/LargeCharacter.h"
#include "support/PlainCopy.h"
#include "weights/ZWeightOwner.h"
#include "weights/ZWeightUIModelData.h"

#include <benchmark/benchmark.h>

#include <unordered_map>

namespace {

struct IdleStrategy final : IWeightDeform
{
    void ComputeColors(const ZBoneColourTable&, int, ZWeightUIModelData&) override {}
    void BoneColorChanged(const ZBoneColourTable&, int, int, float, float, float, ZWeightUIModelData&) override {}
    void ComputeActiveColors(const ZBoneColourTable&, int, int, ZWeightUIModelData&) override {}
};

class Owner final : public IWeightOwner
{
public:
    explicit Owner(const LargeCharacter& character)
    {
        for (const auto& bone : character.Bones()) {
            m_positions.emplace(bone.get(), m_bones.GetCount());
            m_bones.Add(bone.get());
        }
    }
    const ZArrayTemplate<ZModel*>& BoneList() const override { return m_bones; }
    int BonePosition(const ZModel* bone) const override { return m_positions.at(bone); }
    IWeightDeform* MakeStrategy(int) override { return new IdleStrategy; }
    void WeightViewChanged() override {}

private:
    ZArrayTemplate<ZModel*> m_bones;
    std::unordered_map<const ZModel*, int> m_positions;
};

LargeSkin SkinOf(const benchmark::State& state, double sum)
{
    LargeSkin skin;
    skin.vertices = static_cast<int>(state.range(0));
    skin.influences = static_cast<int>(state.range(1));
    skin.bones = static_cast<int>(state.range(2));
    skin.scattered = state.range(3) != 0;
    skin.sum = sum;
    return skin;
}

void FirstRefresh(benchmark::State& state)
{
    const LargeSkin skin = SkinOf(state, 2.0);
    LargeCharacter character(skin);
    Owner owner(character);
    const double copy = Bench_CopySeconds(skin.ByteCount());
    double total = 0;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        character.Fill();
        ZWeightUIModelData data(&character.Mesh(), &owner, false);
        data.SetModelSelected(true, nullptr);
        Bench_HavePagesAtHand(4 * skin.ByteCount());
        const double seconds = Bench_Time([&] { data.Refresh(); });
        state.SetIterationTime(seconds);
        total += seconds;
    }
    state.counters["copies"] = total / static_cast<double>(state.iterations()) / copy;
}

void LaterRefresh(benchmark::State& state)
{
    const LargeSkin skin = SkinOf(state, 1.0);
    LargeCharacter character(skin);
    Owner owner(character);
    ZWeightUIModelData data(&character.Mesh(), &owner, false);
    data.SetModelSelected(true, nullptr);
    data.Refresh();
    const double copy = Bench_CopySeconds(skin.ByteCount());
    double total = 0;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        const double seconds = Bench_Time([&] { data.Refresh(); });
        state.SetIterationTime(seconds);
        total += seconds;
    }
    state.counters["copies"] = total / static_cast<double>(state.iterations()) / copy;
    for (int vertex = 0; vertex < skin.vertices; ++vertex)
        data.SetVertexState(vertex, 2);
    state.counters["memory"] = static_cast<double>(data.GetByteCount()) / static_cast<double>(skin.ByteCount());
}

/// vertices, influences, bones, scattered
void Sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgNames({"vertices", "influences", "bones", "scattered"})
        ->Args({10000, 4, 60, 0})
        ->Args({100000, 4, 60, 0})
        ->Args({1000000, 4, 60, 0})
        ->Args({4000000, 4, 60, 0})
        ->Args({4000000, 4, 60, 1})
        ->Args({100000, 16, 300, 0})
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

BENCHMARK(FirstRefresh)->Apply(Sizes)->Iterations(3);
BENCHMARK(LaterRefresh)->Apply(Sizes)->Iterations(5);

} // namespace
