// SPDX-License-Identifier: MIT
// The scene: who is in it, and how models leave it.
#include "TinyModels.h"

#include "object/ZUndoStack.h"

namespace {

ZgeMatrix At(double x, double y = 0, double z = 0) { return ZgeTranslation({x, y, z}); }

/// A record that does nothing, so that there is a history to drop.
class Nothing : public IUndo
{
public:
    void* IQuery(int, int) override { return nullptr; }
    void Destroy() override { delete this; }
    bool IsEmpty() override { return false; }
    void TransactionClosed() override {}
    void Undo() override {}
    void Redo() override {}
    const char* GetName() override { return "Nothing"; }
};

/// Hears of deleted models and remembers what was true at that moment.
struct Deletions
{
    ZScene* scene = nullptr;
    ZSkin* skin = nullptr;
    bool clears = false;
    std::vector<std::string> names;
    std::vector<int> linkCounts;
    std::vector<bool> stillListed;

    void OnNews(ZObject* sender, ZEvent& event)
    {
        if (event.kind != kPlugNotifyDeleted)
            return;
        auto& news = dynamic_cast<ZPlugEvent&>(event);
        EXPECT_EQ(news.owner, sender);
        EXPECT_EQ(news.source, sender);
        names.push_back(sender->GetObjectName());
        linkCounts.push_back(skin != nullptr ? skin->LinkCount() : -1);
        stillListed.push_back(scene->Contains(Object_Cast<ZModel>(sender)));
        if (clears)
            scene->Clear();
    }
};

class Scene : public ReportTest
{
protected:
    ZScene scene;
    ZModel listener{"listener"};
    Deletions deletions;
    ZModel* hip = nullptr;
    ZModel* knee = nullptr;
    ZModel* foot = nullptr;
    ZModelPolymesh* mesh = nullptr;
    ZSkin* skin = nullptr;

