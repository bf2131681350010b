// SPDX-License-Identifier: MIT
// Keys without a modifier of the platform's shortcuts go to the viewer and the tools, from wherever in the window the
// focus is, unless something there takes text.
#pragma once

#include <QObject>

#include <set>

class QKeyEvent;
class QWidget;
class ZDeskSession;

/// An event filter on the application for the keys of one window. It keeps the host's key state: set at the press,
/// cleared at the release and when the window loses the focus. Repeats of a held key are swallowed.
class KeyInput : public QObject
{
    Q_OBJECT
public:
    KeyInput(ZDeskSession& desk, QWidget* window);
    ~KeyInput() override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// The host's key code: upper-case ASCII for letters and digits, 27 for Escape; 0 for keys that are not passed on.
    static int KeyCode(int qtKey);

private:
    bool IsOurs(const QObject* watched, const QKeyEvent& event) const;
    void ReleaseAll();

    ZDeskSession& m_desk;
    QWidget* m_window;
    std::set<int> m_held;
};
