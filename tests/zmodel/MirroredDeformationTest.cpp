// SPDX-License-Identifier: MIT
// A skin that turns its model inside out, as under a mirrored node that its skeleton is not under: normals still point
// outwards, in the model's own space and so in the world's.
#include "NurbsShapes.h"
#include "TinyModels.h"

#include <cmath>

namespace {

class MirroredDeformation : public ReportTest
{
protected:
    std::unique_ptr<ZModel> bone = MakeBone("bone");
    std::unique_ptr<ZModel> other = MakeBone("other");
    std::unique_ptr<ZModel> third = MakeBone("third");

    static ZgeMatrix Mirror()
    {
        ZgeMatrix mirror;
        mirror(0, 0) = -1;
        return mirror;
    }

    /// A tetrahedron around the origin; every vertex follows one bone, number 0 both others a little.
    std::unique_ptr<ZModelPolymesh> MakeTetrahedron()
    {
        const std::vector<float> corners{1, 1, 1, -1, -1, 1, -1, 1, -1, 1, -1, -1};
        auto mesh = std::make_unique<ZModelPolymesh>("mesh");
        EXPECT_TRUE(mesh->SetGeometry(corners.data(), 4, {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3}, {3, 3, 3, 3}));
        ZSkin* const skin = mesh->MakeSkin(kDeformNormalise);
        for (ZModel* const model : {bone.get(), other.get(), third.get()})
            skin->AppendLink(model, ZgeMatrix());
        for (int vertex = 0; vertex < 4; ++vertex)
            AddWeight(*skin, 0, vertex, 1);
        return mesh;
    }

    /// The tetrahedron lies about the origin, so outwards is along the position.
    static void ExpectOutwards(ZModelPolymesh& mesh)
    {
        for (int vertex = 0; vertex < 4; ++vertex) {
            const float* const place = mesh.VertexPositions(1) + 4 * static_cast<size_t>(vertex);
            const float* const normal = mesh.DisplayPositions(1) + 4 * static_cast<size_t>(vertex);
            const float along = place[0] * normal[0] + place[1] * normal[1] + place[2] * normal[2];
            EXPECT_GT(along, 0.5F * std::hypot(place[0], place[1], place[2])) << "vertex " << vertex;
        }
    }
};

TEST_F(MirroredDeformation, NormalsPointOutwardsUnderAMirroredNode)
{
    const auto mesh = MakeTetrahedron();
    ExpectOutwards(*mesh);
    EXPECT_FALSE(mesh->IsDeformationMirrored());
    mesh->SetFileTransform(Mirror());
    ExpectOutwards(*mesh);
    EXPECT_TRUE(mesh->IsDeformationMirrored());
    mesh->SetFileTransform(ZgeMatrix());
    ExpectOutwards(*mesh);
    EXPECT_FALSE(mesh->IsDeformationMirrored());
}

TEST_F(MirroredDeformation, AMirroredSkeletonUnderTheSameMirrorTurnsNothing)
{
    const auto mesh = MakeTetrahedron();
    for (ZModel* const model : {bone.get(), other.get(), third.get()})
        model->SetFileTransform(Mirror());
    mesh->SetFileTransform(Mirror());
    ExpectOutwards(*mesh);
    EXPECT_FALSE(mesh->IsDeformationMirrored());
}

TEST_F(MirroredDeformation, MostOfTheLinksDecide)
{
    const auto mesh = MakeTetrahedron();
    other->SetPosedTransform(Mirror());
    ExpectOutwards(*mesh);
    EXPECT_FALSE(mesh->IsDeformationMirrored());
    third->SetPosedTransform(Mirror());
    mesh->VertexPositions(1);
    EXPECT_TRUE(mesh->IsDeformationMirrored());
}

TEST_F(MirroredDeformation, AFewVerticesAnewGetTheSideOfAll)
{
    const auto mesh = MakeTetrahedron();
    mesh->SetFileTransform(Mirror());
    ExpectOutwards(*mesh);
    other->SetPosedTransform(ZgeTranslation({0, 0.25, 0}));
    AddWeight(*mesh->GetSkin(), 1, 2, 1);
    ExpectOutwards(*mesh);
}

TEST_F(MirroredDeformation, ASurfaceKeepsItsNormalsOutsideToo)
{
    ZModelNurbs sphere("sphere");
    const ZNurbsSurface shape = MakeSphere(2);
    ASSERT_TRUE(sphere.SetSurface(shape, 9, 5));
    ZSkin* const skin = sphere.MakeSkin(kDeformNormalise);
    skin->AppendLink(bone.get(), ZgeMatrix());
    for (int vertex = 0; vertex < sphere.VertexCount(); ++vertex)
        AddWeight(*skin, 0, vertex, 1);
    sphere.SetFileTransform(Mirror());
    for (int i = 9; i < 4 * 9; ++i) {
        const float* const place = sphere.TessellatedPoints(1) + 4 * static_cast<size_t>(i);
        const float* const normal = sphere.TessellatedNormals(1) + 4 * static_cast<size_t>(i);
        EXPECT_GT(place[0] * normal[0] + place[1] * normal[1] + place[2] * normal[2], 1.9F) << "point " << i;
    }
}

} // namespace
