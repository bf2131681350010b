// SPDX-License-Identifier: MIT
// Files on the desk: the star in the title, cancelling, pictures of surfaces, dropped files.
#include "Drops.h"
#include "Stage.h"

#include "desk/model/ModelDrag.h"
#include "desk/windows/Waiting.h"
#include "object/ZUndoStack.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZSkin.h"

#include <QDockWidget>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QThread>
#include <QWindow>

#include <atomic>
#include <memory>

namespace {

using testing::HasSubstr;
using testing::Not;

class DeskFiles : public DeskStage
{
protected:
    ZModelGeometryBase& FirstMesh()
    {
        for (ZModel* const model : desk->Session().GetScene().GetModels())
            if (auto* const mesh = Object_Cast<ZModelGeometryBase>(model))
                return *mesh;
        throw std::runtime_error("no mesh");
    }
    /// A place of the viewer at which a model is seen.
    QPoint PlaceOfAModel()
    {
        const double scale = window->Viewer()->devicePixelRatioF();
        for (int y = 0; y < window->Viewer()->height(); y += 5)
            for (int x = 0; x < window->Viewer()->width(); x += 5)
                if (desk->Session().GetViewer().ModelAt(int(x * scale), int(y * scale)) != nullptr)
                    return {x, y};
        ADD_FAILURE() << "no model is seen";
        return {};
    }
    std::string Title() { return window->windowTitle().toStdString(); }
    std::string Status() { return window->findChild<QLabel*>("StatusText")->text().toStdString(); }
    /// The next file dialog is answered with this path.
    static void ChooseInNextDialog(const QString& path)
    {
        WithNextDialog<QFileDialog>([path](QFileDialog& dialog) { ChooseFile(dialog, path); });
    }
    /// The share of the viewer's pixels that are far from grey.
    double ColourfulShare()
    {
        QTest::qWait(20);
        const QImage picture = window->Viewer()->grab().toImage();
        int colourful = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const QColor pixel = picture.pixelColor(x, y);
                const auto [least, most] = std::minmax({pixel.red(), pixel.green(), pixel.blue()});
                colourful += most - least > 60;
            }
        return double(colourful) / (picture.width() * picture.height());
    }
};

TEST_F(DeskFiles, StarGoesWhenUndoReturnsToTheSavedState)
{
    PickVertices();
    auto& bones = Control<ZtListBox>("ListBonesList");
    bones.UserSelect({0, 1});
    desk->AfterEvent();
    auto& spread = Control<ZtSpread>("SpreadWeights");
    const auto type = [&](double value) {
        spread.UserType(0, 3, value);
        desk->AfterEvent();
    };
    EXPECT_THAT(Title(), Not(HasSubstr("*"))) << "picking changes nothing in the file";
    type(12.5);
    EXPECT_THAT(Title(), HasSubstr("figure.glb*"));
    Action("EditUndo")->trigger();
    EXPECT_THAT(Title(), Not(HasSubstr("*")));
    Action("EditRedo")->trigger();
    EXPECT_THAT(Title(), HasSubstr("figure.glb*"));
    Action("FileSave")->trigger();
    EXPECT_THAT(Title(), Not(HasSubstr("*")));
    Action("EditUndo")->trigger();
    EXPECT_THAT(Title(), HasSubstr("figure.glb*")) << "the file holds the later state";
    EXPECT_TRUE(desk->Redo());
    EXPECT_THAT(Title(), Not(HasSubstr("*")));
}

TEST_F(DeskFiles, QuickWorkShowsNoWindow)
{
    bool shown = false;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] { shown |= QApplication::activeModalWidget() != nullptr; });
    look.start(5);
    const auto answer = Waiting::Run(window.get(), "Working ...", WhenCancelled::Leave, [](const std::stop_token&) {
        QThread::msleep(100);
        return 42;
    });
    EXPECT_EQ(answer, 42);
    EXPECT_FALSE(shown);
}

TEST_F(DeskFiles, LongWorkIsLeftByItsCancelButton)
{
    auto stopped = std::make_shared<std::atomic<bool>>(false);
    QString text;
    WithNextDialog<QProgressDialog>(
        [&text](QProgressDialog& dialog) {
            text = dialog.labelText();
            QTest::mouseClick(dialog.findChild<QPushButton*>(), Qt::LeftButton);
        },
        500);
    QElapsedTimer clock;
    clock.start();
    const auto answer =
        Waiting::Run(window.get(), "Working ...", WhenCancelled::Leave, [stopped](const std::stop_token& stop) {
            for (int i = 0; i < 1000 && !stop.stop_requested(); ++i)
                QThread::msleep(20);
            *stopped = stop.stop_requested();
            return 42;
        });
    EXPECT_EQ(answer, std::nullopt);
    EXPECT_EQ(text, "Working ...");
    EXPECT_GE(clock.elapsed(), 450) << "a window that flashes up is worse than none";
    EXPECT_TRUE(QTest::qWaitFor([&] { return stopped->load(); })) << "the work is asked to stop";
}

