// SPDX-License-Identifier: MIT
// The export dialog and its report.
#include "desk/windows/ExportDialog.h"

#include "desk/model/ZDeskSession.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {
constexpr int kUsualInfluences = 4;
constexpr int kMostInfluences = 16;
} // namespace

ExportDialog::ExportDialog(ZDeskSession& desk, const QString& source, QWidget* parent)
    : QDialog(parent), m_desk(desk), m_source(source), m_most(new QSpinBox(this)), m_lines(new QTableWidget(this)),
      m_sum(new QLabel(this))
{
    setWindowTitle(tr("Save a Copy for Export"));
    auto* const column = new QVBoxLayout(this);
    auto* const row = new QHBoxLayout;
    auto* const label = new QLabel(tr("&Influences that each vertex keeps at most:"), this);
    label->setBuddy(m_most);
    m_most->setObjectName(QStringLiteral("MaxInfluences"));
    m_most->setRange(1, kMostInfluences);
    m_most->setValue(kUsualInfluences);
    row->addWidget(label);
    row->addWidget(m_most);
    row->addStretch(1);
    column->addLayout(row);

    m_lines->setObjectName(QStringLiteral("LimitReport"));
    m_lines->setAccessibleName(tr("What would be dropped"));
    m_lines->setColumnCount(4);
    m_lines->setHorizontalHeaderLabels({tr("Model"), tr("Bone"), tr("Vertices"), tr("Weight dropped")});
    m_lines->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_lines->verticalHeader()->hide();
    m_lines->setEditTriggers(QTableWidget::NoEditTriggers);
    column->addWidget(m_lines);
    m_sum->setObjectName(QStringLiteral("LimitSum"));
    m_sum->setWordWrap(true);
    column->addWidget(m_sum);

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Save)->setText(tr("Save a Copy..."));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
    connect(m_most, &QSpinBox::valueChanged, this, &ExportDialog::Report);
    resize(560, 380);
    Report();
}

int ExportDialog::MaxInfluences() const { return m_most->value(); }

void ExportDialog::Report()
{
    int document = -1;
    for (const ZDocument& open : m_desk.Documents().GetDocuments())
        if (open.path == m_source.toStdString())
            document = open.id;
    m_lines->setRowCount(0);
    double dropped = 0;
    for (const ZLimitLine& line : m_desk.Documents().LimitReport(MaxInfluences())) {
        if (line.model == nullptr || line.model->GetDocument() != document)
            continue;
        const int row = m_lines->rowCount();
        m_lines->insertRow(row);
        const QString texts[] = {QString::fromUtf8(line.model->GetObjectLabelName()), QString::fromStdString(line.bone),
                                 QLocale().toString(line.vertices), QLocale().toString(line.weight, 'f', 4)};
        for (int column = 0; column < 4; ++column)
            m_lines->setItem(row, column, new QTableWidgetItem(texts[column]));
        dropped += line.weight;
    }
    if (m_lines->rowCount() == 0)
        m_sum->setText(tr("No vertex has more influences: nothing is dropped."));
    else
        m_sum->setText(
            tr("%1 of weight are dropped in all; the influences that stay are brought back to a sum of one. The "
               "character on the desk keeps them.")
                .arg(QLocale().toString(dropped, 'f', 4)));
}
