// SPDX-License-Identifier: MIT
// The two strategies: weights that are divided by their sum, and weights that total one as they stand.
#pragma once

#include "weights/IWeightDeform.h"

class ZWeightDeformNormalize : public IWeightDeform
{
public:
    void ComputeColors(const ZBoneColourTable& table, int colourMode, ZWeightUIModelData& data) override;
    void BoneColorChanged(const ZBoneColourTable& table, int bonePosition, int colourMode, float oldRed, float oldGreen,
                          float oldBlue, ZWeightUIModelData& data) override;
    void ComputeActiveColors(const ZBoneColourTable& table, int colourMode, int weightingMode,
                             ZWeightUIModelData& data) override;
};

class ZWeightDeformTotal100 : public IWeightDeform
{
public:
    void ComputeColors(const ZBoneColourTable& table, int colourMode, ZWeightUIModelData& data) override;
    void BoneColorChanged(const ZBoneColourTable& table, int bonePosition, int colourMode, float oldRed, float oldGreen,
                          float oldBlue, ZWeightUIModelData& data) override;
    void ComputeActiveColors(const ZBoneColourTable& table, int colourMode, int weightingMode,
                             ZWeightUIModelData& data) override;
};

/// A new strategy for a skin's deformation mode: 2 = total 100, every other number normalises. The caller owns it.
IWeightDeform* ZWeightStrategy_Make(int deformMode);
