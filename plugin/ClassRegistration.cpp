// SPDX-License-Identifier: MIT
// Makes the library's three classes known to the host's class system for as long as the library is loaded.
#include "object/ZClassDefinition.h"
#include "viewport/ZCharacterWeightingConstraint.h"
#include "viewport/ZCharacterWeightingManipulator.h"
#include "weights/ZWeightUIModelData.h"

namespace {

/// Members are built in the order in which they stand and destroyed in reverse: definitions, ids, property maps.
class ClassRegistration
{
public:
    ClassRegistration()
    {
        Connect<ZCharacterWeightingConstraint>(m_constraint, m_constraintProperties);
        Connect<ZCharacterWeightingManipulator>(m_manipulator, m_manipulatorProperties);
        Connect<ZWeightUIModelData>(m_modelData, m_modelDataProperties);
    }
    ~ClassRegistration()
    {
        Disconnect<ZWeightUIModelData>();
        Disconnect<ZCharacterWeightingManipulator>();
        Disconnect<ZCharacterWeightingConstraint>();
    }
    ClassRegistration(const ClassRegistration&) = delete;
    ClassRegistration& operator=(const ClassRegistration&) = delete;

private:
    template <class T> static void Connect(ZClassDefinition& definition, ZPropertyMap& properties)
    {
        T::s_classDefinition = &definition;
        T::s_properties = &properties;
    }
    template <class T> static void Disconnect()
    {
        T::s_classDefinition = nullptr;
        T::s_properties = nullptr;
        T::ClassId = -1;
    }
    bool RegisterIds()
    {
        ZCharacterWeightingConstraint::ClassId = m_constraint.RegisterClassId();
        ZCharacterWeightingManipulator::ClassId = m_manipulator.RegisterClassId();
        ZWeightUIModelData::ClassId = m_modelData.RegisterClassId();
        return true;
    }

    ZClassDefinition m_constraint{ZCharacterWeightingConstraint::ClassId, "ZCharacterWeightingConstraint",
                                  &ZConstraint::ClassDefinition, nullptr};
    ZClassDefinition m_manipulator{ZCharacterWeightingManipulator::ClassId, "ZCharacterWeightingManipulator",
                                   &ZManipulator::ClassDefinition, nullptr};
    ZClassDefinition m_modelData{ZWeightUIModelData::ClassId, "ZWeightUIModelData", &ZObject::ClassDefinition, nullptr};
    [[maybe_unused]] bool m_idsRegistered = RegisterIds();
    ZPropertyMap m_constraintProperties;
    ZPropertyMap m_manipulatorProperties;
    ZPropertyMap m_modelDataProperties;
};

// Before every static object of default priority and before the start routine, wherever the linker puts them.
__attribute__((init_priority(1000))) ClassRegistration s_registration;

} // namespace
