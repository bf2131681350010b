// SPDX-License-Identifier: MIT
// Keeps the events that a view sends, as a handler would see them.
#pragma once

#include "ztoolkit/ZtView.h"

#include <vector>

class RecordedEvents
{
public:
    explicit RecordedEvents(ZtView& view,
                            const std::vector<int>& kinds = {kViewPress, kViewRelease, kViewValueChanged,
                                                             kViewSelectionChanged, kViewClicked, kViewDragAndDrop})
    {
        for (const int kind : kinds)
            view.RegisterHandler(kind, ZMakeHandler<&RecordedEvents::Keep>(this));
    }

    std::vector<ZtEvent> events;

    std::vector<int> Kinds() const
    {
        std::vector<int> kinds;
        for (const ZtEvent& event : events)
            kinds.push_back(event.kind);
        return kinds;
    }
    std::vector<double> Values() const
    {
        std::vector<double> values;
        for (const ZtEvent& event : events)
            values.push_back(event.value);
        return values;
    }

private:
    void Keep(ZObject*, ZEvent& event) { events.push_back(static_cast<ZtEvent&>(event)); }
};
