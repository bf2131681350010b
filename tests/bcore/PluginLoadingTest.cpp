// SPDX-License-Identifier: MIT
// Loading real shared objects, and refusing what is no plug-in of ours.
#include "SessionFixture.h"
#include "bcore/ZPluginFile.h"
#include "object/ZCatalogue.h"
#include "object/ZClassDefinition.h"
#include "zconstraints/ZEvaluateManager.h"

#include <fstream>
#include <iterator>
#include <vector>

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {
namespace fs = std::filesystem;

class PluginLoading : public SessionTest
{
protected:
    std::string Refusal(const std::string& file)
    {
        std::string why;
        EXPECT_FALSE(m_session->LoadPlugin(file, &why));
        EXPECT_THAT(m_session->GetLoadedPlugins(), IsEmpty());
        return why;
    }
    std::string Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(m_folder / name, std::ios::binary) << bytes;
        return (m_folder / name).string();
    }
    static std::string Bytes(const std::string& file)
    {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }
    static std::vector<std::string> CatalogueNames()
    {
        std::vector<std::string> names;
        for (const ZCatalogueEntry& entry : Object_GetCatalogue())
            names.push_back(entry.name);
        return names;
    }
};
} // namespace

TEST_F(PluginLoading, AGoodOneFillsTheCatalogueOnceAndUnloadingWithdrawsIt)
{
    EXPECT_TRUE(m_session->LoadPlugin(Plugin("good")));
    EXPECT_THAT(CatalogueNames(), ElementsAre("Tiny", "Nothing", "NoTool", "Trouble"));
    EXPECT_THAT(m_session->GetLoadedPlugins(), ElementsAre(Plugin("good")));
    EXPECT_TRUE(m_session->UnloadPlugin(Plugin("good")));
    EXPECT_THAT(CatalogueNames(), IsEmpty());
    EXPECT_FALSE(m_session->UnloadPlugin(Plugin("good")));
    EXPECT_THAT(ZReport_Warnings(), IsEmpty());
}

TEST_F(PluginLoading, UnloadingTakesTheClassesAwayAndLoadingAgainMakesNewIds)
{
    m_session->LoadPlugin(Plugin("good"));
    ASSERT_NE(ZClassDefinition::FindByName("TinyManipulator"), nullptr);
    const int id = ZClassDefinition::FindByName("TinyManipulator")->GetClassId();
    m_session->UnloadPlugin(Plugin("good"));
    EXPECT_EQ(ZClassDefinition::FindByName("TinyManipulator"), nullptr);
    m_session->LoadPlugin(Plugin("good"));
    ASSERT_NE(ZClassDefinition::FindByName("TinyManipulator"), nullptr);
    EXPECT_NE(ZClassDefinition::FindByName("TinyManipulator")->GetClassId(), id);
}

TEST_F(PluginLoading, LoadOpenUnloadAndLoadAgain)
{
    for (int round = 0; round < 3; ++round) {
        ZTool* tool = OpenTiny();
        ASSERT_NE(tool, nullptr);
        Check(*tool, "RecordCheck").UserClick();
        EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), 1);
        EXPECT_TRUE(m_session->UnloadPlugin(Plugin("good")));
        EXPECT_THAT(m_session->GetOpenTools(), IsEmpty());
        EXPECT_THAT(ZManipulator_GetManipulatorSet()->GetManipulators(), IsEmpty());
        EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), 0) << "records of the library may not outlive it";
        EXPECT_EQ(m_session->OpenTool("Tiny"), nullptr);
    }
}

TEST_F(PluginLoading, LoadedTwiceIsLoadedOnce)
{
    EXPECT_TRUE(m_session->LoadPlugin(Plugin("good")));
    EXPECT_TRUE(m_session->LoadPlugin(Plugin("good")));
    fs::create_symlink(Plugin("good"), m_folder / "libgood.so");
    EXPECT_TRUE(m_session->LoadPlugin((m_folder / "libgood.so").string()));
    EXPECT_EQ(m_session->GetLoadedPlugins().size(), 1u);
}

TEST_F(PluginLoading, ASecondFileOfTheSameNameIsRefused)
{
    ASSERT_TRUE(m_session->LoadPlugin(Plugin("good")));
    fs::copy_file(Plugin("good"), m_folder / "libgood.so");
    std::string why;
    EXPECT_FALSE(m_session->LoadPlugin((m_folder / "libgood.so").string(), &why));
    EXPECT_THAT(why, AllOf(StartsWith("libgood.so is loaded already"), HasSubstr(PluginFolder("good"))));
    EXPECT_EQ(m_session->GetLoadedPlugins().size(), 1u);
}

