// SPDX-License-Identifier: MIT
// Scene events: news about the scene as a whole.
#pragma once

#include "object/ZEvent.h"

/// Scene event kind: the scene is being cleared; its models still live.
inline constexpr int kSceneClearing = 10;
/// Scene event kind: models were added.
inline constexpr int kSceneModelsAdded = 11;
/// Scene event kind: a transform, a weight or the time changed: what is shown is out of date.
inline constexpr int kSceneChanged = 12;

/// Registers a handler for every scene event. The same handler twice is misuse; removing one that is not there is
/// ignored. The sender of scene events is null.
void ZXtrObject_Register(const ZHandler& handler);
void ZXtrObject_Unregister(const ZHandler& handler);
/// Tells every handler.
void ZXtrObject_Send(int kind);
