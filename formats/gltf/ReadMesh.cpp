// SPDX-License-Identifier: MIT
// Meshes: attributes of primitives, seams, and triangles.
#include "Decoding.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace skindesk::gltf {

namespace {

enum PrimitiveMode
{
    TRIANGLES = 4,
    TRIANGLE_STRIP = 5,
    TRIANGLE_FAN = 6
};

// The most slots that 32-bit offsets can count.
constexpr std::size_t MOST_SLOTS = 0xFFFFFFFEu;
constexpr std::size_t BYTES_PER_VERTEX = 32; // position, normal, offsets and map entry of one, for the budget
constexpr std::size_t BYTES_PER_SLOT = 8;

void CheckCount(const OpenedFile& file, JsonValue where, const char* what, std::size_t count, std::size_t vertices)
{
    if (count != vertices) {
        file.Refuse(where, std::string(what) + " has " + Counted(count, "element", "elements") + ", POSITION has " +
                               std::to_string(vertices));
    }
}

// Makes the attribute set of one primitive, checked, ready for joining.
class AttributeReader
{
public:
    AttributeReader(Reading& reading, JsonValue primitive, std::size_t morphTargets)
        : m_reading(reading), m_file(reading.file), m_primitive(primitive),
          m_attributes(FindAttributes(reading.file, reading.json.Member(primitive, "attributes"), &reading.warnings))
    {
        m_targets = m_file.Array(reading.json.Member(primitive, "targets"));
        if (m_targets.size() != morphTargets) {
            m_file.Refuse(primitive, "the primitive has " + Counted(m_targets.size(), "morph target", "morph targets") +
                                         ", the first one of the mesh has " + std::to_string(morphTargets));
        }
    }

    // What tells attribute sets apart: the accessors that decide what the desk's vertices are, and the normals.
    [[nodiscard]] std::vector<int> Key() const
    {
        std::vector<int> key{IndexOf(m_attributes.position), IndexOf(m_attributes.normal)};
        for (std::size_t s = 0; s < m_attributes.joints.size(); ++s) {
            key.push_back(IndexOf(m_attributes.joints[s]));
            key.push_back(IndexOf(m_attributes.weights[s]));
        }
        for (const JsonValue target : m_targets) {
            key.push_back(IndexOf(m_reading.json.Member(target, "POSITION")));
        }
        // Accessors of compressed primitives have no bytes, so several primitives may name one and mean others.
        if (const JsonValue compressed = DracoExtensionOf(m_file, m_primitive); compressed != JSON_NONE) {
            key.push_back(static_cast<int>(compressed));
        }
        return key;
    }

    [[nodiscard]] std::size_t Sets() const { return m_attributes.joints.size(); }

    [[nodiscard]] AttributeSet View() const
    {
        AttributeSet set;
        if (m_attributes.position == JSON_NONE) {
            m_reading.warnings.Add(m_primitive, "the primitive has no POSITION and therefore no vertices");
            return set;
        }
        set.positions = ViewAt(m_file, m_attributes.position, "VEC3", m_reading.budget);
        const std::size_t count = set.positions.Count();
        if (count == 0) {
            m_reading.warnings.Add(m_attributes.position, "the primitive has no vertices");
        }
        if (count * 4 * std::max<std::size_t>(1, Sets()) > MOST_SLOTS) {
            m_file.Refuse(m_attributes.position,
                          Counted(count, "vertex is", "vertices are") + " more than the desk holds");
        }
        m_reading.budget.Spend(m_attributes.position, count,
                               BYTES_PER_VERTEX + Sets() * 4 * BYTES_PER_SLOT + m_targets.size() * 3 * sizeof(float));
        if (m_attributes.normal != JSON_NONE) {
            set.normals = ViewAt(m_file, m_attributes.normal, "VEC3", m_reading.budget);
            CheckCount(m_file, m_attributes.normal, "NORMAL", set.normals->Count(), count);
        }
        set.influences = ViewInfluences(m_file, m_attributes, count, m_reading.budget);
        WarnOfNormalisedJoints(set);
        ViewMorphTargets(set, count);
        return set;
    }

private:
    [[nodiscard]] int IndexOf(JsonValue v) const
    {
        return v == JSON_NONE ? -1 : m_file.Index(v, m_file.List("accessors").size(), "accessors");
    }

