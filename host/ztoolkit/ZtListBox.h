// SPDX-License-Identifier: MIT
// A virtual list box: it knows which rows are selected and checked, and asks for the text of the rows that are shown.
#pragma once

#include "ztoolkit/ZtView.h"

#include <cstdint>
#include <vector>

class ZtListBox;

/// Whoever fills a list box answers the text of a row when it is asked for; the box keeps no text.
class IZtRowSource
{
public:
    virtual std::string RowText(const ZtListBox& list, int row) const = 0;

protected:
    ~IZtRowSource() = default;
};

/// Events: kViewSelectionChanged (row = the row that was touched), kViewValueChanged (check marks; row = the row
/// touched), kViewDragAndDrop. One byte a row. The current row is the first selected one, -1 when none is.
class ZtListBox : public ZtView
{
public:
    ZCLASS_DECLARE()
    explicit ZtListBox(const char* name);

    // Properties: list style (0 = plain), several rows at once, extended selection with Shift and Ctrl.
    void SetListStyle(int style) { m_style = style; }
    int GetListStyle() const { return m_style; }
    /// Switched off, at most one row is selected: of several the first one stays.
    void SetMultipleSelection(bool several);
    bool HasMultipleSelection() const { return m_multiple; }
    void SetExtendedSelection(bool extended) { m_extended = extended; }
    bool HasExtendedSelection() const { return m_extended; }
    void SetCheckMarks(bool shown) { m_checkMarks = shown; }
    bool HasCheckMarks() const { return m_checkMarks; }

    /// Who answers texts; null: all texts are empty. Must outlive the box or be taken back.
    void SetRowSource(const IZtRowSource* source) { m_source = source; }
    std::string GetRowText(int row) const;

    int GetRowCount() const { return static_cast<int>(m_rows.size()); }
    void ClearRows();
    /// Appends rows that are neither selected nor checked.
    void AddRows(int count);
    /// The texts changed, the rows stay.
    void TextsChanged()
    {
        ++m_textsVersion;
        MarkChanged();
    }
    /// Counts up when there are other rows or texts than before; a selection or a check mark changes nothing.
    long GetTextsVersion() const { return m_textsVersion; }

    bool IsRowSelected(int row) const;
    /// Out of range is ignored. Without multiple selection the row takes the place of the one that was selected.
    void SetRowSelected(int row, bool selected);
    /// Selects many rows besides those that are; whoever shows the list hears of it once.
    void SelectRows(const int* rows, int count);
    void DeselectAll();
    int GetSelectedCount() const { return m_selectedCount; }
    /// Ascending.
    std::vector<int> GetSelectedRows() const;
    /// The first selected row, -1 when none is.
    int GetCurrentRow() const;
    bool GetRowCheck(int row) const;
    void SetRowCheck(int row, bool checked);

    /// Exactly these rows become selected, without multiple selection only the last one; the last one given is the one
    /// touched (-1 for none). One event; none when the selection is what it was. False when a row is not there, nothing
    /// changed then.
    bool UserSelect(const std::vector<int>& rows);
    /// One event; none when the mark is what it was. False without check marks or when the row is not there.
    bool UserSetCheck(int row, bool checked);
    /// Sends a drag-and-drop event of this stage.
    void UserDragAndDrop(int stage);

private:
    static constexpr std::uint8_t kSelected = 1;
    static constexpr std::uint8_t kChecked = 2;
    static constexpr std::uint8_t kTouched = 4; ///< only while a selection is compared
    bool HasRow(int row) const { return row >= 0 && row < GetRowCount(); }
    bool IsSelection(const std::vector<int>& rows);
    void Mark(int row, bool selected);

    const IZtRowSource* m_source = nullptr;
    std::vector<std::uint8_t> m_rows;
    long m_textsVersion = 0;
    int m_selectedCount = 0;
    mutable int m_noneBefore = 0; ///< no row before this one is selected: where looking for the first one begins
    int m_style = 0;
    bool m_multiple = false;
    bool m_extended = false;
    bool m_checkMarks = false;
};
