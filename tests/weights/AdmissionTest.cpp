// SPDX-License-Identifier: MIT
// What happens to a skin when its model is admitted, and in which order the skin is called.
#include "support/RecordingSkin.h"
#include "support/WeightStage.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

class Admission : public testing::Test
{
protected:
    int ModeOf(const ZWeightUIModelData& data) { return static_cast<IdleStrategy*>(data.strategy)->deformMode; }
    void AnswerMessages(int button)
    {
        ZToolKit_SetMessageAnswerer([button](const ZtMessage&) { return button; });
    }
    WeightStage stage;
    TinyCharacter& character = stage.character;
};

TEST_F(Admission, StartsIdleWithNothingSelected)
{
    character.AddBones(1);
    const auto data = stage.Admit(character.AddMesh("Body", 3));
    EXPECT_FALSE(data->IsRefused());
    EXPECT_EQ(data->noActiveVertices, 1);
    EXPECT_EQ(data->noSelectedVertices, 1);
    EXPECT_EQ(data->modelSelected, 0);
    EXPECT_EQ(data->normaliseOnRefresh, 1);
    EXPECT_EQ(data->skinHintPending, 1);
    EXPECT_THAT(data->vertexStates, ElementsAre(0, 0, 0));
    EXPECT_FALSE(data->IsLoaded());
}

TEST_F(Admission, AdditiveSkinWithoutShowMessageIsRefusedSilently)
{
    character.AddBones(1);
    const auto data = stage.Admit(character.AddMesh("Body", 2, kDeformAdditive), false);
    EXPECT_TRUE(data->IsRefused());
    EXPECT_EQ(data->strategy, nullptr);
    EXPECT_TRUE(ZToolKit_GetMessages().empty());
}

TEST_F(Admission, AdditiveSkinIsRefusedWithAMessage)
{
    character.AddBones(1);
    const auto data = stage.Admit(character.AddMesh("Body", 2, kDeformAdditive), true);
    EXPECT_TRUE(data->IsRefused());
    ASSERT_EQ(ZToolKit_GetMessages().size(), 1U);
    const ZtMessage& message = ZToolKit_GetMessages()[0];
    EXPECT_EQ(message.title, "Skinning Tool");
    EXPECT_EQ(message.text,
              "The ADDITIVE type of deformation used by the model is not supported by this skinning tool.");
    EXPECT_THAT(message.buttons, ElementsAre("OK"));
}

TEST_F(Admission, AdditiveSkinKeepsItsLinksAsTheyAre)
{
    character.AddBones(1);
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2, kDeformAdditive);
    mesh->GetSkin()->AppendLink(nullptr, {});
    stage.Admit(mesh);
    EXPECT_EQ(mesh->GetSkin()->LinkCount(), 2);
}

TEST_F(Admission, Mode2ResetsEveryLinkOption)
{
    character.AddBones(2);
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2, kDeformTotal100);
    for (int link = 0; link < 2; ++link) {
        mesh->GetSkin()->BeginLink(link);
        mesh->GetSkin()->ResetLinkOption(7);
        mesh->GetSkin()->EndLink();
    }
    const auto data = stage.Admit(mesh);
    EXPECT_EQ(ModeOf(*data), 2);
    EXPECT_EQ(mesh->GetSkin()->GetLinkOption(0), 0);
    EXPECT_EQ(mesh->GetSkin()->GetLinkOption(1), 0);
}

TEST_F(Admission, OtherModesKeepTheirLinkOptions)
{
    character.AddBones(1);
    for (const int mode : {0, 3, 7}) {
        ZModelPolymesh* const mesh = character.AddMesh("Body", 2, mode);
        mesh->GetSkin()->BeginLink(0);
        mesh->GetSkin()->ResetLinkOption(7);
        mesh->GetSkin()->EndLink();
        const auto data = stage.Admit(mesh);
        EXPECT_EQ(ModeOf(*data), mode);
        EXPECT_EQ(mesh->GetSkin()->GetLinkOption(0), 7);
    }
}

TEST_F(Admission, TwoLinksWithoutABoneInARowAreBothRemoved)
{
    character.AddBones(1);
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2);
    mesh->GetSkin()->AppendLink(nullptr, {});
    mesh->GetSkin()->AppendLink(nullptr, {});
    character.AddBones(1);
    mesh->GetSkin()->AppendLink(character.bones[1], {});
    stage.Admit(mesh);
    ASSERT_EQ(mesh->GetSkin()->LinkCount(), 2);
    EXPECT_EQ(mesh->GetSkin()->LinkModel(0), character.bones[0]);
    EXPECT_EQ(mesh->GetSkin()->LinkModel(1), character.bones[1]);
}

