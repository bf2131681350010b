// SPDX-License-Identifier: MIT
// The two strategies. They differ in how a smooth colour takes a weight: divided by the vertex's sum, or as it stands.
#include "editing/ZWeightStrategies.h"

#include "editing/VertexColourRules.h"
#include "zmodel/ZModelInterfaces.h"

#include <new>

LinkColours::LinkColours(const ZBoneColourTable& table, const ZWeightUIModelData& data)
    : m_last(static_cast<size_t>(data.boneLinkPositions.GetCount())), m_colours(m_last + 1), m_known(m_last + 1, 0)
{
    for (size_t link = 0; link < m_last; ++link) {
        const int bone = data.boneLinkPositions[static_cast<int>(link)];
        if (bone < 0 || bone >= table.GetCount() / 3)
            continue;
        m_colours[link] = VertexColour{table[3 * bone], table[3 * bone + 1], table[3 * bone + 2], 0};
        m_known[link] = 1;
    }
}

namespace {

/// A weight is a share of its vertex's sum. A vertex without weight is black.
struct DividedBySum
{
    static VertexColour Smooth(const VertexInfluences& record, const LinkColours& colours)
    {
        const float sum = SumOfWeights(record);
        return sum == 0.0F ? VertexColour{0, 0, 0, 0} : MixedColour(record, colours, 1.0F / sum);
    }
    static float Share(float weight, const VertexInfluences& record) { return weight / SumOfWeights(record); }
};

/// A weight is a share of one.
struct AsItStands
{
    static VertexColour Smooth(const VertexInfluences& record, const LinkColours& colours)
    {
        return MixedColour(record, colours, 1.0F);
    }
    static float Share(float weight, const VertexInfluences&) { return weight; }
};

void Store(float* target, VertexColour colour)
{
    target[0] = colour[0];
    target[1] = colour[1];
    target[2] = colour[2];
}

bool HasColours(const ZWeightUIModelData& data)
{
    return data.vertexColours.GetCount() >= 4 * data.vertexInfluences.GetCount();
}

/// Calls `pass` with the rule of the colour mode; nothing for a mode that is none.
template <class Sharing, class Pass> void WithRule(int colourMode, const Pass& pass)
{
    if (colourMode == kColourSmooth)
        pass([](const VertexInfluences& record, const LinkColours& colours) {
            return Sharing::Smooth(record, colours);
        });
    else if (colourMode == kColourMostInfluential)
        pass([](const VertexInfluences& record, const LinkColours& colours) {
            return MostInfluentialColour(record, colours);
        });
    else if (colourMode == kColourLeastInfluential)
        pass([](const VertexInfluences& record, const LinkColours& colours) {
            return LeastInfluentialColour(record, colours);
        });
}

template <class Sharing> void ColourAll(const ZBoneColourTable& table, int colourMode, ZWeightUIModelData& data)
{
    if (!HasColours(data))
        return;
    const LinkColours colours(table, data);
    WithRule<Sharing>(colourMode, [&](auto rule) {
        const int count = data.vertexInfluences.GetCount();
        VertexInfluences* const* const records = data.vertexInfluences.GetData();
        float* target = data.vertexColours.GetData();
        for (int vertex = 0; vertex < count; ++vertex, target += 4)
            Store(target, rule(*records[vertex], colours));
    });
}

template <class Sharing>
void ColourActive(const ZBoneColourTable& table, int colourMode, int weightingMode, ZWeightUIModelData& data)
{
    const int all = data.activeVertices.GetCount();
    const int count = weightingMode == kAffectAllSelected || all == 0 ? all : 1;
    if (count == 0 || !HasColours(data))
        return;
    const LinkColours colours(table, data);
    WithRule<Sharing>(colourMode, [&](auto rule) {
        for (int i = 0; i < count; ++i) {
            const int vertex = data.activeVertices[i];
            if (vertex >= 0 && vertex < data.vertexInfluences.GetCount())
                Store(data.vertexColours.GetData() + 4 * static_cast<std::ptrdiff_t>(vertex),
                      rule(*data.vertexInfluences[vertex], colours));
        }
    });
}

/// Exchanges the bone's share of each vertex's colour: old out, new in. There is no guard against a sum of 0: such a
/// vertex gets a colour that is no number until it is recoloured, which keeps this pass to one link.
template <class Sharing>
void ExchangeShare(int link, const float* oldColour, const float* newColour, ZWeightUIModelData& data)
{
    ISkinLinks* const links = data.SkinLinks();
    if (links == nullptr || link >= links->LinkCount() || !HasColours(data))
        return;
    const int vertexCount = data.vertexInfluences.GetCount();
    const auto exchange = [&](int vertex, float weight) {
        // Weights that never entered a record never entered the colour.
        if (vertex < 0 || vertex >= vertexCount || !IsInfluenceWeight(weight))
            return;
        const float share = Sharing::Share(weight, *data.vertexInfluences[vertex]);
        float* const colour = data.vertexColours.GetData() + 4 * static_cast<std::ptrdiff_t>(vertex);
        for (int channel = 0; channel < 3; ++channel)
            colour[channel] = (colour[channel] - share * oldColour[channel]) + share * newColour[channel];
    };
    links->BeginLink(link);
    const int* vertices = nullptr;
    const double* weights = nullptr;
    int count = 0;
    if (links->EntryArrays(vertices, weights, count)) {
        for (int entry = 0; entry < count; ++entry)
            exchange(vertices[entry], static_cast<float>(weights[entry]));
    } else {
        count = links->EntryCount();
        for (int entry = 0; entry < count; ++entry)
            exchange(links->EntryVertex(entry), static_cast<float>(links->EntryWeight(entry)));
    }
    links->EndLink();
}

void RecolourVerticesOfLink(int link, const ZBoneColourTable& table, int colourMode, ZWeightUIModelData& data)
{
    if (!HasColours(data))
        return;
    const LinkColours colours(table, data);
    WithRule<AsItStands>(colourMode, [&](auto rule) {
        float* target = data.vertexColours.GetData();
        for (const VertexInfluences* const record : data.vertexInfluences) {
            if (record->links.Find(link) >= 0)
                Store(target, rule(*record, colours));
            target += 4;
        }
    });
}

template <class Sharing>
void ColourChangedBone(const ZBoneColourTable& table, int bonePosition, int colourMode, const float* oldColour,
                       ZWeightUIModelData& data)
{
    const int link = data.LinkOfBone(bonePosition);
    if (link < 0 || bonePosition >= table.GetCount() / 3)
        return;
    if (colourMode == kColourSmooth)
        ExchangeShare<Sharing>(link, oldColour, table.GetData() + 3 * bonePosition, data);
    else
        RecolourVerticesOfLink(link, table, colourMode, data);
}

} // namespace

