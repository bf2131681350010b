// SPDX-License-Identifier: MIT
// Writes the JOINTS_n and WEIGHTS_n of one attribute object.
#include "WeightSets.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>
#include <set>

namespace skindesk::gltf {

namespace {

constexpr std::size_t SLOTS_PER_SET = 4;

// The smallest and largest of each component, as an accessor states them.
struct Bounds
{
    std::array<double, SLOTS_PER_SET> low{INFINITY, INFINITY, INFINITY, INFINITY};
    std::array<double, SLOTS_PER_SET> high{-INFINITY, -INFINITY, -INFINITY, -INFINITY};

    void Add(std::size_t component, double value)
    {
        // Written so that what is no number changes nothing.
        low[component] = value < low[component] ? value : low[component];
        high[component] = value > high[component] ? value : high[component];
    }

    [[nodiscard]] static std::string List(const std::array<double, SLOTS_PER_SET>& numbers)
    {
        std::string text;
        for (const double x : numbers) {
            text += (text.empty() ? "[" : ",") + JsonNumber(std::isfinite(x) ? x : 0);
        }
        return text + "]";
    }
};

std::size_t SetsFor(std::size_t entries) { return (entries + SLOTS_PER_SET - 1) / SLOTS_PER_SET; }

double StoredComponent(const std::uint8_t* at, ComponentType type)
{
    switch (type) {
    case ComponentType::UInt8:
        return *at;
    case ComponentType::Int8:
        return static_cast<std::int8_t>(*at);
    case ComponentType::UInt16: {
        std::uint16_t value = 0;
        std::memcpy(&value, at, sizeof value);
        return value;
    }
    case ComponentType::Int16: {
        std::int16_t value = 0;
        std::memcpy(&value, at, sizeof value);
        return value;
    }
    case ComponentType::UInt32: {
        std::uint32_t value = 0;
        std::memcpy(&value, at, sizeof value);
        return value;
    }
    default: {
        float value = 0;
        std::memcpy(&value, at, sizeof value);
        return value;
    }
    }
}

template <class Stored> void Store(std::uint8_t* at, Stored value) { std::memcpy(at, &value, sizeof value); }

void StoreWhole(std::uint8_t* at, std::uint32_t value, ComponentType type)
{
    switch (type) {
    case ComponentType::UInt8:
        *at = static_cast<std::uint8_t>(value);
        break;
    case ComponentType::UInt16:
        Store(at, static_cast<std::uint16_t>(value));
        break;
    default:
        Store(at, value);
        break;
    }
}

// One half of one set as it is in the file.
struct OldHalf
{
    JsonValue name = JSON_NONE; // where the accessor's index stands; JSON_NONE: the half is new
    int index = -1;
    Accessor accessor;
    AccessorView view;
    bool isCompressed = false; // its bytes in the file mean nothing as they are
};

// The four slots of every written vertex in one half of one set, as bytes.
struct EncodedSlots
{
    ComponentType type = ComponentType::Float;
    std::vector<std::uint8_t> bytes; // in the order of the written vertices
};

class SetWriter
{
public:
    SetWriter(FileRewrite& rewrite, const SharedBytes& shared, JsonSplice& splice, const WeightTarget& target,
              const WeightRows& rows, const WeightSetOptions& options)
        : m_rewrite(rewrite), m_file(rewrite.File()), m_shared(shared), m_splice(splice), m_target(target),
          m_rows(rows), m_options(options), m_budget(m_file)
    {
        for (std::size_t s = 0; s < target.accessors.joints.size(); ++s) {
            m_joints.push_back(ReadHalf(target.accessors.joints[s]));
            m_weights.push_back(ReadHalf(target.accessors.weights[s]));
        }
    }

