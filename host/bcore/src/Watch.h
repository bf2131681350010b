// SPDX-License-Identifier: MIT
// What the session remembers from one event to the next.
#pragma once

#include "bcore/ZSession.h"

#include <cstdint>
#include <map>
#include <vector>

/// A manipulator that came with a tool. Its tool may take it away before the session does.
struct MadeManipulator
{
    HdlZPlug handle;
    ZManipulator* manipulator;
};

/// Numbers that change when something that is shown has changed. They are taken after each event and compared with
/// those of the event before; taking them is linear in the number of models and controls, not of vertices.
struct ZSession::Watch
{
    /// Transforms, weights, time, and which models there are.
    static std::uint64_t SceneState(const ZScene& scene);
    /// Steps of the undo stack, and the controls of open tools.
    static std::uint64_t PictureState(const std::vector<ZTool*>& tools);

    std::uint64_t sceneState = 0;
    std::uint64_t pictureState = 0;
    std::map<const ZTool*, std::vector<MadeManipulator>> manipulators; ///< those that were made with the tool
};