TEST_F(PluginLoading, TwoPluginsLiveSideBySide)
{
    EXPECT_TRUE(m_session->LoadPlugin(Plugin("good")));
    EXPECT_TRUE(m_session->LoadPlugin(Plugin("another")));
    EXPECT_TRUE(m_session->UnloadPlugin(Plugin("good")));
    EXPECT_THAT(CatalogueNames(), ElementsAre("Soft"));
}

TEST_F(PluginLoading, AMissingFileAFolderAndAnEmptyFileAreRefused)
{
    EXPECT_EQ(Refusal((m_folder / "libnone.so").string()), "libnone.so is not there or is no file.");
    fs::create_directory(m_folder / "libfolder.so");
    EXPECT_EQ(Refusal((m_folder / "libfolder.so").string()), "libfolder.so is not there or is no file.");
    EXPECT_EQ(Refusal(Write("libempty.so", "")), "libempty.so is empty.");
}

TEST_F(PluginLoading, ATextFileIsRefused)
{
    EXPECT_EQ(Refusal(Write("libtext.so", "Dear host, please load me.")),
              "libtext.so is no shared library for this machine.");
    EXPECT_EQ(Refusal(Write("libe.so", "E")), "libe.so is no shared library for this machine.");
}

TEST_F(PluginLoading, AnotherNameThanLibNameSoIsRefused)
{
    fs::copy_file(Plugin("good"), m_folder / "good.so");
    EXPECT_EQ(Refusal((m_folder / "good.so").string()), "good.so is not called libNAME.so.");
    EXPECT_EQ(ZPluginFile_Name("/a/libgood.so"), "good");
    for (const char* name : {"lib.so", "libgood.so.1", "good.so", "libgood.dll", ""})
        EXPECT_EQ(ZPluginFile_Name(name), "") << name;
}

TEST_F(PluginLoading, AProgramOfThisMachineIsRefused)
{
    fs::copy_file("/proc/self/exe", m_folder / "libprogram.so");
    EXPECT_THAT(Refusal((m_folder / "libprogram.so").string()), StartsWith("libprogram.so "));
}

TEST_F(PluginLoading, OneWithoutEntryPointIsRefusedBeforeItsCodeRuns)
{
    EXPECT_EQ(Refusal(Plugin("noentry")), "libnoentry.so has no entry point EntryPointnoentry.");
    EXPECT_EQ(ZReport_GetStatus(), "");
}

TEST_F(PluginLoading, OneForAnotherHostVersionIsRefusedBeforeItsCodeRuns)
{
    EXPECT_EQ(Refusal(Plugin("otherversion")), "libotherversion.so was built for another host version "
                                               "(skindesk-host-0; this is skindesk-host-1).");
    EXPECT_EQ(ZReport_GetStatus(), "");
    EXPECT_THAT(Refusal(Plugin("unstamped")), StartsWith("libunstamped.so was built for another host version"));
}

TEST_F(PluginLoading, OneThatDoesNotInitialiseIsRefusedAndLeavesNothing)
{
    EXPECT_EQ(Refusal(Plugin("uninitialised")), "libuninitialised.so says that it could not be initialised.");
    EXPECT_THAT(CatalogueNames(), IsEmpty());
}

TEST_F(PluginLoading, OneWhoseEntryPointThrowsIsRefusedAndLeavesNothing)
{
    EXPECT_EQ(Refusal(Plugin("failing")), "libfailing.so failed while it was loaded: the licence is lost.");
    EXPECT_THAT(CatalogueNames(), IsEmpty());
}

TEST_F(PluginLoading, OneWithAMissingSymbolIsRefused)
{
    EXPECT_THAT(Refusal(Plugin("unresolved")),
                AllOf(StartsWith("libunresolved.so cannot be loaded: "), HasSubstr("SkindeskFunctionThatNobodyHas")));
}

TEST_F(PluginLoading, OneCutAtAnyLengthIsRefused)
{
    const std::string whole = Bytes(Plugin("good"));
    ASSERT_EQ(ZPluginFile_CheckBytes("libgood.so", std::as_bytes(std::span(whole))), "");
    // Every length near the headers and the end, and every 97th between.
    size_t checked = 0;
    for (size_t length = 0; length < whole.size(); length += length < 1024 || length + 200 > whole.size() ? 1 : 97) {
        // The bytes lie at the end of their own block, so that a sanitizer sees a step beyond them.
        const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const std::string why = ZPluginFile_CheckBytes("libgood.so", std::as_bytes(std::span(cut)));
        EXPECT_THAT(why, AllOf(StartsWith("libgood.so "), EndsWith("."))) << length;
        ++checked;
    }
    EXPECT_GT(checked, 1000u);
    for (const size_t length : {size_t{1}, size_t{63}, size_t{64}, whole.size() / 2, whole.size() - 1})
        EXPECT_THAT(Refusal(Write("libgood.so", whole.substr(0, length))), StartsWith("libgood.so ")) << length;
}

