// SPDX-License-Identifier: MIT
// Tiny glTF files made in a test: start from a valid character, change one thing, see what the reader and writer do.
#pragma once

#include "gltf/CharacterFile.h"

#include <cstdint>
#include <filesystem>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace skindesk::test {

using Json = nlohmann::ordered_json;

// JSON and one buffer, which grows as accessors are added.
class GltfBuilder
{
public:
    GltfBuilder();

    Json json; // "buffers", if there, are those of a GLB behind the first
    std::vector<std::uint8_t> buffer;

    // Adds the numbers as elements of `shape`, stored as `componentType`; returns the accessor's index.
    std::size_t AddAccessor(const std::string& shape, int componentType, const std::vector<double>& numbers,
                            bool normalised = false);
    // Raw bytes as a buffer view; returns its index.
    std::size_t AddView(const std::vector<std::uint8_t>& bytes);

    Json& Primitive(std::size_t mesh = 0, std::size_t primitive = 0)
    {
        return json["meshes"][mesh]["primitives"][primitive];
    }
    Json& Accessor(const std::string& attribute)
    {
        return json["accessors"][Primitive()["attributes"][attribute].get<std::size_t>()];
    }

    [[nodiscard]] std::vector<std::uint8_t> Glb() const;
    [[nodiscard]] std::vector<std::uint8_t> Text() const;                               // buffer as a data URI
    [[nodiscard]] std::vector<std::uint8_t> TextWithFile(const std::string& uri) const; // buffer elsewhere

    [[nodiscard]] gltf::CharacterFile Read() const { return gltf::ReadCharacter(Glb(), "tiny.glb"); }
};

// A strip of eight vertices in four rows between two bones: vertex pairs have the weights (1, 0), (2/3, 1/3),
// (1/3, 2/3), (0, 1). Nodes: 0 shows the mesh, 1 and 2 are the bones. Six triangles.
GltfBuilder MakeValidCharacter();

// The sentence of the refusal, or "" when the file is taken.
std::string RefusalOf(const std::vector<std::uint8_t>& bytes, const std::string& path = "tiny.glb");

// All weights of a model as the file has them, to be changed and saved.
gltf::ModelWeights WeightsOf(const gltf::CharacterFile& file, int node);
// Gives one desk vertex these influences.
void SetRow(gltf::ModelWeights& weights, std::size_t vertex,
            const std::vector<std::pair<std::uint32_t, double>>& influences);
std::vector<std::pair<std::uint32_t, double>> RowOf(const gltf::Influences& influences, std::size_t vertex);

// A weight that went through single precision.
inline auto Near(double weight) { return testing::DoubleNear(weight, gltf::WEIGHT_TOLERANCE); }

// Text of a `.gltf` as bytes, for reading.
std::vector<std::uint8_t> BytesOf(const std::string& text);

// A folder that is gone when the test is over.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string operator/(const std::string& name) const { return (m_path / name).string(); }
    [[nodiscard]] std::vector<std::string> Names() const; // sorted

private:
    std::filesystem::path m_path;
};

// Files of tests/data.
std::string DataPath(const std::string& name);

} // namespace skindesk::test
