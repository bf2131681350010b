// SPDX-License-Identifier: MIT
// Reading, rewriting and searching a skin through the calls that a guest uses. Arguments: vertices, influences, bones.
#include "CopyRatio.h"
#include "SkinnedCharacter.h"

#include <numeric>
#include <random>

namespace {

SkinnedCharacter MakeCharacter(const benchmark::State& state)
{
    return {static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), static_cast<int>(state.range(2))};
}

ISkinLinks& LinksOf(const SkinnedCharacter& character)
{
    return *static_cast<ISkinLinks*>(character.mesh->IQuery(kInterfaceSkinLinks, 0));
}

void ReadEntryByEntry(benchmark::State& state)
{
    const SkinnedCharacter character = MakeCharacter(state);
    ISkinLinks& links = LinksOf(character);
    RunAgainstCopy(state, character.SkinBytes(), [&links] {
        double sum = 0;
        for (int link = 0; link < links.LinkCount(); ++link) {
            links.BeginLink(link);
            for (int entry = 0; entry < links.EntryCount(); ++entry)
                sum += links.EntryWeight(entry) * links.EntryVertex(entry);
            links.EndLink();
        }
        benchmark::DoNotOptimize(sum);
    });
}

void ReadWholeLinks(benchmark::State& state)
{
    const SkinnedCharacter character = MakeCharacter(state);
    ISkinLinks& links = LinksOf(character);
    RunAgainstCopy(state, character.SkinBytes(), [&links] {
        double sum = 0;
        for (int link = 0; link < links.LinkCount(); ++link) {
            links.BeginLink(link);
            const int* vertices = nullptr;
            const double* weights = nullptr;
            int count = 0;
            links.EntryArrays(vertices, weights, count);
            for (int entry = 0; entry < count; ++entry)
                sum += weights[entry] * vertices[entry];
            links.EndLink();
        }
        benchmark::DoNotOptimize(sum);
    });
}

void ClearAll(ISkinLinks& links)
{
    for (int link = 0; link < links.LinkCount(); ++link) {
        links.BeginLink(link);
        links.ClearEntries();
        links.EndLink();
    }
}

/// A whole rewrite, vertex after vertex, with the host's count of changed vertices at the end.
void Rewrite(benchmark::State& state)
{
    const SkinnedCharacter character = MakeCharacter(state);
    ISkinLinks& links = LinksOf(character);
    RunAgainstCopy(state, character.SkinBytes(), [&] {
        ClearAll(links);
        for (int vertex = 0; vertex < character.vertices; ++vertex) {
            for (int i = 0; i < character.influences; ++i) {
                links.BeginLink(character.LinkOf(vertex, i));
                links.AddEntry(vertex, 0.5);
                links.EndLink();
            }
        }
        benchmark::DoNotOptimize(character.mesh->GetSkin()->TakeNormalisedCount());
    });
}

void WriteInOrder(benchmark::State& state, const std::vector<int>& order, const SkinnedCharacter& character)
{
    ISkinLinks& links = LinksOf(character);
    double weight = 0.25;
    RunAgainstCopy(state, character.SkinBytes(), [&] {
        weight = 0.75 - weight;
        for (const int vertex : order) {
            for (int i = 0; i < character.influences; ++i) {
                links.BeginLink(character.LinkOf(vertex, i));
                links.SetEntryWeight(weight, links.FindEntry(vertex));
                links.EndLink();
            }
        }
    });
}

/// Every weight set through FindEntry, vertices in rising order.
void WriteRising(benchmark::State& state)
{
    const SkinnedCharacter character = MakeCharacter(state);
    std::vector<int> order(static_cast<size_t>(character.vertices));
    std::iota(order.begin(), order.end(), 0);
    WriteInOrder(state, order, character);
}

/// The same with the vertices shuffled: every search goes through the index and misses the caches.
void WriteShuffled(benchmark::State& state)
{
    const SkinnedCharacter character = MakeCharacter(state);
    std::vector<int> order(static_cast<size_t>(character.vertices));
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    WriteInOrder(state, order, character);
}

/// Every weight set link after link, whole links at once.
void WriteWholeLinks(benchmark::State& state)
{
    const SkinnedCharacter character = MakeCharacter(state);
    ISkinLinks& links = LinksOf(character);
    std::vector<std::vector<int>> vertices;
    std::vector<std::vector<double>> weights;
    for (int link = 0; link < links.LinkCount(); ++link) {
        const ZArrayTemplate<int>& own = character.mesh->GetSkin()->GetEntryVertices(link);
        vertices.emplace_back(own.begin(), own.end());
        weights.emplace_back(vertices.back().size(), 0.5);
    }
    RunAgainstCopy(state, character.SkinBytes(), [&] {
        for (int link = 0; link < links.LinkCount(); ++link) {
            const auto number = static_cast<size_t>(link);
            links.BeginLink(link);
            links.SetVertexWeights(vertices[number].data(), weights[number].data(),
                                   static_cast<int>(vertices[number].size()));
            links.EndLink();
        }
    });
}

void Sizes(benchmark::internal::Benchmark* benchmark)
{
    for (const int vertices : {10000, 100000, 1000000, 4000000})
        benchmark->Args({vertices, 4, 60});
    benchmark->Args({100000, 16, 300})->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(ReadEntryByEntry)->Apply(Sizes);
BENCHMARK(ReadWholeLinks)->Apply(Sizes);
BENCHMARK(Rewrite)->Apply(Sizes);
BENCHMARK(WriteRising)->Apply(Sizes);
BENCHMARK(WriteShuffled)->Apply(Sizes);
BENCHMARK(WriteWholeLinks)->Apply(Sizes);

} // namespace
