// SPDX-License-Identifier: MIT
// The stretches of a link's entries in which vertices rise.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <utility>

/// A skin is filled vertex by vertex, and a gesture adds its new entries behind the old ones, again vertex by vertex:
/// most lists are a few rising runs. Whoever asks for vertices in rising order finds each among the next few entries of
/// one of the runs, which are in the same cache line, and as long as that goes well no index is needed at all.
class RisingRuns
{
public:
    static constexpr int kUnknown = -2; ///< look elsewhere

    /// Entry number `entry` was appended to those that are there.
    void Append(int entry, int vertex)
    {
        if (m_count > 0 && vertex > LastRun().highest) {
            LastRun().highest = vertex;
            return;
        }
        m_isMany = m_isMany || m_count == kMost;
        if (!m_isMany)
            m_runs[static_cast<size_t>(m_count++)] = {entry, vertex, entry};
        else
            LastRun().highest = std::max(LastRun().highest, vertex);
    }
    void Restart()
    {
        m_count = 0;
        m_isMany = false;
    }
    bool IsAscending() const { return m_count <= 1; }

    /// The first entry of `vertex`, -1 when there is none, or kUnknown. `vertices`: of all `count` entries.
    int Find(const int* vertices, int count, int vertex)
    {
        if (m_isMany)
            return kUnknown;
        for (int i = 0; i < m_count; ++i) {
            const int end = i + 1 < m_count ? m_runs[static_cast<size_t>(i) + 1].begin : count;
            const int entry = Look(m_runs[static_cast<size_t>(i)], end, vertices, vertex);
            if (entry != -1)
                return entry;
        }
        return -1;
    }
    /// The same for `wanted` vertices that rise, all of them at once: a walk along each run, with jumps over what is
    /// not wanted. `entries`: one for each, or -1. False, and nothing written, when there are too many runs.
    bool FindRising(const int* vertices, int count, std::span<const int> wanted, int* entries)
    {
        if (m_isMany)
            return false;
        std::fill_n(entries, wanted.size(), -1);
        if (HasNoGap(wanted)) {
            FindNeighbours(vertices, count, wanted, entries);
            return true;
        }
        size_t missing = wanted.size();
        for (int i = 0; i < m_count && missing > 0; ++i) {
            const int end = i + 1 < m_count ? m_runs[static_cast<size_t>(i) + 1].begin : count;
            missing -= Walk(m_runs[static_cast<size_t>(i)], end, vertices, wanted, entries);
        }
        return true;
    }
    /// When the wanted vertices are those of entries side by side, the first of these; kUnknown means look one by one.
    int FindStretch(const int* vertices, int count, std::span<const int> wanted)
    {
        // What equals a stretch of a run rises, so that runs passed over before have indeed none of the wanted.
        for (int i = 0; i < m_count && !m_isMany && !wanted.empty(); ++i) {
            Run& run = m_runs[static_cast<size_t>(i)];
            if (wanted.front() > run.highest)
                continue;
            const int* const end = vertices + (i + 1 < m_count ? m_runs[static_cast<size_t>(i) + 1].begin : count);
            const int* const at = Seek(run, end, vertices, wanted.front());
            const std::ptrdiff_t left = end - at;
            if (left >= static_cast<std::ptrdiff_t>(wanted.size()) && std::equal(wanted.begin(), wanted.end(), at)) {
                run.cursor = static_cast<int>(std::min(at + wanted.size(), end - 1) - vertices);
                return static_cast<int>(at - vertices);
            }
            if (left > 0 && *at <= wanted.back())
                return kUnknown;
        }
        return kUnknown;
    }
    /// An entry was found in another way: the next ones are expected behind it.
    void GoTo(int entry)
    {
        for (int i = m_count - 1; i >= 0; --i) {
            if (m_runs[static_cast<size_t>(i)].begin <= entry) {
                m_runs[static_cast<size_t>(i)].cursor = entry;
                return;
            }
        }
    }

private:
    struct Run
    {
        int begin;   ///< its first entry
        int highest; ///< its last vertex
        int cursor;  ///< entry where a search begins
    };
    static constexpr int kMost = 4;
    static constexpr int kLookAhead = 16;
    static constexpr size_t kStretch = 16;    ///< wanted vertices that are compared at once
    static constexpr size_t kLineOfInts = 16; ///< on one cache line

    Run& LastRun() { return m_runs[static_cast<size_t>(m_count) - 1]; }

