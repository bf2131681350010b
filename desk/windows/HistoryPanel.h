// SPDX-License-Identifier: MIT
// The history as a list: what was done, and what can be done again.
#pragma once

#include <QListWidget>

class ZDeskSession;

/// A click on a step goes back or forward to it.
class HistoryPanel : public QListWidget
{
    Q_OBJECT
public:
    HistoryPanel(ZDeskSession& desk, QWidget* parent);
    /// Fills the list when it is seen; a hidden one costs nothing, however long the history.
    void Sync();

protected:
    void showEvent(QShowEvent* event) override;

private:
    ZDeskSession& m_desk;
    long m_shown = -1; ///< the stack's change count when the list was filled
};
