// SPDX-License-Identifier: MIT
// The host's own rings and arrows: posing the selected bone by hand in the viewer.
#pragma once

#include "object/ZPlug.h"

class ZModel;
class ZScene;

/// Posing, as a story: SetPosing(true) makes the handles the active manipulator, so that the tool's own is still drawn
/// but lets go of the left button. The first selected bone of the scene shows three rings about its axes and three
/// arrows along them. Hovering lights a handle; a press on one begins a drag: rings turn the bone about its own origin,
/// arrows move it; the release makes one undo step called "Pose NAME" of it. Escape, or a gesture that is cut off, puts
/// the bone back. A click beside the handles selects, as the host's own click does. Posing ends with SetPosing(false),
/// which makes active again what was active before, and when another manipulator becomes active.
///
/// A pose is a layer of the node's transform (ZTransformNode::SetPosedTransform) and never saved; ZPose_Clear puts all
/// of them away. A hidden bone, and one that a constraint holds, shows no handles. User-interface thread only.
class ZTransformManager
{
public:
    static ZTransformManager* TheOne();

    /// A tool's manipulator says here whether it is at work, as it is switched.
    void TransformManagerSetActive(bool active) { m_active = active; }
    bool TransformManagerGetActive() const { return m_active; }

    void SetPosing(bool posing);
    /// Ends posing and makes nothing else active: no viewer is left.
    void EndPosing();
    bool IsPosing() const;
    /// The bone whose handles a viewer of this scene shows while posing is on; null for none.
    static ZModel* GetPosedBone(const ZScene& scene);

    // Sizes on the screen, in pixels from the bone's origin: the rings' radius, where an arrow begins and ends, and how
    // near to a handle the pointer takes hold of it.
    static constexpr double kRingPixels = 72;
    static constexpr double kArrowBeginPixels = 84;
    static constexpr double kArrowEndPixels = 124;
    static constexpr double kReachPixels = 7;

private:
    bool m_active = false;
    HdlZPlug m_handles; ///< the manipulator, made when posing is first switched on; the manipulator set owns it
    HdlZPlug m_before;  ///< the manipulator that was active then
};
