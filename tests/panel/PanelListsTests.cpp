// SPDX-License-Identifier: MIT
// The bone list and the vertex list: rows, texts, selection.
#include "ToolStage.h"

#include <chrono>
#include <cstring>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PanelLists : public ToolStage
{
protected:
    void SetUp() override { OpenTool(); }
};

TEST_F(PanelLists, BoneListIsEmptyWithoutModelsAndSaysSoWithoutBones)
{
    EXPECT_EQ(Panel().listBonesList.GetRowCount(), 0);
    DropModels(AddSkinned("Boneless", 3, {}, [](int, int) { return 1.0; }));
    ASSERT_EQ(Items().GetCount(), 1);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("Empty"));
    EXPECT_THAT(Panel().listBonesList.GetSelectedRows(), IsEmpty());
}

TEST_F(PanelLists, RowSayingEmptyIsNoBoneAndNoVertex)
{
    DropModels(AddSkinned("Boneless", 3, {}, [](int, int) { return 1.0; }));
    EXPECT_TRUE(Panel().listBonesList.UserSelect({0}));
    EXPECT_TRUE(Panel().selectedBones.IsEmpty());
    EXPECT_EQ(Panel().CurrentBone(), -1);
    EXPECT_TRUE(Panel().listVertexList.UserSelect({0}));
    EXPECT_EQ(tool->CurrentVertexRow(), -1);
    EXPECT_THAT(UndoNames(), ElementsAre("Tool Weighting Drop"));
}

TEST_F(PanelLists, VertexListSaysEmptyWithoutASelectedVertex)
{
    EXPECT_THAT(Texts(Panel().listVertexList), ElementsAre("Empty"));
    DropModels(AddCharacter("Body"));
    EXPECT_THAT(Texts(Panel().listVertexList), ElementsAre("Empty"));
    EXPECT_THAT(Panel().listVertexList.GetSelectedRows(), IsEmpty());
}

TEST_F(PanelLists, OnlyTheActiveOfThreeVerticesIsShownSelected)
{
    DropModels(AddCharacter("Body", 3));
    PickAll();
    SelectVertices({1});
    EXPECT_EQ(Panel().listVertexList.GetRowCount(), 3);
    EXPECT_THAT(Panel().listVertexList.GetSelectedRows(), ElementsAre(1));
    EXPECT_EQ(Items()[0]->GetVertexState(0), 1);
    EXPECT_EQ(Items()[0]->GetVertexState(1), 2);
    EXPECT_THAT(Ints(Panel().selection.targetRows), ElementsAre(1));
    EXPECT_FALSE(Panel().selection.noActive);
}

TEST_F(PanelLists, VertexRowSaysVertexNumberAndModel)
{
    DropModels(AddCharacter("Body", 13));
    PickAll();
    ASSERT_EQ(Panel().selection.vertexRows.GetCount(), 13);
    EXPECT_EQ(Panel().listVertexList.GetRowText(12), "Vertex 12 Body");
    EXPECT_EQ(Panel().listVertexList.GetRowText(13), "");
    EXPECT_EQ(Panel().listVertexList.GetRowText(-1), "");
}

TEST_F(PanelLists, LongModelNamesAreCutSoThatTheLineFits)
{
    ZModel* const body = AddCharacter("Body", 3);
    body->SetObjectLabelName(std::string(3000, 'x'));
    DropModels(body);
    PickAll();
    const std::string line = Panel().listVertexList.GetRowText(0);
    EXPECT_EQ(line.size(), 1020U);
    EXPECT_EQ(line.substr(0, 10), "Vertex 0 x");
    std::string wide;
    for (int i = 0; i < 1500; ++i)
        wide += "\xC3\xA9"; // two bytes a character
    body->SetObjectLabelName(wide);
    const std::string cut = Panel().listVertexList.GetRowText(0);
    EXPECT_EQ(cut.size(), 1019U); // never half a character
    EXPECT_EQ(cut.substr(cut.size() - 2), "\xC3\xA9");
}

TEST_F(PanelLists, TextsAreMadeForTheRowsThatAreAskedFor)
{
    ZModel* const body = AddCharacter("Body", 3);
    DropModels(body);
    PickAll();
    body->SetObjectLabelName("Renamed"); // nothing was refilled, and nothing was kept
    EXPECT_EQ(Panel().listVertexList.GetRowText(2), "Vertex 2 Renamed");
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Renamed"));
}

TEST_F(PanelLists, BonesAreShownByTheirLabels)
{
    ZModel* const bone = AddBone("bone_17");
    bone->SetObjectLabelName("Thumb");
    DropModels(AddSkinned("Body", 2, {bone, AddBone("")}, [](int, int) { return 0.5; }));
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("Thumb", ""));
}

TEST_F(PanelLists, SelectingBonesRebuildsTheSpreadInRowOrder)
{
    DropModels(AddCharacter("One"), AddCharacter("Two"));
    tool->ModelListBox().UserSetCheck(1, true);
    SelectBones({3, 0, 2});
    EXPECT_THAT(Ints(tool->SelectedBones()), ElementsAre(0, 2, 3));
    EXPECT_THAT(Ints(tool->SpreadRows()), ElementsAre(0, 2, 3));
    EXPECT_EQ(Panel().spreadWeights.GetRowLabel(1), "TwoHip");
}

