// SPDX-License-Identifier: MIT
// Which of the host's news the tool takes notice of, and which it lets pass.
#include "ToolStage.h"

#include "zxtrobject/ZXtrObject.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HostNews : public ToolStage
{
protected:
    void SetUp() override
    {
        OpenTool();
        body = AddCharacter("Body");
        DropModels(body);
        PickAll();
        SelectBones({0});
        hip = tool->BoneList()[0];
        knee = tool->BoneList()[1];
        changes = Changes();
    }
    /// Every control of the tool counts its changes.
    long Changes()
    {
        std::vector<ZtView*> views;
        tool->CollectViews(views);
        long sum = 0;
        for (const ZtView* const view : views)
            sum += view->GetChangeCount();
        return sum;
    }
    void ExpectNothingChanged()
    {
        EXPECT_EQ(Changes(), changes);
        EXPECT_EQ(Items().GetCount(), 1);
        EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyHip", "BodyKnee"));
        EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(0));
        EXPECT_EQ(Panel().selection.vertexRows.GetCount(), 4);
    }
    static void NotifyPlug(int kind, ZObject* owner, ZObject* source)
    {
        ZPlugEvent event(kind, owner, source);
        ZEntity::Notify(event);
    }
    static void NotifyState(int kind, ZObject* owner)
    {
        ZPlugEvent event(kind, owner, owner);
        ZEntity::NotifyState(event);
    }

    ZModel* body = nullptr;
    ZModel* hip = nullptr;
    ZModel* knee = nullptr;
    long changes = 0;
};

TEST_F(HostNews, PlugsOfAnotherKindPass)
{
    for (const int kind : {0, 1, 7, 9, 27})
        NotifyPlug(kind, body, body);
    for (const int kind : {7, 9})
        NotifyPlug(kind, knee, knee);
    ExpectNothingChanged();
}

TEST_F(HostNews, APlugOfWhatIsNoModelOrFromNoEntityPasses)
{
    ZObject stranger("Stranger");
    ZEntity entity("Entity");
    NotifyPlug(kPlugNotifyDeleted, &entity, &entity); // no model
    NotifyPlug(kPlugNotifyDeleted, &stranger, &entity);
    NotifyPlug(kPlugNotifyDeleted, body, &stranger); // from no entity
    NotifyPlug(kPlugNotifyDeleted, knee, nullptr);
    NotifyPlug(kPlugNotifyDeleted, nullptr, &entity);
    ExpectNothingChanged();
}

TEST_F(HostNews, AModelThatTheToolDoesNotHoldMayGo)
{
    Scene().DeleteModel(AddCharacter("Other"));
    Scene().DeleteModel(AddBone("Loose"));
    ExpectNothingChanged();
}

TEST_F(HostNews, StatesOfAnotherKindAndOfOtherModelsPass)
{
    for (const int kind : {8, 26, 28})
        NotifyState(kind, knee);
    NotifyState(kPlugStateSelected, body); // no bone
    NotifyState(kPlugStateSelected, AddBone("Loose"));
    ZEntity entity("Entity");
    NotifyState(kPlugStateSelected, &entity);
    ExpectNothingChanged();
    NotifyState(kPlugStateSelected, knee);
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(0, 1));
}

TEST_F(HostNews, SceneEventsOfAnotherKindPass)
{
    for (const int kind : {0, 9, kSceneModelsAdded, kSceneChanged})
        ZXtrObject_Send(kind);
    ExpectNothingChanged();
    ZXtrObject_Send(kSceneClearing);
    EXPECT_EQ(Items().GetCount(), 0);
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Drop models here"));
    EXPECT_EQ(body->ModelIneligible(), 0); // its edit was ended while it lived
}

TEST_F(HostNews, AreHeardByAToolThatIsNotActive)
{
    tool->ToolDeactivate();
    knee->SetSelected(true);
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(0, 1));
    Scene().DeleteModel(hip);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyKnee"));
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(0));
    Scene().DeleteModel(body);
    EXPECT_THAT(Texts(tool->ModelListBox()), ElementsAre("Drop models here"));
    EXPECT_THAT(Texts(Panel().listBonesList), IsEmpty());
    EXPECT_TRUE(tool->Manipulator()->ManipulatorGetHidden());
}

TEST_F(HostNews, OneBoneOfTwoModelsGoesFromBoth)
{
    ZModel* const shared = AddSkinned("Shared", 2, {hip, AddBone("Own")}, [](int, int) { return 0.5; });
    DropModels(shared);
    tool->ModelListBox().UserSetCheck(1, true);
    ASSERT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyHip", "BodyKnee", "Own"));
    SelectBones({0, 2});
    Scene().DeleteModel(hip);
    EXPECT_THAT(Texts(Panel().listBonesList), ElementsAre("BodyKnee", "Own"));
    EXPECT_THAT(Ints(Panel().selectedBones), ElementsAre(1));
    EXPECT_EQ(body->GetSkin()->LinkCount(), 1);
    EXPECT_EQ(shared->GetSkin()->LinkCount(), 1);
}

} // namespace
