// SPDX-License-Identifier: MIT
// The menus of the window.
#include "desk/model/ZDeskSession.h"
#include "desk/windows/DocumentCommands.h"
#include "desk/windows/HelpTexts.h"
#include "desk/windows/MainWindow.h"
#include "desk/windows/Preferences.h"
#include "desk/windows/StatusLine.h"
#include "object/ZUndoStack.h"
#include "zmanipulator/ZManipulator.h"

#include <QActionGroup>
#include <QCoreApplication>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QSignalBlocker>

namespace {

constexpr int kUnselectBit = 4; ///< of the manipulation preferences: a drag over nothing clears the selection
constexpr char kClearVertexLists[] = "Clear All Vertex Lists";
constexpr char kPoseSwitch[] = "EditPose";

} // namespace

QAction* MainWindow::AddCommand(QMenu* menu, const char* name, const QString& text, const QKeySequence& keys,
                                const std::function<void()>& run)
{
    QAction* const action = menu->addAction(text);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(keys);
    connect(action, &QAction::triggered, this, run);
    return action;
}

QAction* MainWindow::AddSwitch(QMenu* menu, const char* name, const QString& text, const QKeySequence& keys, bool on,
                               const std::function<void(bool)>& set)
{
    QAction* const action = menu->addAction(text);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(keys);
    action->setCheckable(true);
    action->setChecked(on);
    connect(action, &QAction::toggled, this, set);
    return action;
}

void MainWindow::BuildMenus()
{
    BuildFileMenu();
    BuildEditMenu();
    BuildViewMenu();
    BuildToolsMenu();
    BuildHelpMenu();
}

void MainWindow::BuildFileMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&File"));
    AddCommand(menu, "FileOpen", tr("&Open..."), QKeySequence::Open, [this] { m_documents->Open(); });
    m_recent = menu->addMenu(tr("Open &Recent"));
    FillRecentFiles();
    AddCommand(menu, "FileCloseAll", tr("&Close All Files"), QKeySequence::Close, [this] { m_documents->CloseAll(); });
    menu->addSeparator();
    AddCommand(menu, "FileSave", tr("&Save"), QKeySequence::Save, [this] { m_documents->Save(); });
    AddCommand(menu, "FileSaveAs", tr("Save &As..."), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
               [this] { m_documents->SaveAs(); });
    AddCommand(menu, "FileExport", tr("Save a Copy for &Export..."), QKeySequence(Qt::CTRL | Qt::Key_E),
               [this] { m_documents->SaveCopyForExport(); });
    menu->addSeparator();
    AddCommand(menu, "FileExportWeights", tr("Export &Weights..."), {}, [this] { m_documents->ExportWeights(); });
    AddCommand(menu, "FileImportWeights", tr("&Import Weights..."), {}, [this] { m_documents->ImportWeights(); });
    AddCommand(menu, "FileScreenshot", tr("Screens&hot..."), {}, [this] { m_documents->SaveScreenshot(); });
    menu->addSeparator();
    AddCommand(menu, "FileQuit", tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), [this] { close(); });
}

void MainWindow::FillRecentFiles()
{
    m_recent->clear();
    const QStringList files = Preferences::RecentFiles();
    for (const QString& file : files) {
        QAction* const action = m_recent->addAction(QFileInfo(file).fileName(), this, [this, file] { OpenFile(file); });
        action->setToolTip(file);
        action->setStatusTip(file);
    }
    m_recent->addSeparator();
    m_recent->addAction(tr("Clear This List"), this, [this] {
        Preferences::ClearRecentFiles();
        FillRecentFiles();
    });
    m_recent->setEnabled(!files.isEmpty());
    m_recent->setToolTipsVisible(true);
}

void MainWindow::BuildEditMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&Edit"));
    m_undo = AddCommand(menu, "EditUndo", tr("&Undo"), QKeySequence::Undo, [this] { m_desk.Undo(); });
    m_redo = AddCommand(menu, "EditRedo", tr("&Redo"), QKeySequence::Redo, [this] { m_desk.Redo(); });
    AddCommand(menu, "EditHistory", tr("&History"), {}, [this] {
        auto* const dock = findChild<QDockWidget*>(QStringLiteral("HistoryDock"));
        dock->show();
        dock->raise();
    });
    menu->addSeparator();
    const auto setUnselect = [](bool on) {
        const int bits = ZManipulator_GetManipulationUnselect();
        ZManipulator_SetManipulationUnselect(on ? bits | kUnselectBit : bits & ~kUnselectBit);
        Preferences::SetChoice(QStringLiteral("dragOverNothingClears"), on);
    };
    const bool unselect = Preferences::Choice(QStringLiteral("dragOverNothingClears"), true);
    setUnselect(unselect);
    AddSwitch(menu, "EditUnselect", tr("&Drag over Nothing Clears the Selection"), {}, unselect, setUnselect);
    menu->addSeparator();
    AddSwitch(menu, kPoseSwitch, tr("&Pose Bones in the Viewer"), QKeySequence(Qt::CTRL | Qt::Key_P),
              ZTransformManager::TheOne()->IsPosing(), [this](bool on) {
                  ZTransformManager::TheOne()->SetPosing(on);
                  m_desk.AfterEvent();
              });
}

