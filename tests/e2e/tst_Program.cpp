#include "DevService.h"
#include "SampleData.h"
#include "support/FileSizeLimit.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int patience = 120000;

const QStringList milestones{QStringLiteral("main: start"), QStringLiteral("main: constructing AppState"),
                             QStringLiteral("main: loading QML"), QStringLiteral("main: event loop")};

const QString worker = QStringLiteral("kvt_worker/process.aspx");

struct Outcome
{
    int exitCode = -1;
    bool crashed = true;
    QString out;
    QString errors;
};

} // namespace

/// The real program as a process: what it prints, logs and exits with.
class TestProgram : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void answersWithoutDisplay_data();
    void answersWithoutDisplay();
    void refusesToStartWithoutDisplay();
    void logsFourMilestones();
    void relativeTemporaryFolderStaysTheSame();
    void startsAloneInAFolder();
    void secondRunAppendsToTheLog();
    void brokenRootViewShowsTheBox();
    void missingModuleShowsTheBox();
    void unwritableLogDoesNotStopIt_data();
    void unwritableLogDoesNotStopIt();
    void pipeForALogDoesNotStopIt();
    void readOnlyLogDoesNotStopIt();
    void logOnAFullDiskDoesNotStopIt();
    void fileFromTheCommandLineOpens_data();
    void fileFromTheCommandLineOpens();
    void undecodableFileNameIsRefused_data();
    void undecodableFileNameIsRefused();
    void relativeServiceFileIsFound_data();
    void relativeServiceFileIsFound();
    void closesCleanlyWithARequestInFlight();
    void closesCleanlyDuringAnUpload();
    void closesCleanlyWithTheFileDialogOpen();
    void closesCleanlyDuringAScan();
    void wrongServiceFileMeansNoService();
    void leavesNoCoreDump_data();
    void leavesNoCoreDump();

private:
    Outcome run(const QString &program, const QStringList &arguments, const QString &workingFolder = {},
                const std::function<void()> &meanwhile = {});
    QStringList logLines() const;
    QString logPath() const { return m_folder->filePath(QStringLiteral("tmp/kvteditornew-qt.log")); }
    /// A file in the test's own folder.
    void makeFile(const QString &name, const QByteArray &content);
    void withoutDisplay();
    /// That the box told what the log says too, and what had to be in it; and the exit code.
    void checkLoadFailure(const Outcome &outcome, const QString &warning) const;
    void useService(const QString &apiBase);
    void useService(const DevService &service) { useService(service.apiBase()); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QProcessEnvironment m_environment;
};

void TestProgram::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("tmp")));
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(QStringLiteral("TMPDIR"), m_folder->filePath(QStringLiteral("tmp")));
    m_environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    m_environment.insert(QStringLiteral("QT_QUICK_BACKEND"), QStringLiteral("software"));
}

Outcome TestProgram::run(const QString &program, const QStringList &arguments, const QString &workingFolder,
                         const std::function<void()> &meanwhile)
{
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.setWorkingDirectory(workingFolder);
    process.start(program, arguments);
    if (meanwhile)
        meanwhile();
    Outcome outcome;
    if (!process.waitForFinished(patience)) {
        process.kill();
        process.waitForFinished();
        return outcome;
    }
    outcome.exitCode = process.exitCode();
    outcome.crashed = process.exitStatus() != QProcess::NormalExit;
    outcome.out = QString::fromUtf8(process.readAllStandardOutput());
    outcome.errors = QString::fromUtf8(process.readAllStandardError());
    return outcome;
}

QStringList TestProgram::logLines() const
{
    QFile file(logPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    lines.removeLast();
    return lines;
}

void TestProgram::useService(const QString &apiBase)
{
    makeFile(QStringLiteral("service.json"),
             QJsonDocument(QJsonObject{{QStringLiteral("apiBase"), apiBase}}).toJson());
    m_environment.insert(QStringLiteral("KVTEDITOR_SERVICE_CONFIG"),
                         m_folder->filePath(QStringLiteral("service.json")));
}

void TestProgram::makeFile(const QString &name, const QByteArray &content)
{
    QFile file(m_folder->filePath(name));
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(file.errorString()));
    QCOMPARE(file.write(content), content.size());
}

void TestProgram::withoutDisplay()
{
    m_environment.remove(QStringLiteral("DISPLAY"));
    m_environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    m_environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
}

