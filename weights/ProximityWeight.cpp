// SPDX-License-Identifier: MIT
// Proximity weights, and the weighting of the active vertices by them.
#include "weights/ProximityWeight.h"

#include "weights/ZWeightUIModelData.h"

#include <algorithm>
#include <vector>

double ProximityWeight(const ZgeVector3& bone, std::span<const ZgeVector3> children, const ZgeVector3& point)
{
    constexpr double kFull = 100.0;
    constexpr double kReach = 0.15;
    double weight = 1.0;
    for (const ZgeVector3& child : children) {
        const ZgeVector3 segment = bone - child;
        const double length = ZgeLength(segment);
        if (!(length > 0.0))
            continue;
        const ZgeVector3 direction = segment * (1.0 / length);
        const ZgeVector3 fromPoint = bone - point;
        const double along = ZgeDot(direction, fromPoint);
        const double distance = ZgeLength(fromPoint - direction * along);
        if (!(length > distance))
            continue;
        if (along >= 0.0 && ZgeDot(direction, child - point) <= 0.0)
            return kFull;
        const double falloff = along <= 0.0 ? (kReach * length + along) / (kReach * length)
                                            : ((1.0 + kReach) * length - along) / (kReach * length);
        weight = std::max({1.0, falloff * kFull, weight});
    }
    return weight;
}

namespace {

ZgeVector3 GlobalPlace(const ZTransformNode& node)
{
    const ZgeMatrix& global = node.GetTransformMatrix(true);
    return {global(3, 0), global(3, 1), global(3, 2)};
}

/// Where a link's bone and the bone's children stand.
struct BonePlace
{
    bool hasBone = false;
    ZgeVector3 place;
    std::vector<ZgeVector3> children;
};

std::vector<BonePlace> CollectBones(ISkinLinks& links)
{
    std::vector<BonePlace> bones(static_cast<size_t>(links.LinkCount()));
    for (size_t link = 0; link < bones.size(); ++link) {
        const ZModel* const bone = links.LinkModel(static_cast<int>(link));
        if (bone == nullptr)
            continue;
        bones[link].hasBone = true;
        bones[link].place = GlobalPlace(*bone);
        for (const ZTransformNode* const child : bone->GetChildren())
            bones[link].children.push_back(GlobalPlace(*child));
    }
    return bones;
}

void Divide(VertexInfluences& record, double sum)
{
    for (float& weight : record.weights)
        weight = static_cast<float>(static_cast<double>(weight) / sum);
}

/// False when nothing but zeros is left of the weights.
bool NormaliseProximity(VertexInfluences& record, double sum)
{
    Divide(record, sum);
    double rest = 0.0;
    for (float& weight : record.weights) {
        weight = weight >= 0.0F ? weight : 0.0F;
        rest += static_cast<double>(weight);
    }
    if (!(rest > 0.0))
        return false;
    Divide(record, rest);
    return true;
}

} // namespace

void ZWeightUIModelData::ComputeProximityWeights()
{
    ISkinLinks* const links = SkinLinks();
    const float* const positions = geometry != nullptr ? geometry->VertexPositions() : nullptr;
    if (links == nullptr || positions == nullptr)
        return;
    const std::vector<BonePlace> bones = CollectBones(*links);
    VertexInfluences record;
    for (const int vertex : activeVertices) {
        if (RecordOf(vertex) == nullptr)
            continue;
        const float* const position = positions + 4 * static_cast<std::ptrdiff_t>(vertex);
        const ZgeVector3 point{position[0], position[1], position[2]};
        record.Clear();
        double sum = 0.0;
        for (size_t link = 0; link < bones.size(); ++link) {
            const double weight =
                bones[link].hasBone ? ProximityWeight(bones[link].place, bones[link].children, point) : 0.0;
            record.Add(static_cast<int>(link), static_cast<float>(weight));
            sum += weight;
        }
        if (!NormaliseProximity(record, sum))
            continue;
        ApplyVertexInfluences(vertex, record);
    }
}
