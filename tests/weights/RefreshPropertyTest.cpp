// SPDX-License-Identifier: MIT
// Refreshing against a plain version, the order of its calls, and skins that say what cannot be.
#include "support/StrangeSkin.h"
#include "support/WeightStage.h"

#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <limits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Record = std::vector<std::pair<int, float>>;
using Entries = std::vector<std::pair<int, double>>;

/// A skin link by link, read and rewritten as one would say it: over all links, over all entries, again and again.
struct PlainSkin
{
    std::vector<bool> hasBone;
    std::vector<Entries> links;

    std::vector<Record> Read(int vertexCount, bool takesZeros) const
    {
        std::vector<Record> records(static_cast<size_t>(vertexCount));
        for (size_t link = 0; link < links.size(); ++link) {
            for (const auto& [vertex, weight] : links[link]) {
                const auto narrow = static_cast<float>(weight);
                const bool enough = takesZeros ? narrow >= 0.0F : narrow > 0.0F;
                if (hasBone[link] && enough && std::isfinite(narrow))
                    records[static_cast<size_t>(vertex)].emplace_back(link, narrow);
            }
        }
        return records;
    }
    std::vector<Record> Normalise(int vertexCount)
    {
        std::vector<Record> records = Read(vertexCount, false);
        for (Entries& entries : links)
            entries.clear();
        for (size_t vertex = 0; vertex < records.size(); ++vertex) {
            double sum = 0.0;
            for (const auto& influence : records[vertex])
                sum += static_cast<double>(influence.second);
            if (sum == 0.0)
                continue;
            const double scale = 1.0 / sum;
            for (auto& [link, weight] : records[vertex]) {
                weight = static_cast<float>(static_cast<double>(weight) * scale);
                links[static_cast<size_t>(link)].emplace_back(vertex, static_cast<double>(weight));
            }
        }
        return records;
    }
};

std::vector<Record> RecordsOf(const ZWeightUIModelData& data)
{
    std::vector<Record> records;
    for (const VertexInfluences* const influences : data.vertexInfluences) {
        records.emplace_back();
        for (int k = 0; k < influences->GetCount(); ++k)
            records.back().emplace_back(influences->links[k], influences->weights[k]);
    }
    return records;
}

std::vector<Entries> EntriesOf(const ZSkin& skin, int linkCount)
{
    std::vector<Entries> links;
    for (int link = 0; link < linkCount; ++link) {
        links.emplace_back();
        for (int entry = 0; entry < skin.GetEntryVertices(link).GetCount(); ++entry)
            links.back().emplace_back(skin.GetEntryVertices(link)[entry], skin.GetEntryWeights(link)[entry]);
    }
    return links;
}

double AnyWeight()
{
    return *rc::gen::element(0.0, 0.1, 0.2, 0.5, 1.0, 3.0, 1e-50, 1e300, -0.5, std::nan(""),
                             std::numeric_limits<double>::infinity());
}

TEST(RefreshProperty, EndsAsThePlainVersion)
{
    const bool held = rc::check("a refresh ends as the plain version", [] {
        WeightStage stage;
        const int linkCount = *rc::gen::inRange(1, 5);
        const int vertexCount = *rc::gen::inRange(1, 6);
        stage.character.AddBones(linkCount);
        ZModelPolymesh* const mesh = stage.character.AddMesh("Body", vertexCount);
        stage.ListAllBones();
        const auto data = stage.Admit(mesh);
        PlainSkin plain;
        plain.hasBone.assign(static_cast<size_t>(linkCount), true);
        if (*rc::gen::inRange(0, 3) == 0) { // a bone may leave its link behind
            mesh->GetSkin()->AppendLink(nullptr, {});
            plain.hasBone.push_back(false);
        }
        plain.links.resize(plain.hasBone.size());
        const bool shuffled = *rc::gen::arbitrary<bool>();
        for (size_t link = 0; link < plain.links.size(); ++link) {
            auto vertices = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, vertexCount));
            if (!shuffled)
                std::sort(vertices.begin(), vertices.end());
            for (const int vertex : vertices) {
                plain.links[link].emplace_back(vertex, AnyWeight());
                TinyCharacter::Weight(mesh, static_cast<int>(link), vertex, plain.links[link].back().second);
            }
        }
        data->SetModelSelected(true, nullptr);
        data->normaliseOnRefresh = *rc::gen::inRange<std::uint8_t>(0, 2);
        const bool normalises = data->normaliseOnRefresh != 0;
        const std::uint64_t version = mesh->GetSkin()->GetVersion();
        data->Refresh();
        const int links = mesh->GetSkin()->LinkCount();
        if (normalises) {
            RC_ASSERT(RecordsOf(*data) == plain.Normalise(vertexCount));
            RC_ASSERT(EntriesOf(*mesh->GetSkin(), links) == plain.links);
            for (const Record& record : RecordsOf(*data)) {
                double sum = 0.0;
                for (const auto& influence : record)
                    sum += static_cast<double>(influence.second);
                RC_ASSERT(record.empty() || std::abs(sum - 1.0) < 1e-6);
            }
        } else {
            RC_ASSERT(RecordsOf(*data) == plain.Read(vertexCount, true));
            RC_ASSERT(mesh->GetSkin()->GetVersion() == version);
        }
        const auto first = RecordsOf(*data);
        data->Refresh();
        RC_ASSERT(RecordsOf(*data) == first);
    });
    EXPECT_TRUE(held);
}

