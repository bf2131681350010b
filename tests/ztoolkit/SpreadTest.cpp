// SPDX-License-Identifier: MIT
// The spreadsheet: columns, cells, edits.
#include "RecordedEvents.h"
#include "ztoolkit/ZtSpread.h"

#include <gmock/gmock.h>

#include <limits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {
/// Two rows of a colour, a slider, a check box and a number.
void MakeValidSpread(ZtSpread& spread)
{
    spread.AddColumn("Col", kCellView, 30);
    spread.AddColumn("Weight Slider", kCellView, 120);
    spread.AddColumn("Lock", kCellCheck, 50);
    spread.AddColumn("Weight", kCellNumber, 58);
    spread.SetRowCount(2);
    for (int row = 0; row < 2; ++row) {
        spread.SetColourCell(row, 0, 0.9f, 0.45f, 0);
        spread.SetSliderCell(row, 1, 25, 0, 100);
        spread.SetCellValue(row, 3, 25);
    }
}
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
} // namespace

TEST(Spread, ColumnsAndRowsAreAsGiven)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    spread.SetRowLabelWidth(162);
    spread.SetRowLabel(1, "Hip");
    EXPECT_EQ(spread.GetRowLabelWidth(), 162);
    ASSERT_EQ(spread.GetColumns().size(), 4u);
    EXPECT_EQ(spread.GetColumns()[1].name, "Weight Slider");
    EXPECT_EQ(spread.GetColumns()[2].kind, kCellCheck);
    EXPECT_EQ(spread.GetColumns()[3].width, 58);
    EXPECT_EQ(spread.GetRowLabel(1), "Hip");
    EXPECT_EQ(spread.GetRowLabel(2), "");
    EXPECT_EQ(spread.GetCell(0, 0)->view, ZtSpreadCell::View::Colour);
    EXPECT_EQ(spread.GetCell(0, 0)->colour[1], 0.45f);
    EXPECT_EQ(spread.GetCell(1, 1)->value, 25);
    EXPECT_EQ(spread.GetCell(2, 0), nullptr);
    EXPECT_EQ(spread.GetCell(0, 4), nullptr);
    EXPECT_EQ(spread.GetCell(-1, 0), nullptr);
}

TEST(Spread, MoreRowsKeepThoseThatAreThere)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    spread.SetRowCount(3);
    EXPECT_EQ(spread.GetCell(1, 3)->value, 25);
    EXPECT_EQ(spread.GetCell(2, 3)->value, 0);
    EXPECT_EQ(spread.GetCell(2, 1)->view, ZtSpreadCell::View::None);
    spread.SetRowCount(-1);
    EXPECT_EQ(spread.GetRowCount(), 0);
}

TEST(Spread, AnotherColumnKeepsTheCells)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    EXPECT_EQ(spread.AddColumn("More", kCellNumber, 10), 4);
    EXPECT_EQ(spread.GetCell(1, 1)->value, 25);
    EXPECT_EQ(spread.GetCell(0, 4)->value, 0);
}

TEST(Spread, ClearForgetsRowsAndColumns)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    spread.Clear();
    EXPECT_EQ(spread.GetRowCount(), 0);
    EXPECT_TRUE(spread.GetColumns().empty());
}

TEST(Spread, TheCellHoldsTheNewValueWhenTheEventComes)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    RecordedEvents seen(spread);
    EXPECT_TRUE(spread.UserType(1, 3, 40));
    ASSERT_EQ(seen.events.size(), 1u);
    EXPECT_EQ(seen.events[0].kind, kViewValueChanged);
    EXPECT_EQ(seen.events[0].row, 1);
    EXPECT_EQ(seen.events[0].column, 3);
    EXPECT_EQ(seen.events[0].viewEvent, 0);
    EXPECT_EQ(seen.events[0].value, 40);
    EXPECT_EQ(spread.GetCell(1, 3)->value, 40);
}

TEST(Spread, ACheckCellIsOnOrOff)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    RecordedEvents seen(spread);
    EXPECT_TRUE(spread.UserType(0, 2, 7));
    EXPECT_TRUE(spread.UserType(0, 2, 0));
    EXPECT_THAT(seen.Values(), ElementsAre(1, 0));
}

