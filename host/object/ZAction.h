// SPDX-License-Identifier: MIT
// Actions (keys) and interactions (mouse buttons with modifiers) by number.
#pragma once

#include <map>
#include <memory>
#include <string>

// Modifier mask of keys and buttons.
inline constexpr int kModifierShift = 1;
inline constexpr int kModifierControl = 2;
inline constexpr int kModifierAlt = 4;
// Mouse buttons.
inline constexpr int kButtonLeft = 1;
inline constexpr int kButtonMiddle = 2;
inline constexpr int kButtonRight = 3;
// The first of a key event's three codes.
inline constexpr int kKeyEventPressed = 70;

inline constexpr int kActionFrameSelection = 1; ///< "Frame selection", key F

/// A command bound to a key.
class ZActionDefinition
{
public:
    ZActionDefinition(int id, std::string name, int key, int modifiers);
    int GetId() const { return m_id; }
    const std::string& GetName() const { return m_name; }
    int GetKey() const { return m_key; }
    int GetModifiers() const { return m_modifiers; }
    /// Do the three codes of a key event (70, key, modifier mask) mean this action?
    bool IsAction(int code, int key, int modifiers) const;

private:
    int m_id;
    std::string m_name;
    int m_key;
    int m_modifiers;
};

/// A mouse gesture bound to a button with modifiers.
class ZInteractionDefinition
{
public:
    ZInteractionDefinition(int id, std::string name, int button, int modifiers, bool onRelease);
    int GetId() const { return m_id; }
    const std::string& GetName() const { return m_name; }
    int GetButton() const { return m_button; }
    int GetModifiers() const { return m_modifiers; }
    bool IsInteractionButton(int button, int modifiers) const;
    /// May the gesture begin when the button is released (a click), not only when it is pressed (a drag)?
    bool CanInteractOnRelease() const { return m_onRelease; }
    /// The pointer moved in the course of the gesture.
    void Drag();
    /// The gesture is over.
    void Done();
    bool IsInProgress() const { return m_inProgress; }

private:
    int m_id;
    std::string m_name;
    int m_button;
    int m_modifiers;
    bool m_onRelease;
    bool m_inProgress = false;
};

/// Owns all definitions; they live as long as the process.
class ZActionManager
{
public:
    ZActionManager();
    /// The definition with this id, or null.
    ZActionDefinition* QueryAction(int id) const;
    ZInteractionDefinition* QueryInteraction(int id) const;

private:
    std::map<int, std::unique_ptr<ZActionDefinition>> m_actions;
    std::map<int, std::unique_ptr<ZInteractionDefinition>> m_interactions;
};

ZActionManager* Object_GetActionManager();

/// Is the key (virtual-key numbering: letters are their upper-case ASCII code, 4 is the middle mouse button) held? The
/// second argument asks for the state at this moment rather than at the last event; the host keeps one state for both.
bool Object_GetCurrentKeyState(int key, bool now);
/// Told by whoever receives keys from the user.
void Object_SetKeyState(int key, bool held);
void Object_ClearKeyStates();