TEST_F(DeskFiles, CancelledSavingIsWaitedForAndItsAnswerKnown)
{
    WithNextDialog<QProgressDialog>([](QProgressDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); }, 500);
    const auto answer = Waiting::Run(window.get(), "Saving ...", WhenCancelled::Wait, [](const std::stop_token& stop) {
        for (int i = 0; i < 1000 && !stop.stop_requested(); ++i)
            QThread::msleep(20);
        QThread::msleep(100);
        return stop.stop_requested() ? 1 : 2;
    });
    EXPECT_EQ(answer, 1);
}

TEST_F(DeskFiles, CancelledOpeningLeavesNothing)
{
    // A file whose reading takes long enough for a hand: very many numbers in a place where anything may stand.
    const QString path = folder.filePath("long.gltf");
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(R"({"asset":{"version":"2.0"},"extras":[0)");
    const QByteArray numbers = QByteArray(",1").repeated(1'000'000);
    for (int i = 0; i < 60; ++i)
        file.write(numbers);
    file.write("]}");
    file.close();
    bool pressed = false;
    WithNextDialog<QProgressDialog>(
        [&pressed](QProgressDialog& dialog) {
            pressed = true;
            QTest::keyClick(&dialog, Qt::Key_Escape);
        },
        1000);
    EXPECT_FALSE(window->OpenFile(path));
    EXPECT_TRUE(pressed);
    EXPECT_TRUE(desk->Session().GetScene().GetModels().empty());
    EXPECT_TRUE(desk->Documents().GetDocuments().empty());
    EXPECT_THAT(window->findChild<QLabel*>("StatusText")->text().toStdString(), HasSubstr("cancelled"));
}

TEST_F(DeskFiles, SurfaceShowsItsPictureUnlessTexturesAreOff)
{
    const QString fox = QStringLiteral(SKINDESK_SOURCE_DIR "/tests/data/skinned/Fox.glb");
    ASSERT_TRUE(window->OpenFile(fox));
    const auto& appearance = FirstMesh().GetAppearance();
    ASSERT_NE(appearance, nullptr);
    EXPECT_EQ(appearance->texCoords.size(), 6u * static_cast<size_t>(FirstMesh().Geometry().PolygonCount()));
    ASSERT_EQ(appearance->runs.size(), 1u);
    EXPECT_GT(appearance->runs[0].picture->width, 16);

    Action("ViewBones")->setChecked(false);
    const double with = ColourfulShare();
    Action("ViewPictures")->setChecked(false);
    const double without = ColourfulShare();
    EXPECT_GT(with, without + 0.01) << "a fox is orange, a plain surface is grey";
}

TEST_F(DeskFiles, HeatMapGoesBeforePictures)
{
    ASSERT_TRUE(window->OpenFile(QStringLiteral(SKINDESK_SOURCE_DIR "/tests/data/skinned/Fox.glb")));
    Action("ViewBones")->setChecked(false);
    QTest::qWait(20);
    const QImage textured = window->Viewer()->grab().toImage();
    FirstMesh().GetSkin()->LinkModel(0)->SetSelected(true);
    Action("ViewHeatMap")->setChecked(true);
    QTest::qWait(20);
    EXPECT_NE(window->Viewer()->grab().toImage(), textured);
    Action("ViewPictures")->setChecked(false);
    const QImage heat = window->Viewer()->grab().toImage();
    Action("ViewPictures")->setChecked(true);
    QTest::qWait(20);
    EXPECT_EQ(window->Viewer()->grab().toImage(), heat) << "while weights are shown, pictures make no difference";
}

TEST_F(DeskFiles, ChoicesOfTheViewAreKeptBetweenStarts)
{
    Action("ViewWire")->setChecked(true);
    Action("ViewGrid")->setChecked(false);
    Restart();
    EXPECT_TRUE(Action("ViewWire")->isChecked());
    EXPECT_EQ(desk->Session().GetViewer().GetShading(), ZShading::Wire);
    EXPECT_FALSE(desk->Session().GetViewer().GetShowGrid());
    EXPECT_TRUE(desk->Session().GetViewer().GetShowBones());
}

