// SPDX-License-Identifier: MIT
// The plain controls: label, combo box, check box, colour field, slider.
#pragma once

#include "zbaselib/ZStringList.h"
#include "ztoolkit/ZtView.h"

/// A text that the user reads.
class ZtStatic : public ZtView
{
public:
    ZCLASS_DECLARE()
    explicit ZtStatic(const char* name);
};

/// One of several items. Event: kViewValueChanged.
class ZtComboBox : public ZtView
{
public:
    ZCLASS_DECLARE()
    explicit ZtComboBox(const char* name);
    ZStringList& GetItems() { return m_items; }
    const ZStringList& GetItems() const { return m_items; }
    int GetIndex() const { return m_index; }
    /// Out of range (but -1 = none) is ignored.
    void SetIndex(int index);
    /// No event when the item is chosen already. False when there is no such item.
    bool UserChoose(int index);

private:
    ZStringList m_items;
    int m_index = -1;
};

/// On or off. Event: kViewClicked, after the state changed.
class ZtCheckBox : public ZtView
{
public:
    ZCLASS_DECLARE()
    explicit ZtCheckBox(const char* name);
    bool GetState() const { return m_state; }
    void SetState(bool state);
    /// Shown as a button that stays down.
    void SetPushButtonLook(bool look);
    bool HasPushButtonLook() const { return m_pushButtonLook; }
    /// False while disabled.
    bool UserClick();

private:
    bool m_state = false;
    bool m_pushButtonLook = false;
};

/// A colour, components 0 to 1. Event: kViewValueChanged.
class ZtColor : public ZtView
{
public:
    ZCLASS_DECLARE()
    explicit ZtColor(const char* name);
    /// 3 (red, green, blue) or 4 (and alpha).
    void SetComponentCount(int count) { m_components = count == 4 ? 4 : 3; }
    int GetComponentCount() const { return m_components; }
    void SetColour(double red, double green, double blue, double alpha = 1.0);
    /// Four doubles.
    const double* GetColour() const { return m_colour; }
    /// Components are clamped to 0..1; one that is not finite is refused with false. No event for the same colour.
    bool UserSetColour(double red, double green, double blue);

private:
    int m_components = 3;
    double m_colour[4] = {0, 0, 0, 1};
};

/// A value in a range. A drag of v1 ... vn is a press with v1, changes, a release with vn; setting a value without a
/// drag is one kViewValueChanged. Press and release carry the value at that moment. Drag and release need a press
/// before them; once pressed, a drag is carried to its end even when the slider is disabled on the way. Each act is an
/// event, whether or not the value is a new one.
class ZtSlider : public ZtView
{
public:
    ZCLASS_DECLARE()
    explicit ZtSlider(const char* name);
    void SetRange(double minimum, double maximum);
    double GetMinimum() const { return m_minimum; }
    double GetMaximum() const { return m_maximum; }
    void SetHorizontal(bool horizontal) { m_horizontal = horizontal; }
    bool IsHorizontal() const { return m_horizontal; }
    double GetValue() const { return m_value; }
    /// Clamped to the range; a value that is not finite is ignored.
    void SetValue(double value);
    bool UserSetValue(double value);
    bool UserPress(double value);
    bool UserDrag(double value);
    bool UserRelease(double value);

private:
    bool UserEvent(int kind, double value);
    bool m_held = false;
    double m_minimum = 0;
    double m_maximum = 100;
    double m_value = 0;
    bool m_horizontal = true;
};