    std::size_t Write()
    {
        const std::size_t keptSets =
            m_options.mostSets == 0
                ? m_joints.size()
                : std::min<std::size_t>(m_joints.size(), static_cast<std::size_t>(m_options.mostSets));
        FindWritten(keptSets);
        std::size_t sets = keptSets;
        if (!m_written.empty()) {
            for (const std::size_t v : m_written) {
                sets = std::max(sets, SetsFor(RowOf(v).size()));
            }
            m_joints.resize(std::max(m_joints.size(), sets));
            m_weights.resize(m_joints.size());
            EncodeWeights(sets);
            EncodeJoints(sets);
            for (std::size_t s = 0; s < sets; ++s) {
                WriteHalf("JOINTS_" + std::to_string(s), m_joints[s], m_jointSlots[s], false);
                WriteHalf("WEIGHTS_" + std::to_string(s), m_weights[s], m_weightSlots[s], true);
            }
        }
        if (!m_written.empty() || keptSets < m_target.accessors.joints.size()) {
            RemoveSetsFrom(sets);
        }
        return m_uncompressed.size();
    }

private:
    [[nodiscard]] OldHalf ReadHalf(JsonValue name)
    {
        OldHalf half;
        half.name = name;
        half.index = m_file.Index(name, m_file.List("accessors").size(), "accessors");
        half.accessor = DescribeAccessor(m_file, half.index);
        half.view = ViewNamedAt(m_file, name, half.accessor, m_budget);
        // Views with an extension of whatever kind may have their content in a second place.
        half.isCompressed = m_file.DecodedAt(name) != nullptr ||
                            (half.accessor.view >= 0 &&
                             m_file.Json().Member(m_file.Views()[static_cast<std::size_t>(half.accessor.view)].value,
                                                  "extensions") != JSON_NONE);
        return half;
    }

    [[nodiscard]] std::size_t OwnerOf(std::size_t vertex) const
    {
        return m_target.deskVertices.empty() ? vertex : static_cast<std::size_t>(m_target.deskVertices[vertex]);
    }

    [[nodiscard]] std::span<const Influence> RowOf(std::size_t vertex) const { return m_rows.Row(OwnerOf(vertex)); }

    // A vertex is written when its row says so, or when it has weight in a set that is about to go.
    void FindWritten(std::size_t keptSets)
    {
        if (m_rows.IsEmpty()) {
            return;
        }
        for (std::size_t v = 0; v < m_target.vertexCount; ++v) {
            const std::size_t owner = OwnerOf(v);
            if (m_rows.isRequired[owner] != 0 || (m_rows.rowOf[owner] >= 0 && HasWeightBeyond(v, keptSets))) {
                m_written.push_back(v);
            }
        }
    }

    [[nodiscard]] bool HasWeightBeyond(std::size_t vertex, std::size_t keptSets) const
    {
        for (std::size_t s = keptSets; s < m_weights.size(); ++s) {
            std::array<float, SLOTS_PER_SET> weights{};
            m_weights[s].view.Floats(vertex, 1, weights.data());
            if (std::any_of(weights.begin(), weights.end(), [](float w) { return w != 0; })) {
                return true;
            }
        }
        return false;
    }

    // Whole numbers are kept only where all sets have the same kind of them; a sum across kinds cannot be made exact.
    [[nodiscard]] ComponentType WeightType() const
    {
        if (!m_options.keepTypes || m_target.accessors.weights.empty()) {
            return ComponentType::Float;
        }
        const Accessor& first = m_weights.front().accessor;
        const bool isUniform = std::all_of(
            m_weights.begin(), m_weights.begin() + static_cast<std::ptrdiff_t>(m_target.accessors.weights.size()),
            [&first](const OldHalf& half) { return half.accessor.type == first.type && half.accessor.normalised; });
        const bool isKept = first.type == ComponentType::UInt8 || first.type == ComponentType::UInt16;
        return isUniform && isKept ? first.type : ComponentType::Float;
    }

