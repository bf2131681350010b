// SPDX-License-Identifier: MIT
// Records which of the host's calls were made, in order, while a recording runs. The calls go on to the host.
#pragma once

#include <string>
#include <vector>

class ZConstraint;

/// The recording lives as long as the object; one at a time.
class HostRecording
{
public:
    HostRecording();
    ~HostRecording();
    HostRecording(const HostRecording&) = delete;
    HostRecording& operator=(const HostRecording&) = delete;
    const std::vector<std::string>& Calls() const { return m_calls; }

    static void Add(const char* call);

private:
    std::vector<std::string> m_calls;
};

/// While it lives, the host has a box constraint, as hosts may; this one's own has none.
class HostWithABoxConstraint
{
public:
    explicit HostWithABoxConstraint(ZConstraint* box);
    ~HostWithABoxConstraint();
    HostWithABoxConstraint(const HostWithABoxConstraint&) = delete;
    HostWithABoxConstraint& operator=(const HostWithABoxConstraint&) = delete;
};
