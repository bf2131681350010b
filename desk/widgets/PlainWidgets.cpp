// SPDX-License-Identifier: MIT
// Widgets for label, combo box, check box, colour field and slider.
#include "desk/widgets/PlainWidgets.h"

#include "ztoolkit/ZtControls.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kSliderSteps = 1000;
// What stands around a caption, in pixels.
constexpr int kComboFrame = 32;
constexpr int kButtonFrame = 12;
constexpr int kCheckFrame = 24;
constexpr int kFrameHeight = 6;

class LabelWidget : public ControlWidget
{
public:
    LabelWidget(ZtStatic& label, QWidget* parent) : ControlWidget(label), m_label(new QLabel(parent)) {}
    QWidget* Widget() override { return m_label; }
    void Sync() override { m_label->setText(QString::fromStdString(View().GetCaption())); }
    QSize NeededSize() const override { return {m_label->sizeHint().width(), 0}; }
    bool MayGrow() const override { return true; }

private:
    QLabel* m_label;
};

class ComboWidget : public ControlWidget
{
public:
    ComboWidget(ZtComboBox& combo, const ControlContext& context, QWidget* parent)
        : ControlWidget(combo), m_combo(combo), m_box(new QComboBox(parent))
    {
        QObject::connect(m_box, &QComboBox::activated, m_box, [this, context](int index) {
            m_combo.UserChoose(index);
            context.afterEvent();
        });
    }
    QWidget* Widget() override { return m_box; }
    void Sync() override
    {
        const QSignalBlocker quiet(m_box);
        m_box->clear();
        for (int i = 0; i < m_combo.GetItems().GetCount(); ++i)
            m_box->addItem(QString::fromStdString(m_combo.GetItems().GetAt(i)));
        m_box->setCurrentIndex(m_combo.GetIndex());
    }
    QSize NeededSize() const override
    {
        int width = 0;
        for (int i = 0; i < m_box->count(); ++i)
            width = std::max(width, m_box->fontMetrics().horizontalAdvance(m_box->itemText(i)));
        return {width + kComboFrame, m_box->fontMetrics().height() + kFrameHeight};
    }

private:
    ZtComboBox& m_combo;
    QComboBox* m_box;
};

class CheckWidget : public ControlWidget
{
public:
    CheckWidget(ZtCheckBox& check, const ControlContext& context, QWidget* parent)
        : ControlWidget(check), m_check(check), m_button(MakeButton(check.HasPushButtonLook(), parent))
    {
        m_button->setCheckable(true);
        QObject::connect(m_button, &QAbstractButton::clicked, m_button, [this, context] {
            m_check.UserClick();
            context.afterEvent();
            m_button->setChecked(m_check.GetState()); // the answer may be no
        });
    }
    QWidget* Widget() override { return m_button; }
    void Sync() override
    {
        m_button->setText(QString::fromStdString(View().GetCaption()));
        m_button->setChecked(m_check.GetState());
    }
    QSize NeededSize() const override
    {
        const int frame = m_check.HasPushButtonLook() ? kButtonFrame : kCheckFrame;
        return {m_button->fontMetrics().horizontalAdvance(m_button->text()) + frame,
                m_button->fontMetrics().height() + kFrameHeight};
    }

private:
    static QAbstractButton* MakeButton(bool pushButton, QWidget* parent)
    {
        if (pushButton)
            return new QPushButton(parent);
        return new QCheckBox(parent);
    }

    ZtCheckBox& m_check;
    QAbstractButton* m_button;
};

class ColourWidget : public ControlWidget
{
public:
    ColourWidget(ZtColor& colour, const ControlContext& context, QWidget* parent)
        : ControlWidget(colour), m_colour(colour), m_button(new QPushButton(parent))
    {
        QObject::connect(m_button, &QPushButton::clicked, m_button, [this, context] {
            const QColor chosen = QColorDialog::getColor(Colour(), m_button, m_button->accessibleName());
            if (!chosen.isValid())
                return;
            m_colour.UserSetColour(chosen.redF(), chosen.greenF(), chosen.blueF());
            context.afterEvent();
        });
    }
    QWidget* Widget() override { return m_button; }
    void Sync() override
    {
        m_button->setStyleSheet(
            QStringLiteral("background-color: %1; border: 1px solid palette(mid);").arg(Colour().name()));
        m_button->setAccessibleDescription(Colour().name());
    }

private:
    QColor Colour() const
    {
        const double* const c = m_colour.GetColour();
        return QColor::fromRgbF(static_cast<float>(c[0]), static_cast<float>(c[1]), static_cast<float>(c[2]));
    }

    ZtColor& m_colour;
    QPushButton* m_button;
};

class SliderWidget : public ControlWidget
{
public:
    SliderWidget(ZtSlider& slider, const ControlContext& context, QWidget* parent)
        : ControlWidget(slider), m_slider(slider),
          m_bar(new QSlider(slider.IsHorizontal() ? Qt::Horizontal : Qt::Vertical, parent))
    {
        m_bar->setRange(0, kSliderSteps);
        QObject::connect(m_bar, &QSlider::sliderPressed, m_bar, [this, context] {
            m_slider.UserPress(Value(m_bar->sliderPosition()));
            context.afterEvent();
        });
        QObject::connect(m_bar, &QSlider::sliderReleased, m_bar, [this, context] {
            m_slider.UserRelease(Value(m_bar->sliderPosition()));
            context.afterEvent();
        });
        QObject::connect(m_bar, &QSlider::valueChanged, m_bar, [this, context](int position) {
            if (m_bar->isSliderDown())
                m_slider.UserDrag(Value(position));
            else
                m_slider.UserSetValue(Value(position));
            context.afterEvent();
        });
    }
    QWidget* Widget() override { return m_bar; }
    void Sync() override
    {
        if (m_bar->isSliderDown())
            return;
        const QSignalBlocker quiet(m_bar);
        const double range = m_slider.GetMaximum() - m_slider.GetMinimum();
        const double part = range > 0 ? (m_slider.GetValue() - m_slider.GetMinimum()) / range : 0;
        m_bar->setValue(static_cast<int>(std::lround(part * kSliderSteps)));
    }

private:
    double Value(int position) const
    {
        const double range = m_slider.GetMaximum() - m_slider.GetMinimum();
        return m_slider.GetMinimum() + range * position / kSliderSteps;
    }

    ZtSlider& m_slider;
    QSlider* m_bar;
};

} // namespace

std::unique_ptr<ControlWidget> MakeLabelWidget(ZtStatic& label, QWidget* parent)
{
    return std::make_unique<LabelWidget>(label, parent);
}
std::unique_ptr<ControlWidget> MakeComboWidget(ZtComboBox& combo, const ControlContext& context, QWidget* parent)
{
    return std::make_unique<ComboWidget>(combo, context, parent);
}
std::unique_ptr<ControlWidget> MakeCheckWidget(ZtCheckBox& check, const ControlContext& context, QWidget* parent)
{
    return std::make_unique<CheckWidget>(check, context, parent);
}
std::unique_ptr<ControlWidget> MakeColourWidget(ZtColor& colour, const ControlContext& context, QWidget* parent)
{
    return std::make_unique<ColourWidget>(colour, context, parent);
}
std::unique_ptr<ControlWidget> MakeSliderWidget(ZtSlider& slider, const ControlContext& context, QWidget* parent)
{
    return std::make_unique<SliderWidget>(slider, context, parent);
}
