#include "StoreFixture.h"
#include "support/FileSizeLimit.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <QTest>

#include <limits>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

const QByteArray patchedAnswer = R"({"file_data":"UEFUQ0hFRA==","status":"ok"})";

} // namespace

class TestAppStatePatches : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void list_wire_data();
    void list_wire();
    void list_wireOfTheOpenModule();
    void list_isShown();
    void list_withoutArray();
    void list_balance_data();
    void list_balance();
    void list_failed_data();
    void list_failed();
    void list_replacesTheEarlierOne();
    void list_identifierIsKeptBeforeTheAnswer();
    void list_laterAnswerWins();

    void apply_wire_data();
    void apply_wire();
    void apply_wireOfACalibrationLikeAMember();
    void apply_wireOfABigFile();
    void apply_savesAndShows_data();
    void apply_savesAndShows();
    void apply_bytesComeBackAsTheyAre();
    void apply_outcome_data();
    void apply_outcome();
    void apply_failed_data();
    void apply_failed();
    void apply_unreadableFile_data();
    void apply_unreadableFile();
    void apply_emptyFile();
    void apply_pipe();
    void apply_indexOutOfRange_data();
    void apply_indexOutOfRange();
    void apply_emptyList();
    void apply_saveFailureIsStillApplied();
    void apply_diskFullIsStillApplied();
    void apply_patchedFileAgain();
    void apply_keepsListAndBalance();
    void apply_carriesItsOwnPatchAndPath();
    void apply_twiceSpendsTwice();
    void apply_worksAfterFailure();
    void apply_failureUsesTheFailedListsIdentifier();

    void requestsShowNothingAtTheirStart();
    void destroyedWithRequestsInFlight();

private:
    void signIn();
    void list(const QString &calId = u"cal"_s,
              const QByteArray &answer = R"({"patches":[{"id":5,"variant":"V"}]})");
    QString binFile(const QString &name = u"tune.bin"_s, const QByteArray &bytes = "BIN");
    int apply(const RawAnswer &answer, int index = 0, const QString &path = {});

    QTemporaryDir m_deployment;
    std::unique_ptr<StoreFixture> m_fixture;
};

void TestAppStatePatches::initTestCase()
{
    StoreFixture::deployWithAuthFields(m_deployment);
}

void TestAppStatePatches::init()
{
    m_fixture = std::make_unique<StoreFixture>();
}

void TestAppStatePatches::cleanup()
{
    m_fixture.reset();
}

void TestAppStatePatches::signIn()
{
    m_fixture->server.answerNext(answerWith(R"({"session_token":"tok","credits":"15"})"));
    m_fixture->state->xdfLogin();
    WAIT_VERIFY(m_fixture->idle());
    m_fixture->takeAnnounced();
}

void TestAppStatePatches::list(const QString &calId, const QByteArray &answer)
{
    m_fixture->takeAnnounced();
    m_fixture->server.answerNext(answerWith(answer));
    m_fixture->state->loadPatches(calId);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->takeAnnounced().mid(0, 2), QStringList({u"xdf"_s, u"patcher"_s}));
}

QString TestAppStatePatches::binFile(const QString &name, const QByteArray &bytes)
{
    return makeFile(m_fixture->inDir(name), bytes);
}

/// How many requests the server saw for it.
int TestAppStatePatches::apply(const RawAnswer &answer, int index, const QString &path)
{
    const int before = m_fixture->server.requestCount();
    m_fixture->server.answerNext(answer);
    m_fixture->state->applyPatchToBin(index, path.isEmpty() ? binFile() : path);
    [this] { WAIT_VERIFY(m_fixture->idle()); }();
    return m_fixture->server.requestCount() - before;
}

void TestAppStatePatches::list_wire_data()
{
    QTest::addColumn<QString>("calId");
    QTest::addColumn<QByteArray>("body");

    const auto row = [](const char *name, const QString &calId, const QByteArray &shown) {
        QTest::newRow(name) << calId << R"({"cal_id":")" + shown + R"(","session_token":"tok"})";
    };
    row("text", u"12656942"_s, "12656942");
    row("not-trimmed", u" 12 "_s, " 12 ");
    row("blank-is-a-text", u" "_s, " ");
    row("quoted", u"a\"\n"_s, R"(a\"\n)");
    row("not-ascii", u"\u00e9"_s, "\xc3\xa9");
    row("empty-without-a-file", QString(), "");
}

