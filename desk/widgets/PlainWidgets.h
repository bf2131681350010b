// SPDX-License-Identifier: MIT
// Widgets for label, combo box, check box, colour field and slider.
#pragma once

#include "desk/widgets/ControlWidget.h"

class ZtCheckBox;
class ZtColor;
class ZtComboBox;
class ZtSlider;
class ZtStatic;

std::unique_ptr<ControlWidget> MakeLabelWidget(ZtStatic& label, QWidget* parent);
std::unique_ptr<ControlWidget> MakeComboWidget(ZtComboBox& combo, const ControlContext& context, QWidget* parent);
/// A push button that stays down where the control asks for that look.
std::unique_ptr<ControlWidget> MakeCheckWidget(ZtCheckBox& check, const ControlContext& context, QWidget* parent);
/// A button in the colour that opens the system's colour picker.
std::unique_ptr<ControlWidget> MakeColourWidget(ZtColor& colour, const ControlContext& context, QWidget* parent);
std::unique_ptr<ControlWidget> MakeSliderWidget(ZtSlider& slider, const ControlContext& context, QWidget* parent);