TEST_F(DeskFiles, FilesDroppedOnTheWindowAreAllOpened)
{
    QMimeData urls;
    urls.setUrls({QUrl::fromLocalFile(Figure()),
                  QUrl::fromLocalFile(QStringLiteral(SKINDESK_SOURCE_DIR "/tests/data/skinned/RiggedSimple.gltf"))});
    EXPECT_TRUE(DropOn(*window, urls));
    EXPECT_EQ(desk->Documents().GetDocuments().size(), 2u);
}

TEST_F(DeskFiles, CharacterOfAnotherKindIsSavedUnderANameOfItsOwn)
{
    const QString other = folder.filePath("square.obj");
    const QByteArray text = "o square\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n";
    QFile file(other);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(text);
    file.close();
    ASSERT_TRUE(window->OpenFile(other));
    EXPECT_THAT(Title(), HasSubstr("square.glb*"));
    QString proposed;
    WithNextDialog<QFileDialog>([&](QFileDialog& dialog) {
        proposed = dialog.selectedFiles().value(0);
        ChooseFile(dialog, proposed);
    });
    Action("FileSave")->trigger();
    EXPECT_EQ(proposed, folder.filePath("square.glb"));
    EXPECT_TRUE(QFile::exists(proposed));
    EXPECT_EQ(Title(), "square.glb - Skindesk");
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_EQ(file.readAll(), text);
}

TEST_F(DeskFiles, ToolWorksInAWindowOfItsOwn)
{
    OpenFigure();
    auto* const dock = window->findChild<QDockWidget*>("ToolDock");
    dock->setFloating(true);
    QTest::qWait(20);
    EXPECT_TRUE(dock->isWindow());
    EXPECT_TRUE(desk->GetTool()->IsToolActive());
    desk->AddAllSkinnedModels();
    auto* const models = WidgetOf<QAbstractItemView>(Control<ZtListBox>("ModelListUI"));
    EXPECT_EQ(models->model()->index(0, 0).data().toString(), "Figure");
    // Keys go to the viewer from there, too.
    const ZgeVector3 eye = desk->Session().GetViewer().GetCamera().GetEye();
    for (ZModel* const model : desk->Session().GetScene().GetModels())
        model->SetSelected(model->GetObjectName() == "Head");
    QTest::keyClick(models, Qt::Key_F);
    EXPECT_NE(desk->Session().GetViewer().GetCamera().GetEye(), eye);
}

TEST_F(DeskFiles, ForeignDropOnTheWindowIsRefused)
{
    QMimeData text;
    text.setText("hello");
    EXPECT_FALSE(DropOn(*window, text));
    EXPECT_FALSE(DropOn(*window->Viewer(), text));
}

TEST_F(DeskFiles, BoneDraggedFromTheTreeOnTheBoneListBecomesALink)
{
    OpenFigure();
    desk->AddAllSkinnedModels();
    auto& bones = Control<ZtListBox>("ListBonesList");
    const int before = bones.GetRowCount();
    ZModel* const bone = desk->Session().GetScene().AddModel(std::make_unique<ZModel>("Antler", ZModelKind::Bone));
    bone->SetBone(true);
    desk->AfterEvent();
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(bone, 0);
    QMimeData announced;
    announced.setData(kModelDragFormat, "models");
    EXPECT_TRUE(DropOn(*WidgetOf<QAbstractItemView>(bones)->viewport(), announced));
    EXPECT_EQ(bones.GetRowCount(), before + 1);
}

TEST_F(DeskFiles, BoneDraggedOutOfTheBoneListIsNoLinkAnyMore)
{
    OpenFigure();
    desk->AddAllSkinnedModels();
    auto& bones = Control<ZtListBox>("ListBonesList");
    const int before = bones.GetRowCount();
    ZModel* const bone = desk->Session().GetScene().AddModel(std::make_unique<ZModel>("Antler", ZModelKind::Bone));
    bone->SetBone(true);
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(bone, 0);
    QMimeData announced;
    announced.setData(kModelDragFormat, "models");
    auto* const list = WidgetOf<QAbstractItemView>(bones);
    ASSERT_TRUE(DropOn(*list->viewport(), announced));
    ASSERT_EQ(bones.GetRowCount(), before + 1);
    Click(list, before);
    ASSERT_EQ(list->model()->index(before, 0).data().toString(), "Antler");

    const QPoint row = list->visualRect(list->model()->index(before, 0)).center();
    QTimer givesUp;
    QObject::connect(&givesUp, &QTimer::timeout, [this] { QTest::keyClick(window->windowHandle(), Qt::Key_Escape); });
    givesUp.start(50);
    QTest::mousePress(list->viewport(), Qt::LeftButton, Qt::AltModifier, row);
    const QPoint away = row - QPoint(0, 60);
    QMouseEvent move(QEvent::MouseMove, away, list->viewport()->mapToGlobal(away), Qt::NoButton, Qt::LeftButton,
                     Qt::AltModifier);
    QApplication::sendEvent(list->viewport(), &move);
    EXPECT_EQ(bones.GetRowCount(), before);
    EXPECT_EQ(GlobalDragAndDrop_GetCount(), 0) << "the drag has ended";
}

