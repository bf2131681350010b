// SPDX-License-Identifier: MIT
// Any bytes as a plug-in's file: they are judged without stepping outside them, and the judgement is one sentence.
#include "bcore/ZPluginFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    const std::string why = ZPluginFile_CheckBytes("libfuzz.so", std::as_bytes(std::span(data, size)));
    if (!why.empty() && (why.compare(0, 11, "libfuzz.so ") != 0 || why.back() != '.'))
        std::abort();
    return 0;
}
