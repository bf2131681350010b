// SPDX-License-Identifier: MIT
// The session: starts the host, loads plug-ins, owns the scene, opens tools.
#pragma once

#include "zdesktop/ZTool.h"
#include "zmanipulator/ZViewer.h"
#include "zmodel/ZScene.h"

#include <memory>
#include <string>
#include <vector>

/// One a process at a time; the desk, the Python module and tests each make one. User-interface thread only.
class ZSession
{
public:
    struct Options
    {
        std::vector<std::string>
            pluginFolders;          ///< empty: SKINDESK_PLUGINS, else ../lib/skindesk/plugins beside the program
        std::string settingsFolder; ///< where "@" files lie; empty: none
        std::string programFolder;  ///< folder of the program; empty: found from the process
    };
    explicit ZSession(const Options& options);
    /// Closes tools, clears the scene, unloads plug-ins, empties the undo stack.
    ~ZSession();
    ZSession(const ZSession&) = delete;
    ZSession& operator=(const ZSession&) = delete;
    /// The session that lives, or null.
    static ZSession* TheOne();

    ZScene& GetScene() { return *m_scene; }
    ZViewer& GetViewer() { return *m_viewer; }

    /// Loads every library of the plug-in folders; one that is refused is said in one warning (file name, reason).
    void LoadPlugins();
    /// Loads one library; false with one sentence in `*why` when it is no plug-in of ours. Nothing of it stays then. A
    /// file that is loaded already stays loaded: true.
    bool LoadPlugin(const std::string& file, std::string* why = nullptr);
    /// Unloads a loaded library; its tools are closed first. False when it is not loaded.
    bool UnloadPlugin(const std::string& file);
    std::vector<std::string> GetLoadedPlugins() const;

    /// Makes a tool from the catalogue ("UI/Tools"), lays it out at its own size and activates it. Null when there is
    /// none of that name or its factory answers null.
    ZTool* OpenTool(const std::string& name);
    /// Deactivates and destroys a tool.
    void CloseTool(ZTool* tool);
    const std::vector<ZTool*>& GetOpenTools() const { return m_tools; }

    /// Tells everybody that the scene is being cleared, then deletes all models and the undo history.
    void ClearScene();
    /// A key as the user presses it: key state, the viewer (Escape and others), then the shortcuts.
    void PressKey(int key, int modifiers);
    /// Undo or redo one step; false when there is none or a gesture is under way.
    bool Undo();
    bool Redo();
    /// Lets evaluation, the status line and the picture catch up after an event. The doors call it after each event.
    void AfterEvent();

private:
    struct Plugin;
    struct Watch;
    std::vector<std::string> PluginFolders() const;
    bool StepHistory(bool undo);
    void EndGestures();
    std::unique_ptr<ZScene> m_scene;
    std::unique_ptr<ZViewer> m_viewer;
    std::vector<std::unique_ptr<Plugin>> m_plugins;
    std::vector<ZTool*> m_tools;
    Options m_options;
    std::unique_ptr<Watch> m_watch;
};