TEST_F(Admission, ModelWithoutASkinIsRefusedSilently)
{
    const float corner[3] = {0, 0, 0};
    ZModelPolymesh mesh("Prop");
    mesh.SetGeometry(corner, 1, {}, {});
    const auto data = stage.Admit(&mesh, true);
    EXPECT_TRUE(data->IsRefused());
    EXPECT_TRUE(ZToolKit_GetMessages().empty());
}

TEST_F(Admission, ModelWithoutGeometryIsRefusedSilently)
{
    character.AddBones(1);
    const auto data = stage.Admit(character.bones[0], true);
    EXPECT_TRUE(data->IsRefused());
    EXPECT_EQ(data->geometry, nullptr);
    EXPECT_TRUE(ZToolKit_GetMessages().empty());
}

TEST_F(Admission, SkinWithoutLinksIsAdmitted)
{
    const auto data = stage.Admit(character.AddMesh("Body", 2));
    EXPECT_FALSE(data->IsRefused());
}

// Duplicates.

/// Two links on one bone: the first has three of four weights at zero, the second one of four.
class DuplicateLinks : public Admission
{
protected:
    DuplicateLinks()
    {
        character.AddBones(1);
        mesh = character.AddMesh("Body", 6);
        mesh->GetSkin()->AppendLink(character.bones[0], ZgeTranslation({0, 0, 9}));
        Fill(0, {0, 0, 0, 0.5});
        Fill(1, {0.25, 0.75, 0, 1.0});
    }
    void Fill(int link, const std::vector<double>& weights)
    {
        for (size_t vertex = 0; vertex < weights.size(); ++vertex)
            TinyCharacter::Weight(mesh, link, static_cast<int>(vertex), weights[vertex]);
    }
    ZModelPolymesh* mesh = nullptr;
};

TEST_F(DuplicateLinks, TheOneWithFewerZerosIsFoldedIntoTheOther)
{
    AnswerMessages(1);
    stage.Admit(mesh);
    ZSkin* const skin = mesh->GetSkin();
    ASSERT_EQ(skin->LinkCount(), 1);
    // Weights are replaced, never added.
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 0), 0.25);
    EXPECT_EQ(TinyCharacter::WeightOf(mesh, 0, 3), 1.0);
    // The exact inverse bind matrix goes along.
    EXPECT_EQ(skin->GetInverseBind(0), ZgeTranslation({0, 0, 9}));
    ASSERT_EQ(ZToolKit_GetMessages().size(), 1U);
    EXPECT_EQ(ZToolKit_GetMessages()[0].title, "Skinning Tool");
    EXPECT_EQ(ZToolKit_GetMessages()[0].text, "Some bones are duplicate, do you wish to try to merge them ?");
    EXPECT_THAT(ZToolKit_GetMessages()[0].buttons, ElementsAre("Yes", "No"));
}

TEST_F(DuplicateLinks, AfterNoBothStayAndNothingMoreIsAsked)
{
    character.AddBones(1);
    mesh->GetSkin()->AppendLink(character.bones[1], {});
    mesh->GetSkin()->AppendLink(character.bones[1], {});
    AnswerMessages(2);
    stage.Admit(mesh);
    EXPECT_EQ(mesh->GetSkin()->LinkCount(), 4);
    EXPECT_EQ(ZToolKit_GetMessages().size(), 1U);
}

TEST_F(DuplicateLinks, OneAnswerHoldsForEveryPairOfTheModel)
{
    character.AddBones(1);
    mesh->GetSkin()->AppendLink(character.bones[1], {});
    mesh->GetSkin()->AppendLink(character.bones[1], {});
    AnswerMessages(1);
    stage.Admit(mesh);
    EXPECT_EQ(mesh->GetSkin()->LinkCount(), 2);
    EXPECT_EQ(ZToolKit_GetMessages().size(), 1U);
}

TEST_F(DuplicateLinks, OnEqualSharesTheEarlierOneIsFoldedIntoTheLater)
{
    character.AddBones(1);
    ZModelPolymesh* const other = character.AddMesh("Other", 4);
    other->GetSkin()->AppendLink(character.bones[0], ZgeTranslation({0, 0, 9}));
    TinyCharacter::Weight(other, 0, 0, 0.5);
    TinyCharacter::Weight(other, 2, 1, 0.25);
    AnswerMessages(1);
    stage.Admit(other);
    ASSERT_EQ(other->GetSkin()->LinkCount(), 2);
    // The earlier link is gone: its bone now stands where the later one moved to.
    EXPECT_EQ(other->GetSkin()->LinkModel(0), character.bones[1]);
    EXPECT_EQ(other->GetSkin()->LinkModel(1), character.bones[0]);
    EXPECT_EQ(TinyCharacter::WeightOf(other, 1, 0), 0.5);
    EXPECT_EQ(TinyCharacter::WeightOf(other, 1, 1), 0.25);
    EXPECT_EQ(other->GetSkin()->GetInverseBind(1), ZgeInverse(character.bones[0]->GetTransformMatrix(true)));
}

