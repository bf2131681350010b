// SPDX-License-Identifier: MIT
// What is kept between starts: the layout, recent files and the user's choices.
#pragma once

#include <QByteArray>
#include <QStringList>

namespace Preferences {

inline constexpr int kMostRecentFiles = 10;

/// Newest first, absolute paths; files that are gone stay, since a disk may only be away.
QStringList RecentFiles();
void AddRecentFile(const QString& path);
void ClearRecentFiles();

struct Layout
{
    QByteArray geometry; ///< of the window
    QByteArray state;    ///< of its docks
};
Layout LastLayout();
void SetLastLayout(const Layout& layout);

/// A choice of the user by its name.
bool Choice(const QString& name, bool otherwise);
void SetChoice(const QString& name, bool on);
/// The folder in which the last file was chosen.
QString LastFolder();
void SetLastFolder(const QString& folder);

} // namespace Preferences
