// SPDX-License-Identifier: MIT
// Lets an allocation fail that its caller is prepared for.
#pragma once

#include <cstddef>
#include <cstdint>

/// While it lives, `new (std::nothrow)` answers null for requests of exactly this many bytes; ordinary `new` is not
/// touched. One at a time.
class ScarceMemory
{
public:
    static constexpr std::size_t kAnySize = SIZE_MAX;
    explicit ScarceMemory(std::size_t bytes);
    ~ScarceMemory();
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;
    /// Requests that were answered with null so far.
    int Refused() const;
};
