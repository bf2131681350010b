// SPDX-License-Identifier: MIT
// What a fuzzer asks of what it got.
#pragma once

#include <cstdlib>

/// Ends the run, so that the fuzzer keeps the bytes that led here.
inline void Require(bool holds)
{
    if (!holds)
        std::abort();
}
