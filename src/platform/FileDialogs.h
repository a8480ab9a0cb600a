#pragma once

#include <QString>
#include <QStringList>

/// Who draws the dialogs for files and folders.
enum class FileDialogs
{
    Desktop,
    /// The desktop's portal, as the platform theme "xdgdesktopportal" of Qt.
    Portal,
    /// The program's window.
    Own
};

/// Whether Qt has the file dialogs of a platform theme among the plug-ins in a folder, or those of one of the
/// desktops, as XDG_CURRENT_DESKTOP names them, while no theme is given.
bool desktopHasFileDialogs(const QString &theme, const QStringList &desktops, const QString &pluginFolder);

/// Which file dialogs to use: the desktop's where Qt knows them, or those of a platform theme that the user
/// has chosen, else the portal's if it answers within a second, else our own. Ask before the application
/// object is made.
FileDialogs wantedFileDialogs();
