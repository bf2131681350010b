// SPDX-License-Identifier: MIT
// A session with the real plug-in loaded from its file, its tool opened, and its controls by name.
#pragma once

#include "bcore/ZSession.h"
#include "zdesktop/ZDragAndDrop.h"
#include "ztoolkit/ZtControls.h"
#include "ztoolkit/ZtListBox.h"
#include "ztoolkit/ZtSpread.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

/// Loads the plug-ins of `pluginFolder`. The tool is opened by OpenTool and goes with the session.
class OpenedTool
{
public:
    explicit OpenedTool(const std::string& pluginFolder) : session(Options(pluginFolder)) { session.LoadPlugins(); }

    void OpenTool()
    {
        tool = session.OpenTool("Skins");
        ASSERT_NE(tool, nullptr);
        std::vector<ZtView*> views;
        tool->CollectViews(views);
        for (ZtView* const view : views)
            m_controls[view->GetObjectName()] = view;
    }
    /// Null when there is none of that name and kind.
    template <class T> T* Find(const std::string& name) const
    {
        const auto found = m_controls.find(name);
        return found != m_controls.end() ? Object_Cast<T>(found->second) : nullptr;
    }
    template <class T> T& Control(const std::string& name) const { return static_cast<T&>(*m_controls.at(name)); }
    ZtListBox& Models() const { return Control<ZtListBox>("ModelListUI"); }
    ZtListBox& Bones() const { return Control<ZtListBox>("ListBonesList"); }
    ZtListBox& Vertices() const { return Control<ZtListBox>("ListVertexList"); }
    ZtSpread& Spread() const { return Control<ZtSpread>("SpreadWeights"); }
    ZViewer& Viewer() { return session.GetViewer(); }

    void Drop(const std::vector<ZModel*>& models)
    {
        GlobalDragAndDrop_Begin();
        for (ZModel* const model : models)
            GlobalDragAndDrop_Add(model, 0);
        EXPECT_TRUE(GlobalDragAndDrop_DropOn(&Models()));
        session.AfterEvent();
    }
    /// Every row's text.
    static std::vector<std::string> Rows(const ZtListBox& list)
    {
        std::vector<std::string> rows;
        for (int row = 0; row < list.GetRowCount(); ++row)
            rows.push_back(list.GetRowText(row));
        return rows;
    }

    ZSession session;
    ZTool* tool = nullptr;

private:
    static ZSession::Options Options(const std::string& pluginFolder)
    {
        ZSession::Options options;
        options.pluginFolders = {pluginFolder};
        return options;
    }
    std::map<std::string, ZtView*> m_controls;
};
