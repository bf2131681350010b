// SPDX-License-Identifier: MIT
// A drop as the window system sends it.
#pragma once

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QWidget>

/// The pointer comes in with `data` and lets it go; answers whether it was taken.
inline bool DropOn(QWidget& widget, const QMimeData& data)
{
    const QPoint place(20, 20);
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&widget, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&widget, &drop);
    return drop.isAccepted();
}