void TestProgram::answersWithoutDisplay_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("expected");
    const QString version = QStringLiteral("KVTeditorNew 4.0.2\n");
    const QString help = QStringLiteral("[file]");
    const auto row = [](const char *arguments, const QString &expected) {
        QTest::newRow(arguments) << QString::fromLatin1(arguments) << expected;
    };
    row("--version", version);
    row("-v", version);
    row("--help", help);
    row("-h", help);
    row("-platform offscreen --version", version);
    row("--version -platform offscreen", version);
    row("-platform offscreen --help", help);
    row("--help -platform offscreen", help);
    row("--no-such-option --version", version);
    row("-v --no-such-option", version);
    row("--no-such-option -h", help);
    row("--help --no-such-option", help);
    row("truck.kvt --version", version);
    row("truck.kvt -h", help);
}

void TestProgram::answersWithoutDisplay()
{
    QFETCH(QString, arguments);
    QFETCH(QString, expected);
    withoutDisplay();
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_PROGRAM), arguments.split(QLatin1Char(' ')));
    QVERIFY(!outcome.crashed);
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY2(outcome.out.contains(expected), qPrintable(outcome.out));
    QVERIFY(outcome.out == expected || !expected.endsWith(QLatin1Char('\n')));
    QCOMPARE(outcome.errors, QString());
    QVERIFY(!QFileInfo::exists(logPath()));
}

void TestProgram::refusesToStartWithoutDisplay()
{
    withoutDisplay();
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_PROGRAM), {});
    QVERIFY(outcome.exitCode != 0);
    // Qt gives up by aborting; any other crash would be the program's own.
    if (outcome.crashed)
        QCOMPARE(outcome.exitCode, SIGABRT);
    QVERIFY2(outcome.errors.contains(QLatin1String("could not connect to display")),
             qPrintable(outcome.errors));
    QCOMPARE(logLines(), milestones.first(1));
}

void TestProgram::logsFourMilestones()
{
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("close"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(logLines(), milestones);
}

// The program leaves the working folder, which such a name is relative to.
void TestProgram::relativeTemporaryFolderStaysTheSame()
{
    m_environment.insert(QStringLiteral("TMPDIR"), QStringLiteral("tmp"));
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("close"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {}, m_folder->path());
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(logLines(), milestones);
}

void TestProgram::startsAloneInAFolder()
{
    const QString folder = m_folder->filePath(QStringLiteral("alone"));
    const QString program = folder + QStringLiteral("/kvteditor");
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(QFile::copy(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), program));
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("close"));
    const Outcome outcome = run(program, {}, folder);
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(logLines(), milestones);
    QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("kvteditor")});
}

void TestProgram::secondRunAppendsToTheLog()
{
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("close"));
    run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QCOMPARE(logLines(), milestones + milestones);
}

void TestProgram::brokenRootViewShowsTheBox()
{
    // A module beside the program is found ahead of the one built in.
    const QString program = m_folder->filePath(QStringLiteral("kvteditor"));
    QVERIFY(QFile::copy(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), program));
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("qml/KvtEditor")));
    QFile module(m_folder->filePath(QStringLiteral("qml/KvtEditor/qmldir")));
    QVERIFY(module.open(QIODevice::WriteOnly));
    module.write("module KvtEditor\nRootView 1.0 RootView.qml\n");
    module.close();
    QFile view(m_folder->filePath(QStringLiteral("qml/KvtEditor/RootView.qml")));
    QVERIFY(view.open(QIODevice::WriteOnly));
    view.write("import QtQuick\nItem { width: <b>1</b> }\n");
    view.close();

    checkLoadFailure(run(program, {}), QStringLiteral("RootView.qml:2"));
}

void TestProgram::missingModuleShowsTheBox()
{
    const QString program = m_folder->filePath(QStringLiteral("kvteditor"));
    QVERIFY(QFile::copy(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), program));
    // Read from beside the program: where everything is as it was, but the modules are not.
    makeFile(QStringLiteral("qt.conf"),
             QStringLiteral("[Paths]\nPlugins=%1\nQmlImports=%2\n")
                 .arg(QLibraryInfo::path(QLibraryInfo::PluginsPath),
                      m_folder->filePath(QStringLiteral("no-modules")))
                 .toUtf8());
    checkLoadFailure(run(program, {}), QStringLiteral("module \"QtQuick.Layouts\" is not installed"));
}

