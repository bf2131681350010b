// SPDX-License-Identifier: MIT
// The rows of a list box, all of them or those that a filter lets through.
#include "desk/widgets/ListWidget.h"
#include "ztoolkit/ZtListBox.h"

#include <QElapsedTimer>

#include <algorithm>

namespace {
constexpr int kSliceMilliseconds = 6; ///< well below what is felt as a pause
constexpr int kRowsPerLook = 256;     ///< rows between two looks at the clock
} // namespace

ListBoxModel::ListBoxModel(ZtListBox& list, const ControlContext& context, QObject* parent)
    : QAbstractListModel(parent), m_list(list), m_context(context), m_count(list.GetRowCount())
{
    connect(&m_scan, &QTimer::timeout, this, &ListBoxModel::FilterSlice);
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

void ListBoxModel::SetFilter(const QString& filter)
{
    const QString before = m_filter;
    m_filter = filter.trimmed();
    if (m_filter == before)
        return;
    const bool narrows = !before.isEmpty() && m_filter.contains(before, Qt::CaseInsensitive);
    beginResetModel();
    if (narrows && m_texts == m_list.GetTextsVersion()) {
        // What the shorter text did not let through, the longer one does not either.
        m_rows.insert(m_rows.end(), m_asked.begin() + static_cast<std::ptrdiff_t>(m_nextAsked), m_asked.end());
        m_asked = std::move(m_rows);
        m_nextAsked = 0;
        m_rows.clear();
        m_count = 0;
    } else {
        StartOver();
    }
    endResetModel();
    if (IsFiltered())
        FilterSlice();
}

bool ListBoxModel::Matches(int row) const
{
    return QString::fromStdString(m_list.GetRowText(row)).contains(m_filter, Qt::CaseInsensitive);
}

void ListBoxModel::StartOver()
{
    m_scan.stop();
    m_rows.clear();
    m_asked.clear();
    m_nextAsked = 0;
    m_reached = 0;
    m_texts = m_list.GetTextsVersion();
    m_count = IsFiltered() ? 0 : m_list.GetRowCount();
}

/// The next row to look at; -1 after the last one.
int ListBoxModel::NextRow()
{
    if (m_nextAsked < m_asked.size())
        return m_asked[m_nextAsked++];
    return m_reached < m_list.GetRowCount() ? m_reached++ : -1;
}

/// Looks at as many rows as a slice has time for, and comes again for the others.
void ListBoxModel::FilterSlice()
{
    if (m_texts != m_list.GetTextsVersion()) {
        m_scan.stop(); // the rows are about to be filled anew
        return;
    }
    QElapsedTimer clock;
    clock.start();
    std::vector<int> found;
    int row = 0;
    do {
        for (int looked = 0; looked < kRowsPerLook && (row = NextRow()) >= 0; ++looked)
            if (Matches(row))
                found.push_back(row);
    } while (row >= 0 && clock.elapsed() < kSliceMilliseconds);
    if (row < 0)
        m_scan.stop();
    else if (!m_scan.isActive())
        m_scan.start(0);
    if (!found.empty()) {
        beginInsertRows({}, m_count, m_count + static_cast<int>(found.size()) - 1);
        m_rows.insert(m_rows.end(), found.begin(), found.end());
        m_count = static_cast<int>(m_rows.size());
        endInsertRows();
    }
    if (row < 0)
        emit Filtered();
}

bool ListBoxModel::Refill()
{
    if (m_texts == m_list.GetTextsVersion())
        return false;
    const int before = m_count;
    if (!IsFiltered() && before == m_list.GetRowCount()) {
        m_texts = m_list.GetTextsVersion();
        return false;
    }
    beginResetModel();
    StartOver();
    endResetModel();
    if (IsFiltered())
        FilterSlice();
    return true;
}
