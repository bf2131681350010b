// SPDX-License-Identifier: MIT
// The host's report in the status line.
#include "desk/windows/StatusLine.h"

#include "zbaselib/ZReport.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
constexpr int kStatus = 1; ///< kind of a line that says what was done; others say what went wrong
}

StatusLine::StatusLine(QWidget* parent) : QStatusBar(parent), m_text(new QLabel(this)), m_more(new QToolButton(this))
{
    m_text->setObjectName(QStringLiteral("StatusText"));
    m_text->setAccessibleName(tr("Status"));
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    addWidget(m_text, 1);
    m_more->setAutoRaise(true);
    m_more->setToolTip(tr("All warnings since the start"));
    m_more->hide();
    addPermanentWidget(m_more);
    connect(m_more, &QToolButton::clicked, this, &StatusLine::ShowWarnings);
    ZReport_SetListener([this](int kind, const std::string& line) { Hear(kind, QString::fromStdString(line)); });
}

StatusLine::~StatusLine() { ZReport_SetListener({}); }

QString StatusLine::Text() const { return m_text->text(); }

void StatusLine::Hear(int kind, const QString& line)
{
    m_text->setText(line);
    m_text->setToolTip(line);
    if (kind == kStatus)
        return;
    m_warnings += line;
    m_more->setText(m_warnings.size() == 1 ? tr("1 warning") : tr("%1 warnings").arg(m_warnings.size()));
    m_more->show();
}

void StatusLine::ShowWarnings()
{
    QDialog dialog(this);
    dialog.setWindowTitle(tr("Warnings"));
    auto* const column = new QVBoxLayout(&dialog);
    auto* const text =
        new QPlainTextEdit(m_warnings.isEmpty() ? tr("There were no warnings.") : m_warnings.join(QLatin1Char('\n')));
    text->setReadOnly(true);
    text->setAccessibleName(tr("Warnings"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    column->addWidget(text);
    column->addWidget(buttons);
    dialog.resize(640, 320);
    dialog.exec();
}
