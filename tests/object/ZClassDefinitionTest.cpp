// SPDX-License-Identifier: MIT
// The class registry and the property look-up that every registered class forwards to.
#include "object/ZEntity.h"
#include "object/ZObject.h"
#include "zbaselib/ZReport.h"

#include <gmock/gmock.h>
#include <memory>

namespace {
/// A class whose definition can be made and destroyed, as that of a library that is loaded and unloaded.
class Guest : public ZObject
{
public:
    inline static int ClassId = -1;
    inline static ZClassDefinition* definition = nullptr;
    int GetClassId() const override { return ClassId; }
    ZClassDefinition* GetClassDefinition() const override { return definition; }
    bool Is(int classId) const override { return (classId >= 0 && classId == ClassId) || ZObject::Is(classId); }
};

std::unique_ptr<ZClassDefinition> LoadGuest()
{
    auto definition = std::make_unique<ZClassDefinition>(Guest::ClassId, "Guest", &ZObject::ClassDefinition, nullptr);
    Guest::definition = definition.get();
    Guest::ClassId = definition->RegisterClassId();
    return definition;
}
} // namespace

TEST(ClassDefinition, TheIdIsTheSameAtEveryCall)
{
    int slot = 7;
    ZClassDefinition definition(slot, "Once", &ZObject::ClassDefinition, nullptr);
    EXPECT_EQ(slot, -1);
    EXPECT_EQ(definition.GetClassId(), -1);
    const int id = definition.RegisterClassId();
    EXPECT_GE(id, 0);
    EXPECT_EQ(definition.RegisterClassId(), id);
    EXPECT_EQ(definition.GetClassId(), id);
}

TEST(ClassDefinition, HostClassesKnowTheirBases)
{
    const ZEntity entity("e");
    EXPECT_TRUE(entity.Is(ZEntity::ClassId));
    EXPECT_TRUE(entity.Is(ZObjectStorable::ClassId));
    EXPECT_TRUE(entity.Is(ZObject::ClassId));
    EXPECT_FALSE(entity.Is(-1));
    EXPECT_FALSE(ZObject("o").Is(ZEntity::ClassId));
    EXPECT_TRUE(ZEntity::ClassDefinition.IsA(ZObjectSet::ClassId));
    EXPECT_FALSE(ZEntity::ClassDefinition.IsA(-1));
    EXPECT_STREQ(entity.GetClassGroup(), "ZEntity");
}

TEST(ClassDefinition, AnUnloadedClassLeavesTheRegistryAndItsIdIsNeverGivenAgain)
{
    auto definition = LoadGuest();
    const int first = Guest::ClassId;
    EXPECT_EQ(ZClassDefinition::FindByName("Guest"), definition.get());
    definition.reset();
    EXPECT_EQ(ZClassDefinition::FindByName("Guest"), nullptr);
    EXPECT_EQ(Guest::ClassId, -1);
    definition = LoadGuest();
    EXPECT_NE(Guest::ClassId, first);
    EXPECT_EQ(ZClassDefinition::FindByName("Guest"), definition.get());
}

TEST(ClassDefinition, AnUnregisteredClassIsNoClass)
{
    EXPECT_EQ(Object_Cast<Guest>(static_cast<ZObject*>(nullptr)), nullptr);
    auto definition = LoadGuest();
    Guest guest;
    EXPECT_EQ(Object_Cast<Guest>(static_cast<ZObject*>(&guest)), &guest);
    EXPECT_EQ(Object_Cast<Guest>(static_cast<IObject*>(&guest)), &guest);
    Guest::ClassId = -1;
    EXPECT_EQ(Object_Cast<Guest>(static_cast<ZObject*>(&guest)), nullptr);
}

TEST(ClassDefinition, ASecondClassOfOneNameIsSaid)
{
    ZReport_ClearWarnings();
    auto first = LoadGuest();
    int slot = -1;
    ZClassDefinition second(slot, "Guest", &ZObject::ClassDefinition, nullptr);
    EXPECT_EQ(ZReport_Warnings().size(), 1u);
    EXPECT_EQ(ZClassDefinition::FindByName("Guest"), first.get());
    EXPECT_NE(second.RegisterClassId(), first->GetClassId());
    ZReport_ClearWarnings();
}

TEST(ClassDefinition, LooksUpNothingByNull)
{
    EXPECT_EQ(ZClassDefinition::FindByName(nullptr), nullptr);
    EXPECT_EQ(ZObject::ClassDefinition.FindProperty(nullptr), 0u);
    EXPECT_THROW(ZObject::ClassDefinition.AddProperty("x", 0), ZHostMisuse);
    EXPECT_THROW(ZObject::ClassDefinition.AddProperty(nullptr, 1), ZHostMisuse);
}

TEST(PropertyLookUp, FindsOwnAndInheritedProperties)
{
    auto definition = LoadGuest();
    int slot = -1;
    ZClassDefinition derived(slot, "Derived", definition.get(), nullptr);
    definition->AddProperty("size", 11);
    definition->AddProperty("colour", 12);
    derived.AddProperty("size", 21);
    EXPECT_EQ(derived.FindProperty("size"), 21u);
    EXPECT_EQ(derived.FindProperty("colour"), 12u);
    EXPECT_EQ(derived.FindProperty("weight"), 0u);
    definition->AddProperty("colour", 13);
    EXPECT_EQ(derived.FindProperty("colour"), 13u);
}

TEST(PropertyLookUp, TheCacheFillsAndOutlivesTheCallersText)
{
    auto definition = LoadGuest();
    definition->AddProperty("size", 11);
    Guest guest;
    ZPropertyMap cache;
    {
        const std::string text = "size";
        EXPECT_EQ(guest.FastFindPropertyByName(cache, text.c_str()), 11u);
    }
    EXPECT_EQ(cache.GetCount(), 1);
    EXPECT_EQ(guest.FastFindPropertyByName(cache, "size"), 11u);
    EXPECT_EQ(guest.FastFindPropertyByName(cache, "unknown"), 0u);
    EXPECT_EQ(guest.FastFindPropertyByName(cache, nullptr), 0u);
    EXPECT_EQ(cache.GetCount(), 1);
    definition.reset();
    ASSERT_NE(cache.Find("size"), nullptr);
    EXPECT_EQ(*cache.Find("size"), 11u);
}
