// SPDX-License-Identifier: MIT
// A list of texts, such as the items of a combo box.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// A list of UTF-8 texts that can be given as one text with a separator. Answers an empty text out of range.
class ZStringList
{
public:
    /// Replaces the items by the pieces of `text` between separators. An empty text gives no items.
    void SetText(std::string_view text, char separator);
    std::string GetText(char separator) const;
    int GetCount() const { return static_cast<int>(m_items.size()); }
    const std::string& GetAt(int index) const;
    int Add(std::string_view item);
    void RemoveAll() { m_items.clear(); }

private:
    std::vector<std::string> m_items;
};
