// SPDX-License-Identifier: MIT
// Whether the records of a new character fit together.
#include "CheckNewCharacter.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>

namespace skindesk::imports {

namespace {

constexpr int HIGHEST_DEGREE = 5;
constexpr std::size_t MOST_JOINTS = 65536; // a joint number has 16 bits
constexpr std::size_t MOST_VERTICES = 0xFFFFFFFE;

template <typename Range> bool AllFinite(const Range& numbers)
{
    return std::all_of(numbers.begin(), numbers.end(), [](auto x) { return std::isfinite(x); });
}

class Checker
{
public:
    Checker(const NewCharacter& character, const std::string& path) : m_new(character), m_path(path) {}

    void Run()
    {
        if (m_new.nodes.empty()) {
            throw gltf::FileError(m_path, "", "holds nothing that the desk can show");
        }
        for (std::size_t i = 0; i < m_new.nodes.size(); ++i) {
            CheckNode(m_new.nodes[i], Named("node", i, m_new.nodes[i].name));
        }
        CheckParents();
        for (std::size_t i = 0; i < m_new.meshes.size(); ++i) {
            CheckMesh(m_new.meshes[i], Named("mesh", i, m_new.meshes[i].name));
        }
        for (std::size_t i = 0; i < m_new.skins.size(); ++i) {
            CheckSkin(m_new.skins[i], Named("skin", i, m_new.skins[i].name));
        }
        CheckJointsOfMeshes();
        for (std::size_t i = 0; i < m_new.animations.size(); ++i) {
            CheckAnimation(m_new.animations[i], Named("animation", i, m_new.animations[i].name));
        }
        for (std::size_t i = 0; i < m_new.materials.size(); ++i) {
            Require(AllFinite(m_new.materials[i].baseColour), Named("material", i, m_new.materials[i].name),
                    "a colour is not a number");
        }
    }

private:
    static std::string Named(const char* kind, std::size_t index, const std::string& name)
    {
        return std::string(kind) + " " + (name.empty() ? std::to_string(index) : "\"" + name + "\"");
    }

    void Require(bool holds, const std::string& where, std::string_view otherwise) const
    {
        if (!holds) {
            throw gltf::FileError(m_path, where, std::string(otherwise));
        }
    }

    static bool IsIndexOrNone(int index, std::size_t count)
    {
        return index >= -1 && (index < 0 || static_cast<std::size_t>(index) < count);
    }

    void CheckNode(const NewNode& node, const std::string& where) const
    {
        Require(IsIndexOrNone(node.parent, m_new.nodes.size()), where, "its parent is no node");
        Require(IsIndexOrNone(node.mesh, m_new.meshes.size()), where, "its mesh is not there");
        Require(IsIndexOrNone(node.skin, m_new.skins.size()), where, "its skin is not there");
        Require(AllFinite(node.translation) && AllFinite(node.rotation) && AllFinite(node.scale), where,
                "its place is not a number");
        Require(!node.matrix || AllFinite(*node.matrix), where, "its matrix holds what is not a number");
    }

    // Goes up from every node and stops at what an earlier way has passed, so that each node is passed once.
    void CheckParents() const
    {
        std::vector<std::size_t> passedFrom(m_new.nodes.size(), m_new.nodes.size());
        for (std::size_t start = 0; start < m_new.nodes.size(); ++start) {
            auto at = static_cast<int>(start);
            while (at >= 0 && passedFrom[static_cast<std::size_t>(at)] == m_new.nodes.size()) {
                passedFrom[static_cast<std::size_t>(at)] = start;
                at = m_new.nodes[static_cast<std::size_t>(at)].parent;
            }
            Require(at < 0 || passedFrom[static_cast<std::size_t>(at)] != start,
                    Named("node", start, m_new.nodes[start].name), "its parents lead in a circle");
        }
    }

