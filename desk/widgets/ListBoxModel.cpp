// SPDX-License-Identifier: MIT
// The rows of a list box, all of them or those that a filter lets through.
#include "desk/widgets/ListWidget.h"
#include "ztoolkit/ZtListBox.h"

#include <algorithm>

ListBoxModel::ListBoxModel(ZtListBox& list, const ControlContext& context, QObject* parent)
    : QAbstractListModel(parent), m_list(list), m_context(context), m_count(list.GetRowCount())
{
}

int ListBoxModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : m_count; }

int ListBoxModel::RowAt(int shown) const { return IsFiltered() ? m_rows[static_cast<size_t>(shown)] : shown; }

int ListBoxModel::ShownAt(int row) const
{
    if (!IsFiltered())
        return row;
    const auto found = std::lower_bound(m_rows.begin(), m_rows.end(), row);
    return found != m_rows.end() && *found == row ? static_cast<int>(found - m_rows.begin()) : -1;
}

QVariant ListBoxModel::data(const QModelIndex& index, int role) const
{
    const int row = RowAt(index.row());
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return QString::fromStdString(m_list.GetRowText(row));
    if (role == Qt::CheckStateRole && m_list.HasCheckMarks())
        return m_list.GetRowCheck(row) ? Qt::Checked : Qt::Unchecked;
    return {};
}

bool ListBoxModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || !m_list.UserSetCheck(RowAt(index.row()), value.toInt() == Qt::Checked))
        return false;
    m_context.afterEvent();
    return true;
}

Qt::ItemFlags ListBoxModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = QAbstractListModel::flags(index);
    if (m_list.HasCheckMarks())
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

void ListBoxModel::SetFilter(const QString& filter) { m_filter = filter.trimmed(); }

bool ListBoxModel::Refill()
{
    std::vector<int> rows;
    if (IsFiltered())
        for (int row = 0; row < m_list.GetRowCount(); ++row)
            if (QString::fromStdString(m_list.GetRowText(row)).contains(m_filter, Qt::CaseInsensitive))
                rows.push_back(row);
    const int count = IsFiltered() ? static_cast<int>(rows.size()) : m_list.GetRowCount();
    if (count == m_count) {
        m_rows = std::move(rows);
        return false;
    }
    beginResetModel();
    m_rows = std::move(rows);
    m_count = count;
    endResetModel();
    return true;
}
