// SPDX-License-Identifier: MIT
// The one place where a skin's deformation mode changes the tool's arithmetic: weights into vertex colours.
#pragma once

#include "zbaselib/ZArray.h"

class ZWeightUIModelData;

inline constexpr int kColourSmooth = 0;
inline constexpr int kColourMostInfluential = 1;
inline constexpr int kColourLeastInfluential = 2;
inline constexpr int kAffectFirstSelected = 0;
inline constexpr int kAffectAllSelected = 1;

/// Three floats (red, green, blue) a bone, by position in the tool's bone list.
using ZBoneColourTable = ZArrayTemplate<float, 16>;

/// A strategy writes red, green and blue of vertexColours and never the fourth float; it keeps nothing between calls.
/// All arithmetic is in 32-bit floats in the order in which a vertex's record stores its influences. A colour mode that
/// is none of the three writes nothing.
class IWeightDeform
{
public:
    virtual ~IWeightDeform() = default;
    virtual void ComputeColors(const ZBoneColourTable& table, int colourMode, ZWeightUIModelData& data) = 0;
    /// `table` already holds the bone's new colour; the three floats are its previous one.
    virtual void BoneColorChanged(const ZBoneColourTable& table, int bonePosition, int colourMode, float oldRed,
                                  float oldGreen, float oldBlue, ZWeightUIModelData& data) = 0;
    virtual void ComputeActiveColors(const ZBoneColourTable& table, int colourMode, int weightingMode,
                                     ZWeightUIModelData& data) = 0;
};
