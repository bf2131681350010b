// SPDX-License-Identifier: MIT
// How the cells of a spread are painted and edited.
#pragma once

#include <QStyledItemDelegate>

/// Sliders are bars with a grip, check marks stand in the middle of their cells, numbers are typed in place with a
/// decimal point or the comma of the user's language.
class SpreadDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// The part of a slider's cell along which its grip moves.
    static QRect Track(const QRect& cell);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

private:
    void PaintSlider(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;
    void PaintCheck(QPainter& painter, const QStyleOptionViewItem& option, bool checked) const;
};
