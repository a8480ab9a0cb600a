#pragma once

#include <QString>
#include <QStringList>

/// Whether Qt has file dialogs of one of these desktops, as XDG_CURRENT_DESKTOP names them, among the
/// plug-ins in a folder.
bool desktopHasFileDialogs(const QStringList &desktops, const QString &pluginFolder);

/// Whether Qt is to use the file dialogs of the desktop portal: the desktop has none that Qt knows, the user
/// has chosen no platform theme, and the portal answers, which is waited for a second at most. Ask before the
/// application object is made.
bool wantsPortalFileDialogs();
