// SPDX-License-Identifier: MIT
#include "BoneShape.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {
constexpr double kWaistAt = 0.15;         // of the length
constexpr double kWaistHalfWidth = 0.085; // of the length
constexpr double kLeafOfParent = 0.35;    // a leaf's length, of the bone before it
constexpr double kLoneBoneUnits = 4;

ZgeVector3 Place(const ZTransformNode& node)
{
    const ZgeMatrix& global = node.GetTransformMatrix(true);
    return {global(3, 0), global(3, 1), global(3, 2)};
}

bool IsSegment(const ZBoneSegment& segment)
{
    const double length = ZgeLength(segment.tail - segment.head);
    return std::isfinite(length) && length > 0;
}

const ZModel* ParentBone(const ZModel& bone)
{
    for (ZTransformNode* node = bone.GetParent(); node != nullptr; node = node->GetParent())
        if (const ZModel* const model = Object_Cast<ZModel>(node); model != nullptr && model->IsBone())
            return model;
    return nullptr;
}

ZgeVector3 LeafTail(const ZModel& bone, const ZgeVector3& head, double unit)
{
    if (const ZModel* const parent = ParentBone(bone)) {
        const ZBoneSegment before{Place(*parent), head};
        if (IsSegment(before))
            return head + (head - before.head) * kLeafOfParent;
    }
    const ZgeVector3 along = ZgeNormalised(ZgeTransformDirection({0, 1, 0}, bone.GetTransformMatrix(true)));
    return head + along * (kLoneBoneUnits * unit);
}

/// Head, tail, and the four corners of the waist, counter-clockwise seen from the tail.
std::array<ZgeVector3, 6> OctahedronPoints(const ZBoneSegment& segment)
{
    const ZgeVector3 along = segment.tail - segment.head;
    const double length = ZgeLength(along);
    const ZgeVector3 axis = along * (1 / length);
    const double x = std::abs(axis.x), y = std::abs(axis.y), z = std::abs(axis.z);
    const ZgeVector3 least = x <= y && x <= z ? ZgeVector3{1, 0, 0}
                             : y <= z         ? ZgeVector3{0, 1, 0}
                                              : ZgeVector3{0, 0, 1};
    const ZgeVector3 side = ZgeNormalised(ZgeCross(axis, least)) * (length * kWaistHalfWidth);
    const ZgeVector3 other = ZgeCross(axis, side);
    const ZgeVector3 waist = segment.head + along * kWaistAt;
    return {segment.head, segment.tail, waist + side, waist + other, waist - side, waist - other};
}
} // namespace

void BoneShape_AddSegments(const ZModel& bone, double unit, std::vector<ZBoneSegment>& segments)
{
    const ZgeVector3 head = Place(bone);
    if (!std::isfinite(ZgeLength(head)))
        return;
    const size_t before = segments.size();
    std::vector<ZTransformNode*> open(bone.GetChildren().rbegin(), bone.GetChildren().rend());
    while (!open.empty()) {
        ZTransformNode* const node = open.back();
        open.pop_back();
        const ZModel* const model = Object_Cast<ZModel>(node);
        if (model != nullptr && model->IsBone()) {
            const ZBoneSegment segment{head, Place(*node)};
            if (IsSegment(segment))
                segments.push_back(segment);
        } else {
            open.insert(open.end(), node->GetChildren().rbegin(), node->GetChildren().rend());
        }
    }
    if (segments.size() > before)
        return;
    const ZBoneSegment leaf{head, LeafTail(bone, head, unit)};
    if (IsSegment(leaf))
        segments.push_back(leaf);
}

void BoneShape_AddOctahedron(const ZBoneSegment& segment, std::vector<ZBoneCorner>& corners)
{
    const std::array<ZgeVector3, 6> p = OctahedronPoints(segment);
    for (size_t i = 0; i < 4; ++i) {
        const ZgeVector3& here = p[2 + i];
        const ZgeVector3& next = p[2 + (i + 1) % 4];
        const std::array<std::array<ZgeVector3, 3>, 2> faces{{{here, next, p[1]}, {next, here, p[0]}}};
        for (const auto& face : faces) {
            const ZgeVector3 normal = ZgeNormalised(ZgeCross(face[1] - face[0], face[2] - face[0]));
            for (const ZgeVector3& place : face)
                corners.push_back({place, normal});
        }
    }
}

void BoneShape_AddOctahedronEdges(const ZBoneSegment& segment, std::vector<ZgeVector3>& ends)
{
    const std::array<ZgeVector3, 6> p = OctahedronPoints(segment);
    for (size_t i = 0; i < 4; ++i)
        ends.insert(ends.end(), {p[2 + i], p[2 + (i + 1) % 4], p[0], p[2 + i], p[1], p[2 + i]});
}