TEST_F(PluginLoading, AnySpoiledByteOfTheHeadersIsReadSafely)
{
    const std::string whole = Bytes(Plugin("good"));
    for (size_t place = 0; place < 1024; ++place)
        for (const char value : {'\0', '\x7f', '\xff'}) {
            std::string spoiled = whole;
            spoiled[place] = value;
            const std::string why = ZPluginFile_CheckBytes("libgood.so", std::as_bytes(std::span(spoiled)));
            EXPECT_TRUE(why.empty() || why.compare(0, 11, "libgood.so ") == 0) << place << ": " << why;
        }
}

TEST_F(PluginLoading, FoldersAreLoadedInTheOrderOfTheNamesAndRefusalsAreSaid)
{
    fs::copy_file(Plugin("good"), m_folder / "libgood.so");
    fs::copy_file(Plugin("another"), m_folder / "libanother.so");
    fs::copy_file(Plugin("noentry"), m_folder / "libnoentry.so");
    Write("libtext.so", "text");
    Write("readme.txt", "not looked at");
    ZSession::Options options;
    options.pluginFolders = {m_folder.string()};
    Open(options);
    m_session->LoadPlugins();
    EXPECT_THAT(m_session->GetLoadedPlugins(), ElementsAre(EndsWith("libanother.so"), EndsWith("libgood.so")));
    EXPECT_THAT(ZReport_Warnings(), ElementsAre("libnoentry.so has no entry point EntryPointnoentry.",
                                                "libtext.so is no shared library for this machine."));
    EXPECT_THAT(CatalogueNames(), ElementsAre("Soft", "Tiny", "Nothing", "NoTool", "Trouble"));
}

TEST_F(PluginLoading, TheEnvironmentNamesFoldersSeparatedByColons)
{
    setenv("SKINDESK_PLUGINS", (PluginFolder("another") + ":" + PluginFolder("good")).c_str(), 1);
    m_session->LoadPlugins();
    EXPECT_THAT(m_session->GetLoadedPlugins(), ElementsAre(Plugin("another"), Plugin("good")));
}

TEST_F(PluginLoading, FoldersOfTheOptionsComeBeforeTheEnvironment)
{
    setenv("SKINDESK_PLUGINS", PluginFolder("another").c_str(), 1);
    ZSession::Options options;
    options.pluginFolders = {PluginFolder("good")};
    Open(options);
    m_session->LoadPlugins();
    EXPECT_THAT(m_session->GetLoadedPlugins(), ElementsAre(Plugin("good")));
}

TEST_F(PluginLoading, WithoutBothTheFolderBesideTheProgramIsUsed)
{
    fs::create_directories(m_folder / "lib/skindesk/plugins");
    fs::copy_file(Plugin("good"), m_folder / "lib/skindesk/plugins/libgood.so");
    ZSession::Options options;
    options.programFolder = (m_folder / "bin").string();
    Open(options);
    m_session->LoadPlugins();
    EXPECT_THAT(m_session->GetLoadedPlugins(), ElementsAre(EndsWith("lib/skindesk/plugins/libgood.so")));
}

TEST_F(PluginLoading, ANamedFolderThatIsNotThereIsSaidAnUnnamedOneIsNot)
{
    ZSession::Options options;
    options.programFolder = (m_folder / "bin").string();
    Open(options);
    m_session->LoadPlugins();
    EXPECT_THAT(ZReport_Warnings(), IsEmpty());
    options.pluginFolders = {(m_folder / "missing").string()};
    Open(options);
    m_session->LoadPlugins();
    EXPECT_THAT(ZReport_Warnings(), ElementsAre((m_folder / "missing").string() + " is no folder of plug-ins."));
}

TEST_F(PluginLoading, ClosingTheSessionUnloadsEverything)
{
    OpenTiny();
    m_session.reset();
    EXPECT_THAT(CatalogueNames(), IsEmpty());
    EXPECT_THAT(ZTool::GetTools(), IsEmpty());
    EXPECT_THAT(ZManipulator_GetManipulatorSet()->GetManipulators(), IsEmpty());
    EXPECT_FALSE(ZEvaluateManager::TheOne()->HasWork());
}
