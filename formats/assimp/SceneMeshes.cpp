// SPDX-License-Identifier: MIT
// Meshes and skins. The library splits what one node shows by material; here it becomes one mesh again.
#include "SceneParts.h"

#include "import/NewCharacter.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace skindesk::assimp {

namespace {

// Bind matrices of one bone in several parts of a mesh agree within this share of their largest number.
constexpr double MATRIX_TOLERANCE = 1e-4;

bool AreAlike(const aiMatrix4x4& a, const aiMatrix4x4& b)
{
    const auto left = ListedMatrix(a);
    const auto right = ListedMatrix(b);
    double largest = 0;
    double off = 0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        largest = std::max(largest, std::abs(left[i]));
        off = std::max(off, std::abs(left[i] - right[i]));
    }
    return off <= MATRIX_TOLERANCE * largest;
}

// Parts that become one mesh: all without bones, or all with bones that agree on their bind matrices.
struct Group
{
    std::vector<unsigned> parts;                // of the scene's meshes
    std::map<std::string, const aiBone*> bones; // by name
    bool isSkinned = false;

    [[nodiscard]] bool Takes(const aiMesh& mesh) const
    {
        if (mesh.HasBones() != isSkinned) {
            return false;
        }
        for (unsigned b = 0; b < mesh.mNumBones; ++b) {
            const auto same = bones.find(mesh.mBones[b]->mName.C_Str());
            if (same != bones.end() && !AreAlike(same->second->mOffsetMatrix, mesh.mBones[b]->mOffsetMatrix)) {
                return false;
            }
        }
        return true;
    }

    void Add(unsigned index, const aiMesh& mesh)
    {
        parts.push_back(index);
        isSkinned = mesh.HasBones();
        for (unsigned b = 0; b < mesh.mNumBones; ++b) {
            bones.try_emplace(mesh.mBones[b]->mName.C_Str(), mesh.mBones[b]);
        }
    }
};

// What a group became; nodes that show the same parts share it.
struct Shown
{
    int mesh = -1;
    int skin = -1;
};

// Fills one mesh from the parts of a group.
class MeshFiller
{
public:
    MeshFiller(SceneParts& parts, const Group& group, imports::NewMesh& mesh, imports::NewSkin& skin)
        : m_parts(parts), m_group(group), m_mesh(mesh), m_skin(skin)
    {
        m_hasNormals = All([](const aiMesh& part) { return part.HasNormals(); });
        m_hasTexCoords = All([](const aiMesh& part) { return part.HasTextureCoords(0); });
    }

    void Run()
    {
        m_mesh.name = Part(0).mName.C_Str();
        FindJoints();
        MakeMorphTargets();
        for (std::size_t p = 0; p < m_group.parts.size(); ++p) {
            const std::size_t first = m_mesh.positions.size() / 3;
            AppendVertices(Part(p));
            AppendTriangles(Part(p), first);
            AppendMorphs(Part(p));
            AppendInfluences(Part(p));
            CountLosses(Part(p));
        }
    }

private:
    [[nodiscard]] const aiMesh& Part(std::size_t p) const { return *m_parts.scene.mMeshes[m_group.parts[p]]; }

    template <class Test> [[nodiscard]] bool All(Test test) const
    {
        return std::all_of(m_group.parts.begin(), m_group.parts.end(),
                           [&](unsigned index) { return test(*m_parts.scene.mMeshes[index]); });
    }

    // Joints in the order in which the file names its bones.
    void FindJoints()
    {
        for (std::size_t p = 0; p < m_group.parts.size(); ++p) {
            for (unsigned b = 0; b < Part(p).mNumBones; ++b) {
                const aiBone& bone = *Part(p).mBones[b];
                const std::string name = bone.mName.C_Str();
                const auto [entry, isNew] = m_joints.try_emplace(name, -1);
                const auto node = m_parts.byName.find(name);
                if (!isNew) {
                    continue;
                }
                if (node == m_parts.byName.end()) {
                    ++m_parts.losses.bonesWithoutNode;
                    continue;
                }
                m_parts.losses.bonesOfSharedName += m_parts.sameName[name] > 1 ? 1 : 0;
                entry->second = static_cast<int>(m_skin.joints.size());
                m_skin.joints.push_back(node->second);
                m_skin.inverseBindMatrices.push_back(ListedMatrix(bone.mOffsetMatrix));
            }
        }
    }

