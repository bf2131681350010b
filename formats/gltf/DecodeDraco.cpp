// SPDX-License-Identifier: MIT
// Primitives compressed with KHR_draco_mesh_compression.
#include "Decoding.h"
#include "WeightRows.h"

#include <draco/compression/mesh/mesh_edgebreaker_decoder.h>
#include <draco/compression/mesh/mesh_sequential_decoder.h>
#include <draco/core/varint_decoding.h>
#include <draco/mesh/mesh.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <optional>

namespace skindesk::gltf {

namespace {

constexpr std::string_view EXTENSION = "KHR_draco_mesh_compression";
constexpr std::size_t TRIANGLES = 4;
constexpr std::size_t TRIANGLE_STRIP = 5;

// A few bytes can announce any number of faces and attributes, so what a decoder will ask for is reckoned from what is
// announced and compared with the size of the file first.
constexpr std::uint64_t MEMORY_FLOOR = std::uint64_t{64} << 20;
constexpr std::uint64_t MEMORY_PER_FILE_BYTE = 512;
// The decoder's tables, rounded up: corners and what lies opposite to them, once more for each seamed attribute.
constexpr std::uint64_t BYTES_PER_FACE = 96;
constexpr std::uint64_t BYTES_PER_FACE_AND_SEAMS = 48;
// Beside the value itself: its whole number before and after prediction, and the point's entry.
constexpr std::uint64_t BYTES_PER_COMPONENT = 8;
constexpr std::uint64_t BYTES_PER_POINT = 8;

// What rounding four weights to eight bits each can add up to, and a little more.
constexpr double MOST_ROUNDING = 0.01;

// Where a mesh announces its size, in the two ways in which meshes are compressed. The buffer is a copy, so the decoder
// behind it reads the same bytes again.
std::optional<std::uint64_t> MemoryOfEdgebreaker(draco::DecoderBuffer buffer)
{
    std::uint32_t vertices = 0;
    std::uint32_t faces = 0;
    std::uint8_t seams = 0;
    if (!draco::DecodeVarint(&vertices, &buffer) || !draco::DecodeVarint(&faces, &buffer) || !buffer.Decode(&seams)) {
        return std::nullopt;
    }
    return faces * (BYTES_PER_FACE + seams * BYTES_PER_FACE_AND_SEAMS) + vertices * BYTES_PER_POINT;
}

std::optional<std::uint64_t> MemoryOfSequence(draco::DecoderBuffer buffer)
{
    std::uint32_t faces = 0;
    std::uint32_t points = 0;
    if (!draco::DecodeVarint(&faces, &buffer) || !draco::DecodeVarint(&points, &buffer)) {
        return std::nullopt;
    }
    return faces * BYTES_PER_FACE + points * BYTES_PER_POINT;
}

// Stops before the library's decoder asks for more memory than it may.
template <class Base> class BoundedDecoder : public Base
{
public:
    using Announced = std::optional<std::uint64_t> (*)(draco::DecoderBuffer);

    BoundedDecoder(std::uint64_t most, Announced announced) : m_most(most), m_announced(announced) {}

    [[nodiscard]] bool WasStopped() const { return m_wasStopped; }

protected:
    bool DecodeConnectivity() override
    {
        const std::optional<std::uint64_t> bytes = m_announced(*this->buffer());
        return bytes && Fits(*bytes, 1) && Base::DecodeConnectivity();
    }

    bool DecodeAllAttributes() override
    {
        const draco::PointCloud& cloud = *this->point_cloud();
        std::uint64_t perPoint = 0;
        for (int i = 0; i < cloud.num_attributes(); ++i) {
            const draco::PointAttribute& attribute = *cloud.attribute(i);
            const auto length = static_cast<std::uint64_t>(std::max(draco::DataTypeLength(attribute.data_type()), 0));
            perPoint += attribute.num_components() * (length + BYTES_PER_COMPONENT) + BYTES_PER_POINT;
        }
        return Fits(cloud.num_points(), perPoint) && Base::DecodeAllAttributes();
    }

private:
    bool Fits(std::uint64_t count, std::uint64_t bytesEach)
    {
        m_wasStopped = bytesEach != 0 && count > m_most / bytesEach;
        return !m_wasStopped;
    }

    std::uint64_t m_most;
    Announced m_announced;
    bool m_wasStopped = false;
};

// The compressed mesh of one primitive, decoded.
class DracoMesh
{
public:
    DracoMesh(const OpenedFile& file, JsonValue extension, ByteSpan bytes) : m_file(file), m_extension(extension)
    {
        m_buffer.Init(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        const draco::DracoHeader header = ReadHeader();
        if (header.encoder_method == draco::MESH_EDGEBREAKER_ENCODING) {
            Run<draco::MeshEdgebreakerDecoder>(MemoryOfEdgebreaker);
        } else {
            Run<draco::MeshSequentialDecoder>(MemoryOfSequence);
        }
    }

    [[nodiscard]] const draco::Mesh& Mesh() const { return m_mesh; }
    [[nodiscard]] std::size_t Points() const { return m_mesh.num_points(); }

private:
    [[noreturn]] void Refuse(const std::string& why) const
    {
        m_file.Refuse(m_extension, "the mesh compressed with " + std::string(EXTENSION) + " " + why);
    }

    [[nodiscard]] draco::DracoHeader ReadHeader() const
    {
        draco::DecoderBuffer ahead = m_buffer;
        draco::DracoHeader header{};
        if (!draco::PointCloudDecoder::DecodeHeader(&ahead, &header).ok()) {
            Refuse("does not begin as one");
        }
        if (header.encoder_type != draco::TRIANGULAR_MESH || header.encoder_method > draco::MESH_EDGEBREAKER_ENCODING) {
            Refuse("holds no triangles");
        }
        if (header.version_major != draco::kDracoMeshBitstreamVersionMajor ||
            header.version_minor != draco::kDracoMeshBitstreamVersionMinor) {
            Refuse("has version " + std::to_string(header.version_major) + "." + std::to_string(header.version_minor) +
                   ", 2.2 is read");
        }
        return header;
    }

    template <class Decoder> void Run(typename BoundedDecoder<Decoder>::Announced announced)
    {
        const std::uint64_t most = MEMORY_FLOOR + MEMORY_PER_FILE_BYTE * m_file.TotalBytes();
        BoundedDecoder<Decoder> decoder(most, announced);
        const draco::DecoderOptions options;
        std::string why;
        try {
            const draco::Status status = decoder.Decode(options, &m_buffer, &m_mesh);
            why = status.ok() ? "" : "cannot be decoded: " + status.error_msg_string();
        } catch (const std::exception& error) {
            why = std::string("cannot be decoded: ") + error.what();
        }
        if (decoder.WasStopped()) {
            why = "announces so much that more than " + std::to_string(most) + " bytes would be needed, the file has " +
                  std::to_string(m_file.TotalBytes());
        }
        if (!why.empty()) {
            Refuse(why);
        }
    }

    const OpenedFile& m_file;
    JsonValue m_extension;
    draco::DecoderBuffer m_buffer;
    draco::Mesh m_mesh;
};

// Whether all values could be converted to the accessor's component type.
template <class Out> bool Convert(const draco::PointAttribute& from, std::size_t points, std::uint8_t* bytes)
{
    const auto components = static_cast<std::int8_t>(from.num_components());
    auto* out = reinterpret_cast<Out*>(bytes);
    for (std::size_t i = 0; i < points; ++i, out += components) {
        const draco::AttributeValueIndex at = from.mapped_index(draco::PointIndex(static_cast<std::uint32_t>(i)));
        if (at.value() >= from.size() || !from.ConvertValue<Out>(at, components, out)) {
            return false;
        }
    }
    return true;
}

bool ConvertTo(ComponentType type, const draco::PointAttribute& from, std::size_t points, std::uint8_t* bytes)
{
    switch (type) {
    case ComponentType::Int8:
        return Convert<std::int8_t>(from, points, bytes);
    case ComponentType::UInt8:
        return Convert<std::uint8_t>(from, points, bytes);
    case ComponentType::Int16:
        return Convert<std::int16_t>(from, points, bytes);
    case ComponentType::UInt16:
        return Convert<std::uint16_t>(from, points, bytes);
    case ComponentType::UInt32:
        return Convert<std::uint32_t>(from, points, bytes);
    default:
        return Convert<float>(from, points, bytes);
    }
}

std::vector<JsonValue> MembersOf(const OpenedFile& file, JsonValue object)
{
    return object == JSON_NONE ? std::vector<JsonValue>{} : file.Json().Children(file.Object(object));
}

// Those that the desk looks at.
bool IsWanted(std::string_view attribute)
{
    return attribute == "POSITION" || attribute == "NORMAL" || attribute.starts_with("TEXCOORD_") ||
           attribute.starts_with("JOINTS_") || attribute.starts_with("WEIGHTS_");
}

class PrimitiveDecoder
{
public:
    PrimitiveDecoder(Reading& reading, DecodeBudget& budget, JsonValue primitive, JsonValue extension)
        : m_reading(reading), m_file(reading.file), m_json(reading.json), m_budget(budget), m_primitive(primitive),
          m_extension(m_file.Object(extension)), m_mesh(m_file, m_extension, CompressedBytes())
    {
    }

