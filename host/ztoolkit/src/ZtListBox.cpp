// SPDX-License-Identifier: MIT
// The virtual list box: one byte a row.
#include "ztoolkit/ZtListBox.h"

#include <algorithm>

ZCLASS_DEFINE(ZtListBox, ZtView)

ZtListBox::ZtListBox(const char* name) : ZtView(ZtViewKind::List, name) {}

void ZtListBox::SetMultipleSelection(bool several)
{
    m_multiple = several;
    if (several || m_selectedCount <= 1)
        return;
    const int first = GetCurrentRow();
    DeselectAll();
    Mark(first, true);
}

std::string ZtListBox::GetRowText(int row) const
{
    return m_source != nullptr && HasRow(row) ? m_source->RowText(*this, row) : std::string();
}

void ZtListBox::ClearRows()
{
    m_rows.clear();
    m_selectedCount = 0;
    m_noneBefore = 0;
    TextsChanged();
}

void ZtListBox::AddRows(int count)
{
    if (count <= 0)
        return;
    m_rows.insert(m_rows.end(), static_cast<size_t>(count), std::uint8_t{0});
    TextsChanged();
}

bool ZtListBox::IsRowSelected(int row) const
{
    return HasRow(row) && (m_rows[static_cast<size_t>(row)] & kSelected) != 0;
}

void ZtListBox::Mark(int row, bool selected)
{
    std::uint8_t& bits = m_rows[static_cast<size_t>(row)];
    if (selected == ((bits & kSelected) != 0))
        return;
    bits ^= kSelected;
    m_selectedCount += selected ? 1 : -1;
    if (selected)
        m_noneBefore = std::min(m_noneBefore, row);
}

void ZtListBox::SetRowSelected(int row, bool selected)
{
    if (!HasRow(row) || IsRowSelected(row) == selected)
        return;
    if (selected && !m_multiple && m_selectedCount > 0)
        Mark(GetCurrentRow(), false);
    Mark(row, selected);
    MarkChanged();
}

void ZtListBox::SelectRows(const int* rows, int count)
{
    if (!m_multiple) {
        for (int i = 0; i < count; ++i)
            SetRowSelected(rows[i], true);
        return;
    }
    const int before = m_selectedCount;
    for (int i = 0; i < count; ++i)
        if (HasRow(rows[i]))
            Mark(rows[i], true);
    if (m_selectedCount != before)
        MarkChanged();
}

void ZtListBox::DeselectAll()
{
    if (m_selectedCount == 0)
        return;
    for (std::uint8_t& bits : m_rows)
        bits &= static_cast<std::uint8_t>(~kSelected);
    m_selectedCount = 0;
    MarkChanged();
}

std::vector<int> ZtListBox::GetSelectedRows() const
{
    std::vector<int> rows;
    if (m_selectedCount == 0)
        return rows;
    rows.reserve(static_cast<size_t>(m_selectedCount));
    for (int row = GetCurrentRow(); static_cast<int>(rows.size()) < m_selectedCount; ++row)
        if (IsRowSelected(row))
            rows.push_back(row);
    return rows;
}

int ZtListBox::GetCurrentRow() const
{
    if (m_selectedCount == 0)
        return -1;
    while (!IsRowSelected(m_noneBefore))
        ++m_noneBefore;
    return m_noneBefore;
}

bool ZtListBox::GetRowCheck(int row) const { return HasRow(row) && (m_rows[static_cast<size_t>(row)] & kChecked) != 0; }

void ZtListBox::SetRowCheck(int row, bool checked)
{
    if (!HasRow(row) || GetRowCheck(row) == checked)
        return;
    m_rows[static_cast<size_t>(row)] ^= kChecked;
    MarkChanged();
}

bool ZtListBox::IsSelection(const std::vector<int>& rows)
{
    int touched = 0;
    for (const int row : rows) {
        std::uint8_t& bits = m_rows[static_cast<size_t>(row)];
        if ((bits & (kSelected | kTouched)) == kSelected)
            ++touched;
        bits |= kTouched;
    }
    bool same = touched == m_selectedCount;
    for (const int row : rows) {
        same = same && IsRowSelected(row);
        m_rows[static_cast<size_t>(row)] &= static_cast<std::uint8_t>(~kTouched);
    }
    return same;
}

bool ZtListBox::UserSelect(const std::vector<int>& rows)
{
    if (!TakesInput("ZtListBox::UserSelect"))
        return false;
    if (!std::all_of(rows.begin(), rows.end(), [this](int row) { return HasRow(row); }))
        return false;
    const std::vector<int> wanted = m_multiple || rows.size() <= 1 ? rows : std::vector<int>{rows.back()};
    if (IsSelection(wanted))
        return true;
    DeselectAll();
    for (const int row : wanted)
        Mark(row, true);
    MarkChanged();
    ZtEvent event(kViewSelectionChanged);
    event.row = wanted.empty() ? -1 : wanted.back();
    Send(event);
    return true;
}

bool ZtListBox::UserSetCheck(int row, bool checked)
{
    if (!TakesInput("ZtListBox::UserSetCheck") || !m_checkMarks || !HasRow(row))
        return false;
    if (GetRowCheck(row) == checked)
        return true;
    SetRowCheck(row, checked);
    ZtEvent event(kViewValueChanged);
    event.row = row;
    event.value = checked ? 1 : 0;
    Send(event);
    return true;
}

void ZtListBox::UserDragAndDrop(int stage)
{
    if (!TakesInput("ZtListBox::UserDragAndDrop"))
        return;
    ZtEvent event(kViewDragAndDrop);
    event.stage = stage;
    Send(event);
}
