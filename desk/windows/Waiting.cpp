// SPDX-License-Identifier: MIT
// The busy window.
#include "desk/windows/Waiting.h"

#include <QApplication>
#include <QProgressDialog>

namespace {
constexpr long long kQuickBytes = 4'000'000; ///< a file of this size takes well below half a second
}

Waiting::Waiting(QWidget* window, const QString& text, long long bytes)
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    if (bytes <= kQuickBytes)
        return;
    m_shown = std::make_unique<QProgressDialog>(text, QString(), 0, 0, window);
    m_shown->setWindowModality(Qt::WindowModal);
    m_shown->setMinimumDuration(0);
    m_shown->show();
    // Shown and painted before the work begins; twice, since the first round only maps the window.
    for (int round = 0; round < 2; ++round)
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

Waiting::~Waiting() { QApplication::restoreOverrideCursor(); }
