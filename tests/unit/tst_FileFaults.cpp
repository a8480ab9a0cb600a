#include "EndpointTest.h"
#include "core/FileTools.h"
#include "support/FileSizeLimit.h"
#include "support/FormData.h"
#include "support/PlainRights.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

bool makeSparse(const QString &path)
{
    return QFile::resize(makeFile(path), 2'147'483'648);
}

/// The actions to try with every fault: each reads or writes in a different way. The others are tried with
/// the faults that represent an outcome.
bool standsForOthers(const QByteArray &name)
{
    const QByteArrayList names{"openKvt",     "cm2450_import", "vbf",       "swap-donor-apply", "patched-bin",
                               "sorted-file", "saveKvt",       "convertOp", "stockOpen",        "sortCopy"};
    return isExhaustive() || names.contains(name);
}

/// What is in the place of a file to read.
struct Obstacle
{
    const char *name;
    bool (*make)(const QString &path);
    /// Reading it is not an error; it yields nothing.
    bool isEmptyFile = false;
};

constexpr Obstacle obstacles[] = {
    {"vanished", [](const QString &) { return true; }},
    {"folder", [](const QString &path) { return QDir().mkdir(path); }},
    {"no-permission",
     [](const QString &path) { return QFile::setPermissions(makeFile(path, "secret"), {}); }},
    {"no-bytes", [](const QString &path) { return !makeFile(path).isEmpty(); }, true},
    {"pipe", [](const QString &path) { return ::mkfifo(QFile::encodeName(path).constData(), 0600) == 0; }},
    {"endless-device", [](const QString &path) { return QFile::link(u"/dev/zero"_s, path); }},
    {"empty-device", [](const QString &path) { return QFile::link(u"/dev/null"_s, path); }},
    {"link-to-itself", [](const QString &path) { return QFile::link(path, path); }},
    {"past-2-gib", makeSparse},
};

enum class Refusal
{
    /// The system's error text, or the fixed text for an empty file.
    SystemText,
    /// The fixed text in any case.
    FixedText,
    /// No text: the file is sent empty, for the service to refuse.
    SentEmpty
};

/// An action that reads a file which the user chose.
struct Reading
{
    const char *name;
    /// While the file is still readable; null when choosing and using are one step.
    void (*choose)(AppState &state, const QString &path);
    void (*use)(AppState &state, const QString &path, const QString &other);
    Refusal refusal = Refusal::SystemText;
    /// The fixed text, or the form part that is sent empty.
    const char *text = "";
    /// Whether the view changes even on failure.
    bool leadsToMain = false;
};

constexpr Reading readings[] = {
    {"openKvt", nullptr, [](AppState &state, const QString &path, const QString &) { state.openKvt(path); },
     Refusal::SystemText, "Could not read file."},
    {"openSearchHit",
     [](AppState &state, const QString &path) {
         state.scanFolder(QFileInfo(path).path(), false, u"chosen"_s, {}, {}, {});
     },
     [](AppState &state, const QString &, const QString &) { state.openSearchHit(0); }, Refusal::SystemText,
     "Could not read file.", true},
    {"kvt2bin", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.convertOp(u"kvt2bin"_s, path); }},
    {"cm2450_kvt2bin", nullptr,
     [](AppState &state, const QString &path, const QString &) {
         state.convertOp(u"cm2450_kvt2bin"_s, path);
     }},
    {"ctz2bin", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.convertOp(u"ctz2bin"_s, path); }},
    {"ctz2kvt", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.convertOp(u"ctz2kvt"_s, path); }},
    {"kvt2efi", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.convertOp(u"kvt2efi"_s, path); }},
    {"bin2kvt", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.convertOp(u"bin2kvt"_s, path); }},
    {"cm2450_import", nullptr,
     [](AppState &state, const QString &path, const QString &other) {
         state.convertOp(u"cm2450_import"_s, path, other);
     }},
    {"cm2450_import-export", nullptr,
     [](AppState &state, const QString &path, const QString &other) {
         state.convertOp(u"cm2450_import"_s, other, path);
     },
     Refusal::SentEmpty, "export"},
    {"base-of-imports", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.pickBaseKvt(path); }},
    {"xcal", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.toolConvert(u"xcal"_s, path); },
     Refusal::FixedText, "No input file."},
    {"phf", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.toolConvert(u"phf"_s, path); },
     Refusal::FixedText, "No input file."},
    {"vbf", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.toolConvert(u"vbf"_s, path); },
     Refusal::FixedText, "No input file."},
    {"ecfg", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.toolConvert(u"ecfg"_s, path); },
     Refusal::FixedText, "No input file."},
    {"swap-base-preview",
     [](AppState &state, const QString &path) { state.pickSegmentFile(u"base"_s, path); },
     [](AppState &state, const QString &, const QString &) { state.previewSegments(); }, Refusal::FixedText,
     "No input file for worker request."},
    {"swap-base-apply", [](AppState &state, const QString &path) { state.pickSegmentFile(u"base"_s, path); },
     [](AppState &state, const QString &, const QString &) { state.applySegments(); }, Refusal::FixedText,
     "No input file."},
    {"swap-donor-preview",
     [](AppState &state, const QString &path) { state.pickSegmentFile(u"donor"_s, path); },
     [](AppState &state, const QString &, const QString &) { state.previewSegments(); }, Refusal::SentEmpty,
     "donor"},
    {"swap-donor-apply",
     [](AppState &state, const QString &path) { state.pickSegmentFile(u"donor"_s, path); },
     [](AppState &state, const QString &, const QString &) { state.applySegments(); }, Refusal::SentEmpty,
     "donor"},
    {"patched-bin", nullptr,
     [](AppState &state, const QString &path, const QString &) { state.applyPatchToBin(0, path); }},
    {"sorted-file", nullptr,
     [](AppState &state, const QString &path, const QString &) {
         state.sortCopy({path}, QFileInfo(path).path() + u"/sorted"_s, {});
     },
     Refusal::FixedText, "Copied 0 of 1 file(s)."},
};

