#include "DevService.h"
#include "SampleData.h"
#include "support/FileSizeLimit.h"
#include "support/TestFiles.h"
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

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 120000;

const QStringList milestones{u"main: start"_s, u"main: constructing AppState"_s, u"main: loading QML"_s,
                             u"main: event loop"_s};

const QString worker = u"kvt_worker/process.aspx"_s;

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
    /// Fails with the log's text unless it has the four milestones only.
    void checkMilestonesOnly() const;
    QString logPath() const { return m_folder->filePath(u"tmp/kvteditornew-qt.log"_s); }
    /// A file in the test's own folder.
    QString makeFile(const QString &name, const QByteArray &content) const
    {
        return ::makeFile(m_folder->path() + '/'_L1 + name, content);
    }
    void withoutDisplay();
    /// Checks that the box shows what the log has, including `warning`, and the exit code.
    void checkLoadFailure(const Outcome &outcome, const QString &warning) const;
    void useService(const QString &apiBase);
    void useService(const DevService &service) { useService(service.apiBase()); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QProcessEnvironment m_environment;
};

void TestProgram::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_folder->path()).mkpath(u"tmp"_s));
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(u"TMPDIR"_s, m_folder->filePath(u"tmp"_s));
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    m_environment.insert(u"QT_QUICK_BACKEND"_s, u"software"_s);
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
    QStringList lines = QString::fromUtf8(file.readAll()).split('\n'_L1);
    lines.removeLast();
    return lines;
}

void TestProgram::checkMilestonesOnly() const
{
    QCOMPARE(logLines().join('\n'_L1), milestones.join('\n'_L1));
}

void TestProgram::useService(const QString &apiBase)
{
    makeFile(u"service.json"_s, QJsonDocument(QJsonObject{{u"apiBase"_s, apiBase}}).toJson());
    m_environment.insert(u"KVTEDITOR_SERVICE_CONFIG"_s, m_folder->filePath(u"service.json"_s));
}

void TestProgram::withoutDisplay()
{
    m_environment.remove(u"DISPLAY"_s);
    m_environment.remove(u"WAYLAND_DISPLAY"_s);
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
}

void TestProgram::answersWithoutDisplay_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("expected");
    const QString version = u"KVTeditorNew 4.0.2\n"_s;
    const QString help = u"[file]"_s;
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
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_PROGRAM), arguments.split(' '_L1));
    QVERIFY(!outcome.crashed);
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY2(outcome.out.contains(expected), qPrintable(outcome.out));
    QVERIFY(outcome.out == expected || !expected.endsWith('\n'_L1));
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
    QVERIFY2(outcome.errors.contains("could not connect to display"_L1), qPrintable(outcome.errors));
    QCOMPARE(logLines(), milestones.first(1));
}

void TestProgram::logsFourMilestones()
{
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"close"_s);
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    checkMilestonesOnly();
}

// The program leaves the working folder, which such a name is relative to.
void TestProgram::relativeTemporaryFolderStaysTheSame()
{
    m_environment.insert(u"TMPDIR"_s, u"tmp"_s);
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"close"_s);
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {}, m_folder->path());
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    checkMilestonesOnly();
}

void TestProgram::startsAloneInAFolder()
{
    const QString folder = m_folder->filePath(u"alone"_s);
    const QString program = folder + u"/kvteditor"_s;
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(QFile::copy(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), program));
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"close"_s);
    const Outcome outcome = run(program, {}, folder);
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    checkMilestonesOnly();
    QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{u"kvteditor"_s});
}

void TestProgram::secondRunAppendsToTheLog()
{
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"close"_s);
    run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QCOMPARE(logLines(), milestones + milestones);
}

void TestProgram::brokenRootViewShowsTheBox()
{
    // A module beside the program is found before the built-in one.
    const QString program = m_folder->filePath(u"kvteditor"_s);
    QVERIFY(QFile::copy(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), program));
    makeFile(u"qml/KvtEditor/qmldir"_s, "module KvtEditor\nRootView 1.0 RootView.qml\n");
    makeFile(u"qml/KvtEditor/RootView.qml"_s, "import QtQuick\nItem { width: <b>1</b> }\n");

    checkLoadFailure(run(program, {}), u"RootView.qml:2"_s);
}

void TestProgram::missingModuleShowsTheBox()
{
    const QString program = m_folder->filePath(u"kvteditor"_s);
    QVERIFY(QFile::copy(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), program));
    // Read from beside the program: everything is found except the QML modules.
    makeFile(u"qt.conf"_s,
             u"[Paths]\nPlugins=%1\nQmlImports=%2\n"_s
                 .arg(QLibraryInfo::path(QLibraryInfo::PluginsPath), m_folder->filePath(u"no-modules"_s))
                 .toUtf8());
    checkLoadFailure(run(program, {}), u"module \"QtQuick.Layouts\" is not installed"_s);
}

