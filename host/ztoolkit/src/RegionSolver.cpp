// SPDX-License-Identifier: MIT
// The edges of all regions form a graph: an edge depends on edges of the region that it refers to, and a right or
// bottom edge given as a size on the region's own left or top one. They are computed in topological order (A. B. Kahn,
// "Topological sorting of large networks", CACM 5, 1962); what is left over runs in a circle or hangs on one.
#include "RegionSolver.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_map>

namespace {
enum Edge
{
    kLeft,
    kTop,
    kRight,
    kBottom,
    kEdgeCount
};

bool IsEdgeAttachment(ZtAttachment attachment)
{
    return attachment == ZtAttachment::Left || attachment == ZtAttachment::Top || attachment == ZtAttachment::Right ||
           attachment == ZtAttachment::Bottom;
}

/// A number of the form or of a region, as the difference of up to two edges.
double Measure(ZtAttachment attachment, double left, double top, double right, double bottom)
{
    switch (attachment) {
    case ZtAttachment::Left:
        return left;
    case ZtAttachment::Top:
        return top;
    case ZtAttachment::Right:
        return right;
    case ZtAttachment::Bottom:
        return bottom;
    case ZtAttachment::Width:
        return right - left;
    case ZtAttachment::Height:
        return bottom - top;
    case ZtAttachment::Size:
        break;
    }
    return 0;
}

class Solver
{
public:
    Solver(const std::vector<std::unique_ptr<ZtRegion>>& regions, int width, int height)
        : m_regions(regions), m_width(width), m_height(height), m_position(regions.size() * kEdgeCount, 0.0),
          m_waitsFor(m_position.size(), 0), m_dependents(m_position.size()), m_dangling(regions.size(), false)
    {
        for (size_t i = 0; i < regions.size(); ++i)
            m_byName.emplace(regions[i]->name, i);
    }

    std::string Run()
    {
        for (size_t region = 0; region < m_regions.size(); ++region)
            for (int edge = 0; edge < kEdgeCount; ++edge)
                FindDependencies(region, static_cast<Edge>(edge));
        Resolve();
        WriteRects();
        return Complaint();
    }

private:
    const ZtEdge& EdgeOf(size_t region, Edge edge) const
    {
        const ZtRegion& r = *m_regions[region];
        const std::array<const ZtEdge*, kEdgeCount> edges{&r.left, &r.top, &r.right, &r.bottom};
        return *edges[edge];
    }
    static size_t Node(size_t region, Edge edge) { return region * kEdgeCount + edge; }

    void DependOn(size_t node, size_t on)
    {
        m_dependents[on].push_back(node);
        ++m_waitsFor[node];
    }

    void FindDependencies(size_t region, Edge edge)
    {
        const ZtEdge& wanted = EdgeOf(region, edge);
        const size_t node = Node(region, edge);
        if ((edge == kRight || edge == kBottom) && !IsEdgeAttachment(wanted.attachment))
            DependOn(node, Node(region, edge == kRight ? kLeft : kTop));
        if (wanted.reference.empty() || wanted.attachment == ZtAttachment::Size)
            return;
        const auto found = m_byName.find(wanted.reference);
        if (found == m_byName.end()) {
            m_dangling[region] = true;
            ++m_waitsFor[node]; // for something that never comes
            return;
        }
        const bool horizontal = wanted.attachment == ZtAttachment::Left || wanted.attachment == ZtAttachment::Right ||
                                wanted.attachment == ZtAttachment::Width;
        const bool low = wanted.attachment == ZtAttachment::Left || wanted.attachment == ZtAttachment::Top;
        const bool high = wanted.attachment == ZtAttachment::Right || wanted.attachment == ZtAttachment::Bottom;
        if (!high)
            DependOn(node, Node(found->second, horizontal ? kLeft : kTop));
        if (!low)
            DependOn(node, Node(found->second, horizontal ? kRight : kBottom));
    }

    double Attached(const ZtEdge& edge) const
    {
        if (edge.reference.empty() || edge.attachment == ZtAttachment::Size)
            return Measure(edge.attachment, 0, 0, m_width, m_height);
        const size_t region = m_byName.at(edge.reference);
        return Measure(edge.attachment, m_position[Node(region, kLeft)], m_position[Node(region, kTop)],
                       m_position[Node(region, kRight)], m_position[Node(region, kBottom)]);
    }

    void Compute(size_t node)
    {
        const size_t region = node / kEdgeCount;
        const Edge edge = static_cast<Edge>(node % kEdgeCount);
        const ZtEdge& wanted = EdgeOf(region, edge);
        double position = std::floor(wanted.multiplier * Attached(wanted)) + wanted.offset;
        if ((edge == kRight || edge == kBottom) && !IsEdgeAttachment(wanted.attachment))
            position += m_position[Node(region, edge == kRight ? kLeft : kTop)];
        m_position[node] = position;
    }

