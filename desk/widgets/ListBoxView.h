// SPDX-License-Identifier: MIT
// What the pointer and the keyboard do on a list box: selecting, dropping, dragging out.
#pragma once

#include "desk/widgets/ControlWidget.h"
#include "desk/widgets/RowView.h"

#include <vector>

class ListBoxModel;
class ZtListBox;

/// A gesture on rows is shown while it lasts and becomes one event of the control when it ends: a click or a drag
/// replaces the selection, with Ctrl it switches rows, with Shift it reaches from the last clicked row. Models are
/// dropped on the list, and dragged out of it with the middle button or Alt and the left one.
class ListBoxView : public RowView
{
    Q_OBJECT
public:
    ListBoxView(ZtListBox& list, ListBoxModel& rows, const ControlContext& context, QWidget* parent);

protected:
    bool IsShownSelected(int row) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override { mousePressEvent(event); }
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent*) override {}
    void dropEvent(QDropEvent* event) override;
    void startDrag(Qt::DropActions) override {}

private:
    enum class Gesture
    {
        None,
        Replace,
        Switch,
        Widen
    };

    void Begin(int row, Qt::KeyboardModifiers modifiers);
    void Commit();
    std::vector<int> ResultRows() const;
    bool IsInRange(int row) const;
    bool MovesCursor(QKeyEvent* event);
    void SelectAll();
    void DragOut();

    ZtListBox& m_list;
    ListBoxModel& m_rows;
    ControlContext m_context;
    Gesture m_gesture = Gesture::None;
    bool m_switchOn = true; ///< whether Switch selects the rows of its range or takes them out
    int m_anchor = 0, m_from = 0, m_to = 0;
    bool m_mayDragOut = false;
    QPoint m_pressed;
};
