// SPDX-License-Identifier: MIT
// The pose fields.
#include "desk/windows/PoseDock.h"

#include "desk/model/ZDeskSession.h"
#include "zmodel/ZPose.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>

#include <cmath>

namespace {

constexpr int kRotations = 3;

bool IsNear(const ZgeMatrix& a, const ZgeMatrix& b)
{
    constexpr double kTolerance = 1e-9;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            if (!(std::abs(a(row, column) - b(row, column)) <= kTolerance * (1 + std::abs(b(row, column)))))
                return false;
    return true;
}

double& Component(ZgeTRS& pose, int number)
{
    double* const components[] = {&pose.rotation.x,    &pose.rotation.y,    &pose.rotation.z,
                                  &pose.translation.x, &pose.translation.y, &pose.translation.z};
    return *components[number];
}

} // namespace

PosePanel::PosePanel(ZDeskSession& desk, QWidget* parent)
    : QWidget(parent), m_desk(desk), m_name(new QLabel(this)),
      m_back(new QPushButton(tr("Back to the file's pose"), this))
{
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(6, 4, 6, 6);
    grid->setVerticalSpacing(3);
    grid->addWidget(m_name, 0, 0, 1, 3);
    grid->addWidget(new QLabel(tr("Rotation"), this), 1, 1);
    grid->addWidget(new QLabel(tr("Translation"), this), 1, 2);
    static constexpr const char* kAxes[] = {"X", "Y", "Z"};
    for (int axis = 0; axis < kRotations; ++axis) {
        grid->addWidget(new QLabel(QLatin1String(kAxes[axis]), this), 2 + axis, 0);
        for (const int number : {axis, axis + kRotations}) {
            QDoubleSpinBox* const field = MakeField(number);
            field->setAccessibleName((number < kRotations ? tr("Rotation about %1") : tr("Translation along %1"))
                                         .arg(QLatin1String(kAxes[axis])));
            field->setToolTip(field->accessibleName());
            grid->addWidget(field, 2 + axis, number < kRotations ? 1 : 2);
        }
    }
    grid->addWidget(m_back, 5, 0, 1, 3);
    grid->setRowStretch(6, 1);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 1);
    m_back->setToolTip(tr("Puts every pose made by hand away"));
    connect(m_back, &QPushButton::clicked, this, [this] {
        ZPose_Clear(m_desk.Session().GetScene());
        m_desk.AfterEvent();
    });
    Sync();
}

QDoubleSpinBox* PosePanel::MakeField(int number)
{
    auto* const field = new QDoubleSpinBox(this);
    m_fields[static_cast<size_t>(number)] = field;
    const bool rotates = number < kRotations;
    field->setObjectName(QStringLiteral("Pose%1").arg(number));
    field->setRange(rotates ? -360 : -1e6, rotates ? 360 : 1e6);
    field->setDecimals(rotates ? 2 : 4);
    field->setSingleStep(rotates ? 5 : 0.01);
    if (rotates)
        field->setSuffix(QStringLiteral("°"));
    field->setKeyboardTracking(false);
    field->setMinimumWidth(70);
    connect(field, &QDoubleSpinBox::valueChanged, this, [this, number](double value) { Change(number, value); });
    return field;
}

ZModel* PosePanel::Selected() const
{
    for (ZModel* const model : m_desk.Session().GetScene().GetModels())
        if (model->IsSelected())
            return model;
    return nullptr;
}

void PosePanel::Change(int number, double value)
{
    ZModel* const model = Selected();
    if (model == nullptr)
        return;
    Component(m_pose, number) = value;
    ZPose_Set(*model, m_pose);
    m_desk.AfterEvent();
}

void PosePanel::Sync()
{
    const ZModel* const model = Selected();
    m_name->setText(model != nullptr ? QString::fromUtf8(model->GetObjectLabelName())
                                     : tr("Select a bone in the scene"));
    // The same rotation can be told in several ways: what the user typed stays as long as it is still true.
    if (model == nullptr)
        m_pose = ZgeTRS();
    else if (!IsNear(ZgeCompose(m_pose), model->GetTransformMatrix(false)))
        m_pose = ZPose_Get(*model);
    for (int number = 0; number < 2 * kRotations; ++number) {
        QDoubleSpinBox* const field = m_fields[static_cast<size_t>(number)];
        const QSignalBlocker quiet(field);
        field->setEnabled(model != nullptr);
        field->setValue(Component(m_pose, number));
    }
    m_back->setEnabled(ZPose_IsPosed(m_desk.Session().GetScene()));
}
