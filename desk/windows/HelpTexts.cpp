// SPDX-License-Identifier: MIT
// What the Help menu says.
#include "desk/windows/HelpTexts.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {

const char kFirstEdit[] = QT_TRANSLATE_NOOP("Help", R"(<h3>A first edit</h3><ol>
<li>Open a character: File, Open, or drop its file on the window.</li>
<li>Press "Add all skinned models", or drag models from the scene onto the model list.</li>
<li>Drag a rectangle over vertices in the viewer. They are listed in the vertex list; Shift switches vertices, Ctrl takes
them out, Ctrl and Shift together add them.</li>
<li>Select one or more bones in the bone list. The spread shows how strongly each pulls the current vertex.</li>
<li>Move a slider, or type a weight in per cent. The other bones that are not locked share the rest.</li>
<li>Edit, Undo takes every step back. File, Save writes the weights into the character and changes nothing else in it.</li>
</ol><p>The pose fields, or the rings and arrows of Edit, Pose Bones in the Viewer, bend a bone so that you see the weights at
work; poses are never saved.</p>)");

const char kKeys[] = QT_TRANSLATE_NOOP("Help", R"(<h3>In the viewer</h3><table cellspacing="6">
<tr><td>Alt + left button</td><td>orbit</td></tr>
<tr><td>Alt + middle button</td><td>pan</td></tr>
<tr><td>Alt + right button, wheel</td><td>zoom</td></tr>
<tr><td>left button</td><td>pick vertices: a click or a rectangle</td></tr>
<tr><td>Shift, Ctrl, Ctrl + Shift</td><td>switch, take out, add</td></tr>
<tr><td>middle button</td><td>select a model or bone; with Shift one more</td></tr>
<tr><td>Ctrl + Alt + left button</td><td>drag a model out of the viewer</td></tr>
<tr><td>F</td><td>frame the selection</td></tr>
<tr><td>W</td><td>show or hide the tool's manipulator; ends posing</td></tr>
<tr><td>Ctrl + P</td><td>rings and arrows that pose the selected bone</td></tr>
<tr><td>Escape</td><td>give up the gesture</td></tr></table>
<p>Where the window manager keeps Alt for itself, the Windows key does the same.</p>
<h3>In lists</h3><table cellspacing="6">
<tr><td>click, drag</td><td>select rows; Ctrl switches, Shift reaches from the last row</td></tr>
<tr><td>middle button, or Alt + left button</td><td>drag out</td></tr>
<tr><td>arrows, Page Up and Down, Home, End</td><td>go through the rows</td></tr>
<tr><td>Space</td><td>set or clear a check mark</td></tr></table>
<h3>In the spread</h3><table cellspacing="6">
<tr><td>digits, then Enter</td><td>type a weight in per cent</td></tr>
<tr><td>+ and -</td><td>move a slider by one</td></tr>
<tr><td>Space</td><td>lock or unlock a bone</td></tr></table>)");

void ShowText(QWidget* parent, const QString& title, const char* text)
{
    QDialog dialog(parent);
    dialog.setWindowTitle(title);
    auto* const column = new QVBoxLayout(&dialog);
    auto* const browser = new QTextBrowser(&dialog);
    browser->setHtml(QCoreApplication::translate("Help", text));
    browser->setAccessibleName(title);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    column->addWidget(browser);
    column->addWidget(buttons);
    dialog.resize(560, 460);
    dialog.exec();
}

} // namespace

void ShowFirstEditHelp(QWidget* parent) { ShowText(parent, QObject::tr("A First Edit"), kFirstEdit); }

void ShowKeysHelp(QWidget* parent) { ShowText(parent, QObject::tr("Keys and Buttons"), kKeys); }

void ShowAbout(QWidget* parent)
{
    QMessageBox::about(parent, QObject::tr("About Skindesk"),
                       QObject::tr("<h3>Skindesk %1</h3><p>An open desk for skinned characters and those who fix their "
                                   "weights.</p><p>MIT licence. Made with Qt %2.</p>")
                           .arg(QCoreApplication::applicationVersion(), QLatin1String(qVersion())));
}
