// SPDX-License-Identifier: MIT
// Typed arrays in a file.
#include "Accessor.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace skindesk::gltf {

namespace {

struct Shape
{
    const char* name;
    std::size_t components;
    std::size_t columns; // of a matrix; 1 for the rest
};

constexpr std::array SHAPES{Shape{"SCALAR", 1, 1}, Shape{"VEC2", 2, 1}, Shape{"VEC3", 3, 1}, Shape{"VEC4", 4, 1},
                            Shape{"MAT2", 4, 2},   Shape{"MAT3", 9, 3}, Shape{"MAT4", 16, 4}};

// Columns of a matrix begin at multiples of four bytes.
std::size_t ElementSize(const Shape& shape, std::size_t componentSize)
{
    if (shape.columns == 1) {
        return shape.components * componentSize;
    }
    const std::size_t column = shape.components / shape.columns * componentSize;
    return shape.columns * ((column + 3) / 4 * 4);
}

// Accessors without bytes of their own are all zeros, and all their elements can be these.
constexpr std::array<std::uint8_t, 64> ZEROS{};

constexpr std::size_t BUDGET_FLOOR = std::size_t{16} << 20;
// Meshes that all draw from one common pool of vertices are decoded once each; more than this many are no character.
constexpr std::size_t BUDGET_PER_FILE_BYTE = 128;
// A decoded vertex of a character has some forty bytes, what is made of it some hundred.
constexpr std::size_t BUDGET_PER_DECODED_BYTE = 4;

ComponentType ReadComponentType(const OpenedFile& file, JsonValue accessor)
{
    const JsonValue v = file.Json().Member(accessor, "componentType");
    const std::size_t code = v == JSON_NONE ? 0 : file.WholeNumber(v, "componentType");
    if (code < 5120 || code > 5126 || code == 5124) {
        file.Refuse(v == JSON_NONE ? accessor : v,
                    "componentType is " + std::to_string(code) + ", 5120 to 5123, 5125 and 5126 are known");
    }
    return static_cast<ComponentType>(code);
}

const Shape& ReadShape(const OpenedFile& file, JsonValue accessor)
{
    const std::string name = file.TextOr(accessor, "type", "");
    const auto found = std::find_if(SHAPES.begin(), SHAPES.end(), [&](const Shape& s) { return name == s.name; });
    if (found == SHAPES.end()) {
        file.Refuse(accessor, "the accessor's type is \"" + OneLine(name) + "\", which is unknown");
    }
    return *found;
}

struct ElementRange
{
    const std::uint8_t* base;
    std::size_t stride;
};

// `count` elements of `size` bytes from `offset` of a view on, or an error at `where`.
ElementRange RangeInView(const OpenedFile& file, JsonValue where, int viewIndex, std::size_t offset, std::size_t count,
                         std::size_t size)
{
    const BufferView& view = file.Views()[static_cast<std::size_t>(viewIndex)];
    const std::size_t stride = view.stride == 0 ? size : view.stride;
    if (stride < size) {
        file.Refuse(where,
                    "byteStride is " + std::to_string(stride) + ", an element has " + std::to_string(size) + " bytes");
    }
    // Counts and offsets are at most 2^53 and strides at most 252, so nothing here wraps.
    const std::size_t end = count == 0 ? offset : offset + (count - 1) * stride + size;
    if (end > view.length) {
        file.Refuse(where, Counted(count, "element needs ", "elements need ") + std::to_string(end) +
                               " bytes of the buffer view, it has " + std::to_string(view.length));
    }
    if (count == 0) {
        return {ZEROS.data(), stride};
    }
    return {file.ViewBytes(viewIndex).data() + offset, stride};
}

template <class Index> std::size_t IndexAt(const std::uint8_t* at)
{
    Index index;
    std::memcpy(&index, at, sizeof index);
    return index;
}

std::size_t SparseIndex(const std::uint8_t* at, ComponentType type)
{
    switch (type) {
    case ComponentType::UInt8:
        return *at;
    case ComponentType::UInt16:
        return IndexAt<std::uint16_t>(at);
    default:
        return IndexAt<std::uint32_t>(at);
    }
}

int SparsePartView(const OpenedFile& file, JsonValue part)
{
    const int view = file.IndexOr(file.Object(part), "bufferView", "bufferViews", -1);
    if (view < 0) {
        file.Refuse(part, "the sparse part names no buffer view");
    }
    return view;
}

// Copies the sparse values over the dense elements in `into`.
void ApplySparse(const OpenedFile& file, const Accessor& accessor, std::uint8_t* into)
{
    const JsonPlaces& json = file.Json();
    const JsonValue countValue = json.Member(accessor.sparse, "count");
    const std::size_t count = countValue == JSON_NONE ? 0 : file.WholeNumber(countValue, "count");
    if (count > accessor.count) {
        file.Refuse(countValue, Counted(count, "sparse value replaces ", "sparse values replace ") +
                                    Counted(accessor.count, "element", "elements"));
    }
    const JsonValue indices = json.Member(accessor.sparse, "indices");
    const JsonValue values = json.Member(accessor.sparse, "values");
    if (indices == JSON_NONE || values == JSON_NONE) {
        file.Refuse(accessor.sparse, "indices or values are missing");
    }
    const int indexView = SparsePartView(file, indices);
    const int valueView = SparsePartView(file, values);
    const ComponentType type = ReadComponentType(file, indices);
    if (!IsUnsigned(type)) {
        file.Refuse(indices, "the sparse indices have no unsigned component type");
    }
    const ElementRange where =
        RangeInView(file, indices, indexView, file.WholeNumberOr(indices, "byteOffset", 0), count, ComponentSize(type));
    const ElementRange what =
        RangeInView(file, values, valueView, file.WholeNumberOr(values, "byteOffset", 0), count, accessor.elementSize);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t element = SparseIndex(where.base + i * where.stride, type);
        if (element >= accessor.count) {
            file.Refuse(indices, "the sparse index " + std::to_string(element) + " is named, there are " +
                                     Counted(accessor.count, "element", "elements"));
        }
        std::memcpy(into + element * accessor.elementSize, what.base + i * what.stride, accessor.elementSize);
    }
}

} // namespace

