#include "api/ServiceConfig.h"
#include "app/AppState.h"
#include "app/MessageLog.h"
#include "core/HexModel.h"
#include "core/Version.h"
#include "platform/FileDialogs.h"
#include "platform/Graphics.h"
#include "ui/ButtonTexts.h"
#include "ui/GarbageCollection.h"
#include "ui/SecondClicks.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QIcon>
#include <QMessageBox>
#include <QMetaObject>
#include <QPalette>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQmlIncubationController>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QScopeGuard>
#include <QScreen>
#include <QSslConfiguration>
#include <QStyle>
#include <QThreadPool>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// A core dump would hold tune files, passwords and tokens. One byte, not zero: the kernel ignores a limit of
// zero when it pipes dumps to a program. PR_SET_DUMPABLE would also keep the desktop's portal from serving
// us.
void leaveNoCoreDump()
{
#ifdef Q_OS_UNIX
    rlimit limit = {};
    if (!qEnvironmentVariableIsSet("KVTEDITOR_CORE_DUMPS") && ::getrlimit(RLIMIT_CORE, &limit) == 0) {
        limit.rlim_cur = std::min<rlim_t>(1, limit.rlim_max);
        ::setrlimit(RLIMIT_CORE, &limit);
    }
#endif
}

void nameApplication()
{
    QCoreApplication::setApplicationName(u"KVTeditorNew"_s);
    QCoreApplication::setOrganizationName(u"Voxworks Automotive"_s);
    QCoreApplication::setApplicationVersion(applicationVersion());
}

// The text that the command line asks for instead of the window, if any.
enum class Text
{
    None,
    Help,
    Version
};

Text wantedText(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--")
            break;
        if (argument == "--help" || argument == "-h")
            return Text::Help;
        if (argument == "--version" || argument == "-v")
            return Text::Version;
    }
    return Text::None;
}

// Needs no display, unlike the application object of the window.
void answer(Text text)
{
    if (text == Text::Version) {
        std::printf("%s %s\n", qPrintable(QCoreApplication::applicationName()),
                    qPrintable(applicationVersion()));
        return;
    }
    std::printf("Usage: kvteditor [options] [file]\n"
                "Opens, reads and edits tune files of engine control modules.\n\n"
                "Options:\n"
                "  -h, --help     Show this help.\n"
                "  -v, --version  Show the version.\n\n"
                "Arguments:\n"
                "  file           The tune file to open.\n");
}

// Done by hand if the name begins with a colon, because Qt treats that as a resource.
QString absolutePath(const QString &file)
{
    return file.startsWith(':'_L1) ? QDir::currentPath() + '/'_L1 + file : QFileInfo(file).absoluteFilePath();
}

// The first argument that is neither Qt's nor an option, as an absolute path; empty if there is none. After
// "--" there are no options.
QString fileFromCommandLine()
{
    bool options = true;
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    for (const QString &argument : arguments) {
        if (options && argument == "--"_L1)
            options = false;
        else if (!argument.isEmpty() && !(options && argument.startsWith('-'_L1)))
            return absolutePath(argument);
    }
    return {};
}

// A relative path would change its meaning with the working folder.
void keepTemporaryFolder()
{
    const QByteArray folder = qgetenv("TMPDIR");
    if (!folder.isEmpty() && !folder.startsWith('/'))
        qputenv("TMPDIR", QFile::encodeName(QDir::currentPath()) + '/' + folder);
}

// Where a Wayland compositor leaves the frame to Qt, Qt draws it in the application's colors: as dark as the
// window.
void darkenFrame()
{
    if (!QGuiApplication::platformName().startsWith("wayland"_L1))
        return;
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x12, 0x15, 0x1C));
    palette.setColor(QPalette::WindowText, QColor(0xE8, 0xEA, 0xED));
    palette.setColor(QPalette::Button, QColor(0x28, 0x2C, 0x36));
    palette.setColor(QPalette::ButtonText, QColor(0xE8, 0xEA, 0xED));
    QApplication::setPalette(palette);
}

// Unless the user has chosen a renderer.
void chooseDrawing()
{
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND") && !qEnvironmentVariableIsSet("QSG_RHI_BACKEND")
        && hasNoGraphicsCard())
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

void loadRootView(QQmlApplicationEngine &engine)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    engine.loadFromModule("KvtEditor", "RootView");
#else
    engine.loadData("import KvtEditor\nRootView {}\n"_ba);
#endif
}

