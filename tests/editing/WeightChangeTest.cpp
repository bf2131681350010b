// SPDX-License-Identifier: MIT
// A requested percentage becomes weights in the skin, one undo step a gesture.
#include "support/EditingTool.h"

#include <gmock/gmock.h>

#include <cmath>

using testing::DoubleNear;
using testing::ElementsAre;

namespace {

class WeightChange : public testing::Test
{
protected:
    /// A mesh whose vertices have these weights, all of them selected and active in order.
    ZWeightUIModelData& Load(const std::vector<std::vector<double>>& weights, int bones = 3)
    {
        tool.character.AddBones(bones);
        return LoadMore("Body", weights);
    }
    ZWeightUIModelData& LoadMore(const std::string& name, const std::vector<std::vector<double>>& weights)
    {
        ZModelPolymesh* const mesh = tool.character.AddMesh(name, static_cast<int>(weights.size()));
        for (size_t vertex = 0; vertex < weights.size(); ++vertex)
            for (size_t link = 0; link < weights[vertex].size(); ++link)
                if (weights[vertex][link] != 0.0)
                    TinyCharacter::Weight(mesh, static_cast<int>(link), static_cast<int>(vertex),
                                          weights[vertex][link]);
        ZWeightUIModelData& data = tool.Admit(mesh);
        data.normaliseOnRefresh = 0;
        tool.RebuildBoneList();
        std::vector<int> batch;
        for (size_t vertex = 0; vertex < weights.size(); ++vertex) {
            batch.push_back(tool.models.GetCount() - 1);
            batch.push_back(static_cast<int>(vertex));
        }
        tool.Pick(batch, kPickAdd);
        tool.calls.clear();
        return data;
    }
    void Type(double percent, int row) { tool.change.ApplyWeightChange(true, true, percent, row); }
    static testing::Matcher<std::vector<double>> Are(const std::vector<double>& expected)
    {
        return testing::Pointwise(DoubleNear(1e-6), expected);
    }
    std::vector<double> Vertex(const ZWeightUIModelData& data, int vertex)
    {
        return TinyCharacter::Weights(data.model)[static_cast<size_t>(vertex)];
    }
    EditingTool tool;
    ZUndoStack& stack = *ZUndoStack::TheOne();
};

TEST_F(WeightChange, OthersShareInProportion)
{
    ZWeightUIModelData& data = Load({{0.5, 0.3, 0.2}});
    Type(70, 0);
    EXPECT_THAT(Vertex(data, 0), Are({0.7, 0.18, 0.12}));
    EXPECT_FLOAT_EQ(data.VertexBoneWeight(1, 0), 0.18F);
}

TEST_F(WeightChange, LockedBonesKeepTheirShare)
{
    ZWeightUIModelData& data = Load({{0.5, 0.3, 0.2}});
    tool.locks[2] = 1;
    Type(70, 0);
    EXPECT_THAT(Vertex(data, 0), Are({0.7, 0.1, 0.2}));
}

TEST_F(WeightChange, WeightPushedOutFlowsBack)
{
    ZWeightUIModelData& data = Load({{0.5, 0.3, 0.2}});
    Type(100, 0);
    EXPECT_THAT(Vertex(data, 0), Are({1, 0, 0}));
    EXPECT_THAT(tool.change.snapshotWeights,
                ElementsAre(testing::FloatEq(50), testing::FloatEq(30), testing::FloatEq(20)));
    Type(60, 0);
    EXPECT_THAT(Vertex(data, 0), Are({0.6, 0.24, 0.16}));
}

TEST_F(WeightChange, RequestIsClamped)
{
    ZWeightUIModelData& data = Load({{0.5, 0.3, 0.2}});
    Type(-5, 0);
    EXPECT_THAT(Vertex(data, 0), Are({0, 0.6, 0.4}));
    Type(150, 0);
    EXPECT_THAT(Vertex(data, 0), Are({1, 0, 0}));
}

TEST_F(WeightChange, MissingShareIsFilledUp)
{
    ZWeightUIModelData& data = Load({{0.5, 0.4, 0}});
    Type(50, 0);
    EXPECT_THAT(Vertex(data, 0), Are({0.5, 0.5, 0}));
}

TEST_F(WeightChange, OnlyFreeBoneTakesTheWholeShareWhateverIsAsked)
{
    ZWeightUIModelData& data = Load({{0.6, 0.4}}, 2);
    tool.locks[1] = 1;
    for (const double requested : {10.0, 60.0, 90.0}) {
        Type(requested, 0);
        EXPECT_THAT(Vertex(data, 0), Are({0.6, 0.4}));
    }
}

TEST_F(WeightChange, AllTargetsEndWithTheCurrentVertexsSpread)
{
    ZWeightUIModelData& data = Load({{0.5, 0.5, 0, 0}, {0, 0, 1, 0}, {0, 0.5, 0, 0.5}}, 4);
    tool.weightingMode = kAffectAllSelected;
    Type(80, 0);
    for (int vertex = 0; vertex < 3; ++vertex)
        EXPECT_THAT(Vertex(data, vertex), Are({0.8, 0.2, 0, 0}));
    // What only another vertex had is 0 now, and keeps its entry.
    EXPECT_EQ(TinyCharacter::WeightOf(data.model, 2, 1), 0.0);
    EXPECT_EQ(TinyCharacter::WeightOf(data.model, 2, 0), -1.0);
}

TEST_F(WeightChange, FirstSelectedModeLeavesTheOthersAlone)
{
    ZWeightUIModelData& data = Load({{0.5, 0.5}, {0, 1}}, 2);
    Type(80, 0);
    EXPECT_THAT(Vertex(data, 0), Are({0.8, 0.2}));
    EXPECT_THAT(Vertex(data, 1), Are({0, 1}));
}

TEST_F(WeightChange, UnknownWeightingModeWritesNothing)
{
    ZWeightUIModelData& data = Load({{0.5, 0.5}}, 2);
    tool.weightingMode = 2;
    Type(80, 0);
    EXPECT_THAT(Vertex(data, 0), Are({0.5, 0.5}));
    EXPECT_EQ(stack.GetUndoCount(), 1) << "only the pick";
}

TEST_F(WeightChange, TargetsOfSeveralModelsGetTheirOwnLinks)
{
    ZWeightUIModelData& first = Load({{0.5, 0.5}}, 2);
    tool.character.AddBones(1);
    ZModelPolymesh* const mesh = tool.character.AddMesh("Second", 1);
    // Bones 2, 1 in this order, and bone 0 not at all.
    mesh->MakeSkin(kDeformNormalise)->AppendLink(tool.character.bones[2], {});
    mesh->GetSkin()->AppendLink(tool.character.bones[1], {});
    TinyCharacter::Weight(mesh, 0, 0, 1.0);
    ZWeightUIModelData& second = tool.Admit(mesh);
    tool.RebuildBoneList();
    tool.Pick({1, 0}, kPickAdd);
    tool.weightingMode = kAffectAllSelected;
    Type(75, 0);
    EXPECT_THAT(Vertex(first, 0), Are({0.75, 0.25}));
    ASSERT_EQ(mesh->GetSkin()->LinkCount(), 3);
    EXPECT_EQ(mesh->GetSkin()->LinkModel(2), tool.character.bones[0]);
    EXPECT_THAT(Vertex(second, 0), Are({0, 0.25, 0.75}));
    EXPECT_FLOAT_EQ(second.VertexBoneWeight(0, 0), 0.75F);
}

TEST_F(WeightChange, SetSpreadWeightFollowsTheWeightingMode)
{
    ZWeightUIModelData& data = Load({{1, 0}, {1, 0}}, 2);
    tool.change.SetSpreadWeight(1, 25);
    EXPECT_EQ(Vertex(data, 0)[1], 0.25);
    EXPECT_EQ(Vertex(data, 1)[1], 0.0);
    tool.weightingMode = kAffectAllSelected;
    tool.change.SetSpreadWeight(1, 50);
    EXPECT_EQ(Vertex(data, 0)[1], 0.5);
    EXPECT_EQ(Vertex(data, 1)[1], 0.5);
    tool.weightingMode = 7;
    tool.change.SetSpreadWeight(1, 75);
    EXPECT_EQ(Vertex(data, 1)[1], 0.5);
}

// Snapshot.

TEST_F(WeightChange, SnapshotHoldsTheWeightsThatAreNotZero)
{
    Load({{0.5, 0, 0.5}});
    tool.change.TakeSpreadSnapshot();
    EXPECT_THAT(tool.change.snapshotBones, ElementsAre(0, 2));
    EXPECT_THAT(tool.change.snapshotWeights, ElementsAre(50.0F, 50.0F));
}

TEST_F(WeightChange, NothingActiveMeansNoSnapshot)
{
    Load({{0.5, 0, 0.5}});
    tool.selection.noActive = true;
    tool.change.TakeSpreadSnapshot();
    EXPECT_TRUE(tool.change.snapshotBones.IsEmpty());
}

TEST_F(WeightChange, NoCurrentRowMeansNoSnapshot)
{
    Load({{0.5, 0, 0.5}});
    tool.selection.targetRows.RemoveAll();
    tool.change.TakeSpreadSnapshot();
    EXPECT_TRUE(tool.change.snapshotBones.IsEmpty());
}

// The undo step.

TEST_F(WeightChange, TypedNumberIsOneStep)
{
    ZWeightUIModelData& data = Load({{0.5, 0.3, 0.2}});
    Type(70, 0);
    EXPECT_FALSE(tool.change.IsOpen());
    EXPECT_EQ(stack.GetUndoNames()[0], "Apply Weight Change");
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(Vertex(data, 0), Are({0.5, 0.3, 0.2}));
    EXPECT_TRUE(stack.Redo());
    EXPECT_THAT(Vertex(data, 0), Are({0.7, 0.18, 0.12}));
}

TEST_F(WeightChange, DragIsOneStep)
{
    ZWeightUIModelData& data = Load({{0.5, 0.3, 0.2}});
    tool.change.ApplyWeightChange(true, false, 60, 0);
    tool.change.ApplyWeightChange(false, false, 100, 0);
    EXPECT_TRUE(tool.change.IsOpen());
    tool.change.ApplyWeightChange(false, true, 80, 0);
    EXPECT_FALSE(tool.change.IsOpen());
    EXPECT_EQ(stack.GetUndoCount(), 2);
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(Vertex(data, 0), Are({0.5, 0.3, 0.2}));
    EXPECT_TRUE(stack.Redo());
    EXPECT_NEAR(Vertex(data, 0)[0], 0.8, 1e-6);
}

TEST_F(WeightChange, ChangeThatAlteredNothingLeavesNoStep)
{
    Load({{0.5, 0.25, 0.25}});
    Type(50, 0);
    EXPECT_EQ(stack.GetUndoCount(), 1) << "only the pick";
    EXPECT_FALSE(stack.IsTransactionOpen());
}

TEST_F(WeightChange, CutOffDragIsStillOneStep)
{
    ZWeightUIModelData& data = Load({{0.5, 0.3, 0.2}});
    tool.change.ApplyWeightChange(true, false, 60, 0);
    tool.change.CloseOpenChange();
    EXPECT_FALSE(stack.IsTransactionOpen());
    tool.change.CloseOpenChange();
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(Vertex(data, 0), Are({0.5, 0.3, 0.2}));
}

TEST_F(WeightChange, BeginInTheMiddleOfADragEndsIt)
{
    Load({{0.5, 0.3, 0.2}});
    tool.change.ApplyWeightChange(true, false, 60, 0);
    tool.change.ApplyWeightChange(true, true, 70, 0);
    EXPECT_FALSE(stack.IsTransactionOpen());
    EXPECT_EQ(stack.GetUndoCount(), 3);
}

TEST_F(WeightChange, StrayEventAfterACutOffDragIsUndoable)
{
    ZWeightUIModelData& data = Load({{0.5, 0.3, 0.2}});
    tool.change.ApplyWeightChange(false, false, 60, 0);
    tool.change.ApplyWeightChange(false, true, 65, 0);
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(Vertex(data, 0), Are({0.5, 0.3, 0.2}));
}

TEST_F(WeightChange, RowsThatAreNotThereChangeNothing)
{
    ZWeightUIModelData& data = Load({{0.5, 0.3, 0.2}});
    Type(70, -1);
    Type(70, 3);
    tool.selection.targetRows.RemoveAll();
    Type(70, 0);
    EXPECT_THAT(Vertex(data, 0), Are({0.5, 0.3, 0.2}));
    EXPECT_FALSE(stack.IsTransactionOpen());
}

TEST_F(WeightChange, RecordThatIsNotItsOwnCountsAsMissing)
{
    struct Other final : IUndo
    {
        void* IQuery(int, int) override { return nullptr; }
        void Destroy() override { delete this; }
        bool IsEmpty() override { return false; }
        void TransactionClosed() override {}
        void Undo() override {}
        void Redo() override {}
        const char* GetName() override { return "Other"; }
    };
    ZWeightUIModelData& data = Load({{0.5, 0.3, 0.2}});
    tool.change.ApplyWeightChange(true, false, 70, 0);
    stack.TransactionAdd(new Other);
    tool.change.ApplyWeightChange(false, true, 70, 0);
    EXPECT_FALSE(stack.IsTransactionOpen());
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(Vertex(data, 0), Are({0.5, 0.3, 0.2}));
    // What the change ended with was not asked for, and nothing is no spread to go forward to.
    EXPECT_TRUE(stack.Redo());
    EXPECT_THAT(Vertex(data, 0), Are({0.5, 0.3, 0.2}));
}

TEST_F(WeightChange, EmptiedStackClosesTheChange)
{
    Load({{0.5, 0.3, 0.2}});
    tool.change.ApplyWeightChange(true, false, 70, 0);
    stack.Clear();
    tool.change.ApplyWeightChange(false, true, 60, 0);
    EXPECT_FALSE(tool.change.IsOpen());
    EXPECT_FALSE(stack.IsTransactionOpen());
}

/// Making a change again gives the first vertex's record, zeros included, to vertices whose skin has no entry for them.
TEST_F(WeightChange, WeightRaisedAfterARedoIsNotLost)
{
    ZWeightUIModelData& data = Load({{0.6, 0.4, 0.0}, {0.3, 0.7, 0.0}});
    tool.weightingMode = kAffectFirstSelected;
    Type(50, 2); // the first vertex alone takes the third bone, and gives it back
    Type(0, 2);
    ASSERT_EQ(data.vertexInfluences[0]->GetCount(), 3);
    ASSERT_EQ(data.vertexInfluences[1]->GetCount(), 2);
    tool.weightingMode = kAffectAllSelected;
    Type(80, 0);
    stack.Undo();
    stack.Redo();
    ASSERT_EQ(data.vertexInfluences[1]->GetCount(), 3);

    Type(30, 2);
    for (const int vertex : {0, 1})
        EXPECT_THAT(Vertex(data, vertex), Are({0.56, 0.14, 0.3})) << vertex;
    stack.Undo();
    EXPECT_THAT(Vertex(data, 1), Are({0.8, 0.2, 0.0}));
}

TEST_F(WeightChange, WeightOfTheSecondVertexRaisedAfterARedoIsNotLost)
{
    ZWeightUIModelData& data = Load({{0.6, 0.4, 0.0}, {0.3, 0.7, 0.0}});
    tool.weightingMode = kAffectFirstSelected;
    Type(50, 2); // made again, it goes to both, and the second vertex has no entry for the third bone
    stack.Undo();
    stack.Redo();
    ASSERT_EQ(data.vertexInfluences[1]->GetCount(), 3);
    EXPECT_FLOAT_EQ(data.vertexInfluences[1]->weights[2], 0.5F);
    data.SetVertexBoneWeight(2, 1, 0.25);
    EXPECT_NEAR(Vertex(data, 1)[2], 0.25, 1e-9);
}

TEST_F(WeightChange, EndsWithColoursAndSpread)
{
    Load({{0.5, 0.3, 0.2}});
    Type(70, 0);
    EXPECT_THAT(tool.calls, ElementsAre("RecolourActiveVertices", "RefreshSpread(1)"));
}

TEST_F(WeightChange, ModelDeletedInTheMiddleOfADragLeavesTheOthersTheirStep)
{
    ZWeightUIModelData& first = Load({{0.5, 0.5, 0}});
    ZWeightUIModelData& second = LoadMore("Second", {{1, 0, 0}});
    tool.weightingMode = kAffectAllSelected;
    tool.change.ApplyWeightChange(true, false, 60, 0);
    tool.Remove(first);
    tool.change.CloseOpenChange();
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(Vertex(second, 0), Are({1, 0, 0}));
    EXPECT_TRUE(stack.Redo());
    EXPECT_THAT(Vertex(second, 0), Are({0.6, 0.4, 0}));
}

TEST_F(WeightChange, AllTargetsOnManyBonesTouchOnlyTheirInfluences)
{
    // Three hundred bones times as many vertices would be six million calls; the influences are twenty thousand.
    constexpr int kVertices = 20000;
    tool.character.AddBones(300);
    ZModelPolymesh* const mesh = tool.character.AddMesh("Body", kVertices);
    for (int vertex = 0; vertex < kVertices; ++vertex)
        TinyCharacter::Weight(mesh, vertex % 300, vertex, 1.0);
    ZWeightUIModelData& data = tool.Admit(mesh);
    tool.RebuildBoneList();
    std::vector<int> batch;
    for (int vertex = 0; vertex < kVertices; ++vertex) {
        batch.push_back(0);
        batch.push_back(vertex);
    }
    tool.Pick(batch, kPickAdd);
    tool.weightingMode = kAffectAllSelected;
    Type(40, 1);
    EXPECT_FLOAT_EQ(data.VertexBoneWeight(1, 12345), 0.4F);
    EXPECT_FLOAT_EQ(data.VertexBoneWeight(0, 12345), 0.6F);
    EXPECT_EQ(data.VertexBoneWeight(12345 % 300, 12345), 0.0F);
}

} // namespace
