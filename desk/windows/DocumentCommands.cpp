// SPDX-License-Identifier: MIT
// The File menu's commands.
#include "desk/windows/DocumentCommands.h"

#include "desk/model/ZDeskSession.h"
#include "desk/viewer/Pictures.h"
#include "desk/viewer/ViewerWidget.h"
#include "desk/windows/ExportDialog.h"
#include "desk/windows/Preferences.h"
#include "desk/windows/Waiting.h"
#include "documents/ZForeignFile.h"
#include "gltf/FileError.h"
#include "zbaselib/ZReport.h"

#include <QDateTime>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>

#include <memory>
#include <set>

namespace {

/// The kinds of files for the dialog: our own first, then those that become new characters.
QString CharacterFiles()
{
    QStringList patterns, kinds;
    for (const ZForeignKind& kind : ZForeignFile_Kinds()) {
        patterns += QStringLiteral("*%1").arg(QLatin1String(kind.extension));
        kinds += QStringLiteral("%1 (%2)").arg(QLatin1String(kind.name), patterns.last());
    }
    const QString other =
        QObject::tr("Other kinds, opened as new characters (%1)").arg(patterns.join(QLatin1Char(' ')));
    return (QStringList{QObject::tr("Characters (*.glb *.gltf)"), other} + kinds +
            QStringList{QObject::tr("All files (*)")})
        .join(QStringLiteral(";;"));
}
QString WeightTables() { return QObject::tr("Tables of weights (*.csv *.json)"); }
QString FileName(const QString& path) { return QFileInfo(path).fileName(); }

/// What comes back from the thread that reads a file.
struct OpenedCharacter
{
    ZReadDocument document;
    DecodedPictures pictures;
};

class BusyFlag
{
public:
    explicit BusyFlag(bool& flag) : m_flag(flag) { m_flag = true; }
    ~BusyFlag() { m_flag = false; }
    BusyFlag(const BusyFlag&) = delete;
    BusyFlag& operator=(const BusyFlag&) = delete;

private:
    bool& m_flag;
};

} // namespace

DocumentCommands::DocumentCommands(ZDeskSession& desk, QWidget* window)
    : QObject(window), m_desk(desk), m_window(window)
{
}

void DocumentCommands::Complain(const QString& title, const std::string& sentence)
{
    QMessageBox::warning(m_window, title, QString::fromStdString(sentence));
}

bool DocumentCommands::HasDocument()
{
    if (!m_desk.Documents().GetDocuments().empty())
        return true;
    ZReport_Status("No file is open");
    return false;
}

void DocumentCommands::Open()
{
    const QStringList paths =
        QFileDialog::getOpenFileNames(m_window, tr("Open"), Preferences::LastFolder(), CharacterFiles());
    for (const QString& path : paths)
        OpenFile(path);
}

bool DocumentCommands::OpenFile(const QString& path)
{
    std::string why;
    if (!IsFree())
        return false;
    if (!m_desk.MayOpen(path.toStdString(), &why)) {
        Complain(tr("Open"), why);
        return false;
    }
    const BusyFlag busy(m_busy);
    const auto read = [file = path.toStdString()](const std::stop_token& stop) {
        OpenedCharacter opened;
        opened.document = ZDocuments::Read(file, stop);
        opened.pictures = DecodePictures(opened.document.file);
        return opened;
    };
    try {
        auto opened = Waiting::Run(m_window, tr("Opening %1 ...").arg(FileName(path)), WhenCancelled::Leave, read);
        if (!opened) {
            ZReport_Status("Opening " + FileName(path).toStdString() + " was cancelled");
            return false;
        }
        const int document = m_desk.Adopt(std::move(opened->document));
        ShowPictures(m_desk, document, opened->pictures);
    } catch (const skindesk::gltf::FileError& error) {
        Complain(tr("Open"), error.what());
        return false;
    }
    Preferences::AddRecentFile(path);
    Preferences::SetLastFolder(QFileInfo(path).absolutePath());
    emit fileOpened(path);
    return true;
}

bool DocumentCommands::SaveTo(const QString& source, const QString& path, ZSaveOptions options)
{
    if (!IsFree())
        return false;
    const BusyFlag busy(m_busy);
    options.source = source.toStdString();
    try {
        auto work = std::make_shared<ZSaveWork>(m_desk.Documents().PrepareSave(path.toStdString(), options));
        const auto write = [work](const std::stop_token& stop) {
            ZDocuments::WriteSave(*work, stop);
            return true;
        };
        // Whether the file was written must be known before anything else happens to it.
        Waiting::Run(m_window, tr("Saving %1 ...").arg(FileName(path)), WhenCancelled::Wait, write);
        m_desk.FinishSave(std::move(*work));
    } catch (const skindesk::gltf::FileError& error) {
        Complain(tr("Save"), error.what());
        return false;
    }
    return true;
}

