// SPDX-License-Identifier: MIT
// What the drawing of meshes and of NURBS surfaces shares.
#pragma once

class ZWeightUIModelData;
struct ZgeMatrix;

/// Point sizes in pixels.
inline constexpr float kActivePointSize = 10.0F;
inline constexpr float kSelectedPointSize = 6.0F;

/// Pushes the matrix and multiplies by the model's global transform.
void WeightOverlay_Begin(const ZgeMatrix& global);
/// The active vertices in the host's selection colour.
void WeightOverlay_DrawActive(const ZWeightUIModelData& data, const float* positions);
/// The selected vertices, each in its own colour.
void WeightOverlay_DrawSelected(const ZWeightUIModelData& data, const float* positions);
/// Pops the matrix; the point size is 1 again.
void WeightOverlay_End();
