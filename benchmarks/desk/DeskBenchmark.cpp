// SPDX-License-Identifier: MIT
// What a user of the desk waits for: the start of the window, and lists of a million vertices.
//
// desk_benchmarks [--vertices N]: prints the time from the start of the process to the first picture of Fox.glb in the
// window, and the longest pauses of the event loop while N selected vertices (a million) are scrolled, filtered and
// selected in the list.
#include "EventLoopProbe.h"

#include "desk/model/ZDeskSession.h"
#include "desk/viewer/ViewerWidget.h"
#include "desk/widgets/FormWidget.h"
#include "desk/windows/MainWindow.h"
#include "object/ZAction.h"
#include "zmanipulator/ZViewer.h"
#include "ztoolkit/ZtListBox.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QLineEdit>
#include <QProcess>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>

#include <cstdio>
#include <ctime>
#include <memory>
#include <unistd.h>

namespace {

constexpr char kFox[] = SKINDESK_SOURCE_DIR "/tests/data/skinned/Fox.glb";

/// Seconds since the process began, by the system's own account.
double ProcessAge()
{
    std::FILE* const file = std::fopen("/proc/self/stat", "r");
    if (file == nullptr)
        return -1;
    unsigned long long started = 0;
    const int read = std::fscanf(file,
                                 "%*d %*s %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %*u %*u %*d %*d %*d %*d %*d "
                                 "%*d %llu",
                                 &started);
    std::fclose(file);
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    const double since = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    return read == 1 ? since - static_cast<double>(started) / static_cast<double>(sysconf(_SC_CLK_TCK)) : -1;
}

struct Desk
{
    Desk() : session(ZSession::Options()), window(session)
    {
        window.resize(1400, 900);
        window.show();
    }
    ZtListBox* VertexList()
    {
        std::vector<ZtView*> views;
        session.GetTool()->CollectViews(views);
        for (ZtView* const view : views)
            if (view->GetObjectName() == "ListVertexList")
                return static_cast<ZtListBox*>(view);
        return nullptr;
    }
    ZDeskSession session;
    MainWindow window;
};

void MeasureStart()
{
    Desk desk;
    if (!desk.window.OpenFile(QString::fromLatin1(kFox)))
        return;
    desk.window.repaint();
    desk.window.Viewer()->repaint();
    QApplication::processEvents();
    std::printf("start of the process to the picture of Fox.glb: %.2f s (at most 1.5)\n", ProcessAge());
}

void MeasureList(int vertices)
{
    const QTemporaryDir folder;
    const QString big = folder.filePath(QStringLiteral("big.glb"));
    const int made = QProcess::execute(QStringLiteral("/usr/bin/python3"),
                                       {QStringLiteral(SKINDESK_SOURCE_DIR "/samples/make_big.py"),
                                        QStringLiteral("--vertices"), QString::number(vertices), big});
    Desk desk;
    EventLoopProbe probe;
    if (made != 0 || !desk.window.OpenFile(big))
        return;
    desk.session.AddAllSkinnedModels();
    ZViewer& viewer = desk.session.Session().GetViewer();
    viewer.Press(1, 1, kButtonLeft, 0);
    viewer.Move(viewer.GetWidth() - 2, viewer.GetHeight() - 2);
    viewer.Release(viewer.GetWidth() - 2, viewer.GetHeight() - 2);
    desk.session.AfterEvent();
    ZtListBox* const list = desk.VertexList();
    auto* const view = desk.window.ToolForm()->FindWidget(*list)->findChild<QAbstractItemView*>();
    std::printf("vertices listed: %d, selected: %d\n", list->GetRowCount(), list->GetSelectedCount());
    probe.Live(500);

    QScrollBar* const bar = view->verticalScrollBar();
    probe.Restart();
    for (int step = 0; step <= 400; ++step) {
        bar->setValue(static_cast<int>(static_cast<long long>(bar->maximum()) * step / 400));
        probe.Live(5);
    }
    std::printf("scrolling from end to end: longest pause %.1f ms (at most 50)\n", probe.LongestPause());

    auto* const filter = desk.window.ToolForm()->FindWidget(*list)->findChild<QLineEdit*>();
    probe.Restart();
    for (const char* const text : {"1", "12", "123", "12", ""}) {
        filter->setText(QString::fromLatin1(text));
        probe.Live(1000);
        std::printf("filter \"%s\": longest pause so far %.1f ms\n", text, probe.LongestPause());
    }
}

} // namespace

int main(int argc, char** argv)
{
    SetViewerSurfaceFormat();
    QApplication application(argc, argv);
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    const QStringList arguments = QApplication::arguments();
    const qsizetype at = arguments.indexOf(QStringLiteral("--vertices"));
    MeasureStart();
    MeasureList(at > 0 && at + 1 < arguments.size() ? arguments[at + 1].toInt() : 1'000'000);
    return 0;
}
