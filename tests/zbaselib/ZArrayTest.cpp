// SPDX-License-Identifier: MIT
// ZArrayTemplate against std::vector.
#include "zbaselib/ZArray.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace {
template <int Inline> std::vector<int> ToVector(const ZArrayTemplate<int, Inline>& array)
{
    return {array.begin(), array.end()};
}

/// Memory that arrays borrow, for as long as a test lasts.
using Lender = std::vector<std::unique_ptr<int[]>>;

/// One random change, made to both.
template <int Inline>
void ChangeBoth(ZArrayTemplate<int, Inline>& array, std::vector<int>& plain, [[maybe_unused]] Lender& lender)
{
    const int count = static_cast<int>(plain.size());
    const int value = *rc::gen::inRange(-5, 6);
    const int place = count == 0 ? 0 : *rc::gen::inRange(0, count);
    switch (*rc::gen::inRange(0, 11)) {
    case 0:
        RC_ASSERT(array.Add(value) == count);
        plain.push_back(value);
        break;
    case 1:
        array.InsertAt(place, value);
        plain.insert(plain.begin() + place, value);
        break;
    case 2:
        if (count > 0) {
            array.RemoveAt(place);
            plain.erase(plain.begin() + place);
        }
        break;
    case 3: {
        const int wanted = *rc::gen::inRange(0, 20);
        array.SetCount(wanted);
        plain.resize(static_cast<size_t>(wanted));
        break;
    }
    case 4:
        RC_ASSERT(array.RemoveIf([value](int element) { return element == value; }) ==
                  static_cast<int>(std::erase(plain, value)));
        break;
    case 5: {
        ZArrayTemplate<int, Inline> moved(std::move(array));
        RC_ASSERT(array.IsEmpty());
        array = std::move(moved);
        break;
    }
    case 6: {
        const ZArrayTemplate<int, Inline> copy(array);
        array.Release();
        array = copy;
        break;
    }
    case 7:
        if (count > 0) { // an element of the array itself
            array.Add(array[place]);
            plain.push_back(plain[static_cast<size_t>(place)]);
        }
        break;
    case 8:
        array.ShrinkToFit();
        RC_ASSERT(array.IsBorrowed() || array.GetCapacity() == std::max(count, array.kInlineCount));
        break;
    case 9:
        if constexpr (Inline > 0) {
            const int room = std::max(count, array.kInlineCount + 1) + *rc::gen::inRange(0, 4);
            lender.emplace_back(new int[static_cast<size_t>(room)]); // exactly: one more would be found out
            array.Borrow(lender.back().get(), room);
            RC_ASSERT(array.IsBorrowed());
            RC_ASSERT(array.GetCapacity() == room);
        }
        break;
    default:
        array.RemoveAll();
        plain.clear();
        break;
    }
}

template <int Inline> void BehavesLikeVector()
{
    Lender lender;
    ZArrayTemplate<int, Inline> array;
    std::vector<int> plain;
    const int steps = *rc::gen::inRange(0, 60);
    for (int i = 0; i < steps; ++i) {
        ChangeBoth(array, plain, lender);
        RC_ASSERT(ToVector(array) == plain);
        RC_ASSERT(array.GetCapacity() >= array.GetCount());
        const int value = *rc::gen::inRange(-5, 6);
        const auto found = std::find(plain.begin(), plain.end(), value);
        RC_ASSERT(array.Find(value) == (found == plain.end() ? -1 : static_cast<int>(found - plain.begin())));
    }
}
} // namespace

RC_GTEST_PROP(ZArray, BehavesLikeVectorWithRoomInside, ()) { BehavesLikeVector<16>(); }
RC_GTEST_PROP(ZArray, BehavesLikeVectorWithoutRoomInside, ()) { BehavesLikeVector<0>(); }

TEST(ZArray, FourNumbersNeedNoHeap)
{
    ZArrayTemplate<int, 16> four{1, 2, 3, 4};
    EXPECT_EQ(four.GetHeapBytes(), 0u);
    four.Add(5);
    EXPECT_GT(four.GetHeapBytes(), 0u);
    EXPECT_EQ(ToVector(four), (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST(ZArray, RoomAskedForAgainAndAgainGrowsByHalf)
{
    ZArrayTemplate<int> numbers;
    int moves = 0;
    for (int i = 0; i < 1000; ++i) {
        const int before = numbers.GetCapacity();
        numbers.ReserveMore(10);
        ASSERT_GE(numbers.GetCapacity(), numbers.GetCount() + 10);
        moves += numbers.GetCapacity() != before ? 1 : 0;
        for (int k = 0; k < 10; ++k)
            numbers.Add(10 * i + k);
    }
    EXPECT_LT(moves, 25); // log(1000) / log(1.5) and a few short steps at the start
    for (int i = 0; i < numbers.GetCount(); ++i)
        ASSERT_EQ(numbers[i], i);
}

TEST(ZArray, BorrowedMemoryIsUsedUntilItIsOutgrown)
{
    int memory[6] = {};
    ZArrayTemplate<int, 16> array{1, 2, 3, 4, 5};
    array.Borrow(memory, 6);
    array.Add(6);
    EXPECT_EQ(array.GetData(), memory);
    EXPECT_EQ(memory[5], 6);
    EXPECT_EQ(array.GetHeapBytes(), sizeof(memory));
    array.Add(7);
    EXPECT_FALSE(array.IsBorrowed());
    EXPECT_EQ(ToVector(array), (std::vector<int>{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(memory[5], 6); // still the lender's
}

TEST(ZArray, FindsAfterAStartIndex)
{
    const ZArrayTemplate<int, 16> array{7, 8, 7};
    EXPECT_EQ(array.Find(7), 0);
    EXPECT_EQ(array.Find(7, 0), 2);
    EXPECT_EQ(array.Find(7, 2), -1);
    EXPECT_EQ((ZArrayTemplate<int, 16>().Find(7)), -1);
}

TEST(ZArray, AssigningToItselfChangesNothing)
{
    ZArrayTemplate<int, 16> array{1, 2, 3, 4, 5, 6};
    const auto& same = array;
    array = same;
    EXPECT_EQ(ToVector(array), (std::vector<int>{1, 2, 3, 4, 5, 6}));
}
