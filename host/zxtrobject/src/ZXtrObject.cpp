// SPDX-License-Identifier: MIT
#include "zxtrobject/ZXtrObject.h"

#include "object/ZHandlerList.h"
#include "zbaselib/ZReport.h"

namespace {
ZHandlerList& Handlers()
{
    static ZHandlerList& list = *new ZHandlerList;
    return list;
}
} // namespace

void ZXtrObject_Register(const ZHandler& handler)
{
    if (!handler)
        ZReport_Misuse("ZXtrObject_Register", "the handler is empty");
    else if (!Handlers().Add(nullptr, handler))
        ZReport_Misuse("ZXtrObject_Register", "the handler is registered already");
}

void ZXtrObject_Unregister(const ZHandler& handler) { Handlers().Remove(nullptr, handler); }

void ZXtrObject_Send(int kind)
{
    ZEvent event(kind);
    Handlers().Call(nullptr, event);
}
