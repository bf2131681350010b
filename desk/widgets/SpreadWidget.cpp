// SPDX-License-Identifier: MIT
// The spread's table: its model, and sliders that are held with the pointer or moved with keys.
#include "desk/widgets/SpreadWidget.h"

#include "desk/widgets/SpreadDelegate.h"
#include "ztoolkit/ZtSpread.h"

#include <QColor>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QTableView>

#include <algorithm>

namespace {

constexpr double kDesignFontHeight = 15; ///< of the letters for which column widths were drawn
constexpr int kRowPadding = 6;

bool IsSlider(const ZtSpreadCell* cell) { return cell != nullptr && cell->view == ZtSpreadCell::View::Slider; }

/// The table; a press on a slider cell takes hold of its grip, + and - move it by one.
class SpreadView : public QTableView
{
public:
    SpreadView(ZtSpread& spread, SpreadModel& cells, const ControlContext& context, QWidget* parent)
        : QTableView(parent), m_spread(spread), m_context(context)
    {
        setModel(&cells);
        setItemDelegate(new SpreadDelegate(this));
        setSelectionMode(SingleSelection);
        setTabKeyNavigation(false);
        // Not by a click on the current cell: while that waits whether it becomes a double click, typed keys are lost.
        setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed);
        setHorizontalScrollMode(ScrollPerPixel);
        setCornerButtonEnabled(false);
        verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRowPadding);
        verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        verticalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        horizontalHeader()->setMinimumSectionSize(16);
        horizontalHeader()->setHighlightSections(false);
        verticalHeader()->setHighlightSections(false);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        const QModelIndex index = indexAt(event->pos());
        if (event->button() != Qt::LeftButton || !IsSlider(m_spread.GetCell(index.row(), index.column()))) {
            QTableView::mousePressEvent(event);
            return;
        }
        setCurrentIndex(index);
        m_held = {index.row(), index.column()};
        m_isHeld = true;
        Slide(kViewPress, event->pos());
    }
    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (m_isHeld)
            Slide(kViewValueChanged, event->pos());
        else
            QTableView::mouseMoveEvent(event);
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        if (!m_isHeld) {
            QTableView::mouseReleaseEvent(event);
            return;
        }
        Slide(kViewRelease, event->pos());
        m_isHeld = false;
    }
    void keyPressEvent(QKeyEvent* event) override
    {
        const int step = event->key() == Qt::Key_Plus ? 1 : event->key() == Qt::Key_Minus ? -1 : 0;
        if (step == 0 || !Nudge(step))
            QTableView::keyPressEvent(event);
    }

private:
    bool Nudge(int step)
    {
        const int row = currentIndex().row(), column = currentIndex().column();
        const ZtSpreadCell* const cell = m_spread.GetCell(row, column);
        if (!IsSlider(cell))
            return false;
        const double before = cell->value;
        m_spread.UserSlide(row, column, kViewPress, before);
        m_spread.UserSlide(row, column, kViewRelease, before + step);
        m_context.afterEvent();
        return true;
    }

    void Slide(int viewEvent, const QPoint& pointer)
    {
        const auto [row, column] = m_held;
        const ZtSpreadCell* const cell = m_spread.GetCell(row, column);
        if (cell == nullptr)
            return;
        const QRect track = SpreadDelegate::Track(visualRect(model()->index(row, column)));
        const double part = std::clamp(double(pointer.x() - track.left()) / std::max(1, track.width()), 0.0, 1.0);
        m_spread.UserSlide(row, column, viewEvent, cell->minimum + part * (cell->maximum - cell->minimum));
        m_context.afterEvent();
    }

    ZtSpread& m_spread;
    ControlContext m_context;
    std::pair<int, int> m_held; ///< row and column; rows may be built anew while the grip is held
    bool m_isHeld = false;
};

class SpreadWidget : public ControlWidget
{
public:
    SpreadWidget(ZtSpread& spread, const ControlContext& context, QWidget* parent)
        : ControlWidget(spread), m_spread(spread), m_model(new SpreadModel(spread, context, parent)),
          m_view(new SpreadView(spread, *m_model, context, parent))
    {
    }
    QWidget* Widget() override { return m_view; }
    void Sync() override
    {
        const QModelIndex current = m_view->currentIndex();
        const int row = current.row(), column = current.column();
        if (!m_model->Refill())
            return;
        if (const QModelIndex again = m_model->index(row, column); again.isValid())
            m_view->selectionModel()->setCurrentIndex(again, QItemSelectionModel::ClearAndSelect);
        const double scale = std::max(1.0, m_view->fontMetrics().height() / kDesignFontHeight);
        m_view->verticalHeader()->setFixedWidth(static_cast<int>(m_spread.GetRowLabelWidth() * scale));
        int widest = 0;
        for (int i = 0; i < m_model->columnCount(); ++i) {
            m_view->setColumnWidth(i, ColumnWidth(m_spread.GetColumns()[static_cast<size_t>(i)], scale));
            widest = m_view->columnWidth(i) > m_view->columnWidth(widest) ? i : widest;
        }
        ShareRoom(widest);
    }

private:
    /// Room to the right of the columns goes to the widest one: the longer a slider, the finer it is.
    void ShareRoom(int widest)
    {
        QHeaderView& header = *m_view->horizontalHeader();
        for (int i = 0; i < m_model->columnCount(); ++i)
            header.setSectionResizeMode(i, i == widest ? QHeaderView::Stretch : QHeaderView::Interactive);
    }

