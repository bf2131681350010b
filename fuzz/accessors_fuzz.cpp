// SPDX-License-Identifier: MIT
// Any description of accessors over any bytes: it is refused in one line, or every number that is read is the one that
// stands in the bytes.
#include "Require.h"
#include "gltf/Accessor.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

using namespace skindesk::gltf;

constexpr std::size_t LOOKED_AT = 512; // elements of an accessor

// Mostly small, so that it fits; sometimes any number.
std::string NumberFrom(FuzzedDataProvider& from, unsigned small)
{
    if (from.ConsumeIntegralInRange(0, 15) == 0) {
        return std::to_string(from.ConsumeIntegral<std::uint64_t>());
    }
    return std::to_string(from.ConsumeIntegralInRange(0U, small));
}

const char* ShapeFrom(FuzzedDataProvider& from)
{
    static constexpr std::array SHAPES{"SCALAR", "VEC2", "VEC3", "VEC4", "MAT2", "MAT3", "MAT4", "VEC5"};
    return from.PickValueInArray(SHAPES);
}

int TypeFrom(FuzzedDataProvider& from)
{
    static constexpr std::array TYPES{5120, 5121, 5122, 5123, 5125, 5126, 5124};
    return from.PickValueInArray(TYPES);
}

std::string ViewFrom(FuzzedDataProvider& from)
{
    std::string view =
        "{\"buffer\":0,\"byteOffset\":" + NumberFrom(from, 64) + ",\"byteLength\":" + NumberFrom(from, 255);
    if (from.ConsumeBool()) {
        view += ",\"byteStride\":" + NumberFrom(from, 80);
    }
    return view + "}";
}

std::string SparseFrom(FuzzedDataProvider& from)
{
    return ",\"sparse\":{\"count\":" + NumberFrom(from, 8) + ",\"indices\":{\"bufferView\":" + NumberFrom(from, 3) +
           ",\"byteOffset\":" + NumberFrom(from, 16) + ",\"componentType\":" + std::to_string(TypeFrom(from)) +
           "},\"values\":{\"bufferView\":" + NumberFrom(from, 3) + ",\"byteOffset\":" + NumberFrom(from, 16) + "}}";
}

std::string AccessorFrom(FuzzedDataProvider& from)
{
    std::string accessor = "{\"componentType\":" + std::to_string(TypeFrom(from)) + ",\"type\":\"" + ShapeFrom(from) +
                           "\",\"count\":" + NumberFrom(from, 40);
    if (from.ConsumeIntegralInRange(0, 7) != 0) {
        accessor += ",\"bufferView\":" + NumberFrom(from, 3) + ",\"byteOffset\":" + NumberFrom(from, 32);
    }
    accessor += from.ConsumeBool() ? ",\"normalized\":true" : "";
    accessor += from.ConsumeIntegralInRange(0, 3) == 0 ? SparseFrom(from) : "";
    return accessor + "}";
}

ByteBlock FileFrom(FuzzedDataProvider& from)
{
    std::string views;
    std::string accessors;
    for (int i = 0; i < 4; ++i) {
        views += (i > 0 ? "," : "") + ViewFrom(from);
    }
    for (int i = 0; i < 4; ++i) {
        accessors += (i > 0 ? "," : "") + AccessorFrom(from);
    }
    const std::vector<std::uint8_t> bytes = from.ConsumeRemainingBytes<std::uint8_t>();
    std::string json = "{\"asset\":{\"version\":\"2.0\"},\"buffers\":[{\"byteLength\":" + std::to_string(bytes.size()) +
                       "}],\"bufferViews\":[" + views + "],\"accessors\":[" + accessors + "]}";
    json.resize((json.size() + 3) / 4 * 4, ' ');
    const auto word = [](std::size_t n) {
        const auto number = static_cast<std::uint32_t>(n);
        return std::string(reinterpret_cast<const char*>(&number), 4);
    };
    const std::string file = "glTF" + word(2) + word(28 + json.size() + bytes.size()) + word(json.size()) + "JSON" +
                             json + word(bytes.size()) + std::string("BIN\0", 4) +
                             std::string(bytes.begin(), bytes.end());
    return ByteBlock(ByteSpan(reinterpret_cast<const std::uint8_t*>(file.data()), file.size()));
}

// The first component of an element, from the buffer's bytes.
double Expected(const OpenedFile& file, const Accessor& accessor, std::size_t element)
{
    if (accessor.view < 0) {
        return 0;
    }
    const BufferView& view = file.Views()[static_cast<std::size_t>(accessor.view)];
    const std::size_t stride = view.stride != 0 ? view.stride : accessor.elementSize;
    const ByteSpan buffer = file.Buffers()[static_cast<std::size_t>(view.buffer)].bytes;
    const std::size_t at = view.offset + accessor.offset + element * stride;
    Require(at + accessor.elementSize <= buffer.size());
    const auto stored = [&]<typename T>(T value) {
        std::memcpy(&value, buffer.data() + at, sizeof value);
        return static_cast<double>(value);
    };
    switch (accessor.type) {
    case ComponentType::Int8:
        return stored(std::int8_t{});
    case ComponentType::UInt8:
        return stored(std::uint8_t{});
    case ComponentType::Int16:
        return stored(std::int16_t{});
    case ComponentType::UInt16:
        return stored(std::uint16_t{});
    case ComponentType::UInt32:
        return stored(std::uint32_t{});
    default:
        return stored(float{});
    }
}

void CheckValues(const OpenedFile& file, const Accessor& accessor, const AccessorView& view)
{
    Require(view.Count() == accessor.count && view.Components() == accessor.components);
    const std::size_t count = std::min(view.Count(), LOOKED_AT);
    std::vector<float> floats(count * view.Components());
    view.Floats(0, count, floats.data());
    if (IsUnsigned(accessor.type)) {
        std::vector<std::uint32_t> whole(count * view.Components());
        view.Unsigned(0, count, whole.data());
        for (std::size_t i = 0; accessor.sparse == JSON_NONE && i < count; ++i) {
            Require(whole[i * view.Components()] == Expected(file, accessor, i));
        }
    }
    for (std::size_t i = 0; accessor.sparse == JSON_NONE && i < count; ++i) {
        double expected = Expected(file, accessor, i);
        const bool isFraction = accessor.normalised && accessor.type != ComponentType::Float;
        if (isFraction) {
            expected = std::max(expected / NormalisingDivisor(accessor.type), -1.0);
        }
        const float read = floats[i * view.Components()];
        const float wanted = static_cast<float>(expected);
        const bool isNear = isFraction && std::abs(read - wanted) < 1e-6F; // 32 bits do not fit into a float
        Require(isNear || read == wanted || (read != read && wanted != wanted));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    FuzzedDataProvider from(data, size);
    try {
        const OpenedFile file(FileFrom(from), "fuzz.glb");
        DecodeBudget budget(file);
        for (int i = 0; i < 4; ++i) {
            try {
                const Accessor accessor = DescribeAccessor(file, i);
                CheckValues(file, accessor, ViewAccessor(file, accessor, budget));
            } catch (const FileError& error) {
                Require(std::string(error.what()).find('\n') == std::string::npos);
            }
        }
    } catch (const FileError& error) {
        Require(std::string(error.what()).find('\n') == std::string::npos);
    }
    return 0;
}
