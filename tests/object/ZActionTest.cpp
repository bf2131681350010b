// SPDX-License-Identifier: MIT
// Actions, interactions, held keys, shortcuts and the catalogue.
#include "object/ZAction.h"
#include "object/ZCatalogue.h"
#include "object/ZShortCutKeyManager.h"
#include "zbaselib/ZReport.h"

#include <functional>
#include <gmock/gmock.h>
#include <memory>

TEST(Action, OneIsFrameSelectionOnKeyF)
{
    const ZActionDefinition* action = Object_GetActionManager()->QueryAction(1);
    ASSERT_NE(action, nullptr);
    EXPECT_EQ(action->GetName(), "Frame selection");
    EXPECT_TRUE(action->IsAction(70, 'F', 0));
    EXPECT_FALSE(action->IsAction(70, 'F', kModifierShift));
    EXPECT_FALSE(action->IsAction(71, 'F', 0));
    EXPECT_FALSE(action->IsAction(70, 'G', 0));
    EXPECT_EQ(Object_GetActionManager()->QueryAction(2), nullptr);
}

TEST(Interaction, ButtonsAndModifiersAreTheDesks)
{
    struct Expected
    {
        int id, button, modifiers;
        bool onRelease;
    };
    const Expected table[] = {
        {100018, kButtonLeft, 0, true},
        {100019, kButtonLeft, 0, false},
        {100026, kButtonLeft, kModifierShift, true},
        {100027, kButtonLeft, kModifierShift, false},
        {100020, kButtonLeft, kModifierControl, true},
        {100021, kButtonLeft, kModifierControl, false},
        {100022, kButtonLeft, kModifierControl | kModifierShift, true},
        {100023, kButtonLeft, kModifierControl | kModifierShift, false},
        {100001, kButtonMiddle, 0, true},
        {100036, kButtonMiddle, kModifierShift, true},
    };
    for (const Expected& expected : table) {
        const ZInteractionDefinition* interaction = Object_GetActionManager()->QueryInteraction(expected.id);
        ASSERT_NE(interaction, nullptr) << expected.id;
        EXPECT_TRUE(interaction->IsInteractionButton(expected.button, expected.modifiers)) << expected.id;
        EXPECT_FALSE(interaction->IsInteractionButton(expected.button, expected.modifiers | kModifierAlt));
        EXPECT_FALSE(interaction->IsInteractionButton(kButtonRight, expected.modifiers));
        EXPECT_EQ(interaction->CanInteractOnRelease(), expected.onRelease) << expected.id;
    }
    EXPECT_EQ(Object_GetActionManager()->QueryInteraction(1), nullptr);
}

TEST(Interaction, IsInProgressFromTheFirstDragUntilDone)
{
    ZInteractionDefinition* interaction = Object_GetActionManager()->QueryInteraction(100019);
    EXPECT_FALSE(interaction->IsInProgress());
    interaction->Drag();
    EXPECT_TRUE(interaction->IsInProgress());
    interaction->Done();
    EXPECT_FALSE(interaction->IsInProgress());
}

TEST(KeyState, KeysAreHeldUntilReleased)
{
    Object_SetKeyState('X', true);
    EXPECT_TRUE(Object_GetCurrentKeyState('X', true));
    EXPECT_TRUE(Object_GetCurrentKeyState('X', false));
    EXPECT_FALSE(Object_GetCurrentKeyState(4, true));
    Object_SetKeyState(4, true);
    Object_SetKeyState('X', false);
    EXPECT_FALSE(Object_GetCurrentKeyState('X', true));
    EXPECT_TRUE(Object_GetCurrentKeyState(4, true));
    Object_ClearKeyStates();
    EXPECT_FALSE(Object_GetCurrentKeyState(4, true));
}

namespace {
struct KeyListener
{
    std::vector<std::string>* calls;
    std::string name;
    bool acts = false;
    std::function<void()> then = {};

    void OnKey(ZObject*, ZEvent& event)
    {
        auto& key = static_cast<ZShortCutEvent&>(event);
        calls->push_back(name + std::to_string(key.codes[0]) + "," + std::to_string(key.codes[1]) + "," +
                         std::to_string(key.codes[2]));
        key.handled = key.handled || acts;
        if (then)
            then();
    }
    ZHandler Handler() { return ZMakeHandler<&KeyListener::OnKey>(this); }
};

class ShortCut : public testing::Test
{
protected:
    IShortCutRegistration& Keys()
    {
        return *static_cast<IShortCutRegistration*>(Object_GetShortCutKeyManager()->IQuery(3, 0));
    }
    bool Send(int id = kShortCutKeyEvent) { return Object_SendShortCut(id, 70, 'F', 1); }
    std::vector<std::string> m_calls;
};
} // namespace

