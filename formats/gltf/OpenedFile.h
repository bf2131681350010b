// SPDX-License-Identifier: MIT
// An opened file as it is written: bytes, JSON with its places, buffers and buffer views. Checked as far as these go:
// every view lies in its buffer and every buffer has the bytes that it promises. The ground of reading and of saving.
#pragma once

#include "CharacterFile.h"
#include "DecodedBytes.h"
#include "FileBytes.h"
#include "GltfContainer.h"
#include "JsonPlaces.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace skindesk::gltf {

enum class BufferHome
{
    BinChunk, // the second chunk of a GLB
    DataUri,  // base64 in the JSON
    External, // a file in the folder
    Nowhere,  // no bytes at all; an error only when something wants them
};

struct Buffer
{
    JsonValue value = JSON_NONE;
    BufferHome home = BufferHome::Nowhere;
    ByteSpan bytes; // byteLength of them
    std::size_t byteLength = 0;
    std::string file;            // External: name relative to the folder, decoded
    ByteBlock owned;             // DataUri, External: the bytes, for External the whole file
    FileStamp stamp;             // External: size and time as read
    std::size_t base64Start = 0; // DataUri: where its first digit stands in the JSON text; 0 when digits are not plain
};

struct BufferView
{
    JsonValue value = JSON_NONE;
    int buffer = 0;
    std::size_t offset = 0;
    std::size_t length = 0;
    std::size_t stride = 0; // 0: elements lie close
};

class OpenedFile
{
public:
    // Takes the bytes apart; external buffers are read from the folder of `path`. Throws FileError.
    OpenedFile(ByteBlock bytes, std::string path);
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;

    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] const std::string& Folder() const { return m_folder; } // "" for the current one
    [[nodiscard]] ByteSpan Bytes() const { return m_bytes.Span(); }
    [[nodiscard]] const GltfContainer& Container() const { return m_container; }
    [[nodiscard]] const JsonPlaces& Json() const { return m_json; }
    [[nodiscard]] const std::vector<Buffer>& Buffers() const { return m_buffers; }
    [[nodiscard]] const std::vector<BufferView>& Views() const { return m_views; }
    [[nodiscard]] const FileStamp& Stamp() const { return m_stamp; } // size and time as opened
    void SetStamp(const FileStamp& stamp) { m_stamp = stamp; }

    // What the file holds compressed, decoded; to be set before anything is read from accessors.
    [[nodiscard]] const DecodedBytes& Decoded() const { return m_decoded; }
    void SetDecoded(DecodedBytes decoded) { m_decoded = std::move(decoded); }
    // What the accessor named at this place of the JSON has instead of bytes in the file; null when it has none.
    [[nodiscard]] const DecodedArray* DecodedAt(JsonValue where) const;
    // The content of a buffer view, decoded where it is compressed. Throws FileError when the buffer has no bytes.
    [[nodiscard]] ByteSpan ViewBytes(int view) const;
    // Whether "extensionsRequired" names the extension.
    [[nodiscard]] bool Requires(std::string_view extension) const;

    // The values of a list at the root ("nodes"); empty when there is none.
    [[nodiscard]] const std::vector<JsonValue>& List(std::string_view key) const;
    // The list itself, JSON_NONE when there is none.
    [[nodiscard]] JsonValue ListValue(std::string_view key) const { return m_json.Member(m_json.Root(), key); }

    // Bytes of the file itself and of its buffers: what a reader may reasonably spend memory on.
    [[nodiscard]] std::size_t TotalBytes() const { return m_totalBytes; }

    // Throws FileError for a value of this file.
    [[noreturn]] void Refuse(JsonValue where, const std::string& sentence) const;

    // Values with the checks that go with them; each throws FileError. `what` names the value in the sentence.
    [[nodiscard]] std::size_t WholeNumber(JsonValue v, std::string_view what) const;
    [[nodiscard]] std::size_t WholeNumberOr(JsonValue object, std::string_view key, std::size_t otherwise) const;
    // A number below `limit` that counts `things` ("accessors").
    [[nodiscard]] int Index(JsonValue v, std::size_t limit, std::string_view things) const;
    [[nodiscard]] int IndexOr(JsonValue object, std::string_view key, std::string_view things, int otherwise) const;
    [[nodiscard]] double FiniteNumber(JsonValue v) const;
    [[nodiscard]] std::vector<double> Numbers(JsonValue v) const;
    [[nodiscard]] std::vector<double> Numbers(JsonValue v, std::size_t count) const;
    [[nodiscard]] std::string Text(JsonValue v) const;
    [[nodiscard]] std::string TextOr(JsonValue object, std::string_view key, const std::string& otherwise) const;
    [[nodiscard]] bool BooleanOr(JsonValue object, std::string_view key, bool otherwise) const;
    [[nodiscard]] std::vector<JsonValue> Array(JsonValue v) const;
    [[nodiscard]] JsonValue Object(JsonValue v) const;

private:
    void ParseJson();
    void CheckVersionAndExtensions() const;
    void FindLists();
    void FindBuffers();
    void FillBuffer(Buffer& buffer, std::size_t position);
    [[nodiscard]] bool IsFallback(JsonValue buffer) const;
    void FillFromDataUri(Buffer& buffer, JsonValue uri, const std::string& text);
    void FillFromFile(Buffer& buffer, JsonValue uri, const std::string& text);
    void FindViews();
    BufferView ReadView(JsonValue v) const;

    std::string m_path;
    std::string m_folder;
    ByteBlock m_bytes;
    GltfContainer m_container;
    JsonPlaces m_json;
    std::vector<std::pair<std::string, std::vector<JsonValue>>> m_lists;
    std::vector<Buffer> m_buffers;
    std::vector<BufferView> m_views;
    std::size_t m_totalBytes = 0;
    DecodedBytes m_decoded;
    FileStamp m_stamp;
};

// "3 vertices", "1 vertex".
[[nodiscard]] std::string Counted(std::size_t count, std::string_view one, std::string_view many);

} // namespace skindesk::gltf
