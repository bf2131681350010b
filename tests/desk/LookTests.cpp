// SPDX-License-Identifier: MIT
// Readable everywhere: large letters, dark and light palettes, small screens, other languages. CMake runs these tests
// once more at scales of 150 and 200 %.
#include "Stage.h"

#include "zmodel/ZSkin.h"
#include "ztoolkit/ZtControls.h"

#include <QAbstractButton>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollBar>
#include <QStyle>
#include <QTableView>
#include <QTreeView>

#include <cmath>

namespace {

class Look : public DeskStage
{
protected:
    void TearDown() override
    {
        DeskStage::TearDown();
        QApplication::setFont(m_font);
        QApplication::setPalette(m_palette);
        QLocale::setDefault(m_locale);
    }
    void StartWithFont(double factor)
    {
        DeskStage::TearDown();
        QFont font = m_font;
        font.setPointSizeF(m_font.pointSizeF() * factor);
        QApplication::setFont(font);
        MakeWindow();
    }
    void StartWithPalette(const QColor& window_, const QColor& text)
    {
        DeskStage::TearDown();
        QPalette palette(text, window_, window_.lighter(130), window_.darker(130), window_.darker(110), text, window_);
        QApplication::setPalette(palette);
        MakeWindow();
    }
    /// Every caption of the tool's window stands whole in its widget, and no two widgets lie over each other.
    void ExpectWholeCaptions()
    {
        std::vector<ZtView*> views;
        desk->GetTool()->CollectViews(views);
        for (const ZtView* const view : views) {
            const QWidget* const widget = window->ToolForm()->FindWidget(*view);
            const auto* const button = qobject_cast<const QAbstractButton*>(widget);
            const auto* const label = qobject_cast<const QLabel*>(widget);
            const QString text = button != nullptr ? button->text() : label != nullptr ? label->text() : QString();
            EXPECT_GE(widget->width(), widget->fontMetrics().horizontalAdvance(text)) << view->GetObjectName();
            if (!text.isEmpty()) {
                EXPECT_GE(widget->height(), widget->fontMetrics().ascent()) << view->GetObjectName();
            }
        }
    }
    void ExpectNoOverlap()
    {
        std::vector<ZtView*> views;
        desk->GetTool()->CollectViews(views);
        for (size_t a = 0; a < views.size(); ++a)
            for (size_t b = a + 1; b < views.size(); ++b) {
                const QWidget* const first = window->ToolForm()->FindWidget(*views[a]);
                const QWidget* const second = window->ToolForm()->FindWidget(*views[b]);
                if (first->parentWidget() != second->parentWidget())
                    continue;
                const QRect both = first->geometry().intersected(second->geometry());
                EXPECT_TRUE(both.width() <= 2 || both.height() <= 2)
                    << views[a]->GetObjectName() << " lies over " << views[b]->GetObjectName();
            }
    }
    static double Brightness(const QColor& colour)
    {
        return 0.299 * colour.redF() + 0.587 * colour.greenF() + 0.114 * colour.blueF();
    }
    /// The largest difference in brightness between two pixels of a widget.
    static double Contrast(QWidget* widget, const QRect& part)
    {
        const QImage picture = widget->grab(part).toImage();
        double least = 1, most = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const double bright = Brightness(picture.pixelColor(x, y));
                least = std::min(least, bright);
                most = std::max(most, bright);
            }
        return most - least;
    }

    QFont m_font = QApplication::font();
    QPalette m_palette = QApplication::palette();
    QLocale m_locale;
};

TEST_F(Look, NoCaptionIsCutAtAnyLetterSize)
{
    for (const double factor : {1.0, 1.25, 1.5, 2.0}) {
        StartWithFont(factor);
        SCOPED_TRACE(factor);
        ExpectWholeCaptions();
        ExpectNoOverlap();
    }
}

TEST_F(Look, ToolIsUsableOnAScreenOf1024Pixels)
{
    DeskStage::TearDown();
    ZToolKit_SetScreenWidth(1024);
    MakeWindow();
    window->resize(1024, 720);
    QTest::qWait(20);
    EXPECT_LE(window->width(), 1024);
    EXPECT_GT(window->Viewer()->height(), 140);
    ExpectWholeCaptions();
    ExpectNoOverlap();
    const auto* const spread = WidgetOf<QTableView>(Control<ZtSpread>("SpreadWeights"));
    EXPECT_GT(spread->width(), 150);
    EXPECT_EQ(Control<ZtSpread>("SpreadWeights").GetRowLabelWidth(), 132) << "the narrow columns";
}

