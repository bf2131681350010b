// SPDX-License-Identifier: MIT
// From the weights of the desk to a saved file: which mesh entries change, and what goes where.
#include "Decoding.h"
#include "NurbsStandIn.h"
#include "SaveFiles.h"
#include "WeightSets.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <stdexcept>

namespace skindesk::gltf {

namespace {

constexpr int STAND_IN_INFLUENCES = 4;

// What the caller handed in, checked and found by node and by skin.
class Edits
{
public:
    Edits(const CharacterFile& opened, const CharacterEdits& edits)
    {
        for (const ModelWeights& model : edits.models) {
            const bool isModel = model.node >= 0 && static_cast<std::size_t>(model.node) < opened.nodes.size() &&
                                 opened.nodes[static_cast<std::size_t>(model.node)].skin >= 0;
            if (!isModel || !m_models.try_emplace(model.node, &model).second) {
                throw std::invalid_argument("weights are given for node " + std::to_string(model.node) +
                                            (isModel ? " twice" : ", which shows no skinned mesh"));
            }
        }
        for (const AddedJoint& joint : edits.addedJoints) {
            if (joint.skin < 0 || static_cast<std::size_t>(joint.skin) >= opened.skins.size() || joint.node < 0 ||
                static_cast<std::size_t>(joint.node) >= opened.nodes.size()) {
                throw std::invalid_argument("node " + std::to_string(joint.node) + " cannot become a joint of skin " +
                                            std::to_string(joint.skin));
            }
            m_joints[joint.skin].push_back(&joint);
        }
    }

    [[nodiscard]] const ModelWeights* WeightsOf(int node) const
    {
        const auto found = m_models.find(node);
        return found == m_models.end() ? nullptr : found->second;
    }

    void ForgetWeights() { m_models.clear(); }

    [[nodiscard]] const std::map<int, std::vector<const AddedJoint*>>& AddedJoints() const { return m_joints; }

    [[nodiscard]] std::size_t JointCount(const CharacterFile& opened, int skin) const
    {
        const auto found = m_joints.find(skin);
        return opened.skins[static_cast<std::size_t>(skin)].joints.size() +
               (found == m_joints.end() ? 0 : found->second.size());
    }

private:
    std::map<int, const ModelWeights*> m_models;
    std::map<int, std::vector<const AddedJoint*>> m_joints;
};

int CheckedLimit(const std::optional<int>& maxInfluences)
{
    if (maxInfluences && *maxInfluences < 1) {
        throw std::invalid_argument("at most " + std::to_string(*maxInfluences) +
                                    " influences are asked for, a vertex needs at least one");
    }
    return maxInfluences.value_or(0);
}

// The nodes that show one mesh with the same weights.
struct MeshGroup
{
    std::vector<int> nodes;
    WeightRows rows;
};

class CharacterWriter
{
public:
    CharacterWriter(const CharacterFile& opened, CharacterEdits& edits, const SaveOptions& options)
        : m_opened(opened), m_file(*opened.source), m_given(edits), m_edits(opened, edits), m_options(options),
          m_limit(CheckedLimit(options.maxInfluences)), m_rewrite(m_file)
    {
        m_setOptions.keepTypes = options.keepTypes;
        m_setOptions.mostSets = (m_limit + 3) / 4;
    }

    SaveReport Save(const std::string& path)
    {
        CheckExtension(m_file, path);
        std::map<int, std::vector<MeshGroup>> groups = GroupNodes();
        // What changed stands in the rows now. Of a large character, these are tens of megabytes.
        m_edits.ForgetWeights();
        m_given.models = {};
        if (!groups.empty()) {
            m_shared.emplace(m_file);
        }
        for (auto& [mesh, variants] : groups) {
            WriteMesh(mesh, variants);
            variants = {};
        }
        for (const auto& [skin, joints] : m_edits.AddedJoints()) {
            AddJoints(skin, joints);
        }
        AddWarnings();
        const RewrittenFile& rewritten = m_rewrite.Finish(std::filesystem::path(path).stem().string());
        SaveFiles(m_file, m_opened.images, rewritten, path, m_options.stop, m_report.warnings);
        DescribeSavedFile(rewritten, path);
        return m_report;
    }

private:
    [[nodiscard]] const Mesh& MeshOf(int mesh) const { return m_opened.meshes[static_cast<std::size_t>(mesh)]; }

