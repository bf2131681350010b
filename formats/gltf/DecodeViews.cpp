// SPDX-License-Identifier: MIT
// Buffer views compressed with EXT_meshopt_compression.
#include "Decoding.h"

#include <algorithm>
#include <meshoptimizer.h>

namespace skindesk::gltf {

namespace {

constexpr std::string_view EXTENSION = "EXT_meshopt_compression";
constexpr std::size_t LARGEST_STRIDE = 256;

enum class ViewMode
{
    Attributes,
    Triangles,
    Indices
};

// What the extension says of a view, checked against the view and the buffer.
struct CompressedView
{
    ByteSpan bytes;
    std::size_t count = 0;
    std::size_t stride = 0;
    ViewMode mode = ViewMode::Attributes;
    std::string filter;
};

class ViewDecoder
{
public:
    ViewDecoder(const OpenedFile& file, DecodeBudget& budget) : m_file(file), m_json(file.Json()), m_budget(budget) {}

    [[nodiscard]] std::shared_ptr<const ByteBlock> Decode(const BufferView& view, JsonValue extension) const
    {
        const CompressedView compressed = Describe(view, m_file.Object(extension));
        RefuseIfTooShort(extension, compressed);
        m_budget.Spend(extension, compressed.count, compressed.stride);
        auto whole = std::make_shared<ByteBlock>(compressed.count * compressed.stride);
        if (compressed.count > 0 && Run(compressed, whole->Data()) != 0) {
            m_file.Refuse(extension, "the buffer view is compressed with " + std::string(EXTENSION) +
                                         " and its bytes cannot be decoded");
        }
        ApplyFilter(compressed, whole->Data());
        return whole;
    }

private:
    [[nodiscard]] std::size_t Required(JsonValue extension, std::string_view key) const
    {
        const JsonValue v = m_json.Member(extension, key);
        if (v == JSON_NONE) {
            m_file.Refuse(extension, std::string(EXTENSION) + " has no " + std::string(key));
        }
        return m_file.WholeNumber(v, key);
    }

    [[nodiscard]] CompressedView Describe(const BufferView& view, JsonValue extension) const
    {
        CompressedView found;
        found.count = Required(extension, "count");
        found.stride = Required(extension, "byteStride");
        found.mode = ReadMode(extension);
        found.filter = m_file.TextOr(extension, "filter", "NONE");
        found.bytes = FindBytes(extension);
        CheckStride(extension, found);
        // Both factors are bounded: the stride by 256, the count by 2^53.
        if (found.count > view.length || found.count * found.stride != view.length) {
            m_file.Refuse(extension, Counted(found.count, "element", "elements") + " of " +
                                         std::to_string(found.stride) + " bytes do not fill the buffer view, it has " +
                                         std::to_string(view.length));
        }
        if (found.mode == ViewMode::Triangles && found.count % 3 != 0) {
            m_file.Refuse(extension, std::to_string(found.count) + " corners are no multiple of three");
        }
        return found;
    }

    [[nodiscard]] ViewMode ReadMode(JsonValue extension) const
    {
        const std::string mode = m_file.TextOr(extension, "mode", "");
        if (mode == "ATTRIBUTES") {
            return ViewMode::Attributes;
        }
        if (mode == "TRIANGLES") {
            return ViewMode::Triangles;
        }
        if (mode != "INDICES") {
            m_file.Refuse(extension, "the mode of " + std::string(EXTENSION) + " is \"" + OneLine(mode) +
                                         "\", ATTRIBUTES, TRIANGLES and INDICES are known");
        }
        return ViewMode::Indices;
    }

    void CheckStride(JsonValue extension, const CompressedView& found) const
    {
        const bool isAttributes = found.mode == ViewMode::Attributes;
        const bool fits = isAttributes ? found.stride >= 4 && found.stride <= LARGEST_STRIDE && found.stride % 4 == 0
                                       : found.stride == 2 || found.stride == 4;
        if (!fits) {
            m_file.Refuse(extension, "byteStride is " + std::to_string(found.stride) +
                                         (isAttributes ? ", multiples of 4 up to 256 can be compressed"
                                                       : ", compressed indices have 2 or 4 bytes"));
        }
        const bool isFilterOk =
            found.filter == "NONE" ||
            (isAttributes && ((found.filter == "OCTAHEDRAL" && found.stride <= 8) ||
                              (found.filter == "QUATERNION" && found.stride == 8) || found.filter == "EXPONENTIAL"));
        if (!isFilterOk) {
            m_file.Refuse(extension, "the filter \"" + OneLine(found.filter) + "\" does not go with elements of " +
                                         std::to_string(found.stride) + " bytes");
        }
    }

