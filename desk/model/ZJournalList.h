// SPDX-License-Identifier: MIT
// The list of copies in the folder of a session.
#pragma once

#include <string>
#include <vector>

struct ZLeftDocument;

/// Replaces the list in `folder` at once; false when it cannot be written.
bool ZJournalList_Write(const std::string& folder, const std::vector<ZLeftDocument>& lines);
/// The lines whose copies lie in `folder`. A line that is damaged, or that names a file elsewhere, is passed over.
std::vector<ZLeftDocument> ZJournalList_Read(const std::string& folder);
/// There is nothing to bring back in `folder`.
void ZJournalList_Remove(const std::string& folder);
