// SPDX-License-Identifier: MIT
#include "object/ZPlug.h"

ZPlug::ZPlug() = default;

ZPlug::~ZPlug()
{
    if (m_slot)
        *m_slot = nullptr;
}

void ZPlug::CutHandles()
{
    // The plug keeps a dead slot, so that a handle that is set later is as invalid as the earlier ones.
    static const auto dead = std::make_shared<ZPlug*>(nullptr);
    if (m_slot)
        *m_slot = nullptr;
    else
        m_slot = dead;
}

void HdlZPlug::Set(ZPlug* plug)
{
    if (plug == nullptr) {
        m_slot.reset();
        return;
    }
    if (!plug->m_slot)
        plug->m_slot = std::make_shared<ZPlug*>(plug);
    m_slot = plug->m_slot;
}
