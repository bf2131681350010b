// SPDX-License-Identifier: MIT
// What a copy for export would lose, before it is written.
#pragma once

#include <QDialog>

class QLabel;
class QSpinBox;
class QTableWidget;
class ZDeskSession;

/// Lets the user choose how many influences a vertex keeps, and shows what that drops, by model and bone.
class ExportDialog : public QDialog
{
    Q_OBJECT
public:
    ExportDialog(ZDeskSession& desk, const QString& source, QWidget* parent);
    int MaxInfluences() const;

private:
    void Report();

    ZDeskSession& m_desk;
    QString m_source;
    QSpinBox* m_most;
    QTableWidget* m_lines;
    QLabel* m_sum;
};