constexpr qint64 quarterOfGibibyte = 268'435'456;
const QByteArray lastBytes = "the last bytes";

/// Zeros up to the last bytes, which take no room on the disk.
bool makeLarge(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.seek(quarterOfGibibyte - lastBytes.size())
        && file.write(lastBytes) == lastBytes.size();
}

/// Something that reads a file of a quarter of a gibibyte, and sends it along.
struct LargeReading
{
    const char *name;
    void (*start)(AppState &state, const QString &path, const QString &other);
    const char *status;
    /// In how many of the form's parts it goes out; without any there is no request.
    int parts = 1;
    bool opens = false;
    /// As text in an object, and not in a form.
    bool isText = false;
};

constexpr LargeReading largeReadings[] = {
    {"openKvt", [](AppState &state, const QString &path, const QString &) { state.openKvt(path); },
     "Opened chosen.kvt \u2014 268435456 bytes.", 1, true},
    {"openSearchHit",
     [](AppState &state, const QString &path, const QString &) {
         state.scanFolder(QFileInfo(path).path(), false, QFileInfo(path).fileName(), {}, {}, {});
         WAIT_VERIFY(!state.searchBusy());
         state.openSearchHit(0);
     },
     "Opened chosen.kvt \u2014 268435456 bytes.", 1, true},
    {"kvt2bin",
     [](AppState &state, const QString &path, const QString &) { state.convertOp(u"kvt2bin"_s, path); },
     R"({"status":"ok","vin":"BIGVIN"})"},
    {"cm2450_import",
     [](AppState &state, const QString &path, const QString &) {
         state.convertOp(u"cm2450_import"_s, path, path);
     },
     R"({"status":"ok","vin":"BIGVIN"})", 3},
    {"bin2kvt-base",
     [](AppState &state, const QString &path, const QString &other) {
         state.pickBaseKvt(path);
         state.convertOp(u"bin2kvt"_s, other);
     },
     R"({"status":"ok","vin":"BIGVIN"})"},
    {"xcal",
     [](AppState &state, const QString &path, const QString &) { state.toolConvert(u"xcal"_s, path); },
     R"({"status":"ok","vin":"BIGVIN"})"},
    {"swap-preview",
     [](AppState &state, const QString &path, const QString &) {
         state.pickSegmentFile(u"base"_s, path);
         state.previewSegments();
     },
     "0 swap candidate(s)."},
    {"swap-apply",
     [](AppState &state, const QString &path, const QString &) {
         state.pickSegmentFile(u"base"_s, path);
         state.pickSegmentFile(u"donor"_s, path);
         state.applySegments();
     },
     R"({"status":"ok","vin":"BIGVIN"})", 2},
    {"patched-bin",
     [](AppState &state, const QString &path, const QString &) { state.applyPatchToBin(0, path); },
     "Patch processed: ", 1, false, true},
    {"sorted-file",
     [](AppState &state, const QString &path, const QString &) {
         state.sortCopy({path}, QFileInfo(path).path() + u"/sorted"_s, u"make"_s);
     },
     "Copied 1 of 1 file(s).", 0},
};

