// SPDX-License-Identifier: MIT
// Widgets for the toolkit's controls, driven by the control's state alone.
#pragma once

#include "ztoolkit/ZtView.h"

#include <QSize>
#include <QString>

#include <functional>
#include <memory>

class QWidget;

/// What a control's widget needs of the window around it.
struct ControlContext
{
    /// Called after every action of the user on a control, so that the host and all widgets catch up.
    std::function<void()> afterEvent;
};

/// Shows one control: Sync brings the widget up to the control's state, and the user's hand on the widget becomes the
/// control's User... calls. A widget holds no state that the control does not know, but for a gesture under way. The
/// QWidget belongs to its Qt parent; the control outlives both.
class ControlWidget
{
public:
    virtual ~ControlWidget() = default;
    virtual QWidget* Widget() = 0;
    /// The widget that takes the keyboard: the one that screen readers name.
    virtual QWidget* FocusWidget() { return Widget(); }
    /// Called when the control's change count differs from the last time.
    virtual void Sync() = 0;
    /// Pixels that the caption needs with the present font; 0 x 0 when any region is large enough.
    virtual QSize NeededSize() const { return {0, 0}; }
    /// May the widget reach over its region's right edge? Captions that stand alone may.
    virtual bool MayGrow() const { return false; }

    ZtView& View() const { return m_view; }
    /// The name for screen readers of a control without a caption.
    void SetLabel(const QString& label);
    void SyncIfChanged();

protected:
    explicit ControlWidget(ZtView& view) : m_view(view) {}

private:
    void SyncCommon();

    ZtView& m_view;
    QString m_label;
    long m_synced = -1;
};

/// The widget for a control, by its kind; null for kinds that show nothing. The parent owns the QWidget, the caller the
/// answer.
std::unique_ptr<ControlWidget> MakeControlWidget(ZtView& view, const ControlContext& context, QWidget* parent);
