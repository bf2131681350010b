// SPDX-License-Identifier: MIT
// Batches over many models, and the cross-model lists that follow them.
#include "support/EditingTool.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Selection : public testing::Test
{
protected:
    Selection()
    {
        tool.character.AddBones(1);
        for (const char* const name : {"First", "Second"})
            data.push_back(&tool.Admit(tool.character.AddMesh(name, 6)));
        tool.RebuildBoneList();
    }
    /// Inside a transaction that stays open, so that its records can be looked at.
    void Begin() { stack.TransactionBegin("", false); }
    std::vector<ZWeightingSelectionUndo*> Records()
    {
        std::vector<ZWeightingSelectionUndo*> records;
        const int step = stack.TransactionGetCount();
        for (int i = 1; i <= stack.TransactionGetUndoCount(step); ++i)
            records.push_back(static_cast<ZWeightingSelectionUndo*>(stack.TransactionGetUndo(step, i)));
        return records;
    }
    EditingTool tool;
    ZUndoStack& stack = *ZUndoStack::TheOne();
    ZWeightSelection& selection = tool.selection;
    std::vector<ZWeightUIModelData*> data;
};

TEST_F(Selection, PickedVerticesEndActive)
{
    Begin();
    selection.PickSelect({0, 4, 0, 2, 1, 4}, kPickAdd);
    EXPECT_THAT(selection.vertexRows, ElementsAre(4, 2, 4));
    EXPECT_THAT(selection.vertexModels, ElementsAre(data[0], data[0], data[1]));
    EXPECT_THAT(data[0]->activeVertices, ElementsAre(4, 2));
    EXPECT_FALSE(selection.noSelection);
    EXPECT_FALSE(selection.noActive);
    // A pick records two steps for one vertex.
    EXPECT_THAT(Records()[0]->vertices, ElementsAre(4, 4, 2, 2));
    EXPECT_THAT(Records()[0]->oldStates, ElementsAre(0, 1, 0, 1));
    EXPECT_THAT(Records()[0]->newStates, ElementsAre(1, 2, 1, 2));
}

TEST_F(Selection, PickingASelectedVertexActivatesIt)
{
    tool.Pick({0, 1}, kPickAdd, true);
    EXPECT_EQ(data[0]->GetVertexState(1), 1);
    tool.Pick({0, 1}, kPickAdd);
    EXPECT_EQ(data[0]->GetVertexState(1), 2);
    EXPECT_THAT(selection.vertexRows, ElementsAre(1));
}

TEST_F(Selection, AlternatingPairsMakeARecordARun)
{
    Begin();
    selection.PickSelect({0, 1, 1, 1, 0, 2, 0, 3}, kPickAdd);
    ASSERT_EQ(Records().size(), 3U);
    EXPECT_EQ(Records()[0]->model.Get(), data[0]);
    EXPECT_EQ(Records()[1]->model.Get(), data[1]);
    EXPECT_EQ(Records()[2]->model.Get(), data[0]);
    EXPECT_THAT(Records()[2]->vertices, ElementsAre(2, 2, 3, 3));
}

TEST_F(Selection, RemovalTakesTheEntryOfTheRightModel)
{
    tool.Pick({0, 4, 1, 4}, kPickAdd);
    tool.Pick({1, 4}, kPickRemove);
    EXPECT_THAT(selection.vertexRows, ElementsAre(4));
    EXPECT_THAT(selection.vertexModels, ElementsAre(data[0]));
    EXPECT_FALSE(selection.noSelection);
    tool.Pick({0, 4}, kPickRemove);
    EXPECT_THAT(selection.vertexRows, IsEmpty());
    EXPECT_TRUE(selection.noSelection);
}

/// More removals of one vertex in a gesture than are collected: its rows go at once, and the count begins anew.
TEST_F(Selection, AVertexToggledAThousandTimesInOneBatchEndsAsOneByOne)
{
    tool.Pick({0, 1, 0, 2}, kPickAdd);
    std::vector<int> batch;
    for (int i = 0; i < 1000; ++i)
        batch.insert(batch.end(), {0, 4});
    tool.Pick(batch, kPickToggle);
    EXPECT_THAT(selection.vertexRows, ElementsAre(1, 2));
    EXPECT_THAT(data[0]->vertexStates, ElementsAre(0, 2, 2, 0, 0, 0));
    batch.insert(batch.end(), {0, 4});
    tool.Pick(batch, kPickToggle);
    EXPECT_THAT(selection.vertexRows, ElementsAre(1, 2, 4));
    EXPECT_THAT(data[0]->selectedVertices, ElementsAre(1, 2, 4));
    EXPECT_THAT(data[0]->vertexStates, ElementsAre(0, 2, 2, 0, 2, 0));
}

