// SPDX-License-Identifier: MIT
// A large mesh in a viewer of 800 x 600 pixels, drawn off screen.
#pragma once

#include "zmanipulator/ZOffscreen.h"
#include "zmanipulator/ZViewer.h"
#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZScene.h"

#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// A wavy sheet of quads that hangs on one bone, framed.
struct Sheet
{
    explicit Sheet(int wanted) : side(static_cast<int>(std::lround(std::sqrt(wanted))))
    {
        std::vector<float> positions;
        std::vector<int> polygons;
        for (int row = 0; row < side; ++row) {
            for (int column = 0; column < side; ++column) {
                const double x = 2.0 * column / side - 1, y = 2.0 * row / side - 1;
                for (const double part : {x, y, 0.05 * std::sin(12 * x) * std::cos(9 * y)})
                    positions.push_back(static_cast<float>(part));
                if (row + 1 < side && column + 1 < side)
                    for (const int step : {0, 1, side + 1, side})
                        polygons.push_back(row * side + column + step);
            }
        }
        auto owned = std::make_unique<ZModelPolymesh>("sheet");
        mesh = owned.get();
        mesh->SetGeometry(positions.data(), side * side, polygons, std::vector<int>(polygons.size() / 4, 4));
        scene.AddModel(std::move(owned));
        bone = scene.AddModel(std::make_unique<ZModel>("bone", ZModelKind::Bone));
        ZSkin* const skin = mesh->MakeSkin(kDeformNormalise);
        skin->AppendLink(bone, ZgeMatrix());
        skin->BeginLink(0);
        for (int vertex = 0; vertex < side * side; ++vertex)
            skin->AddEntry(vertex, 1);
        skin->EndLink();
        viewer.SetSize(800, 600);
        viewer.Frame({mesh});
        Grab();
    }
    void Grab()
    {
        std::string why;
        if (!ZOffscreen_Grab(viewer, image, &why))
            throw std::runtime_error(why);
    }
    /// Of positions and normals, four floats each.
    size_t Bytes() const { return static_cast<size_t>(side) * static_cast<size_t>(side) * 8 * sizeof(float); }

    int side;
    ZScene scene;
    ZModelPolymesh* mesh = nullptr;
    ZModel* bone = nullptr;
    ZViewer viewer{&scene};
    ZImage image;
};
