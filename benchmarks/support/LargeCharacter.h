// SPDX-License-Identifier: MIT
// Large skinned meshes, the same in every run.
#pragma once

#include "zmodel/ZGeometryModels.h"

#include <cstddef>
#include <memory>
#include <vector>

/// How a mesh is skinned. The vertices run along the body: those of one stretch share bones with their neighbours, as
/// they do in a character; scattered ones take bones at random, which no character does.
struct LargeSkin
{
    int vertices = 0;
    int influences = 4;
    int bones = 60;
    bool scattered = false;
    /// What every vertex's weights sum to.
    double sum = 1.0;
    size_t ByteCount() const { return static_cast<size_t>(vertices) * static_cast<size_t>(influences) * 12; }
};

class LargeCharacter
{
public:
    explicit LargeCharacter(const LargeSkin& skin);
    ZModelPolymesh& Mesh() { return *m_mesh; }
    const std::vector<std::unique_ptr<ZModel>>& Bones() const { return m_bones; }
    /// Gives every link its first entries back.
    void Fill();

private:
    LargeSkin m_skin;
    std::vector<std::unique_ptr<ZModel>> m_bones;
    std::unique_ptr<ZModelPolymesh> m_mesh;
};
