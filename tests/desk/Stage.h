// SPDX-License-Identifier: MIT
// A desk with its window, shown, for tests that use it as a user does.
#pragma once

#include "desk/model/ZDeskSession.h"
#include "desk/widgets/FormWidget.h"
#include "desk/windows/MainWindow.h"
#include "ztoolkit/ZToolKit.h"
#include "ztoolkit/ZtListBox.h"
#include "ztoolkit/ZtSpread.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

#include <memory>

class DeskStage : public testing::Test
{
protected:
    void SetUp() override
    {
        QSettings(QSettings::IniFormat, QSettings::UserScope, "Skindesk", "Skindesk").clear();
        ZToolKit_SetScreenWidth(1920);
        MakeWindow();
    }
    void TearDown() override
    {
        window.reset();
        desk.reset();
    }

    void MakeWindow()
    {
        desk = std::make_unique<ZDeskSession>(ZSession::Options(), journalFolder);
        window = std::make_unique<MainWindow>(*desk);
        window->resize(1400, 900);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        QApplication::setActiveWindow(window.get());
        QTest::qWait(1);
    }
    /// Ends the application as a user does, and starts it again.
    void Restart()
    {
        ASSERT_TRUE(window->close());
        TearDown();
        MakeWindow();
    }

    /// A copy of the built-in character in a folder of this test.
    QString Figure()
    {
        const QString copy = folder.filePath("figure.glb");
        const bool there =
            QFile::exists(copy) || QFile::copy(QStringLiteral(SKINDESK_SOURCE_DIR "/samples/figure.glb"), copy);
        EXPECT_TRUE(there);
        return copy;
    }
    void OpenFigure()
    {
        ASSERT_TRUE(window->OpenFile(Figure()));
        desk->Session().GetViewer().Frame({});
    }

    template <class View> View& Control(const char* name)
    {
        std::vector<ZtView*> views;
        desk->GetTool()->CollectViews(views);
        for (ZtView* const view : views)
            if (view->GetObjectName() == name && Object_Cast<View>(static_cast<ZObject*>(view)) != nullptr)
                return *static_cast<View*>(view);
        throw std::runtime_error(std::string("no control ") + name);
    }
    /// The widget of a control, or the item view in it.
    template <class Widget> Widget* WidgetOf(const ZtView& control)
    {
        QWidget* const widget = window->ToolForm()->FindWidget(control);
        auto* const self = qobject_cast<Widget*>(widget);
        return self != nullptr ? self : widget->findChild<Widget*>();
    }
    QAction* Action(const char* name) { return window->findChild<QAction*>(name); }

    void Click(QAbstractItemView* view, int row, int column = 0, Qt::KeyboardModifiers modifiers = {})
    {
        const QModelIndex index = view->model()->index(row, column);
        view->scrollTo(index);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers, view->visualRect(index).center());
    }
    void DragInViewer(QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {})
    {
        QWidget* const viewer = window->Viewer();
        QTest::mousePress(viewer, Qt::LeftButton, modifiers, from);
        QMouseEvent move(QEvent::MouseMove, to, viewer->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, modifiers);
        QApplication::sendEvent(viewer, &move);
        QTest::mouseRelease(viewer, Qt::LeftButton, modifiers, to);
    }
    /// The first edit as far as vertices are picked and two bones are selected.
    void PickVertices()
    {
        OpenFigure();
        QTest::mouseClick(window->findChild<QWidget*>("AddAllSkinnedModels"), Qt::LeftButton);
        const QRect area = window->Viewer()->rect();
        DragInViewer({area.width() / 2 - 25, area.height() / 2 - 25}, {area.width() / 2 + 25, area.height() / 2 + 25});
    }

    QTemporaryDir folder;
    std::string journalFolder; ///< empty: no journal is kept
    std::unique_ptr<ZDeskSession> desk;
    std::unique_ptr<MainWindow> window;
};

/// Does something with the next dialog that opens, while it is open.
template <class Dialog> void WithNextDialog(std::function<void(Dialog&)> answer, int patience = 100)
{
    QTimer::singleShot(20, [answer = std::move(answer), patience] {
        auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog != nullptr)
            answer(*dialog);
        else if (patience > 0)
            WithNextDialog<Dialog>(answer, patience - 1);
        else
            ADD_FAILURE() << "no dialog opened";
    });
}

/// Types a file's path into a file dialog, and accepts. Selecting it in the dialog's list instead would hang on whether
/// the list has been read by then.
inline void ChooseFile(QFileDialog& dialog, const QString& path)
{
    auto* const name = dialog.findChild<QLineEdit*>("fileNameEdit");
    ASSERT_NE(name, nullptr);
    name->setText(path);
    QMetaObject::invokeMethod(&dialog, "accept");
}
