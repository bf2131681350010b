// SPDX-License-Identifier: MIT
// The window: layout, scene tree, keys, timeline, pose, files, export.
#include "Drops.h"
#include "Stage.h"

#include "desk/model/ModelDrag.h"
#include "desk/windows/DocumentCommands.h"
#include "desk/windows/ExportDialog.h"
#include "desk/windows/Preferences.h"
#include "object/ZAction.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZPose.h"
#include "zmodel/ZSkin.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTableWidget>
#include <QToolButton>
#include <QTreeView>
#include <QWindow>

namespace {

using testing::HasSubstr;

class DeskWindow : public DeskStage
{
protected:
    QDockWidget* Dock(const char* name) { return window->findChild<QDockWidget*>(name); }
    QTreeView* Tree() { return window->findChild<QTreeView*>("SceneTree"); }
    ZModel* Model(const std::string& name)
    {
        for (ZModel* const model : desk->Session().GetScene().GetModels())
            if (model->GetObjectName() == name)
                return model;
        return nullptr;
    }
    QModelIndex TreeRow(const char* name)
    {
        const QModelIndexList found = Tree()->model()->match(Tree()->model()->index(0, 0), Qt::DisplayRole, name, 1,
                                                             Qt::MatchExactly | Qt::MatchRecursive);
        return found.isEmpty() ? QModelIndex() : found.first();
    }
    void ClickTree(const char* name, int column = 0)
    {
        const QModelIndex row = TreeRow(name);
        ASSERT_TRUE(row.isValid()) << name;
        Tree()->scrollTo(row);
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {},
                          Tree()->visualRect(row.siblingAtColumn(column)).center());
    }
};

TEST_F(DeskWindow, ToolIsOpenAtTheFirstStart)
{
    ASSERT_NE(desk->GetTool(), nullptr);
    EXPECT_TRUE(desk->GetTool()->IsToolActive());
    EXPECT_TRUE(Dock("ToolDock")->isVisible());
    EXPECT_EQ(Dock("ToolDock")->windowTitle(), "Skinning tool");
    EXPECT_EQ(window->windowTitle(), "Skindesk");
}

TEST_F(DeskWindow, ClosingTheToolsDockDeactivatesTheTool)
{
    Dock("ToolDock")->close();
    EXPECT_FALSE(desk->GetTool()->IsToolActive());
    Dock("ToolDock")->show();
    EXPECT_TRUE(desk->GetTool()->IsToolActive());
}

TEST_F(DeskWindow, LayoutIsKeptBetweenStartsAndCanBeReset)
{
    Dock("SceneDock")->hide();
    Dock("PoseDock")->setFloating(true);
    Restart();
    EXPECT_FALSE(Dock("SceneDock")->isVisible());
    EXPECT_TRUE(Dock("PoseDock")->isFloating());
    Action("ViewDefaultLayout")->trigger();
    EXPECT_TRUE(Dock("SceneDock")->isVisible());
    EXPECT_FALSE(Dock("PoseDock")->isFloating());
}

TEST_F(DeskWindow, RecentFilesAreKeptBetweenStarts)
{
    OpenFigure();
    Restart();
    ASSERT_EQ(Preferences::RecentFiles().size(), 1);
    EXPECT_EQ(Preferences::RecentFiles().first(), Figure());
    const auto actions = window->findChildren<QAction*>();
    const auto recent =
        std::find_if(actions.begin(), actions.end(), [](QAction* action) { return action->text() == "figure.glb"; });
    ASSERT_NE(recent, actions.end());
    (*recent)->trigger();
    EXPECT_NE(Model("Figure"), nullptr);
}

TEST_F(DeskWindow, TreeSelectionIsTheScenes)
{
    OpenFigure();
    ClickTree("Chest");
    EXPECT_TRUE(Model("Chest")->IsSelected());
    Model("Chest")->SetSelected(false);
    Model("Neck")->SetSelected(true);
    desk->AfterEvent();
    ASSERT_EQ(Tree()->selectionModel()->selectedRows().size(), 1);
    EXPECT_EQ(Tree()->selectionModel()->selectedRows().first().data().toString(), "Neck");
}

