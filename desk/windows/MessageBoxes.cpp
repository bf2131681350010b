// SPDX-License-Identifier: MIT
// Showing a message of the host.
#include "desk/windows/MessageBoxes.h"

#include "ztoolkit/ZToolKit.h"

#include <QMessageBox>
#include <QPushButton>

namespace {

int Ask(QWidget* window, const ZtMessage& message)
{
    QMessageBox box(window);
    box.setWindowTitle(QString::fromStdString(message.title));
    box.setText(QString::fromStdString(message.text));
    box.setIcon(message.buttons.size() > 1 ? QMessageBox::Question : QMessageBox::Information);
    QList<QAbstractButton*> buttons;
    for (const std::string& text : message.buttons)
        buttons += box.addButton(QString::fromStdString(text), QMessageBox::ActionRole);
    box.setEscapeButton(buttons.last());
    box.setDefaultButton(static_cast<QPushButton*>(buttons.first()));
    box.exec();
    return static_cast<int>(buttons.indexOf(box.clickedButton())) + 1;
}

} // namespace

MessageBoxes::MessageBoxes(QWidget* window)
{
    ZToolKit_SetMessageAnswerer([window](const ZtMessage& message) { return Ask(window, message); });
}

MessageBoxes::~MessageBoxes() { ZToolKit_SetMessageAnswerer({}); }
