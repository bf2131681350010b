// SPDX-License-Identifier: MIT
// Posing the selected bone by hand, to see weights at work.
#pragma once

#include "zbaselib/ZGe.h"

#include <QWidget>

#include <array>

class QDoubleSpinBox;
class QLabel;
class QPushButton;
class ZDeskSession;
class ZModel;

/// Fields for the rotation and translation of the first selected model of the scene. Each change is one undo step;
/// poses are never saved into the file.
class PosePanel : public QWidget
{
    Q_OBJECT
public:
    PosePanel(ZDeskSession& desk, QWidget* parent);
    void Sync();

private:
    QDoubleSpinBox* MakeField(int number);
    ZModel* Selected() const;
    void Change(int number, double value);

    ZDeskSession& m_desk;
    QLabel* m_name;
    std::array<QDoubleSpinBox*, 6> m_fields{}; ///< rotation about X, Y, Z in degrees, then translation
    QPushButton* m_back;
    ZgeTRS m_pose; ///< what the fields show
};
