// SPDX-License-Identifier: MIT
#include "zbaselib/ZGenericObjectList.h"

ZGenericObjectList::ZGenericObjectList() = default;
ZGenericObjectList::ZGenericObjectList(const ZGenericObjectList& other) = default;
ZGenericObjectList::~ZGenericObjectList() = default;
ZGenericObjectList& ZGenericObjectList::operator=(const ZGenericObjectList& other) = default;

int ZGenericObjectList::GetCount() const { return m_objects.GetCount(); }

void* ZGenericObjectList::GetAt(int index) const
{
    return index >= 0 && index < m_objects.GetCount() ? m_objects[index] : nullptr;
}

int ZGenericObjectList::InternalAdd(void* object) { return m_objects.Add(object); }

int ZGenericObjectList::InternalInsertAt(int index, void* object)
{
    if (index < 0 || index > m_objects.GetCount())
        return -1;
    m_objects.InsertAt(index, object);
    return index;
}

int ZGenericObjectList::InternalSetAt(int index, void* object)
{
    if (index < 0 || index >= m_objects.GetCount())
        return -1;
    m_objects[index] = object;
    return index;
}

bool ZGenericObjectList::InternalRemove(void* object) { return InternalRemoveAt(m_objects.Find(object)); }

bool ZGenericObjectList::InternalRemoveAt(int index)
{
    if (index < 0 || index >= m_objects.GetCount())
        return false;
    m_objects.RemoveAt(index);
    return true;
}

void ZGenericObjectList::RemoveAll() { m_objects.RemoveAll(); }

void ZGenericObjectList::Release() { m_objects.Release(); }
