// SPDX-License-Identifier: MIT
// Skin storage: links, entries, binds, and what misuse of them does.
#include "TinyModels.h"

#include "object/ZUndoStack.h"

#include <limits>

namespace {

ZgeMatrix At(double x, double y = 0, double z = 0) { return ZgeTranslation({x, y, z}); }

class Skin : public ReportTest
{
protected:
    std::unique_ptr<ZModelPolymesh> mesh = MakePoints("mesh", 10);
    std::unique_ptr<ZModel> hip = MakeBone("hip", {1, 0, 0});
    std::unique_ptr<ZModel> knee = MakeBone("knee", {2, 0, 0});
    std::unique_ptr<ZModel> foot = MakeBone("foot", {4, 0, 0});
    ZSkin* skin = nullptr;

    void SetUp() override
    {
        ReportTest::SetUp();
        ZUndoStack::TheOne()->Clear();
        knee->SetParent(hip.get());
        foot->SetParent(knee.get());
        skin = mesh->MakeSkin(kDeformNormalise);
    }
    /// Begins link 0, made when there is none.
    void BeginFirst()
    {
        skin->AddLink(hip.get());
        skin->BeginLink(0);
    }
};

TEST_F(Skin, EntriesComeBackInOrderOfAdding)
{
    BeginFirst();
    skin->AddEntry(3, 0.25);
    skin->AddEntry(1, 0.5);
    EXPECT_EQ(skin->EntryCount(), 2);
    EXPECT_EQ(skin->EntryVertex(0), 3);
    EXPECT_EQ(skin->EntryWeight(1), 0.5);
    EXPECT_EQ(skin->FindEntry(1), 1);
    EXPECT_EQ(skin->FindEntry(2), -1);
    skin->SetEntryWeight(0.75, 1);
    EXPECT_EQ(skin->EntryWeight(1), 0.75);
    skin->ClearEntries();
    EXPECT_EQ(skin->EntryCount(), 0);
    EXPECT_EQ(skin->FindEntry(1), -1);
}

TEST_F(Skin, AnEntryThatIsNotThereIsIgnoredQuietly)
{
    BeginFirst();
    skin->AddEntry(3, 0.25);
    const std::uint64_t version = skin->GetVersion();
    skin->SetEntryWeight(1, -1);
    skin->SetEntryWeight(1, 1);
    EXPECT_EQ(skin->EntryVertex(-1), -1);
    EXPECT_EQ(skin->EntryVertex(7), -1);
    EXPECT_EQ(skin->EntryWeight(-1), 0);
    EXPECT_EQ(skin->EntryWeight(1), 0);
    EXPECT_EQ(skin->FindEntry(-1), -1);
    EXPECT_EQ(skin->FindEntry(1000), -1);
    EXPECT_EQ(skin->EntryWeight(0), 0.25);
    EXPECT_EQ(skin->GetVersion(), version);
}

TEST_F(Skin, EntriesWithoutACurrentLinkAreMisuse)
{
    skin->AddLink(hip.get());
    EXPECT_THROW(skin->EntryCount(), ZHostMisuse);
    EXPECT_THROW(skin->AddEntry(0, 1), ZHostMisuse);
    EXPECT_THROW(skin->AddEntries(nullptr, nullptr, 0), ZHostMisuse);
    EXPECT_THROW(skin->EntryVertex(0), ZHostMisuse);
    EXPECT_THROW(skin->EntryWeight(0), ZHostMisuse);
    EXPECT_THROW(skin->SetEntryWeight(1, 0), ZHostMisuse);
    EXPECT_THROW(skin->ReserveEntries(1), ZHostMisuse);
    EXPECT_THROW(skin->SetVertexWeights(nullptr, nullptr, 0), ZHostMisuse);
    EXPECT_THROW(skin->FindEntry(0), ZHostMisuse);
    EXPECT_THROW(skin->ClearEntries(), ZHostMisuse);
    EXPECT_THROW(skin->ResetLinkOption(0), ZHostMisuse);
    ZgeVector4 t;
    ZgeVector3 r, s;
    EXPECT_THROW(skin->LinkBindTransform(t, r, s), ZHostMisuse);
    EXPECT_THROW(skin->SetLinkBindTransform(t, r, s), ZHostMisuse);
    const int* vertices = nullptr;
    const double* weights = nullptr;
    int count = 0;
    EXPECT_THROW(skin->EntryArrays(vertices, weights, count), ZHostMisuse);
}

TEST_F(Skin, MisuseLeavesEverythingAsItWas)
{
    ZReport_SetMisuseFatal(false);
    skin->AddLink(hip.get());
    EXPECT_EQ(skin->EntryCount(), 0);
    EXPECT_EQ(skin->FindEntry(0), -1);
    skin->BeginLink(5);
    skin->AddEntry(0, 1);
    skin->EndLink();
    skin->BeginLink(0);
    skin->AddEntry(10, 1);
    skin->AddEntry(-1, 1);
    const int vertices[] = {2, 10, 4};
    const double weights[] = {0.2, 0.3, 0.4};
    skin->AddEntries(vertices, weights, 3);
    EXPECT_THAT(skin->GetEntryVertices(0).Span(), testing::ElementsAre(2, 4));
    EXPECT_EQ(ZReport_Warnings().size(), 7U);
    EXPECT_THAT(ZReport_Warnings().back(), testing::HasSubstr("vertex 10"));
}

TEST_F(Skin, AGuestThatForgetsToEndStillWritesIntoTheLinkThatItBegan)
{
    ZReport_SetMisuseFatal(false);
    BeginFirst();
    skin->AddLink(knee.get());
    skin->BeginLink(1);
    EXPECT_EQ(ZReport_Warnings().size(), 1U);
    skin->AddEntry(4, 1);
    EXPECT_THAT(skin->GetEntryVertices(0).Span(), testing::IsEmpty());
    EXPECT_THAT(skin->GetEntryVertices(1).Span(), testing::ElementsAre(4));
}

TEST_F(Skin, TheModeOfASkinWithoutLinksCanBeAsked)
{
    skin->BeginLink(0);
    EXPECT_EQ(skin->DeformMode(), kDeformNormalise);
    skin->EndLink();
    skin->EndLink();
    EXPECT_EQ(skin->LinkCount(), 0);
    EXPECT_EQ(skin->LinkModel(0), nullptr);
}

TEST_F(Skin, VerticesThatAreNowhereArePassedOverAndCounted)
{
    BeginFirst();
    skin->AddEntry(3, 0.5);
    const int asked[] = {std::numeric_limits<int>::min(), 3, std::numeric_limits<int>::max()};
    const double written[] = {0.1, 0.2, 0.3};
    EXPECT_EQ(skin->SetVertexWeights(asked, written, 3), 2);
    EXPECT_THAT(skin->GetEntryWeights(0).Span(), testing::ElementsAre(0.2));
}

TEST_F(Skin, RoomForEntriesIsNoMoreThanOneAVertex)
{
    BeginFirst();
    skin->AddEntry(3, 0.5);
    const std::uint64_t version = skin->GetVersion();
    skin->ReserveEntries(1000000);
    EXPECT_EQ(skin->GetEntryVertices(0).GetCapacity(), skin->GetVertexCount());
    EXPECT_EQ(skin->GetEntryWeights(0).GetCapacity(), skin->GetVertexCount());
    skin->ReserveEntries(-5);
    EXPECT_EQ(skin->GetVersion(), version);
    EXPECT_THAT(skin->GetEntryVertices(0).Span(), testing::ElementsAre(3));
    EXPECT_THAT(skin->GetEntryWeights(0).Span(), testing::ElementsAre(0.5));
}

TEST_F(Skin, WholeLinkCallsEqualTheSingleOnes)
{
    BeginFirst();
    const int vertices[] = {7, 2, 5};
    const double weights[] = {0.1, 0.2, 0.3};
    skin->AddEntries(vertices, weights, 3);
    const int asked[] = {5, 6, 7};
    const double written[] = {0.5, 0.6, 0.7};
    skin->SetVertexWeights(asked, written, 3);
    const int* readVertices = nullptr;
    const double* readWeights = nullptr;
    int count = 0;
    ASSERT_TRUE(skin->EntryArrays(readVertices, readWeights, count));
    EXPECT_THAT(std::vector<int>(readVertices, readVertices + count), testing::ElementsAre(7, 2, 5));
    EXPECT_THAT(std::vector<double>(readWeights, readWeights + count), testing::ElementsAre(0.7, 0.2, 0.5));
}

TEST_F(Skin, WeightsSetTogetherAreTouchedWhereTheyDiffer)
{
    BeginFirst();
    for (const int vertex : {1, 3, 5, 7, 2, 4})
        skin->AddEntry(vertex, 0.5);
    // Side by side, from two runs, and one by one.
    for (const std::vector<int>& asked : {std::vector<int>{3, 5, 7}, {3, 4, 5}, {7, 4, 3}}) {
        const double fresh = skin->EntryWeight(1) / 2;
        const std::vector<double> written{fresh, skin->EntryWeight(skin->FindEntry(asked[1])), fresh};
        const std::uint64_t mark = skin->GetTouchMark();
        const std::uint64_t version = skin->GetVersion();
        std::vector<int> touched;
        EXPECT_EQ(skin->SetVertexWeights(asked.data(), written.data(), 3), 0);
        ASSERT_TRUE(skin->GetTouchedSince(mark, touched));
        EXPECT_THAT(touched, testing::ElementsAre(asked[0], asked[2]));
        EXPECT_EQ(skin->GetVersion(), version + 2);
        EXPECT_EQ(skin->SetVertexWeights(asked.data(), written.data(), 3), 0);
        EXPECT_EQ(skin->GetVersion(), version + 2) << "the same weights again";
    }
}

TEST_F(Skin, AddLinkAnswersTheLinkThatFollowsTheBoneAlready)
{
    EXPECT_EQ(skin->AddLink(hip.get()), 0);
    EXPECT_EQ(skin->AddLink(knee.get()), 1);
    EXPECT_EQ(skin->AddLink(hip.get()), 0);
    EXPECT_EQ(skin->AppendLink(hip.get(), ZgeMatrix()), 2);
    EXPECT_EQ(skin->AddLink(hip.get()), 0);
    EXPECT_EQ(skin->LinkCount(), 3);
    EXPECT_EQ(skin->FindLink(knee.get()), 1);
    EXPECT_EQ(skin->FindLink(foot.get()), -1);
    EXPECT_THROW(skin->AddLink(nullptr), ZHostMisuse);
}

TEST_F(Skin, AddedLinkIsBoundAtItsPlaceWhenNoAncestorIsLinked)
{
    knee->SetFileTransform(ZgeRotationFromEuler({10, 20, 30}) * At(2, 3, 4));
    skin->AddLink(knee.get());
    ExpectNear(skin->GetInverseBind(0) * knee->GetTransformMatrix(true), ZgeMatrix(), 1e-12);
}

TEST_F(Skin, AddedLinkIsBoundAsIfWithItsNearestLinkedAncestor)
{
    // The hip was bound at 5, and has moved and turned since; the foot keeps its offset from it.
    const ZgeMatrix hipBind = ZgeRotationFromEuler({0, 0, 15}) * At(5);
    skin->AppendLink(hip.get(), ZgeInverse(hipBind));
    hip->SetPosedTransform(ZgeRotationFromEuler({30, 0, 60}) * At(7, 7, 7));
    knee->SetPosedTransform(ZgeRotationFromEuler({0, 45, 0}) * At(2));
    skin->AddLink(foot.get());
    const ZgeMatrix offset = foot->GetTransformMatrix(true) * ZgeInverse(hip->GetTransformMatrix(true));
    ExpectNear(skin->GetInverseBind(1), ZgeInverse(offset * hipBind), 1e-12);
    // So a vertex moved from the hip's link to the foot's stays where it is.
    ExpectNear(skin->GetInverseBind(1) * foot->GetTransformMatrix(true),
               skin->GetInverseBind(0) * hip->GetTransformMatrix(true), 1e-12);
}

TEST_F(Skin, ABoneScaledToNothingIsBoundWithAWarning)
{
    hip->SetFileTransform(ZgeScaling({0, 0, 0}));
    EXPECT_EQ(skin->AddLink(hip.get()), 0);
    EXPECT_EQ(skin->GetInverseBind(0), ZgeMatrix());
    EXPECT_THAT(ZReport_Warnings(), testing::ElementsAre(testing::HasSubstr("'hip'")));
}

TEST_F(Skin, RemovingALinkShiftsTheLaterOnes)
{
    skin->AddLink(hip.get());
    skin->AddLink(knee.get());
    skin->AddLink(foot.get());
    AddWeight(*skin, 2, 9, 0.5);
    skin->SetSkinDisplayValue(2);
    skin->RemoveLink(1);
    EXPECT_EQ(skin->LinkCount(), 2);
    EXPECT_EQ(skin->LinkModel(1), foot.get());
    EXPECT_EQ(skin->FindLink(foot.get()), 1);
    EXPECT_EQ(skin->FindLink(knee.get()), -1);
    EXPECT_EQ(skin->GetDisplayValue(), 1);
    skin->BeginLink(1);
    EXPECT_EQ(skin->FindEntry(9), 0);
    skin->EndLink();
    skin->RemoveLink(1);
    EXPECT_EQ(skin->GetDisplayValue(), -1);
    EXPECT_THROW(skin->RemoveLink(1), ZHostMisuse);
    EXPECT_THROW(skin->RemoveLink(-1), ZHostMisuse);
}

TEST_F(Skin, TheCurrentLinkSurvivesTheRemovalOfAnotherAndNotItsOwn)
{
    skin->AddLink(hip.get());
    skin->AddLink(knee.get());
    skin->BeginLink(1);
    skin->RemoveLink(0);
    skin->AddEntry(1, 1);
    EXPECT_EQ(skin->EntryCount(), 1);
    skin->RemoveLink(0);
    EXPECT_THROW(skin->EntryCount(), ZHostMisuse);
}

TEST_F(Skin, RemovingTheFirstOfTwoLinksOnABoneFindsTheOther)
{
    skin->AppendLink(hip.get(), ZgeMatrix());
    skin->AppendLink(hip.get(), At(1));
    skin->RemoveLink(0);
    EXPECT_EQ(skin->FindLink(hip.get()), 0);
    EXPECT_EQ(skin->GetInverseBind(0), At(1));
}

TEST_F(Skin, ALinkMayHaveNoBone)
{
    EXPECT_EQ(skin->AppendLink(nullptr, ZgeMatrix()), 0);
    EXPECT_EQ(skin->LinkModel(0), nullptr);
    EXPECT_EQ(skin->FindLink(nullptr), -1);
}

TEST_F(Skin, BindTransformIsTheInverseBindMatrixInParts)
{
    ZgeTRS trs;
    trs.translation = {1, 2, 3, 1};
    trs.rotation = {10, 20, 30};
    trs.scaling = {2, 3, 4};
    skin->AppendLink(hip.get(), ZgeCompose(trs));
    ZgeVector4 translation;
    ZgeVector3 rotation, scaling;
    skin->BeginLink(0);
    skin->LinkBindTransform(translation, rotation, scaling);
    EXPECT_EQ(translation, (ZgeVector4{1, 2, 3, 1}));
    EXPECT_NEAR(rotation.y, 20, 1e-12);
    EXPECT_NEAR(scaling.z, 4, 1e-12);
    skin->SetLinkBindTransform({5, 6, 7, 1}, {0, 0, 90}, {1, 1, 1});
    ExpectNear(skin->GetInverseBind(0), ZgeRotationFromEuler({0, 0, 90}) * At(5, 6, 7), 1e-12);
}

TEST_F(Skin, SettingWhatAnotherLinkAnsweredCarriesItsExactMatrix)
{
    ZgeMatrix sheared = At(1, 2, 3);
    sheared(1, 0) = 0.5;
    skin->AppendLink(hip.get(), sheared);
    skin->AppendLink(hip.get(), At(9));
    ZgeVector4 translation;
    ZgeVector3 rotation, scaling;
    skin->BeginLink(0);
    skin->LinkBindTransform(translation, rotation, scaling);
    skin->EndLink();
    skin->BeginLink(1);
    skin->SetLinkBindTransform(translation, rotation, scaling);
    skin->EndLink();
    EXPECT_EQ(skin->GetInverseBind(1), sheared);
}

TEST_F(Skin, SettingWhatTheLinkItselfAnsweredKeepsItsShear)
{
    ZgeMatrix sheared = At(1, 2, 3);
    sheared(1, 0) = 0.5;
    skin->AppendLink(hip.get(), sheared);
    ZgeVector4 translation;
    ZgeVector3 rotation, scaling;
    skin->BeginLink(0);
    skin->LinkBindTransform(translation, rotation, scaling);
    skin->SetLinkBindTransform(translation, rotation, scaling);
    EXPECT_EQ(skin->GetInverseBind(0), sheared);
}

TEST_F(Skin, OptionAndDisplayValueAreKept)
{
    BeginFirst();
    skin->ResetLinkOption(3);
    EXPECT_EQ(skin->GetLinkOption(0), 3);
    skin->SetSkinDisplayValue(0);
    EXPECT_EQ(skin->GetDisplayValue(), 0);
    skin->SetSkinDisplayValue(-1);
    EXPECT_EQ(skin->GetDisplayValue(), -1);
}

TEST_F(Skin, VersionsTellWhatChanged)
{
    BeginFirst();
    std::uint64_t version = skin->GetVersion();
    const std::uint64_t links = skin->GetLinkVersion();
    const auto moved = [&] { return std::exchange(version, skin->GetVersion()) != version; };
    skin->AddEntry(1, 0.5);
    EXPECT_TRUE(moved());
    skin->SetEntryWeight(0.5, 0);
    EXPECT_FALSE(moved()) << "the weight was that already";
    skin->SetEntryWeight(0.25, 0);
    EXPECT_TRUE(moved());
    EXPECT_EQ(skin->GetLinkVersion(), links);
    skin->AddLink(knee.get());
    EXPECT_TRUE(moved());
    EXPECT_NE(skin->GetLinkVersion(), links);
}

TEST_F(Skin, CsrHoldsEveryEntryVertexAfterVertex)
{
    skin->AddLink(hip.get());
    skin->AddLink(knee.get());
    AddWeight(*skin, 1, 0, 0.75);
    AddWeight(*skin, 0, 2, 0.5);
    AddWeight(*skin, 0, 0, 0.25);
    AddWeight(*skin, 1, 2, 0);
    std::vector<int> offsets, links;
    std::vector<double> weights;
    skin->BuildCsr(offsets, links, weights);
    EXPECT_THAT(offsets, testing::ElementsAre(0, 2, 2, 4, 4, 4, 4, 4, 4, 4, 4));
    EXPECT_THAT(links, testing::ElementsAre(0, 1, 0, 1));
    EXPECT_THAT(weights, testing::ElementsAre(0.25, 0.75, 0.5, 0));
}

TEST_F(Skin, EntriesThatDoNotFitAreRefusedWhole)
{
    skin->AddLink(hip.get());
    EXPECT_THROW(skin->SetEntries(0, {1, 2}, {0.5}), ZHostMisuse);
    EXPECT_THROW(skin->SetEntries(0, {1, 10}, {0.5, 0.5}), ZHostMisuse);
    EXPECT_THROW(skin->SetEntries(1, {1}, {0.5}), ZHostMisuse);
    EXPECT_TRUE(skin->GetEntryVertices(0).IsEmpty());
    skin->SetEntries(0, {1, 2}, {0.5, 0.25});
    EXPECT_TRUE(skin->AreEntriesAscending(0));
    skin->SetEntries(0, {2, 1}, {0.5, 0.25});
    EXPECT_FALSE(skin->AreEntriesAscending(0));
}

class RewrittenSkin : public Skin
{
protected:
    /// Clears all links and writes the given weights of link 0, vertex after vertex.
    void Rewrite(const std::vector<double>& weights)
    {
        for (int link = 0; link < skin->LinkCount(); ++link) {
            skin->BeginLink(link);
            skin->ClearEntries();
            skin->EndLink();
        }
        for (size_t vertex = 0; vertex < weights.size(); ++vertex)
            AddWeight(*skin, 0, static_cast<int>(vertex), weights[vertex]);
    }
};

TEST_F(RewrittenSkin, CountsVerticesWhoseSumsChanged)
{
    skin->AddLink(hip.get());
    skin->AddLink(knee.get());
    skin->SetEntries(0, {0, 1, 2}, {0.5, 0.2, 1.0});
    skin->SetEntries(1, {0, 1, 3}, {0.5, 0.2, 0.0});
    EXPECT_EQ(skin->TakeNormalisedCount(), 0);
    Rewrite({1, 1, 1 + 5e-7});
    EXPECT_EQ(skin->TakeNormalisedCount(), 1);
    EXPECT_EQ(skin->TakeNormalisedCount(), 0);
}

TEST_F(RewrittenSkin, WeightsSetAfterwardsDoNotCount)
{
    skin->AddLink(hip.get());
    skin->SetEntries(0, {0, 1}, {0.5, 1});
    Rewrite({1, 1});
    skin->BeginLink(0);
    skin->SetEntryWeight(0.25, 1);
    skin->EndLink();
    EXPECT_EQ(skin->TakeNormalisedCount(), 1);
}

TEST_F(RewrittenSkin, RemovingALinkDoesNotCount)
{
    skin->AddLink(hip.get());
    skin->AddLink(knee.get());
    skin->SetEntries(1, {0, 1}, {0.5, 1});
    skin->RemoveLink(1);
    EXPECT_EQ(skin->TakeNormalisedCount(), 0);
}

TEST_F(RewrittenSkin, BrokenSumsThatStayBrokenDoNotCount)
{
    skin->AddLink(hip.get());
    skin->SetEntries(0, {0, 1}, {NAN, NAN});
    Rewrite({INFINITY, 1});
    EXPECT_EQ(skin->TakeNormalisedCount(), 1);
}

} // namespace
