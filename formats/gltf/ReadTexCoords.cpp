// SPDX-License-Identifier: MIT
#include "Reading.h"
#include "Textures.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace skindesk::gltf {

namespace {

// A point of a picture becomes another one: scaled, turned, moved.
struct PictureTransform
{
    double offset[2] = {0, 0};
    double scale[2] = {1, 1};
    double rotation = 0; // radians, counter-clockwise

    void Apply(float* point) const
    {
        const double u = static_cast<double>(point[0]) * scale[0], v = static_cast<double>(point[1]) * scale[1];
        const double c = std::cos(rotation), s = std::sin(rotation);
        point[0] = static_cast<float>(c * u + s * v + offset[0]);
        point[1] = static_cast<float>(c * v - s * u + offset[1]);
    }
};

class TexCoordReader
{
public:
    explicit TexCoordReader(const CharacterFile& file)
        : m_records(file), m_file(*file.source), m_json(m_file.Json()), m_reading(m_file, m_unused)
    {
    }

    std::vector<float> Read(int meshIndex)
    {
        const Mesh& mesh = m_records.meshes.at(static_cast<std::size_t>(meshIndex));
        const JsonValue value = m_file.List("meshes")[static_cast<std::size_t>(meshIndex)];
        const std::vector<JsonValue> primitives = m_file.Array(m_json.Member(value, "primitives"));
        std::vector<float> coords;
        for (std::size_t p = 0; p < mesh.primitives.size(); ++p) {
            if (!ShowsPicture(mesh.primitives[p])) {
                continue;
            }
            coords.resize(mesh.triangles.size() * 2, 0.0F);
            ReadPrimitive(mesh, p, primitives[p], coords);
        }
        return coords;
    }

private:
    [[nodiscard]] bool ShowsPicture(const Primitive& primitive) const
    {
        return primitive.material >= 0 && primitive.triangleCount > 0 &&
               m_records.materials[static_cast<std::size_t>(primitive.material)].baseColourImage >= 0;
    }

    void ReadPrimitive(const Mesh& mesh, std::size_t index, JsonValue primitive, std::vector<float>& coords)
    {
        const Primitive& record = mesh.primitives[index];
        const JsonValue texture = TextureOf(record.material);
        const JsonValue transform = m_json.Member(m_json.Member(texture, "extensions"), "KHR_texture_transform");
        const std::size_t set = m_file.WholeNumberOr(
            transform, "texCoord",
            static_cast<std::size_t>(m_records.materials[static_cast<std::size_t>(record.material)].texCoord));
        const JsonValue where =
            m_json.Member(m_json.Member(primitive, "attributes"), "TEXCOORD_" + std::to_string(set));
        if (where == JSON_NONE) {
            return;
        }
        const AccessorView view = ViewAt(m_file, where, "VEC2", m_reading.budget);
        std::vector<std::int32_t> vertices(mesh.FileVertices(index).size());
        std::iota(vertices.begin(), vertices.end(), 0);
        if (view.Count() != vertices.size()) {
            m_file.Refuse(where, "texture coordinates have " + Counted(view.Count(), "element", "elements") +
                                     ", POSITION has " + std::to_string(vertices.size()));
        }
        std::vector<float> points(2 * vertices.size());
        view.Floats(0, vertices.size(), points.data());
        const PictureTransform moved = TransformAt(transform);
        for (std::size_t i = 0; i < points.size(); i += 2) {
            moved.Apply(&points[i]);
        }
        std::vector<std::int32_t> corners;
        ReadTriangles(m_reading, primitive, vertices, corners);
        float* out = &coords[record.firstTriangle * 6];
        for (const std::int32_t corner : corners) {
            *out++ = points[2 * static_cast<std::size_t>(corner)];
            *out++ = points[2 * static_cast<std::size_t>(corner) + 1];
        }
    }

    [[nodiscard]] JsonValue TextureOf(int material) const
    {
        const JsonValue value = m_file.List("materials")[static_cast<std::size_t>(material)];
        return m_json.Member(m_json.Member(value, "pbrMetallicRoughness"), "baseColorTexture");
    }

    [[nodiscard]] PictureTransform TransformAt(JsonValue value) const
    {
        PictureTransform transform;
        const auto pair = [this, value](const char* name, double(&into)[2]) {
            const JsonValue member = m_json.Member(value, name);
            const std::vector<double> numbers = member == JSON_NONE ? std::vector<double>() : m_file.Numbers(member);
            if (numbers.size() == 2) {
                std::copy(numbers.begin(), numbers.end(), into);
            }
        };
        pair("offset", transform.offset);
        pair("scale", transform.scale);
        if (const JsonValue rotation = m_json.Member(value, "rotation"); rotation != JSON_NONE) {
            transform.rotation = m_file.FiniteNumber(rotation);
        }
        return transform;
    }

    const CharacterFile& m_records;
    const OpenedFile& m_file;
    const JsonPlaces& m_json;
    CharacterFile m_unused; // warnings were said when the file was opened
    Reading m_reading;
};

} // namespace

std::vector<float> ReadTexCoords(const CharacterFile& file, int mesh) { return TexCoordReader(file).Read(mesh); }

} // namespace skindesk::gltf
