// SPDX-License-Identifier: MIT
// The command line, the application and its window.
#include "desk/windows/Application.h"

#include "desk/model/ZDeskSession.h"
#include "desk/viewer/ViewerWidget.h"
#include "desk/windows/CommandLine.h"
#include "desk/windows/DocumentCommands.h"
#include "desk/windows/MainWindow.h"
#include "ztoolkit/ZToolKit.h"

#include <QApplication>
#include <QPixmap>
#include <QScreen>
#include <QStandardPaths>
#include <QTimer>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

/// Qt takes its own options out; ours are read before it starts, so that a wrong one needs no display.
std::vector<std::string> OwnArguments(int argc, char** argv)
{
    std::vector<std::string> own;
    for (int i = 1; i < argc; ++i) {
        const bool isQt = std::strcmp(argv[i], "-platform") == 0 || std::strcmp(argv[i], "-style") == 0;
        if (isQt)
            ++i;
        else
            own.emplace_back(argv[i]);
    }
    return own;
}

/// Without a display Qt would end the process in the middle of its start.
bool HasDisplay(int argc, char** argv)
{
    const auto isPlatform = [](const char* argument) { return std::strcmp(argument, "-platform") == 0; };
    return std::any_of(argv, argv + argc, isPlatform) || std::getenv("QT_QPA_PLATFORM") != nullptr ||
           std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
}

/// Lets the window paint itself, then saves it.
int SaveWindow(MainWindow& window, ZDeskSession& desk, const std::string& path)
{
    constexpr int kSettleMilliseconds = 400;
    desk.AddAllSkinnedModels();
    int status = 1;
    QTimer::singleShot(kSettleMilliseconds, &window, [&] {
        status =
            window.grab().save(QString::fromStdString(path)) ? 0 : CommandLine_Refuse(path + ": cannot be written");
        QApplication::exit(status);
    });
    QApplication::exec();
    return status;
}

} // namespace

int RunDesk(int argc, char** argv)
{
    const CommandLine line = CommandLine_Read(OwnArguments(argc, argv));
    if (line.ended)
        return *line.ended;
    if (!line.script.empty())
        return CommandLine_RunScript(line.script);
    if (!HasDisplay(argc, argv))
        return CommandLine_Refuse("there is no display to open a window on (DISPLAY and WAYLAND_DISPLAY are not set)");
    SetViewerSurfaceFormat();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Skindesk"));
    QApplication::setApplicationVersion(QLatin1String(SKINDESK_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("skindesk"));
    ZToolKit_SetScreenWidth(QApplication::primaryScreen()->size().width());

    ZSession::Options options;
    options.settingsFolder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation).toStdString();
    const QString data = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    ZDeskSession desk(options, (data + QStringLiteral("/journal")).toStdString());
    MainWindow window(desk);
    window.show();
    if (line.screenshot.empty())
        window.Documents().OfferRecovery();
    for (const std::string& file : line.files)
        if (!window.OpenFile(QString::fromLocal8Bit(file.c_str())) && !line.screenshot.empty())
            return 1;
    return line.screenshot.empty() ? QApplication::exec() : SaveWindow(window, desk, line.screenshot);
}