void TestProgram::checkLoadFailure(const Outcome &outcome, const QString &warning) const
{
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 255);

    const QStringList log = logLines();
    const qsizetype end = log.indexOf(u"main: no QML root objects"_s);
    QCOMPARE(log.first(3), milestones.first(3));
    QVERIFY2(end > 3, qPrintable(log.join('\n'_L1)));
    // Reported while the box is open, and the box stays.
    QCOMPARE(log.constLast(), u"main: QML objectCreationFailed"_s);
    const QString warnings = log.mid(3, end - 3).join('\n'_L1);
    QVERIFY2(warnings.contains(warning), qPrintable(warnings));
    QCOMPARE(outcome.out,
             u"title: KVT Editor\nicon: 3\nbuttons: 1\nformat: %1\n"
             u"The editor window failed to load.\n"_s.arg(Qt::PlainText)
                 + warnings + '\n'_L1);
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
        QVERIFY(QDir(m_folder->filePath(u"tmp"_s)).removeRecursively());
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"close"_s);
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {}, m_folder->path());
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY(!QFileInfo::exists(m_folder->filePath(u"kvteditornew-qt.log"_s)));
    QVERIFY(folderInItsPlace == QFileInfo(logPath()).isDir());
}

// Nothing reads from it: a blocking open would never return.
void TestProgram::pipeForALogDoesNotStopIt()
{
    QCOMPARE(::mkfifo(QFile::encodeName(logPath()).constData(), 0600), 0);
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"close"_s);
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.errors, QString());
}

void TestProgram::readOnlyLogDoesNotStopIt()
{
    makeFile(u"tmp/kvteditornew-qt.log"_s, "before\n");
    QVERIFY(QFile::setPermissions(logPath(), QFileDevice::ReadOwner));
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"close"_s);
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {}, m_folder->path());
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.errors, QString());
    // No file is read-only to the administrator.
    const QStringList before{u"before"_s};
    QCOMPARE(logLines(), geteuid() == 0 ? before + milestones : before);
}

// What Qt says about such a file must not come back into the log.
void TestProgram::logOnAFullDiskDoesNotStopIt()
{
    const QString started = milestones.first(2).join('\n'_L1) + "\nmain: "_L1;
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"close"_s);
    Outcome outcome;
    {
        // It is passed on to the program.
        const FileSizeLimit limit(static_cast<rlim_t>(started.size()));
        outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {}, m_folder->path());
    }
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(QString::fromUtf8(contentOf(logPath())), started);
}

void TestProgram::fileFromTheCommandLineOpens_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("before");
    const QStringList nothing;
    QTest::newRow("plain") << u"truck.kvt"_s << nothing;
    QTest::newRow("blanks-and-signs") << u"my truck #1 100% ?&<b>[x].kvt"_s << nothing;
    QTest::newRow("percent-escape") << u"a%20b.kvt"_s << nothing;
    QTest::newRow("umlaut") << u"größe.kvt"_s << nothing;
    QTest::newRow("newline") << u"two\nlines.kvt"_s << nothing;
    QTest::newRow("colon-in-front") << u":truck.kvt"_s << nothing;
    QTest::newRow("after-an-unknown-option") << u"truck.kvt"_s << QStringList{u"--no-such-option"_s};
    QTest::newRow("after-the-end-of-options") << u"truck.kvt"_s << QStringList{u"--"_s};
    QTest::newRow("like-an-option") << u"-x.kvt"_s << QStringList{u"--"_s};
    QTest::newRow("like-a-known-option") << u"--help"_s << QStringList{u"--"_s};
}

void TestProgram::fileFromTheCommandLineOpens()
{
    QFETCH(QString, name);
    QFETCH(QStringList, before);
    DevService service;
    QString error;
    QVERIFY2(service.start(&error), qPrintable(error));
    useService(service);
    makeFile(name, "not a tune, but bytes");
    // It ends only when the window shows the file; the name is relative to the folder the program starts
    // in.
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"opened"_s);
    const Outcome outcome =
        run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), before + QStringList{name}, m_folder->path());
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, u"open: %1\n"_s.arg(name));
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
    const QString folder = m_folder->filePath(u"work"_s);
    QVERIFY(QDir().mkpath(folder));
    const std::filesystem::path file =
        std::filesystem::path(QFile::encodeName(folder).constData()) / "caf\xe9.kvt";
    if (exists)
        std::ofstream(file) << "bytes";
    // Qt cannot remove it.
    const auto remove = qScopeGuard([&file] { std::filesystem::remove(file); });
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"refused"_s);
    const Outcome outcome = run(
        u"/bin/sh"_s,
        {u"-c"_s, u"exec \"$0\" \"$(printf 'caf\\351.kvt')\""_s, QStringLiteral(KVTEDITOR_WATCHED_PROGRAM)},
        folder);
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    // Some reason, and no file is open.
    static const QRegularExpression refusal(u"^refused: .+\nopen: \n$"_s);
    QVERIFY2(refusal.match(outcome.out).hasMatch(), qPrintable(outcome.out));
    checkMilestonesOnly();
    const std::filesystem::directory_iterator entries(file.parent_path());
    QCOMPARE(std::distance(begin(entries), end(entries)), exists ? 1 : 0);
    QCOMPARE(std::filesystem::exists(file), exists);
}

