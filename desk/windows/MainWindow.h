// SPDX-License-Identifier: MIT
// The window of the application.
#pragma once

#include "desk/windows/MessageBoxes.h"

#include <QMainWindow>

#include <memory>

class DocumentCommands;
class FormWidget;
class HistoryPanel;
class PosePanel;
class QLabel;
class QMenu;
class QPushButton;
class QTimer;
class SceneTreeView;
class StatusLine;
class TimelineBar;
class ToolDock;
class ZDeskSession;

/// The viewer in the middle, scene, tool, timeline, pose and history in docks about it, the status line below. Every
/// action of the user ends in the session's AfterEvent, which calls Sync; Sync brings everything that is shown up to
/// what is true. Widgets keep nothing of their own that another one would have to be told.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindow(ZDeskSession& desk, QWidget* parent = nullptr);
    ~MainWindow() override;

    bool OpenFile(const QString& path);
    void Sync();
    /// Puts docks and window back to how they were at the very first start.
    void ResetLayout();
    QWidget* Viewer() const { return m_viewer; }
    FormWidget* ToolForm() const;
    DocumentCommands& Documents() { return *m_documents; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // The parts of the window (MainWindow.cpp).
    void BuildCentre();
    void BuildDocks();
    QDockWidget* AddDock(const char* name, const QString& title, QWidget* content, Qt::DockWidgetArea area);
    void RestoreLayout();
    void ShareHeight();
    void SyncHint();
    void OpenTool(const std::string& name);

    // The menus (MainWindowMenus.cpp).
    void BuildMenus();
    void BuildFileMenu();
    void BuildEditMenu();
    void BuildViewMenu();
    void AddShadings(QMenu* menu);
    void BuildToolsMenu();
    void BuildHelpMenu();
    void FillRecentFiles();
    void SyncMenus();
    QAction* AddCommand(QMenu* menu, const char* name, const QString& text, const QKeySequence& keys,
                        const std::function<void()>& run);
    QAction* AddSwitch(QMenu* menu, const char* name, const QString& text, const QKeySequence& keys, bool on,
                       const std::function<void(bool)>& set);

    ZDeskSession& m_desk;
    std::unique_ptr<MessageBoxes> m_messages;
    DocumentCommands* m_documents;
    QWidget* m_viewer = nullptr;
    QWidget* m_hintBar = nullptr;
    QLabel* m_hint = nullptr;
    StatusLine* m_status = nullptr;
    SceneTreeView* m_tree = nullptr;
    ToolDock* m_tool = nullptr;
    TimelineBar* m_timeline = nullptr;
    PosePanel* m_pose = nullptr;
    HistoryPanel* m_history = nullptr;
    QMenu* m_recent = nullptr;
    QTimer* m_journal = nullptr;
    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
    long m_menusShow = -1; ///< the history's change count when undo and redo were last named
    QByteArray m_firstLayout;
    bool m_hasOwnLayout = false; ///< the layout of an earlier start was restored
    bool m_shown = false;
};
