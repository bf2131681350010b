// SPDX-License-Identifier: MIT
// Manipulators: what takes the mouse in the viewer and draws over the scene.
#pragma once

#include "object/ZObject.h"
#include "zmanipulator/ZCamera.h"
#include "zmanipulator/ZTransformManager.h"

#include <memory>
#include <vector>

class ZViewer;

// Event kinds at a manipulator. A move without a button has a kind that is not listed (kInputHover).
inline constexpr int kInputEnter = 2;
inline constexpr int kInputLeave = 3;
inline constexpr int kInputPress = 4;
inline constexpr int kInputRelease = 5;
inline constexpr int kInputDrag = 6;
inline constexpr int kInputHover = 7;
inline constexpr int kInputEscape = 12;
inline constexpr int kInputKeyPress = 50;
inline constexpr int kInputKeyRelease = 51;

/// One input event of a viewer. Pixels, x right, y down; the viewer begins at its origin (ZViewer::GetOriginX).
struct ZManipulatorInput
{
    ZViewer* viewer = nullptr;
    int x = 0, y = 0;
    int kind = 0;
    int button = 0;   ///< 1 left, 2 middle, 3 right; 0 none
    int modifier = 0; ///< mask of kModifier...
    int key = 0;      ///< of key events
};

/// One drawing of a viewer. OpenGL is current; state must be left as found.
struct ZManipulatorDraw
{
    ZViewer* viewer = nullptr;
    IViewerCamera* camera = nullptr;
    ZgeVector3 viewerVector; ///< unit vector from the camera's target to the eye, in the scene
};

/// Life of a manipulator, as a story: its maker constructs it, may hide it, and adds it to the manipulator set, which
/// owns it from then on; shown while no manipulator is active, it becomes the active one; hidden, it is active no more,
/// and a gesture that it had under way is cut off; ManipulatorRemove, or its destructor, takes it out. It takes part
/// (is drawn, gets input) while it is not hidden: the in-use flag. The active one gets input first.
class ZManipulator : public ZObjectStorable, public IRegister
{
public:
    ZCLASS_DECLARE()
    /// `owner` is a number that the host keeps for the maker; 1 for tools.
    explicit ZManipulator(const char* name, int owner = 0);
    ~ZManipulator() override;

    // The three operations that a manipulator overrides.
    /// Becomes active or not; answers whether it is active afterwards.
    virtual bool ManipulatorSetActive(bool active);
    /// True when the event was consumed. The base answers false.
    virtual bool ManipulatorInputNotify(ZManipulatorInput& input);
    virtual void ManipulatorDraw(ZManipulatorDraw& draw);
    /// The gesture under way is cut off: the viewer lost the focus, a second button was pressed, the tool goes. No
    /// release will come; the manipulator ends what it began.
    virtual void ManipulatorCancel();

    bool ManipulatorGetActive() const { return m_active; }
    /// Hides or shows. Shown while none is active, the manipulator set makes it active.
    void ManipulatorSetHidden(bool hidden);
    bool ManipulatorGetHidden() const { return m_hidden; }
    bool ManipulatorGetInUse() const { return m_inUse; }
    int ManipulatorGetOwner() const { return m_owner; }

    void SystemDetach() override;

    /// Forgets what of earlier input the host keeps for double clicks and repeats: a manipulator that consumed an event
    /// calls it, so that the host makes no click of the rest.
    static void ClearPreviousInput();
    /// The press that no manipulator took and that may become a click of the host's own; null when there is none.
    static const ZManipulatorInput* GetPreviousInput();
    // The rubber band in the viewer of `input`.
    static void ManipulatorPickRectStart(ZManipulatorInput& input);
    static void ManipulatorPickRectMotion(ZManipulatorInput& input);
    static void ManipulatorPickRectStop(ZManipulatorInput& input);

private:
    friend class ZManipulatorSet;
    friend class ZViewer;
    static void SetPreviousInput(const ZManipulatorInput& input);

    bool m_active = false;
    bool m_hidden = false;
    bool m_inUse = true;
    bool m_inSet = false;
    int m_owner = 0;
};

/// Owns the manipulators once they are added. One for the process; it never destroys on its own at the end, since the
/// libraries of the guests are gone by then.
class ZManipulatorSet
{
public:
    /// Null, or one that is already there, is misuse and changes nothing.
    void ManipulatorAdd(ZManipulator* manipulator);
    /// Takes a manipulator out and destroys it; a guest that leaves asks for it. Ignored when it is not in the set.
    /// While a viewer hands out input or draws, the destruction waits until it is through.
    void ManipulatorRemove(ZManipulator* manipulator);
    /// Makes one active and all others not; null makes none active. A gesture under way is cut off when this changes
    /// anything. One that is not in the set is misuse.
    void ManipulatorSetActive(ZManipulator* manipulator);
    ZManipulator* ManipulatorGetActive() const { return m_active; }
    const std::vector<ZManipulator*>& GetManipulators() const { return m_manipulators; }

private:
    friend class ZManipulator;
    friend class ZViewer;
    void Forget(ZManipulator* manipulator);
    void BeginHandOut();
    void EndHandOut();

    std::vector<ZManipulator*> m_manipulators;
    std::vector<ZManipulator*> m_leaving; ///< taken out while they may still be on the call stack
    ZManipulator* m_active = nullptr;
    int m_handOuts = 0;
};

ZManipulatorSet* ZManipulator_GetManipulatorSet();
/// Preferences as bits: 4 = a drag over nothing clears the selection (on by default; a menu item turns it off).
int ZManipulator_GetManipulationUnselect();
void ZManipulator_SetManipulationUnselect(int bits);
/// The viewer that an input or draw record belongs to.
ZViewer* ZManipulator_ViewerGet(const ZManipulatorInput& input);
