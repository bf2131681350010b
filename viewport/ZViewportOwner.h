// SPDX-License-Identifier: MIT
// What the manipulator and the constraint need of the tool.
#pragma once

#include "editing/ZEditingOwner.h"

/// Implemented by the tool.
class IViewportOwner : public IEditingOwner
{
public:
    /// The "Model Selection" check box.
    virtual bool IsModelSelectionEnabled() const = 0;
    /// The "Foreground Vertices Selection" button.
    virtual bool IsForegroundOnly() const = 0;
    /// Indices into the bone list of the bones selected in the panel.
    virtual const ZArrayTemplate<int, 16>& SelectedBones() const = 0;
    /// The user begins something in the viewer: a weight change that still waits for its end, since its release was
    /// lost, ends here and keeps its undo step to itself.
    virtual void ViewerGestureBegins() {}

protected:
    ~IViewportOwner() = default;
};
