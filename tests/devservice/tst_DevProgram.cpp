#include "ServiceTest.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QProcess>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

struct Result
{
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

Result runToEnd(const QStringList &arguments)
{
    QProcess program;
    program.start(QStringLiteral(KVTEDITOR_DEVSERVICE_PROGRAM), arguments);
    if (!program.waitForFinished() || program.exitStatus() != QProcess::NormalExit)
        return {};
    return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
}

} // namespace

class TestDevProgram : public QObject
{
    Q_OBJECT

private slots:
    void endsInOrderOnASignal_data();
    void endsInOrderOnASignal();
    void speaksTls();
    void writesSampleDataAndEnds();
    void saysWhatItIs();
    void refusesWrongArguments_data();
    void refusesWrongArguments();

private:
    void startProgram(QProcess &program, const QStringList &arguments = {});
    QString apiBase() const;

    QTemporaryDir m_folder;
    QByteArray m_said;
};

void TestDevProgram::startProgram(QProcess &program, const QStringList &arguments)
{
    program.start(QStringLiteral(KVTEDITOR_DEVSERVICE_PROGRAM),
                  QStringList({u"--config-file"_s, m_folder.filePath(u"config.json"_s), u"--port-file"_s,
                               m_folder.filePath(u"port"_s)})
                      + arguments);
    // By then it has written its files.
    m_said.clear();
    while (!m_said.contains("Listening") || !m_said.endsWith('\n'))
        QVERIFY(program.waitForReadyRead(60'000) && !(m_said += program.readAllStandardOutput()).isEmpty());
}

QString TestDevProgram::apiBase() const
{
    const QJsonObject config =
        QJsonDocument::fromJson(contentOf(m_folder.filePath(u"config.json"_s))).object();
    return config.keys() == QStringList(u"apiBase"_s) ? config.value("apiBase"_L1).toString() : QString();
}

void TestDevProgram::endsInOrderOnASignal_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TestDevProgram::endsInOrderOnASignal()
{
    QFETCH(int, signal);
    QProcess program;
    startProgram(program, {u"--update-version"_s, u"9.9"_s});
    const QString port = QString::fromLatin1(contentOf(m_folder.filePath(u"port"_s))).trimmed();
    QCOMPARE(apiBase(), u"http://127.0.0.1:%1/api/"_s.arg(port));
    QCOMPARE(
        get(apiBase() + "updates/kvteditornew/update.json"_L1).json().value("latest_version"_L1).toString(),
        u"9.9"_s);
    ::kill(pid_t(program.processId()), signal);
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(program.readAllStandardError(), QByteArray());
    const QList<QByteArray> lines = m_said.split('\n');
    QVERIFY(lines.first().contains("not the real service"));
    QVERIFY(lines.value(1).contains(apiBase().toLatin1()));
}

void TestDevProgram::speaksTls()
{
    const QString certificates = QStringLiteral(KVTEDITOR_CERTIFICATES_DIR);
    QProcess program;
    startProgram(program, {u"--tls"_s, certificates + "/server.pem"_L1, certificates + "/server.key"_L1});
    const Outcome outcome =
        get(apiBase() + "updates/kvteditornew/update.json"_L1, certificates + "/ca.pem"_L1);
    QCOMPARE(outcome.error, QNetworkReply::NoError);
    QVERIFY(apiBase().startsWith("https:"_L1));
    program.terminate();
    QVERIFY(program.waitForFinished());
}

void TestDevProgram::writesSampleDataAndEnds()
{
    const QString folder = m_folder.filePath(u"new/samples"_s);
    const Result result = runToEnd({u"--sample-data"_s, folder, u"--exit"_s});
    QCOMPARE(result.exitCode, 0);
    QVERIFY(contentOf(folder + "/one-module.kvt"_L1).startsWith("KVTSAMPLE1\n"));
    const Result failed = runToEnd({u"--sample-data"_s, folder + "/one-module.kvt"_L1, u"--exit"_s});
    QCOMPARE(failed.exitCode, 1);
    QVERIFY(failed.errors.contains("one-module.kvt"));
}

void TestDevProgram::saysWhatItIs()
{
    const Result result = runToEnd({u"--help"_s});
    QCOMPARE(result.exitCode, 0);
    for (const char *option :
         {"--port", "--tls", "--update-version", "--sample-data", "--port-file", "--config-file"})
        QVERIFY2(result.output.contains(option), option);
    QVERIFY(result.output.contains("KVTEDITOR_SERVICE_CONFIG"));
}

void TestDevProgram::refusesWrongArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("unknown") << QStringList(u"--rain"_s) << QByteArray("rain");
    QTest::newRow("unexpected-argument") << QStringList(u"rain"_s) << QByteArray("Unknown argument: rain");
    QTest::newRow("port-no-number") << QStringList({u"--port"_s, u"x"_s}) << QByteArray("--port");
    QTest::newRow("port-too-large") << QStringList({u"--port"_s, u"65536"_s}) << QByteArray("--port");
    QTest::newRow("tls-without-key") << QStringList({u"--tls"_s, u"c.pem"_s}) << QByteArray("--tls");
    QTest::newRow("tls-missing-files")
        << QStringList({u"--tls"_s, u"/no/c.pem"_s, u"/no/k.pem"_s}) << QByteArray("/no/c.pem");
    QTest::newRow("config-unwritable") << QStringList({u"--config-file"_s, u"/no/such/folder/c.json"_s})
                                       << QByteArray("/no/such/folder/c.json");
}

void TestDevProgram::refusesWrongArguments()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    const Result result = runToEnd(arguments);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains(error), result.errors.constData());
}

KVTEDITOR_TEST_MAIN(TestDevProgram)
#include "tst_DevProgram.moc"
