// SPDX-License-Identifier: MIT
// Evaluation of animation curves.
#include "zmodel/ZAnimation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

/// Where a time lies among the keys: between `key` and the next one, `fraction` of the way.
struct KeyPlace
{
    size_t key = 0;
    double fraction = 0;
    double span = 0; ///< seconds from key to key
};

/// Keys that have both a time and a whole value.
size_t UsableKeys(const ZAnimationChannel& channel, size_t valuesPerKey)
{
    return valuesPerKey == 0 ? 0 : std::min(channel.times.size(), channel.values.size() / valuesPerKey);
}

KeyPlace FindKey(const std::vector<float>& times, size_t count, double seconds)
{
    const auto end = times.begin() + static_cast<std::ptrdiff_t>(count);
    const auto after = std::upper_bound(times.begin(), end, seconds, [](double t, float key) { return t < key; });
    if (after == times.begin())
        return {};
    KeyPlace place;
    place.key = static_cast<size_t>(after - times.begin()) - 1;
    if (after == end)
        return place;
    place.span = static_cast<double>(*after) - times[place.key];
    place.fraction = (seconds - times[place.key]) / place.span;
    return place;
}

void Normalise(float* quaternion)
{
    double length = 0;
    for (int i = 0; i < 4; ++i)
        length += static_cast<double>(quaternion[i]) * quaternion[i];
    length = std::sqrt(length);
    for (int i = 0; i < 4 && length > 0; ++i)
        quaternion[i] = static_cast<float>(quaternion[i] / length);
}

/// Spherical linear interpolation (K. Shoemake, "Animating rotation with quaternion curves", SIGGRAPH 1985), the short
/// way round.
void Slerp(const float* from, const float* to, double fraction, float* value)
{
    double cosine = 0;
    for (int i = 0; i < 4; ++i)
        cosine += static_cast<double>(from[i]) * to[i];
    const double sign = cosine < 0 ? -1 : 1;
    cosine = std::min(cosine * sign, 1.0);
    double a = 1 - fraction;
    double b = fraction;
    // Below a thousandth of a radian the sines cancel and the straight line is as good.
    if (const double angle = std::acos(cosine); angle > 1e-3) {
        a = std::sin(a * angle) / std::sin(angle);
        b = std::sin(b * angle) / std::sin(angle);
    }
    for (int i = 0; i < 4; ++i)
        value[i] = static_cast<float>(a * from[i] + sign * b * to[i]);
    Normalise(value);
}

/// The cubic spline of glTF 2.0 (appendix C.5): Hermite's, with the tangents scaled by the keys' distance in time.
void CubicSpline(const float* keys, size_t components, const KeyPlace& place, float* value)
{
    const double t = place.fraction;
    const double t2 = t * t;
    const double t3 = t2 * t;
    const float* const fromValue = keys + components;
    const float* const fromTangent = keys + 2 * components;
    const float* const toTangent = keys + 3 * components;
    const float* const toValue = keys + 4 * components;
    for (size_t i = 0; i < components; ++i)
        value[i] =
            static_cast<float>((2 * t3 - 3 * t2 + 1) * fromValue[i] + place.span * (t3 - 2 * t2 + t) * fromTangent[i] +
                               (3 * t2 - 2 * t3) * toValue[i] + place.span * (t3 - t2) * toTangent[i]);
}

} // namespace

void ZAnimation_Evaluate(const ZAnimationChannel& channel, double seconds, float* value)
{
    const size_t components = static_cast<size_t>(std::max(channel.components, 0));
    const bool cubic = channel.interpolation == ZInterpolation::CubicSpline;
    const size_t valuesPerKey = cubic ? 3 * components : components;
    const size_t keys = UsableKeys(channel, valuesPerKey);
    if (keys == 0)
        return;
    const KeyPlace place = FindKey(channel.times, keys, seconds);
    const float* const from = channel.values.data() + place.key * valuesPerKey;
    const float* const fromValue = cubic ? from + components : from;
    const bool rotation = channel.path == ZAnimationPath::Rotation && components == 4;

    if (place.fraction <= 0 || channel.interpolation == ZInterpolation::Step) {
        std::copy(fromValue, fromValue + components, value);
    } else if (cubic) {
        CubicSpline(from, components, place, value);
        if (rotation)
            Normalise(value);
    } else if (rotation) {
        Slerp(from, from + components, place.fraction, value);
    } else {
        for (size_t i = 0; i < components; ++i)
            value[i] =
                static_cast<float>(from[i] + place.fraction * (static_cast<double>(from[components + i]) - from[i]));
    }
}

double ZAnimation::GetDuration() const
{
    double duration = 0;
    for (const ZAnimationChannel& channel : channels)
        if (!channel.times.empty())
            duration = std::max(duration, static_cast<double>(channel.times.back()));
    return duration;
}

void ZAnimation::RemoveTarget(const ZModel* model)
{
    const auto gone = [model](const ZAnimationChannel& channel) { return channel.target == model; };
    channels.erase(std::remove_if(channels.begin(), channels.end(), gone), channels.end());
}