    void WarnOfNormalisedJoints(const AttributeSet& set) const
    {
        for (std::size_t s = 0; s < set.influences.size(); ++s) {
            if (set.influences[s].joints.IsNormalised()) {
                m_reading.warnings.Add(
                    m_attributes.joints[s],
                    "joints are marked as normalised, which means nothing; they are taken as numbers");
            }
        }
    }

    void ViewMorphTargets(AttributeSet& set, std::size_t count) const
    {
        for (const JsonValue target : m_targets) {
            const JsonValue position = m_reading.json.Member(m_file.Object(target), "POSITION");
            std::optional<AccessorView>& view = set.morphPositions.emplace_back();
            if (position != JSON_NONE) {
                view = ViewAt(m_file, position, "VEC3", m_reading.budget);
                CheckCount(m_file, position, "the morph target's POSITION", view->Count(), count);
            }
        }
    }

    Reading& m_reading;
    const OpenedFile& m_file;
    JsonValue m_primitive;
    AttributeAccessors m_attributes;
    std::vector<JsonValue> m_targets;
};

// Turns a primitive's indices into the triangles of the mesh.
class TriangleReader
{
public:
    TriangleReader(Reading& reading, JsonValue primitive, const std::vector<std::int32_t>& deskVertices,
                   std::vector<std::int32_t>& triangles)
        : m_reading(reading), m_primitive(primitive), m_desk(deskVertices), m_triangles(triangles),
          m_decoded(reading.file.DecodedAt(DracoExtensionOf(reading.file, primitive)))
    {
    }

    void Read()
    {
        const std::size_t mode = m_reading.file.WholeNumberOr(m_primitive, "mode", TRIANGLES);
        if (mode > TRIANGLE_FAN) {
            m_reading.file.Refuse(m_primitive, "mode is " + std::to_string(mode) + ", 0 to 6 are known");
        }
        // The corners of a compressed primitive come as triangles whatever they were before.
        if (mode == TRIANGLES || m_decoded != nullptr) {
            ReadList();
            return;
        }
        std::vector<std::uint32_t> corners;
        AppendCorners(corners);
        switch (mode) {
        case TRIANGLE_STRIP:
            ReadStrip(corners);
            break;
        case TRIANGLE_FAN:
            ReadFan(corners);
            break;
        default:
            break; // points and lines have no polygons
        }
    }

private:
    // File vertices, checked, behind what is in `corners`.
    template <class Index> void AppendCorners(std::vector<Index>& corners) const
    {
        JsonValue where = m_reading.json.Member(m_primitive, "indices");
        const std::size_t before = corners.size();
        if (where == JSON_NONE && m_decoded == nullptr) {
            corners.resize(before + m_desk.size());
            std::iota(corners.begin() + static_cast<std::ptrdiff_t>(before), corners.end(), Index{0});
            return;
        }
        where = m_decoded != nullptr ? m_primitive : where;
        const AccessorView view =
            m_decoded != nullptr ? DecodedCorners() : ViewAt(m_reading.file, where, "SCALAR", m_reading.budget);
        if (!IsUnsigned(view.Type())) {
            m_reading.file.Refuse(where, "indices have no unsigned component type");
        }
        m_reading.budget.Spend(where, view.Count(), 4 * sizeof(Index));
        corners.resize(before + view.Count());
        // A signed and an unsigned number of one size may share their memory.
        auto* indices = reinterpret_cast<std::uint32_t*>(corners.data()) + before;
        view.Unsigned(0, view.Count(), indices);
        const std::uint32_t* largest = std::max_element(indices, indices + view.Count());
        if (view.Count() > 0 && *largest >= m_desk.size()) {
            m_reading.file.Refuse(where, "vertex " + std::to_string(*largest) + " is named, there are " +
                                             Counted(m_desk.size(), "vertex", "vertices"));
        }
    }

