// SPDX-License-Identifier: MIT
// The manipulator's life and its input. A gesture, as a story: a press with button 1 to 3 arms it; if the press matches
// a drag interaction a rectangle opens; the release picks with that rectangle, or, when the pointer has hardly moved,
// decides again as a click; the hits change the selection inside one undo step; then all is idle again.
#include "viewport/ZCharacterWeightingManipulator.h"

#include "editing/ZWeightSelection.h"
#include "object/ZUndoStack.h"
#include "viewport/ZWeightPick.h"
#include "zmanipulator/ZViewer.h"

#include <algorithm>
#include <cstdlib>

int ZCharacterWeightingManipulator::ClassId = -1;
ZClassDefinition* ZCharacterWeightingManipulator::s_classDefinition = nullptr;
ZPropertyMap* ZCharacterWeightingManipulator::s_properties = nullptr;

namespace {

constexpr int kKeyRestrict = 88; ///< "X": gathers vertices into the selection without activating them
constexpr int kKeyShow = 87;     ///< "W": shows the manipulator and makes it active
constexpr int kIdle = 0;
constexpr int kDragRemove = 12;
constexpr int kClickReplace = 13;
constexpr int kDragReplace = 14;
constexpr int kUnselectOnEmptyDrag = 4;

/// Slots of the interactions, in the order in which they are asked for.
enum Slot
{
    PassMiddle,
    PassShiftMiddle,
    ClickToggle,
    DragToggle,
    ClickAdd,
    DragAdd,
    ClickRemove,
    DragRemove,
    ClickReplace,
    DragReplace,
    SlotCount
};
constexpr int kInteractionIds[SlotCount] = {100001, 100036, 100026, 100027, 100022,
                                            100023, 100020, 100021, 100018, 100019};

/// An interaction that starts a gesture, and the gesture's state.
struct Start
{
    Slot slot;
    int state;
};
constexpr Start kStartedByPress[] = {{DragToggle, 10}, {DragRemove, 12}, {DragAdd, 16}, {DragReplace, 14}};
constexpr Start kStartedByRelease[] = {{ClickAdd, 15}, {ClickToggle, 9}, {ClickRemove, 11}, {ClickReplace, 13}};
constexpr Start kClickOverride[] = {{ClickToggle, 9}, {ClickAdd, 15}, {ClickRemove, 11}, {ClickReplace, 13}};

/// The interaction of the gesture under way: one for the process, since there is one pointer.
ZInteractionDefinition* s_currentInteraction = nullptr;

void EndCurrentInteraction()
{
    if (s_currentInteraction != nullptr)
        s_currentInteraction->Done();
    s_currentInteraction = nullptr;
}

int PickMode(int state)
{
    switch (state) {
    case 9:
    case 10:
        return kPickToggle;
    case 11:
    case 12:
        return kPickRemove;
    default:
        return kPickAdd;
    }
}

bool IsReplacing(int state) { return state == kClickReplace || state == kDragReplace; }

bool IsButton(const ZInteractionDefinition* interaction, int button, int modifier)
{
    return interaction != nullptr && interaction->IsInteractionButton(button, modifier);
}

/// Event kinds that a gesture knows pass unchanged; all others are -1.
int KnownKind(int kind)
{
    switch (kind) {
    case kInputEnter:
    case kInputLeave:
    case kInputPress:
    case kInputRelease:
    case kInputDrag:
    case kInputEscape:
    case kInputKeyPress:
    case kInputKeyRelease:
        return kind;
    default:
        return -1;
    }
}

} // namespace

ZCharacterWeightingManipulator::ZCharacterWeightingManipulator(const char* name, int owner) : ZManipulator(name, owner)
{
    SetObjectLabelName("Skinning Tool");
    ManipulatorSetHidden(true);
    ZManipulator_GetManipulatorSet()->ManipulatorAdd(this);
    ZActionManager* const actions = Object_GetActionManager();
    for (int slot = 0; slot < SlotCount; ++slot)
        m_interactions[slot] = actions->QueryInteraction(kInteractionIds[slot]);
}

ZCharacterWeightingManipulator::~ZCharacterWeightingManipulator()
{
    ManipulatorCancel();
    if ((GetStatus() & kStatusBySystem) == 0) {
        SystemDetach();
        PrepareDestruct();
        Destruct();
    }
}

ZClassDefinition* ZCharacterWeightingManipulator::GetClassDefinition() const
{
    return s_classDefinition != nullptr ? s_classDefinition : ZManipulator::GetClassDefinition();
}

bool ZCharacterWeightingManipulator::Is(int classId) const
{
    return (classId >= 0 && classId == ClassId) || ZManipulator::Is(classId);
}

std::uint64_t ZCharacterWeightingManipulator::FindPropertyByName(const char* name) const
{
    return s_properties != nullptr ? FastFindPropertyByName(*s_properties, name)
                                   : ZManipulator::FindPropertyByName(name);
}

