// SPDX-License-Identifier: MIT
// Bones as octahedra, for the viewer's own picture.
#pragma once

#include "Gl.h"
#include "zmanipulator/ZCamera.h"
#include "zmodel/ZScene.h"

#include <vector>

struct BonePaintPoint
{
    float place[3];
    float colour[4];
};

/// Filled faces (three points each) and edges (two points each), farthest bone first.
struct BonePaint
{
    std::vector<BonePaintPoint> faces, edges;
};

/// Three floats: the selection colour of a selected bone, else that of bones.
const float* BonePaint_Colour(const ZModel& bone);
/// All bones that are not hidden and do not draw themselves (OwnBonePaint.h), as seen from the camera.
BonePaint BonePaint_Of(const ZScene& scene, const ZCamera& camera);
/// Draws with the view matrix loaded, over everything and translucent, without a trace in the depth buffer: what is
/// drawn next is hidden by surfaces, not by bones. `buffer` is overwritten.
void BonePaint_Draw(const BonePaint& paint, GLuint buffer);

/// How bright a face with this normal is towards a viewer in the direction `toViewer`; both unit vectors.
float BonePaint_Brightness(const ZgeVector3& normal, const ZgeVector3& toViewer);