/// The file as encoded in the JSON object.
QByteArray largeFileInText(const QByteArray &body)
{
    const QByteArray member = "\"file_data\":\"";
    const qsizetype begin = body.indexOf(member) + member.size();
    return QByteArray::fromBase64(
        QByteArray::fromRawData(body.constData() + begin, body.indexOf('"', begin) - begin));
}

/// What keeps a file from being written, and the status text then; empty for the system's error text.
struct Hindrance
{
    const char *name;
    /// `path` is where the file would go.
    bool (*make)(const QString &path);
    const char *text;
};

bool prepareFolder(const QString &path)
{
    return QDir().mkpath(QFileInfo(path).path());
}

/// Removes the folder, so that something else can take its place.
bool takeFolderAway(const QString &path)
{
    return prepareFolder(path) && QDir().rmdir(QFileInfo(path).path());
}

constexpr Hindrance hindrances[] = {
    {"read-only-folder",
     [](const QString &path) {
         return prepareFolder(path)
             && QFile::setPermissions(QFileInfo(path).path(), QFile::ReadOwner | QFile::ExeOwner);
     },
     ""},
    {"read-only-file",
     [](const QString &path) { return QFile::setPermissions(makeFile(path, "kept"), QFile::ReadOwner); }, ""},
    {"folder-of-that-name", [](const QString &path) { return QDir().mkpath(path); }, ""},
    {"file-where-a-folder-should-be",
     [](const QString &path) {
         return takeFolderAway(path) && !makeFile(QFileInfo(path).path(), "in the way").isEmpty();
     },
     ""},
    {"link-to-nothing-where-a-folder-should-be",
     [](const QString &path) {
         const QString folder = QFileInfo(path).path();
         return takeFolderAway(path) && QFile::link(folder + u"-gone"_s, folder);
     },
     ""},
    {"pipe",
     [](const QString &path) {
         return prepareFolder(path) && ::mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
     },
     ""},
    {"always-full-device",
     [](const QString &path) { return prepareFolder(path) && QFile::link(u"/dev/full"_s, path); },
     "Short write."},
};

/// After how many bytes the disk is full, of the 8 that come.
constexpr int fullAt[] = {0, 1, 4, 7};
const QByteArray eightBytes = "8 bytes.";

/// Something that writes a file.
struct Writing
{
    const char *name;
    void (*start)(AppState &state, const QString &folder);
    /// Below the folder, the documents or the temporary folder.
    const char *target;
    enum class Place
    {
        Folder,
        Documents,
        Temporary
    } place = Place::Documents;
    const char *answer = "8 bytes.";
    /// Fixed texts for failure and success; empty for the text that the write reports.
    const char *failure = "";
    int failureLevel = 0;
    const char *success = "";
    /// How many requests it sends, and what more is sent and said where the written file is opened, too.
    int requests = 1;
    int requestsForOpening = 0;
    int textsForOpening = 0;
};

