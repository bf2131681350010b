// SPDX-License-Identifier: MIT
// The skinning tool's library as the host meets it: a file with two functions, a stamp and a typed list.
#include "LoadedLibrary.h"

#include "bcore/ZPluginApi.h"
#include "bcore/ZSession.h"
#include "object/ZUndoStack.h"
#include "zconstraints/ZEvaluateManager.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmanipulator/ZManipulator.h"
#include "zmodel/ZGeometryModels.h"
#include "ztoolkit/ZtListBox.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kClasses[] = {"ZCharacterWeightingConstraint", "ZCharacterWeightingManipulator",
                                    "ZWeightUIModelData"};

class PluginSession : public testing::Test
{
protected:
    PluginSession() : session(std::make_unique<ZSession>(ZSession::Options())) {}
    ZModel* AddCharacter()
    {
        auto bone = std::make_unique<ZModel>("Bone", ZModelKind::Bone);
        bone->SetBone(true);
        ZModel* const link = session->GetScene().AddModel(std::move(bone));
        auto mesh = std::make_unique<ZModelPolymesh>("Body");
        const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
        EXPECT_TRUE(mesh->SetGeometry(positions, 3, {0, 1, 2}, {3}));
        ZSkin* const skin = mesh->MakeSkin(kDeformNormalise);
        skin->AppendLink(link, ZgeMatrix());
        skin->BeginLink(0);
        for (int vertex = 0; vertex < 3; ++vertex)
            skin->AddEntry(vertex, 1.0);
        skin->EndLink();
        return session->GetScene().AddModel(std::move(mesh));
    }
    static ZtListBox* FindList(ZTool& tool, const char* name)
    {
        std::vector<ZtView*> views;
        tool.CollectViews(views);
        for (ZtView* const view : views)
            if (view->GetObjectName() == name)
                return static_cast<ZtListBox*>(view);
        return nullptr;
    }
    static void Drop(ZtView& view, ZModel* model)
    {
        GlobalDragAndDrop_Begin();
        GlobalDragAndDrop_Add(model, 0);
        GlobalDragAndDrop_DropOn(&view);
    }
    std::unique_ptr<ZSession> session;
};

TEST(Plugin, LoadingAloneMakesClassesAndTheCatalogueEntryKnown)
{
    const ZSession session{ZSession::Options()};
    for (const char* const name : kClasses)
        EXPECT_EQ(ZClassDefinition::FindByName(name), nullptr) << name;
    {
        const LoadedLibrary library;
        ASSERT_TRUE(library.IsOpen()) << dlerror();
        EXPECT_EQ(SkinEntries(), 1); // nobody called the entry point yet
        for (const char* const name : kClasses) {
            const ZClassDefinition* const definition = ZClassDefinition::FindByName(name);
            ASSERT_NE(definition, nullptr) << name;
            EXPECT_GE(definition->GetClassId(), 0);
            EXPECT_EQ(definition->GetFactory(), nullptr);
        }
        EXPECT_EQ(ZClassDefinition::FindByName(kClasses[0])->GetBase(), &ZConstraint::ClassDefinition);
        EXPECT_EQ(ZClassDefinition::FindByName(kClasses[1])->GetBase(), &ZManipulator::ClassDefinition);
        EXPECT_EQ(ZClassDefinition::FindByName(kClasses[2])->GetBase(), &ZObject::ClassDefinition);
        EXPECT_LT(ZClassDefinition::FindByName(kClasses[0])->GetClassId(),
                  ZClassDefinition::FindByName(kClasses[1])->GetClassId());
        EXPECT_LT(ZClassDefinition::FindByName(kClasses[1])->GetClassId(),
                  ZClassDefinition::FindByName(kClasses[2])->GetClassId());
        const auto& entry = Object_GetCatalogue().back();
        EXPECT_EQ(entry.description, "Skinning tool");
        EXPECT_EQ(entry.icon, "zapp/zapp-skin.png");
        EXPECT_FALSE(entry.flag);
        EXPECT_EQ(entry.owner, nullptr);
        EXPECT_THAT(ZTool::GetTools(), IsEmpty()); // nothing is made before it is asked for
    }
    for (const char* const name : kClasses)
        EXPECT_EQ(ZClassDefinition::FindByName(name), nullptr) << name;
}

