// SPDX-License-Identifier: MIT
// Tools: forms that the user opens from the catalogue.
#pragma once

#include "object/ZEntity.h"
#include "ztoolkit/ZtLayout.h"

#include <memory>

/// Runs a menu command of a tool's window.
class IMenuCommandExecutor
{
public:
    /// True when the command was known and has run.
    virtual bool ExecuteMenuCommand(const char* command) = 0;

protected:
    virtual ~IMenuCommandExecutor() = default;
};

/// A tool and its window's form. Life: made by its catalogue factory; activated when its window is shown and has the
/// user's attention; deactivated when it is hidden or closed; destroyed by the host. Sizes are in pixels.
class ZTool : public ZtForm
{
public:
    ZCLASS_DECLARE()
    explicit ZTool(const char* name);
    ~ZTool() override;
    /// Leaves the list of tools.
    void SystemDetach() override;

    /// True when the tool is active afterwards. Active twice is no change.
    virtual bool ToolActivate();
    /// True when the tool is inactive afterwards. Inactive twice is no change.
    virtual bool ToolDeactivate();
    bool IsToolActive() const { return m_active; }

    void SetToolSize(int width, int height);
    void SetToolMinimumSize(int width, int height);
    int GetToolWidth() const { return m_width; }
    int GetToolHeight() const { return m_height; }
    int GetToolMinimumWidth() const { return m_minimumWidth; }
    int GetToolMinimumHeight() const { return m_minimumHeight; }

    /// The tool's own entity, through which it hears of plugs.
    ZEntity& GetEntity() { return m_entity; }

    /// What the tool is manipulating at this moment; null when nothing. The host shows it in the status line.
    void SetCurrentManipulation(ZObject* manipulation) { m_manipulation = manipulation; }
    ZObject* GetCurrentManipulation() const { return m_manipulation; }

    /// All tools that live, in order of making.
    static const std::vector<ZTool*>& GetTools();

private:
    ZEntity m_entity;
    ZObject* m_manipulation = nullptr;
    bool m_active = false;
    int m_width = 0, m_height = 0;
    int m_minimumWidth = 0, m_minimumHeight = 0;
};
