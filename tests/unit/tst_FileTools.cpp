#include "core/FileTools.h"
#include "support/FileSizeLimit.h"
#include "support/PlainRights.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <future>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString untouched = u"untouched"_s;

bool giveSecondName(const QByteArray &path, const QByteArray &second)
{
    return ::link(path.constData(), second.constData()) == 0;
}

QByteArray everyByte()
{
    QByteArray bytes;
    for (int value = 0; value < 256; ++value) {
        bytes.append(static_cast<char>(value));
    }
    return bytes;
}

} // namespace

class TestFileTools : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void readFile_returnsEveryByte();
    void readFile_leavesErrorAloneOnSuccess();
    void readFile_emptyFileIsNoError();
    void readFile_refuses_data();
    void readFile_refuses();
    void readFile_refusesWithoutErrorPointer();
    void readFile_callsOnlyAFolderOne();
    void readFile_failsWhenTheFirstByteCannotBeRead();
    void readFile_endsWhereTheFileIsShorterThanItsSize();
    void readFile_refusesSocket();
    void readFile_neverWaitsForAPipe();
    void readFile_refusesFileThatAnIntCannotCount();
    void readFile_followsLinkToFile();
    void readFile_resolvesRelativePathAgainstWorkingFolder();
    void readFile_takesLargeFile();
    void readFile_returnsEveryByteOfLargeFile_data();
    void readFile_returnsEveryByteOfLargeFile();

    void writeFile_createsParents();
    void writeFile_resolvesRelativePathAgainstWorkingFolder();
    void writeFile_truncatesLongerFile();
    void writeFile_emptyDataTruncates();
    void writeFile_keepsEveryByte();
    void writeFile_overItselfInPlace();
    void writeFile_throughLinkKeepsLink();
    void writeFile_afterFolderWasRemoved();
    void writeFile_fails_data();
    void writeFile_fails();
    void writeFile_diskFullAtByte_data();
    void writeFile_diskFullAtByte();
    void writeFile_deviceThatIsAlwaysFull();

    void oddNames_data();
    void oddNames();
    void nameThatIsNotUtf8IsRefusedNotMistaken();

    void exportToTemporary_isForTheUserAlone();
    void exportToTemporary_takesTheSameBytes();
    void exportToTemporary_saysWhyNot();
    void exportToTemporary_emptyDataTruncates();
    void worksWithoutStandardInput();
    void exportToTemporary_refuses_data();
    void exportToTemporary_refuses();

    void documentsDir_isInHomeAndNotCreated();
    void documentsDir_followsUserDirs();
    void exportToDocuments_createsFolderAndReturnsPath();
    void exportToDocuments_replacesEarlierExport();
    void exportToDocuments_fails_data();
    void exportToDocuments_fails();

    void revealInExplorer_opensTheFolder_data();
    void revealInExplorer_opensTheFolder();

private:
    QString inDir(const QString &name) const { return m_dir.path() + u'/' + name; }

    QTemporaryDir m_dir;
    QString m_workingFolder;
};

void TestFileTools::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_workingFolder = QDir::currentPath();
}

void TestFileTools::cleanup()
{
    QDir::setCurrent(m_workingFolder);
    QDir(TestEnvironment::documents()).removeRecursively();
    QFile::remove(TestEnvironment::documents());
}

void TestFileTools::readFile_returnsEveryByte()
{
    makeFile(inDir(u"all.bin"_s), everyByte());
    QCOMPARE(FileTools::readFile(inDir(u"all.bin"_s)), everyByte());
}

void TestFileTools::readFile_leavesErrorAloneOnSuccess()
{
    makeFile(inDir(u"a"_s), "abc");
    QString error = untouched;
    QCOMPARE(FileTools::readFile(inDir(u"a"_s), &error), QByteArray("abc"));
    QCOMPARE(error, untouched);
}

