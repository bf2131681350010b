// SPDX-License-Identifier: MIT
// The scene's time: choosing an animation, applying it, and the way back to the rest state.
#include "SceneTracks.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZGeometryModels.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace {

/// The channel's value at `seconds`; false when it has none or it is no number, and then the file's value holds.
template <size_t Count> bool Evaluate(const ZAnimationChannel* channel, double seconds, float (&value)[Count])
{
    if (channel == nullptr || channel->components != static_cast<int>(Count))
        return false;
    value[0] = NAN;
    ZAnimation_Evaluate(*channel, seconds, value);
    return std::all_of(value, value + Count, [](float number) { return std::isfinite(number); });
}

void ApplyTransform(const ZAnimationChannel* translation, const ZAnimationChannel* rotation,
                    const ZAnimationChannel* scaling, double seconds, ZModel& target)
{
    ZNodeTRS trs = target.GetFileTRS();
    float vector[3];
    float quaternion[4];
    if (Evaluate(translation, seconds, vector))
        trs.translation = {vector[0], vector[1], vector[2]};
    if (Evaluate(rotation, seconds, quaternion))
        trs.rotation = {quaternion[0], quaternion[1], quaternion[2], quaternion[3]};
    if (Evaluate(scaling, seconds, vector))
        trs.scaling = {vector[0], vector[1], vector[2]};
    target.SetAnimatedTransform(trs.GetMatrix());
}

void ApplyMorphWeights(const ZAnimationChannel& channel, double seconds, ZModel& target)
{
    auto* const geometry = Object_Cast<ZModelGeometryBase>(static_cast<ZObject*>(&target));
    if (geometry == nullptr || channel.components <= 0)
        return;
    std::vector<float> weights(static_cast<size_t>(channel.components), NAN);
    ZAnimation_Evaluate(channel, seconds, weights.data());
    if (std::all_of(weights.begin(), weights.end(), [](float weight) { return std::isfinite(weight); }))
        geometry->SetAnimatedMorphWeights(weights);
}

} // namespace

ZScene::Tracks::Tracks(const ZAnimation& animation, const ZScene& scene) : duration(animation.GetDuration())
{
    std::unordered_map<const ZModel*, size_t> places;
    for (const ZAnimationChannel& channel : animation.channels) {
        if (!scene.Contains(channel.target))
            continue;
        const auto [place, isNew] = places.emplace(channel.target, tracks.size());
        if (isNew)
            tracks.push_back({channel.target});
        tracks[place->second].Curve(channel.path) = &channel;
    }
}

int ZScene::AddAnimation(std::unique_ptr<ZAnimation> animation)
{
    if (!animation) {
        ZReport_Misuse("ZScene::AddAnimation", "The animation is null.");
        return -1;
    }
    m_animations.push_back(std::move(animation));
    return static_cast<int>(m_animations.size()) - 1;
}

void ZScene::SetAnimation(int index)
{
    if (index < -1 || index >= static_cast<int>(m_animations.size())) {
        ZReport_Misuse("ZScene::SetAnimation", "There is no animation " + std::to_string(index) + "; the scene has " +
                                                   std::to_string(m_animations.size()) + ".");
        return;
    }
    m_animation = index;
    m_tracks.reset();
    ClearAnimated();
    ApplyAnimation();
}

void ZScene::ClearAnimated()
{
    for (ZModel* model : m_models) {
        if (model->GetAnimatedTransform())
            model->SetAnimatedTransform(std::nullopt);
        if (auto* const geometry = Object_Cast<ZModelGeometryBase>(static_cast<ZObject*>(model)))
            geometry->SetAnimatedMorphWeights({});
    }
}

void ZScene::SetTime(double seconds)
{
    if (!std::isfinite(seconds)) {
        ZReport_Misuse("ZScene::SetTime", "The time is not a finite number of seconds.");
        return;
    }
    m_time = seconds;
    ApplyAnimation();
}

double ZScene::GetAnimationTime() const
{
    if (m_animation < 0)
        return m_time;
    const double duration =
        m_tracks ? m_tracks->duration : m_animations[static_cast<size_t>(m_animation)]->GetDuration();
    if (m_time <= duration)
        return m_time;
    return m_looping && duration > 0 ? std::fmod(m_time, duration) : duration;
}

void ZScene::ApplyAnimation()
{
    if (m_animation < 0)
        return;
    if (!m_tracks)
        m_tracks = std::make_unique<Tracks>(*m_animations[static_cast<size_t>(m_animation)], *this);
    const double seconds = GetAnimationTime();
    for (Tracks::Track& track : m_tracks->tracks) {
        const ZAnimationChannel* const translation = track.Curve(ZAnimationPath::Translation);
        const ZAnimationChannel* const rotation = track.Curve(ZAnimationPath::Rotation);
        const ZAnimationChannel* const scaling = track.Curve(ZAnimationPath::Scaling);
        if (translation != nullptr || rotation != nullptr || scaling != nullptr)
            ApplyTransform(translation, rotation, scaling, seconds, *track.target);
        if (const ZAnimationChannel* const weights = track.Curve(ZAnimationPath::MorphWeights))
            ApplyMorphWeights(*weights, seconds, *track.target);
    }
}

void ZScene::ClearPose()
{
    for (ZModel* model : m_models)
        if (model->GetPosedTransform())
            model->SetPosedTransform(std::nullopt);
}