    void CheckMesh(const NewMesh& mesh, const std::string& where) const
    {
        const std::size_t vertices = mesh.positions.size() / 3;
        Require(vertices <= MOST_VERTICES, where, "has more vertices than a file can count");
        Require(mesh.positions.size() == 3 * vertices && AllFinite(mesh.positions), where,
                "the place of a vertex is not a number");
        Require(mesh.normals.empty() || mesh.normals.size() == 3 * vertices, where,
                "has not as many normals as vertices");
        Require(mesh.texCoords.empty() || mesh.texCoords.size() == 2 * vertices, where,
                "has not as many texture places as vertices");
        Require(AllFinite(mesh.texCoords), where, "a texture place is not a number");
        for (const NewTriangles& part : mesh.triangles) {
            Require(IsIndexOrNone(part.material, m_new.materials.size()), where, "its material is not there");
            Require(part.corners.size() % 3 == 0, where, "its last triangle has not three corners");
            Require(std::all_of(part.corners.begin(), part.corners.end(), [=](auto c) { return c < vertices; }), where,
                    "a triangle names a vertex that is not there");
        }
        for (const NewMorphTarget& target : mesh.morphTargets) {
            Require(target.positions.size() == 3 * vertices && AllFinite(target.positions), where,
                    "a morph target does not fit its vertices");
        }
        CheckInfluences(mesh, vertices, where);
        if (mesh.nurbs) {
            Require(IsIndexOrNone(mesh.nurbs->material, m_new.materials.size()), where, "its material is not there");
            CheckNewSurface(mesh, m_path, where);
        }
    }

    void CheckInfluences(const NewMesh& mesh, std::size_t vertices, const std::string& where) const
    {
        const std::vector<std::uint32_t>& offsets = mesh.influenceOffsets;
        if (offsets.empty()) {
            Require(mesh.influenceJoints.empty() && mesh.influenceWeights.empty(), where,
                    "has weights that belong to no vertex");
            return;
        }
        Require(offsets.size() == vertices + 1 && offsets.front() == 0 &&
                    std::is_sorted(offsets.begin(), offsets.end()) && offsets.back() == mesh.influenceJoints.size() &&
                    mesh.influenceJoints.size() == mesh.influenceWeights.size(),
                where, "its weights do not fit its vertices");
        Require(AllFinite(mesh.influenceWeights), where, "a weight is not a number");
    }

    void CheckSkin(const NewSkin& skin, const std::string& where) const
    {
        Require(skin.joints.size() <= MOST_JOINTS, where, "has more than 65536 bones");
        Require(std::all_of(skin.joints.begin(), skin.joints.end(),
                            [&](int joint) { return joint >= 0 && IsIndexOrNone(joint, m_new.nodes.size()); }),
                where, "one of its bones is no node");
        Require(std::set<int>(skin.joints.begin(), skin.joints.end()).size() == skin.joints.size(), where,
                "names a bone twice");
        Require(skin.inverseBindMatrices.empty() || skin.inverseBindMatrices.size() == skin.joints.size(), where,
                "has not as many bind matrices as bones");
        Require(std::all_of(skin.inverseBindMatrices.begin(), skin.inverseBindMatrices.end(),
                            [](const auto& matrix) { return AllFinite(matrix); }),
                where, "a bind matrix holds what is not a number");
    }

    void CheckJointsOfMeshes() const
    {
        std::vector<std::size_t> needed(m_new.meshes.size(), 0);
        for (std::size_t m = 0; m < m_new.meshes.size(); ++m) {
            const std::vector<std::uint32_t>& joints = m_new.meshes[m].influenceJoints;
            needed[m] = joints.empty() ? 0 : std::size_t{*std::max_element(joints.begin(), joints.end())} + 1;
        }
        for (std::size_t n = 0; n < m_new.nodes.size(); ++n) {
            const NewNode& node = m_new.nodes[n];
            if (node.mesh >= 0 && node.skin >= 0) {
                Require(needed[static_cast<std::size_t>(node.mesh)] <=
                            m_new.skins[static_cast<std::size_t>(node.skin)].joints.size(),
                        Named("node", n, node.name), "its mesh hangs on bones that its skin does not have");
            }
        }
    }

