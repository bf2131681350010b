// SPDX-License-Identifier: MIT
#include "zxtrobject/ZXtrObject.h"
#include "zbaselib/ZReport.h"

#include <functional>
#include <gmock/gmock.h>
#include <vector>

namespace {
struct Listener
{
    std::vector<int> kinds;
    std::function<void()> then;
    ~Listener() { ZXtrObject_Unregister(Handler()); }

    void OnScene(ZObject* sender, ZEvent& event)
    {
        EXPECT_EQ(sender, nullptr);
        kinds.push_back(event.kind);
        if (then)
            then();
    }
    ZHandler Handler() { return ZMakeHandler<&Listener::OnScene>(this); }
};
} // namespace

TEST(SceneEvents, EveryHandlerHearsEveryKind)
{
    Listener a, b;
    ZXtrObject_Register(a.Handler());
    ZXtrObject_Register(b.Handler());
    ZXtrObject_Send(kSceneClearing);
    ZXtrObject_Send(kSceneChanged);
    EXPECT_THAT(a.kinds, testing::ElementsAre(10, 12));
    EXPECT_THAT(b.kinds, testing::ElementsAre(10, 12));
}

TEST(SceneEvents, TheSameHandlerTwiceIsMisuse)
{
    Listener a;
    ZXtrObject_Register(a.Handler());
    EXPECT_THROW(ZXtrObject_Register(a.Handler()), ZHostMisuse);
    EXPECT_THROW(ZXtrObject_Register(ZHandler()), ZHostMisuse);
}

TEST(SceneEvents, AHandlerMayRemoveOthersWhileCalled)
{
    Listener a, b;
    ZXtrObject_Register(a.Handler());
    ZXtrObject_Register(b.Handler());
    a.then = [&b] { ZXtrObject_Unregister(b.Handler()); };
    ZXtrObject_Send(kSceneClearing);
    EXPECT_TRUE(b.kinds.empty());
    ZXtrObject_Unregister(b.Handler());
}
