// SPDX-License-Identifier: MIT
// A new glTF file of the records of a character.
#include "CheckNewCharacter.h"
#include "NewGltfBytes.h"
#include "TessellateSurface.h"

#include "gltf/NurbsStandIn.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace skindesk::imports {

namespace {

constexpr int STAND_IN_INFLUENCES = 4;
constexpr const char* SURFACE_EXTENSION = "TW_nurbs_surface";

// Rows of influences, largest first, as they go into JOINTS_n and WEIGHTS_n.
struct InfluenceRows
{
    std::vector<std::uint32_t> offsets;
    std::vector<gltf::Influence> entries;

    [[nodiscard]] std::span<const gltf::Influence> Row(std::size_t vertex) const
    {
        return std::span(entries).subspan(offsets[vertex], offsets[vertex + 1] - offsets[vertex]);
    }
};

class Writer
{
public:
    Writer(const NewCharacter& character, const std::string& path) : m_new(character), m_path(path) {}

    std::vector<std::uint8_t> Write()
    {
        m_document["asset"] = {{"version", "2.0"}, {"generator", m_new.generator}};
        m_document["scene"] = 0;
        AddNodes();
        ChooseAllGrids();
        AddList("meshes", m_new.meshes, [this](const NewMesh& mesh) { return MeshJson(mesh); });
        AddList("skins", m_new.skins, [this](const NewSkin& skin) { return SkinJson(skin); });
        AddList("animations", m_new.animations, [this](const NewAnimation& a) { return AnimationJson(a); });
        AddList("materials", m_new.materials, MaterialJson);
        try {
            return m_bytes.FinishGlb(std::move(m_document));
        } catch (const std::length_error& error) {
            throw gltf::FileError(m_path, "", error.what());
        }
    }

private:
    template <typename T, typename Make> void AddList(const char* key, const std::vector<T>& records, Make make)
    {
        for (const T& record : records) {
            m_document[key].push_back(make(record));
        }
    }

    static Json Named(const std::string& name)
    {
        Json object = Json::object();
        if (!name.empty()) {
            object["name"] = name;
        }
        return object;
    }

    void AddNodes()
    {
        std::vector<std::vector<int>> children(m_new.nodes.size());
        Json roots = Json::array();
        for (std::size_t i = 0; i < m_new.nodes.size(); ++i) {
            const int parent = m_new.nodes[i].parent;
            if (parent < 0) {
                roots.push_back(i);
            } else {
                children[static_cast<std::size_t>(parent)].push_back(static_cast<int>(i));
            }
        }
        m_document["scenes"] = Json::array({{{"nodes", std::move(roots)}}});
        for (std::size_t i = 0; i < m_new.nodes.size(); ++i) {
            m_document["nodes"].push_back(NodeJson(m_new.nodes[i], children[i]));
        }
    }

