#include "app/AppState.h"
#include "core/FileTools.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>

#include <atomic>
#include <dirent.h>
#include <dlfcn.h>
#include <functional>
#include <memory>
#include <new>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int bigTreeFiles = 20'000;
// One in a hundred of the big tree's files.
const QString rareName = u"00.kvt"_s;
// Option of this program: starts a scan below the folder that follows, and exits at once.
constexpr auto scanAndEnd = "--scan-and-end"_L1;
// While set, reading a folder whose path ends like this fails for lack of memory.
std::atomic<const char *> folderWithoutMemory = nullptr;
std::atomic<DIR *> streamWithoutMemory = nullptr;

// Counted down by each folder that is opened; the one that makes it 0 is held up until it may go on.
std::atomic<int> opensUntilHeld = 0;
QSemaphore held;
QSemaphore goOn;

QStringList namesOf(const QVariantList &hits)
{
    QStringList names;
    for (const QVariant &hit : hits) {
        names.append(hit.toMap().value(u"name"_s).toString());
    }
    return names;
}

QString foundText(qsizetype count)
{
    return u"Found %1 file(s)."_s.arg(count);
}

QString keptText(qsizetype count)
{
    return u"Search cancelled. %1 file(s) kept."_s.arg(count);
}

/// Runs this program again and waits for its end. Does not use QProcess, which the thread sanitizer does not
/// survive.
int outcomeOf(const QByteArrayList &arguments)
{
    QByteArray program = QFile::encodeName(QCoreApplication::applicationFilePath());
    QByteArrayList kept = arguments;
    std::vector<char *> argv{program.data()};
    for (QByteArray &argument : kept) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    pid_t child = -1;
    int outcome = -1;
    if (::posix_spawn(&child, program.constData(), nullptr, nullptr, argv.data(), environ) == 0)
        ::waitpid(child, &outcome, 0);
    return outcome;
}

} // namespace

/// Takes the place of the C library's.
extern "C" DIR *opendir(const char *path)
{
    static auto *const next = reinterpret_cast<decltype(::opendir) *>(dlsym(RTLD_NEXT, "opendir"));
    if (opensUntilHeld > 0 && --opensUntilHeld == 0) {
        held.release();
        goOn.acquire();
    }
    DIR *const folder = next(path);
    const char *const ending = folderWithoutMemory;
    if (ending && QByteArrayView(path).endsWith(ending))
        streamWithoutMemory = folder;
    return folder;
}

/// Takes the place of the C library's. Not the one that opens throws: compilers know that it never does.
extern "C" dirent *readdir(DIR *folder)
{
    static auto *const next = reinterpret_cast<decltype(::readdir) *>(dlsym(RTLD_NEXT, "readdir"));
    if (folder == streamWithoutMemory) {
        streamWithoutMemory = nullptr;
        throw std::bad_alloc();
    }
    return next(folder);
}

class TestAppStateSearch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void startsIdle();
    void emptyRoot();
    void findsFiles();
    void filtersArePassedOn_data();
    void filtersArePassedOn();
    void recursionIsTheArgument();
    void rootThatIsNoFolder_data();
    void rootThatIsNoFolder();
    void rootIsShownAsItIs();
    void earlierHitsStayWhileScanning();
    void secondScanIsRefused();
    void emptyRootWhileScanning();
    void scanAgainAfterCompletion();
    void aroundTheLimit();
    void completionIsOnePiece();
    void announcements();

    void cancelWhenIdle();
    void cancelKeepsWhatWasFound();
    void cancelBetweenTwoFolders();
    void cancelTwice();
    void scanAgainAtOnceAfterCancel();
    void clearWhenIdle();
    void clearWhileScanning();
    void clearThenScanAtOnce();
    void cancelledScanLeavesNoTrace();
    void exceptionEndsTheScanOnly();

    void destroyedWhileScanning();
    void destroyedAfterCancel();
    void destroyedWithCompletionPosted();
    void programEndsWhileScanning();

    void tellsFoldersFromFiles_data();
    void tellsFoldersFromFiles();

