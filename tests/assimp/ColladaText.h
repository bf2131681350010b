// SPDX-License-Identifier: MIT
// Small COLLADA files written in a test: a strip of quads on a chain of bones.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace skindesk::test {

struct ColladaStrip
{
    // By vertex: who pulls it, as bone number and weight. Two vertices a row.
    std::vector<std::vector<std::pair<int, double>>> weights{
        {{0, 1}}, {{0, 1}}, {{0, 0.75}, {1, 0.25}}, {{0, 0.5}, {1, 0.5}}, {{1, 1}}, {{1, 1}}};
    int bones = 2;          // each one above the one before; named Bone0, Bone1, ...
    std::string unit = "1"; // metres
    std::string upAxis = "Y_UP";
    std::string bindShape = "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1";
    std::string libraries;     // further ones
    std::string nodes;         // further ones in the scene
    std::string boneTransform; // of the first bone instead of none

    [[nodiscard]] std::string Text() const;
};

// An animation that moves a bone's height over the given seconds, as a library.
[[nodiscard]] std::string ColladaAnimation(const std::string& bone, const std::vector<double>& seconds,
                                           const std::vector<double>& heights);

} // namespace skindesk::test
