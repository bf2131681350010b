// SPDX-License-Identifier: MIT
// Registration of shortcut handlers and the sending of key events.
#include "object/ZShortCutKeyManager.h"

#include "zbaselib/ZReport.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace {
struct Registration
{
    int keyEventId;
    ZObject* owner;
    HdlZPlug ownerHandle;
    ZHandler handler;
    int priority;
    bool removed = false;

    bool Is(int id, const ZObject* anOwner, const ZHandler& aHandler) const
    {
        return keyEventId == id && owner == anOwner && handler == aHandler;
    }
    bool CanBeCalled() const { return !removed && (owner == nullptr || ownerHandle.IsValid()); }
};

class ShortCutKeyManager : public ZObject, public IShortCutRegistration
{
public:
    ShortCutKeyManager() : ZObject("ShortCutKeyManager") {}

    void* IQuery(int interfaceId, int flags) override
    {
        if (interfaceId == kInterfaceShortCutRegistration)
            return static_cast<IShortCutRegistration*>(this);
        return ZObject::IQuery(interfaceId, flags);
    }
    void Register(int keyEventId, ZObject* owner, const ZHandler& handler, int priority) override;
    void Unregister(int keyEventId, ZObject* owner, const ZHandler& handler) override;
    bool Send(ZShortCutEvent& event);

private:
    // Shared with the calls under way, so that handlers may come and go while they are called.
    std::vector<std::shared_ptr<Registration>> m_registrations;
};

void ShortCutKeyManager::Register(int keyEventId, ZObject* owner, const ZHandler& handler, int priority)
{
    const char* const call = "IShortCutRegistration::Register";
    if (!handler)
        return ZReport_Misuse(call, "the handler is empty");
    for (const auto& registration : m_registrations)
        if (registration->CanBeCalled() && registration->Is(keyEventId, owner, handler))
            return ZReport_Misuse(call, "the handler is registered already");
    auto added = std::make_shared<Registration>(Registration{keyEventId, owner, {}, handler, priority});
    added->ownerHandle.Set(owner);
    const auto place = std::find_if(m_registrations.begin(), m_registrations.end(),
                                    [priority](const auto& other) { return other->priority < priority; });
    m_registrations.insert(place, std::move(added));
}

void ShortCutKeyManager::Unregister(int keyEventId, ZObject* owner, const ZHandler& handler)
{
    std::erase_if(m_registrations, [&](const auto& registration) {
        const bool gone = registration->Is(keyEventId, owner, handler);
        registration->removed = registration->removed || gone;
        return gone;
    });
}

bool ShortCutKeyManager::Send(ZShortCutEvent& event)
{
    std::erase_if(m_registrations, [](const auto& registration) { return !registration->CanBeCalled(); });
    const auto asTheyAre = m_registrations;
    for (const auto& registration : asTheyAre)
        if (registration->keyEventId == event.kind && registration->CanBeCalled())
            registration->handler(this, event);
    return event.handled;
}

ShortCutKeyManager& TheManager()
{
    static ShortCutKeyManager& manager = *new ShortCutKeyManager;
    return manager;
}
} // namespace

IObject* Object_GetShortCutKeyManager() { return &TheManager(); }

bool Object_SendShortCut(int keyEventId, int code, int key, int modifiers)
{
    ZShortCutEvent event(keyEventId, code, key, modifiers);
    return TheManager().Send(event);
}
