// SPDX-License-Identifier: MIT
// Geometry without rows and columns ignores row and column operations.
#include "weights/IWeightGeom.h"

void IWeightGeom::ActivateRow(ZWeightUIModelData&, int, IVertexTransitionRecorder*) {}
void IWeightGeom::ActivateColumn(ZWeightUIModelData&, int, IVertexTransitionRecorder*) {}
void IWeightGeom::DeactivateRow(ZWeightUIModelData&, int, IVertexTransitionRecorder*) {}
void IWeightGeom::DeactivateColumn(ZWeightUIModelData&, int, IVertexTransitionRecorder*) {}
void IWeightGeom::SelectRow(ZWeightUIModelData&, int, IVertexTransitionRecorder*) {}
void IWeightGeom::SelectColumn(ZWeightUIModelData&, int, IVertexTransitionRecorder*) {}
void IWeightGeom::DeselectRow(ZWeightUIModelData&, int, IVertexTransitionRecorder*) {}
void IWeightGeom::DeselectColumn(ZWeightUIModelData&, int, IVertexTransitionRecorder*) {}