bool ZCharacterWeightingManipulator::ManipulatorSetActive(bool active)
{
    const bool result = ZManipulator::ManipulatorSetActive(active);
    ZTransformManager::TheOne()->TransformManagerSetActive(active);
    return result;
}

bool ZCharacterWeightingManipulator::ManipulatorInputNotify(ZManipulatorInput& input)
{
    if (!ManipulatorGetActive())
        return false;
    m_input = &input;
    const bool consumed = HandleInput(input.x, input.y, KnownKind(input.kind), input.button, input.modifier);
    m_input = nullptr;
    if (!consumed)
        return ZManipulator::ManipulatorInputNotify(input);
    ClearPreviousInput();
    return true;
}

void ZCharacterWeightingManipulator::ManipulatorCancel()
{
    if (m_state != kIdle && m_rectViewer != nullptr) {
        ZManipulatorInput input;
        input.viewer = m_rectViewer;
        ManipulatorPickRectStop(input);
    }
    m_rectViewer = nullptr;
    if (m_state != kIdle || m_pressed != 0)
        EndCurrentInteraction();
    m_state = kIdle;
    m_pressed = 0;
}

void ZCharacterWeightingManipulator::HandleShortCut(int code, int key, int modifiers,
                                                    const ZActionDefinition* frameAction)
{
    if (frameAction != nullptr && frameAction->IsAction(code, key, modifiers) && ManipulatorGetActive() &&
        m_tool != nullptr) {
        ZgeBox box;
        const std::vector<ZViewer*>& viewers = ZViewer::GetViewers();
        if (ZWeightPick_SelectionBox(*m_tool, box) && !viewers.empty()) {
            ZViewer* const viewer = viewers.front();
            auto* const camera = static_cast<IViewerCamera*>(viewer->IQuery(kInterfaceViewerCamera, 0));
            camera->FrameBox(box);
            viewer->Invalidate();
        }
    }
    if (code == kKeyEventPressed && key == kKeyShow && modifiers == 0) {
        ManipulatorSetHidden(false);
        ZManipulator_GetManipulatorSet()->ManipulatorSetActive(this);
    }
}

bool ZCharacterWeightingManipulator::HandleInput(int x, int y, int kind, int button, int modifier)
{
    if (!ManipulatorGetInUse() || m_tool == nullptr)
        return true;
    // With nothing to weight, or while the user wants to select models in the viewer, the host's own gestures go on.
    const bool idle = m_tool->IsModelSelectionEnabled() || m_tool->ModelDataList().GetCount() == 0;
    if (kind == kInputPress) {
        if (IsButton(m_interactions[PassMiddle], button, modifier) ||
            IsButton(m_interactions[PassShiftMiddle], button, modifier))
            return !idle;
        if (button >= kButtonLeft && button <= kButtonRight) {
            m_tool->ViewerGestureBegins();
            m_pressed = 1;
        }
    }
    UpdatePosition(x, y);
    if (m_pressed != 1) {
        if (kind == kInputEscape && modifier == 0)
            ClearByEscape();
        return !idle;
    }
    switch (kind) {
    case kInputPress:
        return HandlePress(x, y, button, modifier);
    case kInputDrag:
        if (m_state != kIdle && s_currentInteraction != nullptr) {
            s_currentInteraction->Drag();
            ManipulatorPickRectMotion(*m_input);
        }
        return false;
    case kInputRelease:
        return HandleRelease(x, y, button, modifier);
    default:
        return false;
    }
}

void ZCharacterWeightingManipulator::UpdatePosition(int x, int y)
{
    const ZViewer* const viewer = ZManipulator_ViewerGet(*m_input);
    if (viewer == nullptr)
        return;
    const int width = viewer->GetWidth();
    const int height = viewer->GetHeight();
    // Halves are whole pixels.
    const int right = x - viewer->GetOriginX() - width / 2;
    const int down = y - viewer->GetOriginY() - height / 2;
    m_position[0] = 2.0F * static_cast<float>(right) / static_cast<float>(width);
    m_position[1] = -2.0F * static_cast<float>(down) / static_cast<float>(height);
}

void ZCharacterWeightingManipulator::ClearByEscape()
{
    m_tool->ViewerGestureBegins();
    ZWeightSelection& selection = m_tool->Selection();
    if (!m_restrictedPick || Object_GetCurrentKeyState(kKeyRestrict, true))
        selection.ClearAllVertexLists();
    else
        selection.DeactivateAll();
    m_tool->RefreshPanelLists();
}

bool ZCharacterWeightingManipulator::HandlePress(int x, int y, int button, int modifier)
{
    for (const Start& start : kStartedByPress)
        if (IsButton(m_interactions[start.slot], button, modifier)) {
            m_state = start.state;
            s_currentInteraction = m_interactions[start.slot];
            break;
        }
    if (m_state == kIdle)
        return false;
    m_pressPosition[0] = m_endPosition[0] = m_position[0];
    m_pressPosition[1] = m_endPosition[1] = m_position[1];
    m_pressPixel[0] = static_cast<float>(x);
    m_pressPixel[1] = static_cast<float>(y);
    m_rectViewer = m_input->viewer;
    ManipulatorPickRectStart(*m_input);
    return false;
}