    int ColumnWidth(const ZtSpreadColumn& column, double scale) const
    {
        constexpr int kHeaderFrame = 10;
        const int title =
            m_view->horizontalHeader()->fontMetrics().horizontalAdvance(QString::fromStdString(column.name));
        return std::max(static_cast<int>(column.width * scale), title + kHeaderFrame);
    }

    ZtSpread& m_spread;
    SpreadModel* m_model;
    SpreadView* m_view;
};

} // namespace

SpreadModel::SpreadModel(ZtSpread& spread, const ControlContext& context, QObject* parent)
    : QAbstractTableModel(parent), m_spread(spread), m_context(context)
{
}

int SpreadModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : m_rows; }
int SpreadModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : m_columns; }

QVariant SpreadModel::data(const QModelIndex& index, int role) const
{
    const ZtSpreadCell* const cell = m_spread.GetCell(index.row(), index.column());
    if (cell == nullptr)
        return {};
    if (IsSlider(cell)) {
        if (role == kSliderRole)
            return cell->value;
        if (role == kSliderMinimumRole)
            return cell->minimum;
        if (role == kSliderMaximumRole)
            return cell->maximum;
        return role == Qt::AccessibleTextRole ? QVariant(QLocale().toString(cell->value, 'f', 2)) : QVariant();
    }
    const int kind = m_spread.GetColumns()[static_cast<size_t>(index.column())].kind;
    if (cell->view == ZtSpreadCell::View::Colour) {
        const QColor colour = QColor::fromRgbF(cell->colour[0], cell->colour[1], cell->colour[2]);
        if (role == Qt::BackgroundRole)
            return colour;
        return role == Qt::AccessibleTextRole ? QVariant(colour.name()) : QVariant();
    }
    if (role == Qt::CheckStateRole && kind == kCellCheck)
        return cell->value != 0 ? Qt::Checked : Qt::Unchecked;
    if (kind != kCellNumber)
        return {};
    if (role == Qt::DisplayRole)
        return QLocale().toString(cell->value, 'f', 2);
    if (role == Qt::EditRole)
        return cell->value;
    if (role == Qt::TextAlignmentRole)
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant SpreadModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    if (orientation == Qt::Vertical)
        return section < m_spread.GetRowCount() ? QString::fromStdString(m_spread.GetRowLabel(section)) : QString();
    return QString::fromStdString(m_spread.GetColumns()[static_cast<size_t>(section)].name);
}

bool SpreadModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    bool isNumber = true;
    const double number =
        role == Qt::CheckStateRole ? (value.toInt() == Qt::Checked ? 1.0 : 0.0) : value.toDouble(&isNumber);
    if (!isNumber || !m_spread.UserType(index.row(), index.column(), number))
        return false;
    m_context.afterEvent();
    return true;
}

Qt::ItemFlags SpreadModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (!index.isValid())
        return flags;
    const int kind = m_spread.GetColumns()[static_cast<size_t>(index.column())].kind;
    if (kind == kCellNumber)
        flags |= Qt::ItemIsEditable;
    if (kind == kCellCheck)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

bool SpreadModel::Refill()
{
    const int rows = m_spread.GetRowCount();
    const int columns = static_cast<int>(m_spread.GetColumns().size());
    if (rows != m_rows || columns != m_columns) {
        beginResetModel();
        m_rows = rows;
        m_columns = columns;
        endResetModel();
        return true;
    }
    if (rows > 0 && columns > 0) {
        emit dataChanged(index(0, 0), index(rows - 1, columns - 1));
        emit headerDataChanged(Qt::Vertical, 0, rows - 1);
    }
    return false;
}

std::unique_ptr<ControlWidget> MakeSpreadWidget(ZtSpread& spread, const ControlContext& context, QWidget* parent)
{
    return std::make_unique<SpreadWidget>(spread, context, parent);
}
