// SPDX-License-Identifier: MIT
// The session's viewer as Python sees it.
#pragma once

#include "Door.h"

class ViewerRef
{
public:
    explicit ViewerRef(std::shared_ptr<Door> door) : m_door(std::move(door)) {}
    ZViewer& Get() const { return m_door->Session().GetViewer(); }
    Door& GetDoor() const { return *m_door; }

private:
    std::shared_ptr<Door> m_door;
};
