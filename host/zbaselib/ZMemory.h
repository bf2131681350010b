// SPDX-License-Identifier: MIT
// Advice to the system about large tables.
#pragma once

#include <cstddef>
#include <span>

/// Says of a fresh table, or of one that has grown, before the new part is first written, that it will be read and
/// written in any order. The system may then give it out in large pages: in small ones a table of some megabytes has
/// more pages than the processor remembers, and finding the page takes longer than the memory. Only advice: nothing
/// changes but the speed. Small tables are left as they are. Memory that is written from one end to the other gains
/// only where all of it is written at once: collecting large pages takes time, too. Any thread.
void ZMemory_ExpectAnyOrder(void* table, size_t bytes);

/// Room for `more` further elements of a ZArrayTemplate, which are about to be written: when it has to grow, in large
/// pages. Throws std::bad_alloc and leaves the table as it was.
template <class Table> void ZMemory_ReserveMore(Table& table, int more)
{
    const int capacity = table.GetCapacity();
    table.ReserveMore(more);
    if (table.GetCapacity() != capacity)
        ZMemory_ExpectAnyOrder(table.GetData(), table.GetHeapBytes());
}

/// The place will be written or read soon. Always inline, as whatever calls it for nothing else must be: g++ takes a
/// function that does no more than this for one without an effect, and leaves its calls out.
[[gnu::always_inline]] inline void ZMemory_Fetch(const void* place) { __builtin_prefetch(place, 1); }

/// The same for an element of a ZArrayTemplate, if it has that one.
template <class Table> [[gnu::always_inline]] inline void ZMemory_FetchPlace(const Table& table, int place)
{
    if (place >= 0 && place < table.GetCount())
        ZMemory_Fetch(table.GetData() + place);
}

/// For a walk along `list`, whose numbers are places in `table` in any order: the place of a later one is fetched while
/// the one at `index` is at work, so that far memory is waited for many places at a time. Numbers that the table (a
/// ZArrayTemplate) does not have do no harm. `step` is -1 for a walk from the end.
template <class Table>
[[gnu::always_inline]] inline void ZMemory_FetchAhead(const Table& table, std::span<const int> list, int index,
                                                      int step = 1)
{
    constexpr int kAhead = 128;
    const int later = index + step * kAhead;
    if (later >= 0 && static_cast<size_t>(later) < list.size())
        ZMemory_FetchPlace(table, list[static_cast<size_t>(later)]);
}