void MainWindow::BuildViewMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&View"));
    ZViewer& viewer = m_desk.Session().GetViewer();
    AddCommand(menu, "ViewFrame", tr("&Frame Selection\tF"), {}, [this] {
        m_desk.Session().PressKey('F', 0);
        m_desk.AfterEvent();
    });
    AddCommand(menu, "ViewFrameAll", tr("Frame &All"), QKeySequence(Qt::CTRL | Qt::Key_F), [this] {
        m_desk.Session().GetViewer().Frame({});
        m_desk.AfterEvent();
    });
    menu->addSeparator();
    AddShadings(menu);
    menu->addSeparator();
    const auto kept = [&](const char* name, const QString& text, Qt::Key key, void (ZViewer::*set)(bool)) {
        const bool on = Preferences::Choice(QLatin1String(name), true);
        (viewer.*set)(on);
        AddSwitch(menu, name, text, QKeySequence(Qt::CTRL | key), on, [&viewer, set, name](bool now) {
            (viewer.*set)(now);
            Preferences::SetChoice(QLatin1String(name), now);
        });
    };
    kept("ViewBones", tr("&Bones"), Qt::Key_B, &ZViewer::SetShowBones);
    kept("ViewGrid", tr("&Grid"), Qt::Key_G, &ZViewer::SetShowGrid);
    kept("ViewPictures", tr("&Textures"), Qt::Key_T, &ZViewer::SetShowPictures);
    AddSwitch(menu, "ViewHeatMap", tr("&Heat Map of the Selected Bone"), QKeySequence(Qt::CTRL | Qt::Key_H),
              m_desk.IsHeatMapOn(), [this](bool on) { m_desk.SetHeatMap(on); });
    menu->addSeparator();
    for (QDockWidget* const dock : findChildren<QDockWidget*>())
        menu->addAction(dock->toggleViewAction());
    menu->addSeparator();
    AddCommand(menu, "ViewDefaultLayout", tr("&Default Layout"), {}, [this] { ResetLayout(); });
}

/// How surfaces are drawn, one way at a time; the next start draws them the same way.
void MainWindow::AddShadings(QMenu* menu)
{
    const struct
    {
        const char* name;
        QString text;
        Qt::Key key;
        ZShading shading;
    } ways[] = {{"ViewShaded", tr("&Shaded"), Qt::Key_1, ZShading::Shaded},
                {"ViewWire", tr("&Wire"), Qt::Key_2, ZShading::Wire},
                {"ViewShadedWire", tr("Shaded w&ith Wire"), Qt::Key_3, ZShading::ShadedWire}};
    ZViewer& viewer = m_desk.Session().GetViewer();
    auto* const group = new QActionGroup(this);
    for (const auto& way : ways) {
        if (Preferences::Choice(QLatin1String(way.name), false))
            viewer.SetShading(way.shading);
        const auto choose = [&viewer, name = way.name, shading = way.shading](bool on) {
            Preferences::SetChoice(QLatin1String(name), on);
            if (on)
                viewer.SetShading(shading);
        };
        AddSwitch(menu, way.name, way.text, QKeySequence(Qt::CTRL | way.key), false, choose);
    }
    for (const auto& way : ways) {
        QAction* const action = findChild<QAction*>(QLatin1String(way.name));
        action->setChecked(viewer.GetShading() == way.shading);
        group->addAction(action);
    }
}

void MainWindow::BuildToolsMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&Tools"));
    for (const ZCatalogueEntry& entry : ZDeskSession::GetTools())
        AddCommand(menu, ("Tool" + entry.name).c_str(), QString::fromStdString(entry.description), {},
                   [this, name = entry.name] { OpenTool(name); });
    menu->addSeparator();
    AddCommand(menu, "ToolsAddAll", tr("&Add All Skinned Models"), QKeySequence(Qt::CTRL | Qt::Key_D),
               [this] { m_desk.AddAllSkinnedModels(); });
    AddCommand(menu, "ToolsClearVertexLists", QCoreApplication::translate("MainWindow", kClearVertexLists), {},
               [this] { m_desk.RunToolCommand(kClearVertexLists); });
}

void MainWindow::BuildHelpMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&Help"));
    AddCommand(menu, "HelpFirstEdit", tr("A &First Edit"), QKeySequence::HelpContents,
               [this] { ShowFirstEditHelp(this); });
    AddCommand(menu, "HelpKeys", tr("&Keys and Buttons"), {}, [this] { ShowKeysHelp(this); });
    AddCommand(menu, "HelpWarnings", tr("&Warnings"), {}, [this] { m_status->ShowWarnings(); });
    menu->addSeparator();
    AddCommand(menu, "HelpAbout", tr("&About Skindesk"), {}, [this] { ShowAbout(this); });
}

void MainWindow::SyncMenus()
{
    // Posing also ends without the menu, when a tool takes the viewer.
    if (auto* const pose = findChild<QAction*>(QLatin1String(kPoseSwitch))) {
        const QSignalBlocker quiet(pose);
        pose->setChecked(ZTransformManager::TheOne()->IsPosing());
    }
    const ZUndoStack& stack = *ZUndoStack::TheOne();
    if (m_menusShow == stack.GetChangeCount())
        return;
    m_menusShow = stack.GetChangeCount();
    const auto show = [](QAction* action, const QString& plain, const std::vector<std::string>& names) {
        action->setEnabled(!names.empty());
        const QString name = names.empty() ? QString() : QString::fromStdString(ZDeskSession::StepName(names.front()));
        action->setText(name.isEmpty() ? plain : plain + QLatin1Char(' ') + name);
    };
    show(m_undo, tr("&Undo"), stack.GetUndoNames());
    show(m_redo, tr("&Redo"), stack.GetRedoNames());
}
