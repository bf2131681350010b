// SPDX-License-Identifier: MIT
// Entities: objects of the scene that tell each other about their plugs.
#pragma once

#include "object/ZEvent.h"
#include "object/ZObject.h"

#include <vector>

/// Notification kind: the plug's owner is being deleted.
inline constexpr int kPlugNotifyDeleted = 8;
/// State kind: the object became selected in the scene.
inline constexpr int kPlugStateSelected = 27;

/// Says what happened to whose plug, and where the news comes from.
struct ZPlugEvent : ZEvent
{
    ZObject* owner = nullptr;
    ZObject* source = nullptr;
    ZPlugEvent(int eventKind, ZObject* plugOwner, ZObject* eventSource)
        : ZEvent(eventKind), owner(plugOwner), source(eventSource)
    {
    }
};

/// An object that takes part in the scene's news. Registering the same handler twice is misuse; removing a handler
/// that is not registered is ignored. Handlers may register and remove handlers while they run: a removed one is not
/// called again, a new one is called from the next news on.
class ZEntity : public ZObjectStorable
{
public:
    ZCLASS_DECLARE()
    explicit ZEntity(const char* name = "");
    ~ZEntity() override;

    void EntityPlugNotifyRegister(const ZHandler& handler);
    void EntityPlugNotifyUnregister(const ZHandler& handler);
    void EntityPlugStateNotifyRegister(const ZHandler& handler);
    void EntityPlugStateNotifyUnregister(const ZHandler& handler);

    /// Tells every entity's notification handlers; the sender is `event.owner`.
    static void Notify(ZPlugEvent& event);
    /// Tells every entity's state handlers; the sender is `event.owner`.
    static void NotifyState(ZPlugEvent& event);

    /// Forgets the entity's handlers.
    void SystemDetach() override;
};
