// SPDX-License-Identifier: MIT
// Unsaved work after the program was cut off: a real process is killed, another one brings its work back.
#include "Stage.h"

#include "desk/model/ZJournal.h"
#include "desk/model/ZJournalList.h"
#include "desk/windows/DocumentCommands.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZSkin.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QProcess>
#include <QProcessEnvironment>
#include <QPushButton>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::string Bytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class Journal : public DeskStage
{
protected:
    void SetUp() override
    {
        journalFolder = folder.filePath("journal").toStdString();
        DeskStage::SetUp();
    }
    /// What the journal's folder holds: sessions.
    std::vector<fs::path> Sessions() const
    {
        std::error_code failed;
        return {fs::directory_iterator(journalFolder, failed), fs::directory_iterator()};
    }
    double Weight() { return desk->Session().GetScene().GetModels().empty() ? -1 : SkinOf().GetEntryWeights(0)[0]; }
    ZSkin& SkinOf()
    {
        for (ZModel* const model : desk->Session().GetScene().GetModels())
            if (model->GetSkin() != nullptr)
                return *model->GetSkin();
        throw std::runtime_error("no skin");
    }
    void Edit(double weight)
    {
        SkinOf().BeginLink(0);
        SkinOf().SetEntryWeight(weight, 0);
        SkinOf().EndLink();
        desk->AfterEvent();
    }
    void Keep()
    {
        desk->KeepJournal();
        desk->Journal().Finish();
    }
    /// Presses a button of the question at the start.
    void Answer(const char* text)
    {
        WithNextDialog<QMessageBox>([this, text](QMessageBox& box) {
            asked = (box.text() + " " + box.informativeText()).toStdString();
            for (QAbstractButton* const button : box.buttons())
                if (button->text() == text)
                    button->click();
        });
        window->Documents().OfferRecovery();
    }
    /// Another process opens the character, edits it by hand and is killed without a warning once it says that its
    /// timer has kept the work.
    void KillAnEditingProcess(const QString& character)
    {
        QProcess other;
        // What is killed clears nothing up: its temporary folders go with ours.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", folder.path());
        other.setProcessEnvironment(environment);
        other.start(QCoreApplication::applicationFilePath(),
                    {"--live-until-killed", QString::fromStdString(journalFolder), character});
        ASSERT_TRUE(other.waitForStarted());
        QByteArray said;
        while (!said.contains("KEPT") && other.waitForReadyRead(60000))
            said += other.readAllStandardOutput();
        ASSERT_TRUE(said.contains("KEPT")) << said.toStdString();
        ASSERT_EQ(::kill(static_cast<pid_t>(other.processId()), SIGKILL), 0);
        ASSERT_TRUE(other.waitForFinished());
        ASSERT_EQ(other.exitStatus(), QProcess::CrashExit);
    }
    std::string asked;
};

TEST_F(Journal, KilledProcessLosesNothingThatItsTimerKept)
{
    const QString character = Figure();
    const std::string before = Bytes(character.toStdString());
    KillAnEditingProcess(character);
    EXPECT_EQ(Bytes(character.toStdString()), before) << "the user's file is never written";

    Answer("&Recover");
    EXPECT_THAT(asked, HasSubstr("figure.glb"));
    EXPECT_EQ(Weight(), 0.4375);
    EXPECT_THAT(window->windowTitle().toStdString(), HasSubstr("figure.glb*"));
    EXPECT_EQ(Bytes(character.toStdString()), before);

    // It is saved where the user says; the place of the opened file is proposed.
    QString proposed;
    WithNextDialog<QFileDialog>([&](QFileDialog& dialog) {
        proposed = dialog.selectedFiles().value(0);
        ChooseFile(dialog, folder.filePath("recovered.glb"));
    });
    Action("FileSave")->trigger();
    EXPECT_EQ(proposed, character);
    EXPECT_TRUE(QFile::exists(folder.filePath("recovered.glb")));
    EXPECT_EQ(window->windowTitle(), "recovered.glb - Skindesk");
    ASSERT_TRUE(window->close());
    TearDown();
    EXPECT_THAT(Sessions(), IsEmpty());
}

