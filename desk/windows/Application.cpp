// SPDX-License-Identifier: MIT
// The command line, the application and its window.
#include "desk/windows/Application.h"

#include "desk/model/ZDeskSession.h"
#include "desk/viewer/ViewerWidget.h"
#include "desk/windows/MainWindow.h"
#include "ztoolkit/ZToolKit.h"

#include <QApplication>
#include <QPixmap>
#include <QScreen>
#include <QStandardPaths>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr char kUsage[] =
    "skindesk [FILE]...          opens the desk on FILEs (.glb or .gltf)\n"
    "  --screenshot PICTURE      opens FILEs, adds all skinned models, saves a picture of the window, ends\n"
    "  --version                 names the version\n"
    "  --help                    this text\n";
constexpr char kVersion[] = SKINDESK_VERSION;

struct CommandLine
{
    std::vector<std::string> files;
    std::string screenshot;
    std::optional<int> ended; ///< the status, when there is nothing more to do
};

int Refuse(const std::string& sentence)
{
    std::fprintf(stderr, "skindesk: %s\n", sentence.c_str());
    return 1;
}

CommandLine Read(const std::vector<std::string>& arguments)
{
    CommandLine line;
    bool onlyFiles = false;
    for (size_t i = 0; i < arguments.size() && !line.ended; ++i) {
        const std::string& argument = arguments[i];
        if (onlyFiles || argument.empty() || argument[0] != '-') {
            line.files.push_back(argument);
        } else if (argument == "--") {
            onlyFiles = true;
        } else if (argument == "--help" || argument == "-h") {
            std::fputs(kUsage, stdout);
            line.ended = 0;
        } else if (argument == "--version") {
            std::printf("skindesk %s\n", kVersion);
            line.ended = 0;
        } else if (argument == "--screenshot") {
            if (i + 1 == arguments.size())
                line.ended = Refuse("--screenshot needs the name of a picture");
            else
                line.screenshot = arguments[++i];
        } else {
            line.ended = Refuse("unknown option " + argument + " (skindesk --help tells all)");
        }
    }
    return line;
}

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
        status = window.grab().save(QString::fromStdString(path)) ? 0 : Refuse(path + ": cannot be written");
        QApplication::exit(status);
    });
    QApplication::exec();
    return status;
}

} // namespace

int RunDesk(int argc, char** argv)
{
    const CommandLine line = Read(OwnArguments(argc, argv));
    if (line.ended)
        return *line.ended;
    if (!HasDisplay(argc, argv))
        return Refuse("there is no display to open a window on (DISPLAY and WAYLAND_DISPLAY are not set)");
    SetViewerSurfaceFormat();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Skindesk"));
    QApplication::setApplicationVersion(QLatin1String(kVersion));
    QApplication::setDesktopFileName(QStringLiteral("skindesk"));
    ZToolKit_SetScreenWidth(QApplication::primaryScreen()->size().width());

    ZSession::Options options;
    options.settingsFolder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation).toStdString();
    ZDeskSession desk(options);
    MainWindow window(desk);
    window.show();
    for (const std::string& file : line.files)
        if (!window.OpenFile(QString::fromLocal8Bit(file.c_str())) && !line.screenshot.empty())
            return 1;
    return line.screenshot.empty() ? QApplication::exec() : SaveWindow(window, desk, line.screenshot);
}
