// SPDX-License-Identifier: MIT
// News about plugs, with handlers that come and go while they are called.
#include "object/ZEntity.h"
#include "zbaselib/ZReport.h"

#include <functional>
#include <gmock/gmock.h>
#include <memory>

namespace {
/// Counts what it hears and then does something.
struct Listener
{
    int heard = 0;
    ZObject* sender = nullptr;
    int kind = 0;
    std::function<void()> then;

    void OnNews(ZObject* from, ZEvent& event)
    {
        ++heard;
        sender = from;
        kind = event.kind;
        if (then)
            then();
    }
    ZHandler Handler() { return ZMakeHandler<&Listener::OnNews>(this); }
};

void TellDeleted(ZObject* owner)
{
    ZPlugEvent event(kPlugNotifyDeleted, owner, owner);
    ZEntity::Notify(event);
}
} // namespace

TEST(EntityNews, ReachesEveryEntityWithTheOwnerAsSender)
{
    ZEntity a("a"), b("b"), gone("gone");
    Listener one, two, state;
    a.EntityPlugNotifyRegister(one.Handler());
    b.EntityPlugNotifyRegister(two.Handler());
    a.EntityPlugStateNotifyRegister(state.Handler());
    TellDeleted(&gone);
    EXPECT_EQ(one.heard, 1);
    EXPECT_EQ(two.heard, 1);
    EXPECT_EQ(state.heard, 0);
    EXPECT_EQ(one.sender, &gone);
    EXPECT_EQ(one.kind, 8);
    ZPlugEvent selected(kPlugStateSelected, &gone, &gone);
    ZEntity::NotifyState(selected);
    EXPECT_EQ(state.heard, 1);
    EXPECT_EQ(one.heard, 1);
}

TEST(EntityNews, TheSameHandlerTwiceIsMisuse)
{
    ZEntity a("a"), b("b");
    Listener one;
    a.EntityPlugNotifyRegister(one.Handler());
    EXPECT_THROW(a.EntityPlugNotifyRegister(one.Handler()), ZHostMisuse);
    EXPECT_THROW(a.EntityPlugNotifyRegister(ZHandler()), ZHostMisuse);
    b.EntityPlugNotifyRegister(one.Handler());
    TellDeleted(&a);
    EXPECT_EQ(one.heard, 2);
}

TEST(EntityNews, RemovingAnUnknownHandlerIsIgnored)
{
    ZEntity a("a");
    Listener one;
    a.EntityPlugNotifyUnregister(one.Handler());
    a.EntityPlugStateNotifyUnregister(one.Handler());
    a.EntityPlugNotifyRegister(one.Handler());
    a.EntityPlugNotifyUnregister(one.Handler());
    TellDeleted(&a);
    EXPECT_EQ(one.heard, 0);
}

TEST(EntityNews, AHandlerRemovedDuringTheNewsIsNotCalled)
{
    ZEntity a("a");
    Listener first, second;
    a.EntityPlugNotifyRegister(first.Handler());
    a.EntityPlugNotifyRegister(second.Handler());
    first.then = [&] { a.EntityPlugNotifyUnregister(second.Handler()); };
    TellDeleted(&a);
    EXPECT_EQ(first.heard, 1);
    EXPECT_EQ(second.heard, 0);
}

TEST(EntityNews, AHandlerAddedDuringTheNewsIsCalledFromTheNextOn)
{
    ZEntity a("a");
    Listener first, late;
    a.EntityPlugNotifyRegister(first.Handler());
    first.then = [&] {
        if (first.heard == 1)
            a.EntityPlugNotifyRegister(late.Handler());
    };
    TellDeleted(&a);
    EXPECT_EQ(late.heard, 0);
    TellDeleted(&a);
    EXPECT_EQ(late.heard, 1);
}

TEST(EntityNews, AHandlerMayRemoveItself)
{
    ZEntity a("a");
    Listener first, second;
    a.EntityPlugNotifyRegister(first.Handler());
    a.EntityPlugNotifyRegister(second.Handler());
    first.then = [&] { a.EntityPlugNotifyUnregister(first.Handler()); };
    TellDeleted(&a);
    TellDeleted(&a);
    EXPECT_EQ(first.heard, 1);
    EXPECT_EQ(second.heard, 2);
}

TEST(EntityNews, AHandlerMayDeleteEntitiesAndListeners)
{
    ZEntity a("a");
    auto doomed = std::make_unique<ZEntity>("doomed");
    auto listener = std::make_unique<Listener>();
    Listener first, last;
    a.EntityPlugNotifyRegister(first.Handler());
    doomed->EntityPlugNotifyRegister(listener->Handler());
    a.EntityPlugNotifyRegister(last.Handler());
    first.then = [&] {
        doomed.reset();
        listener.reset();
    };
    TellDeleted(&a);
    EXPECT_EQ(last.heard, 1);
}

TEST(EntityNews, NewsMayNest)
{
    ZEntity a("a");
    Listener first, second;
    a.EntityPlugNotifyRegister(first.Handler());
    a.EntityPlugNotifyRegister(second.Handler());
    first.then = [&] {
        if (first.heard > 1)
            return;
        a.EntityPlugNotifyUnregister(second.Handler());
        TellDeleted(&a);
        a.EntityPlugNotifyRegister(second.Handler());
    };
    TellDeleted(&a);
    EXPECT_EQ(first.heard, 2);
    EXPECT_EQ(second.heard, 0);
    TellDeleted(&a);
    EXPECT_EQ(second.heard, 1);
}

TEST(EntityNews, AThrowingHandlerLeavesTheListWhole)
{
    ZEntity a("a");
    Listener first, second;
    a.EntityPlugNotifyRegister(first.Handler());
    a.EntityPlugNotifyRegister(second.Handler());
    first.then = [&] {
        a.EntityPlugNotifyUnregister(first.Handler());
        throw std::runtime_error("no");
    };
    EXPECT_THROW(TellDeleted(&a), std::runtime_error);
    TellDeleted(&a);
    EXPECT_EQ(first.heard, 1);
    EXPECT_EQ(second.heard, 1);
}

TEST(EntityNews, ADestroyedEntityHearsNothing)
{
    ZEntity a("a");
    Listener one;
    a.EntityPlugNotifyRegister(one.Handler());
    a.DestroyObject();
    TellDeleted(&a);
    EXPECT_EQ(one.heard, 0);
}
