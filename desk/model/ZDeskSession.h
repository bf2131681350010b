// SPDX-License-Identifier: MIT
// What the application knows and does, without a window: files, tools, steps, the hint line.
#pragma once

#include "bcore/ZSession.h"
#include "desk/model/ZJournal.h"
#include "documents/ZDocuments.h"
#include "object/ZCatalogue.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class ZtListBox;

/// One a process. Every action of the user ends with AfterEvent, which lets the host catch up and calls the listener.
class ZDeskSession
{
public:
    /// `journalFolder`: where unsaved work is kept for the case of a crash; empty: nowhere.
    explicit ZDeskSession(const ZSession::Options& options, const std::string& journalFolder = "");
    ~ZDeskSession();

    ZSession& Session() { return m_session; }
    ZDocuments& Documents() { return m_documents; }

    /// Opens a file and frames what came in. False with the sentence for the user in `*why`.
    bool Open(const std::string& path, std::string* why);
    /// For whoever reads the file on a thread of its own: may it be opened, and then the rest of Open. Answers the
    /// document's number.
    bool MayOpen(const std::string& path, std::string* why);
    int Adopt(ZReadDocument read);
    /// Saves the document `source` to `path`; unless it is a copy, that is where it is saved from now on. False with
    /// the sentence in `*why`.
    bool Save(const std::string& source, const std::string& path, const ZSaveOptions& options, std::string* why);
    /// The end of a saving that was written elsewhere.
    void FinishSave(ZSaveWork work);

    ZJournal& Journal() { return m_journal; }
    /// Has the journal write what has changed since the last time.
    void KeepJournal();
    /// Opens what a cut-off session left; it has unsaved changes and is saved where the user says.
    bool Recover(const ZLeftDocument& left, std::string* why);

    /// The path of the document that "save" means: the only one, or the one with the most recent edit; empty for none.
    std::string CurrentDocument();
    /// Where a document is saved: where it was last saved, else where it was opened. Of a new document, a proposal.
    std::string SavePath(const ZDocument& document) const;
    /// Closes all files and clears the scene.
    void CloseAll();
    /// "figure.glb*, hat.gltf - Skindesk": the names of the open files, a star at those with unsaved changes.
    std::string Title();

    /// The tool whose window the desk shows: the first of the catalogue at the start. Null when no plug-in offers one.
    ZTool* OpenFirstTool();
    /// Opens a tool of the catalogue by its name, in place of the one that is open.
    ZTool* OpenTool(const std::string& name);
    /// The tools that plug-ins offer.
    static std::vector<ZCatalogueEntry> GetTools();
    ZTool* GetTool() const { return m_tool; }
    /// Its name in the catalogue; empty while none is open.
    const std::string& OpenToolName() const { return m_toolName; }
    void CloseTool();
    /// The list of the tool on which models are dropped: its first one with check marks that takes drops; null for
    /// none.
    ZtListBox* ModelList() const;
    /// Drops every skinned model that is shown and not locked onto the tool's model list; how many were dropped.
    int AddAllSkinnedModels();
    /// Runs a menu command of the open tool; false when it does not know it.
    bool RunToolCommand(const char* command);

    /// Colours every skinned model by the weights of one bone: the one that is selected in the scene, and the last one
    /// that was while none is. Off, models have their own colours.
    void SetHeatMap(bool on);
    bool IsHeatMapOn() const { return m_heatMap; }

    /// What to do next, until the first edit was made; empty afterwards.
    std::string Hint();
    /// A name for a step of the undo stack that menus show: its own, or what it is when it has none.
    static std::string StepName(const std::string& name);

    /// One step back or forward in the history; false when there was none.
    bool Undo();
    bool Redo();
    /// As many steps back or forward as it takes until `count` steps can be undone.
    void GoToStep(int count);

    void AfterEvent();
    /// Called at the end of AfterEvent.
    void SetListener(std::function<void()> listener) { m_listener = std::move(listener); }

private:
    void ShowHeat();
    void SayLastStep();
    const ZModel* SelectedBone();

    ZSession m_session;
    ZDocuments m_documents;
    ZJournal m_journal;
    ZTool* m_tool = nullptr;
    std::string m_toolName;
    std::map<int, std::string> m_savedAs; ///< by document
    bool m_heatMap = false;
    int m_steps = 0; ///< that could be undone after the last event
    HdlZPlug m_heatBone;
    bool m_edited = false; ///< a weight was changed since the start
    std::function<void()> m_listener;
};