void TestProgram::checkLoadFailure(const Outcome &outcome, const QString &warning) const
{
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 255);

    const QStringList log = logLines();
    const qsizetype end = log.indexOf(QStringLiteral("main: no QML root objects"));
    QCOMPARE(log.first(3), milestones.first(3));
    QVERIFY2(end > 3, qPrintable(log.join(QLatin1Char('\n'))));
    // Reported while the box is open, and the box stays.
    QCOMPARE(log.constLast(), QStringLiteral("main: QML objectCreationFailed"));
    const QString warnings = log.mid(3, end - 3).join(QLatin1Char('\n'));
    QVERIFY2(warnings.contains(warning), qPrintable(warnings));
    QCOMPARE(outcome.out,
             QStringLiteral("title: KVT Editor\nicon: 3\nbuttons: 1\nformat: %1\n"
                            "The editor window failed to load.\n")
                     .arg(Qt::PlainText)
                 + warnings + QLatin1Char('\n'));
}

void TestProgram::unwritableLogDoesNotStopIt_data()
{
    QTest::addColumn<bool>("folderInItsPlace");
    QTest::newRow("log-is-a-folder") << true;
    QTest::newRow("temporary-folder-missing") << false;
}

void TestProgram::unwritableLogDoesNotStopIt()
{
    QFETCH(bool, folderInItsPlace);
    if (folderInItsPlace)
        QVERIFY(QDir().mkpath(logPath()));
    else
        QVERIFY(QDir(m_folder->filePath(QStringLiteral("tmp"))).removeRecursively());
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("close"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {}, m_folder->path());
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY(!QFileInfo::exists(m_folder->filePath(QStringLiteral("kvteditornew-qt.log"))));
    QVERIFY(folderInItsPlace == QFileInfo(logPath()).isDir());
}

// Nobody reads from it: an open that waited for somebody would never end.
void TestProgram::pipeForALogDoesNotStopIt()
{
    QCOMPARE(::mkfifo(QFile::encodeName(logPath()).constData(), 0600), 0);
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("close"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.errors, QString());
}

void TestProgram::readOnlyLogDoesNotStopIt()
{
    makeFile(QStringLiteral("tmp/kvteditornew-qt.log"), "before\n");
    QVERIFY(QFile::setPermissions(logPath(), QFileDevice::ReadOwner));
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("close"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {}, m_folder->path());
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.errors, QString());
    // No file is read-only to the administrator.
    const QStringList before{QStringLiteral("before")};
    QCOMPARE(logLines(), geteuid() == 0 ? before + milestones : before);
}

// What Qt says about such a file must not come back into the log.
void TestProgram::logOnAFullDiskDoesNotStopIt()
{
    const QString started = milestones.first(2).join(QLatin1Char('\n')) + QLatin1String("\nmain: ");
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("close"));
    Outcome outcome;
    {
        // It is passed on to the program.
        const FileSizeLimit limit(static_cast<rlim_t>(started.size()));
        outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {}, m_folder->path());
    }
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QFile log(logPath());
    QVERIFY(log.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(log.readAll()), started);
}

void TestProgram::fileFromTheCommandLineOpens_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("before");
    const QStringList nothing;
    QTest::newRow("plain") << QStringLiteral("truck.kvt") << nothing;
    QTest::newRow("blanks-and-signs") << QStringLiteral("my truck #1 100% ?&<b>[x].kvt") << nothing;
    QTest::newRow("percent-escape") << QStringLiteral("a%20b.kvt") << nothing;
    QTest::newRow("umlaut") << QStringLiteral("größe.kvt") << nothing;
    QTest::newRow("newline") << QStringLiteral("two\nlines.kvt") << nothing;
    QTest::newRow("colon-in-front") << QStringLiteral(":truck.kvt") << nothing;
    QTest::newRow("after-an-unknown-option")
        << QStringLiteral("truck.kvt") << QStringList{QStringLiteral("--no-such-option")};
    QTest::newRow("after-the-end-of-options")
        << QStringLiteral("truck.kvt") << QStringList{QStringLiteral("--")};
    QTest::newRow("like-an-option") << QStringLiteral("-x.kvt") << QStringList{QStringLiteral("--")};
    QTest::newRow("like-a-known-option") << QStringLiteral("--help") << QStringList{QStringLiteral("--")};
}

