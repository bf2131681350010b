// SPDX-License-Identifier: MIT
// The status line: what the last gesture did, and what could not be done.
#pragma once

#include <QStatusBar>
#include <QStringList>

class QLabel;
class QToolButton;

/// Listens to the host's report while it lives. Warnings are kept and can be read again.
class StatusLine : public QStatusBar
{
    Q_OBJECT
public:
    explicit StatusLine(QWidget* parent);
    ~StatusLine() override;
    QString Text() const;
    /// Opens a window with all warnings since the start.
    void ShowWarnings();

private:
    void Hear(int kind, const QString& line);

    QLabel* m_text;
    QToolButton* m_more;
    QStringList m_warnings;
};
