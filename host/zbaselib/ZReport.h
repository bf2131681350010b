// SPDX-License-Identifier: MIT
// What the host has to say: warnings to the user, the status line, and misuse of the host by a guest.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

/// A guest called the host wrongly: a call in the wrong order, on a dead object, from the wrong thread.
class ZHostMisuse : public std::logic_error
{
public:
    using std::logic_error::logic_error;
};

/// Says that a guest misused `call` ("ZUndoStack::TransactionEnd"), with one sentence on what it should have been.
/// While misuse is fatal (tests) it throws ZHostMisuse; otherwise the line goes to the report and the call does
/// nothing.
void ZReport_Misuse(const char* call, const std::string& sentence);
void ZReport_SetMisuseFatal(bool fatal);
bool ZReport_IsMisuseFatal();

/// Adds one line for the user. Kept in order until taken; also handed to the listener, if any.
void ZReport_Warning(const std::string& line);
/// All lines since the last call of ZReport_ClearWarnings.
const std::vector<std::string>& ZReport_Warnings();
void ZReport_ClearWarnings();

/// The status line: what the last gesture did, or what could not be done.
void ZReport_Status(const std::string& line);
const std::string& ZReport_GetStatus();

/// Called for each warning (kind 0), status line (kind 1) and misuse (kind 2). An empty function removes it.
void ZReport_SetListener(std::function<void(int kind, const std::string& line)> listener);
