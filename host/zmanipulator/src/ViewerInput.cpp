// SPDX-License-Identifier: MIT
// The viewer's input: who gets an event, and what the host itself does with what is left.
#include "object/ZAction.h"
#include "zmanipulator/ZViewer.h"
#include "zmodel/ZScene.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {
constexpr int kKeyEscape = 27;
constexpr int kPickInteraction = 100001;
constexpr int kPickMoreInteraction = 100036;
constexpr int kClickPixels = 3; ///< a click's release is nearer to its press than this, x and y together
constexpr double kOrbitDegreesPerPixel = 0.4;
constexpr double kZoomPerPixel = 0.005;
constexpr double kZoomPerWheelStep = 0.9;

bool IsInteraction(int id, const ZManipulatorInput& input)
{
    const ZInteractionDefinition* const interaction = Object_GetActionManager()->QueryInteraction(id);
    return interaction != nullptr && interaction->IsInteractionButton(input.button, input.modifier);
}

/// The host's own left click: plain replaces, Shift adds.
bool IsHostClick(const ZManipulatorInput& input)
{
    return input.button == kButtonLeft && (input.modifier & ~kModifierShift) == 0 &&
           ZManipulator_GetManipulatorSet()->ManipulatorGetActive() == nullptr;
}

/// Manipulators in use, the active one first, as handles: a handler may destroy any of them.
std::vector<std::pair<HdlZPlug, ZManipulator*>> InOrderOfInput()
{
    const ZManipulatorSet& set = *ZManipulator_GetManipulatorSet();
    std::vector<std::pair<HdlZPlug, ZManipulator*>> order;
    const auto add = [&order](ZManipulator* manipulator) {
        order.emplace_back(HdlZPlug(), manipulator);
        order.back().first.Set(manipulator);
    };
    if (set.ManipulatorGetActive() != nullptr)
        add(set.ManipulatorGetActive());
    for (ZManipulator* manipulator : set.GetManipulators())
        if (manipulator != set.ManipulatorGetActive())
            add(manipulator);
    return order;
}
} // namespace

/// While it lives, manipulators that are removed are kept until nobody can be on the call stack.
class ZViewer::HandOut
{
public:
    HandOut() { ZManipulator_GetManipulatorSet()->BeginHandOut(); }
    ~HandOut() { ZManipulator_GetManipulatorSet()->EndHandOut(); }
    HandOut(const HandOut&) = delete;
    HandOut& operator=(const HandOut&) = delete;
};

ZManipulatorInput ZViewer::MakeInput(int kind, int x, int y) const
{
    ZManipulatorInput input;
    input.viewer = const_cast<ZViewer*>(this);
    input.x = x;
    input.y = y;
    input.kind = kind;
    input.button = m_button;
    input.modifier = m_modifiers;
    return input;
}

bool ZViewer::SendInput(ZManipulatorInput& input)
{
    const HandOut handOut;
    const long gesture = m_gesture;
    for (const auto& [handle, manipulator] : InOrderOfInput()) {
        if (!handle.IsValid() || !manipulator->m_inSet || !manipulator->m_inUse)
            continue;
        if (input.kind == kInputPress)
            m_receivers.push_back(handle);
        if (manipulator->ManipulatorInputNotify(input))
            return true;
        if (gesture != m_gesture)
            return true; // the handler ended what this event belongs to
    }
    return false;
}

bool ZViewer::Press(int x, int y, int button, int modifiers)
{
    if (button <= 0)
        return false;
    const bool second = m_button != 0 && m_button != button;
    if (m_button != 0)
        CancelGesture(); // the same button again: its release was lost
    m_lastX = x;
    m_lastY = y;
    if (second)
        return true;
    m_button = button;
    m_modifiers = modifiers;
    ++m_gesture;
    m_cameraGesture = (modifiers & kModifierAlt) != 0 && button <= kButtonRight;
    ZManipulator::ClearPreviousInput();
    if (m_cameraGesture)
        return true;
    ZManipulatorInput input = MakeInput(kInputPress, x, y);
    return SendInput(input) || HostPress(input);
}

bool ZViewer::Move(int x, int y)
{
    if (m_cameraGesture)
        return CameraGesture(x, y);
    m_lastX = x;
    m_lastY = y;
    ZManipulatorInput input = MakeInput(m_button != 0 ? kInputDrag : kInputHover, x, y);
    return SendInput(input);
}

bool ZViewer::Release(int x, int y)
{
    if (m_button == 0)
        return false;
    ZManipulatorInput input = MakeInput(kInputRelease, x, y);
    const bool camera = m_cameraGesture;
    if (camera)
        CameraGesture(x, y);
    m_lastX = x;
    m_lastY = y;
    // Over before anybody hears of it: what a handler does now cuts nothing off.
    m_button = m_modifiers = 0;
    m_cameraGesture = false;
    m_receivers.clear();
    const long gesture = ++m_gesture;
    if (camera)
        return true;
    const bool consumed = SendInput(input) || HostRelease(input);
    if (gesture == m_gesture)
        PickRectStop();
    return consumed;
}

bool ZViewer::Wheel(int, int, double steps)
{
    m_camera.Zoom(std::pow(kZoomPerWheelStep, steps));
    Invalidate();
    return true;
}

