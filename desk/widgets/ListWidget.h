// SPDX-License-Identifier: MIT
// The widget for a list box: a view that asks for the visible rows only, with an optional filter above it.
#pragma once

#include "desk/widgets/ControlWidget.h"

#include <QAbstractListModel>

#include <vector>

class ZtListBox;

/// The rows of a list box as an item model. It keeps no texts. With a filter, only the rows whose text holds it
/// (without regard to case) are shown; then all texts are asked for once at every change of the list.
class ListBoxModel : public QAbstractListModel
{
    Q_OBJECT
public:
    ListBoxModel(ZtListBox& list, const ControlContext& context, QObject* parent);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    void SetFilter(const QString& filter);
    /// Brings the rows up to the control's; answers whether there are other rows than before.
    bool Refill();
    /// The control's row that is shown at `shown`, and the other way (-1 when it is filtered out).
    int RowAt(int shown) const;
    int ShownAt(int row) const;
    bool IsFiltered() const { return !m_filter.isEmpty(); }

private:
    ZtListBox& m_list;
    ControlContext m_context;
    QString m_filter;
    std::vector<int> m_rows; ///< rows that the filter lets through, ascending
    int m_count = 0;         ///< rows shown
};

/// A list with an optional filter line above it; drops of models, drags out, check marks, selection.
std::unique_ptr<ControlWidget> MakeListWidget(ZtListBox& list, const ControlContext& context, QWidget* parent);
