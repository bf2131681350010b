// SPDX-License-Identifier: MIT
// What the File menu does: opening, saving, copies, tables of weights, pictures.
#pragma once

#include <QObject>
#include <QString>

class QWidget;
class ZDeskSession;
struct ZSaveOptions;

/// Asks for names with the platform's dialogs; what goes wrong is said in a message box with the host's sentence.
class DocumentCommands : public QObject
{
    Q_OBJECT
public:
    DocumentCommands(ZDeskSession& desk, QWidget* window);

    void Open();
    /// Opens a file of this name; false when it could not be, after saying why.
    bool OpenFile(const QString& path);
    bool Save();
    bool SaveAs();
    /// Saves every document with unsaved changes to its place.
    bool SaveAll();
    void SaveCopyForExport();
    void SaveScreenshot();
    void ExportWeights();
    void ImportWeights();
    void CloseAll();
    /// True when nothing would be lost: there are no unsaved changes, or they were saved or given up.
    bool AskBeforeLosing();

signals:
    void fileOpened(const QString& path);

private:
    bool SaveTo(const QString& source, const QString& path, const ZSaveOptions& options);
    QString AskSavePath(const QString& title, const QString& proposed);
    bool HasDocument();
    void Complain(const QString& title, const std::string& sentence);

    ZDeskSession& m_desk;
    QWidget* m_window;
};