TEST(Spread, ASliderCellSendsItsViewsEvents)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    RecordedEvents seen(spread);
    EXPECT_TRUE(spread.UserSlide(0, 1, kViewPress, 30));
    EXPECT_TRUE(spread.UserSlide(0, 1, kViewValueChanged, 300));
    EXPECT_TRUE(spread.UserSlide(0, 1, kViewRelease, -5));
    ASSERT_EQ(seen.events.size(), 3u);
    EXPECT_EQ(seen.events[0].viewEvent, kViewPress);
    EXPECT_EQ(seen.events[1].viewEvent, kViewValueChanged);
    EXPECT_EQ(seen.events[2].viewEvent, kViewRelease);
    EXPECT_THAT(seen.Kinds(), ElementsAre(kViewValueChanged, kViewValueChanged, kViewValueChanged));
    EXPECT_THAT(seen.Values(), ElementsAre(30, 100, 0));
}

TEST(Spread, WhatACellDoesNotTakeChangesNothing)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    RecordedEvents seen(spread);
    EXPECT_FALSE(spread.UserType(0, 3, kNan));
    EXPECT_FALSE(spread.UserType(0, 1, 5));
    EXPECT_FALSE(spread.UserType(0, 0, 5));
    EXPECT_FALSE(spread.UserType(2, 3, 5));
    EXPECT_FALSE(spread.UserSlide(0, 1, kViewPress, kNan));
    EXPECT_FALSE(spread.UserSlide(0, 3, kViewPress, 5));
    EXPECT_FALSE(spread.UserSlide(0, 0, kViewPress, 5));
    EXPECT_FALSE(spread.UserSlide(0, 1, 77, 5));
    spread.SetCellValue(0, 0, 5);
    spread.SetCellValue(0, 3, kNan);
    spread.SetColourCell(0, 3, 1, 1, 1);
    spread.SetSliderCell(0, 2, 1, 0, 1);
    EXPECT_EQ(spread.GetCell(0, 3)->value, 25);
    EXPECT_EQ(spread.GetCell(0, 1)->value, 25);
    EXPECT_THAT(seen.events, IsEmpty());
}

TEST(Spread, ADisabledOneTakesOnlyTheEndOfADrag)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    RecordedEvents seen(spread);
    spread.UserSlide(0, 1, kViewPress, 30);
    spread.SetEnabled(false);
    EXPECT_TRUE(spread.UserSlide(0, 1, kViewRelease, 31));
    EXPECT_FALSE(spread.UserSlide(0, 1, kViewPress, 32));
    EXPECT_FALSE(spread.UserType(0, 3, 1));
    EXPECT_THAT(seen.Values(), ElementsAre(30, 31));
}

namespace {
struct Refuser
{
    ZtSpread* spread;
    void PutBack(ZObject*, ZEvent& event)
    {
        const ZtEvent& edit = static_cast<ZtEvent&>(event);
        spread->SetCellValue(edit.row, edit.column, 25);
    }
    void Rebuild(ZObject*, ZEvent&) { spread->SetRowCount(0); }
};
} // namespace

TEST(Spread, AHandlerMayPutTheOldValueBack)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    Refuser refuser{&spread};
    spread.RegisterHandler(kViewValueChanged, ZMakeHandler<&Refuser::PutBack>(&refuser));
    spread.UserType(0, 3, 99);
    EXPECT_EQ(spread.GetCell(0, 3)->value, 25);
}

TEST(Spread, AHandlerMayTakeTheRowsAway)
{
    ZtSpread spread("spread");
    MakeValidSpread(spread);
    Refuser refuser{&spread};
    spread.RegisterHandler(kViewValueChanged, ZMakeHandler<&Refuser::Rebuild>(&refuser));
    EXPECT_TRUE(spread.UserSlide(1, 1, kViewPress, 99));
    EXPECT_EQ(spread.GetRowCount(), 0);
    EXPECT_FALSE(spread.UserSlide(1, 1, kViewRelease, 99));
}
