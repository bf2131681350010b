// SPDX-License-Identifier: MIT
// The states of single vertices, and the lists that follow them.
#include "support/WeightStage.h"

#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <algorithm>
#include <limits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VertexState : public testing::Test
{
protected:
    VertexState()
    {
        character.AddBones(2);
        mesh = character.AddMesh("Body", 6);
        for (int vertex = 0; vertex < 6; ++vertex)
            TinyCharacter::Weight(mesh, 0, vertex, 1.0);
        data = stage.Load(mesh);
    }
    WeightStage stage;
    TinyCharacter& character = stage.character;
    ZModelPolymesh* mesh = nullptr;
    std::unique_ptr<ZWeightUIModelData> data;
    TransitionLog log;
};

using Step = TransitionLog::Transition;

TEST_F(VertexState, SelectingAppendsAndRecords)
{
    data->SelectVertex(3, &log);
    data->SelectVertex(1, &log);
    EXPECT_THAT(data->selectedVertices, ElementsAre(3, 1));
    EXPECT_THAT(log.transitions, ElementsAre(Step{3, 0, 1}, Step{1, 0, 1}));
    EXPECT_EQ(data->noSelectedVertices, 0);
    EXPECT_EQ(data->noActiveVertices, 1);
}

TEST_F(VertexState, ActivatingAnUnselectedVertexDoesNothing)
{
    data->ActivateVertex(3, &log);
    EXPECT_EQ(data->GetVertexState(3), 0);
    EXPECT_THAT(log.transitions, IsEmpty());
}

TEST_F(VertexState, SelectingAnActiveVertexDoesNothing)
{
    data->SelectVertex(3, nullptr);
    data->ActivateVertex(3, nullptr);
    data->SelectVertex(3, &log);
    EXPECT_EQ(data->GetVertexState(3), 2);
    EXPECT_THAT(data->selectedVertices, ElementsAre(3));
    EXPECT_THAT(log.transitions, IsEmpty());
}

TEST_F(VertexState, DeselectingAnActiveVertexLeavesBothListsAndRecordsOnce)
{
    data->SelectVertex(3, nullptr);
    data->ActivateVertex(3, nullptr);
    data->DeselectVertex(3, &log);
    EXPECT_THAT(data->selectedVertices, IsEmpty());
    EXPECT_THAT(data->activeVertices, IsEmpty());
    EXPECT_THAT(log.transitions, ElementsAre(Step{3, 2, 0}));
    EXPECT_EQ(data->noSelectedVertices, 1);
    EXPECT_EQ(data->noActiveVertices, 1);
}

TEST_F(VertexState, FlagsFollowTheLastVertexOfAList)
{
    for (const int vertex : {1, 2}) {
        data->SelectVertex(vertex, nullptr);
        data->ActivateVertex(vertex, nullptr);
    }
    data->DeactivateVertex(1, nullptr);
    EXPECT_EQ(data->noActiveVertices, 0);
    data->DeactivateVertex(2, nullptr);
    EXPECT_EQ(data->noActiveVertices, 1);
    EXPECT_EQ(data->noSelectedVertices, 0);
}

TEST_F(VertexState, SetToActiveSelectsAndActivates)
{
    data->SetVertexState(2, 2);
    EXPECT_EQ(data->GetVertexState(2), 2);
    EXPECT_THAT(data->selectedVertices, ElementsAre(2));
    EXPECT_THAT(data->activeVertices, ElementsAre(2));
}

TEST_F(VertexState, SetToSelectedOnlyDeactivatesAnActiveVertex)
{
    data->SetVertexState(2, 2);
    data->SetVertexState(2, 1);
    EXPECT_EQ(data->GetVertexState(2), 1);
    EXPECT_THAT(data->selectedVertices, ElementsAre(2));
    EXPECT_THAT(data->activeVertices, IsEmpty());
}

TEST_F(VertexState, SetToAnythingElseDoesNothing)
{
    data->SetVertexState(2, 3);
    data->SetVertexState(2, -1);
    EXPECT_EQ(data->GetVertexState(2), 0);
}

TEST_F(VertexState, VerticesThatAreNotThereAreIgnored)
{
    for (const int vertex : {-1, 6, std::numeric_limits<int>::max()}) {
        data->SelectVertex(vertex, &log);
        data->ActivateVertex(vertex, &log);
        data->DeactivateVertex(vertex, &log);
        data->DeselectVertex(vertex, &log);
        data->SetVertexState(vertex, 2);
        EXPECT_EQ(data->GetVertexState(vertex), 0);
    }
    EXPECT_THAT(log.transitions, IsEmpty());
}

TEST_F(VertexState, MarksOnlyBonesOfActiveVerticesWithAWeight)
{
    data->SetVertexBoneWeight(1, 4, 0.4);
    data->SetVertexBoneWeight(0, 4, 0.0);
    data->SetVertexState(4, 2);
    data->SetVertexState(5, 1);
    std::vector<int> marks(2, 0);
    data->MarkInfluencingBones(marks.data(), 2);
    EXPECT_THAT(marks, ElementsAre(0, 1));
}

TEST_F(VertexState, WeightThatIsNoNumberCountsAsAnInfluence)
{
    data->vertexInfluences[4]->weights[0] = std::numeric_limits<float>::quiet_NaN();
    data->SetVertexState(4, 2);
    std::vector<int> marks(2, 0);
    data->MarkInfluencingBones(marks.data(), 2);
    EXPECT_THAT(marks, ElementsAre(1, 0));
}

