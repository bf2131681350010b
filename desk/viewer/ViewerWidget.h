// SPDX-License-Identifier: MIT
// The 3D viewer in a window.
#pragma once

#include <QString>

#include <functional>

class QWidget;
class ZViewer;

/// What the viewer tells the window around it.
struct ViewerContext
{
    std::function<void()> afterEvent;
    std::function<void(const QString& path)> fileDropped;
};

/// A widget that shows the viewer and passes pointer and keys on: an OpenGL widget with a compatibility context where
/// the window system has OpenGL, else a plain one that shows pictures drawn off screen. Dropped files are passed on; a
/// model is dragged out of the viewer with Ctrl+Alt and the left button.
QWidget* MakeViewerWidget(ZViewer& viewer, const ViewerContext& context, QWidget* parent);
/// The surface format that the application must set before its first window.
void SetViewerSurfaceFormat();
/// A picture of the viewer as it is now, in the file form that the extension names; false with a reason.
bool SaveViewerPicture(ZViewer& viewer, const QString& path, QString* why);