    [[nodiscard]] WeightRows RowsOf(int node)
    {
        const Node& record = m_opened.nodes[static_cast<std::size_t>(node)];
        const Mesh& mesh = MeshOf(record.mesh);
        const ModelWeights* weights = m_edits.WeightsOf(node);
        if (weights == nullptr && m_limit == 0 && !mesh.nurbs) {
            return {};
        }
        RowRules rules;
        rules.limit = m_limit;
        rules.tieSeams = m_options.tieSeams;
        rules.renormalise = m_options.renormalise;
        rules.allRows = m_limit > 0 && mesh.influenceSets > m_setOptions.mostSets;
        return MakeWeightRows(mesh, weights, m_edits.JointCount(m_opened, record.skin), rules, m_counts);
    }

    // By mesh: the variants of it that are wanted. Only meshes of which something is to be written.
    std::map<int, std::vector<MeshGroup>> GroupNodes()
    {
        std::map<int, std::vector<MeshGroup>> groups;
        for (std::size_t n = 0; n < m_opened.nodes.size(); ++n) {
            const Node& node = m_opened.nodes[n];
            if (node.skin < 0) {
                continue;
            }
            WeightRows rows = RowsOf(static_cast<int>(n));
            std::vector<MeshGroup>& variants = groups[node.mesh];
            const auto same =
                std::find_if(variants.begin(), variants.end(), [&rows](const MeshGroup& g) { return g.rows == rows; });
            if (same != variants.end()) {
                same->nodes.push_back(static_cast<int>(n));
            } else {
                variants.push_back({{static_cast<int>(n)}, std::move(rows)});
            }
        }
        std::erase_if(
            groups, [](const auto& entry) { return entry.second.size() == 1 && entry.second.front().rows.IsEmpty(); });
        return groups;
    }

    // The first variant stays with the mesh entry; each further one gets a copy of it behind the others.
    void WriteMesh(int mesh, const std::vector<MeshGroup>& variants)
    {
        const JsonValue value = m_file.List("meshes")[static_cast<std::size_t>(mesh)];
        for (std::size_t i = 0; i < variants.size(); ++i) {
            if (i == 0) {
                WriteVariant(m_rewrite.Json(), mesh, variants[i].rows, variants.size() == 1);
                continue;
            }
            JsonSplice copy(m_file.Json());
            WriteVariant(copy, mesh, variants[i].rows, false);
            const std::string index = std::to_string(m_rewrite.AddMesh(copy.Render(value)));
            for (const int node : variants[i].nodes) {
                const JsonValue nodeValue = m_file.List("nodes")[static_cast<std::size_t>(node)];
                m_rewrite.Json().Replace(m_file.Json().Member(nodeValue, "mesh"), index);
            }
        }
    }

    void WriteVariant(JsonSplice& splice, int mesh, const WeightRows& rows, bool mayOverwrite)
    {
        if (rows.IsEmpty()) {
            return;
        }
        const JsonValue value = m_file.List("meshes")[static_cast<std::size_t>(mesh)];
        if (MeshOf(mesh).nurbs) {
            WriteSurface(splice, mesh, value, rows, mayOverwrite);
            return;
        }
        for (WeightTarget& target : TargetsOf(mesh, value)) {
            target.mayOverwrite = mayOverwrite;
            m_uncompressed += WriteWeightSets(m_rewrite, *m_shared, splice, target, rows, m_setOptions);
        }
    }

    [[nodiscard]] int AccessorAt(JsonValue v) const
    {
        return m_file.Index(v, m_file.List("accessors").size(), "accessors");
    }

