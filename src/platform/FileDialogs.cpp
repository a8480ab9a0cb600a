#include "platform/FileDialogs.h"

#include <QFileInfo>
#include <QLatin1String>
#include <QLibraryInfo>

#include <algorithm>
#include <array>

#if QT_CONFIG(dbus) && defined(KVTEDITOR_DBUS)
#include <QDBusConnection>
#include <QDBusMessage>
#endif

using namespace Qt::StringLiterals;

namespace {

// A plug-in with file dialogs, and what makes Qt use it: a platform theme or a desktop.
struct Plugin
{
    QLatin1String name;
    std::array<QLatin1String, 3> themes;
    std::array<QLatin1String, 6> desktops;
};

constexpr QLatin1String portalPlugin = "qxdgdesktopportal"_L1;

constexpr std::array plugins{
    Plugin{
        "qgtk3"_L1, {"gtk3"_L1}, {"GNOME"_L1, "X-Cinnamon"_L1, "Unity"_L1, "MATE"_L1, "XFCE"_L1, "LXDE"_L1}},
    Plugin{"KDEPlasmaPlatformTheme6"_L1, {"kde"_L1}, {"KDE"_L1}},
    Plugin{"qtlxqt"_L1, {"lxqt"_L1}, {"LXQt"_L1}},
    Plugin{portalPlugin, {"xdgdesktopportal"_L1, "flatpak"_L1, "snap"_L1}, {}},
};

bool hasTheme(const QString &pluginFolder, QLatin1String name)
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

bool desktopHasFileDialogs(const QString &theme, const QStringList &desktops, const QString &pluginFolder)
{
    return std::ranges::any_of(plugins, [&](const Plugin &plugin) {
        const auto isWanted = [&](QLatin1String desktop) {
            return !desktop.isEmpty() && desktops.contains(desktop, Qt::CaseInsensitive);
        };
        const bool wanted = theme.isEmpty() ? std::ranges::any_of(plugin.desktops, isWanted)
                                            : std::ranges::find(plugin.themes, theme) != plugin.themes.end();
        return wanted && hasTheme(pluginFolder, plugin.name);
    });
}

FileDialogs wantedFileDialogs()
{
#if defined(Q_OS_WIN) || defined(Q_OS_DARWIN)
    return FileDialogs::Desktop;
#else
    if (qEnvironmentVariable("KVTEDITOR_FILE_DIALOGS") == "own"_L1)
        return FileDialogs::Own;
    // Without a screen, whoever drives the program answers Qt's dialogs by their properties.
    const QString platform = qEnvironmentVariable("QT_QPA_PLATFORM");
    if (platform == "offscreen"_L1 || platform == "minimal"_L1)
        return FileDialogs::Desktop;
    const QString folder = QLibraryInfo::path(QLibraryInfo::PluginsPath);
    const QString theme = qEnvironmentVariable("QT_QPA_PLATFORMTHEME");
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
    if (desktopHasFileDialogs(theme, desktops, folder))
        return FileDialogs::Desktop;
    return hasTheme(folder, portalPlugin) && portalAnswers() ? FileDialogs::Portal : FileDialogs::Own;
#endif
}
