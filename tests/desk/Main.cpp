// SPDX-License-Identifier: MIT
// The main function of the application's tests: one QApplication, settings in a folder of their own.
#include "CutOffProcess.h"
#include "desk/viewer/ViewerWidget.h"
#include "zbaselib/ZReport.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    SetViewerSurfaceFormat();
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    ZReport_SetMisuseFatal(true);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == QLatin1String("--live-until-killed"))
        return LiveUntilKilled(arguments[2], arguments[3]);
    return RUN_ALL_TESTS();
}
