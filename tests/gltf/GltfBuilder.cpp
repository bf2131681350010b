// SPDX-License-Identifier: MIT
// Tiny glTF files made in a test.
#include "GltfBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace skindesk::test {

namespace {

void Append(std::vector<std::uint8_t>& bytes, const void* from, std::size_t size)
{
    const auto* raw = static_cast<const std::uint8_t*>(from);
    bytes.insert(bytes.end(), raw, raw + size);
}

template <class Stored> void AppendAs(std::vector<std::uint8_t>& bytes, double value)
{
    const auto stored = static_cast<Stored>(value);
    Append(bytes, &stored, sizeof stored);
}

void AppendComponent(std::vector<std::uint8_t>& bytes, int type, double value)
{
    switch (type) {
    case 5120:
        AppendAs<std::int8_t>(bytes, value);
        break;
    case 5121:
        AppendAs<std::uint8_t>(bytes, value);
        break;
    case 5122:
        AppendAs<std::int16_t>(bytes, value);
        break;
    case 5123:
        AppendAs<std::uint16_t>(bytes, value);
        break;
    case 5125:
        AppendAs<std::uint32_t>(bytes, value);
        break;
    default:
        AppendAs<float>(bytes, value);
        break;
    }
}

std::size_t ComponentsOf(const std::string& shape)
{
    return shape == "SCALAR" ? 1 : shape == "MAT4" ? 16 : static_cast<std::size_t>(shape.back() - '0');
}

void AppendWord(std::vector<std::uint8_t>& bytes, std::size_t word)
{
    const auto stored = static_cast<std::uint32_t>(word);
    Append(bytes, &stored, sizeof stored);
}

std::string Base64(const std::vector<std::uint8_t>& bytes)
{
    const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto at = [&](std::size_t k) { return i + k < bytes.size() ? unsigned{bytes[i + k]} : 0u; };
        const unsigned bits = at(0) << 16 | at(1) << 8 | at(2);
        text += digits[bits >> 18];
        text += digits[bits >> 12 & 63];
        text += i + 1 < bytes.size() ? digits[bits >> 6 & 63] : '=';
        text += i + 2 < bytes.size() ? digits[bits & 63] : '=';
    }
    return text;
}

} // namespace

GltfBuilder::GltfBuilder() { json = {{"asset", {{"version", "2.0"}}}}; }

std::size_t GltfBuilder::AddView(const std::vector<std::uint8_t>& bytes)
{
    buffer.resize((buffer.size() + 3) / 4 * 4);
    json["bufferViews"].push_back({{"buffer", 0}, {"byteOffset", buffer.size()}, {"byteLength", bytes.size()}});
    Append(buffer, bytes.data(), bytes.size());
    return json["bufferViews"].size() - 1;
}

std::size_t GltfBuilder::AddAccessor(const std::string& shape, int componentType, const std::vector<double>& numbers,
                                     bool normalised)
{
    std::vector<std::uint8_t> bytes;
    for (const double x : numbers) {
        AppendComponent(bytes, componentType, x);
    }
    Json accessor{{"bufferView", AddView(bytes)},
                  {"componentType", componentType},
                  {"type", shape},
                  {"count", numbers.size() / ComponentsOf(shape)}};
    if (normalised) {
        accessor["normalized"] = true;
    }
    json["accessors"].push_back(accessor);
    return json["accessors"].size() - 1;
}

std::vector<std::uint8_t> GltfBuilder::Glb() const
{
    Json whole = json;
    whole["buffers"] = Json::array({{{"byteLength", buffer.size()}}});
    for (const Json& placeholder : json.value("buffers", Json::array())) {
        whole["buffers"].push_back(placeholder);
    }
    std::string text = whole.dump();
    text.resize((text.size() + 3) / 4 * 4, ' ');
    std::vector<std::uint8_t> bin = buffer;
    bin.resize((bin.size() + 3) / 4 * 4);
    std::vector<std::uint8_t> glb;
    Append(glb, "glTF", 4);
    AppendWord(glb, 2);
    AppendWord(glb, 12 + 8 + text.size() + 8 + bin.size());
    AppendWord(glb, text.size());
    Append(glb, "JSON", 4);
    Append(glb, text.data(), text.size());
    AppendWord(glb, bin.size());
    Append(glb, "BIN\0", 4);
    Append(glb, bin.data(), bin.size());
    return glb;
}

std::vector<std::uint8_t> GltfBuilder::TextWithFile(const std::string& uri) const
{
    Json whole = json;
    whole["buffers"] = Json::array({{{"byteLength", buffer.size()}, {"uri", uri}}});
    return BytesOf(whole.dump(2));
}

std::vector<std::uint8_t> GltfBuilder::Text() const
{
    return TextWithFile("data:application/octet-stream;base64," + Base64(buffer));
}

