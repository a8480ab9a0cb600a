#pragma once

#include <QString>
#include <QStringList>

/// Whether Qt has file dialogs of one of these desktops, as XDG_CURRENT_DESKTOP names them, among the
/// plug-ins in a folder.
bool desktopHasFileDialogs(const QStringList &desktops, const QString &pluginFolder);

/// Has Qt use the file dialogs of the desktop portal where the desktop has none that Qt knows, and the portal
/// answers: it waits for that, at most a second. Changes nothing where the user has chosen a platform theme.
/// Call it before the application object is made.
void choosePortalFileDialogs();
