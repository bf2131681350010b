// SPDX-License-Identifier: MIT
// Combo box, check box, colour field, slider, message boxes, screen.
#include "RecordedEvents.h"
#include "zbaselib/ZReport.h"
#include "ztoolkit/ZToolKit.h"
#include "ztoolkit/ZtControls.h"

#include <gmock/gmock.h>

#include <limits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
} // namespace

TEST(ComboBox, ChoosingAnItemSendsOneEventAndTheSameItemNone)
{
    ZtComboBox box("box");
    box.GetItems().SetText("Smooth Colors~Most Influential Bone~Least Influential Bone", '~');
    box.SetIndex(0);
    RecordedEvents seen(box);
    EXPECT_TRUE(box.UserChoose(2));
    EXPECT_TRUE(box.UserChoose(2));
    EXPECT_EQ(box.GetIndex(), 2);
    EXPECT_THAT(seen.Kinds(), ElementsAre(kViewValueChanged));
}

TEST(ComboBox, AnItemThatIsNotThereIsRefused)
{
    ZtComboBox box("box");
    box.GetItems().SetText("a~b", '~');
    RecordedEvents seen(box);
    EXPECT_FALSE(box.UserChoose(2));
    EXPECT_FALSE(box.UserChoose(-1));
    box.SetIndex(7);
    EXPECT_EQ(box.GetIndex(), -1);
    EXPECT_THAT(seen.events, IsEmpty());
}

TEST(ComboBox, TheProgramsSettersAreSilent)
{
    ZtComboBox box("box");
    box.GetItems().SetText("a~b", '~');
    RecordedEvents seen(box);
    box.SetIndex(1);
    box.SetIndex(-1);
    EXPECT_EQ(box.GetIndex(), -1);
    EXPECT_THAT(seen.events, IsEmpty());
}

TEST(CheckBox, AClickTogglesBeforeTheEvent)
{
    ZtCheckBox box("box");
    RecordedEvents seen(box);
    box.UserClick();
    box.UserClick();
    box.SetState(true);
    EXPECT_TRUE(box.GetState());
    EXPECT_THAT(seen.Values(), ElementsAre(1, 0));
}

TEST(CheckBox, MayLookLikeAButton)
{
    ZtCheckBox box("box");
    EXPECT_FALSE(box.HasPushButtonLook());
    box.SetPushButtonLook(true);
    EXPECT_TRUE(box.HasPushButtonLook());
}

TEST(Control, ADisabledOneDoesNothing)
{
    ZtCheckBox check("check");
    ZtComboBox combo("combo");
    combo.GetItems().SetText("a~b", '~');
    ZtColor colour("colour");
    ZtSlider slider("slider");
    RecordedEvents seen(check), seenCombo(combo), seenColour(colour), seenSlider(slider);
    for (ZtView* view : std::initializer_list<ZtView*>{&check, &combo, &colour, &slider})
        view->SetEnabled(false);
    EXPECT_FALSE(check.UserClick());
    EXPECT_FALSE(combo.UserChoose(1));
    EXPECT_FALSE(colour.UserSetColour(1, 0, 0));
    EXPECT_FALSE(slider.UserSetValue(5));
    EXPECT_FALSE(slider.UserPress(5));
    EXPECT_FALSE(check.GetState());
    EXPECT_EQ(combo.GetIndex(), -1);
    EXPECT_EQ(colour.GetColour()[0], 0);
    EXPECT_EQ(slider.GetValue(), 0);
    EXPECT_TRUE(seen.events.empty() && seenCombo.events.empty() && seenColour.events.empty() &&
                seenSlider.events.empty());
}

TEST(Colour, ComponentsAreClamped)
{
    ZtColor colour("colour");
    RecordedEvents seen(colour);
    EXPECT_TRUE(colour.UserSetColour(-1, 0.25, 7));
    EXPECT_EQ(colour.GetColour()[0], 0);
    EXPECT_EQ(colour.GetColour()[1], 0.25);
    EXPECT_EQ(colour.GetColour()[2], 1);
    EXPECT_THAT(seen.Kinds(), ElementsAre(kViewValueChanged));
}

TEST(Colour, WhatIsNoNumberIsRefused)
{
    ZtColor colour("colour");
    RecordedEvents seen(colour);
    EXPECT_FALSE(colour.UserSetColour(0.5, kNan, 0.5));
    EXPECT_FALSE(colour.UserSetColour(kInfinity, 0.5, 0.5));
    EXPECT_EQ(colour.GetColour()[0], 0);
    EXPECT_THAT(seen.events, IsEmpty());
}

TEST(Slider, ADragIsPressChangesRelease)
{
    ZtSlider slider("slider");
    slider.SetRange(0, 10);
    RecordedEvents seen(slider);
    slider.UserPress(2);
    slider.UserDrag(4);
    slider.UserDrag(11);
    slider.UserRelease(-3);
    EXPECT_THAT(seen.Kinds(), ElementsAre(kViewPress, kViewValueChanged, kViewValueChanged, kViewRelease));
    EXPECT_THAT(seen.Values(), ElementsAre(2, 4, 10, 0));
}