TEST_F(Journal, DiscardedWorkIsNotOfferedAgain)
{
    KillAnEditingProcess(Figure());
    Answer("&Discard");
    EXPECT_TRUE(desk->Session().GetScene().GetModels().empty());
    EXPECT_THAT(desk->Journal().FindLeft(), IsEmpty());
}

TEST_F(Journal, WorkLeftForLaterIsOfferedAtTheNextStart)
{
    KillAnEditingProcess(Figure());
    Answer("&Not Now");
    Restart();
    Answer("&Recover");
    EXPECT_EQ(Weight(), 0.4375);
}

TEST_F(Journal, SessionThatLivesIsNotOffered)
{
    OpenFigure();
    Edit(0.25);
    Keep();
    EXPECT_EQ(desk->Journal().KeptCount(), 1);
    ZJournal other(desk->Documents(), journalFolder);
    EXPECT_THAT(other.FindLeft(), IsEmpty());
}

TEST_F(Journal, ProperEndLeavesNothing)
{
    OpenFigure();
    Edit(0.25);
    Keep();
    EXPECT_THAT(Sessions(), SizeIs(1));
    WithNextDialog<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Discard)->click(); });
    ASSERT_TRUE(window->close());
    TearDown();
    EXPECT_THAT(Sessions(), IsEmpty());
}

TEST_F(Journal, SavedWorkIsDropped)
{
    OpenFigure();
    Edit(0.25);
    Keep();
    EXPECT_EQ(desk->Journal().KeptCount(), 1);
    Action("FileSave")->trigger();
    EXPECT_EQ(desk->Journal().KeptCount(), 0);
}

TEST_F(Journal, UntouchedCharacterIsNotKept)
{
    OpenFigure();
    Keep();
    EXPECT_EQ(desk->Journal().KeptCount(), 0);
    EXPECT_THAT(Sessions(), IsEmpty());
}

TEST_F(Journal, FolderThatCannotBeWrittenIsSaidOnce)
{
    TearDown();
    journalFolder = (Figure() + "/journal").toStdString(); // under a file there can be no folder
    MakeWindow();
    ZReport_ClearWarnings();
    OpenFigure();
    Edit(0.25);
    Keep();
    Keep();
    EXPECT_THAT(ZReport_Warnings(), testing::ElementsAre(HasSubstr("cannot be kept")));
}

TEST(JournalList, NamesWithTabsAndLineBreaksComeBack)
{
    QTemporaryDir folder;
    const std::string root = folder.path().toStdString();
    ZLeftDocument left;
    left.session = root;
    left.copy = root + "/odd\tname\n100%.glb";
    left.original = "/home/anna/odd\tname\n100%.glb";
    left.seconds = 1234567890;
    std::ofstream(left.copy) << "copy";
    ASSERT_TRUE(ZJournalList_Write(root, {left}));
    const auto read = ZJournalList_Read(root);
    ASSERT_THAT(read, SizeIs(1));
    EXPECT_EQ(read[0].copy, left.copy);
    EXPECT_EQ(read[0].original, left.original);
    EXPECT_EQ(read[0].seconds, left.seconds);
}

TEST(JournalList, DamagedLinesAndFilesElsewhereArePassedOver)
{
    QTemporaryDir folder;
    const std::string root = folder.path().toStdString();
    std::ofstream(root + "/good.glb") << "copy";
    std::ofstream(root + "/unsaved") << "no fields\n5\t/etc/passwd\t/x.glb\n7\t" << root << "/good.glb\t/y.glb\n9\t"
                                     << root << "/gone.glb\t/z.glb\n";
    const auto read = ZJournalList_Read(root);
    ASSERT_THAT(read, SizeIs(1));
    EXPECT_EQ(read[0].original, "/y.glb");
}

} // namespace