TEST(Plugin, EntryPointDoesNothingForAnyOperationButLoading)
{
    const ZSession session{ZSession::Options()};
    const LoadedLibrary library;
    const auto entryPoint = library.Find<ZPluginEntryPoint>("EntryPointtoolweighting");
    ASSERT_NE(entryPoint, nullptr);
    ASSERT_TRUE(Object_Withdraw("UI/Tools", "Skins"));
    entryPoint(kDllUnload);
    entryPoint(static_cast<kDllOperation>(2));
    entryPoint(static_cast<kDllOperation>(3));
    EXPECT_EQ(SkinEntries(), 0);
    entryPoint(kDllLoad);
    entryPoint(kDllLoad);
    EXPECT_EQ(SkinEntries(), 1);
    entryPoint(kDllUnload); // the entry is not withdrawn by the library
    EXPECT_EQ(SkinEntries(), 1);
}

TEST(Plugin, IsReadyBeforeTheEntryPointWasCalled)
{
    const ZSession session{ZSession::Options()};
    const LoadedLibrary library;
    const auto ready = library.Find<ZPluginInit>("LIBRARY_INIT");
    ASSERT_NE(ready, nullptr);
    EXPECT_TRUE(ready());
}

TEST(Plugin, TwoFactoryCallsGiveTwoTools)
{
    const ZSession session{ZSession::Options()};
    const LoadedLibrary library;
    const ZObjectFactory factory = Object_GetCatalogue().back().factory;
    ZTool* const one = Object_Cast<ZTool>(factory(nullptr, "ignored", nullptr));
    ZTool* const two = Object_Cast<ZTool>(factory(nullptr, nullptr, nullptr));
    ASSERT_NE(one, nullptr);
    ASSERT_NE(two, nullptr);
    EXPECT_NE(one, two);
    EXPECT_TRUE(one->IsAllocated());
    EXPECT_THAT(ZTool::GetTools(), ElementsAre(one, two));
    const std::vector<ZManipulator*> manipulators = ZManipulator_GetManipulatorSet()->GetManipulators();
    EXPECT_EQ(manipulators.size(), 2U);
    one->DestroyObject();
    two->DestroyObject();
    EXPECT_THAT(ZTool::GetTools(), IsEmpty());
    for (ZManipulator* const manipulator : manipulators) {
        EXPECT_TRUE(manipulator->ManipulatorGetHidden());
        EXPECT_FALSE(manipulator->ManipulatorGetActive());
        ZManipulator_GetManipulatorSet()->ManipulatorRemove(manipulator);
    }
}

TEST(Plugin, ExportsTheListAndNothingOfTheTool)
{
    const ZSession session{ZSession::Options()};
    const LoadedLibrary library;
    for (const char* const name :
         {"_ZN22ZWeightUIModelDataListC1Ev", "_ZN22ZWeightUIModelDataListC1ERKS_", "_ZN22ZWeightUIModelDataListC1EOS_",
          "_ZN22ZWeightUIModelDataListD1Ev", "_ZN22ZWeightUIModelDataListaSERKS_", "_ZN22ZWeightUIModelDataListaSEOS_",
          "_ZN19ZObjectListTemplateI18ZWeightUIModelDataEC1Ev", "_ZN19ZObjectListTemplateI18ZWeightUIModelDataED1Ev",
          "_ZNK19ZObjectListTemplateI18ZWeightUIModelDataEixEi",
          "_ZN19ZObjectListTemplateI18ZWeightUIModelDataE3AddEPS0_",
          "_ZN19ZObjectListTemplateI18ZWeightUIModelDataE8InsertAtEiPS0_",
          "_ZN19ZObjectListTemplateI18ZWeightUIModelDataE5SetAtEiPS0_",
          "_ZN19ZObjectListTemplateI18ZWeightUIModelDataE6RemoveEPS0_", "SkindeskPluginStamp"})
        EXPECT_NE(library.Find<void*>(name), nullptr) << name;
    EXPECT_EQ(library.Find<void*>("_ZN23ZToolCharacterWeightingC1Ev"), nullptr);
    EXPECT_EQ(library.Find<void*>("_ZN18ZWeightUIModelData7RefreshEv"), nullptr);
}

