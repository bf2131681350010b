// SPDX-License-Identifier: MIT
// The base of all controls: properties, handlers and the sending of events.
#include "ztoolkit/ZtView.h"

#include "zbaselib/ZReport.h"

#include <algorithm>

ZCLASS_DEFINE(ZtView, ZObject)

namespace {
std::string Named(const ZtView& view) { return '"' + view.GetObjectName() + '"'; }
} // namespace

ZtView::ZtView(ZtViewKind viewKind, const char* name)
    : ZObject(name), m_viewKind(viewKind), m_thread(std::this_thread::get_id())
{
}

ZtView::~ZtView()
{
    if (!IsDestroyed())
        ZtView::SystemDetach();
}

void ZtView::SystemDetach()
{
    if (m_parent != nullptr)
        m_parent->ForgetView(this);
    m_parent = nullptr;
    ZObject::SystemDetach();
}

void ZtView::ForgetView(ZtView*) {}

void ZtView::SetCaption(const std::string& caption)
{
    if (m_caption == caption)
        return;
    m_caption = caption;
    MarkChanged();
}

void ZtView::SetToolTip(const std::string& toolTip)
{
    if (m_toolTip == toolTip)
        return;
    m_toolTip = toolTip;
    MarkChanged();
}

void ZtView::SetEnabled(bool enabled)
{
    if (m_enabled == enabled)
        return;
    m_enabled = enabled;
    MarkChanged();
}

void ZtView::SetVisible(bool visible)
{
    if (m_visible == visible)
        return;
    m_visible = visible;
    MarkChanged();
}

void ZtView::SetRect(const ZtRect& rect)
{
    if (m_rect == rect)
        return;
    m_rect = rect;
    MarkChanged();
}

bool ZtView::IsUsable(const char* call) const
{
    if (IsDestroyed()) {
        ZReport_Misuse(call, "the view " + Named(*this) + " has been destroyed");
        return false;
    }
    if (m_thread != std::this_thread::get_id()) {
        ZReport_Misuse(call, "the view " + Named(*this) + " belongs to another thread");
        return false;
    }
    return true;
}

bool ZtView::TakesInput(const char* call) const { return IsUsable(call) && m_enabled; }

void ZtView::RegisterHandler(int eventKind, const ZHandler& handler)
{
    if (!IsUsable("ZtView::RegisterHandler"))
        return;
    if (!handler) {
        ZReport_Misuse("ZtView::RegisterHandler", "a handler of " + Named(*this) + " needs an operation to call");
        return;
    }
    const bool known = std::any_of(m_handlers.begin(), m_handlers.end(), [&](const Registration& registration) {
        return registration.kind == eventKind && registration.handler == handler;
    });
    if (known) {
        ZReport_Misuse("ZtView::RegisterHandler", "the handler is registered already at " + Named(*this) +
                                                      " for event kind " + std::to_string(eventKind));
        return;
    }
    m_handlers.push_back({eventKind, handler});
}

void ZtView::UnregisterHandler(int eventKind, const ZHandler& handler)
{
    if (!IsUsable("ZtView::UnregisterHandler"))
        return;
    std::erase_if(m_handlers, [&](const Registration& registration) {
        return registration.kind == eventKind && registration.handler == handler;
    });
}

bool ZtView::HasHandler(int eventKind) const
{
    return std::any_of(m_handlers.begin(), m_handlers.end(),
                       [eventKind](const Registration& registration) { return registration.kind == eventKind; });
}

void ZtView::Send(ZtEvent& event)
{
    if (!IsUsable("ZtView::Send"))
        return;
    // The handlers as they stand now; one of them may change the list, or take this view away altogether.
    std::vector<ZHandler> handlers;
    for (const Registration& registration : m_handlers)
        if (registration.kind == event.kind)
            handlers.push_back(registration.handler);
    HdlZPlug self;
    self.Set(this);
    const int kind = event.kind;
    for (const ZHandler& handler : handlers) {
        if (!self.IsValid())
            return;
        const bool stillThere =
            std::any_of(m_handlers.begin(), m_handlers.end(), [&](const Registration& registration) {
                return registration.kind == kind && registration.handler == handler;
            });
        if (stillThere)
            handler(this, event);
    }
}

void ZtView::MarkChanged()
{
    ++m_changeCount;
    if (!m_observer)
        return;
    ZEvent changed;
    // A copy: the observer may take itself away.
    const ZHandler observer = m_observer;
    observer(this, changed);
}
