#include "app/MessageLog.h"
#include "support/FileSizeLimit.h"
#include "support/PlainRights.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// Catches what reaches the two output streams of the process while it lives.
class Console
{
public:
    Console()
    {
        if (!m_file.open())
            qFatal("There is no file to catch the output in.");
        std::fflush(nullptr);
        ::dup2(m_file.handle(), STDOUT_FILENO);
        ::dup2(m_file.handle(), STDERR_FILENO);
    }
    ~Console()
    {
        restore();
        ::close(m_out);
        ::close(m_err);
    }
    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;

    /// Ends the catching.
    QByteArray printed()
    {
        restore();
        m_file.seek(0);
        return m_file.readAll();
    }

private:
    void restore()
    {
        std::fflush(nullptr);
        ::dup2(m_out, STDOUT_FILENO);
        ::dup2(m_err, STDERR_FILENO);
    }

    QTemporaryFile m_file;
    int m_out = ::dup(STDOUT_FILENO);
    int m_err = ::dup(STDERR_FILENO);
};

QString logPath()
{
    return qEnvironmentVariable("TMPDIR") + u"/kvteditornew-qt.log"_s;
}

QByteArray logContent()
{
    QFile file(logPath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A pipe in the file system, and the end of it that is read; it never blocks.
class Pipe
{
public:
    explicit Pipe(const QString &path)
        : m_path(QFile::encodeName(path))
    {
        m_made = ::mkfifo(m_path.constData(), 0600) == 0;
    }
    ~Pipe()
    {
        ::close(m_reader);
        ::close(m_writer);
    }
    Q_DISABLE_COPY_MOVE(Pipe)

    bool isMade() const { return m_made; }
    bool openForReading() { return (m_reader = ::open(m_path.constData(), O_RDONLY | O_NONBLOCK)) >= 0; }
    /// Writes until the pipe is full. Returns the number of bytes.
    qsizetype fill()
    {
        m_writer = ::open(m_path.constData(), O_WRONLY | O_NONBLOCK);
        const QByteArray page(4096, 'f');
        qsizetype filled = 0;
        for (ssize_t count = 0; count >= 0; count = ::write(m_writer, page.constData(), 4096))
            filled += count;
        return filled;
    }
    QByteArray content()
    {
        QByteArray content;
        char byte = 0;
        while (::read(m_reader, &byte, 1) == 1)
            content.append(byte);
        return content;
    }

private:
    QByteArray m_path;
    bool m_made = false;
    int m_reader = -1;
    int m_writer = -1;
};

} // namespace

class TestMessageLog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void debugGoesNowhere();
    void otherMessagesAreCapturedAndLogged_data();
    void otherMessagesAreCapturedAndLogged();
    void messagesStandInOrder();
    void messageOfManyLinesIsOneText();
    void nothingReachesTheConsole();
    void logLine_writesTheBytesAndALineFeed_data();
    void logLine_writesTheBytesAndALineFeed();
    void logLine_isNotCaptured();
    void logIsAppendedTo();
    void eachLineIsThereAtOnce();
    void manyThreads();
    void unwritableLogIsPassedOver_data();
    void unwritableLogIsPassedOver();
    void logWithoutRightsIsPassedOver_data();
    void logWithoutRightsIsPassedOver();
    void logThatIsNoFileIsPassedOver_data();
    void logThatIsNoFileIsPassedOver();
    void logBehindALinkIsPassedOver();
    void logWithASecondNameIsPassedOver();
    void logOfAnotherUserIsPassedOver();
    void logIsForTheUserAlone();
    void fullDiskIsPassedOver();
    void loadFailureText_data();
    void loadFailureText();

private:
    /// The captured list only grows: what came since init().
    QStringList captured() const { return capturedMessages().sliced(m_before); }

    qsizetype m_before = 0;
    QtMessageHandler m_ofTheTest = nullptr;
    QByteArray m_temporaryFolder = qgetenv("TMPDIR");
};

void TestMessageLog::init()
{
    QFile::remove(logPath());
    m_before = capturedMessages().size();
    m_ofTheTest = qInstallMessageHandler(nullptr);
    installMessageLog();
}

void TestMessageLog::cleanup()
{
    qInstallMessageHandler(m_ofTheTest);
    qputenv("TMPDIR", m_temporaryFolder);
    if (!QFile::remove(logPath()))
        QDir(logPath()).removeRecursively();
}

