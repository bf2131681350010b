// SPDX-License-Identifier: MIT
#include "zbaselib/ZConfigFile.h"
#include "zbaselib/ZReport.h"

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <rapidcheck/gtest.h>
#include <unistd.h>

namespace {
namespace fs = std::filesystem;

class ConfigFile : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "skindesk-config-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        m_folder = pattern;
        ZConfigFile_SetFolder(m_folder.string());
        ZReport_ClearWarnings();
    }
    void TearDown() override
    {
        ZConfigFile_SetFolder("");
        ZReport_ClearWarnings();
        fs::remove_all(m_folder);
    }
    void Write(const std::string& text, const std::string& name = "@Application.txt") const
    {
        std::ofstream(m_folder / name, std::ios::binary) << text;
    }
    std::string Read(const std::string& name = "@Application.txt") const
    {
        std::ifstream file(m_folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    static float DeadWeight()
    {
        return ZConfigFile("@Application.txt", false, false).Get("Weighting", "DeadWeight", 0.1f);
    }

    fs::path m_folder;
};
} // namespace

TEST_F(ConfigFile, ReadsANumberOfASection)
{
    Write("; settings\n\n[Viewer]\nDeadWeight=7\n[Weighting]\nDeadWeight=5\n# end\n");
    EXPECT_FLOAT_EQ(DeadWeight(), 5.0f);
}

TEST_F(ConfigFile, AMissingFileOrKeyIsTheDefault)
{
    EXPECT_FLOAT_EQ(DeadWeight(), 0.1f);
    Write("[Weighting]\nOther=1\n");
    EXPECT_FLOAT_EQ(DeadWeight(), 0.1f);
    EXPECT_FALSE(fs::exists(m_folder / "Missing.txt"));
    EXPECT_TRUE(ZReport_Warnings().empty());
}

TEST_F(ConfigFile, WithoutAFolderEverythingIsMissing)
{
    Write("[Weighting]\nDeadWeight=5\n");
    ZConfigFile_SetFolder("");
    EXPECT_FLOAT_EQ(DeadWeight(), 0.1f);
}

TEST_F(ConfigFile, TheNameOnDiskMayLackTheSign)
{
    Write("[Weighting]\nDeadWeight=3\n", "Application.txt");
    EXPECT_FLOAT_EQ(DeadWeight(), 3.0f);
    Write("[Weighting]\nDeadWeight=4\n");
    EXPECT_FLOAT_EQ(DeadWeight(), 4.0f);
}

TEST_F(ConfigFile, TakesWindowsLineEndsBlanksAndAByteOrderMark)
{
    Write("\xEF\xBB\xBF[ Weighting ]\r\n  DeadWeight = +2.5e-1 \r\n");
    EXPECT_FLOAT_EQ(DeadWeight(), 0.25f);
}

TEST_F(ConfigFile, TheLaterKeyOfASectionHolds)
{
    Write("[Weighting]\nDeadWeight=1\n[Other]\nDeadWeight=9\n[Weighting]\nDeadWeight=2\n");
    EXPECT_FLOAT_EQ(DeadWeight(), 2.0f);
}

TEST_F(ConfigFile, TheDecimalPointIsAPointInEveryLocale)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE", "C.UTF-8"})
        if (std::setlocale(LC_ALL, name) != nullptr)
            break;
    Write("[Weighting]\nDeadWeight=0.5\n");
    EXPECT_FLOAT_EQ(DeadWeight(), 0.5f);
    std::setlocale(LC_ALL, before.c_str());
}

TEST_F(ConfigFile, WhatIsNoFiniteNumberCountsAsMissingAndIsSaidOnce)
{
    for (const char* value : {"0,5", "abc", "1 2", "nan", "inf", "1e99", ""}) {
        ZReport_ClearWarnings();
        Write(std::string("[Weighting]\nDeadWeight=") + value + "\n");
        const ZConfigFile file("@Application.txt", false, false);
        EXPECT_FLOAT_EQ(file.Get("Weighting", "DeadWeight", 0.1f), 0.1f) << value;
        EXPECT_FLOAT_EQ(file.Get("Weighting", "DeadWeight", 0.1f), 0.1f) << value;
        ASSERT_EQ(ZReport_Warnings().size(), 1u) << value;
        EXPECT_THAT(ZReport_Warnings()[0], testing::HasSubstr("[Weighting] DeadWeight"));
    }
}

TEST_F(ConfigFile, AFolderInPlaceOfTheFileIsEmpty)
{
    fs::create_directory(m_folder / "@Application.txt");
    EXPECT_FLOAT_EQ(DeadWeight(), 0.1f);
}

TEST_F(ConfigFile, NothingIsWrittenUnlessAskedFor)
{
    Write("[Weighting]\nDeadWeight=1\n");
    {
        ZConfigFile file("@Application.txt", false, false);
        file.Set("Weighting", "DeadWeight", "2");
        EXPECT_EQ(file.Get("Weighting", "DeadWeight", ""), "2");
    }
    EXPECT_EQ(Read(), "[Weighting]\nDeadWeight=1\n");
}

TEST_F(ConfigFile, ChangesAreWrittenBackAmongWhatStandsThere)
{
    Write("; mine\n[Weighting]\nDeadWeight=1\n\n[Viewer]\nGrid=1\n");
    {
        ZConfigFile file("@Application.txt", false, true);
        file.Set("Weighting", "DeadWeight", "2\n3");
        file.Set("Viewer", "Bones", "0");
        file.Set("Recent", "File1", "fox.glb");
    }
    EXPECT_EQ(Read(), "; mine\n[Weighting]\nDeadWeight=2 3\n\n[Viewer]\nGrid=1\nBones=0\n[Recent]\nFile1=fox.glb\n");
}

TEST_F(ConfigFile, CreatesAMissingFileWhenAsked)
{
    {
        const ZConfigFile file("@New.txt", true, false);
    }
    EXPECT_TRUE(fs::exists(m_folder / "@New.txt"));
}

TEST_F(ConfigFile, AFolderThatCannotBeWrittenIsSaid)
{
    ZConfigFile_SetFolder((m_folder / "missing").string());
    {
        ZConfigFile file("@Application.txt", false, true);
        file.Set("A", "B", "1");
    }
    ASSERT_EQ(ZReport_Warnings().size(), 1u);
    EXPECT_THAT(ZReport_Warnings()[0], testing::HasSubstr("could not be written"));
}

RC_GTEST_PROP(ConfigFileText, AnyBytesAreRead, (const std::string& text))
{
    ZConfigFile file("", false, false);
    file.ReadText(text);
    RC_ASSERT(file.Get("no such section", "key", 1.5f) == 1.5f);
}

RC_GTEST_PROP(ConfigFileText, EveryFloatComesBackAsItIsSpelled, (int mantissa))
{
    const float number = static_cast<float>(mantissa) / 1024.0f;
    char spelled[64];
    std::snprintf(spelled, sizeof(spelled), "[S]\nK=%.9g\n", static_cast<double>(number));
    ZConfigFile file("", false, false);
    file.ReadText(spelled);
    RC_ASSERT(file.Get("S", "K", -1.0f) == number);
}
