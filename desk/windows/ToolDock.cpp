// SPDX-License-Identifier: MIT
// Making, sizing and activating the tool's form.
#include "desk/windows/ToolDock.h"

#include "desk/model/ZDeskSession.h"
#include "desk/widgets/FormWidget.h"

#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>

ToolDock::ToolDock(ZDeskSession& desk, QWidget* parent)
    : QDockWidget(tr("Tool"), parent), m_desk(desk), m_area(new QScrollArea(this))
{
    setObjectName(QStringLiteral("ToolDock"));
    m_area->setWidgetResizable(true);
    m_area->setFrameShape(QFrame::NoFrame);
    setWidget(m_area);
    connect(this, &QDockWidget::visibilityChanged, this, &ToolDock::FollowVisibility);
}

ToolDock::~ToolDock() { ForgetTool(); }

void ToolDock::ForgetTool()
{
    delete m_form;
    m_form = nullptr;
}

void ToolDock::ShowTool()
{
    ForgetTool();
    ZTool* const tool = m_desk.GetTool();
    if (tool == nullptr)
        return;
    setWindowTitle(QString::fromUtf8(tool->GetObjectLabelName()));
    for (const ZCatalogueEntry& entry : ZDeskSession::GetTools())
        if (entry.name == m_desk.OpenToolName())
            setWindowTitle(QString::fromStdString(entry.description));
    m_form = new FormWidget(*tool, {[this] { m_desk.AfterEvent(); }}, m_area);
    const QSize least = m_form->Scaled({tool->GetToolMinimumWidth(), tool->GetToolMinimumHeight()});
    m_form->setMinimumSize(least.expandedTo(m_form->MinimumUsefulSize()));
    m_area->setWidget(m_form);
    m_area->setMinimumHeight(
        std::min(m_form->minimumHeight(), m_form->Scaled({0, tool->GetToolMinimumHeight()}).height()));
    m_form->show();
    FollowVisibility();
}

int ToolDock::WantedHeight() const
{
    const ZTool* const tool = m_desk.GetTool();
    if (tool == nullptr || m_form == nullptr)
        return 0;
    const int height = std::max(m_form->minimumHeight(), m_form->Scaled({0, tool->GetToolHeight()}).height());
    return height + m_area->horizontalScrollBar()->sizeHint().height();
}

void ToolDock::Sync()
{
    if (m_form != nullptr)
        m_form->Sync();
}

/// Hidden behind a minimised window or another tab, the tool stays active; closed, it does not.
void ToolDock::FollowVisibility()
{
    ZTool* const tool = m_desk.GetTool();
    if (tool == nullptr || m_form == nullptr || tool->IsToolActive() != isHidden())
        return;
    if (isHidden())
        tool->ToolDeactivate();
    else
        tool->ToolActivate();
    m_desk.AfterEvent();
}
