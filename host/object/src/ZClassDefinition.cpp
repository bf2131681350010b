// SPDX-License-Identifier: MIT
// The class registry.
#include "object/ZClassDefinition.h"

#include "PropertyNames.h"
#include "zbaselib/ZReport.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {
/// Definitions are static objects of many libraries; the registry is made when the first one needs it and never
/// destroyed, so that it outlives them in whatever order they go.
struct Registry
{
    std::vector<ZClassDefinition*> definitions;
    int lastId = 0;
};

Registry& TheRegistry()
{
    static Registry& registry = *new Registry;
    return registry;
}
} // namespace

ZClassDefinition::ZClassDefinition(int& classIdSlot, const char* className, ZClassDefinition* base,
                                   ZObjectFactory factory)
    : m_slot(classIdSlot), m_name(className != nullptr ? className : ""), m_base(base), m_factory(factory)
{
    if (FindByName(m_name) != nullptr)
        ZReport_Warning(std::string("class ") + m_name + ": another class has this name; look-up finds that one");
    m_slot = -1;
    TheRegistry().definitions.push_back(this);
}

ZClassDefinition::~ZClassDefinition()
{
    m_slot = -1;
    std::erase(TheRegistry().definitions, this);
}

int ZClassDefinition::RegisterClassId()
{
    if (m_classId < 0)
        m_classId = ++TheRegistry().lastId;
    return m_classId;
}

bool ZClassDefinition::IsA(int classId) const
{
    if (classId < 0)
        return false;
    for (const ZClassDefinition* definition = this; definition != nullptr; definition = definition->m_base)
        if (definition->m_classId == classId)
            return true;
    return false;
}

void ZClassDefinition::AddProperty(const char* name, std::uint64_t id)
{
    if (name == nullptr || id == 0) {
        ZReport_Misuse("ZClassDefinition::AddProperty", "a property needs a name and an id that is not 0");
        return;
    }
    m_properties.Set(PropertyNames_Keep(name), id);
}

std::uint64_t ZClassDefinition::FindProperty(const char* name) const
{
    if (name == nullptr)
        return 0;
    for (const ZClassDefinition* definition = this; definition != nullptr; definition = definition->m_base)
        if (const std::uint64_t* id = definition->m_properties.Find(name))
            return *id;
    return 0;
}

ZClassDefinition* ZClassDefinition::FindByName(const char* name)
{
    if (name == nullptr)
        return nullptr;
    const auto& definitions = TheRegistry().definitions;
    const auto found = std::find_if(definitions.begin(), definitions.end(), [name](const ZClassDefinition* definition) {
        return std::strcmp(definition->m_name, name) == 0;
    });
    return found == definitions.end() ? nullptr : *found;
}