TEST_F(DuplicateLinks, LinkWithoutEntriesIsFoldedWhenItIsTheEarlier)
{
    character.AddBones(1);
    ZModelPolymesh* const other = character.AddMesh("Other", 4);
    other->GetSkin()->AppendLink(character.bones[0], {});
    TinyCharacter::Weight(other, 2, 1, 0.25);
    AnswerMessages(1);
    stage.Admit(other);
    EXPECT_EQ(other->GetSkin()->LinkCount(), 2);
    EXPECT_EQ(TinyCharacter::WeightOf(other, 1, 1), 0.25);
}

TEST_F(DuplicateLinks, ThreeLinksOnOneBoneBecomeOne)
{
    character.AddBones(1);
    ZModelPolymesh* const other = character.AddMesh("Other", 4);
    other->GetSkin()->AppendLink(character.bones[0], {});
    other->GetSkin()->AppendLink(character.bones[1], {});
    other->GetSkin()->AppendLink(character.bones[0], {});
    TinyCharacter::Weight(other, 0, 0, 0.1);
    TinyCharacter::Weight(other, 2, 1, 0.2);
    TinyCharacter::Weight(other, 4, 2, 0.3);
    TinyCharacter::Weight(other, 3, 3, 0.4);
    AnswerMessages(1);
    stage.Admit(other);
    ASSERT_EQ(other->GetSkin()->LinkCount(), 2);
    const int bone0 = other->GetSkin()->LinkModel(0) == character.bones[0] ? 0 : 1;
    EXPECT_EQ(TinyCharacter::WeightOf(other, bone0, 0), 0.1);
    EXPECT_EQ(TinyCharacter::WeightOf(other, bone0, 1), 0.2);
    EXPECT_EQ(TinyCharacter::WeightOf(other, bone0, 2), 0.3);
    EXPECT_EQ(TinyCharacter::WeightOf(other, 1 - bone0, 3), 0.4);
}

TEST_F(DuplicateLinks, MergingMovesNoVertexThatBothLinksAgreedOn)
{
    ZModelPolymesh* const other = character.AddMesh("Other", 3);
    ZSkin* const skin = other->GetSkin();
    skin->AppendLink(character.bones[0], skin->GetInverseBind(0));
    for (int vertex = 0; vertex < 3; ++vertex)
        for (int link = 0; link < 2; ++link)
            TinyCharacter::Weight(other, link, vertex, 0.5);
    character.bones[0]->SetPosedTransform(ZgeTranslation({0, 4, 0}));
    const auto positions = [other] {
        const float* const first = other->Geometry().VertexPositions(1);
        return std::vector<float>(first, first + 12);
    };
    const std::vector<float> before = positions();
    AnswerMessages(1);
    stage.Admit(other);
    EXPECT_EQ(skin->LinkCount(), 1);
    EXPECT_THAT(positions(), testing::Pointwise(testing::FloatEq(), before));
}

// The order of the calls.

TEST_F(Admission, CallsTheSkinInOrder)
{
    character.AddBones(2);
    RecordedMesh mesh("Body", 2, kDeformTotal100);
    mesh.GetSkin()->AppendLink(character.bones[0], {});
    mesh.GetSkin()->AppendLink(nullptr, {});
    mesh.GetSkin()->AppendLink(character.bones[1], {});
    stage.Admit(&mesh);
    EXPECT_THAT(mesh.Recorder().calls, ElementsAre("BeginLink(0)", "DeformMode", "EndLink",         //
                                                   "BeginLink(0)", "ResetLinkOption(0)", "EndLink", //
                                                   "BeginLink(1)", "ResetLinkOption(0)", "EndLink", //
                                                   "BeginLink(2)", "ResetLinkOption(0)", "EndLink", //
                                                   "RemoveLink(1)", "EndLink",                      //
                                                   "SetSkinDisplayValue(-1)"));
}

TEST_F(Admission, RefusedSkinIsAskedForItsModeOnly)
{
    character.AddBones(1);
    RecordedMesh mesh("Body", 2, kDeformAdditive);
    mesh.GetSkin()->AppendLink(character.bones[0], {});
    stage.Admit(&mesh);
    EXPECT_THAT(mesh.Recorder().calls, ElementsAre("BeginLink(0)", "DeformMode", "EndLink", "SetSkinDisplayValue(-1)"));
}