    [[nodiscard]] AccessorView DecodedCorners() const
    {
        Accessor corners;
        corners.type = ComponentType::UInt32;
        corners.count = m_decoded->count;
        return {corners, m_decoded->bytes};
    }

    void Add(std::uint32_t a, std::uint32_t b, std::uint32_t c)
    {
        m_triangles.insert(m_triangles.end(), {m_desk[a], m_desk[b], m_desk[c]});
    }

    // Strips are stitched together with triangles that name a vertex twice; those are no polygons.
    void AddUnlessStitch(std::uint32_t a, std::uint32_t b, std::uint32_t c)
    {
        if (a != b && b != c && a != c) {
            Add(a, b, c);
        }
    }

    // A list is decoded where it will stay: it may be as large as all the rest of the file.
    void ReadList()
    {
        const std::size_t before = m_triangles.size();
        AppendCorners(m_triangles);
        const std::size_t corners = m_triangles.size() - before;
        if (corners % 3 != 0) {
            m_reading.warnings.Add(m_primitive, std::to_string(corners) +
                                                    " corners are no multiple of three; the last are left out");
            m_triangles.resize(m_triangles.size() - corners % 3);
        }
        for (std::size_t i = before; i < m_triangles.size(); ++i) {
            m_triangles[i] = m_desk[static_cast<std::size_t>(m_triangles[i])];
        }
    }

    void ReadStrip(const std::vector<std::uint32_t>& corners)
    {
        for (std::size_t i = 0; i + 2 < corners.size(); ++i) {
            // Every second triangle of a strip is wound the other way round.
            AddUnlessStitch(corners[i], corners[i + 1 + i % 2], corners[i + 2 - i % 2]);
        }
    }

    void ReadFan(const std::vector<std::uint32_t>& corners)
    {
        for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
            AddUnlessStitch(corners[i], corners[i + 1], corners[0]);
        }
    }

    Reading& m_reading;
    JsonValue m_primitive;
    const std::vector<std::int32_t>& m_desk;
    std::vector<std::int32_t>& m_triangles;
    const DecodedArray* m_decoded; // the corners of a compressed primitive
};

// Vertices of all distinct attribute sets of a mesh, as far as their counts can be believed before they are checked.
std::size_t ExpectedVertices(Reading& reading, const std::vector<JsonValue>& primitives)
{
    std::map<int, std::size_t> counts;
    const std::size_t accessors = reading.file.List("accessors").size();
    for (const JsonValue p : primitives) {
        const JsonValue position = reading.json.Member(reading.json.Member(p, "attributes"), "POSITION");
        if (position != JSON_NONE) {
            const int index = reading.file.Index(position, accessors, "accessors");
            counts.try_emplace(index, 0);
        }
    }
    std::size_t sum = 0;
    for (auto& [index, count] : counts) {
        // A position has at least four bytes, or none at all; a count beyond this is not believed yet.
        sum += std::min(DescribeAccessor(reading.file, index).count, reading.file.TotalBytes() / 4);
    }
    return std::min(sum, reading.file.TotalBytes() / 4);
}

void ReadPrimitives(Reading& reading, const std::vector<JsonValue>& primitives, std::size_t meshIndex, Mesh& mesh)
{
    SeamJoin join(mesh, ExpectedVertices(reading, primitives), true);
    std::map<std::vector<int>, int> known;
    for (const JsonValue v : primitives) {
        reading.GiveUpIfStopped();
        const AttributeReader attributes(reading, v, mesh.morphTargets.size());
        const auto [entry, isNew] = known.try_emplace(attributes.Key(), static_cast<int>(mesh.vertexMaps.size()));
        if (isNew) {
            mesh.vertexMaps.push_back(join.Add(attributes.View()));
        }
        mesh.influenceSets = std::max(mesh.influenceSets, static_cast<int>(attributes.Sets()));
        Primitive primitive;
        primitive.vertexMap = entry->second;
        primitive.material = reading.file.IndexOr(v, "material", "materials", -1);
        primitive.firstTriangle = mesh.triangles.size() / 3;
        TriangleReader(reading, v, mesh.vertexMaps[static_cast<std::size_t>(primitive.vertexMap)].deskVertices,
                       mesh.triangles)
            .Read();
        primitive.triangleCount = mesh.triangles.size() / 3 - primitive.firstTriangle;
        mesh.primitives.push_back(primitive);
    }
    join.Finish();
    reading.jointLimits[meshIndex] = join.JointLimit();
    reading.oddWeights[meshIndex] = join.Odd();
}