constexpr Writing writings[] = {
    {"saveKvt", [](AppState &state, const QString &folder) { state.saveKvt(folder + u"/below/saved.kvt"_s); },
     "below/saved.kvt", Writing::Place::Folder, "{}", "", 0, "Saved.", 0},
    {"convertOp", [](AppState &state, const QString &) { state.convertOp(u"kvt2bin"_s, {}); }, "open.bin",
     Writing::Place::Documents, "8 bytes.", "", 0, "Saved open.bin"},
    {"convertOp-tune",
     [](AppState &state, const QString &folder) { state.convertOp(u"ctz2kvt"_s, folder + u"/in.bin"_s); },
     "from_ctz.kvt", Writing::Place::Documents, "8 bytes.", "", 0, "Saved from_ctz.kvt", 1, 1, 1},
    {"toolConvert",
     [](AppState &state, const QString &folder) { state.toolConvert(u"vbf"_s, folder + u"/in.vbf"_s); },
     "in.bin", Writing::Place::Documents, "8 bytes.", "", 0, "Saved in.bin"},
    {"applySegments", [](AppState &state, const QString &) { state.applySegments(); }, "swapped.kvt",
     Writing::Place::Documents, "8 bytes.", "", 0, "Saved swapped.kvt", 1, 1, 1},
    {"xdfDownload", [](AppState &state, const QString &) { state.xdfDownload(0); }, "Tables.xdf",
     Writing::Place::Documents, "8 bytes.", "", 0, "Downloaded XDF."},
    // The patch is paid for and applied, whatever becomes of the copy.
    {"applyPatchToBin",
     [](AppState &state, const QString &folder) { state.applyPatchToBin(0, folder + u"/in.bin"_s); },
     "in_patched.bin", Writing::Place::Documents, R"({"file_data":"OCBieXRlcy4="})", "Patch applied.", 1,
     "Patch applied."},
    {"stockDownload", [](AppState &state, const QString &) { state.stockDownload(0, false); }, "stock.kvt",
     Writing::Place::Documents, "8 bytes.", "", 0, "Downloaded stock.kvt"},
    {"sortCopy",
     [](AppState &state, const QString &folder) {
         state.sortCopy({folder + u"/in.bin"_s}, folder + u"/sorted"_s, u"make"_s);
     },
     "sorted/UnknownMake/in.bin", Writing::Place::Folder, "{}", "Copied 0 of 1 file(s).", 0,
     "Copied 1 of 1 file(s).", 0},
    {"stockOpen", [](AppState &state, const QString &) { state.stockDownload(0, true); }, "stock.kvt",
     Writing::Place::Temporary, "8 bytes.", "", 0, "Opened stock.kvt \u2014 8 bytes.", 1, 1, 0},
};

QString targetOf(const Writing &writing, const QString &folder)
{
    const QString parents[] = {folder, TestEnvironment::documents(), QDir::tempPath()};
    return parents[static_cast<std::size_t>(writing.place)] + u'/' + QLatin1StringView(writing.target);
}

/// Removes whatever is there and makes its folder usable again.
void clear(const QString &path)
{
    const QString folder = QFileInfo(path).path();
    if (QFileInfo(folder).isDir())
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    // A link to a folder does not count as a folder here.
    if (!QFile::remove(path))
        QDir(path).removeRecursively();
}

void clear(const Writing &writing, const QString &path)
{
    clear(path);
    const QString folder = QFileInfo(path).path();
    const bool staysThere = writing.place == Writing::Place::Temporary;
    if (!staysThere || !QFileInfo(folder).isDir())
        clear(folder);
    if (staysThere)
        QDir().mkpath(folder);
}

/// Whether it says that it failed, and in the text, if there is one.
bool isRefused(const Writing &writing, const QString &text, const AppState &state)
{
    const QString fixed = QString::fromUtf8(writing.failure);
    // What could not be written to the temporary folder is said by the reading that follows.
    const bool anyText = fixed.isEmpty() && (text.isEmpty() || writing.place == Writing::Place::Temporary);
    if (state.statusOK() != writing.failureLevel)
        return false;
    if (anyText)
        return !state.status().isEmpty() && state.status() != QString::fromUtf8(writing.success);
    return state.status() == (fixed.isEmpty() ? text : fixed);
}

} // namespace

/// Everything that reads or writes a file, with something else in its place.
class TestFileFaults : public EndpointTest
{
    Q_OBJECT

private slots:
    void read_data();
    void read();
    void quarterOfAGibibyte_data();
    void quarterOfAGibibyte();
    void write_data();
    void write();
    void diskFull_data();
    void diskFull();

private:
    QString inFolder(const QString &name) const { return m_fixture->folder() + u'/' + name; }
    /// Writes, on a disk with so much room, and waits for the end of it.
    void run(const Writing &writing, rlim_t room = RLIM_INFINITY);
    /// After run(): that it said so once, and sent nothing twice.
    void checkFailure(const Writing &writing, const QString &text, const QString &path);
    void checkSuccess(const Writing &writing, const QString &path);
    /// Nothing but the file itself differs, and the view that an opened download leads to.
    void checkNothingElse(const QString &path);

    qsizetype m_texts = 0;
    int m_requests = 0;
};

