// SPDX-License-Identifier: MIT
// Skins, and the checks between a skin and the meshes that hang on it.
#include "Reading.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

namespace skindesk::gltf {

namespace {

DeformMode ReadMode(Reading& reading, JsonValue skin)
{
    const JsonValue v = reading.json.Member(reading.json.Member(skin, "extras"), "deformMode");
    if (v == JSON_NONE) {
        return DeformMode::Normalise;
    }
    const std::string name = reading.json.Is(v, JsonKind::String) ? reading.file.Text(v) : "";
    if (name == "additive") {
        return DeformMode::Additive;
    }
    if (name == "total100") {
        return DeformMode::Total100;
    }
    if (name != "normalise") {
        reading.warnings.Add(v, "deformMode is none of normalise, additive and total100; the weights are normalised");
    }
    return DeformMode::Normalise;
}

// Programs that compute these matrices leave their last column this far from 0, 0, 0, 1.
constexpr double ROUNDING = 1e-5;

void WarnOfOddMatrices(Reading& reading, JsonValue where, const Skin& skin)
{
    std::size_t notNumbers = 0;
    std::size_t notAffine = 0;
    for (const auto& m : skin.inverseBindMatrices) {
        const bool isFinite = std::all_of(m.begin(), m.end(), [](double x) { return std::isfinite(x); });
        notNumbers += isFinite ? 0 : 1;
        const double off = std::max({std::abs(m[3]), std::abs(m[7]), std::abs(m[11]), std::abs(m[15] - 1)});
        notAffine += isFinite && off > ROUNDING ? 1 : 0;
    }
    if (notNumbers > 0) {
        reading.warnings.Add(where, Counted(notNumbers, "inverse bind matrix has", "inverse bind matrices have") +
                                        " numbers that are not finite");
    }
    if (notAffine > 0) {
        reading.warnings.Add(where, Counted(notAffine, "inverse bind matrix does", "inverse bind matrices do") +
                                        " not end in 0, 0, 0, 1");
    }
}

void ReadInverseBindMatrices(Reading& reading, JsonValue v, Skin& skin)
{
    constexpr std::array<double, 16> IDENTITY{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    skin.inverseBindMatrices.assign(skin.joints.size(), IDENTITY);
    const JsonValue where = reading.json.Member(v, "inverseBindMatrices");
    if (where == JSON_NONE) {
        return;
    }
    const AccessorView view = ViewAt(reading.file, where, "MAT4", reading.budget);
    if (view.Type() != ComponentType::Float) {
        reading.file.Refuse(where, "inverse bind matrices are not of floats");
    }
    if (view.Count() < skin.joints.size()) {
        reading.file.Refuse(where,
                            Counted(view.Count(), "inverse bind matrix is there", "inverse bind matrices are there") +
                                ", the skin has " + Counted(skin.joints.size(), "joint", "joints"));
    }
    for (std::size_t j = 0; j < skin.joints.size(); ++j) {
        std::array<float, 16> matrix{};
        view.Floats(j, 1, matrix.data());
        std::copy(matrix.begin(), matrix.end(), skin.inverseBindMatrices[j].begin());
    }
    WarnOfOddMatrices(reading, where, skin);
}

void WarnOfRepeatedJoints(Reading& reading, JsonValue where, const Skin& skin)
{
    std::unordered_set<int> nodes;
    std::unordered_set<std::string> names;
    std::size_t repeated = 0;
    std::size_t sameName = 0;
    for (const int joint : skin.joints) {
        if (!nodes.insert(joint).second) {
            ++repeated;
        } else if (const std::string& name = reading.into.nodes[static_cast<std::size_t>(joint)].name; !name.empty()) {
            sameName += names.insert(name).second ? 0 : 1;
        }
    }
    if (repeated > 0) {
        reading.warnings.Add(where, Counted(repeated, "joint stands", "joints stand") + " in the skin a second time");
    }
    if (sameName > 0) {
        reading.warnings.Add(where, Counted(sameName, "joint has", "joints have") + " the name of another joint");
    }
}

void ReadSkin(Reading& reading, JsonValue v)
{
    Skin skin;
    skin.name = reading.file.TextOr(reading.file.Object(v), "name", "");
    const JsonValue joints = reading.json.Member(v, "joints");
    for (const JsonValue joint : reading.file.Array(joints)) {
        skin.joints.push_back(reading.file.Index(joint, reading.into.nodes.size(), "nodes"));
    }
    if (skin.joints.empty()) {
        reading.warnings.Add(v, "the skin has no joints");
    }
    const JsonValue skeleton = reading.json.Member(v, "skeleton");
    if (skeleton != JSON_NONE) {
        const std::size_t node = reading.file.WholeNumber(skeleton, "skeleton");
        if (node < reading.into.nodes.size()) {
            skin.skeleton = static_cast<int>(node);
        } else {
            reading.warnings.Add(skeleton, "node " + std::to_string(node) + " is named as the skeleton, there are " +
                                               Counted(reading.into.nodes.size(), "node", "nodes"));
        }
    }
    ReadInverseBindMatrices(reading, v, skin);
    WarnOfRepeatedJoints(reading, joints, skin);
    skin.mode = ReadMode(reading, v);
    reading.into.skins.push_back(std::move(skin));
}

std::string DescribeOddities(const OddWeights& odd)
{
    std::string parts;
    const auto part = [&parts](std::size_t count, const char* words) {
        if (count > 0) {
            parts += (parts.empty() ? "" : ", ") + std::to_string(count) + " " + words;
        }
    };
    part(odd.notNumbers, "with a weight that is not a number");
    part(odd.infinite, "with an infinite weight");
    part(odd.negative, "with a negative weight");
    part(odd.none, "without any weight");
    if (odd.farFromOne > 0) {
        std::string farthest = std::to_string(odd.farthest);
        part(odd.farFromOne, ("whose weights do not add up to one (at worst " + farthest + " off)").c_str());
    }
    part(odd.jointTwice, "with weight for one joint in two slots (added up)");
    return parts;
}

// A joint number is checked against each skin that the mesh hangs on, and only where it has weight: slots that pad a
// vertex to four may say anything.
void CheckSkinnedNodes(Reading& reading)
{
    OddWeights odd;
    std::unordered_set<int> seen;
    for (std::size_t i = 0; i < reading.into.nodes.size(); ++i) {
        const Node& node = reading.into.nodes[i];
        if (node.skin < 0) {
            continue;
        }
        const auto mesh = static_cast<std::size_t>(node.mesh);
        const std::size_t joints = reading.into.skins[static_cast<std::size_t>(node.skin)].joints.size();
        if (reading.jointLimits[mesh] > joints) {
            reading.file.Refuse(reading.file.List("meshes")[mesh],
                                "joint " + std::to_string(reading.jointLimits[mesh] - 1) + " has weight, skin " +
                                    std::to_string(node.skin) + " has " + Counted(joints, "joint", "joints"));
        }
        if (seen.insert(node.mesh).second) {
            if (reading.into.meshes[mesh].influenceSets > 0) {
                odd.Add(reading.oddWeights[mesh]);
            } else {
                reading.warnings.Add(reading.file.List("nodes")[i],
                                     "the node has a skin, its mesh has no joints and weights");
            }
        }
    }
    const std::string oddities = DescribeOddities(odd);
    if (!oddities.empty()) {
        reading.warnings.Add(reading.json.Root(), "vertices with odd weights, kept as they are: " + oddities);
    }
}

} // namespace

void ReadSkins(Reading& reading)
{
    for (const JsonValue v : reading.file.List("skins")) {
        ReadSkin(reading, v);
    }
    CheckSkinnedNodes(reading);
}

} // namespace skindesk::gltf
