// SPDX-License-Identifier: MIT
// Polygon meshes of OBJ files, and what is no OBJ file.
#include "ObjText.h"

#include <fstream>

namespace skindesk::test {
namespace {

using imports::NewCharacter;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TEST(ObjMesh, EqualCornersAreOneVertexAndTextureVRunsDownwards)
{
    const NewCharacter character =
        ReadText(SIX_POINTS + "vt 0 0.25\nvt 1 1\nvn 0 0 1\n"
                              "f 1/1/1 2/2/1 5/1/1\nf 1/1/1 5/1/1 4/2/1\nf 1/2/1 2/2/1 4/2/1\n");
    ASSERT_THAT(character.meshes, SizeIs(1));
    const imports::NewMesh& mesh = character.meshes[0];
    EXPECT_EQ(mesh.name, "test");
    EXPECT_THAT(mesh.triangles[0].corners, ElementsAre(0, 1, 2, 0, 2, 3, 4, 1, 3));
    EXPECT_THAT(mesh.texCoords, ElementsAre(0, 0.75F, 1, 0, 0, 0.75F, 1, 0, 1, 0));
    EXPECT_THAT(mesh.normals, SizeIs(15));
}

TEST(ObjMesh, WithoutNormalsAtACornerThereAreNone)
{
    const NewCharacter character = ReadText(SIX_POINTS + "vn 0 0 1\nf 1//1 2//1 5\n");
    EXPECT_THAT(character.meshes[0].normals, IsEmpty());
    EXPECT_THAT(character.meshes[0].texCoords, IsEmpty());
}

TEST(ObjMesh, PolygonsAreCutIntoTriangles)
{
    EXPECT_THAT(ReadText(SIX_POINTS + "f 1 2 3 6 4\n").meshes[0].triangles[0].corners,
                ElementsAre(0, 1, 2, 0, 2, 3, 0, 3, 4));
    // A quad with a dent at its third corner must be cut there.
    EXPECT_THAT(ReadText("v 0 0 0\nv 4 0 0\nv 1 1 0\nv 0 4 0\nf 4 1 2 3\n").meshes[0].triangles[0].corners,
                ElementsAre(1, 2, 3, 1, 3, 0));
    EXPECT_THAT(ReadText("v 0 0 0\nv 4 0 0\nv 1 1 0\nv 0 4 0\nf 1 2 3 4\n").meshes[0].triangles[0].corners,
                ElementsAre(0, 1, 2, 0, 2, 3));
}

TEST(ObjMesh, FacesOfAnObjectAndGroupAreOneMeshAndMaterialsItsParts)
{
    const NewCharacter character = ReadText(SIX_POINTS + "mtllib x.mtl\ng A\nusemtl red\nf 1 2 5\ng B\nf 2 3 6\n"
                                                         "g A\nusemtl blue\nf 1 5 4\n");
    ASSERT_THAT(character.meshes, SizeIs(2));
    EXPECT_EQ(character.nodes[0].name, "A");
    EXPECT_EQ(character.nodes[1].name, "B");
    ASSERT_THAT(character.meshes[0].triangles, SizeIs(2));
    EXPECT_EQ(character.meshes[0].triangles[1].material, 1);
    EXPECT_EQ(character.materials[0].name, "red");
    EXPECT_THAT(character.warnings, ElementsAre(AllOf(HasSubstr("line 7"), HasSubstr("material library"))));
}

TEST(ObjMesh, AColourBehindThePlaceIsNoWeight)
{
    const NewCharacter character = ReadText("v 0 0 0 1 0.5 0\nv 1 0 0 1 0 0\nv 0 1 0 0 0 0\nf 1 2 3\n");
    EXPECT_THAT(character.meshes[0].positions, ElementsAre(0, 0, 0, 1, 0, 0, 0, 1, 0));
}

TEST(ObjMesh, AFaceOfTwoCornersOrOfCornersThatAreNotThereIsRefused)
{
    EXPECT_EQ(Refusal(SIX_POINTS + "f 1 2\n"), "test.obj: line 7: f is followed by 2 words, 3 are needed");
    EXPECT_EQ(Refusal(SIX_POINTS + "f 1 2 9\n"), "test.obj: line 7: vertex 9 is not there, 6 stand before this line");
    EXPECT_EQ(Refusal(SIX_POINTS + "f 1/1 2 3\n"),
              "test.obj: line 7: texture vertex 1 is not there, 0 stand before this line");
    EXPECT_EQ(Refusal(SIX_POINTS + "f 1//2 2 3\n"),
              "test.obj: line 7: normal 2 is not there, 0 stand before this line");
    EXPECT_EQ(Refusal(SIX_POINTS + "f x 2 3\n"), "test.obj: line 7: \"x\" is no whole number");
    EXPECT_EQ(Refusal(SIX_POINTS + "f 1 2 99999999999999999999\n"),
              "test.obj: line 7: \"99999999999999999999\" is no whole number");
}

TEST(ObjMesh, WhatIsNotKnownIsLeftOutAndSaidOnce)
{
    EXPECT_THAT(
        ReadText(SIX_POINTS + "zz 1\nf 1 2 5\nyy\ns off\nlod 3\nl 1 2\n").warnings,
        ElementsAre("line 12: left out: lines (l)", "line 7: left out: statements that are not known, 2 times in all"));
}

TEST(ObjMesh, AFileWithoutSurfaceAndMeshIsRefused)
{
    EXPECT_EQ(Refusal(""), "test.obj: holds neither a free-form surface nor a polygon mesh");
    EXPECT_EQ(Refusal(SIX_POINTS), "test.obj: holds neither a free-form surface nor a polygon mesh");
    EXPECT_EQ(Refusal(std::string("\x7f"
                                  "ELF\0\1\2\xff\xfe",
                                  9)),
              "test.obj: holds neither a free-form surface nor a polygon mesh");
}

TEST(ObjMesh, AFileFromAnotherProgramIsRead)
{
    const NewCharacter character =
        obj::ReadObj(std::string(SKINDESK_SOURCE_DIR) + "/tests/data/nurbs/plane_tessellated.obj");
    ASSERT_THAT(character.meshes, SizeIs(1));
    const imports::NewMesh& mesh = character.meshes[0];
    EXPECT_EQ(mesh.name, "nurbsPlane1");
    EXPECT_EQ(mesh.triangles[0].corners.size() / 3, 192U);
    EXPECT_EQ(mesh.normals.size(), mesh.positions.size());
}

} // namespace
} // namespace skindesk::test
