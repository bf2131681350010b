// SPDX-License-Identifier: MIT
// Picking against a pick of the test's own, in double precision throughout, on random cameras, models and rectangles.
#include "FakeTool.h"

#include "viewport/ZWeightPick.h"
#include "zmodel/ZScene.h"

#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

namespace {

// Projecting rounds twice to single precision, 1/W and the product; both together move a coordinate by 2^-23 of itself
// at most, one step of single precision. Rectangles reach to 1.25.
constexpr double kFloatStep = 1.25 / 8388608;
constexpr int kPoints = 25;

/// Anywhere from the least to the most, from the first case on; by itself a generator begins with the least.
int Whole(int least, int most) { return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(least, most + 1)); }
double Number(double range) { return Whole(-10000, 10000) / 10000.0 * range; }
double NumberBetween(double least, double most) { return (least + most) / 2 + Number((most - least) / 2); }

/// Models with random places, some of them mirrored, some unchecked, before a random camera.
struct RandomStage
{
    RandomStage()
    {
        bone = AddBone(scene, "Bone", ZgeMatrix());
        bone->SetFileTransform(
            ZgeCompose({{Number(2), Number(2), Number(2), 1}, {Number(180), Number(80), 0}, {1, 1, 1}}));
        const int count = Whole(1, 3);
        for (int i = 0; i < count; ++i)
            AddModel("M" + std::to_string(i));
        camera.SetSceneBox({{-10, -10, -10}, {10, 10, 10}});
        camera.SetFov(NumberBetween(10, 120));
        camera.SetViewport(0, 0, Whole(100, 2000), Whole(100, 2000));
        RC_PRE(camera.LookAt({Number(10), Number(10), NumberBetween(1, 30)}, {Number(1), Number(1), 0}, {0, 1, 0}));
        // From vertex to vertex: their edges pass through the middle of what is seen.
        const auto [x0, y0] = AnyVertexOnScreen();
        const auto [x1, y1] = AnyVertexOnScreen();
        rectangle = {std::min(x0, x1), std::min(y0, y1), std::max(x0, x1), std::max(y0, y1)};
    }
    void AddModel(const std::string& name)
    {
        std::vector<float> points;
        for (int i = 0; i < 3 * kPoints; ++i)
            points.push_back(static_cast<float>(Number(5)));
        ZModelPolymesh* const mesh = AddPointMesh(scene, name.c_str(), points, bone);
        const double mirror = *rc::gen::arbitrary<bool>() ? -1 : 1;
        mesh->SetFileTransform(ZgeCompose({{Number(3), Number(3), Number(3), 1},
                                           {Number(180), Number(80), Number(180)},
                                           {mirror * NumberBetween(0.2, 3), NumberBetween(0.2, 3), 1}}));
        tool.Admit(mesh, Whole(0, 3) != 0);
    }
    /// In normalised coordinates, no farther out than rectangles reach, and a few steps beside the vertex: an edge
    /// there has it just inside or just outside.
    std::pair<float, float> AnyVertexOnScreen()
    {
        ZWeightUIModelData& data = *tool.models[Whole(0, tool.models.GetCount() - 1)];
        const float* const f = data.geometry->VertexPositions() + 4 * Whole(0, kPoints - 1);
        const ZgeVector4 p{static_cast<double>(f[0]), static_cast<double>(f[1]), static_cast<double>(f[2]), 1};
        const ZgeVector4 q =
            p * data.GetModel()->GetTransformMatrix(true) * camera.ViewMatrix() * camera.ProjectionMatrix();
        const auto clamped = [](double place) {
            return std::isfinite(place)
                       ? std::clamp(static_cast<float>(place + Whole(-3, 3) * 2 * kFloatStep), -1.25F, 1.25F)
                       : 0.0F;
        };
        return {clamped(q.x / q.w), clamped(q.y / q.w)};
    }
    std::set<std::pair<int, int>> Pick(bool restricted)
    {
        ZArrayTemplate<int> hits;
        ZWeightPick_Pick(tool, camera, rectangle, restricted, hits);
        std::set<std::pair<int, int>> picked;
        std::pair<int, int> last{-1, -1};
        for (int i = 0; i < hits.GetCount(); i += 2) {
            const std::pair<int, int> hit{hits[i], hits[i + 1]};
            RC_ASSERT(restricted || last < hit); // model order, then vertex order
            RC_ASSERT(picked.insert(hit).second);
            last = hit;
        }
        return picked;
    }

    ZScene scene;
    FakeTool tool;
    ZModel* bone = nullptr;
    ZCamera camera;
    ZPickRectangle rectangle;
};