void TestFileTools::readFile_emptyFileIsNoError()
{
    makeFile(inDir(u"empty"_s), {});
    QString error = untouched;
    QCOMPARE(FileTools::readFile(inDir(u"empty"_s), &error), QByteArray());
    QCOMPARE(error, untouched);
}

void TestFileTools::readFile_refuses_data()
{
    QTest::addColumn<QString>("path");
    makeFile(inDir(u"file"_s), "abc");
    QVERIFY(QDir(m_dir.path()).mkpath(u"folder"_s));
    QCOMPARE(::mkfifo(QFile::encodeName(inDir(u"fifo"_s)).constData(), 0600), 0);
    QVERIFY(QFile::link(inDir(u"fifo"_s), inDir(u"link-to-fifo"_s)));
    QVERIFY(QFile::link(inDir(u"folder"_s), inDir(u"link-to-folder"_s)));
    QVERIFY(QFile::link(inDir(u"nowhere"_s), inDir(u"dangling"_s)));
    QVERIFY(QFile::link(inDir(u"loop"_s), inDir(u"loop"_s)));

    QTest::newRow("missing") << inDir(u"missing"_s);
    QTest::newRow("missing-folder") << inDir(u"none/missing"_s);
    QTest::newRow("empty-path") << QString();
    QTest::newRow("folder") << inDir(u"folder"_s);
    QTest::newRow("folder-trailing-slash") << inDir(u"folder/"_s);
    QTest::newRow("file-where-folder-should-be") << inDir(u"file/below"_s);
    QTest::newRow("fifo") << inDir(u"fifo"_s);
    QTest::newRow("link-to-fifo") << inDir(u"link-to-fifo"_s);
    QTest::newRow("link-to-folder") << inDir(u"link-to-folder"_s);
    QTest::newRow("dangling-link") << inDir(u"dangling"_s);
    QTest::newRow("link-to-itself") << inDir(u"loop"_s);
    QTest::newRow("device-that-never-ends") << u"/dev/zero"_s;
    QTest::newRow("device-that-is-empty") << u"/dev/null"_s;
    QTest::newRow("name-too-long") << inDir(QString(300, u'n'));
}

void TestFileTools::readFile_refuses()
{
    QFETCH(QString, path);
    QString error;
    QCOMPARE(FileTools::readFile(path, &error), QByteArray());
    QVERIFY(!error.isEmpty());
}

void TestFileTools::readFile_refusesWithoutErrorPointer()
{
    QCOMPARE(FileTools::readFile(inDir(u"never-made"_s)), QByteArray());
    QCOMPARE(FileTools::readFile(u"/dev/zero"_s), QByteArray());
}

void TestFileTools::readFile_callsOnlyAFolderOne()
{
    QString folderError;
    FileTools::readFile(m_dir.path(), &folderError);
    QCOMPARE(folderError, qt_error_string(EISDIR));
    QString deviceError;
    FileTools::readFile(u"/dev/null"_s, &deviceError);
    QVERIFY(deviceError != folderError);
}

// The system treats this as a regular file and opens it, but cannot read a byte: nothing is mapped at address
// 0.
void TestFileTools::readFile_failsWhenTheFirstByteCannotBeRead()
{
    QString error;
    QCOMPARE(FileTools::readFile(u"/proc/self/mem"_s, &error), QByteArray());
    QVERIFY(!error.isEmpty());
}

// As one that another program cuts off meanwhile: the system tells a page for it, and then has a few bytes.
void TestFileTools::readFile_endsWhereTheFileIsShorterThanItsSize()
{
    const QString path = u"/sys/devices/system/cpu/online"_s;
    if (!QFileInfo::exists(path))
        QSKIP("No system tells of itself here.");
    const qint64 size = QFileInfo(path).size();
    QString error = untouched;
    const QByteArray bytes = FileTools::readFile(path, &error);
    QVERIFY(bytes.startsWith('0') && bytes.endsWith('\n') && bytes.size() < size);
    QCOMPARE(error, untouched);
}

