// SPDX-License-Identifier: MIT
// Puts a rewritten file on disk with the buffers and pictures that it needs beside it.
#pragma once

#include "FileRewrite.h"

#include <string>
#include <vector>

namespace skindesk::gltf {

// Refuses another extension than that of the opened file. Throws FileError.
void CheckExtension(const OpenedFile& file, const std::string& path);

// The order is the promise: what the new file needs is there and synced before the renaming of the file itself, which
// is the moment of saving; weight buffer files that nothing needs any more go only afterwards. When something fails
// before that moment, files made for this saving are removed again and FileError is thrown; so it is when `stop` asks.
void SaveFiles(const OpenedFile& file, const std::vector<Image>& images, const RewrittenFile& rewritten,
               const std::string& path, const std::stop_token& stop, std::vector<std::string>& warnings);

} // namespace skindesk::gltf