void TestAppStatePatches::list_wire()
{
    QFETCH(QString, calId);
    signIn();
    m_fixture->state->loadPatches(calId);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->server.requestCount(), 2);
    const RecordedRequest request = m_fixture->lastRequest();
    QCOMPARE(request.requestLine(), QByteArray("POST /api/patches/patches.aspx HTTP/1.1"));
    QCOMPARE(request.header("content-type"), QByteArray("application/json; charset=utf-8"));
    QTEST(request.body, "body");
}

void TestAppStatePatches::list_wireOfTheOpenModule()
{
    m_fixture->state->applyKvtInfoJson(u"{\"modules\":[{\"mainOs\":\"111\"},{\"mainOs\":\"222\"}]}"_s);
    list({}, "{}");
    QCOMPARE(m_fixture->lastRequest().body, QByteArray(R"({"cal_id":"111","session_token":""})"));
    QCOMPARE(m_fixture->state->status(), u"0 patch(es) for 111."_s);
    list(u"other"_s, "{}");
    QCOMPARE(m_fixture->lastRequest().body, QByteArray(R"({"cal_id":"other","session_token":""})"));
}

void TestAppStatePatches::list_isShown()
{
    qsizetype atSignal = -1;
    QString creditsAtSignal;
    connect(m_fixture->state.get(), &AppState::xdfChanged, this,
            [&] { creditsAtSignal = m_fixture->state->xdfCredits(); });
    connect(m_fixture->state.get(), &AppState::patcherChanged, this,
            [&] { atSignal = m_fixture->state->patchItems().size(); });
    m_fixture->server.answerNext(answerWith(
        R"({"credits":4,"patches":[{"id":"5","variant":"V","description":"D","credits_cost":"10"},7]})"));
    m_fixture->state->loadPatches(u"%1 <b>"_s);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList({u"xdf"_s, u"patcher"_s, u"1 2 patch(es) for %1 <b>."_s}));
    const QVariantMap item{
        {u"id"_s, 5}, {u"variant"_s, u"V"_s}, {u"description"_s, u"D"_s}, {u"credits"_s, 10}};
    const QVariantMap nothing{
        {u"id"_s, 0}, {u"variant"_s, QString()}, {u"description"_s, QString()}, {u"credits"_s, 0}};
    QCOMPARE(m_fixture->state->patchItems(), QVariantList({item, nothing}));
    QCOMPARE(atSignal, 2);
    QCOMPARE(creditsAtSignal, u"4"_s);
}

void TestAppStatePatches::list_withoutArray()
{
    m_fixture->server.answerNext(answerWith(R"({"error":"Sign in first.","items":[{"id":1}]})"));
    m_fixture->state->loadPatches(u"cal"_s);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList({u"xdf"_s, u"patcher"_s, u"1 0 patch(es) for cal."_s}));
    QCOMPARE(m_fixture->state->patchItems(), QVariantList());
}

void TestAppStatePatches::list_balance_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("credits");

    QTest::newRow("missing") << QByteArray("{}") << u"15"_s;
    QTest::newRow("number") << QByteArray(R"({"credits":4})") << u"4"_s;
    QTest::newRow("zero") << QByteArray(R"({"credits":0})") << u"0"_s;
    QTest::newRow("text") << QByteArray(R"({"credits":"many"})") << u"many"_s;
    QTest::newRow("empty") << QByteArray(R"({"credits":""})") << u"15"_s;
    QTest::newRow("null") << QByteArray(R"({"credits":null})") << u"15"_s;
    QTest::newRow("array") << QByteArray(R"({"credits":[4]})") << u"15"_s;
}

void TestAppStatePatches::list_balance()
{
    QFETCH(QByteArray, answer);
    signIn();
    list(u"cal"_s, answer);
    QTEST(m_fixture->state->xdfCredits(), "credits");
    QCOMPARE(m_fixture->state->xdfToken(), u"tok"_s);
}

void TestAppStatePatches::list_failed_data()
{
    addFailedJsonAnswers();
}

void TestAppStatePatches::list_failed()
{
    QFETCH(RawAnswer, answer);
    QFETCH(QString, status);
    signIn();
    list();
    const QVariantList items = m_fixture->state->patchItems();
    m_fixture->server.answerNext(answer);
    m_fixture->state->loadPatches(u"other"_s);
    WAIT_VERIFY(m_fixture->idle());
    QVERIFY2(isOneFailure(m_fixture->announced, status), qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->server.requestCount(), 3);
    QCOMPARE(m_fixture->state->patchItems(), items);
    QCOMPARE(items.size(), 1);
    QCOMPARE(m_fixture->state->xdfCredits(), u"15"_s);
}

