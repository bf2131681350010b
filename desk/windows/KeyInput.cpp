// SPDX-License-Identifier: MIT
// From the window system's keys to the host's.
#include "desk/windows/KeyInput.h"

#include "desk/model/ZDeskSession.h"
#include "object/ZAction.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWidget>
#include <QWindow>

namespace {

constexpr int kKeyEscape = 27;

bool TakesText(const QWidget* widget)
{
    return qobject_cast<const QLineEdit*>(widget) != nullptr ||
           qobject_cast<const QAbstractSpinBox*>(widget) != nullptr ||
           qobject_cast<const QTextEdit*>(widget) != nullptr || qobject_cast<const QPlainTextEdit*>(widget) != nullptr;
}

} // namespace

KeyInput::KeyInput(ZDeskSession& desk, QWidget* window) : QObject(window), m_desk(desk), m_window(window)
{
    qApp->installEventFilter(this);
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &KeyInput::ReleaseAll);
}

KeyInput::~KeyInput() { ReleaseAll(); }

int KeyInput::KeyCode(int qtKey)
{
    if (qtKey >= Qt::Key_A && qtKey <= Qt::Key_Z)
        return qtKey;
    return qtKey == Qt::Key_Escape ? kKeyEscape : 0;
}

/// Docks that float are windows of their own and belong to ours; dialogs are no part of it.
bool KeyInput::IsOurs(const QObject* watched, const QKeyEvent& event) const
{
    const auto* const widget = qobject_cast<const QWidget*>(watched);
    if (widget == nullptr || QApplication::activePopupWidget() != nullptr ||
        QApplication::activeModalWidget() != nullptr)
        return false;
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    if (widget != m_window && !m_window->isAncestorOf(widget) && widget->window()->parentWidget() != m_window)
        return false;
    return KeyCode(event.key()) != 0 && !TakesText(widget);
}

bool KeyInput::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease)
        return false;
    const auto& key = *static_cast<QKeyEvent*>(event);
    const int code = KeyCode(key.key());
    if (event->type() == QEvent::KeyRelease) {
        if (m_held.count(code) == 0 || !qobject_cast<QWidget*>(watched))
            return false;
        if (!key.isAutoRepeat()) {
            m_held.erase(code);
            Object_SetKeyState(code, false);
        }
        return true;
    }
    if (!IsOurs(watched, key))
        return false;
    if (key.isAutoRepeat() || m_held.count(code) != 0)
        return true;
    m_held.insert(code);
    Object_SetKeyState(code, true);
    m_desk.Session().PressKey(code, key.modifiers().testFlag(Qt::ShiftModifier) ? kModifierShift : 0);
    m_desk.AfterEvent();
    return true;
}

void KeyInput::ReleaseAll()
{
    for (const int code : m_held)
        Object_SetKeyState(code, false);
    m_held.clear();
}