private:
    QString inDir(const QString &name) const { return m_dir->filePath(name); }
    void scanBigTree() { m_state->scanFolder(m_bigTree->path(), true, rareName, {}, {}, {}); }
    void scanSmallTree();
    /// Cancels scans right after their start until one was not over before. Leaves its completion to come.
    bool endsCancelled(const std::function<void()> &stop);

    std::unique_ptr<QTemporaryDir> m_bigTree;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<AppState> m_state;
};

void TestAppStateSearch::initTestCase()
{
    m_bigTree = std::make_unique<QTemporaryDir>();
    for (int folder = 0; folder < 100; ++folder) {
        const QString path = m_bigTree->filePath(u"f%1"_s.arg(folder));
        QVERIFY(QDir().mkdir(path));
        for (int index = 0; index < bigTreeFiles / 100; ++index) {
            makeFile(path + u"/tune_%1.kvt"_s.arg(folder * 1000 + index, 6, 10, QChar(u'0')));
        }
    }
}

void TestAppStateSearch::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_state = std::make_unique<AppState>();
}

void TestAppStateSearch::cleanup()
{
    folderWithoutMemory = nullptr;
    opensUntilHeld = 0;
    m_state.reset();
    m_dir.reset();
}

void TestAppStateSearch::scanSmallTree()
{
    makeFile(inDir(u"a.kvt"_s));
    makeFile(inDir(u"b.ctz"_s));
    m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->searchHits().size(), 2);
}

bool TestAppStateSearch::endsCancelled(const std::function<void()> &stop)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        scanBigTree();
        stop();
        if (!waitUntil([this] { return !m_state->searchBusy(); }))
            return false;
        if (m_state->status() == keptText(m_state->searchHits().size()))
            return m_state->statusOK() == 0;
    }
    return false;
}

void TestAppStateSearch::startsIdle()
{
    QVERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->searchHits(), QVariantList());
    QCOMPARE(m_state->searchRecursive(), u"1"_s);
}

void TestAppStateSearch::emptyRoot()
{
    QSignalSpy changes(m_state.get(), &AppState::searchChanged);
    m_state->scanFolder({}, true, {}, {}, {}, {});
    QCOMPARE(m_state->status(), u"Pick a search folder first."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QVERIFY(!m_state->searchBusy());
    QCOMPARE(changes.count(), 0);
}

void TestAppStateSearch::findsFiles()
{
    for (const QString &name : {u"a.KVT"_s, u"b.ctz"_s, u"c.CTZ"_s, u"d.bin"_s}) {
        makeFile(inDir(name));
    }
    QVERIFY(QFile::link(inDir(u"a.KVT"_s), inDir(u"link.kvt"_s)));
    m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
    QVERIFY(m_state->searchBusy());
    QCOMPARE(m_state->status(), u"Searching %1 ..."_s.arg(m_dir->path()));
    QCOMPARE(m_state->statusOK(), -1);
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->status(), foundText(3));
    QCOMPARE(m_state->statusOK(), 1);
    QStringList names = namesOf(m_state->searchHits());
    names.sort();
    QCOMPARE(names, QStringList({u"a.KVT"_s, u"b.ctz"_s, u"c.CTZ"_s}));
    const QVariantList expected = FileTools::scanCalFolder(m_dir->path(), true, {}, {}, {}, {}, 0, nullptr);
    QCOMPARE(m_state->searchHits(), expected);
}

