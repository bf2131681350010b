// SPDX-License-Identifier: MIT
// The gestures on a list box.
#include "desk/widgets/ListBoxView.h"

#include "desk/model/ModelDrag.h"
#include "desk/widgets/ListWidget.h"
#include "object/ZAction.h"
#include "zdesktop/ZDragAndDrop.h"
#include "ztoolkit/ZtListBox.h"

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>

#include <algorithm>

namespace {

constexpr int kKeyDragOut = 4; ///< the key that means "dragging out"

bool IsModelDrag(const QDropEvent& event)
{
    return event.mimeData()->hasFormat(QString::fromLatin1(kModelDragFormat)) && GlobalDragAndDrop_GetCount() > 0;
}

} // namespace

ListBoxView::ListBoxView(ZtListBox& list, ListBoxModel& rows, const ControlContext& context, QWidget* parent)
    : RowView(parent), m_list(list), m_rows(rows), m_context(context)
{
    setSelectionMode(list.HasMultipleSelection() ? ExtendedSelection : SingleSelection);
    setDragDropMode(list.HasHandler(kViewDragAndDrop) ? DropOnly : NoDragDrop);
    setAcceptDrops(list.HasHandler(kViewDragAndDrop));
    setModel(&rows);
}

bool ListBoxView::IsInRange(int row) const { return row >= std::min(m_from, m_to) && row <= std::max(m_from, m_to); }

bool ListBoxView::IsShownSelected(int row) const
{
    const bool selected = m_list.IsRowSelected(m_rows.RowAt(row));
    switch (m_gesture) {
    case Gesture::Replace:
        return IsInRange(row);
    case Gesture::Switch:
        return IsInRange(row) ? m_switchOn : selected;
    case Gesture::Widen:
        return selected || IsInRange(row);
    default:
        return selected;
    }
}

void ListBoxView::Begin(int row, Qt::KeyboardModifiers modifiers)
{
    const bool several = m_list.HasMultipleSelection();
    const bool reaches = several && modifiers.testFlag(Qt::ShiftModifier);
    const bool switches = several && modifiers.testFlag(Qt::ControlModifier);
    if (!reaches)
        m_anchor = row;
    selectionModel()->setCurrentIndex(m_rows.index(row), QItemSelectionModel::NoUpdate);
    m_from = std::clamp(m_anchor, 0, std::max(0, m_rows.rowCount() - 1));
    m_to = row;
    m_switchOn = !m_list.IsRowSelected(m_rows.RowAt(row));
    m_gesture = reaches && switches ? Gesture::Widen : switches ? Gesture::Switch : Gesture::Replace;
    viewport()->update();
}

/// The control's rows that are selected after the gesture, the touched one last, as UserSelect wants it.
std::vector<int> ListBoxView::ResultRows() const
{
    std::vector<int> range, result;
    for (int row = std::min(m_from, m_to); row <= std::max(m_from, m_to); ++row)
        range.push_back(m_rows.RowAt(row));
    const std::vector<int> before = m_gesture == Gesture::Replace ? std::vector<int>() : m_list.GetSelectedRows();
    const auto out = std::back_inserter(result);
    if (m_gesture == Gesture::Switch && !m_switchOn)
        std::set_difference(before.begin(), before.end(), range.begin(), range.end(), out);
    else
        std::set_union(before.begin(), before.end(), range.begin(), range.end(), out);
    // Of a row that was taken out the control cannot be told; the first one that stays stands for it.
    auto touched = std::lower_bound(result.begin(), result.end(), m_rows.RowAt(m_to));
    if (touched == result.end() || *touched != m_rows.RowAt(m_to))
        touched = result.begin();
    if (touched != result.end())
        std::rotate(touched, touched + 1, result.end());
    return result;
}

void ListBoxView::Commit()
{
    // The list may have been filled anew in the course of the gesture.
    const int last = m_rows.rowCount() - 1;
    if (last < 0) {
        m_gesture = Gesture::None;
        return;
    }
    m_from = std::clamp(m_from, 0, last);
    m_to = std::clamp(m_to, 0, last);
    const std::vector<int> rows = ResultRows();
    m_gesture = Gesture::None;
    m_list.UserSelect(rows);
    viewport()->update();
    m_context.afterEvent();
}