void TestFileTools::readFile_refusesSocket()
{
    const QByteArray path = QFile::encodeName(inDir(u"socket"_s));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    QVERIFY(path.size() < static_cast<qsizetype>(sizeof address.sun_path));
    std::copy(path.begin(), path.end(), address.sun_path);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    QVERIFY(descriptor >= 0);
    QCOMPARE(::bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    QString error;
    QCOMPARE(FileTools::readFile(inDir(u"socket"_s), &error), QByteArray());
    QVERIFY(!error.isEmpty());
    ::close(descriptor);
}

// A pipe that takes the file's place between a look at it and the open would never be opened.
void TestFileTools::readFile_neverWaitsForAPipe()
{
#ifdef KVTEDITOR_PORTABLE_FILES
    QSKIP("Qt's classes open what they find.");
#endif
    const QByteArray path = QFile::encodeName(inDir(u"swapped"_s));
    const QByteArray file = QFile::encodeName(inDir(u"swapped-file"_s));
    const QByteArray pipe = QFile::encodeName(inDir(u"swapped-pipe"_s));
    makeFile(inDir(u"swapped-file"_s), "bytes");
    makeFile(inDir(u"swapped"_s), "bytes");
    QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
    std::atomic<bool> isDone = false;
    auto swaps = std::async(std::launch::async, [&] {
        const QByteArray next = path + "-next";
        while (!isDone) {
            for (const QByteArray &kind : {pipe, file}) {
                if (giveSecondName(kind, next))
                    ::rename(next.constData(), path.constData());
            }
        }
    });
    auto reads = std::async(std::launch::async, [&] {
        int wrong = 0;
        for (int i = 0; i < 20'000; ++i) {
            const QByteArray bytes = FileTools::readFile(QFile::decodeName(path));
            wrong += bytes.isEmpty() || bytes == "bytes" ? 0 : 1;
        }
        return wrong;
    });
    const bool hasEnded = reads.wait_for(60s) == std::future_status::ready;
    isDone = true;
    swaps.get();
    // Whoever waits for the pipe is let go.
    while (reads.wait_for(0s) != std::future_status::ready)
        ::close(::open(pipe.constData(), O_RDWR | O_NONBLOCK));
    QVERIFY2(hasEnded, "the read waits for a pipe");
    QCOMPARE(reads.get(), 0);
}

void TestFileTools::readFile_refusesFileThatAnIntCannotCount()
{
    const QString path = inDir(u"sparse"_s);
    makeFile(path, {});
    for (const qint64 size : {2'147'483'648LL, 3'000'000'000LL, 5'000'000'000LL}) {
        QVERIFY(QFile::resize(path, size));
        QString error;
        QCOMPARE(FileTools::readFile(path, &error), QByteArray());
        QVERIFY(!error.isEmpty());
    }
    QVERIFY(QFile::remove(path));
}

void TestFileTools::readFile_followsLinkToFile()
{
    makeFile(inDir(u"target"_s), "through the link");
    QVERIFY(QFile::link(inDir(u"target"_s), inDir(u"link"_s)));
    QCOMPARE(FileTools::readFile(inDir(u"link"_s)), QByteArray("through the link"));
}

void TestFileTools::readFile_resolvesRelativePathAgainstWorkingFolder()
{
    makeFile(inDir(u"relative"_s), "here");
    QVERIFY(QDir::setCurrent(m_dir.path()));
    QCOMPARE(FileTools::readFile(u"relative"_s), QByteArray("here"));
}

void TestFileTools::readFile_takesLargeFile()
{
    const QString path = inDir(u"large"_s);
    makeFile(path, "start");
    QVERIFY(QFile::resize(path, 256LL * 1024 * 1024));
    QString error = untouched;
    const QByteArray bytes = FileTools::readFile(path, &error);
    QCOMPARE(bytes.size(), 268'435'456);
    QVERIFY(bytes.startsWith(QByteArray("start\0\0", 7)));
    QCOMPARE(error, untouched);
    QVERIFY(QFile::remove(path));
}

void TestFileTools::readFile_returnsEveryByteOfLargeFile_data()
{
    QTest::addColumn<int>("size");

    constexpr int mebibyte = 1024 * 1024;
    QTest::newRow("one-below-four-mebibytes") << 4 * mebibyte - 1;
    QTest::newRow("four-mebibytes") << 4 * mebibyte;
    QTest::newRow("odd") << 4 * mebibyte + 1;
    QTest::newRow("nine-mebibytes") << 9 * mebibyte + 4097;
}

void TestFileTools::readFile_returnsEveryByteOfLargeFile()
{
    QFETCH(int, size);
    QByteArray content;
    while (content.size() < size)
        content += everyByte() + QByteArray::number(content.size());
    content.truncate(size);
    makeFile(inDir(u"large"_s), content);
    QVERIFY(FileTools::readFile(inDir(u"large"_s)) == content);
}

void TestFileTools::writeFile_createsParents()
{
    const QString path = inDir(u"one/two/three/new.bin"_s);
    QString error = untouched;
    QVERIFY(FileTools::writeFile(path, "new", &error));
    QCOMPARE(contentOf(path), QByteArray("new"));
    QCOMPARE(error, untouched);
}

void TestFileTools::writeFile_resolvesRelativePathAgainstWorkingFolder()
{
    QVERIFY(QDir::setCurrent(m_dir.path()));
    QVERIFY(FileTools::writeFile(u"below/relative.bin"_s, "here"));
    QCOMPARE(contentOf(inDir(u"below/relative.bin"_s)), QByteArray("here"));
}

void TestFileTools::writeFile_truncatesLongerFile()
{
    const QString path = inDir(u"longer"_s);
    makeFile(path, "a much longer earlier content");
    QVERIFY(FileTools::writeFile(path, "short"));
    QCOMPARE(contentOf(path), QByteArray("short"));
}

void TestFileTools::writeFile_emptyDataTruncates()
{
    const QString path = inDir(u"emptied"_s);
    makeFile(path, "content");
    QVERIFY(FileTools::writeFile(path, {}));
    QCOMPARE(contentOf(path), QByteArray());
    QVERIFY(FileTools::writeFile(inDir(u"made-empty"_s), {}));
    QVERIFY(QFileInfo::exists(inDir(u"made-empty"_s)));
}

void TestFileTools::writeFile_keepsEveryByte()
{
    const QByteArray bytes = everyByte() + QByteArray("\r\n\n\r\0", 5) + everyByte();
    QVERIFY(FileTools::writeFile(inDir(u"every"_s), bytes));
    QCOMPARE(contentOf(inDir(u"every"_s)), bytes);
}

void TestFileTools::writeFile_overItselfInPlace()
{
    const QString path = inDir(u"in-place"_s);
    makeFile(path, "before");
    using Status = struct stat;
    Status before = {};
    Status after = {};
    QCOMPARE(::stat(QFile::encodeName(path).constData(), &before), 0);
    QVERIFY(FileTools::writeFile(path, "after"));
    QCOMPARE(::stat(QFile::encodeName(path).constData(), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(contentOf(path), QByteArray("after"));
}

void TestFileTools::writeFile_throughLinkKeepsLink()
{
    makeFile(inDir(u"link-target"_s), "old");
    QVERIFY(QFile::link(inDir(u"link-target"_s), inDir(u"write-link"_s)));
    QVERIFY(FileTools::writeFile(inDir(u"write-link"_s), "new"));
    QVERIFY(QFileInfo(inDir(u"write-link"_s)).isSymLink());
    QCOMPARE(contentOf(inDir(u"link-target"_s)), QByteArray("new"));
}

void TestFileTools::writeFile_afterFolderWasRemoved()
{
    const QString path = inDir(u"vanishing/file"_s);
    QVERIFY(FileTools::writeFile(path, "first"));
    QVERIFY(QDir(inDir(u"vanishing"_s)).removeRecursively());
    QVERIFY(FileTools::writeFile(path, "second"));
    QCOMPARE(contentOf(path), QByteArray("second"));
}

void TestFileTools::writeFile_fails_data()
{
    QTest::addColumn<QString>("path");
    makeFile(inDir(u"blocking-file"_s), "kept");
    QVERIFY(QDir(m_dir.path()).mkpath(u"blocking-folder"_s));
    QCOMPARE(::mkfifo(QFile::encodeName(inDir(u"blocking-pipe"_s)).constData(), 0600), 0);

    QTest::newRow("folder-of-that-name") << inDir(u"blocking-folder"_s);
    QTest::newRow("pipe") << inDir(u"blocking-pipe"_s);
    QTest::newRow("file-where-folder-should-be") << inDir(u"blocking-file/below"_s);
    QTest::newRow("file-two-levels-up") << inDir(u"blocking-file/one/two"_s);
    QTest::newRow("folder-that-nobody-can-write") << u"/proc/no-such-folder/file"_s;
    QTest::newRow("name-too-long") << inDir(QString(300, u'n'));
    QTest::newRow("empty-path") << QString();
}

void TestFileTools::writeFile_fails()
{
    QFETCH(QString, path);
    QString error;
    QVERIFY(!FileTools::writeFile(path, "lost", &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(error != u"Short write."_s);
    QVERIFY(!FileTools::writeFile(path, "lost"));
    QCOMPARE(contentOf(inDir(u"blocking-file"_s)), QByteArray("kept"));
    QVERIFY(QFileInfo(inDir(u"blocking-folder"_s)).isDir());
}

void TestFileTools::writeFile_diskFullAtByte_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("succeeds");

    QTest::newRow("0-of-1") << 0 << 1 << false;
    QTest::newRow("1-of-2") << 1 << 2 << false;
    QTest::newRow("10-of-11") << 10 << 11 << false;
    QTest::newRow("4096-of-4097") << 4096 << 4097 << false;
    QTest::newRow("16384-of-16385") << 16384 << 16385 << false;
    QTest::newRow("65536-of-1000000") << 65536 << 1'000'000 << false;
    QTest::newRow("999999-of-1000000") << 999'999 << 1'000'000 << false;
    QTest::newRow("0-of-0") << 0 << 0 << true;
    QTest::newRow("1-of-1") << 1 << 1 << true;
    QTest::newRow("4096-of-4096") << 4096 << 4096 << true;
    QTest::newRow("1000000-of-1000000") << 1'000'000 << 1'000'000 << true;
}

void TestFileTools::writeFile_diskFullAtByte()
{
    QFETCH(int, limit);
    QFETCH(int, size);
    QFETCH(bool, succeeds);
    const QString path = inDir(u"on-a-full-disk"_s);
    QString error = untouched;
    bool written = false;
    {
        const FileSizeLimit fullDisk(static_cast<rlim_t>(limit));
        written = FileTools::writeFile(path, QByteArray(size, 'x'), &error);
    }
    QCOMPARE(written, succeeds);
    QCOMPARE(error, succeeds ? untouched : u"Short write."_s);
}

void TestFileTools::writeFile_deviceThatIsAlwaysFull()
{
    QString error;
    QVERIFY(!FileTools::writeFile(u"/dev/full"_s, "x", &error));
    QCOMPARE(error, u"Short write."_s);
}

void TestFileTools::oddNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("onDisk");

    QTest::newRow("blanks") << u" two  blanks .kvt"_s << QByteArray(" two  blanks .kvt");
    QTest::newRow("hash") << u"a#b.kvt"_s << QByteArray("a#b.kvt");
    QTest::newRow("percent") << u"100%.kvt"_s << QByteArray("100%.kvt");
    QTest::newRow("percent-encoded-blank") << u"a%20b.kvt"_s << QByteArray("a%20b.kvt");
    QTest::newRow("question-mark") << u"a?b.kvt"_s << QByteArray("a?b.kvt");
    QTest::newRow("brackets") << u"[a-b].kvt"_s << QByteArray("[a-b].kvt");
    QTest::newRow("accent") << u"caf\u00e9.kvt"_s << QByteArray("caf\xc3\xa9.kvt");
    QTest::newRow("line-feed") << u"a\nb.kvt"_s << QByteArray("a\nb.kvt");
    QTest::newRow("ampersand") << u"R&D.kvt"_s << QByteArray("R&D.kvt");
    QTest::newRow("tag") << u"<b>bold.kvt"_s << QByteArray("<b>bold.kvt");
    QTest::newRow("backslash") << u"a\\b.kvt"_s << QByteArray("a\\b.kvt");
    QTest::newRow("tilde") << u"~a.kvt"_s << QByteArray("~a.kvt");
    QTest::newRow("colon") << u"c:a.kvt"_s << QByteArray("c:a.kvt");
    QTest::newRow("leading-colon") << u":a.kvt"_s << QByteArray(":a.kvt");
    QTest::newRow("outside-the-base-plane") << u"\U0001F697.kvt"_s << QByteArray("\xf0\x9f\x9a\x97.kvt");
}

void TestFileTools::oddNames()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, onDisk);
    const QString path = inDir(name);
    QVERIFY(FileTools::writeFile(path, onDisk));
    const QByteArray native = QFile::encodeName(m_dir.path()) + '/' + onDisk;
    QCOMPARE(::access(native.constData(), R_OK), 0);
    QCOMPARE(FileTools::readFile(path), onDisk);
    QCOMPARE(::unlink(native.constData()), 0);
}

void TestFileTools::nameThatIsNotUtf8IsRefusedNotMistaken()
{
    const QByteArray native = QFile::encodeName(m_dir.path()) + "/bad\xff\xfe.kvt";
    const int descriptor = ::creat(native.constData(), 0600);
    QVERIFY(descriptor >= 0);
    ::close(descriptor);
    QString error;
    const QByteArray bytes = FileTools::readFile(QFile::decodeName(native), &error);
    QCOMPARE(bytes, QByteArray());
    QVERIFY(!error.isEmpty());
    QCOMPARE(::unlink(native.constData()), 0);
}

void TestFileTools::exportToTemporary_isForTheUserAlone()
{
    const QString name = u"private"_s;
    const QString path = QDir::tempPath() + u'/' + name;
    QCOMPARE(FileTools::exportToTemporary("longer than the next", name), path);
    QString error = untouched;
    QCOMPARE(FileTools::exportToTemporary("bytes", name, &error), path);
    QCOMPARE(error, untouched);
    QCOMPARE(contentOf(path), QByteArray("bytes"));
    constexpr auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    QCOMPARE(QFileInfo(path).permissions() & others, QFile::Permissions());
    // One that an earlier version left.
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | others));
    QCOMPARE(FileTools::exportToTemporary("bytes", name), path);
    QCOMPARE(QFileInfo(path).permissions() & others, QFile::Permissions());
}

