// SPDX-License-Identifier: MIT
// A list view whose rows all have one height, so that it keeps nothing for a row and a million of them cost as much as
// ten.
#pragma once

#include <QListView>

class QStyleOptionViewItem;

/// Works out places from row numbers and asks its model for the rows that it paints only. Selecting is left to
/// classes derived from it: they say which rows are painted as selected.
class RowView : public QListView
{
    Q_OBJECT
public:
    explicit RowView(QWidget* parent);

    QRect visualRect(const QModelIndex& index) const override;
    QModelIndex indexAt(const QPoint& point) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint) override;
    void doItemsLayout() override;
    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override;
    int RowHeight() const;
    /// The row at this height of the viewport, the first or last one beyond the ends, -1 without rows.
    int RowNear(int y) const;

protected:
    virtual bool IsShownSelected(int row) const = 0;

    void paintEvent(QPaintEvent* event) override;
    void updateGeometries() override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    int verticalOffset() const override;
    int horizontalOffset() const override { return 0; }
    bool isIndexHidden(const QModelIndex&) const override { return false; }
    void setSelection(const QRect&, QItemSelectionModel::SelectionFlags) override {}
    QRegion visualRegionForSelection(const QItemSelection&) const override { return viewport()->rect(); }
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex&, const QEvent*) const override
    {
        return QItemSelectionModel::NoUpdate;
    }

private:
    int RowCount() const { return model() != nullptr ? model()->rowCount() : 0; }
};
