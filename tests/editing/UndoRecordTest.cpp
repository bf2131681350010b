// SPDX-License-Identifier: MIT
// The three undo records.
#include "support/EditingTool.h"

#include <gmock/gmock.h>

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class UndoRecord : public testing::Test
{
protected:
    UndoRecord()
    {
        tool.character.AddBones(3);
        mesh = tool.character.AddMesh("Body", 4);
        for (int vertex = 0; vertex < 4; ++vertex) {
            TinyCharacter::Weight(mesh, 0, vertex, 0.5);
            TinyCharacter::Weight(mesh, 1, vertex, 0.25);
            TinyCharacter::Weight(mesh, 2, vertex, 0.25);
        }
        data = &tool.Admit(mesh);
        tool.RebuildBoneList();
    }
    std::vector<double> Vertex(int vertex) { return TinyCharacter::Weights(mesh)[static_cast<size_t>(vertex)]; }
    static testing::Matcher<std::vector<double>> Are(const std::vector<double>& expected)
    {
        return testing::Pointwise(DoubleNear(1e-6), expected);
    }
    EditingTool tool;
    ZUndoStack& stack = *ZUndoStack::TheOne();
    ZModelPolymesh* mesh = nullptr;
    ZWeightUIModelData* data = nullptr;
};

TEST_F(UndoRecord, AnswersTheUndoInterface)
{
    ZWeightingSelectionUndo selection(&tool);
    ZWeightingModelSelectionUndo models(&tool);
    ZWeightingWeightChangeUndo weights(&tool);
    for (ZWeightingUndoBase* const record :
         {static_cast<ZWeightingUndoBase*>(&selection), static_cast<ZWeightingUndoBase*>(&models),
          static_cast<ZWeightingUndoBase*>(&weights)}) {
        EXPECT_EQ(record->IQuery(9456721, 0), static_cast<IUndo*>(record));
        EXPECT_EQ(record->IQuery(0, 0), static_cast<IObject*>(record));
        EXPECT_EQ(record->IQuery(369369369, 0), nullptr);
        EXPECT_EQ(record->IQuery(1, 0), nullptr);
        EXPECT_TRUE(record->IsEmpty());
    }
    EXPECT_STREQ(selection.GetName(), "ZWeightingSelectionUndo");
    EXPECT_STREQ(models.GetName(), "ZWeightingModelSelection");
    EXPECT_STREQ(weights.GetName(), "ZWeightingWeightChange");
}

// Selection.

TEST_F(UndoRecord, PickIsReversedInOneStep)
{
    tool.Pick({0, 2}, kPickAdd);
    EXPECT_TRUE(stack.Undo());
    EXPECT_EQ(data->GetVertexState(2), 0);
    EXPECT_THAT(tool.selection.vertexRows, IsEmpty());
    EXPECT_TRUE(stack.Redo());
    EXPECT_EQ(data->GetVertexState(2), 2);
    EXPECT_THAT(tool.selection.vertexRows, ElementsAre(2));
}

TEST_F(UndoRecord, SelectionUndoRebuildsRowsAndSnapshot)
{
    tool.Pick({0, 2}, kPickAdd);
    tool.Pick({0, 2}, kPickRemove);
    tool.calls.clear();
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(tool.calls, ElementsAre("RebuildVertexRows"));
    EXPECT_EQ(tool.change.snapshotBones.GetCount(), 3);
}

TEST_F(UndoRecord, SelectionOfAModelThatIsGoneStaysSilent)
{
    tool.Pick({0, 2}, kPickAdd);
    tool.Remove(*data);
    tool.calls.clear();
    EXPECT_TRUE(stack.Undo());
    EXPECT_TRUE(stack.Redo());
    EXPECT_THAT(tool.calls, IsEmpty());
}

