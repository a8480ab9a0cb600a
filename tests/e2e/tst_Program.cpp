#include "DevService.h"
#include "SampleData.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <memory>

namespace {

constexpr int patience = 120000;

const QStringList milestones{QStringLiteral("main: start"), QStringLiteral("main: constructing AppState"),
                             QStringLiteral("main: loading QML"), QStringLiteral("main: event loop")};

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
    void secondRunAppendsToTheLog();
    void brokenRootViewShowsTheBox();
    void unwritableLogDoesNotStopIt_data();
    void unwritableLogDoesNotStopIt();
    void fileFromTheCommandLineOpens_data();
    void fileFromTheCommandLineOpens();
    void closesCleanlyWithARequestInFlight();
    void wrongServiceFileIsReportedAndPassedOver();

private:
    Outcome run(const QString &program, const QStringList &arguments, const QString &workingFolder = {},
                const std::function<void()> &meanwhile = {});
    QStringList logLines() const;
    QString logPath() const { return m_folder->filePath(QStringLiteral("tmp/kvteditornew-qt.log")); }
    void useService(const DevService &service);

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

void TestProgram::useService(const DevService &service)
{
    QFile file(m_folder->filePath(QStringLiteral("service.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QJsonDocument(QJsonObject{{QStringLiteral("apiBase"), service.apiBase()}}).toJson());
    m_environment.insert(QStringLiteral("KVTEDITOR_SERVICE_CONFIG"), file.fileName());
}

void TestProgram::answersWithoutDisplay_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("expected");
    QTest::newRow("version-long") << QStringLiteral("--version") << QStringLiteral("KVTeditornew 4.0.2\n");
    QTest::newRow("version-short") << QStringLiteral("-v") << QStringLiteral("KVTeditornew 4.0.2\n");
    QTest::newRow("help-long") << QStringLiteral("--help") << QStringLiteral("[file]");
    QTest::newRow("help-short") << QStringLiteral("-h") << QStringLiteral("[file]");
}

void TestProgram::answersWithoutDisplay()
{
    QFETCH(QString, option);
    QFETCH(QString, expected);
    m_environment.remove(QStringLiteral("DISPLAY"));
    m_environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    m_environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_PROGRAM), {option});
    QVERIFY(!outcome.crashed);
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY2(outcome.out.contains(expected), qPrintable(outcome.out));
    QVERIFY(!QFileInfo::exists(logPath()));
}

void TestProgram::refusesToStartWithoutDisplay()
{
    m_environment.remove(QStringLiteral("DISPLAY"));
    m_environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    m_environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_PROGRAM), {});
    QVERIFY(outcome.crashed || outcome.exitCode != 0);
    QVERIFY2(outcome.errors.contains(QLatin1String("display")), qPrintable(outcome.errors));
}

void TestProgram::logsFourMilestones()
{
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("close"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(logLines(), milestones);
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

    const Outcome outcome = run(program, {});
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 255);

    const QStringList log = logLines();
    const qsizetype end = log.indexOf(QStringLiteral("main: no QML root objects"));
    QCOMPARE(log.first(3), milestones.first(3));
    QVERIFY2(end > 3, qPrintable(log.join(QLatin1Char('\n'))));
    // Reported while the box is open, and the box stays.
    QCOMPARE(log.constLast(), QStringLiteral("main: QML objectCreationFailed"));
    const QString warnings = log.mid(3, end - 3).join(QLatin1Char('\n'));
    QVERIFY2(warnings.contains(QLatin1String("RootView.qml:2")), qPrintable(warnings));
    QCOMPARE(outcome.out,
             QStringLiteral("title: KVT Editor\nicon: 3\nbuttons: 1\nThe editor window failed to load.\n")
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

void TestProgram::fileFromTheCommandLineOpens_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QStringLiteral("truck.kvt");
    QTest::newRow("blanks-and-signs") << QStringLiteral("my truck #1 100% ?&<b>[x].kvt");
    QTest::newRow("percent-escape") << QStringLiteral("a%20b.kvt");
    QTest::newRow("umlaut") << QStringLiteral("größe.kvt");
    QTest::newRow("newline") << QStringLiteral("two\nlines.kvt");
}

void TestProgram::fileFromTheCommandLineOpens()
{
    QFETCH(QString, name);
    DevService service;
    QString error;
    QVERIFY2(service.start(&error), qPrintable(error));
    useService(service);
    QFile file(m_folder->filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("not a tune, but bytes");
    file.close();
    // It ends only when the window shows the file; the name is relative to the folder the program starts
    // in.
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("opened"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {name}, m_folder->path());
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out, QStringLiteral("open: %1\n").arg(name));
}

void TestProgram::closesCleanlyWithARequestInFlight()
{
    const QString endpoint = QStringLiteral("kvt_worker/process.aspx");
    DevService service;
    QString error;
    QVERIFY2(service.start(&error), qPrintable(error));
    QVERIFY(service.setFault(endpoint, QStringLiteral("hold")));
    useService(service);
    QFile file(m_folder->filePath(QStringLiteral("truck.kvt")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(1000000, 'x'));
    file.close();
    QFile signal(m_folder->filePath(QStringLiteral("close-now")));
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("opened"));
    m_environment.insert(QStringLiteral("KVTEDITOR_CLOSE_WHEN"), signal.fileName());

    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {file.fileName()}, {}, [&] {
        QTRY_COMPARE_WITH_TIMEOUT(service.heldCount(), 1, patience);
        QVERIFY(signal.open(QIODevice::WriteOnly));
    });
    QVERIFY2(!outcome.crashed, qPrintable(outcome.errors));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(logLines(), milestones);
    QCOMPARE(service.requestCount(endpoint), 1);
}

void TestProgram::wrongServiceFileIsReportedAndPassedOver()
{
    QFile file(m_folder->filePath(QStringLiteral("service.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\"apiBase\": \"http://service.example/api/\"}");
    file.close();
    m_environment.insert(QStringLiteral("KVTEDITOR_SERVICE_CONFIG"), file.fileName());
    m_environment.insert(QStringLiteral("KVTEDITOR_WATCH"), QStringLiteral("close"));
    const Outcome outcome = run(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM), {});
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY2(outcome.errors.contains(file.fileName()), qPrintable(outcome.errors));
    QVERIFY2(outcome.errors.contains(QLatin1String("neither HTTPS nor HTTP on a loopback address")),
             qPrintable(outcome.errors));
    QCOMPARE(logLines(), milestones);
}

KVTEDITOR_TEST_MAIN(TestProgram)

#include "tst_Program.moc"
