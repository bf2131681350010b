// SPDX-License-Identifier: MIT
// Plain glTF records become models of the scene.
#include "documents/ZGltfScene.h"
#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZScene.h"

#include <algorithm>
#include <utility>

namespace gltf = skindesk::gltf;

namespace {

/// The file lists 16 numbers column by column for column vectors: row by row for row vectors.
ZgeMatrix ToMatrix(const std::array<double, 16>& numbers)
{
    ZgeMatrix matrix;
    std::copy(numbers.begin(), numbers.end(), matrix.Data());
    return matrix;
}

int ToDeformMode(gltf::DeformMode mode)
{
    switch (mode) {
    case gltf::DeformMode::Additive:
        return kDeformAdditive;
    case gltf::DeformMode::Total100:
        return kDeformTotal100;
    default:
        return kDeformNormalise;
    }
}

ZNodeTRS ToTRS(const gltf::Node& node)
{
    return {{node.translation[0], node.translation[1], node.translation[2]},
            node.rotation,
            {node.scale[0], node.scale[1], node.scale[2]}};
}

/// Makes all models of one file.
class SceneBuilder
{
public:
    SceneBuilder(ZScene& target, ZGltfScene& scene) : m_target(target), m_scene(scene), m_file(scene.file) {}

    void Build()
    {
        const size_t count = m_file.nodes.size();
        m_models.assign(count, nullptr);
        m_joint.assign(count, false);
        for (const gltf::Skin& skin : m_file.skins)
            for (const int joint : skin.joints)
                m_joint[static_cast<size_t>(joint)] = true;
        for (size_t node = 0; node < count; ++node)
            AddNode(node);
        for (size_t node = 0; node < count; ++node)
            if (const int parent = m_file.nodes[node].parent; parent >= 0)
                m_models[node]->SetParent(m_models[static_cast<size_t>(parent)]);
        m_scene.skinVersions.assign(count, 0);
        for (size_t node = 0; node < count; ++node)
            AddSkin(node);
        for (const gltf::Animation& animation : m_file.animations)
            AddAnimation(animation);
    }

private:
    std::string NameOf(size_t index) const
    {
        const gltf::Node& node = m_file.nodes[index];
        if (!node.name.empty())
            return node.name;
        if (node.mesh >= 0 && !m_file.meshes[static_cast<size_t>(node.mesh)].name.empty())
            return m_file.meshes[static_cast<size_t>(node.mesh)].name;
        return "node_" + std::to_string(index);
    }

    void AddNode(size_t index)
    {
        const gltf::Node& node = m_file.nodes[index];
        std::unique_ptr<ZModel> model = MakeModel(index, NameOf(index));
        model->SetBone(m_joint[index]);
        model->SetFileIdentity(m_scene.document, static_cast<int>(index));
        if (node.hasMatrix)
            model->SetFileTransform(ToMatrix(node.matrix));
        else
            model->SetFileTRS(ToTRS(node));
        m_models[index] = m_target.AddModel(std::move(model));
        m_scene.models.emplace_back();
        m_scene.models.back().Set(m_models[index]);
    }

    std::unique_ptr<ZModel> MakeModel(size_t index, const std::string& name) const
    {
        const gltf::Node& node = m_file.nodes[index];
        if (node.mesh < 0)
            return std::make_unique<ZModel>(name.c_str(), m_joint[index] ? ZModelKind::Bone : ZModelKind::Node);
        const gltf::Mesh& mesh = m_file.meshes[static_cast<size_t>(node.mesh)];
        std::unique_ptr<ZModelGeometryBase> model;
        if (mesh.nurbs)
            model = MakeSurface(mesh, name);
        else
            model = MakeMesh(mesh, name);
        AddMorphTargets(mesh, node, *model);
        return model;
    }

    static std::unique_ptr<ZModelGeometryBase> MakeMesh(const gltf::Mesh& mesh, const std::string& name)
    {
        auto model = std::make_unique<ZModelPolymesh>(name.c_str());
        const std::vector<int> sizes(mesh.triangles.size() / 3, 3);
        model->SetGeometry(mesh.positions.data(), static_cast<int>(mesh.VertexCount()), mesh.triangles, sizes);
        return model;
    }

    static std::unique_ptr<ZModelGeometryBase> MakeSurface(const gltf::Mesh& mesh, const std::string& name)
    {
        const gltf::NurbsSurface& from = *mesh.nurbs;
        ZNurbsSurface surface;
        surface.degreeU = from.degree[0];
        surface.degreeV = from.degree[1];
        surface.countU = from.count[0];
        surface.countV = from.count[1];
        surface.knotsU = from.knots[0];
        surface.knotsV = from.knots[1];
        surface.points.assign(mesh.positions.begin(), mesh.positions.end());
        surface.weights = from.pointWeights;
        auto model = std::make_unique<ZModelNurbs>(name.c_str());
        model->SetSurface(surface, from.grid[0], from.grid[1]);
        return model;
    }

