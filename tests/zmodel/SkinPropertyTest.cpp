// SPDX-License-Identifier: MIT
// Random walks over skins against a plain list of pairs.
#include "TinyModels.h"

#include <rapidcheck/gtest.h>

#include <algorithm>

namespace {

/// What a link's entries mean, with nothing clever about it.
struct PlainLink
{
    std::vector<std::pair<int, double>> entries;
    int Find(int vertex) const
    {
        for (size_t i = 0; i < entries.size(); ++i)
            if (entries[i].first == vertex)
                return static_cast<int>(i);
        return -1;
    }
};

constexpr int kVertices = 200;

/// Vertices that lie close, far apart or one after the other, so that every form of the index is met.
int SomeVertex(int pattern, int step)
{
    switch (pattern) {
    case 0:
        return step % kVertices;
    case 1:
        return *rc::gen::inRange(0, kVertices);
    case 2:
        return *rc::gen::inRange(0, 5) * 40;
    default:
        return (kVertices - 1 - step % kVertices);
    }
}

void CheckLink(ZSkin& skin, const PlainLink& plain)
{
    RC_ASSERT(skin.EntryCount() == static_cast<int>(plain.entries.size()));
    for (int vertex = -1; vertex <= kVertices; ++vertex)
        RC_ASSERT(skin.FindEntry(vertex) == plain.Find(vertex));
    for (int entry = 0; entry < skin.EntryCount(); ++entry) {
        RC_ASSERT(skin.EntryVertex(entry) == plain.entries[static_cast<size_t>(entry)].first);
        RC_ASSERT(skin.EntryWeight(entry) == plain.entries[static_cast<size_t>(entry)].second);
    }
}

RC_GTEST_PROP(SkinProperty, EntriesAndLookupsEqualAPlainList, ())
{
    const auto mesh = MakePoints("mesh", kVertices);
    const auto bone = MakeBone("bone");
    ZSkin& skin = *mesh->MakeSkin(kDeformNormalise);
    PlainLink plain;
    const int pattern = *rc::gen::inRange(0, 4);
    const int steps = *rc::gen::inRange(1, 300);
    skin.AddLink(bone.get());
    skin.BeginLink(0);
    for (int step = 0; step < steps; ++step) {
        const int vertex = SomeVertex(pattern, step);
        const double weight = *rc::gen::inRange(0, 1000) / 1000.0;
        switch (*rc::gen::inRange(0, 12)) {
        case 0: {
            const int entry = skin.FindEntry(vertex);
            RC_ASSERT(entry == plain.Find(vertex));
            skin.SetEntryWeight(weight, entry);
            if (entry >= 0)
                plain.entries[static_cast<size_t>(entry)].second = weight;
            break;
        }
        case 1:
            if (*rc::gen::inRange(0, 20) == 0) {
                skin.ClearEntries();
                plain.entries.clear();
            }
            break;
        case 2: {
            const int count = *rc::gen::inRange(1, 6);
            std::vector<int> vertices;
            for (int i = 0; i < count; ++i)
                vertices.push_back(vertex + i * *rc::gen::inRange(1, 3));
            const std::vector<double> weights(vertices.size(), weight);
            int missing = 0;
            for (const int wanted : vertices) {
                const int entry = plain.Find(wanted);
                if (entry >= 0)
                    plain.entries[static_cast<size_t>(entry)].second = weight;
                else
                    ++missing;
            }
            RC_ASSERT(skin.SetVertexWeights(vertices.data(), weights.data(), count) == missing);
            break;
        }
        default: // also a vertex that has an entry: FindEntry answers the first
            skin.AddEntry(vertex, weight);
            plain.entries.emplace_back(vertex, weight);
        }
    }
    CheckLink(skin, plain);
}

RC_GTEST_PROP(SkinProperty, LinksComeAndGoWithTheirEntries, ())
{
    const auto mesh = MakePoints("mesh", kVertices);
    std::vector<std::unique_ptr<ZModel>> bones;
    for (int i = 0; i < 6; ++i)
        bones.push_back(MakeBone("bone"));
    ZSkin& skin = *mesh->MakeSkin(kDeformNormalise);
    std::vector<std::pair<ZModel*, PlainLink>> plain;
    const int steps = *rc::gen::inRange(1, 40);
    for (int step = 0; step < steps; ++step) {
        if (!plain.empty() && *rc::gen::inRange(0, 3) == 0) {
            const auto link = *rc::gen::inRange<size_t>(0, plain.size());
            skin.RemoveLink(static_cast<int>(link));
            plain.erase(plain.begin() + static_cast<std::ptrdiff_t>(link));
            continue;
        }
        ZModel* const bone = bones[*rc::gen::inRange<size_t>(0, bones.size())].get();
        const auto known =
            std::find_if(plain.begin(), plain.end(), [bone](const auto& link) { return link.first == bone; });
        const auto expected = static_cast<int>(known - plain.begin());
        RC_ASSERT(skin.AddLink(bone) == expected);
        if (known == plain.end())
            plain.emplace_back(bone, PlainLink());
        AddWeight(skin, expected, step, 0.5);
        plain[static_cast<size_t>(expected)].second.entries.emplace_back(step, 0.5);
    }
    RC_ASSERT(skin.LinkCount() == static_cast<int>(plain.size()));
    for (int link = 0; link < skin.LinkCount(); ++link) {
        RC_ASSERT(skin.LinkModel(link) == plain[static_cast<size_t>(link)].first);
        skin.BeginLink(link);
        CheckLink(skin, plain[static_cast<size_t>(link)].second);
        skin.EndLink();
    }
}

RC_GTEST_PROP(SkinProperty, CountOfRewrittenVerticesEqualsAComparisonOfSums, ())
{
    const auto mesh = MakePoints("mesh", 20);
    const auto bone = MakeBone("bone");
    const auto other = MakeBone("other");
    ZSkin& skin = *mesh->MakeSkin(kDeformNormalise);
    const auto fill = [&skin] {
        std::vector<double> sums(20, 0.0);
        for (int link = 0; link < 2; ++link) {
            skin.BeginLink(link);
            skin.ClearEntries();
            for (int vertex = 0; vertex < 20; ++vertex) {
                const double weight = *rc::gen::inRange(0, 3) / 2.0;
                if (weight > 0 || vertex % 3 == 0)
                    skin.AddEntry(vertex, weight);
                sums[static_cast<size_t>(vertex)] += weight;
            }
            skin.EndLink();
        }
        return sums;
    };
    skin.AddLink(bone.get());
    skin.AddLink(other.get());
    const std::vector<double> before = fill();
    skin.TakeNormalisedCount();
    const std::vector<double> after = fill();
    int expected = 0;
    for (size_t i = 0; i < 20; ++i)
        expected += before[i] != after[i] ? 1 : 0;
    RC_ASSERT(skin.TakeNormalisedCount() == expected);
}

} // namespace
