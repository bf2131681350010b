// SPDX-License-Identifier: MIT
// Views: handlers that come, go and destroy; misuse; what is shown.
#include "RecordedEvents.h"
#include "zbaselib/ZReport.h"
#include "ztoolkit/ZtControls.h"

#include <gmock/gmock.h>

#include <memory>
#include <thread>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;

namespace {
struct Counter
{
    int calls = 0;
    ZObject* sender = nullptr;
    void Count(ZObject* from, ZEvent&)
    {
        ++calls;
        sender = from;
    }
};

struct Order
{
    std::vector<int>* order;
    int number;
    void Note(ZObject*, ZEvent&) { order->push_back(number); }
};
} // namespace

TEST(View, HandlersAreCalledInOrderOfRegistrationForTheirKindOnly)
{
    ZtCheckBox box("box");
    std::vector<int> order;
    Order first{&order, 1}, second{&order, 2}, other{&order, 3};
    box.RegisterHandler(kViewClicked, ZMakeHandler<&Order::Note>(&first));
    box.RegisterHandler(kViewClicked, ZMakeHandler<&Order::Note>(&second));
    box.RegisterHandler(kViewValueChanged, ZMakeHandler<&Order::Note>(&other));
    EXPECT_TRUE(box.UserClick());
    EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST(View, SenderIsTheView)
{
    ZtCheckBox box("box");
    Counter counter;
    box.RegisterHandler(kViewClicked, ZMakeHandler<&Counter::Count>(&counter));
    box.UserClick();
    EXPECT_EQ(counter.sender, &box);
}

TEST(View, TheSameHandlerTwiceForOneKindIsMisuse)
{
    ZtCheckBox box("TheBox");
    Counter counter;
    const ZHandler handler = ZMakeHandler<&Counter::Count>(&counter);
    box.RegisterHandler(kViewClicked, handler);
    box.RegisterHandler(kViewValueChanged, handler); // another kind is fine
    EXPECT_THAT(
        [&] { box.RegisterHandler(kViewClicked, handler); },
        ThrowsMessage<ZHostMisuse>(AllOf(HasSubstr("ZtView::RegisterHandler"), HasSubstr("TheBox"), HasSubstr("520"))));
    box.UserClick();
    EXPECT_EQ(counter.calls, 1);
}

TEST(View, AHandlerWithoutAnOperationIsMisuse)
{
    ZtCheckBox box("box");
    EXPECT_THROW(box.RegisterHandler(kViewClicked, ZHandler()), ZHostMisuse);
    EXPECT_FALSE(box.HasHandler(kViewClicked));
}

TEST(View, MisuseThatIsNotFatalIsSaidAndDoesNothing)
{
    ZtCheckBox box("box");
    Counter counter;
    const ZHandler handler = ZMakeHandler<&Counter::Count>(&counter);
    ZReport_SetMisuseFatal(false);
    ZReport_ClearWarnings();
    box.RegisterHandler(kViewClicked, handler);
    box.RegisterHandler(kViewClicked, handler);
    ZReport_SetMisuseFatal(true);
    EXPECT_EQ(ZReport_Warnings().size(), 1u);
    ZReport_ClearWarnings();
    box.UserClick();
    EXPECT_EQ(counter.calls, 1);
}

TEST(View, UnregisteringWhatIsNotThereIsIgnored)
{
    ZtCheckBox box("box");
    Counter counter;
    EXPECT_NO_THROW(box.UnregisterHandler(kViewClicked, ZMakeHandler<&Counter::Count>(&counter)));
}

TEST(View, AnotherThreadMayNotSend)
{
    ZtCheckBox box("box");
    Counter counter;
    box.RegisterHandler(kViewClicked, ZMakeHandler<&Counter::Count>(&counter));
    std::string said;
    std::thread([&] {
        try {
            box.UserClick();
        } catch (const ZHostMisuse& misuse) {
            said = misuse.what();
        }
    }).join();
    EXPECT_THAT(said, AllOf(HasSubstr("ZtCheckBox::UserClick"), HasSubstr("another thread")));
    EXPECT_EQ(counter.calls, 0);
    EXPECT_FALSE(box.GetState());
}

TEST(View, AViewThatWasDestroyedSaysSoWhenItIsUsed)
{
    ZtCheckBox box("gone");
    box.DestroyObject(); // not allocated: its memory stays
    EXPECT_THAT([&] { box.UserClick(); }, ThrowsMessage<ZHostMisuse>(AllOf(HasSubstr("gone"), HasSubstr("destroyed"))));
}

namespace {
struct Destroyer
{
    std::unique_ptr<ZtCheckBox>* box;
    void Destroy(ZObject*, ZEvent&) { box->reset(); }
};
} // namespace

TEST(View, AHandlerMayDestroyTheView)
{
    auto box = std::make_unique<ZtCheckBox>("box");
    Destroyer destroyer{&box};
    Counter later;
    box->RegisterHandler(kViewClicked, ZMakeHandler<&Destroyer::Destroy>(&destroyer));
    box->RegisterHandler(kViewClicked, ZMakeHandler<&Counter::Count>(&later));
    EXPECT_TRUE(box->UserClick());
    EXPECT_EQ(box, nullptr);
    EXPECT_EQ(later.calls, 0);
}

namespace {
struct Switcher
{
    ZtView* view;
    Counter* out;
    Counter* in;
    void Switch(ZObject*, ZEvent&)
    {
        view->UnregisterHandler(kViewClicked, ZMakeHandler<&Counter::Count>(out));
        if (!done)
            view->RegisterHandler(kViewClicked, ZMakeHandler<&Counter::Count>(in));
        done = true;
    }
    bool done = false;
};
} // namespace

TEST(View, AHandlerTakenAwayWhileSendingIsNotCalledAndANewOneFromTheNextEventOn)
{
    ZtCheckBox box("box");
    Counter out, in;
    Switcher switcher{&box, &out, &in};
    box.RegisterHandler(kViewClicked, ZMakeHandler<&Switcher::Switch>(&switcher));
    box.RegisterHandler(kViewClicked, ZMakeHandler<&Counter::Count>(&out));
    box.UserClick();
    EXPECT_EQ(out.calls, 0);
    EXPECT_EQ(in.calls, 0);
    box.UserClick();
    EXPECT_EQ(out.calls, 0);
    EXPECT_EQ(in.calls, 1);
}

TEST(View, ChangesOfWhatIsShownAreCountedOnceEachAndTold)
{
    ZtStatic label("label");
    Counter counter;
    label.SetObserver(ZMakeHandler<&Counter::Count>(&counter));
    const long before = label.GetChangeCount();
    label.SetCaption("Weights");
    label.SetCaption("Weights");
    label.SetEnabled(false);
    label.SetVisible(false);
    label.SetToolTip("per cent");
    EXPECT_EQ(label.GetChangeCount(), before + 4);
    EXPECT_EQ(counter.calls, 4);
    EXPECT_EQ(counter.sender, &label);
}

TEST(View, ClassesKnowTheirBases)
{
    ZtCheckBox box("box");
    EXPECT_NE(Object_Cast<ZtView>(static_cast<ZObject*>(&box)), nullptr);
    EXPECT_EQ(Object_Cast<ZtSlider>(static_cast<ZObject*>(&box)), nullptr);
    EXPECT_EQ(box.GetViewKind(), ZtViewKind::Check);
}
