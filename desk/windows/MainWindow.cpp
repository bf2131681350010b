// SPDX-License-Identifier: MIT
// The parts of the window and how they follow the session.
#include "desk/windows/MainWindow.h"

#include "desk/model/ZDeskSession.h"
#include "desk/viewer/ViewerWidget.h"
#include "desk/widgets/FormWidget.h"
#include "desk/windows/DocumentCommands.h"
#include "desk/windows/HistoryPanel.h"
#include "desk/windows/Icons.h"
#include "desk/windows/KeyInput.h"
#include "desk/windows/PoseDock.h"
#include "desk/windows/Preferences.h"
#include "desk/windows/SceneDock.h"
#include "desk/windows/StatusLine.h"
#include "desk/windows/TimelineBar.h"
#include "desk/windows/ToolDock.h"

#include <QCloseEvent>
#include <QDockWidget>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace {
constexpr int kFirstWidth = 1440, kFirstHeight = 940;
constexpr int kSceneWidth = 240;
constexpr int kJournalMilliseconds = 20'000; ///< a crash costs less than a minute, also while a copy is written
constexpr int kLowScreen = 880;              ///< on a screen lower than this, the docks at the left share one place
} // namespace

MainWindow::MainWindow(ZDeskSession& desk, QWidget* parent)
    : QMainWindow(parent), m_desk(desk), m_messages(std::make_unique<MessageBoxes>(this)),
      m_documents(new DocumentCommands(desk, this))
{
    setObjectName(QStringLiteral("MainWindow"));
    setWindowIcon(MakeIcon(DeskIcon::Application));
    setAcceptDrops(true);
    setDockNestingEnabled(true);
    m_status = new StatusLine(this);
    setStatusBar(m_status);
    BuildCentre();
    BuildDocks();
    BuildMenus();
    new KeyInput(desk, this);
    // Later: the file may have been opened by an entry of the very menu that is filled anew.
    connect(m_documents, &DocumentCommands::fileOpened, this, &MainWindow::FillRecentFiles, Qt::QueuedConnection);
    m_desk.SetListener([this] { Sync(); });
    m_desk.OpenFirstTool();
    m_tool->ShowTool();
    RestoreLayout();
    Sync();
    m_viewer->setFocus();
    m_journal = new QTimer(this);
    m_journal->setObjectName(QStringLiteral("JournalTimer"));
    connect(m_journal, &QTimer::timeout, this, [this] { m_desk.KeepJournal(); });
    m_journal->start(kJournalMilliseconds);
}

MainWindow::~MainWindow()
{
    m_desk.SetListener({});
    m_tool->ForgetTool();
}

void MainWindow::BuildCentre()
{
    auto* const centre = new QWidget(this);
    auto* const column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    m_hintBar = new QWidget(centre);
    m_hintBar->setObjectName(QStringLiteral("HintBar"));
    m_hintBar->setAutoFillBackground(true);
    m_hintBar->setBackgroundRole(QPalette::Base);
    m_hintBar->setForegroundRole(QPalette::Text);
    auto* const row = new QHBoxLayout(m_hintBar);
    row->setContentsMargins(8, 3, 8, 3);
    m_hint = new QLabel(m_hintBar);
    m_hint->setObjectName(QStringLiteral("Hint"));
    m_hint->setWordWrap(true);
    auto* const add = new QPushButton(tr("Add all skinned models"), m_hintBar);
    add->setObjectName(QStringLiteral("AddAllSkinnedModels"));
    add->setToolTip(tr("Drops every skinned model of the scene on the tool"));
    connect(add, &QPushButton::clicked, this, [this] { m_desk.AddAllSkinnedModels(); });
    row->addWidget(m_hint, 1);
    row->addWidget(add);
    column->addWidget(m_hintBar);

    ViewerContext context;
    context.afterEvent = [this] { m_desk.AfterEvent(); };
    context.fileDropped = [this](const QString& path) { OpenFile(path); };
    m_viewer = MakeViewerWidget(m_desk.Session().GetViewer(), context, centre);
    column->addWidget(m_viewer, 1);
    setCentralWidget(centre);
}

QDockWidget* MainWindow::AddDock(const char* name, const QString& title, QWidget* content, Qt::DockWidgetArea area)
{
    auto* const dock = new QDockWidget(title, this);
    dock->setObjectName(QLatin1String(name));
    dock->setWidget(content);
    addDockWidget(area, dock);
    return dock;
}

