// SPDX-License-Identifier: MIT
// A list box with its widget, for tests of what the widget asks and sends.
#pragma once

#include "desk/widgets/ListBoxView.h"
#include "desk/widgets/ListWidget.h"
#include "ztoolkit/ZtListBox.h"

#include <QLineEdit>
#include <QTest>

#include <gmock/gmock.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

/// Answers "row N" and keeps which rows it was asked for.
class CountingSource final : public IZtRowSource
{
public:
    std::string RowText(const ZtListBox&, int row) const override
    {
        ++asked;
        rows.insert(row);
        return "row " + std::to_string(row);
    }
    mutable long asked = 0;
    mutable std::set<int> rows;
};

/// Keeps every event of a control.
struct Recorder
{
    void Hear(ZObject*, ZEvent& event) { events.push_back(static_cast<ZtEvent&>(event)); }
    std::vector<ZtEvent> events;
};

struct ListStage
{
    explicit ListStage(int rows, bool several = true)
    {
        list.SetMultipleSelection(several);
        list.SetRowSource(&source);
        list.AddRows(rows);
        list.RegisterHandler(kViewSelectionChanged, ZMakeHandler<&Recorder::Hear>(&recorder));
    }
    ~ListStage() { list.SetRowSource(nullptr); }
    void Show(int height = 300)
    {
        widget = MakeListWidget(list, {[this] { widget->SyncIfChanged(); }}, nullptr);
        widget->SyncIfChanged();
        holder.reset(widget->Widget());
        holder->resize(200, height);
        holder->show();
        static_cast<void>(QTest::qWaitForWindowExposed(holder.get()));
        holder->repaint();
    }
    ListBoxView* View() { return holder->findChild<ListBoxView*>(); }
    QLineEdit* Filter() { return holder->findChild<QLineEdit*>("Filter"); }
    int ShownCount() { return View()->model()->rowCount(); }
    QPoint Place(int row) { return View()->visualRect(View()->model()->index(row, 0)).center(); }
    void Click(int row, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseClick(View()->viewport(), Qt::LeftButton, modifiers, Place(row));
    }

    CountingSource source;
    Recorder recorder;
    ZtListBox list{"Rows"};
    std::unique_ptr<ControlWidget> widget;
    std::unique_ptr<QWidget> holder;
};