/// A file is read or written at this moment, and its window takes events: another one has to wait.
bool DocumentCommands::IsFree()
{
    if (m_busy)
        ZReport_Status("A file is being read or written: please wait");
    return !m_busy;
}

/// Saves a document to its place; a new one has none yet.
bool DocumentCommands::SaveDocument(const ZDocument& document)
{
    const QString source = QString::fromStdString(document.path);
    return document.isNew ? SaveUnder(source) : SaveTo(source, QString::fromStdString(m_desk.SavePath(document)), {});
}

bool DocumentCommands::SaveUnder(const QString& source)
{
    QString proposed = source;
    for (const ZDocument& document : m_desk.Documents().GetDocuments())
        if (document.path == source.toStdString())
            proposed = QString::fromStdString(m_desk.SavePath(document));
    const QString path = AskSavePath(tr("Save As"), proposed);
    if (path.isEmpty() || !SaveTo(source, path, {}))
        return false;
    Preferences::AddRecentFile(path);
    return true;
}

bool DocumentCommands::Save()
{
    if (!HasDocument())
        return false;
    const std::string current = m_desk.CurrentDocument();
    const std::vector<ZDocument> documents = m_desk.Documents().GetDocuments();
    for (const ZDocument& document : documents)
        if (document.path == current)
            return SaveDocument(document);
    return false;
}

bool DocumentCommands::SaveAll()
{
    const std::vector<ZDocument> documents = m_desk.Documents().GetDocuments();
    for (const ZDocument& document : documents)
        if (document.unsavedChanges && !SaveDocument(document))
            return false;
    return true;
}

QString DocumentCommands::AskSavePath(const QString& title, const QString& proposed)
{
    const QString suffix = QFileInfo(proposed).suffix();
    QString path = QFileDialog::getSaveFileName(m_window, title, proposed, QStringLiteral("*.%1").arg(suffix));
    if (!path.isEmpty() && QFileInfo(path).suffix().isEmpty())
        path += QLatin1Char('.') + suffix;
    return path;
}

bool DocumentCommands::SaveAs() { return HasDocument() && SaveUnder(QString::fromStdString(m_desk.CurrentDocument())); }

void DocumentCommands::SaveCopyForExport()
{
    if (!HasDocument())
        return;
    const QString source = QString::fromStdString(m_desk.CurrentDocument());
    ExportDialog dialog(m_desk, source, m_window);
    if (dialog.exec() != QDialog::Accepted)
        return;
    QString place = source;
    for (const ZDocument& document : m_desk.Documents().GetDocuments())
        if (document.path == source.toStdString())
            place = QString::fromStdString(m_desk.SavePath(document));
    const QFileInfo info(place);
    const QString path =
        AskSavePath(tr("Save a Copy for Export"),
                    QStringLiteral("%1/%2-export.%3").arg(info.path(), info.completeBaseName(), info.suffix()));
    if (path.isEmpty())
        return;
    ZSaveOptions options;
    options.maxInfluences = dialog.MaxInfluences();
    options.asCopy = true;
    SaveTo(source, path, options);
}

void DocumentCommands::SaveScreenshot()
{
    const QString path = QFileDialog::getSaveFileName(m_window, tr("Screenshot"),
                                                      Preferences::LastFolder() + QStringLiteral("/screenshot.png"),
                                                      tr("Pictures (*.png *.jpg)"));
    QString why;
    if (path.isEmpty())
        return;
    if (!SaveViewerPicture(m_desk.Session().GetViewer(), path, &why))
        Complain(tr("Screenshot"), why.toStdString());
    else
        ZReport_Status("Saved the picture " + path.toStdString());
}

void DocumentCommands::ExportWeights()
{
    if (!HasDocument() || !IsFree())
        return;
    const QString path = QFileDialog::getSaveFileName(
        m_window, tr("Export Weights"), Preferences::LastFolder() + QStringLiteral("/weights.csv"), WeightTables());
    if (path.isEmpty())
        return;
    try {
        const BusyFlag busy(m_busy);
        const auto write = [work = m_desk.Documents().PrepareExport(path.toStdString())](const std::stop_token& stop) {
            ZDocuments::WriteTable(*work, stop);
            return true;
        };
        Waiting::Run(m_window, tr("Exporting %1 ...").arg(FileName(path)), WhenCancelled::Wait, write);
        ZReport_Status("Exported the weights to " + path.toStdString());
    } catch (const skindesk::gltf::FileError& error) {
        Complain(tr("Export Weights"), error.what());
    }
}