TEST_F(DeskWindow, TreeHidesAndLocks)
{
    OpenFigure();
    ClickTree("Figure", 1);
    EXPECT_TRUE(Model("Figure")->IsHidden());
    ClickTree("Figure", 1);
    EXPECT_FALSE(Model("Figure")->IsHidden());
    ClickTree("Figure", 2);
    EXPECT_TRUE(Model("Figure")->IsLocked());
    EXPECT_EQ(desk->AddAllSkinnedModels(), 0) << "a locked model is not taken";
}

TEST_F(DeskWindow, ModelDraggedFromTheTreeEntersTheTool)
{
    OpenFigure();
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(Model("Figure"), 0);
    QMimeData announced;
    announced.setData(kModelDragFormat, "models");
    auto* const list = WidgetOf<QAbstractItemView>(Control<ZtListBox>("ModelListUI"));
    EXPECT_TRUE(DropOn(*list->viewport(), announced));
    EXPECT_EQ(list->model()->index(0, 0).data().toString(), "Figure");
}

TEST_F(DeskWindow, AltDragTakesModelsOutOfTheTool)
{
    OpenFigure();
    desk->AddAllSkinnedModels();
    auto* const list = WidgetOf<QAbstractItemView>(Control<ZtListBox>("ModelListUI"));
    const QPoint row = list->visualRect(list->model()->index(0, 0)).center();
    // A drag of the window system runs until it is dropped or given up.
    QTimer givesUp;
    QObject::connect(&givesUp, &QTimer::timeout, [this] { QTest::keyClick(window->windowHandle(), Qt::Key_Escape); });
    givesUp.start(50);
    QTest::mousePress(list->viewport(), Qt::LeftButton, Qt::AltModifier, row);
    const QPoint far = row + QPoint(40, 40);
    QMouseEvent move(QEvent::MouseMove, far, list->viewport()->mapToGlobal(far), Qt::NoButton, Qt::LeftButton,
                     Qt::AltModifier);
    QApplication::sendEvent(list->viewport(), &move);
    EXPECT_EQ(list->model()->index(0, 0).data().toString(), "Drop models here");
    EXPECT_EQ(GlobalDragAndDrop_GetCount(), 0);
}

TEST_F(DeskWindow, KeysGoToTheHostFromEverywhereButTexts)
{
    OpenFigure();
    const ZgeVector3 eye = desk->Session().GetViewer().GetCamera().GetEye();
    Model("Head")->SetSelected(true);
    Tree()->setFocus();
    QTest::keyClick(Tree(), Qt::Key_F);
    EXPECT_NE(desk->Session().GetViewer().GetCamera().GetEye(), eye) << "F frames the selection";

    const ZgeVector3 framed = desk->Session().GetViewer().GetCamera().GetEye();
    Model("Head")->SetSelected(false);
    auto* const filter = window->ToolForm()->findChild<QLineEdit*>("Filter");
    QTest::keyClick(filter, Qt::Key_F);
    EXPECT_EQ(desk->Session().GetViewer().GetCamera().GetEye(), framed) << "F in a text is a letter";
    EXPECT_EQ(filter->text(), "f");
}

TEST_F(DeskWindow, KeyIsHeldUntilItsReleaseOrTheLossOfTheFocus)
{
    QTest::keyPress(window->Viewer(), Qt::Key_X);
    EXPECT_TRUE(Object_GetCurrentKeyState('X', true));
    QTest::keyRelease(window->Viewer(), Qt::Key_X);
    EXPECT_FALSE(Object_GetCurrentKeyState('X', true));
    QTest::keyPress(window->Viewer(), Qt::Key_X);
    emit qApp->focusWindowChanged(nullptr);
    EXPECT_FALSE(Object_GetCurrentKeyState('X', true));
}

