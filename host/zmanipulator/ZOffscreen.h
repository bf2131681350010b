// SPDX-License-Identifier: MIT
// Pictures without a window: an EGL surfaceless context that draws into an image.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class ZViewer;

/// Red, green, blue bytes, rows from the top.
struct ZImage
{
    int width = 0, height = 0;
    std::vector<std::uint8_t> rgb;
};

/// Makes the process's off-screen OpenGL context (compatibility profile) current, making it first if there is none.
/// False with a reason in `*why` where no OpenGL is to be had. User-interface thread only.
bool ZOffscreen_MakeCurrent(std::string* why = nullptr);
/// Draws the viewer into an image of its size. False with a reason where no OpenGL is to be had, or when the viewer is
/// larger than the renderer can draw; the image is then untouched. What EGL context was current is current again.
bool ZOffscreen_Grab(ZViewer& viewer, ZImage& image, std::string* why = nullptr);
/// Gives the context back; the next call makes a new one.
void ZOffscreen_Release();
