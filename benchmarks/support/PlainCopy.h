// SPDX-License-Identifier: MIT
// What a measured time is compared with.
#pragma once

#include <cstddef>
#include <functional>

/// Processor seconds of this thread: what others do on the machine counts only as far as it takes memory bandwidth.
double Bench_Seconds();
/// Seconds that `work` takes.
double Bench_Time(const std::function<void()>& work);
/// Takes, writes and gives back so much memory: what is measured next finds pages at hand. A virtual machine lends free
/// memory back to its host, and getting it again takes up to 3 ms a megabyte, a hundred times what the system itself
/// takes for a page; whether it hits a measurement would be chance.
void Bench_HavePagesAtHand(size_t bytes);
/// Seconds of a plain copy of so many bytes, warm: memory that both sides have touched before. The median of several.
double Bench_CopySeconds(size_t bytes);
