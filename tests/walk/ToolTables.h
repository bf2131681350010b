// SPDX-License-Identifier: MIT
// What must hold of the tool's and the panel's tables whenever no event is being handled.
#pragma once

#include <string>

class ZToolCharacterWeighting;

/// What a check leaves out, since the user did something after which it need not hold.
struct ToolTableLeniency
{
    bool rowsOrColumnsPicked = false; ///< "Select U" or "Select V" extended a pick beyond the panel's rows
    bool weightsLost = false;         ///< a bone that pulled vertices was deleted
    /// A change of the first of several active vertices was made again: redo gives its spread to all of them, also
    /// where the skin has no entry to hold it.
    bool firstVertexRedone = false;
};

/// Empty when everything agrees, else one line that names the first table that does not.
std::string ToolTables_Check(ZToolCharacterWeighting& tool, const ToolTableLeniency& leniency);
