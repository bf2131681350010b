// SPDX-License-Identifier: MIT
// The host's untyped object list and its typed front.
#pragma once

#include "zbaselib/ZArray.h"

/// An ordered list of object pointers. It owns none of them. Answers null for an index that is not there.
class ZGenericObjectList
{
public:
    ZGenericObjectList();
    ZGenericObjectList(const ZGenericObjectList& other);
    ~ZGenericObjectList();
    ZGenericObjectList& operator=(const ZGenericObjectList& other);

    int GetCount() const;
    void* GetAt(int index) const;
    /// Appends and answers the index.
    int InternalAdd(void* object);
    /// Inserts before `index` (GetCount() appends) and answers `index`, or -1 when it is out of range.
    int InternalInsertAt(int index, void* object);
    /// Replaces the element and answers `index`, or -1 when it is out of range.
    int InternalSetAt(int index, void* object);
    /// Removes the first element that is `object`; false when there is none.
    bool InternalRemove(void* object);
    /// Removes the element at `index`; false when it is out of range.
    bool InternalRemoveAt(int index);
    /// Forgets all elements and keeps the memory.
    void RemoveAll();
    /// Forgets all elements and gives the memory back.
    void Release();

private:
    ZArrayTemplate<void*, 0> m_objects;
};

/// A typed front of the list. A move copies: both lists then refer to the same objects. It may therefore run out of
/// memory, and is not noexcept.
template <class T> class ZObjectListTemplate : public ZGenericObjectList
{
public:
    ZObjectListTemplate() : ZGenericObjectList() {}
    ZObjectListTemplate(const ZObjectListTemplate& other) : ZGenericObjectList(other) {}
    // NOLINTNEXTLINE(performance-noexcept-move-constructor)
    ZObjectListTemplate(ZObjectListTemplate&& other) : ZGenericObjectList(other) {}
    ~ZObjectListTemplate() {}
    ZObjectListTemplate& operator=(const ZObjectListTemplate& other)
    {
        ZGenericObjectList::operator=(other);
        return *this;
    }
    // NOLINTNEXTLINE(performance-noexcept-move-constructor)
    ZObjectListTemplate& operator=(ZObjectListTemplate&& other)
    {
        ZGenericObjectList::operator=(other);
        return *this;
    }

    T* operator[](int index) const { return static_cast<T*>(GetAt(index)); }
    int Add(T* object) { return InternalAdd(object); }
    int InsertAt(int index, T* object) { return InternalInsertAt(index, object); }
    int SetAt(int index, T* object) { return InternalSetAt(index, object); }
    bool Remove(T* object) { return InternalRemove(object); }
};
