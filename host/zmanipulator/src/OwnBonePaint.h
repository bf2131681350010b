// SPDX-License-Identifier: MIT
// Bones that have a drawing of their own: a guest's kind of bone answers one of the ids kInterfaceBoneOwnDrawing...
#pragma once

#include "zbaselib/ZGe.h"

class ZModel;
class ZScene;

/// True when the bone says that it draws itself and has the drawing for it (kInterfaceSurface).
bool OwnBonePaint_Has(ZModel& bone);
/// Lets every such bone that is not hidden draw itself: its global matrix and the view are loaded, the bone's colour is
/// set, and the viewer's vector is null, as the tools ask them. Whatever the drawings set is given back.
void OwnBonePaint_Draw(const ZScene& scene, const ZgeMatrix& view);
