// SPDX-License-Identifier: MIT
// What differs between two glTF files, seen by eyes of their own.
#include "GltfCompare.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <stdexcept>

namespace skindesk::test {

namespace {

using nlohmann::json;

// Notes the text of every leaf with its pointer, in the order of the file.
class TokenCollector : public nlohmann::json_sax<json>
{
public:
    explicit TokenCollector(std::vector<std::pair<std::string, std::string>>& tokens) : m_tokens(tokens) {}

    bool null() override { return Leaf("null"); }
    bool boolean(bool value) override { return Leaf(value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override { return Leaf(std::to_string(value)); }
    bool number_unsigned(number_unsigned_t value) override { return Leaf(std::to_string(value)); }
    bool number_float(number_float_t, const string_t& text) override { return Leaf(text); }
    bool string(string_t& value) override { return Leaf("\"" + value + "\""); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return Open(false); }
    bool key(string_t& name) override
    {
        m_open.back().key = name;
        return true;
    }
    bool end_object() override { return Close("{}"); }
    bool start_array(std::size_t) override { return Open(true); }
    bool end_array() override { return Close("[]"); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& error) override
    {
        throw std::runtime_error(error.what());
    }

private:
    struct Level
    {
        bool isArray;
        std::size_t index;
        std::string key;
    };

    bool Leaf(const std::string& text)
    {
        std::string pointer;
        for (const Level& level : m_open) {
            pointer += "/" + (level.isArray ? std::to_string(level.index) : level.key);
        }
        m_tokens.emplace_back(pointer, text);
        Step();
        return true;
    }

    void Step()
    {
        if (!m_open.empty() && m_open.back().isArray) {
            ++m_open.back().index;
        }
    }

    bool Open(bool isArray)
    {
        m_open.push_back({isArray, 0, ""});
        m_sizes.push_back(m_tokens.size());
        return true;
    }

    bool Close(const char* empty)
    {
        m_open.pop_back();
        const bool isEmpty = m_sizes.back() == m_tokens.size();
        m_sizes.pop_back();
        if (isEmpty) {
            return Leaf(empty);
        }
        Step();
        return true;
    }

    std::vector<std::pair<std::string, std::string>>& m_tokens;
    std::vector<Level> m_open;
    std::vector<std::size_t> m_sizes;
};

std::uint32_t WordAt(const std::vector<std::uint8_t>& bytes, std::size_t at)
{
    std::uint32_t word = 0;
    if (at + 4 > bytes.size()) {
        throw std::runtime_error("the GLB ends too early");
    }
    std::memcpy(&word, &bytes[at], 4);
    return word;
}

std::vector<std::uint8_t> FromBase64(const std::string& text)
{
    const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<std::uint8_t> bytes;
    unsigned bits = 0;
    int count = 0;
    for (const char c : text) {
        if (c == '=') {
            break;
        }
        bits = bits << 6 | static_cast<unsigned>(digits.find(c));
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<std::uint8_t>(bits >> count));
        }
    }
    return bytes;
}

std::string Unpercented(const std::string& text)
{
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            name += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            name += text[i];
        }
    }
    return name;
}

void ReadBuffers(RawGltf& file, const std::string& path, const std::vector<std::uint8_t>& bin)
{
    for (const json& buffer : file.json.value("buffers", json::array())) {
        const std::string uri = buffer.value("uri", "");
        std::vector<std::uint8_t> bytes;
        if (uri.empty()) {
            bytes = bin;
            if (!file.buffers.empty()) {
                bytes.assign(buffer.at("byteLength").get<std::size_t>(),
                             0); // stands for bytes that are compressed elsewhere
            }
        } else if (uri.starts_with("data:")) {
            bytes = FromBase64(uri.substr(uri.find(',') + 1));
        } else {
            bytes = ReadBytes((std::filesystem::path(path).parent_path() / Unpercented(uri)).string());
        }
        const std::size_t length = buffer.at("byteLength");
        if (bytes.size() < length) {
            throw std::runtime_error("a buffer is shorter than it says");
        }
        bytes.resize(length);
        file.buffers.push_back(std::move(bytes));
    }
}