void TestAppStateSearch::filtersArePassedOn_data()
{
    QTest::addColumn<QStringList>("filters");
    QTest::addColumn<QString>("found");

    QTest::newRow("name") << QStringList{u"NAMED"_s, {}, {}, {}} << u"named.kvt"_s;
    QTest::newRow("os") << QStringList{{}, u"1265"_s, {}, {}} << u"e38_12654321.kvt"_s;
    QTest::newRow("make") << QStringList{{}, {}, u"chevy"_s, {}} << u"truck.kvt"_s;
    QTest::newRow("year") << QStringList{{}, {}, {}, u"2014"_s} << u"y2014.kvt"_s;
}

void TestAppStateSearch::filtersArePassedOn()
{
    QFETCH(QStringList, filters);
    QFETCH(QString, found);
    QVERIFY(QDir().mkpath(inDir(u"root/Chevy"_s)));
    for (const QString &name :
         {u"root/named.kvt"_s, u"root/e38_12654321.kvt"_s, u"root/Chevy/truck.kvt"_s, u"root/y2014.kvt"_s}) {
        makeFile(inDir(name));
    }
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_dir->path()));
    m_state->scanFolder(u"root"_s, true, filters.at(0), filters.at(1), filters.at(2), filters.at(3));
    const bool ended = waitUntil([this] { return !m_state->searchBusy(); });
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(ended);
    QCOMPARE(namesOf(m_state->searchHits()), QStringList{found});
}

void TestAppStateSearch::recursionIsTheArgument()
{
    QVERIFY(QDir().mkdir(inDir(u"sub"_s)));
    makeFile(inDir(u"a.kvt"_s));
    makeFile(inDir(u"sub/b.kvt"_s));
    for (const bool recursive : {false, true}) {
        m_state->setSearchRecursive(recursive ? u"0"_s : u"1"_s);
        m_state->scanFolder(m_dir->path(), recursive, {}, {}, {}, {});
        WAIT_VERIFY(!m_state->searchBusy());
        QCOMPARE(m_state->searchHits().size(), recursive ? 2 : 1);
    }
}

void TestAppStateSearch::rootThatIsNoFolder_data()
{
    QTest::addColumn<QString>("root");

    QTest::newRow("missing") << u"missing"_s;
    QTest::newRow("file") << u"a.kvt"_s;
    QTest::newRow("empty-folder") << u"empty"_s;
}

void TestAppStateSearch::rootThatIsNoFolder()
{
    QFETCH(QString, root);
    scanSmallTree();
    QVERIFY(QDir().mkdir(inDir(u"empty"_s)));
    m_state->scanFolder(inDir(root), true, {}, {}, {}, {});
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->status(), foundText(0));
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(m_state->searchHits(), QVariantList());
}

void TestAppStateSearch::rootIsShownAsItIs()
{
    const QString root = u" %1 %2 <b>R&D</b>\n%L3 "_s;
    m_state->scanFolder(root, true, {}, {}, {}, {});
    QCOMPARE(m_state->status(), u"Searching "_s + root + u" ..."_s);
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->status(), foundText(0));
}

void TestAppStateSearch::earlierHitsStayWhileScanning()
{
    scanSmallTree();
    const QVariantList before = m_state->searchHits();
    scanBigTree();
    QVERIFY(m_state->searchBusy());
    QCOMPARE(m_state->searchHits(), before);
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->searchHits().size(), 200);
    QCOMPARE(m_state->status(), foundText(200));
}

void TestAppStateSearch::secondScanIsRefused()
{
    makeFile(inDir(u"a.kvt"_s));
    QSignalSpy changes(m_state.get(), &AppState::searchChanged);
    QStringList statuses;
    connect(m_state.get(), &AppState::statusChanged, this, [&] { statuses.append(m_state->status()); });
    scanBigTree();
    m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
    QCOMPARE(m_state->status(), u"A search is already running."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QVERIFY(m_state->searchBusy());
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->searchHits().size(), 200);
    QCOMPARE(statuses,
             QStringList({u"Searching %1 ..."_s.arg(m_bigTree->path()), u"A search is already running."_s,
                          foundText(200)}));
    QCOMPARE(changes.count(), 2);
}

