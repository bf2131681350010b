// SPDX-License-Identifier: MIT
// The first edit, with the hand.
#include "Stage.h"

#include "desk/widgets/SpreadDelegate.h"
#include "object/ZUndoStack.h"
#include "zmodel/ZSkin.h"

#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class FirstEdit : public DeskStage
{
protected:
    QAbstractItemView* Bones() { return WidgetOf<QAbstractItemView>(Control<ZtListBox>("ListBonesList")); }
    QAbstractItemView* Vertices() { return WidgetOf<QAbstractItemView>(Control<ZtListBox>("ListVertexList")); }
    QTableView* Spread() { return WidgetOf<QTableView>(Control<ZtSpread>("SpreadWeights")); }
    std::string Hint() { return window->findChild<QLabel*>("Hint")->text().toStdString(); }

    /// Selects the row of a bone, and those of more with Ctrl.
    void SelectBones(const std::vector<std::string>& names)
    {
        Qt::KeyboardModifiers modifiers;
        for (const std::string& name : names) {
            const QModelIndexList found = Bones()->model()->match(Bones()->model()->index(0, 0), Qt::DisplayRole,
                                                                  QString::fromStdString(name), 1, Qt::MatchExactly);
            ASSERT_EQ(found.size(), 1) << name;
            Click(Bones(), found.first().row(), 0, modifiers);
            modifiers = Qt::ControlModifier;
        }
    }
    void TypeWeight(int row, const char* text)
    {
        Click(Spread(), row, 3);
        Spread()->setFocus();
        QTest::keyClicks(Spread()->viewport(), QString(text[0]));
        auto* const editor = Spread()->findChild<QDoubleSpinBox*>();
        ASSERT_NE(editor, nullptr);
        QTest::keyClicks(editor, text + 1);
        QTest::keyClick(editor, Qt::Key_Return);
        QTest::qWait(1);
    }
    std::string Weight(int row) { return Spread()->model()->index(row, 3).data().toString().toStdString(); }
};

TEST_F(FirstEdit, OneClickAddsAllSkinnedModels)
{
    EXPECT_THAT(Hint(), HasSubstr("Open a character"));
    OpenFigure();
    EXPECT_THAT(Hint(), HasSubstr("Add all skinned models"));
    QTest::mouseClick(window->findChild<QWidget*>("AddAllSkinnedModels"), Qt::LeftButton);

    auto* const models = WidgetOf<QAbstractItemView>(Control<ZtListBox>("ModelListUI"));
    ASSERT_EQ(models->model()->rowCount(), 1);
    EXPECT_EQ(models->model()->index(0, 0).data().toString(), "Figure");
    EXPECT_EQ(models->model()->index(0, 0).data(Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_GT(Bones()->model()->rowCount(), 10);
    EXPECT_THAT(Hint(), HasSubstr("Drag a rectangle"));
}

TEST_F(FirstEdit, RectangleInTheViewerListsVertices)
{
    PickVertices();
    ASSERT_GT(Vertices()->model()->rowCount(), 1);
    EXPECT_THAT(Vertices()->model()->index(0, 0).data().toString().toStdString(),
                testing::MatchesRegex("Vertex [0-9]+ Figure"));
    EXPECT_THAT(Hint(), HasSubstr("type a weight"));
}

TEST_F(FirstEdit, TypedWeightIsOneStepThatUndoTakesBack)
{
    PickVertices();
    SelectBones({"Hips", "Spine"});
    ASSERT_EQ(Spread()->model()->rowCount(), 2);
    const std::string before = Weight(0);
    TypeWeight(0, "12.5");
    EXPECT_EQ(Weight(0), "12.50");
    EXPECT_EQ(window->findChild<QLabel*>("StatusText")->text(), "Apply Weight Change");
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoNames().front(), "Apply Weight Change");
    EXPECT_EQ(Action("EditUndo")->text(), "&Undo Apply Weight Change");
    EXPECT_THAT(window->windowTitle().toStdString(), HasSubstr("figure.glb*"));
    EXPECT_EQ(Hint(), "");

    Action("EditUndo")->trigger();
    EXPECT_EQ(Weight(0), before);
    EXPECT_EQ(Action("EditRedo")->text(), "&Redo Apply Weight Change");
    Action("EditRedo")->trigger();
    EXPECT_EQ(Weight(0), "12.50");

    // The picture for the manual: the window in the middle of its work.
    QTest::qWait(100);
    window->grab().save(QCoreApplication::applicationDirPath() + "/../desk-" + QGuiApplication::platformName() +
                        ".png");
}

TEST_F(FirstEdit, EnterWithoutTypingKeepsTheWeight)
{
    PickVertices();
    SelectBones({"Hips", "Spine"});
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    Click(Spread(), 0, 3);
    Spread()->edit(Spread()->model()->index(0, 3));
    auto* const editor = Spread()->findChild<QDoubleSpinBox*>();
    ASSERT_NE(editor, nullptr);
    QTest::keyClick(editor, Qt::Key_Return);
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps);
}

