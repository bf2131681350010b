// SPDX-License-Identifier: MIT
// How models travel between the windows of the desk.
#pragma once

/// The form in which a drag of models is announced between widgets. It holds no data: the models themselves are in the
/// host's one drag (zdesktop/ZDragAndDrop.h), which lives as long as the drag of the window system.
inline constexpr char kModelDragFormat[] = "application/x-skindesk-models";
