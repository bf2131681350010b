// SPDX-License-Identifier: MIT
// Handlers that are called in order and may come and go while they are called.
#pragma once

#include "object/ZEvent.h"

#include <algorithm>
#include <cstddef>
#include <vector>

/// Handlers in order of registration, each for one owner (null for none). During a call a removed handler is not called
/// any more and a new one is called from the next call on; calls may nest.
class ZHandlerList
{
public:
    /// False when this owner's handler is there already.
    bool Add(const void* owner, const ZHandler& handler)
    {
        if (Find(owner, handler) != m_entries.end())
            return false;
        m_entries.push_back({owner, handler, true});
        return true;
    }
    /// False when it is not there.
    bool Remove(const void* owner, const ZHandler& handler)
    {
        const auto found = Find(owner, handler);
        if (found == m_entries.end())
            return false;
        found->live = false;
        Tidy();
        return true;
    }
    void RemoveOwner(const void* owner)
    {
        for (Entry& entry : m_entries)
            if (entry.owner == owner)
                entry.live = false;
        Tidy();
    }
    void Call(ZObject* sender, ZEvent& event)
    {
        const CallDepth depth(*this);
        // New entries go to the end, so the first ones keep their places while the call is under way.
        const size_t count = m_entries.size();
        for (size_t i = 0; i < count; ++i)
            if (m_entries[i].live) {
                const ZHandler handler = m_entries[i].handler;
                handler(sender, event);
            }
    }
    bool IsEmpty() const
    {
        return std::none_of(m_entries.begin(), m_entries.end(), [](const Entry& entry) { return entry.live; });
    }

private:
    struct Entry
    {
        const void* owner;
        ZHandler handler;
        bool live;
    };
    struct CallDepth
    {
        ZHandlerList& list;
        explicit CallDepth(ZHandlerList& called) : list(called) { ++list.m_depth; }
        ~CallDepth()
        {
            --list.m_depth;
            list.Tidy();
        }
        CallDepth(const CallDepth&) = delete;
        CallDepth& operator=(const CallDepth&) = delete;
    };
    std::vector<Entry>::iterator Find(const void* owner, const ZHandler& handler)
    {
        return std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
            return entry.live && entry.owner == owner && entry.handler == handler;
        });
    }
    void Tidy()
    {
        if (m_depth == 0)
            std::erase_if(m_entries, [](const Entry& entry) { return !entry.live; });
    }

    std::vector<Entry> m_entries;
    int m_depth = 0;
};
