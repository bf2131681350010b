// SPDX-License-Identifier: MIT
// Where bones lie in the scene, and the octahedra that show them.
#pragma once

#include "zmodel/ZModel.h"

#include <vector>

/// A straight piece of a bone in the scene.
struct ZBoneSegment
{
    ZgeVector3 head, tail;
};

/// One segment from the bone to each child bone that is not at the same place (plain nodes between are passed through);
/// a bone without such a child has a short one, on in the direction from its parent bone, or along its own Y axis.
/// `unit` is the viewer unit in the scene, for bones that have neither. Appends to `segments`; appends nothing when the
/// bone's place is not finite.
void BoneShape_AddSegments(const ZModel& bone, double unit, std::vector<ZBoneSegment>& segments);

/// A corner of a flat triangle in the scene.
struct ZBoneCorner
{
    ZgeVector3 place, normal;
};

/// The eight triangles (24 corners) of the octahedron about a segment, counter-clockwise from outside, normals outward.
void BoneShape_AddOctahedron(const ZBoneSegment& segment, std::vector<ZBoneCorner>& corners);
/// Its twelve edges (24 ends).
void BoneShape_AddOctahedronEdges(const ZBoneSegment& segment, std::vector<ZgeVector3>& ends);