void TestFileTools::exportToTemporary_emptyDataTruncates()
{
    const QString name = u"emptied"_s;
    QCOMPARE(FileTools::exportToTemporary("bytes", name), QDir::tempPath() + u'/' + name);
    QFile file(QDir::tempPath() + u'/' + name);
    QVERIFY(FileTools::openPrivateFile(file, QIODevice::WriteOnly));
    QCOMPARE(file.size(), 0);
}

// A program that is started with its standard input closed gets descriptor 0 for the first file that it
// opens.
void TestFileTools::worksWithoutStandardInput()
{
    const QString path = makeFile(QDir::tempPath() + u"/first"_s, "longer than the next");
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    const QString second = inDir(u"second"_s);
    const int kept = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    QVERIFY(kept >= 0);
    ::close(STDIN_FILENO);
    const QString written = FileTools::exportToTemporary("bytes", u"first"_s);
    const QByteArray bytes = FileTools::readFile(path);
    const bool isSecondWritten = FileTools::writeFile(second, "more bytes");
    const QByteArray secondBytes = FileTools::readFile(second);
    // Unix refuses it once it is open.
    QFile third(inDir(u"third"_s));
    const bool isLinked = giveSecondName(QFile::encodeName(second), QFile::encodeName(third.fileName()));
    FileTools::openPrivateFile(third, QIODevice::WriteOnly);
    third.close();
    const bool isClosed = ::fcntl(STDIN_FILENO, F_GETFD) < 0;
    ::dup2(kept, STDIN_FILENO);
    ::close(kept);
    QCOMPARE(written, path);
    QCOMPARE(bytes, QByteArray("bytes"));
    QCOMPARE(QFileInfo(path).permissions() & QFile::ReadOther, QFile::Permissions());
    QVERIFY(isSecondWritten);
    QCOMPARE(secondBytes, QByteArray("more bytes"));
    QVERIFY(isLinked);
    QVERIFY(isClosed);
}

