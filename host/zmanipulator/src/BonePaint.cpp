// SPDX-License-Identifier: MIT
#include "BonePaint.h"

#include "BoneShape.h"
#include "OwnBonePaint.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr float kBoneColour[3] = {0.62F, 0.74F, 0.86F};
constexpr float kFaceAlpha = 0.45F, kSelectedFaceAlpha = 0.75F, kEdgeAlpha = 0.85F;
constexpr float kEdgeShade = 0.3F;

struct SeenSegment
{
    ZBoneSegment segment;
    double distance;
    const float* colour;
    bool selected;
};

std::vector<SeenSegment> FarthestFirst(const ZScene& scene, const ZCamera& camera)
{
    std::vector<SeenSegment> seen;
    std::vector<ZBoneSegment> segments;
    for (ZModel* model : scene.GetModels()) {
        if (!model->IsBone() || model->IsHidden() || OwnBonePaint_Has(*model))
            continue;
        segments.clear();
        BoneShape_AddSegments(*model, camera.GetUnit(), segments);
        for (const ZBoneSegment& segment : segments) {
            const ZgeVector3 middle = (segment.head + segment.tail) * 0.5;
            seen.push_back(
                {segment, ZgeLength(middle - camera.GetEye()), BonePaint_Colour(*model), model->IsSelected()});
        }
    }
    std::stable_sort(seen.begin(), seen.end(),
                     [](const SeenSegment& a, const SeenSegment& b) { return a.distance > b.distance; });
    return seen;
}

BonePaintPoint MakePoint(const ZgeVector3& place, const float* colour, float shade, float alpha)
{
    return {{static_cast<float>(place.x), static_cast<float>(place.y), static_cast<float>(place.z)},
            {colour[0] * shade, colour[1] * shade, colour[2] * shade, alpha}};
}

void DrawPoints(const std::vector<BonePaintPoint>& points, GLenum mode, GLuint buffer)
{
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(points.size() * sizeof points[0]), points.data(),
                 GL_STREAM_DRAW);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glVertexPointer(3, GL_FLOAT, sizeof(BonePaintPoint), nullptr);
    glColorPointer(4, GL_FLOAT, sizeof(BonePaintPoint), reinterpret_cast<const void*>(sizeof BonePaintPoint::place));
    glDrawArrays(mode, 0, static_cast<GLsizei>(points.size()));
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}
} // namespace

float BonePaint_Brightness(const ZgeVector3& normal, const ZgeVector3& toViewer)
{
    return static_cast<float>(0.4 + 0.6 * std::abs(ZgeDot(normal, toViewer)));
}

const float* BonePaint_Colour(const ZModel& bone)
{
    return bone.IsSelected() ? ZModelGlobal::SelectionColor() : kBoneColour;
}

BonePaint BonePaint_Of(const ZScene& scene, const ZCamera& camera)
{
    BonePaint paint;
    std::vector<ZBoneCorner> corners;
    std::vector<ZgeVector3> ends;
    for (const SeenSegment& seen : FarthestFirst(scene, camera)) {
        corners.clear();
        ends.clear();
        BoneShape_AddOctahedron(seen.segment, corners);
        BoneShape_AddOctahedronEdges(seen.segment, ends);
        for (const ZBoneCorner& corner : corners) {
            const float shade =
                BonePaint_Brightness(corner.normal, ZgeNormalised(camera.GetEye() - corners.front().place));
            paint.faces.push_back(
                MakePoint(corner.place, seen.colour, shade, seen.selected ? kSelectedFaceAlpha : kFaceAlpha));
        }
        for (const ZgeVector3& end : ends)
            paint.edges.push_back(MakePoint(end, seen.colour, kEdgeShade, kEdgeAlpha));
    }
    return paint;
}

void BonePaint_Draw(const BonePaint& paint, GLuint buffer)
{
    if (paint.faces.empty())
        return;
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE); // an octahedron's far side would shine through
    glCullFace(GL_BACK);
    glFrontFace(GL_CCW);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_BLEND);
    DrawPoints(paint.faces, GL_TRIANGLES, buffer);
    DrawPoints(paint.edges, GL_LINES, buffer);
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
}
