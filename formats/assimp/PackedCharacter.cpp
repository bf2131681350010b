// SPDX-License-Identifier: MIT
// The records of a new character as bytes and back. Both directions walk the same lists of members below.
#include "PackedCharacter.h"

#include <cstring>
#include <optional>
#include <stdexcept>
#include <type_traits>

namespace skindesk::assimp {

namespace {

using namespace imports;

template <class Value> constexpr bool IS_PLAIN = std::is_trivially_copyable_v<Value>;

class Packer
{
public:
    template <class Value> void operator()(Value& value)
    {
        if constexpr (IS_PLAIN<Value>) {
            Append(&value, sizeof value);
        } else {
            Walk(*this, value);
        }
    }
    void operator()(std::string& text)
    {
        AppendCount(text.size());
        Append(text.data(), text.size());
    }
    template <class Element> void operator()(std::vector<Element>& list)
    {
        AppendCount(list.size());
        if constexpr (IS_PLAIN<Element>) {
            Append(list.data(), list.size() * sizeof(Element));
        } else {
            for (Element& element : list) {
                (*this)(element);
            }
        }
    }
    template <class Value> void operator()(std::optional<Value>& value)
    {
        AppendCount(value ? 1 : 0);
        if (value) {
            (*this)(*value);
        }
    }

    [[nodiscard]] std::vector<std::uint8_t> Take() { return std::move(m_bytes); }

private:
    void Append(const void* from, std::size_t size)
    {
        const auto* raw = static_cast<const std::uint8_t*>(from);
        m_bytes.insert(m_bytes.end(), raw, raw + size);
    }
    void AppendCount(std::uint64_t count) { Append(&count, sizeof count); }

    std::vector<std::uint8_t> m_bytes;
};

class Unpacker
{
public:
    explicit Unpacker(gltf::ByteSpan bytes) : m_left(bytes) {}

    template <class Value> void operator()(Value& value)
    {
        if constexpr (IS_PLAIN<Value>) {
            Take(&value, sizeof value);
        } else {
            Walk(*this, value);
        }
    }
    void operator()(std::string& text)
    {
        text.resize(TakeCount(1));
        Take(text.data(), text.size());
    }
    template <class Element> void operator()(std::vector<Element>& list)
    {
        if constexpr (IS_PLAIN<Element>) {
            list.resize(TakeCount(sizeof(Element)));
            Take(list.data(), list.size() * sizeof(Element));
        } else {
            // Each element has at least a count of its own.
            list.resize(TakeCount(sizeof(std::uint64_t)));
            for (Element& element : list) {
                (*this)(element);
            }
        }
    }
    template <class Value> void operator()(std::optional<Value>& value)
    {
        if (TakeCount(0) != 0) {
            (*this)(value.emplace());
        }
    }

    [[nodiscard]] bool IsAtEnd() const { return m_left.empty(); }

private:
    void Take(void* into, std::size_t size)
    {
        if (size > m_left.size()) {
            throw std::runtime_error("the records end too early");
        }
        if (size > 0) {
            std::memcpy(into, m_left.data(), size);
        }
        m_left = m_left.subspan(size);
    }
    std::size_t TakeCount(std::size_t bytesEach)
    {
        std::uint64_t count = 0;
        Take(&count, sizeof count);
        if (bytesEach > 0 && count > m_left.size() / bytesEach) {
            throw std::runtime_error("the records end too early");
        }
        return count;
    }

    gltf::ByteSpan m_left;
};

template <class Archive, class... Members> void All(Archive& archive, Members&... members) { (archive(members), ...); }

template <class Archive> void Walk(Archive& archive, NewNode& n)
{
    All(archive, n.name, n.parent, n.translation, n.rotation, n.scale, n.matrix, n.mesh, n.skin);
}

template <class Archive> void Walk(Archive& archive, NewTriangles& t) { All(archive, t.corners, t.material); }

template <class Archive> void Walk(Archive& archive, NewMorphTarget& t) { All(archive, t.name, t.positions); }

template <class Archive> void Walk(Archive& archive, NewNurbsSurface& s)
{
    All(archive, s.degree, s.count, s.knots[0], s.knots[1], s.pointWeights, s.grid, s.material);
}

template <class Archive> void Walk(Archive& archive, NewMesh& m)
{
    All(archive, m.name, m.positions, m.normals, m.texCoords, m.triangles, m.morphTargets, m.influenceOffsets,
        m.influenceJoints, m.influenceWeights, m.nurbs);
}

template <class Archive> void Walk(Archive& archive, NewSkin& s)
{
    All(archive, s.name, s.joints, s.inverseBindMatrices);
}

template <class Archive> void Walk(Archive& archive, NewChannel& c)
{
    All(archive, c.node, c.property, c.interpolation, c.times, c.values);
}

template <class Archive> void Walk(Archive& archive, NewAnimation& a) { All(archive, a.name, a.channels); }

template <class Archive> void Walk(Archive& archive, NewMaterial& m)
{
    All(archive, m.name, m.baseColour, m.doubleSided);
}

template <class Archive> void Walk(Archive& archive, NewCharacter& c)
{
    All(archive, c.generator, c.nodes, c.meshes, c.skins, c.animations, c.materials, c.warnings);
}

} // namespace

std::vector<std::uint8_t> PackCharacter(NewCharacter& character)
{
    Packer packer;
    packer(character);
    return packer.Take();
}

NewCharacter UnpackCharacter(gltf::ByteSpan bytes)
{
    Unpacker unpacker(bytes);
    NewCharacter character;
    unpacker(character);
    if (!unpacker.IsAtEnd()) {
        throw std::runtime_error("the records go on behind their end");
    }
    return character;
}

} // namespace skindesk::assimp
