// SPDX-License-Identifier: MIT
// One frame of playback: bones move, positions and normals follow. Arguments: vertices, influences, bones. The bytes
// are those of the positions (four floats) and influences (vertex and double).
#include "CopyRatio.h"
#include "SkinnedCharacter.h"

namespace {

SkinnedCharacter MakeCharacter(const benchmark::State& state)
{
    return {static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), static_cast<int>(state.range(2))};
}

size_t FrameBytes(const SkinnedCharacter& character)
{
    return character.SkinBytes() + static_cast<size_t>(character.vertices) * 4 * sizeof(float);
}

void Positions(benchmark::State& state)
{
    SkinnedCharacter character = MakeCharacter(state);
    character.mesh->Geometry().VertexPositions(1);
    int frame = 0;
    RunOnAllCoresAgainstCopy(state, FrameBytes(character), [&] {
        character.Pose(++frame);
        benchmark::DoNotOptimize(character.mesh->Geometry().VertexPositions(1));
    });
}

void PositionsAndNormals(benchmark::State& state)
{
    SkinnedCharacter character = MakeCharacter(state);
    character.mesh->Geometry().DisplayPositions(1);
    int frame = 0;
    RunOnAllCoresAgainstCopy(state, FrameBytes(character), [&] {
        character.Pose(++frame);
        benchmark::DoNotOptimize(character.mesh->Geometry().DisplayPositions(1));
    });
}

/// Two morph targets, then the skin.
void MorphedPositions(benchmark::State& state)
{
    SkinnedCharacter character = MakeCharacter(state);
    ZMorphTarget target;
    target.positions.assign(3 * static_cast<size_t>(character.vertices), 0.5F);
    character.mesh->SetMorphTargets({target, target});
    int frame = 0;
    RunOnAllCoresAgainstCopy(state, FrameBytes(character), [&] {
        character.Pose(++frame);
        character.mesh->SetMorphWeights({static_cast<float>(frame % 7), 0.5F});
        benchmark::DoNotOptimize(character.mesh->Geometry().VertexPositions(1));
    });
}

/// One event of a weight edit: a thousand vertices beside each other get another weight, positions and normals follow.
/// Copies are of the whole frame, so that the figure compares with the ones above.
void ThousandWeights(benchmark::State& state)
{
    SkinnedCharacter character = MakeCharacter(state);
    character.Pose(7);
    character.mesh->Geometry().DisplayPositions(1);
    ZSkin& skin = *character.mesh->GetSkin();
    const int first = character.vertices / 2;
    double weight = 0.1;
    RunOnAllCoresAgainstCopy(state, FrameBytes(character), [&] {
        weight = 1 - weight;
        for (int vertex = first; vertex < first + 1000; ++vertex) {
            skin.BeginLink(character.LinkOf(vertex, 0));
            skin.SetEntryWeight(weight, skin.FindEntry(vertex));
            skin.EndLink();
        }
        benchmark::DoNotOptimize(character.mesh->Geometry().DisplayPositions(1));
    });
}

/// A thousand frames in which nothing moved; one is too short to time.
void ThousandStillFrames(benchmark::State& state)
{
    const SkinnedCharacter character = MakeCharacter(state);
    character.mesh->Geometry().DisplayPositions(1);
    RunOnAllCoresAgainstCopy(state, FrameBytes(character), [&] {
        for (int i = 0; i < 1000; ++i)
            benchmark::DoNotOptimize(character.mesh->Geometry().DisplayPositions(1));
    });
}

/// A NURBS surface of 100 x 100 control points on a grid of 500 x 500: arguments as above, of the control points.
void NurbsGrid(benchmark::State& state)
{
    ZNurbsSurface surface;
    surface.countU = surface.countV = 100;
    for (int i = 0; i < 104; ++i)
        surface.knotsU.push_back(i);
    surface.knotsV = surface.knotsU;
    for (int i = 0; i < 10000; ++i)
        surface.points.insert(surface.points.end(), {i % 100 * 1.0, i / 100 * 1.0, i % 7 * 0.1});
    ZModelNurbs model("surface");
    model.SetSurface(surface, 500, 500);
    const auto bone = std::make_unique<ZModel>("bone", ZModelKind::Bone);
    ZSkin& skin = *model.MakeSkin(kDeformNormalise);
    skin.AddLink(bone.get());
    skin.BeginLink(0);
    for (int vertex = 0; vertex < 10000; ++vertex)
        skin.AddEntry(vertex, 1);
    skin.EndLink();
    int frame = 0;
    RunOnAllCoresAgainstCopy(state, size_t{500} * 500 * 4 * sizeof(float), [&] {
        bone->SetPosedTransform(ZgeTranslation({++frame % 10 * 1.0, 0, 0}));
        benchmark::DoNotOptimize(model.Geometry().TessellatedPoints(1));
    });
}

void Sizes(benchmark::internal::Benchmark* benchmark)
{
    for (const int vertices : {10000, 100000, 1000000})
        benchmark->Args({vertices, 4, 60});
    benchmark->Args({100000, 16, 300})->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(Positions)->Apply(Sizes);
BENCHMARK(PositionsAndNormals)->Apply(Sizes);
BENCHMARK(MorphedPositions)->Apply(Sizes);
BENCHMARK(ThousandWeights)->Apply(Sizes);
BENCHMARK(ThousandStillFrames)->Apply(Sizes);
BENCHMARK(NurbsGrid)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
