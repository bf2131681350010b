// SPDX-License-Identifier: MIT
// Filling the history list.
#include "desk/windows/HistoryPanel.h"

#include "desk/model/ZDeskSession.h"
#include "object/ZUndoStack.h"

#include <QSignalBlocker>

HistoryPanel::HistoryPanel(ZDeskSession& desk, QWidget* parent) : QListWidget(parent), m_desk(desk)
{
    setObjectName(QStringLiteral("HistoryList"));
    setAccessibleName(tr("History"));
    connect(this, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) { m_desk.GoToStep(row(item)); });
    connect(this, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) { m_desk.GoToStep(row(item)); });
    Sync();
}

void HistoryPanel::Sync()
{
    const ZUndoStack& stack = *ZUndoStack::TheOne();
    if (m_shown == stack.GetChangeCount() || stack.IsTransactionOpen())
        return;
    m_shown = stack.GetChangeCount();
    const QSignalBlocker quiet(this);
    clear();
    addItem(tr("(opened)"));
    const std::vector<std::string> undo = stack.GetUndoNames(), redo = stack.GetRedoNames();
    for (auto name = undo.rbegin(); name != undo.rend(); ++name)
        addItem(QString::fromStdString(ZDeskSession::StepName(*name)));
    for (const std::string& name : redo) {
        addItem(QString::fromStdString(ZDeskSession::StepName(name)));
        item(count() - 1)->setForeground(palette().brush(QPalette::Disabled, QPalette::Text));
    }
    setCurrentRow(static_cast<int>(undo.size()));
    scrollToItem(currentItem());
}