TEST_F(Selection, ToggleSelectsAndActivatesOrRemoves)
{
    tool.Pick({0, 1, 0, 2}, kPickAdd);
    tool.Pick({0, 2, 0, 3}, kPickToggle);
    EXPECT_THAT(data[0]->vertexStates, ElementsAre(0, 2, 0, 2, 0, 0));
    EXPECT_THAT(selection.vertexRows, ElementsAre(1, 3));
}

TEST_F(Selection, ToggleEndsWithTheFlagsAsStated)
{
    Begin();
    selection.PickSelect({0, 1}, kPickToggle);
    EXPECT_FALSE(selection.noActive);
    selection.noActive = false;
    selection.PickSelect({0, 1}, kPickToggle);
    // Nothing is selected: the selection flag is set, the flag of active rows is not touched.
    EXPECT_TRUE(selection.noSelection);
    EXPECT_FALSE(selection.noActive);
}

TEST_F(Selection, SelectOnlyGathersWithoutActivating)
{
    tool.Pick({0, 1, 0, 2}, kPickAdd, true);
    EXPECT_THAT(data[0]->vertexStates, ElementsAre(0, 1, 1, 0, 0, 0));
    EXPECT_TRUE(selection.noActive);
    EXPECT_FALSE(selection.noSelection);
    tool.Pick({0, 1}, kPickToggle, true);
    EXPECT_THAT(selection.vertexRows, ElementsAre(2));
    tool.Pick({0, 2}, kPickToggle, true);
    EXPECT_TRUE(selection.noSelection);
}

TEST_F(Selection, SelectOnlyRemoveDeactivatesFirst)
{
    tool.Pick({0, 1}, kPickAdd);
    selection.targetRows.RemoveAll();
    Begin();
    selection.PickSelectOnly({0, 1}, kPickRemove);
    EXPECT_THAT(Records()[0]->oldStates, ElementsAre(2, 1));
    EXPECT_THAT(Records()[0]->newStates, ElementsAre(1, 0));
    EXPECT_TRUE(selection.noSelection);
    EXPECT_TRUE(selection.noActive);
}

TEST_F(Selection, ActivatingActsOnSelectedVerticesOnly)
{
    tool.Pick({0, 1, 0, 2}, kPickAdd, true);
    Begin();
    selection.PickActivate({0, 1, 0, 3}, kPickAdd);
    EXPECT_THAT(data[0]->vertexStates, ElementsAre(0, 2, 1, 0, 0, 0));
    EXPECT_FALSE(selection.noActive);
    selection.PickActivate({0, 1, 0, 2, 0, 3}, kPickToggle);
    EXPECT_THAT(data[0]->vertexStates, ElementsAre(0, 1, 2, 0, 0, 0));
    selection.targetRows.RemoveAll();
    selection.PickActivate({0, 2}, kPickRemove);
    EXPECT_THAT(data[0]->vertexStates, ElementsAre(0, 1, 1, 0, 0, 0));
    EXPECT_TRUE(selection.noActive);
}

TEST_F(Selection, ActivateToggleEndsWithTheFlagsAsStated)
{
    Begin();
    selection.noSelection = false;
    selection.PickActivate({0, 1}, kPickToggle);
    EXPECT_TRUE(selection.noSelection);
    selection.PickSelectOnly({0, 1}, kPickAdd);
    selection.noActive = true;
    selection.PickActivate({}, kPickToggle);
    EXPECT_FALSE(selection.noActive);
}

TEST_F(Selection, BatchOutsideATransactionIsNotRecorded)
{
    selection.PickSelect({0, 1, 1, 2}, kPickAdd);
    EXPECT_EQ(data[0]->GetVertexState(1), 2);
    EXPECT_EQ(data[1]->GetVertexState(2), 2);
    EXPECT_EQ(stack.GetUndoCount(), 0);
}