void TestFileFaults::read_data()
{
    QTest::addColumn<int>("reading");
    QTest::addColumn<int>("obstacle");

    for (int reading = 0; reading < int(std::size(readings)); ++reading) {
        for (int obstacle = 0; obstacle < int(std::size(obstacles)); ++obstacle) {
            const bool isForAll = obstacle == 0 || obstacles[obstacle].isEmptyFile;
            if (isForAll || standsForOthers(readings[reading].name))
                QTest::addRow("%s-%s", obstacles[obstacle].name, readings[reading].name)
                    << reading << obstacle;
        }
    }
}

void TestFileFaults::read()
{
    QFETCH(int, reading);
    QFETCH(int, obstacle);
    const Reading &tried = readings[reading];
    const Obstacle &met = obstacles[obstacle];
    const QString path = inFolder(u"chosen.kvt"_s);
    AppState &state = m_fixture->state();
    makeFile(path, "chosen");
    if (tried.choose)
        tried.choose(state, path);
    WAIT_VERIFY(!state.searchBusy());
    state.setStatus(u"before"_s, -1);
    m_before = m_fixture->snapshot();
    clear(path);
    QVERIFY(met.make(path));
    const QSignalSpy texts(&state, &AppState::statusChanged);
    {
        const PlainRights rights;
        tried.use(state, path, inFolder(u"in.bin"_s));
        QVERIFY(m_fixture->settle());
    }

    QCOMPARE(state.statusOK(), 0);
    QCOMPARE(texts.count(), 1);
    QStringList changed = differences(m_before, m_fixture->snapshot());
    if (tried.leadsToMain)
        changed.removeAll(u"tab"_s);
    QCOMPARE(changed, QStringList());
    QCOMPARE(m_server->requestCount(), tried.refusal == Refusal::SentEmpty ? 1 : 0);
    const bool systemText = tried.refusal == Refusal::SystemText && !met.isEmptyFile;
    if (tried.refusal == Refusal::SentEmpty) {
        QVERIFY(m_server->request(0).body.contains("; name=\"" + QByteArray(tried.text) + "\""));
        QCOMPARE(formField(m_server->request(0), tried.text), QByteArray());
    } else if (systemText) {
        QVERIFY(!state.status().isEmpty());
        QVERIFY(state.status() != QString::fromUtf8(tried.text));
        QVERIFY(state.status() != u"before"_s);
    } else {
        QCOMPARE(state.status(), QString::fromUtf8(tried.text));
    }

    clear(path);
    makeFile(path, "chosen");
    m_server->answerAlways(answerWith(R"({"status":"ok","file_data":"QQ=="})"));
    tried.use(state, path, inFolder(u"in.bin"_s));
    QVERIFY(m_fixture->settle());
    QCOMPARE(state.statusOK(), 1);
}

void TestFileFaults::quarterOfAGibibyte_data()
{
    QTest::addColumn<int>("reading");

    for (int reading = 0; reading < int(std::size(largeReadings)); ++reading) {
        if (standsForOthers(largeReadings[reading].name))
            QTest::newRow(largeReadings[reading].name) << reading;
    }
}

void TestFileFaults::quarterOfAGibibyte()
{
    QFETCH(int, reading);
    const LargeReading &tried = largeReadings[reading];
    const QString path = inFolder(u"chosen.kvt"_s);
    QVERIFY(makeLarge(path));
    AppState &state = m_fixture->state();
    m_server->answerAlways(answerWith(R"({"status":"ok","vin":"BIGVIN"})"));
    m_before = m_fixture->snapshot();
    tried.start(state, path, inFolder(u"in.bin"_s));
    QVERIFY(m_fixture->settle());
    QCOMPARE(state.status(), QString::fromUtf8(tried.status));
    QCOMPARE(state.statusOK(), 1);
    if (tried.opens)
        QCOMPARE(state.vin(), u"BIGVIN"_s);
    else
        QCOMPARE(differences(fileAndDisk(m_before), fileAndDisk(m_fixture->snapshot())), QStringList());

    QCOMPARE(m_server->requestCount(), qMin(tried.parts, 1));
    const QByteArray body = m_server->request(0).body;
    QCOMPARE(body.size() / quarterOfGibibyte, tried.parts);
    if (tried.isText)
        QVERIFY(largeFileInText(body) == FileTools::readFile(path));
    else
        QCOMPARE(body.count(lastBytes + "\r\n"), tried.parts);
    if (tried.parts == 0)
        QVERIFY(FileTools::readFile(inFolder(u"sorted/UnknownMake/chosen.kvt"_s))
                == FileTools::readFile(path));
    checkNextGoodOne(operationNamed("kvt_info"));
}