void TestAppStateSearch::emptyRootWhileScanning()
{
    scanBigTree();
    m_state->scanFolder({}, true, {}, {}, {}, {});
    QCOMPARE(m_state->status(), u"A search is already running."_s);
    WAIT_VERIFY(!m_state->searchBusy());
}

void TestAppStateSearch::scanAgainAfterCompletion()
{
    scanSmallTree();
    for (int round = 0; round < 20; ++round) {
        m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
        QVERIFY(m_state->searchBusy());
        WAIT_VERIFY(!m_state->searchBusy());
        QCOMPARE(m_state->status(), foundText(2));
    }
}

void TestAppStateSearch::aroundTheLimit()
{
    const QString limited = u"Found 5000 file(s) (limit reached, narrow the filters)."_s;
    const QList<std::pair<int, QString>> steps{
        {4999, foundText(4999)}, {5000, limited}, {5001, limited}, {6000, limited}};
    int made = 0;
    for (const auto &[files, status] : steps) {
        for (; made < files; ++made) {
            makeFile(inDir(u"%1.kvt"_s.arg(made)));
        }
        m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
        WAIT_VERIFY(!m_state->searchBusy());
        QCOMPARE(m_state->searchHits().size(), qMin(files, 5000));
        QCOMPARE(m_state->status(), status);
        QCOMPARE(m_state->statusOK(), 1);
    }
}

void TestAppStateSearch::completionIsOnePiece()
{
    scanSmallTree();
    QList<bool> busy;
    QList<qsizetype> hits;
    QStringList statuses;
    connect(m_state.get(), &AppState::searchChanged, this, [&] {
        busy.append(m_state->searchBusy());
        hits.append(m_state->searchHits().size());
        statuses.append(m_state->status());
    });
    scanBigTree();
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(busy, QList<bool>({true, false}));
    QCOMPARE(hits, QList<qsizetype>({2, 200}));
    QCOMPARE(statuses, QStringList({foundText(2), u"Searching %1 ..."_s.arg(m_bigTree->path())}));
}

void TestAppStateSearch::announcements()
{
    QSignalSpy changes(m_state.get(), &AppState::searchChanged);
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    scanSmallTree();
    QCOMPARE(changes.count(), 2);
    QCOMPARE(statuses.count(), 2);
    m_state->cancelScan();
    QCOMPARE(changes.count(), 2);
    QCOMPARE(statuses.count(), 2);
    m_state->clearSearch();
    QCOMPARE(changes.count(), 3);
    QCOMPARE(statuses.count(), 2);
    QCOMPARE(busy.count(), 0);
}

void TestAppStateSearch::cancelWhenIdle()
{
    m_state->cancelScan();
    QCOMPARE(m_state->status(), QString());
    scanSmallTree();
    m_state->cancelScan();
    QCOMPARE(m_state->status(), foundText(2));
    QCOMPARE(m_state->searchHits().size(), 2);
    m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->status(), foundText(2));
}

void TestAppStateSearch::cancelKeepsWhatWasFound()
{
    const QVariantList all =
        FileTools::scanCalFolder(m_bigTree->path(), true, rareName, {}, {}, {}, 0, nullptr);
    QVERIFY(endsCancelled([this] {
        m_state->cancelScan();
        QCOMPARE(m_state->status(), u"Cancelling search ..."_s);
        QCOMPARE(m_state->statusOK(), -1);
        QVERIFY(m_state->searchBusy());
    }));
    const QVariantList kept = m_state->searchHits();
    QCOMPARE(kept, all.mid(0, kept.size()));
}

