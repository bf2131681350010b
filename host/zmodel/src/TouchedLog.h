// SPDX-License-Identifier: MIT
// Which vertices changed, for those who keep something that follows them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

/// A log of vertices with marks: who has caught up keeps the mark of that moment and asks later for what came since.
/// The latest ones are remembered, at least an eighth of the number of vertices; whoever is further behind is told that
/// every vertex may have changed, and then a pass over all of them is the better way anyhow. Marks begin at 1: a mark
/// of 0 is always behind.
class TouchedLog
{
public:
    explicit TouchedLog(int vertexCount = 0) : m_kept(static_cast<size_t>(std::max(16, vertexCount / 8))) {}

    /// For another number of vertices; everything may have changed.
    void Restart(int vertexCount)
    {
        AddAll();
        m_kept = TouchedLog(vertexCount).m_kept;
    }
    void Add(int vertex) { Add(&vertex, 1); }
    void Add(const int* vertices, size_t count)
    {
        if (m_isHeard && count > m_kept)
            AddAll();
        if (m_isHeard)
            MakeRoom(count);
        if (m_isHeard)
            m_vertices.insert(m_vertices.end(), vertices, vertices + count);
    }
    void AddAll()
    {
        m_first = End() + 1;
        m_vertices.clear();
        m_isHeard = false;
    }
    std::uint64_t GetMark() const
    {
        m_isHeard = true;
        return m_latestMark = End();
    }
    /// Appends what was added since `mark`, in that order and with repeats; false when that is not remembered.
    bool GetSince(std::uint64_t mark, std::vector<int>& vertices) const
    {
        if (mark < m_first || mark > End())
            return false;
        vertices.insert(vertices.end(), m_vertices.begin() + static_cast<std::ptrdiff_t>(mark - m_first),
                        m_vertices.end());
        return true;
    }

private:
    std::uint64_t End() const { return m_first + m_vertices.size(); }
    /// Twice what is kept fits; when it is full the older half goes at once, so that an addition costs the same on
    /// average however long the log lives.
    void MakeRoom(size_t count)
    {
        if (m_vertices.size() + count <= 2 * m_kept)
            return;
        const size_t old = m_vertices.size() - (2 * m_kept - std::max(m_kept, count));
        m_first += old;
        m_vertices.erase(m_vertices.begin(), m_vertices.begin() + static_cast<std::ptrdiff_t>(old));
        if (m_latestMark < m_first)
            AddAll(); // even the latest reader is too far behind
    }

    size_t m_kept;
    std::uint64_t m_first = 1; ///< mark before the first vertex that is remembered
    std::vector<int> m_vertices;
    /// Some mark that was given out can still be answered. While there is none, nothing needs to be remembered: a
    /// change of all vertices costs no log.
    mutable bool m_isHeard = false;
    mutable std::uint64_t m_latestMark = 0;
};

/// Rising and without repeats.
inline void SortUnique(std::vector<int>& numbers)
{
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
}
