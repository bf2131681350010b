// SPDX-License-Identifier: MIT
// Changes to a JSON text that leave every byte beside them as it is.
#include "JsonSplice.h"

#include <algorithm>

namespace skindesk::gltf {

void JsonSplice::Replace(JsonValue v, std::string text) { m_replaced[v] = std::move(text); }

void JsonSplice::RemoveMember(JsonValue object, JsonValue member) { m_removed[object].insert(member); }

void JsonSplice::AppendElement(JsonValue array, const std::string& text) { m_appended[array].push_back({"", text}); }

void JsonSplice::AppendMember(JsonValue object, const std::string& key, const std::string& text)
{
    m_appended[object].push_back({QuotedJson(key), text});
}

// A removed member takes one comma with it: the one before it if a kept member precedes it, else the one behind it.
void JsonSplice::CollectRemovals(JsonValue object, const std::set<JsonValue>& removed, std::vector<Edit>& edits) const
{
    const std::vector<JsonValue> members = m_places.Children(object);
    bool keptBefore = false;
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (!removed.contains(members[i])) {
            keptBefore = true;
        } else if (keptBefore) {
            edits.push_back({m_places.End(members[i - 1]), m_places.End(members[i]), ""});
        } else {
            const bool isLast = i + 1 == members.size();
            edits.push_back({m_places.KeyStart(members[i]),
                             isLast ? m_places.End(members[i]) : m_places.KeyStart(members[i + 1]), ""});
        }
    }
}

void JsonSplice::CollectAdditions(JsonValue container, const std::vector<Addition>& added,
                                  std::vector<Edit>& edits) const
{
    const std::string_view text = m_places.Text();
    const std::vector<JsonValue> children = m_places.Children(container);
    const auto removed = m_removed.find(container);
    bool hasNeighbour = children.size() > (removed == m_removed.end() ? 0 : removed->second.size());
    std::string before;
    std::string colon = ":";
    std::size_t place = m_places.Start(container) + 1;
    if (!children.empty()) {
        const JsonValue last = children.back();
        place = m_places.End(last);
        std::size_t begin = m_places.KeyEnd(last) == 0 ? m_places.Start(last) : m_places.KeyStart(last);
        const std::size_t end = begin;
        while (std::string_view(" \n\r\t").find(text[begin - 1]) != std::string_view::npos) {
            --begin;
        }
        before = text.substr(begin, end - begin);
        if (m_places.KeyEnd(last) != 0) {
            colon = text.substr(m_places.KeyEnd(last), m_places.Start(last) - m_places.KeyEnd(last));
        }
    }
    std::string inserted;
    for (const Addition& addition : added) {
        inserted += hasNeighbour ? "," + before : "";
        inserted += addition.key.empty() ? addition.text : addition.key + colon + addition.text;
        hasNeighbour = true;
    }
    edits.push_back({place, place, inserted});
}

std::string JsonSplice::RenderRange(std::size_t start, std::size_t end) const
{
    std::vector<Edit> edits;
    for (const auto& [v, text] : m_replaced) {
        edits.push_back({m_places.Start(v), m_places.End(v), text});
    }
    for (const auto& [object, members] : m_removed) {
        CollectRemovals(object, members, edits);
    }
    for (const auto& [container, added] : m_appended) {
        CollectAdditions(container, added, edits);
    }
    std::stable_sort(edits.begin(), edits.end(), [](const Edit& a, const Edit& b) { return a.start < b.start; });

    const std::string_view text = m_places.Text();
    std::string result;
    result.reserve(end - start + 256);
    std::size_t done = start;
    for (const Edit& edit : edits) {
        if (edit.start < start || edit.end > end) {
            continue;
        }
        result += text.substr(done, edit.start - done);
        result += edit.text;
        done = edit.end;
    }
    result += text.substr(done, end - done);
    return result;
}

std::string JsonSplice::Render() const { return RenderRange(0, m_places.Text().size()); }

std::string JsonSplice::Render(JsonValue v) const { return RenderRange(m_places.Start(v), m_places.End(v)); }

} // namespace skindesk::gltf