TEST_F(DeskFiles, WeightsGoOutAndInAsATable)
{
    OpenFigure();
    const QString table = folder.filePath("weights.csv");
    ChooseInNextDialog(table);
    Action("FileExportWeights")->trigger();
    QFile file(table);
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    const QByteArray whole = file.readAll();
    file.close();
    // One vertex alone that several bones pull, with all its weight on one of them.
    const QByteArrayList lines = whole.split('\n');
    ASSERT_GT(lines.size(), 1000);
    const auto shared = std::find_if(lines.begin() + 1, lines.end(), [](const QByteArray& line) {
        const double weight = line.mid(line.lastIndexOf(',') + 1).toDouble();
        return weight > 0 && weight < 1;
    });
    ASSERT_NE(shared, lines.end());
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(lines[0] + '\n' + shared->left(shared->lastIndexOf(',')) + ",1\n");
    file.close();
    EXPECT_THAT(Title(), Not(HasSubstr("*")));
    ChooseInNextDialog(table);
    Action("FileImportWeights")->trigger();
    EXPECT_EQ(Status(), "Imported weights: 1 vertices changed");
    EXPECT_THAT(Title(), HasSubstr("figure.glb*"));
    EXPECT_TRUE(desk->Undo());
    EXPECT_THAT(Title(), Not(HasSubstr("*")));

    desk->AddAllSkinnedModels();
    WithNextDialog<QFileDialog>([table](QFileDialog& dialog) {
        WithNextDialog<QMessageBox>([](QMessageBox& message) {
            EXPECT_THAT(message.text().toStdString(), HasSubstr("while a tool holds the model"));
            message.accept();
        });
        ChooseFile(dialog, table);
    });
    Action("FileImportWeights")->trigger();
    EXPECT_THAT(Title(), Not(HasSubstr("*")));
}

TEST_F(DeskFiles, CancelledReadingOfATableChangesNothing)
{
    OpenFigure();
    // So many lines that a hand has time to cancel.
    const QString path = folder.filePath("long.csv");
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("model,vertex,bone,weight\n");
    const QByteArray lines = QByteArray("Figure,1,Hips,0.5\n").repeated(500'000);
    for (int i = 0; i < 8; ++i)
        file.write(lines);
    file.close();
    bool pressed = false;
    WithNextDialog<QFileDialog>([path, &pressed](QFileDialog& dialog) {
        WithNextDialog<QProgressDialog>(
            [&pressed](QProgressDialog& progress) {
                pressed = true;
                QTest::keyClick(&progress, Qt::Key_Escape);
            },
            500);
        ChooseFile(dialog, path);
    });
    Action("FileImportWeights")->trigger();
    EXPECT_TRUE(pressed);
    EXPECT_EQ(Status(), "Reading long.csv was cancelled");
    EXPECT_FALSE(desk->Undo());
}

TEST_F(DeskFiles, DragOutOfTheViewerCarriesTheModelUnderThePointer)
{
    OpenFigure();
    Action("ViewBones")->setChecked(false);
    // The drag of the window system is a child of the widget that it starts from; there may be no system to take it.
    struct Watch : QObject
    {
        bool eventFilter(QObject*, QEvent* event) override
        {
            if (event->type() == QEvent::ChildAdded)
                carried = GlobalDragAndDrop_GetCount();
            return false;
        }
        int carried = -1;
    } watch;
    window->Viewer()->installEventFilter(&watch);
    QTimer givesUp;
    QObject::connect(&givesUp, &QTimer::timeout, [this] { QTest::keyClick(window->windowHandle(), Qt::Key_Escape); });
    givesUp.start(50);
    const QPoint place = PlaceOfAModel();
    QTest::mousePress(window->Viewer(), Qt::LeftButton, Qt::ControlModifier | Qt::AltModifier, place);
    QTest::mouseRelease(window->Viewer(), Qt::LeftButton, {}, place);
    EXPECT_EQ(watch.carried, 1);
    EXPECT_EQ(GlobalDragAndDrop_GetCount(), 0) << "the drag has ended";
}

} // namespace
