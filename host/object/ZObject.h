// SPDX-License-Identifier: MIT
// The host object: identity, name, life.
#pragma once

#include "object/IObject.h"
#include "object/ZClassDefinition.h"
#include "object/ZPlug.h"

#include <string>

/// Life of an object, as a story: it is made; it is used; somebody asks it to go, through DestroyObject or through its
/// destructor. Going is three steps, each harmless the second time: SystemDetach takes it out of the host's registries,
/// PrepareDestruct cuts its handles, Destruct gives up what it holds. A destructor runs the three steps for its class
/// unless they have run (IsDestroyed). All on the user-interface thread.
class ZObject : public ZPlug, public ICallback, public IObject, public IVxObjectHolder
{
public:
    static int ClassId;
    static ZClassDefinition ClassDefinition;

    explicit ZObject(const char* name = "");
    ~ZObject() override;

    // Identity.
    virtual int GetClassId() const { return ClassId; }
    virtual ZClassDefinition* GetClassDefinition() const { return &ClassDefinition; }
    /// The name under which classes are grouped in lists of the host; the class name by default.
    virtual const char* GetClassGroup() const;
    virtual bool Is(int classId) const { return classId >= 0 && classId == ClassId; }
    void* IQuery(int interfaceId, int flags) override;
    ZObject* GetPlugOwner() override { return this; }

    // Names. The label is what the user reads; without one of its own it is the object name. UTF-8.
    const std::string& GetObjectName() const { return m_name; }
    void SetObjectName(const std::string& name) { m_name = name; }
    const char* GetObjectLabelName() const { return m_label.empty() ? m_name.c_str() : m_label.c_str(); }
    void SetObjectLabelName(const std::string& label) { m_label = label; }

    /// The id of the property `name`, or 0. A registered class forwards to FastFindPropertyByName with its own map.
    virtual std::uint64_t FindPropertyByName(const char* name) const;
    /// Looks `name` up in `cache`, else in the class's definition, and keeps what it found in `cache`. The cache keeps
    /// the definition's own name pointer, never the caller's.
    std::uint64_t FastFindPropertyByName(ZPropertyMap& cache, const char* name) const;

    // Life.
    static constexpr unsigned kStatusDestroyFrees = 32; ///< DestroyObject frees the object, not only its contents
    static constexpr unsigned kStatusDestroyed = 64;    ///< Destruct has run
    static constexpr unsigned kStatusBySystem = 128;    ///< the host's object system is destroying the object
    unsigned GetStatus() const { return m_status; }
    void SetStatusBits(unsigned bits) { m_status |= bits; }
    void ClearStatusBits(unsigned bits) { m_status &= ~bits; }
    bool IsDestroyed() const { return (m_status & kStatusDestroyed) != 0; }
    /// Frees the object when kStatusDestroyFrees is set, else only runs Destruct.
    virtual void DestroyObject();
    virtual void SystemDetach();
    void PrepareDestruct();
    virtual void Destruct();

private:
    std::string m_name;
    std::string m_label;
    unsigned m_status = 0;
};

/// A set of objects kept together; the base of what can be stored.
class ZObjectSet : public ZObject
{
public:
    ZCLASS_DECLARE()
    using ZObject::ZObject;
};

class ZObjectStorable : public ZObjectSet, public IXtrStorable
{
public:
    ZCLASS_DECLARE()
    using ZObjectSet::ZObjectSet;
};

/// `object` as T when the registry says that it is one, else null.
template <class T> T* Object_Cast(ZObject* object)
{
    return object != nullptr && object->Is(T::ClassId) ? static_cast<T*>(object) : nullptr;
}
template <class T> T* Object_Cast(IObject* object) { return Object_Cast<T>(Object_FromInterface(object)); }
