// SPDX-License-Identifier: MIT
// The deformation written out vertex by vertex in double, as slow and plain as it gets.
#pragma once

#include "zmodel/ZGeometryModels.h"

#include <vector>

/// The deformed place of every vertex of `model`, from its undeformed points, morph targets and skin.
inline std::vector<ZgeVector3> DeformPlainly(ZModelGeometryBase& model, const std::vector<ZMorphTarget>& targets = {})
{
    ZSkin& skin = *model.GetSkin();
    const ZgeMatrix toModel = ZgeInverse(model.GetTransformMatrix(true));
    std::vector<int> offsets, links;
    std::vector<double> weights;
    skin.BuildCsr(offsets, links, weights);
    std::vector<ZgeVector3> places;
    for (size_t vertex = 0; vertex + 1 < offsets.size(); ++vertex) {
        const float* const base = model.Geometry().VertexPositions(0) + 4 * vertex;
        ZgeVector3 p{base[0], base[1], base[2]};
        for (size_t target = 0; target < targets.size(); ++target) {
            const float* const offset = targets[target].positions.data() + 3 * vertex;
            p = p + ZgeVector3{offset[0], offset[1], offset[2]} * static_cast<double>(model.GetMorphWeights()[target]);
        }
        ZgeVector3 blend;
        double sum = 0;
        for (int i = offsets[vertex]; i < offsets[vertex + 1]; ++i) {
            const int link = links[static_cast<size_t>(i)];
            const ZModel* const bone = skin.LinkModel(link);
            const double weight = weights[static_cast<size_t>(i)];
            const ZgeVector3 carried =
                ZgeTransformPoint(p, skin.GetInverseBind(link) * bone->GetTransformMatrix(true) * toModel);
            blend = blend + (skin.DeformMode() == kDeformAdditive ? carried - p : carried) * weight;
            sum += weight;
        }
        if (skin.DeformMode() == kDeformAdditive)
            places.push_back(p + blend);
        else if (skin.DeformMode() == kDeformTotal100)
            places.push_back(blend + p * (1 - sum));
        else
            places.push_back(sum == 0 ? p : blend * (1 / sum));
    }
    return places;
}