// Preloads TLS after the first frame. The first request would load it on the main thread, which takes up to
// 50 ms while a file is being opened.
void prepareRequests(const QQmlApplicationEngine &engine)
{
    auto *const window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    const auto prepare = [] {
        QThreadPool::globalInstance()->start([] { QSslConfiguration::defaultConfiguration(); });
    };
    if (window)
        QObject::connect(window, &QQuickWindow::frameSwapped, window, prepare,
                         static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
}

// Where the screen has no room for the window and its title bar, it opens maximized. The platforms without a
// real screen are left alone.
void fitToScreen(const QQmlApplicationEngine &engine)
{
    auto *const window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    const QString platform = QGuiApplication::platformName();
    if (!window || platform == "offscreen"_L1 || platform == "minimal"_L1)
        return;
    const QSize available = window->screen()->availableSize();
    const int titleBar = QApplication::style()->pixelMetric(QStyle::PM_TitleBarHeight);
    if (window->width() > available.width() || window->height() + titleBar > available.height())
        window->showMaximized();
}

void showLoadFailure()
{
    QMessageBox box(QMessageBox::Critical, u"KVT Editor"_s, loadFailureText(capturedMessages()),
                    QMessageBox::Ok);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

int runWindow(QApplication &app, AppState &state, FileDialogs dialogs, const QString &file)
{
    installMessageLog();
    disableAutoMnemonics();
    collectGarbageInOneGo();
    SecondClicks secondClicks;
    app.installEventFilter(&secondClicks);
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{u"ownFileDialogs"_s, dialogs == FileDialogs::Own}});
    engine.rootContext()->setContextProperty(u"app"_s, &state);
    engine.addImportPath(u"qrc:/qt/qml"_s);
    engine.addImportPath(QCoreApplication::applicationDirPath() + u"/qml"_s);

    bool running = false;
    QObject::connect(
        &engine, &QQmlApplicationEngine::objectCreationFailed, &app,
        [&app, &running] {
            logLine("main: QML objectCreationFailed");
            // The failure box has its own event loop; an exit request would close it at once.
            if (running)
                app.exit(-1);
        },
        Qt::QueuedConnection);
    loadRootView(engine);

    if (engine.rootObjects().isEmpty()) {
        logLine("main: no QML root objects");
        showLoadFailure();
        return -1;
    }
    fitToScreen(engine);
    prepareRequests(engine);
    const auto open = [&state, file] { state.openKvt(file); };
    if (!file.isEmpty())
        QMetaObject::invokeMethod(&state, open, Qt::QueuedConnection);
    logLine("main: event loop");
    running = true;
    const int code = app.exec();
    // Qt reports a view that is destroyed half made, with the engine, as an error.
    QQmlIncubationController *const views = engine.incubationController();
    for (int tries = 0; views && views->incubatingObjectCount() > 0 && tries < 10; ++tries)
        views->incubateFor(1000);
    if (code != 0)
        showLoadFailure();
    return code;
}

} // namespace

int main(int argc, char **argv)
{
    if (const Text text = wantedText(argc, argv); text != Text::None) {
        nameApplication();
        answer(text);
        return EXIT_SUCCESS;
    }

    leaveNoCoreDump();
    logLine("main: start");
    const FileDialogs dialogs = wantedFileDialogs();
    const QByteArray theme = qgetenv("QT_QPA_PLATFORMTHEME");
    if (dialogs == FileDialogs::Portal)
        qputenv("QT_QPA_PLATFORMTHEME", "xdgdesktopportal");
    QApplication app(argc, argv);
    // For this program, not for those that it starts. An empty value counts as none.
    if (dialogs == FileDialogs::Portal)
        qputenv("QT_QPA_PLATFORMTHEME", theme);
    // What prepares TLS on another thread connects to the application object, and warns when that is gone.
    const auto waitForPreparations = qScopeGuard([] { QThreadPool::globalInstance()->waitForDone(); });
    nameApplication();
    // The desktop identifies the window by this name.
    QGuiApplication::setDesktopFileName(u"example.vox.KvtEditor"_s);
    QApplication::setWindowIcon(QIcon(u":/qt/qml/KvtEditor/src/ui/assets/kvtedit.ico"_s));
    // Lists the fonts on another thread: the first text needs them, and nothing before it does.
    QThreadPool::globalInstance()->start([] { QFontDatabase::families(); });
    QQuickStyle::setStyle(u"Basic"_s);
    chooseDrawing();
    darkenFrame();
    qmlRegisterType<HexModel>("KvtEditor", 1, 0, "HexModel");

    const QString file = fileFromCommandLine();
    logLine("main: constructing AppState");
    AppState state;
    // These were reported before the log took over.
    for (const QString &remark : {serviceConfig().refusal, serviceConfig().warning}) {
        if (!remark.isEmpty())
            logLine(remark.toUtf8());
    }
#ifdef Q_OS_UNIX
    // Paths from file dialogs lack their leading slash and resolve from the root folder. Not set earlier: the
    // controller has just read its service file, whose name may be relative.
    keepTemporaryFolder();
    QDir::setCurrent(QDir::rootPath());
#endif
    logLine("main: loading QML");
    return runWindow(app, state, dialogs, file);
}