double Component(const std::uint8_t* at, int type)
{
    const auto load = [at](auto value) {
        std::memcpy(&value, at, sizeof value);
        return static_cast<double>(value);
    };
    switch (type) {
    case 5120:
        return load(std::int8_t{});
    case 5121:
        return load(std::uint8_t{});
    case 5122:
        return load(std::int16_t{});
    case 5123:
        return load(std::uint16_t{});
    case 5125:
        return load(std::uint32_t{});
    default:
        return load(float{});
    }
}

std::size_t SizeOf(int type) { return type <= 5121 ? 1 : type <= 5123 ? 2 : 4; }

std::size_t ComponentsOf(const std::string& shape)
{
    static const std::map<std::string, std::size_t> COUNTS{{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4},
                                                           {"MAT2", 4},   {"MAT3", 9}, {"MAT4", 16}};
    return COUNTS.at(shape);
}

// All accessors that are some primitive's or surface's joints or weights.
std::set<std::size_t> WeightAccessors(const json& value)
{
    std::set<std::size_t> found;
    if (value.is_object()) {
        for (const auto& [key, member] : value.items()) {
            if (key == "KHR_draco_mesh_compression") {
                return {}; // its numbers count the attributes of the compressed mesh
            }
            if ((key.starts_with("JOINTS_") || key.starts_with("WEIGHTS_")) && member.is_number_unsigned()) {
                found.insert(member.get<std::size_t>());
            }
        }
    }
    if (value.is_structured()) {
        for (const json& child : value) {
            found.merge(WeightAccessors(child));
        }
    }
    return found;
}

// The bytes of the elements of an accessor, gaps between them left out.
void AddBytesOf(const RawGltf& file, std::size_t index, std::map<std::size_t, std::set<std::size_t>>& bytes)
{
    const json& accessor = file.json.at("accessors").at(index);
    if (!accessor.contains("bufferView")) {
        return;
    }
    const json& view = file.json.at("bufferViews").at(accessor.at("bufferView").get<std::size_t>());
    const std::size_t size = ComponentsOf(accessor.at("type")) * SizeOf(accessor.at("componentType"));
    const std::size_t stride = view.value("byteStride", size);
    const std::size_t start = view.value("byteOffset", std::size_t{0}) + accessor.value("byteOffset", std::size_t{0});
    for (std::size_t i = 0; i < accessor.at("count").get<std::size_t>(); ++i) {
        for (std::size_t b = 0; b < size; ++b) {
            bytes[view.at("buffer").get<std::size_t>()].insert(start + i * stride + b);
        }
    }
}

bool MatchesAny(const std::string& pointer, const std::vector<std::string>& patterns)
{
    return std::any_of(patterns.begin(), patterns.end(),
                       [&](const std::string& p) { return std::regex_match(pointer, std::regex(p)); });
}

bool IsAddedElement(const std::string& pointer, const RawGltf& before)
{
    std::smatch match;
    if (!std::regex_match(pointer, match, std::regex("/(accessors|bufferViews|buffers|meshes)/([0-9]+)(/.*)?"))) {
        return false;
    }
    const std::size_t known = before.json.value(match[1].str(), json::array()).size();
    return std::stoul(match[2].str()) >= known;
}

