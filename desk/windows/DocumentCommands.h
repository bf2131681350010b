// SPDX-License-Identifier: MIT
// What the File menu does: opening, saving, copies, tables of weights, pictures.
#pragma once

#include "documents/ZDocuments.h"

#include <QObject>
#include <QString>

#include <vector>

class QWidget;
class ZDeskSession;
struct ZLeftDocument;

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
    /// Asks about what a session that was cut off left, if any did.
    void OfferRecovery();

signals:
    void fileOpened(const QString& path);

private:
    bool SaveTo(const QString& source, const QString& path, ZSaveOptions options);
    bool SaveUnder(const QString& source);
    bool SaveDocument(const ZDocument& document);
    bool IsFree();
    void Recover(const std::vector<ZLeftDocument>& left);
    QString AskSavePath(const QString& title, const QString& proposed);
    bool HasDocument();
    void Complain(const QString& title, const std::string& sentence);

    ZDeskSession& m_desk;
    QWidget* m_window;
    bool m_busy = false; ///< a file is being opened or saved
};