void DocumentCommands::ImportWeights()
{
    if (!HasDocument() || !IsFree())
        return;
    const QString path =
        QFileDialog::getOpenFileName(m_window, tr("Import Weights"), Preferences::LastFolder(), WeightTables());
    if (path.isEmpty())
        return;
    try {
        const BusyFlag busy(m_busy);
        const std::shared_ptr<ZTableWork> work = m_desk.Documents().PrepareImport(path.toStdString());
        const auto read = [work](const std::stop_token& stop) {
            ZDocuments::ReadTable(*work, stop);
            return true;
        };
        if (!Waiting::Run(m_window, tr("Reading %1 ...").arg(FileName(path)), WhenCancelled::Leave, read)) {
            ZReport_Status("Reading " + FileName(path).toStdString() + " was cancelled");
            return;
        }
        const ZImportReport report = m_desk.Documents().FinishImport(*work);
        for (const std::string& line : report.unmatched)
            ZReport_Warning(line);
        m_desk.AfterEvent();
        ZReport_Status("Imported weights: " + std::to_string(report.verticesChanged) + " vertices changed");
    } catch (const skindesk::gltf::FileError& error) {
        Complain(tr("Import Weights"), error.what());
    }
}

void DocumentCommands::CloseAll()
{
    if (AskBeforeLosing())
        m_desk.CloseAll();
}

bool DocumentCommands::AskBeforeLosing()
{
    if (!m_desk.Documents().HasUnsavedChanges())
        return true;
    QStringList names;
    for (const ZDocument& document : m_desk.Documents().GetDocuments())
        if (document.unsavedChanges)
            names += FileName(QString::fromStdString(m_desk.SavePath(document)));
    QMessageBox question(QMessageBox::Question, tr("Unsaved changes"),
                         tr("%1 has unsaved changes. Save them?").arg(names.join(QStringLiteral(", "))),
                         QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, m_window);
    question.setDefaultButton(QMessageBox::Save);
    switch (question.exec()) {
    case QMessageBox::Save:
        return SaveAll();
    case QMessageBox::Discard:
        return true;
    default:
        return false;
    }
}

void DocumentCommands::OfferRecovery()
{
    const std::vector<ZLeftDocument> left = m_desk.Journal().FindLeft();
    if (left.empty())
        return;
    QStringList lines;
    for (const ZLeftDocument& document : left)
        lines += tr("%1, as it was on %2")
                     .arg(FileName(QString::fromStdString(document.original)),
                          QLocale().toString(QDateTime::fromSecsSinceEpoch(document.seconds), QLocale::ShortFormat));
    QMessageBox question(QMessageBox::Question, tr("Unsaved work"),
                         tr("Skindesk was cut off while there were unsaved changes. Bring them back?"),
                         QMessageBox::NoButton, m_window);
    question.setInformativeText(lines.join(QLatin1Char('\n')));
    question.setObjectName(QStringLiteral("RecoveryQuestion"));
    const QPushButton* const recover = question.addButton(tr("&Recover"), QMessageBox::AcceptRole);
    const QPushButton* const discard = question.addButton(tr("&Discard"), QMessageBox::DestructiveRole);
    QPushButton* const later = question.addButton(tr("&Not Now"), QMessageBox::RejectRole);
    question.setEscapeButton(later);
    question.exec();
    if (question.clickedButton() == recover)
        Recover(left);
    else if (question.clickedButton() == discard)
        for (const ZLeftDocument& document : left)
            m_desk.Journal().Forget(document.session);
    m_desk.Journal().LetGo();
}

/// What a cut-off session left goes only when all of it is open here and this session has copies of its own.
void DocumentCommands::Recover(const std::vector<ZLeftDocument>& left)
{
    std::set<std::string> whole, failed;
    for (const ZLeftDocument& document : left) {
        std::string why;
        if (m_desk.Recover(document, &why))
            whole.insert(document.session);
        else
            failed.insert(document.session), Complain(tr("Recover"), why);
    }
    m_desk.Journal().Finish();
    m_desk.KeepJournal();
    m_desk.Journal().Finish();
    if (m_desk.Journal().KeptCount() == 0)
        return;
    for (const std::string& session : whole)
        if (failed.count(session) == 0)
            m_desk.Journal().Forget(session);
}
