// SPDX-License-Identifier: MIT
#include "zbaselib/ZReport.h"

#include <gmock/gmock.h>

namespace {
class Report : public testing::Test
{
protected:
    void SetUp() override { Clean(); }
    void TearDown() override { Clean(); }
    static void Clean()
    {
        ZReport_SetListener({});
        ZReport_SetMisuseFatal(true);
        ZReport_ClearWarnings();
        ZReport_Status("");
    }
};
} // namespace

TEST_F(Report, FatalMisuseThrowsWithCallAndSentence)
{
    try {
        ZReport_Misuse("ZThing::Do", "the thing is gone");
        FAIL() << "no exception";
    } catch (const ZHostMisuse& misuse) {
        EXPECT_STREQ(misuse.what(), "ZThing::Do: the thing is gone");
    }
    EXPECT_TRUE(ZReport_Warnings().empty());
}

TEST_F(Report, OtherwiseMisuseIsALine)
{
    ZReport_SetMisuseFatal(false);
    ZReport_Misuse("ZThing::Do", "the thing is gone");
    EXPECT_THAT(ZReport_Warnings(), testing::ElementsAre("ZThing::Do: the thing is gone"));
}

TEST_F(Report, TheListenerHearsEachKindInOrder)
{
    std::vector<std::pair<int, std::string>> heard;
    ZReport_SetListener([&heard](int kind, const std::string& line) { heard.emplace_back(kind, line); });
    ZReport_SetMisuseFatal(false);
    ZReport_Warning("w");
    ZReport_Status("s");
    ZReport_Misuse("c", "m");
    EXPECT_THAT(heard, testing::ElementsAre(testing::Pair(0, "w"), testing::Pair(1, "s"), testing::Pair(2, "c: m")));
    EXPECT_EQ(ZReport_GetStatus(), "s");
    EXPECT_THAT(ZReport_Warnings(), testing::ElementsAre("w", "c: m"));
}

TEST_F(Report, TheListenerMayTakeItselfAway)
{
    int heard = 0;
    ZReport_SetListener([&heard](int, const std::string&) {
        ++heard;
        ZReport_SetListener({});
    });
    ZReport_Warning("first");
    ZReport_Warning("second");
    EXPECT_EQ(heard, 1);
}