/// The states are kept for when the model is loaded again; no record of weights, no colour is looked at.
TEST_F(UndoRecord, SelectionOfAModelThatIsNotLoadedTouchesItsStatesAlone)
{
    tool.Pick({0, 2}, kPickAdd);
    data->SetModelSelected(false, nullptr);
    tool.RebuildBoneList();
    EXPECT_TRUE(stack.Undo());
    EXPECT_TRUE(stack.Redo());
    EXPECT_EQ(data->GetVertexState(2), 2);
    EXPECT_THAT(tool.selection.vertexRows, IsEmpty());
    EXPECT_TRUE(tool.selection.noActive);
    tool.change.ApplyWeightChange(true, true, 70, 0);
    std::vector<int> marks(3, 0);
    data->MarkInfluencingBones(marks.data(), 3);
    tool.RecolourActiveVertices();
    EXPECT_THAT(marks, ElementsAre(0, 0, 0));
    EXPECT_FALSE(data->IsLoaded());
    EXPECT_THAT(Vertex(2), Are({0.5, 0.25, 0.25}));
    tool.RebuildBoneList();
    EXPECT_EQ(data->GetVertexState(2), 0);
}

TEST_F(UndoRecord, SelectionStepStaysWithinTwiceWhatChanged)
{
    ZWeightingSelectionUndo record(&tool);
    for (int vertex = 0; vertex < 1000; ++vertex)
        record.RecordTransition(vertex, 0, 1);
    record.TransactionClosed();
    EXPECT_LE(record.GetByteCount(), 2U * 12U * 1000U);
    EXPECT_THAT(record.vertices[999], 999);
}

// Check marks.

TEST_F(UndoRecord, CheckMarksComeBackWithOneRefresh)
{
    ZWeightUIModelData& second = tool.Admit(tool.character.AddMesh("Second", 1), false);
    stack.TransactionBegin("Tool Weighting Value Changed", false);
    auto* const record = new ZWeightingModelSelectionUndo(&tool);
    stack.TransactionAdd(record);
    tool.SetModelSelected(data, false, record);
    tool.SetModelSelected(&second, true, record);
    stack.TransactionEnd(false, false);
    tool.calls.clear();
    EXPECT_TRUE(stack.Undo());
    EXPECT_EQ(data->modelSelected, 1);
    EXPECT_EQ(second.modelSelected, 0);
    EXPECT_THAT(tool.calls, ElementsAre("RefreshModelList"));
    EXPECT_TRUE(stack.Redo());
    EXPECT_EQ(data->modelSelected, 0);
    EXPECT_EQ(second.modelSelected, 1);
}

TEST_F(UndoRecord, CheckMarksOfModelsThatAreGoneStaySilent)
{
    stack.TransactionBegin("Tool Weighting Value Changed", false);
    auto* const record = new ZWeightingModelSelectionUndo(&tool);
    stack.TransactionAdd(record);
    tool.SetModelSelected(data, false, record);
    stack.TransactionEnd(false, false);
    tool.Remove(*data);
    tool.calls.clear();
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(tool.calls, IsEmpty());
}

TEST_F(UndoRecord, CheckMarkOfTheModelThatIsLeftComesBack)
{
    ZWeightUIModelData& second = tool.Admit(tool.character.AddMesh("Second", 1));
    stack.TransactionBegin("Tool Weighting Value Changed", false);
    auto* const record = new ZWeightingModelSelectionUndo(&tool);
    stack.TransactionAdd(record);
    tool.SetModelSelected(data, false, record);
    tool.SetModelSelected(&second, false, record);
    stack.TransactionEnd(false, false);
    tool.Remove(*data);
    tool.calls.clear();
    EXPECT_TRUE(stack.Undo());
    EXPECT_EQ(second.modelSelected, 1);
    EXPECT_THAT(tool.calls, ElementsAre("RefreshModelList"));
}

// Weights.

