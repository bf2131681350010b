// SPDX-License-Identifier: MIT
// The widget for a list box: a view that asks for the visible rows only, with an optional filter above it.
#pragma once

#include "desk/widgets/ControlWidget.h"

#include <QAbstractListModel>
#include <QTimer>

#include <vector>

class ZtListBox;

/// The rows of a list box as an item model. It keeps no texts. With a filter, only the rows whose text holds it
/// (without regard to case) are shown.
///
/// Filtering a million rows takes longer than a key press may, so it goes on in slices of a few milliseconds between
/// events, and rows appear as they are found. A letter more in the filter looks only at the rows that are shown and at
/// those that were not reached yet; a selection or a check mark reads nothing again.
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
    /// Are there rows that the filter has not looked at yet?
    bool IsFiltering() const { return m_scan.isActive(); }

signals:
    /// The filter has looked at all rows.
    void Filtered();

private:
    bool Matches(int row) const;
    void StartOver();
    int NextRow();
    void FilterSlice();

    ZtListBox& m_list;
    ControlContext m_context;
    QString m_filter;
    std::vector<int> m_rows;  ///< rows that the filter lets through, ascending
    std::vector<int> m_asked; ///< rows that a shorter filter let through; they are looked at first
    size_t m_nextAsked = 0;
    int m_reached = 0; ///< rows from here on no filter has looked at
    int m_count = 0;   ///< rows shown
    long m_texts = -1; ///< the list's version of the texts that m_rows was found in
    QTimer m_scan;
};

/// A list with an optional filter line above it; drops of models, drags out, check marks, selection.
std::unique_ptr<ControlWidget> MakeListWidget(ZtListBox& list, const ControlContext& context, QWidget* parent);
