// SPDX-License-Identifier: MIT
// The temporary files that saving writes before it renames them: how they are named, and clearing away those that a
// killed process left.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace skindesk::gltf {

// ".NAME.PROCESS-ATTEMPT.tmp" for this process; long names are cut.
[[nodiscard]] std::string TemporaryName(std::string_view name, int attempt);

// As much of a name as its temporary files have of it.
[[nodiscard]] std::string_view NameInTemporary(std::string_view name);

// Marks an open temporary file as being written. The mark goes when it is closed or the process ends.
void MarkAsBeingWritten(int fd);

// Removes the temporary files of the folder that nobody writes any more: their process is gone and so is their mark.
// `isWanted` gets the NAME of each and says whether it may go. What cannot be removed stays; nothing is thrown.
void RemoveAbandonedTemporaries(const std::string& folder, const std::function<bool(const std::string&)>& isWanted);

} // namespace skindesk::gltf