void TestAppStatePatches::list_replacesTheEarlierOne()
{
    list(u"cal"_s, R"({"patches":[{"id":1},{"id":2}]})");
    list(u"cal"_s, R"({"patches":[{"id":3}]})");
    QCOMPARE(m_fixture->state->patchItems().size(), 1);
    QCOMPARE(m_fixture->state->patchItems().first().toMap().value(u"id"_s).toInt(), 3);
    list(u"cal"_s, R"({"patches":[]})");
    QCOMPARE(m_fixture->state->patchItems(), QVariantList());
}

void TestAppStatePatches::list_identifierIsKeptBeforeTheAnswer()
{
    list(u"first"_s);
    m_fixture->server.answerNext(holdRequest());
    m_fixture->state->loadPatches(u"second"_s);
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 2);
    m_fixture->server.answerNext(answerWith("{}"));
    m_fixture->state->applyPatchToBin(0, binFile());
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 3);
    QVERIFY(m_fixture->lastRequest().body.startsWith(R"({"cal_id":"second",)"));
}

void TestAppStatePatches::list_laterAnswerWins()
{
    m_fixture->server.answerAlways(holdRequest());
    m_fixture->state->loadPatches(u"first"_s);
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 1);
    m_fixture->state->loadPatches(u"second"_s);
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 2);
    m_fixture->server.answerHeld(1, answerWith(R"({"patches":[{"id":2}]})"));
    WAIT_COMPARE(m_fixture->state->patchItems().size(), 1);
    m_fixture->server.answerHeld(0, answerWith(R"({"patches":[{"id":1},{"id":1}]})"));
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->state->patchItems().size(), 2);
    // The identifier is the last one asked for, whichever answer it is that comes.
    QCOMPARE(m_fixture->announced,
             QStringList({u"xdf"_s, u"patcher"_s, u"1 1 patch(es) for second."_s, u"xdf"_s, u"patcher"_s,
                          u"1 2 patch(es) for second."_s}));
}

void TestAppStatePatches::apply_wire_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("bin");
    QTest::addColumn<QByteArray>("patchId");
    QTest::addColumn<QByteArray>("base64");

    QTest::newRow("one-byte") << 0 << QByteArray(1, '\0') << QByteArray("5") << QByteArray("AA==");
    QTest::newRow("two-bytes") << 0 << QByteArray("\xff\0", 2) << QByteArray("5") << QByteArray("/wA=");
    QTest::newRow("three-bytes") << 0 << QByteArray("PAT") << QByteArray("5") << QByteArray("UEFU");
    QTest::newRow("standard-alphabet")
        << 0 << QByteArray("\xfb\xef\xff") << QByteArray("5") << QByteArray("++//");
    QTest::newRow("no-line-breaks") << 0 << QByteArray(300, '\0') << QByteArray("5") << QByteArray(400, 'A');
    QTest::newRow("id-text") << 1 << QByteArray("PAT") << QByteArray("77") << QByteArray("UEFU");
    QTest::newRow("id-negative") << 2 << QByteArray("PAT") << QByteArray("-2") << QByteArray("UEFU");
    QTest::newRow("id-none") << 3 << QByteArray("PAT") << QByteArray("0") << QByteArray("UEFU");
    QTest::newRow("id-2^31") << 4 << QByteArray("PAT") << QByteArray("0") << QByteArray("UEFU");
}

void TestAppStatePatches::apply_wire()
{
    QFETCH(int, index);
    QFETCH(QByteArray, bin);
    QFETCH(QByteArray, patchId);
    QFETCH(QByteArray, base64);
    signIn();
    list(u" cal "_s, R"({"patches":[{"id":5},{"id":"77"},{"id":-2},null,{"id":2147483648}]})");
    QCOMPARE(apply(answerWith("{}"), index, binFile(u"tune.bin"_s, bin)), 1);
    const RecordedRequest request = m_fixture->lastRequest();
    QCOMPARE(request.requestLine(), QByteArray("POST /api/patches/patch_process.aspx HTTP/1.1"));
    QCOMPARE(request.header("content-type"), QByteArray("application/json; charset=utf-8"));
    QCOMPARE(request.body,
             R"({"cal_id":" cal ","file_data":")" + base64 + R"(","patch_id":")" + patchId
                 + R"(","session_token":"tok"})");
}

