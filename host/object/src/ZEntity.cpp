// SPDX-License-Identifier: MIT
// News about plugs, told to the handlers of every entity.
#include "object/ZEntity.h"

#include "object/ZHandlerList.h"
#include "zbaselib/ZReport.h"

ZCLASS_DEFINE(ZEntity, ZObjectStorable)

namespace {
// Never destroyed: entities that are static objects unregister when the process ends.
ZHandlerList& NotifyHandlers()
{
    static ZHandlerList& list = *new ZHandlerList;
    return list;
}

ZHandlerList& StateHandlers()
{
    static ZHandlerList& list = *new ZHandlerList;
    return list;
}

void Register(const char* call, ZHandlerList& list, const ZEntity* entity, const ZHandler& handler)
{
    if (!handler)
        ZReport_Misuse(call, "the handler is empty");
    else if (!list.Add(entity, handler))
        ZReport_Misuse(call, "the handler is registered already");
}
} // namespace

ZEntity::ZEntity(const char* name) : ZObjectStorable(name) {}

ZEntity::~ZEntity() { ZEntity::SystemDetach(); }

void ZEntity::SystemDetach()
{
    NotifyHandlers().RemoveOwner(this);
    StateHandlers().RemoveOwner(this);
    ZObjectStorable::SystemDetach();
}

void ZEntity::EntityPlugNotifyRegister(const ZHandler& handler)
{
    Register("ZEntity::EntityPlugNotifyRegister", NotifyHandlers(), this, handler);
}

void ZEntity::EntityPlugNotifyUnregister(const ZHandler& handler) { NotifyHandlers().Remove(this, handler); }

void ZEntity::EntityPlugStateNotifyRegister(const ZHandler& handler)
{
    Register("ZEntity::EntityPlugStateNotifyRegister", StateHandlers(), this, handler);
}

void ZEntity::EntityPlugStateNotifyUnregister(const ZHandler& handler) { StateHandlers().Remove(this, handler); }

void ZEntity::Notify(ZPlugEvent& event) { NotifyHandlers().Call(event.owner, event); }
void ZEntity::NotifyState(ZPlugEvent& event) { StateHandlers().Call(event.owner, event); }
