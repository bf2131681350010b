// SPDX-License-Identifier: MIT
// An opened file: taking it apart, and where its buffers come from.
#include "OpenedFile.h"

#include "BufferUri.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace skindesk::gltf {

namespace {

// Extensions that a file may call required: the desk reads them, or does nothing with them because none changes where
// vertices are, how triangles join them, or how they hang on bones.
constexpr std::array HARMLESS_PREFIXES{"KHR_materials_", "KHR_texture_", "KHR_lights_", "EXT_lights_", "EXT_texture_"};
constexpr std::array HARMLESS_EXTENSIONS{
    "KHR_mesh_quantization", "KHR_draco_mesh_compression", "EXT_meshopt_compression",
    "KHR_animation_pointer", "KHR_node_visibility",        "KHR_xmp_json_ld",
    "MSFT_texture_dds",      "TW_nurbs_surface",           "KHR_xmp"};
constexpr std::array LISTS{"accessors", "animations", "bufferViews", "buffers", "images",  "materials",
                           "meshes",    "nodes",      "scenes",      "skins",   "textures"};
constexpr std::size_t SMALLEST_STRIDE = 4;
constexpr std::size_t LARGEST_STRIDE = 252;

bool IsHarmless(const std::string& extension)
{
    return std::any_of(HARMLESS_EXTENSIONS.begin(), HARMLESS_EXTENSIONS.end(),
                       [&](const char* known) { return extension == known; }) ||
           std::any_of(HARMLESS_PREFIXES.begin(), HARMLESS_PREFIXES.end(),
                       [&](const char* prefix) { return extension.starts_with(prefix); });
}

} // namespace

OpenedFile::OpenedFile(ByteBlock bytes, std::string path)
    : m_path(std::move(path)), m_folder(std::filesystem::path(m_path).parent_path().string()),
      m_bytes(std::move(bytes)), m_container(FindChunks(m_bytes.Span(), m_path)), m_totalBytes(m_bytes.Size())
{
    ParseJson();
    CheckVersionAndExtensions();
    FindLists();
    FindBuffers();
    FindViews();
}

void OpenedFile::ParseJson()
{
    try {
        m_json = JsonPlaces(GltfContainer::Text(m_bytes.Span(), m_container.jsonStart, m_container.jsonSize),
                            m_container.isBinary);
    } catch (const JsonError& error) {
        throw FileError(m_path, "byte " + std::to_string(m_container.jsonStart + error.offset()), error.what());
    }
    if (m_json.Kind(m_json.Root()) != JsonKind::Object) {
        Refuse(m_json.Root(), "the JSON is no object, a glTF file is one");
    }
}

void OpenedFile::CheckVersionAndExtensions() const
{
    const JsonValue asset = m_json.Member(m_json.Root(), "asset");
    if (asset == JSON_NONE) {
        Refuse(m_json.Root(), "there is no \"asset\" with a version, so this is no glTF 2.0 file");
    }
    const std::string version = TextOr(asset, "version", "");
    if (!version.starts_with("2.")) {
        Refuse(asset, "the file has version \"" + OneLine(version) + "\", 2.0 is read");
    }
    const std::string least = TextOr(asset, "minVersion", "2.0");
    if (least != "2.0") {
        Refuse(asset, "the file needs version \"" + OneLine(least) + "\", 2.0 is read");
    }
    for (const JsonValue v : Array(m_json.Member(m_json.Root(), "extensionsRequired"))) {
        const std::string extension = Text(v);
        if (!IsHarmless(extension)) {
            Refuse(v, "the file needs the extension " + OneLine(extension, 80) + ", which the desk does not read");
        }
    }
}

void OpenedFile::FindLists()
{
    for (const char* key : LISTS) {
        m_lists.emplace_back(key, Array(m_json.Member(m_json.Root(), key)));
    }
}

const std::vector<JsonValue>& OpenedFile::List(std::string_view key) const
{
    static const std::vector<JsonValue> NONE;
    const auto found =
        std::find_if(m_lists.begin(), m_lists.end(), [key](const auto& entry) { return entry.first == key; });
    return found == m_lists.end() ? NONE : found->second;
}

// ------------------------------------------------------------------------------------------------------- buffers

void OpenedFile::FindBuffers()
{
    const std::vector<JsonValue>& values = List("buffers");
    m_buffers.resize(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        m_buffers[i].value = Object(values[i]);
        FillBuffer(m_buffers[i], i);
        m_totalBytes += m_buffers[i].owned.Size();
    }
}

void OpenedFile::FillBuffer(Buffer& buffer, std::size_t position)
{
    const JsonValue length = m_json.Member(buffer.value, "byteLength");
    if (length == JSON_NONE) {
        Refuse(buffer.value, "the buffer has no byteLength");
    }
    buffer.byteLength = WholeNumber(length, "byteLength");
    const JsonValue uri = m_json.Member(buffer.value, "uri");
    ByteSpan there;
    if (uri != JSON_NONE) {
        const std::string text = Text(uri);
        if (IsDataUri(text)) {
            FillFromDataUri(buffer, uri, text);
        } else {
            FillFromFile(buffer, uri, text);
        }
        if (buffer.home == BufferHome::Nowhere) {
            return;
        }
        there = buffer.owned.Span();
    } else if (position == 0 && m_container.hasBin) {
        buffer.home = BufferHome::BinChunk;
        there = m_bytes.Span().subspan(m_container.binStart, m_container.binSize);
    } else {
        return;
    }
    if (there.size() < buffer.byteLength) {
        Refuse(length, "the buffer says it has " + std::to_string(buffer.byteLength) + " bytes, " +
                           std::to_string(there.size()) + " are there");
    }
    buffer.bytes = there.first(buffer.byteLength);
}

