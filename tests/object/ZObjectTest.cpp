// SPDX-License-Identifier: MIT
// Identity, life and handles.
#include "object/ZObject.h"
#include "object/ZUndoStack.h"

#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <vector>

namespace {
/// Writes down the steps of its life.
class Mortal : public ZObject
{
public:
    explicit Mortal(std::vector<std::string>& steps) : ZObject("mortal"), m_steps(steps) {}
    ~Mortal() override { m_steps.push_back("freed"); }
    void SystemDetach() override
    {
        m_steps.push_back("detached");
        ZObject::SystemDetach();
    }
    void Destruct() override
    {
        m_steps.push_back("destructed");
        ZObject::Destruct();
    }

private:
    std::vector<std::string>& m_steps;
};

/// An interface that is no host object.
class Foreign : public IObject
{
public:
    void* IQuery(int, int) override { return nullptr; }
};
} // namespace

TEST(Object, AnswersItselfForIdZeroOnly)
{
    ZObject object("o");
    EXPECT_EQ(object.IQuery(0, 0), static_cast<IObject*>(&object));
    EXPECT_EQ(object.IQuery(kInterfaceUndo, 0), nullptr);
    EXPECT_EQ(Object_FromInterface(&object), &object);
    Foreign foreign;
    EXPECT_EQ(Object_FromInterface(&foreign), nullptr);
    EXPECT_EQ(Object_FromInterface(nullptr), nullptr);
}

TEST(Object, TheLabelIsTheNameUntilItIsSet)
{
    ZObject object("spine");
    EXPECT_STREQ(object.GetObjectLabelName(), "spine");
    object.SetObjectLabelName("Spine (lower)");
    EXPECT_STREQ(object.GetObjectLabelName(), "Spine (lower)");
    EXPECT_EQ(object.GetObjectName(), "spine");
    EXPECT_EQ(ZObject(nullptr).GetObjectName(), "");
}

TEST(ObjectLife, DestroyObjectFreesOnlyWhatTheHostOwns)
{
    std::vector<std::string> steps;
    auto* owned = new Mortal(steps);
    owned->SetStatusBits(ZObject::kStatusDestroyFrees);
    owned->DestroyObject();
    EXPECT_THAT(steps, testing::ElementsAre("detached", "destructed", "freed"));

    steps.clear();
    {
        Mortal kept(steps);
        kept.DestroyObject();
        EXPECT_THAT(steps, testing::ElementsAre("detached", "destructed"));
        EXPECT_TRUE(kept.IsDestroyed());
        EXPECT_NE(kept.GetStatus() & ZObject::kStatusBySystem, 0u);
    }
    EXPECT_EQ(steps.back(), "freed");
}

TEST(ObjectLife, DestroyedTwiceIsHarmless)
{
    std::vector<std::string> steps;
    Mortal object(steps);
    object.DestroyObject();
    object.DestroyObject();
    EXPECT_TRUE(object.IsDestroyed());
}

TEST(Handle, DiesWithItsPlug)
{
    HdlZPlug handle;
    EXPECT_FALSE(handle.IsValid());
    EXPECT_EQ(handle.Get(), nullptr);
    {
        ZObject object("o");
        handle.Set(&object);
        EXPECT_TRUE(handle.IsValid());
        ASSERT_NE(handle.Get(), nullptr);
        EXPECT_EQ(handle.Get()->GetPlugOwner(), &object);
    }
    EXPECT_FALSE(handle.IsValid());
    EXPECT_EQ(handle.Get(), nullptr);
}

TEST(Handle, IsCutWhenTheObjectIsTakenOutOfUse)
{
    ZObject object("o");
    HdlZPlug before;
    before.Set(&object);
    const HdlZPlug copy = before;
    object.PrepareDestruct();
    object.PrepareDestruct();
    HdlZPlug after;
    after.Set(&object);
    EXPECT_FALSE(before.IsValid());
    EXPECT_FALSE(copy.IsValid());
    EXPECT_FALSE(after.IsValid());
}

TEST(Handle, SetAfterACutOfAnObjectWithoutHandlesIsInvalid)
{
    ZObject object("o"), other("other");
    object.PrepareDestruct();
    HdlZPlug handle;
    handle.Set(&object);
    EXPECT_FALSE(handle.IsValid());
    handle.Set(&other);
    EXPECT_TRUE(handle.IsValid());
    handle.Set(nullptr);
    EXPECT_FALSE(handle.IsValid());
}