    static Json NodeJson(const NewNode& node, const std::vector<int>& children)
    {
        constexpr std::array<double, 16> NONE{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        Json json = Named(node.name);
        if (!children.empty()) {
            json["children"] = children;
        }
        if (node.matrix && *node.matrix != NONE) {
            json["matrix"] = *node.matrix;
        }
        if (!node.matrix && node.translation != std::array<double, 3>{0, 0, 0}) {
            json["translation"] = node.translation;
        }
        if (!node.matrix && node.rotation != std::array<double, 4>{0, 0, 0, 1}) {
            json["rotation"] = node.rotation;
        }
        if (!node.matrix && node.scale != std::array<double, 3>{1, 1, 1}) {
            json["scale"] = node.scale;
        }
        if (node.mesh >= 0) {
            json["mesh"] = node.mesh;
        }
        if (node.skin >= 0) {
            json["skin"] = node.skin;
        }
        return json;
    }

    void ChooseAllGrids()
    {
        std::vector<const NewNurbsSurface*> surfaces;
        for (const NewMesh& mesh : m_new.meshes) {
            if (mesh.nurbs) {
                surfaces.push_back(&*mesh.nurbs);
            }
        }
        m_grids = ChooseGrids(surfaces);
    }

    Json MeshJson(const NewMesh& mesh)
    {
        Json json = Named(mesh.name);
        if (mesh.nurbs) {
            AddSurface(mesh, json);
            return json;
        }
        const Json attributes = AttributesJson(mesh);
        Json targets = Json::array();
        for (const NewMorphTarget& target : mesh.morphTargets) {
            targets.push_back({{"POSITION", m_bytes.AddFloats(target.positions, 3, ViewKind::Vertices, true)}});
        }
        const auto largest = static_cast<std::uint32_t>(mesh.positions.size() / 3 - 1);
        for (const NewTriangles& part : mesh.triangles) {
            if (!part.corners.empty()) {
                json["primitives"].push_back(PrimitiveJson(attributes, part, targets, largest));
            }
        }
        if (!json.contains("primitives")) {
            constexpr int POINTS = 0;
            json["primitives"] = Json::array({{{"attributes", attributes}, {"mode", POINTS}}});
            if (!targets.empty()) {
                json["primitives"][0]["targets"] = targets;
            }
        }
        AddTargetNames(mesh, json);
        return json;
    }

    static void AddTargetNames(const NewMesh& mesh, Json& json)
    {
        if (std::any_of(mesh.morphTargets.begin(), mesh.morphTargets.end(),
                        [](const NewMorphTarget& target) { return !target.name.empty(); })) {
            for (const NewMorphTarget& target : mesh.morphTargets) {
                json["extras"]["targetNames"].push_back(target.name);
            }
        }
    }

    Json PrimitiveJson(const Json& attributes, const NewTriangles& part, const Json& targets, std::uint32_t largest)
    {
        Json primitive{{"attributes", attributes},
                       {"indices", m_bytes.AddWholeNumbers(part.corners, 1, ViewKind::Corners, largest)}};
        if (part.material >= 0) {
            primitive["material"] = part.material;
        }
        if (!targets.empty()) {
            primitive["targets"] = targets;
        }
        return primitive;
    }

    Json AttributesJson(const NewMesh& mesh)
    {
        Json attributes{{"POSITION", m_bytes.AddFloats(mesh.positions, 3, ViewKind::Vertices, true)}};
        if (!mesh.normals.empty()) {
            attributes["NORMAL"] = m_bytes.AddFloats(mesh.normals, 3, ViewKind::Vertices);
        }
        if (!mesh.texCoords.empty()) {
            attributes["TEXCOORD_0"] = m_bytes.AddFloats(mesh.texCoords, 2, ViewKind::Vertices);
        }
        if (!mesh.influenceOffsets.empty()) {
            AddInfluences(RowsOf(mesh), attributes);
        }
        return attributes;
    }

    static InfluenceRows RowsOf(const NewMesh& mesh)
    {
        InfluenceRows rows{mesh.influenceOffsets, {}};
        rows.entries.reserve(mesh.influenceJoints.size());
        for (std::size_t e = 0; e < mesh.influenceJoints.size(); ++e) {
            rows.entries.push_back({mesh.influenceJoints[e], mesh.influenceWeights[e]});
        }
        return rows;
    }

    // As many sets of four as the vertex with the most influences needs, one at least.
    void AddInfluences(const InfluenceRows& rows, Json& attributes)
    {
        const std::size_t vertices = rows.offsets.size() - 1;
        std::size_t most = 1;
        for (std::size_t v = 0; v < vertices; ++v) {
            most = std::max(most, rows.Row(v).size());
        }
        const std::size_t sets = (most + 3) / 4;
        std::vector<std::vector<std::uint32_t>> joints(sets, std::vector<std::uint32_t>(vertices * 4, 0));
        std::vector<std::vector<float>> weights(sets, std::vector<float>(vertices * 4, 0));
        std::uint32_t largest = 0;
        std::vector<float> rounded;
        for (std::size_t v = 0; v < vertices; ++v) {
            const std::span<const gltf::Influence> row = rows.Row(v);
            gltf::RoundToFloats(row, rounded);
            for (std::size_t i = 0; i < row.size(); ++i) {
                // A slot without weight names joint 0, as the format asks for.
                joints[i / 4][v * 4 + i % 4] = rounded[i] > 0 ? row[i].joint : 0;
                weights[i / 4][v * 4 + i % 4] = rounded[i];
                largest = std::max(largest, row[i].joint);
            }
        }
        for (std::size_t s = 0; s < sets; ++s) {
            attributes["JOINTS_" + std::to_string(s)] =
                m_bytes.AddWholeNumbers(joints[s], 4, ViewKind::Vertices, largest);
            attributes["WEIGHTS_" + std::to_string(s)] = m_bytes.AddFloats(weights[s], 4, ViewKind::Vertices);
        }
    }

    void AddSurface(const NewMesh& mesh, Json& json)
    {
        const NewNurbsSurface& surface = *mesh.nurbs;
        const Tessellation shape = Tessellate(surface, mesh.positions, m_grids[m_surfacesAdded++]);
        if (!std::all_of(shape.positions.begin(), shape.positions.end(), [](float x) { return std::isfinite(x); })) {
            throw gltf::FileError(m_path, "mesh \"" + mesh.name + "\"",
                                  "the surface leads farther away than a number can say");
        }
        Json pointAttributes{{"POSITION", m_bytes.AddFloats(mesh.positions, 3, ViewKind::Vertices, true)}};
        if (!surface.pointWeights.empty()) {
            const std::vector<float> weights(surface.pointWeights.begin(), surface.pointWeights.end());
            pointAttributes["POINT_WEIGHT"] = m_bytes.AddFloats(weights, 1, ViewKind::Vertices);
        }
        Json attributes{{"POSITION", m_bytes.AddFloats(shape.positions, 3, ViewKind::Vertices, true)},
                        {"NORMAL", m_bytes.AddFloats(shape.normals, 3, ViewKind::Vertices)}};
        if (!mesh.influenceOffsets.empty()) {
            AddInfluences(RowsOf(mesh), pointAttributes);
            AddInfluences(StandInRows(mesh, shape.grid), attributes);
        }
        const auto largest = static_cast<std::uint32_t>(shape.positions.size() / 3 - 1);
        json["primitives"].push_back(
            PrimitiveJson(attributes, {shape.corners, surface.material}, Json::array(), largest));
        json["extensions"][SURFACE_EXTENSION] = {{"degree", surface.degree},
                                                 {"count", surface.count},
                                                 {"knots", surface.knots},
                                                 {"grid", shape.grid},
                                                 {"attributes", std::move(pointAttributes)}};
        if (!m_document.contains("extensionsUsed")) {
            m_document["extensionsUsed"] = Json::array({SURFACE_EXTENSION});
        }
    }

    static InfluenceRows StandInRows(const NewMesh& mesh, const std::array<int, 2>& grid)
    {
        gltf::Mesh points;
        points.positions = mesh.positions;
        points.influences = {mesh.influenceOffsets, mesh.influenceJoints, mesh.influenceWeights};
        points.nurbs.emplace();
        points.nurbs->degree = mesh.nurbs->degree;
        points.nurbs->count = mesh.nurbs->count;
        points.nurbs->knots = mesh.nurbs->knots;
        points.nurbs->pointWeights = mesh.nurbs->pointWeights;
        points.nurbs->pointWeights.resize(mesh.positions.size() / 3, 1.0);
        points.nurbs->grid = grid;
        gltf::WeightRows made = gltf::MakeStandInRows(points, {}, STAND_IN_INFLUENCES);
        return {std::move(made.offsets), std::move(made.entries)};
    }

    Json SkinJson(const NewSkin& skin)
    {
        Json json = Named(skin.name);
        json["joints"] = skin.joints;
        if (!skin.inverseBindMatrices.empty()) {
            std::vector<float> numbers;
            for (const auto& matrix : skin.inverseBindMatrices) {
                numbers.insert(numbers.end(), matrix.begin(), matrix.end());
            }
            json["inverseBindMatrices"] = m_bytes.AddFloats(numbers, 16, ViewKind::Other);
        }
        return json;
    }

    Json AnimationJson(const NewAnimation& animation)
    {
        Json json = Named(animation.name);
        std::vector<std::pair<const std::vector<float>*, int>> inputs;
        for (const NewChannel& channel : animation.channels) {
            // Most channels of an animation have the times of the one before.
            if (inputs.empty() || *inputs.back().first != channel.times) {
                inputs.emplace_back(&channel.times, m_bytes.AddFloats(channel.times, 1, ViewKind::Other, true));
            }
            json["channels"].push_back({{"sampler", json.contains("samplers") ? json["samplers"].size() : 0},
                                        {"target", {{"node", channel.node}, {"path", PathOf(channel.property)}}}});
            json["samplers"].push_back(
                {{"input", inputs.back().second},
                 {"interpolation", NameOf(channel.interpolation)},
                 {"output", m_bytes.AddFloats(channel.values, WidthOf(channel.property), ViewKind::Other)}});
        }
        return json;
    }

    static const char* PathOf(gltf::AnimatedProperty property)
    {
        switch (property) {
        case gltf::AnimatedProperty::Translation:
            return "translation";
        case gltf::AnimatedProperty::Rotation:
            return "rotation";
        case gltf::AnimatedProperty::Scale:
            return "scale";
        default:
            return "weights";
        }
    }

    static std::size_t WidthOf(gltf::AnimatedProperty property)
    {
        if (property == gltf::AnimatedProperty::MorphWeights) {
            return 1;
        }
        return property == gltf::AnimatedProperty::Rotation ? 4 : 3;
    }

    static const char* NameOf(gltf::Interpolation interpolation)
    {
        switch (interpolation) {
        case gltf::Interpolation::Step:
            return "STEP";
        case gltf::Interpolation::CubicSpline:
            return "CUBICSPLINE";
        default:
            return "LINEAR";
        }
    }

    static Json MaterialJson(const NewMaterial& material)
    {
        Json json = Named(material.name);
        json["pbrMetallicRoughness"] = {{"baseColorFactor", material.baseColour}, {"metallicFactor", 0}};
        if (material.baseColour[3] < 1) {
            json["alphaMode"] = "BLEND";
        }
        if (material.doubleSided) {
            json["doubleSided"] = true;
        }
        return json;
    }

    const NewCharacter& m_new;
    const std::string& m_path;
    Json m_document;
    NewGltfBytes m_bytes;
    std::vector<std::array<int, 2>> m_grids; // by surface
    std::size_t m_surfacesAdded = 0;
};

} // namespace

std::vector<std::uint8_t> WriteGlb(NewCharacter& character, const std::string& path)
{
    CheckNewCharacter(character, path);
    MendNewCharacter(character);
    return Writer(character, path).Write();
}

} // namespace skindesk::imports
