// SPDX-License-Identifier: MIT
// Runs something against a plain copy of the same bytes.
#pragma once

#include "support/PlainCopy.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <functional>
#include <vector>

/// The middle one of some times.
inline double Median(std::vector<double> times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

/// Runs `work`, which stays on this thread, in the benchmark's loop; counts processor time. The counter "copies" is the
/// median over that of a copy of `bytes`.
inline void RunAgainstCopy(benchmark::State& state, size_t bytes, const std::function<void()>& work)
{
    const double copy = Bench_CopySeconds(bytes);
    std::vector<double> times;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        times.push_back(Bench_Time(work));
        state.SetIterationTime(times.back());
    }
    state.counters["copies"] = Median(times) / copy;
}

/// Processor seconds of all threads.
inline double ProcessSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// For work that is spread over the cores. "copies" is by the clock on the wall, with a copy timed beside each pass,
/// since what else runs on the machine takes from both; "cpu_copies" counts the processor time of all threads together,
/// which other work hardly changes.
inline void RunOnAllCoresAgainstCopy(benchmark::State& state, size_t bytes, const std::function<void()>& work)
{
    const std::vector<char> from(bytes, 1);
    std::vector<char> to(bytes, 2);
    const auto wallSeconds = [](const std::function<void()>& timed) {
        const auto start = std::chrono::steady_clock::now();
        timed();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const auto copyOnce = [&] {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    };
    std::vector<double> times, copies, processorTimes;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        copyOnce(); // the work before has pushed it out of the caches
        copies.push_back(wallSeconds(copyOnce));
        const double before = ProcessSeconds();
        times.push_back(wallSeconds(work));
        processorTimes.push_back(ProcessSeconds() - before);
        state.SetIterationTime(times.back());
    }
    state.counters["copies"] = Median(times) / Median(copies);
    state.counters["cpu_copies"] = Median(processorTimes) / Bench_CopySeconds(bytes);
}
