// SPDX-License-Identifier: MIT
// Placing the widgets of a layout, and what makes it readable: scale, names for screen readers, order of the focus.
#include "desk/widgets/FormWidget.h"

#include "ztoolkit/ZtLayout.h"

#include <QEvent>

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>

namespace {

constexpr double kDesignFontHeight = 15;
constexpr double kLargestScale = 3;
constexpr int kLabelReach = 24; ///< a label this near names a control, in pixels of the layout

/// "SpreadWeights" -> "Spread weights": a name for a control that has no caption and no label.
QString Words(const std::string& name)
{
    QString words;
    for (const QChar letter : QString::fromStdString(name)) {
        if (letter.isUpper() && !words.isEmpty())
            words += QLatin1Char(' ');
        words += words.isEmpty() ? letter : letter.toLower();
    }
    return words;
}

/// How far the label is from the control that it would name: above its left edge, or to the left of it. Far: not at
/// all.
int LabelDistance(const ZtRect& label, const ZtRect& control)
{
    const int above = control.y - (label.y + label.height);
    if (above >= -2 && label.x >= control.x - 8 && label.x < control.x + control.width)
        return std::abs(above) + std::abs(label.x - control.x) / 4;
    const int before = control.x - (label.x + label.width);
    if (before >= -2 && std::abs(label.y - control.y) <= 8)
        return std::abs(before);
    return std::numeric_limits<int>::max();
}

} // namespace

FormWidget::FormWidget(ZtLayout& layout, const ControlContext& context, QWidget* parent)
    : QFrame(parent), m_layout(layout)
{
    Build(context);
    Measure();
    LabelControls();
    Sync();
    OrderByPlace();
}

FormWidget::FormWidget(ZtLayout& layout, FormWidget& outer, const ControlContext& context)
    : QFrame(&outer), m_layout(layout), m_outermost(false)
{
    Build(context);
}

FormWidget::~FormWidget() = default;

void FormWidget::Build(const ControlContext& context)
{
    setObjectName(QString::fromStdString(m_layout.GetObjectName()));
    if (const auto* const panel = Object_Cast<ZtPanel>(static_cast<ZObject*>(&m_layout)))
        setFrameStyle(panel->IsFlat() || panel->GetBorderWidth() == 0 ? NoFrame : int(StyledPanel) | int(Plain));
    for (const auto& region : m_layout.GetRegions()) {
        if (region->view == nullptr)
            continue;
        if (auto* const inner = Object_Cast<ZtLayout>(static_cast<ZObject*>(region->view)))
            m_inner.push_back(new FormWidget(*inner, *this, context));
        else if (auto control = MakeControlWidget(*region->view, context, this))
            m_controls.push_back(std::move(control));
    }
}

QSize FormWidget::DesignSize() const
{
    if (const auto* const form = Object_Cast<ZtForm>(static_cast<ZObject*>(&m_layout)))
        if (form->GetDesignWidth() > 0 && form->GetDesignHeight() > 0)
            return {form->GetDesignWidth(), form->GetDesignHeight()};
    return {600, 400};
}

/// The scale: the font's, widened as far as the captions need it.
void FormWidget::Measure()
{
    m_layout.Arrange(DesignSize().width(), DesignSize().height());
    m_scaleX = m_scaleY = std::max(1.0, fontMetrics().height() / kDesignFontHeight);
    Sync(); // captions are measured
    WidenForCaptions(m_scaleX, m_scaleY);
    m_scaleX = std::min(m_scaleX, kLargestScale);
    m_scaleY = std::min(m_scaleY, kLargestScale);
}

void FormWidget::WidenForCaptions(double& scaleX, double& scaleY) const
{
    for (const auto& control : m_controls) {
        const ZtRect& rect = control->View().GetRect();
        const QSize needed = control->NeededSize();
        if (rect.width > 0 && !control->MayGrow())
            scaleX = std::max(scaleX, static_cast<double>(needed.width()) / rect.width);
        if (rect.height > 0)
            scaleY = std::max(scaleY, static_cast<double>(needed.height()) / rect.height);
    }
    for (const FormWidget* const inner : m_inner)
        inner->WidenForCaptions(scaleX, scaleY);
}

void FormWidget::LabelControls()
{
    std::vector<const ControlWidget*> labels;
    for (const auto& control : m_controls)
        if (control->View().GetViewKind() == ZtViewKind::Label)
            labels.push_back(control.get());
    for (const auto& control : m_controls) {
        if (!control->View().GetCaption().empty())
            continue;
        QString name = Words(control->View().GetObjectName());
        int nearest = kLabelReach;
        for (const ControlWidget* const label : labels)
            if (const int distance = LabelDistance(label->View().GetRect(), control->View().GetRect());
                distance < nearest) {
                nearest = distance;
                name = QString::fromStdString(label->View().GetCaption()).remove(QLatin1Char(':')).trimmed();
            }
        control->SetLabel(name);
    }
    for (FormWidget* const inner : m_inner)
        inner->LabelControls();
}