    // Primitives with the same joints and weights on the same desk vertices are written once.
    [[nodiscard]] std::vector<WeightTarget> TargetsOf(int mesh, JsonValue value) const
    {
        std::vector<WeightTarget> targets;
        std::multimap<std::vector<int>, std::size_t> known;
        const std::vector<JsonValue> primitives = m_file.Array(m_file.Json().Member(value, "primitives"));
        for (std::size_t p = 0; p < primitives.size(); ++p) {
            const JsonValue attributes = m_file.Json().Member(primitives[p], "attributes");
            AttributeAccessors accessors = FindAttributes(m_file, attributes, nullptr);
            const std::span<const std::int32_t> vertices = MeshOf(mesh).FileVertices(p);
            if (vertices.empty()) {
                continue;
            }
            std::vector<int> key;
            for (std::size_t s = 0; s < accessors.joints.size(); ++s) {
                key.insert(key.end(), {AccessorAt(accessors.joints[s]), AccessorAt(accessors.weights[s])});
            }
            auto [at, end] = known.equal_range(key);
            while (at != end && !std::ranges::equal(targets[at->second].deskVertices, vertices)) {
                ++at;
            }
            if (at != end) {
                targets[at->second].attributeObjects.push_back(attributes);
                targets[at->second].compressedObjects.push_back(CompressedNames(primitives[p]));
                continue;
            }
            known.emplace(std::move(key), targets.size());
            targets.push_back({{attributes},
                               {CompressedNames(primitives[p])},
                               std::move(accessors),
                               vertices.size(),
                               vertices,
                               false});
        }
        return targets;
    }

    // Which attributes of a primitive are compressed, by name; none in a plain one.
    [[nodiscard]] JsonValue CompressedNames(JsonValue primitive) const
    {
        return m_file.Json().Member(DracoExtensionOf(m_file, primitive), "attributes");
    }

    void WriteSurface(JsonSplice& splice, int mesh, JsonValue value, const WeightRows& rows, bool mayOverwrite)
    {
        const JsonValue extension = NurbsExtensionOf(m_file, value);
        const JsonValue pointAttributes = m_file.Json().Member(extension, "attributes");
        const WeightTarget points{
            {pointAttributes},          {JSON_NONE}, FindAttributes(m_file, pointAttributes, nullptr),
            MeshOf(mesh).VertexCount(), {},          mayOverwrite};
        m_uncompressed += WriteWeightSets(m_rewrite, *m_shared, splice, points, rows, m_setOptions);

        const int most = m_limit == 0 ? STAND_IN_INFLUENCES : std::min(m_limit, STAND_IN_INFLUENCES);
        const WeightRows standInRows = MakeStandInRows(MeshOf(mesh), rows, most);
        const JsonValue primitive = m_file.Array(m_file.Json().Member(value, "primitives")).front();
        const JsonValue attributes = m_file.Json().Member(primitive, "attributes");
        const WeightTarget standIn{{attributes},
                                   {CompressedNames(primitive)},
                                   FindAttributes(m_file, attributes, nullptr),
                                   standInRows.rowOf.size(),
                                   {},
                                   mayOverwrite};
        m_uncompressed += WriteWeightSets(m_rewrite, *m_shared, splice, standIn, standInRows, m_setOptions);
    }

    void AddJoints(int skinIndex, const std::vector<const AddedJoint*>& added)
    {
        const Skin& skin = m_opened.skins[static_cast<std::size_t>(skinIndex)];
        const JsonValue value = m_file.List("skins")[static_cast<std::size_t>(skinIndex)];
        const JsonValue joints = m_file.Json().Member(value, "joints");
        const JsonValue matrices = m_file.Json().Member(value, "inverseBindMatrices");
        constexpr AddedJoint PLAIN;
        bool areNeeded = matrices != JSON_NONE;
        NewAccessor fresh;
        for (const auto& matrix : skin.inverseBindMatrices) {
            AppendMatrix(matrix, fresh.bytes);
        }
        std::string first;
        for (const AddedJoint* joint : added) {
            if (joints != JSON_NONE) {
                m_rewrite.Json().AppendElement(joints, std::to_string(joint->node));
            }
            first += (first.empty() ? "[" : ",") + std::to_string(joint->node);
            AppendMatrix(joint->inverseBindMatrix, fresh.bytes);
            areNeeded |= joint->inverseBindMatrix != PLAIN.inverseBindMatrix;
        }
        if (joints == JSON_NONE) {
            m_rewrite.Json().AppendMember(value, "joints", first + "]");
        }
        if (!areNeeded) {
            return; // a skin without matrices has identities
        }
        fresh.count = skin.joints.size() + added.size();
        fresh.shape = "MAT4";
        fresh.isVertexData = false;
        const std::string index = std::to_string(m_rewrite.AddAccessor(fresh));
        if (matrices == JSON_NONE) {
            m_rewrite.Json().AppendMember(value, "inverseBindMatrices", index);
        } else {
            m_rewrite.Json().Replace(matrices, index);
        }
    }

