// SPDX-License-Identifier: MIT
// How long the window does not answer.
#pragma once

#include <QElapsedTimer>
#include <QTimer>

/// Ticks as fast as the event loop lets it; the longest time between two ticks is the longest pause that a user could
/// have felt.
class EventLoopProbe
{
public:
    EventLoopProbe();
    void Restart();
    /// Milliseconds since Restart.
    double LongestPause() const { return m_longest; }
    /// Runs events for this long.
    void Live(int milliseconds);

private:
    void Tick();
    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_longest = 0;
};
