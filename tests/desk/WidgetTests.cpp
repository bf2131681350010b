// SPDX-License-Identifier: MIT
// The generic widgets, driven by a control's state alone.
#include "Drops.h"
#include "ListStage.h"
#include "desk/model/ModelDrag.h"
#include "desk/widgets/FormWidget.h"
#include "desk/widgets/ListBoxView.h"
#include "desk/widgets/ListWidget.h"
#include "object/ZAction.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZModel.h"
#include "ztoolkit/ZtControls.h"
#include "ztoolkit/ZtLayout.h"
#include "ztoolkit/ZtListBox.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QMimeData>
#include <QScrollBar>
#include <QSlider>
#include <QTest>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::Lt;
using testing::SizeIs;

TEST(ListView, MillionRowsAskOnlyForTheVisibleTexts)
{
    ListStage stage(1'000'000);
    stage.Show();
    EXPECT_THAT(stage.source.rows, SizeIs(Lt(40u)));
    stage.View()->verticalScrollBar()->setValue(stage.View()->verticalScrollBar()->maximum());
    stage.View()->viewport()->repaint();
    EXPECT_EQ(*stage.source.rows.rbegin(), 999'999);
    EXPECT_THAT(stage.source.rows, SizeIs(Lt(80u)));
}

TEST(ListView, MillionSelectedRowsScrollWithoutAPause)
{
    ListStage stage(1'000'000);
    stage.Show();
    stage.View()->setFocus();
    QTest::keyClick(stage.View(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(stage.list.GetSelectedCount(), 1'000'000);
    QElapsedTimer clock;
    qint64 longest = 0;
    for (int i = 1; i <= 20; ++i) {
        clock.start();
        stage.View()->verticalScrollBar()->setValue(stage.View()->verticalScrollBar()->maximum() / 20 * i);
        stage.View()->viewport()->repaint();
        longest = std::max(longest, clock.elapsed());
    }
    EXPECT_LT(longest, 50) << "milliseconds";
}

TEST(ListView, EveryOtherRowSelectedStaysQuick)
{
    ListStage stage(200'000);
    for (int row = 0; row < 200'000; row += 2)
        stage.list.SetRowSelected(row, true);
    QElapsedTimer clock;
    clock.start();
    stage.Show();
    stage.Click(3, Qt::ControlModifier);
    EXPECT_EQ(stage.list.GetSelectedCount(), 100'001);
    EXPECT_LT(clock.elapsed(), 5000) << "milliseconds; with the square of the runs it would take minutes";
}

TEST(ListView, ClickSelectsOneRowAsOneEvent)
{
    ListStage stage(10);
    stage.Show();
    stage.Click(4);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(4));
    ASSERT_THAT(stage.recorder.events, SizeIs(1));
    EXPECT_EQ(stage.recorder.events[0].row, 4);
    stage.Click(4);
    EXPECT_THAT(stage.recorder.events, SizeIs(1));
}

TEST(ListView, ControlSwitchesAndShiftReaches)
{
    ListStage stage(10);
    stage.Show();
    stage.Click(2);
    stage.Click(5, Qt::ControlModifier);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(2, 5));
    stage.Click(2, Qt::ControlModifier);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(5));
    stage.Click(5);
    stage.Click(8, Qt::ShiftModifier);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(5, 6, 7, 8));
}

TEST(ListView, DragOverRowsIsOneEvent)
{
    ListStage stage(10);
    stage.Show();
    QWidget* const viewport = stage.View()->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, stage.Place(1));
    for (const int row : {2, 3, 4}) {
        QMouseEvent move(QEvent::MouseMove, stage.Place(row), viewport->mapToGlobal(stage.Place(row)), Qt::NoButton,
                         Qt::LeftButton, {});
        QApplication::sendEvent(viewport, &move);
    }
    EXPECT_THAT(stage.recorder.events, SizeIs(0));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, stage.Place(4));
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(stage.recorder.events, SizeIs(1));
}

TEST(ListView, ArrowsMoveTheSelection)
{
    ListStage stage(100);
    stage.Show();
    stage.Click(2);
    QTest::keyClick(stage.View(), Qt::Key_Down);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(3));
    QTest::keyClick(stage.View(), Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(3, 4));
    QTest::keyClick(stage.View(), Qt::Key_End);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(99));
    EXPECT_TRUE(stage.View()->viewport()->rect().contains(stage.Place(99)));
}