void TestMessageLog::debugGoesNowhere()
{
    Console console;
    qDebug("one");
    qDebug() << "two";
    const QByteArray printed = console.printed();
    QCOMPARE(printed, QByteArray());
    QCOMPARE(captured(), QStringList());
    QVERIFY(!QFileInfo::exists(logPath()));
}

void TestMessageLog::otherMessagesAreCapturedAndLogged_data()
{
    QTest::addColumn<QtMsgType>("type");
    QTest::newRow("info") << QtInfoMsg;
    QTest::newRow("warning") << QtWarningMsg;
    QTest::newRow("critical") << QtCriticalMsg;
    QTest::newRow("fatal") << QtFatalMsg;
}

void TestMessageLog::otherMessagesAreCapturedAndLogged()
{
    QFETCH(QtMsgType, type);
    // Called as Qt calls it, which ends the process after a fatal one.
    const QtMessageHandler handler = qInstallMessageHandler(m_ofTheTest);
    const QString text = u"größe \u20ac \U0001f69a 100% <b>"_s;
    handler(type, QMessageLogContext("file.cpp", 12, "function", "category"), text);
    QCOMPARE(captured(), QStringList{text});
    QCOMPARE(logContent(),
             QByteArray("gr\xc3\xb6\xc3\x9f"
                        "e \xe2\x82\xac \xf0\x9f\x9a\x9a 100% <b>\n"));
}

void TestMessageLog::messagesStandInOrder()
{
    qCritical("first");
    qInfo("second");
    qDebug("nowhere");
    qWarning("third");
    qInfo("%s", "");
    qWarning("third");
    QCOMPARE(captured(), QStringList({u"first"_s, u"second"_s, u"third"_s, QString(), u"third"_s}));
    QCOMPARE(logContent(), QByteArray("first\nsecond\nthird\n\nthird\n"));
}

void TestMessageLog::messageOfManyLinesIsOneText()
{
    qWarning("a\nb");
    QCOMPARE(captured(), QStringList{u"a\nb"_s});
    QCOMPARE(logContent(), QByteArray("a\nb\n"));
}

void TestMessageLog::nothingReachesTheConsole()
{
    Console console;
    qInfo("info");
    qWarning("warning");
    qCritical("critical");
    logLine("line");
    const QByteArray printed = console.printed();
    QCOMPARE(printed, QByteArray());
    QCOMPARE(logContent(), QByteArray("info\nwarning\ncritical\nline\n"));
}

void TestMessageLog::logLine_writesTheBytesAndALineFeed_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("plain") << QByteArray("main: start");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("carriage-return") << QByteArray("a\r");
    QTest::newRow("not-utf8") << QByteArray("caf\xe9");
    QTest::newRow("long") << QByteArray(100'000, 'x');
}

void TestMessageLog::logLine_writesTheBytesAndALineFeed()
{
    QFETCH(QByteArray, text);
    logLine(text);
    QCOMPARE(logContent(), text + '\n');
}

void TestMessageLog::logLine_isNotCaptured()
{
    logLine("main: start");
    QCOMPARE(captured(), QStringList());
}

void TestMessageLog::logIsAppendedTo()
{
    makeFile(logPath(), "of an earlier run\n");
    logLine("main: start");
    qWarning("warned");
    QCOMPARE(logContent(), QByteArray("of an earlier run\nmain: start\nwarned\n"));
}

void TestMessageLog::eachLineIsThereAtOnce()
{
    for (int count = 1; count <= 3; ++count) {
        logLine("main: start");
        QCOMPARE(logContent(), QByteArray("main: start\n").repeated(count));
    }
    // Opened for each line: a log that was taken away is begun again.
    QVERIFY(QFile::remove(logPath()));
    logLine("main: start");
    QCOMPARE(logContent(), QByteArray("main: start\n"));
}

void TestMessageLog::manyThreads()
{
    constexpr int threadCount = 8;
    constexpr int messageCount = 250;
    // Long enough for a torn line to be likely when nothing guards it.
    const QString filling = u"\u00e9"_s.repeated(3000);
    QStringList expected;
    for (int thread = 0; thread < threadCount; ++thread)
        for (int message = 0; message < messageCount; ++message)
            expected.append(u"%1 %2 "_s.arg(thread).arg(message) + filling);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&expected, thread] {
            for (int message = 0; message < messageCount; ++message)
                qWarning("%s", qUtf8Printable(expected.at(thread * messageCount + message)));
        });
    }
    for (std::thread &thread : threads)
        thread.join();

    QStringList texts = captured();
    QCOMPARE(texts.size(), threadCount * messageCount);
    QVERIFY(logContent() == texts.join(u'\n').toUtf8() + '\n');
    // Each thread's own messages keep their order.
    for (int thread = 0; thread < threadCount; ++thread) {
        const QString start = u"%1 "_s.arg(thread);
        QStringList own;
        std::copy_if(texts.cbegin(), texts.cend(), std::back_inserter(own),
                     [&start](const QString &text) { return text.startsWith(start); });
        QVERIFY(own == expected.sliced(thread * messageCount, messageCount));
    }
}