    static int Look(Run& run, int end, const int* vertices, int vertex)
    {
        if (vertex > run.highest)
            return -1;
        if (vertices[run.cursor] > vertex)
            run.cursor = run.begin; // a new walk, from the beginning
        const int stop = end - run.cursor > kLookAhead ? run.cursor + kLookAhead : end;
        int entry = run.cursor;
        while (entry < stop && vertices[entry] < vertex)
            ++entry;
        if (entry == stop)
            return kUnknown;
        if (vertices[entry] == vertex)
            return run.cursor = entry;
        run.cursor = std::max(entry - 1, run.begin); // it lies between two neighbours, or before the first
        return -1;
    }

    /// The first entry that is not below `vertex`: by steps when it is near.
    static const int* Jump(const int* at, const int* end, int vertex)
    {
        const int* const near = at + std::min<std::ptrdiff_t>(end - at, kLookAhead);
        while (at != near && *at < vertex)
            ++at;
        return at != near ? at : std::lower_bound(at, end, vertex);
    }

    static bool HasNoGap(std::span<const int> rising)
    {
        return !rising.empty() && std::int64_t{rising.back()} - rising.front() + 1 == std::ssize(rising);
    }
    /// Of vertices without a gap: whatever a run has of them is theirs, and says itself where it belongs. The first run
    /// comes last, since its entries are those that count.
    void FindNeighbours(const int* vertices, int count, std::span<const int> wanted, int* entries)
    {
        int end = count;
        for (int i = m_count - 1; i >= 0; --i) {
            Run& run = m_runs[static_cast<size_t>(i)];
            const int runEnd = std::exchange(end, run.begin);
            if (wanted.front() > run.highest)
                continue;
            const int* const first = Seek(run, vertices + runEnd, vertices, wanted.front());
            int entry = static_cast<int>(first - vertices);
            for (; entry < runEnd && vertices[entry] <= wanted.back(); ++entry)
                entries[vertices[entry] - wanted.front()] = entry;
            run.cursor = std::min(entry, runEnd - 1);
        }
    }
    /// The first entry of the run that is not below `vertex`, sought from the cursor.
    static const int* Seek(const Run& run, const int* end, const int* vertices, int vertex)
    {
        const int* const at = vertices + run.cursor;
        return *at > vertex ? std::lower_bound(vertices + run.begin, at, vertex) : Jump(at, end, vertex);
    }

    static bool IsSame(const int* some, const int* others)
    {
        bool same = true;
        for (size_t k = 0; k < kStretch; ++k)
            same &= some[k] == others[k];
        return same;
    }
    /// The first entry of a vertex is the one that counts.
    static size_t Take(int& place, int entry)
    {
        const bool isFirst = place < 0;
        place = isFirst ? entry : place;
        return isFirst ? 1 : 0;
    }
    /// Answers how many it found that had not been found before.
    static size_t Walk(Run& run, int end, const int* vertices, std::span<const int> wanted, int* entries)
    {
        const int* at = vertices + run.cursor;
        if (*at > wanted.front())
            at = std::lower_bound(vertices + run.begin, at, wanted.front());
        if (wanted.back() < *at || wanted.front() > run.highest)
            return 0; // the cursor need not move: it waits for those that come next
        for (size_t ahead = 0; ahead < wanted.size(); ahead += kLineOfInts)
            __builtin_prefetch(at + ahead);
        size_t found = 0;
        size_t i = 0;
        while (i < wanted.size() && wanted[i] <= run.highest) {
            // Whole stretches of the run are wanted, or none of it is.
            if (wanted.size() - i >= kStretch && vertices + end - at >= static_cast<std::ptrdiff_t>(kStretch) &&
                IsSame(at, &wanted[i])) {
                for (size_t k = 0; k < kStretch; ++k)
                    found += Take(entries[i + k], static_cast<int>(at - vertices) + static_cast<int>(k));
                at += kStretch;
                i += kStretch;
                continue;
            }
            const size_t last = std::min(i + kStretch, wanted.size());
            for (; i < last && wanted[i] <= run.highest; ++i) {
                // Mostly it is the next entry, or lies before it. The run does not end below a wanted vertex.
                at += *at < wanted[i] ? 1 : 0;
                if (*at < wanted[i])
                    at = Jump(at, vertices + end, wanted[i]);
                if (*at == wanted[i])
                    found += Take(entries[i], static_cast<int>(at - vertices));
            }
        }
        run.cursor = std::min(static_cast<int>(at - vertices), end - 1);
        return found;
    }

    std::array<Run, kMost> m_runs{};
    int m_count = 0;
    bool m_isMany = false; ///< more runs than are known here
};
