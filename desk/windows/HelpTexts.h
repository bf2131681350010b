// SPDX-License-Identifier: MIT
// The windows of the Help menu.
#pragma once

class QWidget;

void ShowFirstEditHelp(QWidget* parent);
void ShowKeysHelp(QWidget* parent);
void ShowAbout(QWidget* parent);
