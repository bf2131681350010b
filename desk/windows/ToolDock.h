// SPDX-License-Identifier: MIT
// The dock that shows a tool's window; it can float.
#pragma once

#include <QDockWidget>

class FormWidget;
class QScrollArea;
class ZDeskSession;

/// Shows the tool that is open. Closed, the tool is deactivated and stays as it is; shown again, it is activated.
class ToolDock : public QDockWidget
{
    Q_OBJECT
public:
    ToolDock(ZDeskSession& desk, QWidget* parent);
    ~ToolDock() override;
    /// Lets go of the form: the tool is about to go.
    void ForgetTool();
    /// Shows the tool that is open now.
    void ShowTool();
    void Sync();
    /// The form of the tool; null while no tool is open.
    FormWidget* Form() const { return m_form; }
    /// The height that the tool asks for, in pixels of this screen.
    int WantedHeight() const;

private:
    void FollowVisibility();

    ZDeskSession& m_desk;
    QScrollArea* m_area;
    FormWidget* m_form = nullptr; ///< owned by the area
};
