// SPDX-License-Identifier: MIT
// What the library asks of the host when it comes, and what becomes of it when the host or memory says no.
#include "LoadedLibrary.h"
#include "ScarceMemory.h"

#include "bcore/ZPluginApi.h"
#include "bcore/ZSession.h"
#include "zbaselib/ZReport.h"
#include "zconstraints/ZEvaluateManager.h"
#include "zdesktop/ZTool.h"
#include "zmanipulator/ZManipulator.h"
#include "ztoolkit/ZToolKit.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Stands between the library and the host's catalogue while it lives: keeps what is registered, and refuses if told.
struct Registrar
{
    struct Call
    {
        std::string path, name, description, icon;
        ZObjectFactory factory;
        bool flag;
        ZObject* owner;
    };
    explicit Registrar(bool refusing) : refuses(refusing) { s_current = this; }
    ~Registrar() { s_current = nullptr; }
    Registrar(const Registrar&) = delete;
    Registrar& operator=(const Registrar&) = delete;

    bool refuses;
    std::vector<Call> calls;
    static Registrar* s_current;
};

Registrar* Registrar::s_current = nullptr;

} // namespace

bool Object_Register(const char* path, const char* name, const char* description, ZObjectFactory factory, bool flag,
                     const char* icon, ZObject* owner)
{
    if (Registrar* const registrar = Registrar::s_current) {
        registrar->calls.push_back({path, name, description, icon, factory, flag, owner});
        if (registrar->refuses)
            return false;
    }
    const auto host = reinterpret_cast<decltype(&Object_Register)>(
        dlsym(RTLD_NEXT, "_Z15Object_RegisterPKcS0_S0_PFP7IObjectS2_S0_PvEbS0_P7ZObject"));
    return host != nullptr && host(path, name, description, factory, flag, icon, owner);
}

namespace {

class PluginRegistration : public testing::Test
{
protected:
    PluginRegistration()
    {
        ZReport_ClearWarnings();
        ZToolKit_ClearMessages();
    }
    ZSession session{ZSession::Options()};
};

TEST_F(PluginRegistration, IsOneCallWithTheWholeCatalogueRecord)
{
    const Registrar registrar(false);
    const LoadedLibrary library;
    ASSERT_THAT(registrar.calls, SizeIs(1));
    const Registrar::Call& call = registrar.calls.front();
    EXPECT_EQ(call.path, "UI/Tools");
    EXPECT_EQ(call.name, "Skins");
    EXPECT_EQ(call.description, "Skinning tool");
    EXPECT_NE(call.factory, nullptr);
    EXPECT_FALSE(call.flag);
    EXPECT_EQ(call.icon, "zapp/zapp-skin.png");
    EXPECT_EQ(call.owner, nullptr);
}

TEST_F(PluginRegistration, TheEntryPointCallsTheHostForLoadingAlone)
{
    const Registrar registrar(false);
    const LoadedLibrary library;
    const auto entryPoint = library.Find<ZPluginEntryPoint>("EntryPointtoolweighting");
    ASSERT_NE(entryPoint, nullptr);
    const size_t entries = Object_GetCatalogue().size();
    for (const int operation : {1, 2, 3})
        entryPoint(static_cast<kDllOperation>(operation));
    EXPECT_THAT(registrar.calls, SizeIs(1)) << "the one of the loading";
    EXPECT_EQ(Object_GetCatalogue().size(), entries);
    EXPECT_THAT(ZTool::GetTools(), IsEmpty());
    EXPECT_THAT(ZManipulator_GetManipulatorSet()->GetManipulators(), IsEmpty());
    EXPECT_THAT(ZEvaluateManager::TheOne()->GetConstraints(), IsEmpty());
    entryPoint(kDllLoad);
    EXPECT_THAT(registrar.calls, SizeIs(2));
}

TEST_F(PluginRegistration, ARefusedOneLeavesTheLibraryLoadedWithoutItsToolAndSaysNothing)
{
    const Registrar registrar(true);
    const LoadedLibrary library;
    ASSERT_TRUE(library.IsOpen());
    EXPECT_THAT(registrar.calls, SizeIs(1));
    EXPECT_EQ(SkinEntries(), 0);
    EXPECT_NE(ZClassDefinition::FindByName("ZWeightUIModelData"), nullptr);
    EXPECT_TRUE(library.Find<ZPluginInit>("LIBRARY_INIT")());
    EXPECT_THAT(ZReport_Warnings(), IsEmpty());
    EXPECT_THAT(ZToolKit_GetMessages(), IsEmpty());
    EXPECT_EQ(session.OpenTool("Skins"), nullptr);
}

TEST_F(PluginRegistration, TheFactoryWithoutMemoryAnswersNothing)
{
    const LoadedLibrary library;
    const ZObjectFactory factory = Object_GetCatalogue().back().factory;
    {
        const ScarceMemory scarce(ScarceMemory::kAnySize);
        EXPECT_EQ(factory(nullptr, nullptr, nullptr), nullptr);
        EXPECT_EQ(scarce.Refused(), 1);
        EXPECT_THAT(ZTool::GetTools(), IsEmpty());
        EXPECT_EQ(session.OpenTool("Skins"), nullptr);
    }
    EXPECT_THAT(ZReport_Warnings(), ElementsAre("The tool \"Skins\" could not be made."));
    ZTool* const tool = session.OpenTool("Skins");
    ASSERT_NE(tool, nullptr); // nothing was left half made
    session.CloseTool(tool);
}

TEST_F(PluginRegistration, TheHostIdentifiesAndNamesWhatTheToolMakes)
{
    const LoadedLibrary library;
    ZTool* const tool = session.OpenTool("Skins");
    ASSERT_NE(tool, nullptr);
    const auto manipulators = ZManipulator_GetManipulatorSet()->GetManipulators();
    const auto constraints = ZEvaluateManager::TheOne()->GetConstraints();
    ASSERT_THAT(manipulators, SizeIs(1));
    ASSERT_THAT(constraints, SizeIs(1));
    const auto expectIs = [](ZObject& object, const char* name, ZClassDefinition& base) {
        ZClassDefinition* const definition = ZClassDefinition::FindByName(name);
        ASSERT_NE(definition, nullptr) << name;
        EXPECT_EQ(object.GetClassDefinition(), definition);
        EXPECT_EQ(object.GetClassId(), definition->GetClassId());
        EXPECT_TRUE(object.Is(definition->GetClassId()));
        EXPECT_TRUE(object.Is(base.GetClassId()));
        EXPECT_EQ(object.FindPropertyByName("no such property"), 0U);
        EXPECT_EQ(object.FindPropertyByName("no such property"), 0U); // now from its own cache
    };
    expectIs(*manipulators.front(), "ZCharacterWeightingManipulator", ZManipulator::ClassDefinition);
    expectIs(*constraints.front(), "ZCharacterWeightingConstraint", ZConstraint::ClassDefinition);
    EXPECT_EQ(manipulators.front()->GetObjectName(), "Skin");
    EXPECT_EQ(constraints.front()->GetObjectName(), "ZCharacterWeightingConstraint");
    session.CloseTool(tool);
}

} // namespace