    void CheckAnimation(const NewAnimation& animation, const std::string& where) const
    {
        for (const NewChannel& channel : animation.channels) {
            Require(channel.node >= 0 && IsIndexOrNone(channel.node, m_new.nodes.size()), where,
                    "moves a node that is not there");
            const NewNode& node = m_new.nodes[static_cast<std::size_t>(channel.node)];
            Require(!node.matrix || channel.property == gltf::AnimatedProperty::MorphWeights, where,
                    "moves a node whose place is a matrix");
            Require(AllFinite(channel.times) && AllFinite(channel.values), where, "a key is not a number");
            Require((channel.times.empty() || channel.times.front() >= 0) &&
                        std::adjacent_find(channel.times.begin(), channel.times.end(), std::greater_equal<>()) ==
                            channel.times.end(),
                    where, "its keys do not follow each other in time");
            const std::size_t perKey =
                ComponentsOf(channel, node) * (channel.interpolation == gltf::Interpolation::CubicSpline ? 3 : 1);
            Require(channel.values.size() == channel.times.size() * perKey, where,
                    "has not as many values as its keys need");
        }
    }

    [[nodiscard]] std::size_t ComponentsOf(const NewChannel& channel, const NewNode& node) const
    {
        switch (channel.property) {
        case gltf::AnimatedProperty::Rotation:
            return 4;
        case gltf::AnimatedProperty::MorphWeights:
            return node.mesh < 0 ? 0 : m_new.meshes[static_cast<std::size_t>(node.mesh)].morphTargets.size();
        default:
            return 3;
        }
    }

    const NewCharacter& m_new;
    const std::string& m_path;
};

} // namespace

void CheckNewCharacter(const NewCharacter& character, const std::string& path) { Checker(character, path).Run(); }

void CheckNewSurface(const NewMesh& mesh, const std::string& path, const std::string& where)
{
    const auto refuse = [&](const std::string& sentence) { throw gltf::FileError(path, where, sentence); };
    const NewNurbsSurface& surface = *mesh.nurbs;
    for (std::size_t d = 0; d < 2; ++d) {
        const int degree = surface.degree[d];
        const int count = surface.count[d];
        if (degree < 1 || degree > HIGHEST_DEGREE) {
            refuse("degree " + std::to_string(degree) + " is not read, 1 to 5 are");
        }
        if (count <= degree) {
            refuse("degree " + std::to_string(degree) + " needs at least " + std::to_string(degree + 1) +
                   " control points, there are " + std::to_string(count));
        }
        const std::vector<double>& knots = surface.knots[d];
        const std::size_t needed = static_cast<std::size_t>(count) + static_cast<std::size_t>(degree) + 1;
        if (knots.size() != needed) {
            refuse("there are " + std::to_string(knots.size()) + " knots in " + (d == 0 ? "U" : "V") + ", " +
                   std::to_string(count) + " control points of degree " + std::to_string(degree) + " need " +
                   std::to_string(needed));
        }
        if (!AllFinite(knots) || !std::is_sorted(knots.begin(), knots.end())) {
            refuse(std::string("the knots in ") + (d == 0 ? "U" : "V") + " descend somewhere");
        }
        if (!(knots[static_cast<std::size_t>(degree)] < knots[static_cast<std::size_t>(count)])) {
            refuse(std::string("the knots in ") + (d == 0 ? "U" : "V") + " leave no surface between them");
        }
        if (surface.grid[d] != 0 && surface.grid[d] < 2) {
            refuse("a polygon mesh of one row shows no surface");
        }
    }
    if ((surface.grid[0] == 0) != (surface.grid[1] == 0)) {
        refuse("the polygon mesh has a size in one direction only");
    }
    const std::size_t points = static_cast<std::size_t>(surface.count[0]) * static_cast<std::size_t>(surface.count[1]);
    if (mesh.positions.size() != 3 * points) {
        refuse("there are " + std::to_string(mesh.positions.size() / 3) + " control points, " +
               std::to_string(surface.count[0]) + " times " + std::to_string(surface.count[1]) + " are needed");
    }
    if (!surface.pointWeights.empty() &&
        (surface.pointWeights.size() != points ||
         !std::all_of(surface.pointWeights.begin(), surface.pointWeights.end(),
                      [](double w) { return w > 0 && std::isfinite(static_cast<float>(w)); }))) {
        refuse("a weight of a control point is not above 0");
    }
}

} // namespace skindesk::imports
