// SPDX-License-Identifier: MIT
// A spreadsheet with cells of several kinds.
#pragma once

#include "ztoolkit/ZtControls.h"
#include "ztoolkit/ZtView.h"

#include <memory>
#include <string>
#include <vector>

// Kinds of cells, as columns name them.
inline constexpr int kCellNumber = 2;
inline constexpr int kCellCheck = 5;
inline constexpr int kCellView = 9;

/// What a view cell shows: a colour without an editor, or a slider.
struct ZtSpreadCell
{
    enum class View
    {
        None,
        Colour,
        Slider
    };
    View view = View::None;
    float colour[3] = {0, 0, 0};
    double value = 0;                  ///< slider, number, or 0 and 1 of a check cell
    double minimum = 0, maximum = 100; ///< of a slider
};

struct ZtSpreadColumn
{
    std::string name;
    int kind = kCellNumber;
    int width = 0; ///< pixels
};

/// Rows and columns are counted from 0, the row-label column not counted. Event: kViewValueChanged with row, column,
/// viewEvent (of a slider cell: kViewPress, kViewValueChanged or kViewRelease; else 0) and value. The cell already
/// holds the new value when the event is sent; a handler that refuses the edit writes the old one back.
class ZtSpread : public ZtView
{
public:
    ZCLASS_DECLARE()
    explicit ZtSpread(const char* name);

    /// Forgets rows and columns.
    void Clear();
    void SetRowLabelWidth(int width);
    int GetRowLabelWidth() const { return m_rowLabelWidth; }
    int AddColumn(const char* name, int kind, int width);
    const std::vector<ZtSpreadColumn>& GetColumns() const { return m_columns; }

    /// Keeps the rows that are there; new ones are empty.
    void SetRowCount(int count);
    int GetRowCount() const { return static_cast<int>(m_labels.size()); }
    void SetRowLabel(int row, const std::string& label);
    const std::string& GetRowLabel(int row) const;

    // Cells that are not there, or of another kind, are passed over; so are numbers that are not finite.
    void SetColourCell(int row, int column, float red, float green, float blue);
    void SetSliderCell(int row, int column, double value, double minimum, double maximum);
    /// Of a slider, number or check cell; its view stays.
    void SetCellValue(int row, int column, double value);
    /// Null when there is no such cell.
    const ZtSpreadCell* GetCell(int row, int column) const;

    /// Typed into a number cell, or a check cell set (0, else 1). An event even when it held that value. False: no such
    /// cell, not of these kinds, not finite.
    bool UserType(int row, int column, double value);
    /// A slider cell moved: `viewEvent` is kViewPress, kViewValueChanged or kViewRelease; clamped to its range. False:
    /// no slider there, another event, not finite. Once pressed, a cell is carried to its release even when the spread
    /// is disabled on the way.
    bool UserSlide(int row, int column, int viewEvent, double value);

private:
    ZtSpreadCell* Cell(int row, int column);
    bool SetAndTell(int row, int column, int viewEvent, double value);
    int m_rowLabelWidth = 0;
    bool m_held = false; ///< a slider cell is pressed
    std::vector<ZtSpreadColumn> m_columns;
    std::vector<std::string> m_labels;
    std::vector<ZtSpreadCell> m_cells; ///< row after row
};
