// SPDX-License-Identifier: MIT
// Work that may take long, while the window stays alive.
#pragma once

#include <QString>

#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <stop_token>

class QWidget;

/// What pressing Cancel means.
enum class WhenCancelled
{
    Leave, ///< the result is not wanted: go on at once, the work ends by itself
    Wait   ///< whether it was done must be known: go on when the work has ended
};

namespace Waiting {

/// Waits until `done` is ready. The pointer says "busy"; after half a second a window says `text` and can be cancelled,
/// which asks `stop` to stop. No other input is taken meanwhile. False when the user left before it was done.
bool Until(const std::function<bool()>& done, QWidget* window, const QString& text, std::stop_source& stop,
           WhenCancelled cancelled);
/// Keeps work that nobody waits for any more until it has ended.
void LetEnd(std::shared_ptr<void> work);

/// Runs `work(std::stop_token)` on a thread of its own and answers its result; what it throws is thrown. Nothing when
/// the user left. The work must own all that it uses, and must not touch the scene.
template <class Work> auto Run(QWidget* window, const QString& text, WhenCancelled cancelled, Work work)
{
    using Result = decltype(work(std::stop_token()));
    std::stop_source stop;
    auto running = std::make_shared<std::future<Result>>(std::async(
        std::launch::async, [work = std::move(work), token = stop.get_token()]() mutable { return work(token); }));
    const auto done = [running] { return running->wait_for(std::chrono::seconds(0)) == std::future_status::ready; };
    std::optional<Result> result;
    if (Until(done, window, text, stop, cancelled))
        result = running->get();
    else
        LetEnd(running);
    return result;
}

} // namespace Waiting
