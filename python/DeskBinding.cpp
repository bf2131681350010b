// SPDX-License-Identifier: MIT
// Desk: the session, its scene, history, messages and time.
#include "Bindings.h"
#include "DeskFiles.h"
#include "ViewerRef.h"
#include "object/ZAction.h"
#include "object/ZCatalogue.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace {
using Desk = std::shared_ptr<Door>;
constexpr const char* kToolPath = "UI/Tools";
constexpr int kKeyCodes = 65536; // virtual-key numbering needs 256; what is held beyond it is nobody's

std::vector<std::string> FoldersFrom(const py::object& folders)
{
    if (py::isinstance<py::str>(folders) || py::hasattr(folders, "__fspath__"))
        return {PathFrom(folders)};
    std::vector<std::string> paths;
    for (const py::handle folder : py::iter(folders))
        paths.push_back(PathFrom(py::reinterpret_borrow<py::object>(folder)));
    return paths;
}

/// The folder from which plug-ins are looked for as from a program's: in a build the one that holds the package, in an
/// installation, where that lies beside the plug-ins, the one of the programs.
std::string PackageFolder()
{
    const std::string library = py::module_::import("skindesk._skindesk").attr("__file__").cast<std::string>();
    const py::object real = py::module_::import("os.path").attr("realpath")(library);
    const auto holder = std::filesystem::path(real.cast<std::string>()).parent_path().parent_path();
    std::error_code failed;
    const bool isInstalled = std::filesystem::is_directory(holder.parent_path() / "plugins", failed);
    return (isInstalled ? holder / "../../../bin" : holder).lexically_normal().string();
}

Desk OpenDesk(const py::object& plugins, const py::object& settings)
{
    ZSession::Options options;
    if (!plugins.is_none())
        options.pluginFolders = FoldersFrom(plugins);
    if (!settings.is_none())
        options.settingsFolder = PathFrom(settings);
    options.programFolder = PackageFolder();
    return Door::Open(options, plugins.is_none() || !options.pluginFolders.empty());
}

/// The desk that is open belongs to whoever holds it; this is for the end of the interpreter.
std::weak_ptr<Door> s_open;

void CloseOpenDesk()
{
    if (const Desk desk = s_open.lock())
        desk->Close();
}

py::object FindModel(const Desk& desk, const std::string& name)
{
    const ZScene& scene = desk->Session().GetScene();
    const std::vector<ZModel*>& models = scene.GetModels();
    const std::vector<std::string> paths = scene.GetPaths();
    std::vector<size_t> named, placed;
    for (size_t i = 0; i < models.size(); ++i) {
        if (models[i]->GetObjectName() == name)
            named.push_back(i);
        if (paths[i] == name)
            placed.push_back(i);
    }
    if (named.size() == 1)
        return desk->Wrap(models[named.front()]);
    if (named.size() < 2 && placed.size() == 1)
        return desk->Wrap(models[placed.front()]);
    if (named.empty())
        throw py::key_error("there is no model \"" + name + '"');
    std::string where;
    for (const size_t i : named)
        where += (where.empty() ? "" : ", ") + paths[i];
    throw py::key_error("there are " + std::to_string(named.size()) + " models \"" + name + "\": " + where);
}

py::list Catalogue(const Desk& desk)
{
    desk->Session();
    py::list entries;
    for (const ZCatalogueEntry& entry : Object_GetCatalogue())
        entries.append(py::make_tuple(entry.path, entry.name, entry.description));
    return entries;
}

py::object OpenTool(const Desk& desk, const std::string& name)
{
    ZSession& session = desk->Session();
    const auto& catalogue = Object_GetCatalogue();
    const auto entry = std::find_if(catalogue.begin(), catalogue.end(), [&name](const ZCatalogueEntry& candidate) {
        return candidate.path == kToolPath && candidate.name == name;
    });
    if (entry == catalogue.end())
        throw DoorError("there is no tool \"" + name + '"');
    const std::string label = entry->description;
    ZTool* const tool = session.OpenTool(name);
    if (tool == nullptr)
        throw DoorError(ZReport_Warnings().empty() ? "the tool \"" + name + "\" could not be made"
                                                   : ZReport_Warnings().back());
    py::object wrapped = desk->WrapTool(*tool, name, label);
    desk->Finish();
    return wrapped;
}

