// SPDX-License-Identifier: MIT
// Which accessors may be overwritten in place.
#include "SharedBytes.h"

#include "Decoding.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <tuple>

namespace skindesk::gltf {

namespace {

constexpr std::size_t NO_RANGE = std::numeric_limits<std::size_t>::max();
// More ranges than this across one accessor are not looked at one by one; such bytes count as shared.
constexpr std::size_t MOST_NEIGHBOURS = 256;

bool NamesAccessor(std::string_view key, std::string_view parentKey, std::string_view grandParentKey)
{
    return parentKey == "attributes" || grandParentKey == "targets" || key == "indices" || key == "input" ||
           key == "output" || key == "inverseBindMatrices" || key == "accessor" || parentKey == "accessors";
}

// Walks all values of a JSON text with the keys of the containers around each.
class KeyWalk
{
public:
    explicit KeyWalk(const JsonPlaces& json) : m_json(json) {}

    template <class Visit> void Run(Visit visit)
    {
        for (JsonValue v = 0; v < m_json.ValueCount(); ++v) {
            while (!m_open.empty() && m_json.Behind(m_open.back().value) <= v) {
                m_open.pop_back();
            }
            const std::string_view key = m_json.IsMember(v) ? RawKey(v) : std::string_view{};
            const auto around = [this](std::size_t up) {
                return m_open.size() >= up ? m_open[m_open.size() - up].key : std::string_view{};
            };
            visit(v, key, around(1), around(2));
            if (m_json.Is(v, JsonKind::Object) || m_json.Is(v, JsonKind::Array)) {
                m_open.push_back({v, key});
            }
        }
    }

private:
    struct Open
    {
        JsonValue value;
        std::string_view key;
    };

    [[nodiscard]] std::string_view RawKey(JsonValue v) const
    {
        return m_json.Text().substr(m_json.KeyStart(v) + 1, m_json.KeyEnd(v) - m_json.KeyStart(v) - 2);
    }

    const JsonPlaces& m_json;
    std::vector<Open> m_open;
};

void CountNumber(const JsonPlaces& json, JsonValue v, std::vector<std::size_t>& counts)
{
    const double number = json.Number(v);
    if (number >= 0 && number < static_cast<double>(counts.size())) {
        ++counts[static_cast<std::size_t>(number)];
    }
}

} // namespace

SharedBytes::SharedBytes(const OpenedFile& file)
    : m_uses(file.List("accessors").size()), m_viewUses(file.Views().size())
{
    CountReferences(file);
    CollectRanges(file);
}

void SharedBytes::CountReferences(const OpenedFile& file)
{
    const JsonPlaces& json = file.Json();
    KeyWalk(json).Run([&](JsonValue v, std::string_view key, std::string_view parent, std::string_view grandParent) {
        if (!json.Is(v, JsonKind::Number)) {
            return;
        }
        if (key == "bufferView") {
            CountNumber(json, v, m_viewUses);
        } else if (NamesAccessor(key, parent, grandParent)) {
            CountNumber(json, v, m_uses);
        }
    });
}

void SharedBytes::CollectRanges(const OpenedFile& file)
{
    std::vector<std::size_t> usedByAccessors(m_viewUses.size());
    for (std::size_t i = 0; i < m_uses.size(); ++i) {
        Accessor accessor;
        try {
            accessor = DescribeAccessor(file, static_cast<int>(i));
        } catch (const FileError&) {
            continue; // nothing reads it, so reading has not refused it; below, all of its view counts as in use
        }
        if (accessor.view < 0) {
            continue;
        }
        ++usedByAccessors[static_cast<std::size_t>(accessor.view)];
        const BufferView& view = file.Views()[static_cast<std::size_t>(accessor.view)];
        const std::size_t stride = view.stride == 0 ? accessor.elementSize : view.stride;
        const std::size_t start = view.offset + accessor.offset;
        // Nobody has checked accessors that nothing reads; what leaves the view counts up to the view's end.
        const std::size_t whole = view.offset + view.length;
        const bool fits = accessor.count <= view.length && start <= whole;
        const std::size_t length = accessor.count == 0 ? 0 : (accessor.count - 1) * stride + accessor.elementSize;
        const std::size_t end = fits ? std::min(start + length, whole) : whole;
        m_ranges.push_back({view.buffer, std::min(start, end), end, stride, accessor.elementSize, static_cast<int>(i)});
    }
    for (std::size_t i = 0; i < m_viewUses.size(); ++i) {
        if (m_viewUses[i] > usedByAccessors[i]) {
            const BufferView& view = file.Views()[i];
            m_ranges.push_back({view.buffer, view.offset, view.offset + view.length, 1, 1, -1});
        }
    }
    CollectCompressed(file);
    std::sort(m_ranges.begin(), m_ranges.end(), [](const Range& a, const Range& b) {
        return std::tie(a.buffer, a.start, a.accessor) < std::tie(b.buffer, b.start, b.accessor);
    });
    m_rangeOf.assign(m_uses.size(), NO_RANGE);
    m_reachedBy.resize(m_ranges.size());
    for (std::size_t r = 0; r < m_ranges.size(); ++r) {
        const bool follows = r > 0 && m_ranges[r - 1].buffer == m_ranges[r].buffer;
        m_reachedBy[r] = follows ? std::max(m_reachedBy[r - 1], m_ranges[r].end) : m_ranges[r].end;
        if (m_ranges[r].accessor >= 0) {
            m_rangeOf[static_cast<std::size_t>(m_ranges[r].accessor)] = r;
        }
    }
}

// The bytes that a compressed view is decoded from. Reading has checked that they are there.
void SharedBytes::CollectCompressed(const OpenedFile& file)
{
    for (std::size_t i = 0; i < file.Decoded().views.size(); ++i) {
        const JsonValue extension = MeshoptExtensionOf(file, file.Views()[i]);
        if (extension != JSON_NONE && file.Decoded().views[i] != nullptr) {
            const int buffer = file.IndexOr(extension, "buffer", "buffers", 0);
            const std::size_t start = file.WholeNumberOr(extension, "byteOffset", 0);
            m_ranges.push_back({buffer, start, start + file.WholeNumberOr(extension, "byteLength", 0), 1, 1, -1});
        }
    }
}

bool SharedBytes::Collide(const Range& a, const Range& b)
{
    if (a.end <= b.start || b.end <= a.start) {
        return false;
    }
    if (a.stride != b.stride) {
        return true;
    }
    const Range& first = a.start <= b.start ? a : b;
    const Range& second = a.start <= b.start ? b : a;
    const std::size_t apart = (second.start - first.start) % first.stride;
    return apart < first.size || apart + second.size > first.stride;
}

bool SharedBytes::OwnsItsBytes(int accessor) const
{
    const std::size_t mine = m_rangeOf[static_cast<std::size_t>(accessor)];
    if (mine == NO_RANGE) {
        return false;
    }
    const Range& range = m_ranges[mine];
    std::size_t looked = 0;
    for (std::size_t r = mine; r > 0 && m_ranges[r - 1].buffer == range.buffer && m_reachedBy[r - 1] > range.start;
         --r) {
        if (++looked > MOST_NEIGHBOURS || Collide(m_ranges[r - 1], range)) {
            return false;
        }
    }
    for (std::size_t r = mine + 1;
         r < m_ranges.size() && m_ranges[r].buffer == range.buffer && m_ranges[r].start < range.end; ++r) {
        if (++looked > MOST_NEIGHBOURS || Collide(m_ranges[r], range)) {
            return false;
        }
    }
    return true;
}

} // namespace skindesk::gltf