void FormWidget::CollectFocus(std::vector<QWidget*>& widgets) const
{
    for (const auto& control : m_controls)
        if (control->FocusWidget()->focusPolicy() != Qt::NoFocus)
            widgets.push_back(control->FocusWidget());
    for (const FormWidget* const inner : m_inner)
        inner->CollectFocus(widgets);
}

/// The Tab key goes through the columns from left to right, in each from the top down.
void FormWidget::OrderByPlace()
{
    Place(m_scaleX, m_scaleY);
    std::vector<QWidget*> widgets;
    CollectFocus(widgets);
    const auto place = [this](const QWidget* widget) { return widget->mapTo(this, QPoint(0, 0)); };
    const int column = static_cast<int>(40 * m_scaleX);
    std::stable_sort(widgets.begin(), widgets.end(), [&](const QWidget* a, const QWidget* b) {
        const QPoint left = place(a), right = place(b);
        return std::pair(left.x() / column, left.y()) < std::pair(right.x() / column, right.y());
    });
    for (size_t i = 1; i < widgets.size(); ++i)
        setTabOrder(widgets[i - 1], widgets[i]);
}

QSize FormWidget::Scaled(const QSize& size) const
{
    return {static_cast<int>(std::lround(size.width() * m_scaleX)),
            static_cast<int>(std::lround(size.height() * m_scaleY))};
}

QSize FormWidget::MinimumUsefulSize()
{
    constexpr int kAcross = 4, kOf = 5; // four fifths of the width that the form was drawn for
    const QSize design = DesignSize();
    m_layout.Arrange(design.width() * kAcross / kOf, 1);
    std::vector<ZtView*> views;
    m_layout.CollectViews(views);
    // Rectangles count from the form around a view; inner forms lie beside each other near the top.
    int bottom = 0;
    for (const ZtView* const view : views)
        bottom = std::max(bottom, view->GetRect().y + view->GetRect().height);
    m_layout.Arrange(std::max(1, static_cast<int>(width() / m_scaleX)),
                     std::max(1, static_cast<int>(height() / m_scaleY)));
    return Scaled({design.width() * kAcross / kOf, bottom});
}

void FormWidget::Sync()
{
    for (const auto& control : m_controls)
        control->SyncIfChanged();
    for (FormWidget* const inner : m_inner) {
        inner->setEnabled(inner->m_layout.IsEnabled());
        inner->setVisible(inner->m_layout.IsVisible());
        inner->Sync();
    }
}

QWidget* FormWidget::FindWidget(const ZtView& view) const
{
    for (const auto& control : m_controls)
        if (&control->View() == &view)
            return control->Widget();
    for (const FormWidget* const inner : m_inner) {
        if (&inner->m_layout == &view)
            return const_cast<FormWidget*>(inner);
        if (QWidget* const found = inner->FindWidget(view))
            return found;
    }
    return nullptr;
}

void FormWidget::resizeEvent(QResizeEvent* event)
{
    QFrame::resizeEvent(event);
    if (!m_outermost)
        return;
    m_layout.Arrange(static_cast<int>(width() / m_scaleX), static_cast<int>(height() / m_scaleY));
    Place(m_scaleX, m_scaleY);
}

void FormWidget::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (!m_outermost || (event->type() != QEvent::FontChange && event->type() != QEvent::StyleChange))
        return;
    Measure();
    m_layout.Arrange(static_cast<int>(width() / m_scaleX), static_cast<int>(height() / m_scaleY));
    Place(m_scaleX, m_scaleY);
}

void FormWidget::Place(double scaleX, double scaleY)
{
    std::unordered_map<const ZtView*, ControlWidget*> controlOf;
    for (const auto& control : m_controls)
        controlOf[&control->View()] = control.get();
    std::unordered_map<const ZtView*, FormWidget*> innerOf;
    for (FormWidget* const inner : m_inner)
        innerOf[&inner->m_layout] = inner;

    for (const auto& region : m_layout.GetRegions()) {
        const ZtRect& rect = region->rect;
        QRect place(static_cast<int>(std::lround(rect.x * scaleX)), static_cast<int>(std::lround(rect.y * scaleY)),
                    static_cast<int>(std::lround(rect.width * scaleX)),
                    static_cast<int>(std::lround(rect.height * scaleY)));
        if (const auto control = controlOf.find(region->view); control != controlOf.end()) {
            if (control->second->MayGrow())
                place.setWidth(std::max(place.width(), control->second->NeededSize().width()));
            control->second->Widget()->setGeometry(place);
        } else if (const auto inner = innerOf.find(region->view); inner != innerOf.end()) {
            inner->second->setGeometry(place);
            inner->second->Place(scaleX, scaleY);
        }
    }
}
