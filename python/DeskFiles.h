// SPDX-License-Identifier: MIT
// The desk's files: opening, saving, reports and tables of weights.
#pragma once

#include "Door.h"

void BindDeskFiles(py::class_<Door, std::shared_ptr<Door>>& desk);
