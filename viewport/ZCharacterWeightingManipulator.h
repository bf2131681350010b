// SPDX-License-Identifier: MIT
// The viewer manipulator through which the skinning tool takes the mouse, and which draws its overlay.
#pragma once

#include "object/ZAction.h"
#include "viewport/ZViewportOwner.h"
#include "zmanipulator/ZManipulator.h"

/// Turns presses, drags and releases into pick rectangles, asks ZWeightPick which vertices fall inside, and hands the
/// hits to the selection inside one transaction a gesture. Gesture states: 0 idle, 9 to 16 as in the table of the
/// source file.
class ZCharacterWeightingManipulator : public ZManipulator
{
public:
    static int ClassId;
    static ZClassDefinition* s_classDefinition;
    static ZPropertyMap* s_properties;

    ZCharacterWeightingManipulator(const char* name, int owner);
    ~ZCharacterWeightingManipulator() override;
    int GetClassId() const override { return ClassId; }
    ZClassDefinition* GetClassDefinition() const override;
    bool Is(int classId) const override;
    std::uint64_t FindPropertyByName(const char* name) const override;

    bool ManipulatorSetActive(bool active) override;
    bool ManipulatorInputNotify(ZManipulatorInput& input) override;
    void ManipulatorDraw(ZManipulatorDraw& draw) override;
    void ManipulatorCancel() override;

    /// Null when the tool goes.
    void SetTool(IViewportOwner* tool) { m_tool = tool; }
    IViewportOwner* GetTool() const { return m_tool; }
    /// Radius of the bone discs in view units.
    void SetDiscSize(double size) { m_discSize = static_cast<float>(size); }
    float GetDiscSize() const { return m_discSize; }
    int GetGestureState() const { return m_state; }
    int GetPressed() const { return m_pressed; }
    bool IsPickRestricted() const { return m_restrictedPick; }
    const float* GetPressPosition() const { return m_pressPosition; }
    const float* GetEndPosition() const { return m_endPosition; }
    const float* GetPickTolerance() const { return m_tolerance; }

    /// The tool's shortcut (three codes): the frame action frames the selection, W shows and activates.
    void HandleShortCut(int code, int key, int modifiers, const ZActionDefinition* frameAction);

private:
    bool HandleInput(int x, int y, int kind, int button, int modifier);
    void UpdatePosition(int x, int y);
    void ClearByEscape();
    bool HandlePress(int x, int y, int button, int modifier);
    void DecideAtRelease(int x, int y, int button, int modifier);
    bool HandleRelease(int x, int y, int button, int modifier);
    ZArrayTemplate<int> PickHits(bool restricted) const;
    bool FinishGesture();
    bool ApplyHits(const ZArrayTemplate<int>& hits, bool gathering);
    void DrawDiscs(ZManipulatorDraw& draw);

    IViewportOwner* m_tool = nullptr;
    int m_pressed = 0;
    float m_position[2] = {0, 0};
    float m_pressPosition[4] = {0, 0, 0, 1};
    float m_endPosition[4] = {0, 0, 0, 1};
    float m_pressPixel[4] = {0, 0, 0, 1};
    float m_tolerance[2] = {0, 0};
    float m_discSize = 1.0F;
    bool m_restrictedPick = false;
    ZManipulatorInput* m_input = nullptr;
    ZManipulatorDraw* m_draw = nullptr;
    int m_state = 0;
    ZViewer* m_rectViewer = nullptr; ///< where the rubber band stands, while there is one
    ZInteractionDefinition* m_interactions[10] = {};
};
