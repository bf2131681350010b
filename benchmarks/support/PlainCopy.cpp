// SPDX-License-Identifier: MIT
#include "support/PlainCopy.h"

#include <benchmark/benchmark.h>

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <vector>

double Bench_Seconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double Bench_Time(const std::function<void()>& work)
{
    const double begin = Bench_Seconds();
    work();
    return Bench_Seconds() - begin;
}

void Bench_HavePagesAtHand(size_t bytes)
{
    void* const pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        return;
    madvise(pages, bytes, MADV_HUGEPAGE);
    std::memset(pages, 1, bytes);
    munmap(pages, bytes);
}

double Bench_CopySeconds(size_t bytes)
{
    const std::vector<char> from(bytes, 1);
    std::vector<char> to(bytes, 2);
    std::vector<double> times;
    for (int round = 0; round < 9; ++round) {
        times.push_back(Bench_Time([&] {
            std::memcpy(to.data(), from.data(), bytes);
            benchmark::ClobberMemory();
        }));
        benchmark::DoNotOptimize(to.data());
    }
    std::nth_element(times.begin(), times.begin() + 4, times.end());
    return times[4];
}