TEST(ListView, SingleSelectionHasOneRow)
{
    ListStage stage(10, false);
    stage.Show();
    stage.Click(2);
    stage.Click(5, Qt::ControlModifier);
    EXPECT_THAT(stage.list.GetSelectedRows(), ElementsAre(5));
}

TEST(ListView, FollowsTheControlWhenItIsFilledAnew)
{
    ListStage stage(3);
    stage.Show();
    stage.list.ClearRows();
    stage.list.AddRows(7);
    stage.list.SetRowSelected(6, true);
    stage.widget->SyncIfChanged();
    EXPECT_EQ(stage.View()->model()->rowCount(), 7);
    EXPECT_TRUE(stage.View()->selectionModel()->isSelected(stage.View()->model()->index(6, 0)));
    EXPECT_THAT(stage.recorder.events, SizeIs(0));
}

/// A list that takes drops, and gives its rows when it is dragged from.
struct DropStage : ListStage
{
    DropStage() : ListStage(3)
    {
        list.SetCheckMarks(true);
        list.RegisterHandler(kViewDragAndDrop, ZMakeHandler<&DropStage::OnDrag>(this));
        Show();
    }
    void OnDrag(ZObject*, ZEvent& event)
    {
        const int stage = static_cast<ZtEvent&>(event).stage;
        stages.push_back(stage);
        if (stage == kDragOver)
            GlobalDragAndDrop_Accept();
        if (stage == kDragDrop)
            dropped = GlobalDragAndDrop_GetCount();
        if (stage == kDragStart)
            keyWasHeld = Object_GetCurrentKeyState(4, true);
    }
    std::vector<int> stages;
    int dropped = 0;
    bool keyWasHeld = false;
};

TEST(ListDrop, ModelsOfTheHostsDragAreDropped)
{
    DropStage stage;
    ZModel model("Body");
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(&model, 0);
    QMimeData announced;
    announced.setData(kModelDragFormat, "models");
    EXPECT_TRUE(DropOn(*stage.View()->viewport(), announced));
    EXPECT_THAT(stage.stages, ElementsAre(kDragOver, kDragDrop));
    EXPECT_EQ(stage.dropped, 1);
}

TEST(ListDrop, ForeignDragIsRefused)
{
    DropStage stage;
    QMimeData announced;
    announced.setData(kModelDragFormat, "models");
    EXPECT_FALSE(DropOn(*stage.View()->viewport(), announced));
    EXPECT_THAT(stage.stages, SizeIs(0));
}

TEST(ListDrop, MiddleButtonDragsOutWithTheKeyHeld)
{
    DropStage stage;
    QWidget* const viewport = stage.View()->viewport();
    QTest::mousePress(viewport, Qt::MiddleButton, {}, stage.Place(0));
    EXPECT_THAT(stage.stages, SizeIs(0)) << "a press is no drag yet";
    const QPoint far = stage.Place(0) + QPoint(60, 60);
    QMouseEvent move(QEvent::MouseMove, far, viewport->mapToGlobal(far), Qt::NoButton, Qt::MiddleButton, {});
    QApplication::sendEvent(viewport, &move);
    EXPECT_THAT(stage.stages, ElementsAre(kDragStart));
    EXPECT_TRUE(stage.keyWasHeld);
    EXPECT_FALSE(Object_GetCurrentKeyState(4, true));
}

TEST(ListDrop, CheckMarkIsSetByClickAndBySpace)
{
    DropStage stage;
    const QRect row = stage.View()->visualRect(stage.View()->model()->index(1, 0));
    QTest::mouseClick(stage.View()->viewport(), Qt::LeftButton, {}, {row.left() + 9, row.center().y()});
    EXPECT_TRUE(stage.list.GetRowCheck(1));
    QTest::keyClick(stage.View(), Qt::Key_Space);
    EXPECT_FALSE(stage.list.GetRowCheck(1));
}

/// One control of each plain kind in a form.
struct FormStage
{
    FormStage()
    {
        using enum ZtAttachment;
        form.SetDesignSize(300, 200);
        const auto place = [this](ZtView& view, int top) {
            form.AddRegion(view.GetObjectName().c_str(), {10, Left, {}, 1}, {top, Top, {}, 1}, {80, Size, {}, 1},
                           {20, Size, {}, 1});
            form.SetRegionView(view.GetObjectName().c_str(), &view);
        };
        label.SetCaption("Speed :");
        place(label, 5);
        slider.SetRange(0, 10);
        place(slider, 30);
        combo.GetItems().SetText("one~two~three", '~');
        combo.SetIndex(0);
        place(combo, 60);
        check.SetCaption("A caption much longer than its region");
        place(check, 90);
        toggle.SetCaption("Hold");
        toggle.SetPushButtonLook(true);
        place(toggle, 120);
        widget = std::make_unique<FormWidget>(form, ControlContext{[this] { widget->Sync(); }}, nullptr);
        widget->resize(widget->Scaled({300, 200}));
        widget->show();
        static_cast<void>(QTest::qWaitForWindowExposed(widget.get()));
    }
    template <class Widget> Widget* Of(const ZtView& view) { return qobject_cast<Widget*>(widget->FindWidget(view)); }

