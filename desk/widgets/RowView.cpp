// SPDX-License-Identifier: MIT
// Places of rows, painting and scrolling.
#include "desk/widgets/RowView.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionViewItem>

#include <algorithm>

namespace {
constexpr int kRowPadding = 4; ///< above and below the letters, together
}

RowView::RowView(QWidget* parent) : QListView(parent)
{
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setEditTriggers(NoEditTriggers);
}

int RowView::RowHeight() const { return fontMetrics().height() + kRowPadding; }

int RowView::verticalOffset() const { return verticalScrollBar()->value(); }

int RowView::RowNear(int y) const
{
    if (RowCount() == 0)
        return -1;
    const int below = y + verticalOffset();
    return std::clamp(below < 0 ? 0 : below / RowHeight(), 0, RowCount() - 1);
}

QRect RowView::visualRect(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    return {0, index.row() * RowHeight() - verticalOffset(), viewport()->width(), RowHeight()};
}

QModelIndex RowView::indexAt(const QPoint& point) const
{
    const int below = point.y() + verticalOffset();
    if (model() == nullptr || below < 0 || below / RowHeight() >= RowCount())
        return {};
    return model()->index(below / RowHeight(), 0);
}

void RowView::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    if (!index.isValid())
        return;
    const QRect rect = visualRect(index);
    const int height = viewport()->height();
    int moved = 0;
    if (hint == PositionAtCenter)
        moved = rect.center().y() - height / 2;
    else if (hint == PositionAtTop || rect.top() < 0)
        moved = rect.top();
    else if (hint == PositionAtBottom || rect.bottom() >= height)
        moved = rect.bottom() + 1 - height;
    verticalScrollBar()->setValue(verticalOffset() + moved);
}

// The list view's own versions lay out every row; rows of one height need none of it, so they are passed by.
// NOLINTBEGIN(bugprone-parent-virtual-call)
void RowView::doItemsLayout() { QAbstractItemView::doItemsLayout(); }

void RowView::dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles)
{
    QAbstractItemView::dataChanged(first, last, roles);
    viewport()->update();
}

void RowView::updateGeometries()
{
    const int height = viewport()->height();
    verticalScrollBar()->setSingleStep(RowHeight());
    verticalScrollBar()->setPageStep(height);
    verticalScrollBar()->setRange(0, std::max(0, RowCount() * RowHeight() - height));
    QAbstractItemView::updateGeometries();
}
// NOLINTEND(bugprone-parent-virtual-call)

QModelIndex RowView::moveCursor(CursorAction action, Qt::KeyboardModifiers)
{
    const int rows = RowCount();
    if (rows == 0)
        return {};
    const int page = std::max(1, viewport()->height() / RowHeight() - 1);
    const int present = currentIndex().isValid() ? currentIndex().row() : -1;
    int row = std::max(present, 0);
    switch (action) {
    case MoveUp:
    case MoveLeft:
    case MovePrevious:
        row = present - 1;
        break;
    case MoveDown:
    case MoveRight:
    case MoveNext:
        row = present + 1;
        break;
    case MovePageUp:
        row = present - page;
        break;
    case MovePageDown:
        row = present + page;
        break;
    case MoveHome:
        row = 0;
        break;
    case MoveEnd:
        row = rows - 1;
        break;
    }
    return model()->index(std::clamp(row, 0, rows - 1), 0);
}

void RowView::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    if (RowCount() == 0)
        return;
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    const bool focused = hasFocus();
    for (int row = RowNear(event->rect().top()); row <= RowNear(event->rect().bottom()); ++row) {
        const QModelIndex index = model()->index(row, 0);
        QStyleOptionViewItem item = option;
        item.rect = visualRect(index);
        item.state &= ~(QStyle::State_Selected | QStyle::State_HasFocus | QStyle::State_MouseOver);
        if (IsShownSelected(row))
            item.state |= QStyle::State_Selected;
        if (focused && index == currentIndex())
            item.state |= QStyle::State_HasFocus;
        style()->drawPrimitive(QStyle::PE_PanelItemViewRow, &item, &painter, this);
        itemDelegateForIndex(index)->paint(&painter, item, index);
    }
}
