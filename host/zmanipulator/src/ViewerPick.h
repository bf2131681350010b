// SPDX-License-Identifier: MIT
// What lies under a pixel of a viewer.
#pragma once

#include "zmanipulator/ZCamera.h"
#include "zmodel/ZScene.h"

/// The bone whose drawn line passes nearest to the pixel (from the viewport's top left), within `reach` pixels; of
/// equal ones the nearer to the eye. Null for none.
ZModel* ViewerPick_Bone(const ZScene& scene, ZCamera& camera, double x, double y, double reach);
/// The mesh or surface that is in front at the pixel. Null for none. A model that is flattened to a plane is not hit.
ZModel* ViewerPick_Surface(const ZScene& scene, ZCamera& camera, double x, double y);
