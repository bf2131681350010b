// SPDX-License-Identifier: MIT
// What a model answers, and its flags.
#include "TinyModels.h"

namespace {

class Model : public ReportTest
{
};

struct News
{
    std::vector<std::pair<int, ZObject*>> states;
    void OnState(ZObject* sender, ZEvent& event) { states.emplace_back(event.kind, sender); }
};

void CountDrawing(const ZModel& bone, const ZgeVector3*) { const_cast<ZModel&>(bone).SetLocked(true); }

TEST_F(Model, EveryModelAnswersGeometryAndTransform)
{
    ZModel bone("bone", ZModelKind::Bone);
    bone.SetFileTransform(ZgeTranslation({1, 2, 3}));
    auto* const geometry = static_cast<IModelGeometry*>(bone.IQuery(kInterfaceModelGeometry, 0));
    ASSERT_NE(geometry, nullptr);
    EXPECT_EQ(geometry->VertexCount(), 0);
    EXPECT_EQ(geometry->VertexPositions(1), nullptr);
    EXPECT_EQ(geometry->TessellationWidth(), 0);
    EXPECT_EQ(geometry->GlobalTransform()(3, 1), 2);
    EXPECT_EQ(bone.IQuery(kInterfaceSkinLinks, 0), nullptr);
    EXPECT_NE(bone.IQuery(kInterfaceObject, 0), nullptr);
    EXPECT_EQ(bone.IQuery(12345, 0), nullptr);
}

TEST_F(Model, SkinLinksAreAnsweredWithASkinOnly)
{
    const auto mesh = MakePoints("mesh", 3);
    EXPECT_EQ(mesh->IQuery(kInterfaceSkinLinks, 0), nullptr);
    ZSkin* const skin = mesh->MakeSkin(kDeformTotal100);
    EXPECT_EQ(mesh->IQuery(kInterfaceSkinLinks, 0), static_cast<ISkinLinks*>(skin));
    EXPECT_EQ(skin->DeformMode(), 2);
}

TEST_F(Model, BonesAnswerDrawingOnceOneIsInstalled)
{
    ZModel bone("bone", ZModelKind::Bone);
    ZModel node("node");
    ZModel_SetBoneDrawer(nullptr); // the library that draws bones may have been loaded with the program
    EXPECT_EQ(bone.IQuery(kInterfaceSurface, 0), nullptr);
    ZModel_SetBoneDrawer(&CountDrawing);
    EXPECT_EQ(node.IQuery(kInterfaceSurface, 0), nullptr);
    auto* const drawing = static_cast<ISurface*>(bone.IQuery(kInterfaceSurface, 0));
    ASSERT_NE(drawing, nullptr);
    EXPECT_EQ(drawing->ControlPointCount(), 0);
    drawing->Draw(nullptr);
    EXPECT_TRUE(bone.IsLocked());
    ZModel_SetBoneDrawer(nullptr);
    EXPECT_EQ(bone.IQuery(kInterfaceSurface, 0), nullptr);
}

TEST_F(Model, IneligibleWhenHiddenLockedEditedOrWithoutGeometry)
{
    const auto mesh = MakePoints("mesh", 3);
    EXPECT_EQ(mesh->ModelIneligible(), 0);
    mesh->SetHidden(true);
    EXPECT_NE(mesh->ModelIneligible(), 0);
    mesh->SetHidden(false);
    mesh->SetLocked(true);
    EXPECT_NE(mesh->ModelIneligible(), 0);
    mesh->SetLocked(false);
    EXPECT_NE(ZModel("node").ModelIneligible(), 0);
    EXPECT_NE(ZModel("bone", ZModelKind::Bone).ModelIneligible(), 0);
}

TEST_F(Model, BeginAndEndEditCount)
{
    const auto mesh = MakePoints("mesh", 3);
    mesh->Geometry().BeginEdit();
    mesh->Geometry().BeginEdit();
    mesh->Geometry().EndEdit();
    EXPECT_NE(mesh->ModelIneligible(), 0);
    mesh->Geometry().EndEdit();
    EXPECT_EQ(mesh->ModelIneligible(), 0);
    EXPECT_THROW(mesh->Geometry().EndEdit(), ZHostMisuse);
}

TEST_F(Model, SelectingTellsOnceAndUnselectingNothing)
{
    News news;
    ZModel listener("listener");
    listener.EntityPlugStateNotifyRegister(ZMakeHandler<&News::OnState>(&news));
    ZModel bone("bone", ZModelKind::Bone);
    bone.SetSelected(true);
    bone.SetSelected(true);
    bone.SetSelected(false);
    EXPECT_THAT(news.states, testing::ElementsAre(std::pair<int, ZObject*>(kPlugStateSelected, &bone)));
}

TEST_F(Model, AMeshCanBeABoneToo)
{
    const auto mesh = MakePoints("mesh", 3);
    EXPECT_FALSE(mesh->IsBone());
    mesh->SetBone(true);
    EXPECT_TRUE(mesh->IsBone());
    EXPECT_EQ(mesh->GetKind(), ZModelKind::Polymesh);
    EXPECT_TRUE(mesh->HasGeometry());
    EXPECT_TRUE(ZModel("bone", ZModelKind::Bone).IsBone());
}

TEST_F(Model, ClassesAreRegisteredWithTheirBases)
{
    const auto mesh = MakePoints("mesh", 3);
    EXPECT_TRUE(mesh->Is(ZModel::ClassId));
    EXPECT_TRUE(mesh->Is(ZTransformNode::ClassId));
    EXPECT_FALSE(mesh->Is(ZModelNurbs::ClassId));
    EXPECT_EQ(Object_Cast<ZModelPolymesh>(static_cast<ZObject*>(mesh.get())), mesh.get());
    EXPECT_EQ(Object_Cast<ZModelNurbs>(static_cast<ZObject*>(mesh.get())), nullptr);
    EXPECT_STREQ(mesh->GetClassDefinition()->GetName(), "ZModelPolymesh");
}

TEST_F(Model, SelectionColourCanBeChosen)
{
    const float before[3] = {ZModelGlobal::SelectionColor()[0], ZModelGlobal::SelectionColor()[1],
                             ZModelGlobal::SelectionColor()[2]};
    ZModelGlobal::SetSelectionColor(0.25F, 0.5F, 0.75F);
    EXPECT_EQ(ZModelGlobal::SelectionColor()[1], 0.5F);
    ZModelGlobal::SetSelectionColor(before[0], before[1], before[2]);
}

} // namespace