void TestProgram::relativeServiceFileIsFound_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("startFolder");
    QTest::newRow("beside") << u"service.json"_s << u"."_s;
    QTest::newRow("above") << u"../service.json"_s << u"work"_s;
}

void TestProgram::relativeServiceFileIsFound()
{
    QFETCH(QString, path);
    QFETCH(QString, startFolder);
    DevService service;
    QVERIFY(service.start());
    useService(service);
    m_environment.insert(u"KVTEDITOR_SERVICE_CONFIG"_s, path);
    const QString folder = m_folder->filePath(startFolder);
    QVERIFY(QDir().mkpath(folder));
    makeFile(u"truck.kvt"_s, "bytes");
    const QString signal = m_folder->filePath(u"close-now"_s);
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"opened"_s);
    m_environment.insert(u"KVTEDITOR_CLOSE_WHEN"_s, signal);
    const Outcome outcome =
        run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {m_folder->filePath(u"truck.kvt"_s)}, folder, [&] {
            WAIT_COMPARE(service.requestCount(worker), 1);
            makeFile(u"close-now"_s, {});
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
    QVERIFY(service.setFault(worker, u"hold"_s));
    useService(service);
    const QString file = makeFile(u"truck.kvt"_s, QByteArray(1000000, 'x'));
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"opened"_s);
    m_environment.insert(u"KVTEDITOR_CLOSE_WHEN"_s, m_folder->filePath(u"close-now"_s));

    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {file}, {}, [&] {
        WAIT_COMPARE(service.heldCount(), 1);
        makeFile(u"close-now"_s, {});
    });
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    checkMilestonesOnly();
    QCOMPARE(service.requestCount(worker), 1);
}

void TestProgram::closesCleanlyDuringAnUpload()
{
    constexpr qint64 size = 64 * 1024 * 1024;
    const QString file = makeFile(u"truck.kvt"_s, QByteArray(size, 'x'));
    // Takes the request's head and then nothing more, so that the upload comes to a stand.
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    useService(u"http://127.0.0.1:%1/api/"_s.arg(server.serverPort()));
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"opened"_s);
    m_environment.insert(u"KVTEDITOR_CLOSE_WHEN"_s, m_folder->filePath(u"close-now"_s));
    QTcpSocket *connection = nullptr;
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {file}, {}, [&] {
        WAIT_VERIFY(server.hasPendingConnections());
        connection = server.nextPendingConnection();
        connection->setReadBufferSize(4096);
        WAIT_VERIFY(connection->peek(4096).contains("\r\n\r\n"));
        makeFile(u"close-now"_s, {});
    });
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    checkMilestonesOnly();
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
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"dialog"_s);
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, u"dialog: open\n"_s);
    checkMilestonesOnly();
}

// The size of the tree is KVTEDITOR_SCAN_FILES where a machine is given the time for a larger one.
void TestProgram::closesCleanlyDuringAScan()
{
    const int files = qEnvironmentVariableIsSet("KVTEDITOR_SCAN_FILES")
        ? qEnvironmentVariableIntValue("KVTEDITOR_SCAN_FILES")
        : 20000;
    QTemporaryDir tree;
    for (int i = 0; i < files; ++i) {
        ::makeFile(u"%1/%2/e38_%3.kvt"_s.arg(tree.path()).arg(i / 1000).arg(i));
    }
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"scan"_s);
    m_environment.insert(u"KVTEDITOR_SCAN_ROOT"_s, tree.path());
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, u"scan: running\n"_s);
    checkMilestonesOnly();
}

void TestProgram::wrongServiceFileMeansNoService()
{
    makeFile(u"service.json"_s, "{\"apiBase\": \"http://service.example/api/\"}");
    const QString path = m_folder->filePath(u"service.json"_s);
    const QString refusal = u"Service configuration %1 is not used: "
                            u"\"apiBase\" is neither HTTPS nor HTTP on a loopback address"_s.arg(path);
    m_environment.insert(u"KVTEDITOR_SERVICE_CONFIG"_s, path);
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"refused"_s);
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.errors, refusal + '\n'_L1);
    QCOMPARE(outcome.out, u"refused: %1\nopen: \n"_s.arg(refusal));
    QStringList lines = milestones;
    lines.insert(2, refusal);
    // Unlike QCOMPARE, shows every line.
    QVERIFY2(logLines() == lines, qPrintable(logLines().join('\n'_L1)));
}

void TestProgram::leavesNoCoreDump_data()
{
    QTest::addColumn<bool>("isDebugged");
    QTest::newRow("default") << false;
    QTest::newRow("allowed") << true;
}

// Files, passwords and tokens are in the memory that it would hold.
void TestProgram::leavesNoCoreDump()
{
    QFETCH(bool, isDebugged);
    if (isDebugged)
        m_environment.insert(u"KVTEDITOR_CORE_DUMPS"_s, u"1"_s);
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"cores"_s);
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_CORE, &before), 0);
    const rlim_t expected = isDebugged ? before.rlim_cur : std::min<rlim_t>(1, before.rlim_max);
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, u"cores: %1\n"_s.arg(expected));
}

KVTEDITOR_TEST_MAIN(TestProgram)

#include "tst_Program.moc"