TEST_F(UndoRecord, WeightUndoRestoresEveryActiveVertex)
{
    tool.Pick({0, 0, 0, 3}, kPickAdd);
    tool.weightingMode = kAffectAllSelected;
    tool.change.ApplyWeightChange(true, true, 90, 1);
    tool.calls.clear();
    EXPECT_TRUE(stack.Undo());
    for (const int vertex : {0, 3})
        EXPECT_THAT(Vertex(vertex), Are({0.5, 0.25, 0.25}));
    EXPECT_THAT(tool.calls, ElementsAre("RecolourActiveVertices", "RefreshSpread(1)"));
    EXPECT_TRUE(stack.Redo());
    for (const int vertex : {0, 3})
        EXPECT_NEAR(Vertex(vertex)[1], 0.9, 1e-6);
}

TEST_F(UndoRecord, RedoInFirstSelectedModeGivesAllVerticesTheFirstOnesSpread)
{
    tool.Pick({0, 0, 0, 3}, kPickAdd);
    tool.change.ApplyWeightChange(true, true, 90, 1);
    EXPECT_THAT(Vertex(3), Are({0.5, 0.25, 0.25}));
    EXPECT_TRUE(stack.Undo());
    EXPECT_TRUE(stack.Redo());
    EXPECT_NEAR(Vertex(0)[1], 0.9, 1e-6);
    EXPECT_NEAR(Vertex(3)[1], 0.9, 1e-6);
}

TEST_F(UndoRecord, WeightRaisedAgainAfterUndoKeepsItsOneEntry)
{
    ZModelPolymesh* const plain = tool.character.AddMesh("Plain", 2);
    for (const int vertex : {0, 1})
        TinyCharacter::Weight(plain, 0, vertex, 1.0);
    tool.Admit(plain);
    tool.RebuildBoneList();
    for (const int mode : {kAffectFirstSelected, kAffectAllSelected}) {
        tool.weightingMode = mode;
        tool.Pick({1, 0, 1, 1}, kPickAdd);
        for (int round = 0; round < 3; ++round) {
            tool.change.ApplyWeightChange(true, true, 40, 1);
            EXPECT_EQ(TinyCharacter::EntriesOf(plain, 0), 2);
            EXPECT_TRUE(stack.Undo());
            EXPECT_EQ(TinyCharacter::Weights(plain)[0], (std::vector<double>{1, 0, 0}));
        }
    }
}

TEST_F(UndoRecord, WeightsOfAModelThatIsGoneStaySilent)
{
    tool.Pick({0, 0}, kPickAdd);
    tool.change.ApplyWeightChange(true, true, 90, 1);
    tool.Remove(*data);
    tool.calls.clear();
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(tool.calls, IsEmpty());
    EXPECT_NEAR(Vertex(0)[1], 0.9, 1e-6);
}

TEST_F(UndoRecord, WeightsOfAModelThatIsNotLoadedGoIntoItsSkin)
{
    tool.Pick({0, 0}, kPickAdd);
    tool.change.ApplyWeightChange(true, true, 90, 1);
    data->SetModelSelected(false, nullptr);
    tool.RebuildBoneList();
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(Vertex(0), Are({0.5, 0.25, 0.25}));
    EXPECT_TRUE(stack.Redo());
    EXPECT_NEAR(Vertex(0)[1], 0.9, 1e-6);
}

TEST_F(UndoRecord, LinkThatAChangeAddedStaysWithWeightZero)
{
    ZModelPolymesh* const plain = tool.character.AddMesh("Plain", 1);
    plain->GetSkin()->RemoveLink(2);
    TinyCharacter::Weight(plain, 0, 0, 1.0);
    tool.Admit(plain);
    tool.RebuildBoneList();
    tool.Pick({1, 0}, kPickAdd);
    tool.change.ApplyWeightChange(true, true, 25, 2);
    EXPECT_EQ(TinyCharacter::Weights(plain)[0], (std::vector<double>{0.75, 0, 0.25}));
    EXPECT_TRUE(stack.Undo());
    EXPECT_EQ(plain->GetSkin()->LinkCount(), 3);
    EXPECT_EQ(TinyCharacter::WeightOf(plain, 2, 0), 0.0);
    EXPECT_EQ(TinyCharacter::WeightOf(plain, 0, 0), 1.0);
    EXPECT_TRUE(stack.Redo());
    EXPECT_EQ(TinyCharacter::Weights(plain)[0], (std::vector<double>{0.75, 0, 0.25}));
}

