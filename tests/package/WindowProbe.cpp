// Looks into a running, unchanged program from within: a plug-in that Qt loads when the
// environment asks for it, with QT_QPA_GENERIC_PLUGINS=windowprobe. It waits until the file that
// KVTEDITOR_PROBE_FILE names is open and identified, brings up its own file dialogs,
// tells on standard output what it saw, and closes the window. When something never comes, it says so on
// standard error and ends the program.

#include <QDeadlineTimer>
#include <QGenericPlugin>
#include <QGuiApplication>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

constexpr int patienceInMilliseconds = 60000;
constexpr int exitCodeOfFailure = 3;

[[noreturn]] void fail(const QString &what)
{
    std::fprintf(stderr, "probe: %s\n", qPrintable(what));
    std::fflush(stderr);
    std::_Exit(exitCodeOfFailure);
}

void waitFor(const std::function<bool()> &condition, const QString &what)
{
    const QDeadlineTimer deadline(patienceInMilliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            fail(u"waited in vain for %1"_s.arg(what));
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
    }
}

QQuickWindow *shownWindow()
{
    for (QWindow *const window : QGuiApplication::topLevelWindows()) {
        auto *const quickWindow = qobject_cast<QQuickWindow *>(window);
        if (quickWindow && quickWindow->isExposed())
            return quickWindow;
    }
    return nullptr;
}

bool isInSight(const QQuickItem *parent, const QString &objectName)
{
    const QList<QQuickItem *> children = parent->childItems();
    return std::any_of(children.begin(), children.end(), [&objectName](const QQuickItem *child) {
        return child->isVisible() && (child->objectName() == objectName || isInSight(child, objectName));
    });
}

// A view that was made later than the window belongs to it as an item only.
QObject *findObject(const QQuickItem *item, const QString &objectName)
{
    if (auto *const found = item->findChild<QObject *>(objectName))
        return found;
    const QList<QQuickItem *> children = item->childItems();
    for (const QQuickItem *const child : children) {
        if (QObject *const found = findObject(child, objectName))
            return found;
    }
    return nullptr;
}

void tryDialog(const QQuickWindow *window, const QString &dialogName)
{
    const QString listName = u"chooserList"_s;
    QObject *const dialog = findObject(window->contentItem(), dialogName);
    if (!dialog || !QMetaObject::invokeMethod(dialog, "ask"))
        fail(u"there is no %1"_s.arg(dialogName));
    waitFor([=] { return isInSight(window->contentItem(), listName); }, listName);
    QMetaObject::invokeMethod(dialog->property("chooser").value<QObject *>(), "close");
    waitFor([=] { return !isInSight(window->contentItem(), listName); }, u"%1 to go"_s.arg(listName));
    std::printf("%s: opens\n", qPrintable(dialogName));
}

void lookAround()
{
    QQuickWindow *window = nullptr;
    waitFor([&window] { return (window = shownWindow()) != nullptr; }, u"the window"_s);
    const auto *const app = qmlEngine(window)->rootContext()->contextProperty(u"app"_s).value<QObject *>();
    const QString file = qEnvironmentVariable("KVTEDITOR_PROBE_FILE");
    waitFor([&] { return app->property("fileName").toString() == file; }, u"the open file"_s);
    waitFor([app] { return !app->property("vin").toString().isEmpty(); }, u"its identifiers"_s);
    std::printf("file: open and identified\n");
    waitFor([window] { return window->property("complete").toBool(); }, u"all views"_s);
    tryDialog(window, u"openDialog"_s);
    tryDialog(window, u"searchFolderDialog"_s);
    std::printf("TLS: %s\n", QSslSocket::supportsSsl() ? "there" : "missing");
    std::printf("certificates: %s\n",
                QSslConfiguration::systemCaCertificates().isEmpty() ? "missing" : "there");
    std::fflush(stdout);
    window->close();
}

} // namespace

class WindowProbePlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "window-probe.json")

public:
    QObject *create(const QString &, const QString &) override
    {
        auto *const timer = new QTimer(this);
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, timer, lookAround);
        timer->start(0);
        return timer;
    }
};

#include "WindowProbe.moc"
