// SPDX-License-Identifier: MIT
// An opened file on its way to a saved one.
#include "FileRewrite.h"

#include "BufferUri.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace skindesk::gltf {

namespace {

constexpr std::size_t HASH_DIGITS = 16;
constexpr std::string_view WEIGHTS_MARK = ".weights-";
constexpr std::string_view WEIGHTS_EXTENSION = ".bin";
constexpr int ARRAY_BUFFER = 34962;

std::size_t AlignedToFour(std::size_t size) { return (size + 3) / 4 * 4; }

void AppendWord(std::vector<std::uint8_t>& bytes, std::size_t word)
{
    for (int i = 0; i < 4; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
    }
}

int FindBuffer(const OpenedFile& file, BufferHome home, bool weightFileOnly)
{
    for (std::size_t i = 0; i < file.Buffers().size(); ++i) {
        const Buffer& buffer = file.Buffers()[i];
        if (buffer.home == home && (!weightFileOnly || IsWeightBufferName(buffer.file))) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

} // namespace

bool IsWeightBufferName(const std::string& name)
{
    constexpr std::size_t TAIL = WEIGHTS_MARK.size() + HASH_DIGITS + WEIGHTS_EXTENSION.size();
    if (name.size() <= TAIL || name.find('/') != std::string::npos || !name.ends_with(WEIGHTS_EXTENSION)) {
        return false;
    }
    const std::string tail = name.substr(name.size() - TAIL);
    const std::string digits = tail.substr(WEIGHTS_MARK.size(), HASH_DIGITS);
    return tail.starts_with(WEIGHTS_MARK) && digits.find_first_not_of("0123456789abcdef") == std::string::npos;
}

bool IsWeightBufferNameOf(const std::string& name, const std::string& stem)
{
    return IsWeightBufferName(name) &&
           name.size() == stem.size() + WEIGHTS_MARK.size() + HASH_DIGITS + WEIGHTS_EXTENSION.size() &&
           name.starts_with(stem);
}

std::string JsonNumber(double value)
{
    std::array<char, 40> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end.ptr};
}

FileRewrite::FileRewrite(const OpenedFile& file)
    : m_file(file), m_splice(file.Json()), m_home(ChooseHome()), m_homeBuffer(static_cast<int>(file.Buffers().size()))
{
    if (m_home == Home::BinChunk) {
        m_homeBuffer = 0;
    } else if (m_home == Home::WeightFile) {
        m_homeBuffer = FindBuffer(file, BufferHome::External, true);
    }
}

FileRewrite::Home FileRewrite::ChooseHome() const
{
    const std::vector<Buffer>& buffers = m_file.Buffers();
    if (m_file.Container().isBinary) {
        if (!buffers.empty() && buffers[0].home == BufferHome::BinChunk) {
            return Home::BinChunk;
        }
        return buffers.empty() && !m_file.Container().hasBin ? Home::NewBinChunk : Home::NewDataUri;
    }
    if (FindBuffer(m_file, BufferHome::External, true) >= 0) {
        return Home::WeightFile;
    }
    return FindBuffer(m_file, BufferHome::External, false) >= 0 ? Home::NewWeightFile : Home::NewDataUri;
}

bool FileRewrite::IsWritable(int index) const
{
    const Buffer& buffer = m_file.Buffers()[static_cast<std::size_t>(index)];
    switch (buffer.home) {
    case BufferHome::BinChunk:
        return true;
    case BufferHome::DataUri:
        return buffer.base64Start != 0;
    case BufferHome::External:
        return m_home == Home::WeightFile && index == m_homeBuffer;
    default:
        return false;
    }
}

std::uint8_t* FileRewrite::Overwrite(int index, std::size_t from, std::size_t length)
{
    Window& window = m_overwritten[index];
    window.Widen(m_file.Buffers()[static_cast<std::size_t>(index)].bytes, from, from + length);
    return window.bytes.data() + (from - window.start);
}

// A window that has to grow becomes twice as wide at least, so that many small steps copy no byte often.
void FileRewrite::Window::Widen(ByteSpan buffer, std::size_t from, std::size_t to)
{
    if (!bytes.empty() && from >= start && to <= End()) {
        return;
    }
    std::size_t newStart = bytes.empty() ? from : std::min(from, start);
    std::size_t newEnd = bytes.empty() ? to : std::max(to, End());
    if (!bytes.empty() && from < start) {
        newStart = std::min(newStart, start - std::min(start, bytes.size()));
    }
    if (!bytes.empty() && to > End()) {
        newEnd = std::max(newEnd, std::min(buffer.size(), End() + bytes.size()));
    }
    const ByteSpan wider = buffer.subspan(newStart, newEnd - newStart);
    std::vector<std::uint8_t> copy(wider.begin(), wider.end());
    if (!bytes.empty()) {
        std::copy(bytes.begin(), bytes.end(), copy.begin() + static_cast<std::ptrdiff_t>(start - newStart));
    }
    start = newStart;
    bytes = std::move(copy);
}

// Where added bytes begin, counted in the buffer that they go to.
std::size_t FileRewrite::HomeSize() const
{
    if (m_home == Home::BinChunk) {
        return AlignedToFour(m_file.Container().binSize);
    }
    return m_home == Home::WeightFile
               ? AlignedToFour(m_file.Buffers()[static_cast<std::size_t>(m_homeBuffer)].owned.Size())
               : 0;
}

int FileRewrite::AddToList(const char* key, const std::string& json, std::size_t& added)
{
    const JsonValue list = m_file.ListValue(key);
    if (list == JSON_NONE) {
        m_newLists[key].push_back(json);
    } else {
        m_splice.AppendElement(list, json);
    }
    return static_cast<int>(m_file.List(key).size() + added++);
}

int FileRewrite::AddAccessor(const NewAccessor& accessor)
{
    m_added.resize(AlignedToFour(m_added.size()));
    const std::size_t offset = HomeSize() + m_added.size();
    m_added.insert(m_added.end(), accessor.bytes.begin(), accessor.bytes.end());
    std::string view = "{\"buffer\":" + std::to_string(m_homeBuffer) + ",\"byteOffset\":" + std::to_string(offset) +
                       ",\"byteLength\":" + std::to_string(accessor.bytes.size());
    view += accessor.isVertexData ? ",\"target\":" + std::to_string(ARRAY_BUFFER) + "}" : "}";
    const int viewIndex = AddToList("bufferViews", view, m_addedViews);
    const std::string json = "{\"bufferView\":" + std::to_string(viewIndex) +
                             ",\"componentType\":" + std::to_string(static_cast<int>(accessor.type)) +
                             (accessor.normalised ? ",\"normalized\":true" : "") +
                             ",\"count\":" + std::to_string(accessor.count) + ",\"type\":\"" + accessor.shape + "\"" +
                             (accessor.bounds.empty() ? "" : "," + accessor.bounds) + "}";
    return AddToList("accessors", json, m_addedAccessors);
}

int FileRewrite::AddMesh(const std::string& json) { return AddToList("meshes", json, m_addedMeshes); }

void FileRewrite::SetByteLength(int buffer, std::size_t length)
{
    const JsonValue value = m_file.Buffers()[static_cast<std::size_t>(buffer)].value;
    m_splice.Replace(m_file.Json().Member(value, "byteLength"), std::to_string(length));
}

void FileRewrite::FinishAddedBytes(const std::string& stem)
{
    std::size_t none = 0;
    switch (m_home) {
    case Home::BinChunk:
        if (!m_added.empty()) {
            SetByteLength(0, HomeSize() + m_added.size());
        }
        break;
    case Home::NewBinChunk:
        if (!m_added.empty()) {
            AddToList("buffers", "{\"byteLength\":" + std::to_string(m_added.size()) + "}", none);
        }
        break;
    case Home::WeightFile:
    case Home::NewWeightFile:
        FinishWeightFile(stem);
        break;
    case Home::NewDataUri:
        if (!m_added.empty()) {
            AddToList("buffers",
                      "{\"byteLength\":" + std::to_string(m_added.size()) +
                          ",\"uri\":\"data:application/octet-stream;base64," + EncodeBase64(m_added) + "\"}",
                      none);
        }
        break;
    }
}

void FileRewrite::FinishWeightFile(const std::string& stem)
{
    const bool isReplacement = m_home == Home::WeightFile;
    const auto overwritten = isReplacement ? m_overwritten.find(m_homeBuffer) : m_overwritten.end();
    if (m_added.empty() && overwritten == m_overwritten.end()) {
        return;
    }
    if (isReplacement) {
        const ByteSpan old = m_file.Buffers()[static_cast<std::size_t>(m_homeBuffer)].owned.Span();
        m_weightFile.assign(old.begin(), old.end());
        if (overwritten != m_overwritten.end()) {
            const Window& window = overwritten->second;
            std::copy(window.bytes.begin(), window.bytes.end(),
                      m_weightFile.begin() + static_cast<std::ptrdiff_t>(window.start));
        }
    }
    if (!m_added.empty()) {
        m_weightFile.resize(HomeSize());
        m_weightFile.insert(m_weightFile.end(), m_added.begin(), m_added.end());
    }
    m_result.weightBufferName =
        stem + std::string(WEIGHTS_MARK) + HexOf(HashOf(m_weightFile)) + std::string(WEIGHTS_EXTENSION);
    m_result.weightBuffer = m_weightFile;
    const std::string uri = QuotedJson(PercentEncoded(m_result.weightBufferName));
    if (isReplacement) {
        m_result.replacedBuffer = m_homeBuffer;
        const JsonValue value = m_file.Buffers()[static_cast<std::size_t>(m_homeBuffer)].value;
        m_splice.Replace(m_file.Json().Member(value, "uri"), uri);
        SetByteLength(m_homeBuffer, m_weightFile.size());
    } else {
        std::size_t none = 0;
        AddToList("buffers", "{\"byteLength\":" + std::to_string(m_weightFile.size()) + ",\"uri\":" + uri + "}", none);
    }
}

// Three bytes are four digits, so an overwritten weight changes a few digits and no place behind it moves.
void FileRewrite::FinishDataUris()
{
    for (const auto& [index, window] : m_overwritten) {
        const Buffer& buffer = m_file.Buffers()[static_cast<std::size_t>(index)];
        if (buffer.home != BufferHome::DataUri) {
            continue;
        }
        const JsonValue uri = m_file.Json().Member(buffer.value, "uri");
        std::string text(m_file.Json().Raw(uri));
        const std::size_t digits = buffer.base64Start - m_file.Json().Start(uri);
        // Behind byteLength there may be more bytes, which share the last digits with those before.
        std::vector<std::uint8_t> whole(buffer.owned.Span().begin(), buffer.owned.Span().end());
        std::copy(window.bytes.begin(), window.bytes.end(), whole.begin() + static_cast<std::ptrdiff_t>(window.start));
        for (std::size_t i = window.start / 3 * 3; i < window.End(); i += 3) {
            const std::size_t n = std::min<std::size_t>(3, whole.size() - i);
            if (std::memcmp(&whole[i], buffer.owned.Span().data() + i, n) != 0) {
                const std::string group = EncodeBase64(ByteSpan(&whole[i], n));
                text.replace(digits + i / 3 * 4, n + 1, group, 0, n + 1);
            }
        }
        m_splice.Replace(uri, text);
    }
}

void FileRewrite::AddPiece(std::vector<std::uint8_t> bytes)
{
    m_ownPieces.push_back(std::move(bytes));
    m_result.pieces.emplace_back(m_ownPieces.back());
}

void FileRewrite::FinishGlb()
{
    const GltfContainer& container = m_file.Container();
    const ByteSpan bytes = m_file.Bytes();
    // The padding of the opened file is not part of its text: zero bytes, and up to three spaces.
    while (m_text.ends_with('\0')) {
        m_text.pop_back();
    }
    for (int i = 0; i < 3 && m_text.ends_with(' '); ++i) {
        m_text.pop_back();
    }
    m_text.resize(AlignedToFour(m_text.size()), ' ');

    const bool goesToBin = m_home == Home::BinChunk || m_home == Home::NewBinChunk;
    const ByteSpan added = goesToBin ? ByteSpan(m_added) : ByteSpan{};
    const bool hasBin = container.hasBin || !added.empty();
    const auto overwritten = m_home == Home::BinChunk ? m_overwritten.find(0) : m_overwritten.end();
    const std::size_t binSize =
        added.empty() ? container.binSize
                      : AlignedToFour((container.hasBin ? AlignedToFour(container.binSize) : 0) + added.size());
    const std::size_t rest = container.lengthInHeader - container.restStart;
    const std::size_t total =
        GLB_HEADER_SIZE + GLB_CHUNK_HEADER_SIZE + m_text.size() + (hasBin ? GLB_CHUNK_HEADER_SIZE + binSize : 0) + rest;
    if (total > 0xFFFFFFFFu) {
        throw FileError(m_file.Path(), "",
                        "the saved GLB would have " + std::to_string(total) + " bytes, its format ends at 4294967295");
    }
    std::vector<std::uint8_t> head;
    AppendWord(head, GLB_MAGIC);
    AppendWord(head, 2);
    AppendWord(head, total);
    AppendWord(head, m_text.size());
    AppendWord(head, GLB_JSON_CHUNK);
    AddPiece(std::move(head));
    m_result.pieces.emplace_back(reinterpret_cast<const std::uint8_t*>(m_text.data()), m_text.size());
    if (hasBin) {
        std::vector<std::uint8_t> binHead;
        AppendWord(binHead, binSize);
        AppendWord(binHead, GLB_BIN_CHUNK);
        AddPiece(std::move(binHead));
        ByteSpan old = container.hasBin ? bytes.subspan(container.binStart, container.binSize) : ByteSpan{};
        const std::size_t oldSize = old.size();
        if (overwritten != m_overwritten.end()) {
            const Window& window = overwritten->second;
            m_result.pieces.push_back(old.first(window.start));
            m_result.pieces.emplace_back(window.bytes);
            old = old.subspan(window.End());
        }
        m_result.pieces.push_back(old);
        if (!added.empty()) {
            AddPiece(std::vector<std::uint8_t>(container.hasBin ? AlignedToFour(oldSize) - oldSize : 0));
            m_result.pieces.push_back(added);
            AddPiece(std::vector<std::uint8_t>(AlignedToFour(added.size()) - added.size()));
        }
    }
    m_result.pieces.push_back(bytes.subspan(container.restStart));
}

const RewrittenFile& FileRewrite::Finish(const std::string& stem)
{
    FinishAddedBytes(stem);
    FinishDataUris();
    for (const auto& [key, elements] : m_newLists) {
        std::string list;
        for (const std::string& element : elements) {
            list += (list.empty() ? "[" : ",") + element;
        }
        m_splice.AppendMember(m_file.Json().Root(), key, list + "]");
    }
    if (m_splice.IsEmpty() && m_overwritten.empty()) {
        m_result.pieces.push_back(m_file.Bytes());
        return m_result;
    }
    m_text = m_splice.Render();
    m_ownPieces.reserve(4); // pieces point into these
    if (m_file.Container().isBinary) {
        FinishGlb();
    } else {
        m_result.pieces.emplace_back(reinterpret_cast<const std::uint8_t*>(m_text.data()), m_text.size());
    }
    return m_result;
}

} // namespace skindesk::gltf