void JudgeJson(const RawGltf& before, const GltfChanges& changes, std::vector<std::string>& foreign)
{
    const std::string attributes =
        "/meshes/[0-9]+/(primitives/[0-9]+|extensions/TW_nurbs_surface)/attributes/(JOINTS|WEIGHTS)_[0-9]+";
    const std::string compressed = "/meshes/[0-9]+/primitives/[0-9]+/extensions/KHR_draco_mesh_compression/attributes/"
                                   "(JOINTS|WEIGHTS)_[0-9]+";
    const std::vector<std::string> replaceable{attributes, "/buffers/[0-9]+/(byteLength|uri)", "/nodes/[0-9]+/mesh",
                                               "/skins/[0-9]+/inverseBindMatrices"};
    const std::set<std::size_t> weights = WeightAccessors(before.json);
    for (const std::string& pointer : changes.replaced) {
        std::smatch match;
        const bool isBound = std::regex_match(pointer, match, std::regex("/accessors/([0-9]+)/(min|max)/[0-9]+")) &&
                             weights.contains(std::stoul(match[1].str()));
        if (!isBound && !MatchesAny(pointer, replaceable)) {
            foreign.push_back("replaced " + pointer);
        }
    }
    for (const std::string& pointer : changes.removed) {
        if (!MatchesAny(pointer, {attributes, compressed})) {
            foreign.push_back("removed " + pointer);
        }
    }
    for (const std::string& pointer : changes.added) {
        if (!IsAddedElement(pointer, before) &&
            !MatchesAny(pointer, {attributes, "/skins/[0-9]+/joints/[0-9]+", "/skins/[0-9]+/inverseBindMatrices"})) {
            foreign.push_back("added " + pointer);
        }
    }
    if (!changes.keepsOrder) {
        foreign.emplace_back("the order of the JSON is another");
    }
}

} // namespace