void TestProgram::fileFromTheCommandLineOpens()
{
    QFETCH(QString, name);
    QFETCH(QStringList, before);
    DevService service;
    QString error;
    QVERIFY2(service.start(&error), qPrintable(error));
    useService(service);
    QFile file(m_folder->path() + QLatin1Char('/') + name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("not a tune, but bytes");
    file.close();
    // It ends only when the window shows the file; the name is relative to the folder the program starts
    // in.
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("opened"));
    const Outcome outcome =
        run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), before + QStringList{name}, m_folder->path());
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, QStringLiteral("open: %1\n").arg(name));
}

void TestProgram::undecodableFileNameIsRefused_data()
{
    QTest::addColumn<bool>("exists");
    QTest::newRow("missing") << false;
    QTest::newRow("there") << true;
}

void TestProgram::undecodableFileNameIsRefused()
{
    QFETCH(bool, exists);
    const QString folder = m_folder->filePath(QStringLiteral("work"));
    QVERIFY(QDir().mkpath(folder));
    const std::filesystem::path file =
        std::filesystem::path(QFile::encodeName(folder).constData()) / "caf\xe9.kvt";
    if (exists)
        std::ofstream(file) << "bytes";
    // Qt cannot remove it.
    const auto remove = qScopeGuard([&file] { std::filesystem::remove(file); });
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("refused"));
    const Outcome outcome =
        run(QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"), QStringLiteral("exec \"$0\" \"$(printf 'caf\\351.kvt')\""),
             QStringLiteral(KVTEDITOR_WATCHED_PROGRAM)},
            folder);
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    // Some reason, and no file is open.
    static const QRegularExpression refusal(QStringLiteral("^refused: .+\nopen: \n$"));
    QVERIFY2(refusal.match(outcome.out).hasMatch(), qPrintable(outcome.out));
    QCOMPARE(logLines(), milestones);
    const std::filesystem::directory_iterator entries(file.parent_path());
    QCOMPARE(std::distance(begin(entries), end(entries)), exists ? 1 : 0);
    QCOMPARE(std::filesystem::exists(file), exists);
}

void TestProgram::relativeServiceFileIsFound_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("startFolder");
    QTest::newRow("beside") << QStringLiteral("service.json") << QStringLiteral(".");
    QTest::newRow("above") << QStringLiteral("../service.json") << QStringLiteral("work");
}

void TestProgram::relativeServiceFileIsFound()
{
    QFETCH(QString, path);
    QFETCH(QString, startFolder);
    DevService service;
    QVERIFY(service.start());
    useService(service);
    m_environment.insert(QStringLiteral("KVTEDITOR_SERVICE_CONFIG"), path);
    const QString folder = m_folder->filePath(startFolder);
    QVERIFY(QDir().mkpath(folder));
    makeFile(QStringLiteral("truck.kvt"), "bytes");
    const QString signal = m_folder->filePath(QStringLiteral("close-now"));
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("opened"));
    m_environment.insert(QStringLiteral("KVTEDITOR_CLOSE_WHEN"), signal);
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM),
                                {m_folder->filePath(QStringLiteral("truck.kvt"))}, folder, [&] {
                                    WAIT_COMPARE(service.requestCount(worker), 1);
                                    makeFile(QStringLiteral("close-now"), {});
                                });
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.errors, QString());
}

void TestProgram::closesCleanlyWithARequestInFlight()
{
    DevService service;
    QString error;
    QVERIFY2(service.start(&error), qPrintable(error));
    QVERIFY(service.setFault(worker, QStringLiteral("hold")));
    useService(service);
    QFile file(m_folder->filePath(QStringLiteral("truck.kvt")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(1000000, 'x'));
    file.close();
    QFile signal(m_folder->filePath(QStringLiteral("close-now")));
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("opened"));
    m_environment.insert(QStringLiteral("KVTEDITOR_CLOSE_WHEN"), signal.fileName());

    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {file.fileName()}, {}, [&] {
        WAIT_COMPARE(service.heldCount(), 1);
        QVERIFY(signal.open(QIODevice::WriteOnly));
    });
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(logLines(), milestones);
    QCOMPARE(service.requestCount(worker), 1);
}