TEST_F(PluginSession, LoadsUnloadsAndLoadsAgain)
{
    std::string why;
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(session->LoadPlugin(TOOLWEIGHTING_LIBRARY, &why)) << why;
        EXPECT_EQ(SkinEntries(), 1);
        ZTool* const tool = session->OpenTool("Skins");
        ASSERT_NE(tool, nullptr);
        ZModel* const body = AddCharacter();
        Drop(*FindList(*tool, "ModelListUI"), body);
        EXPECT_EQ(FindList(*tool, "ListBonesList")->GetRowText(0), "Bone");
        EXPECT_NE(body->ModelIneligible(), 0);
        EXPECT_TRUE(session->UnloadPlugin(TOOLWEIGHTING_LIBRARY));
        EXPECT_EQ(SkinEntries(), 0);
        EXPECT_THAT(ZTool::GetTools(), IsEmpty());
        EXPECT_THAT(ZManipulator_GetManipulatorSet()->GetManipulators(), IsEmpty());
        EXPECT_THAT(ZEvaluateManager::TheOne()->GetConstraints(), IsEmpty());
        EXPECT_EQ(ZClassDefinition::FindByName("ZWeightUIModelData"), nullptr);
        EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), 0);
        EXPECT_EQ(body->ModelIneligible(), 0);
        EXPECT_EQ(session->OpenTool("Skins"), nullptr);
        session->PressKey('W', 0); // nobody of the library hears it
    }
}

TEST_F(PluginSession, UnloadingInTheMiddleOfAPickLeavesTheHostWhole)
{
    ASSERT_TRUE(session->LoadPlugin(TOOLWEIGHTING_LIBRARY));
    ZTool* const tool = session->OpenTool("Skins");
    Drop(*FindList(*tool, "ModelListUI"), AddCharacter());
    session->GetViewer().Frame({});
    session->GetViewer().Press(5, 5, 1, 0);
    session->GetViewer().Move(400, 300);
    EXPECT_TRUE(session->UnloadPlugin(TOOLWEIGHTING_LIBRARY));
    session->GetViewer().Move(500, 400);
    session->GetViewer().Release(500, 400);
    session->ClearScene();
}

TEST_F(PluginSession, ToolsAreIndependent)
{
    ASSERT_TRUE(session->LoadPlugin(TOOLWEIGHTING_LIBRARY));
    ZTool* const one = session->OpenTool("Skins");
    ZTool* const two = session->OpenTool("Skins");
    ASSERT_NE(one, two);
    Drop(*FindList(*one, "ModelListUI"), AddCharacter());
    EXPECT_EQ(FindList(*one, "ModelListUI")->GetRowText(0), "Body");
    EXPECT_EQ(FindList(*two, "ModelListUI")->GetRowText(0), "Drop models here");
    session->CloseTool(one);
    EXPECT_EQ(session->GetOpenTools().size(), 1U);
}

TEST_F(PluginSession, LibraryWithoutAnEntryPointIsRefusedByName)
{
    std::string why;
    EXPECT_FALSE(session->LoadPlugin(PLAIN_LIBRARY, &why));
    EXPECT_THAT(why, testing::HasSubstr("zbaselib"));
    EXPECT_THAT(session->GetLoadedPlugins(), IsEmpty());
}

} // namespace