    ZtForm form{"form"};
    ZtStatic label{"Label"};
    ZtSlider slider{"SpeedSlider"};
    ZtComboBox combo{"ChosenMode"};
    ZtCheckBox check{"Check"};
    ZtCheckBox toggle{"Toggle"};
    std::unique_ptr<FormWidget> widget;
};

TEST(FormWidgets, ShowTheControlsState)
{
    FormStage stage;
    stage.check.SetState(true);
    stage.combo.SetIndex(2);
    stage.slider.SetValue(5);
    stage.toggle.SetEnabled(false);
    stage.widget->Sync();
    EXPECT_TRUE(stage.Of<QAbstractButton>(stage.check)->isChecked());
    EXPECT_EQ(stage.Of<QComboBox>(stage.combo)->currentText(), "three");
    EXPECT_EQ(stage.Of<QSlider>(stage.slider)->value(), stage.Of<QSlider>(stage.slider)->maximum() / 2);
    EXPECT_FALSE(stage.widget->FindWidget(stage.toggle)->isEnabled());
}

TEST(FormWidgets, SendTheUsersEvents)
{
    FormStage stage;
    Recorder recorder;
    stage.check.RegisterHandler(kViewClicked, ZMakeHandler<&Recorder::Hear>(&recorder));
    stage.combo.RegisterHandler(kViewValueChanged, ZMakeHandler<&Recorder::Hear>(&recorder));
    QTest::mouseClick(stage.widget->FindWidget(stage.check), Qt::LeftButton, {}, {8, 10});
    EXPECT_TRUE(stage.check.GetState());
    QTest::keyClick(stage.widget->FindWidget(stage.combo), Qt::Key_Down);
    EXPECT_EQ(stage.combo.GetIndex(), 1);
    EXPECT_THAT(recorder.events, SizeIs(2));
    QTest::keyClick(stage.widget->FindWidget(stage.slider), Qt::Key_Right);
    EXPECT_GT(stage.slider.GetValue(), 0);
}

TEST(FormWidgets, ButtonSpringsBackWhenTheAnswerIsNo)
{
    struct No
    {
        void Refuse(ZObject* sender, ZEvent&) { static_cast<ZtCheckBox*>(sender)->SetState(false); }
    } no;
    FormStage stage;
    stage.toggle.RegisterHandler(kViewClicked, ZMakeHandler<&No::Refuse>(&no));
    QTest::mouseClick(stage.widget->FindWidget(stage.toggle), Qt::LeftButton);
    EXPECT_FALSE(stage.Of<QAbstractButton>(stage.toggle)->isChecked());
}

TEST(FormWidgets, NoCaptionIsCut)
{
    FormStage stage;
    const QWidget* const check = stage.widget->FindWidget(stage.check);
    EXPECT_GE(check->width(), check->fontMetrics().horizontalAdvance(QString::fromStdString(stage.check.GetCaption())));
}

TEST(FormWidgets, EveryControlHasANameForScreenReaders)
{
    FormStage stage;
    EXPECT_EQ(stage.widget->FindWidget(stage.slider)->accessibleName(), "Speed");
    EXPECT_EQ(stage.widget->FindWidget(stage.combo)->accessibleName(), "Chosen mode");
    EXPECT_EQ(stage.widget->FindWidget(stage.toggle)->accessibleName(), "Hold");
}

TEST(FormWidgets, TabGoesFromTheTopDown)
{
    FormStage stage;
    stage.widget->activateWindow();
    stage.widget->FindWidget(stage.slider)->setFocus();
    EXPECT_EQ(stage.widget->FindWidget(stage.slider)->nextInFocusChain(), stage.widget->FindWidget(stage.combo));
    EXPECT_EQ(stage.widget->FindWidget(stage.combo)->nextInFocusChain(), stage.widget->FindWidget(stage.check));
}

} // namespace
