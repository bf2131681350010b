// SPDX-License-Identifier: MIT
// Accessors, buffer views and the binary container of a new glTF file.
#include "NewGltfBytes.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace skindesk::imports {

namespace {

constexpr int UNSIGNED_BYTE = 5121;
constexpr int UNSIGNED_SHORT = 5123;
constexpr int UNSIGNED_INT = 5125;
constexpr int FLOAT = 5126;
constexpr int ARRAY_BUFFER = 34962;
constexpr int ELEMENT_ARRAY_BUFFER = 34963;

const char* ShapeOf(std::size_t width)
{
    switch (width) {
    case 1:
        return "SCALAR";
    case 2:
        return "VEC2";
    case 3:
        return "VEC3";
    case 4:
        return "VEC4";
    default:
        return "MAT4";
    }
}

template <typename T> std::vector<T> Narrowed(std::span<const std::uint32_t> values)
{
    std::vector<T> narrow(values.size());
    std::transform(values.begin(), values.end(), narrow.begin(), [](std::uint32_t v) { return static_cast<T>(v); });
    return narrow;
}

void AppendWord(std::vector<std::uint8_t>& file, std::size_t word)
{
    for (unsigned i = 0; i < 4; ++i) {
        file.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
    }
}

void AppendChunk(std::vector<std::uint8_t>& file, const char* kind, std::span<const std::uint8_t> bytes, char padding)
{
    const std::size_t padded = (bytes.size() + 3) / 4 * 4;
    AppendWord(file, padded);
    file.insert(file.end(), kind, kind + 4);
    file.insert(file.end(), bytes.begin(), bytes.end());
    file.insert(file.end(), padded - bytes.size(), static_cast<std::uint8_t>(padding));
}

} // namespace

template <typename T>
int NewGltfBytes::Add(std::span<const T> values, std::size_t width, ViewKind kind, int componentType)
{
    // Vertex data begin and advance in steps of four bytes; so does everything here.
    const std::size_t element = width * sizeof(T);
    const std::size_t stride = kind == ViewKind::Vertices ? (element + 3) / 4 * 4 : element;
    const std::size_t count = values.size() / width;
    m_bytes.resize((m_bytes.size() + 3) / 4 * 4);
    const std::size_t start = m_bytes.size();
    m_bytes.resize(start + stride * count);
    for (std::size_t i = 0; stride != element && i < count; ++i) {
        std::memcpy(m_bytes.data() + start + i * stride, values.data() + i * width, element);
    }
    if (stride == element && count > 0) {
        std::memcpy(m_bytes.data() + start, values.data(), element * count);
    }
    Json view{{"buffer", 0}, {"byteOffset", start}, {"byteLength", stride * count}};
    if (stride != element) {
        view["byteStride"] = stride;
    }
    if (kind != ViewKind::Other) {
        view["target"] = kind == ViewKind::Vertices ? ARRAY_BUFFER : ELEMENT_ARRAY_BUFFER;
    }
    m_accessors.push_back(
        {{"bufferView", m_views.size()}, {"componentType", componentType}, {"count", count}, {"type", ShapeOf(width)}});
    m_views.push_back(std::move(view));
    return static_cast<int>(m_accessors.size()) - 1;
}

int NewGltfBytes::AddFloats(std::span<const float> values, std::size_t width, ViewKind kind, bool withBounds)
{
    const int index = Add(values, width, kind, FLOAT);
    if (withBounds) {
        std::vector<float> least(width, std::numeric_limits<float>::max());
        std::vector<float> most(width, std::numeric_limits<float>::lowest());
        for (std::size_t i = 0; i < values.size(); ++i) {
            least[i % width] = std::min(least[i % width], values[i]);
            most[i % width] = std::max(most[i % width], values[i]);
        }
        m_accessors.back()["min"] = least;
        m_accessors.back()["max"] = most;
    }
    return index;
}

int NewGltfBytes::AddWholeNumbers(std::span<const std::uint32_t> values, std::size_t width, ViewKind kind,
                                  std::uint32_t largest)
{
    if (kind != ViewKind::Corners && largest <= 0xFF) {
        return Add(std::span<const std::uint8_t>(Narrowed<std::uint8_t>(values)), width, kind, UNSIGNED_BYTE);
    }
    if (largest < 0xFFFF || (kind != ViewKind::Corners && largest == 0xFFFF)) {
        return Add(std::span<const std::uint16_t>(Narrowed<std::uint16_t>(values)), width, kind, UNSIGNED_SHORT);
    }
    return Add(values, width, kind, UNSIGNED_INT);
}

std::vector<std::uint8_t> NewGltfBytes::FinishGlb(Json document)
{
    document["accessors"] = std::move(m_accessors);
    document["bufferViews"] = std::move(m_views);
    document["buffers"] = Json::array({{{"byteLength", m_bytes.size()}}});
    // Names of other files are not always UTF-8; what is none becomes the replacement character.
    const std::string text = document.dump(-1, ' ', false, Json::error_handler_t::replace);
    constexpr std::size_t HEADERS = 12 + 8 + 8;
    const std::size_t size = HEADERS + (text.size() + 3) / 4 * 4 + (m_bytes.size() + 3) / 4 * 4;
    if (size > std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("a .glb file holds at most 4 GiB, " + std::to_string(size) + " bytes are needed");
    }
    std::vector<std::uint8_t> file;
    file.reserve(size);
    const std::string magic = "glTF";
    file.insert(file.end(), magic.begin(), magic.end());
    AppendWord(file, 2);
    AppendWord(file, size);
    AppendChunk(file, "JSON", {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, ' ');
    AppendChunk(file, "BIN", m_bytes, '\0');
    m_bytes = {};
    return file;
}

} // namespace skindesk::imports