    void DecodeInto(std::map<JsonValue, DecodedArray>& arrays)
    {
        const std::size_t mode = m_file.WholeNumberOr(m_primitive, "mode", TRIANGLES);
        if (mode != TRIANGLES && mode != TRIANGLE_STRIP) {
            m_file.Refuse(m_primitive,
                          "mode is " + std::to_string(mode) + ", " + std::string(EXTENSION) + " knows triangles only");
        }
        const JsonValue attributes = m_json.Member(m_primitive, "attributes");
        for (const JsonValue id : MembersOf(m_file, m_json.Member(m_extension, "attributes"))) {
            const std::string key = m_json.Key(id);
            const JsonValue place = m_json.Member(attributes, key);
            if (place == JSON_NONE) {
                m_file.Refuse(id, "the primitive has no attribute " + OneLine(key));
            }
            if (IsWanted(key)) {
                arrays[place] = {DecodeAttribute(key, place, id), m_mesh.Points()};
            }
        }
        SettleWeights();
        arrays[m_extension] = DecodeCorners();
        WarnOfOtherCounts();
    }

private:
    [[nodiscard]] ByteSpan CompressedBytes() const
    {
        const int view = m_file.IndexOr(m_extension, "bufferView", "bufferViews", -1);
        if (view < 0) {
            m_file.Refuse(m_extension, std::string(EXTENSION) + " names no buffer view");
        }
        return m_file.ViewBytes(view);
    }

