// SPDX-License-Identifier: MIT
// How the surface of a mesh looks: pictures, colours, and which point of a picture each corner shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Four bytes a pixel (red, green, blue, alpha), top row first.
struct ZPicture
{
    int width = 0, height = 0;
    std::vector<std::uint8_t> rgba;
};

/// Triangles that follow each other and look alike.
struct ZMaterialRun
{
    std::size_t firstTriangle = 0, triangleCount = 0;
    float colour[3] = {1, 1, 1}; ///< times the picture; alone without one
    std::shared_ptr<const ZPicture> picture;
};

/// Of a mesh whose polygons are triangles. Shared between the models that show one mesh of a file; never changed.
struct ZAppearance
{
    std::vector<ZMaterialRun> runs; ///< ascending, none overlapping
    std::vector<float> texCoords;   ///< two a corner of every triangle; (0, 0) is the upper left corner of the picture
};