TEST_F(VertexState, MarksOutsideTheTableAreNotWritten)
{
    data->SetVertexState(4, 2);
    int mark = 0;
    data->MarkInfluencingBones(&mark, 0);
    EXPECT_EQ(mark, 0);
}

// Batches.

TEST_F(VertexState, VertexThatComesBackInABatchStandsAtTheEnd)
{
    for (const int vertex : {0, 1, 2})
        data->SelectVertex(vertex, nullptr);
    data->BeginSelectionBatch();
    data->DeselectVertex(0, nullptr);
    data->SelectVertex(0, nullptr);
    data->DeselectVertex(1, nullptr);
    data->EndSelectionBatch();
    EXPECT_THAT(data->selectedVertices, ElementsAre(2, 0));
}

TEST_F(VertexState, FlagsAreTrueInTheMiddleOfABatch)
{
    data->SetVertexState(0, 2);
    data->BeginSelectionBatch();
    data->DeselectVertex(0, nullptr);
    EXPECT_EQ(data->noSelectedVertices, 1);
    EXPECT_EQ(data->noActiveVertices, 1);
    data->SelectVertex(0, nullptr);
    EXPECT_EQ(data->noSelectedVertices, 0);
    data->EndSelectionBatch();
    EXPECT_THAT(data->selectedVertices, ElementsAre(0));
}

TEST_F(VertexState, MakingTheListsTrueOutsideABatchChangesNothing)
{
    data->SetVertexState(0, 2);
    data->BeginSelectionBatch();
    data->DeselectVertex(0, nullptr);
    data->EndSelectionBatch();
    data->SetVertexState(0, 2);
    data->SetVertexState(1, 2);
    data->SetVertexState(0, 0);
    data->FlushSelectionBatch();
    EXPECT_THAT(data->selectedVertices, ElementsAre(1));
    EXPECT_THAT(data->activeVertices, ElementsAre(1));
}

TEST_F(VertexState, BatchesNest)
{
    data->SetVertexState(0, 1);
    data->BeginSelectionBatch();
    data->BeginSelectionBatch();
    data->DeselectVertex(0, nullptr);
    data->EndSelectionBatch();
    data->SelectVertex(0, nullptr);
    data->FlushSelectionBatch();
    EXPECT_THAT(data->selectedVertices, ElementsAre(0));
    data->EndSelectionBatch();
    data->EndSelectionBatch(); // one too many is ignored
    EXPECT_THAT(data->selectedVertices, ElementsAre(0));
}

/// One random walk over the transitions, in a batch and without one.
TEST(VertexStateProperty, BatchEndsAsOneByOne)
{
    const bool held = rc::check("a batch ends as one by one", [] {
        WeightStage stage;
        stage.character.AddBones(1);
        ZModelPolymesh* const mesh = stage.character.AddMesh("Body", 5);
        const auto single = stage.Load(mesh);
        const auto batched = stage.Load(mesh);
        const auto steps = *rc::gen::container<std::vector<std::pair<int, int>>>(
            rc::gen::pair(rc::gen::inRange(0, 6), rc::gen::inRange(0, 5)));
        TransitionLog singleLog, batchedLog;
        batched->BeginSelectionBatch();
        for (const auto& [operation, vertex] : steps) {
            for (const bool inBatch : {false, true}) {
                ZWeightUIModelData& data = inBatch ? *batched : *single;
                TransitionLog& log = inBatch ? batchedLog : singleLog;
                if (operation == 0)
                    data.SelectVertex(vertex, &log);
                else if (operation == 1)
                    data.ActivateVertex(vertex, &log);
                else if (operation == 2)
                    data.DeactivateVertex(vertex, &log);
                else if (operation == 3)
                    data.DeselectVertex(vertex, &log);
                else if (operation == 4)
                    data.SetVertexState(vertex, 2);
                else if (inBatch && vertex == 0)
                    data.FlushSelectionBatch();
            }
            RC_ASSERT(batched->noSelectedVertices == single->noSelectedVertices);
            RC_ASSERT(batched->noActiveVertices == single->noActiveVertices);
        }
        batched->EndSelectionBatch();
        RC_ASSERT(singleLog.transitions == batchedLog.transitions);
        RC_ASSERT(batched->selectedVertices == single->selectedVertices);
        RC_ASSERT(batched->activeVertices == single->activeVertices);
        RC_ASSERT(batched->vertexStates == single->vertexStates);
    });
    EXPECT_TRUE(held);
}

TEST(VertexStateProperty, ManyReturnsOfOneVertexInABatchAreCounted)
{
    WeightStage stage;
    stage.character.AddBones(1);
    const auto data = stage.Load(stage.character.AddMesh("Body", 3));
    data->SetVertexState(1, 2);
    data->BeginSelectionBatch();
    for (int round = 0; round < 100; ++round) {
        data->SetVertexState(0, 2);
        data->SetVertexState(0, 0);
    }
    data->SetVertexState(0, 2);
    data->EndSelectionBatch();
    EXPECT_THAT(data->selectedVertices, ElementsAre(1, 0));
    EXPECT_THAT(data->activeVertices, ElementsAre(1, 0));
}

} // namespace
