// SPDX-License-Identifier: MIT
// The yardstick of all benchmarks: how many plain copies of the same bytes something costs.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <vector>

/// Seconds that a warm copy of `bytes` takes here and now: the median of several.
inline double SecondsToCopy(size_t bytes)
{
    std::vector<char> from(bytes, 1), to(bytes, 2);
    const size_t repeats = std::max<size_t>(1, (size_t{1} << 22U) / std::max<size_t>(1, bytes));
    std::vector<double> times;
    for (int run = 0; run < 9; ++run) {
        const auto start = std::chrono::steady_clock::now();
        for (size_t i = 0; i < repeats; ++i) {
            std::memcpy(to.data(), from.data(), bytes);
            benchmark::DoNotOptimize(to.data());
            benchmark::ClobberMemory();
        }
        times.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() /
                        static_cast<double>(repeats));
    }
    std::nth_element(times.begin(), times.begin() + 4, times.end());
    return times[4];
}

/// Runs `work` in the benchmark's loop; the counter "copies" is the median time over that of a copy of `bytes`, half of
/// the copies measured before and half after, since other work on the machine comes and goes. `prepare` runs untimed before
/// each pass.
template <class Work, class Prepare>
void RunAgainstCopy(benchmark::State& state, size_t bytes, Prepare prepare, Work work)
{
    const double copyBefore = SecondsToCopy(bytes);
    std::vector<double> times;
    for (auto _ : state) {
        prepare();
        const auto start = std::chrono::steady_clock::now();
        work();
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        state.SetIterationTime(seconds);
        times.push_back(seconds);
    }
    const double copy = (copyBefore + SecondsToCopy(bytes)) / 2;
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
    state.counters["copies"] = times[times.size() / 2] / copy;
    state.counters["MB"] = static_cast<double>(bytes) / 1e6;
}

template <class Work> void RunAgainstCopy(benchmark::State& state, size_t bytes, Work work)
{
    RunAgainstCopy(state, bytes, [] {}, work);
}
