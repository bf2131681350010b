// SPDX-License-Identifier: MIT
// The list box: rows without texts, selection, check marks.
#include "RecordedEvents.h"
#include "ztoolkit/ZtListBox.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <set>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {
struct NumberedRows final : IZtRowSource
{
    mutable int asked = 0;
    std::string RowText(const ZtListBox&, int row) const override
    {
        ++asked;
        return "row " + std::to_string(row);
    }
};

void MakeMultiple(ZtListBox& list, int rows)
{
    list.SetMultipleSelection(true);
    list.AddRows(rows);
}
} // namespace

TEST(ListBox, NoTextIsMadeForARowThatIsNotAskedFor)
{
    ZtListBox list("list");
    const NumberedRows source;
    list.SetRowSource(&source);
    list.AddRows(1'000'000);
    list.SetRowSelected(500'000, true);
    list.GetCurrentRow();
    EXPECT_EQ(source.asked, 0);
    EXPECT_EQ(list.GetRowText(7), "row 7");
    EXPECT_EQ(source.asked, 1);
}

TEST(ListBox, ARowThatIsNotThereHasNoTextAndNoState)
{
    ZtListBox list("list");
    const NumberedRows source;
    list.SetRowSource(&source);
    list.AddRows(2);
    list.SetRowSelected(2, true);
    list.SetRowSelected(-1, true);
    list.SetRowCheck(2, true);
    EXPECT_EQ(list.GetRowText(2), "");
    EXPECT_EQ(list.GetRowText(-1), "");
    EXPECT_FALSE(list.IsRowSelected(2));
    EXPECT_FALSE(list.GetRowCheck(-1));
    EXPECT_EQ(list.GetSelectedCount(), 0);
}

TEST(ListBox, TheCurrentRowIsTheFirstSelectedOne)
{
    ZtListBox list("list");
    MakeMultiple(list, 10);
    EXPECT_EQ(list.GetCurrentRow(), -1);
    list.SetRowSelected(7, true);
    list.SetRowSelected(3, true);
    EXPECT_EQ(list.GetCurrentRow(), 3);
    list.SetRowSelected(3, false);
    EXPECT_EQ(list.GetCurrentRow(), 7);
    list.SetRowSelected(0, true);
    EXPECT_EQ(list.GetCurrentRow(), 0);
    list.ClearRows();
    EXPECT_EQ(list.GetCurrentRow(), -1);
}

TEST(ListBox, WithoutMultipleSelectionAtMostOneRowIsSelected)
{
    ZtListBox list("list");
    list.AddRows(5);
    list.SetRowSelected(1, true);
    list.SetRowSelected(3, true);
    EXPECT_THAT(list.GetSelectedRows(), ElementsAre(3));
    EXPECT_TRUE(list.UserSelect({0, 4, 2}));
    EXPECT_THAT(list.GetSelectedRows(), ElementsAre(2));
}

TEST(ListBox, SwitchingMultipleSelectionOffKeepsTheFirstRow)
{
    ZtListBox list("list");
    MakeMultiple(list, 5);
    list.UserSelect({4, 1, 2});
    list.SetMultipleSelection(false);
    EXPECT_THAT(list.GetSelectedRows(), ElementsAre(1));
}

TEST(ListBox, SelectingSendsOneEventWithTheRowTouchedLast)
{
    ZtListBox list("list");
    MakeMultiple(list, 10);
    RecordedEvents seen(list);
    EXPECT_TRUE(list.UserSelect({5, 2, 8, 2}));
    EXPECT_THAT(list.GetSelectedRows(), ElementsAre(2, 5, 8));
    EXPECT_THAT(seen.Kinds(), ElementsAre(kViewSelectionChanged));
    EXPECT_EQ(seen.events[0].row, 2);
}

TEST(ListBox, ASelectionSetToWhatItWasSendsNoEvent)
{
    ZtListBox list("list");
    MakeMultiple(list, 10);
    list.UserSelect({5, 2});
    RecordedEvents seen(list);
    EXPECT_TRUE(list.UserSelect({2, 5, 5}));
    EXPECT_THAT(seen.events, IsEmpty());
    EXPECT_TRUE(list.UserSelect({}));
    EXPECT_TRUE(list.UserSelect({}));
    EXPECT_EQ(seen.events.size(), 1u);
    EXPECT_EQ(seen.events[0].row, -1);
}

TEST(ListBox, ARowThatIsNotThereChangesNothing)
{
    ZtListBox list("list");
    MakeMultiple(list, 3);
    list.SetRowSelected(1, true);
    RecordedEvents seen(list);
    EXPECT_FALSE(list.UserSelect({0, 3}));
    EXPECT_FALSE(list.UserSelect({-1}));
    EXPECT_THAT(list.GetSelectedRows(), ElementsAre(1));
    EXPECT_THAT(seen.events, IsEmpty());
}

TEST(ListBox, ADisabledOneDoesNothing)
{
    ZtListBox list("list");
    MakeMultiple(list, 3);
    list.SetCheckMarks(true);
    RecordedEvents seen(list);
    list.SetEnabled(false);
    EXPECT_FALSE(list.UserSelect({1}));
    EXPECT_FALSE(list.UserSetCheck(1, true));
    list.UserDragAndDrop(kDragOver);
    EXPECT_EQ(list.GetSelectedCount(), 0);
    EXPECT_THAT(seen.events, IsEmpty());
}

TEST(ListBox, CheckMarksAreIndependentOfTheSelection)
{
    ZtListBox list("list");
    MakeMultiple(list, 3);
    list.SetCheckMarks(true);
    RecordedEvents seen(list);
    list.UserSelect({1});
    EXPECT_TRUE(list.UserSetCheck(1, true));
    EXPECT_TRUE(list.UserSetCheck(1, true)); // no event: nothing changed
    list.UserSelect({});
    EXPECT_TRUE(list.GetRowCheck(1));
    EXPECT_THAT(seen.Kinds(), ElementsAre(kViewSelectionChanged, kViewValueChanged, kViewSelectionChanged));
    EXPECT_EQ(seen.events[1].row, 1);
}

TEST(ListBox, NobodyChecksAMarkThatIsNotShown)
{
    ZtListBox list("list");
    list.AddRows(1);
    EXPECT_FALSE(list.UserSetCheck(0, true));
    EXPECT_FALSE(list.GetRowCheck(0));
    list.SetRowCheck(0, true); // the program may
    EXPECT_TRUE(list.GetRowCheck(0));
}

TEST(ListBox, DragAndDropCarriesItsStage)
{
    ZtListBox list("list");
    RecordedEvents seen(list);
    list.UserDragAndDrop(kDragStart);
    list.UserDragAndDrop(kDragDrop);
    ASSERT_EQ(seen.events.size(), 2u);
    EXPECT_EQ(seen.events[0].stage, kDragStart);
    EXPECT_EQ(seen.events[1].stage, kDragDrop);
}

namespace {
struct Refiller
{
    ZtListBox* list;
    void Refill(ZObject*, ZEvent&)
    {
        list->ClearRows();
        list->AddRows(1);
    }
};
} // namespace

TEST(ListBox, AHandlerMayRefillTheList)
{
    ZtListBox list("list");
    MakeMultiple(list, 100);
    Refiller refiller{&list};
    list.RegisterHandler(kViewSelectionChanged, ZMakeHandler<&Refiller::Refill>(&refiller));
    EXPECT_TRUE(list.UserSelect({99}));
    EXPECT_EQ(list.GetRowCount(), 1);
    EXPECT_EQ(list.GetCurrentRow(), -1);
}

RC_GTEST_PROP(ListBox, SelectionIsTheSetOfRowsThatWereSelected, ())
{
    ZtListBox list("list");
    MakeMultiple(list, 12);
    std::set<int> expected;
    const auto steps = *rc::gen::container<std::vector<std::pair<int, bool>>>(
        rc::gen::pair(rc::gen::inRange(-1, 13), rc::gen::arbitrary<bool>()));
    for (const auto& [row, selected] : steps) {
        list.SetRowSelected(row, selected);
        if (row >= 0 && row < 12) {
            if (selected)
                expected.insert(row);
            else
                expected.erase(row);
        }
        RC_ASSERT(list.GetCurrentRow() == (expected.empty() ? -1 : *expected.begin()));
        RC_ASSERT(list.GetSelectedCount() == static_cast<int>(expected.size()));
    }
    RC_ASSERT(list.GetSelectedRows() == std::vector<int>(expected.begin(), expected.end()));
}

RC_GTEST_PROP(ListBox, AnEventComesExactlyWhenTheSetOfRowsChanges, ())
{
    ZtListBox list("list");
    MakeMultiple(list, 6);
    RecordedEvents seen(list);
    std::set<int> before;
    const auto selections = *rc::gen::container<std::vector<std::vector<int>>>(
        rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 6)));
    for (const std::vector<int>& rows : selections) {
        seen.events.clear();
        RC_ASSERT(list.UserSelect(rows));
        const std::set<int> after(rows.begin(), rows.end());
        RC_ASSERT(seen.events.size() == (after == before ? 0u : 1u));
        before = after;
    }
}
