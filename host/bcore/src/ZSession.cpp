// SPDX-License-Identifier: MIT
// The session: its life, tools, the scene, keys, history, and what follows an event.
#include "bcore/ZSession.h"

#include "Plugin.h"
#include "Watch.h"
#include "object/ZAction.h"
#include "object/ZCatalogue.h"
#include "object/ZShortCutKeyManager.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZConfigFile.h"
#include "zbaselib/ZReport.h"
#include "zconstraints/ZEvaluateManager.h"
#include "zmodel/ZSkin.h"
#include "zxtrobject/ZXtrObject.h"

#include <algorithm>
#include <optional>
#include <unordered_set>

namespace {
constexpr const char* kToolPath = "UI/Tools";
ZSession* s_session = nullptr;

/// A copy: a factory may itself change the catalogue.
std::optional<ZCatalogueEntry> FindTool(const std::string& name)
{
    const auto& catalogue = Object_GetCatalogue();
    const auto found = std::find_if(catalogue.begin(), catalogue.end(), [&name](const ZCatalogueEntry& entry) {
        return entry.path == kToolPath && entry.name == name;
    });
    return found == catalogue.end() ? std::nullopt : std::optional(*found);
}

/// Calls a tool's factory and takes what it made, if that is a tool.
ZTool* MakeTool(const ZCatalogueEntry& entry)
{
    std::string reason = ".";
    try {
        IObject* const made = entry.factory(entry.owner, entry.name.c_str(), nullptr);
        if (ZTool* tool = Object_Cast<ZTool>(made))
            return tool;
        if (ZObject* object = Object_FromInterface(made))
            object->DestroyObject();
    } catch (const ZHostMisuse&) {
        throw;
    } catch (const std::exception& exception) {
        reason = std::string(": ") + exception.what() + ".";
    } catch (...) {
        reason = ": it failed without a reason.";
    }
    ZReport_Warning("The tool \"" + entry.name + "\" could not be made" + reason);
    return nullptr;
}

bool IsGestureUnderWay()
{
    const auto& viewers = ZViewer::GetViewers();
    return ZUndoStack::TheOne()->IsTransactionOpen() ||
           std::any_of(viewers.begin(), viewers.end(),
                       [](const ZViewer* viewer) { return viewer->GetPressedButton() != 0; });
}

/// Nothing in the set of manipulators may point at what a tool took with it.
void RemoveManipulators(const std::vector<MadeManipulator>& made)
{
    for (const MadeManipulator& manipulator : made)
        if (manipulator.handle.IsValid())
            ZManipulator_GetManipulatorSet()->ManipulatorRemove(manipulator.manipulator);
}

/// What was added to the set of manipulators since it held `before`.
std::vector<MadeManipulator> ManipulatorsSince(const std::vector<ZManipulator*>& before)
{
    const std::unordered_set<const ZManipulator*> known(before.begin(), before.end());
    std::vector<MadeManipulator> made;
    for (ZManipulator* manipulator : ZManipulator_GetManipulatorSet()->GetManipulators())
        if (known.count(manipulator) == 0) {
            made.push_back({{}, manipulator});
            made.back().handle.Set(manipulator);
        }
    return made;
}

std::string CountOfVertices(int count) { return std::to_string(count) + (count == 1 ? " vertex" : " vertices"); }
} // namespace

ZSession::ZSession(const Options& options) : m_options(options), m_watch(std::make_unique<Watch>())
{
    if (s_session != nullptr)
        throw ZHostMisuse("ZSession: a session is open already; close it first");
    ZConfigFile_SetFolder(options.settingsFolder);
    m_scene = std::make_unique<ZScene>();
    m_viewer = std::make_unique<ZViewer>(m_scene.get());
    s_session = this;
}

ZSession::~ZSession()
{
    while (!m_tools.empty())
        CloseTool(m_tools.back());
    ClearScene();
    while (!m_plugins.empty())
        UnloadPlugin(m_plugins.back()->file);
    ZUndoStack::TheOne()->Clear();
    Object_ClearKeyStates();
    ZConfigFile_SetFolder("");
    m_viewer.reset();
    m_scene.reset();
    s_session = nullptr;
}

ZSession* ZSession::TheOne() { return s_session; }

ZTool* ZSession::OpenTool(const std::string& name)
{
    const std::optional<ZCatalogueEntry> entry = FindTool(name);
    if (!entry) {
        ZReport_Warning("There is no tool \"" + name + "\".");
        return nullptr;
    }
    const std::vector<ZManipulator*> before = ZManipulator_GetManipulatorSet()->GetManipulators();
    ZTool* const tool = MakeTool(*entry);
    std::vector<MadeManipulator> made = ManipulatorsSince(before);
    if (tool == nullptr) {
        RemoveManipulators(made);
        return nullptr;
    }
    m_watch->manipulators[tool] = std::move(made);
    m_tools.push_back(tool);
    tool->Arrange(tool->GetToolWidth(), tool->GetToolHeight());
    tool->ToolActivate();
    return tool;
}

