// SPDX-License-Identifier: MIT
// Small characters on the desk with the tool open, and a hand that makes pictures of them.
#pragma once

#include "StoredPicture.h"
#include "support/OpenedTool.h"
#include "zmodel/ZGeometryModels.h"

#include <vector>

/// A viewer of 320 x 240 pixels without floor and host bones, so that the tool's overlay is what changes.
class PictureStage : public testing::Test
{
protected:
    PictureStage();
    ~PictureStage() override;

    /// Three bones along Y, a quarter turn bent at the middle one while `bent`.
    void AddBones(bool bent = true);
    /// A tube about the bones, 12 vertices round and 13 high. Weights pass from bone to bone along Y.
    ZModelPolymesh* AddTube(const char* name, int deformMode = kDeformNormalise, double radius = 0.45);
    /// Puts these and the bones under a node that turns left into right.
    void Mirror(ZModel* model);
    /// A wavy surface of 5 x 4 control points beside the bones.
    ZModelNurbs* AddPatch(const char* name);

    /// Opens the tool and drops these on it.
    void OpenTool(const std::vector<ZModel*>& models);
    /// Looks at the character from a little to the right and above.
    void Look();
    /// A rectangle in pixels; released unless told otherwise.
    void Drag(int x0, int y0, int x1, int y1, int modifiers = 0, bool release = true);
    /// A picture of the present state. The overlay's edges fade in over the first frames; they are drawn first.
    ZImage Grab();

    OpenedTool desk;
    std::vector<ZModel*> bones;

private:
    void LinkBones(ZSkin& skin, const std::vector<double>& heights);
    bool m_edgesFadedIn = false;
};