    [[nodiscard]] std::shared_ptr<const ByteBlock> DecodeAttribute(const std::string& key, JsonValue place,
                                                                   JsonValue idValue)
    {
        const std::size_t id = m_file.WholeNumber(idValue, "the attribute's id");
        const draco::PointAttribute* attribute =
            id > std::numeric_limits<std::uint32_t>::max()
                ? nullptr
                : m_mesh.Mesh().GetAttributeByUniqueId(static_cast<std::uint32_t>(id));
        if (attribute == nullptr) {
            m_file.Refuse(idValue, "the compressed mesh has no attribute " + std::to_string(id));
        }
        const Accessor accessor =
            DescribeAccessor(m_file, m_file.Index(place, m_file.List("accessors").size(), "accessors"));
        if (attribute->num_components() != accessor.components || accessor.components > 4) {
            m_file.Refuse(idValue, "the compressed attribute has " +
                                       Counted(attribute->num_components(), "component", "components") +
                                       ", its accessor has " + std::to_string(accessor.components));
        }
        const std::size_t points = m_mesh.Points();
        m_counts.insert(accessor.count);
        m_budget.Spend(idValue, points, accessor.elementSize);
        auto bytes = std::make_shared<ByteBlock>(points * accessor.elementSize);
        const bool hasFractions =
            attribute->data_type() == draco::DT_FLOAT32 || attribute->data_type() == draco::DT_FLOAT64;
        if ((hasFractions && accessor.type != ComponentType::Float) ||
            !ConvertTo(accessor.type, *attribute, points, bytes->Data())) {
            m_file.Refuse(idValue, "the compressed attribute holds numbers that its accessor has no place for");
        }
        if (key.starts_with("WEIGHTS_") && accessor.type == ComponentType::Float) {
            m_weights.push_back(bytes);
        }
        return bytes;
    }

    // Compression rounds each weight for itself, so that they miss one by a little. They are made to meet it again: the
    // desk shows what it would save, and what is saved plain is valid.
    void SettleWeights()
    {
        const std::vector<JsonValue> attributes = MembersOf(m_file, m_json.Member(m_primitive, "attributes"));
        const auto sets = std::count_if(attributes.begin(), attributes.end(),
                                        [&](JsonValue v) { return m_json.Key(v).starts_with("WEIGHTS_"); });
        if (m_weights.empty() || static_cast<std::size_t>(sets) != m_weights.size()) {
            return; // a part of the whole lies elsewhere
        }
        std::size_t settled = 0;
        for (std::size_t v = 0; v < m_mesh.Points(); ++v) {
            settled += SettleRow(v) ? 1 : 0;
        }
        if (settled > 0) {
            m_reading.warnings.Add(m_extension, Counted(settled, "vertex has", "vertices have") +
                                                    " weights that compression rounded off; they add up to one again");
        }
    }

