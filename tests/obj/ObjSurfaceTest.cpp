// SPDX-License-Identifier: MIT
// Free-form surfaces of OBJ files.
#include "ObjText.h"

#include "import/TessellateSurface.h"

#include <rapidcheck/gtest.h>

#include <cmath>

namespace skindesk::test {
namespace {

using imports::NewCharacter;
using imports::NewMesh;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TEST(ObjSurface, ControlPointsRunUFastest)
{
    const NewCharacter character = ReadText(SIX_POINTS + SURFACE);
    ASSERT_THAT(character.meshes, SizeIs(1));
    const NewMesh& mesh = character.meshes[0];
    ASSERT_TRUE(mesh.nurbs);
    EXPECT_THAT(mesh.nurbs->degree, ElementsAre(2, 1));
    EXPECT_THAT(mesh.nurbs->count, ElementsAre(3, 2));
    EXPECT_THAT(mesh.nurbs->knots[0], ElementsAre(0, 0, 0, 1, 1, 1));
    EXPECT_THAT(mesh.nurbs->knots[1], ElementsAre(0, 0, 1, 1));
    EXPECT_THAT(mesh.positions, ElementsAre(0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0, 1, 1, 0, 2, 1, 0));
    EXPECT_THAT(mesh.nurbs->pointWeights, IsEmpty());
    EXPECT_THAT(character.warnings, IsEmpty());
}

TEST(ObjSurface, RationalOnesTakeTheWeightsOfTheVertices)
{
    const std::string points = "v 0 0 0 1\nv 1 0 0 0.5\nv 2 0 0\nv 0 1 0\nv 1 1 0 .25\nv 2 1 0 1e0\n";
    const NewCharacter rational = ReadText(points + Replaced(SURFACE, "cstype bspline", "cstype rat bspline"));
    EXPECT_THAT(rational.meshes[0].nurbs->pointWeights, ElementsAre(1, 0.5, 1, 1, 0.25, 1));
    EXPECT_THAT(ReadText(points + SURFACE).meshes[0].nurbs->pointWeights, IsEmpty());
    EXPECT_EQ(Refusal(Replaced(points, "0.5", "0") + Replaced(SURFACE, "cstype bspline", "cstype rat bspline")),
              "test.obj: line 9: the weight of vertex 2 is not above 0");
}

TEST(ObjSurface, CommentsContinuedLinesAndNumbersFromTheEndAreRead)
{
    const std::string text = "# two rows\r\nv 0 0 0\r\nv 1 \\\r\n 0 0\r\nv 2 0 0 # the third\r\n"
                             "v 0 1 0\nv 1 1 0\nv 2 1 0\ncstype bspline\ndeg 2 1\n"
                             "surf 0 1 0 1 \\\n -6 -5 -4 \\\n -3/1/1 -2//1 -1\\\n\n"
                             "parm u 0 0 0 \\\n 1 1 1\nparm v 0 0\nparm v 1 1\nend";
    const NewCharacter character = ReadText("vt 0 0\nvn 0 0 1\n" + text);
    EXPECT_THAT(character.meshes[0].positions, ElementsAre(0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0, 1, 1, 0, 2, 1, 0));
    EXPECT_THAT(character.meshes[0].nurbs->knots[1], ElementsAre(0, 0, 1, 1));
}

TEST(ObjSurface, ALineNumberIsThatOfTheLineWhereTheStatementBegins)
{
    EXPECT_EQ(Refusal("# one\nv 0 0 0\nv 1 \\\n 0 \\\n no\n"), "test.obj: line 3: \"no\" is no number");
    EXPECT_EQ(Refusal("v 0 0 0\r\n\r\nv 1 2\r\n"), "test.obj: line 3: v is followed by 2 words, 3 are needed");
}

TEST(ObjSurface, SeveralKeepTheirOrderAndTheNamesOfObjectsAndGroups)
{
    const NewCharacter character = ReadText(SIX_POINTS + SURFACE + "o Fish\n" + SURFACE + "g Fin left\n" + SURFACE +
                                            "o\n" + SURFACE + "g default\n" + SURFACE);
    ASSERT_THAT(character.nodes, SizeIs(5));
    EXPECT_EQ(character.nodes[0].name, "Surface 1");
    EXPECT_EQ(character.nodes[1].name, "Fish");
    EXPECT_EQ(character.nodes[2].name, "Fish Fin left");
    EXPECT_EQ(character.nodes[3].name, "Fin left");
    EXPECT_EQ(character.nodes[4].name, "Surface 5");
    EXPECT_EQ(character.nodes[4].mesh, 4);
}

// The surface of one patch by the law of its kind, computed in another way than the evaluator's.
double Bernstein(int degree, int i, double t)
{
    double choose = 1;
    for (int k = 1; k <= i; ++k) {
        choose = choose * (degree - i + k) / k;
    }
    return choose * std::pow(t, i) * std::pow(1 - t, degree - i);
}

TEST(ObjSurface, BezierPatchesAreTheSameSurface)
{
    // Two patches of degree 2 in u, one of degree 3 in v, over uneven parameters.
    std::string text;
    std::vector<double> heights;
    for (int i = 0; i < 20; ++i) {
        heights.push_back(0.1 * ((i * 7) % 11));
        text +=
            "v " + std::to_string(i % 5) + " " + std::to_string(i / 5) + " " + std::to_string(heights.back()) + "\n";
    }
    text += "cstype bezier\ndeg 2 3\nsurf 0 3 5 6";
    for (int i = 1; i <= 20; ++i) {
        text += " " + std::to_string(i);
    }
    const NewCharacter character = ReadText(text + "\nparm u 0 1 3\nparm v 5 6\nend\n");
    const NewMesh& mesh = character.meshes[0];
    EXPECT_THAT(mesh.nurbs->count, ElementsAre(5, 4));
    EXPECT_THAT(mesh.nurbs->knots[0], ElementsAre(0, 0, 0, 1, 1, 3, 3, 3));
    EXPECT_THAT(mesh.nurbs->knots[1], ElementsAre(5, 5, 5, 5, 6, 6, 6, 6));
    const imports::Tessellation shape = imports::Tessellate(*mesh.nurbs, mesh.positions, {7, 5});
    for (int j = 0; j < 5; ++j) {
        for (int i = 0; i < 7; ++i) {
            const double u = 3.0 * i / 6;
            const int patch = u < 1 ? 0 : 1;
            const double s = patch == 0 ? u : (u - 1) / 2;
            double height = 0;
            for (int b = 0; b <= 3; ++b) {
                for (int a = 0; a <= 2; ++a) {
                    height += Bernstein(2, a, s) * Bernstein(3, b, j / 4.0) *
                              heights[static_cast<std::size_t>(5 * b + 2 * patch + a)];
                }
            }
            EXPECT_NEAR(shape.positions[static_cast<std::size_t>(3 * (7 * j + i) + 2)], height, 1e-6);
        }
    }
}

TEST(ObjSurface, TrimmingIsLeftOutWithAWarningAndTheSurfaceShownWhole)
{
    const std::string curve = "vp 0 0\nvp 1 1\ncurv2 -2 -1\nparm u 0 1\nend\n";
    const NewCharacter character =
        ReadText(SIX_POINTS + curve + Replaced(SURFACE, "end", "trim 0 1 1\nhole 0 1 1\nhole 0 1 1\nend"));
    EXPECT_THAT(character.meshes, SizeIs(1));
    EXPECT_THAT(character.warnings,
                ElementsAre("line 9: left out: curves on surfaces (curv2)",
                            "line 18: left out: holes in surfaces (hole): the surface is shown whole, 2 times in all",
                            "line 17: left out: trimming loops (trim): the surface is shown whole"));
}

TEST(ObjSurface, APartOfTheDomainIsShownWholeWithAWarning)
{
    EXPECT_THAT(ReadText(SIX_POINTS + Replaced(SURFACE, "surf 0 1", "surf 0 0.5")).warnings,
                ElementsAre("1 surface shows only a part of the domain in the file; here the whole is shown"));
}

TEST(ObjSurface, DegreesFromOneToFiveAreReadAndNoOthers)
{
    for (const char* degree : {"0", "6", "-1", "22"}) {
        EXPECT_EQ(Refusal(SIX_POINTS + Replaced(SURFACE, "deg 2 1", std::string("deg 2 ") + degree)),
                  std::string("test.obj: line 8: degree ") + degree + " is not read, 1 to 5 are");
    }
    for (int degree = 1; degree <= 5; ++degree) {
        std::string text;
        std::string knots;
        std::string points;
        for (int i = 0; i <= degree; ++i) {
            text += "v " + std::to_string(i) + " 0 0\nv " + std::to_string(i) + " 1 0\n";
            knots = " 0" + knots + " 1";
        }
        for (int i = 0; i <= degree; ++i) {
            points += " " + std::to_string(2 * i + 1);
        }
        for (int i = 0; i <= degree; ++i) {
            points += " " + std::to_string(2 * i + 2);
        }
        text += "cstype bspline\ndeg " + std::to_string(degree) + " 1\nsurf 0 1 0 1" + points + "\nparm u" + knots +
                "\nparm v 0 0 1 1\nend\n";
        EXPECT_THAT(ReadText(text).meshes[0].nurbs->count, ElementsAre(degree + 1, 2)) << degree;
    }
}

TEST(ObjSurface, WhatIsBrokenIsRefusedWithItsLine)
{
    const auto refusal = [](const std::string& old, const std::string& by) {
        return Refusal(SIX_POINTS + Replaced(SURFACE, old, by));
    };
    EXPECT_EQ(refusal("end\n", ""), "test.obj: line 9: the surface has no end");
    EXPECT_EQ(refusal("end\n", "v 0 0 0\n"), "test.obj: line 9: the surface has no end before \"v\" in line 12");
    EXPECT_EQ(refusal("parm v 0 0 1 1\n", ""), "test.obj: line 9: the surface has no parameters (parm v)");
    EXPECT_EQ(refusal("parm v 0 0 1 1", "parm v 0 1 0 1"),
              "test.obj: line 9: the parameters of parm v descend somewhere");
    EXPECT_EQ(refusal("parm v 0 0 1 1", "parm v 1 1 1 1"),
              "test.obj: line 9: the parameters of parm v leave no surface between them");
    EXPECT_EQ(refusal("parm v 0 0 1 1", "parm v 0 0 1"),
              "test.obj: line 9: parm v has 3 knots, degree 1 needs at least 4");
    EXPECT_EQ(refusal("parm v 0 0 1 1", "parm v 0 0 1 1 1"),
              "test.obj: line 9: the surface has 6 control points, its parameters need 3 times 3");
    EXPECT_EQ(refusal("parm v 0 0 1 1", "parm w 0 0 1 1"), "test.obj: line 11: parm \"w\" is neither u nor v");
    EXPECT_EQ(refusal("parm v 0 0 1 1", "parm v 0 nan 1 1"),
              "test.obj: line 11: \"nan\" is larger than a number of a file can be");
    EXPECT_EQ(refusal("parm v 0 0 1 1", "parm v 0 0 1 1e300"),
              "test.obj: line 11: \"1e300\" is larger than a number of a file can be");
    EXPECT_EQ(refusal("1 2 3 4", "1 2 3 7"), "test.obj: line 9: vertex 7 is not there, 6 stand before this line");
    EXPECT_EQ(refusal("1 2 3 4", "1 2 3 0"), "test.obj: line 9: vertex 0 is not there, 6 stand before this line");
    EXPECT_EQ(refusal("1 2 3 4", "-7 2 3 4"), "test.obj: line 9: vertex -7 is not there, 6 stand before this line");
    EXPECT_EQ(refusal("1 2 3 4", "1 2 3 4,5"), "test.obj: line 9: \"4,5\" is no whole number");
    EXPECT_EQ(refusal("surf 0 1 0 1 1 2 3 4 5 6", "surf 0 1 0"),
              "test.obj: line 9: surf is followed by 3 words, 5 are needed");
    EXPECT_EQ(refusal("cstype bspline\n", ""),
              "test.obj: line 8: no cstype says before the surface what kind it is of");
    EXPECT_EQ(refusal("deg 2 1\n", ""),
              "test.obj: line 8: no deg says before the surface which degree it has in u and in v");
    EXPECT_EQ(refusal("deg 2 1", "deg 2"),
              "test.obj: line 9: no deg says before the surface which degree it has in u and in v");
    EXPECT_EQ(refusal("cstype bspline", "cstype cardinal"),
              "test.obj: line 9: a surface of cstype cardinal is not read, bspline and bezier are");
    EXPECT_EQ(refusal("cstype bspline", "cstype spline"), "test.obj: line 7: cstype \"spline\" is no type of surface");
    EXPECT_EQ(Refusal("end\n"), "test.obj: line 1: end stands outside of a surface");
    EXPECT_EQ(Refusal("parm u 0 1\n"), "test.obj: line 1: parm stands outside of a surface");
}

TEST(ObjSurface, ABezierSurfaceOfOneParameterIsRefused)
{
    EXPECT_EQ(Refusal(SIX_POINTS + "cstype bezier\ndeg 2 1\nsurf 0 1 0 1 1 2 3 4 5 6\nparm u 0\nparm v 0 1\nend\n"),
              "test.obj: line 9: parm u has one number, a patch needs two");
}

TEST(ObjSurface, ManySurfacesOverTheSamePointsStayWithinTheMemoryThatTheFileExplains)
{
    std::string text = SIX_POINTS + "cstype bspline\ndeg 2 1\n";
    for (int i = 0; i < 5000; ++i) {
        text += "surf 0 1 0 1 1 2 3 4 5 6\nparm u 0 0 0 1 1 1\nparm v 0 0 1 1\nend\n";
    }
    NewCharacter character = ReadText(text);
    EXPECT_LT(imports::WriteGlb(character, "test.obj").size(), 60 * text.size());
}

// Any split of the words over continued lines is the same file.
RC_GTEST_PROP(ObjSurfaceProperty, ContinuingLinesAnywhereChangesNothing, ())
{
    std::string text = SIX_POINTS;
    for (const char c : SURFACE) {
        if (c == ' ' && *rc::gen::inRange(0, 3) == 0) {
            text += *rc::gen::element<std::string>(" \\\n", " \\\r\n ", "\t\\\n\\\n ", "  ");
        } else {
            text += c;
        }
    }
    const NewCharacter character = ReadText(text);
    RC_ASSERT(character.meshes[0].positions == ReadText(SIX_POINTS + SURFACE).meshes[0].positions);
    RC_ASSERT(character.meshes[0].nurbs->knots == ReadText(SIX_POINTS + SURFACE).meshes[0].nurbs->knots);
}

} // namespace
} // namespace skindesk::test
