// SPDX-License-Identifier: MIT
// The busy pointer and the window with the way out.
#include "desk/windows/Waiting.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProgressDialog>
#include <QTimer>

#include <thread>
#include <vector>

namespace {

constexpr int kQuietMilliseconds = 500; ///< what takes no longer needs no window
constexpr int kShortMilliseconds = 30;  ///< nor a round of events
constexpr int kLookMilliseconds = 10;

class BusyPointer
{
public:
    BusyPointer() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~BusyPointer() { QApplication::restoreOverrideCursor(); }
    BusyPointer(const BusyPointer&) = delete;
    BusyPointer& operator=(const BusyPointer&) = delete;
};

/// Rounds of events until the work is done or the time is up.
void Rounds(const std::function<bool()>& done, int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < milliseconds) {
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        std::this_thread::sleep_for(std::chrono::milliseconds(clock.elapsed() < kShortMilliseconds ? 1 : 5));
    }
}

} // namespace

bool Waiting::Until(const std::function<bool()>& done, QWidget* window, const QString& text, std::stop_source& stop,
                    WhenCancelled cancelled)
{
    const BusyPointer busy;
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < kShortMilliseconds)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    Rounds(done, kQuietMilliseconds);
    if (done())
        return true;

    QProgressDialog shown(text, QObject::tr("Cancel"), 0, 0, window);
    shown.setObjectName(QStringLiteral("WaitingWindow"));
    shown.setWindowModality(Qt::ApplicationModal);
    shown.setMinimumDuration(0);
    shown.setAutoClose(false);
    shown.setAutoReset(false);
    shown.show();
    QApplication::changeOverrideCursor(Qt::ArrowCursor);
    QEventLoop loop;
    bool left = false;
    const auto cancel = [&] {
        if (stop.stop_requested())
            return;
        stop.request_stop();
        if (cancelled == WhenCancelled::Leave) {
            left = true;
            loop.quit();
            return;
        }
        shown.setLabelText(QObject::tr("Cancelling ..."));
        shown.setCancelButton(nullptr);
        shown.show(); // cancelling hides the window
    };
    QObject::connect(&shown, &QProgressDialog::canceled, &loop, cancel);
    QObject::connect(&shown, &QProgressDialog::rejected, &loop, cancel); // the Escape key
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    look.start(kLookMilliseconds);
    if (!done())
        loop.exec();
    return !left;
}

void Waiting::LetEnd(std::shared_ptr<void> work)
{
    // Their ends are waited for at the end of the process, since they use its libraries.
    static std::vector<std::shared_ptr<void>> ending;
    ending.push_back(std::move(work));
}