void TestProgram::closesCleanlyDuringAnUpload()
{
    constexpr qint64 size = 64 * 1024 * 1024;
    makeFile(QStringLiteral("truck.kvt"), QByteArray(size, 'x'));
    // Takes the request's head and then nothing more, so that the upload comes to a stand.
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    useService(QStringLiteral("http://127.0.0.1:%1/api/").arg(server.serverPort()));
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("opened"));
    m_environment.insert(QStringLiteral("KVTEDITOR_CLOSE_WHEN"),
                         m_folder->filePath(QStringLiteral("close-now")));
    const QString file = m_folder->filePath(QStringLiteral("truck.kvt"));
    QTcpSocket *connection = nullptr;
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {file}, {}, [&] {
        WAIT_VERIFY(server.hasPendingConnections());
        connection = server.nextPendingConnection();
        connection->setReadBufferSize(4096);
        WAIT_VERIFY(connection->peek(4096).contains("\r\n\r\n"));
        makeFile(QStringLiteral("close-now"), {});
    });
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(logLines(), milestones);
    QVERIFY(connection);
    connection->setReadBufferSize(0);
    QByteArray received = connection->readAll();
    WAIT_VERIFY(
        (received += connection->readAll(), connection->state() == QAbstractSocket::UnconnectedState));
    received += connection->readAll();
    QVERIFY(received.startsWith("POST /api/kvt_worker/process.aspx HTTP/1.1\r\n"));
    QVERIFY2(received.size() < size, "the upload was over before the window closed");
}

void TestProgram::closesCleanlyWithTheFileDialogOpen()
{
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("dialog"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, QStringLiteral("dialog: open\n"));
    QCOMPARE(logLines(), milestones);
}

// The size of the tree is KVTEDITOR_SCAN_FILES where a machine is given the time for a larger one.
void TestProgram::closesCleanlyDuringAScan()
{
    const int files = qEnvironmentVariableIsSet("KVTEDITOR_SCAN_FILES")
        ? qEnvironmentVariableIntValue("KVTEDITOR_SCAN_FILES")
        : 20000;
    QTemporaryDir tree;
    for (int i = 0; i < files; ++i) {
        const QString folder = QStringLiteral("%1/%2").arg(tree.path()).arg(i / 1000);
        if (i % 1000 == 0)
            QVERIFY(QDir().mkpath(folder));
        QFile file(QStringLiteral("%1/e38_%2.kvt").arg(folder).arg(i));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("scan"));
    m_environment.insert(QStringLiteral("KVTEDITOR_SCAN_ROOT"), tree.path());
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, QStringLiteral("scan: running\n"));
    QCOMPARE(logLines(), milestones);
}

void TestProgram::wrongServiceFileMeansNoService()
{
    makeFile(QStringLiteral("service.json"), "{\"apiBase\": \"http://service.example/api/\"}");
    const QString path = m_folder->filePath(QStringLiteral("service.json"));
    const QString refusal = QStringLiteral("Service configuration %1 is not used: "
                                           "\"apiBase\" is neither HTTPS nor HTTP on a loopback address")
                                .arg(path);
    m_environment.insert(QStringLiteral("KVTEDITOR_SERVICE_CONFIG"), path);
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("refused"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.errors, refusal + QLatin1Char('\n'));
    QCOMPARE(outcome.out, QStringLiteral("refused: %1\nopen: \n").arg(refusal));
    QStringList lines = milestones;
    lines.insert(2, refusal);
    QCOMPARE(logLines(), lines);
}

void TestProgram::leavesNoCoreDump_data()
{
    QTest::addColumn<bool>("isDebugged");
    QTest::newRow("usually") << false;
    QTest::newRow("debugged") << true;
}

// Files, passwords and tokens are in the memory that it would hold.
void TestProgram::leavesNoCoreDump()
{
    QFETCH(bool, isDebugged);
    if (isDebugged)
        m_environment.insert(QStringLiteral("KVTEDITOR_CORE_DUMPS"), QStringLiteral("1"));
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("cores"));
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_CORE, &before), 0);
    const rlim_t expected = isDebugged ? before.rlim_cur : std::min<rlim_t>(1, before.rlim_max);
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, QStringLiteral("cores: %1\n").arg(expected));
}

KVTEDITOR_TEST_MAIN(TestProgram)

#include "tst_Program.moc"