TEST_F(Selection, PairsThatNameNothingArePassedOver)
{
    Begin();
    for (const int code : {kPickAdd, kPickRemove, kPickToggle, 3}) {
        selection.PickSelect({2, 0, -1, 0, 0, 6, 0, -1, 1}, code);
        selection.PickSelectOnly({2, 0, -1, 0, 0, 6, 0, -1, 1}, code);
        selection.PickActivate({2, 0, -1, 0, 0, 6, 0, -1, 1}, code);
    }
    EXPECT_THAT(selection.vertexRows, IsEmpty());
    EXPECT_THAT(data[0]->vertexStates, testing::Each(0));
}

// Rows and columns.

class RowSelection : public Selection
{
protected:
    RowSelection()
    {
        data.push_back(&tool.Admit(tool.character.AddSurface("Sheet", 4, 3)));
        tool.RebuildBoneList();
    }
    ZWeightUIModelData& Sheet() { return *data[2]; }
};

TEST_F(RowSelection, SelectUExtendsToTheRowButListsOnlyThePicked)
{
    selection.selectU = true;
    tool.Pick({2, 6}, kPickAdd);
    EXPECT_THAT(Sheet().activeVertices, ElementsAre(6, 4, 5, 7));
    EXPECT_THAT(selection.vertexRows, ElementsAre(6));
}

TEST_F(RowSelection, SelectVExtendsToTheColumn)
{
    selection.selectV = true;
    tool.Pick({2, 6}, kPickAdd);
    EXPECT_THAT(Sheet().activeVertices, ElementsAre(6, 2, 10));
    tool.Pick({2, 6}, kPickRemove);
    EXPECT_THAT(Sheet().selectedVertices, IsEmpty());
}

TEST_F(RowSelection, SelectUAndVTogetherTakeTheRowAndTheColumn)
{
    selection.selectU = selection.selectV = true;
    tool.Pick({2, 6}, kPickAdd);
    EXPECT_THAT(Sheet().activeVertices, ElementsAre(6, 4, 5, 7, 2, 10));
    EXPECT_THAT(selection.vertexRows, ElementsAre(6));
    Begin();
    selection.PickActivate({2, 6}, kPickRemove);
    EXPECT_THAT(Sheet().activeVertices, IsEmpty());
    EXPECT_THAT(Sheet().selectedVertices, ElementsAre(6, 4, 5, 7, 2, 10));
    selection.selectU = false;
    selection.PickActivate({2, 4}, kPickAdd);
    EXPECT_THAT(Sheet().activeVertices, ElementsAre(4)); // of its column only the picked one is selected
}

TEST_F(RowSelection, MeshesIgnoreSelectUAndV)
{
    selection.selectU = selection.selectV = true;
    tool.Pick({0, 3}, kPickAdd);
    EXPECT_THAT(data[0]->selectedVertices, ElementsAre(3));
}

TEST_F(RowSelection, SelectOnlyToggleRebuildsTheLists)
{
    selection.selectU = true;
    Begin();
    tool.calls.clear();
    selection.PickSelectOnly({2, 6}, kPickToggle);
    EXPECT_THAT(selection.vertexRows, ElementsAre(6, 4, 5, 7));
    EXPECT_THAT(tool.calls, ElementsAre("RefreshPanelLists"));
    selection.selectU = false;
    tool.calls.clear();
    selection.PickSelectOnly({2, 0}, kPickToggle);
    EXPECT_THAT(tool.calls, IsEmpty());
}

TEST_F(RowSelection, OneUndoStepReversesAPickOfARow)
{
    selection.selectU = true;
    tool.Pick({2, 6}, kPickAdd);
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(Sheet().vertexStates, testing::Each(0));
    EXPECT_TRUE(stack.Redo());
    EXPECT_EQ(Sheet().activeVertices.GetCount(), 4);
}

// Clearing and deactivating.

TEST_F(Selection, ClearingMakesARecordOnlyForModelsThatChange)
{
    tool.Pick({1, 2, 1, 3}, kPickAdd);
    Begin();
    selection.ClearAllVertexLists();
    ASSERT_EQ(Records().size(), 1U);
    EXPECT_EQ(Records()[0]->model.Get(), data[1]);
    EXPECT_THAT(Records()[0]->vertices, ElementsAre(2, 3));
    EXPECT_THAT(Records()[0]->oldStates, ElementsAre(2, 2));
    EXPECT_THAT(Records()[0]->newStates, ElementsAre(0, 0));
    EXPECT_THAT(selection.vertexRows, IsEmpty());
    EXPECT_TRUE(selection.noSelection);
    EXPECT_TRUE(selection.noActive);
    EXPECT_EQ(data[1]->noSelectedVertices, 1);
    EXPECT_THAT(data[1]->vertexStates, testing::Each(0));
}

