// SPDX-License-Identifier: MIT
#include "Door.h"

#include "ControlRefs.h"
#include "object/ZAction.h"
#include "zbaselib/ZReport.h"
#include "zmanipulator/ZOffscreen.h"
#include "ztoolkit/ZToolKit.h"

#include <pybind11/stl.h>

namespace {
constexpr int kFirstScreenWidth = 1920;

std::string Quoted(const std::string& text) { return '"' + text + '"'; }

/// The living reference to `object`, or a new one. An entry whose object is gone is another object's by now.
template <class Ref, class Make>
std::shared_ptr<Ref> FindOrMake(std::unordered_map<const ZObject*, std::weak_ptr<Ref>>& known, const ZObject* object,
                                Make make)
{
    std::weak_ptr<Ref>& entry = known[object];
    std::shared_ptr<Ref> ref = entry.lock();
    if (ref == nullptr || !ref->IsValid()) {
        ref = make();
        entry = ref;
    }
    return ref;
}

template <class Ref>
void ForgetExpired(std::unordered_map<const ZObject*, std::weak_ptr<Ref>>& known, const ZObject* object)
{
    const auto entry = known.find(object);
    if (entry != known.end() && entry->second.expired())
        known.erase(entry);
}
} // namespace

ModelRef::ModelRef(std::shared_ptr<Door> door, ZModel& model)
    : HostRef(std::move(door), model), m_name(model.GetObjectName())
{
}

ModelRef::~ModelRef() { m_door->Forget(m_object); }

ZModel& ModelRef::Get() const
{
    m_door->Session();
    if (!IsValid())
        throw DoorError("the model " + Quoted(m_name) + " is no longer in the scene");
    return *m_object;
}

ToolRef::ToolRef(std::shared_ptr<Door> door, ZTool& tool, std::string toolName, std::string toolLabel)
    : HostRef(std::move(door), tool), name(std::move(toolName)), label(std::move(toolLabel))
{
}

ToolRef::~ToolRef() { m_door->Forget(m_object); }

ZTool& ToolRef::Get() const
{
    m_door->Session();
    if (!IsValid())
        throw DoorError("the tool " + Quoted(name) + " has been closed");
    return *m_object;
}

ControlRef::ControlRef(std::shared_ptr<ToolRef> tool, ZtView& view)
    : HostRef(tool->ShareDoor(), view), m_tool(std::move(tool)), m_name(view.GetObjectName())
{
}

ControlRef::~ControlRef() { m_door->Forget(m_object); }

ZtView& ControlRef::Get() const
{
    m_tool->Get();
    if (!IsValid())
        throw DoorError("the control " + Quoted(m_name) + " of the tool " + Quoted(m_tool->name) + " is gone");
    return *m_object;
}

std::shared_ptr<Door> Door::Open(const ZSession::Options& options, bool loadPlugins)
{
    if (ZSession::TheOne() != nullptr)
        throw DoorError("a desk is open already; close it first");
    ZReport_ClearWarnings();
    ZToolKit_ClearMessages();
    ZToolKit_SetScreenWidth(kFirstScreenWidth);
    std::shared_ptr<Door> door(new Door);
    door->m_session = std::make_unique<ZSession>(options);
    door->m_documents = std::make_unique<ZDocuments>(*door->m_session);
    if (loadPlugins)
        door->m_session->LoadPlugins();
    return door;
}

Door::~Door() { Close(); }

void Door::Close()
{
    if (!IsOpen())
        return;
    // Nobody is asked any more, and what still looks for the session finds the desk closed.
    ZToolKit_SetMessageAnswerer({});
    m_answer = py::none();
    m_documents.reset();
    std::unique_ptr<ZSession> session = std::move(m_session);
    session.reset();
    ZOffscreen_Release();
    Object_ClearKeyStates();
}

ZSession& Door::Session() const
{
    if (!IsOpen())
        throw DoorError("the desk has been closed");
    if (m_thread != std::this_thread::get_id())
        throw DoorError("the desk belongs to the thread that opened it");
    return *m_session;
}

ZDocuments& Door::Documents() const
{
    Session();
    return *m_documents;
}

void Door::Settle()
{
    if (IsOpen())
        m_session->AfterEvent();
}

void Door::Finish()
{
    Settle();
    if (m_raised)
        std::rethrow_exception(std::exchange(m_raised, nullptr));
}

py::object Door::Wrap(ZModel* model)
{
    if (model == nullptr)
        return py::none();
    return py::cast(
        FindOrMake(m_models, model, [&] { return std::make_shared<ModelRef>(shared_from_this(), *model); }));
}

py::object Door::Wrap(const std::vector<ZModel*>& models)
{
    py::list list(models.size());
    for (size_t i = 0; i < models.size(); ++i)
        list[i] = Wrap(models[i]);
    return list;
}

py::object Door::WrapTool(ZTool& tool, const std::string& name, const std::string& label)
{
    return py::cast(
        FindOrMake(m_tools, &tool, [&] { return std::make_shared<ToolRef>(shared_from_this(), tool, name, label); }));
}

std::shared_ptr<ControlRef> Door::WrapControl(const std::shared_ptr<ToolRef>& tool, ZtView& view)
{
    return FindOrMake(m_controls, &view, [&] { return MakeControlRef(tool, view); });
}

void Door::Forget(const ZObject* object)
{
    ForgetExpired(m_models, object);
    ForgetExpired(m_tools, object);
    ForgetExpired(m_controls, object);
}

void Door::SetAnswer(py::object answer)
{
    Session();
    if (!answer.is_none() && PyCallable_Check(answer.ptr()) == 0)
        throw py::type_error("answer must be a function of (title, text, buttons) or None");
    m_answer = std::move(answer);
    if (m_answer.is_none())
        ZToolKit_SetMessageAnswerer({});
    else
        ZToolKit_SetMessageAnswerer([this](const ZtMessage& question) { return AskAnswer(question); });
}

int Door::AskAnswer(const ZtMessage& question)
{
    // The host stands in the middle of an event: what is raised here waits until it is over. 0 is the last button.
    if (m_raised)
        return 0;
    const py::object asked = m_answer; // it may be replaced while it runs
    const py::list buttons = py::cast(question.buttons);
    try {
        return asked(question.title, question.text, buttons).cast<int>();
    } catch (const py::cast_error&) {
        m_raised = std::make_exception_ptr(py::type_error("answer must return the number of a button, counted from 1"));
    } catch (const py::error_already_set&) {
        m_raised = std::current_exception();
    }
    return 0;
}

std::vector<ZModel*> ModelsFrom(const py::object& models)
{
    if (py::isinstance<ModelRef>(models))
        return {&models.cast<ModelRef&>().Get()};
    std::vector<ZModel*> found;
    for (const py::handle model : py::iter(models)) {
        if (!py::isinstance<ModelRef>(model))
            throw py::type_error("a skindesk.Model is needed, not " + py::repr(model).cast<std::string>());
        found.push_back(&model.cast<ModelRef&>().Get());
    }
    return found;
}