std::size_t ComponentSize(ComponentType type)
{
    switch (type) {
    case ComponentType::Int8:
    case ComponentType::UInt8:
        return 1;
    case ComponentType::Int16:
    case ComponentType::UInt16:
        return 2;
    default:
        return 4;
    }
}

bool IsUnsigned(ComponentType type)
{
    return type == ComponentType::UInt8 || type == ComponentType::UInt16 || type == ComponentType::UInt32;
}

double NormalisingDivisor(ComponentType type)
{
    switch (type) {
    case ComponentType::Int8:
        return 127;
    case ComponentType::UInt8:
        return 255;
    case ComponentType::Int16:
        return 32767;
    case ComponentType::UInt16:
        return 65535;
    case ComponentType::UInt32:
        return 4294967295.0;
    default:
        return 1;
    }
}

DecodeBudget::DecodeBudget(const OpenedFile& file)
    : m_file(file), m_left(BUDGET_FLOOR + BUDGET_PER_FILE_BYTE * file.TotalBytes())
{
}

void DecodeBudget::Spend(JsonValue where, std::size_t count, std::size_t bytesEach)
{
    if (bytesEach != 0 && count > m_left / bytesEach) {
        m_file.Refuse(where, "the file has " + std::to_string(m_file.TotalBytes()) +
                                 " bytes and names them so often that more than " +
                                 std::to_string(BUDGET_PER_FILE_BYTE) + " times as many would be needed");
    }
    m_left -= count * bytesEach;
    m_spent += count * bytesEach;
}

void DecodeBudget::Allow(std::size_t decodedBytes) { m_left += BUDGET_PER_DECODED_BYTE * decodedBytes; }

void DecodeBudget::NoteMisaligned(JsonValue accessor) { m_misaligned.insert(accessor); }

AccessorView::AccessorView(const Accessor& accessor, const std::uint8_t* base, std::size_t stride)
    : m_base(base), m_stride(stride), m_count(accessor.count), m_components(accessor.components), m_type(accessor.type),
      m_normalised(accessor.normalised)
{
}

AccessorView::AccessorView(const Accessor& accessor, std::shared_ptr<const ByteBlock> owned)
    : AccessorView(accessor, owned->Span().data(), accessor.elementSize)
{
    m_owned = std::move(owned);
}

template <class Stored, class Out, class Convert>
void AccessorView::Decode(std::size_t first, std::size_t n, Out* out, Convert convert) const
{
    // Elements that lie close are one run of numbers, which the compiler turns into wide instructions.
    if (m_stride == m_components * sizeof(Stored)) {
        const std::uint8_t* run = Element(first);
        for (std::size_t i = 0; i < n * m_components; ++i) {
            Stored stored;
            std::memcpy(&stored, run + i * sizeof stored, sizeof stored);
            out[i] = convert(stored);
        }
        return;
    }
    for (std::size_t i = first; i < first + n; ++i) {
        const std::uint8_t* element = Element(i);
        for (std::size_t c = 0; c < m_components; ++c) {
            Stored stored;
            std::memcpy(&stored, element + c * sizeof stored, sizeof stored);
            *out++ = convert(stored);
        }
    }
}