TEST_F(Selection, ClearingIsAStepOfItsOwnName)
{
    tool.Pick({0, 1, 1, 2}, kPickAdd);
    selection.ClearAllVertexLists();
    EXPECT_EQ(stack.GetUndoNames()[0], "Tool Weighting Clear All Vertex Lists");
    EXPECT_TRUE(stack.Undo());
    EXPECT_EQ(data[0]->GetVertexState(1), 2);
    EXPECT_EQ(data[1]->GetVertexState(2), 2);
    EXPECT_THAT(selection.vertexRows, ElementsAre(1, 2));
}

TEST_F(Selection, ClearingNothingLeavesNoStep)
{
    selection.ClearAllVertexLists();
    EXPECT_EQ(stack.GetUndoCount(), 0);
}

TEST_F(Selection, DeactivatingAllFallsBackToSelected)
{
    tool.Pick({0, 1, 0, 2, 1, 3}, kPickAdd);
    selection.DeactivateAll();
    EXPECT_THAT(data[0]->activeVertices, IsEmpty());
    EXPECT_THAT(data[0]->selectedVertices, ElementsAre(1, 2));
    EXPECT_EQ(data[1]->GetVertexState(3), 1);
    EXPECT_TRUE(selection.noActive);
    EXPECT_THAT(selection.targetRows, IsEmpty());
    EXPECT_TRUE(stack.Undo());
    EXPECT_THAT(data[0]->activeVertices, ElementsAre(1, 2));
    EXPECT_EQ(data[1]->GetVertexState(3), 2);
}

TEST_F(Selection, DeactivatingReusesAnEmptyRecord)
{
    tool.Pick({1, 3}, kPickAdd);
    Begin();
    selection.DeactivateAll();
    ASSERT_EQ(Records().size(), 1U);
    EXPECT_EQ(Records()[0]->model.Get(), data[1]);
}

// Rows of the vertex list.

TEST_F(Selection, SelectedRowsAreActive)
{
    tool.Pick({0, 1, 0, 2, 1, 3}, kPickAdd);
    selection.RowSelectionChanged({1, 2});
    EXPECT_THAT(data[0]->activeVertices, ElementsAre(2));
    EXPECT_THAT(data[1]->activeVertices, ElementsAre(3));
    EXPECT_THAT(selection.targetRows, ElementsAre(1, 2));
    EXPECT_FALSE(selection.noActive);
    EXPECT_EQ(stack.GetUndoNames()[0], "");
    EXPECT_TRUE(stack.Undo());
    EXPECT_EQ(data[0]->GetVertexState(1), 2);
}

TEST_F(Selection, NoSelectedRowLeavesNothingActive)
{
    tool.Pick({0, 1}, kPickAdd);
    selection.RowSelectionChanged({});
    EXPECT_EQ(data[0]->GetVertexState(1), 1);
    EXPECT_TRUE(selection.noActive);
}

TEST_F(Selection, SelectingTheSameRowsAgainLeavesNoStep)
{
    tool.Pick({0, 1, 0, 2}, kPickAdd);
    const int steps = stack.GetUndoCount();
    selection.RowSelectionChanged({0, 1});
    EXPECT_EQ(stack.GetUndoCount(), steps);
}

TEST_F(Selection, RowSelectionEndsWithListsAndSnapshot)
{
    TinyCharacter::Weight(data[0]->model, 0, 1, 1.0);
    data[0]->Refresh();
    tool.Pick({0, 0, 0, 1}, kPickAdd);
    tool.calls.clear();
    selection.RowSelectionChanged({1, 9});
    EXPECT_THAT(tool.calls, ElementsAre("RefreshPanelLists"));
    EXPECT_THAT(tool.change.snapshotBones, ElementsAre(0));
}

// Following the models.