    // Slots without weight stay so: only the others share what rounding left over.
    bool SettleRow(std::size_t vertex)
    {
        m_row.clear();
        double whole = 0;
        for (std::uint32_t slot = 0; slot < 4 * m_weights.size(); ++slot) {
            const auto weight = static_cast<double>(*Slot(vertex, slot));
            whole += weight;
            if (weight != 0) {
                m_row.push_back({slot, weight});
            }
        }
        const double off = std::abs(whole - 1);
        if (!(off > WEIGHT_TOLERANCE && off <= MOST_ROUNDING)) {
            return false;
        }
        for (Influence& influence : m_row) {
            influence.weight /= whole;
        }
        std::stable_sort(m_row.begin(), m_row.end(),
                         [](const Influence& a, const Influence& b) { return a.weight > b.weight; });
        RoundToFloats(m_row, m_rounded);
        for (std::size_t k = 0; k < m_row.size(); ++k) {
            *Slot(vertex, m_row[k].joint) = m_rounded[k];
        }
        return true;
    }

    // Slots are counted through all sets.
    [[nodiscard]] float* Slot(std::size_t vertex, std::uint32_t slot) const
    {
        return reinterpret_cast<float*>(m_weights[slot / 4]->Data()) + 4 * vertex + slot % 4;
    }

    [[nodiscard]] DecodedArray DecodeCorners()
    {
        const std::size_t faces = m_mesh.Mesh().num_faces();
        m_budget.Spend(m_extension, faces, 3 * sizeof(std::uint32_t));
        auto bytes = std::make_shared<ByteBlock>(faces * 3 * sizeof(std::uint32_t));
        auto* out = reinterpret_cast<std::uint32_t*>(bytes->Data());
        for (std::size_t f = 0; f < faces; ++f) {
            const draco::Mesh::Face& face = m_mesh.Mesh().face(draco::FaceIndex(static_cast<std::uint32_t>(f)));
            for (const draco::PointIndex& corner : face) {
                *out++ = corner.value();
            }
        }
        return {std::move(bytes), faces * 3};
    }

    void WarnOfOtherCounts() const
    {
        for (const std::size_t count : m_counts) {
            if (count != m_mesh.Points()) {
                m_reading.warnings.Add(m_extension, "the accessors have " + Counted(count, "element", "elements") +
                                                        ", the compressed mesh has " +
                                                        Counted(m_mesh.Points(), "vertex", "vertices") +
                                                        "; the mesh is taken as it is");
            }
        }
    }

    Reading& m_reading;
    const OpenedFile& m_file;
    const JsonPlaces& m_json;
    DecodeBudget& m_budget;
    JsonValue m_primitive;
    JsonValue m_extension;
    DracoMesh m_mesh;
    std::set<std::size_t> m_counts;
    std::vector<std::shared_ptr<ByteBlock>> m_weights; // the sets, decoded to floats
    std::vector<Influence> m_row;                      // of one vertex; slots in place of joints
    std::vector<float> m_rounded;
};

// Whether all accessors of the primitive have bytes of their own, for programs that cannot decode.
bool HasPlainBytes(const OpenedFile& file, JsonValue primitive)
{
    const JsonPlaces& json = file.Json();
    std::vector<JsonValue> named = MembersOf(file, json.Member(primitive, "attributes"));
    if (const JsonValue indices = json.Member(primitive, "indices"); indices != JSON_NONE) {
        named.push_back(indices);
    }
    return std::all_of(named.begin(), named.end(), [&](JsonValue place) {
        return DescribeAccessor(file, file.Index(place, file.List("accessors").size(), "accessors")).view >= 0;
    });
}

} // namespace

JsonValue DracoExtensionOf(const OpenedFile& file, JsonValue primitive)
{
    const JsonPlaces& json = file.Json();
    return json.Member(json.Member(primitive, "extensions"), EXTENSION);
}

void DecodePrimitives(Reading& reading, DecodeBudget& budget, DecodedBytes& into)
{
    const OpenedFile& file = reading.file;
    for (const JsonValue mesh : file.List("meshes")) {
        for (const JsonValue primitive : file.Array(reading.json.Member(file.Object(mesh), "primitives"))) {
            const JsonValue extension = DracoExtensionOf(file, file.Object(primitive));
            if (extension == JSON_NONE) {
                continue;
            }
            try {
                std::map<JsonValue, DecodedArray> arrays;
                PrimitiveDecoder(reading, budget, primitive, extension).DecodeInto(arrays);
                into.arrays.merge(arrays);
            } catch (const FileError& error) {
                if (file.Requires(EXTENSION) || !HasPlainBytes(file, primitive)) {
                    throw;
                }
                reading.warnings.Add(extension, "the uncompressed mesh is taken: " + error.sentence());
            }
        }
    }
}

DecodedBytes DecodeCompressed(Reading& reading)
{
    DecodedBytes decoded;
    DecodeBudget budget(reading.file);
    DecodeViews(reading, budget, decoded);
    DecodePrimitives(reading, budget, decoded);
    // What was decoded is as good as if it had stood in the file, and the readers behind may make something of it.
    reading.budget.Allow(budget.Spent());
    return decoded;
}

} // namespace skindesk::gltf
