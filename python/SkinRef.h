// SPDX-License-Identifier: MIT
// The skin of a model as Python sees it.
#pragma once

#include "Door.h"
#include "zmodel/ZSkin.h"

/// Lives with its model: it holds the model's reference and asks it for the skin anew.
class SkinRef
{
public:
    explicit SkinRef(std::shared_ptr<ModelRef> model) : m_model(std::move(model)) {}
    ZSkin& Get() const;
    int LinkFrom(const py::object& link) const;
    Door& GetDoor() const { return m_model->GetDoor(); }
    const ZModel& Owner() const { return m_model->Get(); }

private:
    std::shared_ptr<ModelRef> m_model;
};