    static void AppendMatrix(const std::array<double, 16>& matrix, std::vector<std::uint8_t>& bytes)
    {
        for (const double x : matrix) {
            const auto single = static_cast<float>(x);
            const auto* raw = reinterpret_cast<const std::uint8_t*>(&single);
            bytes.insert(bytes.end(), raw, raw + sizeof single);
        }
    }

    void AddWarnings()
    {
        m_report.verticesChanged = m_counts.changed;
        m_report.verticesLimited = m_counts.limited;
        m_report.weightDropped = m_counts.dropped;
        if (m_counts.weightless > 0) {
            m_report.warnings.push_back(Counted(m_counts.weightless, "vertex has", "vertices have") +
                                        " no weight left and " + (m_counts.weightless == 1 ? "is" : "are") +
                                        " written as zeros");
        }
        if (m_uncompressed > 0) {
            m_report.warnings.push_back(
                Counted(m_uncompressed, "compressed primitive has", "compressed primitives have") +
                " changed weights; they are saved uncompressed, all else stays compressed");
        }
        if (m_counts.unequalSeams > 0) {
            m_report.warnings.push_back(
                Counted(m_counts.unequalSeams, "control point lies", "control points lie") +
                " at the place of another with other weights" +
                (m_options.tieSeams ? "; the weights of the first were taken" : ", so the seam can open"));
        }
    }

    void DescribeSavedFile(const RewrittenFile& rewritten, const std::string& path)
    {
        ContentHash hash;
        for (const ByteSpan piece : rewritten.pieces) {
            m_report.bytes += piece.size();
            hash.Add(piece);
        }
        m_report.stamp = QuickStamp(path);
        m_report.stamp.size = m_report.bytes;
        m_report.stamp.contentHash = hash.Value();
    }

    const CharacterFile& m_opened;
    const OpenedFile& m_file;
    CharacterEdits& m_given;
    Edits m_edits;
    const SaveOptions& m_options;
    int m_limit;
    FileRewrite m_rewrite;
    WeightSetOptions m_setOptions;
    std::optional<SharedBytes> m_shared;
    RowCounts m_counts;
    std::size_t m_uncompressed = 0; // primitives whose joints or weights were compressed and are plain now
    SaveReport m_report;
};

// Adds up what each joint of one model loses.
class DropTable : public DropListener
{
public:
    void Dropped(const Influence& influence) override
    {
        auto& [vertices, weight] = m_byJoint[influence.joint];
        ++vertices;
        weight += influence.weight;
    }

    void AppendTo(std::vector<LimitLine>& lines, int node) const
    {
        for (const auto& [joint, sum] : m_byJoint) {
            lines.push_back({node, joint, sum.first, sum.second});
        }
    }

private:
    std::map<std::uint32_t, std::pair<std::size_t, double>> m_byJoint;
};

} // namespace

SaveReport WriteCharacter(const CharacterFile& opened, CharacterEdits edits, const SaveOptions& options,
                          const std::string& path)
{
    return CharacterWriter(opened, edits, options).Save(path);
}

std::vector<LimitLine> LimitReport(const CharacterFile& opened, const CharacterEdits& edits, int maxInfluences)
{
    const Edits found(opened, edits);
    std::vector<LimitLine> lines;
    for (std::size_t n = 0; n < opened.nodes.size(); ++n) {
        const Node& node = opened.nodes[n];
        if (node.skin < 0) {
            continue;
        }
        DropTable table;
        RowRules rules;
        rules.limit = CheckedLimit(maxInfluences);
        rules.listener = &table;
        RowCounts counts;
        static_cast<void>(MakeWeightRows(opened.meshes[static_cast<std::size_t>(node.mesh)],
                                         found.WeightsOf(static_cast<int>(n)), found.JointCount(opened, node.skin),
                                         rules, counts));
        table.AppendTo(lines, static_cast<int>(n));
    }
    return lines;
}

} // namespace skindesk::gltf
