// SPDX-License-Identifier: MIT
// Any bytes as the outer shape of a character file: chunks lie inside the bytes, every JSON value lies inside its text
// and is found again by its pointer, and a text that is put together again without a change is the same bytes.
#include "Require.h"
#include "gltf/BufferUri.h"
#include "gltf/GltfContainer.h"
#include "gltf/JsonSplice.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

using namespace skindesk::gltf;

void CheckPlaces(std::string_view text, bool zeroPadded)
{
    const JsonPlaces places(text, zeroPadded);
    JsonSplice splice(places);
    Require(splice.Render() == text);
    // Pointers are looked up from the root, so only the first values are, to keep a run short.
    const std::size_t looked = std::min<std::size_t>(places.ValueCount(), 64);
    for (JsonValue v = 0; v < looked; ++v) {
        Require(places.Start(v) < places.End(v) && places.End(v) <= text.size());
        Require(places.At(places.Pointer(v)) == v);
        if (places.Is(v, JsonKind::String)) {
            // Unescaping and quoting again may spell the text differently, but it stays the same text.
            const std::string plain = places.String(v);
            Require(UnescapedJson(QuotedJson(plain)) == plain);
        }
        if (places.Is(v, JsonKind::Number)) {
            splice.Replace(v, "0");
        }
    }
    Require(JsonPlaces(splice.Render(), zeroPadded).ValueCount() == places.ValueCount());
}

void CheckNames(std::string_view text)
{
    std::string name;
    if (WhatIsWrongWithName(text, name).empty()) {
        Require(!name.empty() && name.front() != '/' && name.find('\0') == std::string::npos);
        Require(PercentDecoded(PercentEncoded(name)) == name);
    }
    if (const auto bytes = DecodeBase64(text)) {
        const auto again = DecodeBase64(EncodeBase64(bytes->Span()));
        Require(again && std::ranges::equal(again->Span(), bytes->Span()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    const ByteSpan bytes(data, size);
    CheckNames({reinterpret_cast<const char*>(data), size});
    try {
        const GltfContainer container = FindChunks(bytes, "fuzz.gltf");
        Require(container.jsonStart + container.jsonSize <= size);
        Require(container.binStart + container.binSize <= size);
        CheckPlaces(GltfContainer::Text(bytes, container.jsonStart, container.jsonSize), container.isBinary);
    } catch (const FileError&) {
        return 0;
    } catch (const JsonError& error) {
        Require(error.offset() <= size);
    }
    return 0;
}
