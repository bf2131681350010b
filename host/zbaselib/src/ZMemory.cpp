// SPDX-License-Identifier: MIT
#include "zbaselib/ZMemory.h"

#include <sys/mman.h>

#include <cstdint>

void ZMemory_ExpectAnyOrder(void* table, size_t bytes)
{
    constexpr size_t kWorthIt = size_t{2} << 20; // one large page
    if (bytes < kWorthIt)
        return;
    // Advice is taken for whole small pages only; what the table has of the pages at its ends is left as it is.
    constexpr std::uintptr_t kPage = 4096;
    const auto begin = reinterpret_cast<std::uintptr_t>(table);
    const std::uintptr_t first = (begin + kPage - 1) / kPage * kPage;
    const std::uintptr_t end = (begin + bytes) / kPage * kPage;
    madvise(static_cast<char*>(table) + (first - begin), end - first, MADV_HUGEPAGE);
}
