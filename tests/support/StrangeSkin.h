// SPDX-License-Identifier: MIT
// A skin that names vertices which its model does not have.
#pragma once

#include "support/RecordingSkin.h"

#include <array>
#include <limits>

/// Whatever its links hold, each says that it pulls five vertices by one half: one before the first, the first two, one
/// right behind the last of a mesh of two, and the highest number there is. What is written goes on to the real skin.
class StrangeSkin final : public RecordingSkin
{
public:
    StrangeSkin(ZSkin& skin, bool answersArrays) : RecordingSkin(skin), m_answersArrays(answersArrays) {}

    int EntryCount() override { return static_cast<int>(kVertices.size()); }
    int EntryVertex(int entry) override { return kVertices[static_cast<size_t>(entry)]; }
    double EntryWeight(int) override { return 0.5; }
    bool EntryArrays(const int*& vertices, const double*& weights, int& count) override
    {
        if (!m_answersArrays)
            return false;
        vertices = kVertices.data();
        weights = kWeights.data();
        count = EntryCount();
        return true;
    }

private:
    static constexpr std::array<int, 5> kVertices{-7, 0, 1, 2, std::numeric_limits<int>::max()};
    static constexpr std::array<double, 5> kWeights{0.5, 0.5, 0.5, 0.5, 0.5};
    bool m_answersArrays;
};

/// A mesh of two vertices with such a skin.
class StrangeMesh final : public ZModelPolymesh
{
public:
    StrangeMesh(const std::vector<ZModel*>& bones, bool answersArrays) : ZModelPolymesh("Strange")
    {
        const float positions[6] = {0, 0, 0, 1, 0, 0};
        SetGeometry(positions, 2, {}, {});
        ZSkin* const skin = MakeSkin(kDeformNormalise);
        for (ZModel* const bone : bones)
            skin->AppendLink(bone, {});
        m_strange = std::make_unique<StrangeSkin>(*skin, answersArrays);
    }
    void* IQuery(int interfaceId, int flags) override
    {
        if (interfaceId == kInterfaceSkinLinks)
            return static_cast<ISkinLinks*>(m_strange.get());
        return ZModelPolymesh::IQuery(interfaceId, flags);
    }
    StrangeSkin& Strange() { return *m_strange; }

private:
    std::unique_ptr<StrangeSkin> m_strange;
};
