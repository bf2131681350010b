// SPDX-License-Identifier: MIT
// What the weighting panel needs of the tool that it belongs to.
#pragma once

#include "editing/ZEditingOwner.h"

/// Implemented by the tool. The panel shows what the tool holds and keeps what the user set; what reaches beyond the
/// panel, to the skins, the manipulator or the constraint, it asks of the tool.
class IPanelOwner
{
public:
    /// The tool as the selection and the weight change see it: the model list and the bone list are reached through it.
    virtual IEditingOwner& Editing() = 0;

    /// Puts the bones of the checked models into their rest position; false when no checked model has a bone.
    virtual bool EnterRestPosition() = 0;
    /// Lets them go. `resetButton` takes the panel's button and its flag back as well. Nothing when the mode is off.
    virtual void LeaveRestPosition(bool resetButton) = 0;
    /// Radius of the selection sphere, in view units.
    virtual void SetSphereRadius(double radius) = 0;

    /// Adds the bone as a link to the skin of every checked model; a skin that has it keeps its link.
    virtual void AddBoneToCheckedModels(ZModel* bone) = 0;
    /// Takes the links of the selected bones that pull no vertex out of the skins of the checked models.
    virtual void RemoveIdleSelectedBones() = 0;
    /// Collects the bones of the checked models anew and refreshes all that depends on them.
    virtual void RebuildBoneList() = 0;

protected:
    ~IPanelOwner() = default;
};
