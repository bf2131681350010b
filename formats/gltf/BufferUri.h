// SPDX-License-Identifier: MIT
// Where a buffer's bytes come from: data URIs, and names of files that must lie in the folder of the file that names
// them.
#pragma once

#include "FileBytes.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace skindesk::gltf {

[[nodiscard]] bool IsDataUri(std::string_view uri);

// The part behind "data:...;base64,". Nothing when the URI is not of that form.
[[nodiscard]] std::optional<std::string_view> Base64Of(std::string_view dataUri);
// "image/png" of "data:image/png;base64,...".
[[nodiscard]] std::string MimeTypeOf(std::string_view dataUri);

// Nothing when a character is no base64 or the length cannot be one. Missing padding is taken.
[[nodiscard]] std::optional<ByteBlock> DecodeBase64(std::string_view text);
[[nodiscard]] std::string EncodeBase64(ByteSpan bytes);

// "%20" and the like turned into bytes; nothing when a percent sign is not followed by two hexadecimal digits.
[[nodiscard]] std::optional<std::string> PercentDecoded(std::string_view text);
[[nodiscard]] std::string PercentEncoded(std::string_view text);

// What is wrong with a relative file name in a URI, as words that complete "the name ..."; empty when nothing is.
// `decoded` is filled with the name when it is well formed.
[[nodiscard]] std::string WhatIsWrongWithName(std::string_view uri, std::string& decoded);

// Whether the file is inside the folder once symbolic links are followed. A file that is not there is judged by name.
[[nodiscard]] bool LiesInFolder(const std::string& folder, const std::string& relativeName);

} // namespace skindesk::gltf
