// SPDX-License-Identifier: MIT
// Changes to a JSON text that leave every byte beside them as it is.
#pragma once

#include "JsonPlaces.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace skindesk::gltf {

// Collects changes against one text; Render gives the changed text. Changes must not lie within each other, apart from
// additions at the end of a container whose other values change. New values imitate the white space of the last value
// before them.
class JsonSplice
{
public:
    explicit JsonSplice(const JsonPlaces& places) : m_places(places) {}

    void Replace(JsonValue v, std::string text);
    void RemoveMember(JsonValue object, JsonValue member);
    void AppendElement(JsonValue array, const std::string& text);
    void AppendMember(JsonValue object, const std::string& key, const std::string& text);

    [[nodiscard]] bool IsEmpty() const { return m_replaced.empty() && m_removed.empty() && m_appended.empty(); }
    // The whole text, white space and byte order mark around the root included.
    [[nodiscard]] std::string Render() const;
    // One value of it.
    [[nodiscard]] std::string Render(JsonValue v) const;

private:
    struct Edit
    {
        std::size_t start;
        std::size_t end;
        std::string text;
    };
    struct Addition
    {
        std::string key; // quoted; empty for an element
        std::string text;
    };

    void CollectRemovals(JsonValue object, const std::set<JsonValue>& removed, std::vector<Edit>& edits) const;
    void CollectAdditions(JsonValue container, const std::vector<Addition>& added, std::vector<Edit>& edits) const;
    [[nodiscard]] std::string RenderRange(std::size_t start, std::size_t end) const;

    const JsonPlaces& m_places;
    std::map<JsonValue, std::string> m_replaced;
    std::map<JsonValue, std::set<JsonValue>> m_removed;    // by object
    std::map<JsonValue, std::vector<Addition>> m_appended; // by container
};

} // namespace skindesk::gltf
