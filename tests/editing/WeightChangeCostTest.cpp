// SPDX-License-Identifier: MIT
// What a change of many vertices on many bones asks of the skin: no more than the influences that it touches.
#include "support/EditingTool.h"
#include "support/RecordingSkin.h"

#include <gmock/gmock.h>

namespace {

/// Every vertex on one of three hundred bones. Each bone times each vertex would be six hundred thousand questions.
class WeightChangeCost : public testing::Test
{
protected:
    static constexpr int kVertices = 2000, kBones = 300;
    // A new link costs a question and an answer for each vertex, an old one as much, and so does taking them back.
    static constexpr size_t kBound = 10 * kVertices;

    WeightChangeCost()
    {
        tool.character.AddBones(kBones);
        for (ZModel* const bone : tool.character.bones)
            mesh.GetSkin()->AppendLink(bone, {});
        for (int vertex = 0; vertex < kVertices; ++vertex)
            TinyCharacter::Weight(&mesh, vertex % kBones, vertex, 1.0);
        tool.Admit(&mesh);
        tool.RebuildBoneList();
        tool.weightingMode = kAffectAllSelected;
        std::vector<int> batch;
        for (int vertex = 0; vertex < kVertices; ++vertex) {
            batch.push_back(0);
            batch.push_back(vertex);
        }
        tool.Pick(batch, kPickAdd);
        mesh.Recorder().calls.clear();
    }
    ~WeightChangeCost() override
    {
        ZUndoStack::TheOne()->Clear();
        tool.owned.clear();
        tool.models.RemoveAll();
    }
    size_t TakeCalls()
    {
        const size_t calls = mesh.Recorder().calls.size();
        mesh.Recorder().calls.clear();
        return calls;
    }
    EditingTool tool;
    RecordedMesh mesh{"Body", kVertices, kDeformNormalise};
};

TEST_F(WeightChangeCost, GrowsWithTheInfluencesTouchedNotWithTheBones)
{
    tool.change.ApplyWeightChange(true, true, 40, 1);
    EXPECT_LE(TakeCalls(), kBound);
    EXPECT_EQ(TinyCharacter::WeightOf(&mesh, 1, 1999), 0.4);
    EXPECT_TRUE(ZUndoStack::TheOne()->Undo());
    EXPECT_LE(TakeCalls(), kBound);
    EXPECT_EQ(TinyCharacter::WeightOf(&mesh, 1999 % kBones, 1999), 1.0);
    EXPECT_TRUE(ZUndoStack::TheOne()->Redo());
    EXPECT_LE(TakeCalls(), kBound);
    EXPECT_NEAR(TinyCharacter::WeightOf(&mesh, 1, 1999), 0.4, 1e-6);
}

TEST_F(WeightChangeCost, DragOfOneVertexAsksForThatVertexAlone)
{
    tool.weightingMode = kAffectFirstSelected;
    tool.change.ApplyWeightChange(true, false, 10, 1);
    tool.change.ApplyWeightChange(false, false, 20, 1);
    tool.change.ApplyWeightChange(false, true, 30, 1);
    EXPECT_LE(TakeCalls(), 30U);
    EXPECT_EQ(TinyCharacter::WeightOf(&mesh, 1, 0), 0.3);
}

/// Smooth colours after a bone's new colour: its link's entries, not the mesh.
TEST_F(WeightChangeCost, NewBoneColourAsksForOneLink)
{
    tool.owned[0]->BoneColorChanged(tool.colours, 7, kColourSmooth, 0, 0, 0);
    EXPECT_LE(TakeCalls(), 3U);
}

} // namespace
