// SPDX-License-Identifier: MIT
// The desk's icons, drawn in the colours of the palette so that they suit light and dark windows.
#pragma once

#include <QIcon>

enum class DeskIcon
{
    Application,
    Mesh,
    Surface,
    Bone,
    Node,
    Shown,
    Hidden,
    Free,
    Locked,
    Play,
    Pause,
    ToStart
};

/// The icon, in the application's present text colour.
QIcon MakeIcon(DeskIcon icon);