void TestMessageLog::unwritableLogIsPassedOver_data()
{
    QTest::addColumn<bool>("folderInItsPlace");
    QTest::newRow("log-is-a-folder") << true;
    QTest::newRow("temporary-folder-missing") << false;
}

void TestMessageLog::unwritableLogIsPassedOver()
{
    QFETCH(bool, folderInItsPlace);
    QTemporaryDir current;
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(current.path()));
    Console console;
    if (folderInItsPlace)
        QDir().mkpath(logPath());
    else
        qputenv("TMPDIR", m_temporaryFolder + "/missing");
    logLine("main: start");
    qWarning("warned");
    const QByteArray printed = console.printed();
    QDir::setCurrent(before);
    QCOMPARE(printed, QByteArray());
    QCOMPARE(captured(), QStringList{u"warned"_s});
    QVERIFY(QDir(current.path()).isEmpty());
    QCOMPARE(QFileInfo::exists(logPath()), folderInItsPlace);
}

void TestMessageLog::logWithoutRightsIsPassedOver_data()
{
    QTest::addColumn<QByteArray>("earlier");
    QTest::addColumn<int>("ofTheFolder");
    QTest::addColumn<int>("ofTheLog");
    const int all = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    QTest::newRow("read-only-log") << QByteArray("earlier\n") << all << int(QFile::ReadOwner);
    QTest::newRow("log-without-any-right") << QByteArray("earlier\n") << all << 0;
    QTest::newRow("read-only-folder-without-a-log")
        << QByteArray() << int(QFile::ReadOwner | QFile::ExeOwner) << 0;
    QTest::newRow("folder-that-may-not-be-entered")
        << QByteArray("earlier\n") << int(QFile::ReadOwner | QFile::WriteOwner)
        << int(QFile::ReadOwner | QFile::WriteOwner);
}

void TestMessageLog::logWithoutRightsIsPassedOver()
{
    QFETCH(QByteArray, earlier);
    QFETCH(int, ofTheFolder);
    QFETCH(int, ofTheLog);
    const QString folder = QFileInfo(logPath()).path();
    const auto setRights = [&](int rightsOfTheFolder, int rightsOfTheLog) {
        return (earlier.isEmpty() || QFile::setPermissions(logPath(), QFile::Permissions(rightsOfTheLog)))
            && QFile::setPermissions(folder, QFile::Permissions(rightsOfTheFolder));
    };
    if (!earlier.isEmpty())
        makeFile(logPath(), earlier);
    const QFile::Permissions before = QFile::permissions(folder);
    Console console;
    const bool areTaken = setRights(ofTheFolder, ofTheLog);
    {
        const PlainRights rights;
        logLine("main: start");
        qWarning("warned");
    }
    const bool areBack = QFile::setPermissions(folder, before)
        && (earlier.isEmpty() || QFile::setPermissions(logPath(), QFile::ReadOwner | QFile::WriteOwner));
    const QByteArray printed = console.printed();
    QVERIFY(areTaken && areBack);
    QCOMPARE(printed, QByteArray());
    QCOMPARE(captured(), QStringList{u"warned"_s});
    QCOMPARE(logContent(), earlier);

    const PlainRights rights;
    qWarning("again");
    QCOMPARE(captured().constLast(), u"again"_s);
    QCOMPARE(logContent(), earlier + "again\n");
}

void TestMessageLog::logThatIsNoFileIsPassedOver_data()
{
    QTest::addColumn<bool>("behindALink");
    QTest::addColumn<bool>("read");
    QTest::addColumn<bool>("full");
    QTest::newRow("pipe-nobody-reads") << false << false << false;
    QTest::newRow("pipe-somebody-reads") << false << true << false;
    QTest::newRow("pipe-full") << false << true << true;
    QTest::newRow("link-to-a-pipe") << true << true << false;
}

