// SPDX-License-Identifier: MIT
// Advice to the system about large tables.
#pragma once

#include <cstddef>

/// Says of a fresh table, before it is first written, that it will be read and written in any order. The system may
/// then give it out in large pages: in small ones a table of some megabytes has more pages than the processor
/// remembers, and finding the page takes longer than the memory. Only advice: nothing changes but the speed. Small
/// tables are left as they are. Not for memory that is written from one end to the other: collecting large pages takes
/// time, too. Any thread.
void ZMemory_ExpectAnyOrder(void* table, size_t bytes);
