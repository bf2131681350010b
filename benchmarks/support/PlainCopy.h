// SPDX-License-Identifier: MIT
// What a measured time is compared with.
#pragma once

#include <cstddef>
#include <functional>

/// Processor seconds of this thread: what others do on the machine counts only as far as it takes memory bandwidth.
double Bench_Seconds();
/// Seconds that `work` takes.
double Bench_Time(const std::function<void()>& work);
/// Seconds of a plain copy of so many bytes, warm: memory that both sides have touched before. The median of several.
double Bench_CopySeconds(size_t bytes);