TEST_F(Admission, MergeCallsTheSkinInOrder)
{
    character.AddBones(1);
    RecordedMesh mesh("Body", 2, kDeformNormalise);
    mesh.GetSkin()->AppendLink(character.bones[0], {});
    mesh.GetSkin()->AppendLink(character.bones[0], {});
    TinyCharacter::Weight(&mesh, 0, 1, 0.5);
    TinyCharacter::Weight(&mesh, 1, 0, 0.25);
    AnswerMessages(1);
    const auto data = stage.Admit(&mesh);
    EXPECT_THAT(mesh.Recorder().calls, ElementsAre("BeginLink(0)", "DeformMode", "EndLink",                       //
                                                   "BeginLink(0)", "EntryCount", "EndLink",                       //
                                                   "BeginLink(1)", "EntryCount", "EndLink",                       //
                                                   "BeginLink(0)", "LinkBindTransform", "EntryCount", "EndLink",  //
                                                   "BeginLink(0)", "EndLink",                                     //
                                                   "BeginLink(1)", "FindEntry(1)", "AddEntry(1, 0.5)", "EndLink", //
                                                   "BeginLink(1)", "SetLinkBindTransform", "EndLink", "RemoveLink(0)"));
}

// End of life, identity.

TEST_F(Admission, DestructResetsTheDisplayValueAndFreesEverything)
{
    character.AddBones(1);
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2);
    TinyCharacter::Weight(mesh, 0, 0, 1.0);
    const auto data = stage.Load(mesh);
    mesh->GetSkin()->SetSkinDisplayValue(0.0);
    data->Destruct();
    EXPECT_EQ(mesh->GetSkin()->GetDisplayValue(), -1.0);
    EXPECT_EQ(data->geometry, nullptr);
    EXPECT_EQ(data->strategy, nullptr);
    EXPECT_FALSE(data->IsLoaded());
    EXPECT_TRUE(data->IsDestroyed());
}

TEST_F(Admission, DestroyObjectFreesOnlyWhatTheHostWasHanded)
{
    character.AddBones(1);
    ZModelPolymesh* const mesh = character.AddMesh("Body", 2);
    const auto kept = stage.Admit(mesh);
    kept->DestroyObject();
    EXPECT_TRUE(kept->IsDestroyed());

    auto* const handed = new ZWeightUIModelData(mesh, &stage, false);
    HdlZPlug handle;
    handle.Set(handed);
    handed->SetStatusBits(ZObject::kStatusDestroyFrees);
    handed->DestroyObject();
    EXPECT_FALSE(handle.IsValid());
}

TEST_F(Admission, HandleTurnsInvalidWithTheData)
{
    character.AddBones(1);
    auto data = stage.Admit(character.AddMesh("Body", 2));
    HdlZPlug handle;
    handle.Set(data.get());
    EXPECT_TRUE(handle.IsValid());
    data.reset();
    EXPECT_FALSE(handle.IsValid());
}

TEST_F(Admission, UnregisteredClassIsNoClass)
{
    character.AddBones(1);
    const auto data = stage.Admit(character.AddMesh("Body", 2));
    EXPECT_EQ(data->GetClassId(), ZWeightUIModelData::ClassId);
    EXPECT_FALSE(data->Is(-1));
    EXPECT_TRUE(data->Is(ZObject::ClassId));
}

TEST_F(Admission, SkinHintIsResetOnce)
{
    character.AddBones(1);
    RecordedMesh mesh("Body", 1, kDeformNormalise);
    const auto data = stage.Admit(&mesh);
    mesh.Recorder().calls.clear();
    data->ResetSkinHint();
    data->ResetSkinHint();
    EXPECT_THAT(mesh.Recorder().calls, ElementsAre("SetSkinDisplayValue(-1)"));
    EXPECT_EQ(data->skinHintPending, 0);
}

TEST_F(Admission, CheckMarkIsRecordedOnlyWhenItChanges)
{
    struct Log final : IModelSelectionRecorder
    {
        void RecordModelSelection(ZWeightUIModelData*, bool oldFlag, bool newFlag) override
        {
            flags.emplace_back(oldFlag, newFlag);
        }
        std::vector<std::pair<bool, bool>> flags;
    } log;
    character.AddBones(1);
    const auto data = stage.Admit(character.AddMesh("Body", 2));
    EXPECT_TRUE(data->SetModelSelected(true, &log));
    EXPECT_FALSE(data->SetModelSelected(true, &log));
    EXPECT_TRUE(data->SetModelSelected(false, nullptr));
    EXPECT_THAT(log.flags, ElementsAre(std::pair(false, true)));
    EXPECT_EQ(stage.viewChanges, 2);
}

} // namespace
