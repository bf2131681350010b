// SPDX-License-Identifier: MIT
// The widget for a layout: its controls at the places that its regions say, scaled with the font.
#pragma once

#include "desk/widgets/ControlWidget.h"

#include <QFrame>

#include <memory>
#include <vector>

class ZtLayout;

/// Shows a layout and everything in it. Regions are in pixels of a screen with letters 15 pixels high; they are widened
/// with the font, and further where a caption would be cut. The layout must outlive the widget or be taken away with
/// it.
class FormWidget : public QFrame
{
    Q_OBJECT
public:
    FormWidget(ZtLayout& layout, const ControlContext& context, QWidget* parent);
    ~FormWidget() override;

    /// Brings every widget up to its control's state.
    void Sync();
    /// The widget of a control, wherever in the form it lies; null when there is none.
    QWidget* FindWidget(const ZtView& view) const;
    /// How many pixels of the screen a pixel of the layout is, across and down.
    double ScaleX() const { return m_scaleX; }
    double ScaleY() const { return m_scaleY; }
    /// `size`, in pixels of the layout, on this screen.
    QSize Scaled(const QSize& size) const;
    /// The size on this screen below which controls that hang at the top or the left would be cut.
    QSize MinimumUsefulSize();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    FormWidget(ZtLayout& layout, FormWidget& outer, const ControlContext& context);
    void Build(const ControlContext& context);
    QSize DesignSize() const;
    void Measure();
    void WidenForCaptions(double& scaleX, double& scaleY) const;
    void LabelControls();
    void OrderByPlace();
    void CollectFocus(std::vector<QWidget*>& widgets) const;
    void Place(double scaleX, double scaleY);

    ZtLayout& m_layout;
    bool m_outermost = true;
    double m_scaleX = 1, m_scaleY = 1;
    std::vector<std::unique_ptr<ControlWidget>> m_controls;
    std::vector<FormWidget*> m_inner; ///< owned by Qt
};
