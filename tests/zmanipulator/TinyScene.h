// SPDX-License-Identifier: MIT
// A scene of a few models, made in the test, and a manipulator that writes down what it is told.
#pragma once

#include "zbaselib/ZReport.h"
#include "zmanipulator/ZViewer.h"
#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZScene.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A box from -half to half in each axis, twelve triangles, outward.
inline ZModelPolymesh* AddCube(ZScene& scene, const char* name, const ZgeMatrix& place = {}, float half = 1)
{
    std::vector<float> positions;
    for (int corner = 0; corner < 8; ++corner)
        for (int axis = 0; axis < 3; ++axis)
            positions.push_back((corner >> axis & 1) != 0 ? half : -half);
    const std::vector<int> quads{0, 4, 6, 2, 1, 3, 7, 5, 0, 1, 5, 4, 2, 6, 7, 3, 0, 2, 3, 1, 4, 5, 7, 6};
    auto mesh = std::make_unique<ZModelPolymesh>(name);
    EXPECT_TRUE(mesh->SetGeometry(positions.data(), 8, quads, std::vector<int>(6, 4)));
    mesh->SetFileTransform(place);
    return static_cast<ZModelPolymesh*>(scene.AddModel(std::move(mesh)));
}

inline ZModel* AddBone(ZScene& scene, const char* name, const ZgeVector3& place, ZModel* parent = nullptr)
{
    ZModel* const bone = scene.AddModel(std::make_unique<ZModel>(name, ZModelKind::Bone));
    bone->SetParent(parent);
    bone->SetFileTransform(ZgeTranslation(place));
    return bone;
}

/// What happened to a manipulator, in words: "press 1 0 at 10,20", "active", "cancel".
using Story = std::vector<std::string>;

class RecordingManipulator : public ZManipulator
{
public:
    explicit RecordingManipulator(Story& toldStory, const char* name = "recorder")
        : ZManipulator(name, 1), story(toldStory)
    {
        ManipulatorSetHidden(true);
        ZManipulator_GetManipulatorSet()->ManipulatorAdd(this);
    }
    ~RecordingManipulator() override { story.push_back("destroyed"); }

    bool ManipulatorSetActive(bool active) override
    {
        story.push_back(active ? "active" : "inactive");
        return ZManipulator::ManipulatorSetActive(active);
    }
    bool ManipulatorInputNotify(ZManipulatorInput& input) override
    {
        last = input;
        story.push_back(NameOf(input.kind) + " " + std::to_string(input.button) + " " + std::to_string(input.modifier) +
                        " at " + std::to_string(input.x) + "," + std::to_string(input.y));
        if (whenTold)
            whenTold(input);
        return consumes;
    }
    void ManipulatorDraw(ZManipulatorDraw& draw) override
    {
        story.push_back("draw");
        if (whenDrawn)
            whenDrawn(draw);
    }
    void ManipulatorCancel() override { story.push_back("cancel"); }

    static std::string NameOf(int kind)
    {
        switch (kind) {
        case kInputEnter:
            return "enter";
        case kInputLeave:
            return "leave";
        case kInputPress:
            return "press";
        case kInputRelease:
            return "release";
        case kInputDrag:
            return "drag";
        case kInputEscape:
            return "escape";
        case kInputKeyPress:
            return "key";
        case kInputKeyRelease:
            return "key up";
        default:
            return "hover";
        }
    }

    Story& story;
    ZManipulatorInput last;
    bool consumes = true;
    std::function<void(ZManipulatorInput&)> whenTold;
    std::function<void(ZManipulatorDraw&)> whenDrawn;
};

/// Leaves the process's one manipulator set empty and the host's own tools off.
class ManipulatorTest : public testing::Test
{
protected:
    void TearDown() override
    {
        ZManipulatorSet& set = *ZManipulator_GetManipulatorSet();
        while (!set.GetManipulators().empty())
            set.ManipulatorRemove(set.GetManipulators().back());
        ZManipulator::ClearPreviousInput();
        ZManipulator_SetManipulationUnselect(4);
        ZTransformManager::TheOne()->TransformManagerSetActive(false);
    }
    Story story; ///< outlives the manipulators that tell it
};
