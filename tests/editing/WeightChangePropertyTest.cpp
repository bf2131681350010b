// SPDX-License-Identifier: MIT
// Weight changes against a plain version that searches, loops over all bones and all rows, and is obviously right.
#include "support/EditingTool.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <map>
#include <vector>

namespace {

using Record = std::vector<std::pair<int, float>>;

/// One model as plain lists: boneLinkPositions, a record a vertex, and the skin's entries link by link.
struct PlainModel
{
    std::vector<int> positions;
    std::vector<Record> records;
    std::vector<std::map<int, double>> skin;

    int FindLink(int bone) const
    {
        for (size_t link = 0; link < positions.size(); ++link)
            if (positions[link] == bone)
                return static_cast<int>(link);
        return -1;
    }
    float Weight(int bone, int vertex) const
    {
        const int link = FindLink(bone);
        for (const auto& [recordLink, weight] : records[static_cast<size_t>(vertex)])
            if (link >= 0 && recordLink == link)
                return weight;
        return 0.0F;
    }
    void SetWeight(int bone, int vertex, double weight)
    {
        int link = FindLink(bone);
        if (link < 0) {
            if (weight == 0.0)
                return;
            skin.emplace_back();
            positions.push_back(bone);
            link = FindLink(bone);
        }
        Record& record = records[static_cast<size_t>(vertex)];
        std::map<int, double>& entries = skin[static_cast<size_t>(link)];
        for (auto& [recordLink, held] : record) {
            if (recordLink != link)
                continue;
            held = static_cast<float>(weight);
            if (entries.count(vertex) > 0)
                entries[vertex] = weight;
            return;
        }
        if (weight == 0.0)
            return;
        record.emplace_back(link, static_cast<float>(weight));
        entries[vertex] = weight;
    }
    friend bool operator==(const PlainModel&, const PlainModel&) = default;
};

PlainModel Look(const ZWeightUIModelData& data)
{
    PlainModel plain;
    for (const int position : data.boneLinkPositions)
        plain.positions.push_back(position);
    for (const VertexInfluences* const influences : data.vertexInfluences) {
        plain.records.emplace_back();
        for (int k = 0; k < influences->GetCount(); ++k)
            plain.records.back().emplace_back(influences->links[k], influences->weights[k]);
    }
    ZSkin* const skin = data.model->GetSkin();
    for (int link = 0; link < skin->LinkCount(); ++link) {
        plain.skin.emplace_back();
        for (int entry = 0; entry < skin->GetEntryVertices(link).GetCount(); ++entry)
            plain.skin.back()[skin->GetEntryVertices(link)[entry]] = skin->GetEntryWeights(link)[entry];
    }
    return plain;
}

struct PlainTool
{
    std::vector<PlainModel> models;
    std::vector<std::pair<int, int>> rows; ///< model, vertex; all of them are target rows, the first is current
    std::vector<int> locks;
    int mode = 0;
    std::vector<std::pair<int, float>> snapshot;

