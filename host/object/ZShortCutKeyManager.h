// SPDX-License-Identifier: MIT
// Who hears of key presses.
#pragma once

#include "object/ZEvent.h"
#include "object/ZObject.h"

inline constexpr int kInterfaceShortCutRegistration = 3;
inline constexpr int kShortCutKeyEvent = 513;

/// A key event: (70 = pressed, key, modifier mask). A handler that acted sets `handled`; later ones are still called.
struct ZShortCutEvent : ZEvent
{
    int codes[3] = {0, 0, 0};
    bool handled = false;
    ZShortCutEvent(int eventKind, int code, int key, int modifiers) : ZEvent(eventKind), codes{code, key, modifiers} {}
};

/// Registration of shortcut handlers, reached by IQuery(3, 0) on the manager.
class IShortCutRegistration
{
public:
    /// Handlers with a larger priority are called first, equal ones in order of registration.
    virtual void Register(int keyEventId, ZObject* owner, const ZHandler& handler, int priority) = 0;
    /// Ignored when there is no such registration.
    virtual void Unregister(int keyEventId, ZObject* owner, const ZHandler& handler) = 0;

protected:
    virtual ~IShortCutRegistration() = default;
};

/// The manager itself, an object of the host.
IObject* Object_GetShortCutKeyManager();
/// Sends a key event to all handlers of `keyEventId`; true when one of them acted.
bool Object_SendShortCut(int keyEventId, int code, int key, int modifiers);
