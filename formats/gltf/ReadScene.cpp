// SPDX-License-Identifier: MIT
// Nodes and scenes.
#include "Reading.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace skindesk::gltf {

namespace {

template <std::size_t N>
bool ReadNumbers(Reading& reading, JsonValue object, const char* key, std::array<double, N>& into)
{
    const JsonValue v = reading.json.Member(object, key);
    if (v == JSON_NONE) {
        return false;
    }
    const std::vector<double> numbers = reading.file.Numbers(v, N);
    std::copy(numbers.begin(), numbers.end(), into.begin());
    return true;
}

// Rotation matrix of a quaternion x y z w for row vectors, scaled row by row, with the translation below.
// A quaternion of length zero turns nothing.
std::array<double, 16> Composed(const Node& node)
{
    auto [x, y, z, w] = node.rotation;
    const double length = std::sqrt(x * x + y * y + z * z + w * w);
    if (length > 0 && std::isfinite(length)) {
        x /= length, y /= length, z /= length, w /= length;
    } else {
        x = y = z = 0, w = 1;
    }
    const auto& s = node.scale;
    const auto& t = node.translation;
    return {s[0] * (1 - 2 * (y * y + z * z)),
            s[0] * 2 * (x * y + z * w),
            s[0] * 2 * (x * z - y * w),
            0,
            s[1] * 2 * (x * y - z * w),
            s[1] * (1 - 2 * (x * x + z * z)),
            s[1] * 2 * (y * z + x * w),
            0,
            s[2] * 2 * (x * z + y * w),
            s[2] * 2 * (y * z - x * w),
            s[2] * (1 - 2 * (x * x + y * y)),
            0,
            t[0],
            t[1],
            t[2],
            1};
}

void ReadTransform(Reading& reading, JsonValue v, Node& node)
{
    node.hasMatrix = ReadNumbers(reading, v, "matrix", node.matrix);
    Node parts;
    const bool moves = ReadNumbers(reading, v, "translation", parts.translation);
    const bool turns = ReadNumbers(reading, v, "rotation", parts.rotation);
    const bool scales = ReadNumbers(reading, v, "scale", parts.scale);
    if (node.hasMatrix) {
        if (moves || turns || scales) {
            reading.warnings.Add(v,
                                 "the node has a matrix and also translation, rotation or scale; the matrix is taken");
        }
        return;
    }
    const auto& q = parts.rotation;
    if (q[0] == 0 && q[1] == 0 && q[2] == 0 && q[3] == 0) {
        reading.warnings.Add(v, "the rotation is 0, 0, 0, 0; it is taken as none");
    }
    const auto& s = parts.scale;
    if (s[0] == 0 || s[1] == 0 || s[2] == 0) {
        reading.warnings.Add(v, "the node is scaled by 0, so nothing can be placed relative to it");
    }
    node.translation = parts.translation;
    node.rotation = parts.rotation;
    node.scale = parts.scale;
    node.matrix = Composed(node);
}

bool HasControlCharacter(const std::string& name)
{
    // Besides the control characters: marks that turn the direction of the text around (U+202A to U+202E).
    return std::any_of(name.begin(), name.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }) ||
           name.find("\xE2\x80\xAA") != std::string::npos || name.find("\xE2\x80\xAD") != std::string::npos ||
           name.find("\xE2\x80\xAB") != std::string::npos || name.find("\xE2\x80\xAE") != std::string::npos;
}

void ReadNode(Reading& reading, JsonValue v, Node& node)
{
    node.name = reading.file.TextOr(reading.file.Object(v), "name", "");
    for (const JsonValue child : reading.file.Array(reading.json.Member(v, "children"))) {
        node.children.push_back(reading.file.Index(child, reading.file.List("nodes").size(), "nodes"));
    }
    node.mesh = reading.file.IndexOr(v, "mesh", "meshes", -1);
    node.skin = reading.file.IndexOr(v, "skin", "skins", -1);
    if (node.skin >= 0 && node.mesh < 0) {
        reading.warnings.Add(v, "the node has a skin but shows no mesh");
        node.skin = -1;
    }
    ReadTransform(reading, v, node);
    node.morphWeights = reading.file.Numbers(reading.json.Member(v, "weights"));
}

void SetParents(Reading& reading)
{
    std::vector<Node>& nodes = reading.into.nodes;
    const std::vector<JsonValue>& values = reading.file.List("nodes");
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        for (const int child : nodes[i].children) {
            int& parent = nodes[static_cast<std::size_t>(child)].parent;
            if (parent >= 0) {
                reading.file.Refuse(values[static_cast<std::size_t>(child)], "the node is a child of node " +
                                                                                 std::to_string(parent) +
                                                                                 " and of node " + std::to_string(i));
            }
            parent = static_cast<int>(i);
        }
    }
}

// Every node has at most one parent, so a walk upwards either ends at a root or comes back to where it was.
void RefuseCycles(Reading& reading)
{
    const std::vector<Node>& nodes = reading.into.nodes;
    std::vector<std::size_t> walkOf(nodes.size(), 0);
    for (std::size_t start = 0; start < nodes.size(); ++start) {
        int at = static_cast<int>(start);
        while (at >= 0 && walkOf[static_cast<std::size_t>(at)] == 0) {
            walkOf[static_cast<std::size_t>(at)] = start + 1;
            at = nodes[static_cast<std::size_t>(at)].parent;
        }
        if (at >= 0 && walkOf[static_cast<std::size_t>(at)] == start + 1) {
            reading.file.Refuse(reading.file.List("nodes")[static_cast<std::size_t>(at)],
                                "the node is its own ancestor");
        }
    }
}

void ReadScenes(Reading& reading)
{
    for (const JsonValue v : reading.file.List("scenes")) {
        Scene scene;
        scene.name = reading.file.TextOr(reading.file.Object(v), "name", "");
        for (const JsonValue node : reading.file.Array(reading.json.Member(v, "nodes"))) {
            scene.nodes.push_back(reading.file.Index(node, reading.into.nodes.size(), "nodes"));
            if (reading.into.nodes[static_cast<std::size_t>(scene.nodes.back())].parent >= 0) {
                reading.warnings.Add(node, "the scene names a node that has a parent");
            }
        }
        reading.into.scenes.push_back(std::move(scene));
    }
    reading.into.defaultScene = reading.file.IndexOr(reading.json.Root(), "scene", "scenes", -1);
}

} // namespace

void ReadScenesAndNodes(Reading& reading)
{
    std::size_t unprintable = 0;
    JsonValue firstUnprintable = JSON_NONE;
    for (const JsonValue v : reading.file.List("nodes")) {
        ReadNode(reading, v, reading.into.nodes.emplace_back());
        if (HasControlCharacter(reading.into.nodes.back().name)) {
            firstUnprintable = unprintable++ == 0 ? v : firstUnprintable;
        }
    }
    if (unprintable > 0) {
        reading.warnings.Add(firstUnprintable, Counted(unprintable, "node name has", "node names have") +
                                                   " control characters in it; they are kept");
    }
    SetParents(reading);
    RefuseCycles(reading);
    ReadScenes(reading);
}

} // namespace skindesk::gltf