// It could not be written, but lies there all the same.
void TestFileTools::exportToTemporary_takesTheSameBytes()
{
    const QString name = u"read-only"_s;
    const QString path = QDir::tempPath() + u'/' + name;
    makeFile(path, "bytes");
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
    const PlainRights rights;
    QString error = untouched;
    QCOMPARE(FileTools::exportToTemporary("bytes", name, &error), path);
    QCOMPARE(error, untouched);
    QCOMPARE(FileTools::exportToTemporary("other", name, &error), QString());
    QCOMPARE(error, qt_error_string(EACCES));
    QCOMPARE(contentOf(path), QByteArray("bytes"));
}

void TestFileTools::exportToTemporary_saysWhyNot()
{
    const QString name = u"neither"_s;
    const QString path = makeFile(QDir::tempPath() + u'/' + name, "bytes");
    const PlainRights rights;
    QVERIFY(QFile::setPermissions(path, {}));
    QString error;
    QCOMPARE(FileTools::exportToTemporary("bytes", name, &error), QString());
    QCOMPARE(error, qt_error_string(EACCES));

    const QString empty = u"empty"_s;
    QVERIFY(QFile::setPermissions(makeFile(QDir::tempPath() + u'/' + empty), QFile::ReadOwner));
    QCOMPARE(FileTools::exportToTemporary("bytes", empty, &error), QString());
    QCOMPARE(error, u"Could not read file."_s);
}

