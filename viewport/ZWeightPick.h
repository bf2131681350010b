// SPDX-License-Identifier: MIT
// Which vertices fall into the pick rectangle of a finished gesture.
#pragma once

#include "viewport/ZViewportOwner.h"
#include "zbaselib/ZGe.h"
#include "zmanipulator/ZCamera.h"

/// A rectangle in normalised viewer coordinates (-1..1, y upwards), edges included.
struct ZPickRectangle
{
    float minimumX = 0, minimumY = 0, maximumX = 0, maximumY = 0;
};

/// Appends pairs (model index, vertex) in model order, then vertex order (restricted: in the order of the panel's list
/// of selected vertices). Positions are the deformed ones.
void ZWeightPick_Pick(IViewportOwner& tool, IViewerCamera& camera, const ZPickRectangle& rectangle, bool restricted,
                      ZArrayTemplate<int>& hits);
/// Widens `box` by the selected vertices of every checked model; true when a model had any.
bool ZWeightPick_SelectionBox(IViewportOwner& tool, ZgeBox& box);