TEST_F(DeskWindow, TimelineSetsTheScenesTime)
{
    OpenFigure();
    auto* const choice = window->findChild<QComboBox*>("TimelineAnimation");
    auto* const scrub = window->findChild<QSlider*>("TimelineScrub");
    ZScene& scene = desk->Session().GetScene();
    ASSERT_GT(choice->count(), 1) << "the built-in character has an animation";
    EXPECT_FALSE(scrub->isEnabled());
    QTest::keyClick(choice, Qt::Key_Down);
    EXPECT_EQ(scene.GetAnimation(), 0);
    ASSERT_TRUE(scrub->isEnabled());
    scrub->setValue(scrub->maximum() / 2);
    EXPECT_NEAR(scene.GetTime(), scene.GetAnimations()[0]->GetDuration() / 2, 0.01);

    auto* const play = window->findChild<QToolButton*>("TimelinePlay");
    const double before = scene.GetTime();
    QTest::mouseClick(play, Qt::LeftButton);
    EXPECT_TRUE(QTest::qWaitFor([&] { return scene.GetAnimationTime() != before; }, 3000));
    QTest::mouseClick(play, Qt::LeftButton);
    const double paused = scene.GetTime();
    QTest::qWait(60);
    EXPECT_EQ(scene.GetTime(), paused);
}

TEST_F(DeskWindow, PoseIsAnUndoStepAndNeverSaved)
{
    OpenFigure();
    ClickTree("Forearm.L");
    const ZgeMatrix file = Model("Hand.L")->GetTransformMatrix(true);
    auto* const field = window->findChild<QDoubleSpinBox*>("Pose1");
    ASSERT_TRUE(field->isEnabled());
    field->setValue(120);
    const ZgeMatrix posed = Model("Hand.L")->GetTransformMatrix(true);
    EXPECT_NE(posed, file);
    EXPECT_EQ(field->value(), 120) << "not another name of the same rotation";
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoNames().front(), "Pose Forearm.L");
    EXPECT_FALSE(desk->Documents().HasUnsavedChanges());

    desk->Undo();
    EXPECT_EQ(Model("Hand.L")->GetTransformMatrix(true), file);
    desk->Redo();
    EXPECT_EQ(Model("Hand.L")->GetTransformMatrix(true), posed);
    ZPose_Clear(desk->Session().GetScene());
    EXPECT_EQ(Model("Hand.L")->GetTransformMatrix(true), file);
    desk->Undo();
    EXPECT_EQ(Model("Hand.L")->GetTransformMatrix(true), posed);
}

TEST_F(DeskWindow, HeatMapShowsTheSelectedBone)
{
    OpenFigure();
    const ZSkin& skin = *Model("Figure")->GetSkin();
    EXPECT_EQ(skin.GetDisplayValue(), -1);
    ClickTree("Head");
    Action("ViewHeatMap")->setChecked(true);
    EXPECT_EQ(skin.GetDisplayValue(), skin.FindLink(Model("Head")));
    ClickTree("Neck");
    EXPECT_EQ(skin.GetDisplayValue(), skin.FindLink(Model("Neck")));
    Action("ViewHeatMap")->setChecked(false);
    EXPECT_EQ(skin.GetDisplayValue(), -1);
}

TEST_F(DeskWindow, StatusLineSaysWhatTheHostReports)
{
    OpenFigure();
    EXPECT_EQ(window->findChild<QLabel*>("StatusText")->text(), "Opened figure.glb: 1 model");
    ZReport_Status("normalised 12 vertices");
    EXPECT_EQ(window->findChild<QLabel*>("StatusText")->text(), "normalised 12 vertices");
}

TEST_F(DeskWindow, BrokenFileIsSaidInOneSentenceAndNothingStays)
{
    const QString path = folder.filePath("broken.glb");
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("no character");
    file.close();
    QString said;
    WithNextDialog<QMessageBox>([&said](QMessageBox& box) {
        said = box.text();
        box.accept();
    });
    EXPECT_FALSE(window->OpenFile(path));
    EXPECT_THAT(said.toStdString(), HasSubstr("broken.glb"));
    EXPECT_TRUE(desk->Session().GetScene().GetModels().empty());
    EXPECT_TRUE(Preferences::RecentFiles().isEmpty());
}

TEST_F(DeskWindow, FileOpenAlreadyIsNotOpenedTwice)
{
    OpenFigure();
    WithNextDialog<QMessageBox>([](QMessageBox& box) { box.accept(); });
    EXPECT_FALSE(window->OpenFile(Figure()));
    EXPECT_EQ(desk->Documents().GetDocuments().size(), 1u);
}

