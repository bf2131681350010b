// SPDX-License-Identifier: MIT
// The base of tools and the list of those that live.
#include "zdesktop/ZTool.h"

#include "zbaselib/ZReport.h"

#include <vector>

ZCLASS_DEFINE(ZTool, ZtForm)

namespace {
std::vector<ZTool*>& LivingTools()
{
    static std::vector<ZTool*> tools;
    return tools;
}
} // namespace

ZTool::ZTool(const char* name) : ZtForm(name), m_entity(name) { LivingTools().push_back(this); }

ZTool::~ZTool()
{
    if (!IsDestroyed())
        ZTool::SystemDetach();
}

void ZTool::SystemDetach()
{
    std::erase(LivingTools(), this);
    ZtForm::SystemDetach();
}

bool ZTool::ToolActivate()
{
    if (IsDestroyed()) {
        ZReport_Misuse("ZTool::ToolActivate", "the tool \"" + GetObjectName() + "\" has been destroyed");
        return false;
    }
    m_active = true;
    return true;
}

bool ZTool::ToolDeactivate()
{
    m_active = false;
    return true;
}

void ZTool::SetToolSize(int width, int height)
{
    m_width = width;
    m_height = height;
    MarkChanged();
}

void ZTool::SetToolMinimumSize(int width, int height)
{
    m_minimumWidth = width;
    m_minimumHeight = height;
    MarkChanged();
}

const std::vector<ZTool*>& ZTool::GetTools() { return LivingTools(); }