    void Resolve()
    {
        std::vector<size_t> ready;
        for (size_t node = 0; node < m_position.size(); ++node)
            if (m_waitsFor[node] == 0)
                ready.push_back(node);
        while (!ready.empty()) {
            const size_t node = ready.back();
            ready.pop_back();
            Compute(node);
            for (const size_t dependent : m_dependents[node])
                if (--m_waitsFor[dependent] == 0)
                    ready.push_back(dependent);
        }
    }

    bool IsResolved(size_t region) const
    {
        return std::all_of(m_waitsFor.begin() + static_cast<std::ptrdiff_t>(Node(region, kLeft)),
                           m_waitsFor.begin() + static_cast<std::ptrdiff_t>(Node(region, kBottom)) + 1,
                           [](int waits) { return waits == 0; });
    }

    int Pixel(size_t region, Edge edge) const
    {
        const double position = m_position[Node(region, edge)];
        return std::isfinite(position) ? static_cast<int>(std::clamp(position, -1e9, 1e9)) : 0;
    }

    void WriteRects()
    {
        for (size_t i = 0; i < m_regions.size(); ++i) {
            ZtRect& rect = m_regions[i]->rect;
            rect = {};
            if (!IsResolved(i))
                continue;
            rect.x = Pixel(i, kLeft);
            rect.y = Pixel(i, kTop);
            rect.width = std::max(0, Pixel(i, kRight) - rect.x);
            rect.height = std::max(0, Pixel(i, kBottom) - rect.y);
        }
    }

    /// Marks the nodes that lie in a circle or between two: of the unresolved ones those that are left when nodes that
    /// nothing unresolved depends on are taken away again and again.
    std::vector<bool> FindCircles() const
    {
        std::vector<std::vector<size_t>> dependencies(m_position.size());
        std::vector<int> awaited(m_position.size(), 0);
        std::vector<size_t> leaves;
        for (size_t node = 0; node < m_position.size(); ++node) {
            if (m_waitsFor[node] == 0)
                continue;
            for (const size_t dependent : m_dependents[node])
                if (m_waitsFor[dependent] != 0) {
                    dependencies[dependent].push_back(node);
                    ++awaited[node];
                }
        }
        std::vector<bool> circle(m_position.size(), false);
        for (size_t node = 0; node < m_position.size(); ++node) {
            circle[node] = m_waitsFor[node] != 0;
            if (circle[node] && awaited[node] == 0)
                leaves.push_back(node);
        }
        while (!leaves.empty()) {
            const size_t node = leaves.back();
            leaves.pop_back();
            circle[node] = false;
            for (const size_t on : dependencies[node])
                if (--awaited[on] == 0)
                    leaves.push_back(on);
        }
        return circle;
    }

    std::string Complaint() const
    {
        std::string circular, dangling, hanging;
        const auto append = [](std::string& list, const std::string& text) {
            list += (list.empty() ? "" : ", ") + text;
        };
        const bool anyLeft = std::any_of(m_waitsFor.begin(), m_waitsFor.end(), [](int waits) { return waits != 0; });
        if (!anyLeft)
            return {};
        // What waits for a region that is not there is no circle, however far it reaches.
        const std::vector<bool> circle = FindCircles();
        for (size_t i = 0; i < m_regions.size(); ++i) {
            if (IsResolved(i))
                continue;
            const auto first = circle.begin() + static_cast<std::ptrdiff_t>(Node(i, kLeft));
            if (m_dangling[i])
                append(dangling, m_regions[i]->name + " (" + MissingReference(i) + ')');
            else if (std::any_of(first, first + kEdgeCount, [](bool in) { return in; }))
                append(circular, m_regions[i]->name);
            else
                append(hanging, m_regions[i]->name);
        }
        std::string text;
        const auto say = [&text](const std::string& list, const char* what) {
            if (!list.empty())
                text += (text.empty() ? "" : "; ") + (what + list);
        };
        say(circular, "regions refer to each other in a circle: ");
        say(dangling, "regions refer to one that is not there: ");
        say(hanging, "regions depend on these: ");
        return text;
    }

    std::string MissingReference(size_t region) const
    {
        for (int edge = 0; edge < kEdgeCount; ++edge) {
            const std::string& reference = EdgeOf(region, static_cast<Edge>(edge)).reference;
            if (!reference.empty() && m_byName.find(reference) == m_byName.end())
                return reference;
        }
        return {};
    }

    const std::vector<std::unique_ptr<ZtRegion>>& m_regions;
    int m_width, m_height;
    std::vector<double> m_position;
    std::vector<int> m_waitsFor;
    std::vector<std::vector<size_t>> m_dependents;
    std::vector<bool> m_dangling;
    std::unordered_map<std::string, size_t> m_byName;
};
} // namespace

std::string ArrangeRegions(const std::vector<std::unique_ptr<ZtRegion>>& regions, int width, int height)
{
    return Solver(regions, width, height).Run();
}