bool Step(const Desk& desk, bool (ZSession::*step)())
{
    const bool done = (desk->Session().*step)();
    desk->Finish();
    return done;
}

py::list Messages(const Desk& desk)
{
    desk->Session();
    const py::object type = py::module_::import("skindesk._skindesk").attr("Message");
    py::list messages;
    for (const ZtMessage& message : ZToolKit_GetMessages())
        messages.append(type(message.title, message.text, message.buttons, message.answer));
    return messages;
}

void SetScreenWidth(const Desk& desk, const py::object& width)
{
    desk->Session();
    const int pixels = PixelFrom(width, "the width of the screen");
    if (pixels < 1)
        throw py::value_error("a screen is at least 1 pixel wide, not " + std::to_string(pixels));
    ZToolKit_SetScreenWidth(pixels);
}

void SetKeys(const Desk& desk, const py::object& codes)
{
    desk->Session();
    std::set<int> keys;
    for (const py::handle code : py::iter(codes))
        keys.insert(IndexFrom(code, kKeyCodes, "key code"));
    for (const int key : desk->keys)
        if (keys.count(key) == 0)
            Object_SetKeyState(key, false);
    for (const int key : keys)
        Object_SetKeyState(key, true);
    desk->keys = keys;
}

void SetTime(const Desk& desk, const py::object& seconds)
{
    ZSession& session = desk->Session();
    session.GetScene().SetTime(NumberFrom(seconds, "the time"));
    desk->Finish();
}

void PlayTo(const Desk& desk, const py::object& seconds)
{
    constexpr double kFrame = 1.0 / 30;
    const double end = NumberFrom(seconds, "the time");
    for (double time = desk->Session().GetScene().GetTime() + kFrame; time < end; time += kFrame) {
        // From far enough on, a frame is too small a step to change the time at all.
        if (time + kFrame == time)
            break;
        desk->Session().GetScene().SetTime(time);
        desk->Settle();
        if (PyErr_CheckSignals() != 0)
            throw py::error_already_set();
    }
    desk->Session().GetScene().SetTime(end);
    desk->Finish();
}

std::vector<std::string> Animations(const Desk& desk)
{
    std::vector<std::string> names;
    for (const auto& animation : desk->Session().GetScene().GetAnimations())
        names.push_back(animation->name);
    return names;
}

py::object GetAnimation(const Desk& desk)
{
    const ZScene& scene = desk->Session().GetScene();
    const int index = scene.GetAnimation();
    return index < 0 ? py::object(py::none()) : py::str(scene.GetAnimations()[static_cast<size_t>(index)]->name);
}

void SetAnimation(const Desk& desk, const std::optional<std::string>& name)
{
    ZScene& scene = desk->Session().GetScene();
    int index = -1;
    if (name) {
        const std::vector<std::string> names = Animations(desk);
        const auto count = std::count(names.begin(), names.end(), *name);
        if (count != 1)
            throw py::key_error("there " + std::string(count == 0 ? "is no animation" : "are several animations") +
                                " \"" + *name + '"');
        index = static_cast<int>(std::find(names.begin(), names.end(), *name) - names.begin());
    }
    scene.SetAnimation(index);
    desk->Finish();
}

using DeskClass = py::class_<Door, Desk>;

void BindScene(DeskClass& desk)
{
    desk.def_property_readonly(
            "models", [](const Desk& self) { return self->Wrap(self->Session().GetScene().GetModels()); },
            "Every model of the scene: meshes, surfaces, bones and nodes.")
        .def("model", &FindModel, py::arg("name"),
             "The model of this name or path. KeyError when there is none, or several of the name; it lists their "
             "paths.")
        .def_property_readonly(
            "viewer", [](const Desk& self) { return (self->Session(), ViewerRef(self)); }, "The viewer of the scene.")
        .def_property(
            "time", [](const Desk& self) { return self->Session().GetScene().GetTime(); }, &SetTime,
            "The present time in seconds.")
        .def_property_readonly("animations", &Animations, "The names of the animations.")
        .def_property(
            "animation", &GetAnimation, &SetAnimation,
            "The name of the animation that plays; None: the rest state of the files. KeyError for another name.")
        .def("play_to", &PlayTo, py::arg("seconds"),
             "Plays from the present time on, frame by frame; a time before it is "
             "gone to at once.");
}

