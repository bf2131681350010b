// SPDX-License-Identifier: MIT
// Painting and editing the cells of a spread.
#include "desk/widgets/SpreadDelegate.h"

#include "desk/widgets/SpreadWidget.h"

#include <QApplication>
#include <QDoubleSpinBox>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace {

constexpr int kMargin = 4;
constexpr int kGrip = 4;

/// Takes a decimal point and a decimal comma, whatever the language.
class PercentBox : public QDoubleSpinBox
{
public:
    explicit PercentBox(QWidget* parent) : QDoubleSpinBox(parent)
    {
        setRange(0, 100);
        setDecimals(3);
        setFrame(false);
        setButtonSymbols(NoButtons);
        setGroupSeparatorShown(false);
        setKeyboardTracking(false);
    }
    double Rounded(double value) const { return QString::number(value, 'f', decimals()).toDouble(); }

protected:
    QValidator::State validate(QString& text, int& place) const override
    {
        text.replace(QLatin1Char(text.contains(QLatin1Char(',')) ? ',' : '.'), locale().decimalPoint());
        return QDoubleSpinBox::validate(text, place);
    }
};

} // namespace

QRect SpreadDelegate::Track(const QRect& cell) { return cell.adjusted(kMargin, kMargin, -kMargin, -kMargin); }

void SpreadDelegate::PaintSlider(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const double minimum = index.data(SpreadModel::kSliderMinimumRole).toDouble();
    const double maximum = index.data(SpreadModel::kSliderMaximumRole).toDouble();
    const double value = index.data(SpreadModel::kSliderRole).toDouble();
    const double part = maximum > minimum ? (value - minimum) / (maximum - minimum) : 0;
    const QRect track = Track(option.rect);
    const int reach = static_cast<int>(std::lround(part * track.width()));
    painter.fillRect(track, option.palette.color(QPalette::Mid));
    painter.fillRect(QRect(track.left(), track.top(), reach, track.height()),
                     option.palette.color(QPalette::Highlight));
    painter.fillRect(QRect(track.left() + reach - kGrip / 2, option.rect.top() + 2, kGrip, option.rect.height() - 4),
                     option.palette.color(QPalette::ButtonText));
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        painter.setPen(option.palette.color(QPalette::Highlight));
        painter.drawRect(option.rect.adjusted(0, 0, -1, -1));
    }
}

void SpreadDelegate::PaintCheck(QPainter& painter, const QStyleOptionViewItem& option, bool checked) const
{
    QStyleOptionViewItem panel = option;
    panel.backgroundBrush = {};
    const QWidget* const widget = option.widget;
    const QStyle* const style = widget != nullptr ? widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &panel, &painter, widget);
    QStyleOptionViewItem mark = option;
    const int side = style->pixelMetric(QStyle::PM_IndicatorWidth, &mark, widget);
    mark.rect = QRect(0, 0, side, side);
    mark.rect.moveCenter(option.rect.center());
    mark.state.setFlag(checked ? QStyle::State_On : QStyle::State_Off);
    mark.state.setFlag(QStyle::State_HasFocus, false);
    style->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &mark, &painter, widget);
}

void SpreadDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    painter->save();
    const QVariant check = index.data(Qt::CheckStateRole);
    if (index.data(SpreadModel::kSliderRole).isValid())
        PaintSlider(*painter, option, index);
    else if (check.isValid())
        PaintCheck(*painter, option, check.toInt() == Qt::Checked);
    else
        QStyledItemDelegate::paint(painter, option, index);
    painter->restore();
}

QWidget* SpreadDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex&) const
{
    auto* const box = new PercentBox(parent);
    box->setAccessibleName(tr("Weight in per cent"));
    return box;
}

void SpreadDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    auto* const box = static_cast<PercentBox*>(editor);
    box->interpretText();
    // What the box shows of the present value is no new one: Enter alone must not round it.
    if (box->value() != box->Rounded(index.data(Qt::EditRole).toDouble()))
        model->setData(index, box->value(), Qt::EditRole);
}

bool SpreadDelegate::editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                                 const QModelIndex& index)
{
    const QVariant check = index.data(Qt::CheckStateRole);
    if (!check.isValid() || !(index.flags() & Qt::ItemIsUserCheckable))
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    const bool clicked =
        event->type() == QEvent::MouseButtonRelease && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
    const bool typed = event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space;
    if (!clicked && !typed)
        return false;
    return model->setData(index, check.toInt() == Qt::Checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}