void TestAppStateSearch::cancelBetweenTwoFolders()
{
    for (const QString &name : {u"one"_s, u"two"_s}) {
        QVERIFY(QDir().mkpath(inDir(name)));
        makeFile(inDir(name + u"/a.kvt"_s));
    }
    opensUntilHeld = 3;
    m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
    {
        const auto goesOn = qScopeGuard([] { goOn.release(); });
        QVERIFY(held.tryAcquire(1, 60'000));
        m_state->cancelScan();
    }
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->status(), keptText(1));
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(m_state->searchHits().size(), 1);
}

void TestAppStateSearch::cancelTwice()
{
    QSignalSpy changes(m_state.get(), &AppState::searchChanged);
    scanBigTree();
    m_state->cancelScan();
    m_state->cancelScan();
    QCOMPARE(m_state->status(), u"Cancelling search ..."_s);
    QVERIFY(m_state->searchBusy());
    WAIT_VERIFY(!m_state->searchBusy());
    m_state->cancelScan();
    const qsizetype kept = m_state->searchHits().size();
    // It may have been over before it was cancelled.
    const bool cancelled = m_state->statusOK() == 0;
    QCOMPARE(m_state->status(), cancelled ? keptText(kept) : foundText(200));
    QCOMPARE(changes.count(), 2);
    scanSmallTree();
    QCOMPARE(m_state->status(), foundText(2));
}

void TestAppStateSearch::scanAgainAtOnceAfterCancel()
{
    scanBigTree();
    m_state->cancelScan();
    m_state->scanFolder(m_bigTree->path(), true, rareName, {}, {}, {});
    QCOMPARE(m_state->status(), u"A search is already running."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QVERIFY(m_state->searchBusy());
    WAIT_VERIFY(!m_state->searchBusy());
    scanBigTree();
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->status(), foundText(200));
}

void TestAppStateSearch::clearWhenIdle()
{
    scanSmallTree();
    QSignalSpy changes(m_state.get(), &AppState::searchChanged);
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    m_state->clearSearch();
    QCOMPARE(m_state->searchHits(), QVariantList());
    QVERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->status(), foundText(2));
    QCOMPARE(changes.count(), 1);
    QCOMPARE(statuses.count(), 0);
    m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->status(), foundText(2));
}

void TestAppStateSearch::clearWhileScanning()
{
    scanSmallTree();
    QList<std::pair<bool, qsizetype>> seen;
    QVERIFY(endsCancelled([&] {
        m_state->disconnect(this);
        seen.clear();
        const auto note = [&] { seen.append({m_state->searchBusy(), m_state->searchHits().size()}); };
        connect(m_state.get(), &AppState::searchChanged, this, note);
        m_state->clearSearch();
        QCOMPARE(m_state->searchHits(), QVariantList());
        QVERIFY(m_state->searchBusy());
        QCOMPARE(m_state->status(), u"Searching %1 ..."_s.arg(m_bigTree->path()));
        QCOMPARE(m_state->statusOK(), -1);
    }));
    const QList<std::pair<bool, qsizetype>> expected{{true, 0}, {false, m_state->searchHits().size()}};
    QCOMPARE(seen, expected);
    m_state->disconnect(this);
}

void TestAppStateSearch::clearThenScanAtOnce()
{
    scanBigTree();
    m_state->clearSearch();
    scanBigTree();
    QCOMPARE(m_state->status(), u"A search is already running."_s);
    WAIT_VERIFY(!m_state->searchBusy());
    scanBigTree();
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->searchHits().size(), 200);
}

void TestAppStateSearch::cancelledScanLeavesNoTrace()
{
    QVERIFY(endsCancelled([this] { m_state->cancelScan(); }));
    scanBigTree();
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->status(), foundText(200));
    QCOMPARE(m_state->searchHits().size(), 200);
}

void TestAppStateSearch::exceptionEndsTheScanOnly()
{
    scanSmallTree();
    QCOMPARE(m_state->searchHits().size(), 2);
    QVERIFY(QDir().mkpath(inDir(u"last/no memory"_s)));
    folderWithoutMemory = "/no memory/";
    m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->status(), foundText(0));
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(m_state->searchHits(), QVariantList());

    folderWithoutMemory = nullptr;
    m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->searchHits().size(), 2);
}