GltfBuilder MakeValidCharacter()
{
    GltfBuilder b;
    std::vector<double> positions;
    std::vector<double> joints;
    std::vector<double> weights;
    for (int row = 0; row < 4; ++row) {
        for (int side = 0; side < 2; ++side) {
            positions.insert(positions.end(), {double(side), double(row), 0});
            joints.insert(joints.end(), {double(row == 3 ? 1 : 0), double(row == 1 || row == 2 ? 1 : 0), 0, 0});
            const double first = row == 0 || row == 3 ? 1 : row == 1 ? 2.0 / 3 : 1.0 / 3;
            weights.insert(weights.end(), {first, row == 0 || row == 3 ? 0 : 1.0F - static_cast<float>(first), 0, 0});
        }
    }
    const std::vector<double> corners{0, 1, 2, 1, 3, 2, 2, 3, 4, 3, 5, 4, 4, 5, 6, 5, 7, 6};
    std::vector<double> matrices;
    for (int i = 0; i < 2; ++i) {
        matrices.insert(matrices.end(), {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, double(-i), 0, 1});
    }
    b.json["scene"] = 0;
    b.json["scenes"] = Json::array({{{"nodes", {0, 1}}}});
    b.json["nodes"] = Json::array({{{"name", "strip"}, {"mesh", 0}, {"skin", 0}},
                                   {{"name", "lower"}, {"children", {2}}},
                                   {{"name", "upper"}, {"translation", {0, 1, 0}}}});
    const std::size_t position = b.AddAccessor("VEC3", 5126, positions);
    b.json["accessors"][position]["min"] = {0, 0, 0};
    b.json["accessors"][position]["max"] = {1, 3, 0};
    const std::size_t joint = b.AddAccessor("VEC4", 5123, joints);
    const std::size_t weight = b.AddAccessor("VEC4", 5126, weights);
    const std::size_t index = b.AddAccessor("SCALAR", 5123, corners);
    b.json["meshes"] = Json::array({{{"name", "stripMesh"}, {"primitives", Json::array()}}});
    b.json["meshes"][0]["primitives"].push_back(
        {{"attributes", {{"POSITION", position}, {"JOINTS_0", joint}, {"WEIGHTS_0", weight}}}, {"indices", index}});
    b.json["skins"] =
        Json::array({{{"joints", {1, 2}}, {"inverseBindMatrices", b.AddAccessor("MAT4", 5126, matrices)}}});
    return b;
}

std::string RefusalOf(const std::vector<std::uint8_t>& bytes, const std::string& path)
{
    try {
        static_cast<void>(gltf::ReadCharacter(bytes, path));
        return "";
    } catch (const gltf::FileError& error) {
        return error.what();
    }
}

gltf::ModelWeights WeightsOf(const gltf::CharacterFile& file, int node)
{
    const gltf::Influences& influences =
        file.meshes.at(static_cast<std::size_t>(file.nodes.at(static_cast<std::size_t>(node)).mesh)).influences;
    return {node, influences.offsets, influences.joints, {influences.weights.begin(), influences.weights.end()}};
}

void SetRow(gltf::ModelWeights& weights, std::size_t vertex,
            const std::vector<std::pair<std::uint32_t, double>>& influences)
{
    gltf::ModelWeights changed{weights.node, {0}, {}, {}};
    for (std::size_t v = 0; v + 1 < weights.offsets.size(); ++v) {
        if (v == vertex) {
            for (const auto& [joint, weight] : influences) {
                changed.joints.push_back(joint);
                changed.weights.push_back(weight);
            }
        } else {
            for (std::size_t e = weights.offsets[v]; e < weights.offsets[v + 1]; ++e) {
                changed.joints.push_back(weights.joints[e]);
                changed.weights.push_back(weights.weights[e]);
            }
        }
        changed.offsets.push_back(static_cast<std::uint32_t>(changed.joints.size()));
    }
    weights = std::move(changed);
}

std::vector<std::pair<std::uint32_t, double>> RowOf(const gltf::Influences& influences, std::size_t vertex)
{
    std::vector<std::pair<std::uint32_t, double>> row;
    for (std::size_t e = influences.offsets.at(vertex); e < influences.offsets.at(vertex + 1); ++e) {
        row.emplace_back(influences.joints[e], influences.weights[e]);
    }
    return row;
}

std::vector<std::uint8_t> BytesOf(const std::string& text) { return {text.begin(), text.end()}; }

TemporaryFolder::TemporaryFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "skindesk-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder can be made");
    }
    m_path = pattern;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::vector<std::string> TemporaryFolder::Names() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_path)) {
        names.push_back(entry.path().lexically_relative(m_path).string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string DataPath(const std::string& name) { return std::string(SKINDESK_TEST_DATA) + "/" + name; }

} // namespace skindesk::test
