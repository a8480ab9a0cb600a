#include "app/AppState.h"
#include "app/MessageLog.h"
#include "core/FileTools.h"
#include "support/FailingCalls.h"
#include "support/FormData.h"
#include "support/RawHttpServer.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QScopeGuard>
#include <QTest>

#include <algorithm>
#include <memory>
#include <set>

using namespace Qt::StringLiterals;

namespace {

using Files = QMap<QString, QByteArray>;

struct NamedFault
{
    DiskFault fault;
    const char *name;
    /// Whether whoever asks again, as everybody has to, gets by.
    bool passes = false;
};

constexpr NamedFault everyFault[] = {
    {DiskFault::Fails, "fails"},
    {DiskFault::FailsForGood, "and all after it fail"},
    {DiskFault::Interrupted, "is interrupted", true},
    {DiskFault::Short, "is short", true},
    {DiskFault::ShortThenFails, "is short and the next fails"},
};

bool isOfEveryCall(const NamedFault &fault)
{
    return fault.fault == DiskFault::Fails || fault.fault == DiskFault::FailsForGood;
}

/// 20,000 bytes of which no two parts are the same: more than one read of a file of unknown size takes.
QByteArray content(const QByteArray &mark)
{
    QByteArray bytes;
    for (int line = 0; bytes.size() < 20'000; ++line)
        bytes += mark + QByteArray::number(line) + '\n';
    return bytes.left(20'000);
}

/// What the user has, below the root that the home and the temporary folder share.
const Files userFiles = {
    {u"home/in/open.kvt"_s, content("open")},
    {u"home/in/other.kvt"_s, content("other")},
    {u"home/in/donor.kvt"_s, content("donor")},
    {u"home/in/in.bin"_s, content("bin")},
    {u"home/in/in.vbf"_s, content("vbf")},
    {u"home/in/in.ctz"_s, content("ctz")},
    {u"home/in/tune_2014.kvt"_s, content("2014")},
    {u"home/in/tune_2015.kvt"_s, content("2015")},
    {u"home/library/a_e38_12654321_2011.kvt"_s, "a"},
    {u"home/library/b.ctz"_s, "bb"},
    {u"home/library/Chevy/c_2013.KVT"_s, "ccc"},
    {u"home/library/Chevy/deep/d.kvt"_s, "dddd"},
    {u"home/library/Ford/e.kvt"_s, "eeeee"},
    {u"home/library/Ford/notes.txt"_s, "no tune"},
    {u"home/sorted/2012/old_2012.kvt"_s, content("2012")},
    {u"home/sorted/2014/tune_2014.kvt"_s, "an earlier copy of another length"},
    {u"home/Documents/mine.bin"_s, "the user's own"},
};

const QByteArray editedBytes = QByteArray(userFiles[u"home/in/open.kvt"_s]).replace(4, 4, "EDIT");
const QByteArray answered = content("answer");
const QByteArray patchAnswer = "{\"status\":\"ok\",\"file_data\":\"" + answered.toBase64() + "\"}";
const QByteArray previewAnswer = R"({"status":"ok","candidates":[{},{}]})";

/// Something that the user does and that touches the disk, and how it ends when all is well.
struct Action
{
    const char *name;
    void (*start)(AppState &state, const QString &root);
    const char *goodStatus;
    /// Names of calls that it is known to make.
    const char *knownCalls;
    /// The file that it writes, below the root, and what that holds then.
    const char *target = "";
    const QByteArray *written = &answered;
    const QByteArray *answer = &answered;
    const char *opens = "open.kvt";
    /// The failure text, if it is neither "Short write." nor the system's error text.
    const char *failureText = "";
    /// Whether it succeeds though what it wrote could not be opened, or not even be written.
    bool forgives = false;
    /// What else is there, and what is not, before.
    const char *presentBefore = "";
    const char *missingBefore = "";
};

// Qt 6.11 takes the temporary folder's path as it is, Qt 6.8 still followed it.
constexpr const char *callsForTemporaryFile = QT_VERSION < QT_VERSION_CHECK(6, 9, 0)
    ? "realpath mkdir open write close stat read"
    : "mkdir open write close stat read";

const Action actions[] = {
    {.name = "openKvt",
     .start = [](AppState &state, const QString &root) { state.openKvt(root + u"/home/in/other.kvt"_s); },
     .goodStatus = "1 Opened other.kvt \u2014 20000 bytes.",
     .knownCalls = "stat open read close",
     .opens = "other.kvt"},
    {.name = "openKvt-relative",
     .start = [](AppState &state,
                 const QString &root) { state.openKvt(root.mid(1) + u"/home/in/other.kvt"_s); },
     .goodStatus = "1 Opened other.kvt \u2014 20000 bytes.",
     .knownCalls = "stat open read close",
     .opens = "other.kvt"},
    {.name = "openSearchHit",
     .start = [](AppState &state, const QString &) { state.openSearchHit(0); },
     .goodStatus = "1 Opened other.kvt \u2014 20000 bytes.",
     .knownCalls = "stat open read close",
     .opens = "other.kvt"},
    {.name = "saveKvt-overItself",
     .start = [](AppState &state, const QString &root) { state.saveKvt(root + u"/home/in/open.kvt"_s); },
     .goodStatus = "1 Saved.",
     .knownCalls = "mkdir open write close",
     .target = "home/in/open.kvt",
     .written = &editedBytes},
    {.name = "saveKvt-newName",
     .start = [](AppState &state, const QString &root) { state.saveKvt(root + u"/home/in/new.kvt"_s); },
     .goodStatus = "1 Saved.",
     .knownCalls = "mkdir open write close",
     .target = "home/in/new.kvt",
     .written = &editedBytes,
     .opens = "new.kvt"},
    {.name = "saveKvt-relative",
     .start = [](AppState &state,
                 const QString &root) { state.saveKvt(root.mid(1) + u"/home/in/new.kvt"_s); },
     .goodStatus = "1 Saved.",
     .knownCalls = "mkdir open write close",
     .target = "home/in/new.kvt",
     .written = &editedBytes,
     .opens = "new.kvt"},
    {.name = "saveKvt-newFolder",
     .start = [](AppState &state, const QString &root) { state.saveKvt(root + u"/home/one/two/new.kvt"_s); },
     .goodStatus = "1 Saved.",
     .knownCalls = "mkdir open write close",
     .target = "home/one/two/new.kvt",
     .written = &editedBytes,
     .opens = "new.kvt",
     .failureText = "No such file or directory"},
    {.name = "convertOp-workspace",
     .start = [](AppState &state, const QString &) { state.convertOp(u"kvt2bin"_s, {}); },
     .goodStatus = "1 Saved open.bin",
     .knownCalls = "mkdir open write close",
     .target = "home/Documents/open.bin"},
    {.name = "convertOp-noDocumentsFolder",
     .start = [](AppState &state, const QString &) { state.convertOp(u"kvt2efi"_s, {}); },
     .goodStatus = "1 Saved open_efi.bin",
     .knownCalls = "mkdir open write close",
     .target = "home/Documents/open_efi.bin",
     .failureText = "No such file or directory",
     .missingBefore = "home/Documents"},
    {.name = "convertOp-overEarlierExport",
     .start = [](AppState &state,
                 const QString &root) { state.convertOp(u"ctz2bin"_s, root + u"/home/in/in.ctz"_s); },
     .goodStatus = "1 Saved in.bin",
     .knownCalls = "stat open read mkdir write close",
     .target = "home/Documents/in.bin",
     .presentBefore = "home/Documents/in.bin"},
    {.name = "convertOp-opensItsResult",
     .start = [](AppState &state,
                 const QString &root) { state.convertOp(u"ctz2kvt"_s, root + u"/home/in/in.ctz"_s); },
     .goodStatus = "1 Saved from_ctz.kvt",
     .knownCalls = "stat open read mkdir write close",
     .target = "home/Documents/from_ctz.kvt",
     .opens = "from_ctz.kvt",
     .forgives = true},
    {.name = "convertOp-twoInputs",
     .start =
         [](AppState &state, const QString &root) {
             state.convertOp(u"cm2450_import"_s, root + u"/home/in/in.bin"_s, root + u"/home/in/in.vbf"_s);
         },
     .goodStatus = "1 Saved cm2450_imported.kvt",
     .knownCalls = "stat open read mkdir write close",
     .target = "home/Documents/cm2450_imported.kvt",
     .opens = "cm2450_imported.kvt",
     .forgives = true},
    {.name = "toolConvert",
     .start = [](AppState &state,
                 const QString &root) { state.toolConvert(u"vbf"_s, root + u"/home/in/in.vbf"_s); },
     .goodStatus = "1 Saved in.bin",
     .knownCalls = "stat open read mkdir write close",
     .target = "home/Documents/in.bin",
     .failureText = "No input file."},
    {.name = "pickBaseKvt",
     .start = [](AppState &state, const QString &root) { state.pickBaseKvt(root + u"/home/in/other.kvt"_s); },
     .goodStatus = "1 Base KVT set: other.kvt",
     .knownCalls = "stat open read close"},
    {.name = "previewSegments",
     .start = [](AppState &state, const QString &) { state.previewSegments(); },
     .goodStatus = "1 2 swap candidate(s).",
     .knownCalls = "stat open read close",
     .answer = &previewAnswer,
     .failureText = "No input file for worker request."},
    {.name = "applySegments",
     .start = [](AppState &state, const QString &) { state.applySegments(); },
     .goodStatus = "1 Saved swapped.kvt",
     .knownCalls = "stat open read mkdir write close",
     .target = "home/Documents/swapped.kvt",
     .opens = "swapped.kvt",
     .failureText = "No input file.",
     .forgives = true},
    {.name = "xdfDownload",
     .start = [](AppState &state, const QString &) { state.xdfDownload(0); },
     .goodStatus = "1 Downloaded XDF.",
     .knownCalls = "mkdir open write close",
     .target = "home/Documents/Tables.xdf"},
    {.name = "applyPatchToBin",
     .start = [](AppState &state,
                 const QString &root) { state.applyPatchToBin(0, root + u"/home/in/in.bin"_s); },
     .goodStatus = "1 Patch applied.",
     .knownCalls = "stat open read mkdir write close",
     .target = "home/Documents/in_patched.bin",
     .answer = &patchAnswer,
     .forgives = true},
    {.name = "stockDownload",
     .start = [](AppState &state, const QString &) { state.stockDownload(0, false); },
     .goodStatus = "1 Downloaded stock.kvt",
     .knownCalls = "mkdir open write close",
     .target = "home/Documents/stock.kvt"},
    {.name = "stockDownload-opened",
     .start = [](AppState &state, const QString &) { state.stockDownload(0, true); },
     .goodStatus = "1 Opened stock.kvt \u2014 20000 bytes.",
     .knownCalls = callsForTemporaryFile,
     .target = "tmp/stock.kvt",
     .opens = "stock.kvt",
     .failureText = "Could not read file.|No such file or directory"},
    {.name = "stockDownload-openedOverAnother",
     .start = [](AppState &state, const QString &) { state.stockDownload(0, true); },
     .goodStatus = "1 Opened stock.kvt \u2014 20000 bytes.",
     .knownCalls = callsForTemporaryFile,
     .target = "tmp/stock.kvt",
     .opens = "stock.kvt",
     .failureText = "Could not read file.",
     .presentBefore = "tmp/stock.kvt"},
};

/// Far from now, so that what a file says of its age cannot change with the minute.
void makeOldFile(const QString &path, const QByteArray &content)
{
    QFile file(makeFile(path, content));
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.setFileTime(QDateTime({2020, 2, 3}, {4, 5}), QFileDevice::FileModificationTime);
}

/// What the home and the temporary folder hold, by their paths below the root.
Files filesBelow(const QString &root)
{
    Files found;
    for (const QString &folder : {root + u"/home"_s, root + u"/tmp"_s}) {
        QDirIterator files(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            found.insert(path.mid(root.size() + 1), contentOf(path));
        }
    }
    return found;
}

/// All that an action could change.
struct Situation
{
    QVariantMap state;
    Files files;
    /// What was said since the action began: levels and texts.
    QStringList statuses;
    /// How often the folder of a saved file was shown.
    qsizetype shown = 0;
    int requests = 0;
};

/// A controller in use with the user's files: an edited file is open, and each feature holds the data of an
/// earlier answer.
class Fixture
{
public:
    Fixture();

    const QString &root() const { return m_root; }
    AppState &state() { return *m_state; }

    /// Restores the initial state for that action.
    void reset(const Action &action);
    /// Waits until nothing is in progress.
    void settle();
    void run(const Action &action);
    Situation situation() const;
    /// What went to the service since the action began and is neither the whole of a file nor nothing.
    QByteArray sentInPart() const;
    /// From here on counts as since the action began.
    void begin();

private:
    void makeController();
    void reopen();
    void restoreFiles();
    QVariantMap stateNow() const;

    QString m_root = QDir(TestEnvironment::home() + u"/.."_s).canonicalPath();
    RawHttpServer m_server;
    UrlRecorder m_desktop;
    std::unique_ptr<AppState> m_state;
    QVariantMap m_stateAtFirst;
    QStringList m_statuses;
    int m_requestsBefore = 0;
};

Fixture::Fixture()
{
    restoreFiles();
    makeController();
}

void Fixture::restoreFiles()
{
    for (const QString &folder : {u"/home/one"_s, u"/home/sorted/2015"_s})
        QDir(m_root + folder).removeRecursively();
    const Files found = filesBelow(m_root);
    for (const QString &path : found.keys()) {
        if (!userFiles.contains(path))
            QFile::remove(m_root + u'/' + path);
    }
    for (auto file = userFiles.begin(); file != userFiles.end(); ++file) {
        if (!found.contains(file.key()) || found.value(file.key()) != file.value())
            makeOldFile(m_root + u'/' + file.key(), file.value());
    }
}

void Fixture::makeController()
{
    m_state = std::make_unique<AppState>();
    m_state->findChild<VoxApiClient *>()->setApiBase(m_server.baseUrl());
    QObject::connect(m_state.get(), &AppState::statusChanged, m_state.get(), [this] {
        m_statuses.append(QString::number(m_state->statusOK()) + u' ' + m_state->status());
    });
    m_state->scanFolder(m_root + u"/home/in"_s, true, u"other"_s, {}, {}, {});
    settle();
    m_server.answerAlways(answerWith(R"({"status":"ok","vin":"VIN","modules":[{"mainOs":"OS"}]})"));
    m_state->openKvt(m_root + u"/home/in/open.kvt"_s);
    settle();
    m_state->pickSegmentFile(u"donor"_s, m_root + u"/home/in/donor.kvt"_s);
    const std::pair<const char *, void (*)(AppState &)> steps[] = {
        {R"({"items":[{"id":"1","title":"Tables"}]})", [](AppState &state) { state.xdfCatalog(); }},
        {R"({"patches":[{"id":7,"variant":"v"}]})", [](AppState &state) { state.loadPatches(u"OS"_s); }},
        {R"({"files":[{"id":"9","filename":"stock.kvt"}]})", [](AppState &state) { state.stockSearch({}); }},
        {R"({"status":"ok","candidates":[{"label":"old"}]})",
         [](AppState &state) { state.previewSegments(); }},
    };
    for (const auto &[answer, step] : steps) {
        m_server.answerAlways(answerWith(answer));
        step(*m_state);
        settle();
    }
    QCOMPARE(m_state->searchHits().size(), 1);
    QCOMPARE(m_state->xdfItems().size(), 1);
    QCOMPARE(m_state->patchItems().size(), 1);
    QCOMPARE(m_state->stockRows().size(), 1);
    QCOMPARE(m_state->swapCandidates().size(), 1);
    reopen();
    m_stateAtFirst = stateNow();
}

void Fixture::reopen()
{
    m_server.answerAlways(answerWith("{}"));
    m_state->openKvt(m_root + u"/home/in/open.kvt"_s);
    settle();
    m_state->hexModel()->applyPatch(4, "EDIT");
    m_state->hexModel()->setCursor(3);
}

void Fixture::reset(const Action &action)
{
    restoreFiles();
    if (stateNow() != m_stateAtFirst)
        reopen();
    if (stateNow() != m_stateAtFirst)
        makeController();
    if (*action.presentBefore)
        makeOldFile(m_root + u'/' + QLatin1StringView(action.presentBefore), "an earlier one");
    if (*action.missingBefore)
        QDir(m_root + u'/' + QLatin1StringView(action.missingBefore)).removeRecursively();
    m_server.answerAlways(answerWith(*action.answer));
    begin();
}

void Fixture::begin()
{
    m_statuses.clear();
    m_desktop.opened.clear();
    m_requestsBefore = m_server.requestCount();
}

void Fixture::settle()
{
    while (m_state->findChild<QNetworkAccessManager *>() || m_state->searchBusy())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void Fixture::run(const Action &action)
{
    action.start(*m_state, m_root);
    settle();
}

QVariantMap Fixture::stateNow() const
{
    QVariantMap now;
    for (const char *const name :
         {"fileName", "created", "vin", "modules", "showHex", "tab", "busy", "searchBusy", "searchHits",
          "xdfItems", "patchItems", "stockRows", "swapCandidates"})
        now.insert(QLatin1StringView(name), m_state->property(name));
    now.insert(u"bytes"_s, m_state->currentKvtBytes());
    now.insert(u"cursor"_s, m_state->hexModel()->cursor());
    now.insert(u"folder"_s, m_state->dialogFolder());
    return now;
}

Situation Fixture::situation() const
{
    Situation now;
    now.state = stateNow();
    now.files = filesBelow(m_root);
    now.statuses = m_statuses;
    now.shown = m_desktop.opened.size();
    now.requests = m_server.requestCount() - m_requestsBefore;
    return now;
}

QByteArray Fixture::sentInPart() const
{
    QByteArrayList wholes = userFiles.values();
    wholes << editedBytes << answered << QByteArray();
    for (int i = m_requestsBefore; i < m_server.requestCount(); ++i) {
        const RecordedRequest request = m_server.request(i);
        QByteArrayList sent;
        for (const FormPart &part : formParts(request)) {
            if (part.header("content-disposition").contains("filename="))
                sent.append(part.body);
        }
        const QJsonObject json = QJsonDocument::fromJson(request.body).object();
        if (json.contains(u"file_data"_s))
            sent.append(QByteArray::fromBase64(json.value(u"file_data"_s).toString().toLatin1()));
        for (const QByteArray &bytes : sent) {
            if (!wholes.contains(bytes))
                return bytes;
        }
    }
    return {};
}

QString goodStatus(const Action &action)
{
    return QString::fromUtf8(action.goodStatus);
}

/// The texts that may report the failure.
QStringList failureTexts(const Action &action, const QList<int> &errors)
{
    QStringList texts{u"Short write."_s};
    for (const int error : errors)
        texts.append(qt_error_string(error));
    if (*action.failureText)
        texts += QString::fromLatin1(action.failureText).split(u'|');
    return texts;
}

/// The one file apart that an action was to write, all is as before.
QString changedFile(const Files &before, const Files &now, const QStringList &targets)
{
    std::set<QString> paths;
    for (const Files &files : {before, now}) {
        for (const QString &path : files.keys())
            paths.insert(path);
    }
    for (const QString &path : paths) {
        if (!targets.contains(path) && (!now.contains(path) || before.value(path) != now.value(path)))
            return path;
    }
    return {};
}

/// What is not as it has to be after the action met a failure, or an empty text.
QString wrongAfter(const Action &action, const Situation &before, const Situation &good, const Situation &now,
                   const QList<int> &errors, bool hasToSucceed)
{
    const QString target = QString::fromLatin1(action.target);
    const bool isWhole = target.isEmpty() || now.files.value(target) == *action.written;
    if (now.statuses.isEmpty())
        return u"nothing was said"_s;
    if (const QString path = changedFile(before.files, now.files, {target}); !path.isEmpty())
        return path + u" changed"_s;
    if (!isWhole && now.files.contains(target) && now.files.value(target) != before.files.value(target)
        && !action.written->startsWith(now.files.value(target)))
        return u"what was written is none of it"_s;
    if (now.requests > good.requests)
        return u"a request too many"_s;

    // Of a file that was just written, the age is that of the run; of one that cannot be asked, none.
    QVariantMap opened = now.state;
    if (!target.isEmpty() || opened.value(u"created"_s).toString().isEmpty())
        opened.insert(u"created"_s, good.state.value(u"created"_s));
    const bool isAsBefore = now.state == before.state;
    const QString status = now.statuses.last();
    if (status == goodStatus(action)) {
        if (!isWhole && !action.forgives)
            return u"a success that left half a file"_s;
        if (opened != good.state && !(action.forgives && isAsBefore))
            return u"a success that did not do it"_s;
        return now.shown != (isWhole ? good.shown : 0) ? u"shown "_s + QString::number(now.shown) : QString();
    }
    if (hasToSucceed)
        return u"gave up"_s;
    if (now.statuses.size() != 1)
        return u"said more than once"_s;
    if (!status.startsWith(u"0 "_s) || !failureTexts(action, errors).contains(status.mid(2)))
        return u"said something else"_s;
    if (!isAsBefore)
        return u"a failure that changed what is open"_s;
    return now.shown > 0 ? u"shown though it failed"_s : QString();
}

/// Files that the sorter copies by the years in their names.
struct Sorting
{
    const char *name;
    QStringList sources;
    QString destination;

    void start(Fixture &fixture) const
    {
        QStringList paths;
        for (const QString &source : sources)
            paths.append(fixture.root() + u'/' + source);
        fixture.state().sortCopy(paths, fixture.root() + u'/' + destination, u"year"_s);
    }

    /// The copies, by their paths below the root.
    Files copies() const
    {
        Files copies;
        for (const QString &source : sources) {
            const QString fileName = QFileInfo(source).fileName();
            const QString year = fileName.mid(fileName.indexOf(u"20"_s), 4);
            copies.insert(destination + u'/' + year + u'/' + fileName, userFiles.value(source));
        }
        return copies;
    }
};

const Sorting sortings[] = {
    {"new-folder", {u"home/in/tune_2014.kvt"_s, u"home/in/tune_2015.kvt"_s}, u"home/one/new"_s},
    {"over-earlier-copies", {u"home/in/tune_2014.kvt"_s, u"home/in/tune_2015.kvt"_s}, u"home/sorted"_s},
    {"onto-itself", {u"home/sorted/2012/old_2012.kvt"_s, u"home/in/tune_2015.kvt"_s}, u"home/sorted"_s},
};

/// Describes what is wrong after a sort of which at most `mostFailed` copies may have failed; otherwise
/// empty.
QString wrongAfterSorting(const Sorting &sorting, const Situation &before, const Situation &now,
                          qsizetype mostFailed)
{
    const Files copies = sorting.copies();
    if (const QString path = changedFile(before.files, now.files, copies.keys()); !path.isEmpty())
        return path + u" changed"_s;
    for (const QString &source : sorting.sources) {
        if (now.files.value(source) != userFiles.value(source))
            return source + u" is lost"_s;
    }
    if (now.state != before.state)
        return u"what is open changed"_s;
    if (now.statuses.size() != 1)
        return u"said more or less than one thing"_s;

    qsizetype whole = 0;
    qsizetype added = 0;
    for (auto copy = copies.begin(); copy != copies.end(); ++copy) {
        const QByteArray found = now.files.value(copy.key());
        const QByteArray earlier = before.files.value(copy.key());
        if (found != earlier && !copy.value().startsWith(found))
            return copy.key() + u" is not a copy"_s;
        whole += found == copy.value() ? 1 : 0;
        added += found == copy.value() && found != earlier ? 1 : 0;
    }
    const QString status = now.statuses.constFirst();
    if (status == u"0 Destination folder is missing."_s)
        return added > 0 || mostFailed == 0 ? u"it is there"_s : QString();
    // A copy that was there before may count or not: its own may have failed.
    const qsizetype all = sorting.sources.size();
    for (qsizetype count = std::max(added, all - mostFailed); count <= whole; ++count) {
        if (status == (count > 0 ? u"1 "_s : u"0 "_s) + u"Copied %1 of %2 file(s)."_s.arg(count).arg(all))
            return {};
    }
    return QString::number(whole) + u" are there"_s;
}

/// What the folder search finds in the library: paths below the root, and sizes.
const QMap<QString, QString> sizesOfHits = {
    {u"home/library/a_e38_12654321_2011.kvt"_s, u"1"_s},
    {u"home/library/b.ctz"_s, u"2"_s},
    {u"home/library/Chevy/c_2013.KVT"_s, u"3"_s},
    {u"home/library/Chevy/deep/d.kvt"_s, u"4"_s},
    {u"home/library/Ford/e.kvt"_s, u"5"_s},
};

/// What one call that failed, such as "opendir 3 /folder/", may cost a search.
class ScanLoss
{
public:
    ScanLoss(const QByteArray &failed, const QString &root, bool kindsAreHidden)
        : m_call(failed.left(failed.indexOf(' ')))
        , m_path(QDir::cleanPath(QFile::decodeName(failed.mid(failed.indexOf('/')))).mid(root.size() + 1))
        , m_kindsAreHidden(kindsAreHidden)
    {
    }

    /// All of the folder that could not be read, and what does not tell its kind.
    bool isOf(const QString &path) const
    {
        if (m_call == "closedir")
            return false;
        return path.startsWith(m_path + u'/') || (path == m_path && m_kindsAreHidden);
    }
    bool isSizeOf(const QString &path) const { return path == m_path; }

private:
    QByteArray m_call;
    QString m_path;
    bool m_kindsAreHidden;
};

} // namespace

class TestFailingCalls : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void action_data();
    void action();
    void action_twoFailures_data();
    void action_twoFailures();

    void sort_data();
    void sort();
    void sort_twoFailures();
    void scan_data();
    void scan();
    void largeFile();
    void looking();
    void log();

private:
    Situation runWell(Fixture &fixture, const Action &action, QByteArrayList *names);
    void runFailing(Fixture &fixture, const Action &action, const Situation &good, const NamedFault &fault,
                    const QList<int> &numbers, bool *injected);
    void sortFailing(Fixture &fixture, const Sorting &sorting, const NamedFault &fault,
                     const QList<int> &numbers, bool *injected);
    void scanFailing(Fixture &fixture, bool kindsAreHidden, const NamedFault &fault, int number,
                     bool *injected);
};

void TestFailingCalls::initTestCase()
{
    // As in the program: a dialog's path has no leading slash, so it is found from the root folder.
    QVERIFY(QDir::setCurrent(QDir::rootPath()));
}

/// The action as it ends when all is well, and the calls that it makes.
Situation TestFailingCalls::runWell(Fixture &fixture, const Action &action, QByteArrayList *names)
{
    fixture.reset(action);
    {
        const FailingCalls calls(fixture.root(), DiskFault::Fails, {});
        fixture.run(action);
        *names = calls.calls();
    }
    return fixture.situation();
}

void TestFailingCalls::action_data()
{
    QTest::addColumn<int>("number");

    for (int i = 0; i < static_cast<int>(std::size(actions)); ++i)
        QTest::newRow(actions[i].name) << i;
}

void TestFailingCalls::runFailing(Fixture &fixture, const Action &action, const Situation &good,
                                  const NamedFault &fault, const QList<int> &numbers, bool *injected)
{
    fixture.reset(action);
    const Situation before = fixture.situation();
    QByteArrayList failed;
    QList<int> errors;
    {
        const FailingCalls calls(fixture.root(), fault.fault, numbers);
        fixture.run(action);
        failed = calls.failed();
        errors = calls.errors();
    }
    const Situation now = fixture.situation();
    *injected = failed.size() == numbers.size();
    const QByteArray call = failed.join(", ") + ' ' + fault.name + ": ";
    const QString wrong = wrongAfter(action, before, good, now, errors, fault.passes || failed.isEmpty());
    QVERIFY2(wrong.isEmpty(), call + qPrintable(wrong + u" | "_s + now.statuses.join(u" | "_s)));
    const QByteArray part = fixture.sentInPart();
    QVERIFY2(part.isEmpty(), call + "sent part of a file, " + QByteArray::number(part.size()) + " bytes");

    fixture.begin();
    fixture.run(action);
    const Situation next = fixture.situation();
    QVERIFY2(next.statuses.last() == goodStatus(action),
             call + "the next: " + qPrintable(next.statuses.last()));
    QVERIFY2(*action.target == 0 || next.files.value(QLatin1StringView(action.target)) == *action.written,
             call + "the next wrote something else");
    QVERIFY2(next.state.value(u"bytes"_s) == good.state.value(u"bytes"_s), call + "the next opened another");
}

void TestFailingCalls::action()
{
    QFETCH(int, number);
    const Action &action = actions[number];
    Fixture fixture;
    QByteArrayList names;
    const Situation good = runWell(fixture, action, &names);
    QCOMPARE(good.statuses.last(), goodStatus(action));
    QCOMPARE(good.state.value(u"fileName"_s).toString(), QString::fromLatin1(action.opens));
    QVERIFY(*action.target == 0 || good.files.value(QLatin1StringView(action.target)) == *action.written);
    for (const QByteArray &name : QByteArray(action.knownCalls).split(' '))
        QVERIFY2(names.contains(name), name + " is not among " + names.join(' '));

    for (const NamedFault &fault : everyFault) {
        int count = 0;
        for (bool injected = true; injected; ++count) {
            runFailing(fixture, action, good, fault, {count}, &injected);
            if (QTest::currentTestFailed())
                return;
        }
        // The last one met no failure any more.
        QVERIFY2(count - 1 >= (isOfEveryCall(fault) ? names.size() : 1),
                 fault.name + QByteArray(" only ") + QByteArray::number(count - 1));
    }
}

void TestFailingCalls::action_twoFailures_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("leastPairs");

    QTest::newRow("saveKvt-newFolder") << u"saveKvt-newFolder"_s << 3;
    QTest::newRow("stockDownload-opened") << u"stockDownload-opened"_s << 20;
    QTest::newRow("stockDownload-openedOverAnother") << u"stockDownload-openedOverAnother"_s << 20;
}

// What is done after a failure may fail in its turn.
void TestFailingCalls::action_twoFailures()
{
    QFETCH(QString, name);
    QFETCH(int, leastPairs);
    const Action &action = *std::find_if(std::begin(actions), std::end(actions), [&](const Action &entry) {
        return name == QLatin1StringView(entry.name);
    });
    Fixture fixture;
    QByteArrayList names;
    const Situation good = runWell(fixture, action, &names);
    int pairs = 0;
    for (int first = 0; first < names.size(); ++first) {
        bool injected = true;
        for (int second = first + 1; injected; ++second) {
            runFailing(fixture, action, good, everyFault[0], {first, second}, &injected);
            if (QTest::currentTestFailed())
                return;
            pairs += injected ? 1 : 0;
        }
    }
    QVERIFY2(pairs >= leastPairs, QByteArray::number(pairs));
}

void TestFailingCalls::sort_data()
{
    QTest::addColumn<int>("number");

    for (int i = 0; i < static_cast<int>(std::size(sortings)); ++i)
        QTest::newRow(sortings[i].name) << i;
}

void TestFailingCalls::sortFailing(Fixture &fixture, const Sorting &sorting, const NamedFault &fault,
                                   const QList<int> &numbers, bool *injected)
{
    fixture.reset({});
    const Situation before = fixture.situation();
    QByteArrayList failed;
    {
        const FailingCalls calls(fixture.root(), fault.fault, numbers);
        sorting.start(fixture);
        failed = calls.failed();
    }
    const Situation now = fixture.situation();
    *injected = failed.size() == numbers.size();
    const auto most = fault.fault == DiskFault::FailsForGood ? sorting.sources.size() : failed.size();
    const QString wrong = wrongAfterSorting(sorting, before, now, fault.passes ? 0 : most);
    const QByteArray call = failed.join(", ") + ' ' + fault.name + ": ";
    QVERIFY2(wrong.isEmpty(), call + qPrintable(wrong + u" | "_s + now.statuses.join(u" | "_s)));

    fixture.begin();
    sorting.start(fixture);
    const Situation next = fixture.situation();
    QCOMPARE(next.statuses, QStringList{u"1 Copied 2 of 2 file(s)."_s});
    const QString wrongThen = wrongAfterSorting(sorting, before, next, 0);
    QVERIFY2(wrongThen.isEmpty(), call + "the next: " + qPrintable(wrongThen));
}

void TestFailingCalls::sort()
{
    QFETCH(int, number);
    Fixture fixture;
    for (const NamedFault &fault : everyFault) {
        int count = 0;
        for (bool injected = true; injected; ++count) {
            sortFailing(fixture, sortings[number], fault, {count}, &injected);
            if (QTest::currentTestFailed())
                return;
        }
        QVERIFY2(count - 1 >= (isOfEveryCall(fault) ? 20 : 3),
                 fault.name + QByteArray(" only ") + QByteArray::number(count - 1));
    }
}

void TestFailingCalls::sort_twoFailures()
{
    Fixture fixture;
    int pairs = 0;
    for (int first = 0; first < 20; ++first) {
        bool injected = true;
        for (int second = first + 1; injected; ++second) {
            sortFailing(fixture, sortings[2], everyFault[0], {first, second}, &injected);
            if (QTest::currentTestFailed())
                return;
            pairs += injected ? 1 : 0;
        }
    }
    QVERIFY2(pairs > 100, QByteArray::number(pairs));
}

void TestFailingCalls::scan_data()
{
    QTest::addColumn<bool>("kindsAreHidden");

    QTest::newRow("kinds-in-the-folder") << false;
    QTest::newRow("kinds-asked-for") << true;
}

void TestFailingCalls::scanFailing(Fixture &fixture, bool kindsAreHidden, const NamedFault &fault, int number,
                                   bool *injected)
{
    const QString folder = fixture.root() + u"/home/library"_s;
    fixture.reset({});
    const Situation before = fixture.situation();
    const auto scan = [&] {
        fixture.state().scanFolder(folder, true, {}, {}, {}, {});
        fixture.settle();
    };
    QByteArray failed;
    {
        FailingCalls calls(fixture.root(), fault.fault, {number});
        if (kindsAreHidden)
            calls.hideKinds();
        scan();
        failed = calls.failed().value(0);
    }
    Situation now = fixture.situation();
    *injected = !failed.isEmpty();
    const QByteArray call = failed + ' ' + fault.name + ": ";

    const QVariantList hits = now.state.take(u"searchHits"_s).toList();
    QVariantMap stateBefore = before.state;
    stateBefore.remove(u"searchHits"_s);
    QVERIFY2(now.state == stateBefore, call + "the open file changed");
    QVERIFY2(now.files == before.files, call + "a file changed");
    const QStringList statuses{u"-1 Searching %1 ..."_s.arg(folder),
                               u"1 Found %1 file(s)."_s.arg(hits.size())};
    QVERIFY2(now.statuses == statuses, call + qPrintable(now.statuses.join(u" | "_s)));
    QMap<QString, QString> sizes;
    for (const QVariant &entry : hits) {
        const QVariantMap hit = entry.toMap();
        const QString path = hit.value(u"path"_s).toString().mid(fixture.root().size() + 1);
        QVERIFY2(sizesOfHits.contains(path) && !sizes.contains(path), call + qPrintable(path));
        QVERIFY2(path.endsWith(u'/' + hit.value(u"name"_s).toString()), call + qPrintable(path));
        sizes.insert(path, hit.value(u"size"_s).toString());
    }
    const ScanLoss loss(failed, fixture.root(), kindsAreHidden);
    const bool isOneCall = fault.fault == DiskFault::Fails;
    for (auto known = sizesOfHits.begin(); known != sizesOfHits.end(); ++known) {
        const QByteArray path = call + qPrintable(known.key());
        const QString size = sizes.value(known.key());
        if (size.isNull())
            QVERIFY2(*injected && (!isOneCall || loss.isOf(known.key())), path + " is lost");
        // The size is unknown when stat fails.
        else if (size != known.value())
            QVERIFY2(*injected && size == u"0"_s && (!isOneCall || loss.isSizeOf(known.key())),
                     path + " has " + qPrintable(size) + " bytes");
    }

    fixture.begin();
    scan();
    QCOMPARE(fixture.state().status(), u"Found 5 file(s)."_s);
}

void TestFailingCalls::scan()
{
    QFETCH(bool, kindsAreHidden);
    Fixture fixture;
    fixture.reset({});
    QByteArrayList names;
    {
        FailingCalls calls(fixture.root(), DiskFault::Fails, {});
        if (kindsAreHidden)
            calls.hideKinds();
        fixture.state().scanFolder(fixture.root() + u"/home/library"_s, true, {}, {}, {}, {});
        fixture.settle();
        names = calls.calls();
    }
    // Four folders, and five hits of which the size is asked.
    QCOMPARE(names.count("opendir"), 4);
    QCOMPARE(names.count("closedir"), 4);
    QVERIFY2(names.count("readdir") >= 13, names.join(' '));
    QVERIFY2(names.count("stat") + names.count("lstat") >= (kindsAreHidden ? 14 : 6), names.join(' '));

    for (const NamedFault &fault : {everyFault[0], everyFault[1]}) {
        int count = 0;
        for (bool injected = true; injected; ++count) {
            scanFailing(fixture, kindsAreHidden, fault, count, &injected);
            if (QTest::currentTestFailed())
                return;
        }
        QVERIFY2(count - 1 >= names.size(),
                 fault.name + QByteArray(" only ") + QByteArray::number(count - 1));
    }
}

// Large files are read in a way of their own.
void TestFailingCalls::largeFile()
{
    const QString folder = QDir(QDir::tempPath()).canonicalPath();
    const QString path = folder + u"/large.kvt"_s;
    const QByteArray whole = content("large").repeated(300);
    makeFile(path, whole);
    for (const NamedFault &fault : everyFault) {
        int count = 0;
        for (bool injected = true; injected; ++count) {
            QByteArray failed;
            QByteArray bytes;
            QString error;
            {
                const FailingCalls calls(folder, fault.fault, {count});
                bytes = FileTools::readFile(path, &error);
                failed = calls.failed().value(0);
            }
            injected = !failed.isEmpty();
            const bool isRefused = bytes.isEmpty() && !error.isEmpty() && injected && !fault.passes;
            QVERIFY2(bytes == whole || isRefused,
                     failed + ' ' + fault.name + ": " + QByteArray::number(bytes.size()));
            QVERIFY2(error.isEmpty() || isRefused, failed + ' ' + fault.name + ": " + qPrintable(error));
        }
        QVERIFY2(count - 1 >= (isOfEveryCall(fault) ? 4 : 1), fault.name);
    }
    QFile::remove(path);
}

void TestFailingCalls::looking()
{
    Fixture fixture;
    AppState fresh;
    const QUrl documents = QUrl::fromLocalFile(fixture.root() + u"/home/Documents"_s);
    const QUrl home = QUrl::fromLocalFile(fixture.root() + u"/home"_s);
    for (const DiskFault fault : {DiskFault::Fails, DiskFault::FailsForGood}) {
        int count = 0;
        for (bool injected = true; injected; ++count) {
            const FailingCalls calls(fixture.root(), fault, {count});
            const bool isFolder = fresh.isFolder(fixture.root() + u"/home/library"_s);
            const QUrl folder = fresh.dialogFolder();
            injected = !calls.failed().isEmpty();
            QVERIFY2(injected || isFolder, "a folder is none");
            QVERIFY2(folder == documents || (injected && folder == home), calls.failed().join());
            QCOMPARE(fresh.status(), QString());
        }
        QVERIFY(count > 2);
    }
}

void TestFailingCalls::log()
{
    const QString root = QDir(QDir::tempPath()).canonicalPath();
    const QString path = root + u"/kvteditornew-qt.log"_s;
    // Qt's warnings about a failure go to the log too, while a line is written.
    const QtMessageHandler earlier = qInstallMessageHandler(nullptr);
    installMessageLog();
    const auto reinstall = qScopeGuard([earlier] { qInstallMessageHandler(earlier); });
    for (const NamedFault &fault : everyFault) {
        int count = 0;
        for (bool injected = true; injected; ++count) {
            QFile::remove(path);
            logLine("first");
            QByteArray failed;
            {
                const FailingCalls calls(root, fault.fault, {count});
                logLine("second");
                failed = calls.failed().value(0);
            }
            injected = !failed.isEmpty();
            logLine("third");
            const QByteArray lines = contentOf(path);
            QVERIFY2(lines.startsWith("first\n") && lines.endsWith("third\n"), failed + ' ' + fault.name);
            QVERIFY2((injected && !fault.passes) || lines == "first\nsecond\nthird\n",
                     failed + ' ' + fault.name);
        }
        QVERIFY(count > 1);
    }
    QFile::remove(path);
}

KVTEDITOR_TEST_MAIN(TestFailingCalls)
#include "tst_FailingCalls.moc"
