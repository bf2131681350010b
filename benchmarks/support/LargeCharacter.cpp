// SPDX-License-Identifier: MIT
#include "support/LargeCharacter.h"

#include <cstdint>
#include <string>

namespace {
std::uint32_t Mixed(std::uint32_t number)
{
    number *= 2654435761U;
    number ^= number >> 15U;
    number *= 2246822519U;
    return number ^ (number >> 13U);
}
} // namespace

LargeCharacter::LargeCharacter(const LargeSkin& skin) : m_skin(skin)
{
    for (int bone = 0; bone < skin.bones; ++bone)
        m_bones.push_back(std::make_unique<ZModel>(("Bone" + std::to_string(bone)).c_str(), ZModelKind::Bone));
    std::vector<float> positions(static_cast<size_t>(skin.vertices) * 3, 0.0F);
    for (int vertex = 0; vertex < skin.vertices; ++vertex)
        positions[static_cast<size_t>(vertex) * 3] = static_cast<float>(vertex);
    m_mesh = std::make_unique<ZModelPolymesh>("Large");
    m_mesh->SetGeometry(positions.data(), skin.vertices, {}, {});
    ZSkin* const links = m_mesh->MakeSkin(kDeformNormalise);
    for (const auto& bone : m_bones)
        links->AppendLink(bone.get(), {});
    Fill();
}

void LargeCharacter::Fill()
{
    std::vector<ZArrayTemplate<int>> vertices(m_bones.size());
    std::vector<ZArrayTemplate<double>> weights(m_bones.size());
    const auto boneCount = static_cast<std::uint32_t>(m_skin.bones);
    // Influences stand this far apart among the bones; the spread of a vertex is its neighbours' spread, a little
    // shifted.
    const std::uint32_t stride = m_skin.scattered ? 7 : 1;
    for (int vertex = 0; vertex < m_skin.vertices; ++vertex) {
        const std::uint32_t chance = Mixed(static_cast<std::uint32_t>(vertex));
        const auto region =
            static_cast<std::uint32_t>(static_cast<std::int64_t>(vertex) * m_skin.bones / m_skin.vertices);
        const std::uint32_t first = m_skin.scattered ? chance : region + chance % 3;
        double rest = m_skin.sum;
        for (int k = 0; k < m_skin.influences; ++k) {
            const double weight = k + 1 < m_skin.influences ? rest * 0.5 : rest;
            rest -= weight;
            const std::uint32_t bone = (first + static_cast<std::uint32_t>(k) * stride) % boneCount;
            vertices[bone].Add(vertex);
            weights[bone].Add(weight);
        }
    }
    for (size_t bone = 0; bone < m_bones.size(); ++bone)
        m_mesh->GetSkin()->SetEntries(static_cast<int>(bone), std::move(vertices[bone]), std::move(weights[bone]));
}
