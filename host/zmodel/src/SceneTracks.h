// SPDX-License-Identifier: MIT
// The chosen animation, sorted by the node that each curve moves.
#pragma once

#include "zmodel/ZScene.h"

#include <array>
#include <vector>

struct ZScene::Tracks
{
    /// The curves of one node, by path; null where its file's value holds.
    struct Track
    {
        ZModel* target = nullptr;
        std::array<const ZAnimationChannel*, 4> curves{};
        const ZAnimationChannel*& Curve(ZAnimationPath path) { return curves[static_cast<size_t>(path)]; }
    };

    /// Points into `animation`; channels of nodes that are not in the scene are passed over.
    Tracks(const ZAnimation& animation, const ZScene& scene);

    std::vector<Track> tracks;
    double duration = 0;
};