    void SetSpread(int bone, double percent)
    {
        const size_t count = mode == kAffectAllSelected ? rows.size() : 1;
        for (size_t row = 0; row < count; ++row)
            models[static_cast<size_t>(rows[row].first)].SetWeight(bone, rows[row].second, percent / 100.0);
    }
    double Percent(int bone) const
    {
        const float weight = models[static_cast<size_t>(rows[0].first)].Weight(bone, rows[0].second);
        return static_cast<double>(weight * 100.0F);
    }
    void TakeSnapshot()
    {
        snapshot.clear();
        for (size_t bone = 0; bone < locks.size(); ++bone)
            if (Percent(static_cast<int>(bone)) != 0.0)
                snapshot.emplace_back(bone, static_cast<float>(Percent(static_cast<int>(bone))));
    }
    void Apply(double r, int c)
    {
        r = r > 100.0 ? 100.0 : (r < 0.0 ? 0.0 : r);
        std::vector<std::pair<int, double>> free, locked;
        double total = 0, oldFree = 0, newFree = 0;
        size_t p = 0;
        for (int b = 0; b < static_cast<int>(locks.size()); ++b) {
            const double x = Percent(b);
            total += x;
            if (b == c) {
                oldFree += x;
                newFree += r;
                p = free.size();
                free.emplace_back(c, r);
            } else if (x == 0.0) {
                continue;
            } else if (locks[static_cast<size_t>(b)] != 0) {
                locked.emplace_back(b, x);
            } else {
                free.emplace_back(b, x);
                oldFree += x;
                newFree += x;
            }
        }
        const auto isIn = [](const std::vector<std::pair<int, double>>& list, int bone) {
            for (const auto& item : list)
                if (item.first == bone)
                    return true;
            return false;
        };
        if (free.size() == 1 && oldFree > newFree) {
            for (const auto& [b, y] : snapshot) {
                if (isIn(free, b) || isIn(locked, b))
                    continue;
                free.emplace_back(b, static_cast<double>(y));
                newFree += static_cast<double>(y);
            }
        }
        if (total != 100.0)
            oldFree += 100.0 - total;
        const double share = oldFree > 0.0 ? oldFree : 0.0;
        bool capped = false;
        if (r < share && newFree - r == 0.0) {
            free[p].second = share;
        } else if (r < share) {
            const double k = (share - r) / (newFree - r);
            for (size_t i = 0; i < free.size(); ++i)
                free[i].second = i == p ? r : free[i].second * k;
        } else {
            for (size_t i = 0; i < free.size(); ++i)
                free[i].second = i == p ? share : 0.0;
            capped = true;
        }
        if (mode == kAffectAllSelected)
            for (size_t b = 0; b < locks.size(); ++b)
                for (const auto& [model, vertex] : rows)
                    models[static_cast<size_t>(model)].SetWeight(static_cast<int>(b), vertex, 0.0);
        for (const auto& list : {free, locked})
            for (const auto& [b, value] : list)
                SetSpread(b, value);
        if (!capped)
            TakeSnapshot();
    }
};

/// Two models: the second knows all bones, the first only some of them.
void MakeModels(EditingTool& tool)
{
    const int boneCount = *rc::gen::inRange(1, 5);
    tool.character.AddBones(boneCount);
    for (const char* const name : {"First", "Second"}) {
        const int vertexCount = *rc::gen::inRange(1, 4);
        ZModelPolymesh* const mesh = tool.character.AddMesh(name, vertexCount, *rc::gen::element(0, 2));
        for (int vertex = 0; vertex < vertexCount; ++vertex)
            for (int link = 0; link < mesh->GetSkin()->LinkCount(); ++link)
                if (*rc::gen::inRange(0, 3) != 0)
                    TinyCharacter::Weight(mesh, link, vertex, *rc::gen::inRange(0, 5) * 0.1);
        ZWeightUIModelData& data = tool.Admit(mesh);
        data.normaliseOnRefresh = *rc::gen::inRange<std::uint8_t>(0, 2);
        tool.character.AddBones(*rc::gen::inRange(0, 3));
    }
    tool.RebuildBoneList();
}

PlainTool MakePlain(EditingTool& tool)
{
    PlainTool plain;
    for (const auto& item : tool.owned)
        plain.models.push_back(Look(*item));
    for (int bone = 0; bone < tool.boneList.GetCount(); ++bone) {
        tool.locks[bone] = *rc::gen::inRange(0, 4) == 0 ? 1 : 0;
        plain.locks.push_back(tool.locks[bone]);
    }
    plain.mode = tool.weightingMode = *rc::gen::inRange(0, 2);
    return plain;
}

void PickSome(EditingTool& tool, PlainTool& plain)
{
    std::vector<int> batch;
    for (int model = 0; model < 2; ++model) {
        for (int vertex = 0; vertex < tool.models[model]->vertexStates.GetCount(); ++vertex) {
            if (!plain.rows.empty() && *rc::gen::inRange(0, 2) == 0)
                continue;
            plain.rows.emplace_back(model, vertex);
            batch.push_back(model);
            batch.push_back(vertex);
        }
    }
    tool.Pick(batch, kPickAdd);
    plain.TakeSnapshot();
}

void ExpectSame(const EditingTool& tool, const PlainTool& plain)
{
    for (size_t model = 0; model < plain.models.size(); ++model)
        RC_ASSERT(Look(*tool.owned[model]) == plain.models[model]);
    std::vector<std::pair<int, float>> snapshot;
    for (int i = 0; i < tool.change.snapshotBones.GetCount(); ++i)
        snapshot.emplace_back(tool.change.snapshotBones[i], tool.change.snapshotWeights[i]);
    RC_ASSERT(snapshot == plain.snapshot);
}

TEST(WeightChangeProperty, EndsAsThePlainVersion)
{
    const bool held = rc::check("weight changes end as the plain version", [] {
        EditingTool tool;
        MakeModels(tool);
        PlainTool plain = MakePlain(tool);
        PickSome(tool, plain);
        const int changes = *rc::gen::inRange(1, 6);
        for (int change = 0; change < changes; ++change) {
            const int bone = *rc::gen::inRange(0, tool.boneList.GetCount());
            if (tool.locks[bone] != 0)
                continue; // the panel never asks for a locked bone
            const double percent = *rc::gen::inRange(-10, 111);
            tool.change.ApplyWeightChange(true, true, percent, bone);
            plain.Apply(percent, bone);
            ExpectSame(tool, plain);
        }
    });
    EXPECT_TRUE(held);
}

/// Weights as an animator sees them: float, without those that are zero.
std::vector<std::map<std::pair<int, int>, float>> VisibleWeights(const EditingTool& tool)
{
    std::vector<std::map<std::pair<int, int>, float>> models;
    for (const auto& item : tool.owned) {
        models.emplace_back();
        const PlainModel plain = Look(*item);
        for (size_t link = 0; link < plain.skin.size(); ++link)
            for (const auto& [vertex, weight] : plain.skin[link])
                if (static_cast<float>(weight) != 0.0F)
                    models.back()[{static_cast<int>(link), vertex}] = static_cast<float>(weight);
    }
    return models;
}

TEST(WeightChangeProperty, UndoAndRedoReturnTheWeights)
{
    const bool held = rc::check("undo and redo of weight changes return the weights", [] {
        EditingTool tool;
        MakeModels(tool);
        PlainTool plain = MakePlain(tool);
        tool.weightingMode = plain.mode = kAffectAllSelected;
        PickSome(tool, plain);
        ZUndoStack& stack = *ZUndoStack::TheOne();
        std::vector<std::vector<std::map<std::pair<int, int>, float>>> states(1, VisibleWeights(tool));
        const int changes = *rc::gen::inRange(1, 5);
        for (int change = 0; change < changes; ++change) {
            const int bone = *rc::gen::inRange(0, tool.boneList.GetCount());
            const int before = stack.GetUndoCount();
            tool.change.ApplyWeightChange(true, true, *rc::gen::inRange(0, 101), bone);
            if (stack.GetUndoCount() > before)
                states.push_back(VisibleWeights(tool));
            else
                RC_ASSERT(states.back() == VisibleWeights(tool));
        }
        for (size_t state = states.size() - 1; state > 0; --state) {
            RC_ASSERT(stack.Undo());
            RC_ASSERT(VisibleWeights(tool) == states[state - 1]);
        }
        for (size_t state = 1; state < states.size(); ++state) {
            RC_ASSERT(stack.Redo());
            RC_ASSERT(VisibleWeights(tool) == states[state]);
        }
    });
    EXPECT_TRUE(held);
}

} // namespace