/// More vertices than a pass takes at a time.
TEST(LargeRefresh, EndsAsThePlainVersion)
{
    constexpr int kVertices = 10000;
    for (const bool shuffled : {false, true}) {
        WeightStage stage;
        stage.character.AddBones(7);
        ZModelPolymesh* const mesh = stage.character.AddMesh("Body", kVertices);
        PlainSkin plain;
        plain.hasBone.assign(7, true);
        plain.links.resize(7);
        for (int link = 0; link < 7; ++link) {
            for (int i = link; i < kVertices; i += 1 + link % 3) {
                const int vertex = shuffled ? (i * 7919) % kVertices : i;
                const double weight = (vertex % 11) * 0.125;
                plain.links[static_cast<size_t>(link)].emplace_back(vertex, weight);
                TinyCharacter::Weight(mesh, link, vertex, weight);
            }
        }
        const auto data = stage.Load(mesh);
        const std::vector<Record> expected = plain.Normalise(kVertices);
        EXPECT_TRUE(RecordsOf(*data) == expected) << shuffled;
        EXPECT_TRUE(EntriesOf(*mesh->GetSkin(), 7) == plain.links) << shuffled;
        data->Refresh();
        EXPECT_TRUE(RecordsOf(*data) == expected) << shuffled;
    }
}

// The order of the calls.

class RefreshCalls : public testing::Test
{
protected:
    RefreshCalls()
    {
        stage.character.AddBones(2);
        for (ZModel* const bone : stage.character.bones)
            mesh.GetSkin()->AppendLink(bone, {});
        TinyCharacter::Weight(&mesh, 0, 1, 3.0);
        TinyCharacter::Weight(&mesh, 0, 0, 0.2);
        TinyCharacter::Weight(&mesh, 1, 0, 0.2);
    }
    /// The calls that change something.
    std::vector<std::string> Written()
    {
        std::vector<std::string> written;
        for (const std::string& call : mesh.Recorder().calls)
            for (const char* const kind : {"ClearEntries", "Add", "Set", "Reset", "Remove"})
                if (call.rfind(kind, 0) == 0)
                    written.push_back(call);
        return written;
    }
    /// Is every link released before the next one becomes current?
    bool LinksAreReleased()
    {
        int open = 0;
        for (const std::string& call : mesh.Recorder().calls) {
            open += call.rfind("BeginLink", 0) == 0 ? 1 : 0;
            open -= call == "EndLink" ? 1 : 0;
            if (open < 0 || open > 1)
                return false;
        }
        return open == 0;
    }
    WeightStage stage;
    RecordedMesh mesh{"Body", 2, kDeformNormalise};
};

TEST_F(RefreshCalls, EveryLinkIsClearedBeforeAnEntryIsAdded)
{
    const auto data = stage.Load(&mesh);
    EXPECT_THAT(Written(),
                ElementsAre("ClearEntries", "ClearEntries", "AddEntry(0, 0.5)", "AddEntry(1, 1)", "AddEntry(0, 0.5)"));
    EXPECT_TRUE(LinksAreReleased());
}

TEST_F(RefreshCalls, LaterOnesOnlyRead)
{
    const auto data = stage.Load(&mesh);
    mesh.Recorder().calls.clear();
    data->Refresh();
    EXPECT_THAT(Written(), IsEmpty());
    EXPECT_TRUE(LinksAreReleased());
    EXPECT_FALSE(mesh.Recorder().calls.empty());
}

TEST_F(RefreshCalls, ModelThatIsNotCheckedIsNotAskedForAnEntry)
{
    stage.ListAllBones();
    const auto data = stage.Admit(&mesh);
    mesh.Recorder().calls.clear();
    data->Refresh();
    EXPECT_THAT(mesh.Recorder().calls, IsEmpty());
    EXPECT_THAT(data->boneLinkPositions, ElementsAre(0, 1));
}

// Skins that say what cannot be.

TEST(StrangeSkin, VerticesThatAreNotThereAreNeverTouched)
{
    for (const bool answersArrays : {false, true}) {
        WeightStage stage;
        stage.character.AddBones(2);
        StrangeMesh mesh(stage.character.bones, answersArrays);
        const auto data = stage.Load(&mesh);
        const Record halves{{0, 0.5F}, {1, 0.5F}};
        EXPECT_EQ(RecordsOf(*data), (std::vector<Record>{halves, halves}));
        data->Refresh();
        EXPECT_EQ(RecordsOf(*data), (std::vector<Record>{halves, halves}));
        EXPECT_EQ(TinyCharacter::EntriesOf(&mesh, 1), 2);
    }
}

TEST(StrangeSkin, WritingBackPassesOverEntriesOfVerticesThatAreNotThere)
{
    WeightStage stage;
    stage.character.AddBones(1);
    StrangeMesh mesh(stage.character.bones, false);
    const auto data = stage.Load(&mesh);
    data->SetModelSelected(false, nullptr);
    data->Refresh();
    mesh.Strange().calls.clear();
    data->ApplyVertexInfluences(1, VertexInfluences());
    // Of the five entries the third is the vertex's.
    EXPECT_THAT(mesh.Strange().calls, ElementsAre("BeginLink(0)", "SetEntryWeight(0, 2)", "EndLink"));
}

} // namespace