void TestAppStateSearch::destroyedWhileScanning()
{
    for (int round = 0; round < 50; ++round) {
        AppState state;
        QSignalSpy changes(&state, &AppState::searchChanged);
        state.scanFolder(m_bigTree->path(), true, {}, {}, {}, {});
        QCOMPARE(changes.count(), 1);
    }
    scanBigTree();
    WAIT_VERIFY(!m_state->searchBusy());
    QCOMPARE(m_state->searchHits().size(), 200);
}

void TestAppStateSearch::destroyedAfterCancel()
{
    for (int round = 0; round < 50; ++round) {
        AppState state;
        state.scanFolder(m_bigTree->path(), true, rareName, {}, {}, {});
        if (round % 2 == 0)
            state.cancelScan();
        else
            state.clearSearch();
        QVERIFY(state.searchBusy());
    }
}

void TestAppStateSearch::destroyedWithCompletionPosted()
{
    scanSmallTree();
    for (int round = 0; round < 50; ++round) {
        AppState state;
        state.scanFolder(m_dir->path(), true, {}, {}, {}, {});
        // The same walk ten times over, in which the thread's one is likely to come to its end.
        for (int walk = 0; walk < 10; ++walk) {
            QCOMPARE(FileTools::scanCalFolder(m_dir->path(), true, {}, {}, {}, {}, 0, nullptr).size(), 2);
        }
        QVERIFY(state.searchBusy());
    }
    QCoreApplication::processEvents();
    QCOMPARE(m_state->searchHits().size(), 2);
}

void TestAppStateSearch::programEndsWhileScanning()
{
    const QByteArray root = QFile::encodeName(m_bigTree->path());
    for (int round = 0; round < 10; ++round) {
        const int outcome = outcomeOf({scanAndEnd.data(), root});
        QVERIFY(WIFEXITED(outcome));
        QCOMPARE(WEXITSTATUS(outcome), 0);
    }
}

void TestAppStateSearch::tellsFoldersFromFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("expected");

    QTest::newRow("folder") << u"tree"_s << true;
    QTest::newRow("folder-trailing-slash") << u"tree/"_s << true;
    QTest::newRow("folder-named-like-a-file") << u"odd 100%.kvt"_s << true;
    QTest::newRow("link-to-folder") << u"link to tree"_s << true;
    QTest::newRow("file") << u"truck.kvt"_s << false;
    QTest::newRow("link-to-nothing") << u"dangling"_s << false;
    QTest::newRow("missing") << u"nowhere"_s << false;
}

void TestAppStateSearch::tellsFoldersFromFiles()
{
    QFETCH(const QString, name);
    QVERIFY(QDir().mkpath(inDir(u"tree"_s)));
    QVERIFY(QDir().mkpath(inDir(u"odd 100%.kvt"_s)));
    QVERIFY(QFile::link(inDir(u"tree"_s), inDir(u"link to tree"_s)));
    QVERIFY(QFile::link(inDir(u"gone"_s), inDir(u"dangling"_s)));
    makeFile(inDir(u"truck.kvt"_s));
    QTEST(m_state->isFolder(inDir(name)), "expected");
    QVERIFY(!m_state->isFolder({}));
    QVERIFY(m_state->status().isEmpty());
}

int main(int argc, char **argv)
{
    if (argc == 3 && QLatin1StringView(argv[1]) == scanAndEnd) {
        const TestEnvironment environment;
        const QApplication application(argc, argv);
        AppState state;
        state.scanFolder(QFile::decodeName(argv[2]), true, {}, {}, {}, {});
        return state.searchBusy() ? 0 : 1;
    }
    return runTestProgram<TestAppStateSearch>(argc, argv);
}
#include "tst_AppStateSearch.moc"
