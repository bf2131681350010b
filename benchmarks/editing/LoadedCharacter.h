// SPDX-License-Identifier: MIT
// A large mesh in a small tool, loaded and coloured.
#pragma once

#include "support/EditingTool.h"
#include "support/LargeCharacter.h"

#include <benchmark/benchmark.h>

#include <numeric>

class LoadedCharacter
{
public:
    explicit LoadedCharacter(const LargeSkin& skin) : character(skin), data(tool.Admit(&character.Mesh()))
    {
        tool.RebuildBoneList();
        // As the session does after every event: what normalising changed is said, and is over.
        character.Mesh().GetSkin()->TakeNormalisedCount();
    }
    /// Influences and colours, as they are stored.
    size_t RecordBytes() const
    {
        size_t bytes = 0;
        for (const VertexInfluences* const record : data.vertexInfluences)
            bytes += sizeof(*record) + record->links.GetHeapBytes() + record->weights.GetHeapBytes();
        return bytes;
    }
    /// Pairs of every vertex, ascending.
    ZArrayTemplate<int> AllVertices() const
    {
        ZArrayTemplate<int> batch;
        batch.Reserve(2 * data.vertexStates.GetCount());
        for (int vertex = 0; vertex < data.vertexStates.GetCount(); ++vertex) {
            batch.Add(0);
            batch.Add(vertex);
        }
        return batch;
    }

    LargeCharacter character;
    EditingTool tool;
    ZWeightUIModelData& data;
};

inline LargeSkin SkinOf(const benchmark::State& state)
{
    LargeSkin skin;
    skin.vertices = static_cast<int>(state.range(0));
    skin.influences = static_cast<int>(state.range(1));
    skin.bones = static_cast<int>(state.range(2));
    skin.scattered = state.range(3) != 0;
    return skin;
}

/// vertices, influences, bones, scattered
inline void Sizes(benchmark::internal::Benchmark* benchmark)
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