TEST_F(PanelLists, SelectingVertexRowsIsOneUndoStepWithoutAName)
{
    DropModels(AddCharacter("Body", 4));
    PickAll();
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    SelectVertices({0, 2});
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps + 1);
    EXPECT_EQ(UndoNames().front(), "");
    EXPECT_THAT(Ints(Items()[0]->activeVertices), ElementsAre(0, 2));
    SelectVertices({0, 2}); // the same again
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps + 1);
    EXPECT_TRUE(Undo());
    EXPECT_THAT(Panel().listVertexList.GetSelectedRows(), ElementsAre(0, 1, 2, 3));
    EXPECT_TRUE(Redo());
    EXPECT_THAT(Panel().listVertexList.GetSelectedRows(), ElementsAre(0, 2));
}

TEST_F(PanelLists, DeselectingAllRowsLeavesNoneActive)
{
    DropModels(AddCharacter("Body", 3));
    PickAll();
    SelectVertices({});
    EXPECT_TRUE(Panel().selection.noActive);
    EXPECT_TRUE(Panel().selection.targetRows.IsEmpty());
    EXPECT_TRUE(Items()[0]->activeVertices.IsEmpty());
    EXPECT_EQ(Panel().listVertexList.GetRowCount(), 3);
    EXPECT_TRUE(Panel().weightChange.snapshotBones.IsEmpty());
}

TEST_F(PanelLists, AutomaticSelectionTakesTheBonesOfActiveVertices)
{
    ZModel* const a = AddBone("A");
    ZModel* const b = AddBone("B");
    ZModel* const c = AddBone("C");
    // Vertex 0 on A, vertex 1 on C, vertex 2 on B and C; B at vertex 1 counts nothing.
    DropModels(AddSkinned("Body", 3, {a, b, c}, [](int vertex, int link) {
        const double weights[3][3] = {{1, -1, -1}, {-1, 0, 1}, {-1, 0.5, 0.5}};
        return weights[vertex][link];
    }));
    SelectBones({1});
    Panel().automaticBoneSelectionButton.UserClick();
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(1)); // no vertex is selected
    PickAll();
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(0, 1, 2));
    SelectVertices({1});
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(2));
    EXPECT_THAT(Panel().listBonesList.GetSelectedRows(), ElementsAre(2));
    EXPECT_THAT(Ints(tool->SpreadRows()), ElementsAre(2));
    SelectVertices({});
    EXPECT_THAT(Ints(Panel().selectedBones), IsEmpty()); // vertices are selected, none is active
    Panel().automaticBoneSelectionButton.UserClick();
    SelectBones({0});
    SelectVertices({2});
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(0));
}

TEST_F(PanelLists, UndoOfAPickBringsRowsBoneListAndSpreadBack)
{
    DropModels(AddCharacter("Body", 3));
    Panel().automaticBoneSelectionButton.UserClick();
    PickAll();
    EXPECT_EQ(Panel().spreadWeights.GetRowCount(), 2);
    EXPECT_FALSE(Panel().weightChange.snapshotBones.IsEmpty());
    EXPECT_TRUE(Undo());
    EXPECT_THAT(Texts(Panel().listVertexList), ElementsAre("Empty"));
    EXPECT_TRUE(Panel().selection.noActive);
    EXPECT_TRUE(Panel().weightChange.snapshotBones.IsEmpty());
    EXPECT_TRUE(Redo());
    EXPECT_EQ(Panel().listVertexList.GetRowCount(), 3);
    EXPECT_EQ(Panel().selection.targetRows.GetCount(), 3);
}

TEST_F(PanelLists, WhoeverShowsTheVertexListHearsOfARefillAFewTimesWhateverItsLength)
{
    DropModels(AddCharacter("Body", 500));
    PickAll();
    ASSERT_EQ(Panel().selection.targetRows.GetCount(), 500);
    const long before = Panel().listVertexList.GetChangeCount();
    Panel().RefillVertexList();
    EXPECT_LE(Panel().listVertexList.GetChangeCount() - before, 3);
    EXPECT_EQ(Panel().listVertexList.GetSelectedCount(), 500);
}

TEST_F(PanelLists, RefillingAMillionRowsCostsFewCopiesOfItsTables)
{
    constexpr int kVertices = 1000000;
    ZModel* const bone = AddBone("A");
    DropModels(AddSkinned("Big", kVertices, {bone}, [](int, int) { return 1.0; }));
    PickAll();
    ASSERT_EQ(Panel().selection.vertexRows.GetCount(), kVertices);
    ASSERT_EQ(Panel().selection.targetRows.GetCount(), kVertices);
    const auto best = [](auto work) {
        double shortest = 1e9;
        for (int round = 0; round < 5; ++round) {
            const auto start = std::chrono::steady_clock::now();
            work();
            const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
            shortest = std::min(shortest, took.count());
        }
        return shortest;
    };
    // Vertex numbers, models and target rows, and the list box's byte a row.
    const size_t bytes = static_cast<size_t>(kVertices) * (sizeof(int) + sizeof(void*) + sizeof(int) + 1);
    std::vector<char> from(bytes, 1), to(bytes, 2);
    const double copy = best([&] { std::memcpy(to.data(), from.data(), bytes); });
    EXPECT_EQ(to[bytes - 1], 1);
    const double refill = best([&] { Panel().RefillVertexList(); });
    RecordProperty("refill_ms", std::to_string(1000 * refill));
    RecordProperty("copies", std::to_string(refill / copy));
    std::printf("refill %.2f ms, copy %.2f ms, ratio %.1f\n", 1000 * refill, 1000 * copy, refill / copy);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && defined(__OPTIMIZE__)
    EXPECT_LE(refill, 15 * copy);
#endif
    EXPECT_EQ(Panel().listVertexList.GetSelectedCount(), kVertices);
}

} // namespace
