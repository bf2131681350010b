// SPDX-License-Identifier: MIT
// What the hand does on the desk, a script does through the Python door: the same gesture ends in the same bytes.
#include "Stage.h"

#include "desk/widgets/SpreadDelegate.h"

#include <QDoubleSpinBox>
#include <QFile>
#include <QHeaderView>
#include <QProcess>
#include <QTableView>

namespace {

class SameGesture : public DeskStage
{
protected:
    QTableView* Spread() { return WidgetOf<QTableView>(Control<ZtSpread>("SpreadWeights")); }

    /// Selects the bones in turn, with Ctrl from the second on.
    void SelectBones(const QStringList& names)
    {
        auto* const bones = WidgetOf<QAbstractItemView>(Control<ZtListBox>("ListBonesList"));
        for (const QString& name : names) {
            const QModelIndexList found =
                bones->model()->match(bones->model()->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly);
            ASSERT_EQ(found.size(), 1) << name.toStdString();
            Click(bones, found.first().row(), 0, name == names.first() ? Qt::NoModifier : Qt::ControlModifier);
        }
    }
    void TypeWeight(const char* text)
    {
        Click(Spread(), 0, 3);
        Spread()->setFocus();
        QTest::keyClicks(Spread()->viewport(), QString(text[0]));
        auto* const editor = Spread()->findChild<QDoubleSpinBox*>();
        ASSERT_NE(editor, nullptr);
        QTest::keyClicks(editor, text + 1);
        QTest::keyClick(editor, Qt::Key_Return);
        QTest::qWait(1);
    }
    /// A press at one value and a release at another, in per cent; the cell is brought to a width at which the pointer
    /// can say both exactly.
    void DragSlider(int from, int to)
    {
        const QRect before = Spread()->visualRect(Spread()->model()->index(0, 1));
        const int frame = before.width() - SpreadDelegate::Track(before).width();
        Spread()->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Fixed);
        Spread()->setColumnWidth(1, 100 + frame + 1); // the grid takes a pixel
        const QRect cell = Spread()->visualRect(Spread()->model()->index(0, 1));
        const QRect track = SpreadDelegate::Track(cell);
        ASSERT_EQ(track.width() % 100, 0);
        const auto place = [&](int value) {
            return QPoint(track.left() + value * track.width() / 100, track.center().y());
        };
        QTest::mousePress(Spread()->viewport(), Qt::LeftButton, {}, place(from));
        QTest::mouseRelease(Spread()->viewport(), Qt::LeftButton, {}, place(to));
    }
    static QByteArray Bytes(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QFile::ReadOnly)) << path.toStdString();
        return file.readAll();
    }
};

TEST_F(SameGesture, ByMouseAndThroughPythonEndsInEqualBytes)
{
    const QStringList bones{"Hips", "Spine"};
    OpenFigure();
    QTest::mouseClick(window->findChild<QWidget*>("AddAllSkinnedModels"), Qt::LeftButton);
    const QPoint middle = window->Viewer()->rect().center();
    const double scale = window->Viewer()->devicePixelRatioF();
    DragInViewer(middle - QPoint(25, 25), middle + QPoint(25, 25));
    SelectBones(bones);
    TypeWeight("62.5");
    Click(Spread(), 1, 2);
    DragSlider(70, 40);
    ASSERT_EQ(Control<ZtSpread>("SpreadWeights").GetRowCount(), 2);
    const QString byHand = folder.filePath("hand.glb");
    std::string why;
    ASSERT_TRUE(desk->Save(Figure().toStdString(), byHand.toStdString(), {}, &why)) << why;
    EXPECT_NE(Bytes(byHand), Bytes(Figure()));

    const ZViewer& viewer = desk->Session().GetViewer();
    const auto pixel = [scale](int place) { return QString::number(static_cast<int>(place * scale)); };
    const QString byScript = folder.filePath("script.glb");
    QStringList arguments{QStringLiteral(SKINDESK_SOURCE_DIR "/tests/desk/same_gesture.py"),
                          Figure(),
                          byScript,
                          QString::number(viewer.GetWidth()),
                          QString::number(viewer.GetHeight()),
                          pixel(middle.x() - 25),
                          pixel(middle.y() - 25),
                          pixel(middle.x() + 25),
                          pixel(middle.y() + 25),
                          "62.5"};
    QProcess python;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PYTHONPATH", QStringLiteral(SKINDESK_MODULE_FOLDER));
    python.setProcessEnvironment(environment);
    python.setProcessChannelMode(QProcess::MergedChannels);
    python.start("/usr/bin/python3", arguments + bones);
    ASSERT_TRUE(python.waitForFinished(60000));
    ASSERT_EQ(python.exitCode(), 0) << python.readAll().toStdString();
    EXPECT_TRUE(Bytes(byScript) == Bytes(byHand));
}

} // namespace
