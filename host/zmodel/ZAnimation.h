// SPDX-License-Identifier: MIT
// Animations: values over time for the transforms and morph weights of nodes.
#pragma once

#include <string>
#include <vector>

class ZModel;

enum class ZAnimationPath
{
    Translation,
    Rotation,
    Scaling,
    MorphWeights
};
enum class ZInterpolation
{
    Step,
    Linear,
    CubicSpline
};

/// One curve. `times` are seconds and never decrease. `values` hold, for each time, the components of one value
/// (translation and scaling 3, rotation 4 as a quaternion x, y, z, w, morph weights one a target); a cubic spline has
/// in-tangent, value and out-tangent at each time. Rotations between keys go the short way (slerp).
struct ZAnimationChannel
{
    ZModel* target = nullptr;
    ZAnimationPath path = ZAnimationPath::Translation;
    ZInterpolation interpolation = ZInterpolation::Linear;
    std::vector<float> times;
    std::vector<float> values;
    int components = 3;
};

/// Evaluates a channel at `seconds` into `value` (`components` floats); before the first and after the last key the end
/// value holds.
void ZAnimation_Evaluate(const ZAnimationChannel& channel, double seconds, float* value);

class ZAnimation
{
public:
    std::string name;
    int document = -1; ///< the opened file it is from
    std::vector<ZAnimationChannel> channels;
    /// The latest key, in seconds.
    double GetDuration() const;
    /// Drops the channels of a model that leaves the scene.
    void RemoveTarget(const ZModel* model);
};
