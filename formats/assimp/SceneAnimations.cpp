// SPDX-License-Identifier: MIT
// Animations of nodes: the library's keys in ticks become keys in seconds.
#include "SceneParts.h"

#include <assimp/anim.h>

#include <algorithm>

namespace skindesk::assimp {

namespace {

// What a file that names no rate means, by the library's own tradition.
constexpr double USUAL_RATE = 25;

std::vector<float> Numbers(const aiVector3D& v) { return {v.x, v.y, v.z}; }
std::vector<float> Numbers(const aiQuaternion& q) { return {q.x, q.y, q.z, q.w}; }

class AnimationImport
{
public:
    AnimationImport(SceneParts& parts, const aiAnimation& from)
        : m_parts(parts), m_from(from), m_rate(from.mTicksPerSecond > 0 ? from.mTicksPerSecond : USUAL_RATE)
    {
    }

    void Run()
    {
        m_parts.losses.morphAnimations += m_from.mNumMorphMeshChannels + m_from.mNumMeshChannels;
        FindStart();
        imports::NewAnimation animation;
        animation.name = m_from.mName.C_Str();
        for (unsigned c = 0; c < m_from.mNumChannels; ++c) {
            const aiNodeAnim& channel = *m_from.mChannels[c];
            const auto node = m_parts.byName.find(channel.mNodeName.C_Str());
            if (node == m_parts.byName.end()) {
                ++m_parts.losses.channelsWithoutNode;
                continue;
            }
            GiveParts(node->second);
            Add(animation, node->second, gltf::AnimatedProperty::Translation, channel.mPositionKeys,
                channel.mNumPositionKeys);
            Add(animation, node->second, gltf::AnimatedProperty::Rotation, channel.mRotationKeys,
                channel.mNumRotationKeys);
            Add(animation, node->second, gltf::AnimatedProperty::Scale, channel.mScalingKeys, channel.mNumScalingKeys);
        }
        if (!animation.channels.empty()) {
            m_parts.into.animations.push_back(std::move(animation));
        }
    }

private:
    // The first key of all, when it lies before 0.
    void FindStart()
    {
        const auto look = [this](const auto* keys, unsigned count) {
            for (unsigned k = 0; k < count; ++k) {
                m_start = std::min(m_start, keys[k].mTime);
            }
        };
        for (unsigned c = 0; c < m_from.mNumChannels; ++c) {
            look(m_from.mChannels[c]->mPositionKeys, m_from.mChannels[c]->mNumPositionKeys);
            look(m_from.mChannels[c]->mRotationKeys, m_from.mChannels[c]->mNumRotationKeys);
            look(m_from.mChannels[c]->mScalingKeys, m_from.mChannels[c]->mNumScalingKeys);
        }
        m_parts.losses.shiftedAnimations += m_start < 0 ? 1 : 0;
    }

    // A node that moves has no matrix; what was sheared in it stands in the warnings.
    void GiveParts(int node) { m_parts.into.nodes[static_cast<std::size_t>(node)].matrix.reset(); }

    template <class Key>
    void Add(imports::NewAnimation& animation, int node, gltf::AnimatedProperty property, const Key* keys,
             unsigned count) const
    {
        imports::NewChannel channel;
        channel.node = node;
        channel.property = property;
        for (unsigned k = 0; k < count; ++k) {
            const auto time = static_cast<float>((keys[k].mTime - m_start) / m_rate);
            // Of keys at one moment the last one is where the others lead.
            if (!channel.times.empty() && time <= channel.times.back()) {
                if (time < channel.times.back()) {
                    continue;
                }
                const std::size_t size = Numbers(keys[k].mValue).size();
                channel.values.resize(channel.values.size() - size);
                channel.times.pop_back();
            }
            const std::vector<float> numbers = Numbers(keys[k].mValue);
            channel.values.insert(channel.values.end(), numbers.begin(), numbers.end());
            channel.times.push_back(time);
        }
        if (!channel.times.empty()) {
            animation.channels.push_back(std::move(channel));
        }
    }

    SceneParts& m_parts;
    const aiAnimation& m_from;
    double m_rate;
    double m_start = 0; // ticks
};

} // namespace

void ImportAnimations(SceneParts& parts)
{
    for (unsigned a = 0; a < parts.scene.mNumAnimations; ++a) {
        AnimationImport(parts, *parts.scene.mAnimations[a]).Run();
    }
}

} // namespace skindesk::assimp