TEST_F(ShortCut, LargerPrioritiesAreCalledFirstEqualOnesInOrder)
{
    ZObject owner("o");
    KeyListener a{&m_calls, "a"}, b{&m_calls, "b"}, c{&m_calls, "c"};
    Keys().Register(513, &owner, a.Handler(), 5);
    Keys().Register(513, &owner, b.Handler(), 5);
    Keys().Register(513, &owner, c.Handler(), 2147483647);
    EXPECT_FALSE(Send());
    EXPECT_THAT(m_calls, testing::ElementsAre("c70,70,1", "a70,70,1", "b70,70,1"));
    EXPECT_FALSE(Send(514));
    EXPECT_EQ(m_calls.size(), 3u);
}

TEST_F(ShortCut, OneThatActedIsSaidAndLaterOnesAreStillCalled)
{
    ZObject owner("o");
    KeyListener a{&m_calls, "a", true}, b{&m_calls, "b"};
    Keys().Register(513, &owner, a.Handler(), 1);
    Keys().Register(513, &owner, b.Handler(), 0);
    EXPECT_TRUE(Send());
    EXPECT_EQ(m_calls.size(), 2u);
}

TEST_F(ShortCut, HandlersMayUnregisterEachOtherWhileCalled)
{
    ZObject owner("o");
    KeyListener a{&m_calls, "a"}, b{&m_calls, "b"};
    Keys().Register(513, &owner, a.Handler(), 1);
    Keys().Register(513, &owner, b.Handler(), 0);
    a.then = [&] {
        Keys().Unregister(513, &owner, b.Handler());
        Keys().Unregister(513, &owner, a.Handler());
    };
    Send();
    Send();
    EXPECT_EQ(m_calls.size(), 1u);
}

TEST_F(ShortCut, AnOwnerThatIsGoneIsNotCalled)
{
    auto owner = std::make_unique<ZObject>("o");
    KeyListener a{&m_calls, "a"};
    Keys().Register(513, owner.get(), a.Handler(), 1);
    owner.reset();
    Send();
    EXPECT_TRUE(m_calls.empty());
}

TEST_F(ShortCut, TheSameTwiceIsMisuseAndAnUnknownRemovalIsIgnored)
{
    ZObject owner("o"), other("p");
    KeyListener a{&m_calls, "a"};
    Keys().Unregister(513, &owner, a.Handler());
    Keys().Register(513, &owner, a.Handler(), 1);
    EXPECT_THROW(Keys().Register(513, &owner, a.Handler(), 2), ZHostMisuse);
    EXPECT_THROW(Keys().Register(513, &owner, ZHandler(), 2), ZHostMisuse);
    Keys().Register(513, &other, a.Handler(), 1);
    Send();
    EXPECT_EQ(m_calls.size(), 2u);
}

namespace {
IObject* MakeNothing(IObject*, const char*, void*) { return nullptr; }
} // namespace

TEST(Catalogue, TheSameEntryTwiceChangesNothingAndAnswersTrue)
{
    const size_t before = Object_GetCatalogue().size();
    EXPECT_TRUE(Object_Register("UI/Tools", "Test", "First", MakeNothing, false, "icon.png", nullptr));
    EXPECT_TRUE(Object_Register("UI/Tools", "Test", "Second", MakeNothing, false, "icon.png", nullptr));
    ASSERT_EQ(Object_GetCatalogue().size(), before + 1);
    EXPECT_EQ(Object_GetCatalogue().back().description, "First");
    EXPECT_TRUE(Object_Register("UI/Other", "Test", "Third", MakeNothing, false, nullptr, nullptr));
    EXPECT_EQ(Object_GetCatalogue().size(), before + 2);
    EXPECT_TRUE(Object_Withdraw("UI/Tools", "Test"));
    EXPECT_FALSE(Object_Withdraw("UI/Tools", "Test"));
    EXPECT_TRUE(Object_Withdraw("UI/Other", "Test"));
    EXPECT_EQ(Object_GetCatalogue().size(), before);
}

TEST(Catalogue, AnEntryNeedsPathNameAndFactory)
{
    EXPECT_FALSE(Object_Register(nullptr, "Test", "", MakeNothing, false, "", nullptr));
    EXPECT_FALSE(Object_Register("", "Test", "", MakeNothing, false, "", nullptr));
    EXPECT_FALSE(Object_Register("UI/Tools", nullptr, "", MakeNothing, false, "", nullptr));
    EXPECT_FALSE(Object_Register("UI/Tools", "", "", MakeNothing, false, "", nullptr));
    EXPECT_FALSE(Object_Register("UI/Tools", "Test", "", nullptr, false, "", nullptr));
    EXPECT_FALSE(Object_Withdraw(nullptr, nullptr));
}
