// SPDX-License-Identifier: MIT
// Changes to checked records, so that a valid file can be written of them.
#include "CheckNewCharacter.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace skindesk::imports {

namespace {

constexpr double WHOLE_TOLERANCE = 1e-6;

// Brings a direction or quaternion to unit length; false where it has none.
template <std::size_t N, typename Number> bool MakeUnit(Number* v)
{
    double square = 0;
    for (std::size_t c = 0; c < N; ++c) {
        square += static_cast<double>(v[c]) * v[c];
    }
    if (!(square > 0) || !std::isfinite(square)) {
        return false;
    }
    for (std::size_t c = 0; c < N; ++c) {
        v[c] = static_cast<Number>(v[c] / std::sqrt(square));
    }
    return true;
}

std::string Counted(std::size_t count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

class Mender
{
public:
    explicit Mender(NewCharacter& character) : m_new(character) {}

    void Run()
    {
        DropEmptyMeshes();
        for (NewNode& node : m_new.nodes) {
            if (!MakeUnit<4>(node.rotation.data())) {
                node.rotation = {0, 0, 0, 1};
            }
            DropUselessSkin(node);
        }
        DropEmptySkins();
        for (NewMesh& mesh : m_new.meshes) {
            MendNormals(mesh);
            MendInfluences(mesh);
        }
        for (NewSkin& skin : m_new.skins) {
            for (auto& matrix : skin.inverseBindMatrices) {
                matrix[3] = matrix[7] = matrix[11] = 0;
                matrix[15] = 1;
            }
        }
        GiveACommonRoot();
        for (NewAnimation& animation : m_new.animations) {
            MendAnimation(animation);
        }
        std::erase_if(m_new.animations, [](const NewAnimation& animation) { return animation.channels.empty(); });
        for (NewMaterial& material : m_new.materials) {
            for (double& c : material.baseColour) {
                c = std::clamp(c, 0.0, 1.0);
            }
        }
        Report();
    }

private:
    // Removes what `isUseless` names and answers where the others went; -1 for what is gone.
    template <typename T, typename Test> static std::vector<int> Removed(std::vector<T>& list, Test isUseless)
    {
        std::vector<int> now(list.size(), -1);
        int kept = 0;
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (!isUseless(list[i])) {
                now[i] = kept++;
            }
        }
        std::erase_if(list, isUseless);
        return now;
    }

    void DropEmptyMeshes()
    {
        const std::size_t before = m_new.meshes.size();
        const std::vector<int> now = Removed(m_new.meshes, [](const NewMesh& mesh) { return mesh.positions.empty(); });
        for (NewNode& node : m_new.nodes) {
            node.mesh = node.mesh < 0 ? -1 : now[static_cast<std::size_t>(node.mesh)];
        }
        if (const std::size_t gone = before - m_new.meshes.size(); gone > 0) {
            m_new.warnings.push_back(Counted(gone, "mesh has", "meshes have") + " no vertices and " +
                                     (gone == 1 ? "is" : "are") + " left out");
        }
    }

    void DropUselessSkin(NewNode& node) const
    {
        if (node.skin >= 0 && (node.mesh < 0 || m_new.skins[static_cast<std::size_t>(node.skin)].joints.empty() ||
                               m_new.meshes[static_cast<std::size_t>(node.mesh)].influenceOffsets.empty())) {
            node.skin = -1;
        }
    }

    void DropEmptySkins()
    {
        const std::vector<int> now = Removed(m_new.skins, [](const NewSkin& skin) { return skin.joints.empty(); });
        for (NewNode& node : m_new.nodes) {
            node.skin = node.skin < 0 ? -1 : now[static_cast<std::size_t>(node.skin)];
        }
    }

    void MendNormals(NewMesh& mesh)
    {
        for (std::size_t i = 0; i + 2 < mesh.normals.size(); i += 3) {
            if (!MakeUnit<3>(&mesh.normals[i])) {
                mesh.normals[i] = mesh.normals[i + 1] = 0;
                mesh.normals[i + 2] = 1;
            }
        }
    }

    void MendInfluences(NewMesh& mesh)
    {
        if (mesh.influenceOffsets.empty()) {
            return;
        }
        std::vector<std::uint32_t> offsets{0};
        std::vector<std::uint32_t> joints;
        std::vector<float> weights;
        std::vector<std::pair<std::uint32_t, double>> row;
        for (std::size_t v = 0; v + 1 < mesh.influenceOffsets.size(); ++v) {
            row.clear();
            for (std::size_t e = mesh.influenceOffsets[v]; e < mesh.influenceOffsets[v + 1]; ++e) {
                row.emplace_back(mesh.influenceJoints[e], mesh.influenceWeights[e]);
            }
            MendRow(row);
            for (const auto& [joint, weight] : row) {
                joints.push_back(joint);
                weights.push_back(static_cast<float>(weight));
            }
            offsets.push_back(static_cast<std::uint32_t>(joints.size()));
        }
        mesh.influenceOffsets = std::move(offsets);
        mesh.influenceJoints = std::move(joints);
        mesh.influenceWeights = std::move(weights);
    }

    void MendRow(std::vector<std::pair<std::uint32_t, double>>& row)
    {
        std::stable_sort(row.begin(), row.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        std::size_t kept = 0;
        for (const auto& [joint, weight] : row) {
            if (kept > 0 && row[kept - 1].first == joint) {
                row[kept - 1].second += weight;
            } else {
                row[kept++] = {joint, weight};
            }
        }
        row.resize(kept);
        m_negative += std::any_of(row.begin(), row.end(), [](const auto& entry) { return entry.second < 0; }) ? 1 : 0;
        // A float that is nothing beside the others would be written as 0, which is no influence.
        std::erase_if(row, [](const auto& entry) { return !(static_cast<float>(entry.second) > 0); });
        std::stable_sort(row.begin(), row.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
        double whole = 0;
        for (const auto& entry : row) {
            whole += entry.second;
        }
        if (row.empty()) {
            // The format has no vertex that nothing pulls; the first bone is the root as a rule.
            ++m_weightless;
            row.emplace_back(0, 1);
            return;
        }
        if (std::abs(whole - 1) > WHOLE_TOLERANCE) {
            ++m_scaled;
            for (auto& entry : row) {
                entry.second /= whole;
            }
        }
    }

    // By node: the topmost of its ancestors. Each node is passed once.
    [[nodiscard]] std::vector<int> Roots() const
    {
        std::vector<int> roots(m_new.nodes.size(), -1);
        std::vector<std::size_t> way;
        for (std::size_t start = 0; start < roots.size(); ++start) {
            way.assign(1, start);
            while (roots[way.back()] < 0 && m_new.nodes[way.back()].parent >= 0) {
                way.push_back(static_cast<std::size_t>(m_new.nodes[way.back()].parent));
            }
            const int root = roots[way.back()] < 0 ? static_cast<int>(way.back()) : roots[way.back()];
            for (const std::size_t node : way) {
                roots[node] = root;
            }
        }
        return roots;
    }

    // The bones of a skin need a common ancestor. All trees get one, behind the other nodes, so that no number changes.
    void GiveACommonRoot()
    {
        const std::vector<int> roots = Roots();
        const bool isMissing = std::any_of(m_new.skins.begin(), m_new.skins.end(), [&](const NewSkin& skin) {
            return std::any_of(skin.joints.begin(), skin.joints.end(), [&](int joint) {
                return roots[static_cast<std::size_t>(joint)] != roots[static_cast<std::size_t>(skin.joints.front())];
            });
        });
        if (!isMissing) {
            return;
        }
        const auto root = static_cast<int>(m_new.nodes.size());
        for (NewNode& node : m_new.nodes) {
            node.parent = node.parent < 0 ? root : node.parent;
        }
        m_new.nodes.emplace_back().name = "Root";
    }

    void MendAnimation(NewAnimation& animation)
    {
        std::set<std::pair<int, gltf::AnimatedProperty>> targets;
        std::erase_if(animation.channels, [&](const NewChannel& channel) {
            if (channel.times.empty() || channel.values.empty()) {
                return true;
            }
            const bool isNew = targets.emplace(channel.node, channel.property).second;
            m_doubled += isNew ? 0 : 1;
            return !isNew;
        });
        for (NewChannel& channel : animation.channels) {
            if (channel.property == gltf::AnimatedProperty::Rotation) {
                MendRotations(channel);
            }
        }
    }

    static void MendRotations(NewChannel& channel)
    {
        const bool isSpline = channel.interpolation == gltf::Interpolation::CubicSpline;
        for (std::size_t i = isSpline ? 4 : 0; i < channel.values.size(); i += isSpline ? 12 : 4) {
            if (!MakeUnit<4>(&channel.values[i])) {
                channel.values[i] = channel.values[i + 1] = channel.values[i + 2] = 0;
                channel.values[i + 3] = 1;
            }
        }
    }

    void Report()
    {
        const auto say = [this](std::size_t count, const char* one, const char* many, const char* what) {
            if (count > 0) {
                m_new.warnings.push_back(Counted(count, one, many) + what);
            }
        };
        say(m_negative, "vertex has", "vertices have", " weights below 0, which are left out");
        say(m_scaled, "vertex has", "vertices have", " weights that do not add up to one; they are scaled");
        say(m_weightless, "vertex of a skinned mesh has", "vertices of skinned meshes have",
            " no weight; the skin's first bone pulls what has none");
        say(m_doubled, "animation channel moves", "animation channels move",
            " what an earlier one moves already; the earlier one is kept");
    }

    NewCharacter& m_new;
    std::size_t m_negative = 0;
    std::size_t m_scaled = 0;
    std::size_t m_weightless = 0;
    std::size_t m_doubled = 0;
};

} // namespace

void MendNewCharacter(NewCharacter& character) { Mender(character).Run(); }

} // namespace skindesk::imports
