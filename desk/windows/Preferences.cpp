// SPDX-License-Identifier: MIT
// Preferences in the user's configuration folder.
#include "desk/windows/Preferences.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace {

QSettings Settings()
{
    return QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Skindesk"),
                     QStringLiteral("Skindesk"));
}

} // namespace

QStringList Preferences::RecentFiles() { return Settings().value(QStringLiteral("recentFiles")).toStringList(); }

void Preferences::AddRecentFile(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QStringList files = RecentFiles();
    files.removeAll(absolute);
    files.prepend(absolute);
    Settings().setValue(QStringLiteral("recentFiles"), QStringList(files.mid(0, kMostRecentFiles)));
}

void Preferences::ClearRecentFiles() { Settings().remove(QStringLiteral("recentFiles")); }

Preferences::Layout Preferences::LastLayout()
{
    const QSettings settings = Settings();
    return {settings.value(QStringLiteral("layout/geometry")).toByteArray(),
            settings.value(QStringLiteral("layout/state")).toByteArray()};
}

void Preferences::SetLastLayout(const Layout& layout)
{
    QSettings settings = Settings();
    settings.setValue(QStringLiteral("layout/geometry"), layout.geometry);
    settings.setValue(QStringLiteral("layout/state"), layout.state);
}

bool Preferences::Choice(const QString& name, bool otherwise)
{
    return Settings().value(QStringLiteral("choices/") + name, otherwise).toBool();
}

void Preferences::SetChoice(const QString& name, bool on)
{
    Settings().setValue(QStringLiteral("choices/") + name, on);
}

QString Preferences::LastFolder()
{
    return Settings().value(QStringLiteral("lastFolder"), QDir::homePath()).toString();
}

void Preferences::SetLastFolder(const QString& folder) { Settings().setValue(QStringLiteral("lastFolder"), folder); }