    void SetUp() override
    {
        ReportTest::SetUp();
        ZUndoStack::TheOne()->Clear();
        hip = scene.AddModel(MakeBone("hip", {1, 0, 0}));
        knee = scene.AddModel(MakeBone("knee", {2, 0, 0}));
        foot = scene.AddModel(MakeBone("foot", {4, 0, 0}));
        knee->SetParent(hip);
        foot->SetParent(knee);
        mesh = static_cast<ZModelPolymesh*>(scene.AddModel(MakePoints("mesh", 3)));
        skin = mesh->MakeSkin(kDeformNormalise);
        deletions.scene = &scene;
        deletions.skin = skin;
        listener.EntityPlugNotifyRegister(ZMakeHandler<&Deletions::OnNews>(&deletions));
    }
    void TearDown() override
    {
        ZUndoStack::TheOne()->Clear();
        ReportTest::TearDown();
    }
    static void MakeHistory()
    {
        ZUndoStack::TheOne()->TransactionBegin("step", false);
        ZUndoStack::TheOne()->TransactionAdd(new Nothing);
        ZUndoStack::TheOne()->TransactionEnd(false, false);
    }
};

TEST_F(Scene, KeepsModelsInOrderOfAdding)
{
    EXPECT_THAT(scene.GetModels(), testing::ElementsAre(hip, knee, foot, mesh));
    EXPECT_THAT(scene.GetRoots(), testing::ElementsAre(hip, mesh));
    EXPECT_TRUE(scene.Contains(knee));
    EXPECT_FALSE(scene.Contains(nullptr));
    EXPECT_EQ(knee->GetScene(), &scene);
}

TEST_F(Scene, PathsOfAllModelsEqualTheirOwn)
{
    scene.AddModel(MakeBone("hip"));
    scene.AddModel(MakeBone("knee"))->SetParent(hip);
    const std::vector<std::string> paths = scene.GetPaths();
    EXPECT_THAT(paths, testing::ElementsAre("hip", "hip/knee", "hip/knee/foot", "mesh", "hip[2]", "hip/knee[2]"));
    for (size_t i = 0; i < paths.size(); ++i)
        EXPECT_EQ(scene.GetModels()[i]->GetPath(), paths[i]);
}

TEST_F(Scene, LinksLeaveEverySkinBeforeAnyoneHears)
{
    skin->AddLink(hip);
    skin->AddLink(knee);
    skin->AppendLink(knee, ZgeMatrix());
    scene.DeleteModel(knee);
    EXPECT_THAT(deletions.names, testing::ElementsAre("knee"));
    EXPECT_THAT(deletions.linkCounts, testing::ElementsAre(1));
    EXPECT_THAT(deletions.stillListed, testing::ElementsAre(false));
    EXPECT_EQ(skin->LinkModel(0), hip);
    EXPECT_THAT(scene.GetModels(), testing::ElementsAre(hip, foot, mesh));
}

TEST_F(Scene, ChildrenGoToTheParentAndKeepTheirPlace)
{
    ZModel* const toe = scene.AddModel(MakeBone("toe", {9, 0, 0}));
    toe->SetParent(hip);
    knee->SetFileTransform(ZgeRotationFromEuler({0, 0, 90}) * At(2));
    const ZgeMatrix before = foot->GetTransformMatrix(true);
    scene.DeleteModel(knee);
    EXPECT_EQ(foot->GetParent(), hip);
    EXPECT_THAT(hip->GetChildren(), testing::ElementsAre(foot, toe));
    ExpectNear(foot->GetTransformMatrix(true), before, 1e-12);
    EXPECT_EQ(foot->GetFileTransform(), At(4)) << "what the file says of a node stays";
    scene.DeleteModel(hip);
    ExpectNear(foot->GetTransformMatrix(true), before, 1e-12);
    EXPECT_THAT(scene.GetRoots(), testing::ElementsAre(foot, toe, mesh));
}

TEST_F(Scene, ADeletedPosedParentLeavesItsChildInPlaceUntilThePoseIsCleared)
{
    knee->SetPosedTransform(At(20));
    scene.DeleteModel(knee);
    EXPECT_DOUBLE_EQ(foot->GetTransformMatrix(true)(3, 0), 25);
    scene.ClearPose();
    EXPECT_DOUBLE_EQ(foot->GetTransformMatrix(true)(3, 0), 7);
}

TEST_F(Scene, ADeletedAnimatedParentLeavesItsChildInPlaceAndAtRestWhereTheFileHadIt)
{
    auto animation = std::make_unique<ZAnimation>();
    animation->channels.push_back(
        {knee, ZAnimationPath::Translation, ZInterpolation::Linear, {0, 1}, {2, 0, 0, 12, 0, 0}, 3});
    scene.AddAnimation(std::move(animation));
    scene.SetAnimation(0);
    scene.SetTime(1);
    EXPECT_DOUBLE_EQ(foot->GetTransformMatrix(true)(3, 0), 17);
    scene.DeleteModel(knee);
    EXPECT_DOUBLE_EQ(foot->GetTransformMatrix(true)(3, 0), 17);
    EXPECT_TRUE(scene.GetAnimations()[0]->channels.empty());
    scene.SetTime(0.5);
    scene.SetAnimation(-1);
    EXPECT_DOUBLE_EQ(foot->GetTransformMatrix(true)(3, 0), 7);
}

TEST_F(Scene, DeletingABoneWaitsForTheEndOfAnOpenTransaction)
{
    skin->AddLink(knee);
    ZUndoStack::TheOne()->TransactionBegin("edit", false);
    scene.DeleteModel(knee);
    scene.DeleteModel(knee);
    EXPECT_TRUE(scene.Contains(knee));
    EXPECT_EQ(skin->LinkCount(), 1);
    ZUndoStack::TheOne()->TransactionEnd(false, false);
    EXPECT_EQ(skin->LinkCount(), 0);
    EXPECT_THAT(deletions.names, testing::ElementsAre("knee"));
}

TEST_F(Scene, DeletingAMeshDoesNotWait)
{
    deletions.skin = nullptr;
    ZUndoStack::TheOne()->TransactionBegin("edit", false);
    scene.DeleteModel(mesh);
    EXPECT_THAT(deletions.names, testing::ElementsAre("mesh"));
    ZUndoStack::TheOne()->TransactionEnd(false, false);
}

TEST_F(Scene, AWaitingDeletionOutlivedByItsSceneDoesNothing)
{
    auto other = std::make_unique<ZScene>();
    ZModel* const bone = other->AddModel(MakeBone("bone"));
    ZUndoStack::TheOne()->TransactionBegin("edit", false);
    other->DeleteModel(bone);
    other.reset();
    ZUndoStack::TheOne()->TransactionEnd(false, false);
    EXPECT_THAT(deletions.names, testing::IsEmpty());
}

TEST_F(Scene, HistoryIsDroppedOnlyWhenLinksWereRemoved)
{
    skin->AddLink(hip);
    MakeHistory();
    scene.DeleteModel(foot);
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), 1);
    EXPECT_THAT(ZReport_Warnings(), testing::IsEmpty());
    scene.DeleteModel(hip);
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), 0);
    EXPECT_THAT(ZReport_Warnings(), testing::ElementsAre(testing::HasSubstr("'hip'")));
}