void TestFileTools::exportToTemporary_refuses_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("error");

    const auto make = [this](const QString &name, const QString &kind) {
        const QString path = QDir::tempPath() + u'/' + name;
        QFile::remove(path);
        const QByteArray encoded = QFile::encodeName(path);
        makeFile(inDir(u"kept"_s), "kept");
        if (kind == u"link"_s)
            QFile::link(inDir(u"kept"_s), path);
        else if (kind == u"second-name"_s)
            giveSecondName(QFile::encodeName(inDir(u"kept"_s)), encoded);
        else if (kind == u"pipe"_s)
            ::mkfifo(encoded.constData(), 0600);
        else if (kind == u"folder"_s)
            QDir().mkpath(path);
        return name;
    };
    QTest::newRow("link") << make(u"own-link"_s, u"link"_s) << u"Too many levels of symbolic links"_s;
#ifndef KVTEDITOR_PORTABLE_FILES
    QTest::newRow("second-name") << make(u"own-second"_s, u"second-name"_s) << u"Too many links"_s;
    QTest::newRow("pipe") << make(u"own-pipe"_s, u"pipe"_s) << u"No such device or address"_s;
#endif
    QTest::newRow("folder") << make(u"own-folder"_s, u"folder"_s) << u"Is a directory"_s;
}

