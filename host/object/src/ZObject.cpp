// SPDX-License-Identifier: MIT
// The host object: class identity, property look-up, life.
#include "object/ZObject.h"

#include "PropertyNames.h"

int ZObject::ClassId = -1;
ZClassDefinition ZObject::ClassDefinition(ZObject::ClassId, "ZObject", nullptr, nullptr);
static const int s_registeredZObject = ZObject::ClassId = ZObject::ClassDefinition.RegisterClassId();

ZCLASS_DEFINE(ZObjectSet, ZObject)
ZCLASS_DEFINE(ZObjectStorable, ZObjectSet)

ZObject* Object_FromInterface(IObject* object) { return dynamic_cast<ZObject*>(object); }

ZObject::ZObject(const char* name) : m_name(name != nullptr ? name : "") {}

ZObject::~ZObject()
{
    if (IsDestroyed())
        return;
    ZObject::SystemDetach();
    PrepareDestruct();
    ZObject::Destruct();
}

const char* ZObject::GetClassGroup() const { return GetClassDefinition()->GetName(); }

void* ZObject::IQuery(int interfaceId, int)
{
    return interfaceId == kInterfaceObject ? static_cast<IObject*>(this) : nullptr;
}

std::uint64_t ZObject::FindPropertyByName(const char* name) const { return GetClassDefinition()->FindProperty(name); }

std::uint64_t ZObject::FastFindPropertyByName(ZPropertyMap& cache, const char* name) const
{
    if (name == nullptr)
        return 0;
    if (const std::uint64_t* known = cache.Find(name))
        return *known;
    const std::uint64_t id = GetClassDefinition()->FindProperty(name);
    if (id != 0)
        cache.Set(PropertyNames_Keep(name), id);
    return id;
}

void ZObject::DestroyObject()
{
    const bool frees = (m_status & kStatusDestroyFrees) != 0;
    SetStatusBits(kStatusBySystem);
    // Through the virtual operations while the object is still whole; its destructor then finds the steps done.
    SystemDetach();
    PrepareDestruct();
    Destruct();
    if (frees)
        delete this;
}

void ZObject::SystemDetach() {}
void ZObject::PrepareDestruct() { CutHandles(); }
void ZObject::Destruct() { SetStatusBits(kStatusDestroyed); }