TEST_F(Look, TextsAndIconsStandOutOnDarkAndLight)
{
    for (const bool dark : {true, false}) {
        StartWithPalette(dark ? QColor(40, 42, 46) : QColor(240, 240, 240),
                         dark ? QColor(225, 225, 225) : QColor(20, 20, 20));
        SCOPED_TRACE(dark ? "dark" : "light");
        OpenFigure();
        desk->AddAllSkinnedModels();
        QTest::qWait(20);
        auto* const tree = window->findChild<QTreeView*>("SceneTree");
        for (const int column : {0, 1, 2}) {
            const QModelIndex first = tree->model()->index(0, column);
            EXPECT_GT(Contrast(tree->viewport(), tree->visualRect(first)), 0.4) << "column " << column;
        }
        auto* const bones = WidgetOf<QAbstractItemView>(Control<ZtListBox>("ListBonesList"));
        EXPECT_GT(Contrast(bones->viewport(), bones->visualRect(bones->model()->index(0, 0))), 0.4);
        QLabel* const hint = window->findChild<QLabel*>("Hint");
        EXPECT_GT(Contrast(hint, hint->rect()), 0.4);
    }
}

TEST_F(Look, DecimalCommaInDialogsNeverInFiles)
{
    DeskStage::TearDown();
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    MakeWindow();
    PickVertices();
    Control<ZtListBox>("ListBonesList").UserSelect({0, 1});
    desk->AfterEvent();
    auto* const spread = WidgetOf<QTableView>(Control<ZtSpread>("SpreadWeights"));
    const QModelIndex cell = spread->model()->index(0, 3);
    spread->scrollTo(cell);
    QTest::mouseClick(spread->viewport(), Qt::LeftButton, {}, spread->visualRect(cell).center());
    spread->setFocus();
    QTest::keyClicks(spread->viewport(), "1");
    auto* const editor = spread->findChild<QDoubleSpinBox*>();
    ASSERT_NE(editor, nullptr);
    QTest::keyClicks(editor, "2,5");
    QTest::keyClick(editor, Qt::Key_Return);
    QTest::qWait(1);
    EXPECT_EQ(cell.data().toString(), "12,50");

    const QString table = folder.filePath("weights.csv");
    desk->Documents().ExportWeights(table.toStdString());
    QFile file(table);
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_EQ(file.readLine().trimmed(), "model,vertex,bone,weight");
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        EXPECT_EQ(line.count(','), 3) << line.toStdString();
    }
    const QString saved = folder.filePath("saved.glb");
    std::string why;
    ASSERT_TRUE(desk->Save(Figure().toStdString(), saved.toStdString(), {}, &why)) << why;
    desk->CloseAll();
    ASSERT_TRUE(desk->Open(saved.toStdString(), &why)) << why;
}

TEST_F(Look, EveryControlOfTheToolHasATipAndAName)
{
    std::vector<ZtView*> views;
    desk->GetTool()->CollectViews(views);
    for (const ZtView* const view : views) {
        QWidget* const widget = window->ToolForm()->FindWidget(*view);
        ASSERT_NE(widget, nullptr) << view->GetObjectName();
        if (widget->focusPolicy() == Qt::NoFocus && widget->focusProxy() == nullptr)
            continue;
        const QWidget* const named = widget->focusProxy() != nullptr ? widget->focusProxy() : widget;
        EXPECT_FALSE(named->accessibleName().isEmpty()) << view->GetObjectName();
        EXPECT_FALSE(widget->toolTip().isEmpty()) << view->GetObjectName();
    }
}

TEST_F(Look, PictureOfTheWindowIsMadeForTheManual)
{
    PickVertices();
    Control<ZtListBox>("ListBonesList").UserSelect({0, 1, 2});
    desk->AfterEvent();
    QTest::qWait(100);
    // Where the manual's own picture is to be made anew, its folder is named.
    const QByteArray named = qgetenv("SKINDESK_PICTURES");
    const QString target = named.isEmpty() ? folder.path() : QString::fromLocal8Bit(named);
    const QString file = target + QStringLiteral("/desk.png");
    ASSERT_TRUE(window->grab().save(file));
    const QImage picture(file);
    EXPECT_GE(picture.width(), 1000);
    EXPECT_GT(Contrast(window.get(), window->rect()), 0.5);
}

} // namespace
