// SPDX-License-Identifier: MIT
#include "EventLoopProbe.h"

#include <QCoreApplication>

#include <algorithm>

EventLoopProbe::EventLoopProbe()
{
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { Tick(); });
    m_timer.start(0);
    Restart();
}

void EventLoopProbe::Restart()
{
    m_longest = 0;
    m_clock.start();
}

void EventLoopProbe::Tick()
{
    m_longest = std::max(m_longest, static_cast<double>(m_clock.nsecsElapsed()) * 1e-6);
    m_clock.start();
}

void EventLoopProbe::Live(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}
