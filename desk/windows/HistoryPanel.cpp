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
    // Going to a step fills the list anew: where a single click activates as well, the item is gone by then.
    const auto go = [this](QListWidgetItem* item) {
        if (item != nullptr)
            m_desk.GoToStep(row(item));
    };
    connect(this, &QListWidget::itemActivated, this, go);
    connect(this, &QListWidget::itemClicked, this, go);
    Sync();
}

void HistoryPanel::Sync()
{
    const ZUndoStack& stack = *ZUndoStack::TheOne();
    if (!isVisible() || m_shown == stack.GetChangeCount() || stack.IsTransactionOpen())
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

void HistoryPanel::showEvent(QShowEvent* event)
{
    QListWidget::showEvent(event);
    Sync();
}
