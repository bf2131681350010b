// SPDX-License-Identifier: MIT
// Frames of the viewer, drawn off screen and read back, at 800 x 600. Argument: vertices of a sheet that fills the
// view. The bytes compared with are those of its positions and normals, four floats each.
#include "zmanipulator/Sheet.h"
#include "zmodel/CopyRatio.h"

namespace {
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

BENCHMARK(StillFrame)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Iterations(9)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(MovedFrame)->Arg(100000)->Arg(1000000)->Iterations(9)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ModelUnderAPixel)->Arg(100000)->Arg(1000000)->Iterations(9)->UseManualTime()->Unit(benchmark::kMillisecond);
} // namespace