    void EncodeWeights(std::size_t sets)
    {
        const ComponentType type = WeightType();
        m_weightSlots.assign(sets, {type, {}});
        const std::size_t size = ComponentSize(type);
        for (EncodedSlots& slots : m_weightSlots) {
            slots.bytes.assign(m_written.size() * SLOTS_PER_SET * size, 0);
        }
        std::vector<float> floats;
        std::vector<std::uint32_t> units;
        m_isUsed.assign(m_written.size() * sets * SLOTS_PER_SET, 0);
        for (std::size_t i = 0; i < m_written.size(); ++i) {
            const std::span<const Influence> row = RowOf(m_written[i]);
            if (type == ComponentType::Float) {
                RoundToFloats(row, floats);
            } else {
                RoundToUnits(row, static_cast<std::uint32_t>(NormalisingDivisor(type)), units);
            }
            for (std::size_t k = 0; k < row.size(); ++k) {
                std::uint8_t* at =
                    &m_weightSlots[k / SLOTS_PER_SET].bytes[(i * SLOTS_PER_SET + k % SLOTS_PER_SET) * size];
                if (type == ComponentType::Float) {
                    Store(at, floats[k]);
                    m_isUsed[i * sets * SLOTS_PER_SET + k] = floats[k] != 0 ? 1 : 0;
                } else {
                    StoreWhole(at, units[k], type);
                    m_isUsed[i * sets * SLOTS_PER_SET + k] = units[k] != 0 ? 1 : 0;
                }
            }
        }
    }

    void EncodeJoints(std::size_t sets)
    {
        m_jointSlots.resize(sets);
        for (std::size_t s = 0; s < sets; ++s) {
            std::uint32_t largest = 0;
            for (std::size_t i = 0; i < m_written.size(); ++i) {
                for (std::size_t k = 0; k < SLOTS_PER_SET; ++k) {
                    largest = std::max(largest, JointInSlot(i, s, k, sets));
                }
            }
            m_jointSlots[s].type = JointType(s, largest);
            const std::size_t size = ComponentSize(m_jointSlots[s].type);
            m_jointSlots[s].bytes.assign(m_written.size() * SLOTS_PER_SET * size, 0);
            for (std::size_t i = 0; i < m_written.size(); ++i) {
                for (std::size_t k = 0; k < SLOTS_PER_SET; ++k) {
                    StoreWhole(&m_jointSlots[s].bytes[(i * SLOTS_PER_SET + k) * size], JointInSlot(i, s, k, sets),
                               m_jointSlots[s].type);
                }
            }
        }
    }

    // Slots without weight, rounded away or never used, name joint 0.
    [[nodiscard]] std::uint32_t JointInSlot(std::size_t written, std::size_t set, std::size_t slot,
                                            std::size_t sets) const
    {
        const std::span<const Influence> row = RowOf(m_written[written]);
        const std::size_t k = set * SLOTS_PER_SET + slot;
        return k < row.size() && m_isUsed[written * sets * SLOTS_PER_SET + k] != 0 ? row[k].joint : 0;
    }

    [[nodiscard]] ComponentType JointType(std::size_t set, std::uint32_t largest) const
    {
        const OldHalf& half = m_joints[set].name != JSON_NONE ? m_joints[set] : m_joints.front();
        const ComponentType old = half.name != JSON_NONE ? half.accessor.type : ComponentType::UInt8;
        if (old == ComponentType::UInt8 && largest > 0xFF) {
            return ComponentType::UInt16;
        }
        if (old != ComponentType::UInt32 && largest > 0xFFFF) {
            m_file.Refuse(m_target.attributeObjects.front(),
                          "joint " + std::to_string(largest) + " has weight, vertices can name joints up to 65535");
        }
        return old;
    }