bool ZViewer::KeyPress(int key, int modifiers)
{
    ZManipulatorInput input =
        MakeInput(key == kKeyEscape && modifiers == 0 ? kInputEscape : kInputKeyPress, m_lastX, m_lastY);
    input.button = 0;
    input.modifier = modifiers;
    input.key = key;
    return SendInput(input);
}

bool ZViewer::KeyRelease(int key, int modifiers)
{
    ZManipulatorInput input = MakeInput(kInputKeyRelease, m_lastX, m_lastY);
    input.button = 0;
    input.modifier = modifiers;
    input.key = key;
    return SendInput(input);
}

bool ZViewer::Enter()
{
    ZManipulatorInput input = MakeInput(kInputEnter, m_lastX, m_lastY);
    return SendInput(input);
}

bool ZViewer::Leave()
{
    ZManipulatorInput input = MakeInput(kInputLeave, m_lastX, m_lastY);
    return SendInput(input);
}

void ZViewer::CancelGesture()
{
    const bool under_way = m_button != 0 && !m_cameraGesture;
    const std::vector<HdlZPlug> receivers = std::move(m_receivers);
    m_receivers.clear();
    m_button = m_modifiers = 0;
    m_cameraGesture = false;
    ++m_gesture;
    ZManipulator::ClearPreviousInput();
    if (under_way) {
        const HandOut handOut;
        for (const HdlZPlug& receiver : receivers)
            if (receiver.IsValid())
                static_cast<ZManipulator*>(receiver.Get())->ManipulatorCancel();
    }
    PickRectStop();
}

void ZViewer::CutOffGestures(const ZManipulator* manipulator)
{
    const std::vector<ZViewer*> viewers = GetViewers();
    for (ZViewer* viewer : viewers) {
        if (viewer->m_button == 0 || viewer->m_cameraGesture)
            continue;
        const bool concerned =
            manipulator == nullptr || std::any_of(viewer->m_receivers.begin(), viewer->m_receivers.end(),
                                                  [manipulator](const HdlZPlug& receiver) {
                                                      return receiver.Get() == static_cast<const ZPlug*>(manipulator);
                                                  });
        if (concerned)
            viewer->CancelGesture();
    }
}

bool ZViewer::CameraGesture(int x, int y)
{
    const int right = x - m_lastX, down = y - m_lastY;
    m_lastX = x;
    m_lastY = y;
    // The scene follows the pointer: the eye goes the other way.
    if (m_button == kButtonLeft)
        m_camera.Orbit(-right * kOrbitDegreesPerPixel, down * kOrbitDegreesPerPixel);
    else if (m_button == kButtonMiddle)
        m_camera.Pan(right, down);
    else
        m_camera.Zoom(std::exp((down - right) * kZoomPerPixel));
    Invalidate();
    return true;
}

bool ZViewer::HostPress(const ZManipulatorInput& input)
{
    const bool more = IsInteraction(kPickMoreInteraction, input);
    if (more || IsInteraction(kPickInteraction, input)) {
        SelectAt(input.x, input.y, more);
        return true;
    }
    if (!IsHostClick(input))
        return false;
    ZManipulator::SetPreviousInput(input);
    return true;
}

bool ZViewer::HostRelease(const ZManipulatorInput& input)
{
    const ZManipulatorInput* const press = ZManipulator::GetPreviousInput();
    if (press == nullptr || press->viewer != this || !IsHostClick(input))
        return false;
    const int moved = std::abs(press->x - input.x) + std::abs(press->y - input.y);
    ZManipulator::ClearPreviousInput();
    if (moved >= kClickPixels)
        return false;
    SelectAt(input.x, input.y, (input.modifier & kModifierShift) != 0);
    return true;
}

void ZViewer::SelectAt(int x, int y, bool add)
{
    if (m_scene == nullptr)
        return;
    ZModel* const model = ModelAt(x, y);
    HdlZPlug handle;
    handle.Set(model);
    if (!add) {
        const std::vector<ZModel*> models = m_scene->GetModels();
        for (ZModel* other : models)
            if (other != model)
                other->SetSelected(false);
    }
    if (handle.IsValid())
        model->SetSelected(true);
    Invalidate();
}

void ZViewer::PickRectStart(int x, int y)
{
    m_rectShown = true;
    m_rect[0] = m_rect[2] = x - m_originX;
    m_rect[1] = m_rect[3] = y - m_originY;
    Invalidate();
}

void ZViewer::PickRectMotion(int x, int y)
{
    if (!m_rectShown)
        return;
    m_rect[2] = x - m_originX;
    m_rect[3] = y - m_originY;
    Invalidate();
}

void ZViewer::PickRectStop()
{
    if (!m_rectShown)
        return;
    m_rectShown = false;
    Invalidate();
}

void ZViewer::DrawManipulators()
{
    const HandOut handOut;
    for (const auto& [handle, manipulator] : InOrderOfInput()) {
        if (!handle.IsValid() || !manipulator->m_inSet || !manipulator->m_inUse)
            continue;
        ZManipulatorDraw draw;
        draw.viewer = this;
        draw.camera = &m_camera;
        draw.viewerVector = ZgeNormalised(m_camera.GetEye() - m_camera.GetTarget());
        manipulator->ManipulatorDraw(draw);
    }
}