void TestAppStatePatches::apply_wireOfACalibrationLikeAMember()
{
    list(uR"("file_data":"x)"_s, R"({"patches":[{"id":5}]})");
    QCOMPARE(apply(answerWith("{}"), 0, binFile(u"tune.bin"_s, "PAT")), 1);
    QCOMPARE(
        m_fixture->lastRequest().body,
        QByteArray(R"({"cal_id":"\"file_data\":\"x","file_data":"UEFU","patch_id":"5","session_token":""})"));
}

void TestAppStatePatches::apply_wireOfABigFile()
{
    list();
    QCOMPARE(apply(answerWith(patchedAnswer), 0, binFile(u"big.bin"_s, QByteArray(6000000, '\xff'))), 1);
    QCOMPARE(m_fixture->lastRequest().body,
             R"({"cal_id":"cal","file_data":")" + QByteArray(8000000, '/')
                 + R"(","patch_id":"5","session_token":""})");
    QCOMPARE(m_fixture->announced, QStringList{u"1 Patch applied."_s});
}

void TestAppStatePatches::apply_savesAndShows_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("saved");

    QTest::newRow("bin") << u"tune.bin"_s << u"tune_patched.bin"_s;
    QTest::newRow("two-suffixes") << u"tune.rev2.bin"_s << u"tune.rev2_patched.bin"_s;
    QTest::newRow("no-suffix") << u"stock"_s << u"stock_patched.bin"_s;
    QTest::newRow("suffix-only") << u".bin"_s << u"_patched.bin"_s;
    QTest::newRow("other-suffix") << u"Tune.KVT"_s << u"Tune_patched.bin"_s;
    QTest::newRow("signs") << u" a #%20?&<b>[x].bin"_s << u" a #%20?&<b>[x]_patched.bin"_s;
    QTest::newRow("newline") << u"a\nb.bin"_s << u"a\nb_patched.bin"_s;
    QTest::newRow("not-ascii") << u"\u00e9.bin"_s << u"\u00e9_patched.bin"_s;
}

void TestAppStatePatches::apply_savesAndShows()
{
    QFETCH(QString, name);
    QFETCH(QString, saved);
    list();
    QCOMPARE(apply(answerWith(patchedAnswer), 0, binFile(name)), 1);
    QCOMPARE(m_fixture->announced, QStringList{u"1 Patch applied."_s});
    QCOMPARE(m_fixture->documents(), QStringList{saved});
    QCOMPARE(contentOf(m_fixture->inDocuments(saved)), QByteArray("PATCHED"));
    QCOMPARE(m_fixture->desktop.opened, m_fixture->documentsShown());
    QCOMPARE(contentOf(m_fixture->inDir(name)), QByteArray("BIN"));
}

void TestAppStatePatches::apply_bytesComeBackAsTheyAre()
{
    list();
    // Every value of a byte, then junk that a decoder has to skip.
    QByteArray every;
    for (int value = 0; value < 256; ++value)
        every.append(static_cast<char>(value));
    QCOMPARE(apply(answerWith("{\"file_data\":\"\\r\\n" + every.toBase64() + "\xe2\x82\xac*\"}")), 1);
    QCOMPARE(contentOf(m_fixture->inDocuments(u"tune_patched.bin"_s)), every);
}

void TestAppStatePatches::apply_outcome_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("announced");

    QTest::newRow("ok-no-file") << QByteArray(R"({"file_data":"","status":"ok"})")
                                << u"1 Patch processed: "_s;
    QTest::newRow("ok-message") << QByteArray(R"({"status":"ok","message":"Mailed %1."})")
                                << u"1 Patch processed: Mailed %1."_s;
    QTest::newRow("ok-in-capitals") << QByteArray(R"({"status":"OK"})") << u"0 Patch failed."_s;
    QTest::newRow("error") << QByteArray(R"({"error":"Not enough credits."})") << u"0 Not enough credits."_s;
    QTest::newRow("empty-object") << QByteArray("{}") << u"0 Patch failed."_s;
    QTest::newRow("file-not-latin-1") << QByteArray("{\"file_data\":\"\xd0\x96\"}") << u"0 Patch failed."_s;
}

void TestAppStatePatches::apply_outcome()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, announced);
    list();
    QCOMPARE(apply(answerWith(answer)), 1);
    QCOMPARE(m_fixture->announced, QStringList{announced});
    QCOMPARE(m_fixture->documents(), QStringList());
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
}