    [[nodiscard]] bool IsUnchanged(const OldHalf& half, const EncodedSlots& slots) const
    {
        if (half.name == JSON_NONE || half.accessor.type != slots.type) {
            return false;
        }
        const std::size_t size = SLOTS_PER_SET * ComponentSize(slots.type);
        for (std::size_t i = 0; i < m_written.size(); ++i) {
            if (std::memcmp(half.view.Element(m_written[i]), &slots.bytes[i * size], size) != 0) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] bool FitsInPlace(const OldHalf& half, const EncodedSlots& slots) const
    {
        return m_target.mayOverwrite && half.name != JSON_NONE && !half.isCompressed &&
               half.accessor.type == slots.type && half.accessor.view >= 0 && half.accessor.sparse == JSON_NONE &&
               m_rewrite.IsWritable(m_file.Views()[static_cast<std::size_t>(half.accessor.view)].buffer) &&
               m_shared.Uses(half.index) == m_target.attributeObjects.size() && m_shared.OwnsItsBytes(half.index);
    }

    void WriteHalf(const std::string& key, const OldHalf& half, const EncodedSlots& slots, bool isWeights)
    {
        if (IsUnchanged(half, slots)) {
            return;
        }
        if (FitsInPlace(half, slots)) {
            OverwriteHalf(half, slots);
        } else {
            ReplaceHalf(key, half, slots, isWeights);
        }
    }

    void OverwriteHalf(const OldHalf& half, const EncodedSlots& slots)
    {
        const BufferView& view = m_file.Views()[static_cast<std::size_t>(half.accessor.view)];
        const std::size_t stride = view.stride == 0 ? half.accessor.elementSize : view.stride;
        const std::size_t reach =
            half.accessor.count == 0 ? 0 : (half.accessor.count - 1) * stride + half.accessor.elementSize;
        std::uint8_t* base = m_rewrite.Overwrite(view.buffer, view.offset + half.accessor.offset, reach);
        const std::size_t size = SLOTS_PER_SET * ComponentSize(slots.type);
        for (std::size_t i = 0; i < m_written.size(); ++i) {
            std::memcpy(base + m_written[i] * stride, &slots.bytes[i * size], size);
        }
        const JsonPlaces& json = m_file.Json();
        const JsonValue low = json.Member(half.accessor.value, "min");
        const JsonValue high = json.Member(half.accessor.value, "max");
        if (low != JSON_NONE || high != JSON_NONE) {
            const Bounds bounds = BoundsOf(base, stride, slots.type);
            CorrectBound(low, bounds.low);
            CorrectBound(high, bounds.high);
        }
    }

    [[nodiscard]] Bounds BoundsOf(const std::uint8_t* base, std::size_t stride, ComponentType type) const
    {
        Bounds bounds;
        for (std::size_t v = 0; v < m_target.vertexCount; ++v) {
            for (std::size_t c = 0; c < SLOTS_PER_SET; ++c) {
                bounds.Add(c, StoredComponent(base + v * stride + c * ComponentSize(type), type));
            }
        }
        return bounds;
    }

    // Numbers that are still true keep their spelling.
    void CorrectBound(JsonValue list, const std::array<double, SLOTS_PER_SET>& truth)
    {
        if (list == JSON_NONE) {
            return;
        }
        const std::vector<JsonValue> numbers = m_file.Array(list);
        if (numbers.size() != SLOTS_PER_SET) {
            m_splice.Replace(list, Bounds::List(truth));
            return;
        }
        for (std::size_t c = 0; c < SLOTS_PER_SET; ++c) {
            if (std::isfinite(truth[c]) &&
                static_cast<float>(m_file.FiniteNumber(numbers[c])) != static_cast<float>(truth[c])) {
                m_splice.Replace(numbers[c], JsonNumber(truth[c]));
            }
        }
    }

    // A new accessor with the old values of the vertices that are not written, in the type that the set has now.
    void ReplaceHalf(const std::string& key, const OldHalf& half, const EncodedSlots& slots, bool isWeights)
    {
        NewAccessor fresh;
        fresh.type = slots.type;
        fresh.normalised = isWeights && slots.type != ComponentType::Float;
        fresh.count = m_target.vertexCount;
        fresh.shape = "VEC4";
        const std::size_t size = SLOTS_PER_SET * ComponentSize(slots.type);
        fresh.bytes.assign(fresh.count * size, 0);
        if (half.name != JSON_NONE) {
            CopyOld(half, slots.type, fresh.bytes);
        }
        for (std::size_t i = 0; i < m_written.size(); ++i) {
            std::memcpy(&fresh.bytes[m_written[i] * size], &slots.bytes[i * size], size);
        }
        const JsonPlaces& json = m_file.Json();
        if (half.name != JSON_NONE && (json.Member(half.accessor.value, "min") != JSON_NONE ||
                                       json.Member(half.accessor.value, "max") != JSON_NONE)) {
            const Bounds bounds = BoundsOf(fresh.bytes.data(), size, slots.type);
            fresh.bounds = "\"min\":" + Bounds::List(bounds.low) + ",\"max\":" + Bounds::List(bounds.high);
        }
        const std::string index = std::to_string(m_rewrite.AddAccessor(fresh));
        for (std::size_t i = 0; i < m_target.attributeObjects.size(); ++i) {
            const JsonValue attributes = m_target.attributeObjects[i];
            RemoveCompressed(i, key);
            if (half.isCompressed) {
                m_uncompressed.insert(attributes);
            }
            const JsonValue old = json.Member(attributes, key);
            if (old == JSON_NONE) {
                m_splice.AppendMember(attributes, key, index);
            } else {
                m_splice.Replace(old, index);
            }
        }
    }

    // A compressed primitive says which of its attributes are compressed; all others are read as usual.
    void RemoveCompressed(std::size_t object, const std::string& key)
    {
        const JsonValue compressed = m_target.compressedObjects[object];
        const JsonValue named = m_file.Json().Member(compressed, key);
        if (named != JSON_NONE) {
            m_splice.RemoveMember(compressed, named);
        }
    }

    void CopyOld(const OldHalf& half, ComponentType type, std::vector<std::uint8_t>& bytes) const
    {
        const std::size_t size = ComponentSize(type);
        if (half.accessor.type == type) {
            for (std::size_t v = 0; v < m_target.vertexCount; ++v) {
                std::memcpy(&bytes[v * SLOTS_PER_SET * size], half.view.Element(v), SLOTS_PER_SET * size);
            }
            return;
        }
        for (std::size_t v = 0; v < m_target.vertexCount; ++v) {
            std::array<float, SLOTS_PER_SET> fractions{};
            std::array<std::uint32_t, SLOTS_PER_SET> whole{};
            if (type == ComponentType::Float) {
                half.view.Floats(v, 1, fractions.data());
            } else {
                half.view.Unsigned(v, 1, whole.data());
            }
            for (std::size_t c = 0; c < SLOTS_PER_SET; ++c) {
                std::uint8_t* at = &bytes[(v * SLOTS_PER_SET + c) * size];
                type == ComponentType::Float ? Store(at, fractions[c]) : StoreWhole(at, whole[c], type);
            }
        }
    }

    // Also goes what was never read, half a set or a set behind a gap: the sets before it are whole now, so others
    // would begin to see it.
    void RemoveSetsFrom(std::size_t first)
    {
        for (std::size_t i = 0; i < m_target.attributeObjects.size(); ++i) {
            const JsonValue attributes = m_target.attributeObjects[i];
            for (const JsonValue member : m_file.Json().Children(attributes)) {
                const std::string key = m_file.Json().Key(member);
                const std::size_t digits = key.starts_with("JOINTS_") ? 7 : key.starts_with("WEIGHTS_") ? 8 : 0;
                std::size_t set = 0;
                const char* end = key.data() + key.size();
                if (digits != 0 && std::from_chars(key.data() + digits, end, set).ptr == end && set >= first) {
                    m_splice.RemoveMember(attributes, member);
                    RemoveCompressed(i, key);
                }
            }
        }
    }

    FileRewrite& m_rewrite;
    const OpenedFile& m_file;
    const SharedBytes& m_shared;
    JsonSplice& m_splice;
    const WeightTarget& m_target;
    const WeightRows& m_rows;
    const WeightSetOptions& m_options;
    DecodeBudget m_budget;
    std::vector<OldHalf> m_joints;
    std::vector<OldHalf> m_weights;
    std::vector<std::size_t> m_written; // file vertices
    std::vector<std::uint8_t> m_isUsed; // by written vertex and slot: its weight is not 0
    std::vector<EncodedSlots> m_jointSlots;
    std::vector<EncodedSlots> m_weightSlots;
    std::set<JsonValue> m_uncompressed; // attribute objects whose compressed halves are plain now
};

} // namespace

std::size_t WriteWeightSets(FileRewrite& rewrite, const SharedBytes& shared, JsonSplice& splice,
                            const WeightTarget& target, const WeightRows& rows, const WeightSetOptions& options)
{
    return SetWriter(rewrite, shared, splice, target, rows, options).Write();
}

} // namespace skindesk::gltf
