#include "app/AppState.h"
#include "app/MessageLog.h"
#include "core/HexModel.h"
#include "core/Version.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QMessageBox>
#include <QMetaObject>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickStyle>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>

namespace {

void nameApplication()
{
    QCoreApplication::setApplicationName(QStringLiteral("KVTeditornew"));
    QCoreApplication::setOrganizationName(QStringLiteral("Voxworks Automotive"));
    QCoreApplication::setApplicationVersion(applicationVersion());
}

bool asksForText(int argc, char **argv)
{
    constexpr std::string_view options[] = {"--help", "--help-all", "-h", "--version", "-v"};
    return std::any_of(argv + 1, argv + argc, [&options](const char *argument) {
        return std::find(std::begin(options), std::end(options), argument) != std::end(options);
    });
}

// Answers --help and --version without a display, which the application object of the editor would need.
int answerWithText(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    nameApplication();
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Opens, reads and edits tune files of engine control modules."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("The tune file to open."),
                                 QStringLiteral("[file]"));
    parser.process(app);
    return EXIT_SUCCESS;
}

// The first argument that the framework left and that is no option, made absolute; empty when there is none.
QString fileFromCommandLine()
{
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const auto file = std::find_if(arguments.begin(), arguments.end(), [](const QString &argument) {
        return !argument.isEmpty() && !argument.startsWith(QLatin1Char('-'));
    });
    return file == arguments.end() ? QString() : QFileInfo(*file).absoluteFilePath();
}

void loadRootView(QQmlApplicationEngine &engine)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    engine.loadFromModule("KvtEditor", "RootView");
#else
    engine.loadData(QByteArrayLiteral("import KvtEditor\nRootView {}\n"));
#endif
}

void showLoadFailure()
{
    QMessageBox box(QMessageBox::Critical, QStringLiteral("KVT Editor"), loadFailureText(capturedMessages()),
                    QMessageBox::Ok);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

int runWindow(QApplication &app, AppState &state, const QString &file)
{
    installMessageLog();
    QQmlApplicationEngine engine;
    engine.rootContext()->setContextProperty(QStringLiteral("app"), &state);
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine.addImportPath(QCoreApplication::applicationDirPath() + QStringLiteral("/qml"));

    bool running = false;
    QObject::connect(
        &engine, &QQmlApplicationEngine::objectCreationFailed, &app,
        [&app, &running] {
            logLine("main: QML objectCreationFailed");
            // The failure box runs a loop of its own, which an exit request would close under the user's
            // eyes.
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
    if (!file.isEmpty())
        QMetaObject::invokeMethod(
            &state, [&state, file] { state.openKvt(file); }, Qt::QueuedConnection);
    logLine("main: event loop");
    running = true;
    return app.exec();
}

} // namespace

int main(int argc, char **argv)
{
    if (asksForText(argc, argv))
        return answerWithText(argc, argv);

    logLine("main: start");
    QApplication app(argc, argv);
    nameApplication();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/qt/qml/KvtEditor/src/ui/assets/kvtedit.ico")));
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    qmlRegisterType<HexModel>("KvtEditor", 1, 0, "HexModel");

    const QString file = fileFromCommandLine();
#ifdef Q_OS_UNIX
    // Paths that come from file dialogs have lost their leading slash; from here they resolve all the same.
    QDir::setCurrent(QDir::rootPath());
#endif

    logLine("main: constructing AppState");
    AppState state;
    logLine("main: loading QML");
    return runWindow(app, state, file);
}