    static void AddMorphTargets(const gltf::Mesh& mesh, const gltf::Node& node, ZModelGeometryBase& model)
    {
        if (mesh.morphTargets.empty())
            return;
        std::vector<ZMorphTarget> targets;
        for (const gltf::MorphTarget& target : mesh.morphTargets)
            targets.push_back({target.positions, {}});
        model.SetMorphTargets(std::move(targets));
        const std::vector<double>& weights = node.morphWeights.empty() ? mesh.morphWeights : node.morphWeights;
        model.SetMorphWeights(std::vector<float>(weights.begin(), weights.end()));
    }

    void AddSkin(size_t index)
    {
        const gltf::Node& node = m_file.nodes[index];
        if (node.mesh < 0 || node.skin < 0)
            return;
        const gltf::Skin& from = m_file.skins[static_cast<size_t>(node.skin)];
        auto& model = static_cast<ZModelGeometryBase&>(*m_models[index]);
        ZSkin* const skin = model.MakeSkin(ToDeformMode(from.mode));
        for (size_t joint = 0; joint < from.joints.size(); ++joint)
            skin->AppendLink(m_models[static_cast<size_t>(from.joints[joint])],
                             ToMatrix(from.inverseBindMatrices[joint]));
        FillEntries(*skin, m_file.meshes[static_cast<size_t>(node.mesh)].influences, from.joints.size());
        m_scene.skinVersions[index] = skin->GetVersion();
    }

    /// Rows of vertices turned into columns of links, counted first so that each array is made once.
    static void FillEntries(ZSkin& skin, const gltf::Influences& influences, size_t joints)
    {
        std::vector<int> counts(joints, 0);
        for (const std::uint32_t joint : influences.joints)
            ++counts[joint];
        std::vector<ZArrayTemplate<int>> vertices(joints);
        std::vector<ZArrayTemplate<double>> weights(joints);
        for (size_t joint = 0; joint < joints; ++joint) {
            vertices[joint].Reserve(counts[joint]);
            weights[joint].Reserve(counts[joint]);
        }
        for (size_t vertex = 0; vertex < influences.VertexCount(); ++vertex)
            for (std::uint32_t at = influences.offsets[vertex]; at < influences.offsets[vertex + 1]; ++at) {
                vertices[influences.joints[at]].Add(static_cast<int>(vertex));
                weights[influences.joints[at]].Add(static_cast<double>(influences.weights[at]));
            }
        for (size_t joint = 0; joint < joints; ++joint)
            if (counts[joint] > 0)
                skin.SetEntries(static_cast<int>(joint), std::move(vertices[joint]), std::move(weights[joint]));
    }

    void AddAnimation(const gltf::Animation& from)
    {
        auto animation = std::make_unique<ZAnimation>();
        animation->name = from.name;
        animation->document = m_scene.document;
        for (const gltf::AnimationChannel& channel : from.channels)
            animation->channels.push_back(MakeChannel(channel, from.samplers[static_cast<size_t>(channel.sampler)]));
        m_target.AddAnimation(std::move(animation));
    }

    ZAnimationChannel MakeChannel(const gltf::AnimationChannel& from, const gltf::AnimationSampler& sampler) const
    {
        ZAnimationChannel channel;
        channel.target = m_models[static_cast<size_t>(from.node)];
        channel.times = sampler.times;
        channel.values = sampler.values;
        switch (sampler.interpolation) {
        case gltf::Interpolation::Step:
            channel.interpolation = ZInterpolation::Step;
            break;
        case gltf::Interpolation::Linear:
            channel.interpolation = ZInterpolation::Linear;
            break;
        case gltf::Interpolation::CubicSpline:
            channel.interpolation = ZInterpolation::CubicSpline;
            break;
        }
        const size_t perKey = channel.interpolation == ZInterpolation::CubicSpline ? 3 : 1;
        channel.components =
            channel.times.empty() ? 0 : static_cast<int>(channel.values.size() / (perKey * channel.times.size()));
        switch (from.property) {
        case gltf::AnimatedProperty::Translation:
            channel.path = ZAnimationPath::Translation;
            break;
        case gltf::AnimatedProperty::Rotation:
            channel.path = ZAnimationPath::Rotation;
            break;
        case gltf::AnimatedProperty::Scale:
            channel.path = ZAnimationPath::Scaling;
            break;
        case gltf::AnimatedProperty::MorphWeights:
            channel.path = ZAnimationPath::MorphWeights;
            break;
        }
        return channel;
    }

    ZScene& m_target;
    ZGltfScene& m_scene;
    const gltf::CharacterFile& m_file;
    std::vector<ZModel*> m_models;
    std::vector<bool> m_joint;
};

} // namespace

ZModel* ZGltfScene::ModelOf(int node) const
{
    if (node < 0 || static_cast<size_t>(node) >= models.size())
        return nullptr;
    ZPlug* const plug = models[static_cast<size_t>(node)].Get();
    return plug != nullptr ? Object_Cast<ZModel>(plug->GetPlugOwner()) : nullptr;
}

void ZGltfScene_Add(ZScene& target, ZGltfScene& scene) { SceneBuilder(target, scene).Build(); }
