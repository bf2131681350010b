// SPDX-License-Identifier: MIT
// Merging duplicate links against a plain version, and what a model without a strategy is.
#include "support/WeightStage.h"

#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <algorithm>

namespace {

/// A link as plain lists; `bind` is the number that its inverse bind matrix carries.
struct PlainLink
{
    int bone = -1;
    int bind = 0;
    std::vector<std::pair<int, double>> entries;

    float ZeroShare() const
    {
        int zeros = 0;
        for (const auto& entry : entries)
            zeros += entry.second == 0.0 ? 1 : 0;
        return static_cast<float>(zeros) / static_cast<float>(entries.size());
    }
    void Take(const PlainLink& folded)
    {
        for (const auto& [vertex, weight] : folded.entries) {
            const int wanted = vertex;
            const auto found = std::find_if(entries.begin(), entries.end(),
                                            [wanted](const auto& entry) { return entry.first == wanted; });
            if (found == entries.end())
                entries.emplace_back(vertex, weight);
            else
                found->second = weight;
        }
        bind = folded.bind;
    }
    friend bool operator==(const PlainLink&, const PlainLink&) = default;
};

/// The first pair on one bone, until there is none: the one with the smaller share of zeros is folded and goes, on
/// equal shares the earlier one.
bool MergeOnePair(std::vector<PlainLink>& links)
{
    for (size_t i = 0; i < links.size(); ++i) {
        for (size_t j = i + 1; j < links.size(); ++j) {
            if (links[i].bone != links[j].bone)
                continue;
            const bool later =
                !links[i].entries.empty() && !links[j].entries.empty() && links[j].ZeroShare() < links[i].ZeroShare();
            const size_t folded = later ? j : i;
            links[later ? i : j].Take(links[folded]);
            links.erase(links.begin() + static_cast<std::ptrdiff_t>(folded));
            return true;
        }
    }
    return false;
}

std::vector<PlainLink> Look(TinyCharacter& character, const ZSkin& skin, int linkCount)
{
    std::vector<PlainLink> links;
    for (int link = 0; link < linkCount; ++link) {
        PlainLink& plain = links.emplace_back();
        const auto found =
            std::find(character.bones.begin(), character.bones.end(), const_cast<ZSkin&>(skin).LinkModel(link));
        plain.bone = static_cast<int>(found - character.bones.begin());
        plain.bind = static_cast<int>(skin.GetInverseBind(link)(3, 0));
        for (int entry = 0; entry < skin.GetEntryVertices(link).GetCount(); ++entry)
            plain.entries.emplace_back(skin.GetEntryVertices(link)[entry], skin.GetEntryWeights(link)[entry]);
    }
    return links;
}

TEST(DuplicateLinksProperty, EndAsThePlainVersion)
{
    const bool held = rc::check("merged links end as the plain version", [] {
        WeightStage stage;
        TinyCharacter& character = stage.character;
        ZModelPolymesh* const mesh = character.AddMesh("Body", 4);
        character.AddBones(*rc::gen::inRange(1, 4));
        ZSkin& skin = *mesh->GetSkin();
        const int linkCount = *rc::gen::inRange(0, 8);
        for (int link = 0; link < linkCount; ++link) {
            const auto bone = *rc::gen::inRange<size_t>(0, character.bones.size());
            skin.AppendLink(character.bones[bone], ZgeTranslation({link + 1.0, 0, 0}));
            for (int vertex = 0; vertex < 4; ++vertex)
                if (*rc::gen::arbitrary<bool>())
                    TinyCharacter::Weight(mesh, link, vertex, *rc::gen::inRange(0, 3) * 0.25);
        }
        std::vector<PlainLink> plain = Look(character, skin, linkCount);
        const bool merges = *rc::gen::arbitrary<bool>();
        ZToolKit_SetMessageAnswerer([merges](const ZtMessage&) { return merges ? 1 : 2; });
        const auto data = stage.Admit(mesh);
        bool anyDuplicates = false;
        for (size_t i = 0; i < plain.size(); ++i)
            for (size_t j = 0; j < i; ++j)
                anyDuplicates = anyDuplicates || plain[i].bone == plain[j].bone;
        while (merges && MergeOnePair(plain)) {
        }
        RC_ASSERT(Look(character, skin, skin.LinkCount()) == plain);
        RC_ASSERT(ZToolKit_GetMessages().size() == (anyDuplicates ? 1U : 0U));
        RC_ASSERT(!data->IsRefused());
    });
    EXPECT_TRUE(held);
}

/// A tool that has no strategy to give.
struct EmptyHandedOwner final : IWeightOwner
{
    const ZArrayTemplate<ZModel*>& BoneList() const override { return bones; }
    int BonePosition(const ZModel*) const override { return -1; }
    IWeightDeform* MakeStrategy(int) override { return nullptr; }
    void WeightViewChanged() override {}
    ZArrayTemplate<ZModel*> bones;
};

TEST(AdmissionWithoutStrategy, RefusesTheModelAndColoursNothing)
{
    WeightStage stage;
    stage.character.AddBones(1);
    ZModelPolymesh* const mesh = stage.character.AddMesh("Body", 2);
    TinyCharacter::Weight(mesh, 0, 0, 1.0);
    EmptyHandedOwner owner;
    ZWeightUIModelData data(mesh, &owner, true);
    EXPECT_TRUE(data.IsRefused());
    EXPECT_TRUE(ZToolKit_GetMessages().empty());
    data.SetModelSelected(true, nullptr);
    data.Refresh();
    data.SetVertexState(0, 2);
    data.vertexColours.Fill(0.25F);
    const ZBoneColourTable table{1, 0, 0};
    data.ComputeColors(table, kColourSmooth);
    data.ComputeActiveColors(table, kColourSmooth, kAffectAllSelected);
    data.BoneColorChanged(table, 0, kColourSmooth, 0, 0, 0);
    EXPECT_THAT(data.vertexColours, testing::Each(0.25F));
}

} // namespace