void TestFileTools::exportToTemporary_refuses()
{
    QFETCH(QString, name);
    QFETCH(QString, error);
    QString said;
    QCOMPARE(FileTools::exportToTemporary("kept", name, &said), QString());
    QCOMPARE(said, error);
    QCOMPARE(FileTools::exportToTemporary("kept", name), QString());
    QCOMPARE(contentOf(inDir(u"kept"_s)), QByteArray("kept"));
}

void TestFileTools::documentsDir_isInHomeAndNotCreated()
{
    QCOMPARE(FileTools::documentsDir(), TestEnvironment::home() + u"/Documents"_s);
    QVERIFY(!QFileInfo::exists(TestEnvironment::documents()));
}

void TestFileTools::documentsDir_followsUserDirs()
{
    const QString settings = qEnvironmentVariable("XDG_CONFIG_HOME") + u"/user-dirs.dirs"_s;
    makeFile(settings, "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n");
    const QString folder = FileTools::documentsDir();
    QVERIFY(QFile::remove(settings));
    QCOMPARE(folder, TestEnvironment::home() + u"/Papers"_s);
}

void TestFileTools::exportToDocuments_createsFolderAndReturnsPath()
{
    QString error = untouched;
    const QString path = FileTools::exportToDocuments("result", u"truck.bin"_s, &error);
    QCOMPARE(path, TestEnvironment::home() + u"/Documents/truck.bin"_s);
    QCOMPARE(contentOf(path), QByteArray("result"));
    QCOMPARE(error, untouched);
}

