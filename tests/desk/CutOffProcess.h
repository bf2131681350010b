// SPDX-License-Identifier: MIT
// A process that is killed in the middle of its work.
#pragma once

#include <QString>

/// Opens `character` on a desk, edits it, says "KEPT" on stdout when the journal in the folder `journal` has a copy,
/// and goes on until it is killed. The status of a process that nobody killed.
int LiveUntilKilled(const QString& journal, const QString& character);
