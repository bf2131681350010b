// SPDX-License-Identifier: MIT
// From bytes to records: the order of the steps.
#include "BufferUri.h"
#include "Decoding.h"

namespace skindesk::gltf {

namespace {

constexpr std::size_t MOST_WARNINGS = 100;

CharacterFile ReadRecords(std::shared_ptr<OpenedFile> source, const std::stop_token& stop)
{
    CharacterFile records;
    Reading reading(*source, records);
    reading.stop = stop;
    records.path = source->Path();
    if (source->Json().HasByteOrderMark()) {
        reading.warnings.Add(source->Json().Root(), "a byte order mark stands before the JSON; it is kept");
    }
    ReadScenesAndNodes(reading);
    source->SetDecoded(DecodeCompressed(reading));
    ReadMeshes(reading);
    ReadSkins(reading);
    ReadMaterialsAndImages(reading);
    ReadAnimations(reading);
    if (!reading.budget.Misaligned().empty()) {
        reading.warnings.Add(*reading.budget.Misaligned().begin(),
                             Counted(reading.budget.Misaligned().size(), "accessor does", "accessors do") +
                                 " not begin at a multiple of the size of their numbers");
    }
    records.warnings = reading.warnings.Take();
    records.source = std::move(source);
    return records;
}

} // namespace

void Reading::GiveUpIfStopped() const
{
    if (stop.stop_requested()) {
        throw FileError(file.Path(), "", "was not opened: it was given up");
    }
}

void WarningList::Add(JsonValue where, const std::string& sentence)
{
    if (m_lines.size() == MOST_WARNINGS) {
        ++m_unsaid;
        return;
    }
    const std::string pointer = where == JSON_NONE ? "" : m_file.Json().Pointer(where);
    const std::string line = pointer.empty() ? sentence : pointer + ": " + sentence;
    m_lines.push_back(OneLine(line, line.size()));
}

std::vector<std::string> WarningList::Take()
{
    if (m_unsaid > 0) {
        m_lines.push_back("and " + Counted(m_unsaid, "more warning", "more warnings"));
    }
    return std::move(m_lines);
}

CharacterFile ReadCharacter(const std::string& path, const std::stop_token& stop)
{
    const FileStamp stamp = QuickStamp(path);
    auto source = std::make_shared<OpenedFile>(ReadWholeFile(path, path), path);
    source->SetStamp(stamp);
    return ReadRecords(std::move(source), stop);
}

CharacterFile ReadCharacter(std::span<const std::uint8_t> bytes, const std::string& path)
{
    return ReadRecords(std::make_shared<OpenedFile>(ByteBlock(bytes), path), {});
}

std::vector<std::uint8_t> ImageBytes(const CharacterFile& file, int image)
{
    const OpenedFile& source = *file.source;
    const Image& record = file.images.at(static_cast<std::size_t>(image));
    ByteBlock owned;
    ByteSpan bytes;
    const JsonValue value = source.List("images")[static_cast<std::size_t>(image)];
    if (record.bufferView >= 0) {
        const BufferView& view = source.Views()[static_cast<std::size_t>(record.bufferView)];
        const Buffer& buffer = source.Buffers()[static_cast<std::size_t>(view.buffer)];
        if (buffer.home == BufferHome::Nowhere) {
            source.Refuse(value, "the picture lies in a buffer without bytes");
        }
        bytes = buffer.bytes.subspan(view.offset, view.length);
    } else if (!record.file.empty()) {
        owned = ReadWholeFile(record.file, record.file);
        bytes = owned.Span();
    } else {
        const std::string uri = source.TextOr(value, "uri", "");
        const auto digits = IsDataUri(uri) ? Base64Of(uri) : std::nullopt;
        std::optional<ByteBlock> decoded = digits ? DecodeBase64(*digits) : std::nullopt;
        if (!decoded) {
            source.Refuse(value, "the picture is neither embedded nor in the folder of the file");
        }
        owned = std::move(*decoded);
        bytes = owned.Span();
    }
    return {bytes.begin(), bytes.end()};
}

FileStamp OpenedStamp(const CharacterFile& opened)
{
    FileStamp stamp = opened.source->Stamp();
    stamp.size = opened.source->Bytes().size();
    stamp.contentHash = HashOf(opened.source->Bytes());
    return stamp;
}

bool ChangedOnDisk(const std::string& path, const FileStamp& stamp)
{
    const FileStamp now = QuickStamp(path);
    if (now.size != stamp.size) {
        return true;
    }
    if (now.modifiedNanoseconds == stamp.modifiedNanoseconds) {
        return false;
    }
    try {
        return HashOf(ReadWholeFile(path, path).Span()) != stamp.contentHash;
    } catch (const FileError&) {
        return true;
    }
}

} // namespace skindesk::gltf
