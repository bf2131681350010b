// SPDX-License-Identifier: MIT
// The manipulator of posing: rings and arrows that are hovered, grabbed and drawn.
#pragma once

#include "PoseDrag.h"
#include "zmanipulator/ZManipulator.h"

#include <optional>

/// Shown while posing is on; ZTransformManager tells its story.
class PoseHandles : public ZManipulator
{
public:
    PoseHandles();
    ~PoseHandles() override;

    bool ManipulatorSetActive(bool active) override;
    bool ManipulatorInputNotify(ZManipulatorInput& input) override;
    void ManipulatorDraw(ZManipulatorDraw& draw) override;
    void ManipulatorCancel() override;

private:
    bool Press(const ZManipulatorInput& input);
    bool DragTo(const ZManipulatorInput& input);
    bool Release(const ZManipulatorInput& input);
    bool Hover(const ZManipulatorInput& input);
    bool PutBack();
    void Light(int handle);
    ZModel* Grabbed() const;

    std::optional<PoseDrag> m_drag;
    HdlZPlug m_bone; ///< of the drag
    std::optional<ZgeMatrix> m_posedBefore;
    std::optional<ZManipulatorInput> m_click; ///< a press beside the handles
    int m_lit = kNoHandle;
};

/// Draws the handles over everything, the `lit` one in another colour; `alone` leaves the others out. The viewer's
/// camera is loaded; the state is left as found.
void HandlePaint_Draw(const HandleShape& shape, IViewerCamera& camera, int lit, bool alone);
