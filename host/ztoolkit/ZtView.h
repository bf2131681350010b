// SPDX-License-Identifier: MIT
// The base of all controls: state and events, no widgets.
#pragma once

#include "object/ZEvent.h"
#include "object/ZObject.h"

#include <string>
#include <thread>
#include <vector>

// Kinds of control events.
inline constexpr int kViewPress = 4;          ///< a slider was taken hold of; carries its value
inline constexpr int kViewRelease = 5;        ///< a slider was let go; carries its value
inline constexpr int kViewValueChanged = 518; ///< check marks, an item, a colour, a slider's or a cell's value
inline constexpr int kViewSelectionChanged = 519;
inline constexpr int kViewClicked = 520;
inline constexpr int kViewDragAndDrop = 536; ///< with a stage

// Stages of a drag-and-drop event.
inline constexpr int kDragStart = 0; ///< a drag starts from this control
inline constexpr int kDragOver = 1;  ///< may it be dropped here?
inline constexpr int kDragDrop = 2;  ///< dropped

/// What a control tells its handlers. Fields that a kind does not use are -1 or 0.
struct ZtEvent : ZEvent
{
    int stage = -1;    ///< of a drag-and-drop event
    int row = -1;      ///< the row that was touched (lists, spread)
    int column = -1;   ///< the column that was touched (spread)
    int viewEvent = 0; ///< of a cell that holds a view: the view's own event kind
    double value = 0;  ///< the value at that moment (sliders, number cells, 0 or 1 of check cells)
    explicit ZtEvent(int eventKind) : ZEvent(eventKind) {}
};

/// Pixels, x right, y down.
struct ZtRect
{
    int x = 0, y = 0, width = 0, height = 0;
    friend bool operator==(const ZtRect&, const ZtRect&) = default;
};

/// What a view is, for whoever shows it.
enum class ZtViewKind
{
    List,
    Combo,
    Check,
    Slider,
    Colour,
    Spread,
    Label,
    Panel,
    Form
};

/// One control. Setters named Set… are the program's and send no event; setters named User… are the user's hand: they
/// do nothing while the control is disabled, and send the event that the change causes. Handlers may be registered for
/// one event kind each; registering the same handler for the same kind twice is misuse. A handler may register and
/// unregister handlers, rebuild the view or destroy it: one that was unregistered is not called any more, a new one
/// from the next event on. Only the thread that made a view registers at it and sends from it.
class ZtView : public ZObject
{
public:
    ZCLASS_DECLARE()
    ZtView(ZtViewKind viewKind, const char* name);
    ~ZtView() override;
    /// Leaves the layout that holds the view.
    void SystemDetach() override;

    ZtViewKind GetViewKind() const { return m_viewKind; }
    const std::string& GetCaption() const { return m_caption; }
    void SetCaption(const std::string& caption);
    const std::string& GetToolTip() const { return m_toolTip; }
    void SetToolTip(const std::string& toolTip);
    bool IsEnabled() const { return m_enabled; }
    void SetEnabled(bool enabled);
    bool IsVisible() const { return m_visible; }
    void SetVisible(bool visible);
    /// Where the view lies in the form around it, through all panels between them; written by the layout.
    const ZtRect& GetRect() const { return m_rect; }
    void SetRect(const ZtRect& rect);
    /// The layout that holds the view, or null; set by the layout.
    ZtView* GetParent() const { return m_parent; }
    void SetParent(ZtView* parent) { m_parent = parent; }

    /// Hands ownership to the host: the layout that holds the view when it goes itself destroys it through
    /// DestroyObject.
    void SetAllocated() { SetStatusBits(kStatusDestroyFrees); }
    bool IsAllocated() const { return (GetStatus() & kStatusDestroyFrees) != 0; }

    void RegisterHandler(int eventKind, const ZHandler& handler);
    void UnregisterHandler(int eventKind, const ZHandler& handler);
    bool HasHandler(int eventKind) const;
    /// Calls the handlers of event.kind in order of registration; the sender is this view.
    void Send(ZtEvent& event);

    /// Counts up whenever something that is shown changed; a widget compares it to know whether to paint again.
    long GetChangeCount() const { return m_changeCount; }
    void MarkChanged();
    /// One observer, for the widget or the door that shows this view: called by MarkChanged.
    void SetObserver(const ZHandler& observer) { m_observer = observer; }

protected:
    /// A view that this one holds goes away.
    virtual void ForgetView(ZtView* view);
    /// May the user's hand act on the view? Not while it is disabled, nor after it was destroyed, which is misuse.
    bool TakesInput(const char* call) const;

private:
    bool IsUsable(const char* call) const;

    struct Registration
    {
        int kind;
        ZHandler handler;
    };
    ZtViewKind m_viewKind;
    std::string m_caption;
    std::string m_toolTip;
    bool m_enabled = true;
    bool m_visible = true;
    ZtRect m_rect;
    ZtView* m_parent = nullptr;
    std::vector<Registration> m_handlers;
    std::thread::id m_thread;
    ZHandler m_observer;
    long m_changeCount = 0;
};