void BindTools(DeskClass& desk)
{
    desk.def_property_readonly("catalogue", &Catalogue, "What plug-ins offer: (path, name, label) of each entry.")
        .def("open_tool", &OpenTool, py::arg("name"), "Opens a tool of the catalogue's \"UI/Tools\" and activates it.")
        .def(
            "undo", [](const Desk& self) { return Step(self, &ZSession::Undo); },
            "Takes one step back. False when there is none, or a gesture is under way.")
        .def(
            "redo", [](const Desk& self) { return Step(self, &ZSession::Redo); }, "Makes one step again.")
        .def_property_readonly(
            "undo_names", [](const Desk& self) { return (self->Session(), ZUndoStack::TheOne()->GetUndoNames()); },
            "Names of the steps that can be undone, next first.")
        .def_property_readonly(
            "redo_names", [](const Desk& self) { return (self->Session(), ZUndoStack::TheOne()->GetRedoNames()); },
            "Names of the steps that can be made again, next first.");
}

void BindUser(DeskClass& desk)
{
    desk.def_property_readonly("messages", &Messages, "Every message box since the desk opened, in order.")
        .def_property(
            "answer", [](const Desk& self) { return (self->Session(), self->GetAnswer()); },
            [](const Desk& self, const py::object& answer) { self->SetAnswer(answer); },
            "Who answers message boxes: a function of (title, text, buttons) that returns the number of a button, "
            "counted "
            "from 1; any other number is the last button. None: always the last button, the safe one.")
        .def_property(
            "screen_width", [](const Desk& self) { return (self->Session(), ZToolKit_GetScreenWidth()); },
            &SetScreenWidth, "Width of the screen in pixels, first 1920. Set it before a tool opens.")
        .def_property(
            "keys", [](const Desk& self) { return (self->Session(), py::frozenset(py::cast(self->keys))); }, &SetKeys,
            "Codes of the keys that are held; assign a set. 4 is the middle mouse button.")
        .def_property_readonly(
            "warnings", [](const Desk& self) { return (self->Session(), ZReport_Warnings()); },
            "What the host had to say since the desk opened, a line each.");
}

/// title, text, buttons, answer: a tuple with names.
py::object MakeMessageType()
{
    py::object type = py::module_::import("collections").attr("namedtuple")("Message", "title text buttons answer");
    type.attr("__doc__") =
        "A message box: its texts, the texts of its buttons, and the button pressed, counted from 1.";
    return type;
}
} // namespace

void BindDesk(py::module_& module)
{
    module.attr("Message") = MakeMessageType();
    DeskClass desk(module, "Desk",
                   "A session of the host without a window. One at a time; close it, or use it with `with`.");
    desk.def(py::init([](const py::object& plugins, const py::object& settings) {
                 Desk opened = OpenDesk(plugins, settings);
                 s_open = opened;
                 return opened;
             }),
             py::arg("plugins") = py::none(), py::arg("settings") = py::none(),
             "plugins: folders of plug-ins (default: SKINDESK_PLUGINS, else those beside the package); settings: the "
             "folder "
             "of \"@Application.txt\". skindesk.Error when a desk is open already.")
        .def("close", &Door::Close, "Closes the desk with all that is open on it. Harmless the second time.")
        .def("__enter__", [](const Desk& self) { return (self->Session(), self); })
        .def("__exit__", [](const Desk& self, const py::args&) { self->Close(); })
        .def("__repr__",
             [](const Desk& self) { return self->IsOpen() ? "<skindesk.Desk>" : "<skindesk.Desk, closed>"; });
    BindDeskFiles(desk);
    BindScene(desk);
    BindTools(desk);
    BindUser(desk);
    module.def("_close_open_desk", &CloseOpenDesk, "Closes the desk that was left open at the end of the interpreter.");
}
