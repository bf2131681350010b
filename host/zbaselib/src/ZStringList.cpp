// SPDX-License-Identifier: MIT
#include "zbaselib/ZStringList.h"

void ZStringList::SetText(std::string_view text, char separator)
{
    m_items.clear();
    while (!text.empty()) {
        const size_t cut = text.find(separator);
        Add(text.substr(0, cut));
        if (cut == std::string_view::npos)
            return;
        text.remove_prefix(cut + 1);
        if (text.empty())
            Add({}); // a text that ends with a separator ends with an empty item
    }
}

std::string ZStringList::GetText(char separator) const
{
    std::string text;
    for (const std::string& item : m_items) {
        if (&item != m_items.data())
            text += separator;
        text += item;
    }
    return text;
}

const std::string& ZStringList::GetAt(int index) const
{
    static const std::string none;
    return index >= 0 && index < GetCount() ? m_items[static_cast<size_t>(index)] : none;
}

int ZStringList::Add(std::string_view item)
{
    m_items.emplace_back(item);
    return GetCount() - 1;
}