    void AppendVertices(const aiMesh& part)
    {
        for (unsigned v = 0; v < part.mNumVertices; ++v) {
            const aiVector3D& place = part.mVertices[v];
            m_mesh.positions.insert(m_mesh.positions.end(), {place.x, place.y, place.z});
            if (m_hasNormals) {
                const aiVector3D& normal = part.mNormals[v];
                m_mesh.normals.insert(m_mesh.normals.end(), {normal.x, normal.y, normal.z});
            }
            if (m_hasTexCoords) {
                const aiVector3D& at = part.mTextureCoords[0][v];
                m_mesh.texCoords.insert(m_mesh.texCoords.end(), {at.x, 1 - at.y});
            }
        }
    }

    void AppendTriangles(const aiMesh& part, std::size_t first)
    {
        imports::NewTriangles triangles;
        triangles.material =
            part.mMaterialIndex < m_parts.scene.mNumMaterials ? static_cast<int>(part.mMaterialIndex) : -1;
        for (unsigned f = 0; f < part.mNumFaces; ++f) {
            const aiFace& face = part.mFaces[f];
            const bool isTriangle = face.mNumIndices == 3 && std::all_of(face.mIndices, face.mIndices + 3,
                                                                         [&](auto i) { return i < part.mNumVertices; });
            if (!isTriangle) {
                ++m_parts.losses.pointsAndLines;
                continue;
            }
            for (unsigned c = 0; c < 3; ++c) {
                triangles.corners.push_back(static_cast<std::uint32_t>(first + face.mIndices[c]));
            }
        }
        if (!triangles.corners.empty()) {
            m_mesh.triangles.push_back(std::move(triangles));
        }
    }

    void MakeMorphTargets()
    {
        for (std::size_t p = 0; p < m_group.parts.size(); ++p) {
            for (unsigned t = 0; t < Part(p).mNumAnimMeshes; ++t) {
                if (t >= m_mesh.morphTargets.size()) {
                    m_mesh.morphTargets.emplace_back().name = Part(p).mAnimMeshes[t]->mName.C_Str();
                }
            }
        }
    }

    void AppendMorphs(const aiMesh& part)
    {
        for (std::size_t t = 0; t < m_mesh.morphTargets.size(); ++t) {
            std::vector<float>& positions = m_mesh.morphTargets[t].positions;
            const aiAnimMesh* target = t < part.mNumAnimMeshes ? part.mAnimMeshes[t] : nullptr;
            const bool moves = target != nullptr && target->HasPositions() && target->mNumVertices == part.mNumVertices;
            for (unsigned v = 0; v < part.mNumVertices; ++v) {
                const aiVector3D by = moves ? target->mVertices[v] - part.mVertices[v] : aiVector3D();
                positions.insert(positions.end(), {by.x, by.y, by.z});
            }
        }
    }

    // The library lists vertices by bone; counted first, so that each row is filled in its place.
    void AppendInfluences(const aiMesh& part)
    {
        if (!m_group.isSkinned) {
            return;
        }
        std::vector<std::uint32_t> next(part.mNumVertices + std::size_t{1}, 0);
        ForEachWeight(part, [&](std::uint32_t vertex, std::uint32_t, float) { ++next[vertex + std::size_t{1}]; });
        std::vector<std::uint32_t>& offsets = m_mesh.influenceOffsets;
        if (offsets.empty()) {
            offsets.push_back(0);
        }
        next[0] = offsets.back();
        for (unsigned v = 0; v < part.mNumVertices; ++v) {
            next[v + std::size_t{1}] += next[v];
            offsets.push_back(next[v + std::size_t{1}]);
        }
        m_mesh.influenceJoints.resize(offsets.back());
        m_mesh.influenceWeights.resize(offsets.back());
        ForEachWeight(part, [&](std::uint32_t vertex, std::uint32_t joint, float weight) {
            const std::uint32_t at = next[vertex]++;
            m_mesh.influenceJoints[at] = joint;
            m_mesh.influenceWeights[at] = weight;
        });
    }