TEST_F(Scene, AHandlerMayClearTheScene)
{
    deletions.clears = true;
    deletions.skin = nullptr;
    scene.DeleteModel(knee);
    EXPECT_THAT(scene.GetModels(), testing::IsEmpty());
    EXPECT_THAT(scene.GetRoots(), testing::IsEmpty());
}

TEST_F(Scene, HandlesToADeletedModelAreInvalid)
{
    HdlZPlug handle;
    handle.Set(foot);
    scene.DeleteModel(foot);
    EXPECT_FALSE(handle.IsValid());
}

TEST_F(Scene, AForeignModelIsMisuse)
{
    ZModel stranger("stranger");
    EXPECT_THROW(scene.DeleteModel(&stranger), ZHostMisuse);
    EXPECT_THROW(scene.DeleteModel(nullptr), ZHostMisuse);
    EXPECT_THROW(scene.AddModel(nullptr), ZHostMisuse);
}

TEST_F(Scene, ClearingTellsNobody)
{
    deletions.skin = nullptr;
    scene.Clear();
    EXPECT_THAT(deletions.names, testing::IsEmpty());
    EXPECT_THAT(scene.GetModels(), testing::IsEmpty());
    EXPECT_EQ(scene.AddModel(MakeBone("new"))->GetPath(), "new");
}

TEST_F(Scene, BoxIsThatOfVisibleDeformedGeometry)
{
    EXPECT_TRUE(ZScene().GetBox().IsEmpty());
    mesh->SetFileTransform(At(10, 20, 30));
    ZgeBox box = scene.GetBox();
    EXPECT_EQ(box.minimum, (ZgeVector3{10, 20, 30}));
    EXPECT_EQ(box.maximum, (ZgeVector3{12, 20, 30}));
    mesh->SetFileTransform(ZgeMatrix());
    skin->AddLink(hip);
    AddWeight(*skin, 0, 2, 1);
    hip->SetPosedTransform(At(1, 5));
    box = scene.GetBox();
    EXPECT_NEAR(box.maximum.y, 5, 1e-5);
    mesh->SetHidden(true);
    EXPECT_TRUE(scene.GetBox().IsEmpty());
}

TEST_F(Scene, ABrokenPositionDoesNotSpoilTheBox)
{
    const float positions[] = {0, 0, 0, NAN, 1, 1, 2, 2, 2};
    mesh->SetGeometry(positions, 3, {}, {});
    EXPECT_EQ(scene.GetBox().maximum, (ZgeVector3{2, 2, 2}));
}

} // namespace