void ZWeightDeformNormalize::ComputeColors(const ZBoneColourTable& table, int colourMode, ZWeightUIModelData& data)
{
    ColourAll<DividedBySum>(table, colourMode, data);
}

void ZWeightDeformNormalize::BoneColorChanged(const ZBoneColourTable& table, int bonePosition, int colourMode,
                                              float oldRed, float oldGreen, float oldBlue, ZWeightUIModelData& data)
{
    const float old[3] = {oldRed, oldGreen, oldBlue};
    ColourChangedBone<DividedBySum>(table, bonePosition, colourMode, old, data);
}

void ZWeightDeformNormalize::ComputeActiveColors(const ZBoneColourTable& table, int colourMode, int weightingMode,
                                                 ZWeightUIModelData& data)
{
    ColourActive<DividedBySum>(table, colourMode, weightingMode, data);
}

void ZWeightDeformTotal100::ComputeColors(const ZBoneColourTable& table, int colourMode, ZWeightUIModelData& data)
{
    ColourAll<AsItStands>(table, colourMode, data);
}

void ZWeightDeformTotal100::BoneColorChanged(const ZBoneColourTable& table, int bonePosition, int colourMode,
                                             float oldRed, float oldGreen, float oldBlue, ZWeightUIModelData& data)
{
    const float old[3] = {oldRed, oldGreen, oldBlue};
    ColourChangedBone<AsItStands>(table, bonePosition, colourMode, old, data);
}

void ZWeightDeformTotal100::ComputeActiveColors(const ZBoneColourTable& table, int colourMode, int weightingMode,
                                                ZWeightUIModelData& data)
{
    ColourActive<AsItStands>(table, colourMode, weightingMode, data);
}

IWeightDeform* ZWeightStrategy_Make(int deformMode)
{
    constexpr int kTotal100 = 2;
    if (deformMode == kTotal100)
        return new (std::nothrow) ZWeightDeformTotal100;
    return new (std::nothrow) ZWeightDeformNormalize;
}