void MainWindow::BuildDocks()
{
    m_tree = new SceneTreeView(m_desk, this);
    QDockWidget* const scene = AddDock("SceneDock", tr("Scene"), m_tree, Qt::LeftDockWidgetArea);
    m_timeline = new TimelineBar(m_desk, this);
    m_timeline->setMaximumHeight(m_timeline->sizeHint().height());
    QDockWidget* const timeline = AddDock("TimelineDock", tr("Timeline"), m_timeline, Qt::BottomDockWidgetArea);
    timeline->setTitleBarWidget(new QWidget(timeline)); // one line high: a title would double it
    m_tool = new ToolDock(m_desk, this);
    addDockWidget(Qt::BottomDockWidgetArea, m_tool);
    splitDockWidget(timeline, m_tool, Qt::Vertical);
    m_pose = new PosePanel(m_desk, this);
    QDockWidget* const pose = AddDock("PoseDock", tr("Pose"), m_pose, Qt::LeftDockWidgetArea);
    m_history = new HistoryPanel(m_desk, this);
    QDockWidget* const history = AddDock("HistoryDock", tr("History"), m_history, Qt::LeftDockWidgetArea);
    const bool low = screen()->availableSize().height() < kLowScreen;
    if (low)
        tabifyDockWidget(scene, pose);
    tabifyDockWidget(pose, history);
    (low ? scene : pose)->raise();
    resizeDocks({scene}, {kSceneWidth}, Qt::Horizontal);
}

void MainWindow::RestoreLayout()
{
    const QSize room = screen()->availableSize();
    resize(std::min(kFirstWidth, room.width()), std::min(kFirstHeight, room.height()));
    m_firstLayout = saveState();
    const Preferences::Layout last = Preferences::LastLayout();
    if (!last.geometry.isEmpty())
        restoreGeometry(last.geometry);
    m_hasOwnLayout = !last.state.isEmpty() && restoreState(last.state);
}

/// The tool gets the height that it asks for, as far as half of the window.
void MainWindow::ShareHeight()
{
    const int wanted =
        std::min(m_tool->WantedHeight() + m_tool->style()->pixelMetric(QStyle::PM_TitleBarHeight), height() / 2);
    if (wanted > 0)
        resizeDocks({m_tool}, {wanted}, Qt::Vertical);
    auto* const scene = findChild<QDockWidget*>(QStringLiteral("SceneDock"));
    auto* const pose = findChild<QDockWidget*>(QStringLiteral("PoseDock"));
    resizeDocks({scene}, {kSceneWidth}, Qt::Horizontal);
    resizeDocks({scene, pose}, {height(), m_pose->sizeHint().height()}, Qt::Vertical);
}

void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (!m_shown && !m_hasOwnLayout)
        ShareHeight();
    m_shown = true;
}

void MainWindow::ResetLayout()
{
    restoreState(m_firstLayout);
    for (QDockWidget* const dock : findChildren<QDockWidget*>())
        dock->show();
    ShareHeight();
    findChild<QDockWidget*>(QStringLiteral("PoseDock"))->raise();
    findChild<QDockWidget*>(QStringLiteral("SceneDock"))->raise();
}

FormWidget* MainWindow::ToolForm() const { return m_tool->Form(); }

bool MainWindow::OpenFile(const QString& path) { return m_documents->OpenFile(path); }

void MainWindow::OpenTool(const std::string& name)
{
    if (m_desk.OpenToolName() != name) {
        m_tool->ForgetTool();
        m_desk.OpenTool(name);
        m_tool->ShowTool();
    }
    m_tool->show();
    m_tool->raise();
    Sync();
}

void MainWindow::SyncHint()
{
    const QString hint = QString::fromStdString(m_desk.Hint());
    m_hint->setText(hint);
    m_hintBar->setVisible(!hint.isEmpty());
}

void MainWindow::Sync()
{
    m_tool->Sync();
    m_tree->Sync();
    m_timeline->Sync();
    m_pose->Sync();
    m_history->Sync();
    SyncHint();
    SyncMenus();
    const QString title = QString::fromStdString(m_desk.Title());
    if (windowTitle() != title)
        setWindowTitle(title);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!m_documents->AskBeforeLosing()) {
        event->ignore();
        return;
    }
    Preferences::SetLastLayout({saveGeometry(), saveState()});
    event->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile())
            OpenFile(url.toLocalFile());
}