void TestFileTools::exportToDocuments_replacesEarlierExport()
{
    const QString first = FileTools::exportToDocuments("a long first export", u"same.bin"_s);
    const QString second = FileTools::exportToDocuments("second", u"same.bin"_s);
    QCOMPARE(second, first);
    QCOMPARE(contentOf(second), QByteArray("second"));
    QCOMPARE(QDir(TestEnvironment::documents()).entryList(QDir::Files), QStringList{u"same.bin"_s});
}

void TestFileTools::exportToDocuments_fails_data()
{
    QTest::addColumn<bool>("documentsIsFile");
    QTest::addColumn<QString>("name");

    QTest::newRow("documents-is-a-file") << true << u"x.bin"_s;
    QTest::newRow("folder-of-that-name") << false << u"taken"_s;
    QTest::newRow("empty-name") << false << QString();
}

void TestFileTools::exportToDocuments_fails()
{
    QFETCH(bool, documentsIsFile);
    QFETCH(QString, name);
    if (documentsIsFile) {
        makeFile(TestEnvironment::documents(), {});
    } else {
        QVERIFY(QDir().mkpath(TestEnvironment::documents() + u"/taken"_s));
    }
    QString error;
    QCOMPARE(FileTools::exportToDocuments("lost", name, &error), QString());
    QVERIFY(!error.isEmpty());
    QCOMPARE(FileTools::exportToDocuments("lost", name), QString());
}

void TestFileTools::revealInExplorer_opensTheFolder_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("folder");

    QTest::newRow("plain") << u"/some/folder/file.bin"_s << u"/some/folder"_s;
    QTest::newRow("in-root") << u"/file.bin"_s << u"/"_s;
    QTest::newRow("hash-and-percent") << u"/a#b/c%20d/file.bin"_s << u"/a#b/c%20d"_s;
    QTest::newRow("question-mark") << u"/a?b/file.bin"_s << u"/a?b"_s;
    QTest::newRow("accent-and-blank") << u"/caf\u00e9 x/file.bin"_s << u"/caf\u00e9 x"_s;
    QTest::newRow("relative") << u"sub/file.bin"_s << u"(working)/sub"_s;
    QTest::newRow("bare-name") << u"file.bin"_s << u"(working)"_s;
}

void TestFileTools::revealInExplorer_opensTheFolder()
{
    QFETCH(QString, path);
    QFETCH(QString, folder);
    UrlRecorder desktop;
    FileTools::revealInExplorer(path);
    QCOMPARE(desktop.opened.size(), 1);
    QVERIFY(desktop.opened.first().isLocalFile());
    QCOMPARE(desktop.opened.first().toLocalFile(), folder.replace(u"(working)"_s, QDir::currentPath()));
}

KVTEDITOR_TEST_MAIN(TestFileTools)
#include "tst_FileTools.moc"
