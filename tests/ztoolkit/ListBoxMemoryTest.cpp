// SPDX-License-Identifier: MIT
// What a long list costs in memory. The program's own operators count what lives; they serve all its libraries.
#include "ztoolkit/ZtListBox.h"

#include <gmock/gmock.h>

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <numeric>

namespace {

std::atomic<long> s_live{0};
std::atomic<long> s_peak{0};

void* Counted(void* memory)
{
    if (memory == nullptr)
        throw std::bad_alloc();
    const long live = s_live += static_cast<long>(malloc_usable_size(memory));
    if (live > s_peak)
        s_peak = live;
    return memory;
}

void Uncounted(void* memory)
{
    if (memory != nullptr)
        s_live -= static_cast<long>(malloc_usable_size(memory));
    std::free(memory);
}

} // namespace

void* operator new(std::size_t bytes) { return Counted(std::malloc(std::max<std::size_t>(bytes, 1))); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    try {
        return ::operator new(bytes);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* memory) noexcept { Uncounted(memory); }
void operator delete(void* memory, std::size_t) noexcept { Uncounted(memory); }

namespace {

constexpr int kRows = 1'000'000;
constexpr long kBytesARow = 8;

TEST(ListBoxMemory, AMillionRowsTakeAtMostEightBytesEachAlsoWhileTheyAreRefilled)
{
    std::vector<int> everyThird(kRows / 3);
    for (size_t i = 0; i < everyThird.size(); ++i)
        everyThird[i] = static_cast<int>(3 * i);
    const long before = s_live;
    ZtListBox list("list");
    list.SetMultipleSelection(true);
    list.SetCheckMarks(true);
    for (int refill = 0; refill < 3; ++refill) {
        s_peak = before;
        list.ClearRows();
        list.AddRows(kRows);
        list.SelectRows(everyThird.data(), static_cast<int>(everyThird.size()));
        list.SetRowCheck(kRows - 1, true);
        EXPECT_EQ(list.GetSelectedCount(), kRows / 3);
        EXPECT_GE(s_live - before, kRows); // the counting counts
        EXPECT_LE(s_live - before, kBytesARow * kRows);
        EXPECT_LE(s_peak - before, kBytesARow * kRows);
    }
}

TEST(ListBoxMemory, TheUsersSelectionOfEveryRowStaysBelowEightBytesARow)
{
    ZtListBox list("list");
    list.SetMultipleSelection(true);
    list.AddRows(kRows);
    std::vector<int> rows(kRows);
    std::iota(rows.begin(), rows.end(), 0);
    const long before = s_live;
    s_peak = before;
    EXPECT_TRUE(list.UserSelect(rows));
    EXPECT_EQ(list.GetSelectedCount(), kRows);
    EXPECT_LE(s_peak - before, kBytesARow * kRows); // what it needs in passing
    EXPECT_LE(s_live - before, kRows);              // and what it keeps
}

} // namespace