void TestMessageLog::logThatIsNoFileIsPassedOver()
{
    QFETCH(bool, behindALink);
    QFETCH(bool, read);
    QFETCH(bool, full);
    QTemporaryDir elsewhere;
    const QString path = behindALink ? elsewhere.filePath(u"pipe"_s) : logPath();
    Pipe pipe(path);
    QVERIFY(pipe.isMade());
    QVERIFY(!behindALink || QFile::link(path, logPath()));
    QVERIFY(!read || pipe.openForReading());
    const qsizetype filled = full ? pipe.fill() : 0;
    QCOMPARE(filled > 0, full);
    Console console;
    logLine("main: start");
    qWarning("warned");
    const QByteArray printed = console.printed();
    QCOMPARE(printed, QByteArray());
    QCOMPARE(captured(), QStringList{u"warned"_s});
    QVERIFY(pipe.content() == QByteArray(filled, 'f'));

    QVERIFY(QFile::remove(logPath()));
    logLine("main: start");
    QCOMPARE(logContent(), QByteArray("main: start\n"));
}

// Anybody may have put it there, to have one of the user's own files written to.
void TestMessageLog::logBehindALinkIsPassedOver()
{
    QTemporaryDir elsewhere;
    const QString target = makeFile(elsewhere.filePath(u"log"_s), "earlier\n");
    QVERIFY(QFile::link(target, logPath()));
    logLine("main: start");
    QVERIFY(QFileInfo(logPath()).isSymLink());
    QCOMPARE(contentOf(target), QByteArray("earlier\n"));
}

void TestMessageLog::logWithASecondNameIsPassedOver()
{
#ifdef KVTEDITOR_PORTABLE_FILES
    QSKIP("Qt's classes do not count a file's names.");
#endif
    QTemporaryDir elsewhere(QDir::tempPath() + u"/elsewhere"_s);
    const QString other = makeFile(elsewhere.filePath(u"other"_s), "earlier\n");
    QCOMPARE(::link(QFile::encodeName(other).constData(), QFile::encodeName(logPath()).constData()), 0);
    logLine("main: start");
    QCOMPARE(logContent(), QByteArray("earlier\n"));
}

void TestMessageLog::logOfAnotherUserIsPassedOver()
{
#ifdef KVTEDITOR_PORTABLE_FILES
    QSKIP("Qt's classes open a file without asking whose it is.");
#endif
    if (::geteuid() != 0)
        QSKIP("Only root can give a file to another user.");
    constexpr uid_t nobody = 65534;
    logLine("main: start");
    QCOMPARE(::chown(QFile::encodeName(logPath()).constData(), nobody, nobody), 0);
    logLine("main: event loop");
    QCOMPARE(logContent(), QByteArray("main: start\n"));
}

void TestMessageLog::logIsForTheUserAlone()
{
    constexpr auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    logLine("main: start");
    QCOMPARE(QFileInfo(logPath()).permissions() & others, QFile::Permissions());
    // One that an earlier version left.
    QVERIFY(QFile::setPermissions(logPath(), QFile::ReadOwner | QFile::WriteOwner | others));
    logLine("main: start");
    QCOMPARE(QFileInfo(logPath()).permissions() & others, QFile::Permissions());
}

void TestMessageLog::fullDiskIsPassedOver()
{
    Console console;
    {
        const FileSizeLimit limit(7);
        logLine("main: start");
        qWarning("warned");
    }
    // What is printed goes into a file as well, which may grow as far.
    const QByteArray printed = console.printed();
    QCOMPARE(printed, QByteArray());
    QCOMPARE(captured(), QStringList{u"warned"_s});
    QCOMPARE(logContent(), QByteArray("main: s"));
    logLine("main: loading QML");
    QCOMPARE(logContent(), QByteArray("main: smain: loading QML\n"));
}

void TestMessageLog::loadFailureText_data()
{
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << QStringList() << u"The editor window failed to load.\n"_s;
    QTest::newRow("one") << QStringList{u"a"_s} << u"The editor window failed to load.\na"_s;
    QTest::newRow("two") << QStringList{u"a"_s, u"b"_s} << u"The editor window failed to load.\na\nb"_s;
    QTest::newRow("empty-texts-count")
        << QStringList{QString(), QString()} << u"The editor window failed to load.\n\n"_s;
    QTest::newRow("as-they-are") << QStringList{u"%1 <b>&"_s}
                                 << u"The editor window failed to load.\n%1 <b>&"_s;
}

void TestMessageLog::loadFailureText()
{
    QFETCH(QStringList, messages);
    QTEST(::loadFailureText(messages), "expected");
}

KVTEDITOR_TEST_MAIN(TestMessageLog)
#include "tst_MessageLog.moc"
