// SPDX-License-Identifier: MIT
// Which file vertices are one vertex on the desk.
#include "GltfBuilder.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <map>
#include <set>

namespace skindesk::test {
namespace {

using gltf::CharacterFile;
using testing::ElementsAre;
using testing::ElementsAreArray;

// A mesh of points only, with the given places and up to two influences each.
struct Point
{
    double x;
    int jointA;
    double weightA;
    int jointB;
    double weightB;

    bool operator==(const Point&) const = default;
};

GltfBuilder PointCloud(const std::vector<Point>& points, int weightType = 5126)
{
    GltfBuilder b = MakeValidCharacter();
    std::vector<double> positions;
    std::vector<double> joints;
    std::vector<double> weights;
    for (const Point& p : points) {
        positions.insert(positions.end(), {p.x, 0, 0});
        joints.insert(joints.end(), {double(p.jointA), double(p.jointB), 0, 0});
        weights.insert(weights.end(), {p.weightA, p.weightB, 0, 0});
    }
    b.Primitive().erase("indices");
    b.Primitive()["mode"] = 0;
    b.Primitive()["attributes"] = {{"POSITION", b.AddAccessor("VEC3", 5126, positions)},
                                   {"JOINTS_0", b.AddAccessor("VEC4", 5121, joints)},
                                   {"WEIGHTS_0", b.AddAccessor("VEC4", weightType, weights, weightType != 5126)}};
    return b;
}

std::vector<int> DeskVertices(const CharacterFile& file, std::size_t primitive = 0)
{
    const auto vertices = file.meshes[0].FileVertices(primitive);
    return {vertices.begin(), vertices.end()};
}

TEST(SeamJoin, EqualPlacesWithEqualInfluencesAreOneVertexNumberedByFirstAppearance)
{
    const CharacterFile file =
        PointCloud({{5, 0, 1, 0, 0}, {3, 0, 1, 0, 0}, {5, 0, 1, 0, 0}, {4, 0, 1, 0, 0}, {3, 0, 1, 0, 0}}).Read();
    EXPECT_THAT(DeskVertices(file), ElementsAre(0, 1, 0, 2, 1));
    EXPECT_THAT(file.meshes[0].positions, ElementsAre(5, 0, 0, 3, 0, 0, 4, 0, 0));
}

TEST(SeamJoin, InfluencesAreComparedAsSetsWhateverTheirSlots)
{
    const CharacterFile file = PointCloud({{0, 0, 0.25, 1, 0.75}, {0, 1, 0.75, 0, 0.25}, {0, 1, 0.25, 0, 0.75}}).Read();
    EXPECT_THAT(DeskVertices(file), ElementsAre(0, 0, 1));
}

TEST(SeamJoin, PaddingAndTwoSlotsOfOneJointDoNotTellVerticesApart)
{
    const CharacterFile file = PointCloud({{0, 1, 1, 0, 0}, {0, 1, 1, 1, 0}, {0, 1, 0.5, 1, 0.5}}).Read();
    EXPECT_THAT(DeskVertices(file), ElementsAre(0, 0, 0));
}

TEST(SeamJoin, UnequalInfluencesAtOnePlaceStayApart)
{
    const CharacterFile file = PointCloud({{0, 0, 0.5, 1, 0.5}, {0, 0, 0.5F + 1e-7F, 1, 0.5}}).Read();
    EXPECT_THAT(DeskVertices(file), ElementsAre(0, 1));
}

TEST(SeamJoin, MinusZeroIsThePlaceOfZero)
{
    const CharacterFile file = PointCloud({{0.0, 0, 1, 0, 0}, {-0.0, 0, 1, 0, 0}}).Read();
    EXPECT_THAT(DeskVertices(file), ElementsAre(0, 0));
}

TEST(SeamJoin, WeightsThatAreNoNumbersAreEqualToTheirLike)
{
    const CharacterFile file = PointCloud({{0, 0, NAN, 0, 0}, {0, 0, NAN, 0, 0}}).Read();
    EXPECT_THAT(DeskVertices(file), ElementsAre(0, 0));
}

TEST(SeamJoin, MorphDisplacementsTellVerticesApart)
{
    GltfBuilder b = PointCloud({{0, 0, 1, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 1, 0, 0}});
    b.Primitive()["targets"] = Json::array({{{"POSITION", b.AddAccessor("VEC3", 5126, {0, 1, 0, 0, 2, 0, 0, 1, 0})}}});
    EXPECT_THAT(DeskVertices(b.Read()), ElementsAre(0, 1, 0));
}

TEST(SeamJoin, VerticesOfDifferentPrimitivesAreJoined)
{
    GltfBuilder b = PointCloud({{0, 0, 1, 0, 0}, {1, 0, 1, 0, 0}});
    const GltfBuilder other = PointCloud({{1, 0, 1, 0, 0}, {2, 0, 1, 0, 0}});
    Json second = b.Primitive();
    second["attributes"] = {{"POSITION", b.AddAccessor("VEC3", 5126, {1, 0, 0, 2, 0, 0})},
                            {"JOINTS_0", b.AddAccessor("VEC4", 5123, std::vector<double>(8, 0))},
                            {"WEIGHTS_0", b.AddAccessor("VEC4", 5121, {255, 0, 0, 0, 255, 0, 0, 0}, true)}};
    b.json["meshes"][0]["primitives"].push_back(second);
    const CharacterFile file = b.Read();
    EXPECT_THAT(DeskVertices(file, 0), ElementsAre(0, 1));
    EXPECT_THAT(DeskVertices(file, 1), ElementsAre(1, 2));
}

TEST(SeamJoin, VerticesOfDifferentMeshesStayApart)
{
    GltfBuilder b = PointCloud({{0, 0, 1, 0, 0}});
    b.json["meshes"].push_back(b.json["meshes"][0]);
    b.json["nodes"].push_back({{"mesh", 1}, {"skin", 0}});
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.meshes[0].VertexCount(), 1u);
    EXPECT_EQ(file.meshes[1].VertexCount(), 1u);
}

TEST(SeamJoin, PrimitivesThatNameTheSameAccessorsShareTheirMap)
{
    GltfBuilder b = MakeValidCharacter();
    b.json["meshes"][0]["primitives"].push_back(b.Primitive());
    const CharacterFile file = b.Read();
    EXPECT_EQ(file.meshes[0].vertexMaps.size(), 1u);
    EXPECT_EQ(file.meshes[0].triangles.size(), 36u);
    EXPECT_EQ(file.meshes[0].primitives[1].firstTriangle, 6u);
}

TEST(SeamJoin, TheNormalOfAJoinedVertexIsTheMeanOfTheSeam)
{
    GltfBuilder b = PointCloud({{0, 0, 1, 0, 0}, {0, 0, 1, 0, 0}, {1, 0, 1, 0, 0}});
    b.Primitive()["attributes"]["NORMAL"] = b.AddAccessor("VEC3", 5126, {1, 0, 0, 0, 1, 0, 0, 0, 0});
    const CharacterFile file = b.Read();
    const float half = std::sqrt(0.5F);
    EXPECT_THAT(file.meshes[0].normals,
                ElementsAreArray({testing::FloatEq(half), testing::FloatEq(half), testing::FloatEq(0),
                                  testing::FloatEq(0), testing::FloatEq(0), testing::FloatEq(0)}));
}

TEST(SeamJoin, AMillionEqualVerticesAreOne)
{
    GltfBuilder b = MakeValidCharacter();
    const std::size_t count = 1'000'000;
    b.Primitive().erase("indices");
    b.Primitive()["attributes"] = {{"POSITION", b.AddAccessor("VEC3", 5126, std::vector<double>(count * 3, 1))}};
    b.json["nodes"][0].erase("skin");
    EXPECT_EQ(b.Read().meshes[0].VertexCount(), 1u);
}

// Against the plainest way to say it: a map from everything that counts to the vertex that had it first.
RC_GTEST_PROP(SeamJoin, IsWhatAMapOverAllPropertiesSays, ())
{
    const auto points = *rc::gen::nonEmpty(rc::gen::container<std::vector<Point>>(rc::gen::map(
        rc::gen::tuple(rc::gen::inRange(0, 4), rc::gen::inRange(0, 2), rc::gen::inRange(0, 4), rc::gen::inRange(0, 2)),
        [](const auto& t) {
            const double weight = std::get<2>(t) / 4.0;
            return Point{double(std::get<0>(t)), std::get<1>(t), weight, std::get<3>(t), 1 - weight};
        })));
    const CharacterFile file = PointCloud(points).Read();
    std::map<std::pair<double, std::map<int, double>>, int> first;
    for (std::size_t i = 0; i < points.size(); ++i) {
        std::map<int, double> influences;
        influences[points[i].jointA] += points[i].weightA;
        influences[points[i].jointB] += points[i].weightB;
        std::erase_if(influences, [](const auto& entry) { return entry.second == 0; });
        const int expected = first.try_emplace({points[i].x, influences}, static_cast<int>(first.size())).first->second;
        RC_ASSERT(DeskVertices(file)[i] == expected);
        RC_ASSERT(RowOf(file.meshes[0].influences, static_cast<std::size_t>(expected)).size() == influences.size());
    }
}

} // namespace
} // namespace skindesk::test