/// The vertices were let go while the change was open, so that it never learned what they ended with.
TEST_F(UndoRecord, ChangeWithoutAnAfterStateIsNotMadeAgainAsNothing)
{
    tool.Pick({0, 0}, kPickAdd);
    tool.change.ApplyWeightChange(true, false, 90, 1);
    tool.selection.ClearAllVertexLists();
    tool.change.CloseOpenChange();
    EXPECT_FALSE(stack.IsTransactionOpen());
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(Vertex(0), Are({0.5, 0.25, 0.25}));
    EXPECT_TRUE(stack.Redo());
    EXPECT_THAT(Vertex(0), Are({0.5, 0.25, 0.25}));
}

TEST_F(UndoRecord, EntriesAreFreedBackToFront)
{
    struct Watched final : ZWeightingWeightChangeUndoEntry
    {
        Watched(int n, std::vector<int>& log) : number(n), freed(log) {}
        ~Watched() override { freed.push_back(number); }
        int number;
        std::vector<int>& freed;
    };
    std::vector<int> freed;
    auto* const record = new ZWeightingWeightChangeUndo(&tool);
    for (const int number : {1, 2, 3})
        record->entries.push_back(new Watched(number, freed));
    record->Destroy();
    EXPECT_THAT(freed, ElementsAre(3, 2, 1));
}

TEST_F(UndoRecord, OutlivesItsTool)
{
    auto other = std::make_unique<EditingTool>();
    other->character.AddBones(1);
    auto* const record = new ZWeightingModelSelectionUndo(other.get());
    record->RecordModelSelection(data, false, true);
    ZWeightingWeightChangeUndo weights(other.get());
    weights.RecordBefore(data);
    other.reset();
    ZReport_SetMisuseFatal(true);
    record->Undo();
    record->Redo();
    weights.Undo();
    record->Destroy();
}

TEST_F(UndoRecord, PackedRecordAnswersWhatItWasGiven)
{
    ZWeightingWeightChangeUndoEntry entry;
    entry.AddVertex(7, *data->vertexInfluences[1]);
    entry.AddVertex(3, VertexInfluences());
    entry.AddVertex(9, *data->vertexInfluences[2]);
    VertexInfluences record;
    entry.GetBefore(0, record);
    EXPECT_EQ(record, *data->vertexInfluences[1]);
    entry.GetBefore(1, record);
    EXPECT_EQ(record, VertexInfluences());
    entry.GetBefore(2, record);
    EXPECT_EQ(record, *data->vertexInfluences[2]);
}

TEST_F(UndoRecord, WeightStepStaysWithinTwiceWhatChanged)
{
    constexpr int kVertices = 3000;
    ZModelPolymesh* const large = tool.character.AddMesh("Large", kVertices);
    for (int vertex = 0; vertex < kVertices; ++vertex)
        for (int link = 0; link < 3; ++link)
            TinyCharacter::Weight(large, link, vertex, 0.3);
    ZWeightUIModelData& item = tool.Admit(large);
    tool.RebuildBoneList();
    for (int vertex = 0; vertex < kVertices; ++vertex)
        item.SetVertexState(vertex, 2);
    ZWeightingWeightChangeUndo record(&tool);
    record.RecordBefore(&item);
    EXPECT_LE(record.GetByteCount(), 2U * 12U * 3U * kVertices);
}

} // namespace
