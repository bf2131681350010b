// SPDX-License-Identifier: MIT
// The models' skins become edits of the file's records.
#include "documents/ZGltfScene.h"
#include "zmodel/ZModel.h"
#include "zmodel/ZSkin.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace gltf = skindesk::gltf;

namespace {

constexpr std::uint32_t kNoJoint = 0xFFFFFFFFU;

std::array<double, 16> ToNumbers(const ZgeMatrix& matrix)
{
    std::array<double, 16> numbers{};
    std::copy_n(matrix.Data(), 16, numbers.begin());
    return numbers;
}

/// Gives each link of a skin its joint number in the file. A link is known again by the bone's node and its exact
/// inverse bind matrix, since links are removed and merged on the desk while a file's joints stay where they are. What
/// is not found becomes an added joint, one for all models that show the same skin of the file.
class JointNumbers
{
public:
    JointNumbers(const ZGltfScene& scene, gltf::CharacterEdits& edits, std::vector<std::string>& warnings)
        : m_scene(scene), m_edits(edits), m_warnings(warnings)
    {
    }

    std::vector<std::uint32_t> Of(ZSkin& skin, int fileSkin)
    {
        const gltf::Skin& file = m_scene.file.skins[static_cast<size_t>(fileSkin)];
        std::unordered_map<int, std::vector<std::uint32_t>> free; // node -> joints that no link has taken
        for (size_t joint = 0; joint < file.joints.size(); ++joint)
            free[file.joints[joint]].push_back(static_cast<std::uint32_t>(joint));
        std::vector<std::uint32_t> numbers;
        numbers.reserve(static_cast<size_t>(skin.LinkCount()));
        for (int link = 0; link < skin.LinkCount(); ++link)
            numbers.push_back(NumberOf(skin, link, fileSkin, free));
        m_unclaimed = CountDeleted(free);
        return numbers;
    }
    /// Joints of the last skin whose bones were deleted from the scene.
    int DeletedBones() const { return m_unclaimed; }

private:
    std::uint32_t NumberOf(ZSkin& skin, int link, int fileSkin,
                           std::unordered_map<int, std::vector<std::uint32_t>>& free)
    {
        const ZModel* const bone = skin.LinkModel(link);
        if (bone == nullptr)
            return kNoJoint;
        if (bone->GetDocument() != m_scene.document) {
            m_warnings.push_back("bone \"" + bone->GetObjectName() + "\" belongs to another file: its weights on \"" +
                                 skin.GetOwner()->GetObjectName() + "\" are left out");
            return kNoJoint;
        }
        const gltf::Skin& file = m_scene.file.skins[static_cast<size_t>(fileSkin)];
        const std::array<double, 16> bind = ToNumbers(skin.GetInverseBind(link));
        std::vector<std::uint32_t>& candidates = free[bone->GetFileNode()];
        const auto same = std::find_if(candidates.begin(), candidates.end(), [&](std::uint32_t joint) {
            return file.inverseBindMatrices[joint] == bind || !IsNumber(file.inverseBindMatrices[joint]);
        });
        if (same == candidates.end())
            return AddedNumber(fileSkin, bone->GetFileNode(), bind);
        const std::uint32_t joint = *same;
        candidates.erase(same);
        return joint;
    }

    /// A matrix with a NaN is equal to nothing, not even to itself.
    static bool IsNumber(const std::array<double, 16>& matrix)
    {
        return std::none_of(matrix.begin(), matrix.end(), [](double value) { return std::isnan(value); });
    }

    std::uint32_t AddedNumber(int fileSkin, int node, const std::array<double, 16>& bind)
    {
        std::uint32_t number =
            static_cast<std::uint32_t>(m_scene.file.skins[static_cast<size_t>(fileSkin)].joints.size());
        for (const gltf::AddedJoint& added : m_edits.addedJoints) {
            if (added.skin != fileSkin)
                continue;
            if (added.node == node && added.inverseBindMatrix == bind)
                return number;
            ++number;
        }
        m_edits.addedJoints.push_back({fileSkin, node, bind});
        return number;
    }

    int CountDeleted(const std::unordered_map<int, std::vector<std::uint32_t>>& free) const
    {
        int count = 0;
        for (const auto& [node, joints] : free)
            if (!joints.empty() && m_scene.ModelOf(node) == nullptr)
                count += static_cast<int>(joints.size());
        return count;
    }

    const ZGltfScene& m_scene;
    gltf::CharacterEdits& m_edits;
    std::vector<std::string>& m_warnings;
    int m_unclaimed = 0;
};

gltf::ModelWeights ToModelWeights(int node, const ZSkin& skin, const std::vector<std::uint32_t>& joints)
{
    std::vector<int> offsets, links;
    std::vector<double> weights;
    skin.BuildCsr(offsets, links, weights);
    gltf::ModelWeights model;
    model.node = node;
    model.offsets.reserve(offsets.size());
    model.offsets.push_back(0);
    model.joints.reserve(links.size());
    model.weights.reserve(links.size());
    for (size_t vertex = 0; vertex + 1 < offsets.size(); ++vertex) {
        for (int at = offsets[vertex]; at < offsets[vertex + 1]; ++at) {
            const std::uint32_t joint = joints[static_cast<size_t>(links[static_cast<size_t>(at)])];
            const double weight = weights[static_cast<size_t>(at)];
            if (joint == kNoJoint || weight == 0.0)
                continue;
            model.joints.push_back(joint);
            model.weights.push_back(weight);
        }
        model.offsets.push_back(static_cast<std::uint32_t>(model.joints.size()));
    }
    return model;
}

} // namespace

gltf::CharacterEdits ZGltfScene_CollectEdits(const ZGltfScene& scene, std::vector<std::string>& warnings,
                                             bool* lostBones)
{
    gltf::CharacterEdits edits;
    JointNumbers numbers(scene, edits, warnings);
    *lostBones = false;
    for (size_t node = 0; node < scene.file.nodes.size(); ++node) {
        const int fileSkin = scene.file.nodes[node].skin;
        ZModel* const model = scene.ModelOf(static_cast<int>(node));
        if (fileSkin < 0 || model == nullptr || model->GetSkin() == nullptr)
            continue;
        ZSkin& skin = *model->GetSkin();
        if (skin.GetVersion() == scene.skinVersions[node])
            continue;
        const std::vector<std::uint32_t> joints = numbers.Of(skin, fileSkin);
        *lostBones = *lostBones || numbers.DeletedBones() > 0;
        edits.models.push_back(ToModelWeights(static_cast<int>(node), skin, joints));
    }
    return edits;
}