    template <class Visit> void ForEachWeight(const aiMesh& part, Visit visit) const
    {
        for (unsigned b = 0; b < part.mNumBones; ++b) {
            const aiBone& bone = *part.mBones[b];
            const int joint = m_joints.at(bone.mName.C_Str());
            for (unsigned w = 0; joint >= 0 && w < bone.mNumWeights; ++w) {
                if (bone.mWeights[w].mVertexId < part.mNumVertices) {
                    visit(bone.mWeights[w].mVertexId, static_cast<std::uint32_t>(joint), bone.mWeights[w].mWeight);
                }
            }
        }
    }

    void CountLosses(const aiMesh& part) const
    {
        m_parts.losses.colourSets += part.GetNumColorChannels();
        const unsigned texCoords = part.GetNumUVChannels();
        m_parts.losses.moreTexCoords += texCoords > 1 ? texCoords - 1 : 0;
    }

    SceneParts& m_parts;
    const Group& m_group;
    imports::NewMesh& m_mesh;
    imports::NewSkin& m_skin;
    bool m_hasNormals = false;
    bool m_hasTexCoords = false;
    std::map<std::string, int> m_joints; // by bone name; -1 without a node
};

class MeshImport
{
public:
    explicit MeshImport(SceneParts& parts) : m_parts(parts) {}

    void Run()
    {
        // Nodes are added behind the others, so those of the file are known first.
        std::vector<std::pair<int, const aiNode*>> showing;
        for (const auto& [node, index] : m_parts.nodes) {
            if (node->mNumMeshes > 0) {
                showing.emplace_back(index, node);
            }
        }
        std::sort(showing.begin(), showing.end());
        for (const auto& [index, node] : showing) {
            ShowAt(index, *node);
        }
    }

private:
    // The first group is shown by the node itself, each further one by a node below it.
    void ShowAt(int index, const aiNode& node)
    {
        const std::vector<Group> groups = GroupsOf(node);
        for (std::size_t g = 0; g < groups.size(); ++g) {
            const Shown shown = Import(groups[g]);
            int target = index;
            if (g > 0) {
                target = static_cast<int>(m_parts.into.nodes.size());
                imports::NewNode& below = m_parts.into.nodes.emplace_back();
                below.name = m_parts.into.meshes[static_cast<std::size_t>(shown.mesh)].name;
                below.parent = index;
            }
            m_parts.into.nodes[static_cast<std::size_t>(target)].mesh = shown.mesh;
            m_parts.into.nodes[static_cast<std::size_t>(target)].skin = shown.skin;
        }
    }

    [[nodiscard]] std::vector<Group> GroupsOf(const aiNode& node) const
    {
        std::vector<Group> groups;
        for (unsigned m = 0; m < node.mNumMeshes; ++m) {
            const unsigned index = node.mMeshes[m];
            if (index >= m_parts.scene.mNumMeshes) {
                continue;
            }
            const aiMesh& mesh = *m_parts.scene.mMeshes[index];
            auto group = std::find_if(groups.begin(), groups.end(), [&](const Group& g) { return g.Takes(mesh); });
            if (group == groups.end()) {
                group = groups.emplace(groups.end());
            }
            group->Add(index, mesh);
        }
        return groups;
    }

    Shown Import(const Group& group)
    {
        const auto [known, isNew] = m_known.try_emplace(group.parts);
        if (!isNew) {
            return known->second;
        }
        imports::NewMesh mesh;
        imports::NewSkin skin;
        MeshFiller(m_parts, group, mesh, skin).Run();
        known->second.mesh = static_cast<int>(m_parts.into.meshes.size());
        m_parts.into.meshes.push_back(std::move(mesh));
        if (!skin.joints.empty()) {
            known->second.skin = SkinFor(std::move(skin));
        }
        return known->second;
    }

    // Meshes that hang on the same bones in the same way share a skin.
    int SkinFor(imports::NewSkin skin)
    {
        const auto next = static_cast<int>(m_parts.into.skins.size());
        const auto [known, isNew] = m_skins.try_emplace({skin.joints, skin.inverseBindMatrices}, next);
        if (isNew) {
            m_parts.into.skins.push_back(std::move(skin));
        }
        return known->second;
    }

    SceneParts& m_parts;
    std::map<std::vector<unsigned>, Shown> m_known;
    std::map<std::pair<std::vector<int>, std::vector<std::array<double, 16>>>, int> m_skins;
};

} // namespace

void ImportMeshes(SceneParts& parts) { MeshImport(parts).Run(); }

} // namespace skindesk::assimp
