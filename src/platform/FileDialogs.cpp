#include "platform/FileDialogs.h"

#include <QFileInfo>
#include <QLibraryInfo>

#include <algorithm>

#if QT_CONFIG(dbus) && defined(KVTEDITOR_DBUS)
#include <QDBusConnection>
#include <QDBusMessage>
#endif

using namespace Qt::StringLiterals;

namespace {

bool hasTheme(const QString &pluginFolder, const QString &name)
{
    return QFileInfo::exists(pluginFolder + "/platformthemes/lib"_L1 + name + ".so"_L1);
}

#if QT_CONFIG(dbus) && defined(KVTEDITOR_DBUS)
constexpr int patience = 1000;

bool portalAnswers()
{
    const QString name = u"kvteditor-start"_s;
    // QDBusConnection::sessionBus() needs an application object.
    const QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    QDBusMessage question = QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s,
                                                           u"/org/freedesktop/portal/desktop"_s,
                                                           u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << u"org.freedesktop.portal.FileChooser"_s << u"version"_s;
    const bool answers =
        bus.isConnected() && bus.call(question, QDBus::Block, patience).type() == QDBusMessage::ReplyMessage;
    QDBusConnection::disconnectFromBus(name);
    return answers;
}
#else
bool portalAnswers()
{
    return false;
}
#endif

} // namespace

bool desktopHasFileDialogs(const QStringList &desktops, const QString &pluginFolder)
{
    const QStringList gtkDesktops{u"GNOME"_s, u"X-Cinnamon"_s, u"Unity"_s, u"MATE"_s, u"XFCE"_s, u"LXDE"_s};
    return std::ranges::any_of(desktops, [&](const QString &desktop) {
        if (gtkDesktops.contains(desktop, Qt::CaseInsensitive))
            return hasTheme(pluginFolder, u"qgtk3"_s);
        if (desktop.compare("KDE"_L1, Qt::CaseInsensitive) == 0)
            return hasTheme(pluginFolder, u"KDEPlasmaPlatformTheme6"_s);
        return desktop.compare("LXQt"_L1, Qt::CaseInsensitive) == 0 && hasTheme(pluginFolder, u"qtlxqt"_s);
    });
}

bool wantsPortalFileDialogs()
{
    const QString platform = qEnvironmentVariable("QT_QPA_PLATFORM");
    const QString plugins = QLibraryInfo::path(QLibraryInfo::PluginsPath);
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
    // Without a screen there is nobody to answer a dialog.
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORMTHEME") || platform == "offscreen"_L1
        || platform == "minimal"_L1 || desktopHasFileDialogs(desktops, plugins)
        || !hasTheme(plugins, u"qxdgdesktopportal"_s))
        return false;
    return portalAnswers();
}
