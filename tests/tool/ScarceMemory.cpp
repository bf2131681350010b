// SPDX-License-Identifier: MIT
// The program's own operator stands before that of the C++ library, also for the libraries that the program loads.
#include "ScarceMemory.h"

#include <new>

namespace {

bool s_scarce = false;
std::size_t s_bytes = 0;
int s_refused = 0;

} // namespace

ScarceMemory::ScarceMemory(std::size_t bytes)
{
    s_scarce = true;
    s_bytes = bytes;
    s_refused = 0;
}

ScarceMemory::~ScarceMemory() { s_scarce = false; }

int ScarceMemory::Refused() const { return s_refused; }

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    if (s_scarce && (s_bytes == ScarceMemory::kAnySize || s_bytes == bytes)) {
        ++s_refused;
        return nullptr;
    }
    try {
        return ::operator new(bytes); // what it answers is freed by the ordinary operator delete
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
