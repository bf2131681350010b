// SPDX-License-Identifier: MIT
#include "Watch.h"

#include "object/ZUndoStack.h"
#include "zmodel/ZSkin.h"

#include <bit>

namespace {
/// Mixes a number into a state; the order counts (the multiplier is that of the 64-bit FNV hash by Fowler, Noll and
/// Vo).
void Mix(std::uint64_t& state, std::uint64_t number) { state = (state ^ number) * 0x100000001b3u; }
} // namespace

std::uint64_t ZSession::Watch::SceneState(const ZScene& scene)
{
    std::uint64_t state = scene.GetModels().size();
    Mix(state, std::bit_cast<std::uint64_t>(scene.GetTime()));
    Mix(state, static_cast<std::uint64_t>(scene.GetAnimation()));
    for (const ZModel* model : scene.GetModels()) {
        Mix(state, reinterpret_cast<std::uintptr_t>(model));
        Mix(state, model->GetTransformVersion());
        Mix(state, (model->IsHidden() ? 1u : 0u) + (model->IsSelected() ? 2u : 0u));
        if (const ZSkin* skin = model->GetSkin())
            Mix(state, skin->GetVersion());
    }
    return state;
}

std::uint64_t ZSession::Watch::PictureState(const std::vector<ZTool*>& tools)
{
    std::uint64_t state = static_cast<std::uint64_t>(ZUndoStack::TheOne()->GetChangeCount());
    std::vector<ZtView*> views;
    for (ZTool* tool : tools) {
        Mix(state, tool->IsToolActive() ? 1 : 0);
        Mix(state, static_cast<std::uint64_t>(tool->GetChangeCount()));
        tool->CollectViews(views);
    }
    for (const ZtView* view : views)
        Mix(state, static_cast<std::uint64_t>(view->GetChangeCount()));
    return state;
}