void AccessorView::Floats(std::size_t first, std::size_t n, float* out) const
{
    const auto plain = [](auto stored) { return static_cast<float>(stored); };
    const auto scale = static_cast<float>(NormalisingDivisor(m_type));
    const auto fraction = [scale](auto stored) { return std::max(static_cast<float>(stored) / scale, -1.0F); };
    switch (m_type) {
    case ComponentType::Float:
        Decode<float>(first, n, out, plain);
        break;
    case ComponentType::Int8:
        m_normalised ? Decode<std::int8_t>(first, n, out, fraction) : Decode<std::int8_t>(first, n, out, plain);
        break;
    case ComponentType::UInt8:
        m_normalised ? Decode<std::uint8_t>(first, n, out, fraction) : Decode<std::uint8_t>(first, n, out, plain);
        break;
    case ComponentType::Int16:
        m_normalised ? Decode<std::int16_t>(first, n, out, fraction) : Decode<std::int16_t>(first, n, out, plain);
        break;
    case ComponentType::UInt16:
        m_normalised ? Decode<std::uint16_t>(first, n, out, fraction) : Decode<std::uint16_t>(first, n, out, plain);
        break;
    case ComponentType::UInt32:
        m_normalised ? Decode<std::uint32_t>(first, n, out, fraction) : Decode<std::uint32_t>(first, n, out, plain);
        break;
    }
}

void AccessorView::Unsigned(std::size_t first, std::size_t n, std::uint32_t* out) const
{
    const auto plain = [](auto stored) { return static_cast<std::uint32_t>(stored); };
    switch (m_type) {
    case ComponentType::UInt8:
        Decode<std::uint8_t>(first, n, out, plain);
        break;
    case ComponentType::UInt16:
        Decode<std::uint16_t>(first, n, out, plain);
        break;
    default:
        Decode<std::uint32_t>(first, n, out, plain);
        break;
    }
}

Accessor DescribeAccessor(const OpenedFile& file, int index)
{
    const JsonPlaces& json = file.Json();
    Accessor accessor;
    accessor.value = file.Object(file.List("accessors").at(static_cast<std::size_t>(index)));
    accessor.view = file.IndexOr(accessor.value, "bufferView", "bufferViews", -1);
    accessor.offset = file.WholeNumberOr(accessor.value, "byteOffset", 0);
    const JsonValue count = json.Member(accessor.value, "count");
    if (count == JSON_NONE) {
        file.Refuse(accessor.value, "the accessor has no count");
    }
    accessor.count = file.WholeNumber(count, "count");
    accessor.type = ReadComponentType(file, accessor.value);
    const Shape& shape = ReadShape(file, accessor.value);
    accessor.shape = shape.name;
    accessor.components = shape.components;
    accessor.elementSize = ElementSize(shape, ComponentSize(accessor.type));
    accessor.normalised = file.BooleanOr(accessor.value, "normalized", false);
    accessor.sparse = json.Member(accessor.value, "sparse");
    if (accessor.sparse != JSON_NONE) {
        static_cast<void>(file.Object(accessor.sparse));
    }
    return accessor;
}

AccessorView ViewAccessor(const OpenedFile& file, const Accessor& accessor, DecodeBudget& budget)
{
    AccessorView dense;
    if (accessor.view >= 0) {
        const ElementRange range =
            RangeInView(file, accessor.value, accessor.view, accessor.offset, accessor.count, accessor.elementSize);
        dense = AccessorView(accessor, range.base, range.stride);
        const BufferView& view = file.Views()[static_cast<std::size_t>(accessor.view)];
        const std::size_t size = ComponentSize(accessor.type);
        if ((view.offset + accessor.offset) % size != 0 || view.stride % size != 0) {
            budget.NoteMisaligned(accessor.value);
        }
    } else {
        if (accessor.count > file.TotalBytes()) {
            file.Refuse(accessor.value, Counted(accessor.count, "element", "elements") +
                                            " without a buffer view in a file of " +
                                            Counted(file.TotalBytes(), "byte", "bytes"));
        }
        dense = AccessorView(accessor, ZEROS.data(), 0);
    }
    if (accessor.sparse == JSON_NONE) {
        return dense;
    }
    budget.Spend(accessor.value, accessor.count, accessor.elementSize);
    auto whole = std::make_shared<ByteBlock>(accessor.count * accessor.elementSize);
    for (std::size_t i = 0; i < accessor.count; ++i) {
        std::memcpy(whole->Data() + i * accessor.elementSize, dense.Element(i), accessor.elementSize);
    }
    ApplySparse(file, accessor, whole->Data());
    return {accessor, std::move(whole)};
}

AccessorView ViewNamedAt(const OpenedFile& file, JsonValue where, Accessor& accessor, DecodeBudget& budget)
{
    const DecodedArray* decoded = file.DecodedAt(where);
    if (decoded == nullptr) {
        return ViewAccessor(file, accessor, budget);
    }
    accessor.count = decoded->count;
    return {accessor, decoded->bytes};
}

AccessorView ViewAt(const OpenedFile& file, JsonValue where, std::string_view shape, DecodeBudget& budget)
{
    Accessor accessor = DescribeAccessor(file, file.Index(where, file.List("accessors").size(), "accessors"));
    if (accessor.shape != shape) {
        file.Refuse(where, "the accessor has the type " + accessor.shape + ", " + std::string(shape) + " is needed");
    }
    return ViewNamedAt(file, where, accessor, budget);
}

} // namespace skindesk::gltf