void ZSession::CloseTool(ZTool* tool)
{
    const auto place = std::find(m_tools.begin(), m_tools.end(), tool);
    if (place == m_tools.end())
        return ZReport_Misuse("ZSession::CloseTool", "the tool is not open");
    EndGestures();
    if (tool->IsToolActive())
        tool->ToolDeactivate();
    m_tools.erase(std::find(m_tools.begin(), m_tools.end(), tool));
    tool->DestroyObject();
    const auto made = m_watch->manipulators.extract(tool);
    if (!made.empty())
        RemoveManipulators(made.mapped());
}

/// Cuts off what the user's hand has begun, and closes the steps that a guest forgot to close.
void ZSession::EndGestures()
{
    for (ZViewer* viewer : ZViewer::GetViewers())
        viewer->CancelGesture();
    ZUndoStack* const stack = ZUndoStack::TheOne();
    while (stack->IsTransactionOpen())
        stack->TransactionEnd(false, false);
}

void ZSession::ClearScene()
{
    EndGestures();
    ZEvaluateManager* const evaluation = ZEvaluateManager::TheOne();
    evaluation->DevicePause();
    ZConstraint::SetIgnoreSetupAllConnectors(true);
    ZXtrObject_Send(kSceneClearing);
    m_scene->Clear();
    ZUndoStack::TheOne()->Clear();
    ZConstraint::SetIgnoreSetupAllConnectors(false);
    evaluation->DeviceRelease();
}

void ZSession::PressKey(int key, int modifiers)
{
    const bool wasHeld = Object_GetCurrentKeyState(key, true);
    Object_SetKeyState(key, true);
    m_viewer->KeyPress(key, modifiers);
    const bool handled = Object_SendShortCut(kShortCutKeyEvent, kKeyEventPressed, key, modifiers);
    const ZActionDefinition* const frame = Object_GetActionManager()->QueryAction(kActionFrameSelection);
    if (!handled && frame->IsAction(kKeyEventPressed, key, modifiers)) {
        std::vector<ZModel*> selected;
        for (ZModel* model : m_scene->GetModels())
            if (model->IsSelected())
                selected.push_back(model);
        m_viewer->Frame(selected);
    }
    m_viewer->KeyRelease(key, modifiers);
    Object_SetKeyState(key, wasHeld);
}

bool ZSession::Undo() { return StepHistory(true); }
bool ZSession::Redo() { return StepHistory(false); }

bool ZSession::StepHistory(bool undo)
{
    ZUndoStack* const stack = ZUndoStack::TheOne();
    if (IsGestureUnderWay()) {
        ZReport_Status(std::string(undo ? "Undo" : "Redo") + " waits until the gesture under way has ended.");
        return false;
    }
    const std::vector<std::string> names = undo ? stack->GetUndoNames() : stack->GetRedoNames();
    if (names.empty()) {
        ZReport_Status(undo ? "There is nothing to undo." : "There is nothing to redo.");
        return false;
    }
    if (!(undo ? stack->Undo() : stack->Redo()))
        return false;
    ZReport_Status((undo ? "Undone" : "Redone") + (names[0].empty() ? "." : ": " + names[0]));
    return true;
}

void ZSession::AfterEvent()
{
    ZEvaluateManager* const evaluation = ZEvaluateManager::TheOne();
    if (evaluation->HasWork() && !evaluation->IsPaused())
        evaluation->Evaluate(m_scene->GetTime());

    int normalised = 0;
    for (const ZModel* model : m_scene->GetModels())
        if (ZSkin* skin = model->GetSkin())
            normalised += skin->TakeNormalisedCount();
    if (normalised > 0)
        ZReport_Status("normalised " + CountOfVertices(normalised));

    const std::uint64_t sceneState = Watch::SceneState(*m_scene);
    const std::uint64_t pictureState = Watch::PictureState(m_tools);
    const bool sceneChanged = sceneState != m_watch->sceneState;
    const bool pictureChanged = pictureState != m_watch->pictureState;
    m_watch->sceneState = sceneState;
    m_watch->pictureState = pictureState;
    if (sceneChanged)
        ZXtrObject_Send(kSceneChanged);
    if (sceneChanged || pictureChanged)
        m_viewer->Invalidate();
}
