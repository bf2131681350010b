// SPDX-License-Identifier: MIT
// Viewer: camera, the user's hand, pictures.
#include "Bindings.h"
#include "ViewerRef.h"
#include "zmanipulator/ZOffscreen.h"

#include <pybind11/stl.h>

namespace {
/// The camera as tools get it: its unit and planes follow the scene as it is now.
IViewerCamera& UpToDateCamera(const ViewerRef& ref)
{
    return *static_cast<IViewerCamera*>(ref.Get().IQuery(kInterfaceViewerCamera, 0));
}

void Size(const ViewerRef& ref, const py::object& width, const py::object& height)
{
    const int w = PixelFrom(width, "the width"), h = PixelFrom(height, "the height");
    constexpr int kLargest = 16384;
    if (w < 1 || h < 1 || w > kLargest || h > kLargest)
        throw py::value_error("the viewer is 1 to " + std::to_string(kLargest) + " pixels wide and high, not " +
                              std::to_string(w) + " x " + std::to_string(h));
    ref.Get().SetSize(w, h);
    ref.GetDoor().Finish();
}

void LookAt(const ViewerRef& ref, const py::object& eye, const py::object& target, const py::object& up)
{
    ZViewer& viewer = ref.Get();
    if (!viewer.GetCamera().LookAt(VectorFrom(eye, "eye"), VectorFrom(target, "target"), VectorFrom(up, "up")))
        throw py::value_error("the eye must lie away from the target, and up must not point along the view");
    viewer.Invalidate();
    ref.GetDoor().Finish();
}

void Fov(const ViewerRef& ref, const py::object& degrees)
{
    ZViewer& viewer = ref.Get();
    viewer.GetCamera().SetFov(NumberFrom(degrees, "the field of view"));
    viewer.Invalidate();
    ref.GetDoor().Finish();
}

void Frame(const ViewerRef& ref, const py::object& models)
{
    ZViewer& viewer = ref.Get();
    viewer.Frame(models.is_none() ? std::vector<ZModel*>() : ModelsFrom(models));
    ref.GetDoor().Finish();
}

void Press(const ViewerRef& ref, const py::object& x, const py::object& y, const py::object& button,
           const py::object& modifiers)
{
    ZViewer& viewer = ref.Get();
    const int pixelX = PixelFrom(x, "x"), pixelY = PixelFrom(y, "y"), mask = ModifiersFrom(modifiers);
    const double number = NumberFrom(button, "the button");
    if (number != 1 && number != 2 && number != 3)
        throw py::value_error("the button is 1 (left), 2 (middle) or 3 (right), not " +
                              py::repr(button).cast<std::string>());
    viewer.Press(pixelX, pixelY, static_cast<int>(number), mask);
    ref.GetDoor().Finish();
}

void Move(const ViewerRef& ref, const py::object& x, const py::object& y)
{
    ZViewer& viewer = ref.Get();
    viewer.Move(PixelFrom(x, "x"), PixelFrom(y, "y"));
    ref.GetDoor().Finish();
}

void Release(const ViewerRef& ref, const py::object& x, const py::object& y)
{
    ZViewer& viewer = ref.Get();
    viewer.Release(PixelFrom(x, "x"), PixelFrom(y, "y"));
    ref.GetDoor().Finish();
}

void Wheel(const ViewerRef& ref, const py::object& x, const py::object& y, const py::object& steps)
{
    ZViewer& viewer = ref.Get();
    viewer.Wheel(PixelFrom(x, "x"), PixelFrom(y, "y"), NumberFrom(steps, "the number of steps"));
    ref.GetDoor().Finish();
}

void Key(const ViewerRef& ref, int code, const py::object& modifiers)
{
    ref.GetDoor().Session().PressKey(code, ModifiersFrom(modifiers));
    ref.GetDoor().Finish();
}

py::array_t<std::uint8_t> Grab(const ViewerRef& ref)
{
    ZImage image;
    std::string why;
    if (!ZOffscreen_Grab(ref.Get(), image, &why))
        throw DoorError("no picture can be drawn: " + why);
    const py::ssize_t height = image.height, width = image.width;
    return ArrayOf(std::move(image.rgb)).reshape({height, width, py::ssize_t{3}});
}
} // namespace

void BindViewer(py::module_& module)
{
    const auto none = py::tuple();
    py::class_<ViewerRef>(
        module, "Viewer",
        "A camera on the scene that takes input and makes pictures. Pixels count from the top left, x to "
        "the right and y down. Buttons: 1 left, 2 middle, 3 right; modifiers: \"shift\", \"ctrl\", "
        "\"alt\". The first size is 800 x 600.")
        .def("size", &Size, py::arg("width"), py::arg("height"), "Sets the size in pixels.")
        .def("look_at", &LookAt, py::arg("eye"), py::arg("target"), py::arg("up"),
             "Puts the camera at eye, looking at target; three numbers each, in the scene.")
        .def("fov", &Fov, py::arg("degrees"), "Sets the vertical field of view, 1 to 170 degrees.")
        .def("frame", &Frame, py::arg("models") = py::none(),
             "Makes the models fill the view, as they are deformed now; without models, the scene.")
        .def_property_readonly(
            "projection", [](const ViewerRef& ref) { return ArrayOf(UpToDateCamera(ref).ProjectionMatrix()); },
            "4 x 4 float64 for row vectors: point @ view @ projection is the point in clip space.")
        .def_property_readonly(
            "view", [](const ViewerRef& ref) { return ArrayOf(UpToDateCamera(ref).ViewMatrix()); },
            "4 x 4 float64 for row vectors, scene to camera; 1 in camera space is 1 % of the scene's diagonal.")
        .def_property_readonly(
            "eye", [](const ViewerRef& ref) { return TripleOf(ref.Get().GetCamera().GetEye()); },
            "Where the camera is in the scene.")
        .def("press", &Press, py::arg("x"), py::arg("y"), py::arg("button") = 1, py::arg("modifiers") = none,
             "Presses a mouse button.")
        .def("move", &Move, py::arg("x"), py::arg("y"), "Moves the mouse.")
        .def("release", &Release, py::arg("x"), py::arg("y"),
             "Releases the button that was pressed, with the modifiers of its press.")
        .def("wheel", &Wheel, py::arg("x"), py::arg("y"), py::arg("steps"), "Turns the wheel.")
        .def("key", &Key, py::arg("code"), py::arg("modifiers") = none,
             "Presses and releases a key: letters are their upper-case ASCII code, 27 is Escape. Shortcuts hear of it.")
        .def("grab", &Grab,
             "A picture of the viewer, height x width x 3 uint8. skindesk.Error where there is no OpenGL to draw it.");
}