void TestFileFaults::write_data()
{
    QTest::addColumn<int>("writing");
    QTest::addColumn<int>("hindrance");

    for (int writing = 0; writing < int(std::size(writings)); ++writing) {
        for (int hindrance = 0; hindrance < int(std::size(hindrances)); ++hindrance) {
            if (hindrance == 0 || standsForOthers(writings[writing].name))
                QTest::addRow("%s-%s", hindrances[hindrance].name, writings[writing].name)
                    << writing << hindrance;
        }
    }
}

void TestFileFaults::write()
{
    QFETCH(int, writing);
    QFETCH(int, hindrance);
    const Writing &tried = writings[writing];
    const Hindrance &met = hindrances[hindrance];
    const QString path = targetOf(tried, m_fixture->folder());
    const auto cleaned = qScopeGuard([&] { clear(tried, path); });
    QVERIFY(met.make(path));
    {
        const PlainRights rights;
        run(tried);
    }
    checkFailure(tried, QString::fromUtf8(met.text), path);

    clear(tried, path);
    run(tried);
    checkSuccess(tried, path);
}

void TestFileFaults::run(const Writing &writing, rlim_t room)
{
    // Both what is sent or saved, and what is sorted.
    m_fixture->state().hexModel()->setBytes(eightBytes);
    makeFile(inFolder(u"in.bin"_s), eightBytes);
    m_server->answerAlways(answerWith("{}"));
    m_server->answerNext(answerWith(writing.answer));
    m_before = m_fixture->snapshot();
    const QSignalSpy texts(&m_fixture->state(), &AppState::statusChanged);
    const int requests = m_server->requestCount();
    const FileSizeLimit limit(room);
    writing.start(m_fixture->state(), m_fixture->folder());
    QVERIFY(m_fixture->settle());
    m_texts = texts.count();
    m_requests = m_server->requestCount() - requests;
}

void TestFileFaults::checkFailure(const Writing &writing, const QString &text, const QString &path)
{
    const AppState &state = m_fixture->state();
    QVERIFY2(isRefused(writing, text, state), qPrintable(state.status()));
    QCOMPARE(m_texts, 1);
    QCOMPARE(m_requests, writing.requests);
    QCOMPARE(m_desktop->opened, QList<QUrl>());
    checkNothingElse(path);
}

void TestFileFaults::checkSuccess(const Writing &writing, const QString &path)
{
    QCOMPARE(m_fixture->state().status(), QString::fromUtf8(writing.success));
    QCOMPARE(m_fixture->state().statusOK(), 1);
    QCOMPARE(m_texts, 1 + writing.textsForOpening);
    QCOMPARE(m_requests, writing.requests + writing.requestsForOpening);
    QCOMPARE(contentOf(path), eightBytes);
}

void TestFileFaults::checkNothingElse(const QString &path)
{
    QStringList found = differences(m_before, m_fixture->snapshot());
    found.removeAll(path);
    found.removeAll(u"new: "_s + path);
    if (path.startsWith(QDir::tempPath() + u'/'))
        found.removeAll(u"tab"_s);
    QCOMPARE(found, QStringList());
}

void TestFileFaults::diskFull_data()
{
    QTest::addColumn<int>("writing");
    QTest::addColumn<int>("limit");

    for (int writing = 0; writing < int(std::size(writings)); ++writing) {
        for (const int limit : fullAt) {
            if (limit == fullAt[1] || standsForOthers(writings[writing].name))
                QTest::addRow("at-byte-%d-%s", limit, writings[writing].name) << writing << limit;
        }
        QTest::addRow("just-not-%s", writings[writing].name) << writing << int(eightBytes.size());
    }
}

void TestFileFaults::diskFull()
{
    QFETCH(int, writing);
    QFETCH(int, limit);
    const Writing &tried = writings[writing];
    const QString path = targetOf(tried, m_fixture->folder());
    const auto cleaned = qScopeGuard([&] { clear(tried, path); });
    // What the test itself writes is there before the disk is full.
    run(tried, rlim_t(limit));
    if (limit < eightBytes.size()) {
        QCOMPARE(contentOf(path), eightBytes.first(limit));
        checkFailure(tried, u"Short write."_s, path);
        // Over what reached the disk.
        run(tried);
    }
    checkSuccess(tried, path);
}

KVTEDITOR_TEST_MAIN(TestFileFaults)
#include "tst_FileFaults.moc"
