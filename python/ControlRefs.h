// SPDX-License-Identifier: MIT
// The kinds of controls as Python sees them. Each action is the user's: it sends the events that a hand would cause,
// and a disabled control does nothing. What is checked before: that the control lives, rows, numbers.
#pragma once

#include "Door.h"
#include "ztoolkit/ZtControls.h"
#include "ztoolkit/ZtListBox.h"
#include "ztoolkit/ZtSpread.h"

#include <memory>
#include <optional>

/// The reference that fits the view's kind.
std::shared_ptr<ControlRef> MakeControlRef(const std::shared_ptr<ToolRef>& tool, ZtView& view);
/// "list", "combo", "check", "slider", "colour", "spread", "label" or "panel".
const char* KindName(ZtViewKind kind);

class ListRef : public ControlRef
{
public:
    using ControlRef::ControlRef;
    ZtListBox& List() const { return static_cast<ZtListBox&>(Get()); }
    py::list Rows() const;
    std::vector<bool> Checks() const;
    void Select(const py::object& rows) const;
    void SetCheck(const py::object& row, bool on) const;
    void Drop(const py::object& models) const;
    py::object DragOut() const;
};

class ComboRef : public ControlRef
{
public:
    using ControlRef::ControlRef;
    ZtComboBox& Combo() const { return static_cast<ZtComboBox&>(Get()); }
    std::vector<std::string> Items() const;
    void Choose(const py::object& index) const;
};

class CheckRef : public ControlRef
{
public:
    using ControlRef::ControlRef;
    ZtCheckBox& Check() const { return static_cast<ZtCheckBox&>(Get()); }
    void Click() const;
};

class SliderRef : public ControlRef
{
public:
    using ControlRef::ControlRef;
    ZtSlider& Slider() const { return static_cast<ZtSlider&>(Get()); }
    void Set(const py::object& value) const;
    void Drag(const py::object& values) const;
};

class ColourRef : public ControlRef
{
public:
    using ControlRef::ControlRef;
    ZtColor& Colour() const { return static_cast<ZtColor&>(Get()); }
    Triple Rgb() const;
    void Set(const py::object& red, const py::object& green, const py::object& blue) const;
};

class SpreadRef : public ControlRef
{
public:
    using ControlRef::ControlRef;
    ZtSpread& Spread() const { return static_cast<ZtSpread&>(Get()); }
    std::vector<std::string> RowLabels() const;
    std::vector<std::string> Columns() const;
    /// The row labels' width first.
    std::vector<int> Widths() const;
    py::object Cell(const py::object& row, const py::object& column) const;
    void Type(const py::object& row, const py::object& column, const py::object& value) const;
    void Drag(const py::object& row, const py::object& column, const py::object& values) const;

private:
    struct Place
    {
        int row, column;
        const ZtSpreadColumn* kind;
        const ZtSpreadCell* cell;
    };
    Place Find(const py::object& row, const py::object& column) const;
};

class LabelRef : public ControlRef
{
public:
    using ControlRef::ControlRef;
};

class PanelRef : public ControlRef
{
public:
    using ControlRef::ControlRef;
};
