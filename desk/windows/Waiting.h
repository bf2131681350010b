// SPDX-License-Identifier: MIT
// What the user sees while a large file is read or written.
#pragma once

#include <QString>

#include <memory>

class QProgressDialog;
class QWidget;

/// While it lives the pointer says "busy"; for work that may take longer than half a second a window says what is being
/// done. The scene belongs to the user-interface thread, so that the work cannot be cut off half way; it takes no input
/// meanwhile.
class Waiting
{
public:
    /// `bytes`: how large the file is, by which the time is guessed.
    Waiting(QWidget* window, const QString& text, long long bytes);
    ~Waiting();
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

private:
    std::unique_ptr<QProgressDialog> m_shown;
};