TEST_F(DeskWindow, FileDroppedOnTheWindowIsOpened)
{
    QMimeData urls;
    urls.setUrls({QUrl::fromLocalFile(Figure())});
    EXPECT_TRUE(DropOn(*window->Viewer(), urls));
    EXPECT_NE(Model("Figure"), nullptr);
}

TEST_F(DeskWindow, ExportSaysWhatItDropsBeforeAnythingIsWritten)
{
    OpenFigure();
    const QStringList before = QDir(folder.path()).entryList(QDir::Files);
    int lines = 0;
    WithNextDialog<ExportDialog>([&lines](ExportDialog& dialog) {
        dialog.findChild<QSpinBox*>("MaxInfluences")->setValue(1);
        lines = dialog.findChild<QTableWidget*>("LimitReport")->rowCount();
        dialog.reject();
    });
    Action("FileExport")->trigger();
    EXPECT_GT(lines, 0);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), before);
}

TEST_F(DeskWindow, CopyLeavesUnsavedChangesUnsaved)
{
    OpenFigure();
    ZSkin& skin = *Model("Figure")->GetSkin();
    skin.BeginLink(0);
    skin.SetEntryWeight(0.125, 0);
    skin.EndLink();
    desk->AfterEvent();
    ZSaveOptions copy;
    copy.asCopy = true;
    copy.maxInfluences = 2;
    std::string why;
    ASSERT_TRUE(desk->Save(Figure().toStdString(), folder.filePath("copy.glb").toStdString(), copy, &why)) << why;
    EXPECT_TRUE(desk->Documents().HasUnsavedChanges());
    EXPECT_EQ(desk->Title(), "figure.glb* - Skindesk");
}

TEST_F(DeskWindow, MessageOfAToolIsADialogWithItsButtons)
{
    QString title;
    QStringList buttons;
    WithNextDialog<QMessageBox>([&](QMessageBox& box) {
        title = box.windowTitle();
        for (QAbstractButton* const button : box.buttons())
            buttons += button->text();
        box.buttons().at(0)->click();
    });
    EXPECT_EQ(ZtDisplayMessage("Skinning Tool", "Merge ?", "Yes", "No", nullptr, 0, 0), 1);
    EXPECT_EQ(title, "Skinning Tool");
    EXPECT_EQ(buttons, QStringList({"Yes", "No"}));
    WithNextDialog<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
    EXPECT_EQ(ZtDisplayMessage("Skinning Tool", "Merge ?", "Yes", "No", nullptr, 0, 0), 2)
        << "Escape is the safe answer";
}

TEST_F(DeskWindow, EveryFieldThatTakesTheFocusHasAName)
{
    OpenFigure();
    for (const QWidget* const widget : window->findChildren<QWidget*>()) {
        const bool isPart = widget->objectName().startsWith("qt_") ||
                            qobject_cast<QAbstractSpinBox*>(widget->parentWidget()) != nullptr ||
                            qobject_cast<QComboBox*>(widget->parentWidget()) != nullptr;
        if (!widget->isVisible() || widget->focusPolicy() == Qt::NoFocus || isPart || widget->inherits("QTabBar") ||
            widget->inherits("QScrollArea") || widget->inherits("QHeaderView") || widget->inherits("QTextBrowser"))
            continue;
        const auto* const button = qobject_cast<const QAbstractButton*>(widget);
        const bool named = !widget->accessibleName().isEmpty() || (button != nullptr && !button->text().isEmpty());
        EXPECT_TRUE(named) << widget->metaObject()->className() << " " << widget->objectName().toStdString();
    }
}

TEST_F(DeskWindow, NarrowScreenGetsTheNarrowLayout)
{
    TearDown();
    ZToolKit_SetScreenWidth(1024);
    MakeWindow();
    window->resize(1024, 700);
    QTest::qWait(1);
    const QWidget* const bones = window->ToolForm()->FindWidget(Control<ZtListBox>("ListBonesList"));
    const QWidget* const vertices = window->ToolForm()->FindWidget(Control<ZtListBox>("ListVertexList"));
    EXPECT_EQ(bones->x(), vertices->x());
    EXPECT_GT(vertices->y(), bones->geometry().bottom());
    EXPECT_GT(vertices->height(), 40);
}

} // namespace