    [[nodiscard]] ByteSpan FindBytes(JsonValue extension) const
    {
        const std::size_t index = Required(extension, "buffer");
        if (index >= m_file.Buffers().size()) {
            m_file.Refuse(extension, "number " + std::to_string(index) + " of the buffers is meant, there are " +
                                         std::to_string(m_file.Buffers().size()));
        }
        const Buffer& buffer = m_file.Buffers()[index];
        const std::size_t offset = m_file.WholeNumberOr(extension, "byteOffset", 0);
        const std::size_t length = Required(extension, "byteLength");
        if (offset + length > buffer.bytes.size()) {
            m_file.Refuse(extension, "the compressed bytes end at byte " + std::to_string(offset + length) +
                                         ", the buffer has " + std::to_string(buffer.bytes.size()));
        }
        return buffer.bytes.subspan(offset, length);
    }

    // The least that the codecs can make of so many elements: two bits for sixteen equal bytes, a byte for a triangle
    // or an index, and the ends. Fewer bytes cannot hold them, and no memory is asked for on their behalf.
    void RefuseIfTooShort(JsonValue extension, const CompressedView& found) const
    {
        std::size_t least = 0;
        switch (found.mode) {
        case ViewMode::Attributes:
            least = 1 + (found.count + 63) / 64 * found.stride + std::max<std::size_t>(32, found.stride);
            break;
        case ViewMode::Triangles:
            least = 1 + found.count / 3 + 16;
            break;
        case ViewMode::Indices:
            least = 1 + found.count + 4;
            break;
        }
        if (found.bytes.size() < least) {
            m_file.Refuse(extension, Counted(found.count, "element needs ", "elements need ") + "at least " +
                                         std::to_string(least) + " compressed bytes, " +
                                         std::to_string(found.bytes.size()) + " are there");
        }
    }

    [[nodiscard]] static int Run(const CompressedView& from, std::uint8_t* into)
    {
        switch (from.mode) {
        case ViewMode::Attributes:
            return meshopt_decodeVertexBuffer(into, from.count, from.stride, from.bytes.data(), from.bytes.size());
        case ViewMode::Triangles:
            return meshopt_decodeIndexBuffer(into, from.count, from.stride, from.bytes.data(), from.bytes.size());
        default:
            return meshopt_decodeIndexSequence(into, from.count, from.stride, from.bytes.data(), from.bytes.size());
        }
    }

    static void ApplyFilter(const CompressedView& from, std::uint8_t* bytes)
    {
        if (from.filter == "OCTAHEDRAL") {
            meshopt_decodeFilterOct(bytes, from.count, from.stride);
        } else if (from.filter == "QUATERNION") {
            meshopt_decodeFilterQuat(bytes, from.count, from.stride);
        } else if (from.filter == "EXPONENTIAL") {
            meshopt_decodeFilterExp(bytes, from.count, from.stride);
        }
    }

    const OpenedFile& m_file;
    const JsonPlaces& m_json;
    DecodeBudget& m_budget;
};

} // namespace

JsonValue MeshoptExtensionOf(const OpenedFile& file, const BufferView& view)
{
    const JsonPlaces& json = file.Json();
    return json.Member(json.Member(view.value, "extensions"), EXTENSION);
}

void DecodeViews(Reading& reading, DecodeBudget& budget, DecodedBytes& into)
{
    const OpenedFile& file = reading.file;
    const ViewDecoder decoder(file, budget);
    for (std::size_t i = 0; i < file.Views().size(); ++i) {
        const BufferView& view = file.Views()[i];
        const JsonValue extension = MeshoptExtensionOf(file, view);
        if (extension == JSON_NONE) {
            continue;
        }
        into.views.resize(file.Views().size());
        try {
            into.views[i] = decoder.Decode(view, extension);
        } catch (const FileError& error) {
            // Files may hold the same bytes a second time, plain, for programs that cannot decode.
            if (file.Requires(EXTENSION) || file.Buffers()[static_cast<std::size_t>(view.buffer)].bytes.empty()) {
                throw;
            }
            reading.warnings.Add(extension, "the uncompressed bytes are taken: " + error.sentence());
        }
    }
}

} // namespace skindesk::gltf
