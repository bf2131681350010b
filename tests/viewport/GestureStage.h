// SPDX-License-Identifier: MIT
// A viewer on a row of points, the tool's manipulator before it, and a hand that clicks and drags.
#pragma once

#include "FakeTool.h"

#include "object/ZUndoStack.h"
#include "viewport/ZCharacterWeightingManipulator.h"
#include "zmanipulator/ZViewer.h"
#include "zmodel/ZScene.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

inline constexpr int kKeyX = 'X';

/// A row of five points, looked at from the front: point i stands at (i, 0, 0).
class GestureStage : public testing::Test
{
protected:
    GestureStage() : viewer(&scene)
    {
        bone = AddBone(scene, "Bone", ZgeMatrix());
        tool.AddBone(bone);
        mesh = AddPointMesh(scene, "Row", {0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0}, bone);
        data = &tool.Admit(mesh);
        manipulator = new ZCharacterWeightingManipulator("Skin", 1); // owned by the host's set
        manipulator->SetTool(&tool);
        manipulator->ManipulatorSetHidden(false);
        ZManipulator_GetManipulatorSet()->ManipulatorSetActive(manipulator);
        viewer.SetSize(800, 600);
        viewer.GetCamera().LookAt({2, 0, 10}, {2, 0, 0}, {0, 1, 0});
    }
    ~GestureStage() override
    {
        manipulator->SetTool(nullptr);
        ZManipulator_GetManipulatorSet()->ManipulatorRemove(manipulator);
        Object_ClearKeyStates();
    }

    /// Where a point of the scene falls in the picture, in pixels with their fractions.
    std::pair<double, double> PlaceOf(double x, double y = 0, double z = 0)
    {
        const ZgeMatrix toScreen = viewer.GetCamera().ViewMatrix() * viewer.GetCamera().ProjectionMatrix();
        const ZgeVector4 p = ZgeVector4{x, y, z, 1} * toScreen;
        return {(p.x / p.w + 1) * viewer.GetWidth() / 2, (1 - p.y / p.w) * viewer.GetHeight() / 2};
    }
    /// The pixel nearest to it.
    std::pair<int, int> PixelOf(double x, double y = 0, double z = 0)
    {
        const auto [right, down] = PlaceOf(x, y, z);
        return {static_cast<int>(right + 0.5), static_cast<int>(down + 0.5)};
    }
    bool Click(int vertex, int modifiers = 0)
    {
        const auto [x, y] = PixelOf(vertex);
        viewer.Press(x, y, kButtonLeft, modifiers);
        return viewer.Release(x, y);
    }
    bool DragOver(double from, double to, int modifiers = 0)
    {
        const auto [x0, y0] = PixelOf(from, 0.3);
        const auto [x1, y1] = PixelOf(to, -0.3);
        viewer.Press(x0, y0, kButtonLeft, modifiers);
        viewer.Move((x0 + x1) / 2, (y0 + y1) / 2);
        viewer.Move(x1, y1);
        return viewer.Release(x1, y1);
    }
    std::vector<int> States() const { return {data->vertexStates.begin(), data->vertexStates.end()}; }

    ZScene scene;
    ZViewer viewer;
    FakeTool tool;
    ZModel* bone = nullptr;
    ZModelPolymesh* mesh = nullptr;
    ZWeightUIModelData* data = nullptr;
    ZCharacterWeightingManipulator* manipulator = nullptr;
};
