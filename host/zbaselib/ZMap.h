// SPDX-License-Identifier: MIT
// The host's ordered map.
#pragma once

#include <cstring>
#include <map>

/// Orders C strings by their text. A null pointer stands before every text.
struct ZCharPointerLessCompare
{
    bool operator()(const char* a, const char* b) const
    {
        if (a == nullptr || b == nullptr)
            return a == nullptr && b != nullptr;
        return std::strcmp(a, b) < 0;
    }
};

/// Names the allocator of a map; the base allocator is the language's own.
struct ZBaseAllocator
{
};

/// An ordered map. Keys that are pointers are kept as pointers: the text must outlive the map.
template <class Key, class Value, class Less, class Allocator = ZBaseAllocator> class ZMap
{
public:
    int GetCount() const { return static_cast<int>(m_values.size()); }
    /// The value of `key`, or null.
    const Value* Find(const Key& key) const
    {
        const auto found = m_values.find(key);
        return found == m_values.end() ? nullptr : &found->second;
    }
    void Set(const Key& key, const Value& value) { m_values.insert_or_assign(key, value); }
    bool Remove(const Key& key) { return m_values.erase(key) > 0; }
    void RemoveAll() { m_values.clear(); }

private:
    std::map<Key, Value, Less> m_values;
};
