// SPDX-License-Identifier: MIT
// A skinned grid of any size for benchmarks.
#pragma once

#include "zmodel/ZGeometryModels.h"

#include <cmath>
#include <memory>
#include <vector>

/// A square of quads whose vertices hang on `influences` neighbouring bones each, as on a limb.
struct SkinnedCharacter
{
    std::unique_ptr<ZModelPolymesh> mesh = std::make_unique<ZModelPolymesh>("character");
    std::vector<std::unique_ptr<ZModel>> bones;
    int vertices = 0;
    int influences = 0;

    SkinnedCharacter(int vertexCount, int influenceCount, int boneCount) : influences(influenceCount)
    {
        const int side = static_cast<int>(std::sqrt(static_cast<double>(vertexCount)));
        vertices = side * side;
        MakeGrid(side);
        ZSkin& skin = *mesh->MakeSkin(kDeformNormalise);
        for (int i = 0; i < boneCount; ++i) {
            bones.push_back(std::make_unique<ZModel>("bone", ZModelKind::Bone));
            skin.AddLink(bones.back().get());
        }
        for (int vertex = 0; vertex < vertices; ++vertex) {
            for (int i = 0; i < influences; ++i) {
                skin.BeginLink(LinkOf(vertex, i));
                skin.AddEntry(vertex, 1.0 / influences);
                skin.EndLink();
            }
        }
    }
    int LinkOf(int vertex, int influence) const
    {
        const auto boneCount = static_cast<std::int64_t>(bones.size());
        return static_cast<int>((vertex * boneCount / vertices + influence) % boneCount);
    }
    /// Entries as vertex and double.
    size_t SkinBytes() const { return static_cast<size_t>(vertices) * static_cast<size_t>(influences) * 12; }
    void Pose(int frame)
    {
        for (size_t i = 0; i < bones.size(); ++i)
            bones[i]->SetPosedTransform(ZgeRotationFromEuler({0, 0, (frame + static_cast<int>(i)) % 30 * 1.0}));
    }

private:
    void MakeGrid(int side)
    {
        std::vector<float> positions;
        std::vector<int> polygons, sizes;
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                positions.insert(positions.end(), {static_cast<float>(x), static_cast<float>(y), 0.0F});
                if (x + 1 == side || y + 1 == side)
                    continue;
                const int corner = y * side + x;
                polygons.insert(polygons.end(), {corner, corner + 1, corner + side + 1, corner + side});
                sizes.push_back(4);
            }
        }
        mesh->SetGeometry(positions.data(), vertices, polygons, sizes);
    }
};
