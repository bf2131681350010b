// SPDX-License-Identifier: MIT
// The test program's own functions stand before those of the host's shared libraries: they note the call and pass it
// on.
#include "HostRecorder.h"

#include "object/ZAction.h"
#include "object/ZEntity.h"
#include "object/ZShortCutKeyManager.h"
#include "zbaselib/ZConfigFile.h"
#include "zconstraints/ZConstraint.h"
#include "zdesktop/ZTool.h"
#include "zmanipulator/ZManipulator.h"
#include "zxtrobject/ZXtrObject.h"

#include <dlfcn.h>
#include <stdexcept>

namespace {

HostRecording* s_recording = nullptr;
ZConstraint* s_boxConstraint = nullptr;

template <class Function> Function Next(const char* symbol)
{
    void* const found = dlsym(RTLD_NEXT, symbol);
    if (found == nullptr)
        throw std::runtime_error(std::string("the host has no ") + symbol);
    return reinterpret_cast<Function>(found);
}

using EntityCall = void (*)(ZEntity*, const ZHandler&);

} // namespace

HostRecording::HostRecording() { s_recording = this; }
HostRecording::~HostRecording() { s_recording = nullptr; }

void HostRecording::Add(const char* call)
{
    if (s_recording != nullptr)
        s_recording->m_calls.emplace_back(call);
}

HostWithABoxConstraint::HostWithABoxConstraint(ZConstraint* box) { s_boxConstraint = box; }
HostWithABoxConstraint::~HostWithABoxConstraint() { s_boxConstraint = nullptr; }

ZConstraint* ZConstraints_GetBoxConstraint()
{
    return s_boxConstraint != nullptr ? s_boxConstraint
                                      : Next<ZConstraint* (*)()>("_Z29ZConstraints_GetBoxConstraintv")();
}

void ZEntity::EntityPlugNotifyRegister(const ZHandler& handler)
{
    HostRecording::Add("notify +");
    Next<EntityCall>("_ZN7ZEntity24EntityPlugNotifyRegisterERK8ZHandler")(this, handler);
}

void ZEntity::EntityPlugNotifyUnregister(const ZHandler& handler)
{
    HostRecording::Add("notify -");
    Next<EntityCall>("_ZN7ZEntity26EntityPlugNotifyUnregisterERK8ZHandler")(this, handler);
}

void ZEntity::EntityPlugStateNotifyRegister(const ZHandler& handler)
{
    HostRecording::Add("state +");
    Next<EntityCall>("_ZN7ZEntity29EntityPlugStateNotifyRegisterERK8ZHandler")(this, handler);
}

void ZEntity::EntityPlugStateNotifyUnregister(const ZHandler& handler)
{
    HostRecording::Add("state -");
    Next<EntityCall>("_ZN7ZEntity31EntityPlugStateNotifyUnregisterERK8ZHandler")(this, handler);
}

void ZXtrObject_Register(const ZHandler& handler)
{
    HostRecording::Add("scene +");
    Next<void (*)(const ZHandler&)>("_Z19ZXtrObject_RegisterRK8ZHandler")(handler);
}

void ZXtrObject_Unregister(const ZHandler& handler)
{
    HostRecording::Add("scene -");
    Next<void (*)(const ZHandler&)>("_Z21ZXtrObject_UnregisterRK8ZHandler")(handler);
}

IObject* Object_GetShortCutKeyManager()
{
    HostRecording::Add("shortcut keys");
    return Next<IObject* (*)()>("_Z28Object_GetShortCutKeyManagerv")();
}

float ZConfigFile::Get(const char* section, const char* key, float defaultValue) const
{
    HostRecording::Add((std::string("settings ") + section + "/" + key).c_str());
    return Next<float (*)(const ZConfigFile*, const char*, const char*, float)>("_ZNK11ZConfigFile3GetEPKcS1_f")(
        this, section, key, defaultValue);
}

void ZConfigFile::Set(const char* section, const char* key, const std::string& value)
{
    HostRecording::Add("settings written");
    Next<void (*)(ZConfigFile*, const char*, const char*, const std::string&)>(
        "_ZN11ZConfigFile3SetEPKcS1_RKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE")(this, section, key, value);
}

void ZTool::SetToolSize(int width, int height)
{
    HostRecording::Add("size");
    Next<void (*)(ZTool*, int, int)>("_ZN5ZTool11SetToolSizeEii")(this, width, height);
}

ZActionDefinition* ZActionManager::QueryAction(int id) const
{
    HostRecording::Add(("action " + std::to_string(id)).c_str());
    return Next<ZActionDefinition* (*)(const ZActionManager*, int)>("_ZNK14ZActionManager11QueryActionEi")(this, id);
}

void ZManipulatorSet::ManipulatorAdd(ZManipulator* manipulator)
{
    HostRecording::Add(("manipulator " + manipulator->GetObjectName()).c_str());
    Next<void (*)(ZManipulatorSet*, ZManipulator*)>("_ZN15ZManipulatorSet14ManipulatorAddEP12ZManipulator")(
        this, manipulator);
}

void ZManipulatorSet::ManipulatorRemove(ZManipulator* manipulator)
{
    HostRecording::Add("manipulator removed");
    Next<void (*)(ZManipulatorSet*, ZManipulator*)>("_ZN15ZManipulatorSet17ManipulatorRemoveEP12ZManipulator")(
        this, manipulator);
}