TEST_F(FirstEdit, NumberCellTakesDecimalComma)
{
    PickVertices();
    SelectBones({"Hips", "Spine"});
    TypeWeight(0, "20,25");
    EXPECT_EQ(Weight(0), "20.25");
}

TEST_F(FirstEdit, DraggedSliderIsOneStep)
{
    PickVertices();
    SelectBones({"Hips", "Spine"});
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    const QRect cell = SpreadDelegate::Track(Spread()->visualRect(Spread()->model()->index(0, 1)));
    QWidget* const viewport = Spread()->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, cell.center());
    for (const int part : {3, 2}) {
        QMouseEvent move(QEvent::MouseMove, QPointF(cell.left() + cell.width() * part / 5, cell.center().y()),
                         QPointF(), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &move);
    }
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, QPoint(cell.left() + cell.width() / 4, cell.center().y()));
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), steps + 1);
    EXPECT_NEAR(QString::fromStdString(Weight(0)).toDouble(), 25, 1);
}

TEST_F(FirstEdit, LockedBoneKeepsItsWeight)
{
    PickVertices();
    SelectBones({"Hips", "Spine"});
    TypeWeight(0, "40");
    Click(Spread(), 0, 2);
    EXPECT_EQ(Spread()->model()->index(0, 2).data(Qt::CheckStateRole).toInt(), Qt::Checked);
    TypeWeight(0, "90");
    EXPECT_EQ(Weight(0), "40.00");
}

TEST_F(FirstEdit, SaveAsWritesTheFileAndTakesTheStarAway)
{
    PickVertices();
    SelectBones({"Hips", "Spine"});
    TypeWeight(0, "12.5");
    const QString target = folder.filePath("saved.glb");
    WithNextDialog<QFileDialog>([target](QFileDialog& dialog) { ChooseFile(dialog, target); });
    Action("FileSaveAs")->trigger();
    ASSERT_TRUE(QFile::exists(target));
    EXPECT_EQ(window->windowTitle(), "saved.glb - Skindesk");

    QFile original(Figure()), saved(target);
    ASSERT_TRUE(original.open(QFile::ReadOnly));
    ASSERT_TRUE(saved.open(QFile::ReadOnly));
    EXPECT_NE(original.readAll(), saved.readAll());
}

TEST_F(FirstEdit, UntouchedFileIsSavedByteForByte)
{
    OpenFigure();
    QFile file(Figure());
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    const QByteArray before = file.readAll();
    file.close();
    Action("FileSave")->trigger();
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_EQ(file.readAll(), before);
}

TEST_F(FirstEdit, ClosingWithUnsavedChangesAsks)
{
    PickVertices();
    SelectBones({"Hips", "Spine"});
    TypeWeight(0, "12.5");
    WithNextDialog<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Cancel)->click(); });
    EXPECT_FALSE(window->close());
    EXPECT_TRUE(window->isVisible());

    WithNextDialog<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Save)->click(); });
    EXPECT_TRUE(window->close());
    EXPECT_FALSE(desk->Documents().HasUnsavedChanges());
}

TEST_F(FirstEdit, ClosingWithoutChangesDoesNotAsk)
{
    OpenFigure();
    EXPECT_TRUE(window->close());
}

TEST_F(FirstEdit, HistoryListGoesBackToAStep)
{
    PickVertices();
    SelectBones({"Hips", "Spine"});
    TypeWeight(0, "12.5");
    TypeWeight(0, "60");
    auto* const list = window->findChild<QAbstractItemView*>("HistoryList");
    Action("EditHistory")->trigger();
    QTest::qWait(1);
    const int steps = ZUndoStack::TheOne()->GetUndoCount();
    ASSERT_EQ(list->model()->rowCount(), steps + 1);
    EXPECT_EQ(list->model()->index(2, 0).data().toString(), "Vertex Selection");
    Click(list, steps - 1);
    EXPECT_EQ(Weight(0), "12.50");
    EXPECT_EQ(list->model()->rowCount(), steps + 1);
}

} // namespace
