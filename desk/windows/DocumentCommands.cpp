// SPDX-License-Identifier: MIT
// The File menu's commands.
#include "desk/windows/DocumentCommands.h"

#include "desk/model/ZDeskSession.h"
#include "desk/viewer/ViewerWidget.h"
#include "desk/windows/ExportDialog.h"
#include "desk/windows/Preferences.h"
#include "desk/windows/Waiting.h"
#include "gltf/FileError.h"
#include "zbaselib/ZReport.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>

namespace {

QString CharacterFiles() { return QObject::tr("Characters (*.glb *.gltf);;Surfaces (*.obj);;All files (*)"); }
QString WeightTables() { return QObject::tr("Tables of weights (*.csv *.json)"); }
QString FileName(const QString& path) { return QFileInfo(path).fileName(); }

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
    bool opened = false;
    {
        const Waiting waiting(m_window, tr("Opening %1 ...").arg(FileName(path)), QFileInfo(path).size());
        opened = m_desk.Open(path.toStdString(), &why);
    }
    if (!opened) {
        Complain(tr("Open"), why);
        return false;
    }
    Preferences::AddRecentFile(path);
    Preferences::SetLastFolder(QFileInfo(path).absolutePath());
    emit fileOpened(path);
    return true;
}

bool DocumentCommands::SaveTo(const QString& source, const QString& path, const ZSaveOptions& options)
{
    std::string why;
    bool saved = false;
    {
        const Waiting waiting(m_window, tr("Saving %1 ...").arg(FileName(path)), QFileInfo(source).size());
        saved = m_desk.Save(source.toStdString(), path.toStdString(), options, &why);
    }
    if (!saved)
        Complain(tr("Save"), why);
    return saved;
}

bool DocumentCommands::Save()
{
    if (!HasDocument())
        return false;
    const std::string current = m_desk.CurrentDocument();
    for (const ZDocument& document : m_desk.Documents().GetDocuments())
        if (document.path == current)
            return SaveTo(QString::fromStdString(current), QString::fromStdString(m_desk.SavePath(document)), {});
    return false;
}

bool DocumentCommands::SaveAll()
{
    const std::vector<ZDocument> documents = m_desk.Documents().GetDocuments();
    for (const ZDocument& document : documents)
        if (document.unsavedChanges &&
            !SaveTo(QString::fromStdString(document.path), QString::fromStdString(m_desk.SavePath(document)), {}))
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

bool DocumentCommands::SaveAs()
{
    if (!HasDocument())
        return false;
    const QString source = QString::fromStdString(m_desk.CurrentDocument());
    const QString path = AskSavePath(tr("Save As"), source);
    if (path.isEmpty() || !SaveTo(source, path, {}))
        return false;
    Preferences::AddRecentFile(path);
    return true;
}

void DocumentCommands::SaveCopyForExport()
{
    if (!HasDocument())
        return;
    const QString source = QString::fromStdString(m_desk.CurrentDocument());
    ExportDialog dialog(m_desk, source, m_window);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QFileInfo info(source);
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
    if (!HasDocument())
        return;
    const QString path = QFileDialog::getSaveFileName(
        m_window, tr("Export Weights"), Preferences::LastFolder() + QStringLiteral("/weights.csv"), WeightTables());
    if (path.isEmpty())
        return;
    try {
        m_desk.Documents().ExportWeights(path.toStdString());
        ZReport_Status("Exported the weights to " + path.toStdString());
    } catch (const skindesk::gltf::FileError& error) {
        Complain(tr("Export Weights"), error.what());
    }
}

void DocumentCommands::ImportWeights()
{
    if (!HasDocument())
        return;
    const QString path =
        QFileDialog::getOpenFileName(m_window, tr("Import Weights"), Preferences::LastFolder(), WeightTables());
    if (path.isEmpty())
        return;
    try {
        const ZImportReport report = m_desk.Documents().ImportWeights(path.toStdString());
        for (const std::string& line : report.unmatched)
            ZReport_Warning(line);
        ZReport_Status("Imported weights: " + std::to_string(report.verticesChanged) + " vertices changed");
    } catch (const skindesk::gltf::FileError& error) {
        Complain(tr("Import Weights"), error.what());
    }
    m_desk.AfterEvent();
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
