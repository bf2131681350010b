// SPDX-License-Identifier: MIT
// Tool: an open tool and its controls.
#include "Bindings.h"
#include "ControlRefs.h"

#include <pybind11/stl.h>

namespace {
using SharedTool = std::shared_ptr<ToolRef>;

/// The tool's controls in the order of its regions, by their names.
py::dict Controls(const SharedTool& ref)
{
    std::vector<ZtView*> views;
    ref->Get().CollectViews(views);
    py::dict controls;
    for (ZtView* const view : views)
        if (!view->GetObjectName().empty())
            controls[py::str(view->GetObjectName())] = ref->GetDoor().WrapControl(ref, *view);
    return controls;
}

py::object Control(const SharedTool& ref, const py::object& name)
{
    const py::dict controls = Controls(ref);
    if (py::isinstance<py::str>(name) && controls.contains(name))
        return controls[name];
    std::string names;
    for (const auto& item : controls)
        names += (names.empty() ? "" : ", ") + item.first.cast<std::string>();
    throw py::key_error("the tool \"" + ref->name + "\" has no control " + py::repr(name).cast<std::string>() +
                        "; it has " + names);
}

void Activate(const ToolRef& ref)
{
    ref.Get().ToolActivate();
    ref.GetDoor().Finish();
}

void Deactivate(const ToolRef& ref)
{
    ref.Get().ToolDeactivate();
    ref.GetDoor().Finish();
}

void Close(const ToolRef& ref)
{
    if (!ref.GetDoor().IsOpen() || !ref.IsValid())
        return;
    ref.GetDoor().Session().CloseTool(&ref.Get());
    ref.GetDoor().Finish();
}
} // namespace

void BindTool(py::module_& module)
{
    py::class_<ToolRef, SharedTool>(module, "Tool", "An open tool.")
        .def_property_readonly(
            "name", [](const ToolRef& ref) { return (ref.Get(), ref.name); }, "Its name in the catalogue.")
        .def_property_readonly(
            "label", [](const ToolRef& ref) { return (ref.Get(), ref.label); }, "What menus call it.")
        .def("activate", &Activate, "Gives the tool the user's attention; once is enough.")
        .def("deactivate", &Deactivate, "Takes it away, as hiding the tool's window does.")
        .def("close", &Close, "Closes the tool. Harmless the second time.")
        .def_property_readonly(
            "size",
            [](const ToolRef& ref) { return py::make_tuple(ref.Get().GetToolWidth(), ref.Get().GetToolHeight()); },
            "(width, height) of its window in pixels.")
        .def_property_readonly("controls", &Controls, "Every control of the tool and its panels, by name.")
        .def("__getitem__", &Control, py::arg("name"), "The control of this name; KeyError when there is none.")
        .def("__repr__", [](const ToolRef& ref) {
            const bool open = ref.GetDoor().IsOpen() && ref.IsValid();
            return "<skindesk.Tool \"" + ref.name + (open ? "\">" : "\", closed>");
        });
}
