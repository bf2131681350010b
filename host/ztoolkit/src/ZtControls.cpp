// SPDX-License-Identifier: MIT
// Label, combo box, check box, colour field and slider.
#include "ztoolkit/ZtControls.h"

#include <algorithm>
#include <cmath>

ZCLASS_DEFINE(ZtStatic, ZtView)
ZCLASS_DEFINE(ZtComboBox, ZtView)
ZCLASS_DEFINE(ZtCheckBox, ZtView)
ZCLASS_DEFINE(ZtColor, ZtView)
ZCLASS_DEFINE(ZtSlider, ZtView)

ZtStatic::ZtStatic(const char* name) : ZtView(ZtViewKind::Label, name) {}

ZtComboBox::ZtComboBox(const char* name) : ZtView(ZtViewKind::Combo, name) {}

void ZtComboBox::SetIndex(int index)
{
    if (index < -1 || index >= m_items.GetCount() || index == m_index)
        return;
    m_index = index;
    MarkChanged();
}

bool ZtComboBox::UserChoose(int index)
{
    if (!TakesInput("ZtComboBox::UserChoose") || index < 0 || index >= m_items.GetCount())
        return false;
    if (index == m_index)
        return true;
    SetIndex(index);
    ZtEvent event(kViewValueChanged);
    event.row = index;
    Send(event);
    return true;
}

ZtCheckBox::ZtCheckBox(const char* name) : ZtView(ZtViewKind::Check, name) {}

void ZtCheckBox::SetState(bool state)
{
    if (m_state == state)
        return;
    m_state = state;
    MarkChanged();
}

void ZtCheckBox::SetPushButtonLook(bool look)
{
    m_pushButtonLook = look;
    MarkChanged();
}

bool ZtCheckBox::UserClick()
{
    if (!TakesInput("ZtCheckBox::UserClick"))
        return false;
    SetState(!m_state);
    ZtEvent event(kViewClicked);
    event.value = m_state ? 1 : 0;
    Send(event);
    return true;
}

ZtColor::ZtColor(const char* name) : ZtView(ZtViewKind::Colour, name) {}

void ZtColor::SetColour(double red, double green, double blue, double alpha)
{
    const double colour[4] = {red, green, blue, alpha};
    if (std::equal(colour, colour + 4, m_colour))
        return;
    std::copy(colour, colour + 4, m_colour);
    MarkChanged();
}

bool ZtColor::UserSetColour(double red, double green, double blue)
{
    if (!TakesInput("ZtColor::UserSetColour"))
        return false;
    double colour[3] = {red, green, blue};
    if (!std::all_of(colour, colour + 3, [](double component) { return std::isfinite(component); }))
        return false;
    for (double& component : colour)
        component = std::clamp(component, 0.0, 1.0);
    if (std::equal(colour, colour + 3, m_colour))
        return true;
    SetColour(colour[0], colour[1], colour[2], m_colour[3]);
    ZtEvent event(kViewValueChanged);
    Send(event);
    return true;
}

ZtSlider::ZtSlider(const char* name) : ZtView(ZtViewKind::Slider, name) {}

void ZtSlider::SetRange(double minimum, double maximum)
{
    if (!std::isfinite(minimum) || !std::isfinite(maximum) || minimum > maximum)
        return;
    m_minimum = minimum;
    m_maximum = maximum;
    m_value = std::clamp(m_value, minimum, maximum);
    MarkChanged();
}

void ZtSlider::SetValue(double value)
{
    if (!std::isfinite(value))
        return;
    const double clamped = std::clamp(value, m_minimum, m_maximum);
    if (clamped == m_value)
        return;
    m_value = clamped;
    MarkChanged();
}

bool ZtSlider::UserEvent(int kind, double value)
{
    if (!std::isfinite(value))
        return false;
    SetValue(value);
    ZtEvent event(kind);
    event.value = m_value;
    Send(event);
    return true;
}

bool ZtSlider::UserSetValue(double value)
{
    return TakesInput("ZtSlider::UserSetValue") && UserEvent(kViewValueChanged, value);
}

bool ZtSlider::UserPress(double value)
{
    if (!TakesInput("ZtSlider::UserPress") || m_held || !std::isfinite(value))
        return false;
    m_held = true;
    return UserEvent(kViewPress, value);
}

bool ZtSlider::UserDrag(double value) { return m_held && UserEvent(kViewValueChanged, value); }

bool ZtSlider::UserRelease(double value)
{
    if (!m_held || !std::isfinite(value))
        return false;
    m_held = false;
    return UserEvent(kViewRelease, value);
}