void ListBoxView::mousePressEvent(QMouseEvent* event)
{
    m_pressed = event->pos();
    m_mayDragOut = m_list.HasHandler(kViewDragAndDrop) &&
                   (event->button() == Qt::MiddleButton ||
                    (event->button() == Qt::LeftButton && event->modifiers().testFlag(Qt::AltModifier)));
    if (m_mayDragOut)
        return;
    RowView::mousePressEvent(event);
    const QModelIndex index = indexAt(event->pos());
    if (event->button() == Qt::LeftButton && index.isValid())
        Begin(index.row(), event->modifiers());
}

void ListBoxView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_mayDragOut) {
        if ((event->pos() - m_pressed).manhattanLength() >= QApplication::startDragDistance()) {
            m_mayDragOut = false;
            DragOut();
        }
        return;
    }
    if (m_gesture == Gesture::None) {
        RowView::mouseMoveEvent(event);
        return;
    }
    m_to = m_list.HasMultipleSelection() ? RowNear(event->pos().y()) : m_to;
    scrollTo(m_rows.index(m_to), EnsureVisible);
    viewport()->update();
}

void ListBoxView::mouseReleaseEvent(QMouseEvent* event)
{
    m_mayDragOut = false;
    const bool selects = m_gesture != Gesture::None && event->button() == Qt::LeftButton;
    RowView::mouseReleaseEvent(event); // a click on a check mark
    if (selects && m_gesture != Gesture::None)
        Commit();
}

bool ListBoxView::MovesCursor(QKeyEvent* event)
{
    static constexpr std::pair<int, CursorAction> kMoves[] = {
        {Qt::Key_Up, MoveUp},         {Qt::Key_Down, MoveDown},
        {Qt::Key_PageUp, MovePageUp}, {Qt::Key_PageDown, MovePageDown},
        {Qt::Key_Home, MoveHome},     {Qt::Key_End, MoveEnd}};
    const auto* const move = std::find_if(std::begin(kMoves), std::end(kMoves),
                                          [event](const auto& entry) { return entry.first == event->key(); });
    if (move == std::end(kMoves))
        return false;
    const QModelIndex next = moveCursor(move->second, event->modifiers());
    if (!next.isValid())
        return true;
    setCurrentIndex(next);
    scrollTo(next, EnsureVisible);
    const bool onlyMoves = event->modifiers().testFlag(Qt::ControlModifier) && m_list.HasMultipleSelection();
    viewport()->update();
    if (onlyMoves)
        return true;
    Begin(next.row(), event->modifiers());
    Commit();
    return true;
}

void ListBoxView::SelectAll()
{
    if (!m_list.HasMultipleSelection() || m_rows.rowCount() == 0)
        return;
    m_gesture = Gesture::Replace;
    m_from = m_rows.rowCount() - 1;
    m_to = 0;
    Commit();
}

void ListBoxView::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::SelectAll)) {
        SelectAll();
    } else if (event->key() == Qt::Key_Space && !m_list.HasCheckMarks() && currentIndex().isValid()) {
        Begin(currentIndex().row(), event->modifiers());
        Commit();
    } else if (!MovesCursor(event)) {
        RowView::keyPressEvent(event);
    }
}

void ListBoxView::dragEnterEvent(QDragEnterEvent* event) { dragMoveEvent(event); }

void ListBoxView::dragMoveEvent(QDragMoveEvent* event)
{
    if (IsModelDrag(*event))
        event->acceptProposedAction();
    else
        event->ignore();
}

void ListBoxView::dropEvent(QDropEvent* event)
{
    if (!IsModelDrag(*event)) {
        event->ignore();
        return;
    }
    if (GlobalDragAndDrop_DropOn(&m_list))
        event->acceptProposedAction();
    m_context.afterEvent();
}

void ListBoxView::DragOut()
{
    Object_SetKeyState(kKeyDragOut, true);
    const int count = GlobalDragAndDrop_StartFrom(&m_list);
    Object_SetKeyState(kKeyDragOut, false);
    m_context.afterEvent();
    if (count > 0) {
        auto* const drag = new QDrag(this);
        auto* const models = new QMimeData;
        models->setData(QString::fromLatin1(kModelDragFormat), "models");
        drag->setMimeData(models);
        drag->exec(Qt::CopyAction);
    }
    GlobalDragAndDrop_End();
    m_context.afterEvent();
}