void TestAppStatePatches::apply_failed_data()
{
    addFailedJsonAnswers();
}

void TestAppStatePatches::apply_failed()
{
    QFETCH(RawAnswer, answer);
    QFETCH(QString, status);
    list();
    QCOMPARE(apply(answer), 1);
    QVERIFY2(isOneFailure(m_fixture->announced, status), qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->documents(), QStringList());
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
    QCOMPARE(m_fixture->state->patchItems().size(), 1);
}

void TestAppStatePatches::apply_unreadableFile_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("missing") << u"missing.bin"_s;
    QTest::newRow("folder-missing") << u"missing/tune.bin"_s;
    QTest::newRow("folder") << u"."_s;
    QTest::newRow("file-as-folder") << u"tune.bin/tune.bin"_s;
}

void TestAppStatePatches::apply_unreadableFile()
{
    QFETCH(QString, name);
    list();
    QVERIFY(!binFile().isEmpty());
    m_fixture->state->applyPatchToBin(0, m_fixture->inDir(name));
    QVERIFY(m_fixture->idle());
    QVERIFY2(isOneFailure(m_fixture->announced, qtText), qPrintable(m_fixture->announced.join(u'|')));
}

void TestAppStatePatches::apply_emptyFile()
{
    list();
    m_fixture->state->applyPatchToBin(0, binFile(u"empty.bin"_s, {}));
    QVERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList{u"0 "_s});
}

void TestAppStatePatches::apply_pipe()
{
    const QString path = m_fixture->inDir(u"pipe.bin"_s);
    QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    list();
    m_fixture->state->applyPatchToBin(0, path);
    QVERIFY(m_fixture->idle());
    QVERIFY2(isOneFailure(m_fixture->announced, qtText), qPrintable(m_fixture->announced.join(u'|')));
}

void TestAppStatePatches::apply_indexOutOfRange_data()
{
    QTest::addColumn<int>("index");

    QTest::newRow("-1") << -1;
    QTest::newRow("count") << 1;
    QTest::newRow("lowest") << std::numeric_limits<int>::min();
    QTest::newRow("highest") << std::numeric_limits<int>::max();
}

void TestAppStatePatches::apply_indexOutOfRange()
{
    QFETCH(int, index);
    list();
    m_fixture->state->applyPatchToBin(index, binFile());
    m_fixture->state->applyPatchToBin(index, u"/missing.bin"_s);
    QVERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList());
}

void TestAppStatePatches::apply_emptyList()
{
    m_fixture->state->applyPatchToBin(0, binFile());
    QVERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList());
}

void TestAppStatePatches::apply_saveFailureIsStillApplied()
{
    makeFile(TestEnvironment::documents(), "a file in the folder's place");
    list();
    QCOMPARE(apply(answerWith(patchedAnswer)), 1);
    QCOMPARE(m_fixture->announced, QStringList{u"1 Patch applied."_s});
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
    QCOMPARE(contentOf(TestEnvironment::documents()), QByteArray("a file in the folder's place"));
}

void TestAppStatePatches::apply_diskFullIsStillApplied()
{
    list();
    const QString path = binFile();
    {
        const FileSizeLimit limit(4);
        QCOMPARE(apply(answerWith(patchedAnswer), 0, path), 1);
    }
    QCOMPARE(m_fixture->announced, QStringList{u"1 Patch applied."_s});
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
}

void TestAppStatePatches::apply_patchedFileAgain()
{
    // A patched file may be patched again; only a second run of the same input replaces a result.
    list();
    QCOMPARE(apply(answerWith(patchedAnswer)), 1);
    const QString first = m_fixture->inDocuments(u"tune_patched.bin"_s);
    QCOMPARE(apply(answerWith(R"({"file_data":"Tk8="})"), 0, first), 1);
    QCOMPARE(contentOf(first), QByteArray("PATCHED"));
    QCOMPARE(contentOf(m_fixture->inDocuments(u"tune_patched_patched.bin"_s)), QByteArray("NO"));
    QCOMPARE(apply(answerWith(R"({"file_data":"Tk8="})")), 1);
    QCOMPARE(contentOf(first), QByteArray("NO"));
    QCOMPARE(m_fixture->documents().size(), 2);
}