std::vector<std::uint8_t> ReadBytes(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot open " + path);
    }
    return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteBytes(const std::string& path, const std::vector<std::uint8_t>& bytes)
{
    std::ofstream stream(path, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

RawGltf ReadRawGltf(const std::string& path)
{
    RawGltf file;
    file.bytes = ReadBytes(path);
    std::string text(file.bytes.begin(), file.bytes.end());
    std::vector<std::uint8_t> bin;
    if (text.starts_with("glTF")) {
        if (WordAt(file.bytes, 8) > file.bytes.size()) {
            throw std::runtime_error("the GLB is shorter than it says");
        }
        const std::size_t jsonSize = WordAt(file.bytes, 12);
        text = text.substr(20, jsonSize);
        const std::size_t second = 20 + jsonSize;
        if (second + 8 <= file.bytes.size()) {
            const std::size_t size = WordAt(file.bytes, second);
            if (second + 8 + size > file.bytes.size() || size % 4 != 0 || jsonSize % 4 != 0) {
                throw std::runtime_error("a chunk of the GLB does not fit");
            }
            bin.assign(file.bytes.begin() + static_cast<std::ptrdiff_t>(second + 8),
                       file.bytes.begin() + static_cast<std::ptrdiff_t>(second + 8 + size));
            file.glbTail = file.bytes.size() - second - 8 - size;
        }
    }
    file.json = json::parse(text);
    TokenCollector collector(file.tokens);
    json::sax_parse(text, &collector);
    ReadBuffers(file, path, bin);
    return file;
}

std::vector<std::vector<double>> DecodeRaw(const RawGltf& file, std::size_t index)
{
    const json& accessor = file.json.at("accessors").at(index);
    const int type = accessor.at("componentType");
    const std::size_t components = ComponentsOf(accessor.at("type"));
    const std::size_t size = components * SizeOf(type);
    const bool isNormalised = accessor.value("normalized", false);
    const std::map<int, double> divisors{{5120, 127}, {5121, 255}, {5122, 32767}, {5123, 65535}};
    std::vector<std::vector<double>> elements(accessor.at("count").get<std::size_t>(), std::vector<double>(components));
    const auto decode = [&](const json& part, std::size_t i, std::size_t element, std::size_t stride) {
        const json& view = file.json.at("bufferViews").at(part.at("bufferView").get<std::size_t>());
        const std::vector<std::uint8_t>& buffer = file.buffers.at(view.at("buffer").get<std::size_t>());
        const std::size_t start = view.value("byteOffset", std::size_t{0}) + part.value("byteOffset", std::size_t{0});
        for (std::size_t c = 0; c < components; ++c) {
            const std::size_t at = start + i * view.value("byteStride", stride) + c * SizeOf(type);
            if (at + SizeOf(type) > buffer.size()) {
                throw std::runtime_error("an accessor leaves its buffer");
            }
            const double stored = Component(&buffer[at], type);
            elements.at(element)[c] = isNormalised ? std::max(stored / divisors.at(type), -1.0) : stored;
        }
    };
    for (std::size_t i = 0; i < elements.size() && accessor.contains("bufferView"); ++i) {
        decode(accessor, i, i, size);
    }
    if (accessor.contains("sparse")) {
        const json& sparse = accessor.at("sparse");
        const json& indices = sparse.at("indices");
        const int indexType = indices.at("componentType");
        const json& view = file.json.at("bufferViews").at(indices.at("bufferView").get<std::size_t>());
        const std::vector<std::uint8_t>& buffer = file.buffers.at(view.at("buffer").get<std::size_t>());
        const std::size_t start =
            view.value("byteOffset", std::size_t{0}) + indices.value("byteOffset", std::size_t{0});
        for (std::size_t i = 0; i < sparse.at("count").get<std::size_t>(); ++i) {
            const double element = Component(&buffer.at(start + i * SizeOf(indexType)), indexType);
            decode(sparse.at("values"), i, static_cast<std::size_t>(element), size);
        }
    }
    return elements;
}

GltfChanges CompareGltf(const RawGltf& before, const RawGltf& after)
{
    GltfChanges changes;
    const std::map<std::string, std::string> old(before.tokens.begin(), before.tokens.end());
    const std::map<std::string, std::string> fresh(after.tokens.begin(), after.tokens.end());
    std::vector<std::string> oldOrder;
    std::vector<std::string> newOrder;
    for (const auto& [pointer, text] : before.tokens) {
        const auto found = fresh.find(pointer);
        if (found == fresh.end()) {
            changes.removed.push_back(pointer);
        } else {
            oldOrder.push_back(pointer);
            if (found->second != text) {
                changes.replaced.push_back(pointer);
            }
        }
    }
    for (const auto& [pointer, text] : after.tokens) {
        if (old.contains(pointer)) {
            newOrder.push_back(pointer);
        } else {
            changes.added.push_back(pointer);
        }
    }
    changes.keepsOrder = oldOrder == newOrder;
    for (std::size_t b = 0; b < std::min(before.buffers.size(), after.buffers.size()); ++b) {
        const std::size_t both = std::min(before.buffers[b].size(), after.buffers[b].size());
        for (std::size_t i = 0; i < both; ++i) {
            if (before.buffers[b][i] != after.buffers[b][i]) {
                changes.bytes[b].push_back(i);
            }
        }
    }
    return changes;
}

std::vector<std::string> ForeignChanges(const RawGltf& before, const RawGltf& after)
{
    const GltfChanges changes = CompareGltf(before, after);
    std::vector<std::string> foreign;
    JudgeJson(before, changes, foreign);
    std::map<std::size_t, std::set<std::size_t>> weightBytes;
    for (const std::size_t accessor : WeightAccessors(before.json)) {
        AddBytesOf(before, accessor, weightBytes);
    }
    for (const auto& [buffer, offsets] : changes.bytes) {
        for (const std::size_t offset : offsets) {
            if (!weightBytes[buffer].contains(offset)) {
                foreign.push_back("byte " + std::to_string(offset) + " of buffer " + std::to_string(buffer));
            }
        }
    }
    for (std::size_t b = 0; b < before.buffers.size(); ++b) {
        if (b >= after.buffers.size() || after.buffers[b].size() < before.buffers[b].size()) {
            foreign.push_back("buffer " + std::to_string(b) + " became shorter");
        }
    }
    if (before.glbTail != after.glbTail) {
        foreign.emplace_back("chunks behind the binary one became another size");
    }
    return foreign;
}

} // namespace skindesk::test
