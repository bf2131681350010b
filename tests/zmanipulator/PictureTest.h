// SPDX-License-Identifier: MIT
// Off-screen pictures of a tiny scene, and how far two of them differ.
#pragma once

#include "TinyScene.h"

#include "zmanipulator/ZOffscreen.h"

#include <array>
#include <cstdlib>

using Pixel = std::array<int, 3>;

inline Pixel At(const ZImage& image, int x, int y)
{
    const std::uint8_t* const p = &image.rgb[3 * static_cast<size_t>(y * image.width + x)];
    return {p[0], p[1], p[2]};
}

inline int Difference(const Pixel& a, const Pixel& b)
{
    return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]);
}

/// Pixels that differ by more than rounding.
inline int DifferentPixels(const ZImage& a, const ZImage& b, int tolerance = 12)
{
    int different = 0;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < a.width; ++x)
            different += Difference(At(a, x, y), At(b, x, y)) > tolerance ? 1 : 0;
    return different;
}

/// A viewer of 200 x 150 pixels without a floor, 8 before the origin.
class Picture : public ManipulatorTest
{
protected:
    void SetUp() override
    {
        viewer.SetSize(200, 150);
        viewer.SetShowGrid(false);
        viewer.GetCamera().LookAt({0, 0, 8}, {0, 0, 0}, {0, 1, 0});
    }
    ZImage Grab()
    {
        ZImage image;
        std::string why;
        EXPECT_TRUE(ZOffscreen_Grab(viewer, image, &why)) << why;
        return image;
    }
    /// The picture with `model` hidden.
    ZImage GrabWithout(ZModel* model)
    {
        model->SetHidden(true);
        ZImage image = Grab();
        model->SetHidden(false);
        return image;
    }

    ZScene scene;
    ZViewer viewer{&scene};
};