TEST(Slider, DragAndReleaseNeedAPress)
{
    ZtSlider slider("slider");
    RecordedEvents seen(slider);
    EXPECT_FALSE(slider.UserDrag(4));
    EXPECT_FALSE(slider.UserRelease(4));
    EXPECT_TRUE(slider.UserPress(1));
    EXPECT_FALSE(slider.UserPress(2)); // it is held already
    EXPECT_TRUE(slider.UserRelease(3));
    EXPECT_FALSE(slider.UserRelease(4));
    EXPECT_THAT(seen.Values(), ElementsAre(1, 3));
}

TEST(Slider, ADragIsCarriedToItsEndWhenTheSliderIsDisabledOnTheWay)
{
    ZtSlider slider("slider");
    RecordedEvents seen(slider);
    slider.UserPress(1);
    slider.SetEnabled(false);
    EXPECT_TRUE(slider.UserDrag(2));
    EXPECT_TRUE(slider.UserRelease(3));
    EXPECT_THAT(seen.Kinds(), ElementsAre(kViewPress, kViewValueChanged, kViewRelease));
}

TEST(Slider, SettingAValueIsOneChange)
{
    ZtSlider slider("slider");
    RecordedEvents seen(slider);
    EXPECT_TRUE(slider.UserSetValue(250));
    EXPECT_EQ(slider.GetValue(), 100);
    EXPECT_THAT(seen.Kinds(), ElementsAre(kViewValueChanged));
}

TEST(Slider, WhatIsNoNumberIsRefused)
{
    ZtSlider slider("slider");
    RecordedEvents seen(slider);
    EXPECT_FALSE(slider.UserSetValue(kNan));
    EXPECT_FALSE(slider.UserPress(kInfinity));
    slider.SetValue(kNan);
    slider.SetRange(kNan, 1);
    slider.SetRange(2, 1);
    EXPECT_EQ(slider.GetMinimum(), 0);
    EXPECT_EQ(slider.GetMaximum(), 100);
    EXPECT_EQ(slider.GetValue(), 0);
    EXPECT_THAT(seen.events, IsEmpty());
}

TEST(Slider, ANarrowerRangeTakesTheValueAlong)
{
    ZtSlider slider("slider");
    slider.SetValue(80);
    slider.SetRange(0, 10);
    EXPECT_EQ(slider.GetValue(), 10);
}

namespace {
class Message : public testing::Test
{
protected:
    void SetUp() override { ZToolKit_ClearMessages(); }
    void TearDown() override
    {
        ZToolKit_SetMessageAnswerer({});
        ZToolKit_ClearMessages();
    }
};
} // namespace

TEST_F(Message, WithoutAnybodyTheLastButtonAnswers)
{
    EXPECT_EQ(ZtDisplayMessage("Skinning Tool", "Merge ?", "Yes", "No", nullptr, 0, 0), 2);
    ASSERT_EQ(ZToolKit_GetMessages().size(), 1u);
    const ZtMessage& asked = ZToolKit_GetMessages().front();
    EXPECT_EQ(asked.title, "Skinning Tool");
    EXPECT_EQ(asked.text, "Merge ?");
    EXPECT_THAT(asked.buttons, ElementsAre("Yes", "No"));
    EXPECT_EQ(asked.answer, 2);
}

TEST_F(Message, TheAnswererIsAskedAndCountsFromOne)
{
    ZToolKit_SetMessageAnswerer([](const ZtMessage& question) { return question.text == "first" ? 1 : 2; });
    EXPECT_EQ(ZtDisplayMessage("t", "first", "Ok", "Ok to All", "Cancel", 0, 0), 1);
    EXPECT_EQ(ZtDisplayMessage("t", "second", "Ok", "Ok to All", "Cancel", 0, 0), 2);
}

TEST_F(Message, AnAnswerThatIsNoButtonIsTheLastOne)
{
    for (const int answer : {0, -1, 4}) {
        ZToolKit_SetMessageAnswerer([answer](const ZtMessage&) { return answer; });
        EXPECT_EQ(ZtDisplayMessage("t", "x", "Ok", "Ok to All", "Cancel", 0, 0), 3);
    }
}

TEST_F(Message, WithoutButtonsThereIsOneToPress)
{
    EXPECT_EQ(ZtDisplayMessage(nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0), 1);
    EXPECT_THAT(ZToolKit_GetMessages().front().buttons, ElementsAre("OK"));
}

TEST(Screen, IsWideUntilToldOtherwise)
{
    EXPECT_EQ(ZToolKit_GetScreenWidth(), 1920);
    ZToolKit_SetScreenWidth(1279);
    EXPECT_EQ(ZToolKit_GetScreenWidth(), 1279);
    EXPECT_THROW(ZToolKit_SetScreenWidth(0), ZHostMisuse);
    EXPECT_EQ(ZToolKit_GetScreenWidth(), 1279);
    ZToolKit_SetScreenWidth(1920);
}