void ZCharacterWeightingManipulator::DecideAtRelease(int x, int y, int button, int modifier)
{
    if (m_state == kIdle)
        for (const Start& start : kStartedByRelease)
            if (IsButton(m_interactions[start.slot], button, modifier) &&
                m_interactions[start.slot]->CanInteractOnRelease()) {
                m_state = start.state;
                s_currentInteraction = m_interactions[start.slot];
                break;
            }
    // A hand that hardly moved meant a click, whatever the press began.
    const float moved =
        std::abs(m_pressPixel[0] - static_cast<float>(x)) + std::abs(m_pressPixel[1] - static_cast<float>(y));
    if (moved < 3.0F)
        for (const Start& start : kClickOverride)
            if (IsButton(m_interactions[start.slot], button, modifier)) {
                m_state = start.state;
                break;
            }
}

bool ZCharacterWeightingManipulator::HandleRelease(int x, int y, int button, int modifier)
{
    DecideAtRelease(x, y, button, modifier);
    m_pressed = 0;
    if (m_state == kIdle)
        return false;
    ManipulatorPickRectStop(*m_input);
    m_rectViewer = nullptr;
    m_endPosition[0] = m_position[0];
    m_endPosition[1] = m_position[1];
    // The sum is signed on purpose: a drag whose two differences cancel counts as a click.
    const float moved = (m_pressPosition[0] - m_endPosition[0]) + (m_pressPosition[1] - m_endPosition[1]);
    const float halfSize = moved == 0.0F ? 12.0F : 5.0F;
    const ZViewer* const viewer = ZManipulator_ViewerGet(*m_input);
    m_tolerance[0] = halfSize / static_cast<float>(viewer != nullptr ? viewer->GetWidth() : 1);
    m_tolerance[1] = halfSize / static_cast<float>(viewer != nullptr ? viewer->GetHeight() : 1);
    return FinishGesture();
}

ZArrayTemplate<int> ZCharacterWeightingManipulator::PickHits(bool restricted) const
{
    ZArrayTemplate<int> hits;
    ZViewer* const viewer = ZManipulator_ViewerGet(*m_input);
    if (viewer == nullptr)
        return hits;
    auto* const camera = static_cast<IViewerCamera*>(viewer->IQuery(kInterfaceViewerCamera, 0));
    ZPickRectangle rectangle;
    rectangle.minimumX = std::min(m_pressPosition[0], m_endPosition[0]) - m_tolerance[0];
    rectangle.maximumX = std::max(m_pressPosition[0], m_endPosition[0]) + m_tolerance[0];
    rectangle.minimumY = std::min(m_pressPosition[1], m_endPosition[1]) - m_tolerance[1];
    rectangle.maximumY = std::max(m_pressPosition[1], m_endPosition[1]) + m_tolerance[1];
    ZWeightPick_Pick(*m_tool, *camera, rectangle, restricted, hits);
    return hits;
}

bool ZCharacterWeightingManipulator::FinishGesture()
{
    ZWeightSelection& selection = m_tool->Selection();
    if (m_restrictedPick && selection.vertexRows.IsEmpty())
        m_restrictedPick = false;
    const bool gathering = Object_GetCurrentKeyState(kKeyRestrict, true);
    const ZArrayTemplate<int> hits = PickHits(!gathering && m_restrictedPick);

    ZUndoStack::TheOne()->TransactionBegin("", false);
    const bool consumed = ApplyHits(hits, gathering);
    ZUndoStack::TheOne()->TransactionEnd(false, false);

    m_tool->RefreshPanelLists();
    m_tool->TakeSpreadSnapshot();
    m_state = kIdle;
    EndCurrentInteraction();
    return consumed;
}

bool ZCharacterWeightingManipulator::ApplyHits(const ZArrayTemplate<int>& hits, bool gathering)
{
    ZWeightSelection& selection = m_tool->Selection();
    if (hits.IsEmpty()) {
        const bool unselects = (ZManipulator_GetManipulationUnselect() & kUnselectOnEmptyDrag) != 0 &&
                               !selection.vertexRows.IsEmpty() && (m_state == kDragRemove || m_state == kDragReplace);
        if (unselects)
            selection.ClearAllVertexLists();
        return unselects;
    }
    if (IsReplacing(m_state))
        selection.ClearAllVertexLists();
    const int mode = PickMode(m_state);
    if (gathering) {
        selection.PickSelectOnly(hits, mode);
        if (!selection.vertexRows.IsEmpty())
            m_restrictedPick = true;
    } else if (m_restrictedPick) {
        selection.PickActivate(hits, mode);
    } else {
        selection.PickSelect(hits, mode);
    }
    return true;
}
