// SPDX-License-Identifier: MIT
// The class registry: names, bases and ids of the classes that the host knows.
#pragma once

#include "zbaselib/ZMap.h"

#include <cstdint>

class IObject;

using ZObjectFactory = IObject* (*)(IObject* owner, const char* name, void* data);
/// What a class's property look-up keeps: property name to property id.
using ZPropertyMap = ZMap<const char*, std::uint64_t, ZCharPointerLessCompare, ZBaseAllocator>;

/// Makes one class known to the host for as long as the definition lives. A definition whose library is unloaded takes
/// its class out of the registry; its id is never given to another class.
class ZClassDefinition
{
public:
    /// `classIdSlot` is where the class keeps its id; it is -1 until the id is registered. `base` is null only for the
    /// root. `factory` may be null: then the host cannot make instances by name.
    ZClassDefinition(int& classIdSlot, const char* className, ZClassDefinition* base, ZObjectFactory factory);
    ~ZClassDefinition();
    ZClassDefinition(const ZClassDefinition&) = delete;
    ZClassDefinition& operator=(const ZClassDefinition&) = delete;

    /// The id of this class: the same at every call. The caller stores it in the class's id slot.
    int RegisterClassId();
    int GetClassId() const { return m_classId; }
    const char* GetName() const { return m_name; }
    ZClassDefinition* GetBase() const { return m_base; }
    ZObjectFactory GetFactory() const { return m_factory; }
    /// Does an instance of this class count as one of `classId`? -1 is no class.
    bool IsA(int classId) const;

    /// Names a property of the class; `id` is not 0. A name that is already there is replaced. Properties are named
    /// before the first look-up: what a class keeps of earlier look-ups does not change.
    void AddProperty(const char* name, std::uint64_t id);
    /// The id of a property of this class or of a base of it, or 0.
    std::uint64_t FindProperty(const char* name) const;

    /// The definition that is registered under `name`, or null.
    static ZClassDefinition* FindByName(const char* name);

private:
    int& m_slot;
    int m_classId = -1;
    const char* m_name;
    ZClassDefinition* m_base;
    ZObjectFactory m_factory;
    ZPropertyMap m_properties;
};

/// Declares, in a class body, what every registered class supplies; the definition itself stands in one source file.
#define ZCLASS_DECLARE()                                                                                               \
    static int ClassId;                                                                                                \
    static ZClassDefinition ClassDefinition;                                                                           \
    int GetClassId() const override { return ClassId; }                                                                \
    ZClassDefinition* GetClassDefinition() const override { return &ClassDefinition; }                                 \
    bool Is(int classId) const override;

/// Defines, in one source file of the host, a class whose definition lives as long as its library.
#define ZCLASS_DEFINE(Class, Base)                                                                                     \
    int Class::ClassId = -1;                                                                                           \
    ZClassDefinition Class::ClassDefinition(Class::ClassId, #Class, &Base::ClassDefinition, nullptr);                  \
    static const int s_registered##Class = Class::ClassId = Class::ClassDefinition.RegisterClassId();                  \
    bool Class::Is(int classId) const { return (classId >= 0 && classId == ClassId) || Base::Is(classId); }