TEST_F(Selection, UncheckedModelsLoseTheirSelectionAndRows)
{
    tool.Pick({0, 1, 1, 2, 0, 3}, kPickAdd);
    data[0]->SetModelSelected(false, nullptr);
    selection.SyncPanelSelection();
    EXPECT_THAT(selection.vertexRows, ElementsAre(2));
    EXPECT_THAT(selection.vertexModels, ElementsAre(data[1]));
    EXPECT_THAT(data[0]->vertexStates, testing::Each(0));
    EXPECT_THAT(data[0]->selectedVertices, IsEmpty());
    EXPECT_THAT(selection.targetRows, ElementsAre(0));
    data[1]->SetModelSelected(false, nullptr);
    selection.SyncPanelSelection();
    EXPECT_TRUE(selection.noSelection);
    EXPECT_TRUE(selection.noActive);
}

TEST_F(Selection, UncheckingWithASelectionIsNotRecorded)
{
    tool.Pick({0, 1, 0, 2}, kPickAdd);
    tool.Pick({0, 2}, kPickRemove, true);
    const int steps = stack.GetUndoCount();
    data[0]->SetModelSelected(false, nullptr);
    selection.SyncPanelSelection();
    EXPECT_EQ(stack.GetUndoCount(), steps);
    EXPECT_FALSE(stack.IsTransactionOpen());
    EXPECT_EQ(data[0]->noSelectedVertices, 1);
    EXPECT_EQ(data[0]->noActiveVertices, 1);
    EXPECT_THAT(data[0]->activeVertices, IsEmpty());
}

TEST_F(Selection, RowsWithoutAnActiveVertexLeaveNothingActive)
{
    tool.Pick({0, 1, 1, 2}, kPickAdd, true);
    selection.noActive = false;
    selection.targetRows.Add(0);
    selection.SyncPanelSelection();
    EXPECT_THAT(selection.targetRows, IsEmpty());
    EXPECT_TRUE(selection.noActive);
    EXPECT_FALSE(selection.noSelection);
    EXPECT_THAT(selection.vertexRows, ElementsAre(1, 2));
}

TEST_F(Selection, TargetRowsAreCollectedInActivationOrder)
{
    tool.Pick({1, 5, 0, 1, 0, 2}, kPickAdd);
    data[0]->DeactivateVertex(1, nullptr);
    data[0]->ActivateVertex(1, nullptr);
    selection.SyncPanelSelection();
    EXPECT_THAT(selection.targetRows, ElementsAre(2, 1, 0));
    EXPECT_FALSE(selection.noActive);
}

TEST_F(Selection, EveryRowOfAnActiveVertexIsCollected)
{
    tool.Pick({0, 1}, kPickAdd);
    selection.vertexRows.Add(1);
    selection.vertexModels.Add(data[0]);
    selection.SyncPanelSelection();
    EXPECT_THAT(selection.targetRows, ElementsAre(0, 1));
}

TEST_F(Selection, WithoutModelsEverythingIsEmpty)
{
    tool.Pick({0, 1}, kPickAdd);
    tool.models.RemoveAll();
    selection.SyncPanelSelection();
    EXPECT_THAT(selection.vertexRows, IsEmpty());
    EXPECT_THAT(selection.targetRows, IsEmpty());
    EXPECT_TRUE(selection.noSelection);
    EXPECT_TRUE(selection.noActive);
}

TEST_F(Selection, RemovedModelLeavesNoRow)
{
    tool.Pick({0, 1, 1, 2, 0, 3}, kPickAdd);
    selection.RemoveModel(data[0]);
    EXPECT_THAT(selection.vertexRows, ElementsAre(2));
    EXPECT_THAT(selection.targetRows, ElementsAre(0));
    EXPECT_FALSE(selection.noSelection);
    selection.RemoveModel(data[1]);
    EXPECT_TRUE(selection.noSelection);
    EXPECT_TRUE(selection.noActive);
}

TEST_F(Selection, RowsAreRebuiltInModelAndSelectionOrder)
{
    tool.Pick({1, 5, 0, 3, 0, 1}, kPickAdd);
    data[0]->DeactivateVertex(3, nullptr);
    selection.RebuildRows();
    EXPECT_THAT(selection.vertexRows, ElementsAre(3, 1, 5));
    EXPECT_THAT(selection.targetRows, ElementsAre(1, 2));
}

} // namespace