bool OpenedFile::IsFallback(JsonValue buffer) const
{
    const JsonValue extension = m_json.Member(m_json.Member(buffer, "extensions"), "EXT_meshopt_compression");
    return m_json.Is(m_json.Member(extension, "fallback"), JsonKind::True);
}

void OpenedFile::FillFromDataUri(Buffer& buffer, JsonValue uri, const std::string& text)
{
    buffer.home = BufferHome::DataUri;
    std::string unescaped;
    std::string_view plain = text;
    const bool isEscaped = text.find('%') != std::string::npos;
    if (isEscaped) {
        unescaped = PercentDecoded(text).value_or("");
        plain = unescaped;
    }
    const std::optional<std::string_view> digits = Base64Of(plain);
    if (!digits) {
        Refuse(uri, "the data URI is not marked as base64");
    }
    std::optional<ByteBlock> bytes = DecodeBase64(*digits);
    if (!bytes) {
        Refuse(uri, "the data URI holds what is no base64");
    }
    buffer.owned = std::move(*bytes);
    if (!isEscaped && text.size() + 2 == m_json.Raw(uri).size()) {
        buffer.base64Start = m_json.Start(uri) + 1 + (text.size() - digits->size());
    }
}

void OpenedFile::FillFromFile(Buffer& buffer, JsonValue uri, const std::string& text)
{
    buffer.home = BufferHome::External;
    const std::string wrong = WhatIsWrongWithName(text, buffer.file);
    if (!wrong.empty()) {
        Refuse(uri, "the name of the buffer file " + wrong);
    }
    if (!LiesInFolder(m_folder, buffer.file)) {
        Refuse(uri, "the buffer file leads out of the folder through a symbolic link");
    }
    const std::string file = (std::filesystem::path(m_folder) / buffer.file).string();
    buffer.stamp = QuickStamp(file);
    try {
        buffer.owned = ReadWholeFile(file, buffer.file);
    } catch (const FileError& error) {
        // What stands in for programs that cannot decode is often left behind; its views are compressed elsewhere.
        if (IsFallback(buffer.value)) {
            buffer.home = BufferHome::Nowhere;
            return;
        }
        Refuse(uri, std::string("the buffer file ") + error.what());
    }
}

// --------------------------------------------------------------------------------------------------------- views

void OpenedFile::FindViews()
{
    const std::vector<JsonValue>& values = List("bufferViews");
    m_views.reserve(values.size());
    for (const JsonValue v : values) {
        m_views.push_back(ReadView(Object(v)));
    }
}

BufferView OpenedFile::ReadView(JsonValue v) const
{
    BufferView view;
    view.value = v;
    view.buffer = IndexOr(v, "buffer", "buffers", -1);
    if (view.buffer < 0) {
        Refuse(v, "the buffer view names no buffer");
    }
    view.offset = WholeNumberOr(v, "byteOffset", 0);
    view.length = WholeNumberOr(v, "byteLength", 0);
    const std::size_t whole = m_buffers[static_cast<std::size_t>(view.buffer)].byteLength;
    // Both are at most 2^53, so the sum cannot wrap.
    if (view.offset + view.length > whole) {
        Refuse(v, "the buffer view ends at byte " + std::to_string(view.offset + view.length) + ", its buffer has " +
                      std::to_string(whole));
    }
    const JsonValue stride = m_json.Member(v, "byteStride");
    if (stride != JSON_NONE) {
        view.stride = WholeNumber(stride, "byteStride");
        if (view.stride < SMALLEST_STRIDE || view.stride > LARGEST_STRIDE) {
            Refuse(stride, "byteStride is " + std::to_string(view.stride) + ", 4 to 252 are allowed");
        }
    }
    return view;
}

const DecodedArray* OpenedFile::DecodedAt(JsonValue where) const
{
    const auto found = m_decoded.arrays.find(where);
    return found == m_decoded.arrays.end() ? nullptr : &found->second;
}

ByteSpan OpenedFile::ViewBytes(int index) const
{
    const auto position = static_cast<std::size_t>(index);
    if (position < m_decoded.views.size() && m_decoded.views[position] != nullptr) {
        return m_decoded.views[position]->Span();
    }
    const BufferView& view = m_views[position];
    const Buffer& buffer = m_buffers[static_cast<std::size_t>(view.buffer)];
    if (buffer.home == BufferHome::Nowhere) {
        Refuse(buffer.value, "the buffer has neither a uri nor a binary chunk");
    }
    return buffer.bytes.subspan(view.offset, view.length);
}

bool OpenedFile::Requires(std::string_view extension) const
{
    const std::vector<JsonValue> required = Array(m_json.Member(m_json.Root(), "extensionsRequired"));
    return std::any_of(required.begin(), required.end(), [&](JsonValue v) { return Text(v) == extension; });
}

} // namespace skindesk::gltf