/// Corner after corner of the rectangle, widened on all sides.
bool IsInside(double x, double y, const ZPickRectangle& r, double widen)
{
    const double left = static_cast<double>(r.minimumX) - widen, right = static_cast<double>(r.maximumX) + widen;
    const double low = static_cast<double>(r.minimumY) - widen, high = static_cast<double>(r.maximumY) + widen;
    const double corners[4][2] = {{left, low}, {left, high}, {right, high}, {right, low}};
    for (int k = 0; k < 4; ++k) {
        const double* const a = corners[k];
        const double* const b = corners[(k + 1) % 4];
        if ((a[1] - b[1]) * (a[0] - x) - (a[1] - y) * (a[0] - b[0]) < 0)
            return false;
    }
    return true;
}

/// What the independent pick says of a vertex: no, yes, or too near an edge to say.
enum class Answer
{
    No,
    Yes,
    Either
};

Answer ProjectedAnswer(RandomStage& stage, const ZgeVector4& inScene)
{
    // Step by step, where the tool multiplies the matrices first.
    const ZgeVector4 q = inScene * stage.camera.ViewMatrix() * stage.camera.ProjectionMatrix();
    const double x = q.x / q.w, y = q.y / q.w;
    const ZPickRectangle& r = stage.rectangle;
    // A rectangle thinner than a step holds nothing for certain.
    const double thinnest = std::min(static_cast<double>(r.maximumX) - static_cast<double>(r.minimumX),
                                     static_cast<double>(r.maximumY) - static_cast<double>(r.minimumY));
    if (thinnest > 2 * kFloatStep && IsInside(x, y, r, -kFloatStep))
        return Answer::Yes;
    return IsInside(x, y, r, kFloatStep) ? Answer::Either : Answer::No;
}

Answer FacingAnswer(RandomStage& stage, const ZgeVector4& p, const float* normal, const ZgeMatrix& global)
{
    const ZgeVector3& eye = stage.camera.GetEye();
    const ZgeVector4 e = ZgeVector4{eye.x, eye.y, eye.z, 1} * ZgeInverse(global);
    const double toward = (p.x - e.x) * static_cast<double>(normal[0]) + (p.y - e.y) * static_cast<double>(normal[1]) +
                          (p.z - e.z) * static_cast<double>(normal[2]);
    if (std::abs(toward) < 1e-9)
        return Answer::Either;
    return toward < 0 ? Answer::Yes : Answer::No;
}

Answer IndependentAnswer(RandomStage& stage, ZWeightUIModelData& data, int vertex)
{
    const ZgeMatrix& global = data.GetModel()->GetTransformMatrix(true);
    const float* const f = data.geometry->VertexPositions() + 4 * vertex;
    const ZgeVector4 p{static_cast<double>(f[0]), static_cast<double>(f[1]), static_cast<double>(f[2]), 1};
    const Answer projected = ProjectedAnswer(stage, p * global);
    if (!stage.tool.foregroundOnly || projected == Answer::No)
        return projected;
    const Answer facing = FacingAnswer(stage, p, data.geometry->SurfacePositions() + 4 * vertex, global);
    return facing == Answer::Yes ? projected : facing;
}

RC_GTEST_PROP(PickProperty, AgreesWithADoublePrecisionPickButForAFloatStepAtAnEdge, ())
{
    RandomStage stage;
    stage.tool.foregroundOnly = *rc::gen::arbitrary<bool>();
    const std::set<std::pair<int, int>> picked = stage.Pick(false);
    RC_CLASSIFY(!picked.empty(), "some are hit");
    for (int model = 0; model < stage.tool.models.GetCount(); ++model) {
        ZWeightUIModelData& data = *stage.tool.models[model];
        for (int vertex = 0; vertex < kPoints; ++vertex) {
            const bool hit = picked.count({model, vertex}) != 0;
            const Answer answer = data.modelSelected != 0 ? IndependentAnswer(stage, data, vertex) : Answer::No;
            RC_ASSERT(answer == Answer::Either || hit == (answer == Answer::Yes));
        }
    }
}

RC_GTEST_PROP(PickProperty, RestrictedPicksAreThePicksAmongTheSelected, ())
{
    RandomStage stage;
    const std::set<std::pair<int, int>> free = stage.Pick(false);
    std::set<std::pair<int, int>> selected, expected;
    ZArrayTemplate<int> batch;
    for (int model = 0; model < stage.tool.models.GetCount(); ++model)
        for (int vertex = 0; vertex < kPoints; ++vertex)
            if (stage.tool.models[model]->modelSelected != 0 && *rc::gen::arbitrary<bool>()) {
                batch.Add(model);
                batch.Add(vertex);
                selected.insert({model, vertex});
            }
    ZUndoStack::TheOne()->TransactionBegin("", false);
    stage.tool.selection.PickSelect(batch, kPickAdd);
    ZUndoStack::TheOne()->TransactionEnd(false, false);
    std::set_intersection(free.begin(), free.end(), selected.begin(), selected.end(),
                          std::inserter(expected, expected.end()));
    // The filter for what faces the eye is not for those that are selected already.
    stage.tool.foregroundOnly = *rc::gen::arbitrary<bool>();
    RC_ASSERT(stage.Pick(true) == expected);
}

} // namespace
