// SPDX-License-Identifier: MIT
// FBX files as new characters. The library writes them from a glTF character, and what comes back is compared with it.
#include "assimp/AssimpFile.h"
#include "gltf/CharacterFile.h"

#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <unistd.h>

namespace skindesk::test {
namespace {

using imports::NewCharacter;
using testing::HasSubstr;

const std::string FIGURE = std::string(SKINDESK_SOURCE_DIR) + "/samples/figure.glb";

class FbxFile : public testing::Test
{
protected:
    FbxFile() : m_path(std::filesystem::temp_directory_path() / ("skindesk-fbx-" + std::to_string(::getpid()) + ".fbx"))
    {
    }
    ~FbxFile() override { std::filesystem::remove(m_path); }

    // The figure of the samples as the library writes it. As text: what it writes in binary it does not read itself.
    const std::string& FigureBytes() const
    {
        static std::string bytes;
        if (bytes.empty()) {
            Assimp::Importer importer;
            const aiScene* scene = importer.ReadFile(FIGURE, 0);
            if (scene == nullptr) {
                throw std::runtime_error(importer.GetErrorString());
            }
            Assimp::Exporter exporter;
            if (exporter.Export(scene, "fbxa", m_path.string()) != aiReturn_SUCCESS) {
                throw std::runtime_error(exporter.GetErrorString());
            }
            std::ifstream file(m_path, std::ios::binary);
            bytes.assign(std::istreambuf_iterator<char>(file), {});
        }
        return bytes;
    }

    void Write(const std::string& bytes) const { std::ofstream(m_path, std::ios::binary) << bytes; }

    std::filesystem::path m_path;
};

std::map<std::string, std::string> ParentsByName(const NewCharacter& character)
{
    std::map<std::string, std::string> parents;
    for (const imports::NewNode& node : character.nodes) {
        parents[node.name] = node.parent < 0 ? "" : character.nodes[static_cast<std::size_t>(node.parent)].name;
    }
    return parents;
}

using Row = std::map<std::string, double>; // bone name -> weight

// By place, as a share of the height of all meshes: the library's unit may be another.
std::map<std::array<long, 3>, Row> RowsByPlace(const gltf::CharacterFile& file)
{
    float height = 0;
    for (const gltf::Mesh& mesh : file.meshes) {
        for (std::size_t i = 1; i < mesh.positions.size(); i += 3) {
            height = std::max(height, mesh.positions[i]);
        }
    }
    std::map<std::array<long, 3>, Row> rows;
    for (const gltf::Node& node : file.nodes) {
        if (node.skin < 0) {
            continue;
        }
        const gltf::Mesh& mesh = file.meshes[static_cast<std::size_t>(node.mesh)];
        const gltf::Skin& skin = file.skins[static_cast<std::size_t>(node.skin)];
        for (std::size_t v = 0; v < mesh.VertexCount(); ++v) {
            std::array<long, 3> place{};
            for (std::size_t c = 0; c < 3; ++c) {
                place[c] = std::lround(mesh.positions[3 * v + c] / height * 20000);
            }
            for (std::size_t e = mesh.influences.offsets[v]; e < mesh.influences.offsets[v + 1]; ++e) {
                const auto joint = static_cast<std::size_t>(skin.joints[mesh.influences.joints[e]]);
                rows[place][file.nodes[joint].name] = static_cast<double>(mesh.influences.weights[e]);
            }
        }
    }
    return rows;
}

std::size_t TrianglesOf(const gltf::CharacterFile& file)
{
    std::size_t triangles = 0;
    for (const gltf::Mesh& mesh : file.meshes) {
        triangles += mesh.triangles.size() / 3;
    }
    return triangles;
}

TEST_F(FbxFile, OfTheFigureHasItsBonesInTheirPlaces)
{
    Write(FigureBytes());
    const std::map<std::string, std::string> parents = ParentsByName(assimp::ReadFbx(m_path.string()));
    const gltf::CharacterFile figure = gltf::ReadCharacter(FIGURE);
    for (const int joint : figure.skins.at(0).joints) {
        const gltf::Node& bone = figure.nodes[static_cast<std::size_t>(joint)];
        ASSERT_TRUE(parents.contains(bone.name)) << bone.name;
        if (bone.parent >= 0) {
            EXPECT_EQ(parents.at(bone.name), figure.nodes[static_cast<std::size_t>(bone.parent)].name);
        }
    }
}

TEST_F(FbxFile, OfTheFigureHasItsWeightsTrianglesAndTheNameOfItsAnimation)
{
    Write(FigureBytes());
    NewCharacter character = assimp::ReadFbx(m_path.string());
    const gltf::CharacterFile figure = gltf::ReadCharacter(FIGURE);
    const gltf::CharacterFile read = gltf::ReadCharacter(imports::WriteGlb(character, "figure.fbx"), "figure.glb");
    EXPECT_EQ(TrianglesOf(read), TrianglesOf(figure));
    ASSERT_EQ(read.animations.size(), figure.animations.size());
    EXPECT_EQ(read.animations[0].name, figure.animations[0].name);
    const auto expected = RowsByPlace(figure);
    std::size_t compared = 0;
    for (const auto& [place, row] : RowsByPlace(read)) {
        const auto same = expected.find(place);
        if (same == expected.end()) {
            continue; // rounded to the neighbour
        }
        ++compared;
        for (const auto& [bone, weight] : row) {
            const auto was = same->second.find(bone);
            EXPECT_NEAR(weight, was == same->second.end() ? 0 : was->second, 1e-4);
        }
    }
    EXPECT_GT(compared, expected.size() * 9 / 10);
}

TEST_F(FbxFile, CutAnywhereIsOneSentence)
{
    const std::string& whole = FigureBytes();
    for (std::size_t part = 0; part < 24; ++part) {
        Write(whole.substr(0, whole.size() * part / 24));
        try {
            static_cast<void>(assimp::ReadFbx(m_path.string()));
            ADD_FAILURE() << "a file cut after " << part << " of 24 parts was taken";
        } catch (const gltf::FileError& error) {
            EXPECT_EQ(error.path(), m_path.string());
            EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        }
    }
}

TEST_F(FbxFile, WithBytesThatAreWrongIsOneSentenceOrACharacter)
{
    const std::string& whole = FigureBytes();
    for (std::size_t round = 0; round < 24; ++round) {
        std::string spoiled = whole;
        for (std::size_t i = 0; i < 16; ++i) {
            spoiled[(round * 7919 + i * i * 104729) % spoiled.size()] ^= static_cast<char>(0x5A + round);
        }
        Write(spoiled);
        try {
            static_cast<void>(assimp::ReadFbx(m_path.string()));
        } catch (const gltf::FileError& error) {
            EXPECT_THAT(error.what(), HasSubstr(".fbx: "));
        }
    }
}

} // namespace
} // namespace skindesk::test
