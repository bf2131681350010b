// SPDX-License-Identifier: MIT
// The application's actions on files, tools, the history and the heat map.
#include "desk/model/ZDeskSession.h"

#include "gltf/FileError.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZModel.h"
#include "zmodel/ZPose.h"
#include "zmodel/ZSkin.h"
#include "ztoolkit/ZtListBox.h"

#include <algorithm>
#include <filesystem>

using skindesk::gltf::FileError;

namespace {

constexpr char kToolPath[] = "UI/Tools";
constexpr char kWeightStep[] = "Apply Weight Change";

bool CanTake(const ZModel& model) { return model.GetSkin() != nullptr && !model.IsHidden() && !model.IsLocked(); }

} // namespace

ZDeskSession::ZDeskSession(const ZSession::Options& options, const std::string& journalFolder)
    : m_session(options), m_documents(m_session), m_journal(m_documents, journalFolder)
{
    m_session.LoadPlugins();
}

ZDeskSession::~ZDeskSession()
{
    m_listener = {};
    CloseTool();
}

bool ZDeskSession::MayOpen(const std::string& path, std::string* why)
{
    for (const ZDocument& document : m_documents.GetDocuments()) {
        std::error_code failed;
        if (std::filesystem::equivalent(document.path, path, failed)) {
            *why = path + ": is open already";
            return false;
        }
    }
    return true;
}

bool ZDeskSession::Open(const std::string& path, std::string* why)
{
    if (!MayOpen(path, why))
        return false;
    try {
        Adopt(ZDocuments::Read(path));
    } catch (const FileError& error) {
        *why = error.what();
        return false;
    }
    return true;
}

int ZDeskSession::Adopt(ZReadDocument read)
{
    const std::string name = std::filesystem::path(read.path).filename().string();
    const std::vector<ZModel*> models = m_documents.Adopt(std::move(read));
    m_session.GetViewer().Frame({});
    ZReport_Status("Opened " + name + ": " + std::to_string(models.size()) +
                   (models.size() == 1 ? " model" : " models"));
    AfterEvent();
    return m_documents.GetDocuments().back().id;
}

bool ZDeskSession::Save(const std::string& source, const std::string& path, const ZSaveOptions& options,
                        std::string* why)
{
    ZSaveOptions meant = options;
    meant.source = source;
    try {
        ZSaveWork work = m_documents.PrepareSave(path, meant);
        ZDocuments::WriteSave(work);
        FinishSave(std::move(work));
    } catch (const FileError& error) {
        *why = error.what();
        return false;
    }
    return true;
}

void ZDeskSession::FinishSave(ZSaveWork work)
{
    if (!work.asCopy)
        m_savedAs[work.document] = work.path;
    const std::string name = std::filesystem::path(work.path).filename().string();
    const auto report = m_documents.FinishSave(std::move(work));
    for (const std::string& warning : report.warnings)
        ZReport_Warning(warning);
    ZReport_Status("Saved " + name + ": " + std::to_string(report.verticesChanged) +
                   " vertices differ from the file that was opened");
    AfterEvent();
}

void ZDeskSession::KeepJournal()
{
    std::map<int, std::string> originals;
    for (const ZDocument& document : m_documents.GetDocuments())
        originals[document.id] = SavePath(document);
    m_journal.Keep(originals);
}

bool ZDeskSession::Recover(const ZLeftDocument& left, std::string* why)
{
    try {
        ZReadDocument read = ZDocuments::Read(left.copy);
        read.isNew = true;
        m_savedAs[Adopt(std::move(read))] = left.original;
    } catch (const FileError& error) {
        *why = error.what();
        return false;
    }
    AfterEvent();
    return true;
}

std::string ZDeskSession::CurrentDocument()
{
    std::string current;
    for (const ZDocument& document : m_documents.GetDocuments())
        if (current.empty() || document.unsavedChanges)
            current = document.path;
    return current;
}

std::string ZDeskSession::SavePath(const ZDocument& document) const
{
    const auto saved = m_savedAs.find(document.id);
    if (saved != m_savedAs.end())
        return saved->second;
    std::filesystem::path path = document.path;
    const bool isOurs = path.extension() == ".glb" || path.extension() == ".gltf";
    return document.isNew && !isOurs ? path.replace_extension(".glb").string() : path.string();
}

void ZDeskSession::CloseAll()
{
    m_documents.Clear();
    m_savedAs.clear();
    AfterEvent();
}

std::string ZDeskSession::Title()
{
    std::string title;
    for (const ZDocument& document : m_documents.GetDocuments()) {
        title += title.empty() ? "" : ", ";
        title += std::filesystem::path(SavePath(document)).filename().string();
        title += document.unsavedChanges ? "*" : "";
    }
    return title.empty() ? "Skindesk" : title + " - Skindesk";
}

std::vector<ZCatalogueEntry> ZDeskSession::GetTools()
{
    std::vector<ZCatalogueEntry> tools;
    for (const ZCatalogueEntry& entry : Object_GetCatalogue())
        if (entry.path == kToolPath)
            tools.push_back(entry);
    return tools;
}

ZTool* ZDeskSession::OpenFirstTool()
{
    const std::vector<ZCatalogueEntry> tools = GetTools();
    return tools.empty() ? nullptr : OpenTool(tools.front().name);
}