void TestAppStatePatches::apply_keepsListAndBalance()
{
    signIn();
    list();
    const QVariantList items = m_fixture->state->patchItems();
    QCOMPARE(apply(answerWith(R"({"file_data":"UEFU","credits":3,"patches":[]})")), 1);
    QCOMPARE(m_fixture->announced, QStringList{u"1 Patch applied."_s});
    QCOMPARE(m_fixture->state->patchItems(), items);
    QCOMPARE(m_fixture->state->xdfCredits(), u"15"_s);
    QVERIFY(!m_fixture->state->busy());
}

void TestAppStatePatches::apply_carriesItsOwnPatchAndPath()
{
    list(u"first"_s);
    m_fixture->server.answerNext(holdRequest());
    m_fixture->state->applyPatchToBin(0, binFile(u"asked.bin"_s));
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 2);
    m_fixture->server.answerNext(answerWith(R"({"patches":[{"id":8},{"id":9}]})"));
    m_fixture->state->loadPatches(u"second"_s);
    WAIT_COMPARE(m_fixture->state->patchItems().size(), 2);
    m_fixture->takeAnnounced();
    m_fixture->server.answerHeld(1, answerWith(patchedAnswer));
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList{u"1 Patch applied."_s});
    QCOMPARE(m_fixture->server.request(1).body,
             QByteArray(R"({"cal_id":"first","file_data":"QklO","patch_id":"5","session_token":""})"));
    QCOMPARE(m_fixture->documents(), QStringList{u"asked_patched.bin"_s});
    QCOMPARE(m_fixture->state->patchItems().size(), 2);
}

void TestAppStatePatches::apply_twiceSpendsTwice()
{
    list();
    const QString path = binFile();
    m_fixture->server.answerAlways(answerWith(patchedAnswer));
    m_fixture->state->applyPatchToBin(0, path);
    m_fixture->state->applyPatchToBin(0, path);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->server.requestCount(), 3);
    QCOMPARE(m_fixture->announced, QStringList({u"1 Patch applied."_s, u"1 Patch applied."_s}));
}

void TestAppStatePatches::apply_worksAfterFailure()
{
    list();
    QCOMPARE(apply({}), 1);
    QCOMPARE(m_fixture->state->statusOK(), 0);
    m_fixture->takeAnnounced();
    QCOMPARE(apply(answerWith(patchedAnswer)), 1);
    QCOMPARE(m_fixture->announced, QStringList{u"1 Patch applied."_s});
}

void TestAppStatePatches::apply_failureUsesTheFailedListsIdentifier()
{
    list(u"first"_s);
    m_fixture->server.answerNext({httpAnswer(500, {})});
    m_fixture->state->loadPatches(u"second"_s);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(apply(answerWith("{}")), 1);
    QCOMPARE(m_fixture->lastRequest().body,
             QByteArray(R"({"cal_id":"second","file_data":"QklO","patch_id":"5","session_token":""})"));
}

void TestAppStatePatches::requestsShowNothingAtTheirStart()
{
    list();
    m_fixture->server.answerAlways(holdRequest());
    m_fixture->state->loadPatches(u"other"_s);
    m_fixture->state->applyPatchToBin(0, binFile());
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 3);
    QCOMPARE(m_fixture->announced, QStringList());
    QVERIFY(!m_fixture->state->busy());
    QCOMPARE(m_fixture->state->patchItems().size(), 1);
}

void TestAppStatePatches::destroyedWithRequestsInFlight()
{
    list();
    const QString path = binFile();
    m_fixture->server.answerAlways(holdRequest());
    for (int i = 0; i < 5; ++i) {
        m_fixture->state->loadPatches({});
        m_fixture->state->applyPatchToBin(0, path);
    }
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 11);
    m_fixture->state.reset();
    for (int i = 1; i < 11; ++i)
        m_fixture->server.answerHeld(i, answerWith(patchedAnswer));
    // One more request shows that the answers of the others are through.
    m_fixture->state = std::make_unique<AppState>();
    m_fixture->client()->setApiBase(m_fixture->server.baseUrl());
    m_fixture->server.answerNext(answerWith(R"({"patches":[{}]})"));
    m_fixture->state->loadPatches({});
    WAIT_COMPARE(m_fixture->state->patchItems().size(), 1);
    QCOMPARE(m_fixture->announced, QStringList());
    QCOMPARE(m_fixture->documents(), QStringList());
}

KVTEDITOR_TEST_MAIN(TestAppStatePatches)
#include "tst_AppStatePatches.moc"
