// SPDX-License-Identifier: MIT
// What all widgets of controls share, and which widget a control gets.
#include "desk/widgets/ControlWidget.h"

#include "desk/widgets/ListWidget.h"
#include "desk/widgets/PlainWidgets.h"
#include "desk/widgets/SpreadWidget.h"
#include "ztoolkit/ZtControls.h"
#include "ztoolkit/ZtListBox.h"
#include "ztoolkit/ZtSpread.h"

#include <QWidget>

void ControlWidget::SetLabel(const QString& label)
{
    m_label = label;
    m_synced = -1;
}

void ControlWidget::SyncIfChanged()
{
    if (m_view.GetChangeCount() == m_synced)
        return;
    m_synced = m_view.GetChangeCount();
    SyncCommon();
    Sync();
}

void ControlWidget::SyncCommon()
{
    Widget()->setEnabled(m_view.IsEnabled());
    Widget()->setVisible(m_view.IsVisible());
    const QString name = QString::fromStdString(m_view.GetObjectName());
    Widget()->setObjectName(name);
    const QString caption = QString::fromStdString(m_view.GetCaption()).trimmed();
    FocusWidget()->setAccessibleName(!caption.isEmpty() ? caption : m_label.isEmpty() ? name : m_label);
    const QString tip = QString::fromStdString(m_view.GetToolTip());
    Widget()->setToolTip(tip.isEmpty() ? FocusWidget()->accessibleName() : tip);
}

std::unique_ptr<ControlWidget> MakeControlWidget(ZtView& view, const ControlContext& context, QWidget* parent)
{
    switch (view.GetViewKind()) {
    case ZtViewKind::List:
        return MakeListWidget(static_cast<ZtListBox&>(view), context, parent);
    case ZtViewKind::Combo:
        return MakeComboWidget(static_cast<ZtComboBox&>(view), context, parent);
    case ZtViewKind::Check:
        return MakeCheckWidget(static_cast<ZtCheckBox&>(view), context, parent);
    case ZtViewKind::Slider:
        return MakeSliderWidget(static_cast<ZtSlider&>(view), context, parent);
    case ZtViewKind::Colour:
        return MakeColourWidget(static_cast<ZtColor&>(view), context, parent);
    case ZtViewKind::Spread:
        return MakeSpreadWidget(static_cast<ZtSpread&>(view), context, parent);
    case ZtViewKind::Label:
        return MakeLabelWidget(static_cast<ZtStatic&>(view), parent);
    default:
        return nullptr;
    }
}
