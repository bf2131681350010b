// SPDX-License-Identifier: MIT
// Work that may break down, done by a copy of this process, so that nothing breaks here.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace skindesk::assimp {

struct ChildLimits
{
    std::uint64_t moreMemory = 0; // bytes beyond what this process has now
    unsigned processorSeconds = 300;
    unsigned waitSeconds = 600;
};

struct ChildResult
{
    std::vector<std::uint8_t> bytes; // what the work answered
    std::string failure;             // why there is no answer, as words behind "it"; empty when there is one
};

// Runs `work` in a child process and waits for its answer. The child sees everything as it is now, and nothing that it
// does to it is seen here. It is for computing only: it has none of this process's other threads, so `work` must not
// wait for one. What `work` throws is a failure. Throws nothing itself.
[[nodiscard]] ChildResult RunInChild(const std::function<std::vector<std::uint8_t>()>& work, const ChildLimits& limits);

} // namespace skindesk::assimp