void ReadMesh(Reading& reading, JsonValue v, std::size_t index, Mesh& mesh)
{
    const OpenedFile& file = reading.file;
    mesh.name = file.TextOr(file.Object(v), "name", "");
    const std::vector<JsonValue> primitives = file.Array(reading.json.Member(v, "primitives"));
    mesh.morphWeights = file.Numbers(reading.json.Member(v, "weights"));
    if (ReadNurbsSurface(reading, v, index, mesh)) {
        return;
    }
    if (!primitives.empty()) {
        mesh.morphTargets.resize(file.Array(reading.json.Member(primitives[0], "targets")).size());
    }
    const JsonValue names = reading.json.Member(reading.json.Member(v, "extras"), "targetNames");
    if (reading.json.Is(names, JsonKind::Array)) {
        for (const JsonValue name : file.Array(names)) {
            mesh.morphNames.push_back(reading.json.Is(name, JsonKind::String) ? file.Text(name) : "");
        }
    }
    ReadPrimitives(reading, primitives, index, mesh);
}

} // namespace

AttributeAccessors FindAttributes(const OpenedFile& file, JsonValue attributes, WarningList* warnings)
{
    const JsonPlaces& json = file.Json();
    AttributeAccessors found;
    if (attributes == JSON_NONE) {
        return found;
    }
    found.object = file.Object(attributes);
    found.position = json.Member(attributes, "POSITION");
    found.normal = json.Member(attributes, "NORMAL");
    for (int set = 0;; ++set) {
        const JsonValue joints = json.Member(attributes, "JOINTS_" + std::to_string(set));
        const JsonValue weights = json.Member(attributes, "WEIGHTS_" + std::to_string(set));
        if (joints != JSON_NONE && weights != JSON_NONE) {
            found.joints.push_back(joints);
            found.weights.push_back(weights);
            continue;
        }
        if (warnings != nullptr && (joints != JSON_NONE || weights != JSON_NONE)) {
            warnings->Add(joints != JSON_NONE ? joints : weights, joints != JSON_NONE
                                                                      ? "joints without weights are left out"
                                                                      : "weights without joints are left out");
        }
        return found;
    }
}

std::vector<InfluenceSet> ViewInfluences(const OpenedFile& file, const AttributeAccessors& attributes,
                                         std::size_t count, DecodeBudget& budget)
{
    std::vector<InfluenceSet> sets;
    for (std::size_t s = 0; s < attributes.joints.size(); ++s) {
        InfluenceSet set{ViewAt(file, attributes.joints[s], "VEC4", budget),
                         ViewAt(file, attributes.weights[s], "VEC4", budget)};
        if (!IsUnsigned(set.joints.Type())) {
            file.Refuse(attributes.joints[s], "joints have no unsigned component type");
        }
        CheckCount(file, attributes.joints[s], "JOINTS", set.joints.Count(), count);
        CheckCount(file, attributes.weights[s], "WEIGHTS", set.weights.Count(), count);
        sets.push_back(std::move(set));
    }
    return sets;
}

void ReadTriangles(Reading& reading, JsonValue primitive, const std::vector<std::int32_t>& vertices,
                   std::vector<std::int32_t>& triangles)
{
    TriangleReader(reading, primitive, vertices, triangles).Read();
}

void ReadMeshes(Reading& reading)
{
    const std::vector<JsonValue>& values = reading.file.List("meshes");
    reading.into.meshes.resize(values.size());
    reading.jointLimits.resize(values.size());
    reading.oddWeights.resize(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        ReadMesh(reading, values[i], i, reading.into.meshes[i]);
    }
}

} // namespace skindesk::gltf
