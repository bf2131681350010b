// SPDX-License-Identifier: MIT
// The one session behind the module, and the Python objects that stand for its models, tools and controls.
#pragma once

#include "Errors.h"
#include "Values.h"
#include "bcore/ZSession.h"
#include "documents/ZDocuments.h"
#include "ztoolkit/ZToolKit.h"

#include <exception>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

class Door;

/// What a Python object holds of a host object: it keeps the session, not the object, and knows when that is gone.
template <class T> class HostRef
{
public:
    HostRef(std::shared_ptr<Door> door, T& object) : m_door(std::move(door)), m_object(&object)
    {
        m_handle.Set(&object);
    }
    Door& GetDoor() const { return *m_door; }
    const std::shared_ptr<Door>& ShareDoor() const { return m_door; }
    bool IsValid() const { return m_handle.IsValid(); }

protected:
    std::shared_ptr<Door> m_door;
    T* m_object;
    HdlZPlug m_handle;
};

class ModelRef : public HostRef<ZModel>
{
public:
    ModelRef(std::shared_ptr<Door> door, ZModel& model);
    ~ModelRef();
    /// The model. skindesk.Error when it has been deleted or the desk is closed.
    ZModel& Get() const;

private:
    std::string m_name; ///< for the sentence when it is gone
};

class ToolRef : public HostRef<ZTool>
{
public:
    ToolRef(std::shared_ptr<Door> door, ZTool& tool, std::string name, std::string label);
    ~ToolRef();
    ZTool& Get() const;
    const std::string name;  ///< in the catalogue
    const std::string label; ///< in menus
};

class ControlRef : public HostRef<ZtView>
{
public:
    ControlRef(std::shared_ptr<ToolRef> tool, ZtView& view);
    virtual ~ControlRef();
    ZtView& Get() const;

private:
    std::shared_ptr<ToolRef> m_tool;
    std::string m_name;
};

/// The session of one desk. Every Python object of the desk shares it; it ends with Close or with the last of them.
class Door : public std::enable_shared_from_this<Door>
{
public:
    /// Opens the session. `loadPlugins` false: none at all. skindesk.Error when a desk is open already.
    static std::shared_ptr<Door> Open(const ZSession::Options& options, bool loadPlugins);
    ~Door();
    Door(const Door&) = delete;
    Door& operator=(const Door&) = delete;
    /// Ends the session; harmless the second time.
    void Close();
    bool IsOpen() const { return m_session != nullptr; }
    /// skindesk.Error when the desk is closed, or when another thread asks.
    ZSession& Session() const;
    ZDocuments& Documents() const;

    /// Follows every action of the user: the host catches up.
    void Settle();
    /// The same at the end of a call: what the answering function raised meanwhile is raised.
    void Finish();

    /// None for null. One Python object stands for one model or tool as long as anybody holds it.
    py::object Wrap(ZModel* model);
    py::object Wrap(const std::vector<ZModel*>& models);
    py::object WrapTool(ZTool& tool, const std::string& name, const std::string& label);
    std::shared_ptr<ControlRef> WrapControl(const std::shared_ptr<ToolRef>& tool, ZtView& view);
    void Forget(const ZObject* object);

    py::object GetAnswer() const { return m_answer; }
    void SetAnswer(py::object answer);
    std::set<int> keys; ///< codes that are held

private:
    Door() = default;
    int AskAnswer(const ZtMessage& question);

    std::unique_ptr<ZSession> m_session;
    std::unique_ptr<ZDocuments> m_documents;
    std::thread::id m_thread = std::this_thread::get_id();
    py::object m_answer = py::none();
    std::exception_ptr m_raised; ///< by the answering function, in the midst of an event
    std::unordered_map<const ZObject*, std::weak_ptr<ModelRef>> m_models;
    std::unordered_map<const ZObject*, std::weak_ptr<ToolRef>> m_tools;
    std::unordered_map<const ZObject*, std::weak_ptr<ControlRef>> m_controls;
};

/// Models given as a list, or one alone. TypeError for what is no model, skindesk.Error for one that is gone.
std::vector<ZModel*> ModelsFrom(const py::object& models);
