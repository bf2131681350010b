// SPDX-License-Identifier: MIT
// Posing by hand, as steps of the undo stack.
#pragma once

#include "zbaselib/ZGe.h"

#include <optional>

class ZModel;
class ZScene;

/// The local transform of a model as three numbers each: what pose fields show. Rotation in degrees about X, then Y,
/// then Z; a shear is dropped.
ZgeTRS ZPose_Get(const ZModel& model);
/// Poses one model: its local transform becomes `pose`, as one step of the undo stack called "Pose NAME". A pose that
/// the model has already makes no step. Poses are never saved into a file.
void ZPose_Set(ZModel& model, const ZgeTRS& pose);
/// A gesture has posed the model little by little with SetPosedTransform and is over: what it did since `before`, the
/// posed transform of that time, becomes one step called "Pose NAME". Nothing changed: no step.
void ZPose_AddStep(ZModel& model, const std::optional<ZgeMatrix>& before);
/// Does any model of the scene stand in a pose made by hand?
bool ZPose_IsPosed(const ZScene& scene);
/// Puts every pose made by hand away, as one step called "Back to the file's pose". False when there was none.
bool ZPose_Clear(const ZScene& scene);
/// Is it the name of one of these steps?
bool ZPose_IsStepName(const char* name);
