// SPDX-License-Identifier: MIT
// A session with the small test plug-ins at hand.
#pragma once

#include "bcore/ZSession.h"
#include "object/ZAction.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"
#include "ztoolkit/ZtControls.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <memory>
#include <stdlib.h>
#include <string>

class SessionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        unsetenv("SKINDESK_PLUGINS");
        std::string pattern = (std::filesystem::temp_directory_path() / "skindesk-session-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        m_folder = pattern;
        ZReport_ClearWarnings();
        ZReport_Status("");
        Open();
    }
    void TearDown() override
    {
        m_session.reset();
        std::filesystem::remove_all(m_folder);
        ZReport_ClearWarnings();
        unsetenv("SKINDESK_PLUGINS");
    }
    void Open(const ZSession::Options& options = {})
    {
        m_session.reset();
        m_session = std::make_unique<ZSession>(options);
    }
    static std::string PluginFolder(const std::string& name) { return SKINDESK_TEST_PLUGINS "/" + name; }
    static std::string Plugin(const std::string& name) { return PluginFolder(name) + "/lib" + name + ".so"; }
    /// Loads the good plug-in and opens its tool.
    ZTool* OpenTiny()
    {
        std::string why;
        EXPECT_TRUE(m_session->LoadPlugin(Plugin("good"), &why)) << why;
        return m_session->OpenTool("Tiny");
    }
    static ZtCheckBox& Check(ZTool& tool, const char* region)
    {
        return *static_cast<ZtCheckBox*>(tool.FindRegion(region)->view);
    }

    std::filesystem::path m_folder;
    std::unique_ptr<ZSession> m_session;
};
