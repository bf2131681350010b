// SPDX-License-Identifier: MIT
// The host's actions and interactions, and the keys that are held.
#include "object/ZAction.h"

#include <set>
#include <utility>

namespace {
constexpr int kKeyF = 'F';

struct Binding
{
    const char* name;
    int id;
    int button;
    int modifiers;
    bool onRelease;
};

// A click may begin when the button is released, a drag only when it is pressed.
constexpr Binding kBindings[] = {
    {"Pick model or bone", 100001, kButtonMiddle, 0, true},
    {"Pick another model or bone", 100036, kButtonMiddle, kModifierShift, true},
    {"Select", 100018, kButtonLeft, 0, true},
    {"Select by rectangle", 100019, kButtonLeft, 0, false},
    {"Toggle selection", 100026, kButtonLeft, kModifierShift, true},
    {"Toggle selection by rectangle", 100027, kButtonLeft, kModifierShift, false},
    {"Remove from selection", 100020, kButtonLeft, kModifierControl, true},
    {"Remove from selection by rectangle", 100021, kButtonLeft, kModifierControl, false},
    {"Add to selection", 100022, kButtonLeft, kModifierControl | kModifierShift, true},
    {"Add to selection by rectangle", 100023, kButtonLeft, kModifierControl | kModifierShift, false},
};

std::set<int>& HeldKeys()
{
    static std::set<int>& keys = *new std::set<int>;
    return keys;
}
} // namespace

ZActionDefinition::ZActionDefinition(int id, std::string name, int key, int modifiers)
    : m_id(id), m_name(std::move(name)), m_key(key), m_modifiers(modifiers)
{
}

bool ZActionDefinition::IsAction(int code, int key, int modifiers) const
{
    return code == kKeyEventPressed && key == m_key && modifiers == m_modifiers;
}

ZInteractionDefinition::ZInteractionDefinition(int id, std::string name, int button, int modifiers, bool onRelease)
    : m_id(id), m_name(std::move(name)), m_button(button), m_modifiers(modifiers), m_onRelease(onRelease)
{
}

bool ZInteractionDefinition::IsInteractionButton(int button, int modifiers) const
{
    return button == m_button && modifiers == m_modifiers;
}

void ZInteractionDefinition::Drag() { m_inProgress = true; }
void ZInteractionDefinition::Done() { m_inProgress = false; }

ZActionManager::ZActionManager()
{
    m_actions.emplace(kActionFrameSelection,
                      std::make_unique<ZActionDefinition>(kActionFrameSelection, "Frame selection", kKeyF, 0));
    for (const Binding& binding : kBindings)
        m_interactions.emplace(binding.id,
                               std::make_unique<ZInteractionDefinition>(binding.id, binding.name, binding.button,
                                                                        binding.modifiers, binding.onRelease));
}

ZActionDefinition* ZActionManager::QueryAction(int id) const
{
    const auto found = m_actions.find(id);
    return found == m_actions.end() ? nullptr : found->second.get();
}

ZInteractionDefinition* ZActionManager::QueryInteraction(int id) const
{
    const auto found = m_interactions.find(id);
    return found == m_interactions.end() ? nullptr : found->second.get();
}

ZActionManager* Object_GetActionManager()
{
    static ZActionManager& manager = *new ZActionManager;
    return &manager;
}

bool Object_GetCurrentKeyState(int key, bool) { return HeldKeys().count(key) > 0; }

void Object_SetKeyState(int key, bool held)
{
    if (held)
        HeldKeys().insert(key);
    else
        HeldKeys().erase(key);
}

void Object_ClearKeyStates() { HeldKeys().clear(); }
