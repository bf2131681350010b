// SPDX-License-Identifier: MIT
// The spreadsheet: cells row after row.
#include "ztoolkit/ZtSpread.h"

#include <algorithm>
#include <cmath>

ZCLASS_DEFINE(ZtSpread, ZtView)

ZtSpread::ZtSpread(const char* name) : ZtView(ZtViewKind::Spread, name) {}

void ZtSpread::Clear()
{
    m_columns.clear();
    m_labels.clear();
    m_cells.clear();
    MarkChanged();
}

void ZtSpread::SetRowLabelWidth(int width)
{
    m_rowLabelWidth = width;
    MarkChanged();
}

int ZtSpread::AddColumn(const char* name, int kind, int width)
{
    const size_t before = m_columns.size();
    m_columns.push_back({name != nullptr ? name : "", kind, width});
    std::vector<ZtSpreadCell> wider(m_labels.size() * m_columns.size());
    for (size_t row = 0; row < m_labels.size(); ++row)
        std::copy_n(m_cells.begin() + static_cast<std::ptrdiff_t>(row * before), before,
                    wider.begin() + static_cast<std::ptrdiff_t>(row * m_columns.size()));
    m_cells = std::move(wider);
    MarkChanged();
    return static_cast<int>(before);
}

void ZtSpread::SetRowCount(int count)
{
    const size_t rows = static_cast<size_t>(std::max(count, 0));
    m_labels.resize(rows);
    m_cells.resize(rows * m_columns.size());
    MarkChanged();
}

void ZtSpread::SetRowLabel(int row, const std::string& label)
{
    if (row < 0 || row >= GetRowCount() || m_labels[static_cast<size_t>(row)] == label)
        return;
    m_labels[static_cast<size_t>(row)] = label;
    MarkChanged();
}

const std::string& ZtSpread::GetRowLabel(int row) const
{
    static const std::string none;
    return row < 0 || row >= GetRowCount() ? none : m_labels[static_cast<size_t>(row)];
}

ZtSpreadCell* ZtSpread::Cell(int row, int column)
{
    const int columns = static_cast<int>(m_columns.size());
    if (row < 0 || row >= GetRowCount() || column < 0 || column >= columns)
        return nullptr;
    return &m_cells[static_cast<size_t>(row) * m_columns.size() + static_cast<size_t>(column)];
}

const ZtSpreadCell* ZtSpread::GetCell(int row, int column) const
{
    return const_cast<ZtSpread*>(this)->Cell(row, column);
}

void ZtSpread::SetColourCell(int row, int column, float red, float green, float blue)
{
    ZtSpreadCell* const cell = Cell(row, column);
    if (cell == nullptr || m_columns[static_cast<size_t>(column)].kind != kCellView)
        return;
    *cell = {};
    cell->view = ZtSpreadCell::View::Colour;
    cell->colour[0] = red;
    cell->colour[1] = green;
    cell->colour[2] = blue;
    MarkChanged();
}

void ZtSpread::SetSliderCell(int row, int column, double value, double minimum, double maximum)
{
    ZtSpreadCell* const cell = Cell(row, column);
    if (cell == nullptr || m_columns[static_cast<size_t>(column)].kind != kCellView)
        return;
    if (!std::isfinite(value) || !std::isfinite(minimum) || !std::isfinite(maximum) || minimum > maximum)
        return;
    *cell = {};
    cell->view = ZtSpreadCell::View::Slider;
    cell->value = std::clamp(value, minimum, maximum);
    cell->minimum = minimum;
    cell->maximum = maximum;
    MarkChanged();
}

void ZtSpread::SetCellValue(int row, int column, double value)
{
    ZtSpreadCell* const cell = Cell(row, column);
    if (cell == nullptr || !std::isfinite(value) || cell->view == ZtSpreadCell::View::Colour)
        return;
    const bool slider = cell->view == ZtSpreadCell::View::Slider;
    if (!slider && m_columns[static_cast<size_t>(column)].kind == kCellView)
        return;
    const double taken = slider ? std::clamp(value, cell->minimum, cell->maximum) : value;
    if (cell->value == taken)
        return;
    cell->value = taken;
    MarkChanged();
}

bool ZtSpread::SetAndTell(int row, int column, int viewEvent, double value)
{
    SetCellValue(row, column, value);
    ZtEvent event(kViewValueChanged);
    event.row = row;
    event.column = column;
    event.viewEvent = viewEvent;
    event.value = GetCell(row, column)->value;
    Send(event);
    return true;
}

bool ZtSpread::UserType(int row, int column, double value)
{
    if (!TakesInput("ZtSpread::UserType") || Cell(row, column) == nullptr || !std::isfinite(value))
        return false;
    const int kind = m_columns[static_cast<size_t>(column)].kind;
    if (kind == kCellCheck)
        return SetAndTell(row, column, 0, value != 0 ? 1 : 0);
    return kind == kCellNumber && SetAndTell(row, column, 0, value);
}

bool ZtSpread::UserSlide(int row, int column, int viewEvent, double value)
{
    const bool known = viewEvent == kViewPress || viewEvent == kViewValueChanged || viewEvent == kViewRelease;
    if (!(TakesInput("ZtSpread::UserSlide") || m_held) || !known || !std::isfinite(value))
        return false;
    // Let go of, also when the cell has gone in the course of the drag.
    m_held = m_held && viewEvent != kViewRelease;
    const ZtSpreadCell* const cell = Cell(row, column);
    if (cell == nullptr || cell->view != ZtSpreadCell::View::Slider)
        return false;
    m_held = m_held || viewEvent == kViewPress;
    return SetAndTell(row, column, viewEvent, value);
}
