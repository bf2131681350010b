// SPDX-License-Identifier: MIT
// Control and its kinds.
#include "Bindings.h"
#include "ControlRefs.h"

#include <pybind11/stl.h>

namespace {
template <class Ref> using Kind = py::class_<Ref, ControlRef, std::shared_ptr<Ref>>;

void BindBase(py::module_& module)
{
    py::class_<ControlRef, std::shared_ptr<ControlRef>>(
        module, "Control",
        "A control of a tool. What is done to it is done by a user's hand: handlers hear of it, and a disabled control "
        "does nothing.")
        .def_property_readonly(
            "name", [](const ControlRef& ref) { return ref.Get().GetObjectName(); },
            "The name of the control's region.")
        .def_property_readonly(
            "kind", [](const ControlRef& ref) { return KindName(ref.Get().GetViewKind()); },
            "\"list\", \"combo\", \"check\", \"slider\", \"colour\", \"spread\", \"label\" or \"panel\".")
        .def_property_readonly(
            "caption", [](const ControlRef& ref) { return ref.Get().GetCaption(); }, "The text on the control.")
        .def_property_readonly(
            "enabled", [](const ControlRef& ref) { return ref.Get().IsEnabled(); }, "Takes the user's input.")
        .def_property_readonly(
            "visible", [](const ControlRef& ref) { return ref.Get().IsVisible(); }, "Is shown.")
        .def_property_readonly(
            "rect",
            [](const ControlRef& ref) {
                const ZtRect& rect = ref.Get().GetRect();
                return py::make_tuple(rect.x, rect.y, rect.width, rect.height);
            },
            "(x, y, width, height) in pixels of the form around the control.")
        .def("__repr__", [](const ControlRef& ref) {
            if (!ref.GetDoor().IsOpen() || !ref.IsValid())
                return std::string("<skindesk.Control, gone>");
            const ZtView& view = ref.Get();
            return std::string("<skindesk.Control ") + KindName(view.GetViewKind()) + " \"" + view.GetObjectName() +
                   "\">";
        });
}

void BindList(py::module_& module)
{
    Kind<ListRef>(module, "ListControl", "A list box. Rows count from 0.")
        .def_property_readonly("rows", &ListRef::Rows, "The texts of all rows.")
        .def_property_readonly("checks", &ListRef::Checks, "The check marks of all rows.")
        .def_property_readonly(
            "selection", [](const ListRef& ref) { return ref.List().GetSelectedRows(); },
            "The selected rows, ascending.")
        .def_property_readonly(
            "current", [](const ListRef& ref) { return ref.List().GetCurrentRow(); }, "The first selected row, or -1.")
        .def("select", &ListRef::Select, py::arg("rows"),
             "Selects exactly these rows, in one event; the last one given is the one touched. No event when the "
             "selection is what it was. IndexError for a row that is not there.")
        .def("set_check", &ListRef::SetCheck, py::arg("row"), py::arg("on"), "Sets or takes away a check mark.")
        .def("drop", &ListRef::Drop, py::arg("models"),
             "Drags models onto the list. A node without geometry stands for the geometry models under it.")
        .def("drag_out", &ListRef::DragOut,
             "Drags out of the list and answers the models that came; key 4 must be held (Desk.keys).");
}

void BindSimple(py::module_& module)
{
    Kind<ComboRef>(module, "ComboControl", "One of several items, counted from 0.")
        .def_property_readonly("items", &ComboRef::Items, "The texts of the items.")
        .def_property_readonly(
            "index", [](const ComboRef& ref) { return ref.Combo().GetIndex(); }, "The chosen item, or -1.")
        .def("choose", &ComboRef::Choose, py::arg("index"), "Chooses an item. IndexError when it is not there.");
    Kind<CheckRef>(module, "CheckControl", "A check box, or a button that stays down.")
        .def_property_readonly(
            "checked", [](const CheckRef& ref) { return ref.Check().GetState(); }, "Whether it is on.")
        .def("click", &CheckRef::Click, "Switches it.");
    Kind<SliderRef>(module, "SliderControl", "A value in a range.")
        .def_property_readonly(
            "value", [](const SliderRef& ref) { return ref.Slider().GetValue(); }, "The value now.")
        .def_property_readonly(
            "minimum", [](const SliderRef& ref) { return ref.Slider().GetMinimum(); }, "The least value.")
        .def_property_readonly(
            "maximum", [](const SliderRef& ref) { return ref.Slider().GetMaximum(); }, "The largest value.")
        .def("set", &SliderRef::Set, py::arg("value"),
             "Sets the value without a drag; outside the range it is clamped.")
        .def("drag", &SliderRef::Drag, py::arg("values"),
             "Presses at the first value, moves through those between and releases at the last.");
    Kind<ColourRef>(module, "ColourControl", "A colour field; components from 0 to 1.")
        .def_property_readonly("rgb", &ColourRef::Rgb, "(red, green, blue).")
        .def("set", &ColourRef::Set, py::arg("red"), py::arg("green"), py::arg("blue"),
             "Picks a colour; components are clamped.");
    // Making the class is what adds it to the module; neither of these two has members of its own.
    // NOLINTBEGIN(bugprone-unused-raii)
    Kind<LabelRef>(module, "LabelControl", "A text.");
    Kind<PanelRef>(module, "PanelControl", "A frame or form that holds other controls.");
    // NOLINTEND(bugprone-unused-raii)
}

void BindSpread(py::module_& module)
{
    Kind<SpreadRef>(module, "SpreadControl",
                    "A spreadsheet. Rows and columns count from 0, the row-label column not counted.")
        .def_property_readonly("row_labels", &SpreadRef::RowLabels, "The label of each row.")
        .def_property_readonly("columns", &SpreadRef::Columns, "The name of each column.")
        .def_property_readonly("widths", &SpreadRef::Widths, "Widths in pixels, beginning with the row labels'.")
        .def("cell", &SpreadRef::Cell, py::arg("row"), py::arg("column"),
             "(r, g, b) of a colour cell, a float of a slider or number cell, a bool of a check cell.")
        .def("type", &SpreadRef::Type, py::arg("row"), py::arg("column"), py::arg("value"),
             "Types a number into a number cell, or True or False into a check cell.")
        .def("drag", &SpreadRef::Drag, py::arg("row"), py::arg("column"), py::arg("values"),
             "Drags the slider in a cell: press, changes, release.");
}
} // namespace

void BindControls(py::module_& module)
{
    BindBase(module);
    BindList(module);
    BindSimple(module);
    BindSpread(module);
}