ZTool* ZDeskSession::OpenTool(const std::string& name)
{
    CloseTool();
    m_tool = m_session.OpenTool(name);
    m_toolName = m_tool != nullptr ? name : std::string();
    AfterEvent();
    return m_tool;
}

void ZDeskSession::CloseTool()
{
    if (m_tool != nullptr)
        m_session.CloseTool(m_tool);
    m_tool = nullptr;
    m_toolName.clear();
}

ZtListBox* ZDeskSession::ModelList() const
{
    if (m_tool == nullptr)
        return nullptr;
    std::vector<ZtView*> views;
    m_tool->CollectViews(views);
    for (ZtView* const view : views)
        if (auto* const list = Object_Cast<ZtListBox>(static_cast<ZObject*>(view)))
            if (list->HasCheckMarks() && list->HasHandler(kViewDragAndDrop))
                return list;
    return nullptr;
}

int ZDeskSession::AddAllSkinnedModels()
{
    ZtListBox* const list = ModelList();
    if (list == nullptr)
        return 0;
    GlobalDragAndDrop_Begin();
    int count = 0;
    for (ZModel* const model : m_session.GetScene().GetModels())
        if (CanTake(*model)) {
            GlobalDragAndDrop_Add(model, 0);
            ++count;
        }
    if (count == 0)
        GlobalDragAndDrop_End();
    else
        GlobalDragAndDrop_DropOn(list);
    AfterEvent();
    ZReport_Status(count == 0
                       ? "There is no skinned model that is shown and not locked"
                       : "Dropped " + std::to_string(count) + (count == 1 ? " model" : " models") + " on the tool");
    return count;
}

bool ZDeskSession::RunToolCommand(const char* command)
{
    auto* const executor = dynamic_cast<IMenuCommandExecutor*>(m_tool);
    if (executor == nullptr || !executor->ExecuteMenuCommand(command))
        return false;
    AfterEvent();
    return true;
}

void ZDeskSession::SetHeatMap(bool on)
{
    m_heatMap = on;
    AfterEvent();
}

const ZModel* ZDeskSession::SelectedBone()
{
    for (ZModel* const model : m_session.GetScene().GetModels())
        if (model->IsSelected() && model->IsBone()) {
            m_heatBone.Set(model);
            return model;
        }
    return static_cast<ZModel*>(m_heatBone.Get());
}

/// Brings every skin to the link that it is to show; the picture is out of date only when one was changed.
void ZDeskSession::ShowHeat()
{
    const ZModel* const bone = m_heatMap ? SelectedBone() : nullptr;
    for (ZModel* const model : m_session.GetScene().GetModels()) {
        ZSkin* const skin = model->GetSkin();
        if (skin == nullptr)
            continue;
        const double link = bone != nullptr ? skin->FindLink(bone) : -1;
        if (link == skin->GetDisplayValue())
            continue;
        skin->SetSkinDisplayValue(link);
        m_session.GetViewer().Invalidate();
    }
}

std::string ZDeskSession::Hint()
{
    std::vector<std::string> names = ZUndoStack::TheOne()->GetUndoNames();
    m_edited = m_edited || std::find(names.begin(), names.end(), kWeightStep) != names.end();
    if (m_edited)
        return "";
    if (m_session.GetScene().GetModels().empty())
        return "Open a character: File, Open, or drop a file on this window";
    const ZtListBox* const list = ModelList();
    if (list == nullptr)
        return "";
    std::erase_if(names, [](const std::string& name) { return ZPose_IsStepName(name.c_str()); });
    if (names.empty())
        return "Drag models from the scene onto the model list, or press \"Add all skinned models\"";
    if (std::find(names.begin(), names.end(), std::string()) == names.end())
        return "Drag a rectangle over vertices in the viewer";
    return "Select bones in the bone list, then move a slider or type a weight in per cent";
}

std::string ZDeskSession::StepName(const std::string& name) { return name.empty() ? "Vertex Selection" : name; }

bool ZDeskSession::Undo()
{
    const bool done = m_session.Undo();
    AfterEvent();
    return done;
}

bool ZDeskSession::Redo()
{
    const bool done = m_session.Redo();
    m_steps = ZUndoStack::TheOne()->GetUndoCount(); // the session has said it
    AfterEvent();
    return done;
}

void ZDeskSession::GoToStep(int count)
{
    const ZUndoStack* const stack = ZUndoStack::TheOne();
    while (stack->GetUndoCount() > count && m_session.Undo()) {
    }
    while (stack->GetUndoCount() < count && m_session.Redo()) {
    }
    m_steps = stack->GetUndoCount();
    AfterEvent();
}

/// A step that was closed since the last event is what the last gesture did.
void ZDeskSession::SayLastStep()
{
    const ZUndoStack* const stack = ZUndoStack::TheOne();
    const int steps = stack->IsTransactionOpen() ? m_steps : stack->GetUndoCount();
    if (steps > m_steps && stack->GetRedoCount() == 0)
        ZReport_Status(StepName(stack->GetUndoNames().front()));
    m_steps = steps;
}

void ZDeskSession::AfterEvent()
{
    SayLastStep();
    m_session.AfterEvent();
    ShowHeat();
    m_journal.DropSaved();
    if (m_listener)
        m_listener();
}
