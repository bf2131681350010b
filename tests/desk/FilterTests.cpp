// SPDX-License-Identifier: MIT
// The filter above a list: what it shows, and that it never holds the window up.
#include "ListStage.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>

namespace {

using testing::ElementsAre;
using testing::Le;
using testing::SizeIs;

/// Until the filter has looked at all rows; answers how long the longest round of events was, in milliseconds.
qint64 LetFilter(ListStage& stage)
{
    auto* const rows = static_cast<ListBoxModel*>(stage.View()->model());
    QElapsedTimer all, round;
    all.start();
    qint64 longest = 0;
    while (rows->IsFiltering() && all.elapsed() < 60000) {
        round.start();
        QApplication::processEvents();
        longest = std::max(longest, round.elapsed());
    }
    return longest;
}

TEST(ListFilter, ShowsMatchingRowsAndSelectsTheControlsRow)
{
    ListStage stage(30);
    stage.Show();
    QLineEdit* const filter = stage.Filter();
    ASSERT_NE(filter, nullptr);
    QTest::keyClicks(filter, "ROW 2");
    ASSERT_EQ(stage.View()->model()->rowCount(), 11); // 2 and 20 to 29
    stage.Click(1);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(20));
    filter->clear();
    EXPECT_EQ(stage.View()->model()->rowCount(), 30);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(20));
}

TEST(ListFilter, NothingFoundIsAnEmptyList)
{
    ListStage stage(30);
    stage.Show();
    stage.holder->findChild<QLineEdit*>("Filter")->setText("no such row");
    EXPECT_EQ(stage.View()->model()->rowCount(), 0);
    QTest::keyClick(stage.View(), Qt::Key_Down);
    QTest::mouseClick(stage.View()->viewport(), Qt::LeftButton);
    EXPECT_THAT(stage.recorder.events, SizeIs(0));
}

TEST(ListFilter, MillionRowsAreFilteredBetweenEvents)
{
    ListStage stage(1'000'000);
    stage.Show();
    QElapsedTimer clock;
    clock.start();
    QTest::keyClicks(stage.Filter(), "99");
    EXPECT_LT(clock.elapsed(), 1000) << "milliseconds; the texts alone take longer than a key press may";
    EXPECT_LT(stage.source.rows.size(), 1'000'000u) << "not all texts at the keys";
    LetFilter(stage);
    // Six digits from 000000 to 999999 that hold 99 in a row, without leading zeros.
    int expected = 0;
    for (int row = 0; row < 1'000'000; ++row)
        expected += std::to_string(row).find("99") != std::string::npos;
    EXPECT_EQ(stage.ShownCount(), expected);
}

TEST(ListFilter, LongerTextLooksAtShownRowsOnly)
{
    ListStage stage(100'000);
    stage.Show();
    stage.Filter()->setText("9999");
    LetFilter(stage);
    const int shown = stage.ShownCount();
    stage.source.asked = 0;
    QTest::keyClicks(stage.Filter(), "8");
    LetFilter(stage);
    EXPECT_EQ(stage.ShownCount(), 1);
    EXPECT_THAT(stage.source.asked, Le(shown + 40)) << "the shown rows, and what is painted";
}

TEST(ListFilter, SelectionReadsNoTextAgain)
{
    ListStage stage(100'000);
    stage.Show();
    stage.Filter()->setText("9999");
    LetFilter(stage);
    stage.source.asked = 0;
    stage.Click(1);
    QApplication::processEvents();
    EXPECT_THAT(stage.list.GetSelectedRows(), SizeIs(1));
    EXPECT_THAT(stage.source.asked, Le(200)) << "what is painted";
}

TEST(ListFilter, FollowsTheControlWhenItIsFilledAnew)
{
    ListStage stage(100'000);
    stage.Show();
    stage.Filter()->setText("9999");
    stage.list.ClearRows();
    stage.list.AddRows(20'000);
    stage.widget->SyncIfChanged();
    LetFilter(stage);
    EXPECT_EQ(stage.ShownCount(), 2); // 9999 and 19999
    stage.Click(1);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(19'999));
}

TEST(ListFilter, ShorterTextShowsMoreAgain)
{
    ListStage stage(1'000);
    stage.Show();
    QTest::keyClicks(stage.Filter(), "999");
    LetFilter(stage);
    EXPECT_EQ(stage.ShownCount(), 1);
    QTest::keyClick(stage.Filter(), Qt::Key_Backspace);
    LetFilter(stage);
    EXPECT_EQ(stage.ShownCount(), 19); // 99, 199 ... 899, 990 to 999
}

} // namespace
