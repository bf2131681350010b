// SPDX-License-Identifier: MIT
// Scenes that are put together in the test: what the library may hand over and files rarely hold.
#include "assimp/SceneParts.h"

#include <assimp/mesh.h>
#include <gmock/gmock.h>

#include <memory>

namespace skindesk::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::unique_ptr<aiMesh> MakeTriangle(const char* name)
{
    auto mesh = std::make_unique<aiMesh>();
    mesh->mName = name;
    mesh->mNumVertices = 3;
    mesh->mVertices = new aiVector3D[3]{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh->mNumFaces = 1;
    mesh->mFaces = new aiFace[1];
    mesh->mFaces[0].mNumIndices = 3;
    mesh->mFaces[0].mIndices = new unsigned[3]{0, 1, 2};
    return mesh;
}

// Hangs the whole triangle on the bone, with one weight more for a vertex that is not there.
void HangOn(aiMesh& mesh, const char* bone, float bindHeight)
{
    mesh.mNumBones = 1;
    mesh.mBones = new aiBone* [1] { new aiBone };
    mesh.mBones[0]->mName = bone;
    mesh.mBones[0]->mOffsetMatrix.b4 = bindHeight;
    mesh.mBones[0]->mNumWeights = 4;
    mesh.mBones[0]->mWeights = new aiVertexWeight[4]{{0, 1}, {1, 1}, {2, 1}, {77, 1}};
}

// A node "Shown" beside a node "Bone" below the root; the first shows all meshes.
class Scene
{
public:
    explicit Scene(std::vector<std::unique_ptr<aiMesh>> meshes)
    {
        m_scene.mNumMeshes = static_cast<unsigned>(meshes.size());
        m_scene.mMeshes = new aiMesh*[meshes.size()];
        auto* shown = new aiNode("Shown");
        shown->mNumMeshes = m_scene.mNumMeshes;
        shown->mMeshes = new unsigned[meshes.size()];
        for (std::size_t i = 0; i < meshes.size(); ++i) {
            m_scene.mMeshes[i] = meshes[i].release();
            shown->mMeshes[i] = static_cast<unsigned>(i);
        }
        m_scene.mRootNode = new aiNode("Root");
        std::array<aiNode*, 2> children{shown, new aiNode("Bone")};
        m_scene.mRootNode->addChildren(2, children.data());
    }

    assimp::Losses Import()
    {
        assimp::SceneParts parts{m_scene, character, {}, {}, {}, {}};
        assimp::ImportNodes(parts);
        assimp::ImportMeshes(parts);
        return parts.losses;
    }

    imports::NewCharacter character;
    aiScene m_scene;
};

std::vector<std::unique_ptr<aiMesh>> Listed(std::unique_ptr<aiMesh> first, std::unique_ptr<aiMesh> second = nullptr)
{
    std::vector<std::unique_ptr<aiMesh>> meshes;
    meshes.push_back(std::move(first));
    if (second != nullptr) {
        meshes.push_back(std::move(second));
    }
    return meshes;
}

TEST(SceneParts, MorphTargetsBecomeDisplacements)
{
    auto moving = MakeTriangle("moving");
    moving->mNumAnimMeshes = 1;
    moving->mAnimMeshes = new aiAnimMesh* [1] { new aiAnimMesh };
    moving->mAnimMeshes[0]->mName = "smile";
    moving->mAnimMeshes[0]->mNumVertices = 3;
    moving->mAnimMeshes[0]->mVertices = new aiVector3D[3]{{0, 0, 0}, {1, 2, 0}, {0, 1, -3}};
    Scene scene(Listed(std::move(moving), MakeTriangle("still")));
    scene.Import();
    ASSERT_EQ(scene.character.meshes.size(), 1u);
    ASSERT_EQ(scene.character.meshes[0].morphTargets.size(), 1u);
    EXPECT_EQ(scene.character.meshes[0].morphTargets[0].name, "smile");
    // The second part has no such target and stays where it is.
    EXPECT_THAT(scene.character.meshes[0].morphTargets[0].positions,
                ElementsAre(0, 0, 0, 0, 2, 0, 0, 0, -3, 0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(SceneParts, PartsThatAgreeOnTheirBindMatricesAreOneMesh)
{
    auto first = MakeTriangle("first");
    auto second = MakeTriangle("second");
    HangOn(*first, "Bone", -1);
    HangOn(*second, "Bone", -1);
    Scene scene(Listed(std::move(first), std::move(second)));
    scene.Import();
    ASSERT_EQ(scene.character.meshes.size(), 1u);
    EXPECT_THAT(scene.character.meshes[0].influenceOffsets, ElementsAre(0, 1, 2, 3, 4, 5, 6));
    EXPECT_EQ(scene.character.skins.size(), 1u);
    EXPECT_THAT(scene.character.meshes[0].triangles[1].corners, ElementsAre(3, 4, 5));
}

TEST(SceneParts, PartsThatDisagreeOnABindMatrixAreTwoMeshesBelowEachOther)
{
    auto first = MakeTriangle("first");
    auto second = MakeTriangle("second");
    HangOn(*first, "Bone", -1);
    HangOn(*second, "Bone", -2);
    Scene scene(Listed(std::move(first), std::move(second)));
    scene.Import();
    ASSERT_EQ(scene.character.meshes.size(), 2u);
    ASSERT_EQ(scene.character.skins.size(), 2u);
    const imports::NewNode& below = scene.character.nodes.back();
    EXPECT_EQ(below.name, "second");
    EXPECT_EQ(scene.character.nodes[static_cast<std::size_t>(below.parent)].name, "Shown");
    EXPECT_EQ(scene.character.skins[static_cast<std::size_t>(below.skin)].inverseBindMatrices[0][13], -2);
}

TEST(SceneParts, NumbersThatLeadNowhereAreLeftOut)
{
    auto mesh = MakeTriangle("mesh");
    HangOn(*mesh, "Bone", 0);
    mesh->mFaces[0].mIndices[2] = 3;
    Scene scene(Listed(std::move(mesh)));
    EXPECT_EQ(scene.Import().pointsAndLines, 1u);
    EXPECT_THAT(scene.character.meshes.at(0).triangles, IsEmpty());
    EXPECT_EQ(scene.character.meshes[0].influenceJoints.size(), 3u);
    Scene empty(Listed(MakeTriangle("unseen")));
    empty.m_scene.mRootNode->mChildren[0]->mMeshes[0] = 5;
    empty.Import();
    EXPECT_THAT(empty.character.meshes, IsEmpty());
}

} // namespace
} // namespace skindesk::test
